#pragma once

#include <functional>

namespace tosvar {

// Runs `body(begin, end)` over parts of [0, count) and returns when all are
// done: on threads of a pool, or serially by default. Kernels take one so
// they stay free of any particular pool.
using ParallelRunner = std::function<void(int count, const std::function<void(int begin, int end)>& body)>;

inline void runSerially(int count, const std::function<void(int begin, int end)>& body) {
    if (count > 0) body(0, count);
}

} // namespace tosvar
