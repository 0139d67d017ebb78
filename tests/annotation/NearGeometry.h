#pragma once

#include "Point.h"
#include "Rect.h"

#include <gtest/gtest.h>

namespace tosvar::samples {

inline void expectNear(Point actual, Point expected, double within = 1e-9) {
    EXPECT_NEAR(actual.x, expected.x, within);
    EXPECT_NEAR(actual.y, expected.y, within);
}

inline void expectNear(const Rect& actual, const Rect& expected, double within = 1e-9) {
    expectNear(actual.origin, expected.origin, within);
    EXPECT_NEAR(actual.size.width, expected.size.width, within);
    EXPECT_NEAR(actual.size.height, expected.size.height, within);
}

} // namespace tosvar::samples
