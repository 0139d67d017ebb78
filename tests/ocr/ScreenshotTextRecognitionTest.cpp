// A captured region read as text: what the recogniser is handed (enlarged at
// one pixel per point, QR codes blanked out), how QR payloads join the
// transcript, and Tesseract's bands and second reading on real pages.
#include "QtPainterCanvas.h"
#include "ScreenshotTextRecognition.h"
#include "TesseractTextRecognizer.h"
#include "TestApplication.h"
#include "TextSpecimens.h"
#include "WorkerPool.h"

#include <QFont>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QPainter>

#include <gtest/gtest.h>


using namespace tosvar;

namespace {


// Lines drawn at the given heights of a tall white page.
ImageBuffer page(QSize size, const std::vector<std::pair<int, QString>>& lines, int pixelSize,
                 const char* fontFile = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf") {
    testApplication<QGuiApplication>();
    QImage image(size, QImage::Format_RGBA8888_Premultiplied);
    image.fill(Qt::white);
    QPainter painter(&image);
    QFont face(QFontDatabase::applicationFontFamilies(QFontDatabase::addApplicationFont(QString::fromLatin1(fontFile))).value(0));
    face.setPixelSize(pixelSize);
    painter.setFont(face);
    painter.setPen(QColor(20, 20, 20));
    for (const auto& [y, text] : lines) painter.drawText(40, y, text);
    painter.end();
    return imageFromQt(image);
}

struct RecordingRecognizer final : TextRecognizing {
    OCROutcome recognizeText(const std::vector<std::uint8_t>&) override { return OCROutcome::failure(); }
    std::vector<RecognizedLine> recognizeLines(const ImageBuffer& image) override {
        seen = image;
        return lines;
    }
    std::vector<RecognizedLine> lines;
    ImageBuffer seen;
};

struct FixedCodes final : QRCodeReading {
    std::vector<RecognizedQRCode> qrCodes(const ImageBuffer&) override { return codes; }
    std::vector<RecognizedQRCode> codes;
};

} // namespace

TEST(ScreenshotTextRecognition, QrPayloadsTheTranscriptShowsAreNotRepeated) {
    EXPECT_EQ(ScreenshotTextRecognition::mergedText(" see https://x.org \n", {"https://x.org"}), "see https://x.org");
    EXPECT_EQ(ScreenshotTextRecognition::mergedText("", {" a ", "a", "", "b"}), "a\nb");
}

TEST(ScreenshotTextRecognition, SmallTextIsEnlargedAndCodesAreBlankedBeforeReading) {
    MutableImage grey(200, 100);
    grey.fill({200, 200, 200, 255});
    for (int y = 40; y < 80; ++y)
        for (int x = 100; x < 140; ++x) grey.setPixel(x, y, {0, 0, 0, 255});
    const ImageBuffer image = std::move(grey).freeze();
    RecordingRecognizer recognizer;
    recognizer.lines = {{"Tide table", Rect(0.1, 0.8, 0.3, 0.1), 0.9f}};
    FixedCodes codes;
    // The dark square is a code: x 0.5..0.7, y 0.4..0.8 from the top, so 0.2..0.6 from the bottom.
    codes.codes = {{"https://example.org/t", Rect(0.5, 0.2, 0.2, 0.4)}};

    EXPECT_EQ(ScreenshotTextRecognition::capturePlainText(recognizer, codes, image, 1), "Tide table\nhttps://example.org/t");
    EXPECT_EQ(recognizer.seen.width(), 300) << "one pixel per point is read half as large again";
    EXPECT_EQ(recognizer.seen.height(), 150);
    EXPECT_EQ(recognizer.seen.pixel(180, 90), (Rgba8{200, 200, 200, 255})) << "the code is gone from what is read";

    ScreenshotTextRecognition::capturePlainText(recognizer, codes, image, 2);
    EXPECT_EQ(recognizer.seen.width(), 200) << "a dense display's text is read as it is";

    recognizer.lines.clear();
    codes.codes.clear();
    EXPECT_EQ(ScreenshotTextRecognition::capturePlainText(recognizer, codes, image, 1), std::nullopt) << "nothing to read";
}

TEST(TesseractTextRecognizer, BandsReadSideBySideKeepTheirLinesWhereThePageHasThem) {
    TesseractTextRecognizer recognizer([] { return std::vector<std::string>{"en-US"}; }, WorkerPool::shared());
    const ImageBuffer tall = page({700, 1200}, {{100, "The ferry leaves at noon"}, {1100, "Tickets at the harbour office"}}, 28);
    const std::vector<RecognizedLine> lines = recognizer.recognizeLines(tall);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].text, "The ferry leaves at noon");
    EXPECT_EQ(lines[1].text, "Tickets at the harbour office");
    // Baselines at 100 and 1100 of 1200 rows, from the top.
    EXPECT_NEAR(1 - lines[0].normalizedBox.minY(), 100.0 / 1200, 0.01);
    EXPECT_NEAR(1 - lines[1].normalizedBox.minY(), 1100.0 / 1200, 0.01);
}

TEST(TesseractTextRecognizer, LinesTheLatinModelsAreUnsureOfAreReadWithEveryLanguage) {
    TesseractTextRecognizer recognizer([] { return std::vector<std::string>{"zh-Hans", "en-US"}; }, WorkerPool::shared());
    const ImageBuffer mixed = page({700, 200}, {{60, QStringLiteral("Harbour timetable")}, {140, QStringLiteral("港口时刻表和票价")}}, 32,
                                   "/usr/share/fonts/truetype/droid/DroidSansFallbackFull.ttf");
    const std::vector<RecognizedLine> lines = recognizer.recognizeLines(mixed);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].text, "Harbour timetable");
    EXPECT_NE(lines[1].text.find("港口"), std::string::npos) << lines[1].text << " " << lines[1].confidence;
}
