#include "RecentCaptures.h"

#include "LocalFileManager.h"

#include <gtest/gtest.h>

using namespace tosvar;
using Entry = RecentCaptures::Entry;

namespace {

RecentCaptures::Clock::time_point at(int seconds) { return RecentCaptures::Clock::time_point(std::chrono::seconds(seconds)); }

std::vector<Entry> entries(int count) {
    std::vector<Entry> list;
    for (int i = 0; i < count; ++i) list.push_back({"/c/" + std::to_string(i) + ".png", at(i), 1});
    return list;
}

} // namespace

TEST(RecentCaptures, TrimmedIsNewestFirstAndStableAndCapped) {
    std::vector<Entry> list = entries(600);
    list.push_back({"/c/tie-a.png", at(599), 1});
    const auto result = RecentCaptures::trimmed(list);
    ASSERT_EQ(result.size(), 500u);
    EXPECT_EQ(result[0].url, "/c/599.png"); // equal dates keep their order
    EXPECT_EQ(result[1].url, "/c/tie-a.png");
    EXPECT_EQ(result.back().addedAt, at(101));
}

TEST(RecentCaptures, ExcessIsWhatLiesBeyondTheLimit) {
    EXPECT_TRUE(RecentCaptures::excess(entries(5), 0).empty());
    EXPECT_TRUE(RecentCaptures::excess(entries(5), 5).empty());
    EXPECT_TRUE(RecentCaptures::excess(entries(5), 9).empty());
    const auto over = RecentCaptures::excess(entries(5), 2);
    ASSERT_EQ(over.size(), 3u);
    EXPECT_EQ(over.front().url, "/c/2.png");
    EXPECT_EQ(over.back().url, "/c/0.png"); // oldest last
}

TEST(RecentCaptures, RecordReplacesTheSameFileAndPruneDropsTheMissing) {
    LocalFileManager files;
    RecentCaptures recents(files);
    int clockSeconds = 0;
    int notified = 0;
    recents.clock = [&] { return at(++clockSeconds); };
    recents.onRecorded = [&] { ++notified; };
    recents.record("/nowhere/a.png");
    recents.record("/nowhere/b.png");
    recents.record("/nowhere/a.png");
    ASSERT_EQ(recents.entries().size(), 2u);
    EXPECT_EQ(recents.entries()[0].url, "/nowhere/a.png");
    EXPECT_EQ(recents.entries()[0].byteSize, 0u); // unknown size
    EXPECT_EQ(notified, 3);
    recents.pruneMissing();
    EXPECT_TRUE(recents.entries().empty());
}
