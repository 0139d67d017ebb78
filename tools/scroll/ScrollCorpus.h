#pragma once

#include "Expected.h"
#include "ImageBuffer.h"
#include "PixelRect.h"
#include "ScrollBand.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

// Synthetic scrolling sequences with exact ground truth: a tall (or, for
// sideways scrolling, wide) page drawn from a seed, seen through a viewport
// with the fixed and moving parts real pages have, at known offsets.
namespace tosvar::ScrollCorpus {

// The page and viewport recipes, by name:
//   text, code, table, chat, media, lowcontrast, dark, blank: page content;
//   sticky (header, footer, floating button), sidebar, dynamic (video,
//   spinner, blinking caret), noise (grain that changes every frame):
//   viewports over a text page; horizontal: a wide page scrolled sideways.
const std::vector<std::string>& classNames();

struct FrameSize {
    int width = 0;
    int height = 0;
};
// 800x600, 1600x1000 and 3200x2000 (drawn at twice the scale).
const std::vector<FrameSize>& frameSizes();

// What a pair of consecutive frames lets anyone see of its movement, judged
// on the page itself (fixed bars, overlays and moving parts aside):
//   unique: only the true shift lines the two views up;
//   repeated: another shift of at least a quarter overlap lines them up
//   as well (identical rows, or an overlap with nothing in it);
//   flat: no row of either view differs from another.
enum class PairView { unique, repeated, flat };

// A closed range of shifts.
struct ShiftRange {
    int first = 0;
    int last = 0;
    bool contains(int shift) const { return shift >= first && shift <= last; }
};
const char* pairViewName(PairView view);
std::optional<PairView> pairViewNamed(const std::string& name);

// How the page moves from frame to frame:
//   mixed: still frames, small, medium and large steps, now and then a step back;
//   backforth: forward, and every third frame back up into rows already seen;
//   jumpback: forward, then a jump back of more than a frame into rows
//   already seen, held for three frames, then forward again;
//   upward: from well down the page back up to its top.
enum class Motion { mixed, backAndForth, jumpBack, upward };
const char* motionName(Motion motion);
std::optional<Motion> motionNamed(const std::string& name);

struct SequenceRequest {
    std::string className = "text";
    FrameSize size{800, 600};
    int frames = 16;
    std::uint32_t seed = 1;
    Motion motion = Motion::mixed;
};

// What a stitcher should make of a sequence, in its own orientation: rows
// run along the scrolling axis (a sideways sequence is transposed).
struct DocumentTruth {
    int lead = 0;        // fixed rows before the page in every frame (a header; a sidebar when sideways)
    int trail = 0;       // fixed rows after it (a footer)
    int length = 0;      // page rows a frame shows
    int crossStart = 0;  // first column of the page within a row
    int crossLength = 0; // its columns
    std::vector<PixelRect> moving;   // animated parts on the page: x across, y along
    std::vector<PixelRect> overlays; // parts fixed in the frame over the page: x across, y along
    ImageBuffer page;                // the page, rows along the axis
};

// One generated sequence: the page and the offset of every frame. Frames are
// drawn on request. `offset(i)` is the page row (page column when sideways)
// at the top (left) edge of the scrolling area in frame `i`, so the true
// movement between frames a and b is `offset(b) - offset(a)`.
class Sequence {
public:
    static Expected<Sequence> generate(const SequenceRequest& request);

    const SequenceRequest& request() const { return request_; }
    ScrollAxis axis() const { return axis_; }
    int frameCount() const { return static_cast<int>(offsets_.size()); }
    int offset(int frame) const { return offsets_[frame]; }
    // The pair of frames `frame - 1` and `frame`, for frame 1 and up.
    PairView view(int frame) const { return views_[frame]; }
    // The other shifts under which the two views differ in at most two of the
    // lines they share (none for a repeated pair's own): the frames hold
    // too little to tell them from the true one.
    const std::vector<ShiftRange>& alikeShifts(int frame) const { return alike_[frame]; }
    ImageBuffer frame(int index) const;
    DocumentTruth documentTruth() const;

    struct Features; // what the viewport shows besides the page
    struct Layout;   // where the page and the fixed parts sit

private:
    Sequence() = default;

    SequenceRequest request_;
    ScrollAxis axis_ = ScrollAxis::vertical;
    std::vector<int> offsets_;
    std::vector<PairView> views_; // per frame, for the pair it ends; the first is unused
    std::vector<std::vector<ShiftRange>> alike_; // parallel to `views_`
    ImageBuffer page_;
    std::shared_ptr<const Features> features_;
    std::shared_ptr<const Layout> layout_;
};

// Writes frame-000000.png and up, and truth.json, into `folder`.
std::optional<Error> write(const Sequence& sequence, const std::filesystem::path& folder);

// What truth.json holds.
struct Truth {
    std::string className;
    FrameSize size;
    std::uint32_t seed = 1;
    Motion motion = Motion::mixed;
    ScrollAxis axis = ScrollAxis::vertical;
    std::vector<std::string> files; // relative to the folder
    std::vector<int> offsets;
    std::vector<PairView> views; // parallel to `offsets`; the first is unused
    std::vector<std::vector<ShiftRange>> alike; // parallel to `offsets`
};
Expected<Truth> readTruth(const std::filesystem::path& folder);

} // namespace tosvar::ScrollCorpus
