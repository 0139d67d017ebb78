#include "ZXingQRCodeReader.h"

#define ZX_USE_UTF8 1
#include <ZXing/ReadBarcode.h>

#include <algorithm>

namespace tosvar {

std::vector<RecognizedQRCode> ZXingQRCodeReader::qrCodes(const ImageBuffer& source) {
    std::vector<RecognizedQRCode> codes;
    if (source.isEmpty()) return codes;
    const ImageBuffer image = source.converted(PixelOrder::rgba);
    const ZXing::ImageView view(image.data(), image.width(), image.height(), ZXing::ImageFormat::RGBX,
                                static_cast<int>(image.stride()));
    const double w = image.width(), h = image.height();
    for (const ZXing::Result& result : ZXing::ReadBarcodes(view, ZXing::DecodeHints().setFormats(ZXing::BarcodeFormat::QRCode))) {
        if (!result.isValid() || result.text().empty()) continue;
        int minX = image.width(), minY = image.height(), maxX = 0, maxY = 0;
        for (const auto& corner : result.position()) {
            minX = std::min(minX, corner.x);
            minY = std::min(minY, corner.y);
            maxX = std::max(maxX, corner.x);
            maxY = std::max(maxY, corner.y);
        }
        codes.push_back({result.text(), Rect(minX / w, 1 - maxY / h, (maxX - minX) / w, (maxY - minY) / h)});
    }
    return codes;
}

} // namespace tosvar
