// A committed region annotated in place on Qt's offscreen platform, driven by
// the events a user makes: presses reach the canvas or the region as the
// region's rules say, moving keeps the annotations where they stand on the
// screen, Ctrl and a drag outside start over, the wheel zooms the region,
// Return and Ctrl+S finish with the rendered region.
#include "AnnotationElementClipboard.h"
#include "FakePasteboard.h"
#include "InMemoryDefaultsStore.h"
#include "PngDecoder.h"
#include "QtDrawingBackend.h"
#include "QtRegionOverlay.h"
#include "RegionAnnotatingPhase.h"
#include "RegionInfoBadgePainter.h"
#include "RegionInfoBadgeView.h"
#include "RegionSelectionChrome.h"
#include "TestApplication.h"
#include "VirtualMainQueue.h"
#include "WorkerPool.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>
#include <QTest>
#include <QWindow>
#include <gtest/gtest.h>

namespace tosvar {
namespace {

constexpr int width = 800, height = 600;

// A frozen display whose every pixel tells where it is.
CapturedDisplay gradientDisplay() {
    MutableImage image(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) image.setPixel(x, y, {static_cast<std::uint8_t>(x % 256), static_cast<std::uint8_t>(y % 256), 90, 255});
    const ScreenInfo screen{{0, 0, width, height}, {0, 0, width, height}, 1};
    return {std::move(image).freeze(), screen, 1};
}

class RegionAnnotatingPhaseTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { testApplication<QApplication>(); }

    void SetUp() override {
        const CapturedDisplay display = gradientDisplay();
        RegionOverlayCallbacks callbacks;
        callbacks.onFinish = [this](const RegionAnnotationOutcome& outcome) { finished = outcome; };
        callbacks.onRecordRegion = [this](const Rect& rect, std::optional<std::uint32_t>) { recorded = rect; };
        overlay = std::make_unique<QtRegionOverlay>(display.screen, display.screen.frame, display, ScreenshotOverlayMode::annotate, callbacks,
                                                    std::vector<PickableWindow>{{7, 100, {500, 350, 200, 150}, {500, 350, 200, 150}}});
        overlay->editorServices = &services;
        overlay->settings = &defaults;
        overlay->show();
        QApplication::processEvents();
        // The region every test starts from.
        drag({100, 100}, {300, 250});
        ASSERT_NE(overlay->annotating(), nullptr);
    }

    // Pointer events where the user points, through the window system, so Qt
    // picks the widget under the pointer and keeps a press's receiver for its drag.
    void mouse(QTest::MouseAction action, QPointF at, Qt::KeyboardModifiers modifiers = {}) {
        QTest::mouseEvent(action, overlay->windowHandle(), Qt::LeftButton, modifiers, at.toPoint());
    }
    void drag(QPointF from, QPointF to, Qt::KeyboardModifiers modifiers = {}) {
        mouse(QTest::MousePress, from, modifiers);
        mouse(QTest::MouseMove, (from + to) / 2, modifiers);
        mouse(QTest::MouseMove, to, modifiers);
        mouse(QTest::MouseRelease, to, modifiers);
    }
    // A drag in fractions of a point, straight to the overlay.
    void fineDrag(QPointF from, QPointF to) {
        for (const auto& [type, at] : {std::pair{QEvent::MouseButtonPress, from}, std::pair{QEvent::MouseMove, to},
                                       std::pair{QEvent::MouseButtonRelease, to}}) {
            QMouseEvent event(type, at, overlay->mapToGlobal(at), type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton,
                              type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton, {});
            QApplication::sendEvent(overlay.get(), &event);
        }
    }
    void key(int code, Qt::KeyboardModifiers modifiers = {}, const QString& text = {}) {
        QWidget* target = QApplication::focusWidget() ? QApplication::focusWidget() : overlay.get();
        QKeyEvent press(QEvent::KeyPress, code, modifiers, text);
        QApplication::sendEvent(target, &press);
    }
    void wheel(QPointF at, int angle) {
        QWheelEvent event(at, overlay->mapToGlobal(at), {}, {0, angle}, Qt::NoButton, {}, Qt::NoScrollPhase, false);
        QApplication::sendEvent(static_cast<QObject*>(overlay->windowHandle()), &event);
    }
    RegionAnnotatingPhase& phase() { return *overlay->annotating(); }
    const std::vector<AnnotationElement>& elements() { return phase().editor().document().elements; }
    ImageBuffer finishedImage() {
        const AnnotationResult::Finished* done = finished ? finished->result.finishedValue() : nullptr;
        if (!done) return {};
        Expected<ImageBuffer> image = PngDecoder::decode(done->png);
        return image ? *image : ImageBuffer{};
    }

    AnnotationRenderer renderer{QtDrawingBackend::shared()};
    VirtualMainQueue queue;
    InMemoryDefaultsStore defaults;
    AnnotationElementClipboard clipboard;
    FakePasteboard pasteboard;
    AnnotationEditorServices services{renderer, queue, &defaults, clipboard, pasteboard, WorkerPool::shared()};
    std::unique_ptr<QtRegionOverlay> overlay;
    std::optional<RegionAnnotationOutcome> finished;
    std::optional<Rect> recorded;
};

TEST_F(RegionAnnotatingPhaseTest, ADrawnRegionIsEditedInPlaceAndReturnCopiesItWithRoundedCorners) {
    EXPECT_FALSE(finished) << "the drag alone finishes nothing";
    EXPECT_EQ(phase().canvas().geometry(), QRect(100, 100, 200, 150));
    key(Qt::Key_R, {}, QStringLiteral("r"));
    drag({150, 150}, {220, 200});
    ASSERT_EQ(elements().size(), 1u) << "the rectangle tool drew on the canvas";
    EXPECT_EQ(*elements()[0].geometry.asRect(), Rect(50, 50, 70, 50)) << "in the region's pixels";

    key(Qt::Key_Return);
    ASSERT_TRUE(finished && finished->result.finishedValue());
    EXPECT_EQ(finished->result.finishedValue()->action, AnnotationAction::copy);
    EXPECT_EQ(finished->frame, Rect(100, 350, 200, 150)) << "the region on the screen, y up";
    const ImageBuffer image = finishedImage();
    ASSERT_EQ(image.width(), 200);
    EXPECT_EQ(image.pixel(0, 0).a, 0) << "a rounded corner";
    EXPECT_EQ(image.pixel(10, 100), (Rgba8{110, 200, 90, 255})) << "the frozen screen under the region";
    EXPECT_NE(image.pixel(50, 75), (Rgba8{150, 175, 90, 255})) << "the rectangle's left side";
}

TEST_F(RegionAnnotatingPhaseTest, CtrlRRecordsTheRegionAsItStandsInsteadOfCapturingIt) {
    drag({300, 250}, {360, 300}); // grown by its corner first
    key(Qt::Key_R, Qt::ControlModifier, QStringLiteral("r"));
    EXPECT_EQ(recorded, Rect(100, 300, 260, 200)) << "the region on the screen, y up";
    EXPECT_FALSE(finished) << "no picture is delivered";
}

TEST_F(RegionAnnotatingPhaseTest, CtrlSSavesAndADoubleClickOnEmptyGroundCopies) {
    key(Qt::Key_S, Qt::ControlModifier, QStringLiteral("s"));
    ASSERT_TRUE(finished);
    EXPECT_EQ(finished->result.finishedValue()->action, AnnotationAction::save);
    finished.reset();
    mouse(QTest::MouseDClick, {200, 170});
    ASSERT_TRUE(finished);
    EXPECT_EQ(finished->result.finishedValue()->action, AnnotationAction::copy);
}

TEST_F(RegionAnnotatingPhaseTest, MovingTheRegionKeepsItsAnnotationsWhereTheyStandOnTheScreen) {
    phase().editor().setTool(AnnotationTool::rectangle);
    drag({150, 150}, {220, 200});
    phase().editor().setTool(AnnotationTool::select);
    phase().editor().clearSelection();
    ASSERT_EQ(elements().size(), 1u);

    drag({250, 175}, {300, 205}); // empty ground inside: the region moves by (50, 30)
    EXPECT_EQ(phase().model().committed(), Rect(150, 130, 200, 150));
    EXPECT_EQ(phase().canvas().geometry(), QRect(150, 130, 200, 150));
    EXPECT_EQ(*elements()[0].geometry.asRect(), Rect(0, 20, 70, 50)) << "the rectangle did not move on screen";
    EXPECT_EQ(phase().editor().document().pixelSize(), Size(200, 150));

    // A press on the drawn rectangle goes to the canvas: the element moves, not the region.
    drag({220, 175}, {230, 180});
    EXPECT_EQ(phase().model().committed(), Rect(150, 130, 200, 150));
    EXPECT_EQ(*elements()[0].geometry.asRect(), Rect(10, 25, 70, 50));
}

TEST_F(RegionAnnotatingPhaseTest, AHandleResizesTheRegionEvenWithADrawingToolArmed) {
    key(Qt::Key_A, {}, QStringLiteral("a"));
    drag({300, 250}, {360, 300});
    EXPECT_EQ(phase().model().committed(), Rect(100, 100, 260, 200));
    EXPECT_TRUE(elements().empty()) << "no arrow was drawn";
    EXPECT_EQ(phase().editor().document().pixelSize(), Size(260, 200));
    EXPECT_EQ(phase().editor().document().base().pixel(259, 199), (Rgba8{103, 43, 90, 255})) << "the base is cut again from the frozen screen";
}

TEST_F(RegionAnnotatingPhaseTest, ACtrlDragOutsideDropsTheRegionAndItsAnnotationsForANewSelection) {
    phase().editor().setTool(AnnotationTool::rectangle);
    drag({150, 150}, {220, 200});
    mouse(QTest::MousePress, {400, 100}, Qt::ControlModifier);
    mouse(QTest::MouseMove, {450, 150}, Qt::ControlModifier);
    EXPECT_EQ(overlay->annotating(), nullptr);
    ASSERT_TRUE(overlay->model().liveSelection());
    EXPECT_EQ(*overlay->model().liveSelection(), Rect(400, 100, 50, 50));
    mouse(QTest::MouseRelease, {450, 150});
    ASSERT_NE(overlay->annotating(), nullptr);
    EXPECT_TRUE(elements().empty()) << "the new region starts bare";
}

TEST_F(RegionAnnotatingPhaseTest, CtrlClickOnAWindowAddsItAndItsRemoveBadgeTakesItOutAgain) {
    key(Qt::Key_Control, Qt::ControlModifier);
    mouse(QTest::MouseMove, {600, 400}, Qt::ControlModifier);
    ASSERT_TRUE(phase().model().reselectHover());
    mouse(QTest::MousePress, {600, 400}, Qt::ControlModifier);
    mouse(QTest::MouseRelease, {600, 400}, Qt::ControlModifier);
    EXPECT_EQ(phase().model().committed(), Rect(100, 100, 600, 400)) << "the union of the area and the window";
    ASSERT_EQ(phase().removableWindows().size(), 1u);

    const Point badge = RegionSelectionChrome::removeBadgeCenter(phase().removableWindows()[0].second, phase().model().bounds());
    mouse(QTest::MousePress, {badge.x, badge.y}, Qt::ControlModifier);
    mouse(QTest::MouseRelease, {badge.x, badge.y}, Qt::ControlModifier);
    EXPECT_EQ(phase().model().committed(), Rect(100, 100, 200, 150)) << "back to the area first dragged";
    EXPECT_TRUE(phase().removableWindows().empty()) << "the last part stays";
}

TEST_F(RegionAnnotatingPhaseTest, TheWheelZoomsTheRegionButNotOverASelection) {
    wheel({200, 170}, 120 * 10);
    EXPECT_EQ(phase().model().committed(), Rect(80, 85, 240, 180));
    phase().editor().setTool(AnnotationTool::rectangle);
    drag({150, 150}, {220, 200});
    ASSERT_TRUE(phase().editor().state().selectedID);
    const Rect before = phase().model().committed();
    wheel({180, 170}, 120 * 10);
    EXPECT_EQ(phase().model().committed(), before) << "the wheel sizes the selected element instead";
}

TEST_F(RegionAnnotatingPhaseTest, ARadiusBelowHalfAPixelGivesSquareCornersAndAboveRoundsThem) {
    const Point grip = RegionSelectionChrome::radiusGrip(phase().model().committed(), 8);
    fineDrag({grip.x, grip.y}, {grip.x - 7.6, grip.y - 7.6});
    EXPECT_NEAR(phase().model().cornerRadius(), 0.4, 1e-9);
    key(Qt::Key_Return);
    EXPECT_EQ(finishedImage().pixel(0, 0).a, 255) << "square";

    const Point square = RegionSelectionChrome::radiusGrip(phase().model().committed(), 0.4);
    fineDrag({square.x, square.y}, {square.x + 0.2, square.y + 0.2});
    EXPECT_NEAR(phase().model().cornerRadius(), 0.6, 1e-9);
    key(Qt::Key_Return);
    EXPECT_LT(finishedImage().pixel(0, 0).a, 255) << "rounded";
}

} // namespace
} // namespace tosvar

namespace tosvar {
namespace {

TEST_F(RegionAnnotatingPhaseTest, TheBadgeSwitchesTheShadowOnAClickOrAShortDragAndALongDragPicksACorner) {
    RegionInfoBadgeView& badge = phase().badge();
    EXPECT_EQ(badge.geometry().bottomLeft().y(), 100 - 4 - 1) << "above the region's top-left corner";
    const QRectF toggle = RegionInfoBadgePainter::toggleRect(badge.size(), QStringLiteral("200 × 150"), QStringLiteral("Shadow"));
    const QPointF onSwitch = QPointF(badge.pos()) + toggle.center();
    drag(onSwitch, onSwitch + QPointF(3, 0));
    EXPECT_EQ(defaults.boolean("screenshotDropShadow"), true) << "three points is still a click";
    mouse(QTest::MouseClick, onSwitch.toPoint());
    EXPECT_EQ(defaults.boolean("screenshotDropShadow"), false);

    // Dropped near the region's bottom-right corner, the badge goes to that
    // corner, above the region since the toolbar holds the space below.
    drag(onSwitch, {290, 260});
    EXPECT_EQ(defaults.boolean("screenshotDropShadow"), false) << "a drag switches nothing";
    EXPECT_EQ(badge.geometry().right(), 300 - 1) << "its right edge on the region's";
    EXPECT_EQ(badge.geometry().bottom(), 100 - 4 - 1);
    EXPECT_GE(phase().toolbar().geometry().top(), 250);
}

} // namespace
} // namespace tosvar
