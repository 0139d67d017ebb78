#include "RegionFloatingBar.h"

#include <QGraphicsDropShadowEffect>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>

namespace tosvar {

RegionFloatingBar::RegionFloatingBar(QWidget* content, QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_TranslucentBackground);
    setCursor(Qt::ArrowCursor);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(6, 3, 6, 3);
    row->setSpacing(2);
    auto* grip = new QLabel(QStringLiteral("⠿"), this);
    grip->setCursor(Qt::OpenHandCursor);
    grip->setContentsMargins(4, 0, 4, 0);
    grip->installEventFilter(this);
    grip_ = grip;
    row->addWidget(grip);
    content->setParent(this);
    row->addWidget(content, 1);
    auto* shadow = new QGraphicsDropShadowEffect(this);
    shadow->setBlurRadius(14);
    shadow->setOffset(0, 2);
    shadow->setColor(QColor(0, 0, 0, 110));
    setGraphicsEffect(shadow);
    adjustSize();
}

void RegionFloatingBar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(0, 0, 0, 40), 1));
    painter.setBrush(palette().window());
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 9, 9);
}

bool RegionFloatingBar::eventFilter(QObject* watched, QEvent* event) {
    if (watched != grip_) return false;
    switch (event->type()) {
    case QEvent::MouseButtonPress:
        lastGlobal_ = static_cast<QMouseEvent*>(event)->globalPosition();
        grip_->setCursor(Qt::ClosedHandCursor);
        return true;
    case QEvent::MouseMove:
        if (lastGlobal_) {
            const QPointF now = static_cast<QMouseEvent*>(event)->globalPosition();
            if (onDrag) onDrag(now - *lastGlobal_);
            lastGlobal_ = now;
        }
        return true;
    case QEvent::MouseButtonRelease:
        if (lastGlobal_ && onDragEnded) onDragEnded();
        lastGlobal_.reset();
        grip_->setCursor(Qt::OpenHandCursor);
        return true;
    default: return false;
    }
}

} // namespace tosvar
