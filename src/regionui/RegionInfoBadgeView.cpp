#include "RegionInfoBadgeView.h"

#include "RegionInfoBadgePainter.h"

#include <QMouseEvent>
#include <QPainter>

#include <cmath>

namespace tosvar {

RegionInfoBadgeView::RegionInfoBadgeView(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_TranslucentBackground);
    setMouseTracking(true);
    setCursor(Qt::ArrowCursor);
}

void RegionInfoBadgeView::setSizeText(const QString& text) {
    if (text == sizeText_) return;
    sizeText_ = text;
    resizeToContent();
}

void RegionInfoBadgeView::setToggle(std::optional<QString> label, bool on) {
    toggleLabel_ = std::move(label);
    shadowOn_ = on;
    resizeToContent();
}

void RegionInfoBadgeView::resizeToContent() {
    const QSizeF size = RegionInfoBadgePainter::measure(sizeText_, toggleLabel_);
    resize(static_cast<int>(size.width()), static_cast<int>(size.height()));
    update();
}

void RegionInfoBadgeView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    RegionInfoBadgePainter::paint(painter, size(), sizeText_, toggleLabel_, shadowOn_, toggleHovered_);
}

void RegionInfoBadgeView::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    dragStart_ = event->globalPosition();
    dragStartTopLeft_ = pos();
    dragging_ = false;
}

void RegionInfoBadgeView::mouseMoveEvent(QMouseEvent* event) {
    if (!dragStart_) {
        const bool hovered = RegionInfoBadgePainter::toggleRect(size(), sizeText_, toggleLabel_).contains(event->position());
        if (hovered != toggleHovered_) {
            toggleHovered_ = hovered;
            update();
        }
        return;
    }
    const QPointF offset = event->globalPosition() - *dragStart_;
    if (!dragging_ && std::hypot(offset.x(), offset.y()) < dragThreshold) return;
    dragging_ = true;
    if (onDragMoved) onDragMoved(dragStartTopLeft_ + offset);
}

void RegionInfoBadgeView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !dragStart_) return;
    dragStart_.reset();
    if (dragging_) {
        dragging_ = false;
        if (onDragEnded) onDragEnded(QRectF(geometry()).center());
        return;
    }
    if (!RegionInfoBadgePainter::toggleRect(size(), sizeText_, toggleLabel_).contains(event->position())) return;
    shadowOn_ = !shadowOn_;
    update();
    if (onToggle) onToggle(shadowOn_);
}

void RegionInfoBadgeView::leaveEvent(QEvent*) {
    if (!toggleHovered_) return;
    toggleHovered_ = false;
    update();
}

} // namespace tosvar
