#include "Uuid.h"

#include <mutex>
#include <random>

namespace tosvar {

namespace {

int hexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

bool isGroupBreak(std::size_t index) { return index == 8 || index == 13 || index == 18 || index == 23; }

} // namespace

Uuid Uuid::random() {
    static std::mutex mutex;
    static std::mt19937_64 engine{[] {
        std::random_device device;
        std::seed_seq seed{device(), device(), device(), device(), device(), device(), device(), device()};
        return std::mt19937_64(seed);
    }()};
    std::array<std::uint8_t, 16> bytes;
    {
        std::lock_guard lock(mutex);
        const std::uint64_t hi = engine();
        const std::uint64_t lo = engine();
        for (int i = 0; i < 8; ++i) {
            bytes[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(hi >> (56 - 8 * i));
            bytes[static_cast<std::size_t>(8 + i)] = static_cast<std::uint8_t>(lo >> (56 - 8 * i));
        }
    }
    bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0f) | 0x40); // version 4
    bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3f) | 0x80); // RFC 4122 variant
    return Uuid(bytes);
}

std::optional<Uuid> Uuid::parse(std::string_view text) {
    if (text.size() != 36) return std::nullopt;
    std::array<std::uint8_t, 16> bytes{};
    std::size_t out = 0;
    for (std::size_t i = 0; i < text.size();) {
        if (isGroupBreak(i)) {
            if (text[i] != '-') return std::nullopt;
            ++i;
            continue;
        }
        const int hi = hexValue(text[i]);
        const int lo = hexValue(text[i + 1]);
        if (hi < 0 || lo < 0 || isGroupBreak(i + 1)) return std::nullopt;
        bytes[out++] = static_cast<std::uint8_t>(hi << 4 | lo);
        i += 2;
    }
    return Uuid(bytes);
}

std::string Uuid::string() const {
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string text;
    text.reserve(36);
    for (std::size_t i = 0; i < bytes_.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) text.push_back('-');
        text.push_back(digits[bytes_[i] >> 4]);
        text.push_back(digits[bytes_[i] & 0x0f]);
    }
    return text;
}

} // namespace tosvar
