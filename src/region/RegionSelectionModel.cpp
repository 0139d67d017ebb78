#include "RegionSelectionModel.h"

#include "ElementChain.h"
#include "ToolDraft.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tosvar {

namespace {

// Key codes by position, as the overlay's keys are named.
namespace Key {
constexpr std::uint32_t returnKey = 36, enter = 76, escape = 53, tab = 48, d = 2, f = 3, c = 8, equal = 24, minus = 27;
constexpr std::uint32_t rightBracket = 30, leftBracket = 33;
constexpr std::uint32_t left = 123, right = 124, down = 125, up = 126;
} // namespace Key

constexpr std::uint32_t shiftFlag = 0x20000;
// Caps Lock, numeric pad and function keys do not count as modifiers.
constexpr std::uint32_t significantFlags = 0xFF5E0000;

constexpr std::array<int, 5> zoomLadder{2, 4, 8, 16, 32};

Point clamped(Point p, const Rect& bounds) {
    return {std::clamp(p.x, bounds.minX(), bounds.maxX()), std::clamp(p.y, bounds.minY(), bounds.maxY())};
}

} // namespace

RegionSelectionModel::RegionSelectionModel(Rect bounds, double scale, ScreenshotOverlayMode mode)
    : bounds_(bounds.standardized()), scale_(scale > 0 ? scale : 1), mode_(mode) {}

int RegionSelectionModel::loupeZoomFromStored(std::optional<double> stored) {
    if (!stored || *stored < 2) return 8;
    int best = zoomLadder.front();
    for (int z : zoomLadder)
        if (std::abs(std::log2(*stored) - std::log2(z)) < std::abs(std::log2(*stored) - std::log2(best))) best = z;
    return best;
}

void RegionSelectionModel::adjustLoupeZoom(double delta) {
    loupeZoomRest_ += delta;
    const int steps = static_cast<int>(std::trunc(loupeZoomRest_));
    if (steps == 0) return;
    loupeZoomRest_ -= steps;
    const auto at = std::find(zoomLadder.begin(), zoomLadder.end(), loupeZoom_);
    const int index = static_cast<int>(at == zoomLadder.end() ? 2 : at - zoomLadder.begin());
    loupeZoom_ = zoomLadder[static_cast<std::size_t>(std::clamp(index + steps, 0, static_cast<int>(zoomLadder.size()) - 1))];
}

void RegionSelectionModel::hover(Point p) {
    pointer_ = p;
    if (candidate_ && std::hypot(p.x - candidateAnchor_.x, p.y - candidateAnchor_.y) > candidateSlack) candidate_.reset();
    loupePoint_ = clamped(p, bounds_);
    hovered_.reset();
    hoveredID_.reset();
    if (elementMode_) return;
    if (const PickableWindow* window = windowAt(p)) {
        hovered_ = window->rect.intersection(bounds_);
        hoveredID_ = window->id;
    }
}

const PickableWindow* RegionSelectionModel::window(std::uint32_t id) const {
    for (const PickableWindow& window : windows_)
        if (window.id == id) return &window;
    return nullptr;
}

const PickableWindow* RegionSelectionModel::windowAt(Point p) const {
    for (const PickableWindow& window : windows_)
        if (window.rect.contains(p)) return &window;
    return nullptr;
}

void RegionSelectionModel::clearHover() {
    hovered_.reset();
    hoveredID_.reset();
    loupePoint_.reset();
}

void RegionSelectionModel::enterElementMode() {
    if (start_ || elementMode_) return;
    elementMode_ = true;
    candidate_.reset();
    hovered_.reset();
    hoveredID_.reset();
}

void RegionSelectionModel::exitElementMode() {
    if (!elementMode_) return;
    elementMode_ = false;
    elementChain_.clear();
    elementIndex_ = 0;
    hover(pointer_);
}

void RegionSelectionModel::setElementChain(std::vector<Rect> chain) {
    if (!elementMode_) return;
    elementChain_ = std::move(chain);
    elementIndex_ = 0;
}

std::optional<Rect> RegionSelectionModel::activeElement() const {
    if (!elementMode_ || elementIndex_ >= elementChain_.size()) return std::nullopt;
    return elementChain_[elementIndex_];
}

std::optional<RegionSelectionModel::Commit> RegionSelectionModel::press(Point p) {
    pointer_ = p;
    if (elementMode_) {
        if (const std::optional<Rect> element = activeElement()) return Commit{snappedToPixels(*element), std::nullopt};
        return std::nullopt;
    }
    snapSuppressed_ = false;
    if (candidate_) {
        const Rect candidate = *candidate_;
        candidate_.reset();
        if (candidate.contains(p)) return Commit{snappedToPixels(candidate), std::nullopt};
    }
    start_ = current_ = loupePoint_ = clamped(p, bounds_);
    return std::nullopt;
}

void RegionSelectionModel::drag(Point p, bool constrained, bool fromCenter) {
    if (!start_) return;
    pointer_ = p;
    if (!snapSuppressed_ && !constrained && !fromCenter && !snapCandidates_.empty()) p = ElementDetection::snappedDragPoint(p, snapCandidates_);
    current_ = loupePoint_ = clamped(p, bounds_);
    constrained_ = constrained;
    fromCenter_ = fromCenter;
    if (liveSelection()) {
        hovered_.reset();
        hoveredID_.reset();
    }
}

std::optional<Rect> RegionSelectionModel::liveSelection() const {
    if (!start_ || !current_) return std::nullopt;
    const Rect drawn = ToolDraft::dragRect(*start_, *current_, {constrained_, fromCenter_}).intersection(bounds_);
    if (drawn.isNull() || drawn.width() < minimumSide || drawn.height() < minimumSide) return std::nullopt;
    return drawn;
}

std::optional<Rect> RegionSelectionModel::highlight() const {
    if (elementMode_) return activeElement();
    if (candidate_) return candidate_;
    return hovered_;
}

Rect RegionSelectionModel::snappedToPixels(const Rect& rect) const {
    auto snap = [this](double v) { return std::round(v * scale_) / scale_; };
    return Rect::fromEdges(snap(rect.minX()), snap(rect.minY()), snap(rect.maxX()), snap(rect.maxY()));
}

RegionSelectionModel::Commit RegionSelectionModel::release() {
    Commit commit{bounds_, std::nullopt};
    if (const std::optional<Rect> selection = liveSelection()) {
        commit = {snappedToPixels(*selection), std::nullopt};
    } else if (hovered_) {
        commit = {*hovered_, hoveredID_};
    }
    start_.reset();
    current_.reset();
    loupePoint_.reset();
    snapCandidates_.clear();
    return commit;
}

void RegionSelectionModel::nudge(double dx, double dy) {
    snapSuppressed_ = true;
    snapCandidates_.clear();
    current_ = loupePoint_ = clamped(*current_ + Point{dx, dy}, bounds_);
}

RegionSelectionModel::KeyResult RegionSelectionModel::key(std::uint32_t keyCode, std::uint32_t modifierFlags, bool pointerIsDown) {
    const bool plain = (modifierFlags & significantFlags) == 0;
    const bool shift = modifierFlags & shiftFlag;
    if (plain) {
        if (const std::optional<CaptureModeShortcut> shortcut = CaptureModeShortcuts::shortcut(keyCode)) {
            switch (shortcut->target.kind) {
            case CaptureModeTarget::Kind::audio: return {KeyOutcome::switchToAudio, std::nullopt};
            case CaptureModeTarget::Kind::presentation: return {KeyOutcome::switchToPresentation, std::nullopt};
            case CaptureModeTarget::Kind::overlay:
                exitElementMode();
                mode_ = shortcut->target.mode; return {KeyOutcome::handled, std::nullopt};
            }
        }
    }
    if (elementMode_ && !elementChain_.empty()) {
        const int step = keyCode == Key::rightBracket || keyCode == Key::up ? 1 : keyCode == Key::leftBracket || keyCode == Key::down ? -1 : 0;
        if (step != 0) {
            elementIndex_ = static_cast<std::size_t>(std::clamp(static_cast<int>(elementIndex_) + step, 0, static_cast<int>(elementChain_.size()) - 1));
            return {KeyOutcome::handled, std::nullopt};
        }
    }
    switch (keyCode) {
    case Key::returnKey:
    case Key::enter: {
        if (const std::optional<Rect> element = activeElement()) return {KeyOutcome::commit, Commit{snappedToPixels(*element), std::nullopt}};
        if (candidate_) return {KeyOutcome::commit, Commit{snappedToPixels(*candidate_), std::nullopt}};
        if (hovered_) return {KeyOutcome::commit, Commit{*hovered_, hoveredID_}};
        return {KeyOutcome::commit, Commit{bounds_, std::nullopt}};
    }
    case Key::escape: return {KeyOutcome::cancel, std::nullopt};
    case Key::tab:
        candidate_.reset();
        if (!lastRegion_) return {KeyOutcome::beep, std::nullopt};
        return {KeyOutcome::commit, Commit{*lastRegion_, std::nullopt}};
    case Key::d:
        if (pointerIsDown || start_) break;
        if (!lastRegion_) return {KeyOutcome::beep, std::nullopt};
        candidate_ = lastRegion_;
        candidateAnchor_ = pointer_;
        return {KeyOutcome::handled, std::nullopt};
    case Key::f:
        if (pointerIsDown || start_) break;
        candidate_ = bounds_;
        candidateAnchor_ = pointer_;
        return {KeyOutcome::handled, std::nullopt};
    case Key::c:
        if (activeElement()) return {KeyOutcome::copyElementText, std::nullopt};
        if (!pointerIsDown && !start_ && mode_ == ScreenshotOverlayMode::annotate && loupeShows()) return {KeyOutcome::copyColor, std::nullopt};
        break;
    case Key::equal:
        if (loupeShows()) {
            adjustLoupeZoom(1);
            return {KeyOutcome::handled, std::nullopt};
        }
        break;
    case Key::minus:
        if (loupeShows()) {
            adjustLoupeZoom(-1);
            return {KeyOutcome::handled, std::nullopt};
        }
        break;
    case Key::left:
    case Key::right:
    case Key::up:
    case Key::down: {
        // Whole device pixels: 10 with Shift, 1 without.
        const double step = (shift ? 10.0 : 1.0) / std::max(scale_, 1.0);
        const double dx = keyCode == Key::left ? -step : keyCode == Key::right ? step : 0;
        const double dy = keyCode == Key::up ? -step : keyCode == Key::down ? step : 0;
        if (start_ && current_) {
            nudge(dx, dy);
            return {KeyOutcome::handled, std::nullopt};
        }
        if ((keyCode == Key::up || keyCode == Key::down) && loupeShows()) {
            adjustLoupeZoom(keyCode == Key::up ? 1 : -1);
            return {KeyOutcome::handled, std::nullopt};
        }
        break;
    }
    default: break;
    }
    return {KeyOutcome::passed, std::nullopt};
}

} // namespace tosvar
