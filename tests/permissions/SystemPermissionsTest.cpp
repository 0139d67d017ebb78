#include "LocalizationManager.h"
#include "ScreenRecordingPermission.h"
#include "SystemPermissions.h"

#include <gtest/gtest.h>

#include <map>

using namespace tosvar;

namespace {

class FakeProbe final : public PermissionProbe {
public:
    std::map<VemlaSystemPermission, bool> granted;
    std::map<VemlaSystemPermission, bool> grantedOnRequest;
    std::vector<VemlaSystemPermission> requests;

    bool isGranted(VemlaSystemPermission permission) const override
    {
        const auto found = granted.find(permission);
        return found != granted.end() && found->second;
    }
    bool requestAccess(VemlaSystemPermission permission) override
    {
        requests.push_back(permission);
        if (grantedOnRequest[permission])
            granted[permission] = true;
        return isGranted(permission);
    }
};

class FakeOpener final : public SettingsPageOpener {
public:
    bool installed = true;
    std::vector<DesktopSettingsPage> started;
    bool start(const std::string& program, const std::vector<std::string>& arguments) override
    {
        if (!installed)
            return false;
        started.push_back({program, arguments});
        return true;
    }
};

class FakeAlerts final : public AlertPresenting {
public:
    int answer = 0;
    std::vector<AlertRequest> shown;
    AlertResponse run(const AlertRequest& request, void*) override
    {
        shown.push_back(request);
        return {answer, false};
    }
};

struct PermissionsFixture : ::testing::Test {
    FakeProbe probe;
    FakeOpener opener;
    FakeAlerts alerts;

    SystemPermissions make(BuildTarget target = {}, std::string desktop = "GNOME", std::set<VemlaSystemPermission> denied = {})
    {
        return SystemPermissions(target, {probe, opener, alerts}, std::move(desktop), std::move(denied));
    }
};

using P = VemlaSystemPermission;

} // namespace

TEST_F(PermissionsFixture, ListedRowsFollowTheBuildInTheirFixedOrder)
{
    EXPECT_EQ(make().visible(), (std::vector<P>{P::accessibility, P::screenRecording, P::microphone, P::camera, P::fullDiskAccess}));
    EXPECT_EQ(make({BuildProduct::tosvar, BuildChannel::appStore}).visible(),
              (std::vector<P>{P::screenRecording, P::microphone, P::camera}));
    EXPECT_TRUE(make({BuildProduct::sedlo, BuildChannel::direct}).visible().empty());
    EXPECT_TRUE(make({BuildProduct::sedlo, BuildChannel::direct}).snapshot().empty());
}

TEST_F(PermissionsFixture, SnapshotReadsTheSystemAndHonoursForcedDenials)
{
    probe.granted = {{P::accessibility, true}, {P::screenRecording, true}, {P::microphone, true}, {P::camera, false},
                     {P::fullDiskAccess, true}};
    const auto denied = SystemPermissions::forcedDenials("microphone,bogus,,fullDiskAccess");
    EXPECT_EQ(denied, (std::set<P>{P::microphone, P::fullDiskAccess}));
    SystemPermissions permissions = make({}, "GNOME", denied);
    EXPECT_EQ(permissions.snapshot(), (std::vector<SystemPermissions::Row>{{P::accessibility, true},
                                                                          {P::screenRecording, true},
                                                                          {P::microphone, false},
                                                                          {P::camera, false},
                                                                          {P::fullDiskAccess, false}}));
    EXPECT_FALSE(permissions.hasFullDiskAccess());
    EXPECT_TRUE(SystemPermissions::forcedDenials(nullptr).empty());
    EXPECT_TRUE(SystemPermissions::forcedDenials("").empty());
}

TEST_F(PermissionsFixture, SettingsPagesDependOnTheDesktop)
{
    EXPECT_EQ(desktopSettingsPage(P::accessibility, "ubuntu:GNOME"),
              (DesktopSettingsPage{"gnome-control-center", {"universal-access"}}));
    EXPECT_EQ(desktopSettingsPage(P::microphone, "KDE"), (DesktopSettingsPage{"systemsettings", {"kcm_pulseaudio"}}));
    // The first desktop of the list that we know decides.
    EXPECT_EQ(desktopSettingsPage(P::camera, "X-Cinnamon:kde:GNOME"), std::nullopt);
    EXPECT_EQ(desktopSettingsPage(P::accessibility, "XFCE"), (DesktopSettingsPage{"xfce4-accessibility-settings", {}}));
    EXPECT_EQ(desktopSettingsPage(P::accessibility, ""), std::nullopt);
    EXPECT_EQ(desktopSettingsPage(P::fullDiskAccess, "GNOME"), std::nullopt);
}

TEST_F(PermissionsFixture, OpeningSettingsStartsThePageOrExplainsWhyItCannot)
{
    SystemPermissions gnome = make({}, "GNOME");
    gnome.openSettings(P::camera);
    ASSERT_EQ(opener.started.size(), 1u);
    EXPECT_EQ(opener.started[0].arguments, std::vector<std::string>{"camera"});
    EXPECT_TRUE(alerts.shown.empty());

    opener.installed = false; // the desktop's settings program is missing
    gnome.openSettings(P::camera);
    make({}, "i3").openSettings(P::accessibility);
    ASSERT_EQ(alerts.shown.size(), 2u);
    EXPECT_EQ(alerts.shown[0].informativeText.key, "perm.camera.help");
    EXPECT_EQ(alerts.shown[1].message.key, "perm.accessibility.title");
    EXPECT_EQ(alerts.shown[1].informativeText.key, "perm.accessibility.help");
}

TEST_F(PermissionsFixture, RequestingOpensSettingsOnlyWhileStillMissing)
{
    probe.grantedOnRequest[P::accessibility] = true;
    SystemPermissions permissions = make();
    permissions.requestAccessAndOpenSettings(P::accessibility);
    EXPECT_TRUE(permissions.isGranted(P::accessibility));
    EXPECT_TRUE(opener.started.empty());

    permissions.requestAccessAndOpenSettings(P::microphone);
    EXPECT_EQ(probe.requests, (std::vector<P>{P::accessibility, P::microphone}));
    ASSERT_EQ(opener.started.size(), 1u);
    EXPECT_EQ(opener.started[0].arguments, std::vector<std::string>{"microphone"});

    // A forced denial stays denied even when the system grants on request.
    probe.grantedOnRequest[P::camera] = true;
    SystemPermissions denied = make({}, "GNOME", {P::camera});
    denied.requestAccessAndOpenSettings(P::camera);
    EXPECT_FALSE(denied.isGranted(P::camera));
    EXPECT_EQ(opener.started.size(), 2u);
}

TEST_F(PermissionsFixture, ScreenRecordingGuidanceOpensSettingsFromItsFirstButton)
{
    SystemPermissions permissions = make();
    ScreenRecordingPermission screen(permissions, alerts);
    EXPECT_FALSE(screen.isGranted());
    probe.granted[P::screenRecording] = true;
    EXPECT_TRUE(screen.isGranted());

    alerts.answer = 1; // Cancel
    screen.presentGuidance();
    EXPECT_TRUE(opener.started.empty());
    alerts.answer = 0;
    screen.presentGuidance();
    ASSERT_EQ(opener.started.size(), 1u);
    EXPECT_EQ(opener.started[0].arguments, std::vector<std::string>{"sharing"});
    EXPECT_EQ(alerts.shown[0].buttons[0].key, "screenshot.permission.openSettings");
}

TEST(PermissionTexts, EveryKeyOfEveryPermissionHasEnglishText)
{
    LocalizationManager manager(LocalizationManager::builtInTable);
    std::vector<std::string> keys{"common.ok", "screenshot.permission.title", "screenshot.permission.body",
                                  "screenshot.permission.openSettings", "annotation.cancel"};
    for (P permission : allSystemPermissions) {
        for (const std::string& key : {permissionTitleKey(permission), permissionUsageDescriptionKey(permission),
                                       permissionSettingsPaneNameKey(permission), permissionSettingsHelpKey(permission)})
            keys.push_back(key);
        for (const std::string& key : permissionFeatureList(permission))
            keys.push_back(key);
        P readBack;
        ASSERT_TRUE(permissionFromName(permissionName(permission), readBack));
        EXPECT_EQ(readBack, permission);
    }
    for (const std::string& key : keys) {
        const std::string text = manager.string(key);
        EXPECT_NE(text, key) << key;
        EXPECT_EQ(text.find("{appName}"), std::string::npos) << key;
    }
}
