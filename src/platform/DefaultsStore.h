#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace tosvar {

using Bytes = std::vector<std::uint8_t>;

// One stored setting. Integers and doubles stay distinct so that a value
// written as 4 reads back as the integer 4.
using DefaultsValue = std::variant<bool, std::int64_t, double, std::string, Bytes>;

// A typed key-value store of user preferences with two layers: values the user
// (or the program) stored, and registered defaults that answer for a key with
// no stored value. Registered defaults are never persisted.
//
// Typed reads answer none when the key has no value in either layer, or when
// the value cannot be read as the type asked for: a Boolean reads from a
// number (non-zero is true) or from "true"/"false"/"YES"/"NO"/"1"/"0"; an
// integer reads from a whole double, a Boolean or a decimal text; a double
// from an integer or a decimal text; a text from a text or a number.
class DefaultsStore {
public:
    virtual ~DefaultsStore() = default;

    // The stored value, or else the registered default.
    virtual std::optional<DefaultsValue> value(const std::string& key) const = 0;
    virtual void set(const std::string& key, DefaultsValue value) = 0;
    // Stores several values at once (one write for a persistent store).
    virtual void set(const std::map<std::string, DefaultsValue>& values) = 0;
    virtual void remove(const std::string& key) = 0;
    // Replaces entries of the default layer; stored values keep precedence.
    virtual void registerDefaults(const std::map<std::string, DefaultsValue>& defaults) = 0;

    bool contains(const std::string& key) const { return value(key).has_value(); }
    std::optional<bool> boolean(const std::string& key) const;
    std::optional<std::int64_t> integer(const std::string& key) const;
    std::optional<double> real(const std::string& key) const;
    std::optional<std::string> string(const std::string& key) const;
    std::optional<Bytes> bytes(const std::string& key) const;
    // A record kept as text: a text value, or the bytes of a data value read
    // as text. None for anything else.
    std::optional<std::string> recordText(const std::string& key) const;
};

// The value conversions behind the typed reads, usable on any value.
namespace DefaultsConversion {
std::optional<bool> toBoolean(const DefaultsValue& value);
std::optional<std::int64_t> toInteger(const DefaultsValue& value);
std::optional<double> toReal(const DefaultsValue& value);
std::optional<std::string> toString(const DefaultsValue& value);
} // namespace DefaultsConversion

} // namespace tosvar
