#pragma once

#include "CaptureModeShortcuts.h"
#include "Handle.h"
#include "MainQueue.h"
#include "Rect.h"

#include <functional>
#include <optional>
#include <vector>

namespace tosvar {

// The committed region of one overlay while it is annotated in place, without
// the view: moving it, resizing it by its eight handles, zooming it by wheel,
// rounding its corners by the grip, and which presses are the region's rather
// than the canvas's. A press hides the chrome (canvas, toolbar, badge) after
// 0.2 seconds or 2 points of movement, so a drag shows only the frozen image
// and the moving border. Points are the overlay's own (y down); `scale` is
// pixels per point. Main thread only.
class RegionAnnotatingModel {
public:
    // A committed change of the region: annotations move by `elementOffset`
    // image pixels so they stay on the same place of the screen.
    struct Change {
        Rect from, to;
        Point elementOffset;
        friend bool operator==(const Change&, const Change&) = default;
    };

    enum class Press {
        ignored,  // nothing of the region's
        confirm,  // a double click: finish as a copy
        radius,   // the corner-radius grip
        handle,   // a resize handle
        move,     // inside the region: moves it
        reselect, // Ctrl outside the region: a new region, or one more window
    };
    enum class Drag {
        none,
        changed,
        // The press outside went on as a new selection from `reselectAnchor()`.
        reselect,
    };
    struct Release {
        std::optional<Change> change;
        // A Ctrl press released over the offered window.
        bool takeReselectHover = false;
    };

    static constexpr double chromeHideDelay = 0.2;
    static constexpr double chromeHideDistance = 2;
    static constexpr double reselectDistance = 3;

    RegionAnnotatingModel(Rect committed, Rect bounds, double scale, ScreenshotOverlayMode mode, MainQueue& queue);
    ~RegionAnnotatingModel();
    RegionAnnotatingModel(const RegionAnnotatingModel&) = delete;
    RegionAnnotatingModel& operator=(const RegionAnnotatingModel&) = delete;

    // Told when the chrome hides at a press and shows again at its end.
    std::function<void(bool hidden)> onChromeHiddenChanged;

    // Whether a press at `p` is the region's: its handles and grip always;
    // inside, only with the pointer tool idle (nothing selected, no text
    // open), no element under the pointer and Ctrl up; outside always.
    bool claims(Point p, bool editorIdle, bool commandHeld, bool elementUnderPointer) const;
    bool onChrome(Point p) const;

    Press press(Point p, int clickCount, bool commandHeld, bool shift, bool alt);
    Drag drag(Point p, bool shift, bool alt);
    Release release();
    // A wheel step: the region grows or shrinks about its centre by 2% per
    // unit; none when the factor does nothing.
    std::optional<Change> zoom(double delta);
    // Arrow keys: the region moves by whole device pixels, staying on the display.
    std::optional<Change> nudge(double dxPixels, double dyPixels);
    // Snaps each edge to device pixels; none (the region stays) below 4 points a side.
    std::optional<Change> commitResize(const Rect& to);

    // The window Ctrl offers outside the region, for `Release::takeReselectHover`.
    void setReselectHover(std::optional<Rect> rect, std::optional<std::uint32_t> windowID);
    const std::optional<Rect>& reselectHover() const { return reselectHover_; }
    std::optional<std::uint32_t> reselectHoverWindowID() const { return reselectHoverID_; }
    // Where a press that turned into a new selection began, with its Shift and Alt.
    struct Anchor {
        Point point;
        bool constrained = false, fromCenter = false;
    };
    const std::optional<Anchor>& reselectAnchor() const { return reselectAnchor_; }
    // Edges a handle drag snaps to, within 8 points, unless Shift or Alt is down.
    void setSnapCandidates(std::vector<Rect> candidates) { snapCandidates_ = std::move(candidates); }

    // Hover: which handle and whether the grip would be caught.
    void hover(Point p);

    const Rect& committed() const { return committed_; }
    const std::optional<Rect>& pending() const { return pending_; }
    // The region as drawn now: the pending one during a drag.
    Rect shown() const { return pending_.value_or(committed_); }
    const Rect& bounds() const { return bounds_; }
    double scale() const { return scale_; }
    ScreenshotOverlayMode mode() const { return mode_; }
    bool chromeHidden() const { return chromeHidden_; }
    double cornerRadius() const { return cornerRadius_; }
    bool showsRadiusGrip() const { return mode_ != ScreenshotOverlayMode::record; }
    std::optional<RectHandle> activeHandle() const { return activeHandle_; }
    // Where the pointer drags a handle, for the loupe; none otherwise.
    const std::optional<Point>& resizeGuidePoint() const { return resizeGuidePoint_; }
    std::optional<RectHandle> hoveredHandle() const { return hoveredHandle_; }
    bool radiusGripHovered() const { return radiusGripHovered_; }
    bool adjustingRadius() const { return radiusBase_.has_value(); }
    bool isPressed() const { return dragOrigin_.has_value(); }

private:
    void hideChrome();
    void setChromeHidden(bool hidden);
    void endPress();

    Rect committed_;
    Rect bounds_;
    double scale_;
    ScreenshotOverlayMode mode_;
    MainQueue& queue_;
    std::optional<Rect> pending_;
    std::optional<RectHandle> activeHandle_, hoveredHandle_;
    std::optional<Point> resizeGuidePoint_;
    Rect resizeBase_;
    struct MoveBase {
        Rect rect;
        Point mouse;
    };
    std::optional<MoveBase> moveBase_;
    std::optional<Point> dragOrigin_;
    TimerHandle chromeHideWork_;
    bool chromeHidden_ = false;
    double cornerRadius_;
    struct RadiusBase {
        double radius;
        Point grip;
    };
    std::optional<RadiusBase> radiusBase_;
    bool radiusGripHovered_ = false;
    std::optional<Anchor> reselectAnchor_;
    bool reselecting_ = false;
    std::optional<Rect> reselectHover_;
    std::optional<std::uint32_t> reselectHoverID_;
    std::vector<Rect> snapCandidates_;
};

} // namespace tosvar
