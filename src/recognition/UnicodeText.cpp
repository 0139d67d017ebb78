#include "UnicodeText.h"

#include <clocale>
#include <cwctype>
#include <locale.h>

namespace tosvar::UnicodeText {

namespace {

// The character classes of Unicode, whatever locale the process runs in.
locale_t unicodeClasses() {
    static const locale_t classes = [] {
        locale_t l = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", static_cast<locale_t>(nullptr));
        return l ? l : ::newlocale(LC_CTYPE_MASK, "C", static_cast<locale_t>(nullptr));
    }();
    return classes;
}

wint_t wide(char32_t c) { return static_cast<wint_t>(c); }

} // namespace

std::u32string decode(std::string_view utf8) {
    std::u32string out;
    out.reserve(utf8.size());
    for (std::size_t i = 0; i < utf8.size();) {
        const auto lead = static_cast<unsigned char>(utf8[i]);
        int length = lead < 0x80 ? 1 : (lead >> 5) == 0x6 ? 2 : (lead >> 4) == 0xE ? 3 : (lead >> 3) == 0x1E ? 4 : 0;
        char32_t c = length == 1 ? lead : length == 2 ? (lead & 0x1F) : length == 3 ? (lead & 0x0F) : (lead & 0x07);
        bool valid = length > 0 && i + static_cast<std::size_t>(length) <= utf8.size();
        for (int k = 1; valid && k < length; ++k) {
            const auto next = static_cast<unsigned char>(utf8[i + static_cast<std::size_t>(k)]);
            valid = (next & 0xC0) == 0x80;
            c = (c << 6) | (next & 0x3F);
        }
        if (!valid || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) {
            out.push_back(U'\uFFFD');
            ++i;
            continue;
        }
        out.push_back(c);
        i += static_cast<std::size_t>(length);
    }
    return out;
}

std::string encode(std::u32string_view scalars) {
    std::string out;
    out.reserve(scalars.size());
    for (char32_t c : scalars) {
        if (c < 0x80) {
            out.push_back(static_cast<char>(c));
        } else if (c < 0x800) {
            out.push_back(static_cast<char>(0xC0 | (c >> 6)));
            out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
        } else if (c < 0x10000) {
            out.push_back(static_cast<char>(0xE0 | (c >> 12)));
            out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
            out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
        } else {
            out.push_back(static_cast<char>(0xF0 | (c >> 18)));
            out.push_back(static_cast<char>(0x80 | ((c >> 12) & 0x3F)));
            out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
            out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
        }
    }
    return out;
}

bool isWhitespace(char32_t c) { return ::iswspace_l(wide(c), unicodeClasses()) || c == U'\u00A0' || c == U'\u3000'; }
bool isLetter(char32_t c) { return ::iswalpha_l(wide(c), unicodeClasses()) && !isNumber(c); }
bool isLowercaseLetter(char32_t c) { return ::iswlower_l(wide(c), unicodeClasses()); }
bool isNumber(char32_t c) {
    return ::iswdigit_l(wide(c), unicodeClasses()) || (c >= U'\u2460' && c <= U'\u249B') || (c >= U'\u2160' && c <= U'\u2188') ||
           (c >= U'\uFF10' && c <= U'\uFF19');
}

std::u32string trimmed(std::u32string_view text) {
    std::size_t begin = 0, end = text.size();
    while (begin < end && isWhitespace(text[begin])) ++begin;
    while (end > begin && isWhitespace(text[end - 1])) --end;
    return std::u32string(text.substr(begin, end - begin));
}

std::string trimmed(std::string_view utf8) { return encode(trimmed(decode(utf8))); }

namespace {

bool extends(char32_t c) {
    return (c >= 0x0300 && c <= 0x036F) || (c >= 0x0483 && c <= 0x0489) || (c >= 0x0591 && c <= 0x05BD) || (c >= 0x064B && c <= 0x065F) ||
           (c >= 0x0900 && c <= 0x0903) || (c >= 0x093A && c <= 0x094F) || (c >= 0x0E31 && c <= 0x0E3A && c != 0x0E32 && c != 0x0E33) ||
           (c >= 0x0E47 && c <= 0x0E4E) || (c >= 0x1AB0 && c <= 0x1AFF) || (c >= 0x1DC0 && c <= 0x1DFF) || (c >= 0x20D0 && c <= 0x20FF) ||
           (c >= 0x3099 && c <= 0x309A) || (c >= 0xFE00 && c <= 0xFE0F) || (c >= 0xFE20 && c <= 0xFE2F) ||
           (c >= 0x1F3FB && c <= 0x1F3FF) || (c >= 0xE0020 && c <= 0xE007F) || (c >= 0xE0100 && c <= 0xE01EF) || c == 0x200D;
}

bool isRegionalIndicator(char32_t c) { return c >= 0x1F1E6 && c <= 0x1F1FF; }
bool isHangulLeading(char32_t c) { return c >= 0x1100 && c <= 0x115F; }
bool isHangulVowelOrTrailing(char32_t c) { return c >= 0x1160 && c <= 0x11FF; }
bool isHangulSyllable(char32_t c) { return c >= 0xAC00 && c <= 0xD7A3; }

} // namespace

std::vector<std::u32string> graphemeClusters(std::u32string_view text) {
    std::vector<std::u32string> clusters;
    int regionalRun = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char32_t c = text[i];
        const char32_t before = i > 0 ? text[i - 1] : 0;
        bool joins = false;
        if (!clusters.empty()) {
            joins = (before == U'\r' && c == U'\n') || extends(c) || before == 0x200D ||
                    (isRegionalIndicator(c) && isRegionalIndicator(before) && regionalRun % 2 == 1) ||
                    (isHangulVowelOrTrailing(c) && (isHangulLeading(before) || isHangulVowelOrTrailing(before) || isHangulSyllable(before))) ||
                    (isHangulLeading(c) && isHangulLeading(before));
            if (before == U'\r' || before == U'\n') joins = joins && c == U'\n' && before == U'\r';
        }
        regionalRun = isRegionalIndicator(c) ? regionalRun + 1 : 0;
        if (joins) clusters.back().push_back(c);
        else clusters.emplace_back(1, c);
    }
    return clusters;
}

std::size_t graphemeCount(std::string_view utf8) { return graphemeClusters(decode(utf8)).size(); }

} // namespace tosvar::UnicodeText
