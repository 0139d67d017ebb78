// Reading a 1920x1080 screen of 14-pixel prose at one pixel per point as a
// text capture does: enlarged, recognised with the languages a new user has
// (Chinese, both scripts, and English), grouped, merged with QR payloads.
// Two screens: an article in a 960-pixel column, as a reader shows one, and
// prose from edge to edge, the most text a screen holds. Prints the
// character error rate and the characters beside the time.
#include "OCRLanguagePreference.h"
#include "QtBenchmarkMain.h"
#include "QtPainterCanvas.h"
#include "ScreenshotTextRecognition.h"
#include "TesseractTextRecognizer.h"
#include "TextSpecimens.h"
#include "WorkerPool.h"
#include "ZXingQRCodeReader.h"

#include <QGuiApplication>


using namespace tosvar;

namespace {


void readScreen(benchmark::State& state, int columnWidth) {
    const QSize size(1920, 1080);
    const std::vector<TextSpecimens::Section> page = TextSpecimens::screenful(size, 14, columnWidth);
    const ImageBuffer screen = imageFromQt(TextSpecimens::render(page, size, 14, columnWidth));
    // As in the application: one recogniser whose engines stay loaded.
    static TesseractTextRecognizer recognizer([] { return OCRLanguagePreference::defaultLanguages; }, WorkerPool::shared());
    ZXingQRCodeReader codes;
    static const bool warm = [&] { return ScreenshotTextRecognition::capturePlainText(recognizer, codes, screen, 1).has_value(); }();
    benchmark::DoNotOptimize(warm);
    std::string text;
    for (auto _ : state) text = ScreenshotTextRecognition::capturePlainText(recognizer, codes, screen, 1).value_or("");
    const std::string truth = TextSpecimens::truth(page);
    state.counters["CER_percent"] = 100 * TextSpecimens::characterErrorRate(text, truth);
    state.counters["characters"] = static_cast<double>(truth.size());
}

// The QR search alone over the article screen, which holds no code.
void findCodes(benchmark::State& state) {
    const QSize size(1920, 1080);
    const ImageBuffer screen = imageFromQt(TextSpecimens::render(TextSpecimens::screenful(size, 14, 960), size, 14, 960));
    ZXingQRCodeReader codes;
    for (auto _ : state) benchmark::DoNotOptimize(codes.qrCodes(screen));
}

} // namespace

BENCHMARK(findCodes)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(readScreen, article, 960)->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(7)->ReportAggregatesOnly()->UseRealTime();
BENCHMARK_CAPTURE(readScreen, edgeToEdge, 0)->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(5)->ReportAggregatesOnly()->UseRealTime();

int main(int argc, char** argv) { return runQtBenchmarks<QGuiApplication>(argc, argv); }
