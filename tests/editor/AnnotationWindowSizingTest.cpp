#include "AnnotationWindowSizing.h"

#include <gtest/gtest.h>

using namespace tosvar;
using AnnotationWindowSizing::initialContentSize;

namespace {

void expectSize(Size actual, Size expected) {
    EXPECT_DOUBLE_EQ(actual.width, expected.width);
    EXPECT_DOUBLE_EQ(actual.height, expected.height);
}

} // namespace

TEST(AnnotationWindowSizing, TheWindowFitsTheImageInPointsWithinLimits) {
    // 1440 x 900 points, shrunk to the width limit.
    expectSize(initialContentSize({2880, 1800}, 2), {1100, 687.5});
    // Tall: the height limit wins, then the width is raised for the toolbar.
    expectSize(initialContentSize({500, 3000}, 1), {640, 720});
    // Small: never enlarged, only made wide enough.
    expectSize(initialContentSize({300, 200}, 1), {640, 200});
    expectSize(initialContentSize({900, 600}, 1), {900, 600});
    // A scale below 1 does not turn pixels into more points.
    expectSize(initialContentSize({800, 600}, 0.5), {800, 600});
    expectSize(initialContentSize({0, 0}, 2), {640, 0});
}
