#include "DefaultsStore.h"

#include <gtest/gtest.h>

using namespace tosvar;
using namespace tosvar::DefaultsConversion;

TEST(DefaultsConversion, BooleansFromNumbersAndWords) {
    EXPECT_EQ(toBoolean(true), true);
    EXPECT_EQ(toBoolean(std::int64_t{0}), false);
    EXPECT_EQ(toBoolean(std::int64_t{5}), true);
    EXPECT_EQ(toBoolean(0.5), true);
    EXPECT_EQ(toBoolean(std::string("YES")), true);
    EXPECT_EQ(toBoolean(std::string("false")), false);
    EXPECT_EQ(toBoolean(std::string("maybe")), std::nullopt);
    EXPECT_EQ(toBoolean(Bytes{1}), std::nullopt);
}

TEST(DefaultsConversion, IntegersOnlyFromWholeValues) {
    EXPECT_EQ(toInteger(std::int64_t{-3}), -3);
    EXPECT_EQ(toInteger(4.0), 4);
    EXPECT_EQ(toInteger(4.5), std::nullopt);
    EXPECT_EQ(toInteger(1e300), std::nullopt);
    EXPECT_EQ(toInteger(std::numeric_limits<double>::quiet_NaN()), std::nullopt);
    EXPECT_EQ(toInteger(true), 1);
    EXPECT_EQ(toInteger(std::string("42")), 42);
    EXPECT_EQ(toInteger(std::string("42px")), std::nullopt);
    EXPECT_EQ(toInteger(std::string("")), std::nullopt);
    EXPECT_EQ(toInteger(std::string("99999999999999999999")), std::nullopt);
}

TEST(DefaultsConversion, RealsAndTexts) {
    EXPECT_EQ(toReal(std::int64_t{3}), 3.0);
    EXPECT_EQ(toReal(std::string("2.5")), 2.5);
    EXPECT_EQ(toReal(std::string("nan")), std::nullopt);
    EXPECT_EQ(toReal(true), std::nullopt);
    EXPECT_EQ(toString(std::int64_t{7}), "7");
    EXPECT_EQ(toString(std::string("dark")), "dark");
    EXPECT_EQ(toString(false), std::nullopt);
}
