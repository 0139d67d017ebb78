#pragma once

#include <array>
#include <string>
#include <string_view>

namespace tosvar {

enum class BuildProduct { vemla = 0, tosvar = 1, sedlo = 2 };
enum class BuildChannel { direct, appStore };

// Which product and channel this build is, and the feature switches that
// follow from them. One source tree builds three products; this one is
// "tosvar" on the "direct" channel.
struct BuildTarget {
    BuildProduct product = BuildProduct::tosvar;
    BuildChannel channel = BuildChannel::direct;

    // Read once from the application identifier the build was given.
    static const BuildTarget& current();
    // "app.vemla.tosvar": also the program's well-known name on the session bus.
    static const char* applicationIdentifier();
    // Identifiers of the products that share the "app.vemla" prefix without being it.
    static constexpr std::array<const char*, 2> nonVemlaBundleIDPrefixes() { return {"app.vemla.tosvar", "app.vemla.sedlo"}; }
    // "app.vemla.tosvar…" gives tosvar, "app.vemla.sedlo…" sedlo, anything else vemla.
    static BuildTarget fromIdentifier(std::string_view applicationIdentifier, BuildChannel channel);

    std::string name() const; // "tosvar-direct"
    std::string displayName() const;
    std::string captureFolderName() const { return displayName(); }

    bool recentCapturesShelfEnabled() const { return product == BuildProduct::tosvar; }
    bool historySyncEnabled() const { return product == BuildProduct::vemla; }
    bool clipboardHistoryEnabled() const { return product == BuildProduct::vemla; }
    bool accentColorSettingEnabled() const { return product == BuildProduct::vemla; }
    bool translationCloudProvidersEnabled() const { return product == BuildProduct::vemla; }
    bool textExpansionEnabled() const { return product == BuildProduct::vemla && isDirect(); }
    bool postEventPasteEnabled() const { return product == BuildProduct::vemla && isDirect(); }
    bool stickerBoardRestoreEnabled() const { return product == BuildProduct::sedlo; }
    bool systemPermissionsListed() const { return product != BuildProduct::sedlo; }
    bool needsSecurityScopedFileAccess() const { return channel == BuildChannel::appStore; }
    bool launchesAtLoginByDefault() const { return isDirect() && product != BuildProduct::sedlo; }
    bool websiteLinkEnabled() const { return isDirect(); }
    bool autoScrollCaptureEnabled() const { return isDirect(); }
    bool globalKeyboardMonitoringEnabled() const { return isDirect(); }
    bool axElementDetectionEnabled() const { return isDirect(); }
    bool recordingKeyPillEnabled() const { return isDirect(); }
    bool fullDiskAccessRelevant() const { return isDirect(); }
    bool accessibilityPermissionOffered() const { return isDirect(); }
    bool sparkleUpdatesEnabled() const { return isDirect(); }

    friend bool operator==(const BuildTarget&, const BuildTarget&) = default;

private:
    bool isDirect() const { return channel == BuildChannel::direct; }
};

} // namespace tosvar
