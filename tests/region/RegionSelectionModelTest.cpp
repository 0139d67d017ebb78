#include "RegionSelectionModel.h"

#include <gtest/gtest.h>

namespace tosvar {
namespace {

using Outcome = RegionSelectionModel::KeyOutcome;
using Commit = RegionSelectionModel::Commit;

constexpr std::uint32_t returnKey = 36, escape = 53, tab = 48, keyD = 2, keyF = 3, keyC = 8, keyR = 15, equal = 24;
constexpr std::uint32_t left = 123, up = 126;
constexpr std::uint32_t shift = 0x20000, command = 0x100000, capsLock = 0x10000;

RegionSelectionModel model(double scale = 1) {
    RegionSelectionModel m({0, 0, 800, 600}, scale, ScreenshotOverlayMode::annotate);
    m.setWindows({{7, 100, {100, 100, 300, 200}, {90, 90, 320, 220}}, {8, 100, {50, 50, 600, 400}, {50, 50, 600, 400}}});
    return m;
}

TEST(RegionSelection, ADragSelectsItsRectangleSnappedToDevicePixels) {
    RegionSelectionModel m = model(2);
    m.press({10.2, 20.4});
    m.drag({110.6, 90.9}, false, false);
    ASSERT_TRUE(m.liveSelection());
    EXPECT_EQ(m.release(), (Commit{Rect::fromEdges(10, 20.5, 110.5, 91), std::nullopt}));
}

TEST(RegionSelection, AClickPicksTheHoveredWindowOrElseTheWholeDisplay) {
    RegionSelectionModel m = model();
    m.hover({150, 150});
    EXPECT_EQ(m.hoveredWindowID(), 7u) << "the front window of the two under the point";
    m.press({150, 150});
    m.drag({151, 150.5}, false, false); // a drag of a point is a click
    EXPECT_EQ(m.release(), (Commit{{100, 100, 300, 200}, 7u}));
    m.hover({700, 550});
    m.press({700, 550});
    EXPECT_EQ(m.release(), (Commit{{0, 0, 800, 600}, std::nullopt}));
}

TEST(RegionSelection, ReturnCommitsTheCandidateThenTheHoverThenTheDisplay) {
    RegionSelectionModel m = model();
    EXPECT_EQ(m.key(returnKey, 0, false).commit, (Commit{{0, 0, 800, 600}, std::nullopt}));
    m.hover({60, 60});
    EXPECT_EQ(m.key(returnKey, 0, false).commit, (Commit{{50, 50, 600, 400}, 8u}));
    m.key(keyF, 0, false);
    EXPECT_EQ(m.key(returnKey, 0, false).commit, (Commit{{0, 0, 800, 600}, std::nullopt}));
}

TEST(RegionSelection, TheLastRegionIsSummonedByDAndCommittedByTab) {
    RegionSelectionModel m = model();
    EXPECT_EQ(m.key(keyD, 0, false).outcome, Outcome::beep) << "nothing stored yet";
    EXPECT_EQ(m.key(tab, 0, false).outcome, Outcome::beep);
    m.setLastRegion(Rect(20, 30, 200, 100));
    m.hover({500, 500});
    EXPECT_EQ(m.key(keyD, 0, false).outcome, Outcome::handled);
    EXPECT_EQ(m.highlight(), Rect(20, 30, 200, 100));
    m.hover({510, 505});
    EXPECT_TRUE(m.highlight()) << "a move of 12 points or less keeps the candidate";
    m.hover({520, 500});
    EXPECT_NE(m.highlight(), Rect(20, 30, 200, 100)) << "a longer move drops it";
    EXPECT_EQ(m.key(tab, 0, false).commit, (Commit{{20, 30, 200, 100}, std::nullopt}));
}

TEST(RegionSelection, APressInsideACandidateCommitsItAndOutsideStartsADrag) {
    RegionSelectionModel m = model();
    m.key(keyF, 0, false);
    EXPECT_EQ(m.press({400, 300}), (Commit{{0, 0, 800, 600}, std::nullopt}));
    m.setLastRegion(Rect(20, 30, 200, 100));
    m.key(keyD, 0, false);
    EXPECT_FALSE(m.press({500, 500}));
    EXPECT_TRUE(m.isDragging());
}

TEST(RegionSelection, ModeKeysSwitchOnlyWithoutModifiers) {
    RegionSelectionModel m = model();
    EXPECT_EQ(m.key(keyR, command, false).outcome, Outcome::passed);
    EXPECT_EQ(m.mode(), ScreenshotOverlayMode::annotate);
    EXPECT_EQ(m.key(keyR, capsLock, false).outcome, Outcome::handled) << "Caps Lock is no modifier";
    EXPECT_EQ(m.mode(), ScreenshotOverlayMode::record);
    EXPECT_EQ(m.key(escape, 0, false).outcome, Outcome::cancel);
}

TEST(RegionSelection, ArrowsNudgeTheDragByWholeDevicePixels) {
    RegionSelectionModel m = model(2);
    m.press({100, 100});
    m.drag({200, 200}, false, false);
    m.key(left, shift, true);
    EXPECT_EQ(m.dragPoint(), (Point{195, 200})) << "Shift moves 10 device pixels, 5 points at 2x";
    m.key(up, 0, true);
    EXPECT_EQ(m.dragPoint(), (Point{195, 199.5}));
}

TEST(RegionSelection, ElementModeStepsThroughTheChainAndCommitsTheLevelPicked) {
    RegionSelectionModel m = model();
    m.hover({150, 150});
    m.enterElementMode();
    EXPECT_FALSE(m.highlight()) << "the window hover gives way to the element";
    m.setElementChain({{140, 140, 20, 20}, {120, 120, 100, 50}, {100, 100, 300, 200}});
    EXPECT_EQ(m.highlight(), (Rect{140, 140, 20, 20}));
    constexpr std::uint32_t rightBracket = 30, leftBracket = 33, down = 125;
    EXPECT_EQ(m.key(rightBracket, 0, false).outcome, Outcome::handled);
    EXPECT_EQ(m.key(up, 0, false).outcome, Outcome::handled);
    EXPECT_EQ(m.key(rightBracket, 0, false).outcome, Outcome::handled);
    EXPECT_EQ(m.highlight(), (Rect{100, 100, 300, 200})) << "the root is as wide as it goes";
    m.key(leftBracket, 0, false);
    EXPECT_EQ(m.key(returnKey, 0, false).commit, (Commit{{120, 120, 100, 50}, std::nullopt}));
    m.key(down, 0, false);
    EXPECT_EQ(m.press({145, 145}), (Commit{{140, 140, 20, 20}, std::nullopt}));
    EXPECT_FALSE(m.isDragging());
    EXPECT_EQ(m.key(keyC, 0, false).outcome, Outcome::copyElementText);
    EXPECT_EQ(m.elementLevel(), 0u);

    m.exitElementMode();
    EXPECT_EQ(m.highlight(), (Rect{100, 100, 300, 200})) << "the window hover comes back";
    m.setElementChain({{1, 1, 10, 10}});
    EXPECT_FALSE(m.activeElement()) << "a late chain outside element mode is dropped";
}

TEST(RegionSelection, ElementModeWithoutAnElementCommitsNothingByClickAndIsNotEnteredDuringADrag) {
    RegionSelectionModel m = model();
    m.enterElementMode();
    m.setElementChain({});
    EXPECT_EQ(m.key(keyC, 0, false).outcome, Outcome::passed) << "no element and no loupe: C does nothing";
    EXPECT_FALSE(m.press({10, 10}));
    EXPECT_FALSE(m.isDragging());
    m.exitElementMode();
    m.press({10, 10});
    m.enterElementMode();
    EXPECT_FALSE(m.inElementMode());
}

TEST(RegionSelection, ADragSnapsToNearEdgesUnlessShiftAltOrANudgeSaySo) {
    RegionSelectionModel m = model();
    m.press({10, 10});
    m.setSnapCandidates({{100, 100, 300, 200}});
    m.drag({95, 295}, false, false);
    EXPECT_EQ(m.dragPoint(), (Point{100, 300})) << "each axis snaps on its own";
    m.drag({92, 250}, false, false);
    EXPECT_EQ(m.dragPoint(), (Point{92, 250})) << "8 points away is not near";
    m.drag({95, 295}, true, false);
    EXPECT_EQ(m.dragPoint(), (Point{95, 295}));
    m.key(left, 0, true);
    m.setSnapCandidates({{100, 100, 300, 200}});
    EXPECT_FALSE(m.wantsSnapCandidates());
    m.drag({95, 295}, false, false);
    EXPECT_EQ(m.dragPoint(), (Point{95, 295})) << "a nudge ends snapping for the drag";
}

TEST(RegionSelection, TheLoupeZoomWalksItsLadderAndAddsUpFractions) {
    RegionSelectionModel m = model();
    EXPECT_EQ(m.loupeZoom(), 8);
    m.adjustLoupeZoom(1);
    EXPECT_EQ(m.loupeZoom(), 16);
    m.adjustLoupeZoom(5);
    EXPECT_EQ(m.loupeZoom(), 32);
    m.adjustLoupeZoom(0.4);
    m.adjustLoupeZoom(-0.8);
    EXPECT_EQ(m.loupeZoom(), 32) << "0.4 - 0.8 is not yet a step";
    m.adjustLoupeZoom(-0.7);
    EXPECT_EQ(m.loupeZoom(), 16);
    EXPECT_EQ(RegionSelectionModel::loupeZoomFromStored(std::nullopt), 8);
    EXPECT_EQ(RegionSelectionModel::loupeZoomFromStored(1.5), 8);
    EXPECT_EQ(RegionSelectionModel::loupeZoomFromStored(11), 8);
    EXPECT_EQ(RegionSelectionModel::loupeZoomFromStored(13), 16);
    EXPECT_EQ(RegionSelectionModel::loupeZoomFromStored(100), 32);
    m.hover({10, 10});
    EXPECT_EQ(m.key(equal, 0, false).outcome, Outcome::handled);
    EXPECT_EQ(m.loupeZoom(), 16) << "the rest of -0.1 carries: +1 makes 0.9, not yet a step";
    m.key(equal, 0, false);
    EXPECT_EQ(m.loupeZoom(), 32);
    EXPECT_EQ(m.key(keyC, 0, false).outcome, Outcome::copyColor);
}

} // namespace
} // namespace tosvar

#include "LastRegion.h"

namespace tosvar {
namespace {

TEST(LastRegion, ReadsBackWhatItWroteAndPlacesItOnTheDisplay) {
    const Rect second(1440, 0, 1920, 1080);
    EXPECT_EQ(LastRegion::text({1500, 100, 300.5, 200}), "{{1500, 100}, {300.5, 200}}");
    EXPECT_EQ(LastRegion::parse(LastRegion::text({1500, 100, 300.5, 200})), Rect(1500, 100, 300.5, 200));
    EXPECT_EQ(LastRegion::inView("{{1500, 100}, {300, 200}}", second), Rect(60, 780, 300, 200)) << "y down from the display's top";
    EXPECT_FALSE(LastRegion::inView("{{10, 10}, {300, 200}}", second)) << "another display's region";
    EXPECT_FALSE(LastRegion::inView("{{1500, 100}, {7, 200}}", second)) << "too small";
    EXPECT_FALSE(LastRegion::inView("garbage", second));
    EXPECT_EQ(LastRegion::inView("{{3300, 1000}, {4000, 100}}", second), Rect(0, 0, 1920, 100)) << "cut to the display and moved onto it";
}

} // namespace
} // namespace tosvar
