#pragma once

#include "DefaultsLayers.h"
#include "DefaultsStore.h"

namespace tosvar {

// A defaults store that lives in memory, with a count of writes so tests can
// tell whether something was saved.
class InMemoryDefaultsStore final : public DefaultsStore {
public:
    std::optional<DefaultsValue> value(const std::string& key) const override { return layers_.lookup(key); }
    void set(const std::string& key, DefaultsValue value) override;
    void set(const std::map<std::string, DefaultsValue>& values) override;
    void remove(const std::string& key) override;
    void registerDefaults(const std::map<std::string, DefaultsValue>& defaults) override {
        layers_.registerAll(defaults);
    }

    const DefaultsLayers& layers() const { return layers_; }
    int writeCount() const { return writes_; }

private:
    DefaultsLayers layers_;
    int writes_ = 0;
};

} // namespace tosvar
