#pragma once

#include "HashCombine.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tosvar {

// A 128-bit identifier. Read in either letter case, always written in upper
// case with the usual 8-4-4-4-12 grouping.
class Uuid {
public:
    Uuid() = default; // all zero
    explicit Uuid(const std::array<std::uint8_t, 16>& bytes) : bytes_(bytes) {}

    // A random version-4 identifier.
    static Uuid random();
    static std::optional<Uuid> parse(std::string_view text);

    std::string string() const;
    const std::array<std::uint8_t, 16>& bytes() const { return bytes_; }

    friend bool operator==(const Uuid&, const Uuid&) = default;
    friend auto operator<=>(const Uuid&, const Uuid&) = default;

private:
    std::array<std::uint8_t, 16> bytes_{};
};

} // namespace tosvar

template <>
struct std::hash<tosvar::Uuid> {
    std::size_t operator()(const tosvar::Uuid& u) const noexcept {
        std::size_t seed = 0;
        for (std::uint8_t b : u.bytes()) tosvar::hashCombine(seed, b);
        return seed;
    }
};
