#include "StatusMenuView.h"

#include "TestApplication.h"

#include <QApplication>

#include <gtest/gtest.h>

using namespace tosvar;

namespace {

StatusMenuPresentation presentation() {
    return {[](const std::string& key, const std::vector<std::string>& arguments) {
                std::string text = "<" + key;
                for (const auto& a : arguments) text += " " + a;
                return text + ">";
            },
            [](const GlobalHotkeyBinding& binding) {
                return QKeySequence(binding.keyCode == 19 ? QStringLiteral("Ctrl+Shift+2") : QString());
            }};
}

QAction* actionTitled(QMenu& menu, const QString& title) {
    for (QAction* action : menu.actions())
        if (action->text() == title) return action;
    return nullptr;
}

} // namespace

TEST(StatusMenuView, BuildsTheMenuAndRoutesChoices) {
    testApplication<QApplication>();
    StatusMenuState state;
    state.hotkeyConflicts = {"recording"};
    state.recentCaptures = {"/c/one.png"};
    const auto rows = StatusMenuModel::build(state);

    QMenu menu;
    std::vector<std::pair<StatusMenuAction, std::filesystem::path>> chosen;
    StatusMenuView::fill(menu, rows, presentation(),
                         [&](StatusMenuAction action, const std::filesystem::path& file) { chosen.emplace_back(action, file); });

    QAction* screenshot = actionTitled(menu, "<menu.screenshot>");
    ASSERT_NE(screenshot, nullptr);
    EXPECT_EQ(screenshot->shortcut(), QKeySequence(QStringLiteral("Ctrl+Shift+2")));
    QAction* record = actionTitled(menu, "<tosvar.menu.conflicted <menu.record>>");
    ASSERT_NE(record, nullptr);
    EXPECT_TRUE(record->shortcut().isEmpty());
    EXPECT_EQ(actionTitled(menu, "<menu.quit>")->shortcut(), QKeySequence(QStringLiteral("Ctrl+Q")));
    EXPECT_EQ(actionTitled(menu, "<menu.hideStickers>")->shortcut(), QKeySequence(QStringLiteral("Meta+H")));
    EXPECT_FALSE(actionTitled(menu, "<menu.hideStickers>")->isEnabled());

    screenshot->trigger();
    QAction* recent = actionTitled(menu, "<tosvar.menu.recent>");
    ASSERT_NE(recent, nullptr);
    ASSERT_NE(recent->menu(), nullptr);
    actionTitled(*recent->menu(), "one.png")->trigger();
    ASSERT_EQ(chosen.size(), 2u);
    EXPECT_EQ(chosen[0].first, StatusMenuAction::captureScreenshot);
    EXPECT_EQ(chosen[1], (std::pair<StatusMenuAction, std::filesystem::path>{StatusMenuAction::openRecent, "/c/one.png"}));
}

TEST(StatusMenuView, IconsDifferByState) {
    testApplication<QApplication>();
    const QImage idle = StatusMenuView::statusItemIcon(false, false).pixmap(18).toImage();
    const QImage live = StatusMenuView::statusItemIcon(true, false).pixmap(18).toImage();
    const QImage paused = StatusMenuView::statusItemIcon(true, true).pixmap(18).toImage();
    EXPECT_EQ(idle.size(), QSize(18, 18));
    EXPECT_NE(idle, live);
    EXPECT_NE(live, paused);
    EXPECT_GT(qRed(live.pixel(9, 9)), 200); // the red dot
}
