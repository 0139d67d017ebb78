// The committed region's rules without a view: its grips and their hit
// areas, resizing at the display's edge, moving, the corner radius, pixel
// snapping and the annotations' offset, wheel zoom, which presses are the
// region's, and the chrome hiding during a press, on virtual time.
#include "RegionAnnotatingModel.h"
#include "RegionBadgeLayout.h"
#include "RegionSelectionChrome.h"
#include "RegionToolbarLayout.h"
#include "VirtualMainQueue.h"

#include <gtest/gtest.h>

namespace tosvar {
namespace {

namespace Chrome = RegionSelectionChrome;

const Rect display(0, 0, 1000, 800);

class RegionAnnotatingModelTest : public ::testing::Test {
protected:
    RegionAnnotatingModel make(Rect region, double scale = 1, ScreenshotOverlayMode mode = ScreenshotOverlayMode::annotate) {
        return RegionAnnotatingModel(region, display, scale, mode, queue);
    }
    // A press, the drag through `points` and the release.
    RegionAnnotatingModel::Release gesture(RegionAnnotatingModel& model, Point from, std::initializer_list<Point> points, bool shift = false,
                                           bool alt = false) {
        model.press(from, 1, false, shift, alt);
        for (Point p : points) model.drag(p, shift, alt);
        return model.release();
    }

    VirtualMainQueue queue;
};

TEST(RegionSelectionChrome, HandleHitsTakeCornersFirstAndAreWiderInside) {
    const Rect r(100, 100, 200, 100);
    EXPECT_EQ(Chrome::handleHit(r, {100, 100}), RectHandle::topLeft);
    EXPECT_EQ(Chrome::handleHit(r, {300, 200}), RectHandle::bottomRight);
    EXPECT_EQ(Chrome::handleHit(r, {200, 97}), RectHandle::top);
    EXPECT_EQ(Chrome::handleHit(r, {303, 150}), RectHandle::right);
    // Outside, 4 points is the limit; inside, 20.
    EXPECT_EQ(Chrome::handleHit(r, {200, 95}), std::nullopt);
    EXPECT_EQ(Chrome::handleHit(r, {200, 118}), RectHandle::top);
    EXPECT_EQ(Chrome::handleHit(r, {200, 150}), std::nullopt) << "the middle of the region is no handle";
    // Near a corner both a corner leg and a side are in reach: the corner wins.
    EXPECT_EQ(Chrome::handleHit(r, {112, 104}), RectHandle::topLeft);
    // A region smaller than two legs still has its corners.
    EXPECT_EQ(Chrome::handleHit(Rect(0, 0, 12, 12), {12, 12}), RectHandle::bottomRight);
}

TEST(RegionSelectionChrome, ResizingStopsAtTheDisplayAndTheMinimumSide) {
    const Rect r(100, 100, 200, 100);
    EXPECT_EQ(Chrome::resized(r, RectHandle::bottomRight, {1400, 900}, false, false, 4, display), Rect(100, 100, 900, 700));
    EXPECT_EQ(Chrome::resized(r, RectHandle::topLeft, {-50, -50}, false, false, 4, display), Rect(0, 0, 300, 200));
    // Dragged onto the opposite edge, a side keeps its old extent rather than vanish.
    EXPECT_EQ(Chrome::resized(r, RectHandle::right, {102, 150}, false, false, 4, display), r);
    // Alt grows about the centre; Shift keeps the aspect.
    EXPECT_EQ(Chrome::resized(r, RectHandle::right, {350, 150}, false, true, 4, display), Rect(50, 100, 300, 100));
    const Rect kept = Chrome::resized(r, RectHandle::bottomRight, {500, 400}, true, false, 4, display);
    EXPECT_NEAR(kept.width() / kept.height(), 2, 1e-9);
}

TEST(RegionSelectionChrome, TheRadiusGripStandsInFromTheCornerAndTheRadiusStaysWithinHalfASide) {
    const Rect r(100, 100, 200, 60);
    EXPECT_EQ(Chrome::radiusGrip(r, 8), Point(114, 114)) << "at least 14 in";
    EXPECT_EQ(Chrome::radiusGrip(r, 100), Point(130, 130)) << "at most half the shorter side";
    EXPECT_TRUE(Chrome::radiusGripHit(r, 8, {121, 107}));
    EXPECT_FALSE(Chrome::radiusGripHit(r, 8, {123, 114}));
    const Point grip = Chrome::radiusGrip(r, 8);
    EXPECT_DOUBLE_EQ(Chrome::draggedRadius(r, 8, grip, {grip.x + 10, grip.y + 4}), 12) << "the shorter of both moves";
    EXPECT_DOUBLE_EQ(Chrome::draggedRadius(r, 8, grip, {grip.x + 90, grip.y + 90}), 30);
    EXPECT_DOUBLE_EQ(Chrome::draggedRadius(r, 8, grip, {grip.x - 50, grip.y}), 0);
}

TEST_F(RegionAnnotatingModelTest, APressHidesTheChromeAfterAFifthOfASecondOrTwoPointsAndTheReleaseShowsIt) {
    RegionAnnotatingModel model = make({100, 100, 200, 100});
    std::vector<bool> told;
    model.onChromeHiddenChanged = [&](bool hidden) { told.push_back(hidden); };

    model.press({200, 150}, 1, false, false, false);
    queue.advance(0.19);
    EXPECT_FALSE(model.chromeHidden());
    queue.advance(0.02);
    EXPECT_TRUE(model.chromeHidden());
    model.release();
    EXPECT_FALSE(model.chromeHidden());

    model.press({200, 150}, 1, false, false, false);
    model.drag({202, 150}, false, false);
    EXPECT_FALSE(model.chromeHidden()) << "two points is still a click";
    model.drag({203, 150}, false, false);
    EXPECT_TRUE(model.chromeHidden());
    model.release();
    queue.advance(1);
    EXPECT_EQ(told, (std::vector<bool>{true, false, true, false})) << "a released press leaves no hiding behind";
}

TEST_F(RegionAnnotatingModelTest, MovingIsClampedToTheDisplayAndAnnotationsKeepTheirScreenPlace) {
    RegionAnnotatingModel model = make({100, 100, 200, 100});
    const RegionAnnotatingModel::Release moved = gesture(model, {150, 150}, {{100, 120}, {-400, -400}});
    ASSERT_TRUE(moved.change);
    EXPECT_EQ(model.committed(), Rect(0, 0, 200, 100));
    EXPECT_EQ(moved.change->elementOffset, Point(100, 100)) << "elements shift by what the region moved, the other way";

    const RegionAnnotatingModel::Release far = gesture(model, {50, 50}, {{5000, 5000}});
    EXPECT_EQ(model.committed(), Rect(800, 700, 200, 100));
    EXPECT_EQ(far.change->elementOffset, Point(-800, -700));
}

TEST_F(RegionAnnotatingModelTest, AHandleDragAtTheScreenEdgeCommitsTheClampedRegionOnDevicePixels) {
    RegionAnnotatingModel model = make({100.5, 100, 200, 100}, 2);
    const RegionAnnotatingModel::Release grown = gesture(model, {100.5, 100}, {{50, 60}, {-30.2, -40}});
    ASSERT_TRUE(grown.change);
    EXPECT_EQ(model.committed(), Rect(0, 0, 300.5, 200)) << "the far edges stay";
    EXPECT_EQ(grown.change->elementOffset, Point(201, 200)) << "in image pixels at scale 2";
    EXPECT_FALSE(gesture(model, {150, 150}, {}).change) << "a click changes nothing";
}

TEST_F(RegionAnnotatingModelTest, ARegionBelowFourPointsIsRefusedAndEdgesSnapToDevicePixels) {
    RegionAnnotatingModel model = make({100, 100, 200, 100});
    EXPECT_FALSE(model.commitResize({10, 10, 3.4, 50}));
    EXPECT_EQ(model.committed(), Rect(100, 100, 200, 100));
    EXPECT_TRUE(model.commitResize({10, 10, 4, 4}));

    RegionAnnotatingModel retina = make({100, 100, 200, 100}, 2);
    ASSERT_TRUE(retina.commitResize({10.3, 10.2, 50.1, 50.4}));
    EXPECT_EQ(retina.committed(), Rect(10.5, 10, 50, 50.5)) << "each edge on the nearest device pixel";
}

TEST_F(RegionAnnotatingModelTest, TheGripRoundsTheCornersAndAShrunkRegionCapsTheRadius) {
    RegionAnnotatingModel model = make({100, 100, 200, 100});
    EXPECT_DOUBLE_EQ(model.cornerRadius(), 8);
    const Point grip = Chrome::radiusGrip(model.committed(), 8);
    EXPECT_EQ(model.press(grip, 1, false, false, false), RegionAnnotatingModel::Press::radius);
    model.drag({grip.x + 20, grip.y + 20}, false, false);
    EXPECT_DOUBLE_EQ(model.cornerRadius(), 28);
    EXPECT_FALSE(model.release().change) << "rounding changes no region";
    model.commitResize({100, 100, 40, 30});
    EXPECT_DOUBLE_EQ(model.cornerRadius(), 15);

    RegionAnnotatingModel armed = make({100, 100, 200, 100}, 1, ScreenshotOverlayMode::record);
    EXPECT_DOUBLE_EQ(armed.cornerRadius(), 0);
    EXPECT_FALSE(armed.showsRadiusGrip());
    EXPECT_NE(armed.press(Chrome::radiusGrip(armed.committed(), 0), 1, false, false, false), RegionAnnotatingModel::Press::radius);
}

TEST_F(RegionAnnotatingModelTest, WheelZoomKeepsTheCentreAndStopsAtTwentyFourPointsAndTheDisplay) {
    RegionAnnotatingModel model = make({400, 300, 200, 100});
    ASSERT_TRUE(model.zoom(10));
    EXPECT_EQ(model.committed(), Rect(380, 290, 240, 120));
    EXPECT_FALSE(model.zoom(0.04)) << "a factor within 0.001 of 1";
    while (model.zoom(-50)) {
    }
    EXPECT_NEAR(std::min(model.committed().width(), model.committed().height()), 24, 1);
    const Rect smallest = model.committed();
    EXPECT_FALSE(model.zoom(-50));
    EXPECT_EQ(model.committed(), smallest);

    RegionAnnotatingModel whole = make({0, 0, 1000, 800});
    EXPECT_FALSE(whole.zoom(10)) << "a region filling the display cannot grow";
    RegionAnnotatingModel wide = make({10, 300, 900, 100});
    ASSERT_TRUE(wide.zoom(50));
    EXPECT_TRUE(display.contains(wide.committed()));
}

TEST_F(RegionAnnotatingModelTest, ThePressesTheRegionClaimsFromTheCanvas) {
    RegionAnnotatingModel model = make({100, 100, 200, 100});
    EXPECT_TRUE(model.claims({105, 150}, false, false, true)) << "a handle, whatever the editor does";
    EXPECT_TRUE(model.claims({200, 150}, true, false, false)) << "empty ground with the pointer tool idle moves the region";
    EXPECT_FALSE(model.claims({200, 150}, false, false, false)) << "a tool or a selection draws";
    EXPECT_FALSE(model.claims({200, 150}, true, false, true)) << "an element under the pointer";
    EXPECT_FALSE(model.claims({200, 150}, true, true, false)) << "Ctrl held";
    EXPECT_TRUE(model.claims({600, 600}, false, false, false)) << "outside the region";
}

TEST_F(RegionAnnotatingModelTest, ADoubleClickConfirmsAndACtrlPressOutsideReselectsOrTakesTheOfferedWindow) {
    RegionAnnotatingModel model = make({100, 100, 200, 100});
    EXPECT_EQ(model.press({200, 150}, 2, false, false, false), RegionAnnotatingModel::Press::confirm);
    EXPECT_EQ(model.press({105, 150}, 2, false, false, false), RegionAnnotatingModel::Press::handle) << "a handle is no double click";
    model.release();

    model.setReselectHover(Rect(500, 500, 100, 100), 9u);
    EXPECT_EQ(model.press({550, 550}, 1, true, true, false), RegionAnnotatingModel::Press::reselect);
    EXPECT_EQ(model.drag({553, 550}, false, false), RegionAnnotatingModel::Drag::none);
    EXPECT_TRUE(model.release().takeReselectHover) << "a click takes the offered window";

    model.press({550, 550}, 1, true, true, false);
    EXPECT_EQ(model.drag({560, 560}, false, false), RegionAnnotatingModel::Drag::reselect);
    ASSERT_TRUE(model.reselectAnchor());
    EXPECT_EQ(model.reselectAnchor()->point, Point(550, 550));
    EXPECT_TRUE(model.reselectAnchor()->constrained) << "Shift at the press";
    EXPECT_FALSE(model.release().takeReselectHover);
    EXPECT_EQ(model.press({550, 550}, 1, false, false, false), RegionAnnotatingModel::Press::ignored) << "without Ctrl";
}

TEST(RegionToolbarLayout, BelowElseAboveElseInsideAndADraggedBarStaysPut) {
    const Size bar{400, 40};
    EXPECT_EQ(RegionToolbarLayout::place(bar, {100, 100, 200, 100}, display, std::nullopt),
              (RegionToolbarLayout::Placement{{8, 210, 400, 40}, false}))
        << "centred under the region, kept 8 points in";
    EXPECT_EQ(RegionToolbarLayout::place(bar, {300, 600, 200, 160}, display, std::nullopt),
              (RegionToolbarLayout::Placement{{200, 550, 400, 40}, true}));
    EXPECT_EQ(RegionToolbarLayout::place(bar, {0, 40, 1000, 740}, display, std::nullopt),
              (RegionToolbarLayout::Placement{{300, 724, 400, 40}, false}))
        << "inside, 16 points above the bottom";
    EXPECT_EQ(RegionToolbarLayout::place(bar, {0, 40, 1000, 740}, display, Point{2000, -50}).frame, Rect(592, 8, 400, 40));
}

TEST(RegionBadgeLayout, ATopCornerGoesBelowAtTheTopEdgeAndInsideAFullRegion) {
    const Size badge{120, 22};
    using Slot = RegionBadgeLayout::Slot;
    using Corner = RegionBadgeLayout::Corner;
    EXPECT_EQ(RegionBadgeLayout::placement(badge, {100, 100, 300, 200}, display, Corner::topLeft, {}),
              (RegionBadgeLayout::Placement{Slot::above, {100, 74, 120, 22}}));
    EXPECT_EQ(RegionBadgeLayout::placement(badge, {100, 2, 300, 200}, display, Corner::topLeft, {}).slot, Slot::below);
    EXPECT_EQ(RegionBadgeLayout::placement(badge, {100, 100, 300, 200}, display, Corner::bottomRight, {{250, 300, 300, 40}}).slot, Slot::above)
        << "the toolbar below is in the way";
    EXPECT_EQ(RegionBadgeLayout::placement(badge, display, display, Corner::topRight, {}),
              (RegionBadgeLayout::Placement{Slot::inside, {876, 4, 120, 22}}));
    EXPECT_EQ(RegionBadgeLayout::nearestCorner({50, 10}, {0, 0, 100, 100}), Corner::topLeft) << "a tie goes to the first";
    EXPECT_EQ(RegionBadgeLayout::nearestCorner({90, 95}, {0, 0, 100, 100}), Corner::bottomRight);
}

} // namespace
} // namespace tosvar
