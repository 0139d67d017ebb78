#pragma once

#include "ParallelRunner.h"

#include <cstddef>
#include <vector>

namespace tosvar {

// A Gaussian blur of standard deviation `sigma` over planes of floats,
// approximated by three box blurs per axis (within a few percent of the true
// kernel). Runs in time independent of sigma.
namespace GaussianBlur {

enum class Edges {
    transparent, // outside the plane counts as 0
    extended,    // outside the plane repeats the nearest edge value
};

// The three box widths whose sum of variances matches sigma.
std::vector<int> boxSizes(double sigma);

// Blurs 1 or 4 interleaved channels of `width` x `height` in place; other
// channel counts are left as they are. Rows and columns are split over `run`.
void blur(std::vector<float>& plane, int width, int height, int channels, double sigma, Edges edges,
          const ParallelRunner& run = runSerially);

} // namespace GaussianBlur

} // namespace tosvar
