#include "AnnotationEditorController.h"

#include "AnnotationElementClipboard.h"
#include "AnnotationImageImport.h"
#include "AnnotationStyleStore.h"
#include "ElementBounds.h"
#include "ElementRotation.h"
#include "HandleLayout.h"
#include "HitTesting.h"
#include "LeaderSupport.h"
#include "Log.h"
#include "Pasteboard.h"
#include "PathSimplify.h"
#include "PngEncoder.h"
#include "SegmentCurve.h"
#include "StepBadgeLabel.h"
#include "ToolDraft.h"

#include <algorithm>
#include <cmath>

namespace tosvar {

namespace {

using C = AnnotationKind::Case;
using T = AnnotationTool;

constexpr double colorCommitDelay = 0.4;
constexpr double transientEndDelay = 0.6;
constexpr double curveTick = 1.0 / 60;

const std::vector<T> sharedColorTools{T::rectangle, T::ellipse, T::freehand, T::highlighter, T::arrow, T::line, T::text};
const std::vector<RGBAColor> colorPalette{RGBAColor::Palette::red,   RGBAColor::Palette::yellow, RGBAColor::Palette::green,
                                          RGBAColor::Palette::blue,  RGBAColor::Palette::white,  RGBAColor::Palette::black};
const std::map<T, double> defaultToolWidths{{T::arrow, 12}, {T::line, 8}, {T::rectangle, 8}, {T::ellipse, 8}, {T::freehand, 8},
                                            {T::highlighter, 8}};

bool isSharedColorTool(T tool) { return std::find(sharedColorTools.begin(), sharedColorTools.end(), tool) != sharedColorTools.end(); }

template <typename Map>
auto lookup(const Map& map, T tool) -> std::optional<typename Map::mapped_type> {
    const auto found = map.find(tool);
    if (found == map.end()) return std::nullopt;
    return found->second;
}

bool defaultShadow(T tool) { return tool == T::magnifier; }
bool defaultOutline(T tool) { return tool == T::arrow || tool == T::text || tool == T::stepBadge || tool == T::magnifier; }

bool isStrokeTool(T tool) {
    return tool == T::arrow || tool == T::line || tool == T::rectangle || tool == T::ellipse || tool == T::freehand || tool == T::highlighter;
}

bool sameColor(const RGBAColor& a, const RGBAColor& b) {
    return std::abs(a.red - b.red) <= 0.02 && std::abs(a.green - b.green) <= 0.02 && std::abs(a.blue - b.blue) <= 0.02;
}

// A draft too small to be seen.
bool isDot(const Geometry& geometry) {
    if (const auto* s = geometry.asSegment()) return std::hypot(s->to.x - s->from.x, s->to.y - s->from.y) < 3;
    if (const Rect* r = geometry.asRect()) return r->width() < 3 || r->height() < 3;
    if (const auto* p = geometry.asPath()) return p->size() <= 1;
    return false;
}

std::string trimmed(const std::string& text) {
    const auto first = text.find_first_not_of(" \t\r\n");
    if (first == std::string::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

bool allDigits(const std::string& text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](unsigned char c) { return c >= '0' && c <= '9'; });
}

} // namespace

AnnotationEditorController::AnnotationEditorController(AnnotationDocument document, const AnnotationRenderer& renderer, MainQueue& queue,
                                                       DefaultsStore* defaults, Configuration configuration)
    : document_(std::move(document)),
      renderer_(renderer),
      queue_(queue),
      defaults_(defaults),
      configuration_(configuration),
      mosaic_(document_.base()) {
    loadDefaults(defaults_ ? AnnotationStyleStore::load(*defaults_) : AnnotationStyleStore::defaults());
}

AnnotationEditorController::~AnnotationEditorController() {
    draftCurveAnimation_.cancel();
    colorGestureCommit_.cancel();
    transientEnd_.cancel();
    translateTicker_.cancel();
    if (translation_) translation_->cancel();
}

const TextMeasuring& AnnotationEditorController::measure() const { return renderer_.backend().measuring(FontFace::regular); }

// ---- Observation and selection ----

int AnnotationEditorController::addObserver(std::function<void()> observer) {
    observers_.emplace(nextObserver_, std::move(observer));
    return nextObserver_++;
}

void AnnotationEditorController::removeObserver(int token) { observers_.erase(token); }

void AnnotationEditorController::changed() {
    // Observers may remove themselves while being told.
    const auto observers = observers_;
    for (const auto& [token, observer] : observers) observer();
    if (onChange) onChange();
}

std::vector<Uuid> AnnotationEditorController::allSelectedIDs() const {
    std::vector<Uuid> ids;
    if (state_.selectedID) ids.push_back(*state_.selectedID);
    ids.insert(ids.end(), state_.coSelectedIDs.begin(), state_.coSelectedIDs.end());
    return ids;
}

bool AnnotationEditorController::isSelected(const Uuid& id) const {
    const std::vector<Uuid> ids = allSelectedIDs();
    return std::find(ids.begin(), ids.end(), id) != ids.end();
}

const AnnotationElement* AnnotationEditorController::element(const Uuid& id) const {
    for (const AnnotationElement& e : document_.elements)
        if (e.id == id) return &e;
    return nullptr;
}

AnnotationElement* AnnotationEditorController::mutableElement(const Uuid& id) {
    for (AnnotationElement& e : document_.elements)
        if (e.id == id) return &e;
    return nullptr;
}

std::optional<Uuid> AnnotationEditorController::editingID() const {
    if (editingText_) return editingText_;
    if (editingBadge_) return editingBadge_;
    return editingWatermark_;
}

void AnnotationEditorController::setSelection(std::optional<Uuid> primary, std::vector<Uuid> others) {
    std::erase_if(others, [&](const Uuid& id) { return primary && id == *primary; });
    if (!primary && !others.empty()) {
        primary = others.front();
        others.erase(others.begin());
    }
    state_.selectedID = primary;
    state_.coSelectedIDs = std::move(others);
    syncStyleControls();
}

void AnnotationEditorController::select(const Uuid& id) {
    if (!element(id)) return;
    setSelection(id, {});
    changed();
}

void AnnotationEditorController::clearSelection() {
    setSelection(std::nullopt, {});
    changed();
}

void AnnotationEditorController::selectAll() {
    std::vector<Uuid> ids;
    for (const AnnotationElement& e : document_.elements) ids.push_back(e.id);
    setSelection(std::nullopt, std::move(ids));
    changed();
}

void AnnotationEditorController::applyMarqueeSelection(const Rect& rect) {
    std::vector<Uuid> ids = marqueeBaseline_;
    for (const AnnotationElement& e : document_.elements) {
        const Rect box = ElementRotation::worldBounds(measure(), ElementBounds::visualBox(measure(), e), e);
        if (box.intersects(rect) && std::find(ids.begin(), ids.end(), e.id) == ids.end()) ids.push_back(e.id);
    }
    setSelection(std::nullopt, std::move(ids));
}

// The controls show the primary element's style, so adjusting them changes it.
void AnnotationEditorController::syncStyleControls() {
    const AnnotationElement* primary = state_.selectedID ? element(*state_.selectedID) : nullptr;
    if (!primary) return;
    const AnnotationStyle& s = primary->style;
    state_.strokeColor = s.strokeColor;
    switch (primary->kind.kindCase()) {
    case C::text:
    case C::stepBadge:
        state_.textFontSize = s.fontSize;
        state_.outlineEnabled = s.textOutline;
        break;
    case C::watermark:
        state_.textFontSize = s.fontSize;
        state_.watermarkAngle = s.watermarkAngle;
        state_.watermarkOpacity = s.opacity;
        state_.watermarkSpacing = s.watermarkSpacing;
        state_.outlineEnabled = s.textOutline;
        break;
    case C::mosaic: state_.mosaicBlockSize = s.mosaicBlockSize; state_.outlineEnabled = s.textOutline; break;
    case C::blur: state_.blurRadius = s.blurRadius; state_.outlineEnabled = s.textOutline; break;
    case C::magnifier: state_.magnifierZoom = s.magnifierZoom.value_or(4); state_.outlineEnabled = s.textOutline; break;
    case C::spotlight: state_.spotlightVeilOpacity = s.fillColor ? s.fillColor->alpha : 0.5; break;
    default:
        state_.lineWidth = s.lineWidth;
        state_.outlineEnabled = s.outline;
        state_.fillEnabled = s.fillColor.has_value();
        break;
    }
    state_.dashed = s.dashed;
    state_.shadowEnabled = s.shadow;
    if (supportsOpacity(primary->kind.kindCase())) state_.elementOpacity = s.opacity;
}

// ---- Tools and style ----

AnnotationTool AnnotationEditorController::toolFor(AnnotationKind::Case kind) { return tosvar::toolFor(kind); }

bool AnnotationEditorController::supportsOpacity(AnnotationKind::Case kind) {
    return kind == C::arrow || kind == C::line || kind == C::rectangle || kind == C::ellipse || kind == C::freehand ||
           kind == C::highlighter || kind == C::text || kind == C::stepBadge;
}

void AnnotationEditorController::setTool(AnnotationTool tool) {
    if (tool == state_.tool) return;
    if (tool == T::crop && !configuration_.allowsCropTool) return;
    const AnnotationTool old = state_.tool;
    if (!configuration_.keepSelectionOnToolChange) {
        const AnnotationElement* primary = state_.selectedID ? element(*state_.selectedID) : nullptr;
        if (primary && toolFor(primary->kind.kindCase()) != tool) setSelection(std::nullopt, {});
    }
    state_.tool = tool;
    if (auto width = lookup(toolWidths_, tool)) state_.lineWidth = *width;
    if (tool == T::text || tool == T::stepBadge || tool == T::watermark)
        if (auto size = lookup(rememberedFontSizes_, tool)) state_.textFontSize = *size;
    if (!(isSharedColorTool(old) && isSharedColorTool(tool))) {
        // The drawing tools share one colour, so it is kept for all of them.
        if (isSharedColorTool(old)) {
            for (T shared : sharedColorTools) toolColors_[shared] = state_.strokeColor;
            lastSharedColorTool_ = old;
        } else {
            toolColors_[old] = state_.strokeColor;
        }
        if (auto color = lookup(toolColors_, tool)) state_.strokeColor = *color;
        else if (tool == T::magnifier) state_.strokeColor = RGBAColor::Palette::white;
    }
    if (isSharedColorTool(tool)) lastSharedColorTool_ = tool;
    refreshStyleToggles();
    state_.ocrMode = false;
    changed();
}

void AnnotationEditorController::refreshStyleToggles() {
    const T tool = state_.tool;
    state_.dashed = lookup(toolDashed_, tool).value_or(false);
    state_.shadowEnabled = lookup(toolShadow_, tool).value_or(defaultShadow(tool));
    state_.outlineEnabled = lookup(toolOutline_, tool).value_or(defaultOutline(tool));
    state_.fillEnabled = lookup(toolFill_, tool).value_or(false);
    state_.elementOpacity = lookup(toolOpacity_, tool).value_or(1.0);
}

AnnotationTool AnnotationEditorController::styleStateTool() const {
    const AnnotationElement* primary = state_.selectedID ? element(*state_.selectedID) : nullptr;
    return primary ? toolFor(primary->kind.kindCase()) : state_.tool;
}

AnnotationStyle AnnotationEditorController::currentStyle() const {
    const T tool = styleStateTool();
    AnnotationStyle style;
    style.strokeColor = state_.strokeColor;
    style.lineWidth = state_.lineWidth;
    style.mosaicBlockSize = state_.mosaicBlockSize;
    style.blurRadius = state_.blurRadius;
    style.dashed = state_.dashed;
    style.shadow = state_.shadowEnabled;
    style.outlineWidth = lookup(toolOutlineWidth_, tool);
    style.shadowRadius = lookup(toolShadowRadius_, tool);
    style.shadowOffset = lookup(toolShadowOffset_, tool);
    style.dashLength = lookup(toolDashLength_, tool);
    switch (tool) {
    case T::arrow:
    case T::line: style.outline = state_.outlineEnabled; break;
    case T::text:
    case T::stepBadge: style.textOutline = state_.outlineEnabled; break;
    case T::watermark:
        style.watermarkAngle = state_.watermarkAngle;
        style.watermarkSpacing = state_.watermarkSpacing;
        style.opacity = state_.watermarkOpacity;
        style.textOutline = state_.outlineEnabled;
        break;
    case T::mosaic:
    case T::blur:
        style.textOutline = state_.outlineEnabled;
        style.cornerRadius = 0;
        break;
    case T::magnifier:
        style.textOutline = state_.outlineEnabled;
        style.magnifierZoom = state_.magnifierZoom;
        style.strokeColor = RGBAColor::Palette::white;
        style.cornerRadius = 100000; // capped at half the side: a circle
        break;
    case T::spotlight:
        style.textOutline = state_.outlineEnabled;
        style.fillColor = RGBAColor::Palette::black.withAlpha(state_.spotlightVeilOpacity);
        break;
    default: break;
    }
    if (state_.fillEnabled && (tool == T::rectangle || tool == T::ellipse))
        style.fillColor = state_.strokeColor.withAlpha(lookup(toolFillOpacity_, tool).value_or(1.0));
    style.fontSize = state_.textFontSize;
    if (tool >= T::arrow && tool <= T::stepBadge) style.opacity = state_.elementOpacity;
    return style;
}

// ---- Undo ----

void AnnotationEditorController::refreshUndoState() {
    state_.canUndo = undo_.canUndo();
    state_.canRedo = undo_.canRedo();
}

void AnnotationEditorController::recordIfChanged(const AnnotationSnapshot& baseline) {
    if (document_.snapshot() == baseline) return;
    undo_.record(baseline);
    refreshUndoState();
}

void AnnotationEditorController::performUndo() { restore(undo_.undo(document_.snapshot())); }

void AnnotationEditorController::performRedo() { restore(undo_.redo(document_.snapshot())); }

void AnnotationEditorController::restore(std::optional<AnnotationSnapshot> snapshot) {
    if (!snapshot) return;
    document_.apply(std::move(*snapshot));
    refreshUndoState();
    keepSelectionThatExists();
    changed();
}

void AnnotationEditorController::keepSelectionThatExists() {
    std::vector<Uuid> kept;
    for (const Uuid& id : allSelectedIDs())
        if (element(id)) kept.push_back(id);
    setSelection(std::nullopt, std::move(kept));
}

void AnnotationEditorController::beginStyleGesture() {
    if (!styleGestureBaseline_) styleGestureBaseline_ = document_.snapshot();
}

void AnnotationEditorController::endStyleGesture() {
    if (!styleGestureBaseline_) return;
    const AnnotationSnapshot baseline = std::move(*styleGestureBaseline_);
    styleGestureBaseline_.reset();
    recordIfChanged(baseline);
    changed();
}

// Keyboard and wheel bursts: one undo step, closed 0.6 s after the last change.
void AnnotationEditorController::transientChange() {
    if (!transientActive_) {
        transientActive_ = true;
        beginStyleGesture();
    }
    transientEnd_.cancel();
    transientEnd_ = queue_.after(transientEndDelay, [this] {
        transientActive_ = false;
        endStyleGesture();
    });
}

// ---- Pointer gestures ----

void AnnotationEditorController::pointerDown(Point p, bool constrained, bool fromCenter, bool additive) {
    draftConstrained_ = constrained;
    draftFromCenter_ = fromCenter;
    gestureBaseline_ = document_.snapshot();
    moveAxisHorizontal_.reset();

    if (state_.tool != T::crop) {
        if (const std::optional<Uuid> hit = HitTesting::topmost(measure(), document_.elements, p, hitTolerance)) {
            const AnnotationElement* target = element(*hit);
            if (additive && target->kind.is(C::magnifier)) {
                setSelection(*hit, {});
                lensPanID_ = *hit;
                lensPanLast_ = p;
                changed();
                return;
            }
            if (additive) {
                std::vector<Uuid> ids = allSelectedIDs();
                if (const auto found = std::find(ids.begin(), ids.end(), *hit); found != ids.end()) ids.erase(found);
                else ids.push_back(*hit);
                setSelection(std::nullopt, std::move(ids));
            } else if (!isSelected(*hit)) {
                setSelection(*hit, {});
                const T tool = toolFor(target->kind.kindCase());
                if (tool != T::select) {
                    const bool keep = configuration_.keepSelectionOnToolChange;
                    configuration_.keepSelectionOnToolChange = true;
                    setTool(tool);
                    configuration_.keepSelectionOnToolChange = keep;
                    syncStyleControls();
                }
            }
            if (target->kind.is(C::watermark)) {
                watermarkMove_ = WatermarkMove{*hit, p, target->style.watermarkOffset};
            } else {
                beginSelectionMove(p);
            }
            changed();
            return;
        }
    }
    if (additive) {
        marqueeStart_ = p;
        marqueeBaseline_ = allSelectedIDs();
        changed();
        return;
    }
    setSelection(std::nullopt, {});
    switch (state_.tool) {
    case T::select:
    case T::text:
    case T::watermark: break;
    case T::crop: cropStart_ = p; break;
    case T::stepBadge: {
        AnnotationElement badge = *ToolDraft::element(T::stepBadge, p, p, currentStyle(), nextStepLabel(), {constrained, fromCenter},
                                                      Uuid::random());
        draftID_ = badge.id;
        draftStart_ = p;
        document_.elements.push_back(std::move(badge));
        setSelection(draftID_, {});
        bendGesture_.reset(p);
        break;
    }
    default:
        if (std::optional<AnnotationElement> draft =
                ToolDraft::element(state_.tool, p, p, currentStyle(), {}, {constrained, fromCenter}, Uuid::random())) {
            draftID_ = draft->id;
            draftStart_ = p;
            insertRespectingZOrder(std::move(*draft));
            bendGesture_.reset(p);
            draftCurveTarget_ = draftCurveDisplayed_ = 0;
        }
        break;
    }
    changed();
}

bool AnnotationEditorController::beginSelectionMove(Point at) {
    const std::vector<Uuid> ids = allSelectedIDs();
    if (ids.empty()) return false;
    if (!gestureBaseline_) gestureBaseline_ = document_.snapshot();
    Move move{at, {}, {}, {}};
    for (const Uuid& id : ids) {
        const AnnotationElement* e = element(id);
        if (!e) continue;
        move.geometries.emplace(id, e->geometry);
        move.midPoints.emplace(id, e->style.midPoints);
        move.leaderTips.emplace(id, e->style.leaderTip);
    }
    move_ = std::move(move);
    return true;
}

void AnnotationEditorController::insertRespectingZOrder(AnnotationElement element) {
    if (!element.kind.isRegionEffect()) {
        document_.elements.push_back(std::move(element));
        return;
    }
    auto position = document_.elements.begin();
    for (auto it = document_.elements.begin(); it != document_.elements.end(); ++it)
        if (it->kind.isRegionEffect()) position = it + 1;
    document_.elements.insert(position, std::move(element));
}

Point AnnotationEditorController::lockedMoveOffset(Point offset, bool constrained) {
    if (!constrained) {
        moveAxisHorizontal_.reset();
        return offset;
    }
    if (!moveAxisHorizontal_) {
        if (std::abs(offset.x) <= 0.5 && std::abs(offset.y) <= 0.5) return offset;
        moveAxisHorizontal_ = std::abs(offset.y) <= std::abs(offset.x);
    }
    return *moveAxisHorizontal_ ? Point{offset.x, 0} : Point{0, offset.y};
}

Size AnnotationEditorController::clampWatermarkOffset(Size offset) const {
    const Size size = document_.pixelSize();
    return {std::clamp(offset.width + size.width / 2, 0.0, size.width) - size.width / 2,
            std::clamp(offset.height + size.height / 2, 0.0, size.height) - size.height / 2};
}

void AnnotationEditorController::panLens(const Uuid& id, Point from, Point to) {
    AnnotationElement* lens = mutableElement(id);
    if (!lens || !lens->geometry.asRect()) return;
    const double zoom = std::max(lens->style.magnifierZoom.value_or(4), 1.0);
    const Size old = lens->style.magnifierOffset.value_or(Size{});
    const Point centre = lens->geometry.asRect()->standardized().center();
    const Size size = document_.pixelSize();
    const double ox = std::clamp(old.width - (to.x - from.x) / zoom, -centre.x, size.width - centre.x);
    const double oy = std::clamp(old.height - (to.y - from.y) / zoom, -centre.y, size.height - centre.y);
    lens->style.magnifierOffset = Size{ox, oy};
}

void AnnotationEditorController::pointerDragged(Point p, bool constrained, bool fromCenter) {
    if (lensPanID_) {
        panLens(*lensPanID_, lensPanLast_, p);
        lensPanLast_ = p;
    } else if (watermarkMove_) {
        if (AnnotationElement* mark = mutableElement(watermarkMove_->id)) {
            const Point shift = lockedMoveOffset(p - watermarkMove_->grab, constrained);
            mark->style.watermarkOffset = clampWatermarkOffset({watermarkMove_->offset.width + shift.x, watermarkMove_->offset.height + shift.y});
        }
    } else if (marqueeStart_) {
        marqueeRect_ = ToolDraft::rect(*marqueeStart_, p);
        applyMarqueeSelection(*marqueeRect_);
    } else if (cropStart_) {
        const Rect crop = ToolDraft::dragRect(*cropStart_, p, {constrained, false}).intersection(document_.imageBounds());
        document_.cropRect = crop.isNull() ? std::nullopt : std::optional(crop);
    } else if (draftID_) {
        draftConstrained_ = constrained;
        draftFromCenter_ = fromCenter;
        updateDraft(p);
    } else if (move_) {
        const Point offset = lockedMoveOffset(p - move_->start, constrained);
        for (const auto& [id, geometry] : move_->geometries) {
            AnnotationElement* e = mutableElement(id);
            if (!e) continue;
            e->geometry = geometry.translated(offset);
            if (const auto& mids = move_->midPoints.at(id)) {
                std::vector<Point> moved = *mids;
                for (Point& m : moved) m = m + offset;
                e->style.midPoints = std::move(moved);
            }
            if (const auto& tip = move_->leaderTips.at(id)) e->style.leaderTip = *tip + offset;
        }
    } else {
        return;
    }
    changed();
}

void AnnotationEditorController::updateDraft(Point current) {
    AnnotationElement* draft = mutableElement(*draftID_);
    if (!draft) return;
    const C kind = draft->kind.kindCase();
    if (kind == C::freehand || kind == C::highlighter) {
        std::vector<Point> points = draft->geometry.asPath() ? *draft->geometry.asPath() : std::vector<Point>{};
        if (points.empty()) points.push_back(draftStart_);
        if (draftConstrained_) points = {points.front(), ToolDraft::snappedToAngle(points.front(), current, 30, 2)};
        else points.push_back(current);
        draft->geometry = Geometry::path(std::move(points));
        return;
    }
    if (kind == C::text || kind == C::stepBadge) {
        const Point centre = LeaderSupport::center(measure(), *draft);
        const Point target = draftConstrained_ ? ToolDraft::snappedToAngle(centre, current, 30, 2) : current;
        bool exists = false;
        if (kind == C::text) {
            const Rect frame = HandleLayout::textFrameBox(LeaderSupport::bodyRect(measure(), *draft), draft->style.fontSize);
            exists = std::hypot(current.x - draftStart_.x, current.y - draftStart_.y) >= 10 && !frame.contains(current);
        } else {
            exists = std::hypot(target.x - centre.x, target.y - centre.y) > 3;
        }
        if (!exists) {
            draft->style.leaderTip.reset();
            draftCurveTarget_ = 0;
        } else {
            draft->style.leaderTip = target;
            if (draftConstrained_) {
                bendGesture_.pinStraight(current);
                draftCurveTarget_ = 0;
            } else {
                draftCurveTarget_ = bendGesture_.update(centre, target, current);
            }
        }
    } else {
        const AnnotationStyle style = draft->style;
        std::optional<AnnotationElement> rebuilt = ToolDraft::element(state_.tool == T::select ? toolFor(kind) : state_.tool, draftStart_, current,
                                                                      style, {}, {draftConstrained_, draftFromCenter_}, draft->id);
        if (!rebuilt || rebuilt->kind.kindCase() != kind) return;
        draft->geometry = rebuilt->geometry;
        if (kind == C::arrow && !SegmentCurve::midPoints(draft->style)) {
            const auto* segment = draft->geometry.asSegment();
            if (draftConstrained_) {
                bendGesture_.pinStraight(current);
                draftCurveTarget_ = 0;
            } else {
                draftCurveTarget_ = bendGesture_.update(segment->from, segment->to, current);
            }
        } else {
            return;
        }
    }
    // The bend eases toward its target at 60 steps a second.
    if (std::abs(draftCurveTarget_ - draftCurveDisplayed_) >= 0.5 && draftCurveAnimation_.isCancelled()) {
        draftCurveAnimation_ = queue_.every(curveTick, [this] { tickDraftCurve(); });
    }
    draft->style.curvature = draftCurveDisplayed_;
}

void AnnotationEditorController::tickDraftCurve() {
    const double gap = draftCurveTarget_ - draftCurveDisplayed_;
    if (std::abs(gap) < 0.5) {
        draftCurveDisplayed_ = draftCurveTarget_;
        draftCurveAnimation_.cancel();
    } else {
        draftCurveDisplayed_ += 0.22 * gap;
    }
    if (draftID_) {
        if (AnnotationElement* draft = mutableElement(*draftID_)) draft->style.curvature = draftCurveDisplayed_;
    }
    changed();
}

void AnnotationEditorController::finishDraftCurveAnimation() {
    draftCurveAnimation_.cancel();
    draftCurveDisplayed_ = draftCurveTarget_;
    if (draftID_)
        if (AnnotationElement* draft = mutableElement(*draftID_)) {
            const C kind = draft->kind.kindCase();
            if (kind == C::arrow || kind == C::text || kind == C::stepBadge) draft->style.curvature = draftCurveDisplayed_;
        }
}

void AnnotationEditorController::pointerUp() {
    marqueeStart_.reset();
    marqueeRect_.reset();
    marqueeBaseline_.clear();
    lensPanID_.reset();
    activeHandle_.reset();
    resizeOriginal_.reset();
    if (cropStart_) {
        if (document_.cropRect && (document_.cropRect->width() < 4 || document_.cropRect->height() < 4))
            document_.cropRect = gestureBaseline_ ? gestureBaseline_->cropRect : std::nullopt;
        cropStart_.reset();
    }
    if (draftID_) {
        finishDraftCurveAnimation();
        const Uuid id = *draftID_;
        draftID_.reset();
        if (AnnotationElement* draft = mutableElement(id)) {
            if (isDot(draft->geometry)) {
                std::erase_if(document_.elements, [&](const AnnotationElement& e) { return e.id == id; });
                setSelection(std::nullopt, {});
            } else {
                if (draft->kind.is(C::freehand))
                    draft->geometry = Geometry::path(PathSimplify::simplify(*draft->geometry.asPath(), 3.0));
                if (!draft->kind.is(C::text)) setSelection(id, {});
            }
        }
    }
    move_.reset();
    watermarkMove_.reset();
    if (gestureBaseline_) {
        recordIfChanged(*gestureBaseline_);
        gestureBaseline_.reset();
    }
    changed();
}

// ---- Handles ----

void AnnotationEditorController::beginResize(Handle handle) {
    const AnnotationElement* primary = state_.selectedID ? element(*state_.selectedID) : nullptr;
    if (!primary) return;
    if (!gestureBaseline_) gestureBaseline_ = document_.snapshot();
    activeHandle_ = handle;
    resizeOriginal_ = *primary;
}

void AnnotationEditorController::updateResize(Point to, bool constrained, bool fromCenter) {
    if (!activeHandle_ || !resizeOriginal_) return;
    AnnotationElement* target = mutableElement(resizeOriginal_->id);
    if (!target) return;
    // The original element is resized each time, so a side dragged past the
    // opposite one simply turns the box over.
    *target = HandleLayout::resizeRotated(measure(), *resizeOriginal_, *activeHandle_, to, {constrained, fromCenter});
    syncStyleControls();
    changed();
}

void AnnotationEditorController::beginRotation() {
    if (!state_.selectedID || !element(*state_.selectedID)) return;
    if (!gestureBaseline_) gestureBaseline_ = document_.snapshot();
}

void AnnotationEditorController::updateRotation(double degrees) {
    AnnotationElement* primary = state_.selectedID ? mutableElement(*state_.selectedID) : nullptr;
    if (!primary || !ElementRotation::supportsRotation(primary->kind.kindCase())) return;
    primary->style.rotation = degrees == 0 ? std::nullopt : std::optional(degrees);
    changed();
}

void AnnotationEditorController::beginLensPan(Point at) {
    const AnnotationElement* primary = state_.selectedID ? element(*state_.selectedID) : nullptr;
    if (!primary || !primary->kind.is(C::magnifier)) return;
    if (!gestureBaseline_) gestureBaseline_ = document_.snapshot();
    lensPanID_ = primary->id;
    lensPanLast_ = at;
}

void AnnotationEditorController::setLensZoom(double zoom) {
    const double z = std::round(std::clamp(zoom, 1.0, 8.0) * 10) / 10;
    state_.magnifierZoom = z;
    applyToSelection([&](AnnotationElement& e) {
        if (!e.kind.is(C::magnifier)) return false;
        e.style.magnifierZoom = z;
        return true;
    });
    changed();
}

void AnnotationEditorController::insertMidPoint(Point at) {
    AnnotationElement* primary = state_.selectedID ? mutableElement(*state_.selectedID) : nullptr;
    if (!primary) return;
    const AnnotationSnapshot baseline = document_.snapshot();
    *primary = HandleLayout::insertingMidPoint(measure(), *primary, at);
    if (gestureBaseline_) return changed(); // part of the drag that follows
    recordIfChanged(baseline);
    changed();
}

void AnnotationEditorController::removeMidPoint(std::size_t index) {
    AnnotationElement* primary = state_.selectedID ? mutableElement(*state_.selectedID) : nullptr;
    if (!primary) return;
    const AnnotationSnapshot baseline = document_.snapshot();
    *primary = HandleLayout::removingMidPoint(*primary, index);
    recordIfChanged(baseline);
    changed();
}

void AnnotationEditorController::straightenSelectedCurve() {
    AnnotationElement* primary = state_.selectedID ? mutableElement(*state_.selectedID) : nullptr;
    if (!primary) return;
    const AnnotationSnapshot baseline = document_.snapshot();
    primary->style.curvature = 0;
    primary->style.midPoints.reset();
    recordIfChanged(baseline);
    changed();
}

// ---- Text ----

void AnnotationEditorController::beginTextDraft(Point at) {
    gestureBaseline_ = document_.snapshot();
    AnnotationStyle style = currentStyle();
    AnnotationElement text{Uuid::random(), AnnotationKind::text(""), Geometry::point(at), style};
    draftID_ = text.id;
    draftStart_ = at;
    bendGesture_.reset(at);
    draftCurveTarget_ = draftCurveDisplayed_ = 0;
    document_.elements.push_back(std::move(text));
    changed();
}

std::optional<AnnotationEditorController::TextEdit> AnnotationEditorController::promoteTextDraftToEdit() {
    if (!draftID_) return std::nullopt;
    finishDraftCurveAnimation();
    const Uuid id = *draftID_;
    draftID_.reset();
    const AnnotationElement* text = element(id);
    if (!text || !text->kind.is(C::text)) return std::nullopt;
    editingText_ = id;
    editingIsNew_ = true;
    editBaseline_ = gestureBaseline_ ? *gestureBaseline_ : document_.snapshot();
    gestureBaseline_.reset();
    setSelection(id, {});
    changed();
    return TextEdit{"", *text->geometry.asPoint(), text->style.fontSize};
}

std::optional<AnnotationEditorController::TextEdit> AnnotationEditorController::beginTextEdit(const Uuid& id) {
    const AnnotationElement* text = element(id);
    if (!text || !text->kind.is(C::text) || !text->geometry.asPoint()) return std::nullopt;
    editingText_ = id;
    editingIsNew_ = false;
    editBaseline_ = document_.snapshot();
    setSelection(id, {});
    state_.textFontSize = text->style.fontSize;
    changed();
    return TextEdit{text->kind.textPayload(), *text->geometry.asPoint(), text->style.fontSize};
}

void AnnotationEditorController::finishTextEdit(const std::string& text) {
    if (!editingText_) return;
    const Uuid id = *editingText_;
    editingText_.reset();
    if (AnnotationElement* e = mutableElement(id)) {
        if (trimmed(text).empty()) {
            std::erase_if(document_.elements, [&](const AnnotationElement& x) { return x.id == id; });
            setSelection(std::nullopt, {});
        } else {
            e->kind = AnnotationKind::text(text);
            rememberedFontSizes_[T::text] = e->style.fontSize;
        }
    }
    if (editBaseline_) recordIfChanged(*editBaseline_);
    editBaseline_.reset();
    persistDefaults();
    changed();
}

void AnnotationEditorController::cancelTextEdit() {
    if (!editingText_) return;
    editingText_.reset();
    if (editBaseline_) document_.apply(*editBaseline_);
    editBaseline_.reset();
    keepSelectionThatExists();
    changed();
}

void AnnotationEditorController::placeText(const std::string& text, Point at) {
    if (trimmed(text).empty()) return;
    const AnnotationSnapshot baseline = document_.snapshot();
    AnnotationElement element{Uuid::random(), AnnotationKind::text(text), Geometry::point(at), currentStyle()};
    const Uuid id = element.id;
    document_.elements.push_back(std::move(element));
    recordIfChanged(baseline);
    setSelection(id, {});
    changed();
}

void AnnotationEditorController::adjustEditingFontSize(double by) {
    const std::optional<Uuid> id = editingID();
    AnnotationElement* e = id ? mutableElement(*id) : nullptr;
    if (!e) return;
    e->style.fontSize = std::clamp(e->style.fontSize + by, 10.0, 200.0);
    state_.textFontSize = e->style.fontSize;
    changed();
}

// ---- Badges ----

std::string AnnotationEditorController::nextStepLabel() const {
    std::vector<std::string> labels;
    for (const AnnotationElement& e : document_.elements)
        if (e.kind.is(C::stepBadge)) labels.push_back(e.kind.textPayload());
    if (labels.empty()) return "1";
    if (allDigits(labels.back())) {
        long long largest = 0;
        for (const std::string& label : labels)
            if (allDigits(label) && label.size() < 18) largest = std::max(largest, std::stoll(label));
        return std::to_string(largest + 1);
    }
    return StepBadgeLabel::next(labels.back());
}

std::optional<AnnotationEditorController::BadgeEdit> AnnotationEditorController::beginBadgeEdit(const Uuid& id) {
    const AnnotationElement* badge = element(id);
    if (!badge || !badge->kind.is(C::stepBadge) || !badge->geometry.asPoint()) return std::nullopt;
    editingBadge_ = id;
    editBaseline_ = document_.snapshot();
    setSelection(id, {});
    changed();
    return BadgeEdit{badge->kind.textPayload(), *badge->geometry.asPoint(), LeaderSupport::badgeRadius(badge->style)};
}

void AnnotationEditorController::finishBadgeEdit(const std::string& label) {
    if (!editingBadge_) return;
    const Uuid id = *editingBadge_;
    editingBadge_.reset();
    const std::string clean = trimmed(label);
    if (AnnotationElement* e = mutableElement(id); e && !clean.empty()) e->kind = AnnotationKind::stepBadge(clean);
    if (editBaseline_) recordIfChanged(*editBaseline_);
    editBaseline_.reset();
    changed();
}

void AnnotationEditorController::cancelBadgeEdit() {
    if (!editingBadge_) return;
    editingBadge_.reset();
    editBaseline_.reset();
    changed();
}

// ---- Watermark ----

const AnnotationElement* AnnotationEditorController::existingWatermark() const {
    for (const AnnotationElement& e : document_.elements)
        if (e.kind.is(C::watermark)) return &e;
    return nullptr;
}

AnnotationEditorController::WatermarkEdit AnnotationEditorController::beginWatermarkEdit() {
    editBaseline_ = document_.snapshot();
    if (const AnnotationElement* mark = existingWatermark()) {
        editingWatermark_ = mark->id;
        editingIsNew_ = false;
        setSelection(mark->id, {});
        changed();
        return {mark->kind.textPayload(), mark->style.fontSize};
    }
    const T previous = state_.tool;
    if (previous != T::watermark) setTool(T::watermark);
    AnnotationElement mark{Uuid::random(), AnnotationKind::watermark(""), Geometry::rect(document_.imageBounds()), currentStyle()};
    editingWatermark_ = mark.id;
    editingIsNew_ = true;
    const double size = mark.style.fontSize;
    document_.elements.push_back(std::move(mark));
    setSelection(editingWatermark_, {});
    changed();
    return {"", size};
}

void AnnotationEditorController::updateWatermarkText(const std::string& text) {
    AnnotationElement* mark = editingWatermark_ ? mutableElement(*editingWatermark_) : nullptr;
    if (!mark) return;
    mark->kind = AnnotationKind::watermark(text);
    changed();
}

void AnnotationEditorController::finishWatermarkEdit() {
    if (!editingWatermark_) return;
    const Uuid id = *editingWatermark_;
    editingWatermark_.reset();
    if (const AnnotationElement* mark = element(id); mark && trimmed(mark->kind.textPayload()).empty()) {
        std::erase_if(document_.elements, [&](const AnnotationElement& e) { return e.id == id; });
        setSelection(std::nullopt, {});
    }
    if (editBaseline_) recordIfChanged(*editBaseline_);
    editBaseline_.reset();
    changed();
}

void AnnotationEditorController::cancelWatermarkEdit() {
    if (!editingWatermark_) return;
    editingWatermark_.reset();
    if (editBaseline_) document_.apply(*editBaseline_);
    editBaseline_.reset();
    setSelection(std::nullopt, {});
    changed();
}

// ---- Commands ----

void AnnotationEditorController::deleteSelected() {
    const std::vector<Uuid> ids = allSelectedIDs();
    if (ids.empty()) return;
    const AnnotationSnapshot baseline = document_.snapshot();
    std::erase_if(document_.elements, [&](const AnnotationElement& e) { return std::find(ids.begin(), ids.end(), e.id) != ids.end(); });
    setSelection(std::nullopt, {});
    recordIfChanged(baseline);
    changed();
}

void AnnotationEditorController::duplicateSelected() {
    const std::vector<Uuid> ids = allSelectedIDs();
    if (ids.empty()) return;
    const AnnotationSnapshot baseline = document_.snapshot();
    std::vector<Uuid> copies;
    for (const Uuid& id : ids) {
        const AnnotationElement* original = element(id);
        if (!original || original->kind.is(C::watermark)) continue;
        AnnotationElement copy = AnnotationElementClipboard::translated(*original, {16, 16});
        copy.id = Uuid::random();
        copies.push_back(copy.id);
        insertRespectingZOrder(std::move(copy));
    }
    setSelection(std::nullopt, std::move(copies));
    recordIfChanged(baseline);
    changed();
}

void AnnotationEditorController::copySelected(AnnotationElementClipboard& clipboard, const Pasteboard& pasteboard) {
    std::vector<AnnotationElement> selected;
    for (const AnnotationElement& e : document_.elements)
        if (isSelected(e.id)) selected.push_back(e);
    clipboard.copy(selected, pasteboard);
}

void AnnotationEditorController::cutSelected(AnnotationElementClipboard& clipboard, const Pasteboard& pasteboard) {
    copySelected(clipboard, pasteboard);
    deleteSelected();
}

void AnnotationEditorController::pasteElements(std::vector<AnnotationElement> elements) {
    if (elements.empty()) return;
    const AnnotationSnapshot baseline = document_.snapshot();
    std::vector<Uuid> pasted;
    for (AnnotationElement& e : elements) {
        if (e.kind.is(C::watermark) && existingWatermark()) continue; // one watermark a document
        pasted.push_back(e.id);
        insertRespectingZOrder(std::move(e));
    }
    setSelection(std::nullopt, std::move(pasted));
    recordIfChanged(baseline);
    changed();
}

bool AnnotationEditorController::paste(AnnotationElementClipboard& clipboard, const Pasteboard& pasteboard) {
    const std::optional<Bytes> picture = pasteboard.readImagePNG();
    switch (clipboard.choice(pasteboard, picture.has_value())) {
    case AnnotationElementClipboard::Choice::nothing: return false;
    case AnnotationElementClipboard::Choice::elements: pasteElements(clipboard.take({pasteOffset, pasteOffset})); return true;
    case AnnotationElementClipboard::Choice::systemImage: break;
    }
    const Size canvas = document_.pixelSize();
    Expected<AnnotationImage> image = AnnotationImageImport::payload(*picture, AnnotationImageImport::maxPixel(canvas));
    if (!image) {
        logLine("[Editor] paste ignored: " + image.error().message);
        return false;
    }
    const Rect rect = AnnotationImageImport::placement({image->pixelWidth, image->pixelHeight}, canvas, std::nullopt, 1);
    addImage(AnnotationImageImport::element(*image, rect));
    return true;
}

void AnnotationEditorController::addImage(const AnnotationElement& image) { pasteElements({image}); }

void AnnotationEditorController::nudgeSelected(double dx, double dy) {
    if (allSelectedIDs().empty()) return;
    transientChange();
    for (const Uuid& id : allSelectedIDs()) {
        AnnotationElement* e = mutableElement(id);
        if (!e) continue;
        if (e->kind.is(C::watermark)) {
            e->style.watermarkOffset = clampWatermarkOffset({e->style.watermarkOffset.width + dx, e->style.watermarkOffset.height + dy});
            continue;
        }
        *e = AnnotationElementClipboard::translated(*e, {dx, dy});
    }
    changed();
}

void AnnotationEditorController::moveSelected(bool forward) {
    const std::vector<Uuid> ids = allSelectedIDs();
    if (ids.empty()) return;
    const AnnotationSnapshot baseline = document_.snapshot();
    auto& list = document_.elements;
    auto chosen = [&](const AnnotationElement& e) { return std::find(ids.begin(), ids.end(), e.id) != ids.end(); };
    if (forward) {
        for (std::size_t i = list.size(); i-- > 1;)
            if (chosen(list[i - 1]) && !chosen(list[i])) std::swap(list[i - 1], list[i]);
    } else {
        for (std::size_t i = 1; i < list.size(); ++i)
            if (chosen(list[i]) && !chosen(list[i - 1])) std::swap(list[i - 1], list[i]);
    }
    recordIfChanged(baseline);
    changed();
}

void AnnotationEditorController::moveSelectedToEdge(bool front) {
    const std::vector<Uuid> ids = allSelectedIDs();
    if (ids.empty()) return;
    const AnnotationSnapshot baseline = document_.snapshot();
    auto& list = document_.elements;
    auto chosen = [&](const AnnotationElement& e) { return std::find(ids.begin(), ids.end(), e.id) != ids.end(); };
    if (front) std::stable_partition(list.begin(), list.end(), [&](const AnnotationElement& e) { return !chosen(e); });
    else std::stable_partition(list.begin(), list.end(), chosen);
    recordIfChanged(baseline);
    changed();
}

void AnnotationEditorController::applyToSelection(const std::function<bool(AnnotationElement&)>& change) {
    for (const Uuid& id : allSelectedIDs())
        if (AnnotationElement* e = mutableElement(id)) change(*e);
}

void AnnotationEditorController::cycleColor(bool backward) {
    const auto found = std::find_if(colorPalette.begin(), colorPalette.end(), [&](const RGBAColor& c) { return sameColor(c, state_.strokeColor); });
    std::size_t index = 0;
    if (found != colorPalette.end()) {
        const std::size_t at = static_cast<std::size_t>(found - colorPalette.begin());
        index = backward ? (at + colorPalette.size() - 1) % colorPalette.size() : (at + 1) % colorPalette.size();
    }
    setStrokeColor(colorPalette[index]);
}

void AnnotationEditorController::setStrokeColor(const RGBAColor& color) {
    const AnnotationSnapshot baseline = document_.snapshot();
    state_.strokeColor = color;
    toolColors_[styleStateTool()] = color;
    applyToSelection([&](AnnotationElement& e) {
        if (e.kind.is(C::magnifier) || e.kind.isRegionEffect() || e.kind.is(C::image)) return false;
        e.style.strokeColor = color;
        if (e.style.fillColor && (e.kind.is(C::rectangle) || e.kind.is(C::ellipse))) e.style.fillColor = color.withAlpha(e.style.fillColor->alpha);
        return true;
    });
    recordIfChanged(baseline);
    persistDefaults();
    changed();
}

void AnnotationEditorController::setStrokeColorLive(const RGBAColor& color) {
    if (!colorGestureBaseline_) colorGestureBaseline_ = document_.snapshot();
    state_.strokeColor = color;
    toolColors_[styleStateTool()] = color;
    applyToSelection([&](AnnotationElement& e) {
        if (e.kind.isRegionEffect() || e.kind.is(C::image)) return false;
        e.style.strokeColor = color;
        if (e.style.fillColor && (e.kind.is(C::rectangle) || e.kind.is(C::ellipse))) e.style.fillColor = color.withAlpha(e.style.fillColor->alpha);
        return true;
    });
    colorGestureCommit_.cancel();
    colorGestureCommit_ = queue_.after(colorCommitDelay, [this] { commitColorGesture(); });
    changed();
}

void AnnotationEditorController::commitColorGesture() {
    if (!colorGestureBaseline_) return;
    const AnnotationSnapshot baseline = std::move(*colorGestureBaseline_);
    colorGestureBaseline_.reset();
    recordIfChanged(baseline);
    persistDefaults();
    changed();
}

void AnnotationEditorController::setToggle(std::map<AnnotationTool, bool>& map, bool& published, bool value,
                                           const std::function<bool(AnnotationElement&, bool)>& apply) {
    const AnnotationSnapshot baseline = document_.snapshot();
    published = value;
    map[styleStateTool()] = value;
    applyToSelection([&](AnnotationElement& e) { return apply(e, value); });
    recordIfChanged(baseline);
    persistDefaults();
    changed();
}

void AnnotationEditorController::setFilled(bool filled) {
    setToggle(toolFill_, state_.fillEnabled, filled, [this](AnnotationElement& e, bool on) {
        if (!e.kind.is(C::rectangle) && !e.kind.is(C::ellipse)) return false;
        if (on) e.style.fillColor = e.style.strokeColor.withAlpha(lookup(toolFillOpacity_, toolFor(e.kind.kindCase())).value_or(1.0));
        else e.style.fillColor.reset();
        return true;
    });
}

void AnnotationEditorController::setOutline(bool outline) {
    setToggle(toolOutline_, state_.outlineEnabled, outline, [](AnnotationElement& e, bool on) {
        switch (e.kind.kindCase()) {
        case C::arrow:
        case C::line: e.style.outline = on; return true;
        case C::text:
        case C::stepBadge:
        case C::watermark:
        case C::mosaic:
        case C::blur:
        case C::magnifier:
        case C::spotlight: e.style.textOutline = on; return true;
        default: return false;
        }
    });
}

void AnnotationEditorController::setDashed(bool dashed) {
    setToggle(toolDashed_, state_.dashed, dashed, [](AnnotationElement& e, bool on) {
        e.style.dashed = on;
        return true;
    });
}

void AnnotationEditorController::setShadow(bool shadow) {
    setToggle(toolShadow_, state_.shadowEnabled, shadow, [](AnnotationElement& e, bool on) {
        e.style.shadow = on;
        return true;
    });
}

void AnnotationEditorController::setLineWidth(double width) {
    const double w = std::clamp(width, 1.0, 50.0);
    beginStyleGesture();
    state_.lineWidth = w;
    toolWidths_[styleStateTool()] = w;
    applyToSelection([&](AnnotationElement& e) {
        if (!isStrokeTool(toolFor(e.kind.kindCase()))) return false;
        e.style.lineWidth = w;
        return true;
    });
    if (!transientActive_) endStyleGesture();
    persistDefaults();
    changed();
}

void AnnotationEditorController::setTextFontSize(double size) {
    const double s = std::clamp(size, 10.0, 200.0);
    beginStyleGesture();
    state_.textFontSize = s;
    const T tool = styleStateTool();
    if (tool == T::text || tool == T::stepBadge || tool == T::watermark) rememberedFontSizes_[tool] = s;
    applyToSelection([&](AnnotationElement& e) {
        if (!e.kind.is(C::text) && !e.kind.is(C::stepBadge) && !e.kind.is(C::watermark) && !e.kind.is(C::translatedText)) return false;
        e.style.fontSize = s;
        return true;
    });
    if (!transientActive_) endStyleGesture();
    persistDefaults();
    changed();
}

void AnnotationEditorController::setWatermarkAngle(double degrees) {
    beginStyleGesture();
    state_.watermarkAngle = degrees;
    if (const AnnotationElement* mark = existingWatermark())
        if (AnnotationElement* e = mutableElement(mark->id)) e->style.watermarkAngle = degrees;
    if (!transientActive_) endStyleGesture();
    persistDefaults();
    changed();
}

void AnnotationEditorController::setWatermarkOpacity(double opacity) {
    beginStyleGesture();
    state_.watermarkOpacity = std::clamp(opacity, 0.0, 1.0);
    if (const AnnotationElement* mark = existingWatermark())
        if (AnnotationElement* e = mutableElement(mark->id)) e->style.opacity = state_.watermarkOpacity;
    if (!transientActive_) endStyleGesture();
    persistDefaults();
    changed();
}

void AnnotationEditorController::setSpotlightVeilOpacity(double opacity) {
    beginStyleGesture();
    state_.spotlightVeilOpacity = std::clamp(opacity, 0.0, 1.0);
    applyToSelection([&](AnnotationElement& e) {
        if (!e.kind.is(C::spotlight)) return false;
        e.style.fillColor = e.style.fillColor.value_or(RGBAColor::Palette::black).withAlpha(state_.spotlightVeilOpacity);
        return true;
    });
    if (!transientActive_) endStyleGesture();
    persistDefaults();
    changed();
}

void AnnotationEditorController::applyVeilToAllSpotlights() {
    const AnnotationSnapshot baseline = document_.snapshot();
    for (AnnotationElement& e : document_.elements)
        if (e.kind.is(C::spotlight)) e.style.fillColor = e.style.fillColor.value_or(RGBAColor::Palette::black).withAlpha(state_.spotlightVeilOpacity);
    recordIfChanged(baseline);
    changed();
}

void AnnotationEditorController::setElementOpacity(double opacity) {
    beginStyleGesture();
    state_.elementOpacity = std::clamp(opacity, 0.0, 1.0);
    toolOpacity_[styleStateTool()] = state_.elementOpacity;
    applyToSelection([&](AnnotationElement& e) {
        if (!supportsOpacity(e.kind.kindCase())) return false;
        e.style.opacity = state_.elementOpacity;
        return true;
    });
    if (!transientActive_) endStyleGesture();
    persistDefaults();
    changed();
}

void AnnotationEditorController::toggleElementOpacity() { setElementOpacity(state_.elementOpacity > 0.99 ? 0.5 : 1.0); }

void AnnotationEditorController::resetElementOpacity() {
    setElementOpacity(1.0);
    toolOpacity_.erase(styleStateTool());
    persistDefaults();
}

void AnnotationEditorController::resetDashedToDefault() {
    setDashed(false);
    toolDashed_.erase(styleStateTool());
    persistDefaults();
}

void AnnotationEditorController::resetShadowToDefault() {
    setShadow(defaultShadow(styleStateTool()));
    toolShadow_.erase(styleStateTool());
    persistDefaults();
}

void AnnotationEditorController::resetOutlineToDefault() {
    setOutline(defaultOutline(styleStateTool()));
    toolOutline_.erase(styleStateTool());
    persistDefaults();
}

void AnnotationEditorController::resetFillToDefault() {
    setFilled(false);
    toolFill_.erase(styleStateTool());
    persistDefaults();
}

void AnnotationEditorController::resetToolToDefault() {
    const T tool = state_.tool;
    for (auto* map : {&toolDashed_, &toolShadow_, &toolOutline_, &toolFill_}) map->erase(tool);
    for (auto* map : {&toolOutlineWidth_, &toolShadowRadius_, &toolDashLength_, &toolOpacity_, &toolFillOpacity_}) map->erase(tool);
    toolShadowOffset_.erase(tool);
    if (auto width = lookup(defaultToolWidths, tool)) {
        toolWidths_[tool] = *width;
        state_.lineWidth = *width;
    }
    if (tool == T::text || tool == T::watermark) rememberedFontSizes_[tool] = AnnotationStyleStore::defaults().textFontSize;
    if (tool == T::stepBadge) rememberedFontSizes_[tool] = defaultStepBadgeFontSize;
    if (auto size = lookup(rememberedFontSizes_, tool)) state_.textFontSize = *size;
    if (tool == T::mosaic) state_.mosaicBlockSize = 16;
    if (tool == T::blur) state_.blurRadius = 12;
    if (tool == T::magnifier) state_.magnifierZoom = 4;
    if (tool == T::watermark) {
        state_.watermarkAngle = -45;
        state_.watermarkOpacity = 0.25;
        state_.watermarkSpacing = 1.0;
    }
    if (tool == T::spotlight) state_.spotlightVeilOpacity = 0.5;
    refreshStyleToggles();
    persistDefaults();
    changed();
}

void AnnotationEditorController::handleToolTap(AnnotationTool tool) {
    const double now = queue_.now();
    if (lastToolTap_ && lastToolTap_->first == tool && now - lastToolTap_->second <= configuration_.doubleClickInterval) {
        lastToolTap_.reset();
        setTool(tool);
        resetToolToDefault();
        return;
    }
    lastToolTap_ = std::pair{tool, now};
    setTool(tool);
}

void AnnotationEditorController::adjustToolProperty(double by) {
    const T tool = state_.tool;
    transientChange();
    if (isStrokeTool(tool)) {
        state_.lineWidth = std::clamp(state_.lineWidth + by, 1.0, 50.0);
        toolWidths_[tool] = state_.lineWidth;
    } else if (tool == T::text || tool == T::stepBadge || tool == T::watermark) {
        state_.textFontSize = std::clamp(state_.textFontSize + 2 * by, 10.0, 200.0);
        rememberedFontSizes_[tool] = state_.textFontSize;
    } else if (tool == T::mosaic) {
        state_.mosaicBlockSize = std::clamp(state_.mosaicBlockSize + by, 4.0, 80.0);
    } else if (tool == T::blur) {
        state_.blurRadius = std::clamp(state_.blurRadius + by, 2.0, 60.0);
    } else if (tool == T::magnifier) {
        state_.magnifierZoom = std::clamp(state_.magnifierZoom + by, 1.0, 8.0);
    } else {
        return;
    }
    persistDefaults();
    changed();
}

void AnnotationEditorController::adjustPrimaryProperty(double by) {
    if (allSelectedIDs().empty()) return adjustToolProperty(by);
    transientChange();
    applyToSelection([&](AnnotationElement& e) {
        const T tool = toolFor(e.kind.kindCase());
        if (isStrokeTool(tool)) e.style.lineWidth = std::clamp(e.style.lineWidth + by, 1.0, 50.0);
        else if (tool == T::text || tool == T::stepBadge || tool == T::watermark) e.style.fontSize = std::clamp(e.style.fontSize + 2 * by, 10.0, 200.0);
        else if (tool == T::mosaic) e.style.mosaicBlockSize = std::clamp(e.style.mosaicBlockSize + by, 4.0, 80.0);
        else if (tool == T::blur) e.style.blurRadius = std::clamp(e.style.blurRadius + by, 2.0, 60.0);
        else if (tool == T::magnifier) e.style.magnifierZoom = std::clamp(e.style.magnifierZoom.value_or(4) + by, 1.0, 8.0);
        else return false;
        return true;
    });
    syncStyleControls();
    changed();
}

void AnnotationEditorController::adjustElementOpacity(double by) {
    transientChange();
    setElementOpacity(std::clamp(state_.elementOpacity + 0.05 * by, 0.0, 1.0));
}

void AnnotationEditorController::adjustFillOpacity(double by) {
    const T tool = styleStateTool();
    if (tool != T::rectangle && tool != T::ellipse) return;
    transientChange();
    const double opacity = std::clamp(lookup(toolFillOpacity_, tool).value_or(1.0) + 0.05 * by, 0.0, 1.0);
    toolFillOpacity_[tool] = opacity;
    applyToSelection([&](AnnotationElement& e) {
        if (!e.style.fillColor) return false;
        e.style.fillColor = e.style.fillColor->withAlpha(opacity);
        return true;
    });
    persistDefaults();
    changed();
}

void AnnotationEditorController::adjustLeaderWidth(const Uuid& id, double by) {
    AnnotationElement* e = mutableElement(id);
    if (!e || !LeaderSupport::hasLeader(*e)) return;
    transientChange();
    e->style.leaderWidth = std::clamp(e->style.leaderWidth.value_or(8) + by, 1.5, 60.0);
    changed();
}

AnnotationEditorController::EffectIntensity AnnotationEditorController::effectIntensity() const {
    const T tool = styleStateTool();
    if (tool == T::mosaic) return {state_.mosaicBlockSize, 4, 80, 16};
    if (tool == T::blur) return {state_.blurRadius, 2, 60, 12};
    if (tool == T::magnifier) return {state_.magnifierZoom, 1, 8, 4};
    return {};
}

void AnnotationEditorController::setEffectIntensity(double value) {
    const T tool = styleStateTool();
    beginStyleGesture();
    if (tool == T::mosaic) {
        state_.mosaicBlockSize = std::clamp(std::round(value), 4.0, 80.0);
        applyToSelection([&](AnnotationElement& e) { return e.kind.is(C::mosaic) && (e.style.mosaicBlockSize = state_.mosaicBlockSize, true); });
    } else if (tool == T::blur) {
        state_.blurRadius = std::clamp(std::round(value), 2.0, 60.0);
        applyToSelection([&](AnnotationElement& e) { return e.kind.is(C::blur) && (e.style.blurRadius = state_.blurRadius, true); });
    } else if (tool == T::magnifier) {
        state_.magnifierZoom = std::clamp(std::round(value * 10) / 10, 1.0, 8.0);
        applyToSelection([&](AnnotationElement& e) { return e.kind.is(C::magnifier) && (e.style.magnifierZoom = state_.magnifierZoom, true); });
    }
    if (!transientActive_) endStyleGesture();
    persistDefaults();
    changed();
}

void AnnotationEditorController::setCensorBlur(bool blurred) {
    const T target = blurred ? T::blur : T::mosaic;
    const AnnotationSnapshot baseline = document_.snapshot();
    const bool keep = configuration_.keepSelectionOnToolChange;
    configuration_.keepSelectionOnToolChange = true;
    setTool(target);
    configuration_.keepSelectionOnToolChange = keep;
    // The selected censoring regions change kind and keep their place.
    applyToSelection([&](AnnotationElement& e) {
        if (!e.kind.is(C::mosaic) && !e.kind.is(C::blur)) return false;
        e.kind = AnnotationKind(blurred ? C::blur : C::mosaic);
        return true;
    });
    recordIfChanged(baseline);
    changed();
}

double AnnotationEditorController::derivedOutlineWidth(AnnotationTool tool) const {
    switch (tool) {
    case T::text: return 6;
    case T::stepBadge: return state_.textFontSize < 12 ? 2 : std::max(state_.textFontSize / 10, 2.0);
    case T::watermark: {
        const double size = existingWatermark() ? existingWatermark()->style.fontSize : state_.textFontSize;
        return std::max(size / 12, 1.5);
    }
    case T::mosaic:
    case T::blur:
    case T::magnifier:
    case T::spotlight: return AnnotationStyle{}.lineWidth;
    default: return std::max(lookup(toolWidths_, tool).value_or(state_.lineWidth) / 4, 2.0);
    }
}

double AnnotationEditorController::defaultDashLength(AnnotationTool tool) const {
    if (tool == T::arrow || tool == T::line || tool == T::freehand) return 40;
    if (tool == T::text || tool == T::stepBadge) return 36;
    return std::max(2.5 * lookup(toolWidths_, tool).value_or(state_.lineWidth), 4.0);
}

// ---- Recognition and translation ----

void AnnotationEditorController::toggleOCRMode() {
    if (!configuration_.supportsOCR) return;
    state_.ocrMode = !state_.ocrMode;
    changed();
}

void AnnotationEditorController::setOCRState(OCRState state) {
    state_.ocrState = state;
    changed();
}

void AnnotationEditorController::setTranslationsHidden(bool hidden) {
    for (AnnotationElement& e : document_.elements)
        if (const TranslatedBlock* block = e.kind.blockPayload(); block && block->isHidden != hidden) {
            TranslatedBlock changedBlock = *block;
            changedBlock.isHidden = hidden;
            e.kind = AnnotationKind::translatedText(std::move(changedBlock));
        }
}

void AnnotationEditorController::toggleTranslate() {
    state_.translateMode = !state_.translateMode;
    if (state_.translateMode) {
        const bool hasTranslations = std::any_of(document_.elements.begin(), document_.elements.end(),
                                                 [](const AnnotationElement& e) { return e.kind.is(C::translatedText); });
        if (hasTranslations) setTranslationsHidden(false);
        else translateNow();
    } else {
        setTranslationsHidden(true);
    }
    changed();
}

void AnnotationEditorController::cancelTranslation() {
    ++translateRun_;
    translateTicker_.cancel();
    if (translation_) translation_->cancel();
}

void AnnotationEditorController::translateNow() {
    if (!translation_) {
        state_.translateState = TranslateState::failed("translate.unavailable");
        return changed();
    }
    if (std::optional<std::string> reason = translation_->unavailableReason()) {
        state_.translateState = TranslateState::failed(*reason);
        return changed();
    }
    cancelTranslation();
    const int run = translateRun_;
    state_.translateState = TranslateState::running();
    state_.translateElapsedSeconds = 0;
    translateTicker_ = queue_.every(1.0, [this] {
        ++state_.translateElapsedSeconds;
        changed();
    });
    translation_->translate(document_.base(), state_.translateProviderID,
                            [this, run](TranslateState failure, std::optional<EditorTranslation::Output> output) {
                                if (run != translateRun_) return; // superseded or closed
                                translateTicker_.cancel();
                                if (!output) {
                                    state_.translateState = std::move(failure);
                                    return changed();
                                }
                                const AnnotationSnapshot baseline = document_.snapshot();
                                std::erase_if(document_.elements, [](const AnnotationElement& e) { return e.kind.is(C::translatedText); });
                                const int count = static_cast<int>(output->elements.size());
                                for (AnnotationElement& e : output->elements) document_.elements.push_back(std::move(e));
                                setSelection(std::nullopt, {});
                                recordIfChanged(baseline);
                                state_.translateState = TranslateState::ready(count, output->overflow, output->pairLabel, output->engine);
                                changed();
                            });
    changed();
}

// ---- Output ----

std::optional<ImageBuffer> AnnotationEditorController::flattenImage() const { return renderer_.render(document_); }

std::optional<Bytes> AnnotationEditorController::flattenPNG() const { return renderer_.renderPNG(document_); }

void AnnotationEditorController::flattenPNGInBackground(WorkerPool& pool, std::function<void(std::optional<Bytes>)> done) {
    auto document = std::make_shared<AnnotationDocument>(document_);
    const AnnotationRenderer& renderer = renderer_;
    MainQueue& queue = queue_;
    pool.detach([document, &renderer, &queue, done = std::move(done)]() mutable {
        std::optional<Bytes> png = renderer.renderPNG(*document);
        queue.async([png = std::move(png), done = std::move(done)]() mutable { done(std::move(png)); });
    });
}

void AnnotationEditorController::adjustRegion(ImageBuffer newBase, Point offset) {
    const Size newSize{static_cast<double>(newBase.width()), static_cast<double>(newBase.height())};
    auto shift = [&](AnnotationSnapshot& snapshot) {
        for (AnnotationElement& e : snapshot.elements) {
            if (offset.x != 0 || offset.y != 0) e = AnnotationElementClipboard::translated(e, offset);
            if (e.kind.is(C::watermark)) e.geometry = Geometry::rect({0, 0, newSize.width, newSize.height});
        }
        if (snapshot.cropRect && (offset.x != 0 || offset.y != 0)) snapshot.cropRect = snapshot.cropRect->offsetBy(offset.x, offset.y);
    };
    AnnotationSnapshot current = document_.snapshot();
    shift(current);
    document_.apply(std::move(current));
    undo_.transformAll(shift);
    document_.replaceBase(newBase);
    mosaic_ = MosaicEngine(std::move(newBase));
    changed();
}

// ---- Stored defaults ----

void AnnotationEditorController::loadDefaults(const AnnotationStyleStore& store) {
    isLoadingDefaults_ = true;
    state_.strokeColor = store.strokeColor;
    toolWidths_ = store.toolWidths;
    if (auto width = lookup(toolWidths_, state_.tool)) state_.lineWidth = *width;
    toolDashed_ = store.toolDashed.value_or(std::map<T, bool>{});
    toolShadow_ = store.toolShadow.value_or(std::map<T, bool>{});
    toolOutline_ = store.toolOutline.value_or(std::map<T, bool>{});
    toolFill_ = store.toolFill.value_or(std::map<T, bool>{});
    toolOutlineWidth_ = store.toolOutlineWidth.value_or(std::map<T, double>{});
    toolShadowRadius_ = store.toolShadowRadius.value_or(std::map<T, double>{});
    toolDashLength_ = store.toolDashLength.value_or(std::map<T, double>{});
    toolShadowOffset_ = store.toolShadowOffset.value_or(std::map<T, Size>{});
    state_.textFontSize = store.textFontSize;
    rememberedFontSizes_[T::text] = store.textFontSize;
    rememberedFontSizes_[T::watermark] = store.textFontSize;
    rememberedFontSizes_[T::stepBadge] = defaultStepBadgeFontSize;
    state_.mosaicBlockSize = store.mosaicBlockSize;
    state_.blurRadius = store.blurRadius;
    if (store.magnifierZoom) state_.magnifierZoom = *store.magnifierZoom;
    if (store.watermarkAngle) state_.watermarkAngle = *store.watermarkAngle;
    if (store.watermarkOpacity) state_.watermarkOpacity = *store.watermarkOpacity;
    if (store.watermarkSpacing) state_.watermarkSpacing = *store.watermarkSpacing;
    if (store.spotlightVeilOpacity) state_.spotlightVeilOpacity = *store.spotlightVeilOpacity;
    toolOpacity_ = store.toolOpacity.value_or(std::map<T, double>{});
    toolFillOpacity_ = store.toolFillOpacity.value_or(std::map<T, double>{});
    state_.elementOpacity = lookup(toolOpacity_, state_.tool).value_or(1.0);
    isLoadingDefaults_ = false;
}

void AnnotationEditorController::persistDefaults() {
    if (!configuration_.persistsDefaults || isLoadingDefaults_ || !defaults_) return;
    AnnotationStyleStore store = AnnotationStyleStore::defaults();
    store.strokeColor = isSharedColorTool(state_.tool) ? state_.strokeColor : lookup(toolColors_, lastSharedColorTool_).value_or(state_.strokeColor);
    store.toolWidths = toolWidths_;
    auto optionalMap = [](const auto& map) { return map.empty() ? std::nullopt : std::optional(map); };
    store.toolDashed = optionalMap(toolDashed_);
    store.toolShadow = optionalMap(toolShadow_);
    store.toolOutline = optionalMap(toolOutline_);
    store.toolFill = optionalMap(toolFill_);
    store.toolOutlineWidth = optionalMap(toolOutlineWidth_);
    store.toolShadowRadius = optionalMap(toolShadowRadius_);
    store.toolShadowOffset = optionalMap(toolShadowOffset_);
    store.toolDashLength = optionalMap(toolDashLength_);
    store.textFontSize = lookup(rememberedFontSizes_, T::text).value_or(state_.textFontSize);
    store.mosaicBlockSize = state_.mosaicBlockSize;
    store.blurRadius = state_.blurRadius;
    store.magnifierZoom = state_.magnifierZoom;
    store.watermarkAngle = state_.watermarkAngle;
    store.watermarkOpacity = state_.watermarkOpacity;
    store.watermarkSpacing = state_.watermarkSpacing;
    store.spotlightVeilOpacity = state_.spotlightVeilOpacity;
    store.toolOpacity = optionalMap(toolOpacity_);
    store.toolFillOpacity = optionalMap(toolFillOpacity_);
    store.version = AnnotationStyleStore::currentVersion;
    store.save(*defaults_);
}

} // namespace tosvar
