#include "QtAnnotationFileSaver.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

namespace tosvar {
namespace {

TEST(QtAnnotationFileSaver, SuggestsANameOfTheLocalMoment) {
    ::setenv("TZ", "UTC", 1);
    ::tzset();
    const auto at = std::chrono::system_clock::from_time_t(1795600000); // 2026-11-25 09:46:40 UTC
    EXPECT_EQ(QtAnnotationFileSaver::suggestedName(at), "Vemla_20261125_094640.png");
}

} // namespace
} // namespace tosvar
