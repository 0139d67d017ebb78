#pragma once

#include "PixelRect.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace tosvar {

// Writes a looping GIF89a image, frame by frame, into memory: one global
// colour table, the Netscape loop extension with a count of 0 (for ever),
// and each frame as a rectangle of palette indices with its delay, drawn
// over what the frames before it left (nothing is disposed), so a frame
// needs to hold only what changed, with the transparent index where the
// picture stays as it was. The LZW compression is our own.
class GifWriter {
public:
    // `palette` holds at most 256 colours 0x00RRGGBB.
    GifWriter(int width, int height, const std::vector<std::uint32_t>& palette);

    struct Frame {
        PixelRect area;                           // where the indices go on the canvas
        const std::uint8_t* indices = nullptr;    // area.width x area.height, row by row
        std::optional<std::uint8_t> transparent;  // the index that leaves the pixel as it was
        double delaySeconds = 0.1;                // kept in hundredths, at least 0.02
    };
    void add(const Frame& frame);
    // The whole file, trailer included; the writer takes no more frames.
    std::vector<std::uint8_t> finish();

private:
    void put16(int value);

    std::vector<std::uint8_t> out_;
    int width_, height_;
    int tableBits_; // the global table holds 2^tableBits_ entries
};

} // namespace tosvar
