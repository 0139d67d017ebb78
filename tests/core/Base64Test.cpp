#include "Base64.h"

#include <gtest/gtest.h>

#include <random>

namespace Base64 = tosvar::Base64;

namespace {

std::vector<std::uint8_t> bytesOf(std::string_view text) { return {text.begin(), text.end()}; }

} // namespace

TEST(Base64, KnownVectors) {
    const std::pair<std::string_view, std::string_view> vectors[] = {
        {"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"}, {"foob", "Zm9vYg=="}, {"fooba", "Zm9vYmE="},
        {"foobar", "Zm9vYmFy"}};
    for (const auto& [plain, encoded] : vectors) {
        EXPECT_EQ(Base64::encode(bytesOf(plain)), encoded);
        auto decoded = Base64::decode(encoded);
        ASSERT_TRUE(decoded) << encoded;
        EXPECT_EQ(*decoded, bytesOf(plain));
    }
}

TEST(Base64, UnpaddedInputDecodes) {
    auto decoded = Base64::decode("Zm9vYg");
    ASSERT_TRUE(decoded);
    EXPECT_EQ(*decoded, bytesOf("foob"));
}

TEST(Base64, RejectsBadInputWithItsPlace) {
    auto stray = Base64::decode("Zm9v!mFy");
    ASSERT_FALSE(stray);
    EXPECT_NE(stray.error().message.find("offset 4"), std::string::npos);
    EXPECT_FALSE(Base64::decode("Zm9vY"));     // a lone sixth of a byte
    EXPECT_FALSE(Base64::decode("Zm9=Zm9v"));  // padding inside
    EXPECT_FALSE(Base64::decode("Zg==="));     // padding past a block
    EXPECT_FALSE(Base64::decode("Zm9v\nYmFy")); // whitespace
}

TEST(Base64, RandomRoundTrip) {
    std::mt19937 random(7);
    for (int length = 0; length < 200; ++length) {
        std::vector<std::uint8_t> bytes(static_cast<std::size_t>(length));
        for (auto& b : bytes) b = static_cast<std::uint8_t>(random());
        auto decoded = Base64::decode(Base64::encode(bytes));
        ASSERT_TRUE(decoded);
        EXPECT_EQ(*decoded, bytes);
    }
}
