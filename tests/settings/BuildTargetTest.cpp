#include "BuildTarget.h"

#include <gtest/gtest.h>

using namespace tosvar;

TEST(BuildTarget, ThisBuildIsTosvarDirect) {
    const BuildTarget& target = BuildTarget::current();
    EXPECT_EQ(target.product, BuildProduct::tosvar);
    EXPECT_EQ(target.channel, BuildChannel::direct);
    EXPECT_EQ(target.name(), "tosvar-direct");
    EXPECT_EQ(target.displayName(), "Tosvar");
    EXPECT_EQ(target.captureFolderName(), "Tosvar");
}

TEST(BuildTarget, ProductFromIdentifierPrefix) {
    EXPECT_EQ(BuildTarget::fromIdentifier("app.vemla.tosvar", BuildChannel::direct).product, BuildProduct::tosvar);
    EXPECT_EQ(BuildTarget::fromIdentifier("app.vemla.tosvar.beta", BuildChannel::direct).product,
              BuildProduct::tosvar);
    EXPECT_EQ(BuildTarget::fromIdentifier("app.vemla.sedlo", BuildChannel::direct).product, BuildProduct::sedlo);
    EXPECT_EQ(BuildTarget::fromIdentifier("app.vemla", BuildChannel::direct).product, BuildProduct::vemla);
    EXPECT_EQ(BuildTarget::fromIdentifier("", BuildChannel::appStore).name(), "vemla-appStore");
}

// One row per product and channel: every switch's expected value.
struct SwitchRow {
    BuildProduct product;
    BuildChannel channel;
    bool shelf, vemlaOnly, vemlaDirect, sedloOnly, notSedlo, appStore, loginByDefault, direct;
};

TEST(BuildTarget, SwitchesForEveryProductAndChannel) {
    using P = BuildProduct;
    using C = BuildChannel;
    const SwitchRow rows[] = {
        {P::tosvar, C::direct, true, false, false, false, true, false, true, true},
        {P::tosvar, C::appStore, true, false, false, false, true, true, false, false},
        {P::vemla, C::direct, false, true, true, false, true, false, true, true},
        {P::vemla, C::appStore, false, true, false, false, true, true, false, false},
        {P::sedlo, C::direct, false, false, false, true, false, false, false, true},
        {P::sedlo, C::appStore, false, false, false, true, false, true, false, false},
    };
    for (const SwitchRow& row : rows) {
        const BuildTarget t{row.product, row.channel};
        SCOPED_TRACE(t.name());
        EXPECT_EQ(t.recentCapturesShelfEnabled(), row.shelf);
        for (bool value : {t.historySyncEnabled(), t.clipboardHistoryEnabled(), t.accentColorSettingEnabled(),
                           t.translationCloudProvidersEnabled()})
            EXPECT_EQ(value, row.vemlaOnly);
        EXPECT_EQ(t.textExpansionEnabled(), row.vemlaDirect);
        EXPECT_EQ(t.postEventPasteEnabled(), row.vemlaDirect);
        EXPECT_EQ(t.stickerBoardRestoreEnabled(), row.sedloOnly);
        EXPECT_EQ(t.systemPermissionsListed(), row.notSedlo);
        EXPECT_EQ(t.needsSecurityScopedFileAccess(), row.appStore);
        EXPECT_EQ(t.launchesAtLoginByDefault(), row.loginByDefault);
        for (bool value : {t.websiteLinkEnabled(), t.autoScrollCaptureEnabled(), t.globalKeyboardMonitoringEnabled(),
                           t.axElementDetectionEnabled(), t.recordingKeyPillEnabled(), t.fullDiskAccessRelevant(),
                           t.accessibilityPermissionOffered(), t.sparkleUpdatesEnabled()})
            EXPECT_EQ(value, row.direct);
    }
}
