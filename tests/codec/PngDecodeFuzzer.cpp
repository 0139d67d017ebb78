// libFuzzer entry: any bytes through the PNG decoder must give an image or an
// error, never a crash, a leak or undefined behaviour.
#include "PngDecoder.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    tosvar::Expected<tosvar::ImageBuffer> image = tosvar::PngDecoder::decode(std::span(data, size));
    if (image) {
        volatile std::uint8_t sink = image->pixel(image->width() - 1, image->height() - 1).a;
        (void)sink;
    }
    (void)tosvar::PngDecoder::readHeader(std::span(data, size));
    return 0;
}
