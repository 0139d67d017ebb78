#include "JsonFileDefaultsStore.h"

#include "IsolatedEnvironment.h"
#include "Log.h"

#include "FileContents.h"

#include <gtest/gtest.h>

#include <fstream>

using namespace tosvar;

namespace {

void writeText(const std::filesystem::path& path, const std::string& text) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path) << text;
}

class JsonFileDefaultsStoreTest : public ::testing::Test {
protected:
    void SetUp() override {
        setLogSink([this](std::string_view line) { logged.emplace_back(line); });
    }
    void TearDown() override { setLogSink(nullptr); }

    IsolatedEnvironment environment;
    std::filesystem::path file = JsonFileDefaultsStore::standardPath();
    std::vector<std::string> logged;
};

} // namespace

TEST_F(JsonFileDefaultsStoreTest, LivesUnderXdgConfigHome) {
    EXPECT_EQ(file, environment.root() / "config" / "tosvar" / "defaults.json");
}

TEST_F(JsonFileDefaultsStoreTest, ValuesSurviveAReopenWithTheirTypes) {
    {
        JsonFileDefaultsStore store(file);
        store.set("flag", true);
        store.set("count", std::int64_t{4});
        store.set("ratio", 4.0);
        store.set("name", std::string("dark"));
        store.set("blob", Bytes{0, 1, 254, 255});
        store.set({{"a", std::int64_t{1}}, {"b", std::int64_t{2}}});
        store.remove("b");
    }
    JsonFileDefaultsStore store(file);
    EXPECT_EQ(store.value("flag"), DefaultsValue(true));
    EXPECT_EQ(store.value("count"), DefaultsValue(std::int64_t{4}));
    EXPECT_EQ(store.value("ratio"), DefaultsValue(4.0));
    EXPECT_EQ(store.string("name"), "dark");
    EXPECT_EQ(store.bytes("blob"), (Bytes{0, 1, 254, 255}));
    EXPECT_EQ(store.integer("a"), 1);
    EXPECT_FALSE(store.contains("b"));
    EXPECT_TRUE(logged.empty());
}

TEST_F(JsonFileDefaultsStoreTest, RegisteredDefaultsAnswerButAreNeverWritten) {
    JsonFileDefaultsStore store(file);
    store.registerDefaults({{"fps", std::int64_t{30}}, {"snap", true}});
    EXPECT_EQ(store.integer("fps"), 30);
    store.set("fps", std::int64_t{60});
    EXPECT_EQ(store.integer("fps"), 60);
    store.remove("fps");
    EXPECT_EQ(store.integer("fps"), 30);
    store.set("other", true);
    EXPECT_EQ(readFileText(file).value().find("snap"), std::string::npos);
}

TEST_F(JsonFileDefaultsStoreTest, CorruptFileIsSetAsideNotOverwritten) {
    writeText(file, "{\"screenshotDelaySeconds\": 3,, oops");
    JsonFileDefaultsStore store(file);
    EXPECT_FALSE(store.contains("screenshotDelaySeconds"));
    ASSERT_EQ(logged.size(), 1u);
    EXPECT_NE(logged[0].find("moved it to"), std::string::npos) << logged[0];

    std::filesystem::path aside;
    for (const auto& entry : std::filesystem::directory_iterator(file.parent_path()))
        if (entry.path().filename().string().starts_with("defaults.json.corrupt-")) aside = entry.path();
    ASSERT_FALSE(aside.empty());
    EXPECT_EQ(readFileText(aside).value(), "{\"screenshotDelaySeconds\": 3,, oops");

    store.set("recordingFPS", std::int64_t{24});
    EXPECT_EQ(readFileText(aside).value(), "{\"screenshotDelaySeconds\": 3,, oops");
    EXPECT_EQ(JsonFileDefaultsStore(file).integer("recordingFPS"), 24);
}

TEST_F(JsonFileDefaultsStoreTest, NonObjectJsonIsCorruptToo) {
    writeText(file, "[1, 2, 3]");
    JsonFileDefaultsStore store(file);
    EXPECT_EQ(logged.size(), 1u);
    EXPECT_FALSE(std::filesystem::exists(file));
}

TEST_F(JsonFileDefaultsStoreTest, UnreadableEntriesAreSkippedOthersKept) {
    writeText(file, R"({"good": 5, "nothing": null, "list": [1], "badBlob": {"base64": "!!"}})");
    JsonFileDefaultsStore store(file);
    EXPECT_EQ(store.integer("good"), 5);
    EXPECT_FALSE(store.contains("nothing"));
    EXPECT_FALSE(store.contains("list"));
    EXPECT_FALSE(store.contains("badBlob"));
    EXPECT_EQ(logged.size(), 3u);
}

TEST_F(JsonFileDefaultsStoreTest, FileThatCannotBeReadIsLeftAlone) {
    // A folder where the file should be: unreadable as a file, and must survive.
    std::filesystem::create_directories(file);
    JsonFileDefaultsStore store(file);
    EXPECT_FALSE(store.persists());
    store.set("key", true);
    EXPECT_EQ(store.boolean("key"), true);
    EXPECT_TRUE(std::filesystem::is_directory(file));
    EXPECT_FALSE(logged.empty());
}
