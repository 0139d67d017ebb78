#pragma once

#include "MainQueue.h"

#include <QObject>

#include <chrono>

namespace tosvar {

// The main queue on the Qt event loop. Construct it on the main thread after
// the application object; `after` and `every` are main-thread calls, `async`
// may come from any thread.
class QtMainQueue final : public MainQueue {
public:
    QtMainQueue();

    double now() const override;
    TimerHandle after(double seconds, std::function<void()> work) override;
    TimerHandle every(double interval, std::function<void()> work) override;
    void async(std::function<void()> work) override;

private:
    QObject context_; // lives on the main thread; every callback runs on it
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

} // namespace tosvar
