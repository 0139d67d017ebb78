#pragma once

#include <atomic>
#include <functional>
#include <memory>

namespace tosvar {

// A handle to scheduled work. Copies refer to the same work; cancelling any of
// them keeps it from running (work already running finishes). A default handle
// refers to nothing. Cancelling is safe from any thread.
class TimerHandle {
public:
    TimerHandle() = default;
    explicit TimerHandle(std::shared_ptr<std::atomic<bool>> cancelled) : cancelled_(std::move(cancelled)) {}

    void cancel() const {
        if (cancelled_) cancelled_->store(true);
    }
    bool isCancelled() const { return !cancelled_ || cancelled_->load(); }

private:
    std::shared_ptr<std::atomic<bool>> cancelled_;
};

// The main thread's run loop: where controllers, views and every timer live.
// The product runs it on the Qt event loop; tests run it on a virtual clock.
class MainQueue {
public:
    virtual ~MainQueue() = default;

    // Monotonic seconds since an arbitrary start.
    virtual double now() const = 0;
    // Runs `work` on the main thread once, `seconds` from now (at once for 0 or less).
    virtual TimerHandle after(double seconds, std::function<void()> work) = 0;
    // Runs `work` on the main thread every `interval` seconds until cancelled.
    virtual TimerHandle every(double interval, std::function<void()> work) = 0;
    // Hands `work` to the main thread; callable from any thread.
    virtual void async(std::function<void()> work) = 0;
};

} // namespace tosvar
