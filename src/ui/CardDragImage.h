#pragma once

#include <QImage>
#include <QSize>

namespace tosvar {

// The picture a dragged capture card carries: the thumbnail scaled to fill
// `size` (the larger of the two ratios), centred, clipped to a rounded
// rectangle; outside the corners stays transparent.
QImage cardDragImage(const QImage& thumbnail, const QSize& size, qreal cornerRadius);

// The image of several dragged files: `image` repeated once per file, each
// copy 6 points right of and below the one before.
QImage stackedDragImage(const QImage& image, int fileCount);

} // namespace tosvar
