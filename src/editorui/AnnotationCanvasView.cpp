#include "AnnotationCanvasView.h"

#include "AnnotationElementClipboard.h"
#include "AnnotationImageImport.h"
#include "ElementBounds.h"
#include "ElementRotation.h"
#include "HitTesting.h"
#include "LeaderSupport.h"
#include "LensDial.h"
#include "LocalizationManager.h"
#include "Pasteboard.h"
#include "QtDrawingBackend.h"
#include "QtPainterCanvas.h"
#include "QtTextMeasurer.h"
#include "StepBadgeLabel.h"
#include "WatermarkLayout.h"

#include <QApplication>
#include <QDateTime>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFile>
#include <QMimeData>
#include <QFontDatabase>
#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>
#include <QTextBlock>
#include <QTextEdit>

#include <cmath>
#include <numbers>

namespace tosvar {

namespace {

using C = AnnotationKind::Case;
using T = AnnotationTool;

const QColor accent(10, 132, 255);

QPointF toQt(Point p) { return {p.x, p.y}; }
QRectF toQt(const Rect& r) { return {r.minX(), r.minY(), r.width(), r.height()}; }
Point fromQt(QPointF p) { return {p.x(), p.y()}; }

double seconds() { return static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000; }

// The family of the face text is drawn in, so the inline field sets its
// letters where the renderer will.
QString annotationFamily(bool bold) {
    static const QString regular = [] {
        const int id = QFontDatabase::addApplicationFont(QString::fromLatin1(QtTextMeasurer::defaultFontFile));
        const QStringList families = QFontDatabase::applicationFontFamilies(id);
        return families.isEmpty() ? QString() : families.front();
    }();
    static const QString boldFamily = [] {
        const int id = QFontDatabase::addApplicationFont(QString::fromLatin1(QtTextMeasurer::boldFontFile));
        const QStringList families = QFontDatabase::applicationFontFamilies(id);
        return families.isEmpty() ? QString() : families.front();
    }();
    return bold ? boldFamily : regular;
}

QPixmap checkerTile() {
    static const QPixmap tile = [] {
        QPixmap p(22, 22);
        p.fill(QColor(236, 236, 236));
        QPainter painter(&p);
        painter.fillRect(0, 0, 11, 11, QColor(214, 214, 214));
        painter.fillRect(11, 11, 11, 11, QColor(214, 214, 214));
        return p;
    }();
    return tile;
}

Qt::CursorShape resizeCursor(RectHandle handle, double degrees) {
    static constexpr double angles[] = {45, 90, 135, 0, 45, 90, 135, 0}; // by RectHandle, modulo 180
    double a = std::fmod(angles[static_cast<int>(handle)] + degrees + 360, 180);
    if (a < 22.5 || a >= 157.5) return Qt::SizeHorCursor;
    if (a < 67.5) return Qt::SizeFDiagCursor;
    if (a < 112.5) return Qt::SizeVerCursor;
    return Qt::SizeBDiagCursor;
}

} // namespace

AnnotationCanvasView::AnnotationCanvasView(AnnotationEditorController& controller, AnnotationElementClipboard& clipboard,
                                           Pasteboard& pasteboard, QWidget* parent)
    : QWidget(parent), controller_(controller), clipboard_(clipboard), pasteboard_(pasteboard) {
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAcceptDrops(true);
    observer_ = controller_.addObserver([this] { controllerDidChange(); });
}

AnnotationCanvasView::~AnnotationCanvasView() { controller_.removeObserver(observer_); }

const TextMeasuring& AnnotationCanvasView::measure() const { return QtDrawingBackend::shared().measuring(FontFace::regular); }

AnnotationCanvasGeometry AnnotationCanvasView::canvasGeometry() const {
    return {{static_cast<double>(width()), static_cast<double>(height())}, controller_.document().pixelSize(), zoomScale_};
}

void AnnotationCanvasView::setZoomScale(double zoom) {
    zoomScale_ = std::clamp(zoom, AnnotationCanvasGeometry::minimumZoom, AnnotationCanvasGeometry::maximumZoom);
    layoutField();
    update();
}

Point AnnotationCanvasView::imagePoint(QPointF view) const { return canvasGeometry().imagePoint(fromQt(view)); }

const AnnotationElement* AnnotationCanvasView::primary() const {
    const std::optional<Uuid> id = controller_.state().selectedID;
    return id ? controller_.element(*id) : nullptr;
}

std::optional<Uuid> AnnotationCanvasView::topmostAt(Point image) const {
    return HitTesting::topmost(measure(), controller_.document().elements, image, AnnotationEditorController::hitTolerance);
}

bool AnnotationCanvasView::hasElementAt(QPointF viewPoint) const { return topmostAt(imagePoint(viewPoint)).has_value(); }

void AnnotationCanvasView::controllerDidChange() {
    if (!suppressBlanketInvalidation_) update();
}

void AnnotationCanvasView::resizeEvent(QResizeEvent*) { layoutField(); }

// ---- Painting ----

const QImage& AnnotationCanvasView::scaledBase() {
    const ImageBuffer& base = controller_.document().base();
    const double scale = canvasGeometry().imageScale();
    if (scaledBaseScale_ != scale || scaledBaseIdentity_ != base.identity()) {
        const QImage view = qtImageView(base);
        const QSize size(std::max(1, static_cast<int>(std::lround(base.width() * scale))),
                         std::max(1, static_cast<int>(std::lround(base.height() * scale))));
        scaledBase_ = view.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation).convertToFormat(QImage::Format_ARGB32_Premultiplied);
        scaledBaseScale_ = scale;
        scaledBaseIdentity_ = base.identity();
    }
    return scaledBase_;
}

void AnnotationCanvasView::paintEvent(QPaintEvent* event) {
    lastPainted_ = event->rect();
    QPainter painter(this);
    painter.setClipRect(event->rect());
    painter.fillRect(event->rect(), palette().window());
    const AnnotationCanvasGeometry geometry = canvasGeometry();
    const QRectF content = toQt(geometry.contentRect());
    painter.save();
    painter.setClipRect(content.intersected(QRectF(event->rect())));
    painter.drawTiledPixmap(content, checkerTile());
    // The base at view scale is a copy made once; the elements are drawn by
    // the renderer in image pixels under the view's transform.
    painter.drawImage(content.topLeft(), scaledBase());
    painter.translate(content.topLeft());
    painter.scale(geometry.imageScale(), geometry.imageScale());
    {
        QtPainterCanvas canvas(painter, size(),
                               [](FontFace face) -> const QtTextMeasurer& { return QtDrawingBackend::shared().face(face); });
        AnnotationDrawOptions options;
        if (field_) {
            options.hideContentFor = controller_.editingID();
            options.hideWatermarkCenterTile = inlineKind_ == InlineKind::watermark;
        }
        AnnotationRenderer renderer(QtDrawingBackend::shared());
        renderer.drawElements(controller_.document(), canvas, &controller_.mosaic(), options);
    }
    painter.restore();
    paintChrome(painter);
}

void AnnotationCanvasView::paintElementFrame(QPainter& painter, const AnnotationElement& element, double alpha) {
    if (element.geometry.asSegment()) return;
    const AnnotationCanvasGeometry geometry = canvasGeometry();
    Rect frame = element.kind.is(C::text)
                     ? HandleLayout::textFrameBox(LeaderSupport::bodyRect(measure(), element), element.style.fontSize)
                     : element.geometry.boundingBox();
    if (element.kind.is(C::stepBadge)) frame = LeaderSupport::bodyRect(measure(), element);
    std::array<Point, 4> corners = ElementRotation::worldCorners(measure(), frame, element);
    if (element.kind.is(C::watermark)) {
        const Size canvas = controller_.document().pixelSize();
        corners = WatermarkLayout::centerTileCorners(measure(), element.kind.textPayload(), element.style.fontSize,
                                                     element.style.watermarkAngle, element.style.watermarkOffset, canvas);
    }
    QPolygonF polygon;
    for (const Point& c : corners) polygon << toQt(geometry.viewPoint(c));
    QColor color = accent;
    color.setAlphaF(static_cast<float>(alpha));
    QPen pen(color, 1.5);
    if (element.kind.is(C::watermark) || element.kind.is(C::text)) pen.setDashPattern({4 / 1.5, 3 / 1.5});
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);
    painter.drawPolygon(polygon);
}

void AnnotationCanvasView::paintHandles(QPainter& painter, const AnnotationElement& element, double alpha) {
    const AnnotationCanvasGeometry geometry = canvasGeometry();
    const bool pathEditing = pathEditID_ && *pathEditID_ == element.id;
    for (const HandleLayout::PlacedHandle& placed : AnnotationCanvasHits::worldHandles(measure(), element, pathEditing)) {
        const Handle::Kind kind = placed.handle.kind();
        if (kind == Handle::Kind::lensZoom) continue;
        const bool lensLive = selectedRectHovered_ || draggingLensPan_ || draggingLensDial_;
        if (kind == Handle::Kind::lensPan && !lensLive) continue;
        if (kind == Handle::Kind::cornerRadius && !(selectedRectHovered_ || hoveredHandle_ == placed.handle)) continue;
        if (draggingLensDial_) continue;
        if (draggingLensPan_ && kind != Handle::Kind::lensPan) continue;
        const QPointF at = toQt(geometry.viewPoint(placed.point));
        const bool hovered = alpha >= 1 && hoveredHandle_ == placed.handle;
        QColor white(255, 255, 255);
        white.setAlphaF(static_cast<float>(alpha));
        QColor edge = accent;
        edge.setAlphaF(static_cast<float>(alpha));
        const double radius = kind == Handle::Kind::lensPan ? (hovered ? 11 : 9.5) : (hovered ? 5.5 : 4);
        painter.setPen(QPen(hovered ? white : edge, hovered ? 1.5 : 1));
        painter.setBrush(hovered ? edge : white);
        painter.drawEllipse(at, radius, radius);
    }
    if (element.kind.is(C::magnifier) && element.geometry.asRect() && (selectedRectHovered_ || draggingLensPan_ || draggingLensDial_) &&
        !draggingLensPan_) {
        const Rect rect = element.geometry.asRect()->standardized();
        const QPointF centre = toQt(geometry.viewPoint(LensDial::center(rect)));
        const double ring = LensDial::ringRadius(rect) * geometry.imageScale();
        painter.setPen(QPen(QColor(255, 255, 255, static_cast<int>(230 * alpha)), 1.5));
        painter.setBrush(Qt::NoBrush);
        painter.drawEllipse(centre, ring, ring);
        const QPointF dot = toQt(geometry.viewPoint(LensDial::dotPosition(rect)));
        painter.setPen(QPen(Qt::white, draggingLensDial_ ? 1.5 : 1));
        painter.setBrush(accent);
        const double r = draggingLensDial_ ? 7 : 5.5;
        painter.drawEllipse(dot, r, r);
    }
}

void AnnotationCanvasView::paintChrome(QPainter& painter) {
    painter.setRenderHint(QPainter::Antialiasing);
    const AnnotationCanvasGeometry geometry = canvasGeometry();
    const AnnotationDocument& document = controller_.document();
    if (document.cropRect) {
        QPainterPath outside;
        outside.setFillRule(Qt::OddEvenFill);
        outside.addRect(toQt(geometry.contentRect()));
        outside.addRect(toQt(geometry.viewRect(*document.cropRect)));
        painter.fillPath(outside, QColor(0, 0, 0, 128));
        painter.setPen(QPen(accent, 1));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(toQt(geometry.viewRect(*document.cropRect)));
    }
    if (hoveredID_ && !controller_.isSelected(*hoveredID_) && !field_)
        if (const AnnotationElement* hovered = controller_.element(*hoveredID_)) paintElementFrame(painter, *hovered, 0.55);
    for (const Uuid& id : controller_.allSelectedIDs()) {
        const AnnotationElement* element = controller_.element(id);
        if (!element) continue;
        paintElementFrame(painter, *element, 1);
        if (id == controller_.state().selectedID && !field_ && !controller_.draftID()) paintHandles(painter, *element, 1);
    }
    if (const std::optional<Uuid> draft = controller_.draftID())
        if (const AnnotationElement* e = controller_.element(*draft); e && e->kind.isRegionEffect() && e->geometry.asRect()) {
            painter.setPen(QPen(QColor(accent.red(), accent.green(), accent.blue(), 89), 1));
            painter.setBrush(Qt::NoBrush);
            painter.drawRect(toQt(geometry.viewRect(*e->geometry.asRect())));
        }
    if (const std::optional<Rect> marquee = controller_.marqueeRect()) {
        const QRectF r = toQt(geometry.viewRect(*marquee)).adjusted(0.5, 0.5, -0.5, -0.5);
        painter.fillRect(r, QColor(accent.red(), accent.green(), accent.blue(), 26));
        painter.setPen(QPen(QColor(accent.red(), accent.green(), accent.blue(), 230), 1));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(r);
    }
}

// ---- Pointer ----

std::optional<QRect> AnnotationCanvasView::dirtyRect() const {
    std::vector<const AnnotationElement*> selected;
    for (const Uuid& id : controller_.allSelectedIDs())
        if (const AnnotationElement* e = controller_.element(id)) selected.push_back(e);
    if (const std::optional<Uuid> draft = controller_.draftID())
        if (const AnnotationElement* e = controller_.element(*draft)) selected.push_back(e);
    const std::optional<Rect> dirty = AnnotationCanvasHits::interactionDirtyRect(measure(), selected, controller_.marqueeRect(), canvasGeometry());
    if (!dirty) return std::nullopt;
    return toQt(*dirty).toAlignedRect().intersected(rect());
}

void AnnotationCanvasView::dragStep(const std::function<void()>& step) {
    const std::optional<QRect> before = dirtyRect();
    suppressBlanketInvalidation_ = true;
    step();
    suppressBlanketInvalidation_ = false;
    const std::optional<QRect> after = dirtyRect();
    // A step that touches a watermark or region effect can change anything;
    // everything else changes only around the selection.
    if (before && after) update(before->united(*after));
    else if (after) update(*after);
    else update();
}

void AnnotationCanvasView::performActiveDrag(Qt::KeyboardModifiers modifiers) {
    if (!lastDragImagePoint_ || field_) return;
    const Point p = *lastDragImagePoint_;
    const bool shift = modifiers & Qt::ShiftModifier, alt = modifiers & Qt::AltModifier;
    dragStep([&] {
        if (draggingLensDial_) {
            const double dx = canvasGeometry().viewPoint(p).x - dialStartX_;
            controller_.setLensZoom(LensDial::zoom(dialStartZoom_, dx));
        } else if (draggingRotation_) {
            double a = rotationStartRotation_ + std::atan2(p.y - rotationCenter_.y, p.x - rotationCenter_.x) * 180 / std::numbers::pi -
                       rotationStartAngle_;
            a = std::remainder(a, 360.0);
            if (std::abs(a) < 2) a = 0;
            if (shift) a = std::round(a / 15) * 15;
            controller_.updateRotation(a);
        } else if (draggingHandle_) {
            controller_.updateResize(p, shift, alt);
        } else {
            controller_.pointerDragged(p, shift, alt);
        }
    });
}

void AnnotationCanvasView::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::RightButton) {
        if (onEscape) {
            cancelField();
            onEscape();
        }
        return;
    }
    if (event->button() != Qt::LeftButton) return;
    if (hostClaimsPoint && hostClaimsPoint(event->position())) return event->ignore();
    setFocus();
    const Point p = imagePoint(event->position());
    const Qt::KeyboardModifiers mods = event->modifiers();
    const bool shift = mods & Qt::ShiftModifier, alt = mods & Qt::AltModifier, command = mods & Qt::ControlModifier;

    if (spaceHeld_ && !field_) {
        if (controller_.beginSelectionMove(p)) {
            spacePanDragging_ = true;
            lastDragImagePoint_ = p;
            setCursor(Qt::ClosedHandCursor);
        }
        return;
    }
    const bool wasEditing = field_ || (lastFieldClosedAt_ >= 0 && seconds() - lastFieldClosedAt_ < 0.25);
    if (field_) commitTextEditing();
    hoveredID_.reset();
    hoveredHandle_.reset();
    const std::optional<Uuid> topmost = topmostAt(p);
    const AnnotationElement* selected = primary();

    // Option-click on a selected curve: remove or straighten a point, or add one and hold it.
    if (alt && !command && selected) {
        const std::optional<Handle> handle =
            AnnotationCanvasHits::handleHit(measure(), *selected, canvasGeometry(), fromQt(event->position()), {selectedRectHovered_, false, hoveredHandle_, pathEditID_ == selected->id});
        if (handle && handle->midPointIndex()) {
            controller_.removeMidPoint(*handle->midPointIndex());
            return;
        }
        if (handle && handle->is(Handle::Kind::curveMid)) {
            controller_.straightenSelectedCurve();
            return;
        }
        const bool insertable = selected->geometry.asSegment() || selected->kind.is(C::freehand) || LeaderSupport::hasLeader(*selected);
        const bool spot = LeaderSupport::hasLeader(*selected) ? HitTesting::isOverLeader(measure(), *selected, p, 6) : topmost == selected->id;
        if (insertable && spot) {
            const std::size_t before = selected->style.midPoints ? selected->style.midPoints->size() : 0;
            controller_.pointerDown(p, false, false, false);
            controller_.insertMidPoint(p);
            // Grab the point just made: the one nearest the click.
            const AnnotationElement* bent = primary();
            std::optional<std::size_t> nearest;
            double best = 1e300;
            if (bent && bent->style.midPoints && bent->style.midPoints->size() > before)
                for (std::size_t i = 0; i < bent->style.midPoints->size(); ++i) {
                    const Point m = (*bent->style.midPoints)[i];
                    const double d = std::hypot(m.x - p.x, m.y - p.y);
                    if (d < best) best = d, nearest = i;
                }
            if (nearest) {
                controller_.beginResize(Handle::midPoint(*nearest));
                draggingHandle_ = true;
                lastDragImagePoint_ = p;
            }
            return;
        }
    }
    if (selected) {
        const std::optional<Handle> handle = AnnotationCanvasHits::handleHit(
            measure(), *selected, canvasGeometry(), fromQt(event->position()), {selectedRectHovered_, false, hoveredHandle_, pathEditID_ == selected->id});
        if (handle) {
            lastDragImagePoint_ = p;
            if (handle->is(Handle::Kind::lensPan)) {
                draggingLensPan_ = true;
                controller_.beginLensPan(p);
                setCursor(Qt::ClosedHandCursor);
            } else if (handle->is(Handle::Kind::lensZoom)) {
                draggingLensDial_ = true;
                dialStartZoom_ = selected->style.magnifierZoom.value_or(4);
                dialStartX_ = event->position().x();
                controller_.beginStyleGesture();
            } else {
                draggingHandle_ = true;
                hoveredHandle_ = handle;
                controller_.beginResize(*handle);
            }
            return;
        }
        if (!field_ && controller_.allSelectedIDs().size() == 1 &&
            AnnotationCanvasHits::rotateZoneHit(measure(), *selected, canvasGeometry(), fromQt(event->position()))) {
            draggingRotation_ = true;
            rotationCenter_ = ElementRotation::center(measure(), *selected);
            rotationStartAngle_ = std::atan2(p.y - rotationCenter_.y, p.x - rotationCenter_.x) * 180 / std::numbers::pi;
            rotationStartRotation_ = ElementRotation::degrees(*selected);
            lastDragImagePoint_ = p;
            controller_.beginRotation();
            return;
        }
    }
    if (wasEditing && !topmost) {
        update();
        return;
    }
    const T tool = controller_.state().tool;
    if (tool == T::text && !command && !topmost) {
        const double lift = ElementBounds::textSize(measure(), " ", controller_.state().textFontSize).height / 2;
        controller_.beginTextDraft({p.x, p.y - lift});
        awaitingTextDraftEdit_ = true;
        lastDragImagePoint_ = p;
        return;
    }
    if (tool == T::watermark && !command && !topmost) {
        const AnnotationEditorController::WatermarkEdit edit = controller_.beginWatermarkEdit();
        const Size size = controller_.document().pixelSize();
        openField(InlineKind::watermark, {size.width / 2, size.height / 2}, QString::fromStdString(edit.text), edit.fontSize,
                  controller_.state().strokeColor);
        return;
    }
    if (topmost && selected && *topmost == selected->id && (selected->kind.is(C::text) || selected->kind.is(C::stepBadge)) &&
        !HitTesting::isOverLeader(measure(), *selected, p, 6)) {
        pendingClickEditID_ = *topmost;
        mouseDownViewPoint_ = event->position();
    }
    lastDragImagePoint_ = p;
    pointerGesture_ = true;
    controller_.pointerDown(p, shift, alt, command);
    if (pathEditID_ && controller_.state().selectedID != pathEditID_) pathEditID_.reset();
    updateCursor();
}

void AnnotationCanvasView::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    if (!field_ && hostClaimsPoint && hostClaimsPoint(event->position())) return event->ignore();
    const Point p = imagePoint(event->position());
    if (field_) commitTextEditing();
    const std::optional<Uuid> topmost = topmostAt(p);
    const AnnotationElement* hit = topmost ? controller_.element(*topmost) : nullptr;
    if (hit && hit->kind.is(C::text) && !HitTesting::isOverLeader(measure(), *hit, p, 6)) {
        if (const auto edit = controller_.beginTextEdit(hit->id))
            openField(InlineKind::text, edit->anchor, QString::fromStdString(edit->text), edit->fontSize, hit->style.strokeColor);
        return;
    }
    if (hit && hit->kind.is(C::watermark)) {
        const AnnotationEditorController::WatermarkEdit edit = controller_.beginWatermarkEdit();
        const Size size = controller_.document().pixelSize();
        openField(InlineKind::watermark, {size.width / 2, size.height / 2}, QString::fromStdString(edit.text), edit.fontSize, hit->style.strokeColor);
        return;
    }
    if (hit && hit->kind.is(C::stepBadge) && !HitTesting::isOverLeader(measure(), *hit, p, 6)) {
        if (const auto edit = controller_.beginBadgeEdit(hit->id))
            openField(InlineKind::stepBadge, edit->centre, QString::fromStdString(edit->text),
                      StepBadgeLabel::fittedFontSize(QtDrawingBackend::shared().measuring(FontFace::bold), edit->text, edit->radius),
                      RGBAColor::Palette::white);
        return;
    }
    if (hit && hit->geometry.asSegment()) {
        controller_.select(hit->id);
        controller_.insertMidPoint(p);
        return;
    }
    if (hit && hit->kind.is(C::freehand)) {
        controller_.select(hit->id);
        if (pathEditID_ == hit->id) controller_.insertMidPoint(p);
        else pathEditID_ = hit->id;
        update();
        return;
    }
    if (!hit && onConfirm) onConfirm();
}

void AnnotationCanvasView::mouseMoveEvent(QMouseEvent* event) {
    if (event->buttons() & Qt::LeftButton) {
        if (field_) return;
        if (!lastDragImagePoint_) return;
        lastDragImagePoint_ = imagePoint(event->position());
        performActiveDrag(event->modifiers());
        return;
    }
    if (!field_ && hostClaimsPoint && hostClaimsPoint(event->position())) return event->ignore();
    updateHover(event->position());
}

void AnnotationCanvasView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || field_) return;
    if (spacePanDragging_) {
        spacePanDragging_ = false;
        controller_.pointerUp();
        setCursor(spaceHeld_ ? Qt::OpenHandCursor : Qt::ArrowCursor);
        lastDragImagePoint_.reset();
        return;
    }
    if (awaitingTextDraftEdit_) {
        awaitingTextDraftEdit_ = false;
        lastDragImagePoint_.reset();
        if (const auto edit = controller_.promoteTextDraftToEdit())
            openField(InlineKind::text, edit->anchor, QString(), edit->fontSize, controller_.state().strokeColor);
        return;
    }
    controller_.pointerUp();
    if (draggingLensDial_) controller_.endStyleGesture();
    draggingHandle_ = draggingRotation_ = draggingLensPan_ = draggingLensDial_ = false;
    pointerGesture_ = false;
    lastDragImagePoint_.reset();
    if (pendingClickEditID_) {
        const Uuid id = *pendingClickEditID_;
        pendingClickEditID_.reset();
        const QPointF moved = event->position() - mouseDownViewPoint_;
        if (std::hypot(moved.x(), moved.y()) < 3) {
            const AnnotationElement* e = controller_.element(id);
            if (e && e->kind.is(C::text)) {
                if (const auto edit = controller_.beginTextEdit(id))
                    openField(InlineKind::text, edit->anchor, QString::fromStdString(edit->text), edit->fontSize, e->style.strokeColor);
            } else if (e && e->kind.is(C::stepBadge)) {
                if (const auto edit = controller_.beginBadgeEdit(id))
                    openField(InlineKind::stepBadge, edit->centre, QString::fromStdString(edit->text),
                              StepBadgeLabel::fittedFontSize(QtDrawingBackend::shared().measuring(FontFace::bold), edit->text, edit->radius),
                              RGBAColor::Palette::white);
            }
        }
    }
    updateHover(event->position());
    update();
}

void AnnotationCanvasView::updateHover(QPointF view) {
    if (field_) return;
    const Point p = imagePoint(view);
    const AnnotationElement* selected = primary();
    bool rectHovered = false;
    if (selected && selected->geometry.asRect()) {
        const Point local = ElementRotation::toLocal(measure(), p, *selected);
        rectHovered = selected->geometry.asRect()->standardized().insetBy(-12, -12).contains(local);
    }
    std::optional<Handle> handle;
    if (selected)
        handle = AnnotationCanvasHits::handleHit(measure(), *selected, canvasGeometry(), fromQt(view),
                                                 {rectHovered, false, hoveredHandle_, pathEditID_ == selected->id});
    const std::optional<Uuid> hovered = topmostAt(p);
    if (handle != hoveredHandle_ || hovered != hoveredID_ || rectHovered != selectedRectHovered_) {
        hoveredHandle_ = handle;
        hoveredID_ = hovered;
        selectedRectHovered_ = rectHovered;
        update();
    }
    if (selected && !handle && AnnotationCanvasHits::rotateZoneHit(measure(), *selected, canvasGeometry(), fromQt(view))) {
        setCursor(Qt::CrossCursor);
        return;
    }
    updateCursor();
}

void AnnotationCanvasView::updateCursor() {
    if (spaceHeld_) return setCursor(Qt::OpenHandCursor);
    if (hoveredHandle_) {
        const AnnotationElement* selected = primary();
        if (const auto rect = hoveredHandle_->rectHandle()) return setCursor(resizeCursor(*rect, selected ? ElementRotation::degrees(*selected) : 0));
        if (hoveredHandle_->is(Handle::Kind::lensPan)) return setCursor(Qt::OpenHandCursor);
        if (hoveredHandle_->is(Handle::Kind::lensZoom)) return setCursor(Qt::SizeHorCursor);
        return setCursor(Qt::PointingHandCursor);
    }
    if (hoveredID_) return setCursor(Qt::OpenHandCursor);
    switch (controller_.state().tool) {
    case T::text:
    case T::watermark: return setCursor(Qt::IBeamCursor);
    case T::select: return setCursor(Qt::ArrowCursor);
    default: return setCursor(Qt::CrossCursor);
    }
}

// ---- Wheel and keys ----

void AnnotationCanvasView::adjustSize(double by) {
    if (field_) {
        controller_.adjustEditingFontSize(by);
        const std::optional<Uuid> id = controller_.editingID();
        if (const AnnotationElement* e = id ? controller_.element(*id) : nullptr) fieldFontSize_ = e->style.fontSize;
        layoutField();
        return;
    }
    if (!controller_.allSelectedIDs().empty()) return controller_.adjustPrimaryProperty(by);
    controller_.adjustToolProperty(by);
}

void AnnotationCanvasView::wheelEvent(QWheelEvent* event) {
    const QPoint pixels = event->pixelDelta();
    const QPoint angle = event->angleDelta();
    double d = !pixels.isNull() ? (pixels.y() != 0 ? pixels.y() : pixels.x()) * 0.1 : (angle.y() != 0 ? angle.y() : angle.x()) / 120.0;
    if (event->modifiers() & Qt::ShiftModifier) d *= 10;
    if ((event->modifiers() & Qt::ControlModifier) && !field_) {
        controller_.adjustElementOpacity(d);
        return;
    }
    if (field_ || !controller_.allSelectedIDs().empty() || controller_.state().tool != T::select) return adjustSize(d);
    if (onRegionZoom) return onRegionZoom(d);
    setZoomScale(zoomScale_ * (1 + 0.04 * d));
}

bool AnnotationCanvasView::handleCommandKey(QKeyEvent* event) {
    const bool shift = event->modifiers() & Qt::ShiftModifier;
    switch (event->key()) {
    case Qt::Key_Up:
    case Qt::Key_BracketRight:
    case Qt::Key_BraceRight:
        if (shift) controller_.moveSelectedToEdge(true);
        else controller_.moveSelected(true);
        return true;
    case Qt::Key_Down:
    case Qt::Key_BracketLeft:
    case Qt::Key_BraceLeft:
        if (shift) controller_.moveSelectedToEdge(false);
        else controller_.moveSelected(false);
        return true;
    case Qt::Key_A: controller_.selectAll(); return true;
    case Qt::Key_Z:
        if (shift) controller_.performRedo();
        else controller_.performUndo();
        return true;
    case Qt::Key_D: controller_.duplicateSelected(); return true;
    case Qt::Key_X: controller_.cutSelected(clipboard_, pasteboard_); return true;
    case Qt::Key_V: controller_.paste(clipboard_, pasteboard_); return true;
    case Qt::Key_C:
        if (controller_.allSelectedIDs().empty()) return false; // the window copies the whole image
        controller_.copySelected(clipboard_, pasteboard_);
        return true;
    default: return false;
    }
}

void AnnotationCanvasView::keyPressEvent(QKeyEvent* event) {
    const Qt::KeyboardModifiers mods = event->modifiers();
    const bool command = mods & Qt::ControlModifier, alt = mods & Qt::AltModifier, meta = mods & Qt::MetaModifier;
    const bool shift = mods & Qt::ShiftModifier;
    if (command) {
        if (!handleCommandKey(event)) event->ignore();
        return;
    }
    switch (event->key()) {
    case Qt::Key_Equal:
    case Qt::Key_Plus:
        if (!alt && !meta) return adjustSize(shift ? 10 : 1);
        break;
    case Qt::Key_Minus:
    case Qt::Key_Underscore:
        if (!alt && !meta) return adjustSize(shift ? -10 : -1);
        break;
    case Qt::Key_Tab:
    case Qt::Key_Backtab: return controller_.cycleColor(shift || event->key() == Qt::Key_Backtab);
    case Qt::Key_Space:
        if (!field_ && !event->isAutoRepeat()) {
            spaceHeld_ = true;
            setCursor(Qt::OpenHandCursor);
        }
        return;
    case Qt::Key_Delete:
    case Qt::Key_Backspace: return controller_.deleteSelected();
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Up:
    case Qt::Key_Down:
        if (!controller_.allSelectedIDs().empty()) {
            const double step = shift ? 10 : 1;
            const double dx = event->key() == Qt::Key_Left ? -step : event->key() == Qt::Key_Right ? step : 0;
            const double dy = event->key() == Qt::Key_Up ? -step : event->key() == Qt::Key_Down ? step : 0;
            return controller_.nudgeSelected(dx, dy);
        }
        break;
    case Qt::Key_Escape:
        if (onEscape) return onEscape();
        if (!controller_.allSelectedIDs().empty()) return controller_.clearSelection();
        break;
    default: break;
    }
    const QString text = event->text();
    if (!alt && !meta && text.size() == 1) {
        if (const std::optional<AnnotationTool> tool = toolForKey(text.toLower().toStdString())) {
            controller_.setTool(*tool);
            updateCursor();
            return;
        }
    }
    event->ignore();
}

void AnnotationCanvasView::keyReleaseEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Space && !event->isAutoRepeat()) {
        spaceHeld_ = false;
        spacePanDragging_ = false;
        updateCursor();
        return;
    }
    QWidget::keyReleaseEvent(event);
}

// ---- Pictures dropped in ----

namespace {

// Any picture Qt can read, as our pixels.
Expected<ImageBuffer> decodeAny(std::span<const std::uint8_t> bytes) {
    const QImage read = QImage::fromData(bytes.data(), static_cast<int>(bytes.size()));
    if (read.isNull()) return Error{"the data is not an image this program reads"};
    return imageFromQt(read);
}

// The first picture the data carries: a local image file, else image bytes.
std::optional<Bytes> pictureBytes(const QMimeData& data) {
    for (const QUrl& url : data.urls()) {
        if (!url.isLocalFile()) continue;
        QFile file(url.toLocalFile());
        if (file.open(QIODevice::ReadOnly)) {
            const QByteArray bytes = file.readAll();
            if (!QImage::fromData(bytes).isNull()) return Bytes(bytes.begin(), bytes.end());
        }
    }
    for (const QString& format : {QStringLiteral("image/png"), QStringLiteral("image/jpeg")})
        if (data.hasFormat(format)) {
            const QByteArray bytes = data.data(format);
            return Bytes(bytes.begin(), bytes.end());
        }
    return std::nullopt;
}

} // namespace

bool AnnotationCanvasView::importPicture(const QMimeData& dropped, QPointF viewPoint) {
    const std::optional<Bytes> bytes = pictureBytes(dropped);
    if (!bytes) return false;
    const Size canvas = controller_.document().pixelSize();
    const Expected<AnnotationImage> picture = AnnotationImageImport::payload(*bytes, AnnotationImageImport::maxPixel(canvas), decodeAny);
    if (!picture) return false;
    const Point anchor = imagePoint(viewPoint);
    const Rect rect = AnnotationImageImport::placement({picture->pixelWidth, picture->pixelHeight}, canvas, anchor, 1);
    controller_.addImage(AnnotationImageImport::element(*picture, rect));
    return true;
}

void AnnotationCanvasView::dragEnterEvent(QDragEnterEvent* event) {
    if (pictureBytes(*event->mimeData())) event->acceptProposedAction();
}

void AnnotationCanvasView::dropEvent(QDropEvent* event) {
    if (importPicture(*event->mimeData(), event->position())) event->acceptProposedAction();
}

// ---- The inline field ----

void AnnotationCanvasView::openField(InlineKind kind, Point anchor, const QString& text, double fontSize, const RGBAColor& color) {
    closeField();
    inlineKind_ = kind;
    textAnchor_ = anchor;
    fieldFontSize_ = fontSize;
    field_ = new QTextEdit(this);
    field_->setFrameShape(QFrame::NoFrame);
    field_->setAcceptRichText(false);
    field_->setLineWrapMode(QTextEdit::NoWrap);
    field_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    field_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    field_->document()->setDocumentMargin(0);
    field_->viewport()->setAutoFillBackground(false);
    field_->setStyleSheet(QStringLiteral("QTextEdit { background: transparent; color: %1; }")
                              .arg(QColor::fromRgbF(static_cast<float>(color.red), static_cast<float>(color.green),
                                                    static_cast<float>(color.blue))
                                       .name()));
    const QString placeholder = kind == InlineKind::watermark ? QString::fromStdString(L("annotation.watermark.placeholder"))
                                                              : QString::fromStdString(L("annotation.text.placeholder"));
    field_->setPlaceholderText(placeholder);
    field_->setPlainText(text);
    // Lines 1.25 line heights apart, as the renderer sets them; new lines
    // take the format of the line they are split from.
    QTextCursor all(field_->document());
    all.select(QTextCursor::Document);
    QTextBlockFormat format;
    format.setLineHeight(125, QTextBlockFormat::ProportionalHeight);
    all.mergeBlockFormat(format);
    field_->installEventFilter(this);
    QObject::connect(field_, &QTextEdit::textChanged, this, [this] {
        if (inlineKind_ == InlineKind::watermark && field_) controller_.updateWatermarkText(field_->toPlainText().toStdString());
        layoutField();
    });
    layoutField();
    field_->show();
    field_->setFocus();
    field_->moveCursor(QTextCursor::End);
    update();
}

// Sets the field's letters on the renderer's baselines: the same face at the
// view's size, lines 1.25 line heights apart.
void AnnotationCanvasView::layoutField() {
    if (!field_) return;
    const AnnotationCanvasGeometry geometry = canvasGeometry();
    const double size = std::max(fieldFontSize_ * geometry.imageScale(), 8.0);
    QFont font(annotationFamily(inlineKind_ == InlineKind::stepBadge));
    font.setPixelSize(std::max(1, static_cast<int>(std::lround(size))));
    if (field_->font() != font) field_->setFont(font);
    const QFontMetricsF metrics(font);
    const QString text = field_->toPlainText().isEmpty() ? field_->placeholderText() : field_->toPlainText();
    double widest = 0;
    const QStringList lines = text.split(QLatin1Char('\n'));
    for (const QString& line : lines) widest = std::max(widest, metrics.horizontalAdvance(line));
    const double w = widest + metrics.averageCharWidth() * 2 + 4;
    const double h = metrics.height() * 1.25 * std::max<qsizetype>(lines.size(), 1) + 4;
    const QPointF at = toQt(geometry.viewPoint(textAnchor_));
    if (inlineKind_ == InlineKind::text) {
        field_->setGeometry(QRectF(at.x(), at.y(), w, h).toAlignedRect());
    } else {
        field_->setGeometry(QRectF(at.x() - w / 2, at.y() - h / 2, w, h).toAlignedRect());
    }
}

void AnnotationCanvasView::closeField() {
    if (!field_) return;
    QTextEdit* field = field_;
    field_ = nullptr;
    field->removeEventFilter(this);
    field->hide();
    field->deleteLater();
    lastFieldClosedAt_ = seconds();
    setFocus();
    update();
}

void AnnotationCanvasView::commitTextEditing() {
    if (!field_) return;
    const std::string text = field_->toPlainText().toStdString();
    const InlineKind kind = inlineKind_;
    closeField();
    switch (kind) {
    case InlineKind::text: controller_.finishTextEdit(text); break;
    case InlineKind::watermark:
        controller_.updateWatermarkText(text);
        controller_.finishWatermarkEdit();
        break;
    case InlineKind::stepBadge: controller_.finishBadgeEdit(text); break;
    }
}

void AnnotationCanvasView::cancelField() {
    if (!field_) return;
    const InlineKind kind = inlineKind_;
    closeField();
    switch (kind) {
    case InlineKind::text: controller_.cancelTextEdit(); break;
    case InlineKind::watermark: controller_.cancelWatermarkEdit(); break;
    case InlineKind::stepBadge: controller_.cancelBadgeEdit(); break;
    }
}

bool AnnotationCanvasView::eventFilter(QObject* watched, QEvent* event) {
    if (watched == field_ && event->type() == QEvent::KeyPress) {
        auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() == Qt::Key_Escape) {
            cancelField();
            return true;
        }
        if ((key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) && !(key->modifiers() & Qt::ShiftModifier)) {
            commitTextEditing();
            return true;
        }
        if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) {
            field_->insertPlainText(QStringLiteral("\n"));
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace tosvar
