#pragma once

#include <array>
#include <optional>
#include <string_view>
#include <utility>

namespace tosvar {

// Text forms of an enumeration, as stored in settings and documents.
// Specialise it next to the enumeration:
//   template <> struct RawEnum<Corner> {
//       static constexpr std::array table{std::pair{Corner::topLeft, std::string_view("topLeft")}, ...};
//   };
template <typename E>
struct RawEnum;

template <typename E>
constexpr std::string_view rawValue(E value) {
    for (const auto& [candidate, text] : RawEnum<E>::table)
        if (candidate == value) return text;
    return {};
}

template <typename E>
constexpr std::optional<E> enumFromRaw(std::string_view text) {
    for (const auto& [candidate, raw] : RawEnum<E>::table)
        if (raw == text) return candidate;
    return std::nullopt;
}

} // namespace tosvar
