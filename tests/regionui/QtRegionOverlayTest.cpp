// The selection overlay on Qt's offscreen platform: where its hint panel
// shows, how it makes way for a selection, and Ctrl+/ hiding it.
#include "QtRegionOverlay.h"
#include "TestApplication.h"

#include <QApplication>
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

class OverlayHintTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { testApplication<QApplication>(); }

    void SetUp() override {
        const CapturedDisplay display = greyDisplay();
        overlay = std::make_unique<QtRegionOverlay>(display.screen, display.screen.frame, display, ScreenshotOverlayMode::annotate,
                                                    RegionOverlayCallbacks{}, std::vector<PickableWindow>{});
        overlay->hintHidden = [this] { return hidden; };
        overlay->onHintHiddenChanged = [this](bool value) { hidden = value; };
        overlay->show();
        overlay->activateWindow();
        QApplication::processEvents();
        ASSERT_TRUE(overlay->isActiveWindow());
    }

    void mouse(QEvent::Type type, QPointF at, Qt::MouseButtons buttons) {
        QMouseEvent event(type, at, overlay->mapToGlobal(at), type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton, buttons, {});
        QApplication::sendEvent(overlay.get(), &event);
    }
    // Whether the panel's dark plate covers the point: darker than the veil.
    bool panelAt(int x, int y) { return qGray(overlay->grab().toImage().pixel(x, y)) < 60; }

    std::unique_ptr<QtRegionOverlay> overlay;
    bool hidden = false;
};

TEST_F(OverlayHintTest, ThePanelStartsBottomLeftAndMakesWayForASelectionDraggedIntoIt) {
    EXPECT_TRUE(panelAt(40, height - 30));
    EXPECT_FALSE(panelAt(width - 40, height - 30));

    mouse(QEvent::MouseButtonPress, {10, 300}, Qt::LeftButton);
    mouse(QEvent::MouseMove, {200, 500}, Qt::LeftButton);
    mouse(QEvent::MouseMove, {300, 590}, Qt::LeftButton);
    EXPECT_FALSE(panelAt(40, height - 30));
    EXPECT_TRUE(panelAt(width - 40, height - 30));
}

TEST_F(OverlayHintTest, CtrlSlashHidesThePanelAndKeepsTheChoice) {
    QKeyEvent press(QEvent::KeyPress, Qt::Key_Slash, Qt::ControlModifier, QStringLiteral("/"));
    QApplication::sendEvent(overlay.get(), &press);
    EXPECT_TRUE(hidden);
    EXPECT_FALSE(panelAt(40, height - 30));
    QApplication::sendEvent(overlay.get(), &press);
    EXPECT_FALSE(hidden);
    EXPECT_TRUE(panelAt(40, height - 30));
}

} // namespace
} // namespace tosvar
