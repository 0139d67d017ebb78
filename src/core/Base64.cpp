#include "Base64.h"

#include <array>

namespace tosvar::Base64 {

namespace {

constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr std::array<std::int8_t, 256> makeDecodeTable() {
    std::array<std::int8_t, 256> table{};
    for (auto& v : table) v = -1;
    for (int i = 0; i < 64; ++i) table[static_cast<unsigned char>(alphabet[i])] = static_cast<std::int8_t>(i);
    return table;
}

constexpr auto decodeTable = makeDecodeTable();

} // namespace

std::string encode(std::span<const std::uint8_t> bytes) {
    std::string out;
    out.reserve((bytes.size() + 2) / 3 * 4);
    std::size_t i = 0;
    for (; i + 3 <= bytes.size(); i += 3) {
        const std::uint32_t v = std::uint32_t(bytes[i]) << 16 | std::uint32_t(bytes[i + 1]) << 8 | bytes[i + 2];
        out += alphabet[v >> 18 & 63];
        out += alphabet[v >> 12 & 63];
        out += alphabet[v >> 6 & 63];
        out += alphabet[v & 63];
    }
    const std::size_t rest = bytes.size() - i;
    if (rest > 0) {
        std::uint32_t v = std::uint32_t(bytes[i]) << 16;
        if (rest == 2) v |= std::uint32_t(bytes[i + 1]) << 8;
        out += alphabet[v >> 18 & 63];
        out += alphabet[v >> 12 & 63];
        out += rest == 2 ? alphabet[v >> 6 & 63] : '=';
        out += '=';
    }
    return out;
}

Expected<std::vector<std::uint8_t>> decode(std::string_view text) {
    std::size_t length = text.size();
    std::size_t padding = 0;
    while (length > 0 && text[length - 1] == '=' && padding < 2) {
        --length;
        ++padding;
    }
    if (padding > 0 && text.size() % 4 != 0)
        return Error{"base64: padded text has " + std::to_string(text.size()) + " characters, not a multiple of 4"};
    if (length % 4 == 1) return Error{"base64: " + std::to_string(length) + " characters leave a dangling 6 bits"};

    std::vector<std::uint8_t> out;
    out.reserve(length / 4 * 3 + 2);
    std::uint32_t accumulator = 0;
    int bits = 0;
    for (std::size_t i = 0; i < length; ++i) {
        const std::int8_t v = decodeTable[static_cast<unsigned char>(text[i])];
        if (v < 0) return Error{"base64: invalid character at offset " + std::to_string(i)};
        accumulator = accumulator << 6 | static_cast<std::uint32_t>(v);
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            out.push_back(static_cast<std::uint8_t>(accumulator >> bits));
            accumulator &= (1u << bits) - 1;
        }
    }
    return out;
}

} // namespace tosvar::Base64
