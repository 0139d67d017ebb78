#include "RecentCaptures.h"

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
