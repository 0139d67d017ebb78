#include "QtMainQueue.h"

#include <QMetaObject>
#include <QTimer>

#include <cmath>

namespace tosvar {

namespace {

int milliseconds(double seconds) {
    if (!(seconds > 0)) return 0;
    const double ms = std::ceil(seconds * 1000.0);
    return ms > 2'000'000'000.0 ? 2'000'000'000 : static_cast<int>(ms);
}

} // namespace

QtMainQueue::QtMainQueue() = default;

double QtMainQueue::now() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
}

TimerHandle QtMainQueue::after(double seconds, std::function<void()> work) {
    auto cancelled = std::make_shared<std::atomic<bool>>(false);
    QTimer::singleShot(milliseconds(seconds), Qt::PreciseTimer, &context_, [cancelled, work = std::move(work)] {
        if (!cancelled->load()) work();
    });
    return TimerHandle(cancelled);
}

TimerHandle QtMainQueue::every(double interval, std::function<void()> work) {
    auto cancelled = std::make_shared<std::atomic<bool>>(false);
    auto* timer = new QTimer(&context_);
    timer->setTimerType(Qt::PreciseTimer);
    timer->setInterval(std::max(1, milliseconds(interval)));
    QObject::connect(timer, &QTimer::timeout, timer, [timer, cancelled, work = std::move(work)] {
        if (cancelled->load()) {
            timer->stop();
            timer->deleteLater();
            return;
        }
        work();
    });
    timer->start();
    return TimerHandle(cancelled);
}

void QtMainQueue::async(std::function<void()> work) {
    QMetaObject::invokeMethod(&context_, std::move(work), Qt::QueuedConnection);
}

} // namespace tosvar
