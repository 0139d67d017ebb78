#include "ElementBounds.h"
#include "QtTextMeasurer.h"
#include "TestApplication.h"

#include <gtest/gtest.h>

#include <QGuiApplication>

#include <cstdio>

using namespace tosvar;

namespace {

const QtTextMeasurer& measurer() {
    testApplication<QGuiApplication>();
    static const QtTextMeasurer measurer = *QtTextMeasurer::load();
    return measurer;
}

} // namespace

TEST(QtTextMeasurer, MeasuresInHelveticasAdvances) {
    // Helvetica's advances per 1000 units: H 722, e 556, l 222, o 556, space
    // 278, w 722, r 333, d 556.
    EXPECT_NEAR(measurer().lineWidth("Hello", 100), 227.8, 0.1);
    EXPECT_NEAR(measurer().lineWidth(" ", 100), 27.8, 0.05);
    EXPECT_EQ(measurer().lineWidth("", 100), 0);
    EXPECT_NEAR(measurer().lineWidth("Hello world", 24), 24 * 4.945, 0.1);
}

TEST(QtTextMeasurer, MetricsComeFromTheFaceAndScaleWithTheSize) {
    const FontLineMetrics at100 = measurer().metrics(100);
    EXPECT_NEAR(at100.ascent, 90.5, 0.1);
    EXPECT_NEAR(at100.descent, 21.2, 0.1);
    EXPECT_NEAR(at100.leading, 3.3, 0.1);
    const FontLineMetrics at7 = measurer().metrics(7.5);
    EXPECT_NEAR(at7.lineHeight(), at100.lineHeight() * 0.075, 1e-9);
    EXPECT_NEAR(measurer().lineWidth("Tosvar", 7.5), measurer().lineWidth("Tosvar", 100) * 0.075, 1e-9);
}

TEST(QtTextMeasurer, ShapesWholeLinesWithKerningAndWideCharacters) {
    // Kerning pulls "AV" closer than its two letters apart.
    EXPECT_LT(measurer().lineWidth("AV", 100), measurer().lineWidth("A", 100) + measurer().lineWidth("V", 100) - 1);
    // The text is read as UTF-8: "ü" is one glyph as wide as "u", not two.
    EXPECT_NEAR(measurer().lineWidth("über", 100), measurer().lineWidth("uber", 100), 1e-9);
    const double lineHeight = measurer().metrics(20).lineHeight();
    const Size box = ElementBounds::textSize(measurer(), "Hello\n\nworld", 20);
    EXPECT_NEAR(box.width, measurer().lineWidth("world", 20), 1e-9); // the wider line
    EXPECT_NEAR(box.height, 3.5 * lineHeight, 1e-9);
}

TEST(QtTextMeasurer, AMissingOrBrokenFontFileIsAClearError) {
    testApplication<QGuiApplication>();
    const Expected<QtTextMeasurer> missing = QtTextMeasurer::load("/nonexistent/face.ttf");
    ASSERT_FALSE(missing);
    EXPECT_NE(missing.error().message.find("/nonexistent/face.ttf"), std::string::npos);

    const std::string path = testing::TempDir() + "not-a-font.ttf";
    std::FILE* file = std::fopen(path.c_str(), "wb");
    std::fputs("plain words, not a face", file);
    std::fclose(file);
    const Expected<QtTextMeasurer> broken = QtTextMeasurer::load(path);
    ASSERT_FALSE(broken);
    EXPECT_EQ(broken.error().message, "The font file " + path + " holds no usable face");
}
