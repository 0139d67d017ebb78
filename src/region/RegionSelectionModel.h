#pragma once

#include "CaptureModeShortcuts.h"
#include "Rect.h"
#include "WindowPicking.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace tosvar {

// The drawing phase of one display's overlay, without the view: the drag,
// the hovered window, the keyboard candidate, the loupe and the keys, and
// which region a commit takes. Points are the view's own (origin top-left,
// y down); `scale` is pixels per point.
class RegionSelectionModel {
public:
    // A committed region: a rectangle, and the window it is when one was picked.
    struct Commit {
        Rect rect;
        std::optional<std::uint32_t> windowID;
        friend bool operator==(const Commit&, const Commit&) = default;
    };

    enum class KeyOutcome {
        passed,      // not for this phase: pass the key on
        handled,     // the model changed; redraw
        beep,        // the key has nothing to do here
        cancel,      // end the session
        commit,      // `commit` holds the region
        switchToAudio,
        switchToPresentation,
        copyColor,   // copy the colour under the loupe and end
        copyElementText, // copy what the picked element says and end
    };
    struct KeyResult {
        KeyOutcome outcome = KeyOutcome::passed;
        std::optional<Commit> commit;
    };

    static constexpr double minimumSide = 2;
    static constexpr double candidateSlack = 12;

    RegionSelectionModel(Rect bounds, double scale, ScreenshotOverlayMode mode);

    // The windows a click can pick, front to back, in view points.
    void setWindows(std::vector<PickableWindow> windows) { windows_ = std::move(windows); }
    const std::vector<PickableWindow>& windows() const { return windows_; }
    // The last committed region in view points, for the D key.
    void setLastRegion(std::optional<Rect> rect) { lastRegion_ = rect; }

    void hover(Point p);
    void clearHover();
    // The frontmost pickable window holding the point.
    const PickableWindow* windowAt(Point p) const;
    const PickableWindow* window(std::uint32_t id) const;

    // Element mode (Ctrl held): the element under the pointer and its
    // ancestors, deepest first, as view rectangles; "[" and "]" pick the
    // level, a click or Return commits it. Not entered during a drag.
    void enterElementMode();
    void exitElementMode();
    bool inElementMode() const { return elementMode_; }
    void setElementChain(std::vector<Rect> chain);
    std::optional<Rect> activeElement() const;
    // Which level of the chain is picked, 0 the deepest.
    std::size_t elementLevel() const { return elementIndex_; }
    // Edges the dragged corner snaps to, within 8 points; Shift, Alt or a
    // keyboard nudge turn snapping off (the nudge for the rest of the drag).
    void setSnapCandidates(std::vector<Rect> candidates) { snapCandidates_ = std::move(candidates); }
    bool wantsSnapCandidates() const { return start_ && !snapSuppressed_ && !elementMode_; }
    // A press: inside a keyboard candidate it commits the candidate; in
    // element mode it commits the element, and never starts a drag.
    std::optional<Commit> press(Point p);
    void drag(Point p, bool constrained, bool fromCenter);
    // The end of a press: the dragged region snapped to pixels, else the
    // hovered window, else the whole display.
    Commit release();
    KeyResult key(std::uint32_t keyCode, std::uint32_t modifierFlags, bool pointerIsDown);

    // The loupe's magnification steps through 2, 4, 8, 16 and 32; fractions
    // of steps add up.
    void adjustLoupeZoom(double delta);
    static int loupeZoomFromStored(std::optional<double> stored);
    void setLoupeZoom(int zoom) { loupeZoom_ = zoom; }

    const Rect& bounds() const { return bounds_; }
    double scale() const { return scale_; }
    ScreenshotOverlayMode mode() const { return mode_; }
    std::optional<Rect> liveSelection() const;
    // What stands out when nothing is dragged: the keyboard candidate, else the hovered window.
    std::optional<Rect> highlight() const;
    const std::optional<Rect>& keyboardCandidate() const { return candidate_; }
    std::optional<std::uint32_t> hoveredWindowID() const { return hoveredID_; }
    std::optional<Point> loupePoint() const { return loupePoint_; }
    // The loupe is drawn, and its keys work, outside element mode.
    bool loupeShows() const { return loupePoint_ && !elementMode_; }
    std::optional<Point> dragPoint() const { return current_; }
    int loupeZoom() const { return loupeZoom_; }
    bool isDragging() const { return start_.has_value(); }

    // Each edge on the nearest device pixel.
    Rect snappedToPixels(const Rect& rect) const;

private:
    void nudge(double dx, double dy);

    Rect bounds_;
    double scale_;
    ScreenshotOverlayMode mode_;
    std::vector<PickableWindow> windows_;
    std::optional<Rect> lastRegion_;
    std::optional<Point> start_, current_;
    bool constrained_ = false, fromCenter_ = false;
    std::optional<Point> loupePoint_;
    int loupeZoom_ = 8;
    double loupeZoomRest_ = 0;
    std::optional<Rect> hovered_;
    std::optional<std::uint32_t> hoveredID_;
    std::optional<Rect> candidate_;
    Point candidateAnchor_;
    bool elementMode_ = false;
    std::vector<Rect> elementChain_;
    std::size_t elementIndex_ = 0;
    std::vector<Rect> snapCandidates_;
    bool snapSuppressed_ = false;
    Point pointer_;
};

} // namespace tosvar
