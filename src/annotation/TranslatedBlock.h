#pragma once

#include <optional>
#include <span>
#include <string>

namespace tosvar {

// One recognised block of text and its translation, laid over the image.
struct TranslatedBlock {
    std::string source;
    std::string target; // empty while no translation has arrived
    std::optional<std::string> sourceLanguage;
    std::string targetLanguage;
    bool showsSource = false;
    bool fontSizeLocked = false; // the user chose the size, so refits leave it alone
    std::optional<std::string> marker; // the list marker the source began with
    bool isHidden = false;             // neither drawn nor hit

    // The translation, or the source when it is asked for or nothing has arrived.
    const std::string& displayedText() const;
    // The translation without the list marker it begins with, trimmed of blanks.
    std::string translationBody() const;

    friend bool operator==(const TranslatedBlock&, const TranslatedBlock&) = default;
};

std::size_t hashValue(const TranslatedBlock& block);

namespace TranslatedBlockText {

// Every block's translation trimmed of white space and line breaks, the empty
// ones dropped, joined by line feeds.
std::string joined(std::span<const TranslatedBlock> blocks);

} // namespace TranslatedBlockText

} // namespace tosvar

template <>
struct std::hash<tosvar::TranslatedBlock> {
    std::size_t operator()(const tosvar::TranslatedBlock& b) const noexcept { return tosvar::hashValue(b); }
};
