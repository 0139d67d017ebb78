#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace tosvar {

// Threads for detached work that may run concurrently: pre-grabs, decoration,
// layout. Results go back to the main thread through the main queue.
class WorkerPool {
public:
    // `name` labels the threads for debuggers (the kernel keeps its last 15 bytes).
    WorkerPool(unsigned threads, const std::string& name);
    ~WorkerPool(); // finishes queued work, then joins
    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;

    // The process-wide pool, one thread per core.
    static WorkerPool& shared();

    void detach(std::function<void()> work);
    unsigned threadCount() const { return static_cast<unsigned>(threads_.size()); }
    bool isWorkerThread() const;

private:
    void run();

    std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<std::function<void()>> pending_;
    bool stopping_ = false;
    std::vector<std::thread> threads_;
};

} // namespace tosvar
