#include "InMemoryDefaultsStore.h"
#include "IsolatedEnvironment.h"
#include "ScrollSessionRecorder.h"
#include "ScrollTestPatterns.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

using namespace tosvar;
using namespace tosvar::ScrollTest;

namespace {

ScrollSessionFolder::Meta metaIn(const std::filesystem::path& folder) {
    Expected<ScrollSessionFolder::Meta> meta = ScrollSessionFolder::readMeta(folder);
    EXPECT_TRUE(meta) << (meta ? "" : meta.error().message);
    return meta ? *meta : ScrollSessionFolder::Meta{};
}

// Sets an environment variable for one scope.
class ScopedVariable {
public:
    ScopedVariable(const char* name, const char* value) : name_(name) { setenv(name, value, 1); }
    ~ScopedVariable() { unsetenv(name_); }

private:
    const char* name_;
};

} // namespace

TEST(ScrollSessionRecorder, MetaIsWrittenEveryTwentyFramesAndWhole) {
    IsolatedEnvironment environment;
    const std::filesystem::path folder = environment.root() / "session" / "one";
    std::unique_ptr<ScrollSessionRecorder> recorder = ScrollSessionRecorder::create(folder);
    ASSERT_TRUE(recorder);
    const ImageBuffer frame = imageOf(noisePage(24, 16, 1));
    for (int i = 0; i < 45; ++i)
        recorder->record(frame, i == 0 ? ScrollResultKind::of(ScrollResultKind::Tag::first) : ScrollResultKind::appended(3),
                         16 + 3 * i, 2.0);
    recorder->record(frame, ScrollResultKind::of(ScrollResultKind::Tag::lowConfidence), 148, 2.0);
    recorder->finish();
    const ScrollSessionFolder::Meta meta = metaIn(folder);
    ASSERT_EQ(meta.frames.size(), 46u);
    EXPECT_EQ(meta.version, 1);
    EXPECT_EQ(meta.frameWidth, 24);
    EXPECT_EQ(meta.frameHeight, 16);
    EXPECT_EQ(meta.scale, 2.0);
    EXPECT_GT(meta.createdAt, 1.6e9);
    EXPECT_EQ(meta.frames[0].kind, "first");
    EXPECT_EQ(meta.frames[44], (ScrollSessionFolder::FrameEntry{44, meta.frames[44].t, "frame-000044.png", "appended", 3, 148}));
    EXPECT_EQ(meta.frames[45].kind, "lowConfidence");
    EXPECT_LE(meta.frames[0].t, meta.frames[45].t);
    const Expected<ImageBuffer> reread = ScrollSessionFolder::readFrame(folder / "frame-000045.png");
    ASSERT_TRUE(reread);
    EXPECT_TRUE(reread->samePixels(frame));
}

TEST(ScrollSessionRecorder, AnInterruptedSessionLeavesTheLastTwentiesReadable) {
    IsolatedEnvironment environment;
    const std::filesystem::path folder = environment.root() / "cut";
    {
        std::unique_ptr<ScrollSessionRecorder> recorder = ScrollSessionRecorder::create(folder);
        ASSERT_TRUE(recorder);
        for (int i = 0; i < 45; ++i) recorder->record(imageOf(flatPatch(4, 4, 9)), ScrollResultKind::appended(1), i, 1.0);
        // Destroying the recorder drains its queue without a final flush.
    }
    EXPECT_EQ(metaIn(folder).frames.size(), 40u);

    const std::filesystem::path empty = environment.root() / "empty";
    std::unique_ptr<ScrollSessionRecorder> idle = ScrollSessionRecorder::create(empty);
    ASSERT_TRUE(idle);
    idle->finish();
    const ScrollSessionFolder::Meta meta = metaIn(empty);
    EXPECT_EQ(meta.frameWidth, 0);
    EXPECT_TRUE(meta.frames.empty());
}

TEST(ScrollSessionRecorder, RecordsOnlyWhenAskedTo) {
    IsolatedEnvironment environment;
    InMemoryDefaultsStore defaults;
    const std::filesystem::path sessions = environment.root() / ".local/share/tosvar/ScrollSessions";
    EXPECT_FALSE(ScrollSessionRecorder::ifEnabled(defaults));
    {
        ScopedVariable off("VEMLA_SCROLL_RECORD", "yes");
        EXPECT_FALSE(ScrollSessionRecorder::ifEnabled(defaults));
    }
    EXPECT_FALSE(std::filesystem::exists(sessions));
    {
        ScopedVariable on("VEMLA_SCROLL_RECORD", "1");
        std::unique_ptr<ScrollSessionRecorder> recorder = ScrollSessionRecorder::ifEnabled(defaults);
        ASSERT_TRUE(recorder);
        EXPECT_EQ(recorder->directory().parent_path().filename(), "ScrollSessions");
        EXPECT_EQ(recorder->directory().filename().string().size(), 15u); // yyyyMMdd-HHmmss
    }
    defaults.set("VemlaScrollRecord", true);
    EXPECT_TRUE(ScrollSessionRecorder::ifEnabled(defaults));
    std::ofstream(environment.root() / "file") << "x";
    EXPECT_FALSE(ScrollSessionRecorder::create(environment.root() / "file" / "below"));
}

TEST(ScrollSessionFolder, FramesComeFromTheMetaOrFromNumberedPngs) {
    IsolatedEnvironment environment;
    const std::filesystem::path root = environment.root();
    std::filesystem::create_directories(root / "plain");
    for (const char* name : {"frame-000002.png", "frame-000000.png", "frame-000001.png", "notes.txt"})
        std::ofstream(root / "plain" / name) << "x";
    const auto plain = ScrollSessionFolder::frameFiles(root / "plain");
    ASSERT_TRUE(plain);
    ASSERT_EQ(plain->size(), 3u);
    EXPECT_EQ(plain->front().filename(), "frame-000000.png");
    EXPECT_EQ(ScrollSessionFolder::readFrame(plain->front()).error().message.rfind("unreadable frame frame-000000.png", 0), 0u);

    ScrollSessionFolder::Meta meta;
    meta.frames = {{0, 0.5, "b.png", "first", 0, 10}, {1, 0.75, "a.png", "noChange", 0, 10}};
    const std::string text = ScrollSessionFolder::encode(meta);
    EXPECT_LT(text.find("\"createdAt\""), text.find("\"frameHeight\""));
    EXPECT_EQ(ScrollSessionFolder::decode(text).value_or({}), meta);
    std::filesystem::create_directories(root / "recorded");
    std::ofstream(root / "recorded" / "meta.json") << text;
    const auto recorded = ScrollSessionFolder::frameFiles(root / "recorded");
    ASSERT_TRUE(recorded);
    EXPECT_EQ(recorded->front().filename(), "b.png");

    EXPECT_EQ(ScrollSessionFolder::readMeta(root / "plain").error().message, "missing meta.json in " + (root / "plain").string());
    EXPECT_EQ(ScrollSessionFolder::sessions(root), std::vector<std::filesystem::path>{root / "recorded"});
    std::filesystem::create_directories(root / "none");
    EXPECT_FALSE(ScrollSessionFolder::frameFiles(root / "none"));
    EXPECT_FALSE(ScrollSessionFolder::decode("{\"version\": 1}"));
}
