#pragma once

#include <cstdint>
#include <vector>

namespace tosvar::MedianCut {

// A palette of at most `maxColors` colours (0x00RRGGBB) for the samples:
// the distinct colours themselves when there are few enough, else the means
// of boxes split at the median sample of the channel that varies most in
// them, the box with the largest squared error first, so frequent colours
// get more entries. Works on the distinct
// colours with their counts, so millions of samples cost little. Sorted
// ascending.
std::vector<std::uint32_t> palette(const std::vector<std::uint32_t>& samples, int maxColors);

} // namespace tosvar::MedianCut
