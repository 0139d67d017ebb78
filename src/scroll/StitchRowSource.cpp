#include "StitchRowSource.h"

#include <algorithm>
#include <cstring>

namespace tosvar {

namespace {

constexpr long long transposedBandBytes = 0x1000000;

} // namespace

StitchRowSource::StitchRowSource(std::vector<ImageBuffer> pieces, int width, int rowsPerBand, bool transposed)
    : stitchWidth_(std::max(width, 0)), transposed_(transposed) {
    if (!pieces.empty()) order_ = pieces.front().order();
    for (ImageBuffer& image : pieces) {
        if (image.isEmpty()) continue;
        pieces_.push_back({image.converted(order_), stitchHeight_});
        stitchHeight_ += image.height();
    }
    rowsPerBand_ = std::max(rowsPerBand, 1);
    if (transposed_ && stitchHeight_ > 0)
        rowsPerBand_ = static_cast<int>(std::clamp<long long>(transposedBandBytes / (4LL * stitchHeight_), 1, rowsPerBand_));
}

bool StitchRowSource::isOpaque() const {
    return std::all_of(pieces_.begin(), pieces_.end(), [](const Piece& p) { return p.image.isOpaque(); });
}

ImageBuffer StitchRowSource::renderBand(int start) const {
    if (start < 0 || start >= height() || width() <= 0) return {};
    MutableImage band(width(), std::min(rowsPerBand_, height() - start), order_);
    if (transposed_) renderColumns(band, start);
    else renderRows(band, start);
    return std::move(band).freeze();
}

void StitchRowSource::renderRows(MutableImage& band, int start) const {
    const int end = start + band.height();
    for (const Piece& piece : pieces_) {
        const int first = std::max(start, piece.top), last = std::min(end, piece.top + piece.image.height());
        const std::size_t bytes = 4 * static_cast<std::size_t>(std::min(piece.image.width(), stitchWidth_));
        for (int y = first; y < last; ++y) std::memcpy(band.row(y - start), piece.image.row(y - piece.top), bytes);
    }
}

void StitchRowSource::renderColumns(MutableImage& band, int start) const {
    // Output row k is document column start + k; output column y is document row y.
    for (const Piece& piece : pieces_) {
        const int columns = std::min(band.height(), piece.image.width() - start);
        for (int r = 0; r < piece.image.height(); ++r) {
            const std::uint8_t* source = piece.image.row(r) + 4 * static_cast<std::size_t>(start);
            const std::size_t target = 4 * static_cast<std::size_t>(piece.top + r);
            for (int k = 0; k < columns; ++k) std::memcpy(band.row(k) + target, source + 4 * k, 4);
        }
    }
}

} // namespace tosvar
