#include "CardDragImage.h"
#include "QtAlertPresenter.h"
#include "ScreenshotToast.h"
#include "TestApplication.h"

#include <QApplication>
#include <QCheckBox>
#include <QElapsedTimer>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

#include <gtest/gtest.h>

using namespace tosvar;

namespace {

// Answers the next message box: ticks its check box if asked, then presses button `index`.
void answerNextBox(int index, bool tick, QString* seenText = nullptr) {
    QTimer::singleShot(0, [=] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        ASSERT_NE(box, nullptr);
        if (seenText) *seenText = box->text();
        if (tick && box->checkBox()) box->checkBox()->setChecked(true);
        box->buttons().size() > index ? box->buttons()[index]->click() : box->reject();
    });
}

std::string echoKey(const LocalizedText& text) {
    std::string out = text.key;
    for (const auto& argument : text.arguments) out += " " + argument;
    return out;
}

} // namespace

TEST(ScreenshotToast, StandsCentredAboveTheBottomOfTheVisibleFrame) {
    EXPECT_EQ(ScreenshotToast::frame(QRect(0, 0, 1000, 800), QSize(200, 40)), QRect(400, 640, 200, 40));
    EXPECT_EQ(ScreenshotToast::frame(QRect(1920, 30, 1280, 990), QSize(100, 30)), QRect(2510, 870, 100, 30));
}

TEST(ScreenshotToast, ShowsAndGoesAway) {
    testApplication<QApplication>();
    ScreenshotToast::show(QStringLiteral("Copied"), 0.05);
    auto toastWindows = [] {
        int count = 0;
        for (QWidget* w : QApplication::topLevelWidgets()) count += w->isVisible() && (w->windowFlags() & Qt::ToolTip) == Qt::ToolTip;
        return count;
    };
    EXPECT_EQ(toastWindows(), 1);
    ScreenshotToast::show(QStringLiteral("Saved"), 0.05); // replaces the first
    QApplication::processEvents();
    EXPECT_EQ(toastWindows(), 1);
    QElapsedTimer clock;
    clock.start();
    while (toastWindows() > 0 && clock.elapsed() < 3000) QApplication::processEvents(QEventLoop::AllEvents, 20);
    EXPECT_EQ(toastWindows(), 0);
}

TEST(QtAlertPresenter, ReportsTheButtonAndTheSuppressionBoxEvenOnCancel) {
    testApplication<QApplication>();
    QtAlertPresenter presenter(echoKey);
    AlertRequest request;
    request.message = {"delete.confirm.title.one", {"shot.png"}};
    request.informativeText = {"delete.confirm.body", {}};
    request.buttons = {{"delete.confirm.trash", {}}, {"common.cancel", {}}};
    request.suppressionCheckbox = LocalizedText{"delete.confirm.dontAsk", {}};

    QString seen;
    answerNextBox(1, true, &seen);
    AlertResponse response = presenter.run(request, nullptr);
    EXPECT_EQ(seen, "delete.confirm.title.one shot.png");
    EXPECT_EQ(response.buttonIndex, 1);
    EXPECT_TRUE(response.suppressionChecked);

    answerNextBox(0, false);
    response = presenter.run(request, nullptr);
    EXPECT_EQ(response.buttonIndex, 0);
    EXPECT_FALSE(response.suppressionChecked);
}

TEST(CardDragImage, FillsCentredAndRoundsTheCorners) {
    testApplication<QApplication>();
    QImage wide(200, 100, QImage::Format_ARGB32_Premultiplied);
    wide.fill(Qt::blue);
    for (int y = 0; y < 100; ++y)
        for (int x = 0; x < 50; ++x) wide.setPixelColor(x, y, Qt::red); // the left quarter, cropped away by the fill
    const QImage card = cardDragImage(wide, QSize(100, 100), 12);
    ASSERT_EQ(card.size(), QSize(100, 100));
    EXPECT_EQ(card.pixelColor(0, 0).alpha(), 0);           // outside the rounded corner
    EXPECT_EQ(card.pixelColor(50, 50), QColor(Qt::blue));  // centre
    EXPECT_EQ(card.pixelColor(2, 50), QColor(Qt::blue));   // the red quarter lies outside
    EXPECT_EQ(card.pixelColor(50, 1).alpha(), 255);         // the top edge is filled, no letterbox

    const QImage stack = stackedDragImage(card, 3);
    EXPECT_EQ(stack.size(), QSize(112, 112));
    EXPECT_EQ(stack.pixelColor(50, 50), QColor(Qt::blue));
    EXPECT_EQ(stack.pixelColor(111, 111).alpha(), 0);        // the last copy's rounded corner
    EXPECT_EQ(stack.pixelColor(108, 60), QColor(Qt::blue));   // only the last copy reaches here
}
