// Recordings a crash left unfinished: found at the next launch, oldest
// first, and kept as MP4s in the save folder or thrown away as the user says.
#include "IsolatedEnvironment.h"
#include "InMemoryDefaultsStore.h"
#include "InterruptedRecordings.h"
#include "LocalFileManager.h"
#include "RecordingFakes.h"

#include <gtest/gtest.h>

#include <fstream>
#include <thread>

namespace tosvar {
namespace {

struct Answering final : AlertPresenting {
    int answer = 0;
    std::vector<AlertRequest> asked;
    AlertResponse run(const AlertRequest& request, void*) override {
        asked.push_back(request);
        return {answer, false};
    }
};

class InterruptedRecordingsTest : public ::testing::Test {
protected:
    void SetUp() override {
        folder = InterruptedRecordings::folder(environment.root() / "state");
        std::filesystem::create_directories(folder);
    }
    std::filesystem::path leave(const std::string& name, const std::string& contents = "fragments") {
        std::ofstream(folder / name) << contents;
        return folder / name;
    }

    IsolatedEnvironment environment;
    std::filesystem::path folder;
    fakes::Files files;
    InMemoryDefaultsStore defaults;
    LocalFileManager fileManager;
    Answering alerts;
};

TEST_F(InterruptedRecordingsTest, FindsTheUnfinishedMoviesOldestFirst) {
    const std::filesystem::path older = leave("a.mov");
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    const std::filesystem::path newer = leave("b.mov");
    std::filesystem::last_write_time(older, std::filesystem::last_write_time(newer) - std::chrono::hours(1));
    leave("empty.mov", "");
    leave("notes.txt");
    EXPECT_EQ(InterruptedRecordings::find(folder), (std::vector<std::filesystem::path>{older, newer}));
    EXPECT_TRUE(InterruptedRecordings::find(environment.root() / "nowhere").empty());
}

TEST_F(InterruptedRecordingsTest, KeptOnesBecomeMP4sInTheSaveFolderAndDiscardedOnesGo) {
    const std::filesystem::path movie = leave("a.mov");
    alerts.answer = 0;
    const std::vector<std::filesystem::path> kept = InterruptedRecordings::offer({movie}, alerts, files, defaults, fileManager);
    ASSERT_EQ(kept.size(), 1u);
    EXPECT_TRUE(kept[0].filename().string().starts_with("Tosvar Recording ")) << kept[0];
    EXPECT_EQ(kept[0].extension(), ".mp4");
    EXPECT_TRUE(std::filesystem::exists(kept[0]));
    EXPECT_FALSE(std::filesystem::exists(movie)) << "the unfinished movie goes once saved";
    ASSERT_EQ(alerts.asked.size(), 1u);
    EXPECT_EQ(alerts.asked[0].informativeText.arguments, std::vector<std::string>{"1"});

    const std::filesystem::path other = leave("b.mov");
    alerts.answer = 1;
    EXPECT_TRUE(InterruptedRecordings::offer({other}, alerts, files, defaults, fileManager).empty());
    EXPECT_FALSE(std::filesystem::exists(other));

    const std::filesystem::path failing = leave("c.mov");
    files.failure = Error{"damaged"};
    alerts.answer = 0;
    EXPECT_TRUE(InterruptedRecordings::offer({failing}, alerts, files, defaults, fileManager).empty());
    EXPECT_TRUE(std::filesystem::exists(failing)) << "a movie that cannot be saved stays to be offered again";
    EXPECT_TRUE(InterruptedRecordings::offer({}, alerts, files, defaults, fileManager).empty());
    EXPECT_EQ(alerts.asked.size(), 3u) << "nothing to offer asks nothing";
}

} // namespace
} // namespace tosvar
