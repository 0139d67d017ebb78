#pragma once

#include "DefaultsLayers.h"
#include "DefaultsStore.h"

#include <filesystem>
#include <mutex>

namespace tosvar {

// The product's preferences: one JSON object in a file, rewritten by atomic
// replace after every change. Bytes are stored as {"base64": "..."}.
//
// A file that is not a JSON object is never overwritten: it is renamed aside
// with a timestamp, logged, and the store starts from defaults. A file that
// exists but cannot be read leaves the store in memory only, so the user's
// file survives whatever went wrong. Safe to use from any thread.
class JsonFileDefaultsStore final : public DefaultsStore {
public:
    explicit JsonFileDefaultsStore(std::filesystem::path file);

    // The application's own store at $XDG_CONFIG_HOME/tosvar/defaults.json.
    static std::filesystem::path standardPath();

    std::optional<DefaultsValue> value(const std::string& key) const override;
    void set(const std::string& key, DefaultsValue value) override;
    void set(const std::map<std::string, DefaultsValue>& values) override;
    void remove(const std::string& key) override;
    void registerDefaults(const std::map<std::string, DefaultsValue>& defaults) override;

    const std::filesystem::path& path() const { return file_; }
    // False when the file could not be read and changes stay in memory.
    bool persists() const { return persists_; }

private:
    void load();
    void persistLocked();

    std::filesystem::path file_;
    mutable std::mutex mutex_;
    DefaultsLayers layers_;
    bool persists_ = true;
};

} // namespace tosvar
