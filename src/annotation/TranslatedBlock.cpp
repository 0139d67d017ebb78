#include "TranslatedBlock.h"

#include "HashCombine.h"

#include <string_view>

namespace tosvar {

namespace {

enum class Trim { blanks, blanksAndLineBreaks };

// Decodes the code point starting at `text[i]`, or returns -1 for a byte that
// does not start a well-formed sequence (those are never trimmed).
long codePointAt(std::string_view text, std::size_t i, std::size_t& length) {
    const auto byte = [&](std::size_t k) { return static_cast<unsigned char>(text[k]); };
    const unsigned char lead = byte(i);
    length = 1;
    if (lead < 0x80) return lead;
    const std::size_t needed = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 0;
    if (needed == 0 || i + needed > text.size()) return -1;
    long value = lead & (0x7F >> needed);
    for (std::size_t k = 1; k < needed; ++k) {
        if ((byte(i + k) & 0xC0) != 0x80) return -1;
        value = value << 6 | (byte(i + k) & 0x3F);
    }
    length = needed;
    return value;
}

// Unicode space separators and tab; with line breaks also LF, VT, FF, CR,
// NEL and the line and paragraph separators.
bool isTrimmed(long c, Trim trim) {
    const bool blank = c == ' ' || c == '\t' || c == 0xA0 || c == 0x1680 || (c >= 0x2000 && c <= 0x200A) ||
                       c == 0x202F || c == 0x205F || c == 0x3000;
    if (blank) return true;
    if (trim == Trim::blanks) return false;
    return (c >= 0x0A && c <= 0x0D) || c == 0x85 || c == 0x2028 || c == 0x2029;
}

std::string trimmed(std::string_view text, Trim trim) {
    std::size_t begin = 0;
    std::size_t end = 0; // one past the last character that stays
    for (std::size_t i = 0; i < text.size();) {
        std::size_t length = 1;
        const long c = codePointAt(text, i, length);
        if (!isTrimmed(c, trim)) {
            if (end == 0) begin = i;
            end = i + length;
        }
        i += length;
    }
    return std::string(text.substr(begin, end - begin));
}

} // namespace

const std::string& TranslatedBlock::displayedText() const { return showsSource || target.empty() ? source : target; }

std::string TranslatedBlock::translationBody() const {
    if (!marker || !std::string_view(target).starts_with(*marker)) return target;
    return trimmed(std::string_view(target).substr(marker->size()), Trim::blanks);
}

std::size_t hashValue(const TranslatedBlock& b) {
    const auto optional = [](const std::optional<std::string>& s) { return s ? hashValues(*s) : 0x5bd1e995u; };
    return hashValues(b.source, b.target, optional(b.sourceLanguage), b.targetLanguage, b.showsSource,
                      b.fontSizeLocked, optional(b.marker), b.isHidden);
}

std::string TranslatedBlockText::joined(std::span<const TranslatedBlock> blocks) {
    std::string out;
    for (const TranslatedBlock& block : blocks) {
        const std::string text = trimmed(block.target, Trim::blanksAndLineBreaks);
        if (text.empty()) continue;
        if (!out.empty()) out += '\n';
        out += text;
    }
    return out;
}

} // namespace tosvar
