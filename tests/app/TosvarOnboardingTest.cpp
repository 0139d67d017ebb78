#include "TosvarOnboarding.h"

#include "InMemoryDefaultsStore.h"
#include "IsolatedEnvironment.h"
#include "LocalFileManager.h"
#include "TestApplication.h"

#include <QApplication>
#include <QLabel>
#include <QPushButton>

#include <gtest/gtest.h>

using namespace tosvar;

namespace {

struct SwitchableProbe final : PermissionProbe {
    std::set<VemlaSystemPermission> granted{VemlaSystemPermission::screenRecording};
    bool isGranted(VemlaSystemPermission permission) const override { return granted.contains(permission); }
    bool requestAccess(VemlaSystemPermission permission) override {
        granted.insert(permission);
        return true;
    }
};

struct NoPages final : SettingsPageOpener {
    bool start(const std::string&, const std::vector<std::string>&) override { return true; }
};

struct SilentAlerts final : AlertPresenting {
    AlertResponse run(const AlertRequest&, void*) override { return {0, false}; }
};

struct Onboarding : ::testing::Test {
    Onboarding() { testApplication<QApplication>(); }

    IsolatedEnvironment environment;
    InMemoryDefaultsStore defaults;
    LocalFileManager files;
    SwitchableProbe probe;
    NoPages pages;
    SilentAlerts alerts;
    SystemPermissions permissions{BuildTarget{}, {probe, pages, alerts}, "GNOME"};
    int settingsOpened = 0;
    TosvarOnboarding onboarding{{permissions, defaults, files, [] {
                                     AppSettings settings;
                                     settings.recordingHotkey.reset();
                                     return settings;
                                 }}};

    void show() { onboarding.show([this] { ++settingsOpened; }); }
    QPushButton* button(const char* name) const { return onboarding.window()->findChild<QPushButton*>(name); }
    bool shows(const QString& text) const {
        for (const QLabel* label : onboarding.window()->findChildren<QLabel*>())
            if (label->isVisibleTo(onboarding.window()) && label->text().contains(text)) return true;
        return false;
    }
};

} // namespace

TEST_F(Onboarding, ClosingTheWindowLeavesItForTheNextLaunch) {
    show();
    ASSERT_TRUE(onboarding.window()->isVisible());
    EXPECT_EQ(onboarding.window()->size(), QSize(TosvarOnboarding::width, TosvarOnboarding::height));
    onboarding.window()->close();
    EXPECT_FALSE(TosvarOnboarding::isCompleted(defaults));

    QWidget* first = onboarding.window();
    show();
    EXPECT_EQ(onboarding.window(), first) << "the same window comes back";
    button("done")->click();
    EXPECT_TRUE(TosvarOnboarding::isCompleted(defaults));
    EXPECT_FALSE(onboarding.window()->isVisible());
    EXPECT_EQ(settingsOpened, 0);
}

TEST_F(Onboarding, TheShortcutsLinkLeavesAndOpensTheSettings) {
    show();
    button("openShortcuts")->click();
    EXPECT_TRUE(TosvarOnboarding::isCompleted(defaults));
    EXPECT_EQ(settingsOpened, 1);
}

TEST_F(Onboarding, ShowsEachPermissionAndTheShortcutsAsSet) {
    show();
    EXPECT_TRUE(shows(QStringLiteral("Ctrl+Shift+2"))) << "the screenshot binding, named as the menu names it";
    EXPECT_TRUE(shows(QStringLiteral("No shortcut"))) << "recording has none here";
    // Accessibility is missing; granting it turns its button into the granted mark.
    QPushButton* grant = button("accessibility");
    ASSERT_NE(grant, nullptr);
    EXPECT_EQ(button("screenRecording"), nullptr);
    grant->click();
    QApplication::processEvents();
    EXPECT_EQ(button("accessibility"), nullptr);
}
