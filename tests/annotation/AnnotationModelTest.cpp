#include "AnnotationDocument.h"
#include "AnnotationSamples.h"

#include <gtest/gtest.h>

#include <unordered_set>

using namespace tosvar;
using C = AnnotationKind::Case;

TEST(AnnotationStyle, DefaultsAreExact) {
    const AnnotationStyle s;
    EXPECT_EQ(s.strokeColor, (RGBAColor{1.0, 0.23, 0.19, 1.0}));
    EXPECT_FALSE(s.fillColor);
    EXPECT_EQ(s.lineWidth, 4);
    EXPECT_EQ(s.opacity, 1.0);
    EXPECT_EQ(s.cornerRadius, 16);
    EXPECT_EQ(s.arrowHead, ArrowHeadStyle::standard);
    EXPECT_EQ(s.fontSize, 24);
    EXPECT_EQ(s.mosaicBlockSize, 16);
    EXPECT_EQ(s.blurRadius, 12);
    EXPECT_FALSE(s.dashed || s.shadow || s.outline);
    EXPECT_TRUE(s.textOutline);
    EXPECT_EQ(s.curvature, 0);
    EXPECT_EQ(s.watermarkAngle, -45);
    EXPECT_EQ(s.watermarkSpacing, 1.0);
    EXPECT_EQ(s.watermarkOffset, (Size{0, 0}));
    EXPECT_FALSE(s.magnifierZoom || s.magnifierOffset || s.outlineWidth || s.shadowRadius || s.shadowOffset ||
                 s.dashLength || s.leaderTip || s.leaderWidth || s.midPoints || s.rotation);
    EXPECT_EQ(RGBAColor::Palette::green, (RGBAColor{0.2, 0.78, 0.35, 1.0}));
    EXPECT_EQ(RGBAColor::Palette::white.withAlpha(0.25), (RGBAColor{1, 1, 1, 0.25}));
}

TEST(AnnotationStyle, EqualValuesHashAlikeAndEveryFieldCounts) {
    AnnotationStyle a = samples::fullStyle();
    AnnotationStyle b = a;
    b.curvature = -0.0;
    a.curvature = 0.0;
    EXPECT_EQ(a, b);
    EXPECT_EQ(std::hash<AnnotationStyle>{}(a), std::hash<AnnotationStyle>{}(b));

    // An empty list of mid points is a different value from none, though it draws the same.
    AnnotationStyle empty;
    empty.midPoints = std::vector<Point>{};
    EXPECT_NE(empty, AnnotationStyle{});
    EXPECT_NE(std::hash<AnnotationStyle>{}(empty), std::hash<AnnotationStyle>{}(AnnotationStyle{}));
}

TEST(AnnotationImage, EqualityAndHashIgnoreTheBytesAndCopiesShareThem) {
    const AnnotationImage a = samples::picture(100);
    AnnotationImage b = a;
    EXPECT_TRUE(b.data.sharesStorageWith(a.data));
    b.data = SharedBytes(std::vector<std::uint8_t>{1, 2, 3});
    EXPECT_EQ(a, b);
    EXPECT_EQ(std::hash<AnnotationImage>{}(a), std::hash<AnnotationImage>{}(b));
    EXPECT_EQ(AnnotationKind::image(a), AnnotationKind::image(b));

    AnnotationImage wider = a;
    wider.pixelWidth += 1;
    EXPECT_NE(a, wider);
    AnnotationImage other = a;
    other.id = Uuid::random();
    EXPECT_NE(a, other);
}

TEST(AnnotationKind, PayloadsAndRegionEffects) {
    EXPECT_EQ(AnnotationKind::text("hi").textPayload(), "hi");
    EXPECT_EQ(AnnotationKind::stepBadge("3").textPayload(), "3");
    EXPECT_EQ(AnnotationKind(C::arrow).textPayload(), "");
    EXPECT_EQ(AnnotationKind(C::arrow).imagePayload(), nullptr);
    EXPECT_EQ(AnnotationKind(C::text), AnnotationKind::text(""));
    EXPECT_NE(AnnotationKind::text("a"), AnnotationKind::watermark("a"));
    EXPECT_NE(AnnotationKind(C::mosaic), AnnotationKind(C::blur));
    ASSERT_NE(AnnotationKind(C::translatedText).blockPayload(), nullptr);

    std::unordered_set<C> effects;
    for (const AnnotationElement& e : samples::oneOfEveryKind({}))
        if (e.kind.isRegionEffect()) effects.insert(e.kind.kindCase());
    EXPECT_EQ(effects, (std::unordered_set<C>{C::mosaic, C::blur, C::magnifier}));
}

TEST(AnnotationElement, DashMetricsByKind) {
    struct Row {
        C kind;
        double lineWidth;
        double dashLength;
        double gapScale;
    };
    for (const Row& row : {Row{C::arrow, 4, 40, 1.6}, Row{C::line, 9, 40, 1.6}, Row{C::freehand, 1, 40, 1.6},
                           Row{C::text, 4, 36, 1.0}, Row{C::stepBadge, 30, 36, 1.0}, Row{C::rectangle, 4, 10, 1.0},
                           Row{C::ellipse, 1, 4, 1.0}, Row{C::highlighter, 20, 50, 1.0}}) {
        AnnotationStyle style;
        style.lineWidth = row.lineWidth;
        const AnnotationElement element{Uuid::random(), AnnotationKind(row.kind), Geometry{}, style};
        EXPECT_EQ(element.defaultDashLength(), row.dashLength) << rawValue(row.kind);
        EXPECT_EQ(element.dashGapScale(), row.gapScale) << rawValue(row.kind);
    }
}

TEST(AnnotationElement, ElementsOfEveryKindAreDistinctValues) {
    const auto elements = samples::oneOfEveryKind(samples::fullStyle());
    std::unordered_set<AnnotationElement> set(elements.begin(), elements.end());
    EXPECT_EQ(set.size(), elements.size());
    AnnotationElement moved = elements[0];
    moved.geometry = moved.geometry.translated({1, 0});
    EXPECT_NE(moved, elements[0]);
    EXPECT_EQ(set.count(elements[4]), 1u);
}

TEST(Geometry, TranslatedMovesEveryPoint) {
    const Point by{3, -2};
    EXPECT_EQ(Geometry::segment({1, 1}, {5, 6}).translated(by), Geometry::segment({4, -1}, {8, 4}));
    EXPECT_EQ(Geometry::rect(Rect(10, 10, -4, 5)).translated(by), Geometry::rect(Rect(13, 8, -4, 5)));
    EXPECT_EQ(Geometry::path({{0, 0}, {1, 2}}).translated(by), Geometry::path({{3, -2}, {4, 0}}));
    EXPECT_EQ(Geometry::path({}).translated(by), Geometry::path({}));
    EXPECT_EQ(Geometry::point({7, 7}).translated(by), Geometry::point({10, 5}));
    EXPECT_NE(Geometry::point({0, 0}), Geometry::rect(Rect(0, 0, 0, 0)));
}

TEST(TranslatedBlock, DisplayedTextAndBody) {
    TranslatedBlock block;
    block.source = "Hallo";
    EXPECT_EQ(block.displayedText(), "Hallo"); // nothing translated yet
    block.target = "Hello";
    EXPECT_EQ(block.displayedText(), "Hello");
    block.showsSource = true;
    EXPECT_EQ(block.displayedText(), "Hallo");

    block.target = "1.\u3000 Hello world \t";
    EXPECT_EQ(block.translationBody(), block.target); // no marker
    block.marker = "2.";
    EXPECT_EQ(block.translationBody(), block.target); // target doesn't begin with it
    block.marker = "1.";
    EXPECT_EQ(block.translationBody(), "Hello world");
    block.target = "1.";
    EXPECT_EQ(block.translationBody(), "");
    block.target = "1.\nline";
    EXPECT_EQ(block.translationBody(), "\nline"); // line breaks are not blanks
}

TEST(TranslatedBlock, JoinedTrimsDropsEmptiesAndUsesLineFeeds) {
    std::vector<TranslatedBlock> blocks(5);
    blocks[0].target = "  First\n";
    blocks[1].target = " \r\n\t ";
    blocks[2].target = "\u00a0Second line\u2028";
    blocks[3].target = "";
    blocks[4].target = "Third\xff";
    EXPECT_EQ(TranslatedBlockText::joined(blocks), "First\nSecond line\nThird\xff");
    EXPECT_EQ(TranslatedBlockText::joined({}), "");
}

TEST(AnnotationDocument, SizesSnapshotsAndApply) {
    MutableImage pixels(30, 20);
    AnnotationDocument document(std::move(pixels).freeze(), 2.0);
    EXPECT_EQ(document.pixelSize(), (Size{30, 20}));
    EXPECT_EQ(document.imageBounds(), Rect(0, 0, 30, 20));
    EXPECT_FALSE(document.cropRect);

    document.elements = samples::oneOfEveryKind({});
    document.cropRect = Rect(1, 2, 3, 4);
    const AnnotationSnapshot before = document.snapshot();
    const std::uint64_t baseIdentity = document.base().identity();

    document.elements.pop_back();
    document.cropRect.reset();
    EXPECT_NE(document.snapshot(), before);
    document.apply(before);
    EXPECT_EQ(document.snapshot(), before);
    EXPECT_EQ(document.base().identity(), baseIdentity);
    EXPECT_EQ(document.scale(), 2.0);
    EXPECT_EQ(std::hash<AnnotationSnapshot>{}(document.snapshot()), std::hash<AnnotationSnapshot>{}(before));

    document.replaceBase(MutableImage(8, 9).freeze());
    EXPECT_EQ(document.pixelSize(), (Size{8, 9}));
    EXPECT_EQ(document.snapshot(), before);
}
