#include "QtRegionOverlay.h"

#include "ElementChain.h"
#include "LocalizationManager.h"
#include "PngEncoder.h"
#include "RegionAnnotatingPhase.h"
#include "UnicodeText.h"
#include "QtKeyEvents.h"
#include "Log.h"
#include "QtPainterCanvas.h"
#include "WindowImageTrimmer.h"

#include <QApplication>
#include <QCursor>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPointer>
#include <QTimer>
#include <QWindow>
#include <QVariantAnimation>
#include <QWheelEvent>

#include <cmath>
#include <cstdio>

namespace tosvar {

namespace {

const QColor accent(10, 132, 255);
constexpr double veilAlpha = 0.45;

QRectF toQt(const Rect& r) { return {r.minX(), r.minY(), r.width(), r.height()}; }

} // namespace

QtRegionOverlay::QtRegionOverlay(const ScreenInfo& screen, const Rect& globalFrame, const std::optional<CapturedDisplay>& frozen,
                                 ScreenshotOverlayMode mode, RegionOverlayCallbacks callbacks, std::vector<PickableWindow> windows)
    : QWidget(nullptr, Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::X11BypassWindowManagerHint | Qt::Tool),
      screen_(screen),
      globalFrame_(globalFrame),
      callbacks_(std::move(callbacks)),
      model_({0, 0, globalFrame.width(), globalFrame.height()}, screen.backingScale, mode) {
    setAttribute(Qt::WA_TranslucentBackground, !frozen);
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::CrossCursor);
    setGeometry(QRectF(globalFrame.minX(), globalFrame.minY(), globalFrame.width(), globalFrame.height()).toAlignedRect());
    model_.setWindows(std::move(windows));
    hintFade_ = new QVariantAnimation(this);
    hintFade_->setStartValue(0.0);
    hintFade_->setEndValue(1.0);
    hintFade_->setDuration(150);
    connect(hintFade_, &QVariantAnimation::valueChanged, this, [this] { update(); });
    hintMove_ = new QVariantAnimation(this);
    hintMove_->setStartValue(0.0);
    hintMove_->setEndValue(1.0);
    hintMove_->setDuration(120);
    hintMove_->setEasingCurve(QEasingCurve::OutCubic);
    connect(hintMove_, &QVariantAnimation::valueChanged, this, [this] { update(); });
    if (frozen) attachFrozen(*frozen);
}

QtRegionOverlay::~QtRegionOverlay() = default;

void QtRegionOverlay::attachFrozen(const CapturedDisplay& display) {
    if (frozen_) return;
    frozen_ = display;
    frozenView_ = qtImageView(frozen_->image);
    setAttribute(Qt::WA_TranslucentBackground, false);
    update();
    if (pendingCommit_) {
        const RegionSelectionModel::Commit waiting = *pendingCommit_;
        pendingCommit_.reset();
        finishWith(waiting);
    }
}

void QtRegionOverlay::show() { QWidget::show(); }

void QtRegionOverlay::orderOut() { hide(); }

void QtRegionOverlay::makeKey() {
    raise();
    activateWindow();
    setFocus();
    grabKeyboard();
}

void QtRegionOverlay::seedInitialHover() {
    const QPoint local = mapFromGlobal(QCursor::pos());
    model_.hover({static_cast<double>(local.x()), static_cast<double>(local.y())});
}

double QtRegionOverlay::frozenScale() const {
    return frozen_ ? frozen_->image.width() / std::max(1.0, globalFrame_.width()) : screen_.backingScale;
}

Rect QtRegionOverlay::screenRect(const Rect& view) const {
    return {screen_.frame.minX() + view.minX(), screen_.frame.maxY() - view.maxY(), view.width(), view.height()};
}

void QtRegionOverlay::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    if (annotating_) return paintAnnotating(painter);
    const QRectF all = rect();
    if (!frozenView_.isNull()) {
        painter.drawImage(all, frozenView_);
    } else {
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.fillRect(all, Qt::transparent);
        painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    }
    painter.fillRect(all, QColor(0, 0, 0, static_cast<int>(veilAlpha * 255)));

    const std::optional<Rect> selection = model_.liveSelection();
    const std::optional<Rect> highlight = selection ? selection : pendingCommit_ ? std::optional(pendingCommit_->rect) : model_.highlight();
    if (highlight) {
        const QRectF hole = toQt(*highlight);
        // The veil lifts over the region: the frozen pixels again, or the live screen.
        if (!frozenView_.isNull()) {
            const double s = frozenScale();
            painter.drawImage(hole, frozenView_, QRectF(hole.left() * s, hole.top() * s, hole.width() * s, hole.height() * s));
        } else {
            painter.setCompositionMode(QPainter::CompositionMode_Source);
            painter.fillRect(hole, Qt::transparent);
            painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
        }
        if (!selection) painter.fillRect(hole, QColor(0, 0, 0, static_cast<int>(0.18 * 255)));
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(accent, 1.5));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(hole);
        // The size in pixels on a small plate above the region (inside when no room).
        const QString size = QStringLiteral("%1 × %2")
                                 .arg(std::lround(highlight->width() * model_.scale()))
                                 .arg(std::lround(highlight->height() * model_.scale()));
        const QFontMetrics metrics(font());
        const QRectF plate(0, 0, std::ceil(metrics.horizontalAdvance(size) + 12), std::ceil(metrics.height() + 6));
        QRectF placed = plate.translated(hole.left(), hole.top() - 4 - plate.height());
        if (placed.top() < 4) placed.moveTop(hole.top() + 4);
        placed.moveLeft(std::clamp(placed.left(), 4.0, std::max(4.0, all.width() - 4 - placed.width())));
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(0, 0, 0, 191));
        painter.drawRoundedRect(placed, 4, 4);
        painter.setPen(Qt::white);
        painter.drawText(placed, Qt::AlignCenter, size);
    }
    if (selection) {
        if (const std::optional<Point> at = model_.dragPoint()) {
            QPen guide(QColor(255, 255, 255, 160), 1);
            guide.setDashPattern({4, 4});
            painter.setPen(guide);
            painter.drawLine(QPointF(at->x, 0), QPointF(at->x, all.height()));
            painter.drawLine(QPointF(0, at->y), QPointF(all.width(), at->y));
        }
    }
    if (model_.loupeShows() && !frozenView_.isNull()) paintLoupe(painter, QPointF(model_.loupePoint()->x, model_.loupePoint()->y));
    paintHint(painter);
    if (!frozenView_.isNull() && onFirstFrozenFrame) {
        std::function<void()> told = std::move(onFirstFrozenFrame);
        onFirstFrozenFrame = nullptr;
        told();
    }
}

// The frozen display under the veil with the region cut out of it; the
// canvas covers the cut, except while a press hides it and the region moves.
void QtRegionOverlay::paintAnnotating(QPainter& painter) {
    const QRectF all = rect();
    painter.drawImage(all, frozenView_);
    painter.fillRect(all, QColor(0, 0, 0, static_cast<int>(veilAlpha * 255)));
    const RegionAnnotatingModel& region = annotating_->model();
    const double s = frozenScale();
    auto unveil = [&](const QRectF& hole) {
        painter.drawImage(hole, frozenView_, QRectF(hole.left() * s, hole.top() * s, hole.width() * s, hole.height() * s));
    };
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF shown = toQt(region.shown());
    QPainterPath hole;
    hole.addRoundedRect(shown, region.cornerRadius(), region.cornerRadius());
    painter.setClipPath(hole);
    unveil(shown);
    if (region.chromeHidden() && !annotating_->dragPreview().isNull())
        painter.drawPixmap(toQt(region.committed()), annotating_->dragPreview(), QRectF(annotating_->dragPreview().rect()));
    painter.restore();
    if (const std::optional<Rect> offered = region.reselectHover()) {
        const QRectF candidate = toQt(*offered);
        unveil(candidate);
        painter.fillRect(candidate, QColor(0, 0, 0, static_cast<int>(0.18 * 255)));
        painter.setPen(QPen(accent, 1.5));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(candidate);
    }
    if (const std::optional<Point> at = region.resizeGuidePoint(); at && region.chromeHidden()) paintLoupe(painter, {at->x, at->y}, false);
    paintHint(painter);
}

void QtRegionOverlay::paintLoupe(QPainter& painter, QPointF at, bool withColour) {
    const int zoom = std::clamp(model_.loupeZoom(), 2, 32);
    const double diameter = 110;
    const double factor = zoom / std::max(model_.scale(), 1e-6);
    int samples = static_cast<int>(std::ceil(diameter / factor));
    if (samples % 2 == 0) ++samples;
    const double s = frozenScale();
    const int px = std::clamp(static_cast<int>(at.x() * s), 0, frozenView_.width() - 1);
    const int py = std::clamp(static_cast<int>(at.y() * s), 0, frozenView_.height() - 1);
    const QRect source(px - samples / 2, py - samples / 2, samples, samples);
    // Diagonal to the pointer, whichever side stays on the display.
    QRectF circle(at.x() + 20, at.y() + 20, diameter, diameter);
    if (circle.right() > width() - 8) circle.moveRight(at.x() - 20);
    if (circle.bottom() > height() - 40) circle.moveBottom(at.y() - 20);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath round;
    round.addEllipse(circle);
    painter.setClipPath(round);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
    painter.fillRect(circle, Qt::black);
    const double cell = diameter / samples;
    painter.drawImage(QRectF(circle.left(), circle.top(), diameter, diameter), frozenView_, QRectF(source));
    painter.setPen(QPen(QColor(255, 255, 255, 200), 1));
    const QPointF middle = circle.center();
    painter.drawRect(QRectF(middle.x() - cell / 2, middle.y() - cell / 2, cell, cell));
    painter.restore();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Qt::white, 1.5));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(circle);
    const QRgb pixel = frozenView_.pixel(px, py);
    QString label = QStringLiteral("%1, %2  ×%3").arg(px).arg(py).arg(zoom);
    if (withColour)
        label += QStringLiteral("  #%1%2%3")
                     .arg(qRed(pixel), 2, 16, QLatin1Char('0'))
                     .arg(qGreen(pixel), 2, 16, QLatin1Char('0'))
                     .arg(qBlue(pixel), 2, 16, QLatin1Char('0'))
                     .toUpper();
    const QFontMetrics metrics(font());
    const QRectF plate(circle.center().x() - (metrics.horizontalAdvance(label) + 8) / 2, circle.bottom() + 4,
                       metrics.horizontalAdvance(label) + 8, metrics.height() + 4);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0, 0, 0, 191));
    painter.drawRoundedRect(plate, 3, 3);
    painter.setPen(Qt::white);
    painter.drawText(plate, Qt::AlignCenter, label);
}

std::optional<HintPanel::State> QtRegionOverlay::desiredHintState() const {
    if (hintHidden && hintHidden()) return std::nullopt;
    if (annotating_) return annotating_->hintState();
    if (!isActiveWindow()) return std::nullopt;
    if (model_.inElementMode()) return HintPanel::Simple::elementPick;
    if (model_.liveSelection()) return HintPanel::Simple::dragging;
    if (pendingCommit_) return std::nullopt;
    return HintPanel::Idle{model_.mode()};
}

std::vector<Rect> QtRegionOverlay::hintObstacles() const {
    if (annotating_) return annotating_->hintObstacles();
    std::vector<Rect> obstacles;
    for (const std::optional<Rect>& r : {model_.liveSelection(), model_.keyboardCandidate(),
                                         pendingCommit_ ? std::optional<Rect>(pendingCommit_->rect) : std::nullopt})
        if (r) obstacles.push_back(r->insetBy(-8, -8));
    return obstacles;
}

// The panel fades in where it first shows, glides over 0.12 s when it must
// change corners, and fades out where it last stood.
void QtRegionOverlay::paintHint(QPainter& painter) {
    std::optional<Rect> target;
    if (const std::optional<HintPanel::State> state = desiredHintState()) {
        if (state != hintState_) hint_.apply(HintPanel::content(*state, [](const std::string& key) { return L(key); }));
        hintState_ = state;
        const Size panel{hint_.size().width(), hint_.size().height()};
        if (const std::optional<HintPanel::Corner> corner = HintPanel::placement(panel, model_.bounds(), hintObstacles(), hintCorner_)) {
            if (*corner != hintCorner_ && hintShown_ && hintDrawnAt_) {
                hintMoveFrom_ = *hintDrawnAt_;
                hintMove_->start();
            }
            hintCorner_ = *corner;
            target = HintPanel::frame(panel, model_.bounds(), *corner);
        }
    }
    if (target && !hintShown_) {
        hintShown_ = true;
        hintMove_->stop();
        hintFade_->setDirection(QAbstractAnimation::Forward);
        hintFade_->start();
    } else if (!target && hintShown_) {
        hintShown_ = false;
        hintFade_->setDirection(QAbstractAnimation::Backward);
        hintFade_->start();
    }
    if (target) {
        Rect at = *target;
        if (hintMove_->state() == QAbstractAnimation::Running) {
            const double t = hintMove_->currentValue().toDouble();
            at = Rect(hintMoveFrom_.minX() + (at.minX() - hintMoveFrom_.minX()) * t, hintMoveFrom_.minY() + (at.minY() - hintMoveFrom_.minY()) * t,
                      at.width(), at.height());
        }
        hintDrawnAt_ = at;
    }
    const double opacity = hintFade_->currentValue().toDouble();
    if (!hintDrawnAt_ || opacity <= 0 || (!hintShown_ && hintFade_->state() != QAbstractAnimation::Running)) return;
    painter.save();
    painter.setOpacity(opacity);
    hint_.paint(painter, QPointF(hintDrawnAt_->minX(), hintDrawnAt_->minY()));
    painter.restore();
}

void QtRegionOverlay::mousePressEvent(QMouseEvent* event) {
    if (annotating_) {
        annotating_->mousePress(event, 1);
        return update();
    }
    if (event->button() == Qt::RightButton) return cancel();
    if (event->button() != Qt::LeftButton || pendingCommit_) return;
    lastSnapQuery_.reset();
    if (std::optional<RegionSelectionModel::Commit> candidate = model_.press({event->position().x(), event->position().y()})) {
        commit(*candidate);
        return;
    }
    update();
}

void QtRegionOverlay::mouseMoveEvent(QMouseEvent* event) {
    const Point p{event->position().x(), event->position().y()};
    const bool shift = event->modifiers() & Qt::ShiftModifier, alt = event->modifiers() & Qt::AltModifier;
    if (annotating_) {
        const std::optional<RegionAnnotatingModel::Anchor> anchor = annotating_->mouseMove(event);
        if (!anchor) return;
        // A Ctrl press outside the region went on as a new selection.
        abandonCommittedRegion();
        model_.press(anchor->point);
        model_.drag(p, anchor->constrained || shift, anchor->fromCenter || alt);
        return update();
    }
    if (event->buttons() & Qt::LeftButton) {
        if (!shift && !alt) refreshSnapCandidates(p);
        model_.drag(p, shift, alt);
    } else {
        followControlKey(event->modifiers() & Qt::ControlModifier, p);
        model_.hover(p);
        detectElement(p);
    }
    update();
}

void QtRegionOverlay::followControlKey(bool held, Point at) {
    if (!held) {
        elementModeArmed_ = true;
        model_.exitElementMode();
        return;
    }
    if (!elementModeArmed_ || !elementsAt || model_.isDragging() || model_.inElementMode()) return;
    model_.enterElementMode();
    lastElementQuery_.reset();
    detectElement(model_.loupePoint().value_or(at));
}

void QtRegionOverlay::detectElement(Point at) {
    if (!model_.inElementMode()) return;
    if (lastElementQuery_ && std::hypot(at.x - lastElementQuery_->x, at.y - lastElementQuery_->y) < ElementDetection::queryMove) return;
    lastElementQuery_ = at;
    ElementLookup lookup = elementsAt(at);
    elementCoarse_ = lookup.coarse;
    elementTextOf_ = std::move(lookup.textOf);
    model_.setElementChain(std::move(lookup.rects));
    if (lookup.coarse) wake(lookup.pid, true);
}

void QtRegionOverlay::wake(std::int64_t pid, bool redetect) {
    if (!wakeProgram || !wokenPIDs_.insert(pid).second) return;
    wakeProgram(pid);
    if (redetect) scheduleElementRedetect(0);
}

void QtRegionOverlay::scheduleElementRedetect(int attempt) {
    const std::optional<double> delay = ElementDetection::redetectDelay(attempt);
    if (!delay) return;
    QTimer::singleShot(static_cast<int>(*delay * 1000), this, [this, attempt] {
        if (!model_.inElementMode() || !elementCoarse_ || !model_.loupePoint()) return;
        lastElementQuery_.reset();
        detectElement(*model_.loupePoint());
        update();
        if (elementCoarse_) scheduleElementRedetect(attempt + 1);
    });
}

void QtRegionOverlay::refreshSnapCandidates(Point at) {
    if (!snapToElements || !model_.wantsSnapCandidates()) return;
    if (lastSnapQuery_ && std::hypot(at.x - lastSnapQuery_->x, at.y - lastSnapQuery_->y) < ElementDetection::snapQueryMove) return;
    lastSnapQuery_ = at;
    const PickableWindow* window = model_.windowAt(at);
    if (!window) return model_.setSnapCandidates({});
    std::vector<Rect> candidates;
    if (elementsAt) {
        ElementLookup lookup = elementsAt(at);
        if (lookup.rects.empty()) wake(lookup.pid, false);
        candidates = std::move(lookup.rects);
    }
    candidates.push_back(window->rect);
    model_.setSnapCandidates(std::move(candidates));
}

void QtRegionOverlay::mouseReleaseEvent(QMouseEvent* event) {
    if (annotating_) return annotating_->mouseRelease(event);
    if (event->button() != Qt::LeftButton || pendingCommit_ || !model_.isDragging()) return;
    commit(model_.release());
}

void QtRegionOverlay::mouseDoubleClickEvent(QMouseEvent* event) {
    if (!annotating_) return mousePressEvent(event);
    annotating_->mousePress(event, 2);
}

void QtRegionOverlay::enterEvent(QEnterEvent* event) {
    if (frozen_ && !isActiveWindow()) activateWindow();
    QWidget::enterEvent(event);
}

void QtRegionOverlay::leaveEvent(QEvent* event) {
    if (!model_.isDragging() && !annotating_) {
        model_.exitElementMode();
        model_.clearHover();
        update();
    }
    QWidget::leaveEvent(event);
}

void QtRegionOverlay::changeEvent(QEvent* event) {
    // The hint panel shows on the overlay that has the keys.
    if (event->type() == QEvent::ActivationChange) update();
    QWidget::changeEvent(event);
}

void QtRegionOverlay::wheelEvent(QWheelEvent* event) {
    if (annotating_) return annotating_->wheel(event);
    const QPoint pixels = event->pixelDelta();
    const double delta = !pixels.isNull() ? pixels.y() * 0.01 : event->angleDelta().y() / 120.0 / 6.0;
    const int before = model_.loupeZoom();
    model_.adjustLoupeZoom(delta);
    if (model_.loupeZoom() != before && onLoupeZoomChanged) onLoupeZoomChanged(model_.loupeZoom());
    update();
}

void QtRegionOverlay::keyPressEvent(QKeyEvent* event) {
    if (annotating_) {
        if (!annotatingKey(event)) event->ignore();
        return;
    }
    const std::optional<KeyEvent> key = keyEventFromQt(*event, nullptr);
    if (event->key() == Qt::Key_Control) {
        const QPoint at = mapFromGlobal(QCursor::pos());
        followControlKey(true, {static_cast<double>(at.x()), static_cast<double>(at.y())});
        update();
        return;
    }
    if (!key || key->type != KeyEvent::Type::keyDown) return;
    if ((event->modifiers() & Qt::ControlModifier) && (event->key() == Qt::Key_Slash || event->key() == Qt::Key_Question)) {
        if (hintHidden && onHintHiddenChanged) onHintHiddenChanged(!hintHidden());
        update();
        return;
    }
    using Outcome = RegionSelectionModel::KeyOutcome;
    const RegionSelectionModel::KeyResult result = model_.key(key->keyCode, key->modifierFlags, QApplication::mouseButtons() & Qt::LeftButton);
    switch (result.outcome) {
    case Outcome::passed: event->ignore(); return;
    case Outcome::handled:
        if (onLoupeZoomChanged) onLoupeZoomChanged(model_.loupeZoom());
        update();
        return;
    case Outcome::beep: QApplication::beep(); return;
    case Outcome::cancel: cancel(); return;
    case Outcome::commit: commit(*result.commit); return;
    case Outcome::switchToAudio:
        if (callbacks_.onSwitchToAudio) callbacks_.onSwitchToAudio();
        return;
    case Outcome::switchToPresentation:
        if (callbacks_.onSwitchToPresentation) callbacks_.onSwitchToPresentation();
        return;
    case Outcome::copyElementText: {
        const std::optional<std::string> text = elementTextOf_ ? elementTextOf_(model_.elementLevel()) : std::nullopt;
        if (!text) {
            QApplication::beep();
            return;
        }
        if (onCopyText) onCopyText(*text);
        cancel();
        return;
    }
    case Outcome::copyColor:
        if (const std::optional<Point> at = model_.loupePoint(); at && !frozenView_.isNull() && onCopyText) {
            const double s = frozenScale();
            const QRgb pixel = frozenView_.pixel(std::clamp(static_cast<int>(at->x * s), 0, frozenView_.width() - 1),
                                                 std::clamp(static_cast<int>(at->y * s), 0, frozenView_.height() - 1));
            char hex[8];
            std::snprintf(hex, sizeof hex, "#%02X%02X%02X", qRed(pixel), qGreen(pixel), qBlue(pixel));
            onCopyText(hex);
        }
        cancel();
        return;
    }
}

void QtRegionOverlay::keyReleaseEvent(QKeyEvent* event) {
    if (event->key() != Qt::Key_Control) return QWidget::keyReleaseEvent(event);
    if (annotating_) {
        const QPoint at = mapFromGlobal(QCursor::pos());
        return annotating_->commandKey(false, {static_cast<double>(at.x()), static_cast<double>(at.y())});
    }
    followControlKey(false, {});
    update();
}

void QtRegionOverlay::cancel() {
    cancelled_ = true;
    if (model_.mode() == ScreenshotOverlayMode::captureText) {
        if (callbacks_.onTextCaptured) callbacks_.onTextCaptured(std::nullopt);
        return;
    }
    if (callbacks_.onFinish) callbacks_.onFinish({AnnotationResult::cancelled(), std::nullopt, true, model_.scale()});
}

void QtRegionOverlay::commit(const RegionSelectionModel::Commit& commit) {
    if (onRegionCommitted) onRegionCommitted(screenRect(commit.rect));
    // Scroll capture and recording need no image: they go on at once.
    if (model_.mode() == ScreenshotOverlayMode::scrollCapture) {
        if (callbacks_.onScrollRegion) callbacks_.onScrollRegion(screenRect(commit.rect), commit.windowID);
        return;
    }
    if (model_.mode() == ScreenshotOverlayMode::record) {
        if (callbacks_.onRecordRegion) callbacks_.onRecordRegion(screenRect(commit.rect), commit.windowID);
        return;
    }
    if (!frozen_) {
        pendingCommit_ = commit;
        update();
        return;
    }
    finishWith(commit);
}

// A clicked window comes from its own pixels, whole even where something
// covers it, without transparent margins; a window the system cannot give,
// and any other region, is cut from the frozen display.
std::pair<ImageBuffer, Rect> QtRegionOverlay::capturedImage(const RegionSelectionModel::Commit& commit, double s) const {
    if (commit.windowID && captureWindow) {
        if (std::optional<ImageBuffer> own = captureWindow(*commit.windowID); own && !own->isEmpty()) {
            const PickableWindow* window = model_.window(*commit.windowID);
            const Rect full = window ? window->fullRect : commit.rect;
            if (std::optional<TrimmedWindowImage> trimmed = WindowImageTrimmer::trimmedToOpaqueContent(*own))
                return {trimmed->image, Rect(full.minX() + trimmed->box.x / s, full.minY() + trimmed->box.y / s, trimmed->box.width / s,
                                             trimmed->box.height / s)};
            return {*own, Rect(full.minX(), full.minY(), own->width() / s, own->height() / s)};
        }
    }
    const Rect pixels = Rect(commit.rect.minX() * s, commit.rect.minY() * s, commit.rect.width() * s, commit.rect.height() * s).integral();
    return {frozen_->image.cropped({static_cast<int>(pixels.minX()), static_cast<int>(pixels.minY()), static_cast<int>(pixels.width()),
                                    static_cast<int>(pixels.height())}),
            commit.rect};
}

void QtRegionOverlay::finishWith(const RegionSelectionModel::Commit& commit) {
    const double s = frozenScale();
    const auto [image, rect] = capturedImage(commit, s);
    if (model_.mode() == ScreenshotOverlayMode::captureText) return captureTextAndFinish(image, s);
    if (model_.mode() == ScreenshotOverlayMode::annotate && editorServices) return beginAnnotation(rect, image, commit.windowID);
    Expected<std::vector<std::uint8_t>> png = PngEncoder::encode(image);
    if (!png) return cancel();
    if (model_.mode() == ScreenshotOverlayMode::translate) {
        if (callbacks_.onRegionTranslate) callbacks_.onRegionTranslate(*png, screenRect(rect));
        return;
    }
    if (callbacks_.onFinish) callbacks_.onFinish({AnnotationResult::finished(std::move(*png), AnnotationAction::copy), screenRect(rect), true, s});
}

// The keys the overlay answers while a region is annotated: those the canvas passed on.
bool QtRegionOverlay::annotatingKey(QKeyEvent* event) {
    const bool command = event->modifiers() & Qt::ControlModifier;
    const QPoint at = mapFromGlobal(QCursor::pos());
    const Point pointer{static_cast<double>(at.x()), static_cast<double>(at.y())};
    switch (event->key()) {
    case Qt::Key_Control:
        annotating_->commandKey(true, pointer);
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter: finishAnnotation(AnnotationAction::copy); return true;
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Up:
    case Qt::Key_Down: {
        if (command) return false;
        const double step = (event->modifiers() & Qt::ShiftModifier) ? 10 : 1;
        annotating_->nudge(event->key() == Qt::Key_Left ? -step : event->key() == Qt::Key_Right ? step : 0,
                           event->key() == Qt::Key_Up ? -step : event->key() == Qt::Key_Down ? step : 0);
        return true;
    }
    case Qt::Key_Escape: cancel(); return true;
    case Qt::Key_S:
        if (!command) return false;
        finishAnnotation(AnnotationAction::save);
        return true;
    case Qt::Key_C:
        if (!command) return false;
        finishAnnotation(AnnotationAction::copy);
        return true;
    case Qt::Key_R:
        if (!command || !callbacks_.onRecordRegion) return false;
        switchToRecording();
        return true;
    case Qt::Key_Slash:
    case Qt::Key_Question:
        if (!command || !hintHidden || !onHintHiddenChanged) return false;
        onHintHiddenChanged(!hintHidden());
        update();
        return true;
    default: return false;
    }
}

void QtRegionOverlay::beginAnnotation(const Rect& rect, ImageBuffer image, std::optional<std::uint32_t> windowID) {
    RegionAnnotatingPhase::Hooks hooks{
        .finish = [this](AnnotationAction action) { finishAnnotation(action); },
        .cancel = [this] { cancel(); },
        .switchToRecording = callbacks_.onRecordRegion ? std::function<void()>([this] { switchToRecording(); }) : std::function<void()>(),
        .changed = [this] { update(); },
        .windowAt = [this](Point p) -> std::optional<RegionAnnotatingPhase::HoveredWindow> {
            const PickableWindow* window = model_.windowAt(p);
            if (!window) return std::nullopt;
            return RegionAnnotatingPhase::HoveredWindow{window->rect, window->id, static_cast<int>(window - model_.windows().data())};
        },
        .windowImage = [this](std::uint32_t id) -> std::optional<std::pair<ImageBuffer, Rect>> {
            if (!captureWindow || !model_.window(id)) return std::nullopt;
            const double s = frozenScale();
            return capturedImage({model_.window(id)->rect, id}, s);
        },
    };
    const double s = frozenScale();
    model_.clearHover();
    annotating_ = std::make_unique<RegionAnnotatingPhase>(
        *this, RegionAnnotatingPhase::Start{rect, std::move(image), frozen_->image, s, model_.mode(), windowID}, *editorServices, settings,
        std::move(hooks));
    // The keys go to the canvas from now on; the window keeps the keyboard.
    releaseKeyboard();
    if (QWindow* window = windowHandle()) window->setKeyboardGrabEnabled(true);
    setCursor(Qt::ArrowCursor);
    update();
    if (callbacks_.onBeganAnnotation) callbacks_.onBeganAnnotation();
}

void QtRegionOverlay::captureTextAndFinish(ImageBuffer image, double scale) {
    if (textCaptureInFlight_) return;
    if (!readText || !runDetached) return cancel();
    textCaptureInFlight_ = true;
    update();
    const QPointer<QtRegionOverlay> overlay(this);
    runDetached([overlay, read = readText, image = std::move(image), scale] {
        std::optional<std::string> text = read(image, scale);
        QMetaObject::invokeMethod(qApp, [overlay, text = std::move(text)] {
            if (!overlay || overlay->cancelled_) return; // the session ended meanwhile: nothing reaches the clipboard
            const std::string found = text.value_or("");
            if (!found.empty() && overlay->onCopyText) overlay->onCopyText(found);
            logLine("text capture: " + std::to_string(UnicodeText::graphemeCount(found)) + " character(s)");
            if (overlay->callbacks_.onTextCaptured) overlay->callbacks_.onTextCaptured(found);
        }, Qt::QueuedConnection);
    });
}

void QtRegionOverlay::finishAnnotation(AnnotationAction action) {
    const Rect region = annotating_->model().committed();
    if (onRegionCommitted) onRegionCommitted(screenRect(region));
    std::optional<Bytes> png = annotating_->renderPNG();
    if (!png) return cancel();
    const double s = frozenScale();
    if (callbacks_.onFinish) callbacks_.onFinish({AnnotationResult::finished(std::move(*png), action), screenRect(region), true, s});
}

// The committed region is recorded instead; its annotations are dropped.
void QtRegionOverlay::switchToRecording() {
    const Rect region = annotating_->model().committed();
    if (onRegionCommitted) onRegionCommitted(screenRect(region));
    callbacks_.onRecordRegion(screenRect(region), std::nullopt);
}

void QtRegionOverlay::abandonCommittedRegion() {
    annotating_.reset();
    model_.setSnapCandidates({});
    setCursor(Qt::CrossCursor);
    setFocus();
    update();
}

} // namespace tosvar
