#pragma once

#include "AnnotationEditorServices.h"
#include "HintPanelPainter.h"
#include "RegionOverlay.h"
#include "RegionSelectionModel.h"

#include <QWidget>

#include <functional>
#include <memory>
#include <set>

class QVariantAnimation;

namespace tosvar {

class RegionAnnotatingPhase;

// The selection overlay of one display on Qt: a frameless window above
// everything over the display, showing the frozen image under a veil (or the
// live screen until the freeze lands), the selection or the hovered window
// cut out of the veil with its size, and a loupe. Pointer and keys drive a
// `RegionSelectionModel`; a commit crops the frozen image and, in annotate
// mode, keeps the region on screen to be annotated in place (a
// `RegionAnnotatingPhase`) until Return, Ctrl+S or the toolbar finishes it;
// other modes end the session through the callbacks at once. A commit before
// the freeze waits for it. Main thread only.
class QtRegionOverlay final : public QWidget, public RegionOverlay {
public:
    ~QtRegionOverlay() override;
    QtRegionOverlay(const ScreenInfo& screen, const Rect& globalFrame, const std::optional<CapturedDisplay>& frozen,
                    ScreenshotOverlayMode mode, RegionOverlayCallbacks callbacks, std::vector<PickableWindow> windows);

    void attachFrozen(const CapturedDisplay& display) override;
    bool isFrozen() const override { return frozen_.has_value(); }
    void show() override;
    void orderOut() override;
    void makeKey() override;
    bool isKey() const override { return isActiveWindow(); }
    void addWindowImages(const std::map<std::uint32_t, ImageBuffer>&) override {}
    void seedInitialHover() override;

    const RegionSelectionModel& model() const { return model_; }
    // Told once, after the first paint that shows the frozen image.
    std::function<void()> onFirstFrozenFrame;
    // The region of each commit, in screen points, to be offered again.
    std::function<void(const Rect& screenRect)> onRegionCommitted;
    std::function<void(int zoom)> onLoupeZoomChanged;
    std::function<void(const std::string& text)> onCopyText;
    // Whether the hint panel is hidden, and the choice of Ctrl+/ to keep.
    std::function<bool()> hintHidden;
    std::function<void(bool hidden)> onHintHiddenChanged;
    // What the accessibility tree says at a view point: the element and its
    // ancestors, deepest first, as view rectangles; whether the program looks
    // like it has not built its tree yet; and the program.
    struct ElementLookup {
        std::vector<Rect> rects;
        bool coarse = false;
        std::int64_t pid = 0;
        // What the element at a level of `rects` says, when it says anything.
        std::function<std::optional<std::string>(std::size_t level)> textOf = {};
    };
    // Unset when no accessibility bus answers.
    std::function<ElementLookup(Point viewPoint)> elementsAt;
    // Asks a program to build its accessibility tree, off the main thread.
    std::function<void(std::int64_t pid)> wakeProgram;
    // Whether a drag snaps to the edges of elements and windows.
    bool snapToElements = false;
    // Reads a region's text and QR codes (off the main thread); none when it holds neither.
    std::function<std::optional<std::string>(const ImageBuffer& image, double scale)> readText;
    // Runs work off the main thread.
    std::function<void(std::function<void()>)> runDetached;
    // A window's own pixels, taken for a clicked window instead of the frozen display.
    std::function<std::optional<ImageBuffer>(std::uint32_t windowID)> captureWindow;
    RegionSelectionModel& selection() { return model_; }
    // What editing a region in place works with; without them a committed
    // region is the capture at once.
    const AnnotationEditorServices* editorServices = nullptr;
    // Where the shadow switch of the region's badge keeps its choice.
    DefaultsStore* settings = nullptr;
    // The region being annotated in place, if any.
    RegionAnnotatingPhase* annotating() const { return annotating_.get(); }

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    // The overlay under the pointer takes the keys; the one it left forgets its hover.
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;

private:
    void commit(const RegionSelectionModel::Commit& commit);
    void finishWith(const RegionSelectionModel::Commit& commit);
    // The image of a commit and where it stands in the view.
    std::pair<ImageBuffer, Rect> capturedImage(const RegionSelectionModel::Commit& commit, double scale) const;
    void cancel();
    void beginAnnotation(const Rect& rect, ImageBuffer image, std::optional<std::uint32_t> windowID);
    // Reads the region's text off the main thread, puts it on the clipboard
    // and ends the session with it; one reading at a time.
    void captureTextAndFinish(ImageBuffer image, double scale);
    void finishAnnotation(AnnotationAction action);
    void switchToRecording();
    // Back to drawing: the committed region and its annotations are dropped.
    void abandonCommittedRegion();
    void paintAnnotating(QPainter& painter);
    bool annotatingKey(QKeyEvent* event);
    // Pixels of the frozen image per view point.
    double frozenScale() const;
    // A view rectangle as a rectangle of the screen (points, y up).
    Rect screenRect(const Rect& view) const;
    // The magnified pixels around `at`, with the position, zoom and, when asked, the colour.
    void paintLoupe(QPainter& painter, QPointF at, bool withColour = true);
    std::optional<HintPanel::State> desiredHintState() const;
    // Ctrl held picks elements; Ctrl still down from the hotkey does not.
    void followControlKey(bool held, Point at);
    void detectElement(Point at);
    void refreshSnapCandidates(Point at);
    // Wakes a program once per session; with `redetect`, reads its tree
    // again a few times while it stays coarse.
    void wake(std::int64_t pid, bool redetect);
    void scheduleElementRedetect(int attempt);
    void paintHint(QPainter& painter);
    std::vector<Rect> hintObstacles() const;

    ScreenInfo screen_;
    Rect globalFrame_;
    std::optional<CapturedDisplay> frozen_;
    QImage frozenView_;
    RegionOverlayCallbacks callbacks_;
    RegionSelectionModel model_;
    std::optional<RegionSelectionModel::Commit> pendingCommit_;
    HintPanelPainter hint_;
    std::optional<HintPanel::State> hintState_;
    bool hintShown_ = false;
    QVariantAnimation* hintFade_; // 0.15 s fade in, or out
    QVariantAnimation* hintMove_; // 0.12 s glide between corners
    Rect hintMoveFrom_;
    std::optional<Rect> hintDrawnAt_;
    HintPanel::Corner hintCorner_ = HintPanel::Corner::bottomLeft;
    bool elementModeArmed_ = false;
    std::optional<Point> lastElementQuery_, lastSnapQuery_;
    bool elementCoarse_ = false;
    std::function<std::optional<std::string>(std::size_t level)> elementTextOf_;
    std::set<std::int64_t> wokenPIDs_;
    std::unique_ptr<RegionAnnotatingPhase> annotating_;
    bool textCaptureInFlight_ = false;
    bool cancelled_ = false;
};

} // namespace tosvar
