// tosvar-scroll: the scrolling-capture bench at the command line.
//   generate OUT [--classes a,b] [--sizes WxH,...] [--frames N] [--seed N] [--motion NAME]
//   delta PREV.png NEXT.png [--horizontal]
//   eval DIR... [--threads N] [--list]
//   replay DIR [-o OUT.png] [--horizontal]
#include "AtomicFile.h"
#include "CorpusEvaluation.h"
#include "PngDecoder.h"
#include "ScrollCorpus.h"
#include "ScrollReplay.h"
#include "ScrollSessionFolder.h"
#include "SequenceEvaluation.h"
#include "WorkerPool.h"

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <vector>

using namespace tosvar;
using namespace tosvar::ScrollCorpus;

namespace {

int usage() {
    std::fprintf(stderr,
                 "usage: tosvar-scroll generate OUT [--classes a,b,...] [--sizes WxH,...] [--frames N] [--seed N]\n"
                 "                              [--motion mixed|backforth|jumpback|upward]\n"
                 "       tosvar-scroll delta PREV.png NEXT.png [--horizontal]\n"
                 "       tosvar-scroll eval DIR... [--threads N] [--list] [--detect-axis]\n"
                 "       tosvar-scroll replay DIR [-o OUT.png] [--horizontal]\n"
                 "classes:");
    for (const std::string& name : classNames()) std::fprintf(stderr, " %s", name.c_str());
    std::fprintf(stderr, "\nDIR of replay: a recorded session folder (meta.json) or a folder of numbered PNG frames\n");
    return 2;
}

std::vector<std::string> split(const std::string& text) {
    std::vector<std::string> parts;
    std::size_t start = 0;
    for (std::size_t comma; (comma = text.find(',', start)) != std::string::npos; start = comma + 1)
        parts.push_back(text.substr(start, comma - start));
    parts.push_back(text.substr(start));
    return parts;
}

std::optional<int> parseInt(const std::string& text) {
    try {
        std::size_t used = 0;
        const int value = std::stoi(text, &used);
        if (used == text.size()) return value;
    } catch (const std::exception&) {
    }
    return std::nullopt;
}

int generate(const std::vector<std::string>& args) {
    if (args.empty()) return usage();
    const std::filesystem::path out = args[0];
    std::vector<std::string> classes = classNames();
    std::vector<FrameSize> sizes = frameSizes();
    int frames = 16;
    std::uint32_t seed = 1;
    Motion motion = Motion::mixed;
    for (std::size_t i = 1; i < args.size(); ++i) {
        const bool hasValue = i + 1 < args.size();
        if (args[i] == "--classes" && hasValue) {
            classes = split(args[++i]);
        } else if (args[i] == "--sizes" && hasValue) {
            sizes.clear();
            for (const std::string& size : split(args[++i])) {
                const std::size_t x = size.find('x');
                const auto w = parseInt(size.substr(0, x)), h = x == std::string::npos ? std::nullopt : parseInt(size.substr(x + 1));
                if (!w || !h) {
                    std::fprintf(stderr, "tosvar-scroll: bad size \"%s\" (want WIDTHxHEIGHT)\n", size.c_str());
                    return 2;
                }
                sizes.push_back({*w, *h});
            }
        } else if (args[i] == "--frames" && hasValue && parseInt(args[i + 1])) {
            frames = *parseInt(args[++i]);
        } else if (args[i] == "--motion" && hasValue && motionNamed(args[i + 1])) {
            motion = *motionNamed(args[++i]);
        } else if (args[i] == "--seed" && hasValue && parseInt(args[i + 1])) {
            seed = static_cast<std::uint32_t>(*parseInt(args[++i]));
        } else {
            return usage();
        }
    }
    for (const std::string& name : classes)
        for (const FrameSize& size : sizes) {
            Expected<Sequence> sequence = Sequence::generate({name, size, frames, seed, motion});
            if (!sequence) {
                std::fprintf(stderr, "tosvar-scroll: %s\n", sequence.error().message.c_str());
                return 1;
            }
            const std::filesystem::path folder =
                out / (name + "-" + std::to_string(size.width) + "x" + std::to_string(size.height) +
                       (motion == Motion::mixed ? "" : std::string("-") + motionName(motion)));
            if (std::optional<Error> failed = write(*sequence, folder)) {
                std::fprintf(stderr, "tosvar-scroll: %s\n", failed->message.c_str());
                return 1;
            }
            std::printf("%s: %d frames\n", folder.string().c_str(), sequence->frameCount());
        }
    return 0;
}

int delta(const std::vector<std::string>& args) {
    if (args.size() < 2 || args.size() > 3 || (args.size() == 3 && args[2] != "--horizontal")) return usage();
    Expected<ImageBuffer> prev = PngDecoder::decodeFile(args[0]);
    Expected<ImageBuffer> next = PngDecoder::decodeFile(args[1]);
    for (const Expected<ImageBuffer>* image : {&prev, &next})
        if (!*image) {
            std::fprintf(stderr, "tosvar-scroll: %s\n", image->error().message.c_str());
            return 1;
        }
    if (prev->width() != next->width() || prev->height() != next->height()) {
        std::fprintf(stderr, "tosvar-scroll: the frames differ in size\n");
        return 1;
    }
    PairSearch search;
    const std::optional<int> found =
        search.measure(*prev, *next, args.size() == 3 ? ScrollAxis::horizontal : ScrollAxis::vertical).delta;
    if (found) std::printf("delta %d\n", *found);
    else std::printf("delta none\n");
    return 0;
}

// Tallies of one pair class at one frame size.
struct Tally {
    int exact = 0, alike = 0, wrong = 0, none = 0;
    std::vector<double> milliseconds;
    int pairs() const { return exact + alike + wrong + none; }
    void add(Outcome outcome, double ms) {
        (outcome == Outcome::exact ? exact : outcome == Outcome::alike ? alike : outcome == Outcome::wrong ? wrong : none) += 1;
        milliseconds.push_back(ms);
    }
    Tally& operator+=(const Tally& other) {
        exact += other.exact;
        alike += other.alike;
        wrong += other.wrong;
        none += other.none;
        milliseconds.insert(milliseconds.end(), other.milliseconds.begin(), other.milliseconds.end());
        return *this;
    }
};

double percentile(std::vector<double> values, double p) {
    if (values.empty()) return 0;
    std::sort(values.begin(), values.end());
    return values[std::min(values.size() - 1, static_cast<std::size_t>(p * (values.size() - 1) + 0.5))];
}

void printRow(const std::string& name, const std::string& size, const Tally& t) {
    const double n = std::max(t.pairs(), 1);
    std::printf("%-22s %-10s %6d %8.2f%% %7.2f%% %7.2f%% %7.2f%% %8.2f %8.2f\n", name.c_str(), size.c_str(), t.pairs(),
                100.0 * t.exact / n, 100.0 * t.alike / n, 100.0 * t.wrong / n, 100.0 * t.none / n,
                percentile(t.milliseconds, 0.5),
                percentile(t.milliseconds, 0.95));
}

// Pair class: the sequence class, marked with the view when the view is not unique.
using TallyKey = std::pair<std::string, std::string>; // pair class, frame size
struct Tallies {
    std::map<TallyKey, Tally> byClass;
    std::map<TallyKey, Tally> byView;
};

std::optional<Error> tally(const std::filesystem::path& folder, WorkerPool* workers, bool listMisses, Tallies& tallies) {
    Expected<FolderResult> result = evaluateFolder(folder, workers);
    if (!result) return result.error();
    const Truth& truth = result->truth;
    const std::string size = std::to_string(truth.size.width) + "x" + std::to_string(truth.size.height);
    for (const PairResult& pair : result->pairs) {
        const std::string pairClass =
            truth.className + (pair.view == PairView::unique ? "" : std::string("/") + pairViewName(pair.view));
        tallies.byClass[{pairClass, size}].add(pair.outcome, pair.milliseconds);
        tallies.byView[{pairViewName(pair.view), size}].add(pair.outcome, pair.milliseconds);
        if (listMisses && pair.outcome != Outcome::exact)
            std::printf("%s %s: true %d, found %s%s\n", (folder / truth.files[pair.frame]).string().c_str(),
                        pairViewName(pair.view), pair.trueDelta,
                        pair.found.delta ? std::to_string(*pair.found.delta).c_str() : "none",
                        pair.found.unchanged ? " (unchanged)" : pair.outcome == Outcome::alike ? " (alike)" : "");
    }
    return std::nullopt;
}

int eval(const std::vector<std::string>& args) {
    std::vector<std::filesystem::path> folders;
    unsigned threads = 0;
    bool listMisses = false;
    bool detectAxis = false;
    for (std::size_t i = 0; i < args.size(); ++i) {
        if (args[i] == "--detect-axis") {
            detectAxis = true;
            continue;
        }
        if (args[i] == "--threads" && i + 1 < args.size() && parseInt(args[i + 1])) {
            threads = static_cast<unsigned>(std::max(*parseInt(args[++i]), 0));
            continue;
        }
        if (args[i] == "--list") {
            listMisses = true;
            continue;
        }
        const std::filesystem::path dir = args[i];
        if (std::filesystem::exists(dir / "truth.json")) {
            folders.push_back(dir);
            continue;
        }
        std::error_code error;
        std::vector<std::filesystem::path> inside;
        for (const auto& entry : std::filesystem::directory_iterator(dir, error))
            if (std::filesystem::exists(entry.path() / "truth.json")) inside.push_back(entry.path());
        if (error || inside.empty()) {
            std::fprintf(stderr, "tosvar-scroll: %s holds no truth.json, nor do its folders\n", dir.string().c_str());
            return 1;
        }
        std::sort(inside.begin(), inside.end());
        folders.insert(folders.end(), inside.begin(), inside.end());
    }
    if (folders.empty()) return usage();
    std::unique_ptr<WorkerPool> pool = threads > 0 ? std::make_unique<WorkerPool>(threads, "scroll-eval") : nullptr;

    Tallies tallies;
    for (const auto& folder : folders)
        if (std::optional<Error> failed = tally(folder, pool.get(), listMisses, tallies)) {
            std::fprintf(stderr, "tosvar-scroll: %s\n", failed->message.c_str());
            return 1;
        }
    std::printf("%-22s %-10s %6s %9s %8s %8s %8s %8s %8s\n", "pair class", "size", "pairs", "exact", "alike", "wrong", "none",
                "ms p50", "ms p95");
    for (const auto& [key, tally] : tallies.byClass) printRow(key.first, key.second, tally);
    std::printf("\n");
    std::map<std::string, Tally> viewTotals, sizeTotals;
    for (const auto& [key, tally] : tallies.byView) {
        printRow("view " + key.first, key.second, tally);
        viewTotals[key.first] += tally;
        sizeTotals[key.second] += tally;
    }
    for (const auto& [view, tally] : viewTotals) printRow("view " + view, "all", tally);
    Tally all;
    for (const auto& [size, tally] : sizeTotals) {
        printRow("all", size, tally);
        all += tally;
    }
    printRow("all", "all", all);

    std::printf("\n%-24s %-10s %7s %7s %6s %5s %5s %6s %6s %8s %7s %8s %8s\n", "sequence", "size", "height", "error",
                "seams", "bad", "dup", "miss", "bars", "px off", "lost", "misplace", "ms p50");
    for (const auto& folder : folders) {
        Expected<SequenceResult> r = evaluateSequence(folder, detectAxis, pool.get());
        if (!r) {
            std::fprintf(stderr, "tosvar-scroll: %s\n", r.error().message.c_str());
            return 1;
        }
        const std::string name = r->truth.className + (r->truth.motion == Motion::mixed ? "" : std::string("/") + motionName(r->truth.motion));
        const std::string size = std::to_string(r->truth.size.width) + "x" + std::to_string(r->truth.size.height);
        const std::string lost = std::to_string(r->recoveredRight) + "/" + std::to_string(r->lostEpisodes);
        std::printf("%-24s %-10s %7d %+7d %6d %5d %5d %6d %6s %7.3f%% %7s %8d %8.2f%s\n", name.c_str(), size.c_str(),
                    r->outputHeight, r->outputHeight - r->expectedHeight, r->seams, r->badSeams, r->duplicatedRows,
                    r->missingRows, r->leadOnce && r->trailOnce ? "once" : "WRONG",
                    100.0 * r->mismatchedPixels / std::max<long long>(r->comparedPixels, 1), lost.c_str(),
                    r->misplacedFrames, percentile(r->ingestMilliseconds, 0.5),
                    r->axis == r->truth.axis ? "" : " (axis not found)");
    }
    return 0;
}

double peakMemoryMiB() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss / 1024.0;
}

int replay(const std::vector<std::string>& args) {
    std::optional<std::filesystem::path> folder;
    std::filesystem::path out = "stitched.png";
    std::optional<ScrollAxis> axis;
    for (std::size_t i = 0; i < args.size(); ++i) {
        if (args[i] == "-o" && i + 1 < args.size()) out = args[++i];
        else if (args[i] == "--horizontal") axis = ScrollAxis::horizontal;
        else if (!folder) folder = args[i];
        else return usage();
    }
    if (!folder) return usage();
    Expected<std::vector<std::filesystem::path>> files = ScrollSessionFolder::frameFiles(*folder);
    if (!files) {
        std::fprintf(stderr, "tosvar-scroll: %s\n", files.error().message.c_str());
        return 1;
    }
    ScrollReplay session(axis);
    double ingestSeconds = 0;
    for (std::size_t i = 0; i < files->size(); ++i) {
        Expected<ImageBuffer> frame = ScrollSessionFolder::readFrame((*files)[i]);
        if (!frame) {
            std::fprintf(stderr, "tosvar-scroll: %s\n", frame.error().message.c_str());
            return 1;
        }
        const auto start = std::chrono::steady_clock::now();
        const ScrollStitcher::Result r = session.ingest(*frame);
        ingestSeconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        std::printf("%zu %s %s\n", i, r.kind.name(), r.delta ? std::to_string(*r.delta).c_str() : "none");
    }
    const ScrollStitcher& stitcher = session.stitcher();
    AtomicFile file(out);
    std::optional<Error> failed = file.open();
    int width = 0, height = 0;
    if (!failed) {
        const bool sideways = stitcher.axis == ScrollAxis::horizontal;
        for (const ScrollPiece& piece : stitcher.pieces(true)) height += piece.image.height();
        width = stitcher.frameWidth;
        if (sideways) std::swap(width, height);
        failed = stitcher.encodePNG(256, [&](const std::uint8_t* bytes, std::size_t count) { return file.write(bytes, count); });
    }
    if (!failed) failed = file.commit();
    if (failed) {
        std::fprintf(stderr, "tosvar-scroll: %s: %s\n", out.string().c_str(), failed->message.c_str());
        return 1;
    }
    std::printf("output %dx%d%s, %.1f frames/s, peak memory %.0f MiB\n", width, height,
                stitcher.axis == ScrollAxis::horizontal ? " (sideways)" : "",
                ingestSeconds > 0 ? files->size() / ingestSeconds : 0.0, peakMemoryMiB());
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) return usage();
    const std::string command = argv[1];
    const std::vector<std::string> args(argv + 2, argv + argc);
    if (command == "generate") return generate(args);
    if (command == "delta") return delta(args);
    if (command == "eval") return eval(args);
    if (command == "replay") return replay(args);
    return usage();
}
