#include "RegionAnnotatingPhase.h"

#include "AnnotationRenderer.h"
#include "AnnotationToolbar.h"
#include "DefaultsStore.h"
#include "LocalizationManager.h"
#include "PngEncoder.h"
#include "RegionChromeView.h"
#include "RegionFloatingBar.h"
#include "RegionInfoBadgePainter.h"
#include "RegionInfoBadgeView.h"
#include "RegionSelectionChrome.h"
#include "RegionToolbarLayout.h"
#include "WindowComposite.h"

#include <QGuiApplication>
#include <QMouseEvent>
#include <QPainterPath>
#include <QWheelEvent>

#include <cmath>

namespace tosvar {

namespace {

constexpr const char* dropShadowKey = "screenshotDropShadow";

Point fromQt(QPointF p) { return {p.x(), p.y()}; }
QRectF toQt(const Rect& r) { return {r.minX(), r.minY(), r.width(), r.height()}; }

Qt::CursorShape resizeShape(RectHandle handle) {
    switch (RegionSelectionChrome::cursorHandle(handle)) {
    case RegionSelectionChrome::ResizeCursor::horizontal: return Qt::SizeHorCursor;
    case RegionSelectionChrome::ResizeCursor::vertical: return Qt::SizeVerCursor;
    case RegionSelectionChrome::ResizeCursor::diagonalDown: return Qt::SizeFDiagCursor;
    case RegionSelectionChrome::ResizeCursor::diagonalUp: return Qt::SizeBDiagCursor;
    }
    return Qt::ArrowCursor;
}

} // namespace

RegionAnnotatingPhase::RegionAnnotatingPhase(QWidget& overlay, Start start, const AnnotationEditorServices& services,
                                             DefaultsStore* settings, Hooks hooks)
    : QObject(&overlay),
      overlay_(overlay),
      renderer_(services.renderer),
      frozen_(std::move(start.frozen)),
      scale_(start.scale),
      settings_(settings),
      hooks_(std::move(hooks)),
      model_(start.region, Rect(0, 0, overlay.width(), overlay.height()), start.scale, start.mode, services.queue) {
    composition_.insert(CaptureComposition::Layer::backdrop(frozen_, flipped(model_.bounds())));
    if (start.windowID) composition_.insert({start.windowID, start.image, flipped(start.region), 0});
    else draggedArea_ = start.region;

    AnnotationEditorController::Configuration configuration;
    configuration.allowsCropTool = false;
    editor_ = std::make_unique<AnnotationEditorController>(AnnotationDocument(std::move(start.image), scale_), services.renderer,
                                                           services.queue, services.defaults, configuration);
    editor_->setTool(AnnotationTool::select);

    canvas_ = new AnnotationCanvasView(*editor_, services.clipboard, services.pasteboard, &overlay);
    canvas_->onEscape = [this] { hooks_.cancel(); };
    canvas_->onConfirm = [this] { hooks_.finish(AnnotationAction::copy); };
    canvas_->onRegionZoom = [this](double steps) { zoom(steps); };
    canvas_->hostClaimsPoint = [this](QPointF at) { return claims(at); };
    chrome_ = new RegionChromeView(model_, &overlay);
    chrome_->setGeometry(overlay.rect());

    tools_ = new AnnotationToolbar(*editor_, {.crop = false, .dragOut = false, .cancel = true, .record = static_cast<bool>(hooks_.switchToRecording)});
    tools_->onSwitchToRecording = [this] { hooks_.switchToRecording(); };
    tools_->onCopy = [this] { hooks_.finish(AnnotationAction::copy); };
    tools_->onSave = [this] { hooks_.finish(AnnotationAction::save); };
    tools_->onCancel = [this] { hooks_.cancel(); };
    bar_ = new RegionFloatingBar(tools_, &overlay);
    bar_->onDrag = [this](QPointF delta) { dragToolbar(delta); };

    badge_ = new RegionInfoBadgeView(&overlay);
    if (model_.mode() == ScreenshotOverlayMode::annotate)
        badge_->setToggle(QString::fromStdString(L("capture.badge.shadow")), settings_ && settings_->boolean(dropShadowKey).value_or(false));
    badge_->onToggle = [this](bool on) {
        if (settings_) settings_->set(dropShadowKey, on);
    };
    badge_->onDragMoved = [this](QPointF topLeft) { badge_->move(topLeft.toPoint()); };
    badge_->onDragEnded = [this](QPointF centre) {
        badgeCorner_ = RegionBadgeLayout::nearestCorner(fromQt(centre), model_.committed());
        layoutBadge();
    };

    observer_ = editor_->addObserver([this] {
        if (hooks_.changed) hooks_.changed();
    });
    model_.onChromeHiddenChanged = [this](bool hidden) { setChromeHidden(hidden); };
    layout();
    for (QWidget* view : std::initializer_list<QWidget*>{canvas_, chrome_, bar_, badge_}) {
        view->show();
        view->raise();
    }
    canvas_->setFocus();
}

RegionAnnotatingPhase::~RegionAnnotatingPhase() {
    editor_->removeObserver(observer_);
    // The views refer to the editor: they go first.
    delete bar_;
    delete badge_;
    delete chrome_;
    delete canvas_;
}

QWidget& RegionAnnotatingPhase::toolbar() { return *bar_; }

Rect RegionAnnotatingPhase::flipped(const Rect& view) const {
    return {view.minX(), overlay_.height() - view.maxY(), view.width(), view.height()};
}

bool RegionAnnotatingPhase::claims(QPointF canvasPoint) const {
    const bool command = QGuiApplication::keyboardModifiers() & Qt::ControlModifier;
    const Point p = fromQt(canvas_->mapTo(&overlay_, canvasPoint));
    if (command && removeBadgeAt(p)) return true;
    return model_.claims(p, pointerToolIdle(), command, canvas_->hasElementAt(canvasPoint));
}

bool RegionAnnotatingPhase::pointerToolIdle() const {
    return editor_->state().tool == AnnotationTool::select && editor_->allSelectedIDs().empty() && !canvas_->isEditingText();
}

void RegionAnnotatingPhase::mousePress(QMouseEvent* event, int clickCount) {
    if (event->button() == Qt::RightButton) return hooks_.cancel();
    if (event->button() != Qt::LeftButton) return;
    // The press may have come up from the canvas, which a drag hides: the
    // overlay keeps the pointer until the release.
    overlay_.grabMouse();
    const Point p = fromQt(event->position());
    const Qt::KeyboardModifiers mods = event->modifiers();
    if (canvas_->isEditingText()) canvas_->commitTextEditing();
    if (const std::optional<std::uint32_t> id = (mods & Qt::ControlModifier) ? removeBadgeAt(p) : std::nullopt) {
        composition_.remove(*id);
        Rect united = draggedArea_.value_or(Rect::null());
        for (const CaptureComposition::Layer& layer : composition_.windowLayers()) united = united.unionWith(flipped(layer.frame));
        applyComposition(united);
        return;
    }
    if (!model_.onChrome(p) && !model_.committed().contains(p)) editor_->clearSelection();
    using Press = RegionAnnotatingModel::Press;
    switch (model_.press(p, clickCount, mods & Qt::ControlModifier, mods & Qt::ShiftModifier, mods & Qt::AltModifier)) {
    case Press::confirm: return hooks_.finish(AnnotationAction::copy);
    case Press::move: overlay_.setCursor(Qt::ClosedHandCursor); break;
    default: break;
    }
    chrome_->update();
}

std::optional<RegionAnnotatingModel::Anchor> RegionAnnotatingPhase::mouseMove(QMouseEvent* event) {
    const Point p = fromQt(event->position());
    if (!(event->buttons() & Qt::LeftButton) || !model_.isPressed()) {
        model_.hover(p);
        commandKey(event->modifiers() & Qt::ControlModifier, p);
        updateCursor(p);
        chrome_->update();
        return std::nullopt;
    }
    const Rect before = model_.shown();
    const Qt::KeyboardModifiers mods = event->modifiers();
    switch (model_.drag(p, mods & Qt::ShiftModifier, mods & Qt::AltModifier)) {
    case RegionAnnotatingModel::Drag::none: return std::nullopt;
    case RegionAnnotatingModel::Drag::reselect: return model_.reselectAnchor();
    case RegionAnnotatingModel::Drag::changed: break;
    }
    chrome_->update(toQt(before.unionWith(model_.shown()).insetBy(-56, -56)).toAlignedRect());
    if (hooks_.changed) hooks_.changed();
    return std::nullopt;
}

void RegionAnnotatingPhase::mouseRelease(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    overlay_.releaseMouse();
    if (!model_.isPressed()) return;
    const RegionAnnotatingModel::Release release = model_.release();
    if (release.change) apply(*release.change);
    if (release.takeReselectHover) appendHoveredWindow();
    updateCursor(fromQt(event->position()));
    chrome_->update();
    if (hooks_.changed) hooks_.changed();
}

void RegionAnnotatingPhase::wheel(QWheelEvent* event) {
    if (model_.pending() || !pointerToolIdle()) return;
    const QPoint pixels = event->pixelDelta();
    zoom(!pixels.isNull() ? pixels.y() * 0.1 : event->angleDelta().y() / 120.0);
}

void RegionAnnotatingPhase::zoom(double steps) {
    if (model_.pending()) return;
    if (const std::optional<RegionAnnotatingModel::Change> change = model_.zoom(steps)) apply(*change);
}

void RegionAnnotatingPhase::commandKey(bool held, Point pointer) {
    commandHeld_ = held;
    std::optional<Rect> rect;
    std::optional<std::uint32_t> id;
    if (held && model_.mode() == ScreenshotOverlayMode::annotate && !model_.committed().contains(pointer) && !model_.onChrome(pointer) &&
        !bar_->geometry().contains(QPoint(static_cast<int>(pointer.x), static_cast<int>(pointer.y))) && hooks_.windowAt) {
        if (const std::optional<HoveredWindow> window = hooks_.windowAt(pointer)) {
            rect = window->rect;
            id = window->id;
            hoveredZ_ = window->z;
        }
    }
    showWindowOutlines();
    if (rect == model_.reselectHover() && id == model_.reselectHoverWindowID()) return;
    model_.setReselectHover(rect, id);
    if (hooks_.changed) hooks_.changed();
}

void RegionAnnotatingPhase::nudge(double dxPixels, double dyPixels) {
    if (const std::optional<RegionAnnotatingModel::Change> change = model_.nudge(dxPixels, dyPixels)) apply(*change);
}

std::vector<std::pair<std::uint32_t, Rect>> RegionAnnotatingPhase::removableWindows() const {
    const std::vector<CaptureComposition::Layer> windows = composition_.windowLayers();
    // The last of the parts a region was made of stays.
    if (model_.mode() != ScreenshotOverlayMode::annotate || windows.size() + (draggedArea_ ? 1 : 0) < 2) return {};
    std::vector<std::pair<std::uint32_t, Rect>> removable;
    for (const CaptureComposition::Layer& layer : windows) removable.emplace_back(*layer.id, flipped(layer.frame));
    return removable;
}

std::optional<std::uint32_t> RegionAnnotatingPhase::removeBadgeAt(Point p) const {
    for (const auto& [id, frame] : removableWindows()) {
        const Point centre = RegionSelectionChrome::removeBadgeCenter(frame, model_.bounds());
        if (std::hypot(p.x - centre.x, p.y - centre.y) <= RegionSelectionChrome::removeBadgeRadius) return id;
    }
    return std::nullopt;
}

void RegionAnnotatingPhase::showWindowOutlines() {
    std::vector<Rect> outlines;
    if (commandHeld_)
        for (const auto& [id, frame] : removableWindows()) outlines.push_back(frame);
    chrome_->setWindowOutlines(std::move(outlines));
}

void RegionAnnotatingPhase::apply(const RegionAnnotatingModel::Change& change) {
    editor_->adjustRegion(croppedImage(change.to), change.elementOffset);
    layout();
    if (hooks_.changed) hooks_.changed();
}

ImageBuffer RegionAnnotatingPhase::croppedImage(const Rect& view) const {
    if (!composition_.windowLayers().empty())
        if (std::optional<ImageBuffer> composed = WindowComposite::render(composition_.renderLayers(), flipped(view), scale_))
            return *composed;
    const Rect pixels = Rect(view.minX() * scale_, view.minY() * scale_, view.width() * scale_, view.height() * scale_).integral();
    return frozen_.cropped({static_cast<int>(pixels.minX()), static_cast<int>(pixels.minY()), static_cast<int>(pixels.width()),
                            static_cast<int>(pixels.height())});
}

void RegionAnnotatingPhase::appendHoveredWindow() {
    const std::optional<Rect> hover = model_.reselectHover();
    const std::optional<std::uint32_t> id = model_.reselectHoverWindowID();
    model_.setReselectHover(std::nullopt, std::nullopt);
    if (!hover || !id || composition_.contains(id)) return;
    std::optional<std::pair<ImageBuffer, Rect>> grabbed = hooks_.windowImage ? hooks_.windowImage(*id) : std::nullopt;
    if (!grabbed) grabbed = std::pair{croppedImage(*hover), *hover};
    // A window the composition lacks goes in by its place in the stacking order.
    composition_.insert({id, std::move(grabbed->first), flipped(grabbed->second), hoveredZ_});
    applyComposition(model_.committed().unionWith(grabbed->second));
}

void RegionAnnotatingPhase::applyComposition(const Rect& united) {
    if (const std::optional<RegionAnnotatingModel::Change> change = model_.commitResize(united.intersection(model_.bounds()))) apply(*change);
    showWindowOutlines();
}

void RegionAnnotatingPhase::setChromeHidden(bool hidden) {
    if (hidden) dragPreview_ = canvas_->grab();
    for (QWidget* view : std::initializer_list<QWidget*>{canvas_, bar_, badge_}) view->setVisible(!hidden);
    if (!hidden) {
        layout();
        canvas_->setFocus();
        if (settings_ && model_.mode() == ScreenshotOverlayMode::annotate)
            badge_->setToggle(QString::fromStdString(L("capture.badge.shadow")), settings_->boolean(dropShadowKey).value_or(false));
    }
    chrome_->update();
    if (hooks_.changed) hooks_.changed();
}

void RegionAnnotatingPhase::layout() {
    const Rect region = model_.committed();
    canvas_->setGeometry(toQt(region).toAlignedRect());
    const double radius = model_.cornerRadius();
    if (radius > 0) {
        QPainterPath rounded;
        rounded.addRoundedRect(QRectF(0, 0, region.width(), region.height()), radius, radius);
        canvas_->setMask(QRegion(rounded.toFillPolygon().toPolygon()));
    } else {
        canvas_->clearMask();
    }
    layoutToolbar();
    layoutBadge();
    chrome_->update();
}

void RegionAnnotatingPhase::layoutToolbar() {
    const QSize hint = bar_->sizeHint();
    const RegionToolbarLayout::Placement placed = RegionToolbarLayout::place(
        {static_cast<double>(std::max(hint.width(), 360)), static_cast<double>(hint.height())}, model_.committed(), model_.bounds(),
        toolbarAnchor_);
    bar_->setGeometry(toQt(placed.frame).toAlignedRect());
}

void RegionAnnotatingPhase::dragToolbar(QPointF delta) {
    const QRect frame = bar_->geometry();
    toolbarAnchor_ = Point{frame.center().x() + delta.x(), frame.top() + delta.y()};
    layoutToolbar();
    if (hooks_.changed) hooks_.changed();
}

void RegionAnnotatingPhase::layoutBadge() {
    badge_->setSizeText(RegionInfoBadgePainter::sizeText(model_.shown(), scale_));
    std::vector<Rect> avoiding;
    if (bar_->isVisible()) {
        const QRect bar = bar_->geometry();
        avoiding.emplace_back(bar.x(), bar.y(), bar.width(), bar.height());
    }
    const RegionBadgeLayout::Placement placed = RegionBadgeLayout::placement(
        {static_cast<double>(badge_->width()), static_cast<double>(badge_->height())}, model_.shown(), model_.bounds(), badgeCorner_, avoiding);
    badge_->move(static_cast<int>(std::lround(placed.frame.minX())), static_cast<int>(std::lround(placed.frame.minY())));
}

void RegionAnnotatingPhase::updateCursor(Point p) {
    Qt::CursorShape shape = Qt::ArrowCursor;
    if (model_.showsRadiusGrip() && RegionSelectionChrome::radiusGripHit(model_.committed(), model_.cornerRadius(), p))
        shape = Qt::PointingHandCursor;
    else if (const std::optional<RectHandle> handle = RegionSelectionChrome::handleHit(model_.committed(), p))
        shape = resizeShape(*handle);
    else if (model_.committed().contains(p))
        shape = Qt::OpenHandCursor;
    else if (model_.reselectHover())
        shape = Qt::PointingHandCursor;
    overlay_.setCursor(shape);
    if (model_.committed().contains(p)) canvas_->setCursor(shape);
}

std::optional<Bytes> RegionAnnotatingPhase::renderPNG() {
    canvas_->commitTextEditing();
    const std::optional<ImageBuffer> image = editor_->flattenImage();
    if (!image) return std::nullopt;
    if (model_.cornerRadius() > 0.5) return renderer_.roundedPNG(*image, model_.cornerRadius() * scale_);
    Expected<std::vector<std::uint8_t>> png = PngEncoder::encode(*image);
    if (!png) return std::nullopt;
    return std::move(*png);
}

std::optional<HintPanel::State> RegionAnnotatingPhase::hintState() const {
    if (model_.mode() == ScreenshotOverlayMode::record) return HintPanel::Simple::recordArmed;
    const AnnotationEditorController::State& state = editor_->state();
    if (canvas_->isEditingText() || editor_->editingID()) return HintPanel::Simple::textEditing;
    if (state.ocrMode) return HintPanel::Simple::ocr;
    if (state.selectedID)
        if (const AnnotationElement* selected = editor_->element(*state.selectedID)) return HintPanel::SelectedHint::of(selected->kind.kindCase());
    if (state.tool == AnnotationTool::select)
        return HintPanel::Pointer{!removableWindows().empty()};
    return HintPanel::Tool{state.tool};
}

std::vector<Rect> RegionAnnotatingPhase::hintObstacles() const {
    std::vector<Rect> obstacles{model_.shown().insetBy(-8, -8)};
    if (bar_->isVisible()) {
        const QRect bar = bar_->geometry();
        obstacles.emplace_back(bar.x(), bar.y(), bar.width(), bar.height());
    }
    return obstacles;
}

} // namespace tosvar
