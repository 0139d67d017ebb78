#include "Rect.h"

#include <gtest/gtest.h>

#include <unordered_set>

using tosvar::Point;
using tosvar::Rect;

TEST(Rect, StandardizedFlipsNegativeSizes) {
    EXPECT_EQ(Rect(10, 20, -4, -6).standardized(), Rect(6, 14, 4, 6));
    EXPECT_EQ(Rect(10, 20, -4, -6).minX(), 6);
    EXPECT_EQ(Rect(10, 20, -4, -6).maxY(), 20);
    EXPECT_EQ(Rect(10, 20, -4, -6).width(), 4);
}

TEST(Rect, NullRectangleRules) {
    const Rect null = Rect::null();
    EXPECT_TRUE(null.isNull());
    EXPECT_TRUE(null.isEmpty());
    EXPECT_TRUE(null.standardized().isNull());
    EXPECT_TRUE(null.integral().isNull());
    EXPECT_TRUE(null.offsetBy(3, 4).isNull());
    EXPECT_TRUE(null.insetBy(1, 1).isNull());
    EXPECT_FALSE(null.contains(Point{0, 0}));
    // Union treats null as its identity, intersection as absorbing.
    EXPECT_EQ(null.unionWith(Rect(1, 2, 3, 4)), Rect(1, 2, 3, 4));
    EXPECT_EQ(Rect(1, 2, -3, 4).unionWith(null), Rect(-2, 2, 3, 4));
    EXPECT_TRUE(null.intersection(Rect(0, 0, 10, 10)).isNull());
    EXPECT_TRUE(Rect(0, 0, 10, 10).intersection(null).isNull());
    // Every null rectangle equals every other and hashes alike.
    const Rect otherNull(std::numeric_limits<double>::infinity(), 5, 0, 0);
    EXPECT_EQ(null, otherNull);
    EXPECT_EQ(std::hash<Rect>{}(null), std::hash<Rect>{}(otherNull));
}

TEST(Rect, EmptyButNotNull) {
    const Rect line(5, 5, 0, 10);
    EXPECT_TRUE(line.isEmpty());
    EXPECT_FALSE(line.isNull());
    EXPECT_FALSE(line.contains(Point{5, 6}));
}

TEST(Rect, IntersectionOfDisjointIsNullAndEdgeContactIsZeroWidth) {
    EXPECT_TRUE(Rect(0, 0, 10, 10).intersection(Rect(20, 0, 5, 5)).isNull());
    const Rect touching = Rect(0, 0, 10, 10).intersection(Rect(10, 2, 5, 5));
    EXPECT_FALSE(touching.isNull());
    EXPECT_EQ(touching, Rect(10, 2, 0, 5));
    EXPECT_FALSE(Rect(0, 0, 10, 10).intersects(Rect(10, 2, 5, 5)));
    EXPECT_EQ(Rect(0, 0, 10, 10).intersection(Rect(5, -5, 10, 10)), Rect(5, 0, 5, 5));
    EXPECT_TRUE(Rect(0, 0, 10, 10).intersects(Rect(5, -5, 10, 10)));
}

TEST(Rect, IntegralGrowsOutwards) {
    EXPECT_EQ(Rect(0.5, 1.2, 2.0, 3.1).integral(), Rect(0, 1, 3, 4));
    EXPECT_EQ(Rect(-0.5, -0.5, 1, 1).integral(), Rect(-1, -1, 2, 2));
    EXPECT_EQ(Rect(3, 4, -1.5, 2).integral(), Rect(1, 4, 2, 2));
    EXPECT_EQ(Rect(1, 2, 3, 4).integral(), Rect(1, 2, 3, 4));
}

TEST(Rect, InsetPastZeroIsNull) {
    EXPECT_EQ(Rect(0, 0, 10, 10).insetBy(2, 3), Rect(2, 3, 6, 4));
    EXPECT_EQ(Rect(0, 0, 10, 10).insetBy(-2, -2), Rect(-2, -2, 14, 14));
    EXPECT_EQ(Rect(0, 0, 10, 10).insetBy(5, 0), Rect(5, 0, 0, 10));
    EXPECT_TRUE(Rect(0, 0, 10, 10).insetBy(6, 0).isNull());
    EXPECT_EQ(Rect(10, 10, -10, -10).insetBy(1, 1), Rect(1, 1, 8, 8));
}

TEST(Rect, ContainsIsHalfOpen) {
    const Rect r(0, 0, 10, 10);
    EXPECT_TRUE(r.contains(Point{0, 0}));
    EXPECT_TRUE(r.contains(Point{9.999, 9.999}));
    EXPECT_FALSE(r.contains(Point{10, 5}));
    EXPECT_FALSE(r.contains(Point{5, 10}));
    EXPECT_FALSE(r.contains(Point{-0.001, 5}));
    EXPECT_TRUE(r.contains(Rect(0, 0, 10, 10)));
    EXPECT_TRUE(r.contains(Rect(2, 2, 3, 3)));
    EXPECT_FALSE(r.contains(Rect(2, 2, 9, 3)));
    EXPECT_FALSE(r.contains(Rect::null()));
}

TEST(Rect, EqualityAndHashingAgree) {
    std::unordered_set<Rect> set{Rect(1, 2, 3, 4), Rect(1, 2, 3, 4), Rect(0.0, 0, 1, 1), Rect(-0.0, 0, 1, 1)};
    EXPECT_EQ(set.size(), 2u);
    EXPECT_NE(Rect(1, 2, 3, 4), Rect(1, 2, 4, 3));
}
