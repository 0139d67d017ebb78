#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tosvar {

// Language guesses from the script alone.
namespace ScriptLanguage {

// The first script found decides: kana "ja", hangul "ko", Cyrillic "ru",
// Arabic "ar", Thai "th", Devanagari "hi", Han "zh-Hans", any other letter "en".
std::optional<std::string> guess(std::string_view text);

// For mostly CJK text (a third of the letters or more): "ja" with enough
// kana, "zh-Hans" for Han without much hangul, else "ko".
std::optional<std::string> cjkGuess(std::string_view text);

} // namespace ScriptLanguage

} // namespace tosvar
