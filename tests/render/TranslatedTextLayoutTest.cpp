// Translated text layout over a face whose numbers can be worked out by hand:
// every character half an em wide, one em per line. At font size f a line of
// n characters is 0.5·f·n wide, a box of width W wraps at W - 0.5·f, and n
// lines need ceil(n·f + (n-1)·0.18·f) + 0.16·f.
#include "../annotation/FakeTextMeasuring.h"
#include "TranslatedTextLayout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <ostream>
#include <random>
#include <string>
#include <vector>

namespace tosvar::TranslatedTextLayout {
void PrintTo(const Fit& fit, std::ostream* out) {
    *out << "Fit{" << fit.fontSize << ", (" << fit.box.origin.x << ", " << fit.box.origin.y << ", " << fit.box.size.width
         << ", " << fit.box.size.height << ")" << (fit.overflows ? ", overflows}" : "}");
}
} // namespace tosvar::TranslatedTextLayout

namespace tosvar {
namespace {

namespace TTL = TranslatedTextLayout;
using samples::FakeTextMeasuring;

const FakeTextMeasuring face;

// A face with uneven advances, so wrapping does not fall on a regular grid:
// Latin characters 0.3 to 0.9 em, anything of three UTF-8 bytes or more 1 em.
class UnevenFace final : public TextMeasuring {
public:
    FontLineMetrics metrics(double fontSize) const override { return {0.8 * fontSize, 0.2 * fontSize, 0.1 * fontSize}; }
    double lineWidth(std::string_view line, double fontSize) const override {
        double ems = 0;
        for (unsigned char c : line) {
            if ((c & 0xC0) == 0x80) continue;
            ems += c >= 0xE0 ? 1.0 : 0.3 + 0.1 * (c % 7);
        }
        return ems * fontSize;
    }
};

// Vertical room only: the box keeps its sides.
TTL::Space vertical(const Rect& rect, double minTop, double maxBottom) {
    TTL::Space space = TTL::Space::none(rect);
    space.minTop = minTop;
    space.maxBottom = maxBottom;
    return space;
}

std::size_t characterCount(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

std::vector<std::string> texts(const TTL::Lines& laidOut) {
    std::vector<std::string> out;
    for (const TTL::Line& line : laidOut.lines) out.push_back(line.text);
    return out;
}

TEST(TranslatedTextLayout, SpaceTakesTheRectanglesEdgesAndStartingSizesFollowTheScript) {
    const Rect flipped{110, 70, -100, -20}; // (10, 50) to (110, 70)
    const TTL::Space none = TTL::Space::none(flipped);
    EXPECT_EQ(none.minTop, 50);
    EXPECT_EQ(none.maxBottom, 70);
    EXPECT_EQ(none.minLeft, 10);
    EXPECT_EQ(none.maxRight, 110);
    EXPECT_EQ(TTL::Space::below(flipped, 200).maxBottom, 200);
    EXPECT_EQ(TTL::Space::below(flipped, 60).maxBottom, 70) << "never above the rectangle's own bottom";

    EXPECT_DOUBLE_EQ(TTL::startingFontSize(20, false), 15.6);
    EXPECT_DOUBLE_EQ(TTL::startingFontSize(20, true), 16.4);
    EXPECT_DOUBLE_EQ(TTL::startingFontSize(6, false), 8);
}

// A translation no longer than its source, in the box the source filled, is
// set at the starting size exactly where the source was.
TEST(TranslatedTextLayout, ATranslationAsLongAsItsSourceKeepsTheStartingSizeAndBox) {
    struct Case {
        const char* text;
        double lineHeight;
        bool cjk;
    };
    for (const Case& c : {Case{"Hello world", 20, false}, Case{"Guten Morgen allerseits", 31, false},
                          Case{"今日は良い天気", 24, true}, Case{"x", 10, false}}) {
        const double f = TTL::startingFontSize(c.lineHeight, c.cjk);
        const double width = face.lineWidth(c.text, f) + 2 * TTL::paddingRatio * f;
        const Rect rect{100, 50, width, c.lineHeight};
        EXPECT_EQ(TTL::fit(face, c.text, rect, f, TTL::Space::below(rect, 400)), (TTL::Fit{f, rect, false})) << c.text;
        EXPECT_EQ(TTL::lineCount(face, c.text, width, f), 1) << c.text;
    }
    const Rect rect{5, 5, 40, 10};
    EXPECT_EQ(TTL::fit(face, "", rect, 30, TTL::Space::none(rect)), (TTL::Fit{30, rect, false})) << "nothing to fit";
    EXPECT_EQ(TTL::fit(face, "abc", Rect{5, 5, 0, 10}, 30, TTL::Space::none(rect)), (TTL::Fit{30, Rect{5, 5, 0, 10}, false}));
}

// Nine characters make one line in a box W wide while 5·f <= W. Two lines
// hold in the 60 high box only at 25.5 and below.
TEST(TranslatedTextLayout, ShrinksOnTheHalfPointGridAndNeverShortensTheBox) {
    struct Case {
        double width;
        double fontSize;
        int lines;
        double height;
    };
    for (const Case& c : {Case{176, 35, 1, 60}, Case{178, 35.5, 1, 60}, Case{179.9, 35.5, 1, 60}, Case{200, 40, 1, 60},
                          // Two lines at 25.5 beat one line at 24; they need 60.08, within half a pixel of the box.
                          Case{120, 25.5, 2, 56 + 0.16 * 25.5}}) {
        const Rect rect{10, 20, c.width, 60};
        const TTL::Fit fit = TTL::fit(face, "abcdefghi", rect, 40, TTL::Space::none(rect));
        EXPECT_EQ(fit, (TTL::Fit{c.fontSize, {10, 20, c.width, c.height}, false})) << "width " << c.width;
        EXPECT_EQ(TTL::lineCount(face, "abcdefghi", c.width, c.fontSize), c.lines) << "width " << c.width;
    }
    // With room below, the box grows to the text's height instead of the text shrinking.
    const Rect rect{10, 20, 176, 30};
    const TTL::Fit grown = TTL::fit(face, "abcdefghi", rect, 40, TTL::Space::below(rect, 200));
    EXPECT_EQ(grown.fontSize, 40);
    EXPECT_FALSE(grown.overflows);
    EXPECT_EQ(grown.box.origin, rect.origin);
    EXPECT_EQ(grown.box.size.width, 176);
    EXPECT_DOUBLE_EQ(grown.box.size.height, 88 + 6.4) << "two lines at 40";
}

TEST(TranslatedTextLayout, ShrinksToItsFloorThenOverflowsInPlace) {
    struct Case {
        std::string text;
        double start;
        double fontSize;
        bool overflows;
    };
    // One line of n characters fits the 100 wide box while (n + 1)·f/2 <= 100;
    // two lines never fit its 15 pixels.
    const Rect rect{30, 40, 100, 15};
    for (const Case& c : {
             Case{"a very long translation that cannot fit in so small a box", 20, 11, true},
             Case{std::string(16, 'a'), 20, 11.5, false}, // at most 11.76
             Case{std::string(20, 'a'), 20, 11, true},    // at most 9.52, below the floor of 0.55·20
             Case{std::string(20, 'a'), 10, 9.5, false},  // the floor of 10 is 8, not 5.5
             Case{std::string(23, 'a'), 10, 8, false},    // at most 8.33
             Case{std::string(30, 'a'), 10, 8, true},
             Case{"ab", 6, 8, false},                     // below 8 it is set at 8, above the start
             Case{std::string(30, 'a'), 6, 8, true},
         }) {
        EXPECT_EQ(TTL::fit(face, c.text, rect, c.start, TTL::Space::none(rect)), (TTL::Fit{c.fontSize, rect, c.overflows}))
            << c.text << " from " << c.start;
    }
}

// The box is 50 wide at x = 200; free space reaches right to 300 and left to 0.
TEST(TranslatedTextLayout, SpreadsSidewaysBeforeShrinking) {
    struct Case {
        std::size_t characters;
        TTL::Fit expected;
    };
    const Rect rect{200, 100, 50, 20};
    const TTL::Space space{100, 120, 0, 300};
    for (const Case& c : {
             Case{8, {10, rect, false}},                        // 45 wide: the box itself
             Case{15, {10, {200, 100, 100, 20}, false}},        // 80 wide: out to the right
             Case{30, {10, {0, 100, 300, 20}, false}},          // 155 wide: across the whole space
             Case{65, {9, {0, 100, 300, 20}, false}},           // 300 wide only at 9
             Case{120, {8.5, {0, 100, 300, 19 + 1.36}, false}}, // two lines at 8.5, 0.36 over the box
             Case{160, {8, {0, 100, 300, 20}, true}},           // three lines at 8: too tall
         }) {
        EXPECT_EQ(TTL::fit(face, std::string(c.characters, 'a'), rect, 10, space), c.expected) << c.characters;
    }
}

// The box is 100 by 20 at y = 100 and cannot grow sideways. 120 characters
// take at least five lines, and 47.28 pixels at the floor of 8.
TEST(TranslatedTextLayout, MovesUpOnlyAtTheFloor) {
    const std::string text(120, 'a');
    const Rect rect{10, 100, 100, 20};
    const double needed = TTL::requiredHeight(face, text, 100, 8);
    ASSERT_DOUBLE_EQ(needed, 46 + 1.28);

    struct Case {
        double minTop, maxBottom;
        TTL::Fit expected;
    };
    for (const Case& c : {
             Case{0, 120, {8, {10, 120 - needed, 100, needed}, false}},
             Case{70, 125, {8, {10, 125 - needed, 100, needed}, false}},
             Case{77.72 + 0.4, 125, {8, {10, 125 - needed, 100, needed}, false}}, // within half a pixel of the top
             Case{80, 125, {8, {10, 100, 100, 25}, true}}, // all the free space, from where the box was
             Case{100, 120, {8, rect, true}},
         }) {
        const TTL::Fit fit = TTL::fit(face, text, rect, 10, vertical(rect, c.minTop, c.maxBottom));
        EXPECT_EQ(fit.fontSize, c.expected.fontSize);
        EXPECT_EQ(fit.overflows, c.expected.overflows);
        EXPECT_NEAR(fit.box.minY(), c.expected.box.minY(), 1e-9) << c.minTop << " to " << c.maxBottom;
        EXPECT_NEAR(fit.box.height(), c.expected.box.height(), 1e-9);
        EXPECT_EQ(fit.box.minX(), 10);
        EXPECT_EQ(fit.box.width(), 100);
        if (!fit.overflows) {
            EXPECT_LT(fit.box.minY(), rect.minY()) << "moved up";
            EXPECT_NEAR(fit.box.maxY(), c.maxBottom, 1e-9) << "the bottom stays at the limit";
        }
    }
}

// "aaaa bbbb cccc" in a box 25 wide at 10 takes three lines and 35.6 pixels.
TEST(TranslatedTextLayout, SpreadsAShortTextsLinesOverItsBox) {
    ASSERT_EQ(TTL::lineCount(face, "aaaa bbbb cccc", 25, 10), 3);
    ASSERT_DOUBLE_EQ(TTL::requiredHeight(face, "aaaa bbbb cccc", 25, 10), 34 + 1.6);
    struct Case {
        const char* text;
        double height;
        double spacing;
    };
    for (const Case& c : {
             Case{"aaaa bbbb cccc", 45, (45 - 35.6) / 2},
             Case{"aaaa bbbb cccc", 36.7, (36.7 - 35.6) / 2},
             Case{"aaaa bbbb cccc", 36.6, 0}, // not taller by more than 1
             Case{"aaaa bbbb cccc", 30, 0},
             Case{"aaaa bbbb cccc", 60, 8},   // at most 0.8 of the size
             Case{"aaaa bbbb", 30, 30 - 23.6},
             Case{"aaaa", 60, 0},             // one line has nothing to spread
             Case{"", 60, 0},
         }) {
        EXPECT_NEAR(TTL::extraLineSpacing(face, c.text, 25, 10, c.height), c.spacing, 1e-9) << c.text << " in " << c.height;
    }
}

TEST(TranslatedTextLayout, WidthOptionsRiseByMoreThanHalfAPixel) {
    struct Case {
        double minLeft, maxRight;
        std::vector<double> widths;
    };
    const Rect box{10, 0, 50, 20}; // 10 to 60
    for (const Case& c : {
             Case{10, 60, {50}},
             Case{10, 60.4, {50}},
             Case{10, 60.6, {50, 50.6}},
             Case{0, 60, {50, 60}},
             Case{0, 100, {50, 90, 100}},
             Case{9.8, 100, {50, 90}},
             Case{9, 100, {50, 90, 91}},
             Case{-20, 40, {50, 60}}, // a right limit inside the box adds nothing of its own
         }) {
        EXPECT_EQ(TTL::widthOptions(box, {0, 20, c.minLeft, c.maxRight}), c.widths) << c.minLeft << " to " << c.maxRight;
    }
    EXPECT_EQ(TTL::widthOptions(Rect{60, 20, -50, -20}, {0, 20, 0, 100}), (std::vector<double>{50, 90, 100}))
        << "the box is standardised first";
}

// Characters are 5 wide at size 10.
TEST(TranslatedTextLayout, WrapsAtBlanksAroundCJKAndInsideLongWords) {
    struct Case {
        const char* text;
        double width;
        std::vector<std::string> lines;
    };
    for (const Case& c : {
             Case{"hello world", 55, {"hello world"}},
             Case{"hello world", 54.9, {"hello", "world"}},
             Case{"one two  ", 20, {"one", "two"}}, // blanks at a break are dropped
             Case{"a  b", 100, {"a  b"}},            // inside a line they stay
             Case{"日本語の文章", 15, {"日本語", "の文章"}},
             Case{"ab日本cd", 20, {"ab日本", "cd"}},
             Case{"abcdefghij", 20, {"abcd", "efgh", "ij"}},
             Case{"ab abcdefghij", 20, {"ab", "abcd", "efgh", "ij"}},
             Case{"üüüüü", 10, {"üü", "üü", "ü"}}, // broken between characters, not bytes
             Case{"ab\ncd", 100, {"ab", "cd"}},
             Case{"ab\n\ncd", 100, {"ab", "", "cd"}},
             Case{"ab\n", 100, {"ab"}},
             Case{"w", 1, {"w"}}, // a character wider than the line still takes one
         }) {
        const TTL::Lines laidOut = TTL::layOut(face, c.text, 10, c.width, 0);
        EXPECT_EQ(texts(laidOut), c.lines) << c.text << " in " << c.width;
        for (const TTL::Line& line : laidOut.lines) EXPECT_EQ(line.width, face.lineWidth(line.text, 10)) << line.text;
    }
    EXPECT_TRUE(TTL::layOut(face, "", 10, 100, 0).lines.empty());
}

TEST(TranslatedTextLayout, LinesStepByTheLineHeightGapAndExtraSpacing) {
    const TTL::Lines spread = TTL::layOut(face, "aa bb cc", 10, 10, 3);
    ASSERT_EQ(spread.lines.size(), 3u);
    EXPECT_DOUBLE_EQ(spread.lines[0].baseline, 7.5);
    EXPECT_DOUBLE_EQ(spread.lines[1].baseline, 7.5 + 10 + 1.8 + 3);
    EXPECT_DOUBLE_EQ(spread.lines[2].baseline, 7.5 + 2 * (10 + 1.8 + 3));
    EXPECT_DOUBLE_EQ(spread.height, 30 + 2 * (1.8 + 3));
    EXPECT_DOUBLE_EQ(TTL::layOut(face, "aa bb cc", 10, 10, -5).height, 30 + 2 * 1.8) << "no negative spacing";
}

// Words of Latin letters and runs of CJK, single and double blanks, and the
// odd line feed.
std::string randomText(std::mt19937& random) {
    static const char* const cjk[] = {"日", "本", "語", "文", "章", "の", "한", "국", "。"};
    std::uniform_int_distribution<int> words(1, 30), kind(0, 9), length(1, 16), letter('a', 'z');
    std::string text;
    const int count = words(random);
    for (int w = 0; w < count; ++w) {
        const int k = kind(random);
        if (k < 6) {
            for (int i = length(random); i > 0; --i) text += static_cast<char>(letter(random));
        } else if (k < 8) {
            for (int i = length(random) / 3 + 1; i > 0; --i) text += cjk[static_cast<std::size_t>(letter(random)) % std::size(cjk)];
        } else if (k == 8) {
            text += "\n";
            continue;
        }
        text += kind(random) == 0 ? "  " : " ";
    }
    return text;
}

TEST(TranslatedTextLayout, AFitThatDoesNotOverflowHoldsItsTextAtNoLessThanTheFloor) {
    const UnevenFace uneven;
    std::mt19937 random(20240611);
    std::uniform_real_distribution<double> position(-200, 800), width(4, 400), height(4, 120), start(3, 60), room(0, 150);
    std::bernoulli_distribution grows(0.6);
    int overflowing = 0, shrunk = 0, movedUp = 0;
    for (int round = 0; round < 2000; ++round) {
        const TextMeasuring& measure = round % 2 == 0 ? static_cast<const TextMeasuring&>(face) : uneven;
        const std::string text = randomText(random);
        const Rect rect{position(random), position(random), width(random), height(random)};
        TTL::Space space = TTL::Space::none(rect);
        if (grows(random)) space.minTop -= room(random);
        if (grows(random)) space.maxBottom += room(random);
        if (grows(random)) space.minLeft -= room(random);
        if (grows(random)) space.maxRight += room(random);
        const double f = start(random);
        const TTL::Fit fit = TTL::fit(measure, text, rect, f, space);
        SCOPED_TRACE(testing::Message() << "round " << round << ": \"" << text << "\" from " << f << " in (" << rect.minX()
                                        << ", " << rect.minY() << ", " << rect.width() << ", " << rect.height() << ")");

        const double floor = std::max(0.55 * f, 8.0);
        ASSERT_GE(fit.fontSize, floor - 1e-9);
        ASSERT_LE(fit.fontSize, std::max(f, 8.0));
        if (fit.fontSize > floor) {
            const double steps = (f - fit.fontSize) / 0.5;
            ASSERT_NEAR(steps, std::round(steps), 1e-9) << "on the half-point grid";
        }
        ASSERT_GE(fit.box.height(), rect.height());
        const std::vector<double> widths = TTL::widthOptions(rect, space);
        ASSERT_NE(std::find(widths.begin(), widths.end(), fit.box.width()), widths.end());
        ASSERT_GE(fit.box.minX(), space.minLeft - 0.5);
        ASSERT_LE(fit.box.maxX(), space.maxRight + 0.5);
        ASSERT_GE(fit.box.minY(), space.minTop - 0.5);
        ASSERT_LE(fit.box.maxY(), space.maxBottom + 0.5);

        if (!fit.overflows) {
            ASSERT_LE(TTL::requiredHeight(measure, text, fit.box.width(), fit.fontSize), fit.box.height() + 0.5);
            if (fit.fontSize < f) ++shrunk;
            if (fit.box.minY() < rect.minY()) ++movedUp;
        } else {
            ++overflowing;
            ASSERT_DOUBLE_EQ(fit.fontSize, floor);
            ASSERT_EQ(fit.box.width(), widths.back());
            // Overflow is admitted only when no width holds the text at the floor.
            for (double w : widths) ASSERT_GT(TTL::requiredHeight(measure, text, w, floor), space.maxBottom - space.minTop + 0.5) << w;
        }

        // What the renderer draws has the lines that were counted.
        const double wrap = std::max(fit.box.width() - 2 * TTL::paddingRatio * fit.fontSize, 1.0);
        const TTL::Lines laidOut = TTL::layOut(measure, text, fit.fontSize, wrap, 0);
        ASSERT_EQ(static_cast<int>(laidOut.lines.size()), TTL::lineCount(measure, text, fit.box.width(), fit.fontSize));
        for (const TTL::Line& line : laidOut.lines) {
            if (line.width > wrap) {
                ASSERT_EQ(characterCount(line.text), 1u) << "only a lone character may be wider: " << line.text;
            }
        }
    }
    // The random cases reach every outcome.
    EXPECT_GT(overflowing, 100);
    EXPECT_GT(shrunk, 100);
    EXPECT_GT(movedUp, 50);
}

} // namespace
} // namespace tosvar
