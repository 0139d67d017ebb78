#pragma once

#include "AnnotationDocument.h"
#include "AnnotationRenderer.h"
#include "AnnotationTool.h"
#include "DefaultsStore.h"
#include "DraftBendGesture.h"
#include "Handle.h"
#include "MainQueue.h"
#include "MosaicEngine.h"
#include "UndoStack.h"
#include "WorkerPool.h"

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace tosvar {

struct AnnotationStyleStore;
class AnnotationElementClipboard;
class DefaultsStore;
class Pasteboard;

enum class EffectIntensityKind { mosaic, blur, magnifier };

// What the text recogniser has done for the open image.
struct OCRState {
    enum class Phase { idle, running, ready };
    Phase phase = Phase::idle;
    bool hasText = false;
    friend bool operator==(const OCRState&, const OCRState&) = default;
};

// Where a translation of the open image stands.
struct TranslateState {
    enum class Phase { idle, running, ready, needsLanguagePack, failed };
    Phase phase = Phase::idle;
    int count = 0;
    int overflow = 0;
    std::string pairLabel;
    std::string engine;
    std::optional<std::string> sourceLanguage;
    std::string targetLanguage;
    std::string message;

    static TranslateState running() { return withPhase(Phase::running); }
    static TranslateState failed(std::string message) {
        TranslateState s = withPhase(Phase::failed);
        s.message = std::move(message);
        return s;
    }
    static TranslateState ready(int count, int overflow, std::string pairLabel, std::string engine) {
        TranslateState s = withPhase(Phase::ready);
        s.count = count;
        s.overflow = overflow;
        s.pairLabel = std::move(pairLabel);
        s.engine = std::move(engine);
        return s;
    }
    static TranslateState needsLanguagePack(std::optional<std::string> source, std::string target) {
        TranslateState s = withPhase(Phase::needsLanguagePack);
        s.sourceLanguage = std::move(source);
        s.targetLanguage = std::move(target);
        return s;
    }
    friend bool operator==(const TranslateState&, const TranslateState&) = default;

private:
    static TranslateState withPhase(Phase phase) {
        TranslateState s;
        s.phase = phase;
        return s;
    }
};

// Runs translations of a whole image for the editor; the engines behind it
// live elsewhere. An editor without one offers no translation.
class EditorTranslation {
public:
    struct Output {
        std::vector<AnnotationElement> elements; // translated blocks over the image
        int overflow = 0;
        std::string pairLabel;
        std::string engine;
    };
    using Completion = std::function<void(TranslateState failure, std::optional<Output> output)>;
    virtual ~EditorTranslation() = default;
    // Why nothing can be translated now, or none when it can.
    virtual std::optional<std::string> unavailableReason() const = 0;
    // Translates `base` with the engine `providerID`; `done` comes on the main
    // thread with the output, or with a failed or needs-language-pack state.
    virtual void translate(const ImageBuffer& base, const std::string& providerID, Completion done) = 0;
    virtual void cancel() = 0;
};

// The model behind every annotation surface (the editor window, the region
// overlay's in-place editing, the sticker editor): the document, the tool and
// the style it draws with, the selection, the gestures, undo and the commands.
// Pointer positions arrive in image pixels from the canvas. It knows no
// views: observers are told after every change, and `onChange` asks for a
// redraw. Main thread only; timers run on `queue`.
class AnnotationEditorController {
public:
    struct Configuration {
        bool keepSelectionOnToolChange = false;
        bool supportsOCR = false;
        bool allowsCropTool = true;
        bool persistsDefaults = true;
        // How long two taps of one tool may lie apart to reset it.
        double doubleClickInterval = 0.4;
    };

    // Everything the editor shows about itself.
    struct State {
        AnnotationTool tool = AnnotationTool::select;
        bool toolbarPlacedAbove = false;
        bool ocrMode = false;
        OCRState ocrState;
        bool translateMode = false;
        TranslateState translateState;
        int translateElapsedSeconds = 0;
        std::string translateProviderID;
        RGBAColor strokeColor = RGBAColor::Palette::red;
        double lineWidth = 24;
        double mosaicBlockSize = 16;
        double blurRadius = 12;
        double magnifierZoom = 4;
        bool dashed = false;
        bool shadowEnabled = false;
        bool outlineEnabled = false;
        bool fillEnabled = false;
        double textFontSize = 40;
        double watermarkAngle = -45;
        double watermarkOpacity = 0.25;
        double watermarkSpacing = 1.0;
        double spotlightVeilOpacity = 0.5;
        double elementOpacity = 1.0;
        std::optional<Uuid> selectedID;
        std::vector<Uuid> coSelectedIDs;
        bool canUndo = false;
        bool canRedo = false;
    };

    static constexpr double defaultStepBadgeFontSize = 32;
    static constexpr double hitTolerance = 6;

    // `fonts` measures text for hit tests; `renderer` flattens; `defaults` is
    // where tool defaults persist (none keeps them in memory only).
    AnnotationEditorController(AnnotationDocument document, const AnnotationRenderer& renderer, MainQueue& queue,
                               DefaultsStore* defaults, Configuration configuration);
    AnnotationEditorController(AnnotationEditorController&&) = delete;
    ~AnnotationEditorController();

    const AnnotationDocument& document() const { return document_; }
    const State& state() const { return state_; }
    MosaicEngine& mosaic() { return mosaic_; }
    std::vector<Uuid> allSelectedIDs() const;
    bool isSelected(const Uuid& id) const;
    const AnnotationElement* element(const Uuid& id) const;
    std::optional<Rect> marqueeRect() const { return marqueeRect_; }
    std::optional<Uuid> draftID() const { return draftID_; }
    // The element whose text an inline field is editing.
    std::optional<Uuid> editingID() const;

    std::function<void()> onChange;
    // Observers are told after every change of the document or the state.
    int addObserver(std::function<void()> observer);
    void removeObserver(int token);

    // ---- Tools and style ----
    void setTool(AnnotationTool tool);
    // The style a new element of the current tool gets.
    AnnotationStyle currentStyle() const;
    static bool supportsOpacity(AnnotationKind::Case kind);
    static AnnotationTool toolFor(AnnotationKind::Case kind);

    // ---- Pointer gestures, in image pixels ----
    void pointerDown(Point at, bool constrained, bool fromCenter, bool additive);
    void pointerDragged(Point to, bool constrained, bool fromCenter);
    void pointerUp();
    // Starts moving the selection from `at`; false when nothing is selected.
    bool beginSelectionMove(Point at);
    void beginResize(Handle handle);
    void updateResize(Point to, bool constrained, bool fromCenter);
    void beginRotation();
    void updateRotation(double degrees);
    void beginLensPan(Point at);
    void setLensZoom(double zoom);
    void insertMidPoint(Point at);
    void removeMidPoint(std::size_t index);
    void straightenSelectedCurve();

    // ---- Text, badges, watermark ----
    void beginTextDraft(Point at);
    struct TextEdit {
        std::string text;
        Point anchor;
        double fontSize = 0;
    };
    std::optional<TextEdit> promoteTextDraftToEdit();
    std::optional<TextEdit> beginTextEdit(const Uuid& id);
    void placeText(const std::string& text, Point at);
    void finishTextEdit(const std::string& text);
    void cancelTextEdit();
    void adjustEditingFontSize(double by);
    struct BadgeEdit {
        std::string text;
        Point centre;
        double radius = 0;
    };
    std::optional<BadgeEdit> beginBadgeEdit(const Uuid& id);
    void finishBadgeEdit(const std::string& label);
    void cancelBadgeEdit();
    std::string nextStepLabel() const;
    struct WatermarkEdit {
        std::string text;
        double fontSize = 0;
    };
    WatermarkEdit beginWatermarkEdit();
    void updateWatermarkText(const std::string& text);
    void finishWatermarkEdit();
    void cancelWatermarkEdit();
    const AnnotationElement* existingWatermark() const;

    // ---- Commands ----
    void performUndo();
    void performRedo();
    void deleteSelected();
    void selectAll();
    void clearSelection();
    void select(const Uuid& id);
    void duplicateSelected();
    void copySelected(AnnotationElementClipboard& clipboard, const Pasteboard& pasteboard);
    void cutSelected(AnnotationElementClipboard& clipboard, const Pasteboard& pasteboard);
    // Pastes the element clipboard's elements, or adds `image` (already
    // imported) when the clipboard chooses the system image.
    void pasteElements(std::vector<AnnotationElement> elements);
    // A paste: the elements copied in an editor, each paste a step further
    // on, or the system clipboard's picture as an image element in the middle
    // of the canvas when something newer was copied. False when there was
    // nothing usable (a picture that does not decode changes nothing).
    bool paste(AnnotationElementClipboard& clipboard, const Pasteboard& pasteboard);
    static constexpr double pasteOffset = 20;
    void addImage(const AnnotationElement& image);
    void nudgeSelected(double dx, double dy);
    void moveSelected(bool forward);
    void moveSelectedToEdge(bool front);
    void cycleColor(bool backward);
    void setStrokeColor(const RGBAColor& color);
    // A burst of live colour changes (a colour wheel drag) is one undo step,
    // recorded 0.4 s after the last.
    void setStrokeColorLive(const RGBAColor& color);
    void setFilled(bool filled);
    void setOutline(bool outline);
    void setDashed(bool dashed);
    void setShadow(bool shadow);
    void setLineWidth(double width);
    void setTextFontSize(double size);
    void setWatermarkAngle(double degrees);
    void setWatermarkOpacity(double opacity);
    void setSpotlightVeilOpacity(double opacity);
    void setElementOpacity(double opacity);
    void setEffectIntensity(double value);
    void setCensorBlur(bool blurred);
    void toggleElementOpacity();
    void resetElementOpacity();
    void resetDashedToDefault();
    void resetShadowToDefault();
    void resetOutlineToDefault();
    void resetFillToDefault();
    void resetToolToDefault();
    void handleToolTap(AnnotationTool tool);
    void adjustToolProperty(double by);
    void adjustPrimaryProperty(double by);
    void adjustElementOpacity(double by);
    void adjustFillOpacity(double by);
    void adjustLeaderWidth(const Uuid& id, double by);
    void applyVeilToAllSpotlights();
    // Slider drags: the state from before the drag is one undo step at its end.
    void beginStyleGesture();
    void endStyleGesture();

    // The current value of the effect the tool or selection controls, with its
    // range; 0 and 4..80 when none does.
    struct EffectIntensity {
        double value = 0, minimum = 4, maximum = 80, standard = 16;
    };
    EffectIntensity effectIntensity() const;
    double derivedOutlineWidth(AnnotationTool tool) const;
    double defaultDashLength(AnnotationTool tool) const;

    // ---- Text recognition and translation ----
    void toggleOCRMode();
    void setOCRState(OCRState state);
    void setTranslation(EditorTranslation* translation) { translation_ = translation; }
    void toggleTranslate();
    void translateNow();
    void setTranslationsHidden(bool hidden);
    void cancelTranslation();

    // ---- Output ----
    std::optional<ImageBuffer> flattenImage() const;
    std::optional<Bytes> flattenPNG() const;
    // The PNG of the document as it stands now, made on `pool` and handed to
    // `done` on the main queue; none when it cannot be rendered. Editing may
    // go on meanwhile: the document is copied.
    void flattenPNGInBackground(WorkerPool& pool, std::function<void(std::optional<Bytes>)> done);
    // The overlay's region was cut again: elements move by `elementOffset`
    // (in the history too) and the base is replaced.
    void adjustRegion(ImageBuffer newBase, Point elementOffset);

    // Applies stored tool defaults; used at start and by tests.
    void loadDefaults(const AnnotationStyleStore& store);
    void persistDefaults();

private:
    struct Move {
        Point start;
        std::map<Uuid, Geometry> geometries;
        std::map<Uuid, std::optional<std::vector<Point>>> midPoints;
        std::map<Uuid, std::optional<Point>> leaderTips;
    };
    struct WatermarkMove {
        Uuid id;
        Point grab;
        Size offset;
    };

    AnnotationElement* mutableElement(const Uuid& id);
    void changed();
    void recordIfChanged(const AnnotationSnapshot& baseline);
    // Puts a snapshot from the history in place; none changes nothing.
    void restore(std::optional<AnnotationSnapshot> snapshot);
    // Drops selected ids whose elements are gone.
    void keepSelectionThatExists();
    void refreshUndoState();
    void syncStyleControls();
    void refreshStyleToggles();
    AnnotationTool styleStateTool() const;
    void applyToSelection(const std::function<bool(AnnotationElement&)>& change);
    void transientChange();
    Point lockedMoveOffset(Point offset, bool constrained);
    Size clampWatermarkOffset(Size offset) const;
    void panLens(const Uuid& id, Point from, Point to);
    void updateDraft(Point current);
    void tickDraftCurve();
    void finishDraftCurveAnimation();
    void insertRespectingZOrder(AnnotationElement element);
    void applyMarqueeSelection(const Rect& rect);
    void setSelection(std::optional<Uuid> primary, std::vector<Uuid> others);
    void setToggle(std::map<AnnotationTool, bool>& map, bool& published, bool value,
                   const std::function<bool(AnnotationElement&, bool)>& apply);
    void commitColorGesture();
    const TextMeasuring& measure() const;

    AnnotationDocument document_;
    const AnnotationRenderer& renderer_;
    MainQueue& queue_;
    DefaultsStore* defaults_;
    Configuration configuration_;
    State state_;
    MosaicEngine mosaic_;
    UndoStack undo_;
    std::map<int, std::function<void()>> observers_;
    int nextObserver_ = 1;
    EditorTranslation* translation_ = nullptr;

    // Per-tool memory.
    std::map<AnnotationTool, RGBAColor> toolColors_;
    std::map<AnnotationTool, double> rememberedFontSizes_;
    std::map<AnnotationTool, bool> toolDashed_, toolShadow_, toolOutline_, toolFill_;
    std::map<AnnotationTool, double> toolOutlineWidth_, toolShadowRadius_, toolDashLength_, toolOpacity_, toolFillOpacity_;
    std::map<AnnotationTool, Size> toolShadowOffset_;
    std::map<AnnotationTool, double> toolWidths_;
    AnnotationTool lastSharedColorTool_ = AnnotationTool::arrow;

    // Gestures.
    std::optional<AnnotationSnapshot> gestureBaseline_;
    std::optional<Uuid> draftID_;
    Point draftStart_;
    bool draftConstrained_ = false;
    bool draftFromCenter_ = false;
    DraftBendGesture bendGesture_;
    double draftCurveTarget_ = 0;
    double draftCurveDisplayed_ = 0;
    TimerHandle draftCurveAnimation_;
    std::optional<Move> move_;
    std::optional<WatermarkMove> watermarkMove_;
    std::optional<Uuid> lensPanID_;
    Point lensPanLast_;
    std::optional<Handle> activeHandle_;
    std::optional<AnnotationElement> resizeOriginal_;
    std::optional<Point> cropStart_;
    std::optional<Point> marqueeStart_;
    std::vector<Uuid> marqueeBaseline_;
    std::optional<Rect> marqueeRect_;
    std::optional<AnnotationSnapshot> styleGestureBaseline_;
    std::optional<AnnotationSnapshot> colorGestureBaseline_;
    TimerHandle colorGestureCommit_;
    std::optional<AnnotationSnapshot> editBaseline_;
    std::optional<Uuid> editingText_, editingBadge_, editingWatermark_;
    bool editingIsNew_ = false;
    bool transientActive_ = false;
    TimerHandle transientEnd_;
    std::optional<bool> moveAxisHorizontal_;
    std::optional<std::pair<AnnotationTool, double>> lastToolTap_;
    TimerHandle translateTicker_;
    int translateRun_ = 0;
    bool isLoadingDefaults_ = false;
};

} // namespace tosvar
