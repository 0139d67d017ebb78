#pragma once

#include "TextRecognizing.h"

namespace tosvar {

// QR codes found by ZXing, each with its payload and box.
class ZXingQRCodeReader final : public QRCodeReading {
public:
    std::vector<RecognizedQRCode> qrCodes(const ImageBuffer& image) override;
};

} // namespace tosvar
