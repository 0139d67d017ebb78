#include "SystemWakeWatch.h"

#include <QDBusConnection>

namespace tosvar {

SystemWakeWatch::SystemWakeWatch(std::function<void()> onWake) : onWake_(std::move(onWake)) {
    QDBusConnection::systemBus().connect(QStringLiteral("org.freedesktop.login1"),
                                         QStringLiteral("/org/freedesktop/login1"),
                                         QStringLiteral("org.freedesktop.login1.Manager"),
                                         QStringLiteral("PrepareForSleep"), this, SLOT(prepareForSleep(bool)));
}

void SystemWakeWatch::prepareForSleep(bool goingToSleep) {
    if (!goingToSleep && onWake_) onWake_();
}

} // namespace tosvar
