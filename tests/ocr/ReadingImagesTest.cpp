// Reading text and QR codes off rendered images, with the installed models.
#include "InMemoryDefaultsStore.h"
#include "OCRLanguagePreference.h"
#include "QtPainterCanvas.h"
#include "TesseractTextRecognizer.h"
#include "TestApplication.h"
#include "WorkerPool.h"
#include "ZXingQRCodeReader.h"

#define ZX_USE_UTF8 1
#include <ZXing/BitMatrix.h>
#include <ZXing/MultiFormatWriter.h>

#include <QFont>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

using namespace tosvar;

namespace {

// Two lines of dark text on white, as a screenshot would show them.
ImageBuffer renderedText(const QStringList& lines, int pixelSize) {
    testApplication<QGuiApplication>();
    static const int fontId = QFontDatabase::addApplicationFont(QStringLiteral("/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf"));
    QFont font(QFontDatabase::applicationFontFamilies(fontId).value(0));
    font.setPixelSize(pixelSize);
    QImage image(700, 60 + pixelSize * 2 * static_cast<int>(lines.size()), QImage::Format_RGBA8888_Premultiplied);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setFont(font);
    painter.setPen(QColor(30, 30, 30));
    for (int i = 0; i < lines.size(); ++i) painter.drawText(30, 30 + pixelSize * 2 * (i + 1), lines[i]);
    painter.end();
    return imageFromQt(image);
}

ImageBuffer qrImage(const std::string& text) {
    const ZXing::BitMatrix matrix = ZXing::MultiFormatWriter(ZXing::BarcodeFormat::QRCode).setMargin(4).encode(text, 240, 240);
    MutableImage image(matrix.width() + 100, matrix.height() + 60);
    image.fill({255, 255, 255, 255});
    for (int y = 0; y < matrix.height(); ++y)
        for (int x = 0; x < matrix.width(); ++x)
            if (matrix.get(x, y)) image.setPixel(x + 50, y + 30, {0, 0, 0, 255});
    return std::move(image).freeze();
}

} // namespace

TEST(TesseractTextRecognizer, ReadsRenderedLinesWithTheirBoxes) {
    TesseractTextRecognizer recognizer([] { return std::vector<std::string>{"en-US"}; }, WorkerPool::shared());
    const auto lines = recognizer.recognizeLines(renderedText({"Quarterly report draft", "Send it by Friday"}, 28));
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].text, "Quarterly report draft");
    EXPECT_EQ(lines[1].text, "Send it by Friday");
    EXPECT_GT(lines[0].confidence, 0.5f);
    EXPECT_GT(lines[0].normalizedBox.minY(), lines[1].normalizedBox.minY()) << "unit boxes count y from the bottom";
    EXPECT_TRUE(recognizer.recognizeLines(ImageBuffer()).empty());

    EXPECT_EQ(recognizer.recognizeText({1, 2, 3}), OCROutcome::failure()) << "not an image";
}

TEST(TesseractTextRecognizer, NamesModelsAndFallsBackToEnglish) {
    EXPECT_EQ(TesseractTextRecognizer::modelName("zh-Hans"), "chi_sim");
    EXPECT_EQ(TesseractTextRecognizer::modelName("en-US"), "eng");
    EXPECT_EQ(TesseractTextRecognizer::modelName("xx"), std::nullopt);
    const auto supported = TesseractTextRecognizer::supportedLanguages();
    EXPECT_NE(std::find(supported.begin(), supported.end(), "en"), supported.end());

    TesseractTextRecognizer unknown([] { return std::vector<std::string>{"xx-YY"}; }, WorkerPool::shared());
    const auto lines = unknown.recognizeLines(renderedText({"Plain English"}, 28));
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].text, "Plain English");
}

TEST(ZXingQRCodeReader, FindsTheCodeAndWhereItIs) {
    ZXingQRCodeReader reader;
    const auto codes = reader.qrCodes(qrImage("https://example.org/a?b=c"));
    ASSERT_EQ(codes.size(), 1u);
    EXPECT_EQ(codes[0].payload, "https://example.org/a?b=c");
    EXPECT_GT(codes[0].normalizedBox.width(), 0.4);
    EXPECT_TRUE(reader.qrCodes(renderedText({"no code here"}, 20)).empty());
    EXPECT_TRUE(reader.qrCodes(ImageBuffer()).empty());
}

TEST(OCRLanguagePreference, NeverWithoutEnglishAndWritesOnlyWhatChanges) {
    InMemoryDefaultsStore defaults;
    EXPECT_EQ(OCRLanguagePreference::languages(defaults), OCRLanguagePreference::defaultLanguages);
    defaults.set(OCRLanguagePreference::key, std::string("not json"));
    EXPECT_EQ(OCRLanguagePreference::languages(defaults), OCRLanguagePreference::defaultLanguages);

    OCRLanguagePreference::setLanguages(defaults, {"ja"});
    EXPECT_EQ(OCRLanguagePreference::languages(defaults), (std::vector<std::string>{"ja", "en-US"}));
    EXPECT_EQ(defaults.string(OCRLanguagePreference::key), R"(["ja"])") << "stored as given";

    OCRLanguagePreference::addForAppLanguage(defaults, "de");
    EXPECT_EQ(defaults.string(OCRLanguagePreference::key), R"(["ja","en-US","de"])");
    OCRLanguagePreference::setLanguages(defaults, {"en-GB", "de"});
    OCRLanguagePreference::addForAppLanguage(defaults, "de");
    EXPECT_EQ(defaults.string(OCRLanguagePreference::key), R"(["en-GB","de"])") << "both already there";
}
