// Records what Tesseract reads off three rendered pages into the JSON
// fixtures the grouping tests replay (tests/recognition/data/ocr-*.json):
//   TOSVAR_RECORD_OCR_FIXTURES=1 build/bin/ocr_tests --gtest_filter='RecordedLines*'
// Each fixture keeps the page size, the lines as read and the text the
// grouping gives them now; look at that text before committing a new one.
#include "QtPainterCanvas.h"
#include "ScreenshotTextRecognition.h"
#include "TesseractTextRecognizer.h"
#include "TestApplication.h"
#include "TextBlockGrouping.h"
#include "TextBlockRuns.h"
#include "TextSpecimens.h"
#include "WorkerPool.h"

#include <QFont>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QPainter>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdlib>
#include <fstream>

using namespace tosvar;

namespace {

QFont dejaVu(int pixelSize) {
    QFont font(QFontDatabase::applicationFontFamilies(
                   QFontDatabase::addApplicationFont(QStringLiteral("/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf")))
                   .value(0));
    font.setPixelSize(pixelSize);
    return font;
}

QImage columns() {
    QImage image(900, 330, QImage::Format_RGBA8888_Premultiplied);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setFont(dejaVu(14));
    painter.setPen(QColor(25, 25, 25));
    const char* left[] = {"The west quay holds the", "fish market and the old", "customs house.", "", "Stalls open at six and",
                          "close by noon on most", "days of the week."};
    const char* right[] = {"The east quay is where", "the ferries dock and the", "ticket office stands.", "", "Boats leave each hour",
                           "from eight until seven", "in the evening."};
    for (int i = 0; i < 7; ++i) {
        painter.drawText(40, 50 + i * 20, QString::fromLatin1(left[i]));
        painter.drawText(480, 50 + i * 20, QString::fromLatin1(right[i]));
    }
    return image;
}

QImage list() {
    QImage image(700, 300, QImage::Format_RGBA8888_Premultiplied);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setFont(dejaVu(14));
    painter.setPen(QColor(25, 25, 25));
    const std::pair<int, const char*> rows[] = {{40, "Before the crossing:"}, {40, "1. Buy a ticket at the office."},
                                                {40, "2. Wait in lane three."},  {64, "\u2022 Cars first, then vans."},
                                                {64, "\u2022 Bicycles at the rear ramp."}, {40, "3. Board when waved forward."}};
    int y = 50;
    for (const auto& [x, text] : rows) {
        painter.drawText(x, y, QString::fromUtf8(text));
        y += 24;
    }
    return image;
}


} // namespace

TEST(RecordedLines, RecordThePagesAsTesseractReadsThem) {
    if (!std::getenv("TOSVAR_RECORD_OCR_FIXTURES")) GTEST_SKIP() << "set TOSVAR_RECORD_OCR_FIXTURES=1 to record the fixtures";
    testApplication<QGuiApplication>();
    TesseractTextRecognizer recognizer([] { return std::vector<std::string>{"en-US"}; }, WorkerPool::shared());
    const std::pair<const char*, QImage> pages[] = {
        {"document", TextSpecimens::render(TextSpecimens::document(), QSize(900, 320), 14)}, {"columns", columns()}, {"list", list()}};
    for (const auto& [name, rendered] : pages) {
        const ImageBuffer image = imageFromQt(rendered);
        const std::vector<RecognizedLine> lines = recognizer.recognizeLines(ScreenshotTextRecognition::enlarged(image, 1));
        nlohmann::json fixture{{"width", image.width()}, {"height", image.height()}, {"lines", nlohmann::json::array()}};
        for (const RecognizedLine& line : lines)
            fixture["lines"].push_back({{"text", line.text},
                                        {"box", {line.normalizedBox.minX(), line.normalizedBox.minY(), line.normalizedBox.width(),
                                                 line.normalizedBox.height()}},
                                        {"confidence", line.confidence}});
        const Size size{static_cast<double>(image.width()), static_cast<double>(image.height())};
        fixture["expected"] = TextBlockLayoutText::render(TextBlockGrouping::group(lines, size));
        std::ofstream(std::string(TOSVAR_SOURCE_DIR) + "/tests/recognition/data/ocr-" + name + ".json") << fixture.dump(2) << "\n";
    }
}
