#include "LocalizationManager.h"

#include "BuildTarget.h"
#include "LanguageResolution.h"
#include "Log.h"

#include <nlohmann/json.hpp>

namespace tosvar {

namespace {

std::string withAppName(std::string text) {
    static const std::string placeholder = "{appName}";
    const std::string name = BuildTarget::current().displayName();
    for (std::size_t at = text.find(placeholder); at != std::string::npos; at = text.find(placeholder, at + name.size()))
        text.replace(at, placeholder.size(), name);
    return text;
}

} // namespace

LocalizationManager::LocalizationManager(TableSource source) : source_(std::move(source)) {
    bool found = false;
    fallback_ = load("en", found);
    if (!found) logLine("localization: the English table is missing; keys will show as they are");
    table_ = fallback_;
    tableSource_ = found ? "en" : "missing";
}

LocalizationManager& LocalizationManager::shared() {
    static LocalizationManager manager(builtInTable);
    return manager;
}

std::map<std::string, std::string, std::less<>> LocalizationManager::load(std::string_view code, bool& found) const {
    std::map<std::string, std::string, std::less<>> table;
    found = false;
    const std::optional<std::string> text = source_ ? source_(code) : std::nullopt;
    if (!text) return table;
    const nlohmann::json root = nlohmann::json::parse(*text, nullptr, false);
    if (root.is_discarded() || !root.is_object()) {
        logLine("localization: the table \"" + std::string(code) + "\" is not a JSON object");
        return table;
    }
    for (const auto& [key, value] : root.items())
        if (value.is_string()) table.emplace(key, value.get<std::string>());
    found = true;
    return table;
}

void LocalizationManager::apply(AppLanguage language) {
    language_ = language;
    resolved_ = LanguageResolution::resolved(language, LanguageResolution::preferredLanguagesFromEnvironment());
    const std::string code(LanguageResolution::tableCode(resolved_));
    bool found = false;
    auto table = code == "en" ? fallback_ : load(code, found);
    if (code == "en" || found) {
        table_ = std::move(table);
        tableSource_ = code;
    } else {
        table_ = fallback_;
        tableSource_ = "en (no table for " + code + ")";
    }
    if (onLanguageChanged) onLanguageChanged();
}

std::string LocalizationManager::string(std::string_view key) const {
    if (auto it = table_.find(key); it != table_.end()) return withAppName(it->second);
    if (auto it = fallback_.find(key); it != fallback_.end()) return withAppName(it->second);
    return std::string(key);
}

std::string LocalizationManager::string(std::string_view key, const std::vector<FormatArgument>& arguments) const {
    return formatText(string(key), arguments);
}

std::string LocalizationManager::diagnosticDescription() const {
    return "language=" + std::string(rawValue(language_)) + ", resolved=" + std::string(rawValue(resolved_)) +
           ", keys=" + std::to_string(table_.size()) + ", fallbackKeys=" + std::to_string(fallback_.size()) +
           ", source=" + tableSource_;
}

std::string L(std::string_view key) { return LocalizationManager::shared().string(key); }

} // namespace tosvar
