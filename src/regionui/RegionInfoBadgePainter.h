#pragma once

#include "Rect.h"

#include <QFont>
#include <QRectF>
#include <QString>

#include <optional>

class QPainter;

// The badge beside a committed region: its size in pixels and, where the
// capture can take a shadow, the shadow switch with its label.
namespace tosvar::RegionInfoBadgePainter {

// "<w> × <h>", the region in device pixels.
QString sizeText(const Rect& rect, double scale);
QFont font();
QSizeF measure(const QString& sizeText, const std::optional<QString>& toggleLabel);
// Where the switch and its label answer a click, in the badge's own points.
QRectF toggleRect(const QSizeF& badge, const QString& sizeText, const std::optional<QString>& toggleLabel);
void paint(QPainter& painter, const QSizeF& badge, const QString& sizeText, const std::optional<QString>& toggleLabel, bool shadowOn,
           bool toggleHovered);

} // namespace tosvar::RegionInfoBadgePainter
