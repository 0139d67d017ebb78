#include "HintPanel.h"

#include <gtest/gtest.h>

namespace tosvar {
namespace {

using namespace HintPanel;

// Keys come back as "text|key" of the key itself, so each row names its key.
std::string fakeLocalize(const std::string& key) {
    if (key.rfind("hint.title", 0) == 0 || key.rfind("annotation.tool.", 0) == 0) return "<" + key + ">";
    if (key == "hint.plain") return "no keycap here";
    return key + "|" + key.substr(key.rfind('.') + 1);
}

std::vector<std::string> rowTexts(const Content& c) {
    std::vector<std::string> texts;
    for (const Row& r : c.rows) texts.push_back(r.text);
    return texts;
}

TEST(HintPanelContent, RowsSplitAtTheFirstBarAndATextWithoutOneHasNoKeycap) {
    EXPECT_EQ(row("hint.plain", fakeLocalize), (Row{"no keycap here", ""}));
    const Localize twoBars = [](const std::string&) { return std::string("Square|Shift|extra"); };
    EXPECT_EQ(row("any", twoBars), (Row{"Square", "Shift|extra"}));
}

TEST(HintPanelContent, IdleOffersTheColourOnlyWhenAnnotatingAndCarriesTheModeChips) {
    const Content annotate = content(Idle{ScreenshotOverlayMode::annotate}, fakeLocalize);
    EXPECT_EQ(annotate.title, "<hint.title.select.annotate>");
    EXPECT_EQ(rowTexts(annotate), (std::vector<std::string>{"hint.idle.candidates", "hint.idle.element", "hint.idle.color", "hint.idle.loupe",
                                                             "hint.idle.cancel"}));
    EXPECT_EQ(annotate.modes, ScreenshotOverlayMode::annotate);

    const Content record = content(Idle{ScreenshotOverlayMode::record}, fakeLocalize);
    EXPECT_EQ(record.title, "<hint.title.select.record>");
    EXPECT_EQ(rowTexts(record), (std::vector<std::string>{"hint.idle.candidates", "hint.idle.element", "hint.idle.loupe", "hint.idle.cancel"}));
    EXPECT_EQ(content(Idle{ScreenshotOverlayMode::scrollCapture}, fakeLocalize).title, "<hint.title.select.scroll>");
}

TEST(HintPanelContent, ConditionalRowsFollowTheirFlags) {
    const auto pointer = [](bool removable) { return rowTexts(content(Pointer{removable}, fakeLocalize)); };
    EXPECT_EQ(pointer(false), (std::vector<std::string>{"hint.pointer.nudge", "hint.pointer.zoom", "hint.pointer.addWindow", "hint.pointer.reframe",
                                                        "hint.pointer.confirm"}));
    EXPECT_EQ(pointer(true).at(3), "hint.pointer.removeWindow");

    const Content lens = content(SelectedHint{"annotation.tool.magnifier", false, true}, fakeLocalize);
    EXPECT_EQ(lens.title, "<hint.title.selected><annotation.tool.magnifier>");
    EXPECT_EQ(rowTexts(lens), (std::vector<std::string>{"hint.sel.size", "hint.sel.lensPan", "hint.sel.lensZoom", "hint.sel.nudge", "hint.sel.color",
                                                         "hint.sel.layer", "hint.sel.delete", "hint.sel.duplicate", "hint.sel.deselect"}));
    const Content text = content(SelectedHint{std::nullopt, true, false}, fakeLocalize);
    EXPECT_EQ(text.title, "<hint.title.selected.generic>");
    EXPECT_EQ(text.rows.at(1).text, "hint.sel.rotate");
    EXPECT_EQ(text.rows.at(text.rows.size() - 2).text, "hint.sel.editText");
    EXPECT_FALSE(text.modes);
}

TEST(HintPanelContent, ToolTitlesUseThePenAndStepNamesAndSelectHasNoRows) {
    EXPECT_EQ(toolContent(AnnotationTool::freehand, fakeLocalize).title, "<hint.title.tool><annotation.tool.pen>");
    EXPECT_EQ(toolContent(AnnotationTool::stepBadge, fakeLocalize).title, "<hint.title.tool><annotation.tool.step>");
    EXPECT_EQ(rowTexts(toolContent(AnnotationTool::freehand, fakeLocalize)).at(2), "hint.stroke.opacity.pen");
    const Content select = content(Tool{AnnotationTool::select}, fakeLocalize);
    EXPECT_EQ(select.title, "<hint.title.pointer>");
    EXPECT_TRUE(select.rows.empty());
    EXPECT_EQ(rowTexts(content(Simple::recordArmed, fakeLocalize)), (std::vector<std::string>{"hint.armed.start", "hint.armed.zoom"}));
}

const Rect screen{0, 0, 1000, 800};
const Size panel{200, 100};

TEST(HintPanelPlacement, CornersSitTwentyFourPointsIn) {
    EXPECT_EQ(frame(panel, screen, Corner::bottomLeft), (Rect{24, 676, 200, 100}));
    EXPECT_EQ(frame(panel, screen, Corner::topRight), (Rect{776, 24, 200, 100}));
}

TEST(HintPanelPlacement, APanelLeavesABlockedCornerAndStaysWhereItWentUntilThatIsBlocked) {
    EXPECT_EQ(placement(panel, screen, {}, Corner::bottomLeft), Corner::bottomLeft);
    const Rect dragIntoBottomLeft{0, 600, 300, 200};
    EXPECT_EQ(placement(panel, screen, {dragIntoBottomLeft}, Corner::bottomLeft), Corner::bottomRight);
    // Bottom left is free again, but the panel keeps the corner it moved to.
    EXPECT_EQ(placement(panel, screen, {}, Corner::bottomRight), Corner::bottomRight);
    const Rect bottomHalf{0, 400, 1000, 400};
    EXPECT_EQ(placement(panel, screen, {bottomHalf}, Corner::bottomRight), Corner::topLeft);
}

TEST(HintPanelPlacement, NoRoomOrEveryCornerBlockedHidesThePanel) {
    EXPECT_FALSE(placement(panel, {0, 0, 248, 800}, {}, Corner::bottomLeft));
    EXPECT_TRUE(placement(panel, {0, 0, 249, 800}, {}, Corner::bottomLeft));
    EXPECT_FALSE(placement(panel, screen, {Rect{10, 10, 980, 780}}, Corner::bottomLeft));
}

} // namespace
} // namespace tosvar
