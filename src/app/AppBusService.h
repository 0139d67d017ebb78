#pragma once

#include "CommandLineRequest.h"

#include <QDBusVirtualObject>

#include <functional>
#include <optional>
#include <string>

namespace tosvar {

// What an action came to: done, or why not.
struct ActionOutcome {
    enum class Kind { done, notBuilt, failed };
    Kind kind = Kind::done;
    std::string message;
};

// Serves the actions on the session bus under the application's name.
// Main thread; needs a Qt application object.
class AppBusService final : public QDBusVirtualObject {
public:
    using Handler = std::function<ActionOutcome(const CommandLineRequest& request)>;
    explicit AppBusService(Handler handler) : handler_(std::move(handler)) {}

    // Claims the name; false when another instance holds it (or there is no bus).
    bool start();

    QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
    Handler handler_;
};

} // namespace tosvar
