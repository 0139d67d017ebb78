#include "Uuid.h"

#include <gtest/gtest.h>

#include <unordered_set>

using tosvar::Uuid;

TEST(Uuid, ReadsEitherCaseAndWritesUpperCase) {
    const auto lower = Uuid::parse("0f8e2a3c-1b4d-4e5f-8a6b-7c8d9e0f1a2b");
    const auto upper = Uuid::parse("0F8E2A3C-1B4D-4E5F-8A6B-7C8D9E0F1A2B");
    ASSERT_TRUE(lower && upper);
    EXPECT_EQ(*lower, *upper);
    EXPECT_EQ(lower->string(), "0F8E2A3C-1B4D-4E5F-8A6B-7C8D9E0F1A2B");
}

TEST(Uuid, RejectsMalformedText) {
    for (const char* text : {"", "0F8E2A3C1B4D4E5F8A6B7C8D9E0F1A2B", "0F8E2A3C-1B4D-4E5F-8A6B-7C8D9E0F1A2",
                             "0F8E2A3C-1B4D-4E5F-8A6B-7C8D9E0F1A2BX", "0F8E2A3C-1B4D-4E5F-8A6B_7C8D9E0F1A2B",
                             "GF8E2A3C-1B4D-4E5F-8A6B-7C8D9E0F1A2B", "0F8E2A3-C1B4D-4E5F-8A6B-7C8D9E0F1A2B"}) {
        EXPECT_FALSE(Uuid::parse(text).has_value()) << text;
    }
}

TEST(Uuid, RandomIsVersionFourAndDistinct) {
    std::unordered_set<Uuid> seen;
    for (int i = 0; i < 1000; ++i) {
        const Uuid id = Uuid::random();
        EXPECT_EQ(id.bytes()[6] >> 4, 4);
        EXPECT_EQ(id.bytes()[8] >> 6, 2);
        EXPECT_EQ(Uuid::parse(id.string()), id);
        seen.insert(id);
    }
    EXPECT_EQ(seen.size(), 1000u);
}
