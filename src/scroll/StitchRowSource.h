#pragma once

#include "ImageBuffer.h"

#include <vector>

namespace tosvar {

// A stitched document rendered band by band, so that an encoder can stream
// an image far taller than one buffer should hold. The pieces stack top to
// bottom; a transposed source swaps the rows and columns of the result, one
// band of output rows being a band of document columns.
class StitchRowSource {
public:
    // `width` is the stitched width; pieces narrower leave transparent pixels.
    // A transposed band holds at most 16 MiB, so `rowsPerBand` shrinks to fit
    // (to 1 for documents over 4,194,304 rows); it is never below 1.
    StitchRowSource(std::vector<ImageBuffer> pieces, int width, int rowsPerBand, bool transposed);

    int width() const { return transposed_ ? stitchHeight_ : stitchWidth_; }
    int height() const { return transposed_ ? stitchWidth_ : stitchHeight_; }
    int rowsPerBand() const { return rowsPerBand_; }
    bool isOpaque() const;

    // Output rows [start, start + rowsPerBand), cut at the bottom, in the byte
    // order of the first piece. Empty for a start outside the image.
    ImageBuffer renderBand(int start) const;

private:
    struct Piece {
        ImageBuffer image;
        int top = 0; // first document row
    };

    void renderRows(MutableImage& band, int start) const;
    void renderColumns(MutableImage& band, int start) const;

    std::vector<Piece> pieces_;
    int stitchWidth_ = 0;
    int stitchHeight_ = 0;
    bool transposed_ = false;
    int rowsPerBand_ = 1;
    PixelOrder order_ = PixelOrder::rgba;
};

} // namespace tosvar
