// Grouping and reading order on what Tesseract really read off three pages
// (recorded by tests/ocr/RecordedLinesFixtures.cpp): a paragraph, code and a
// table; two columns; a list with nested bullets.
#include "TextBlockGrouping.h"
#include "TextBlockRuns.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fstream>

using namespace tosvar;

namespace {

struct Recorded {
    std::vector<RecognizedLine> lines;
    Size size;
    std::string expected;
};

Recorded load(const std::string& name) {
    std::ifstream in(std::string(TOSVAR_TEST_DATA_DIR) + "/ocr-" + name + ".json");
    const nlohmann::json fixture = nlohmann::json::parse(in);
    Recorded recorded{{}, {fixture["width"].get<double>(), fixture["height"].get<double>()}, fixture["expected"].get<std::string>()};
    for (const nlohmann::json& line : fixture["lines"]) {
        const nlohmann::json& box = line["box"];
        recorded.lines.push_back({line["text"].get<std::string>(), Rect(box[0], box[1], box[2], box[3]), line["confidence"].get<float>()});
    }
    return recorded;
}

std::size_t at(const std::string& text, const std::string& part) {
    const std::size_t found = text.find(part);
    EXPECT_NE(found, std::string::npos) << part;
    return found;
}

} // namespace

TEST(RecordedLines, TheGroupingOfRealReadingsStaysAsReviewed) {
    for (const char* name : {"document", "columns", "list"}) {
        const Recorded page = load(name);
        ASSERT_FALSE(page.lines.empty()) << name;
        EXPECT_EQ(TextBlockLayoutText::render(TextBlockGrouping::group(page.lines, page.size)), page.expected) << name;
    }
}

TEST(RecordedLines, AParagraphIsOneBlockAndCodeAndTableRowsKeepTheirOrder) {
    const Recorded page = load("document");
    const std::vector<TextBlock> blocks = TextBlockGrouping::group(page.lines, page.size);
    ASSERT_FALSE(blocks.empty());
    EXPECT_TRUE(blocks[0].text.starts_with("Before you start")) << blocks[0].text;
    EXPECT_TRUE(blocks[0].text.ends_with("since the last run.")) << "the wrapped paragraph is one block";
    const std::string text = TextBlockLayoutText::render(blocks);
    EXPECT_LT(at(text, "def import_files"), at(text, "seen[path] = digest"));
    EXPECT_LT(at(text, "Harbour"), at(text, "Market Square"));
    EXPECT_LT(at(text, "Market Square"), at(text, "Hill Road"));
    EXPECT_GT(blocks[2].indentLevel, 0) << "the loop body stands indented";
}

TEST(RecordedLines, ColumnsReadLeftBeforeRightRowByRowAndListsKeepMarkersAndIndents) {
    const std::string columns = TextBlockLayoutText::render(TextBlockGrouping::group(load("columns").lines, load("columns").size));
    EXPECT_LT(at(columns, "The west quay"), at(columns, "The east quay"));
    EXPECT_LT(at(columns, "The east quay"), at(columns, "Stalls open")) << "a row of the page before the next";

    const Recorded list = load("list");
    const std::vector<TextBlock> blocks = TextBlockGrouping::group(list.lines, list.size);
    std::vector<std::string> markers;
    for (const TextBlock& block : blocks)
        if (block.marker) markers.push_back(*block.marker + (block.indentLevel > 0 ? " nested" : ""));
    ASSERT_EQ(markers.size(), 5u) << TextBlockLayoutText::render(blocks);
    EXPECT_EQ(markers[0], "1.");
    EXPECT_EQ(markers[1], "2.");
    EXPECT_TRUE(markers[2].ends_with(" nested")) << markers[2];
    EXPECT_TRUE(markers[3].ends_with(" nested")) << markers[3];
    EXPECT_EQ(markers[4], "3.");
}
