#include "InMemoryDefaultsStore.h"

namespace tosvar {

void InMemoryDefaultsStore::set(const std::string& key, DefaultsValue value) {
    layers_.stored.insert_or_assign(key, std::move(value));
    ++writes_;
}

void InMemoryDefaultsStore::set(const std::map<std::string, DefaultsValue>& values) {
    for (const auto& [key, value] : values) layers_.stored.insert_or_assign(key, value);
    ++writes_;
}

void InMemoryDefaultsStore::remove(const std::string& key) {
    if (layers_.stored.erase(key) > 0) ++writes_;
}

} // namespace tosvar
