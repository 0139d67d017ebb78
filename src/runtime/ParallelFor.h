#pragma once

#include "WorkerPool.h"

#include <functional>

namespace tosvar {

// Runs `body(begin, end)` over [0, count) in `pieces` parts, on the pool's
// threads and on the calling thread, and returns when every part is done.
// The caller takes parts itself, so it finishes even when every thread of the
// pool is busy, or when it is one of them.
void parallelFor(WorkerPool& pool, int count, int pieces, const std::function<void(int begin, int end)>& body);

} // namespace tosvar
