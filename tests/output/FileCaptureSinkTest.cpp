#include "FileCaptureSink.h"

#include "FakePasteboard.h"
#include "FileContents.h"
#include "InMemoryDefaultsStore.h"
#include "IsolatedEnvironment.h"
#include "Log.h"
#include "ScriptedFileManager.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <ctime>

using namespace tosvar;

namespace {

using Clock = CaptureOutputPolicy::Clock;

// 2026-11-18 10:00:00 UTC.
constexpr std::time_t fixedMoment = 1794996000;

class FileCaptureSinkTest : public ::testing::Test {
protected:
    void SetUp() override {
        ::setenv("TZ", "UTC", 1);
        ::tzset();
        setLogSink([this](std::string_view line) { logged.emplace_back(line); });
        files.pictures = environment.root() / "home" / "Pictures";
        sink.now = [] { return Clock::from_time_t(fixedMoment); };
        sink.onDelivered = [this](const CaptureDelivery& d) { deliveries.push_back(d); };
    }
    void TearDown() override { setLogSink(nullptr); }

    std::filesystem::path defaultFolder() const { return environment.root() / "home" / "Pictures" / "Tosvar"; }

    IsolatedEnvironment environment;
    InMemoryDefaultsStore defaults;
    ScriptedFileManager files;
    FakePasteboard pasteboard;
    OwnPasteboardLedger ledger;
    RecentCaptures recents{files, defaults};
    std::vector<std::pair<std::string, double>> toasts;
    FileCaptureSink sink{recents, pasteboard, ledger, defaults, files,
                         [this](std::string_view key, double seconds) { toasts.emplace_back(key, seconds); }};
    std::vector<CaptureDelivery> deliveries;
    std::vector<std::string> logged;
    const Bytes png{0x89, 'P', 'N', 'G', 1, 2, 3};
};

} // namespace

TEST_F(FileCaptureSinkTest, FileNameIsThePosixDateNeverLocalised) {
    ::setenv("LC_ALL", "de_DE.UTF-8", 1);
    EXPECT_EQ(CaptureOutputPolicy::screenshotFilename(Clock::from_time_t(fixedMoment), BuildTarget::current(), "png"),
              "Tosvar Screenshot 2026-11-18 at 10.00.00.png");
    ::unsetenv("LC_ALL");
}

TEST_F(FileCaptureSinkTest, ClipboardIsServedBeforeTheDisk) {
    std::vector<std::string> order;
    pasteboard.onWrite = [&] { order.push_back("clipboard"); };
    files.onWrite = [&](const std::filesystem::path&) { order.push_back("disk"); };
    sink.deliver(png, true);
    EXPECT_EQ(order, (std::vector<std::string>{"clipboard", "disk"}));

    const std::filesystem::path expected = defaultFolder() / "Tosvar Screenshot 2026-11-18 at 10.00.00.png";
    ASSERT_EQ(deliveries.size(), 1u);
    EXPECT_EQ(deliveries[0].fileURL, expected);
    EXPECT_TRUE(deliveries[0].copiedToClipboard);
    EXPECT_EQ(*deliveries[0].imageData(), png);
    EXPECT_EQ(sink.lastWrittenURL(), expected);
    EXPECT_EQ(readFileBytes(expected).value(), png);
    EXPECT_EQ(*pasteboard.contents.find("image/png"), png);
    EXPECT_EQ(ledger.ownWrite(pasteboard.changeCount()), OwnWriteKind::image);
    ASSERT_EQ(recents.entries().size(), 1u);
    EXPECT_EQ(recents.entries()[0].byteSize, png.size());
}

TEST_F(FileCaptureSinkTest, WithoutCopyTheClipboardIsLeftAlone) {
    sink.deliver(png, false);
    EXPECT_TRUE(pasteboard.writes.empty());
    ASSERT_EQ(deliveries.size(), 1u);
    EXPECT_FALSE(deliveries[0].copiedToClipboard);
    EXPECT_TRUE(deliveries[0].fileURL.has_value());
}

TEST_F(FileCaptureSinkTest, FailedWriteStillDeliversAndKeepsTheImageOnTheClipboard) {
    sink.deliver(png, true);
    const auto previous = sink.lastWrittenURL();
    files.writeError = Error{"no space left on device"};
    sink.deliver(png, true);
    ASSERT_EQ(deliveries.size(), 2u);
    EXPECT_FALSE(deliveries[1].fileURL.has_value());
    EXPECT_TRUE(deliveries[1].copiedToClipboard);
    EXPECT_EQ(*deliveries[1].imageData(), png);
    EXPECT_EQ(*pasteboard.contents.find("image/png"), png);
    EXPECT_EQ(toasts, (std::vector<std::pair<std::string, double>>{{"tosvar.toast.saveFailed", 1.6}}));
    EXPECT_EQ(sink.lastWrittenURL(), previous); // not cleared by a failure
    EXPECT_EQ(recents.entries().size(), 1u);
}

TEST_F(FileCaptureSinkTest, TwoCapturesInOneSecondGiveOneFileAndOneEntry) {
    sink.deliver(png, true);
    const Bytes second{9, 9, 9};
    sink.deliver(second, true);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(defaultFolder()), {}), 1);
    EXPECT_EQ(readFileBytes(*sink.lastWrittenURL()).value(), second);
    EXPECT_EQ(recents.entries().size(), 1u);
    EXPECT_EQ(recents.entries()[0].byteSize, second.size());
}

TEST_F(FileCaptureSinkTest, SaveFolderThatIsAFileGivesTheToastNotACrash) {
    std::filesystem::create_directories(defaultFolder().parent_path());
    {
        std::ofstream(defaultFolder()) << "not a folder";
    }
    sink.deliver(png, true);
    ASSERT_EQ(deliveries.size(), 1u);
    EXPECT_FALSE(deliveries[0].fileURL.has_value());
    EXPECT_EQ(toasts.size(), 1u);
    EXPECT_EQ(*pasteboard.contents.find("image/png"), png);
}

TEST_F(FileCaptureSinkTest, MediaFilesGoToTheClipboardAsFiles) {
    const std::filesystem::path movie = defaultFolder() / "Tosvar Recording.mp4";
    std::filesystem::create_directories(defaultFolder());
    std::ofstream(movie) << "movie";
    sink.deliver(movie);
    ASSERT_EQ(deliveries.size(), 1u);
    EXPECT_EQ(std::get<std::filesystem::path>(deliveries[0].content), movie);
    EXPECT_EQ(deliveries[0].fileURL, movie);
    EXPECT_TRUE(deliveries[0].copiedToClipboard);
    EXPECT_EQ(deliveries[0].imageData(), nullptr);
    const Bytes* uris = pasteboard.contents.find("text/uri-list");
    ASSERT_NE(uris, nullptr);
    EXPECT_EQ(std::string(uris->begin(), uris->end()), OwnPasteboard::fileURI(movie) + "\r\n");
    EXPECT_EQ(ledger.ownWrite(pasteboard.changeCount()), OwnWriteKind::files);
    EXPECT_EQ(recents.entries().size(), 1u);
}
