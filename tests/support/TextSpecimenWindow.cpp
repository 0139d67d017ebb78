// A window that shows text or a QR code for the text-capture tests:
//   tosvar-test-text-window document X Y      the paragraph, code and table
//   tosvar-test-text-window qr PAYLOAD X Y    a QR code of PAYLOAD
// The window's content stands at X, Y of the screen, frameless; "shown" is
// printed once it is on screen.
#include "TextSpecimens.h"

#define ZX_USE_UTF8 1
#include <ZXing/BitMatrix.h>
#include <ZXing/MultiFormatWriter.h>

#include <QApplication>
#include <QLabel>
#include <QPainter>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

QImage qrCode(const std::string& payload) {
    const ZXing::BitMatrix matrix = ZXing::MultiFormatWriter(ZXing::BarcodeFormat::QRCode).setMargin(4).encode(payload, 200, 200);
    QImage image(matrix.width(), matrix.height(), QImage::Format_RGB32);
    for (int y = 0; y < matrix.height(); ++y)
        for (int x = 0; x < matrix.width(); ++x) image.setPixel(x, y, matrix.get(x, y) ? qRgb(0, 0, 0) : qRgb(255, 255, 255));
    return image;
}

} // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    const std::string kind = argc > 1 ? argv[1] : "document";
    const bool qr = kind == "qr";
    const int firstPosition = qr ? 3 : 2;
    if (argc < firstPosition + 2) {
        std::fprintf(stderr, "usage: %s document X Y | qr PAYLOAD X Y\n", argv[0]);
        return 2;
    }
    const QImage content = qr ? qrCode(argv[2]) : tosvar::TextSpecimens::render(tosvar::TextSpecimens::document(), QSize(900, 320), 14);
    QLabel window;
    window.setWindowFlags(Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    window.setWindowTitle(QStringLiteral("Text specimen"));
    window.setPixmap(QPixmap::fromImage(content));
    window.setFixedSize(content.size());
    window.move(std::atoi(argv[firstPosition]), std::atoi(argv[firstPosition + 1]));
    window.show();
    QTimer::singleShot(300, [] {
        std::puts("shown");
        std::fflush(stdout);
    });
    return application.exec();
}
