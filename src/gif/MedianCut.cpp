#include "MedianCut.h"

#include <algorithm>
#include <array>

namespace tosvar::MedianCut {

namespace {

int channel(std::uint32_t colour, int c) { return static_cast<int>((colour >> (16 - 8 * c)) & 0xFF); }

// A distinct colour and how many samples have it.
struct Weighted {
    std::uint32_t colour;
    std::uint64_t weight;
};

struct Box {
    std::size_t begin = 0, end = 0; // into the distinct colours
    std::uint64_t weight = 0;
    double error = 0; // the samples' squared distance from the box's mean, summed
    int channel = 0;  // the channel that varies most: 0 red, 1 green, 2 blue
};

Box measured(const std::vector<Weighted>& colours, std::size_t begin, std::size_t end) {
    Box box{begin, end, 0, 0, 0};
    if (begin == end) return box;
    std::array<double, 3> sum{}, squares{};
    for (std::size_t i = begin; i < end; ++i) {
        const double w = static_cast<double>(colours[i].weight);
        box.weight += colours[i].weight;
        for (int c = 0; c < 3; ++c) {
            const double v = channel(colours[i].colour, c);
            sum[c] += w * v;
            squares[c] += w * v * v;
        }
    }
    double widest = -1;
    for (int c = 0; c < 3; ++c) {
        const double spread = squares[c] - sum[c] * sum[c] / static_cast<double>(box.weight);
        box.error += spread;
        if (spread > widest) widest = spread, box.channel = c;
    }
    return box;
}

// The distinct colours with their counts, ascending: one counter per 24-bit
// colour, which a few million samples fill faster than any sort.
std::vector<Weighted> histogram(const std::vector<std::uint32_t>& samples) {
    std::vector<std::uint32_t> counts(1u << 24, 0);
    for (std::uint32_t sample : samples) ++counts[sample & 0xFFFFFF];
    std::vector<Weighted> colours;
    for (std::uint32_t colour = 0; colour < counts.size(); ++colour)
        if (counts[colour]) colours.push_back({colour, counts[colour]});
    return colours;
}

} // namespace

std::vector<std::uint32_t> palette(const std::vector<std::uint32_t>& samples, int maxColors) {
    if (samples.empty() || maxColors <= 0) return {};
    std::vector<Weighted> colours = histogram(samples);
    if (static_cast<int>(colours.size()) <= maxColors) {
        std::vector<std::uint32_t> exact;
        for (const Weighted& w : colours) exact.push_back(w.colour);
        return exact;
    }
    // Every sample counts, so frequent colours weigh in the medians. The box
    // split next is the one whose samples lie farthest from its colour in
    // all, which is what the picture's error is made of.
    std::vector<Box> boxes{measured(colours, 0, colours.size())};
    while (static_cast<int>(boxes.size()) < maxColors) {
        std::size_t widest = boxes.size();
        for (std::size_t i = 0; i < boxes.size(); ++i)
            if (boxes[i].end - boxes[i].begin >= 2 && (widest == boxes.size() || boxes[i].error > boxes[widest].error)) widest = i;
        if (widest == boxes.size()) break;
        const Box box = boxes[widest];
        const int c = box.channel;
        const auto first = colours.begin() + static_cast<std::ptrdiff_t>(box.begin);
        const auto last = colours.begin() + static_cast<std::ptrdiff_t>(box.end);
        std::stable_sort(first, last, [c](const Weighted& a, const Weighted& b) { return channel(a.colour, c) < channel(b.colour, c); });
        // The split where half the box's samples lie below, never leaving a side empty.
        std::uint64_t below = 0;
        std::size_t middle = box.begin;
        while (middle + 1 < box.end && 2 * (below + colours[middle].weight) <= box.weight) below += colours[middle++].weight;
        if (middle == box.begin) ++middle;
        boxes[widest] = measured(colours, box.begin, middle);
        boxes.push_back(measured(colours, middle, box.end));
    }
    std::vector<std::uint32_t> result;
    for (const Box& box : boxes) {
        std::array<std::uint64_t, 3> sum{};
        for (std::size_t i = box.begin; i < box.end; ++i)
            for (int c = 0; c < 3; ++c) sum[c] += static_cast<std::uint64_t>(channel(colours[i].colour, c)) * colours[i].weight;
        result.push_back(static_cast<std::uint32_t>((sum[0] / box.weight) << 16 | (sum[1] / box.weight) << 8 | (sum[2] / box.weight)));
    }
    std::sort(result.begin(), result.end());
    return result;
}

} // namespace tosvar::MedianCut
