#include "MedianCut.h"

#include <algorithm>
#include <array>

namespace tosvar::MedianCut {

namespace {

int channel(std::uint32_t colour, int c) { return static_cast<int>((colour >> (16 - 8 * c)) & 0xFF); }

struct Box {
    std::size_t begin = 0, end = 0;
    int extent = 0;
    int channel = 0; // 0 red, 1 green, 2 blue
};

Box measured(const std::vector<std::uint32_t>& samples, std::size_t begin, std::size_t end) {
    Box box{begin, end, 0, 0};
    if (begin == end) return box;
    std::array<int, 3> lo{255, 255, 255}, hi{0, 0, 0};
    for (std::size_t i = begin; i < end; ++i)
        for (int c = 0; c < 3; ++c) {
            lo[c] = std::min(lo[c], channel(samples[i], c));
            hi[c] = std::max(hi[c], channel(samples[i], c));
        }
    for (int c = 0; c < 3; ++c)
        if (hi[c] - lo[c] > box.extent) box.extent = hi[c] - lo[c], box.channel = c;
    return box;
}

} // namespace

std::vector<std::uint32_t> palette(const std::vector<std::uint32_t>& input, int maxColors) {
    if (input.empty() || maxColors <= 0) return {};
    std::vector<std::uint32_t> distinct(input);
    for (std::uint32_t& colour : distinct) colour &= 0xFFFFFF;
    std::sort(distinct.begin(), distinct.end());
    distinct.erase(std::unique(distinct.begin(), distinct.end()), distinct.end());
    if (static_cast<int>(distinct.size()) <= maxColors) return distinct;

    std::vector<std::uint32_t> samples(input);
    for (std::uint32_t& colour : samples) colour &= 0xFFFFFF;
    std::vector<Box> boxes{measured(samples, 0, samples.size())};
    while (static_cast<int>(boxes.size()) < maxColors) {
        std::size_t widest = boxes.size();
        for (std::size_t i = 0; i < boxes.size(); ++i)
            if (boxes[i].end - boxes[i].begin >= 2 && (widest == boxes.size() || boxes[i].extent > boxes[widest].extent)) widest = i;
        if (widest == boxes.size()) break;
        const Box box = boxes[widest];
        const int c = box.channel;
        std::stable_sort(samples.begin() + static_cast<std::ptrdiff_t>(box.begin), samples.begin() + static_cast<std::ptrdiff_t>(box.end),
                         [c](std::uint32_t a, std::uint32_t b) { return channel(a, c) < channel(b, c); });
        const std::size_t middle = box.begin + (box.end - box.begin) / 2;
        boxes[widest] = measured(samples, box.begin, middle);
        boxes.push_back(measured(samples, middle, box.end));
    }
    std::vector<std::uint32_t> colours;
    for (const Box& box : boxes) {
        if (box.begin == box.end) continue;
        std::array<std::uint64_t, 3> sum{};
        for (std::size_t i = box.begin; i < box.end; ++i)
            for (int c = 0; c < 3; ++c) sum[c] += static_cast<std::uint64_t>(channel(samples[i], c));
        const std::uint64_t n = box.end - box.begin;
        colours.push_back(static_cast<std::uint32_t>((sum[0] / n) << 16 | (sum[1] / n) << 8 | (sum[2] / n)));
    }
    std::sort(colours.begin(), colours.end());
    return colours;
}

} // namespace tosvar::MedianCut
