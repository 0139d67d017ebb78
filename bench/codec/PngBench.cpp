// Encode and decode time of a 5120x2880 screenshot-like image, ours against
// QImage's PNG codec in the same run. Prints the sizes too: speed bought with
// a much larger file would be no bargain.
#include "PngDecoder.h"
#include "PngEncoder.h"

#include <QBuffer>
#include <QImage>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <random>

using namespace tosvar;

namespace {

constexpr int width = 5120;
constexpr int height = 2880;

// Window chrome, panels, lines of glyph-like strokes, and a photo with noise
// in one corner: the mix a desktop screenshot holds.
const ImageBuffer& screenshot() {
    static const ImageBuffer image = [] {
        std::mt19937 random(42);
        MutableImage out(width, height, PixelOrder::bgra);
        for (int y = 0; y < height; ++y) {
            std::uint8_t* row = out.row(y);
            for (int x = 0; x < width; ++x) {
                int r = 246, g = 246, b = 248;
                if (y < 56) r = g = b = 222;                     // title bar
                else if (x < 640) { r = 236; g = 238; b = 242; } // sidebar
                const bool textLine = (y / 24) % 2 == 1 && (y % 24) > 6 && (y % 24) < 20 && x > 700 && x < 4200;
                if (textLine && ((x * 13 + (y / 24) * 7) % 17 < 5 || (x / 9 + y) % 23 == 0)) r = g = b = 30;
                if (x > 3400 && y > 1500) { // photo
                    r = (x * 3 + y) % 256;
                    g = (y * 2) % 256;
                    b = 128 + static_cast<int>(random() % 40);
                }
                row[4 * x + 0] = static_cast<std::uint8_t>(b);
                row[4 * x + 1] = static_cast<std::uint8_t>(g);
                row[4 * x + 2] = static_cast<std::uint8_t>(r);
                row[4 * x + 3] = 255;
            }
        }
        return std::move(out).freeze();
    }();
    return image;
}

// The same pixels as the toolkit's own opaque format.
const QImage& screenshotAsQImage() {
    static const QImage image = QImage(screenshot().data(), width, height, static_cast<qsizetype>(screenshot().stride()),
                                       QImage::Format_RGB32)
                                    .copy();
    return image;
}

const std::vector<std::uint8_t>& ourPng() {
    static const std::vector<std::uint8_t> bytes = PngEncoder::encode(screenshot()).value();
    return bytes;
}

QByteArray qtPng() {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    screenshotAsQImage().save(&buffer, "PNG");
    return bytes;
}

void BM_EncodeOurs(benchmark::State& state) {
    std::size_t size = 0;
    for (auto _ : state) {
        auto bytes = PngEncoder::encode(screenshot());
        size = bytes->size();
        benchmark::DoNotOptimize(size);
    }
    state.counters["bytes"] = static_cast<double>(size);
}

void BM_EncodeQImage(benchmark::State& state) {
    qsizetype size = 0;
    for (auto _ : state) {
        size = qtPng().size();
        benchmark::DoNotOptimize(size);
    }
    state.counters["bytes"] = static_cast<double>(size);
}

void BM_DecodeOurs(benchmark::State& state) {
    const auto& bytes = ourPng();
    for (auto _ : state) {
        auto image = PngDecoder::decode(bytes);
        benchmark::DoNotOptimize(image->data());
    }
}

void BM_DecodeQImage(benchmark::State& state) {
    // The same file for both decoders, so only the decoder differs.
    const QByteArray bytes(reinterpret_cast<const char*>(ourPng().data()), static_cast<qsizetype>(ourPng().size()));
    for (auto _ : state) {
        QImage image = QImage::fromData(bytes, "PNG");
        benchmark::DoNotOptimize(image.constBits());
    }
}

} // namespace

BENCHMARK(BM_EncodeOurs)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_EncodeQImage)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_DecodeOurs)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_DecodeQImage)->Unit(benchmark::kMillisecond)->MinTime(2.0);

BENCHMARK_MAIN();
