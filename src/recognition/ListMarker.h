#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace tosvar {

// List markers at the head of a text: bullets ("•", "-"), circled and
// parenthesised numbers, and numbered or lettered items ("12.", "a)",
// "IV.", "一、").
namespace ListMarker {

// The marker with its delimiter, and the body behind it; none without a marker.
std::optional<std::pair<std::string, std::string>> split(std::string_view text);
inline bool startsListItem(std::string_view text) { return split(text).has_value(); }
// The marker put back before a body: directly after CJK punctuation, else after one blank.
std::string prefix(std::string_view marker, std::string_view body);

} // namespace ListMarker

} // namespace tosvar
