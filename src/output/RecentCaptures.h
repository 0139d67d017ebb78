#pragma once

#include "BuildTarget.h"
#include "CaptureDeletion.h"
#include "DefaultsStore.h"
#include "FileManager.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <vector>

namespace tosvar {

// The captures the user made, newest first, at most 500: rebuilt from the
// save folder and kept up to date as captures are delivered. The files are
// the truth; this list only mirrors them. Main thread only.
class RecentCaptures {
public:
    using Clock = std::chrono::system_clock;
    static constexpr std::size_t maxEntries = 500;

    struct Entry {
        std::filesystem::path url;
        Clock::time_point addedAt;
        std::uint64_t byteSize = 0;
        friend bool operator==(const Entry&, const Entry&) = default;
    };

    RecentCaptures(FileManager& files, DefaultsStore& defaults) : files_(files), defaults_(defaults) {}

    const std::vector<Entry>& entries() const { return entries_; }
    std::function<void()> onRecorded;
    std::function<Clock::time_point()> clock = [] { return Clock::now(); };

    // Adds or refreshes one capture; the same file twice stays one entry.
    void record(const std::filesystem::path& url);
    // Drops entries whose file is gone.
    void pruneMissing();
    // Rebuilds the list from the capture folders: images, movies and sound
    // files directly inside them, dated by their modification time.
    void loadFromDisk(const BuildTarget& target);
    // Moves the captures beyond the newest `limit` to the trash (never deletes
    // them), then reloads. A limit below 1 keeps everything.
    void enforceRetentionLimit(std::int64_t limit, const BuildTarget& target, CaptureDeletion& deletion);

    // The configured save folder, then the default one, without repeats: so
    // captures made before a change of folder keep showing.
    std::vector<std::filesystem::path> captureFolders(const BuildTarget& target) const;

    // Newest first (stable), at most 500.
    static std::vector<Entry> trimmed(std::vector<Entry> entries);
    // The entries beyond the newest `limit`, oldest last; none for a limit below 1
    // or not below the count.
    static std::vector<Entry> excess(std::vector<Entry> entries, std::int64_t limit);

private:
    FileManager& files_;
    DefaultsStore& defaults_;
    std::vector<Entry> entries_;
};

} // namespace tosvar
