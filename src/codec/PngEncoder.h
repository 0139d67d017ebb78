#pragma once

#include "Expected.h"
#include "ImageBuffer.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace tosvar {

struct PngEncodeOptions {
    // Deflate level: 0-9 for the streaming writer, 0-12 for whole images.
    // Screenshots are flat colour and text, where the low levels already find
    // most of the redundancy at a fraction of the time.
    int compressionLevel = 2;
};

// Receives encoded bytes as they are produced; returns false to abort.
using PngByteSink = std::function<bool(const std::uint8_t* bytes, std::size_t count)>;

// Writes one PNG of a known size, band by band, so a very tall image never has
// to sit in memory twice. Opaque images are written as RGB, others as RGBA with
// straight alpha. Not thread-safe; one writer per image.
class PngEncoder {
public:
    PngEncoder(PngByteSink sink, int width, int height, bool opaque, PngEncodeOptions options = {});
    ~PngEncoder();
    PngEncoder(const PngEncoder&) = delete;
    PngEncoder& operator=(const PngEncoder&) = delete;

    // Appends the rows of `band`, which must be as wide as the image. Returns the
    // error that stopped the writer; after an error every later call fails too.
    std::optional<Error> writeRows(const ImageBuffer& band);
    // Ends the stream; an image with rows still missing is an error.
    std::optional<Error> finish();

    // Whole images in memory, in one pass (see PngWholeEncoder).
    static Expected<std::vector<std::uint8_t>> encode(const ImageBuffer& image, PngEncodeOptions options = {});
    static std::optional<Error> writeFile(const ImageBuffer& image, const std::filesystem::path& path,
                                          PngEncodeOptions options = {});

    struct State; // the libpng handles; public only so its C callbacks can name it

private:
    std::unique_ptr<State> state_;
};

} // namespace tosvar
