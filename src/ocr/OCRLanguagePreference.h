#pragma once

#include "DefaultsStore.h"

#include <string>
#include <vector>

namespace tosvar {

// Which languages text recognition reads: the setting "ocrRecognitionLanguages"
// (a list of language tags), never without English.
namespace OCRLanguagePreference {

inline constexpr const char* key = "ocrRecognitionLanguages";
inline const std::vector<std::string> defaultLanguages{"zh-Hans", "zh-Hant", "en-US"};
inline constexpr const char* baselineLanguage = "en-US";

// The stored list, or the defaults when it is absent, empty or unreadable;
// "en-US" is added when no entry is English.
std::vector<std::string> languages(const DefaultsStore& defaults);
// Stores the list as it is.
void setLanguages(DefaultsStore& defaults, const std::vector<std::string>& languages);
// The languages whose models are installed; the defaults when none are.
std::vector<std::string> supported();
// Makes sure the list holds English and `code`; writes only when it added one.
void addForAppLanguage(DefaultsStore& defaults, const std::string& code);

} // namespace OCRLanguagePreference

} // namespace tosvar
