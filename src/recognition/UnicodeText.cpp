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

} // namespace tosvar::UnicodeText
