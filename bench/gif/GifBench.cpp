// Our GIF of a 10-second 1280x720 screen recording at 10 frames a second
// against ffmpeg's two passes (palettegen, then paletteuse) on the same
// frames: bytes, PSNR and seconds for both, in one run. The recording is a
// desktop: a wallpaper gradient, a window whose text scrolls, a moving
// pointer and a ticking clock. Both files are decoded by Qt's GIF reader
// and each frame held for its delay before it is compared with the source.
#include "GIFExporter.h"
#include "QtBenchmarkMain.h"
#include "QtPainterCanvas.h"
#include "WorkerPool.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QImageReader>
#include <QPainter>
#include <QTemporaryDir>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>

using namespace tosvar;

namespace {

constexpr int width = 1280, height = 720, fps = 10, seconds = 10;

QImage frame(int index) {
    QImage image(width, height, QImage::Format_RGBA8888_Premultiplied);
    QPainter painter(&image);
    QLinearGradient wallpaper(0, 0, width, height);
    wallpaper.setColorAt(0, QColor(32, 64, 112));
    wallpaper.setColorAt(1, QColor(120, 40, 90));
    painter.fillRect(image.rect(), wallpaper);
    const QRect window(160, 90, 900, 540);
    painter.fillRect(window.adjusted(4, 6, 4, 6), QColor(0, 0, 0, 60));
    painter.fillRect(window, QColor(250, 250, 250));
    painter.fillRect(QRect(window.topLeft(), QSize(window.width(), 32)), QColor(225, 228, 232));
    painter.setPen(QColor(40, 40, 40));
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(14);
    painter.setFont(font);
    painter.drawText(window.adjusted(12, 8, 0, 0), QStringLiteral("Harbour notes — editor"));
    painter.setClipRect(window.adjusted(0, 40, 0, 0));
    const int scroll = index * 6;
    for (int line = 0; line < 60; ++line) {
        const int y = window.top() + 60 + line * 20 - scroll;
        painter.setPen(line % 7 == 0 ? QColor(20, 90, 180) : QColor(40, 40, 40));
        painter.drawText(window.left() + 20, y, QStringLiteral("%1  The ferry leaves twenty minutes after high water; cars wait in lane %2.")
                                                    .arg(line + 1, 2)
                                                    .arg(line % 4 + 1));
    }
    painter.setClipping(false);
    painter.fillRect(QRect(width - 120, height - 36, 110, 28), QColor(20, 20, 20, 200));
    painter.setPen(Qt::white);
    painter.drawText(QRect(width - 120, height - 36, 110, 28), Qt::AlignCenter, QStringLiteral("12:%1").arg(index / fps, 2, 10, QLatin1Char('0')));
    const QPointF pointer(300 + 500 * std::sin(index / 15.0), 300 + 200 * std::cos(index / 11.0));
    QPolygonF arrow({pointer, pointer + QPointF(0, 18), pointer + QPointF(5, 13), pointer + QPointF(12, 13)});
    painter.setPen(QPen(Qt::white, 1.5));
    painter.setBrush(Qt::black);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.drawPolygon(arrow);
    return image;
}


// The GIF's frames on the source's timeline: each held for its delay.
std::vector<QImage> timeline(const QByteArray& gif, std::size_t frames) {
    QByteArray bytes = gif;
    QBuffer buffer(&bytes);
    QImageReader reader(&buffer, "gif");
    std::vector<QImage> out;
    for (QImage image = reader.read(); !image.isNull() && out.size() < frames; image = reader.read()) {
        const int repeats = std::max(1, static_cast<int>(std::lround(reader.nextImageDelay() / (1000.0 / fps))));
        for (int i = 0; i < repeats && out.size() < frames; ++i) out.push_back(image.convertToFormat(QImage::Format_RGB32));
    }
    return out;
}

double psnr(const std::vector<QImage>& source, const std::vector<QImage>& shown) {
    double squared = 0;
    std::size_t count = 0;
    for (std::size_t f = 0; f < source.size(); ++f) {
        if (f >= shown.size()) return 0;
        for (int y = 0; y < height; ++y) {
            const QRgb* a = reinterpret_cast<const QRgb*>(source[f].constScanLine(y));
            const QRgb* b = reinterpret_cast<const QRgb*>(shown[f].constScanLine(y));
            for (int x = 0; x < width; ++x) {
                const double dr = qRed(a[x]) - qRed(b[x]), dg = qGreen(a[x]) - qGreen(b[x]), db = qBlue(a[x]) - qBlue(b[x]);
                squared += dr * dr + dg * dg + db * db;
                count += 3;
            }
        }
    }
    return 10 * std::log10(255.0 * 255.0 / (squared / static_cast<double>(count)));
}

double secondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication application(argc, argv);
    const std::size_t count = static_cast<std::size_t>(fps * seconds);
    std::vector<QImage> source;
    for (std::size_t i = 0; i < count; ++i) source.push_back(frame(static_cast<int>(i)).convertToFormat(QImage::Format_RGB32));
    std::vector<ImageBuffer> buffers;
    for (const QImage& image : source) buffers.push_back(imageFromQt(image));

    // Ours: the palette from five frames, then every frame.
    const auto ourStart = std::chrono::steady_clock::now();
    std::vector<ImageBuffer> samples;
    for (std::size_t i : GIFExporter::paletteSamplePositions(count)) samples.push_back(buffers[i]);
    const GIFColorQuantizer quantizer = GIFExporter::quantizer(samples);
    GIFExporter::AnimationEncoder encoder(quantizer, width, height, WorkerPool::shared());
    for (const ImageBuffer& buffer : buffers) encoder.add(buffer, 1.0 / fps);
    const std::vector<std::uint8_t> ours = encoder.finish();
    const double ourSeconds = secondsSince(ourStart);

    // ffmpeg: raw frames in, two passes.
    QTemporaryDir folder;
    const std::string raw = folder.filePath(QStringLiteral("frames.rgb")).toStdString();
    {
        std::ofstream out(raw, std::ios::binary);
        for (const QImage& image : source) {
            const QImage rgb = image.convertToFormat(QImage::Format_RGB888);
            for (int y = 0; y < height; ++y) out.write(reinterpret_cast<const char*>(rgb.constScanLine(y)), width * 3);
        }
    }
    const std::string input = "-f rawvideo -pix_fmt rgb24 -s " + std::to_string(width) + "x" + std::to_string(height) + " -r " +
                              std::to_string(fps) + " -i " + raw;
    const std::string palette = folder.filePath(QStringLiteral("palette.png")).toStdString();
    const std::string theirs = folder.filePath(QStringLiteral("ffmpeg.gif")).toStdString();
    const auto theirStart = std::chrono::steady_clock::now();
    const int first = std::system(("ffmpeg -v error -y " + input + " -vf palettegen " + palette).c_str());
    const int second = std::system(("ffmpeg -v error -y " + input + " -i " + palette + " -lavfi paletteuse " + theirs).c_str());
    const double theirSeconds = secondsSince(theirStart);
    if (first != 0 || second != 0) {
        std::fprintf(stderr, "ffmpeg failed (is it installed? scripts/setup.sh installs it)\n");
        return 1;
    }
    QFile theirFile(QString::fromStdString(theirs));
    theirFile.open(QIODevice::ReadOnly);
    const QByteArray theirBytes = theirFile.readAll();

    const QByteArray ourBytes(reinterpret_cast<const char*>(ours.data()), static_cast<qsizetype>(ours.size()));
    const double ourPSNR = psnr(source, timeline(ourBytes, count));
    const double theirPSNR = psnr(source, timeline(theirBytes, count));
    std::printf("%zu frames of %dx%d at %d fps\n", count, width, height, fps);
    std::printf("%-8s %12s %10s %10s\n", "", "bytes", "PSNR dB", "seconds");
    std::printf("%-8s %12lld %10.2f %10.2f\n", "ours", static_cast<long long>(ourBytes.size()), ourPSNR, ourSeconds);
    std::printf("%-8s %12lld %10.2f %10.2f\n", "ffmpeg", static_cast<long long>(theirBytes.size()), theirPSNR, theirSeconds);
    std::printf("ours is %s and %s\n", ourBytes.size() <= theirBytes.size() ? "no larger" : "LARGER",
                ourPSNR >= theirPSNR ? "of no lower PSNR" : "of LOWER PSNR");
    return 0;
}
