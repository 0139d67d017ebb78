#include "RegionInfoBadgePainter.h"

#include <QFontMetricsF>
#include <QPainter>

#include <cmath>

namespace tosvar::RegionInfoBadgePainter {

namespace {

constexpr double padding = 6;
constexpr double gap = 8;
constexpr double switchWidth = 27;
constexpr double switchHeight = 15;
const QColor accent(10, 132, 255);

} // namespace

QString sizeText(const Rect& rect, double scale) {
    return QStringLiteral("%1 × %2").arg(std::lround(rect.width() * scale)).arg(std::lround(rect.height() * scale));
}

QFont font() {
    QFont f;
    f.setPointSizeF(11);
    f.setWeight(QFont::Medium);
    return f;
}

QSizeF measure(const QString& size, const std::optional<QString>& label) {
    const QFontMetricsF metrics(font());
    double width = metrics.horizontalAdvance(size) + 2 * padding;
    if (label) width += gap + metrics.horizontalAdvance(*label) + padding + switchWidth;
    return {std::ceil(width), std::ceil(std::max(metrics.height(), switchHeight) + padding)};
}

QRectF toggleRect(const QSizeF& badge, const QString& size, const std::optional<QString>& label) {
    if (!label) return {};
    const double start = padding + QFontMetricsF(font()).horizontalAdvance(size) + gap / 2;
    return {start, 0, badge.width() - start, badge.height()};
}

void paint(QPainter& painter, const QSizeF& badge, const QString& size, const std::optional<QString>& label, bool shadowOn,
           bool toggleHovered) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setFont(font());
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0, 0, 0, 191));
    painter.drawRoundedRect(QRectF(QPointF(0, 0), badge), 5, 5);
    const QFontMetricsF metrics(font());
    const double sizeWidth = metrics.horizontalAdvance(size);
    painter.setPen(Qt::white);
    painter.drawText(QRectF(padding, 0, sizeWidth, badge.height()), Qt::AlignVCenter | Qt::AlignLeft, size);
    if (label) {
        const QRectF toggle = toggleRect(badge, size, label);
        if (toggleHovered) {
            painter.setPen(Qt::NoPen);
            painter.setBrush(QColor(255, 255, 255, 30));
            painter.drawRoundedRect(toggle.adjusted(0, 2, -2, -2), 4, 4);
        }
        painter.setPen(QColor(255, 255, 255, 60));
        const double divider = toggle.left();
        painter.drawLine(QPointF(divider, 5), QPointF(divider, badge.height() - 5));
        painter.setPen(Qt::white);
        const double labelX = divider + gap / 2;
        painter.drawText(QRectF(labelX, 0, metrics.horizontalAdvance(*label), badge.height()), Qt::AlignVCenter | Qt::AlignLeft, *label);
        const QRectF track(badge.width() - padding - switchWidth, (badge.height() - switchHeight) / 2, switchWidth, switchHeight);
        painter.setPen(Qt::NoPen);
        painter.setBrush(shadowOn ? accent : QColor(255, 255, 255, 70));
        painter.drawRoundedRect(track, switchHeight / 2, switchHeight / 2);
        const double knob = switchHeight - 4;
        painter.setBrush(Qt::white);
        painter.drawEllipse(QRectF(shadowOn ? track.right() - 2 - knob : track.left() + 2, track.top() + 2, knob, knob));
    }
    painter.restore();
}

} // namespace tosvar::RegionInfoBadgePainter
