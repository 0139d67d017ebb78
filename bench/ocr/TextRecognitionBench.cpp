// Reading a 1920x1080 screen of 14-pixel prose as a text capture does:
// enlarged, recognised with the default languages, grouped and merged with
// QR payloads. Prints the character error rate beside the time.
#include "InMemoryDefaultsStore.h"
#include "OCRLanguagePreference.h"
#include "QtBenchmarkMain.h"
#include "ScreenshotTextRecognition.h"
#include "TesseractTextRecognizer.h"
#include "TextSpecimens.h"
#include "WorkerPool.h"
#include "ZXingQRCodeReader.h"

#include <QGuiApplication>

#include <cstdlib>
#include <cstring>

using namespace tosvar;

namespace {

ImageBuffer imageOf(const QImage& rendered) {
    MutableImage copy(rendered.width(), rendered.height());
    for (int y = 0; y < rendered.height(); ++y)
        std::memcpy(copy.row(y), rendered.constScanLine(y), static_cast<std::size_t>(rendered.width()) * 4);
    return std::move(copy).freeze();
}

// `languages` picks the models: the defaults a new user has, or English alone.
void readScreen(benchmark::State& state, std::vector<std::string> languages) {
    const QSize size(1920, 1080);
    const std::vector<TextSpecimens::Section> page = TextSpecimens::screenful(size, 14);
    const ImageBuffer screen = imageOf(TextSpecimens::render(page, size, 14));
    TesseractTextRecognizer recognizer([languages] { return languages; }, WorkerPool::shared());
    ZXingQRCodeReader codes;
    std::string text;
    for (auto _ : state) text = ScreenshotTextRecognition::capturePlainText(recognizer, codes, screen, std::getenv("SCALE") ? std::atof(std::getenv("SCALE")) : 1).value_or("");
    const std::string truth = TextSpecimens::truth(page);
    state.counters["CER_percent"] = 100 * TextSpecimens::characterErrorRate(text, truth);
    state.counters["characters"] = static_cast<double>(truth.size());
}

} // namespace

BENCHMARK_CAPTURE(readScreen, defaultLanguages, OCRLanguagePreference::defaultLanguages)
    ->Unit(benchmark::kMillisecond)->Iterations(5)->Repetitions(1)->UseRealTime();
BENCHMARK_CAPTURE(readScreen, english, std::vector<std::string>{"en-US"})
    ->Unit(benchmark::kMillisecond)->Iterations(5)->UseRealTime();

int main(int argc, char** argv) { return runQtBenchmarks<QGuiApplication>(argc, argv); }
