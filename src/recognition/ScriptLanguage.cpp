#include "ScriptLanguage.h"

#include "UnicodeText.h"

#include <algorithm>

namespace tosvar {

namespace {

bool in(char32_t c, char32_t low, char32_t high) { return c >= low && c <= high; }
bool isKana(char32_t c) { return in(c, 0x3040, 0x30FF); }
bool isHangul(char32_t c) { return in(c, 0xAC00, 0xD7AF) || in(c, 0x1100, 0x11FF); }
bool isHan(char32_t c) { return in(c, 0x3400, 0x4DBF) || in(c, 0x4E00, 0x9FFF) || in(c, 0xF900, 0xFAFF) || in(c, 0x20000, 0x2FA1F); }

} // namespace

std::optional<std::string> ScriptLanguage::guess(std::string_view text) {
    std::u32string rest;
    for (char32_t c : UnicodeText::decode(text))
        if (!UnicodeText::isWhitespace(c)) rest.push_back(c);
    if (rest.empty()) return std::nullopt;
    auto any = [&](auto test) { return std::any_of(rest.begin(), rest.end(), test); };
    if (any(isKana)) return "ja";
    if (any(isHangul)) return "ko";
    if (any([](char32_t c) { return in(c, 0x0400, 0x04FF); })) return "ru";
    if (any([](char32_t c) { return in(c, 0x0600, 0x06FF); })) return "ar";
    if (any([](char32_t c) { return in(c, 0x0E00, 0x0E7F); })) return "th";
    if (any([](char32_t c) { return in(c, 0x0900, 0x097F); })) return "hi";
    if (any([](char32_t c) { return in(c, 0x4E00, 0x9FFF) || in(c, 0x3400, 0x4DBF) || in(c, 0xF900, 0xFAFF); })) return "zh-Hans";
    if (any(UnicodeText::isLetter)) return "en";
    return std::nullopt;
}

std::optional<std::string> ScriptLanguage::cjkGuess(std::string_view text) {
    std::size_t letters = 0, kana = 0, hangul = 0, han = 0;
    for (char32_t c : UnicodeText::decode(text)) {
        const bool cjk = isKana(c) || isHangul(c) || isHan(c);
        if (UnicodeText::isLetter(c) || cjk) ++letters;
        kana += isKana(c);
        hangul += isHangul(c);
        han += isHan(c);
    }
    const std::size_t cjk = kana + hangul + han;
    if (letters == 0 || cjk * 3 < letters) return std::nullopt;
    if (kana >= 1 && kana * 10 >= cjk) return "ja";
    if (hangul == 0 || cjk > hangul * 2) return "zh-Hans";
    return "ko";
}

} // namespace tosvar
