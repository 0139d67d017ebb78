#include "ShiftScan.h"

#include "ParallelFor.h"

#include <algorithm>

namespace tosvar {

namespace {

// Below this much work per chunk, waking a thread costs more than it saves.
constexpr long long cellsPerChunk = 1 << 18;

} // namespace

void scanShifts(WorkerPool* pool, int count, long long cellsPerIndex, const std::function<void(int)>& work) {
    if (count <= 0) return;
    const long long total = static_cast<long long>(count) * std::max(cellsPerIndex, 1LL);
    const int helpers = pool ? static_cast<int>(pool->threadCount()) : 0;
    if (helpers == 0 || total < 2 * cellsPerChunk) {
        for (int i = 0; i < count; ++i) work(i);
        return;
    }
    const long long byWork = total / cellsPerChunk;
    const int chunks = static_cast<int>(std::clamp<long long>(byWork, 2, std::min<long long>(count, 8LL * (helpers + 1))));
    parallelFor(*pool, count, chunks, [&work](int begin, int end) {
        for (int i = begin; i < end; ++i) work(i);
    });
}

} // namespace tosvar
