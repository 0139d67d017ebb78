#include "WorkerPool.h"

#include <algorithm>
#include <pthread.h>

namespace tosvar {

WorkerPool::WorkerPool(unsigned threads, const std::string& name) {
    threads = std::max(1u, threads);
    threads_.reserve(threads);
    const std::string shortName = name.size() > 15 ? name.substr(name.size() - 15) : name;
    for (unsigned i = 0; i < threads; ++i) {
        threads_.emplace_back([this] { run(); });
        pthread_setname_np(threads_.back().native_handle(), shortName.c_str());
    }
}

WorkerPool::~WorkerPool() {
    {
        std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    wake_.notify_all();
    for (std::thread& thread : threads_) thread.join();
}

WorkerPool& WorkerPool::shared() {
    static WorkerPool pool(std::max(2u, std::thread::hardware_concurrency()), "tosvar.workers");
    return pool;
}

bool WorkerPool::isWorkerThread() const {
    const auto self = std::this_thread::get_id();
    return std::any_of(threads_.begin(), threads_.end(), [self](const std::thread& t) { return t.get_id() == self; });
}

void WorkerPool::detach(std::function<void()> work) {
    {
        std::lock_guard lock(mutex_);
        pending_.push_back(std::move(work));
    }
    wake_.notify_one();
}

void WorkerPool::run() {
    for (;;) {
        std::function<void()> work;
        {
            std::unique_lock lock(mutex_);
            wake_.wait(lock, [this] { return stopping_ || !pending_.empty(); });
            if (pending_.empty()) return;
            work = std::move(pending_.front());
            pending_.pop_front();
        }
        work();
    }
}

} // namespace tosvar
