#include "AffineTransform.h"

#include <gtest/gtest.h>

#include <numbers>

using tosvar::AffineTransform;
using tosvar::Point;
using tosvar::Rect;

namespace {

void expectNear(Point actual, Point expected) {
    EXPECT_NEAR(actual.x, expected.x, 1e-9);
    EXPECT_NEAR(actual.y, expected.y, 1e-9);
}

} // namespace

TEST(AffineTransform, ConcatenatingAppliesThisFirst) {
    const auto scaleThenMove = AffineTransform::scale(2, 3).concatenating(AffineTransform::translation(10, 20));
    expectNear(scaleThenMove.apply(Point{1, 1}), Point{12, 23});
    const auto moveThenScale = AffineTransform::translation(10, 20).concatenating(AffineTransform::scale(2, 3));
    expectNear(moveThenScale.apply(Point{1, 1}), Point{22, 63});
}

TEST(AffineTransform, TranslatedByPrependsLikeThePlatform) {
    // translatedBy moves first, then applies the existing transform.
    const auto t = AffineTransform::scale(2, 2).translatedBy(5, 0);
    expectNear(t.apply(Point{0, 0}), Point{10, 0});
}

TEST(AffineTransform, RotationIsCounterClockwiseInYUpSpace) {
    expectNear(AffineTransform::rotation(std::numbers::pi / 2).apply(Point{1, 0}), Point{0, 1});
}

TEST(AffineTransform, InverseUndoesAndSingularHasNone) {
    const auto t = AffineTransform::rotation(0.7).concatenating(AffineTransform::scale(2, 0.5)).translatedBy(3, -4);
    const auto inverse = t.inverted();
    ASSERT_TRUE(inverse.has_value());
    expectNear(inverse->apply(t.apply(Point{13, -7})), Point{13, -7});
    EXPECT_FALSE(AffineTransform::scale(0, 1).inverted().has_value());
}

TEST(AffineTransform, RectMapsToBoundingBox) {
    const Rect r = AffineTransform::rotation(std::numbers::pi / 4).apply(Rect(0, 0, 2, 2));
    EXPECT_NEAR(r.width(), 2 * std::numbers::sqrt2, 1e-9);
    EXPECT_NEAR(r.midX(), 0, 1e-9);
    EXPECT_TRUE(AffineTransform::scale(2, 2).apply(Rect::null()).isNull());
}
