#include "ListMarker.h"

#include "UnicodeText.h"

#include <algorithm>
#include <array>

namespace tosvar::ListMarker {

namespace {

bool isBlank(char32_t c) { return c == U' ' || c == U'\t' || c == U'\u00A0'; }

bool isBullet(char32_t c) {
    static constexpr std::array<char32_t, 15> bullets{U'\u2022', U'\u2023', U'\u25E6', U'\u00B7', U'\u25AA',
                                                      U'\u25AB', U'\u25B8', U'\u25B9', U'\u25CF', U'\u25CB',
                                                      U'\u2013', U'\u2014', U'-',      U'*',      U'+'};
    return std::find(bullets.begin(), bullets.end(), c) != bullets.end();
}

bool isStandAlone(char32_t c) { return (c >= U'\u2460' && c <= U'\u2473') || (c >= U'\u3220' && c <= U'\u3229'); }

bool isChineseNumeral(char32_t c) { return std::u32string_view(U"一二三四五六七八九十").find(c) != std::u32string_view::npos; }

bool isRomanNumeral(std::u32string token) {
    for (char32_t& c : token)
        if (c >= U'A' && c <= U'Z') c = c - U'A' + U'a';
    return token == U"i" || token == U"ii" || token == U"iii" || token == U"iv" || token == U"v";
}

using Split = std::optional<std::pair<std::string, std::string>>;

Split result(std::u32string_view marker, std::u32string_view rest) {
    if (rest.empty()) return std::nullopt;
    return std::pair{UnicodeText::encode(marker), UnicodeText::encode(rest)};
}

} // namespace

Split split(std::string_view utf8) {
    const std::u32string text = UnicodeText::decode(utf8);
    std::size_t i = 0;
    while (i < text.size() && isBlank(text[i])) ++i;
    if (i == text.size()) return std::nullopt;
    const std::u32string_view s = std::u32string_view(text).substr(i);

    if (isBullet(s[0])) {
        if (s.size() < 2 || !isBlank(s[1])) return std::nullopt;
        std::size_t body = 1;
        while (body < s.size() && isBlank(s[body])) ++body;
        return result(s.substr(0, 1), s.substr(body));
    }
    if (isStandAlone(s[0])) {
        std::size_t body = 1;
        while (body < s.size() && (s[body] == U' ' || s[body] == U'\u00A0' || s[body] == U'\u3001' || s[body] == U'.')) ++body;
        return result(s.substr(0, 1), s.substr(body));
    }

    const std::u32string_view window = s.substr(0, 6);
    std::size_t token = 0;
    while (token < window.size() && (UnicodeText::isNumber(window[token]) || UnicodeText::isLetter(window[token]) ||
                                     isChineseNumeral(window[token])))
        ++token;
    if (token >= 5 || token == 0 || token >= window.size()) return std::nullopt;

    const char32_t delimiter = window[token];
    if (delimiter != U'.' && delimiter != U')' && delimiter != U'\u3001' && delimiter != U'\uFF09') return std::nullopt;
    std::size_t body = token + 1;
    if (delimiter != U'\u3001') {
        if (body >= s.size() || !isBlank(s[body])) return std::nullopt;
    }
    const std::u32string_view tokenText = s.substr(0, token);
    const bool allLetters = std::all_of(tokenText.begin(), tokenText.end(), [](char32_t c) {
        return UnicodeText::isLetter(c) || isChineseNumeral(c);
    });
    if (token >= 2 && allLetters && !isRomanNumeral(std::u32string(tokenText))) return std::nullopt;
    while (body < s.size() && isBlank(s[body])) ++body;
    return result(s.substr(0, token + 1), s.substr(body));
}

std::string prefix(std::string_view marker, std::string_view body) {
    if (marker.empty()) return std::string(body);
    const std::u32string m = UnicodeText::decode(marker);
    const bool direct = std::u32string_view(U"、）。：").find(m.back()) != std::u32string_view::npos;
    return std::string(marker) + (direct ? "" : " ") + std::string(body);
}

} // namespace tosvar::ListMarker
