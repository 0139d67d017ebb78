#include "RegionChromeView.h"

#include "RegionSelectionChrome.h"

#include <QPainter>
#include <QPainterPath>

namespace tosvar {

namespace {

const QColor accent(10, 132, 255);

QPointF toQt(Point p) { return {p.x, p.y}; }

void strokeHandle(QPainter& painter, const RegionSelectionChrome::HandleEntry& entry, double under, double over) {
    for (const auto& [width, colour] : {std::pair{under, QColor(Qt::white)}, std::pair{over, accent}}) {
        painter.setPen(QPen(colour, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        for (const RegionSelectionChrome::Segment& s : entry.segments) painter.drawLine(toQt(s.from), toQt(s.to));
    }
}

} // namespace

RegionChromeView::RegionChromeView(const RegionAnnotatingModel& model, QWidget* parent) : QWidget(parent), model_(model) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_TranslucentBackground);
}

void RegionChromeView::setWindowOutlines(std::vector<Rect> windows) {
    if (windows == windowOutlines_) return;
    windowOutlines_ = std::move(windows);
    update();
}

void RegionChromeView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const Rect shown = model_.shown();
    const QRectF region(shown.minX(), shown.minY(), shown.width(), shown.height());
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(accent, 1.5));
    const double radius = std::min(model_.cornerRadius(), std::min(region.width(), region.height()) / 2);
    painter.drawRoundedRect(region, radius, radius);
    if (model_.activeHandle() && model_.chromeHidden()) {
        QPen guide(QColor(255, 255, 255, 160), 1);
        guide.setDashPattern({4, 4});
        painter.setPen(guide);
        const HandleSides sides = sidesOf(*model_.activeHandle());
        if (sides.x) {
            const double x = sides.x < 0 ? region.left() : region.right();
            painter.drawLine(QPointF(x, 0), QPointF(x, height()));
        }
        if (sides.y) {
            const double y = sides.y < 0 ? region.top() : region.bottom();
            painter.drawLine(QPointF(0, y), QPointF(width(), y));
        }
    }
    if (model_.chromeHidden()) return;
    for (const Rect& window : windowOutlines_) {
        QPen dashed(accent, 1);
        dashed.setDashPattern({4, 3});
        painter.setPen(dashed);
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(QRectF(window.minX(), window.minY(), window.width(), window.height()).adjusted(0.5, 0.5, -0.5, -0.5));
        const Point centre = RegionSelectionChrome::removeBadgeCenter(window, model_.bounds());
        const double r = RegionSelectionChrome::removeBadgeRadius - 2;
        painter.setPen(QPen(Qt::white, 1.5));
        painter.setBrush(QColor(60, 60, 60, 230));
        painter.drawEllipse(toQt(centre), r, r);
        const double arm = r * 0.4;
        painter.drawLine(QPointF(centre.x - arm, centre.y - arm), QPointF(centre.x + arm, centre.y + arm));
        painter.drawLine(QPointF(centre.x - arm, centre.y + arm), QPointF(centre.x + arm, centre.y - arm));
    }
    const std::optional<RectHandle> highlight = model_.activeHandle() ? model_.activeHandle() : model_.hoveredHandle();
    const std::vector<RegionSelectionChrome::HandleEntry> handles = RegionSelectionChrome::drawnHandles(shown);
    for (const auto& entry : handles)
        if (entry.handle != highlight) strokeHandle(painter, entry, 5.5, 3.5);
    for (const auto& entry : handles)
        if (entry.handle == highlight) strokeHandle(painter, entry, 7, 5);
    if (model_.showsRadiusGrip()) {
        const Point grip = RegionSelectionChrome::radiusGrip(shown, model_.cornerRadius());
        const double r = model_.radiusGripHovered() || model_.adjustingRadius() ? 5.5 : 4;
        painter.setPen(QPen(accent, 1.5));
        painter.setBrush(Qt::white);
        painter.drawEllipse(toQt(grip), r, r);
    }
}

} // namespace tosvar
