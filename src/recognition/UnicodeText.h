#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tosvar {

// Unicode scalars of UTF-8 text and their classes, for the text analysis.
// Invalid bytes read as U+FFFD. Classes follow the C library's UTF-8 tables.
namespace UnicodeText {

std::u32string decode(std::string_view utf8);
std::string encode(std::u32string_view scalars);

bool isWhitespace(char32_t c); // blanks and line ends
bool isLetter(char32_t c);
bool isLowercaseLetter(char32_t c);
bool isNumber(char32_t c);

// The user-perceived characters of the text: a base with its combining
// marks, variation selectors and emoji modifiers, emoji joined by ZWJ, flag
// pairs, Hangul jamo sequences and CR LF each count as one.
std::vector<std::u32string> graphemeClusters(std::u32string_view text);
std::size_t graphemeCount(std::string_view utf8);

// Without leading and trailing whitespace and line ends.
std::u32string trimmed(std::u32string_view text);
std::string trimmed(std::string_view utf8);

} // namespace UnicodeText

} // namespace tosvar
