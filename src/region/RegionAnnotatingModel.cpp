#include "RegionAnnotatingModel.h"

#include "ElementChain.h"
#include "RegionSelectionChrome.h"

#include <algorithm>
#include <cmath>

namespace tosvar {

namespace Chrome = RegionSelectionChrome;

RegionAnnotatingModel::RegionAnnotatingModel(Rect committed, Rect bounds, double scale, ScreenshotOverlayMode mode, MainQueue& queue)
    : committed_(committed),
      bounds_(bounds),
      scale_(scale),
      mode_(mode),
      queue_(queue),
      cornerRadius_(mode == ScreenshotOverlayMode::record ? 0 : Chrome::initialCornerRadius) {}

RegionAnnotatingModel::~RegionAnnotatingModel() { chromeHideWork_.cancel(); }

bool RegionAnnotatingModel::onChrome(Point p) const {
    if (showsRadiusGrip() && Chrome::radiusGripHit(committed_, cornerRadius_, p)) return true;
    return Chrome::handleHit(committed_, p).has_value();
}

bool RegionAnnotatingModel::claims(Point p, bool editorIdle, bool commandHeld, bool elementUnderPointer) const {
    if (onChrome(p)) return true;
    if (!committed_.contains(p)) return true;
    return editorIdle && !commandHeld && !elementUnderPointer;
}

void RegionAnnotatingModel::hover(Point p) {
    hoveredHandle_ = Chrome::handleHit(committed_, p);
    radiusGripHovered_ = showsRadiusGrip() && Chrome::radiusGripHit(committed_, cornerRadius_, p);
}

RegionAnnotatingModel::Press RegionAnnotatingModel::press(Point p, int clickCount, bool commandHeld, bool shift, bool alt) {
    Press outcome = Press::ignored;
    const std::optional<RectHandle> handle = Chrome::handleHit(committed_, p);
    if (showsRadiusGrip() && Chrome::radiusGripHit(committed_, cornerRadius_, p)) {
        radiusBase_ = RadiusBase{cornerRadius_, Chrome::radiusGrip(committed_, cornerRadius_)};
        outcome = Press::radius;
    } else if (handle) {
        activeHandle_ = handle;
        resizeBase_ = committed_;
        outcome = Press::handle;
    } else if (clickCount >= 2) {
        return Press::confirm;
    } else if (committed_.contains(p)) {
        moveBase_ = MoveBase{committed_, p};
        outcome = Press::move;
    } else if (commandHeld) {
        reselectAnchor_ = Anchor{p, shift, alt};
        outcome = Press::reselect;
    }
    pending_ = committed_;
    dragOrigin_ = p;
    chromeHideWork_.cancel();
    chromeHideWork_ = queue_.after(chromeHideDelay, [this] { hideChrome(); });
    return outcome;
}

RegionAnnotatingModel::Drag RegionAnnotatingModel::drag(Point raw, bool shift, bool alt) {
    if (!dragOrigin_) return Drag::none;
    const Point p{std::clamp(raw.x, bounds_.minX(), bounds_.maxX()), std::clamp(raw.y, bounds_.minY(), bounds_.maxY())};
    const double moved = std::hypot(p.x - dragOrigin_->x, p.y - dragOrigin_->y);
    if (reselectAnchor_) {
        if (moved <= reselectDistance) return Drag::none;
        reselecting_ = true;
        return Drag::reselect;
    }
    if (moved > chromeHideDistance) hideChrome();
    if (radiusBase_) {
        cornerRadius_ = Chrome::draggedRadius(committed_, radiusBase_->radius, radiusBase_->grip, p);
        return Drag::changed;
    }
    if (activeHandle_) {
        const Point to = snapCandidates_.empty() || shift || alt ? p : ElementDetection::snappedDragPoint(p, snapCandidates_);
        pending_ = Chrome::resized(resizeBase_, *activeHandle_, to, shift, alt, Chrome::minimumSide, bounds_);
        resizeGuidePoint_ = to;
        return Drag::changed;
    }
    if (moveBase_) {
        const Rect& base = moveBase_->rect;
        const double x = std::clamp(base.minX() + p.x - moveBase_->mouse.x, bounds_.minX(), bounds_.maxX() - base.width());
        const double y = std::clamp(base.minY() + p.y - moveBase_->mouse.y, bounds_.minY(), bounds_.maxY() - base.height());
        pending_ = Rect(x, y, base.width(), base.height());
        return Drag::changed;
    }
    return Drag::none;
}

RegionAnnotatingModel::Release RegionAnnotatingModel::release() {
    Release result;
    if (reselectAnchor_) {
        result.takeReselectHover = !reselecting_ && reselectHover_.has_value();
    } else if (pending_ && *pending_ != committed_) {
        result.change = commitResize(*pending_);
    }
    endPress();
    return result;
}

void RegionAnnotatingModel::endPress() {
    chromeHideWork_.cancel();
    pending_.reset();
    activeHandle_.reset();
    resizeGuidePoint_.reset();
    moveBase_.reset();
    radiusBase_.reset();
    dragOrigin_.reset();
    reselectAnchor_.reset();
    reselecting_ = false;
    setChromeHidden(false);
}

std::optional<RegionAnnotatingModel::Change> RegionAnnotatingModel::commitResize(const Rect& to) {
    auto snap = [this](double v) { return std::round(v * scale_) / scale_; };
    const Rect snapped = Rect::fromEdges(snap(to.minX()), snap(to.minY()), snap(to.maxX()), snap(to.maxY()));
    if (snapped.width() < Chrome::minimumSide || snapped.height() < Chrome::minimumSide) return std::nullopt;
    const Change change{committed_, snapped,
                        {std::round((committed_.minX() - snapped.minX()) * scale_), std::round((committed_.minY() - snapped.minY()) * scale_)}};
    committed_ = snapped;
    cornerRadius_ = std::min(cornerRadius_, std::min(snapped.width(), snapped.height()) / 2);
    return change;
}

std::optional<RegionAnnotatingModel::Change> RegionAnnotatingModel::zoom(double delta) {
    const Rect& r = committed_;
    double factor = 1 + 0.02 * delta;
    const double lower = std::min(24 / std::min(r.width(), r.height()), 1.0);
    const double upper = std::min(bounds_.width() / r.width(), bounds_.height() / r.height());
    factor = std::clamp(factor, lower, std::max(lower, upper));
    if (upper < 1) factor = std::min(factor, 1.0);
    if (std::abs(factor - 1) < 0.001) return std::nullopt;
    const double w = r.width() * factor, h = r.height() * factor;
    const double x = std::clamp(r.midX() - w / 2, bounds_.minX(), std::max(bounds_.minX(), bounds_.maxX() - w));
    const double y = std::clamp(r.midY() - h / 2, bounds_.minY(), std::max(bounds_.minY(), bounds_.maxY() - h));
    return commitResize(Rect(x, y, w, h).intersection(bounds_));
}

std::optional<RegionAnnotatingModel::Change> RegionAnnotatingModel::nudge(double dxPixels, double dyPixels) {
    const Rect& r = committed_;
    const double x = std::clamp(r.minX() + dxPixels / scale_, bounds_.minX(), std::max(bounds_.minX(), bounds_.maxX() - r.width()));
    const double y = std::clamp(r.minY() + dyPixels / scale_, bounds_.minY(), std::max(bounds_.minY(), bounds_.maxY() - r.height()));
    if (x == r.minX() && y == r.minY()) return std::nullopt;
    return commitResize(Rect(x, y, r.width(), r.height()));
}

void RegionAnnotatingModel::setReselectHover(std::optional<Rect> rect, std::optional<std::uint32_t> windowID) {
    reselectHover_ = rect;
    reselectHoverID_ = rect ? windowID : std::nullopt;
}

void RegionAnnotatingModel::hideChrome() {
    chromeHideWork_.cancel();
    setChromeHidden(true);
}

void RegionAnnotatingModel::setChromeHidden(bool hidden) {
    if (chromeHidden_ == hidden) return;
    chromeHidden_ = hidden;
    if (onChromeHiddenChanged) onChromeHiddenChanged(hidden);
}

} // namespace tosvar
