#pragma once

#include "ImageBuffer.h"

#include <cstdint>
#include <vector>

// The inner loops of frame matching, written as plain loops over contiguous
// rows that the compiler turns into vector code. Float sums run in eight
// lanes that are flushed into a double every 2048 elements: with integer gray
// levels (0-255) every partial sum, square and product stays exact, so the
// results do not depend on the order of the additions and ties compare equal.
namespace tosvar::ScrollKernels {

// Gray weights per byte of a pixel in memory order; they sum to 256.
struct GrayWeights {
    std::uint32_t byte[4] = {};
};
// 77, 150, 29 on red, green and blue, placed where each order keeps them.
GrayWeights grayWeights(PixelOrder order);

// gray = (w0 * p[0] + w1 * p[1] + w2 * p[2] + w3 * p[3]) / 256, truncated, for
// `count` pixels of 4 bytes.
void grayRow(const std::uint8_t* pixels, int count, const GrayWeights& weights, std::uint8_t* out);

// Area-averaging reduction of a row from `sourceWidth` to `targetWidth`
// columns in exact 32-bit integer arithmetic: each output is the mean of the
// source span it covers (fractional end pixels weighted by their share),
// rounded half up. The span table depends only on the two widths, so one
// resampler serves every row of an image.
class ColumnResampler {
public:
    // Whether the integrals of a row, scaled by the target width, fit 32 bits.
    static bool fits(int sourceWidth, int targetWidth);
    // Both widths at least 1, the target at most the source, and `fits`.
    ColumnResampler(int sourceWidth, int targetWidth);
    int sourceWidth() const { return sourceWidth_; }
    int targetWidth() const { return targetWidth_; }
    // `prefix` is scratch space, reused between rows.
    void resample(const std::uint8_t* in, std::uint8_t* out, std::vector<std::uint32_t>& prefix) const;

private:
    struct Edge {
        int pixel;              // source pixel holding the edge
        std::uint32_t fraction; // position within it, in units of 1 / targetWidth
    };
    int sourceWidth_;
    int targetWidth_;
    std::vector<Edge> edges_; // targetWidth + 1 span edges
};

void widen(const std::uint8_t* in, float* out, int count);

// Sum of |a[i] - b[i]|.
double absDiffSum(const float* a, const float* b, int count);

// Sum of |a[i] - b[i]| over the entries where |a[i] - c[i]| exceeds `threshold`.
double changedAbsDiffSum(const float* a, const float* b, const float* c, int count, float threshold);

// The five sums of a Pearson correlation of `a` and `b`.
struct PearsonSums {
    double sumA = 0, sumB = 0, sumSqA = 0, sumSqB = 0, dot = 0;
    PearsonSums& operator+=(const PearsonSums& other);
};
PearsonSums pearsonSums(const float* a, const float* b, int count);

// Count of |a[i] - b[i]| > tolerance over bytes.
int mismatchCount(const std::uint8_t* a, const std::uint8_t* b, int count, int tolerance);
// Count of |p[i] - p[i + 1]| > tolerance for i in [0, count - 1).
int edgeCount(const std::uint8_t* p, int count, int tolerance);

} // namespace tosvar::ScrollKernels
