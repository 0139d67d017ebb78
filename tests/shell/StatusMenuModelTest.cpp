#include "StatusMenuModel.h"

#include <gtest/gtest.h>

using namespace tosvar;

namespace {

std::vector<std::string> titles(const std::vector<StatusMenuRow>& rows) {
    std::vector<std::string> out;
    for (const auto& row : rows)
        out.push_back(row.kind == StatusMenuRow::Kind::separator ? "---" : row.titleKey.empty() ? row.literalTitle : row.titleKey);
    return out;
}

const StatusMenuRow& row(const std::vector<StatusMenuRow>& rows, const std::string& key) {
    for (const auto& r : rows)
        if (r.titleKey == key) return r;
    throw std::runtime_error("no row " + key);
}

} // namespace

TEST(StatusMenuModel, FreshInstallMenuInOrder) {
    StatusMenuState state;
    const auto menu = StatusMenuModel::build(state);
    EXPECT_EQ(titles(menu), (std::vector<std::string>{
                                "menu.screenshot", "menu.screenshotFull", "menu.screenshotDelayed", "menu.scrollCapture",
                                "menu.captureText", "---", "menu.record", "menu.recordFull", "menu.recordAudio",
                                "menu.present", "---", "menu.pinClipboard", "menu.hideStickers", "---", "library.title",
                                "---", "onboarding.menu", "menu.settings", "menu.quit"}));
    EXPECT_EQ(row(menu, "menu.screenshot").hotkey, GlobalHotkeyBinding::defaultScreenshot());
    EXPECT_FALSE(row(menu, "menu.captureText").hotkey.has_value());
    EXPECT_EQ(row(menu, "menu.screenshotDelayed").titleArguments, (std::vector<std::string>{"5"}));
    EXPECT_EQ(row(menu, "menu.quit").keyEquivalent, (MenuKeyEquivalent{"q", 0x100000}));
    EXPECT_EQ(row(menu, "menu.hideStickers").keyEquivalent, (MenuKeyEquivalent{"h", 0x40000}));
    EXPECT_FALSE(row(menu, "menu.hideStickers").enabled);
}

TEST(StatusMenuModel, StateChangesTitlesAndRows) {
    StatusMenuState state;
    state.translationAvailable = true;
    state.isRecording = true;
    state.isRecordingAudio = true;
    state.isPresenting = true;
    state.siblingIsRunning = true;
    state.siblingDisplayName = "Vemla";
    const auto menu = StatusMenuModel::build(state);
    EXPECT_EQ(row(menu, "menu.translateRegion").hotkey, GlobalHotkeyBinding::defaultTranslateRegion());
    EXPECT_NO_THROW(row(menu, "menu.recordStop"));
    EXPECT_NO_THROW(row(menu, "menu.recordAudioStop"));
    EXPECT_TRUE(row(menu, "menu.presentStop").checked);
    const StatusMenuRow& sibling = row(menu, "tosvar.menu.siblingRunning");
    EXPECT_FALSE(sibling.enabled);
    EXPECT_EQ(sibling.titleArguments, (std::vector<std::string>{"Vemla"}));
}

TEST(StatusMenuModel, ConflictedHotkeyRowsLoseTheirKeyEquivalent) {
    StatusMenuState state;
    state.hotkeyConflicts = {"screenshot"};
    const auto menu = StatusMenuModel::build(state);
    EXPECT_TRUE(row(menu, "menu.screenshot").conflicted);
    EXPECT_FALSE(row(menu, "menu.screenshot").hotkey.has_value());
    EXPECT_FALSE(row(menu, "menu.record").conflicted);
    EXPECT_TRUE(row(menu, "menu.record").hotkey.has_value());
}

TEST(StatusMenuModel, RecentsSubmenuIsAbsentWhenEmptyAndHoldsTheTenNewest) {
    StatusMenuState state;
    EXPECT_THROW(row(StatusMenuModel::build(state), "tosvar.menu.recent"), std::runtime_error);
    for (int i = 0; i < 12; ++i) state.recentCaptures.push_back("/c/shot" + std::to_string(i) + ".png");
    const auto menu = StatusMenuModel::build(state);
    const StatusMenuRow& recent = row(menu, "tosvar.menu.recent");
    ASSERT_EQ(recent.submenu.size(), 12u); // ten files, a separator, the reveal row
    EXPECT_EQ(recent.submenu[0].literalTitle, "shot0.png");
    EXPECT_EQ(recent.submenu[0].representedFile, "/c/shot0.png");
    EXPECT_EQ(recent.submenu[9].literalTitle, "shot9.png");
    EXPECT_EQ(recent.submenu[10].kind, StatusMenuRow::Kind::separator);
    EXPECT_EQ(recent.submenu[11].titleKey, "tosvar.menu.revealFolder");
}
