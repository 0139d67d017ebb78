#pragma once

#include "SettingsEnums.h"
#include "TextFormatter.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tosvar {

// The interface's words. Tables are JSON objects of key → text, one per
// language, built into the program; English is always loaded as the fallback.
// A missing table keeps English, a missing key shows English, a key missing
// from English shows the key: the interface stays usable whatever is missing.
// "{appName}" in a text becomes the product's name. Main thread.
class LocalizationManager {
public:
    // Gives the JSON text of a table by code ("en", ..., "zh-Hant"), or none.
    using TableSource = std::function<std::optional<std::string>(std::string_view code)>;

    explicit LocalizationManager(TableSource source);
    // The application's manager, over the built-in tables.
    static LocalizationManager& shared();
    static std::optional<std::string> builtInTable(std::string_view code);

    void apply(AppLanguage language);
    AppLanguage language() const { return language_; }
    AppLanguage resolvedLanguage() const { return resolved_; }

    std::string string(std::string_view key) const;
    std::string string(std::string_view key, const std::vector<FormatArgument>& arguments) const;
    // "language=…, resolved=…, keys=…, fallbackKeys=…, source=…" for support logs.
    std::string diagnosticDescription() const;

    // Called after every `apply`, so views can redraw.
    std::function<void()> onLanguageChanged;

private:
    std::map<std::string, std::string, std::less<>> load(std::string_view code, bool& found) const;

    TableSource source_;
    AppLanguage language_ = AppLanguage::system;
    AppLanguage resolved_ = AppLanguage::en;
    std::map<std::string, std::string, std::less<>> table_;
    std::map<std::string, std::string, std::less<>> fallback_;
    std::string tableSource_ = "missing";
};

// Every text of the interface goes through these.
std::string L(std::string_view key);
template <typename... Arguments>
std::string L(std::string_view key, Arguments&&... arguments) {
    return LocalizationManager::shared().string(key, std::vector<FormatArgument>{FormatArgument(std::forward<Arguments>(arguments))...});
}

} // namespace tosvar
