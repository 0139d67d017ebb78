#include "VirtualMainQueue.h"

#include <algorithm>

namespace tosvar {

double VirtualMainQueue::now() const {
    std::lock_guard lock(mutex_);
    return now_;
}

TimerHandle VirtualMainQueue::schedule(double due, double interval, std::function<void()> work) {
    auto cancelled = std::make_shared<std::atomic<bool>>(false);
    std::lock_guard lock(mutex_);
    entries_.push_back({due, nextSequence_++, interval, std::move(work), cancelled});
    return TimerHandle(cancelled);
}

TimerHandle VirtualMainQueue::after(double seconds, std::function<void()> work) {
    return schedule(now() + std::max(0.0, seconds), 0, std::move(work));
}

TimerHandle VirtualMainQueue::every(double interval, std::function<void()> work) {
    const double step = std::max(interval, 1e-6);
    return schedule(now() + step, step, std::move(work));
}

void VirtualMainQueue::async(std::function<void()> work) { schedule(now(), 0, std::move(work)); }

bool VirtualMainQueue::popDue(double limit, Entry& out) {
    std::lock_guard lock(mutex_);
    std::erase_if(entries_, [](const Entry& e) { return e.cancelled->load(); });
    auto next = std::min_element(entries_.begin(), entries_.end(), [](const Entry& a, const Entry& b) {
        return a.due != b.due ? a.due < b.due : a.sequence < b.sequence;
    });
    if (next == entries_.end() || next->due > limit) return false;
    out = *next;
    now_ = std::max(now_, next->due);
    if (next->interval > 0) {
        next->due += next->interval;
        next->sequence = nextSequence_++;
    } else {
        entries_.erase(next);
    }
    return true;
}

void VirtualMainQueue::advance(double seconds) {
    const double limit = now() + std::max(0.0, seconds);
    Entry entry;
    while (popDue(limit, entry)) {
        if (!entry.cancelled->load()) entry.work();
    }
    std::lock_guard lock(mutex_);
    now_ = limit;
}

std::size_t VirtualMainQueue::pendingCount() const {
    std::lock_guard lock(mutex_);
    return static_cast<std::size_t>(
        std::count_if(entries_.begin(), entries_.end(), [](const Entry& e) { return !e.cancelled->load(); }));
}

} // namespace tosvar
