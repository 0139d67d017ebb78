#include "RecentCaptures.h"

#include "CaptureFileKinds.h"
#include "CaptureOutputPolicy.h"
#include "CaptureSaveFolder.h"

#include <algorithm>

namespace tosvar {

namespace {

void sortNewestFirst(std::vector<RecentCaptures::Entry>& entries) {
    std::stable_sort(entries.begin(), entries.end(),
                     [](const auto& a, const auto& b) { return a.addedAt > b.addedAt; });
}

} // namespace

void RecentCaptures::record(const std::filesystem::path& url) {
    const std::uint64_t size = files_.fileSize(url).value_or(0);
    std::erase_if(entries_, [&url](const Entry& e) { return e.url == url; });
    entries_.push_back({url, clock(), size});
    entries_ = trimmed(std::move(entries_));
    if (onRecorded) onRecorded();
}

void RecentCaptures::pruneMissing() {
    std::erase_if(entries_, [this](const Entry& e) { return !files_.exists(e.url); });
}

std::vector<std::filesystem::path> RecentCaptures::captureFolders(const BuildTarget& target) const {
    std::vector<std::filesystem::path> folders;
    auto add = [&folders](const std::filesystem::path& folder) {
        const auto normal = folder.lexically_normal();
        if (std::find(folders.begin(), folders.end(), normal) == folders.end()) folders.push_back(normal);
    };
    add(CaptureSaveFolder::captures().configuredURL(defaults_, files_));
    if (auto pictures = CaptureOutputPolicy::picturesFolder(target, files_)) add(*pictures);
    return folders;
}

void RecentCaptures::loadFromDisk(const BuildTarget& target) {
    std::vector<Entry> found;
    for (const auto& folder : captureFolders(target)) {
        auto files = files_.listFiles(folder);
        if (!files) continue; // an unreadable folder is skipped
        for (const auto& file : *files) {
            if (!CaptureFileKinds::isCapture(file.path)) continue;
            const Clock::time_point addedAt = file.modified == std::filesystem::file_time_type::min()
                                                  ? Clock::time_point{}
                                                  : std::chrono::time_point_cast<Clock::duration>(
                                                        std::chrono::file_clock::to_sys(file.modified));
            found.push_back({file.path, addedAt, file.size});
        }
    }
    entries_ = trimmed(std::move(found));
}

void RecentCaptures::enforceRetentionLimit(std::int64_t limit, const BuildTarget& target, CaptureDeletion& deletion) {
    if (limit < 1) return;
    const std::vector<Entry> over = excess(entries_, limit);
    if (over.empty()) return;
    std::vector<std::filesystem::path> urls;
    for (const Entry& entry : over) urls.push_back(entry.url);
    deletion.trashWithoutAsking(urls, [this, target](const std::optional<Error>&) { loadFromDisk(target); });
}

std::vector<RecentCaptures::Entry> RecentCaptures::trimmed(std::vector<Entry> entries) {
    sortNewestFirst(entries);
    if (entries.size() > maxEntries) entries.resize(maxEntries);
    return entries;
}

std::vector<RecentCaptures::Entry> RecentCaptures::excess(std::vector<Entry> entries, std::int64_t limit) {
    if (limit < 1 || static_cast<std::size_t>(limit) >= entries.size()) return {};
    sortNewestFirst(entries);
    entries.erase(entries.begin(), entries.begin() + limit);
    return entries;
}

} // namespace tosvar
