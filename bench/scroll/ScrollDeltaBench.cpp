// Time of one movement search (findDelta) on corpus frame pairs of 1600x1000
// and 3200x2000, on one thread. The common path is a page of text scrolled by
// a usual step; the slowest path is the slowest pair met in sequences built
// to defeat the cheap steps (blank stretches, repeated table rows, moving
// parts, faint text), replayed from their first frame so the search carries
// the state it would have; the lost path is a pair of unrelated frames, on
// which every step runs and the answer is none. The gray of each frame at
// full width is made afresh in every run, as for a new frame. Also the cost
// of turning a frame into its patches, paid once per frame.
#include "PairSearch.h"
#include "ScrollCorpus.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <variant>

using namespace tosvar;
using namespace tosvar::ScrollCorpus;

namespace {

// One pair ready to search, with the search state its sequence left.
struct Case {
    std::string name;
    PairSearch::Prepared pair;
    ScrollStitcher stitcher;
};

std::optional<int> searchOnce(const Case& c) {
    ScrollStitcher stitcher = c.stitcher;
    stitcher.fullGrays = std::make_shared<ScrollFullGrayCache>();
    const PairSearch::Prepared& p = c.pair;
    return stitcher.findDelta(p.prevPatch, p.prevCoarse, p.nextPatch, p.nextCoarse, p.regionTop, p.regionBottom,
                              p.maxOffset);
}

// The fastest of three runs, so a busy moment does not pick the case.
double millisecondsOf(const Case& c) {
    double fastest = 0;
    for (int run = 0; run < 3; ++run) {
        const auto start = std::chrono::steady_clock::now();
        benchmark::DoNotOptimize(searchOnce(c));
        const double ms = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
        fastest = run == 0 ? ms : std::min(fastest, ms);
    }
    return fastest;
}

// Replays `className` at `size` and hands every searched pair to `visit`.
template <typename Visit>
void replay(const std::string& className, FrameSize size, Visit visit) {
    Expected<Sequence> sequence = Sequence::generate({className, size, 24, 1});
    if (!sequence) {
        std::fprintf(stderr, "%s\n", sequence.error().message.c_str());
        std::exit(1);
    }
    PairSearch search;
    ImageBuffer prev = sequence->frame(0);
    for (int i = 1; i < sequence->frameCount(); ++i) {
        ImageBuffer next = sequence->frame(i);
        auto prepared = search.prepare(prev, next, sequence->axis());
        if (auto* pair = std::get_if<PairSearch::Prepared>(&prepared)) {
            visit(Case{className + " pair " + std::to_string(i), *pair, search.stitcherFor(*pair)},
                  sequence->offset(i) - sequence->offset(i - 1));
            search.search(*pair);
        }
        prev = std::move(next);
    }
}

// The first text pair that moved by a usual step: a tenth to a third of the frame.
Case commonCase(FrameSize size) {
    std::optional<Case> found;
    replay("text", size, [&](Case c, int step) {
        if (!found && step >= size.height / 10 && step <= size.height / 3) found = std::move(c);
    });
    return std::move(*found);
}

Case slowestCase(FrameSize size) {
    std::optional<Case> slowest;
    double slowestMs = 0;
    for (const char* className : {"blank", "table", "dynamic", "lowcontrast", "media"})
        replay(className, size, [&](Case c, int) {
            const double ms = millisecondsOf(c);
            if (ms > slowestMs) {
                slowestMs = ms;
                slowest = std::move(c);
            }
        });
    return std::move(*slowest);
}

// The first frame of a text page against the last frame of another.
Case lostCase(FrameSize size) {
    Expected<Sequence> first = Sequence::generate({"text", size, 2, 1});
    Expected<Sequence> second = Sequence::generate({"code", size, 24, 2});
    PairSearch search;
    auto prepared = search.prepare(first->frame(0), second->frame(23), ScrollAxis::vertical);
    const auto& pair = std::get<PairSearch::Prepared>(prepared);
    return Case{"text and code frames", pair, search.stitcherFor(pair)};
}

void registerSearch(const std::string& path, FrameSize size, Case c) {
    const std::string name = "findDelta/" + path + "/" + std::to_string(size.width) + "x" + std::to_string(size.height) +
                             " (" + c.name + ")";
    benchmark::RegisterBenchmark(name.c_str(), [c = std::move(c)](benchmark::State& state) {
        for (auto _ : state) benchmark::DoNotOptimize(searchOnce(c));
    })->Unit(benchmark::kMillisecond);
}

void registerPatch(FrameSize size) {
    Expected<Sequence> sequence = Sequence::generate({"text", size, 2, 1});
    const ImageBuffer frame = sequence->frame(1);
    const std::string name = "framePatches/" + std::to_string(size.width) + "x" + std::to_string(size.height);
    benchmark::RegisterBenchmark(name.c_str(), [frame](benchmark::State& state) {
        for (auto _ : state) {
            const auto patch = ScrollPatch::fromImage(frame, 384, ScrollStitcher::trailingInset(frame.width()));
            benchmark::DoNotOptimize(patch->coarsened(4, 2));
        }
    })->Unit(benchmark::kMillisecond);
}

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    for (FrameSize size : {FrameSize{1600, 1000}, FrameSize{3200, 2000}}) {
        registerSearch("common", size, commonCase(size));
        registerSearch("slowest", size, slowestCase(size));
        registerSearch("lost", size, lostCase(size));
        registerPatch(size);
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
