#pragma once

#include "MainQueue.h"

#include <cstdint>
#include <mutex>
#include <vector>

namespace tosvar {

// A main queue on a virtual clock: nothing runs until the test advances time.
// Work due at the same moment runs in the order it was scheduled. `async`
// may be called from other threads; everything else from the test's thread.
class VirtualMainQueue final : public MainQueue {
public:
    double now() const override;
    TimerHandle after(double seconds, std::function<void()> work) override;
    TimerHandle every(double interval, std::function<void()> work) override;
    void async(std::function<void()> work) override;

    // Moves the clock forward, running everything that falls due on the way,
    // each at its own moment (work may schedule more work).
    void advance(double seconds);
    // Runs what is due now, including work that it schedules for now.
    void runUntilIdle() { advance(0); }
    // Scheduled work not yet run or cancelled.
    std::size_t pendingCount() const;

private:
    struct Entry {
        double due;
        std::uint64_t sequence;
        double interval; // 0 for one-shot work
        std::function<void()> work;
        std::shared_ptr<std::atomic<bool>> cancelled;
    };
    TimerHandle schedule(double due, double interval, std::function<void()> work);
    bool popDue(double limit, Entry& out);

    mutable std::mutex mutex_;
    double now_ = 0;
    std::uint64_t nextSequence_ = 0;
    std::vector<Entry> entries_;
};

} // namespace tosvar
