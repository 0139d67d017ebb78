// The selection overlay on Qt's offscreen platform: where its hint panel
// shows, how it makes way for a selection, Ctrl+/ hiding it, and Ctrl
// picking elements.
#include "QtRegionOverlay.h"
#include "TestApplication.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QMouseEvent>
#include <gtest/gtest.h>

namespace tosvar {
namespace {

constexpr int width = 800, height = 600;

CapturedDisplay greyDisplay() {
    MutableImage image(width, height);
    image.fill({180, 180, 180, 255});
    const ScreenInfo screen{{0, 0, width, height}, {0, 0, width, height}, 1};
    return {std::move(image).freeze(), screen, 1};
}

class OverlayTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { testApplication<QApplication>(); }

    void SetUp() override {
        const CapturedDisplay display = greyDisplay();
        RegionOverlayCallbacks callbacks;
        callbacks.onFinish = [this](const RegionAnnotationOutcome& outcome) { finished = outcome; };
        overlay = std::make_unique<QtRegionOverlay>(display.screen, display.screen.frame, display, ScreenshotOverlayMode::annotate, callbacks,
                                                    std::vector<PickableWindow>{{7, 100, {100, 100, 300, 200}, {100, 100, 300, 200}}});
        overlay->hintHidden = [this] { return hidden; };
        overlay->onHintHiddenChanged = [this](bool value) { hidden = value; };
        overlay->show();
        overlay->activateWindow();
        QApplication::processEvents();
        ASSERT_TRUE(overlay->isActiveWindow());
    }

    void mouse(QEvent::Type type, QPointF at, Qt::MouseButtons buttons, Qt::KeyboardModifiers modifiers = {}) {
        QMouseEvent event(type, at, overlay->mapToGlobal(at), type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton, buttons, modifiers);
        QApplication::sendEvent(overlay.get(), &event);
    }
    // Whether the panel's dark plate covers the point: darker than the veil,
    // once a panel that just appeared has faded in.
    bool panelAt(int x, int y) {
        overlay->grab();
        QElapsedTimer fading;
        fading.start();
        while (fading.elapsed() < 250) QApplication::processEvents(QEventLoop::AllEvents, 20);
        return qGray(overlay->grab().toImage().pixel(x, y)) < 60;
    }

    void control(QEvent::Type type) {
        QKeyEvent event(type, Qt::Key_Control, type == QEvent::KeyPress ? Qt::ControlModifier : Qt::NoModifier);
        QApplication::sendEvent(overlay.get(), &event);
    }

    std::unique_ptr<QtRegionOverlay> overlay;
    bool hidden = false;
    std::optional<RegionAnnotationOutcome> finished;
};

TEST_F(OverlayTest, ThePanelStartsBottomLeftAndMakesWayForASelectionDraggedIntoIt) {
    EXPECT_TRUE(panelAt(40, height - 30));
    EXPECT_FALSE(panelAt(width - 40, height - 30));

    mouse(QEvent::MouseButtonPress, {10, 300}, Qt::LeftButton);
    mouse(QEvent::MouseMove, {200, 500}, Qt::LeftButton);
    mouse(QEvent::MouseMove, {300, 590}, Qt::LeftButton);
    EXPECT_FALSE(panelAt(40, height - 30));
    EXPECT_TRUE(panelAt(width - 40, height - 30));
}

TEST_F(OverlayTest, CtrlSlashHidesThePanelAndKeepsTheChoice) {
    QKeyEvent press(QEvent::KeyPress, Qt::Key_Slash, Qt::ControlModifier, QStringLiteral("/"));
    QApplication::sendEvent(overlay.get(), &press);
    EXPECT_TRUE(hidden);
    EXPECT_FALSE(panelAt(40, height - 30));
    QApplication::sendEvent(overlay.get(), &press);
    EXPECT_FALSE(hidden);
    EXPECT_TRUE(panelAt(40, height - 30));
}

TEST_F(OverlayTest, TheOverlayThePointerEntersTakesTheKeysAndTheOneItLeftForgetsItsHover) {
    const CapturedDisplay display = greyDisplay();
    QtRegionOverlay other(display.screen, display.screen.frame, display, ScreenshotOverlayMode::annotate, {}, {});
    other.show();
    overlay->activateWindow();
    QApplication::processEvents();
    ASSERT_FALSE(other.isActiveWindow());
    mouse(QEvent::MouseMove, {150, 150}, Qt::NoButton);
    ASSERT_TRUE(overlay->model().highlight());

    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(overlay.get(), &leave);
    QEnterEvent enter(QPointF(10, 10), QPointF(10, 10), QPointF(10, 10));
    QApplication::sendEvent(&other, &enter);
    QApplication::processEvents();
    EXPECT_TRUE(other.isActiveWindow());
    EXPECT_FALSE(overlay->model().highlight());
    EXPECT_FALSE(overlay->model().loupePoint());
}

TEST_F(OverlayTest, CtrlStillHeldFromTheHotkeyPicksNoElementUntilReleasedOnce) {
    int queries = 0;
    overlay->elementsAt = [&](Point) {
        ++queries;
        return QtRegionOverlay::ElementLookup{{{140, 140, 20, 20}, {100, 100, 300, 200}}, false, 100};
    };
    control(QEvent::KeyPress);
    mouse(QEvent::MouseMove, {150, 150}, Qt::NoButton, Qt::ControlModifier);
    EXPECT_FALSE(overlay->model().inElementMode());
    EXPECT_EQ(overlay->model().highlight(), (Rect{100, 100, 300, 200})) << "the window is hovered as usual";

    control(QEvent::KeyRelease);
    control(QEvent::KeyPress);
    ASSERT_TRUE(overlay->model().inElementMode());
    EXPECT_EQ(overlay->model().highlight(), (Rect{140, 140, 20, 20}));
    mouse(QEvent::MouseMove, {151, 151}, Qt::NoButton, Qt::ControlModifier);
    EXPECT_EQ(queries, 1) << "a move under 4 points asks again for nothing";

    mouse(QEvent::MouseButtonPress, {151, 151}, Qt::LeftButton, Qt::ControlModifier);
    ASSERT_TRUE(finished);
    EXPECT_EQ(finished->frame, (Rect{140, 440, 20, 20})) << "the element, in screen points";
}

TEST_F(OverlayTest, CCopiesWhatThePickedLevelSaysAndEnds) {
    std::vector<std::string> copied;
    overlay->onCopyText = [&](const std::string& text) { copied.push_back(text); };
    overlay->elementsAt = [](Point) {
        return QtRegionOverlay::ElementLookup{{{140, 140, 20, 20}, {100, 100, 300, 200}}, false, 100, [](std::size_t level) {
                                                  return level == 1 ? std::optional<std::string>("Preferences") : std::nullopt;
                                              }};
    };
    mouse(QEvent::MouseMove, {150, 150}, Qt::NoButton);
    control(QEvent::KeyPress);
    QKeyEvent c(QEvent::KeyPress, Qt::Key_C, Qt::ControlModifier, QStringLiteral("c"));
    QApplication::sendEvent(overlay.get(), &c);
    EXPECT_TRUE(copied.empty()) << "the deepest level says nothing: a beep, and the session goes on";
    EXPECT_FALSE(finished);

    QKeyEvent up(QEvent::KeyPress, Qt::Key_BracketRight, Qt::ControlModifier, QStringLiteral("]"));
    QApplication::sendEvent(overlay.get(), &up);
    QApplication::sendEvent(overlay.get(), &c);
    EXPECT_EQ(copied, std::vector<std::string>{"Preferences"});
    ASSERT_TRUE(finished);
    EXPECT_FALSE(finished->result.finishedValue()) << "cancelled: no image goes out";
}

TEST_F(OverlayTest, AProgramWithACoarseTreeIsWokenOnceAndReadAgainUntilItAnswersInDetail) {
    int queries = 0;
    std::vector<std::int64_t> woken;
    overlay->elementsAt = [&](Point) {
        ++queries;
        if (queries < 3) return QtRegionOverlay::ElementLookup{{{100, 100, 300, 200}}, true, 100};
        return QtRegionOverlay::ElementLookup{{{140, 140, 20, 20}, {100, 100, 300, 200}}, false, 100};
    };
    overlay->wakeProgram = [&](std::int64_t pid) { woken.push_back(pid); };
    mouse(QEvent::MouseMove, {150, 150}, Qt::NoButton);
    control(QEvent::KeyPress);
    ASSERT_TRUE(overlay->model().inElementMode());
    EXPECT_EQ(woken, std::vector<std::int64_t>{100});

    QElapsedTimer waited;
    waited.start();
    while (queries < 3 && waited.elapsed() < 3000) QApplication::processEvents(QEventLoop::AllEvents, 20);
    EXPECT_EQ(queries, 3) << "read again after 0.2 s, then 0.4 s";
    EXPECT_EQ(overlay->model().highlight(), (Rect{140, 140, 20, 20}));
    EXPECT_EQ(woken.size(), 1u);
}

TEST_F(OverlayTest, AClickedWindowComesFromItsOwnPixelsWithoutItsTransparentMargin) {
    overlay->captureWindow = [](std::uint32_t id) -> std::optional<ImageBuffer> {
        if (id != 7) return std::nullopt;
        MutableImage image(300, 200);
        image.fill({0, 0, 0, 0});
        for (int y = 10; y < 190; ++y)
            for (int x = 6; x < 294; ++x) image.setPixel(x, y, {200, 30, 30, 255});
        return std::move(image).freeze();
    };
    mouse(QEvent::MouseMove, {150, 150}, Qt::NoButton);
    mouse(QEvent::MouseButtonPress, {150, 150}, Qt::LeftButton);
    mouse(QEvent::MouseButtonRelease, {150, 150}, Qt::NoButton);
    ASSERT_TRUE(finished);
    EXPECT_EQ(finished->frame, (Rect{106, 310, 288, 180})) << "the trimmed window, in screen points";
    ASSERT_TRUE(finished->result.finishedValue());
    const Bytes& bytes = finished->result.finishedValue()->png;
    const QImage png = QImage::fromData(bytes.data(), static_cast<int>(bytes.size()));
    EXPECT_EQ(png.size(), QSize(288, 180));
    EXPECT_EQ(png.pixelColor(0, 0), QColor(200, 30, 30));
}

} // namespace
} // namespace tosvar

namespace tosvar {
namespace {

// Text capture reads off the main thread: the text reaches the clipboard and
// the session once; Escape while it reads keeps the clipboard as it was.
TEST(TextCaptureOverlay, TheTextReachesTheClipboardOnceAndNotAfterEscape) {
    testApplication<QApplication>();
    for (const bool escape : {false, true}) {
        const CapturedDisplay display = greyDisplay();
        std::vector<std::optional<std::string>> captured;
        RegionOverlayCallbacks callbacks;
        callbacks.onTextCaptured = [&](const std::optional<std::string>& text) { captured.push_back(text); };
        QtRegionOverlay overlay(display.screen, display.screen.frame, display, ScreenshotOverlayMode::captureText, callbacks, {});
        std::vector<std::function<void()>> detached;
        std::vector<std::string> copied;
        int reads = 0;
        overlay.runDetached = [&](std::function<void()> work) { detached.push_back(std::move(work)); };
        overlay.readText = [&](const ImageBuffer& image, double) -> std::optional<std::string> {
            ++reads;
            return std::to_string(image.width()) + " wide";
        };
        overlay.onCopyText = [&](const std::string& text) { copied.push_back(text); };
        overlay.show();
        QApplication::processEvents();

        for (QPointF at : {QPointF(10, 10), QPointF(110, 60)}) {
            QMouseEvent move(at == QPointF(10, 10) ? QEvent::MouseButtonPress : QEvent::MouseMove, at, overlay.mapToGlobal(at),
                             Qt::LeftButton, Qt::LeftButton, {});
            QApplication::sendEvent(&overlay, &move);
        }
        QMouseEvent release(QEvent::MouseButtonRelease, QPointF(110, 60), overlay.mapToGlobal(QPointF(110, 60)), Qt::LeftButton,
                            Qt::NoButton, {});
        QApplication::sendEvent(&overlay, &release);
        QKeyEvent enter(QEvent::KeyPress, Qt::Key_Return, {});
        QApplication::sendEvent(&overlay, &enter);
        ASSERT_EQ(detached.size(), 1u) << "one reading at a time";
        if (escape) {
            QKeyEvent escapeKey(QEvent::KeyPress, Qt::Key_Escape, {});
            QApplication::sendEvent(&overlay, &escapeKey);
        }
        detached.front()();
        QApplication::processEvents();
        EXPECT_EQ(reads, 1);
        if (escape) {
            EXPECT_TRUE(copied.empty()) << "the text came after Escape";
            EXPECT_EQ(captured, (std::vector<std::optional<std::string>>{std::nullopt}));
        } else {
            EXPECT_EQ(copied, (std::vector<std::string>{"100 wide"}));
            EXPECT_EQ(captured, (std::vector<std::optional<std::string>>{"100 wide"}));
        }
    }
}

} // namespace
} // namespace tosvar
