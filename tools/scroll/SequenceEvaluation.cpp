#include "SequenceEvaluation.h"

#include "ScrollReplay.h"
#include "ScrollSessionFolder.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <set>

namespace tosvar::ScrollCorpus {

namespace {

// What one document row shows: a row of the fixed lead or trail of the
// frame, or a page row.
struct Line {
    enum class Kind { lead, page, trail } kind = Kind::page;
    int index = 0;
};

bool inside(const PixelRect& r, int x, int y, int margin) {
    return x >= r.x - margin && x < r.maxX() + margin && y >= r.y - margin && y < r.maxY() + margin;
}

// The line and the frame row behind every row of the document.
struct RowOrigins {
    std::vector<Line> lines;
    std::vector<int> frameRows;
    std::vector<int> pieceStarts; // document row of each piece
};

RowOrigins originsOf(const std::vector<ScrollPiece>& pieces, const DocumentTruth& truth, const std::vector<int>& offsets,
                     int frameHeight) {
    RowOrigins origins;
    for (const ScrollPiece& piece : pieces) {
        origins.pieceStarts.push_back(static_cast<int>(origins.lines.size()));
        for (int k = 0; k < piece.image.height(); ++k) {
            const int y = piece.source.row + k;
            Line line;
            if (y < truth.lead) line = {Line::Kind::lead, y};
            else if (y >= frameHeight - truth.trail) line = {Line::Kind::trail, y - (frameHeight - truth.trail)};
            else line = {Line::Kind::page, offsets[piece.source.frame] + y - truth.lead};
            origins.lines.push_back(line);
            origins.frameRows.push_back(y);
        }
    }
    return origins;
}

// Whether the rows of `kind` are there exactly once each, `count` of them.
bool exactlyOnce(const std::vector<Line>& lines, Line::Kind kind, int count) {
    std::set<int> seen;
    int rows = 0;
    for (const Line& line : lines)
        if (line.kind == kind) {
            ++rows;
            seen.insert(line.index);
        }
    return rows == count && static_cast<int>(seen.size()) == count;
}

void checkSeams(const RowOrigins& origins, int firstPage, int endPage, SequenceResult& result) {
    const std::vector<Line>& lines = origins.lines;
    for (std::size_t p = 1; p < origins.pieceStarts.size(); ++p) {
        const int at = origins.pieceStarts[p];
        if (at == 0 || at >= static_cast<int>(lines.size())) continue;
        const Line& before = lines[at - 1];
        const Line& after = lines[at];
        if (before.kind != Line::Kind::page || after.kind != Line::Kind::page) continue;
        ++result.seams;
        if (after.index != before.index + 1) ++result.badSeams;
    }
    std::set<int> pageLines;
    int pageRows = 0;
    for (const Line& line : lines)
        if (line.kind == Line::Kind::page) {
            ++pageRows;
            pageLines.insert(line.index);
        }
    result.duplicatedRows = pageRows - static_cast<int>(pageLines.size());
    for (int p = firstPage; p < endPage; ++p) result.missingRows += pageLines.count(p) == 0;
}

// Compares each document row with the page row it should show, outside the
// moving parts, the overlays and the trailing columns kept out of matching.
void comparePixels(const ImageBuffer& document, const RowOrigins& origins, const DocumentTruth& truth, int firstPage,
                   int frameWidth, SequenceResult& result) {
    constexpr int tolerance = 16, margin = 2;
    const int columnsEnd = std::min(truth.crossStart + truth.crossLength, frameWidth - ScrollStitcher::trailingInset(frameWidth));
    const int pageEnd = truth.lead + std::min(result.expectedHeight - truth.lead - truth.trail, document.height() - truth.lead);
    for (int row = truth.lead; row < pageEnd; ++row) {
        const int pageRow = firstPage + row - truth.lead;
        if (pageRow >= truth.page.height()) break;
        for (int x = truth.crossStart; x < columnsEnd; ++x) {
            const int c = x - truth.crossStart;
            if (std::any_of(truth.moving.begin(), truth.moving.end(), [&](const PixelRect& r) { return inside(r, c, pageRow, margin); }))
                continue;
            const int frameRow = origins.frameRows[row];
            if (std::any_of(truth.overlays.begin(), truth.overlays.end(), [&](const PixelRect& r) { return inside(r, x, frameRow, margin); }))
                continue;
            const Rgba8 got = document.pixel(x, row), want = truth.page.pixel(c, pageRow);
            ++result.comparedPixels;
            if (std::abs(got.r - want.r) > tolerance || std::abs(got.g - want.g) > tolerance ||
                std::abs(got.b - want.b) > tolerance)
                ++result.mismatchedPixels;
        }
    }
}

} // namespace

Expected<SequenceResult> evaluateSequence(const std::filesystem::path& folder, bool detectAxis, WorkerPool* workers) {
    Expected<Truth> truth = readTruth(folder);
    if (!truth) return truth.error();
    const Truth& t = *truth;
    Expected<Sequence> sequence =
        Sequence::generate({t.className, t.size, static_cast<int>(t.files.size()), t.seed, t.motion});
    if (!sequence) return sequence.error();
    for (int i = 0; i < sequence->frameCount(); ++i)
        if (sequence->offset(i) != t.offsets[i]) return Error{folder.string() + ": the page drawn from its seed differs"};

    SequenceResult result{t, {}, {}, std::nullopt};
    ScrollReplay replay(detectAxis ? std::nullopt : std::optional<ScrollAxis>(t.axis), workers);
    bool lost = false;
    for (std::size_t i = 0; i < t.files.size(); ++i) {
        Expected<ImageBuffer> frame = ScrollSessionFolder::readFrame(folder / t.files[i]);
        if (!frame) return frame.error();
        const auto start = std::chrono::steady_clock::now();
        const ScrollStitcher::Result r = replay.ingest(*frame);
        result.ingestMilliseconds.push_back(
            std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count());
        result.results.push_back(r);
        const ScrollStitcher& stitcher = replay.stitcher();
        if (!stitcher.seeded) continue;
        const bool placedRight = stitcher.viewDocTop == t.offsets[i] - t.offsets[0];
        if (r.delta && !placedRight) ++result.misplacedFrames;
        if (r.kind.tag == ScrollResultKind::Tag::lowConfidence && !lost) {
            lost = true;
            ++result.lostEpisodes;
        } else if (lost && r.delta) {
            lost = false;
            result.recoveredRight += placedRight;
        }
    }
    result.axis = replay.decidedAxis();

    const ScrollStitcher& stitcher = replay.stitcher();
    const DocumentTruth document = sequence->documentTruth();
    const std::vector<ScrollPiece> pieces = stitcher.pieces(true);
    const RowOrigins origins = originsOf(pieces, document, t.offsets, stitcher.frameHeight);
    const int firstPage = *std::min_element(t.offsets.begin(), t.offsets.end());
    const int endPage = *std::max_element(t.offsets.begin(), t.offsets.end()) + document.length;
    result.outputHeight = static_cast<int>(origins.lines.size());
    result.expectedHeight = document.lead + (endPage - firstPage) + document.trail;
    result.leadOnce = exactlyOnce(origins.lines, Line::Kind::lead, document.lead);
    result.trailOnce = exactlyOnce(origins.lines, Line::Kind::trail, document.trail);
    checkSeams(origins, firstPage, endPage, result);
    if (const std::optional<ImageBuffer> image = stitcher.composited(std::nullopt, std::nullopt, true))
        comparePixels(*image, origins, document, firstPage, stitcher.frameWidth, result);
    return result;
}

} // namespace tosvar::ScrollCorpus
