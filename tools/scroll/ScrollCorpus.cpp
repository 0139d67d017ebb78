#include "ScrollCorpus.h"

#include "AtomicFile.h"
#include "CorpusPainter.h"
#include "FileContents.h"
#include "PngEncoder.h"
#include "ScrollSessionFolder.h"
#include "ScrollTranspose.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <random>

namespace tosvar::ScrollCorpus {

struct Sequence::Features {
    bool header = false, footer = false, sidebar = false, floatingButton = false;
    bool video = false, spinner = false, caret = false, noise = false;
};

struct Sequence::Layout {
    int scale = 1;
    int headerH = 0, footerH = 0, sidebarW = 0;
    int contentW = 0, contentH = 0;
    int pageLength = 0; // page rows, or page columns when sideways
    std::vector<PixelRect> videos;
    std::vector<PixelRect> spinners;
    std::vector<PixelRect> carets;
};

namespace {

constexpr Color paper{255, 255, 255};
constexpr Color ink{34, 36, 40};
constexpr Color linkInk{26, 92, 200};

enum class Section {
    paragraph, heading, code, identicalTable, zebraTable, chat, image, gradient, blank, lowContrast, dark, video,
    spinner
};

struct Weighted {
    Section section;
    int weight;
};

struct Recipe {
    std::vector<Weighted> sections;
    Sequence::Features features;
    bool sideways = false;
};

const std::vector<Weighted> textSections = {
    {Section::paragraph, 10}, {Section::heading, 3}, {Section::image, 1}, {Section::code, 1}};

std::optional<Recipe> recipe(const std::string& name) {
    Recipe r;
    if (name == "text") r.sections = textSections;
    else if (name == "code") r.sections = {{Section::code, 6}, {Section::paragraph, 3}, {Section::heading, 1}};
    else if (name == "table")
        r.sections = {{Section::identicalTable, 4}, {Section::zebraTable, 3}, {Section::paragraph, 2}, {Section::heading, 1}};
    else if (name == "chat") r.sections = {{Section::chat, 1}};
    else if (name == "media")
        r.sections = {{Section::image, 4}, {Section::gradient, 2}, {Section::blank, 2}, {Section::paragraph, 2}, {Section::heading, 1}};
    else if (name == "lowcontrast") r.sections = {{Section::lowContrast, 1}};
    else if (name == "dark") r.sections = {{Section::dark, 3}, {Section::paragraph, 1}};
    else if (name == "blank") r.sections = {{Section::blank, 5}, {Section::heading, 1}, {Section::paragraph, 1}};
    else if (name == "sticky" || name == "sidebar" || name == "dynamic" || name == "noise" || name == "horizontal") {
        r.sections = textSections;
        r.features.header = name == "sticky" || name == "horizontal";
        r.features.footer = name == "sticky";
        r.features.floatingButton = name == "sticky";
        r.features.sidebar = name == "sidebar" || name == "horizontal";
        r.features.noise = name == "noise";
        if (name == "dynamic") {
            r.sections.push_back({Section::video, 2});
            r.sections.push_back({Section::spinner, 2});
            r.features.video = r.features.spinner = r.features.caret = true;
        }
        r.sideways = name == "horizontal";
    } else {
        return std::nullopt;
    }
    return r;
}

// Draws the sections of a page, column by column.
class PageWriter {
public:
    PageWriter(MutableImage& page, Sequence::Layout& layout, std::uint32_t seed)
        : painter_(page), layout_(layout), s_(layout.scale), random_(seed), font_(0x5eed) {}

    struct Column {
        int x = 0;
        int width = 0;
        int bgX0 = 0, bgX1 = 0; // the width a section background spans
    };

    Section pick(const std::vector<Weighted>& sections) {
        int total = 0;
        for (const Weighted& w : sections) total += w.weight;
        int r = static_cast<int>(random_() % static_cast<unsigned>(total));
        for (const Weighted& w : sections)
            if ((r -= w.weight) < 0) return w.section;
        return sections.front().section;
    }

    // Draws one section at row `y`; returns the row below it.
    int section(Section kind, const Column& c, int y) {
        switch (kind) {
        case Section::paragraph: return paragraph(c, y, 2 + roll(6), ink);
        case Section::heading: return heading(c, y, ink);
        case Section::code: return code(c, y, {246, 247, 250}, false);
        case Section::identicalTable: return table(c, y, 6 + roll(20), true);
        case Section::zebraTable: return table(c, y, 5 + roll(12), false);
        case Section::chat: return chat(c, y, 3 + roll(6));
        case Section::image: return image(c, y);
        case Section::gradient: return gradient(c, y);
        case Section::blank: return y + (120 + roll(500)) * s_;
        case Section::lowContrast:
            return roll(4) == 0 ? heading(c, y, {200, 200, 206}) : paragraph(c, y, 2 + roll(6), {214, 214, 218});
        case Section::dark: return dark(c, y);
        case Section::video: return video(c, y);
        case Section::spinner: return spinner(c, y);
        }
        return y;
    }

private:
    int roll(int n) { return static_cast<int>(random_() % static_cast<unsigned>(std::max(n, 1))); }

    // Words of glyphs from `x` up to `width`; returns where the line ended.
    double line(double x, double y, double width, Color color, double cellW, double cellH, bool bold) {
        const double advance = 6 * cellW;
        double cursor = x;
        for (;;) {
            const int letters = 1 + roll(8);
            if (cursor + letters * advance > x + width) break;
            const Color wordInk = roll(23) == 0 ? mix(color, linkInk, 0.85) : color;
            for (int i = 0; i < letters; ++i, cursor += advance)
                painter_.glyph(font_, roll(GlyphFont::count), cursor, y, cellW, cellH, wordInk, bold);
            cursor += advance;
        }
        return cursor;
    }

    int paragraph(const Column& c, int y, int lines, Color color) {
        const int lineH = 24 * s_;
        double end = c.x;
        for (int i = 0; i < lines; ++i) {
            const double share = i + 1 == lines ? 0.2 + roll(50) / 100.0 : 0.82 + roll(18) / 100.0;
            end = line(c.x, y + i * lineH + 3 * s_, c.width * share, color, 1.5 * s_, 1.6 * s_, false);
        }
        if (layout_.carets.size() < 4 && roll(3) == 0)
            layout_.carets.push_back({static_cast<int>(end) + 2 * s_, y + (lines - 1) * lineH + 2 * s_, 2 * s_, 20 * s_});
        return y + lines * lineH + 14 * s_;
    }

    int heading(const Column& c, int y, Color color) {
        line(c.x, y + 12 * s_, c.width * (0.3 + roll(40) / 100.0), color, 2.5 * s_, 2.6 * s_, true);
        return y + 12 * s_ + 27 * s_ + 14 * s_;
    }

    int code(const Column& c, int y, Color background, bool onDark) {
        const int lines = 4 + roll(14);
        const int lineH = 21 * s_;
        const int h = lines * lineH + 20 * s_;
        painter_.fillRect(c.x, y, c.x + c.width, y + h, background);
        painter_.fillRect(c.x, y, c.x + 3 * s_, y + h, onDark ? Color{90, 90, 110} : Color{210, 214, 222});
        int indent = 0;
        for (int i = 0; i < lines; ++i) {
            indent = std::clamp(indent + roll(3) - 1, 0, 4);
            double x = c.x + 16 * s_ + indent * 4 * 9 * s_;
            const int top = y + 10 * s_ + i * lineH + 2 * s_;
            for (int token = 0, tokens = 1 + roll(6); token < tokens && x < c.x + c.width - 60 * s_; ++token) {
                const Color colors[] = {onDark ? Color{210, 210, 215} : ink, {170, 50, 160}, {30, 130, 60}, {180, 90, 20}};
                const Color tokenInk = colors[roll(4)];
                x = line(x, top, 9.0 * s_ * (2 + roll(8)), tokenInk, 1.5 * s_, 1.6 * s_, false);
            }
        }
        return y + h + 14 * s_;
    }

    // A table whose body rows are either one row drawn again and again, or
    // distinct rows on alternating backgrounds.
    int table(const Column& c, int y, int rows, bool identical) {
        const int rowH = 34 * s_;
        const int columns = 3 + roll(2);
        const int cellW = c.width / columns;
        painter_.fillRect(c.x, y, c.x + c.width, y + rowH, {238, 240, 244});
        for (int k = 0; k < columns; ++k) line(c.x + k * cellW + 10 * s_, y + 8 * s_, cellW * 0.6, ink, 1.5 * s_, 1.6 * s_, true);
        const std::uint32_t rowSeed = static_cast<std::uint32_t>(random_());
        for (int r = 0; r < rows; ++r) {
            const int top = y + (r + 1) * rowH;
            if (!identical && r % 2 == 1) painter_.fillRect(c.x, top, c.x + c.width, top + rowH, {246, 247, 250});
            std::mt19937 saved = random_;
            if (identical) random_.seed(rowSeed);
            for (int k = 0; k < columns; ++k)
                line(c.x + k * cellW + 10 * s_, top + 8 * s_, cellW * (0.3 + roll(60) / 100.0), ink, 1.5 * s_, 1.6 * s_, false);
            if (identical) random_ = saved;
            painter_.fillRect(c.x, top + rowH - s_, c.x + c.width, top + rowH, {226, 228, 232});
        }
        return y + (rows + 1) * rowH + 18 * s_;
    }

    int chat(const Column& c, int y, int messages) {
        for (int m = 0; m < messages; ++m) {
            const bool mine = roll(2) == 0;
            const int lines = 1 + roll(3);
            const int bubbleW = static_cast<int>(c.width * (0.4 + roll(35) / 100.0));
            const int h = lines * 24 * s_ + 16 * s_;
            const int x = mine ? c.x + c.width - bubbleW : c.x + 44 * s_;
            const Color fill = mine ? Color{40, 120, 240} : Color{236, 236, 240};
            if (!mine)
                painter_.fillCircle(c.x + 18 * s_, y + h - 14 * s_, 14 * s_,
                                    {static_cast<std::uint8_t>(80 + roll(150)), static_cast<std::uint8_t>(80 + roll(150)), 160});
            painter_.fillRoundedRect(x, y, x + bubbleW, y + h, 14 * s_, fill);
            for (int i = 0; i < lines; ++i)
                line(x + 12 * s_, y + 8 * s_ + i * 24 * s_ + 3 * s_, (bubbleW - 24 * s_) * (i + 1 == lines ? 0.6 : 0.95),
                     mine ? paper : ink, 1.5 * s_, 1.6 * s_, false);
            y += h + 6 * s_;
            if (roll(3) == 0) {
                line(mine ? x + bubbleW - 60 * s_ : x, y, 50 * s_, {150, 150, 156}, 1.0 * s_, 1.1 * s_, false);
                y += 14 * s_;
            }
            y += 6 * s_;
        }
        return y + 10 * s_;
    }

    int image(const Column& c, int y) {
        const int w = roll(2) == 0 ? c.width : c.width * 3 / 5;
        const int h = (160 + roll(220)) * s_;
        painter_.photo(c.x, y, c.x + w, y + h, static_cast<std::uint32_t>(random_()));
        line(c.x, y + h + 8 * s_, w * 0.6, {110, 110, 116}, 1.2 * s_, 1.4 * s_, false);
        return y + h + 40 * s_;
    }

    int gradient(const Column& c, int y) {
        const int h = (100 + roll(220)) * s_;
        const Color a{static_cast<std::uint8_t>(roll(256)), static_cast<std::uint8_t>(roll(256)), static_cast<std::uint8_t>(roll(256))};
        const Color b{static_cast<std::uint8_t>(roll(256)), static_cast<std::uint8_t>(roll(256)), static_cast<std::uint8_t>(roll(256))};
        if (roll(2) == 0) painter_.verticalGradient(c.bgX0, y, c.bgX1, y + h, a, b);
        else painter_.horizontalGradient(c.bgX0, y, c.bgX1, y + h, a, b);
        return y + h + 20 * s_;
    }

    int dark(const Column& c, int y) {
        const Color background{30, 31, 36};
        const std::vector<int> lines = {2 + roll(5), 2 + roll(5), 2 + roll(4)};
        int h = 40 * s_ + 3 * (21 * s_ * 18 + 34 * s_); // room for the largest content
        painter_.fillRect(c.bgX0, y, c.bgX1, y + h, background);
        int cursor = y + 24 * s_;
        cursor = heading(c, cursor, {235, 235, 240});
        for (int n : lines) cursor = paragraph(c, cursor, n, {212, 213, 220});
        cursor = code(c, cursor, {44, 46, 54}, true);
        h = cursor + 24 * s_ - y;
        painter_.fillRect(c.bgX0, y + h, c.bgX1, y + 40 * s_ + 3 * (21 * s_ * 18 + 34 * s_), paper);
        return y + h + 20 * s_;
    }

    int video(const Column& c, int y) {
        const int w = std::min(c.width, 640 * s_);
        const int h = w * 9 / 16;
        painter_.fillRect(c.x, y, c.x + w, y + h, {0, 0, 0});
        layout_.videos.push_back({c.x, y, w, h});
        return y + h + 24 * s_;
    }

    int spinner(const Column& c, int y) {
        layout_.spinners.push_back({c.x + 8 * s_, y + 8 * s_, 36 * s_, 36 * s_});
        line(c.x + 56 * s_, y + 18 * s_, c.width * 0.3, {120, 120, 126}, 1.5 * s_, 1.6 * s_, false);
        return y + 56 * s_;
    }

    Painter painter_;
    Sequence::Layout& layout_;
    int s_;
    std::mt19937 random_;
    GlyphFont font_;
};

// Offsets from `start`, each made by `next(i, previous)` and kept at 0 or more.
template <typename Next>
std::vector<int> walk(int frames, int start, Next next) {
    std::vector<int> offsets = {start};
    for (int i = 1; i < frames; ++i) offsets.push_back(std::max(0, next(i, offsets.back())));
    return offsets;
}

std::vector<int> offsetsFor(Motion kind, int frames, int length, std::mt19937& random) {
    auto roll = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(std::max(n, 1))); };
    switch (kind) {
    case Motion::mixed:
        // Steps between frames: still, tiny, small, medium, large, and some back up.
        return walk(frames, 0, [&](int, int at) {
            const int r = roll(100);
            if (r < 8) return at;
            if (r < 20) return at + 1 + roll(7);
            if (r < 45) return at + 8 + roll(std::max(length / 12, 10));
            if (r < 82) return at + length / 10 + roll(length / 4);
            if (r < 94) return at + length * 35 / 100 + roll(length / 4);
            return at - (length / 10 + roll(length / 5));
        });
    case Motion::backAndForth:
        // Forward by a quarter to a half frame; every third frame back up by
        // a quarter to two thirds of a frame, into rows already seen.
        return walk(frames, 0, [&](int i, int at) {
            return i % 3 == 0 ? at - (length / 4 + roll(length * 5 / 12)) : at + length / 4 + roll(length / 4);
        });
    case Motion::jumpBack:
        // Forward by a third to a half frame; every tenth frame a jump back by
        // more than a frame into rows already seen, held for two more frames,
        // long enough for a lost stitcher to look for it.
        return walk(frames, 0, [&](int i, int at) {
            const int phase = i % 10;
            if (phase == 7 && at > length * 5 / 4) return roll(at - length * 5 / 4);
            if (phase == 8 || phase == 9) return at;
            return at + length / 3 + roll(length / 6);
        });
    case Motion::upward:
        // From three frames down the page up to its top, a quarter to half a frame at a time.
        return walk(frames, 3 * length, [&](int, int at) { return at - length / 4 - roll(length / 4); });
    }
    return {};
}

// A hash of every page line across the scrolling axis: its rows, or its
// columns when the page scrolls sideways.
std::vector<std::uint64_t> lineHashes(const ImageBuffer& page, bool sideways) {
    std::vector<std::uint64_t> hashes(static_cast<std::size_t>(sideways ? page.width() : page.height()),
                                      0xcbf29ce484222325ull);
    for (int y = 0; y < page.height(); ++y) {
        const std::uint8_t* row = page.row(y);
        for (int x = 0; x < page.width(); ++x) {
            std::uint64_t& h = hashes[sideways ? x : y];
            for (int c = 0; c < 4; ++c) h = (h ^ row[4 * x + c]) * 0x100000001b3ull;
        }
    }
    return hashes;
}

// Lines of difference too few for the search to weigh: its full-resolution
// check reads every second row, so one or two differing lines can pass unseen.
constexpr int thinEvidence = 2;

struct PairLook {
    PairView view = PairView::unique;
    std::vector<ShiftRange> alike;
};

// What the pair whose frames show page lines from `from` and from `to`, each
// `length` lines long, lets anyone see.
PairLook lookOf(const std::vector<std::uint64_t>& lines, int from, int to, int length) {
    const int first = std::min(from, to), last = std::max(from, to) + length;
    if (std::all_of(lines.begin() + first, lines.begin() + last, [&](std::uint64_t h) { return h == lines[first]; }))
        return {PairView::flat, {}};
    // How many of the lines the two share fail to match when line y of the
    // newer view is taken for line y + d of the older one, counted up to `most`.
    auto misses = [&](int d, int most) {
        int missed = 0;
        for (int y = std::max(0, -d); y < std::min(length, length - d) && missed < most; ++y)
            missed += lines[to + y] != lines[from + y + d];
        return missed;
    };
    const int reach = length * 3 / 4;
    PairLook look;
    for (int d = -reach; d <= reach; ++d) {
        if (d == to - from) continue;
        const int missed = misses(d, thinEvidence + 1);
        if (missed > thinEvidence) continue;
        if (missed == 0) look.view = PairView::repeated;
        if (!look.alike.empty() && look.alike.back().last == d - 1) look.alike.back().last = d;
        else look.alike.push_back({d, d});
    }
    return look;
}

// A name's hash that does not depend on the standard library.
std::uint32_t nameHash(const std::string& name) {
    std::uint32_t h = 0;
    for (unsigned char c : name) h = hash(h, c);
    return h;
}

const char* axisName(ScrollAxis axis) { return axis == ScrollAxis::horizontal ? "horizontal" : "vertical"; }

} // namespace

const char* pairViewName(PairView view) {
    switch (view) {
    case PairView::unique: return "unique";
    case PairView::repeated: return "repeated";
    case PairView::flat: return "flat";
    }
    return "unique";
}

std::optional<PairView> pairViewNamed(const std::string& name) {
    for (PairView view : {PairView::unique, PairView::repeated, PairView::flat})
        if (name == pairViewName(view)) return view;
    return std::nullopt;
}

const char* motionName(Motion motion) {
    switch (motion) {
    case Motion::mixed: return "mixed";
    case Motion::backAndForth: return "backforth";
    case Motion::jumpBack: return "jumpback";
    case Motion::upward: return "upward";
    }
    return "mixed";
}

std::optional<Motion> motionNamed(const std::string& name) {
    for (Motion motion : {Motion::mixed, Motion::backAndForth, Motion::jumpBack, Motion::upward})
        if (name == motionName(motion)) return motion;
    return std::nullopt;
}

const std::vector<std::string>& classNames() {
    static const std::vector<std::string> names = {"text",  "code",   "table",   "chat",    "media", "lowcontrast", "dark",
                                                   "blank", "sticky", "sidebar", "dynamic", "noise", "horizontal"};
    return names;
}

const std::vector<FrameSize>& frameSizes() {
    static const std::vector<FrameSize> sizes = {{800, 600}, {1600, 1000}, {3200, 2000}};
    return sizes;
}

Expected<Sequence> Sequence::generate(const SequenceRequest& request) {
    const std::optional<Recipe> r = recipe(request.className);
    if (!r) return Error{"unknown sequence class \"" + request.className + "\""};
    if (request.size.width < 200 || request.size.height < 150 || request.size.width > 8000 || request.size.height > 8000)
        return Error{"frame size out of range (200x150 to 8000x8000)"};
    if (request.frames < 2 || request.frames > 10000) return Error{"a sequence needs 2 to 10000 frames"};

    Sequence sequence;
    sequence.request_ = request;
    sequence.axis_ = r->sideways ? ScrollAxis::horizontal : ScrollAxis::vertical;
    auto layout = std::make_shared<Layout>();
    layout->scale = std::max(1, request.size.height / 1000);
    const int s = layout->scale;
    layout->headerH = r->features.header ? 56 * s : 0;
    layout->footerH = r->features.footer ? 48 * s : 0;
    layout->sidebarW = r->features.sidebar ? std::min(220 * s, request.size.width / 4) : 0;
    layout->contentW = request.size.width - layout->sidebarW;
    layout->contentH = request.size.height - layout->headerH - layout->footerH;

    std::mt19937 random(hash(request.seed, request.size.width, request.size.height,
                             nameHash(request.className)));
    const int length = r->sideways ? layout->contentW : layout->contentH;
    sequence.offsets_ = offsetsFor(request.motion, request.frames, length, random);
    layout->pageLength = *std::max_element(sequence.offsets_.begin(), sequence.offsets_.end()) + length;

    const int pageW = r->sideways ? layout->pageLength : layout->contentW;
    const int pageH = r->sideways ? layout->contentH : layout->pageLength;
    MutableImage page(pageW, pageH);
    page.fill({255, 255, 255, 255});
    PageWriter writer(page, *layout, static_cast<std::uint32_t>(random()));
    if (r->sideways) {
        // Newspaper columns side by side.
        const int columnW = 320 * s, gap = 36 * s;
        for (int x = 24 * s; x < pageW; x += columnW + gap)
            for (int y = 20 * s; y < pageH - 40 * s;)
                y = writer.section(writer.pick(r->sections), {x, columnW, x, x + columnW}, y);
    } else {
        const int margin = std::max(24 * s, (pageW - 1100 * s) / 2);
        const PageWriter::Column column{margin, pageW - 2 * margin, 0, pageW};
        for (int y = 16 * s; y < pageH;) y = writer.section(writer.pick(r->sections), column, y);
    }
    sequence.page_ = std::move(page).freeze();
    const std::vector<std::uint64_t> lines = lineHashes(sequence.page_, r->sideways);
    sequence.views_.assign(sequence.offsets_.size(), PairView::unique);
    sequence.alike_.assign(sequence.offsets_.size(), {});
    for (std::size_t i = 1; i < sequence.offsets_.size(); ++i) {
        PairLook look = lookOf(lines, sequence.offsets_[i - 1], sequence.offsets_[i], length);
        sequence.views_[i] = look.view;
        sequence.alike_[i] = std::move(look.alike);
    }
    sequence.features_ = std::make_shared<Features>(r->features);
    sequence.layout_ = std::move(layout);
    return sequence;
}

ImageBuffer Sequence::frame(int index) const {
    const Layout& l = *layout_;
    const Features& f = *features_;
    const int s = l.scale;
    const int w = request_.size.width, h = request_.size.height;
    const bool sideways = axis_ == ScrollAxis::horizontal;
    const int offset = offsets_[index];
    MutableImage out(w, h);
    out.fill({255, 255, 255, 255});

    // The page through the viewport.
    const PixelRect content{l.sidebarW, l.headerH, l.contentW, l.contentH};
    for (int y = 0; y < l.contentH; ++y) {
        const std::uint8_t* source = page_.row(sideways ? y : offset + y) + 4 * (sideways ? offset : 0);
        std::copy(source, source + 4 * l.contentW, out.row(l.headerH + y) + 4 * l.sidebarW);
    }
    // Page coordinates to frame coordinates.
    auto place = [&](PixelRect r) {
        return sideways ? PixelRect{l.sidebarW + r.x - offset, l.headerH + r.y, r.width, r.height}
                        : PixelRect{l.sidebarW + r.x, l.headerH + r.y - offset, r.width, r.height};
    };
    Painter painter(out);
    painter.setClip(content);
    const std::uint32_t seed = request_.seed;
    if (f.video)
        for (const PixelRect& v : l.videos) {
            const PixelRect at = place(v);
            painter.photo(at.x, at.y, at.maxX(), at.maxY(), hash(seed, 77, static_cast<std::uint32_t>(index)));
            const int bar = at.x + (index * 37 * s) % std::max(at.width, 1);
            painter.fillRect(bar, at.y, bar + 24 * s, at.maxY(), {250, 250, 250});
        }
    if (f.spinner)
        for (const PixelRect& sp : l.spinners) {
            const PixelRect at = place(sp);
            const double cx = at.x + at.width / 2.0, cy = at.y + at.height / 2.0, radius = at.width / 2.0 - 4 * s;
            for (int k = 0; k < 8; ++k) {
                const double angle = k * 3.14159265358979 / 4;
                const double t = ((k - index) % 8 + 8) % 8 / 7.0;
                painter.fillCircle(cx + radius * std::cos(angle), cy + radius * std::sin(angle), 3.5 * s,
                                   mix({60, 60, 70}, paper, t));
            }
        }
    if (f.caret && index % 2 == 0)
        for (const PixelRect& c : l.carets) {
            const PixelRect at = place(c);
            painter.fillRect(at.x, at.y, at.maxX(), at.maxY(), {20, 20, 20});
        }

    // The fixed parts.
    painter.setClip({0, 0, w, h});
    if (f.header) {
        painter.fillRect(0, 0, w, l.headerH, {246, 246, 249});
        painter.fillRect(0, l.headerH - s, w, l.headerH, {218, 220, 226});
        GlyphFont font(0x5eed);
        for (int i = 0; i < 9; ++i) painter.glyph(font, (i * 7) % GlyphFont::count, 20 * s + i * 16 * s, 14 * s, 2.2 * s, 2.6 * s, ink, true);
        for (int i = 1; i <= 3; ++i) painter.fillCircle(w - i * 44 * s, l.headerH / 2.0, 12 * s, {120, 124, 134});
    }
    if (f.footer) {
        painter.fillRect(0, h - l.footerH, w, h, {250, 250, 250});
        painter.fillRect(0, h - l.footerH, w, h - l.footerH + s, {218, 220, 226});
        for (int i = 0; i < 5; ++i) painter.fillCircle(w * (i + 1) / 6.0, h - l.footerH / 2.0, 10 * s, {130, 134, 144});
    }
    if (f.sidebar) {
        painter.fillRect(0, l.headerH, l.sidebarW, h - l.footerH, {243, 244, 246});
        painter.fillRect(l.sidebarW - s, l.headerH, l.sidebarW, h - l.footerH, {222, 224, 228});
        GlyphFont font(0x5eed);
        for (int item = 0; l.headerH + (item + 1) * 36 * s < h - l.footerH; ++item) {
            const int top = l.headerH + 12 * s + item * 36 * s;
            if (item == 2) painter.fillRect(8 * s, top - 6 * s, l.sidebarW - 8 * s, top + 24 * s, {220, 230, 250});
            for (int g = 0; g < 4 + item % 6 && 16 * s + (g + 1) * 9 * s < l.sidebarW; ++g)
                painter.glyph(font, (item * 5 + g * 3) % GlyphFont::count, 16 * s + g * 9.0 * s, top, 1.5 * s, 1.6 * s, ink, false);
        }
    }
    if (f.floatingButton) {
        const double cx = w - 72.0 * s, cy = h - l.footerH - 72.0 * s;
        painter.fillCircle(cx, cy, 26 * s, {40, 110, 235});
        painter.fillRect(cx - 10 * s, static_cast<int>(cy) - s, cx + 10 * s, static_cast<int>(cy) + s, paper);
        painter.fillRect(cx - s, static_cast<int>(cy) - 10 * s, cx + s, static_cast<int>(cy) + 10 * s, paper);
    }
    // An overlay scroll bar along the trailing edge.
    const int length = sideways ? l.contentW : l.contentH;
    const int thumb = std::max(length * length / std::max(l.pageLength, 1), 30 * s);
    const int travel = (length - thumb) * offset / std::max(l.pageLength - length, 1);
    if (sideways) painter.fillRect(l.sidebarW + travel, h - 9 * s, l.sidebarW + travel + thumb, h - 3 * s, {90, 90, 90}, 0.45);
    else painter.fillRect(w - 9 * s, l.headerH + travel, w - 3 * s, l.headerH + travel + thumb, {90, 90, 90}, 0.45);

    if (f.noise)
        for (int y = 0; y < h; ++y) {
            std::uint8_t* row = out.row(y);
            for (int x = 0; x < w; ++x) {
                const int grain = static_cast<int>(hash(seed, static_cast<std::uint32_t>(index), x, y) % 7) - 3;
                for (int c = 0; c < 3; ++c) row[4 * x + c] = static_cast<std::uint8_t>(std::clamp(row[4 * x + c] + grain, 0, 255));
            }
        }
    return std::move(out).freeze();
}

DocumentTruth Sequence::documentTruth() const {
    const Layout& l = *layout_;
    const int s = l.scale;
    DocumentTruth truth;
    std::vector<PixelRect> moving = l.videos;
    moving.insert(moving.end(), l.spinners.begin(), l.spinners.end());
    moving.insert(moving.end(), l.carets.begin(), l.carets.end());
    if (axis_ == ScrollAxis::horizontal) {
        truth.lead = l.sidebarW;
        truth.length = l.contentW;
        truth.crossStart = l.headerH;
        truth.crossLength = l.contentH;
        for (const PixelRect& r : moving) truth.moving.push_back({r.y, r.x, r.height, r.width});
        truth.page = ScrollTranspose::transposed(page_).value_or(ImageBuffer{});
        return truth;
    }
    truth.lead = l.headerH;
    truth.trail = l.footerH;
    truth.length = l.contentH;
    truth.crossStart = l.sidebarW;
    truth.crossLength = l.contentW;
    truth.moving = std::move(moving);
    if (features_->floatingButton)
        truth.overlays.push_back({request_.size.width - 98 * s, request_.size.height - l.footerH - 98 * s, 52 * s, 52 * s});
    truth.page = page_;
    return truth;
}

std::optional<Error> write(const Sequence& sequence, const std::filesystem::path& folder) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) return Error{"cannot create " + folder.string() + ": " + error.message()};
    nlohmann::json frames = nlohmann::json::array();
    for (int i = 0; i < sequence.frameCount(); ++i) {
        const std::string name = ScrollSessionFolder::frameFileName(i);
        if (std::optional<Error> failed = PngEncoder::writeFile(sequence.frame(i), folder / name)) return failed;
        nlohmann::json frame = {{"file", name}, {"offset", sequence.offset(i)}};
        if (i > 0) frame["view"] = pairViewName(sequence.view(i));
        if (i > 0 && !sequence.alikeShifts(i).empty()) {
            nlohmann::json alike = nlohmann::json::array();
            for (const ShiftRange& range : sequence.alikeShifts(i)) alike.push_back({range.first, range.last});
            frame["alike"] = std::move(alike);
        }
        frames.push_back(std::move(frame));
    }
    const SequenceRequest& request = sequence.request();
    const nlohmann::json truth = {{"class", request.className},
                                  {"width", request.size.width},
                                  {"height", request.size.height},
                                  {"axis", axisName(sequence.axis())},
                                  {"seed", request.seed},
                                  {"motion", motionName(request.motion)},
                                  {"frames", frames}};
    return AtomicFile::write(folder / "truth.json", truth.dump(2) + "\n");
}

Expected<Truth> readTruth(const std::filesystem::path& folder) {
    const std::filesystem::path path = folder / "truth.json";
    Expected<std::string> text = readFileText(path);
    if (!text) return text.error();
    const nlohmann::json json = nlohmann::json::parse(*text, nullptr, false);
    const std::string where = path.string();
    if (json.is_discarded() || !json.is_object()) return Error{where + " is not a JSON object"};
    try {
        Truth truth;
        truth.className = json.at("class").get<std::string>();
        truth.size = {json.at("width").get<int>(), json.at("height").get<int>()};
        truth.seed = json.value("seed", 1u);
        const std::string motion = json.value("motion", std::string("mixed"));
        if (!motionNamed(motion)) return Error{where + ": unknown motion \"" + motion + "\""};
        truth.motion = *motionNamed(motion);
        truth.axis = json.value("axis", std::string("vertical")) == "horizontal" ? ScrollAxis::horizontal
                                                                                : ScrollAxis::vertical;
        for (const nlohmann::json& frame : json.at("frames")) {
            truth.files.push_back(frame.at("file").get<std::string>());
            truth.offsets.push_back(frame.at("offset").get<int>());
            const std::string view = frame.value("view", std::string("unique"));
            if (!pairViewNamed(view)) return Error{where + ": unknown view \"" + view + "\""};
            truth.views.push_back(*pairViewNamed(view));
            std::vector<ShiftRange> alike;
            for (const nlohmann::json& range : frame.value("alike", nlohmann::json::array()))
                alike.push_back({range.at(0).get<int>(), range.at(1).get<int>()});
            truth.alike.push_back(std::move(alike));
        }
        return truth;
    } catch (const nlohmann::json::exception& e) {
        return Error{where + ": " + e.what()};
    }
}

} // namespace tosvar::ScrollCorpus
