#pragma once

#include "AnnotationCanvasGeometry.h"
#include "AnnotationEditorController.h"

#include <QImage>
#include <QWidget>

#include <functional>
#include <optional>

class QMimeData;
class QTextEdit;

namespace tosvar {

class AnnotationElementClipboard;
class Pasteboard;

// The surface a document is shown and edited on. Pointer, wheel and key
// events become calls on the controller in image pixels; painting is the
// renderer's drawing of the document with the selection's chrome on top. It
// holds no document of its own. Main thread only.
class AnnotationCanvasView final : public QWidget {
public:
    AnnotationCanvasView(AnnotationEditorController& controller, AnnotationElementClipboard& clipboard, Pasteboard& pasteboard,
                         QWidget* parent = nullptr);
    ~AnnotationCanvasView() override;

    // Escape with nothing else to close, and a double click on empty ground.
    std::function<void()> onEscape;
    std::function<void()> onConfirm;
    // A host drawn around the canvas (a region edited in place) claims the
    // presses and hovers on its own chrome: the canvas passes them up, and the
    // host takes the pointer until the release.
    std::function<bool(QPointF viewPoint)> hostClaimsPoint;
    // When set, a wheel with the pointer tool idle resizes the host's region
    // by this many steps instead of zooming the view.
    std::function<void(double steps)> onRegionZoom;

    AnnotationCanvasGeometry canvasGeometry() const;
    double zoomScale() const { return zoomScale_; }
    void setZoomScale(double zoom);
    bool isEditingText() const { return field_ != nullptr; }
    // Whether an element lies under the view point, within the hit tolerance.
    bool hasElementAt(QPointF viewPoint) const;
    // Hands an open field's text to the controller and closes it.
    void commitTextEditing();
    // Adds the picture of dropped or pasted data (an image file, or image
    // bytes) at `viewPoint`; false when the data holds no picture.
    bool importPicture(const QMimeData& dropped, QPointF viewPoint);
    // What the last paint covered, in view points (for tests and benchmarks).
    QRect lastPaintedRect() const { return lastPainted_; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    enum class InlineKind { text, watermark, stepBadge };

    void controllerDidChange();
    Point imagePoint(QPointF view) const;
    const TextMeasuring& measure() const;
    const AnnotationElement* primary() const;
    std::optional<Uuid> topmostAt(Point image) const;
    std::optional<QRect> dirtyRect() const;
    // Runs one drag step, redrawing only what it can change.
    void dragStep(const std::function<void()>& step);
    void performActiveDrag(Qt::KeyboardModifiers modifiers);
    void updateHover(QPointF view);
    void updateCursor();
    bool handleCommandKey(QKeyEvent* event);
    void adjustSize(double by);

    void openField(InlineKind kind, Point anchor, const QString& text, double fontSize, const RGBAColor& color);
    void layoutField();
    void closeField();
    void cancelField();

    void paintChrome(QPainter& painter);
    void paintElementFrame(QPainter& painter, const AnnotationElement& element, double alpha);
    void paintHandles(QPainter& painter, const AnnotationElement& element, double alpha);
    const QImage& scaledBase();

    AnnotationEditorController& controller_;
    AnnotationElementClipboard& clipboard_;
    Pasteboard& pasteboard_;
    int observer_ = 0;
    double zoomScale_ = 1;

    // The base image at the current view scale, made once per scale.
    QImage scaledBase_;
    double scaledBaseScale_ = 0;
    std::uint64_t scaledBaseIdentity_ = 0;

    // The open inline field.
    QTextEdit* field_ = nullptr;
    InlineKind inlineKind_ = InlineKind::text;
    Point textAnchor_;
    double fieldFontSize_ = 0;
    double lastFieldClosedAt_ = -1;
    bool awaitingTextDraftEdit_ = false;

    // The drag under way.
    bool draggingHandle_ = false;
    bool draggingRotation_ = false;
    bool draggingLensPan_ = false;
    bool draggingLensDial_ = false;
    bool spacePanDragging_ = false;
    bool spaceHeld_ = false;
    bool pointerGesture_ = false;
    Point rotationCenter_;
    double rotationStartAngle_ = 0, rotationStartRotation_ = 0;
    double dialStartZoom_ = 4, dialStartX_ = 0;
    std::optional<Handle> activeHandle_;
    std::optional<Uuid> pendingClickEditID_;
    QPointF mouseDownViewPoint_;
    std::optional<Point> lastDragImagePoint_;
    std::optional<Uuid> pathEditID_;
    bool suppressBlanketInvalidation_ = false;

    // Hover.
    std::optional<Uuid> hoveredID_;
    std::optional<Handle> hoveredHandle_;
    bool selectedRectHovered_ = false;

    QRect lastPainted_;
};

} // namespace tosvar
