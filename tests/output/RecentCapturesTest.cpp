#include "RecentCaptures.h"

#include "CaptureSaveFolder.h"
#include "InMemoryDefaultsStore.h"
#include "IsolatedEnvironment.h"
#include "LocalFileManager.h"

#include <fstream>

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
    InMemoryDefaultsStore defaults;
    RecentCaptures recents(files, defaults);
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

namespace {

// Moves nothing anywhere: removes the file, as far as the list can tell the same.
struct RemovingTrash final : FileTrash {
    std::vector<std::filesystem::path> trashed;
    std::optional<Error> moveToTrash(const std::filesystem::path& file) override {
        trashed.push_back(file);
        std::filesystem::remove(file);
        return std::nullopt;
    }
};

struct NeverAsked final : AlertPresenting {
    AlertResponse run(const AlertRequest&, void*) override { return {}; }
};

void writeFile(const std::filesystem::path& path, int ageSeconds, std::size_t size = 3) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path) << std::string(size, 'x');
    std::filesystem::last_write_time(path, std::filesystem::file_time_type::clock::now() - std::chrono::seconds(ageSeconds));
}

class RecentCapturesDiskTest : public ::testing::Test {
protected:
    IsolatedEnvironment environment;
    LocalFileManager files;
    InMemoryDefaultsStore defaults;
    RecentCaptures recents{files, defaults};
    std::filesystem::path pictures = environment.root() / "home" / "Pictures" / "Tosvar";
    std::filesystem::path chosen = environment.root() / "chosen";
};

} // namespace

TEST_F(RecentCapturesDiskTest, LoadsCapturesOfBothFoldersNewestFirst) {
    writeFile(pictures / "old.png", 300, 10);
    writeFile(pictures / ".hidden.png", 1);
    writeFile(pictures / "notes.txt", 1);
    writeFile(chosen / "clip.mp4", 100);
    writeFile(chosen / "voice.M4A", 200);
    ASSERT_TRUE(CaptureSaveFolder::captures().setFolder(chosen, defaults, files));

    recents.loadFromDisk(BuildTarget::current());
    std::vector<std::string> names;
    for (const auto& entry : recents.entries()) names.push_back(entry.url.filename().string());
    EXPECT_EQ(names, (std::vector<std::string>{"clip.mp4", "voice.M4A", "old.png"}));
    EXPECT_EQ(recents.entries().back().byteSize, 10u);
    EXPECT_EQ(recents.captureFolders(BuildTarget::current()), (std::vector<std::filesystem::path>{chosen, pictures}));
}

TEST_F(RecentCapturesDiskTest, AMissingFolderIsSkipped) {
    ASSERT_TRUE(std::filesystem::create_directories(chosen));
    ASSERT_TRUE(CaptureSaveFolder::captures().setFolder(chosen, defaults, files));
    std::filesystem::remove_all(chosen);
    writeFile(pictures / "a.png", 5);
    recents.loadFromDisk(BuildTarget::current());
    EXPECT_EQ(recents.entries().size(), 1u);
}

TEST_F(RecentCapturesDiskTest, RetentionLimitTrashesTheOldestAndReloads) {
    for (int i = 0; i < 5; ++i) writeFile(pictures / ("shot" + std::to_string(i) + ".png"), 100 - i);
    recents.loadFromDisk(BuildTarget::current());
    RemovingTrash trash;
    NeverAsked alerts;
    CaptureDeletion deletion(defaults, alerts, trash);

    recents.enforceRetentionLimit(0, BuildTarget::current(), deletion);
    EXPECT_TRUE(trash.trashed.empty());
    recents.enforceRetentionLimit(3, BuildTarget::current(), deletion);
    EXPECT_EQ(trash.trashed, (std::vector<std::filesystem::path>{pictures / "shot1.png", pictures / "shot0.png"}));
    ASSERT_EQ(recents.entries().size(), 3u);
    EXPECT_EQ(recents.entries().front().url, pictures / "shot4.png");
}
