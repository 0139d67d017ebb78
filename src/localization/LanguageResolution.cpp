#include "LanguageResolution.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>

namespace tosvar::LanguageResolution {

namespace {

// "zh_TW.UTF-8" → "zh-tw", "de_DE@euro" → "de-de", "zh-Hant-TW" → "zh-hant-tw".
std::string normalized(std::string_view name) {
    std::string out;
    for (char c : name) {
        if (c == '.' || c == '@') break;
        out.push_back(c == '_' ? '-' : static_cast<char>(std::tolower(static_cast<unsigned char>(c))));
    }
    return out;
}

bool startsWithLanguage(const std::string& tag, std::string_view language) {
    return tag.starts_with(language) && (tag.size() == language.size() || tag[language.size()] == '-');
}

} // namespace

AppLanguage resolved(AppLanguage language, const std::vector<std::string>& preferredLanguages) {
    if (language != AppLanguage::system) return language;
    const std::string tag = preferredLanguages.empty() ? "en" : normalized(preferredLanguages.front());
    if (startsWithLanguage(tag, "zh")) {
        for (const char* marker : {"hant", "-tw", "-hk", "-mo"})
            if (tag.find(marker) != std::string::npos) return AppLanguage::zhHant;
        return AppLanguage::zh;
    }
    const std::pair<const char*, AppLanguage> prefixes[] = {
        {"ja", AppLanguage::ja}, {"ko", AppLanguage::ko}, {"de", AppLanguage::de},
        {"fr", AppLanguage::fr}, {"es", AppLanguage::es}};
    for (const auto& [prefix, result] : prefixes)
        if (startsWithLanguage(tag, prefix)) return result;
    return AppLanguage::en;
}

std::vector<std::string> preferredLanguagesFromEnvironment() {
    std::vector<std::string> languages;
    auto add = [&languages](std::string_view value) {
        if (value.empty() || value == "C" || value.starts_with("C.") || value == "POSIX") return;
        languages.emplace_back(value);
    };
    if (const char* list = std::getenv("LANGUAGE")) {
        std::string_view rest = list;
        while (!rest.empty()) {
            const std::size_t colon = rest.find(':');
            add(rest.substr(0, colon));
            rest = colon == std::string_view::npos ? std::string_view() : rest.substr(colon + 1);
        }
    }
    for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"})
        if (const char* value = std::getenv(variable)) add(value);
    return languages;
}

std::string_view tableCode(AppLanguage language) {
    return language == AppLanguage::system ? std::string_view("en") : rawValue(language);
}

} // namespace tosvar::LanguageResolution
