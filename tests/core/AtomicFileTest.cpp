#include "AtomicFile.h"

#include "FileContents.h"

#include <gtest/gtest.h>

#include <fstream>

using tosvar::AtomicFile;
using tosvar::readFileText;

namespace {

class AtomicFileTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::string pattern = (std::filesystem::temp_directory_path() / "atomic-XXXXXX").string();
        ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
        folder = pattern;
    }
    void TearDown() override { std::filesystem::remove_all(folder); }
    std::size_t entries() const {
        return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder), {}));
    }
    std::filesystem::path folder;
};

} // namespace

TEST_F(AtomicFileTest, ReplacesAndCreatesParents) {
    const auto target = folder / "a" / "b" / "file.txt";
    ASSERT_FALSE(AtomicFile::write(target, "first"));
    ASSERT_FALSE(AtomicFile::write(target, "second"));
    EXPECT_EQ(readFileText(target).value(), "second");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(target.parent_path()), {}), 1);
}

TEST_F(AtomicFileTest, AbandonedWriteLeavesTargetAndNoTemporary) {
    const auto target = folder / "keep.txt";
    ASSERT_FALSE(AtomicFile::write(target, "original"));
    {
        AtomicFile file(target);
        ASSERT_FALSE(file.open());
        const std::string text = "half";
        file.write(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
    }
    EXPECT_EQ(readFileText(target).value(), "original");
    EXPECT_EQ(entries(), 1u);
}

TEST_F(AtomicFileTest, UnwritableFolderIsAnErrorThatNamesThePath) {
    const auto blocker = folder / "blocker";
    ASSERT_FALSE(AtomicFile::write(blocker, "x"));
    auto error = AtomicFile::write(blocker / "child.txt", "y");
    ASSERT_TRUE(error.has_value());
    EXPECT_NE(error->message.find("blocker"), std::string::npos);
}
