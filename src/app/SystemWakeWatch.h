#pragma once

#include <QObject>

#include <functional>

namespace tosvar {

// Tells `onWake` when the machine has come back from sleep, from logind's
// PrepareForSleep signal on the system bus. Without a system bus or logind
// it stays silent. Main thread.
class SystemWakeWatch final : public QObject {
    Q_OBJECT

public:
    explicit SystemWakeWatch(std::function<void()> onWake);

private slots:
    void prepareForSleep(bool goingToSleep);

private:
    std::function<void()> onWake_;
};

} // namespace tosvar
