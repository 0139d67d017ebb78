#pragma once

#include "SettingsEnums.h"

#include <string>
#include <string_view>
#include <vector>

// Which table a language setting means.
namespace tosvar::LanguageResolution {

// A fixed language stands for itself; `system` follows the first preferred
// language: zh with Hant/TW/HK/MO is traditional Chinese, zh otherwise
// simplified; ja, ko, de, fr, es are themselves; anything else is English.
// Preferred languages may be BCP-47 ("zh-Hant-TW") or POSIX ("zh_TW.UTF-8",
// "de_DE@euro").
AppLanguage resolved(AppLanguage language, const std::vector<std::string>& preferredLanguages);

// The user's preferred languages from the environment: $LANGUAGE (a colon
// list), then $LC_ALL, $LC_MESSAGES, $LANG; "C" and "POSIX" are skipped.
std::vector<std::string> preferredLanguagesFromEnvironment();

// The table code of a resolved language: "en", ..., "zh-Hant".
std::string_view tableCode(AppLanguage resolvedLanguage);

} // namespace tosvar::LanguageResolution
