#include "SettingsStore.h"

#include "BuildTarget.h"
#include "JsonFileDefaultsStore.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <limits>
#include <set>
#include <type_traits>

namespace tosvar {

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(BlockedAppEntry, bundleID, name)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(FilterCategory, id, name, kinds)

namespace {

template <typename T>
concept RawEnumeration = std::is_enum_v<T> && requires { RawEnum<T>::table; };

template <typename T>
struct IsVector : std::false_type {};
template <typename T>
struct IsVector<std::vector<T>> : std::true_type {};

// Every field stored under its own name, in declaration order. Hotkeys, whose
// keys differ from their names, are in `hotkeyFields`. The two lists of sibling
// records are stored as JSON text: "blockedApps" and "filterCategories".
template <typename Visitor>
void visitFields(Visitor&& visit) {
    visit("launchAtLogin", &AppSettings::launchAtLogin);
    visit("appearanceMode", &AppSettings::appearanceMode);
    visit("accentColor", &AppSettings::accentColor);
    visit("appLanguage", &AppSettings::appLanguage);
    visit("screenshotDelaySeconds", &AppSettings::screenshotDelaySeconds);
    visit("captureCardEnabled", &AppSettings::captureCardEnabled);
    visit("captureCardCorner", &AppSettings::captureCardCorner);
    visit("captureCardDismissSeconds", &AppSettings::captureCardDismissSeconds);
    visit("captureLibraryLimit", &AppSettings::captureLibraryLimit);
    visit("captureHandledBySiblingApp", &AppSettings::captureHandledBySiblingApp);
    visit("screenshotElementSnap", &AppSettings::screenshotElementSnap);
    visit("scrollCaptureAutoScroll", &AppSettings::scrollCaptureAutoScroll);
    visit("recordingFPS", &AppSettings::recordingFPS);
    visit("recordingGIFFPS", &AppSettings::recordingGIFFPS);
    visit("recordingScale", &AppSettings::recordingScale);
    visit("recordingShowsCursor", &AppSettings::recordingShowsCursor);
    visit("recordingCountdown", &AppSettings::recordingCountdown);
    visit("recordingCaptureSystemAudio", &AppSettings::recordingCaptureSystemAudio);
    visit("recordingCaptureMic", &AppSettings::recordingCaptureMic);
    visit("recordingCameraEnabled", &AppSettings::recordingCameraEnabled);
    visit("recordingCameraDeviceID", &AppSettings::recordingCameraDeviceID);
    visit("recordingCameraSize", &AppSettings::recordingCameraSize);
    visit("recordingCameraShape", &AppSettings::recordingCameraShape);
    visit("recordingCameraMirrored", &AppSettings::recordingCameraMirrored);
    visit("recordingCameraBackground", &AppSettings::recordingCameraBackground);
    visit("recordingCameraQuality", &AppSettings::recordingCameraQuality);
    visit("audioRecordingInputDeviceID", &AppSettings::audioRecordingInputDeviceID);
    visit("audioRecordingMaxMinutes", &AppSettings::audioRecordingMaxMinutes);
    visit("audioRecordingQuality", &AppSettings::audioRecordingQuality);
    visit("audioRecordingCapturesSystemAudio", &AppSettings::audioRecordingCapturesSystemAudio);
    visit("annotationDrawModifier", &AppSettings::annotationDrawModifier);
    visit("presentationDrawModifier", &AppSettings::presentationDrawModifier);
    visit("autoTranslateClipboard", &AppSettings::autoTranslateClipboard);
    visit("autoTranslateAllowsCloud", &AppSettings::autoTranslateAllowsCloud);
    visit("showPanelAtStartup", &AppSettings::showPanelAtStartup);
    visit("playSoundOnCopy", &AppSettings::playSoundOnCopy);
    visit("panelDisplayMode", &AppSettings::panelDisplayMode);
    visit("barHeight", &AppSettings::barHeight);
    visit("openWindowPosition", &AppSettings::openWindowPosition);
    visit("windowOriginX", &AppSettings::windowOriginX);
    visit("windowOriginY", &AppSettings::windowOriginY);
    visit("returnToTopAfterPaste", &AppSettings::returnToTopAfterPaste);
    visit("historyLimit", &AppSettings::historyLimit);
    visit("retentionDays", &AppSettings::retentionDays);
    visit("ocrEnabled", &AppSettings::ocrEnabled);
    visit("paused", &AppSettings::paused);
    visit("pausedUntil", &AppSettings::pausedUntil);
    visit("windowWidth", &AppSettings::windowWidth);
    visit("windowHeight", &AppSettings::windowHeight);
    visit("listWidth", &AppSettings::listWidth);
    visit("doubleTapModifier", &AppSettings::doubleTapModifier);
    visit("pinFirstItemDoubleTapModifier", &AppSettings::pinFirstItemDoubleTapModifier);
    visit("textSnippetExpansionEnabled", &AppSettings::textSnippetExpansionEnabled);
    visit("textExpansionPrefix", &AppSettings::textExpansionPrefix);
    visit("textExpansionCaseSensitive", &AppSettings::textExpansionCaseSensitive);
    visit("textExpansionDirectTextLimit", &AppSettings::textExpansionDirectTextLimit);
    visit("blockedApps", &AppSettings::blockedApps);
    visit("captureMode", &AppSettings::captureMode);
    visit("filterCategories", &AppSettings::categories);
    visit("previewVisible", &AppSettings::previewVisible);
    visit("resetSearchOnPanelHide", &AppSettings::resetSearchOnPanelHide);
    visit("syncEnabled", &AppSettings::syncEnabled);
    visit("syncImageAssetLimitMB", &AppSettings::syncImageAssetLimitMB);
    visit("syncAssetPrefetchMB", &AppSettings::syncAssetPrefetchMB);
    visit("syncFileContentMB", &AppSettings::syncFileContentMB);
}

struct HotkeyField {
    std::optional<GlobalHotkeyBinding> AppSettings::*member;
    const char* enabledKey;
    const char* keyCodeKey;
    const char* modifiersKey;
    std::optional<GlobalHotkeyBinding> fallback; // none for the opt-in bindings
    bool registered;                             // key code and modifiers are registered defaults
};

const std::vector<HotkeyField>& hotkeyFields() {
    using B = GlobalHotkeyBinding;
    static const std::vector<HotkeyField> fields{
        {&AppSettings::screenshotHotkey, "screenshotHotkeyEnabled", "screenshotHotkeyKeyCode",
         "screenshotHotkeyModifiers", B::defaultScreenshot(), true},
        {&AppSettings::recordingHotkey, "recordingHotkeyEnabled", "recordingHotkeyKeyCode",
         "recordingHotkeyModifiers", B::defaultRecording(), true},
        {&AppSettings::translateRegionHotkey, "translateRegionHotkeyEnabled", "translateRegionHotkeyKeyCode",
         "translateRegionHotkeyModifiers", B::defaultTranslateRegion(), false},
        {&AppSettings::captureTextHotkey, "captureTextHotkeyEnabled", "captureTextHotkeyKeyCode",
         "captureTextHotkeyModifiers", std::nullopt, false},
        {&AppSettings::scrollCaptureHotkey, "scrollCaptureHotkeyEnabled", "scrollCaptureHotkeyKeyCode",
         "scrollCaptureHotkeyModifiers", std::nullopt, false},
        {&AppSettings::delayedScreenshotHotkey, "delayedScreenshotHotkeyEnabled", "delayedScreenshotHotkeyKeyCode",
         "delayedScreenshotHotkeyModifiers", std::nullopt, false},
        {&AppSettings::recordingPauseHotkey, "recordingPauseHotkeyEnabled", "recordingPauseHotkeyKeyCode",
         "recordingPauseHotkeyModifiers", std::nullopt, false},
        {&AppSettings::audioRecordingHotkey, "audioRecordingHotkeyEnabled", "audioRecordingHotkeyKeyCode",
         "audioRecordingHotkeyModifiers", std::nullopt, false},
        {&AppSettings::audioRecordingPauseHotkey, "audioRecordingPauseHotkeyEnabled",
         "audioRecordingPauseHotkeyKeyCode", "audioRecordingPauseHotkeyModifiers", std::nullopt, false},
        {&AppSettings::presentationHotkey, "presentationHotkeyEnabled", "presentationHotkeyKeyCode",
         "presentationHotkeyModifiers", std::nullopt, false},
        {&AppSettings::presentationAnnotateHotkey, "presentationAnnotateHotkeyEnabled",
         "presentationAnnotateHotkeyKeyCode", "presentationAnnotateHotkeyModifiers", std::nullopt, false},
        {&AppSettings::openPanelHotkey, "openPanelHotkeyEnabled", "globalHotkeyKeyCode", "globalHotkeyModifiers",
         B::defaultOpenPanel(), true},
        {&AppSettings::pinFirstItemHotkey, "pinFirstItemHotkeyEnabled", "pinFirstItemHotkeyKeyCode",
         "pinFirstItemHotkeyModifiers", B::defaultPinFirstItem(), true},
    };
    return fields;
}

// Fields whose default is registered, beyond the hotkeys' key codes and modifiers.
const std::set<std::string>& registeredFieldKeys() {
    static const std::set<std::string> keys{
        "launchAtLogin", "showPanelAtStartup", "playSoundOnCopy", "panelDisplayMode", "barHeight",
        "openWindowPosition", "returnToTopAfterPaste", "historyLimit", "retentionDays", "ocrEnabled", "paused",
        "windowWidth", "windowHeight", "listWidth", "recordingFPS", "recordingGIFFPS", "recordingScale",
        "recordingShowsCursor", "recordingCountdown", "doubleTapModifier", "annotationDrawModifier",
        "presentationDrawModifier", "pinFirstItemDoubleTapModifier", "textSnippetExpansionEnabled",
        "textExpansionPrefix", "textExpansionCaseSensitive", "textExpansionDirectTextLimit",
        "screenshotElementSnap", "scrollCaptureAutoScroll", "previewVisible", "resetSearchOnPanelHide",
        "syncEnabled", "syncImageAssetLimitMB", "syncAssetPrefetchMB", "syncFileContentMB"};
    return keys;
}

// The stored form of a field value; none for an absent optional.
template <typename T>
std::optional<DefaultsValue> stored(const T& value) {
    if constexpr (RawEnumeration<T>) {
        return std::string(rawValue(value));
    } else if constexpr (IsVector<T>::value) {
        return nlohmann::json(value).dump();
    } else if constexpr (std::is_same_v<T, std::optional<std::string>> || std::is_same_v<T, std::optional<double>>) {
        if (!value) return std::nullopt;
        return *value;
    } else {
        return DefaultsValue(value);
    }
}

template <typename T>
std::optional<T> decodeJsonList(const DefaultsStore& store, const std::string& key) {
    std::optional<std::string> text = store.string(key);
    if (!text) {
        if (auto bytes = store.bytes(key)) text = std::string(bytes->begin(), bytes->end());
    }
    if (!text) return std::nullopt;
    nlohmann::json parsed = nlohmann::json::parse(*text, nullptr, false);
    if (parsed.is_discarded()) return std::nullopt;
    try {
        return parsed.get<T>();
    } catch (const nlohmann::json::exception&) {
        return std::nullopt;
    }
}

// A field as read: the stored value when it reads as the field's type, else `fallback`.
template <typename T>
T loaded(const DefaultsStore& store, const std::string& key, const T& fallback) {
    if constexpr (RawEnumeration<T>) {
        if (auto text = store.string(key))
            if (auto value = enumFromRaw<T>(*text)) return *value;
        return fallback;
    } else if constexpr (IsVector<T>::value) {
        return decodeJsonList<T>(store, key).value_or(fallback);
    } else if constexpr (std::is_same_v<T, bool>) {
        return store.boolean(key).value_or(fallback);
    } else if constexpr (std::is_same_v<T, std::int64_t>) {
        return store.integer(key).value_or(fallback);
    } else if constexpr (std::is_same_v<T, double>) {
        return store.real(key).value_or(fallback);
    } else if constexpr (std::is_same_v<T, std::string>) {
        return store.string(key).value_or(fallback);
    } else if constexpr (std::is_same_v<T, std::optional<std::string>>) {
        return store.string(key);
    } else {
        static_assert(std::is_same_v<T, std::optional<double>>);
        return store.real(key);
    }
}

std::optional<std::uint32_t> unsigned32(const DefaultsStore& store, const std::string& key) {
    const std::optional<std::int64_t> value = store.integer(key);
    if (!value || *value < 0 || *value > std::numeric_limits<std::uint32_t>::max()) return std::nullopt;
    return static_cast<std::uint32_t>(*value);
}

} // namespace

SettingsStore::SettingsStore() : SettingsStore(standardDefaults()) {}

SettingsStore::SettingsStore(DefaultsStore& defaults) : defaults_(defaults) {
    defaults_.registerDefaults(registeredDefaults());
}

DefaultsStore& SettingsStore::standardDefaults() {
    static JsonFileDefaultsStore store(JsonFileDefaultsStore::standardPath());
    return store;
}

std::map<std::string, DefaultsValue> SettingsStore::registeredDefaults() {
    std::map<std::string, DefaultsValue> defaults;
    const AppSettings initial;
    visitFields([&](const char* key, auto member) {
        if (registeredFieldKeys().contains(key)) defaults.emplace(key, *stored(initial.*member));
    });
    defaults.insert_or_assign("launchAtLogin", BuildTarget::current().launchesAtLoginByDefault());
    for (const HotkeyField& field : hotkeyFields()) {
        if (!field.registered) continue;
        defaults.emplace(field.keyCodeKey, std::int64_t{field.fallback->keyCode});
        defaults.emplace(field.modifiersKey, std::int64_t{field.fallback->carbonModifiers});
    }
    return defaults;
}

std::optional<GlobalHotkeyBinding> SettingsStore::loadHotkey(const std::string& enabledKey,
                                                             const std::string& keyCodeKey,
                                                             const std::string& modifiersKey,
                                                             std::optional<GlobalHotkeyBinding> fallback) const {
    if (defaults_.boolean(enabledKey) == false) return std::nullopt;
    const std::optional<std::uint32_t> keyCode = unsigned32(defaults_, keyCodeKey);
    if (!keyCode) return fallback;
    const GlobalHotkeyBinding binding{*keyCode, unsigned32(defaults_, modifiersKey).value_or(0)};
    if (!binding.isValid()) return fallback;
    return binding;
}

std::optional<GlobalHotkeyBinding> SettingsStore::loadOptInHotkey(const std::string& enabledKey,
                                                                  const std::string& keyCodeKey,
                                                                  const std::string& modifiersKey) const {
    return loadHotkey(enabledKey, keyCodeKey, modifiersKey, std::nullopt);
}

AppSettings SettingsStore::load() const {
    AppSettings settings;
    visitFields([&](const char* key, auto member) { settings.*member = loaded(defaults_, key, settings.*member); });
    for (const HotkeyField& field : hotkeyFields())
        settings.*field.member = loadHotkey(field.enabledKey, field.keyCodeKey, field.modifiersKey, field.fallback);

    // Unlike the static value (10), a store without the key gives 6.
    settings.captureCardDismissSeconds = defaults_.integer("captureCardDismissSeconds").value_or(6);
    settings.recordingCameraSize =
        settings.recordingCameraSize > 0 ? std::max<std::int64_t>(72, settings.recordingCameraSize) : 0;
    settings.barHeight = settings.barHeight > 0 ? std::clamp(settings.barHeight, 240.0, 560.0) : 340.0;
    if (settings.textExpansionPrefix.empty()) settings.textExpansionPrefix = ";";
    return settings;
}

void SettingsStore::save(const AppSettings& settings) {
    std::map<std::string, DefaultsValue> values;
    std::vector<std::string> absent;
    visitFields([&](const char* key, auto member) {
        if (auto value = stored(settings.*member)) {
            values.emplace(key, std::move(*value));
        } else {
            absent.emplace_back(key);
        }
    });
    for (const HotkeyField& field : hotkeyFields()) {
        const std::optional<GlobalHotkeyBinding>& binding = settings.*field.member;
        values.emplace(field.enabledKey, binding.has_value());
        if (binding) {
            values.emplace(field.keyCodeKey, std::int64_t{binding->keyCode});
            values.emplace(field.modifiersKey, std::int64_t{binding->carbonModifiers});
        }
    }
    defaults_.set(values);
    for (const std::string& key : absent) defaults_.remove(key);
}

} // namespace tosvar
