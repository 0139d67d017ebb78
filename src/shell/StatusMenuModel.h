#pragma once

#include "AppSettings.h"
#include "GlobalHotkeyBinding.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace tosvar {

enum class StatusMenuAction {
    none,
    captureScreenshot,
    captureFullScreen,
    delayedScreenshot,
    scrollCapture,
    captureText,
    translateRegion,
    toggleRecording,
    recordFullScreen,
    toggleAudioRecording,
    togglePresentation,
    pinFromClipboard,
    toggleAllStickers,
    openLibrary,
    openRecent,
    revealCaptureFolder,
    showOnboarding,
    openSettings,
    quit,
};

// A fixed key equivalent of a menu row: a key and AppKit-style modifier flags
// (Command 0x100000 is the Ctrl key here, Control 0x40000 the Super key).
struct MenuKeyEquivalent {
    std::string key;
    std::uint32_t modifierFlags = 0;
    friend bool operator==(const MenuKeyEquivalent&, const MenuKeyEquivalent&) = default;
};

struct StatusMenuRow {
    enum class Kind { item, separator, submenu };
    Kind kind = Kind::item;
    std::string titleKey;
    std::vector<std::string> titleArguments;
    std::string literalTitle; // shown as it stands when there is no key (file names)
    // The hotkey the row stands for ("screenshot", "recording", ...), if any.
    std::optional<std::string> hotkeyAction;
    // Shown as "tosvar.menu.conflicted" around the plain title, with no key equivalent.
    bool conflicted = false;
    std::optional<GlobalHotkeyBinding> hotkey; // key equivalent from a binding
    std::optional<MenuKeyEquivalent> keyEquivalent;
    StatusMenuAction action = StatusMenuAction::none;
    bool enabled = true;
    bool checked = false;
    std::filesystem::path representedFile; // for recent captures
    std::vector<StatusMenuRow> submenu;
};

// What the menu shows, gathered by the shell each time it rebuilds.
struct StatusMenuState {
    AppSettings settings;
    std::set<std::string> hotkeyConflicts; // raw values of the refused hotkey actions
    bool translationAvailable = false;
    bool isRecording = false;
    bool isRecordingAudio = false;
    bool isPresenting = false;
    bool hasStickers = false;
    bool stickersHidden = false;
    std::vector<std::filesystem::path> recentCaptures; // newest first, missing files already pruned
    bool siblingIsRunning = false;
    std::string siblingDisplayName;
};

namespace StatusMenuModel {

inline constexpr std::size_t maxRecentRows = 10;

// The whole menu, built anew from state: rows, separators and the recents submenu.
std::vector<StatusMenuRow> build(const StatusMenuState& state);

} // namespace StatusMenuModel

} // namespace tosvar
