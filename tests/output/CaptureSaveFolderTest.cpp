#include "CaptureOutputPolicy.h"
#include "CaptureSaveFolder.h"

#include "InMemoryDefaultsStore.h"
#include "IsolatedEnvironment.h"
#include "LocalFileManager.h"
#include "Log.h"
#include "ScriptedFileManager.h"

#include <gtest/gtest.h>

#include <fstream>

using namespace tosvar;

namespace {

class CaptureSaveFolderTest : public ::testing::Test {
protected:
    void SetUp() override {
        setLogSink([this](std::string_view line) { logged.emplace_back(line); });
        files.pictures = environment.root() / "home" / "Pictures";
    }
    void TearDown() override { setLogSink(nullptr); }

    std::filesystem::path saveOnce() {
        auto written = CaptureOutputPolicy::writePNGToDisk(Bytes{1, 2, 3}, CaptureOutputPolicy::Clock::now(),
                                                           BuildTarget::current(), defaults, files);
        EXPECT_TRUE(written) << (written ? "" : written.error().message);
        return written ? *written : std::filesystem::path();
    }

    const CaptureSaveFolder& folder = CaptureSaveFolder::captures();
    IsolatedEnvironment environment;
    InMemoryDefaultsStore defaults;
    ScriptedFileManager files;
    std::vector<std::string> logged;
    std::filesystem::path defaultFolder = environment.root() / "home" / "Pictures" / "Tosvar";
};

} // namespace

TEST_F(CaptureSaveFolderTest, DefaultFolderIsPicturesPlusProductName) {
    EXPECT_FALSE(folder.hasCustomFolder(defaults, files));
    EXPECT_EQ(folder.configuredURL(defaults, files), defaultFolder);
    EXPECT_FALSE(std::filesystem::exists(defaultFolder)); // showing it creates nothing
    EXPECT_EQ(saveOnce().parent_path(), defaultFolder);
}

TEST_F(CaptureSaveFolderTest, ARemovedVolumeFallsBackAndTheChoiceReturnsWithIt) {
    const auto chosen = environment.root() / "usb" / "Captures";
    std::filesystem::create_directories(chosen);
    ASSERT_TRUE(folder.setFolder(chosen, defaults, files));
    const Bytes bookmark = *defaults.bytes("capture.saveFolderBookmark");
    EXPECT_EQ(saveOnce().parent_path(), chosen);

    std::filesystem::remove_all(environment.root() / "usb"); // unplugged
    EXPECT_EQ(saveOnce().parent_path(), defaultFolder);
    EXPECT_FALSE(std::filesystem::exists(chosen)); // never recreated in its absence
    ASSERT_FALSE(logged.empty());
    EXPECT_TRUE(logged.back().starts_with("configured folder unusable (")) << logged.back();
    EXPECT_NE(logged.back().find("; falling back to the default"), std::string::npos);
    EXPECT_EQ(defaults.bytes("capture.saveFolderBookmark"), bookmark); // the choice stays

    std::filesystem::create_directories(chosen); // plugged in again
    EXPECT_EQ(saveOnce().parent_path(), chosen);
    EXPECT_TRUE(folder.hasCustomFolder(defaults, files));
}

TEST_F(CaptureSaveFolderTest, StaleBookmarkIsRefreshedAtFirstUse) {
    const auto chosen = environment.root() / "chosen";
    std::filesystem::create_directories(chosen);
    ASSERT_TRUE(folder.setFolder(chosen, defaults, files));
    const Bytes original = *defaults.bytes("capture.saveFolderBookmark");
    std::filesystem::rename(chosen, environment.root() / "moved-away");
    std::filesystem::create_directories(chosen); // same path, another folder
    EXPECT_EQ(saveOnce().parent_path(), chosen);
    const Bytes refreshed = *defaults.bytes("capture.saveFolderBookmark");
    EXPECT_NE(refreshed, original);
    EXPECT_FALSE(files.resolveFolderBookmark(refreshed)->stale);
}

TEST_F(CaptureSaveFolderTest, AFailedRefreshDoesNotBlockTheSave) {
    const auto chosen = environment.root() / "chosen";
    std::filesystem::create_directories(chosen);
    ASSERT_TRUE(folder.setFolder(chosen, defaults, files));
    const Bytes original = *defaults.bytes("capture.saveFolderBookmark");
    std::filesystem::rename(chosen, environment.root() / "moved-away");
    std::filesystem::create_directories(chosen);
    files.bookmarkError = Error{"bookmark service unavailable"};
    EXPECT_EQ(saveOnce().parent_path(), chosen);
    EXPECT_EQ(defaults.bytes("capture.saveFolderBookmark"), original);
}

TEST_F(CaptureSaveFolderTest, LegacyPathIsMigratedAndLosesToABookmark) {
    const auto legacy = environment.root() / "legacy";
    const auto chosen = environment.root() / "chosen";
    std::filesystem::create_directories(legacy);
    std::filesystem::create_directories(chosen);

    defaults.set("capture.saveFolder", legacy.string());
    EXPECT_TRUE(folder.hasCustomFolder(defaults, files));
    EXPECT_FALSE(defaults.contains("capture.saveFolder"));
    EXPECT_EQ(folder.configuredURL(defaults, files), legacy);

    ASSERT_TRUE(folder.setFolder(chosen, defaults, files));
    defaults.set("capture.saveFolder", legacy.string());
    EXPECT_EQ(saveOnce().parent_path(), chosen); // the bookmark wins
    EXPECT_FALSE(defaults.contains("capture.saveFolder"));
}

TEST_F(CaptureSaveFolderTest, LegacyPathThatCannotBeBookmarkedStays) {
    defaults.set("capture.saveFolder", (environment.root() / "gone").string());
    EXPECT_FALSE(folder.hasCustomFolder(defaults, files));
    EXPECT_TRUE(defaults.contains("capture.saveFolder"));
    ASSERT_EQ(logged.size(), 1u);
    EXPECT_EQ(logged[0], "could not migrate capture.saveFolder to a bookmark");
}

TEST_F(CaptureSaveFolderTest, ChoosingAFileKeepsThePreviousChoice) {
    const auto chosen = environment.root() / "chosen";
    std::filesystem::create_directories(chosen);
    ASSERT_TRUE(folder.setFolder(chosen, defaults, files));
    const auto notAFolder = environment.root() / "file.txt";
    std::ofstream(notAFolder) << "x";
    EXPECT_FALSE(folder.setFolder(notAFolder, defaults, files));
    EXPECT_EQ(folder.configuredURL(defaults, files), chosen);
    EXPECT_EQ(logged.back(), "could not bookmark capture folder " + notAFolder.string() + "; keeping previous choice");
    folder.reset(defaults);
    EXPECT_EQ(folder.configuredURL(defaults, files), defaultFolder);
}

TEST_F(CaptureSaveFolderTest, ChosenFolderReplacedByAFileFallsBack) {
    const auto chosen = environment.root() / "chosen";
    std::filesystem::create_directories(chosen);
    ASSERT_TRUE(folder.setFolder(chosen, defaults, files));
    std::filesystem::remove_all(chosen);
    std::ofstream(chosen) << "x";
    EXPECT_EQ(saveOnce().parent_path(), defaultFolder);
}

TEST(UserDirectories, PicturesFromTheDesktopConfig) {
    const std::filesystem::path home = "/home/ada";
    const std::string config = "# comment\nXDG_DESKTOP_DIR=\"$HOME/Desktop\"\nXDG_PICTURES_DIR=\"$HOME/Bilder\"\n";
    EXPECT_EQ(userDirectoryFromConfig(config, "XDG_PICTURES_DIR", home), home / "Bilder");
    EXPECT_EQ(userDirectoryFromConfig("XDG_PICTURES_DIR=\"/srv/pics\"", "XDG_PICTURES_DIR", home), "/srv/pics");
    EXPECT_EQ(userDirectoryFromConfig("XDG_PICTURES_DIR=\"$HOME/\"", "XDG_PICTURES_DIR", home), std::nullopt);
    EXPECT_EQ(userDirectoryFromConfig("XDG_PICTURES_DIRX=\"$HOME/a\"", "XDG_PICTURES_DIR", home), std::nullopt);
    EXPECT_EQ(userDirectoryFromConfig("XDG_PICTURES_DIR=$HOME/a", "XDG_PICTURES_DIR", home), std::nullopt);
    EXPECT_EQ(userDirectoryFromConfig("", "XDG_PICTURES_DIR", home), std::nullopt);
}

TEST(FolderBookmarks, GarbageIsAnErrorNotACrash) {
    LocalFileManager files;
    for (const std::string text : {"", "{", "[]", "{\"path\": 3}", "{\"path\": \"/\", \"device\": -1, \"inode\": 1}"}) {
        EXPECT_FALSE(files.resolveFolderBookmark(Bytes(text.begin(), text.end()))) << text;
    }
}
