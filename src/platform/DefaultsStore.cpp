#include "DefaultsStore.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>

namespace tosvar {

namespace DefaultsConversion {

namespace {

template <typename Number>
std::optional<Number> parseWhole(const std::string& text) {
    Number number{};
    const char* end = text.data() + text.size();
    auto [ptr, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || ptr != end || text.empty()) return std::nullopt;
    return number;
}

} // namespace

std::optional<bool> toBoolean(const DefaultsValue& value) {
    if (auto b = std::get_if<bool>(&value)) return *b;
    if (auto i = std::get_if<std::int64_t>(&value)) return *i != 0;
    if (auto d = std::get_if<double>(&value)) return *d != 0;
    if (auto s = std::get_if<std::string>(&value)) {
        if (*s == "true" || *s == "YES" || *s == "yes" || *s == "1") return true;
        if (*s == "false" || *s == "NO" || *s == "no" || *s == "0") return false;
    }
    return std::nullopt;
}

std::optional<std::int64_t> toInteger(const DefaultsValue& value) {
    if (auto i = std::get_if<std::int64_t>(&value)) return *i;
    if (auto b = std::get_if<bool>(&value)) return *b ? 1 : 0;
    if (auto d = std::get_if<double>(&value)) {
        // 2^63 is exactly representable; anything at or past it does not fit.
        constexpr double limit = 9223372036854775808.0;
        if (!std::isfinite(*d) || *d != std::trunc(*d) || *d >= limit || *d < -limit) return std::nullopt;
        return static_cast<std::int64_t>(*d);
    }
    if (auto s = std::get_if<std::string>(&value)) return parseWhole<std::int64_t>(*s);
    return std::nullopt;
}

std::optional<double> toReal(const DefaultsValue& value) {
    if (auto d = std::get_if<double>(&value)) return *d;
    if (auto i = std::get_if<std::int64_t>(&value)) return static_cast<double>(*i);
    if (auto s = std::get_if<std::string>(&value)) {
        auto d = parseWhole<double>(*s);
        if (d && std::isfinite(*d)) return d;
    }
    return std::nullopt;
}

std::optional<std::string> toString(const DefaultsValue& value) {
    if (auto s = std::get_if<std::string>(&value)) return *s;
    if (auto i = std::get_if<std::int64_t>(&value)) return std::to_string(*i);
    if (auto d = std::get_if<double>(&value)) {
        char buffer[32];
        auto [end, error] = std::to_chars(buffer, buffer + sizeof buffer, *d);
        if (error == std::errc()) return std::string(buffer, end);
    }
    return std::nullopt;
}

} // namespace DefaultsConversion

namespace {

// The stored (or registered) value of `key`, converted; none when either is missing.
template <typename T>
std::optional<T> readAs(const DefaultsStore& store, const std::string& key,
                        std::optional<T> (*convert)(const DefaultsValue&)) {
    const std::optional<DefaultsValue> value = store.value(key);
    return value ? convert(*value) : std::nullopt;
}

std::optional<Bytes> toBytes(const DefaultsValue& value) {
    if (const auto* bytes = std::get_if<Bytes>(&value)) return *bytes;
    return std::nullopt;
}

} // namespace

std::optional<bool> DefaultsStore::boolean(const std::string& key) const {
    return readAs(*this, key, DefaultsConversion::toBoolean);
}

std::optional<std::int64_t> DefaultsStore::integer(const std::string& key) const {
    return readAs(*this, key, DefaultsConversion::toInteger);
}

std::optional<double> DefaultsStore::real(const std::string& key) const {
    return readAs(*this, key, DefaultsConversion::toReal);
}

std::optional<std::string> DefaultsStore::string(const std::string& key) const {
    return readAs(*this, key, DefaultsConversion::toString);
}

std::optional<Bytes> DefaultsStore::bytes(const std::string& key) const { return readAs(*this, key, toBytes); }

std::optional<std::string> DefaultsStore::recordText(const std::string& key) const {
    const std::optional<DefaultsValue> stored = value(key);
    if (!stored) return std::nullopt;
    if (const auto* text = std::get_if<std::string>(&*stored)) return *text;
    if (const auto* data = std::get_if<Bytes>(&*stored)) return std::string(data->begin(), data->end());
    return std::nullopt;
}

} // namespace tosvar
