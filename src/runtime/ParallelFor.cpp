#include "ParallelFor.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>

namespace tosvar {

namespace {

// Shared with the pool's tasks, which may start after the call returned and
// then find nothing left to take.
struct Parts {
    std::function<void(int, int)> body;
    int count = 0;
    int pieces = 0;
    std::atomic<int> next{0};
    std::mutex mutex;
    std::condition_variable finished;
    int done = 0;

    // Takes parts until none is left.
    void work() {
        for (int piece = next.fetch_add(1); piece < pieces; piece = next.fetch_add(1)) {
            const int begin = static_cast<int>(static_cast<long long>(count) * piece / pieces);
            const int end = static_cast<int>(static_cast<long long>(count) * (piece + 1) / pieces);
            if (begin < end) body(begin, end);
            std::lock_guard lock(mutex);
            if (++done == pieces) finished.notify_all();
        }
    }
};

} // namespace

void parallelFor(WorkerPool& pool, int count, int pieces, const std::function<void(int begin, int end)>& body) {
    if (count <= 0) return;
    pieces = std::clamp(pieces, 1, count);
    if (pieces == 1) return body(0, count);
    auto parts = std::make_shared<Parts>();
    parts->body = body;
    parts->count = count;
    parts->pieces = pieces;
    const int helpers = std::min<int>(pieces - 1, static_cast<int>(pool.threadCount()));
    for (int i = 0; i < helpers; ++i) pool.detach([parts] { parts->work(); });
    parts->work();
    std::unique_lock lock(parts->mutex);
    parts->finished.wait(lock, [&] { return parts->done == parts->pieces; });
}

} // namespace tosvar
