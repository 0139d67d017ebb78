#include "OCRLanguagePreference.h"

#include "TesseractTextRecognizer.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace tosvar::OCRLanguagePreference {

namespace {

bool hasEnglish(const std::vector<std::string>& languages) {
    return std::any_of(languages.begin(), languages.end(), [](const std::string& tag) { return tag.starts_with("en"); });
}

std::vector<std::string> stored(const DefaultsStore& defaults) {
    const std::optional<std::string> text = defaults.string(key);
    if (!text) return {};
    const nlohmann::json list = nlohmann::json::parse(*text, nullptr, false);
    std::vector<std::string> tags;
    if (!list.is_array()) return tags;
    for (const auto& entry : list)
        if (entry.is_string()) tags.push_back(entry.get<std::string>());
    return tags;
}

} // namespace

std::vector<std::string> languages(const DefaultsStore& defaults) {
    std::vector<std::string> tags = stored(defaults);
    if (tags.empty()) tags = defaultLanguages;
    if (!hasEnglish(tags)) tags.emplace_back(baselineLanguage);
    return tags;
}

void setLanguages(DefaultsStore& defaults, const std::vector<std::string>& tags) {
    defaults.set(key, nlohmann::json(tags).dump());
}

std::vector<std::string> supported() {
    std::vector<std::string> tags = TesseractTextRecognizer::supportedLanguages();
    return tags.empty() ? defaultLanguages : tags;
}

void addForAppLanguage(DefaultsStore& defaults, const std::string& code) {
    std::vector<std::string> tags = languages(defaults);
    bool added = false;
    if (!hasEnglish(tags)) {
        tags.emplace_back(baselineLanguage);
        added = true;
    }
    if (std::find(tags.begin(), tags.end(), code) == tags.end()) {
        tags.push_back(code);
        added = true;
    }
    if (added) setLanguages(defaults, tags);
}

} // namespace tosvar::OCRLanguagePreference
