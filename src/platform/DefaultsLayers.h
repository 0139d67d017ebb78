#pragma once

#include "DefaultsStore.h"

#include <map>
#include <optional>
#include <string>

namespace tosvar {

// The two layers every defaults store keeps: what was stored, and what was
// registered as a default. Plain data; the stores add locking and persistence.
struct DefaultsLayers {
    std::map<std::string, DefaultsValue> stored;
    std::map<std::string, DefaultsValue> registered;

    std::optional<DefaultsValue> lookup(const std::string& key) const {
        if (auto it = stored.find(key); it != stored.end()) return it->second;
        if (auto it = registered.find(key); it != registered.end()) return it->second;
        return std::nullopt;
    }

    void registerAll(const std::map<std::string, DefaultsValue>& defaults) {
        for (const auto& [key, value] : defaults) registered.insert_or_assign(key, value);
    }
};

} // namespace tosvar
