#include "QtAudioRecordingHUD.h"
#include "TestApplication.h"

#include <QApplication>
#include <QLabel>
#include <QToolButton>

#include <gtest/gtest.h>

using namespace tosvar;

namespace {

QToolButton* buttonLabelled(QWidget* bar, const QString& text) {
    for (QToolButton* b : bar->findChildren<QToolButton*>())
        if (b->text() == text) return b;
    return nullptr;
}

} // namespace

TEST(AudioRecordingHUD, StandsCentredAboveTheBottomOfTheVisibleFrame) {
    EXPECT_EQ(QtAudioRecordingHUD::defaultFrame(QRect(0, 0, 1000, 800), QSize(236, 38)), QRect(382, 738, 236, 38));
}

TEST(AudioRecordingHUD, ShowsTimeAndPauseStateAndCallsBack) {
    testApplication<QApplication>();
    QtAudioRecordingHUD hud([](const std::string& key) { return key; });
    std::vector<std::string> calls;
    hud.show([&] { calls.push_back("pause"); }, [&] { calls.push_back("stop"); }, [&] { calls.push_back("discard"); });
    QWidget* bar = hud.window();
    ASSERT_NE(bar, nullptr);
    EXPECT_TRUE(bar->isVisible());
    EXPECT_EQ(bar->height(), 38);
    EXPECT_GE(bar->width(), 236);
    for (const QToolButton* button : bar->findChildren<QToolButton*>())
        EXPECT_GE(button->width(), button->sizeHint().width()) << "no word is cut off: " << button->text().toStdString();

    hud.setElapsed(65.4);
    EXPECT_EQ(bar->findChild<QLabel*>()->text(), "1:05");
    buttonLabelled(bar, "audio.hud.pause")->click();
    hud.setPaused(true);
    ASSERT_NE(buttonLabelled(bar, "audio.hud.resume"), nullptr);
    buttonLabelled(bar, "audio.hud.stop")->click();
    buttonLabelled(bar, "audio.hud.discard")->click();
    EXPECT_EQ(calls, (std::vector<std::string>{"pause", "stop", "discard"}));

    hud.report(0.5f); // paused: the meter holds; nothing to see but nothing breaks
    hud.close();
    EXPECT_EQ(hud.window(), nullptr);
    hud.setElapsed(3); // closed: ignored
}

TEST(AudioRecordingHUD, ComesBackWhereItWasLeft) {
    testApplication<QApplication>();
    QtAudioRecordingHUD hud([](const std::string& key) { return key; });
    hud.show({}, {}, {});
    hud.window()->move(123, 45);
    hud.storeFrameAndClose();
    hud.show({}, {}, {});
    EXPECT_EQ(hud.window()->pos(), QPoint(123, 45));
    hud.close();
}
