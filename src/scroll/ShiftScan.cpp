#include "ShiftScan.h"

#include "WorkerPool.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>

namespace tosvar {

namespace {

// Below this much work per chunk, waking a thread costs more than it saves.
constexpr long long cellsPerChunk = 1 << 18;

// Outlives the call: a helper may start after the caller has returned, finds
// every chunk taken and leaves without touching `work`.
struct Scan {
    const std::function<void(int)>* work = nullptr;
    int count = 0;
    int chunkSize = 1;
    int chunks = 0;
    std::atomic<int> nextChunk{0};
    std::mutex mutex;
    std::condition_variable allDone;
    int finished = 0;

    // Takes chunks until none is left.
    void drain() {
        for (;;) {
            const int chunk = nextChunk.fetch_add(1);
            if (chunk >= chunks) return;
            const int end = std::min(count, (chunk + 1) * chunkSize);
            for (int i = chunk * chunkSize; i < end; ++i) (*work)(i);
            std::lock_guard guard(mutex);
            if (++finished == chunks) allDone.notify_all();
        }
    }
};

} // namespace

void scanShifts(WorkerPool* pool, int count, long long cellsPerIndex, const std::function<void(int)>& work) {
    if (count <= 0) return;
    const long long total = static_cast<long long>(count) * std::max(cellsPerIndex, 1LL);
    const int helpers = pool ? static_cast<int>(pool->threadCount()) : 0;
    if (helpers == 0 || total < 2 * cellsPerChunk) {
        for (int i = 0; i < count; ++i) work(i);
        return;
    }
    auto scan = std::make_shared<Scan>();
    scan->work = &work;
    scan->count = count;
    const long long byWork = total / cellsPerChunk;
    const int chunks = static_cast<int>(std::clamp<long long>(byWork, 2, std::min<long long>(count, 8LL * (helpers + 1))));
    scan->chunkSize = (count + chunks - 1) / chunks;
    scan->chunks = (count + scan->chunkSize - 1) / scan->chunkSize;
    for (int h = 0; h < std::min(helpers, scan->chunks - 1); ++h) pool->detach([scan] { scan->drain(); });
    scan->drain();
    std::unique_lock lock(scan->mutex);
    scan->allDone.wait(lock, [&] { return scan->finished == scan->chunks; });
}

} // namespace tosvar
