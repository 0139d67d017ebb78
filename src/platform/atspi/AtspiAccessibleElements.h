#pragma once

#include "AccessibleElements.h"

#include <QDBusConnection>
#include <QString>

namespace tosvar {

// Other programs' accessibility trees over the AT-SPI bus. Each message
// waits at most `messageTimeoutMilliseconds`, so a program that does not
// answer cannot hold the caller. Roles are AT-SPI's names, except a web
// document, which reads "AXWebArea".
class AtspiAccessibleElements final : public AccessibleElements {
public:
    static constexpr int messageTimeoutMilliseconds = 250;
    static constexpr int enableTimeoutMilliseconds = 2000;

    AtspiAccessibleElements();
    ~AtspiAccessibleElements() override;

    bool isAvailable() const override { return bus_.isConnected(); }
    Handle elementAt(const Point& point, std::int64_t pid) override;
    Handle parent(const Handle& element) override;
    std::optional<Rect> frame(const Handle& element) override;
    std::optional<std::string> role(const Handle& element) override;
    std::optional<std::string> text(const Handle& element) override;
    void enableAccessibility(std::int64_t pid) override;

private:
    Handle application(std::int64_t pid);

    QString connectionName_;
    QDBusConnection bus_;
};

} // namespace tosvar
