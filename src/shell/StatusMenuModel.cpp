#include "StatusMenuModel.h"

namespace tosvar::StatusMenuModel {

namespace {

constexpr std::uint32_t commandFlag = 0x100000;
constexpr std::uint32_t controlFlag = 0x40000;

StatusMenuRow separator() {
    StatusMenuRow row;
    row.kind = StatusMenuRow::Kind::separator;
    return row;
}

StatusMenuRow item(std::string key, StatusMenuAction action) {
    StatusMenuRow row;
    row.titleKey = std::move(key);
    row.action = action;
    return row;
}

// A row that stands for a hotkey: conflicted rows lose their key equivalent.
StatusMenuRow hotkeyItem(std::string key, StatusMenuAction action, const char* hotkeyAction,
                         const std::optional<GlobalHotkeyBinding>& binding, const StatusMenuState& state) {
    StatusMenuRow row = item(std::move(key), action);
    row.hotkeyAction = hotkeyAction;
    row.conflicted = state.hotkeyConflicts.contains(hotkeyAction);
    if (!row.conflicted) row.hotkey = binding;
    return row;
}

StatusMenuRow withKey(StatusMenuRow row, std::string key, std::uint32_t flags) {
    row.keyEquivalent = MenuKeyEquivalent{std::move(key), flags};
    return row;
}

} // namespace

std::vector<StatusMenuRow> build(const StatusMenuState& state) {
    const AppSettings& s = state.settings;
    std::vector<StatusMenuRow> menu;

    menu.push_back(hotkeyItem("menu.screenshot", StatusMenuAction::captureScreenshot, "screenshot", s.screenshotHotkey, state));
    menu.push_back(item("menu.screenshotFull", StatusMenuAction::captureFullScreen));
    StatusMenuRow delayed = hotkeyItem("menu.screenshotDelayed", StatusMenuAction::delayedScreenshot, "delayedScreenshot",
                                       s.delayedScreenshotHotkey, state);
    delayed.titleArguments = {std::to_string(s.screenshotDelaySeconds)};
    menu.push_back(std::move(delayed));
    menu.push_back(item("menu.scrollCapture", StatusMenuAction::scrollCapture));
    menu.push_back(hotkeyItem("menu.captureText", StatusMenuAction::captureText, "captureText", s.captureTextHotkey, state));
    if (state.translationAvailable)
        menu.push_back(hotkeyItem("menu.translateRegion", StatusMenuAction::translateRegion, "translateRegion",
                                  s.translateRegionHotkey, state));
    menu.push_back(separator());

    menu.push_back(hotkeyItem(state.isRecording ? "menu.recordStop" : "menu.record", StatusMenuAction::toggleRecording,
                              "recording", s.recordingHotkey, state));
    menu.push_back(item("menu.recordFull", StatusMenuAction::recordFullScreen));
    menu.push_back(hotkeyItem(state.isRecordingAudio ? "menu.recordAudioStop" : "menu.recordAudio",
                              StatusMenuAction::toggleAudioRecording, "audioRecording", s.audioRecordingHotkey, state));
    StatusMenuRow present = hotkeyItem(state.isPresenting ? "menu.presentStop" : "menu.present",
                                       StatusMenuAction::togglePresentation, "presentation", s.presentationHotkey, state);
    present.checked = state.isPresenting;
    menu.push_back(std::move(present));
    menu.push_back(separator());

    menu.push_back(item("menu.pinClipboard", StatusMenuAction::pinFromClipboard));
    StatusMenuRow stickers = withKey(item("menu.hideStickers", StatusMenuAction::toggleAllStickers), "h", controlFlag);
    stickers.enabled = state.hasStickers;
    stickers.checked = state.stickersHidden;
    menu.push_back(std::move(stickers));
    menu.push_back(separator());

    menu.push_back(withKey(item("library.title", StatusMenuAction::openLibrary), "l", commandFlag));
    if (!state.recentCaptures.empty()) {
        StatusMenuRow recent = item("tosvar.menu.recent", StatusMenuAction::none);
        recent.kind = StatusMenuRow::Kind::submenu;
        for (std::size_t i = 0; i < state.recentCaptures.size() && i < maxRecentRows; ++i) {
            StatusMenuRow entry = item("", StatusMenuAction::openRecent);
            entry.literalTitle = state.recentCaptures[i].filename().string();
            entry.representedFile = state.recentCaptures[i];
            recent.submenu.push_back(std::move(entry));
        }
        recent.submenu.push_back(separator());
        recent.submenu.push_back(item("tosvar.menu.revealFolder", StatusMenuAction::revealCaptureFolder));
        menu.push_back(std::move(recent));
    }
    menu.push_back(separator());

    if (state.siblingIsRunning) {
        StatusMenuRow sibling = item("tosvar.menu.siblingRunning", StatusMenuAction::none);
        sibling.titleArguments = {state.siblingDisplayName};
        sibling.enabled = false;
        menu.push_back(std::move(sibling));
    }
    menu.push_back(item("onboarding.menu", StatusMenuAction::showOnboarding));
    menu.push_back(withKey(item("menu.settings", StatusMenuAction::openSettings), ",", commandFlag));
    menu.push_back(withKey(item("menu.quit", StatusMenuAction::quit), "q", commandFlag));
    return menu;
}

} // namespace tosvar::StatusMenuModel
