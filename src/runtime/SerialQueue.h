#pragma once

#include "WorkerPool.h"

#include <functional>
#include <string>

namespace tosvar {

// Work items run one at a time, in the order given, on a thread of the queue's
// own. `async` may be called from any thread. Destroying the queue runs what
// was already queued, then joins the thread.
class SerialQueue {
public:
    explicit SerialQueue(std::string label) : label_(std::move(label)), thread_(1, label_) {}

    const std::string& label() const { return label_; }
    void async(std::function<void()> work) { thread_.detach(std::move(work)); }
    // Runs `work` on the queue and waits for it; never call it from the queue itself.
    void sync(const std::function<void()>& work);
    bool isCurrent() const { return thread_.isWorkerThread(); }

private:
    std::string label_;
    WorkerPool thread_;
};

} // namespace tosvar
