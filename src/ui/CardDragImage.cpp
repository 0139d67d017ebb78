#include "CardDragImage.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace tosvar {

namespace {

constexpr int stackOffset = 6;

} // namespace

QImage cardDragImage(const QImage& thumbnail, const QSize& size, qreal cornerRadius) {
    QImage out(size, QImage::Format_ARGB32_Premultiplied);
    out.fill(Qt::transparent);
    if (thumbnail.isNull() || size.isEmpty()) return out;
    QPainter painter(&out);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    QPainterPath clip;
    clip.addRoundedRect(QRectF(QPointF(0, 0), QSizeF(size)), cornerRadius, cornerRadius);
    painter.setClipPath(clip);
    const qreal scale = std::max(qreal(size.width()) / thumbnail.width(), qreal(size.height()) / thumbnail.height());
    const QSizeF drawn(thumbnail.width() * scale, thumbnail.height() * scale);
    const QRectF target(QPointF((size.width() - drawn.width()) / 2, (size.height() - drawn.height()) / 2), drawn);
    painter.drawImage(target, thumbnail);
    return out;
}

QImage stackedDragImage(const QImage& image, int fileCount) {
    const int copies = std::max(1, fileCount);
    const int extra = (copies - 1) * stackOffset;
    QImage out(image.width() + extra, image.height() + extra, QImage::Format_ARGB32_Premultiplied);
    out.fill(Qt::transparent);
    QPainter painter(&out);
    for (int i = copies - 1; i >= 0; --i) painter.drawImage(QPoint(i * stackOffset, i * stackOffset), image);
    return out;
}

} // namespace tosvar
