#pragma once

#include <cstddef>
#include <functional>

namespace tosvar {

inline void hashCombine(std::size_t& seed, std::size_t value) {
    seed ^= value + 0x9e3779b97f4a7c15ULL + (seed << 6) + (seed >> 2);
}

// Hashes several values into one, in order. +0.0 and -0.0 compare equal, so
// doubles are normalised before hashing to keep hash and equality consistent.
template <typename... Values>
std::size_t hashValues(const Values&... values) {
    std::size_t seed = 0;
    auto one = [&seed]<typename V>(const V& v) {
        if constexpr (std::is_floating_point_v<V>) {
            hashCombine(seed, std::hash<V>{}(v == 0 ? V(0) : v));
        } else {
            hashCombine(seed, std::hash<V>{}(v));
        }
    };
    (one(values), ...);
    return seed;
}

} // namespace tosvar
