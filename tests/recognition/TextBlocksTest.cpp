#include "ListMarker.h"
#include "ScriptLanguage.h"
#include "TextBlockGrouping.h"
#include "TextBlockRuns.h"
#include "UnicodeText.h"

#include <gtest/gtest.h>

using namespace tosvar;

namespace {

const Size image{1000, 1000};

// A line at pixel rectangle (x, y, w, h), origin top left, as a recogniser
// would hand it over (unit box, origin bottom left).
RecognizedLine line(std::string text, double x, double y, double w, double h, float confidence = 0.9f) {
    return {std::move(text), Rect(x / image.width, 1 - (y + h) / image.height, w / image.width, h / image.height), confidence};
}

std::vector<std::string> texts(const std::vector<TextBlock>& blocks) {
    std::vector<std::string> out;
    for (const auto& block : blocks) out.push_back(block.text);
    return out;
}

} // namespace

TEST(TextBlockGrouping, EmptyInputsGiveNoBlocks) {
    EXPECT_TRUE(TextBlockGrouping::group({}, image).empty());
    EXPECT_TRUE(TextBlockGrouping::group({line("a", 0, 0, 10, 10)}, Size{0, 100}).empty());
    EXPECT_TRUE(TextBlockGrouping::group({line("  \n", 0, 0, 100, 20)}, image).empty());
    EXPECT_EQ(TextBlockGrouping::pixelBox(Rect(0.125, 0.5, 0.5, 0.25), image), Rect(125, 250, 500, 250));
}

TEST(TextBlockGrouping, ConfidenceAndGapLimitsAreExact) {
    EXPECT_EQ(TextBlockGrouping::group({line("kept", 0, 0, 100, 20, 0.3f)}, image).size(), 1u);
    EXPECT_TRUE(TextBlockGrouping::group({line("dropped", 0, 0, 100, 20, 0.29f)}, image).empty());
    // Median height 20: a gap of 12 (0.6 medians) parts the lines, 11.9 does not.
    EXPECT_EQ(TextBlockGrouping::group({line("one", 0, 0, 500, 20), line("two", 0, 32, 500, 20)}, image).size(), 2u);
    EXPECT_EQ(TextBlockGrouping::group({line("one", 0, 0, 500, 20), line("two", 0, 31.9, 500, 20)}, image).size(), 1u);
}

TEST(TextBlockGrouping, ShortLinesBreakStackedLabelsButNotAParagraph) {
    const auto paragraph = TextBlockGrouping::group(
        {line("full line one", 0, 0, 500, 20), line("full line two", 0, 25, 495, 20), line("full line three", 0, 50, 498, 20),
         line("end.", 0, 75, 120, 20)},
        image);
    EXPECT_EQ(texts(paragraph), (std::vector<std::string>{"full line one full line two full line three end."}));

    const auto labels = TextBlockGrouping::group(
        {line("Name", 0, 0, 120, 20), line("Address", 0, 25, 160, 20), line("City", 0, 50, 90, 20),
         line("Country of residence", 0, 75, 500, 20)},
        image);
    EXPECT_EQ(labels.size(), 4u);

    const auto list = TextBlockGrouping::group(
        {line("a wrapped paragraph that", 0, 0, 500, 20), line("- item", 0, 25, 498, 20)}, image);
    ASSERT_EQ(list.size(), 2u) << "a list marker starts a block";
    EXPECT_EQ(list[1].marker, "-");
    EXPECT_EQ(list[1].translatableText(), "item");
}

TEST(TextBlockGrouping, JoinsLinesAcrossHyphensAndScripts) {
    EXPECT_EQ(TextBlockGrouping::join({"well-", "known"}), "wellknown");
    EXPECT_EQ(TextBlockGrouping::join({"well-", "Known"}), "well- Known");
    EXPECT_EQ(TextBlockGrouping::join({"日本", "語"}), "日本語");
    EXPECT_EQ(TextBlockGrouping::join({"日本", "abc"}), "日本abc");
    EXPECT_EQ(TextBlockGrouping::join({" a ", "", "b"}), "a b");
    EXPECT_TRUE(TextBlockGrouping::isPredominantlyCJK("日本 ab"));
    EXPECT_FALSE(TextBlockGrouping::isPredominantlyCJK("日 abc"));
}

TEST(TextBlockGrouping, KeepsTheLargestBlocksInReadingOrderAndIndents) {
    std::vector<RecognizedLine> lines;
    for (int i = 0; i < 65; ++i) {
        const double width = i == 40 ? 30 : 100 + i; // block 40 is the smallest
        lines.push_back(line("b" + std::to_string(i), (i % 5) * 200.0, (i / 5) * 70.0, width, 20));
    }
    const auto blocks = TextBlockGrouping::group(lines, image);
    ASSERT_EQ(blocks.size(), 64u);
    for (const auto& block : blocks) EXPECT_NE(block.text, "b40");
    EXPECT_EQ(blocks.front().text, "b0");
    EXPECT_EQ(blocks[1].text, "b1");

    const auto indented = TextBlockGrouping::group({line("top", 0, 0, 300, 20), line("nested", 24, 100, 200, 20)}, image);
    ASSERT_EQ(indented.size(), 2u);
    EXPECT_EQ(indented[1].indentLevel, 2) << "24 px at 12 px a level";
}

TEST(ListMarker, ReadsBulletsNumbersLettersAndCjkForms) {
    using Split = std::optional<std::pair<std::string, std::string>>;
    EXPECT_EQ(ListMarker::split("IV. Title"), (Split{{"IV.", "Title"}}));
    EXPECT_EQ(ListMarker::split("ABC. Title"), std::nullopt);
    EXPECT_EQ(ListMarker::split("1)"), std::nullopt);
    EXPECT_EQ(ListMarker::split("1、项目"), (Split{{"1、", "项目"}}));
    EXPECT_EQ(ListMarker::split("①项目"), (Split{{"①", "项目"}}));
    EXPECT_EQ(ListMarker::split("十一、项目"), std::nullopt);
    EXPECT_EQ(ListMarker::split("  • point"), (Split{{"•", "point"}}));
    EXPECT_EQ(ListMarker::split("-x"), std::nullopt);
    EXPECT_EQ(ListMarker::split("a. first"), (Split{{"a.", "first"}}));
    EXPECT_EQ(ListMarker::split("12345. no"), std::nullopt);
    EXPECT_EQ(ListMarker::prefix("1、", "项目"), "1、项目");
    EXPECT_EQ(ListMarker::prefix("1.", "item"), "1. item");
    EXPECT_EQ(ListMarker::prefix("", "item"), "item");
}

TEST(TextBlockLayoutText, KeepsParagraphsMarkersAndIndentsInTranslation) {
    const auto blocks = TextBlockGrouping::group(
        {line("1. first step", 0, 0, 300, 20), line("nested note", 24, 35, 200, 20), line("After a gap", 0, 200, 300, 20)}, image);
    ASSERT_EQ(blocks.size(), 3u);
    EXPECT_EQ(TextBlockLayoutText::render(blocks), "1. first step\n    nested note\n\nAfter a gap");
    EXPECT_EQ(TextBlockLayoutText::render(blocks, {"erster Schritt", "Notiz"}), "1. erster Schritt\n    Notiz\n\nAfter a gap");

    const auto runs = TextBlockRuns::group(blocks);
    EXPECT_EQ(runs, (std::vector<std::vector<std::size_t>>{{0}, {1}, {2}})) << "the nested block is off the left edge";
    EXPECT_TRUE(TextBlockRuns::box({}, blocks).isNull());
}

TEST(ScriptLanguage, GuessesByScript) {
    EXPECT_EQ(ScriptLanguage::guess("漢字のテスト"), "ja");
    EXPECT_EQ(ScriptLanguage::guess("한국어"), "ko");
    EXPECT_EQ(ScriptLanguage::guess("Привет"), "ru");
    EXPECT_EQ(ScriptLanguage::guess("中文"), "zh-Hans");
    EXPECT_EQ(ScriptLanguage::guess("hello"), "en");
    EXPECT_EQ(ScriptLanguage::guess(" 12 "), std::nullopt);
    EXPECT_EQ(ScriptLanguage::guess("漢字漢字漢字漢字漢字の漢字"), "ja") << "a single kana among Han";
    EXPECT_EQ(ScriptLanguage::cjkGuess("漢字漢字漢字漢字漢の"), "ja") << "a tenth kana";
    EXPECT_EQ(ScriptLanguage::cjkGuess("漢字漢字漢字漢字漢字の"), "zh-Hans");
    EXPECT_EQ(ScriptLanguage::cjkGuess("abc"), std::nullopt);
}

TEST(UnicodeText, CountsWhatAReaderSeesAsOneCharacter) {
    const struct {
        const char* text;
        std::size_t count;
    } rows[] = {
        {"", 0},
        {"ab", 2},
        {"e\u0301", 1},                                       // e and a combining acute
        {"\r\n", 1},
        {"\n\u0301", 2},                                      // a mark after a line end stands alone
        {"\U0001F1E9\U0001F1EA\U0001F1EB", 2},                // a flag pair and a lone indicator
        {"\U0001F44D\U0001F3FD", 1},                          // thumbs up with a skin tone
        {"\U0001F468\u200D\U0001F469\u200D\U0001F467", 1},    // a family joined by ZWJ
        {"\u1100\u1161\u11A8", 1},                            // Hangul jamo making one syllable
        {"日本語", 3},
    };
    for (const auto& row : rows) EXPECT_EQ(UnicodeText::graphemeCount(row.text), row.count) << row.text;
}
