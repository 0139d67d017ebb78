#pragma once

#include "AppSettings.h"
#include "DefaultsStore.h"

#include <map>
#include <optional>
#include <string>

namespace tosvar {

// Loads and saves AppSettings against a defaults store. Constructing one
// registers the store's 43 defaults; building several is harmless.
// `load` only reads, so it is safe on any thread; `save` writes every field.
class SettingsStore {
public:
    // The application's own store (the JSON file under $XDG_CONFIG_HOME).
    SettingsStore();
    explicit SettingsStore(DefaultsStore& defaults);

    AppSettings load() const;
    void save(const AppSettings& settings);

    // A binding without a default, read by the same rules as the fields.
    std::optional<GlobalHotkeyBinding> loadOptInHotkey(const std::string& enabledKey, const std::string& keyCodeKey,
                                                       const std::string& modifiersKey) const;

    // The defaults this store registers, by key.
    static std::map<std::string, DefaultsValue> registeredDefaults();
    // The process-wide store behind the no-argument constructor.
    static DefaultsStore& standardDefaults();

    DefaultsStore& defaults() const { return defaults_; }

private:
    std::optional<GlobalHotkeyBinding> loadHotkey(const std::string& enabledKey, const std::string& keyCodeKey,
                                                  const std::string& modifiersKey,
                                                  std::optional<GlobalHotkeyBinding> fallback) const;

    DefaultsStore& defaults_;
};

} // namespace tosvar
