#pragma once

#include <functional>

namespace tosvar {

class WorkerPool;

// Runs `work(i)` for every i in [0, count), each index exactly once. With a
// pool and enough work (`count * cellsPerIndex` large), the range is cut into
// chunks that the calling thread and the pool's threads take in turn; the
// call returns when every chunk is done. The caller always works too, so a
// scan started from a pool thread cannot wait on a pool busy with its own
// callers. Each `work(i)` must write only its own result, which keeps the
// outcome independent of the number of threads.
void scanShifts(WorkerPool* pool, int count, long long cellsPerIndex, const std::function<void(int)>& work);

} // namespace tosvar
