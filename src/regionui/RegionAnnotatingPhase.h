#pragma once

#include "AnnotationCanvasView.h"
#include "AnnotationEditorController.h"
#include "AnnotationEditorServices.h"
#include "AnnotationResult.h"
#include "CaptureComposition.h"
#include "HintPanel.h"
#include "RegionAnnotatingModel.h"
#include "RegionBadgeLayout.h"

#include <QObject>
#include <QPixmap>

#include <functional>
#include <memory>

class QMouseEvent;
class QWheelEvent;

namespace tosvar {

class AnnotationToolbar;
class RegionChromeView;
class RegionFloatingBar;
class RegionInfoBadgeView;

// A committed region annotated in place on its overlay: the editor canvas
// over the region, the chrome with its handles, the size badge and the
// floating toolbar, as children of the overlay. The overlay hands it the
// presses, drags, wheels and keys that reach the overlay itself; the canvas
// passes up the presses the region claims. Main thread only.
class RegionAnnotatingPhase final : public QObject {
public:
    struct HoveredWindow {
        Rect rect; // view points
        std::uint32_t id = 0;
        int z = 0; // its place front to back
    };
    struct Hooks {
        std::function<void(AnnotationAction)> finish;
        std::function<void()> cancel;
        // Record the region instead (Ctrl+R and the toolbar); none leaves the switch out.
        std::function<void()> switchToRecording;
        // Something the overlay draws changed (the region, the hint's state).
        std::function<void()> changed;
        // The window Ctrl offers under a view point, for one more layer.
        std::function<std::optional<HoveredWindow>(Point)> windowAt;
        // A window's image for one more layer, with its view rectangle; none falls back to the frozen crop.
        std::function<std::optional<std::pair<ImageBuffer, Rect>>(std::uint32_t windowID)> windowImage;
    };
    struct Start {
        Rect region;               // view points
        ImageBuffer image;         // the region's pixels
        ImageBuffer frozen;        // the whole display
        double scale = 1;
        ScreenshotOverlayMode mode = ScreenshotOverlayMode::annotate;
        std::optional<std::uint32_t> windowID; // the region is this window's own image
    };

    RegionAnnotatingPhase(QWidget& overlay, Start start, const AnnotationEditorServices& services, DefaultsStore* settings, Hooks hooks);
    ~RegionAnnotatingPhase() override;

    RegionAnnotatingModel& model() { return model_; }
    const RegionAnnotatingModel& model() const { return model_; }
    AnnotationEditorController& editor() { return *editor_; }
    AnnotationCanvasView& canvas() { return *canvas_; }
    QWidget& toolbar();
    RegionInfoBadgeView& badge() { return *badge_; }

    void mousePress(QMouseEvent* event, int clickCount);
    // A drag from a Ctrl press outside the region that went on as a new
    // selection gives the anchor the overlay's selection starts from.
    std::optional<RegionAnnotatingModel::Anchor> mouseMove(QMouseEvent* event);
    void mouseRelease(QMouseEvent* event);
    void wheel(QWheelEvent* event);
    // Ctrl went down or up: outside the region it offers the window under the
    // pointer, and a region of several windows shows each with its remove badge.
    void commandKey(bool held, Point pointer);
    // An arrow key without a selection moves the region by a device pixel, 10 with Shift.
    void nudge(double dxPixels, double dyPixels);
    // The windows a region of several can lose, in view points, with their ids.
    std::vector<std::pair<std::uint32_t, Rect>> removableWindows() const;

    // The document as the capture's PNG, with the region's rounded corners.
    std::optional<Bytes> renderPNG();
    // What the canvas showed when a press hid it, drawn at the committed
    // region while the region is dragged.
    const QPixmap& dragPreview() const { return dragPreview_; }
    std::optional<HintPanel::State> hintState() const;
    std::vector<Rect> hintObstacles() const;

private:
    bool claims(QPointF canvasPoint) const;
    // The pointer tool with nothing selected and no text open: the region's
    // own presses and the wheel's resizing work then.
    bool pointerToolIdle() const;
    void zoom(double steps);
    void apply(const RegionAnnotatingModel::Change& change);
    // The image of a view rectangle: the composed windows when there are some, else the frozen display.
    ImageBuffer croppedImage(const Rect& view) const;
    Rect flipped(const Rect& view) const;
    void appendHoveredWindow();
    std::optional<std::uint32_t> removeBadgeAt(Point p) const;
    // The region becomes what its windows (and the area first dragged) cover.
    void applyComposition(const Rect& united);
    void showWindowOutlines();
    void setChromeHidden(bool hidden);
    void layout();
    void layoutToolbar();
    void layoutBadge();
    void updateCursor(Point p);
    void dragToolbar(QPointF delta);

    QWidget& overlay_;
    const AnnotationRenderer& renderer_;
    ImageBuffer frozen_;
    double scale_;
    DefaultsStore* settings_;
    Hooks hooks_;
    RegionAnnotatingModel model_;
    CaptureComposition composition_;
    std::optional<Rect> draggedArea_; // the region first committed, when it was dragged rather than a window
    std::unique_ptr<AnnotationEditorController> editor_;
    int observer_ = 0;
    AnnotationCanvasView* canvas_;
    RegionChromeView* chrome_;
    AnnotationToolbar* tools_;
    RegionFloatingBar* bar_;
    RegionInfoBadgeView* badge_;
    RegionBadgeLayout::Corner badgeCorner_ = RegionBadgeLayout::Corner::topLeft;
    std::optional<Point> toolbarAnchor_; // the top centre of a bar the user dragged
    QPixmap dragPreview_;
    bool commandHeld_ = false;
    int hoveredZ_ = 0;
};

} // namespace tosvar
