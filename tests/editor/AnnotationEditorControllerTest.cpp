#include "AnnotationElementClipboard.h"
#include "AnnotationStyleStore.h"
#include "EditorTestSupport.h"
#include "FakePasteboard.h"
#include "PngEncoder.h"

#include <gtest/gtest.h>

namespace tosvar::editing {
namespace {

using C = AnnotationKind::Case;
using T = AnnotationTool;

std::vector<C> kinds(const std::vector<AnnotationElement>& elements) {
    std::vector<C> out;
    for (const AnnotationElement& e : elements) out.push_back(e.kind.kindCase());
    return out;
}

TEST(EditorTools, ChangingToolCarriesTheSharedColourAndRestoresEachToolsOwn) {
    EditorFixture f;
    AnnotationEditorController& e = *f.editor;
    e.setTool(T::arrow);
    EXPECT_EQ(e.state().lineWidth, 12);
    EXPECT_TRUE(e.state().outlineEnabled);
    e.setStrokeColor(RGBAColor::Palette::blue);
    e.setTool(T::highlighter);
    EXPECT_EQ(e.state().strokeColor, RGBAColor::Palette::blue) << "shared among drawing tools";
    EXPECT_EQ(e.state().lineWidth, 8);
    EXPECT_FALSE(e.state().outlineEnabled);
    e.setTool(T::magnifier);
    EXPECT_EQ(e.state().strokeColor, RGBAColor::Palette::white);
    EXPECT_TRUE(e.state().shadowEnabled);
    e.setStrokeColor(RGBAColor::Palette::green);
    e.setTool(T::rectangle);
    EXPECT_EQ(e.state().strokeColor, RGBAColor::Palette::blue) << "the drawing tools' colour comes back";
    e.setTool(T::magnifier);
    EXPECT_EQ(e.state().strokeColor, RGBAColor::Palette::green);
}

TEST(EditorTools, CurrentStyleFollowsTheToolsRules) {
    EditorFixture f;
    AnnotationEditorController& e = *f.editor;
    e.setTool(T::magnifier);
    EXPECT_EQ(e.currentStyle().cornerRadius, 100000);
    EXPECT_EQ(e.currentStyle().magnifierZoom, 4);
    e.setTool(T::mosaic);
    EXPECT_EQ(e.currentStyle().cornerRadius, 0);
    e.setTool(T::spotlight);
    EXPECT_EQ(e.currentStyle().fillColor, RGBAColor::Palette::black.withAlpha(0.5));
    e.setTool(T::rectangle);
    e.setFilled(true);
    EXPECT_EQ(e.currentStyle().fillColor, e.state().strokeColor.withAlpha(1.0));
    e.setElementOpacity(0.4);
    EXPECT_DOUBLE_EQ(e.currentStyle().opacity, 0.4);
    e.setTool(T::watermark);
    EXPECT_DOUBLE_EQ(e.currentStyle().opacity, 0.25) << "a watermark uses its own opacity";
}

TEST(EditorGestures, DraggingARectangleMakesOneElementAndOneUndoStep) {
    EditorFixture f;
    f.editor->setTool(T::rectangle);
    f.drag({100, 100}, {{150, 120}, {300, 250}});
    ASSERT_EQ(f.elements().size(), 1u);
    EXPECT_EQ(*f.elements()[0].geometry.asRect(), Rect(100, 100, 200, 150));
    EXPECT_EQ(f.editor->state().selectedID, f.elements()[0].id);
    EXPECT_TRUE(f.editor->state().canUndo);
    f.editor->performUndo();
    EXPECT_TRUE(f.elements().empty());
    EXPECT_TRUE(f.editor->state().canRedo);
    f.editor->performRedo();
    EXPECT_EQ(f.elements().size(), 1u);
}

TEST(EditorGestures, AClickWithoutADragLeavesNothingAndNoUndoStep) {
    for (T tool : {T::rectangle, T::arrow, T::ellipse, T::mosaic, T::magnifier}) {
        EditorFixture f;
        f.editor->setTool(tool);
        f.drag({100, 100}, {{101, 101}});
        EXPECT_TRUE(f.elements().empty()) << static_cast<int>(tool);
        EXPECT_FALSE(f.editor->state().canUndo);
    }
}

TEST(EditorGestures, RegionEffectsStayBeneathOtherAnnotationsInOrderOfCreation) {
    EditorFixture f;
    f.editor->setTool(T::mosaic);
    f.drag({10, 10}, {{60, 60}});
    f.editor->setTool(T::arrow);
    f.drag({100, 100}, {{300, 100}});
    f.editor->setTool(T::blur);
    f.drag({200, 200}, {{260, 260}});
    EXPECT_EQ(kinds(f.elements()), (std::vector<C>{C::mosaic, C::blur, C::arrow}));
}

TEST(EditorGestures, AConstrainedMoveDecidesItsAxisOnceItLeavesHalfAPixel) {
    EditorFixture f;
    f.editor->setTool(T::rectangle);
    f.drag({100, 100}, {{200, 200}});
    const Uuid id = f.elements()[0].id;
    f.editor->pointerDown({150, 100}, true, false, false); // on the top edge
    f.editor->pointerDragged({150.4, 100.3}, true, false);
    EXPECT_EQ(f.editor->element(id)->geometry.asRect()->origin, (Point{100.4, 100.3})) << "undecided: moves freely";
    f.editor->pointerDragged({153, 101}, true, false);
    EXPECT_EQ(f.editor->element(id)->geometry.asRect()->origin, (Point{103, 100}));
    f.editor->pointerDragged({155, 140}, true, false);
    EXPECT_EQ(f.editor->element(id)->geometry.asRect()->origin, (Point{105, 100})) << "stays horizontal for the drag";
    f.editor->pointerUp();
}

TEST(EditorGestures, ArrowsBendTowardTheStrokeAndEaseThere) {
    EditorFixture f;
    f.editor->setTool(T::arrow);
    f.editor->pointerDown({100, 300}, false, false, false);
    for (double x = 110; x <= 200; x += 10) f.editor->pointerDragged({x, 300 - (x - 100) * 0.8}, false, false);
    for (double x = 210; x <= 300; x += 10) f.editor->pointerDragged({x, 300 - (300 - x) * 0.8}, false, false);
    f.queue.advance(0.05);
    const double easing = f.elements()[0].style.curvature;
    f.editor->pointerUp();
    const double finished = f.elements()[0].style.curvature;
    EXPECT_NE(finished, 0) << "a stroke that bulged bends";
    EXPECT_LE(std::abs(easing), std::abs(finished)) << "still easing toward the bend while drawing";
    EXPECT_LE(std::abs(finished), 0.25 * 200 + 1e-9);
}

TEST(EditorGestures, FreehandStrokesAreThinnedWhenFinished) {
    EditorFixture f;
    f.editor->setTool(T::freehand);
    std::initializer_list<Point> line{{110, 100}, {120, 100}, {130, 100.5}, {140, 100}, {150, 100}};
    f.drag({100, 100}, line);
    EXPECT_EQ(f.elements()[0].geometry.asPath()->size(), 2u);
}

TEST(EditorGestures, AMarqueeWithShiftAddsEverythingItTouchesToTheSelection) {
    EditorFixture f;
    f.editor->setTool(T::rectangle);
    f.drag({10, 10}, {{50, 50}});
    f.drag({100, 10}, {{150, 50}});
    f.drag({300, 300}, {{350, 350}});
    f.editor->select(f.elements()[2].id);
    f.editor->pointerDown({400, 5}, false, false, true);
    f.editor->pointerDragged({5, 30}, false, false);
    EXPECT_TRUE(f.editor->marqueeRect());
    f.editor->pointerUp();
    EXPECT_EQ(f.editor->allSelectedIDs().size(), 3u);
    EXPECT_FALSE(f.editor->marqueeRect());
}

TEST(EditorGestures, ATinyCropRevertsAndACropUndoesInOneStep) {
    EditorFixture f;
    f.editor->setTool(T::crop);
    f.drag({100, 100}, {{400, 300}});
    ASSERT_TRUE(f.editor->document().cropRect);
    EXPECT_EQ(*f.editor->document().cropRect, Rect(100, 100, 300, 200));
    f.drag({50, 50}, {{52, 300}});
    EXPECT_EQ(*f.editor->document().cropRect, Rect(100, 100, 300, 200)) << "narrower than 4 reverts";
    f.drag({700, 500}, {{900, 700}});
    EXPECT_EQ(*f.editor->document().cropRect, Rect(700, 500, 100, 100)) << "kept inside the image";
    f.editor->performUndo();
    EXPECT_EQ(*f.editor->document().cropRect, Rect(100, 100, 300, 200));
    f.editor->performUndo();
    EXPECT_FALSE(f.editor->document().cropRect);
}

TEST(EditorGestures, ResizingByAHandleFlipsPastTheOppositeEdge) {
    EditorFixture f;
    f.editor->setTool(T::rectangle);
    f.drag({100, 100}, {{200, 200}});
    f.editor->beginResize(Handle::rect(RectHandle::left));
    f.editor->updateResize({250, 150}, false, false);
    f.editor->pointerUp();
    EXPECT_EQ(*f.elements()[0].geometry.asRect(), Rect(200, 100, 50, 100));
    f.editor->performUndo();
    EXPECT_EQ(*f.elements()[0].geometry.asRect(), Rect(100, 100, 100, 100));
}

TEST(EditorGestures, LensPanStaysOnTheImage) {
    EditorFixture f;
    f.editor->setTool(T::magnifier);
    f.drag({100, 100}, {{140, 140}});
    const Uuid lens = f.elements()[0].id;
    f.editor->beginLensPan({100, 100});
    f.editor->pointerDragged({100 + 4000, 100}, false, false);
    f.editor->pointerUp();
    EXPECT_DOUBLE_EQ(f.editor->element(lens)->style.magnifierOffset->width, -100) << "the lens centre stops at the left edge";
}

TEST(EditorBadges, NextLabelCountsFromTheLargestNumberOrTheLastLetters) {
    struct Row {
        std::vector<std::string> labels;
        std::string next;
    };
    for (const Row& row : std::vector<Row>{{{}, "1"}, {{"1", "9", "3"}, "10"}, {{"a", "b"}, "c"}, {{"1", "b"}, "c"}, {{"Z"}, "AA"}}) {
        EditorFixture f;
        f.editor->setTool(T::stepBadge);
        double x = 50;
        for (const std::string& label : row.labels) {
            f.drag({x, 50}, {});
            f.editor->beginBadgeEdit(f.elements().back().id);
            f.editor->finishBadgeEdit(label);
            x += 100;
        }
        EXPECT_EQ(f.editor->nextStepLabel(), row.next);
    }
}

TEST(EditorText, ADraftBecomesAnEditAndEmptyTextLeavesNothing) {
    EditorFixture f;
    f.editor->setTool(T::text);
    f.editor->beginTextDraft({100, 100});
    const auto edit = f.editor->promoteTextDraftToEdit();
    ASSERT_TRUE(edit);
    EXPECT_EQ(edit->anchor, (Point{100, 100}));
    f.editor->finishTextEdit("Hello");
    ASSERT_EQ(f.elements().size(), 1u);
    EXPECT_EQ(f.elements()[0].kind.textPayload(), "Hello");
    EXPECT_TRUE(f.editor->state().canUndo);

    f.editor->beginTextDraft({300, 300});
    f.editor->promoteTextDraftToEdit();
    f.editor->finishTextEdit("  \n");
    EXPECT_EQ(f.elements().size(), 1u);

    f.editor->beginTextEdit(f.elements()[0].id);
    f.editor->cancelTextEdit();
    EXPECT_EQ(f.elements()[0].kind.textPayload(), "Hello");
}

TEST(EditorText, DraggingFromANewTextPullsOutALeader) {
    EditorFixture f;
    f.editor->setTool(T::text);
    f.editor->beginTextDraft({100, 100});
    f.editor->pointerDragged({400, 300}, false, false);
    f.editor->promoteTextDraftToEdit();
    f.editor->finishTextEdit("Look");
    EXPECT_EQ(f.elements()[0].style.leaderTip, (Point{400, 300}));
}

TEST(EditorWatermark, OneWatermarkCoversTheImageAndEmptyTextRemovesIt) {
    EditorFixture f;
    f.editor->beginWatermarkEdit();
    f.editor->updateWatermarkText("Draft");
    f.editor->finishWatermarkEdit();
    ASSERT_NE(f.editor->existingWatermark(), nullptr);
    EXPECT_EQ(*f.editor->existingWatermark()->geometry.asRect(), Rect(0, 0, 800, 600));
    EXPECT_EQ(f.editor->beginWatermarkEdit().text, "Draft") << "the same watermark opens again";
    f.editor->updateWatermarkText("");
    f.editor->finishWatermarkEdit();
    EXPECT_EQ(f.editor->existingWatermark(), nullptr);
}

// Twenty live colour changes a tenth of a second apart, on a new rectangle.
void colourWheelDrag(EditorFixture& f) {
    f.editor->setTool(T::rectangle);
    f.drag({100, 100}, {{200, 200}});
    for (int i = 0; i < 20; ++i) {
        f.editor->setStrokeColorLive({i / 20.0, 0.5, 0.5, 1});
        f.queue.advance(0.1);
    }
}

TEST(EditorUndo, AColourWheelDragIsRecordedOnlyFourTenthsOfASecondAfterItStops) {
    EditorFixture f;
    colourWheelDrag(f);
    EXPECT_EQ(f.elements()[0].style.strokeColor.red, 19 / 20.0);
    f.queue.advance(0.29); // 0.39 after the last change
    f.editor->performUndo();
    EXPECT_TRUE(f.elements().empty()) << "the drag is not a step yet, so undo takes back the drawing";
}

TEST(EditorUndo, AColourWheelDragIsOneUndoStep) {
    EditorFixture f;
    colourWheelDrag(f);
    f.queue.advance(0.31);
    f.editor->performUndo();
    ASSERT_EQ(f.elements().size(), 1u);
    EXPECT_EQ(f.elements()[0].style.strokeColor, RGBAColor::Palette::red);
    f.editor->performUndo();
    EXPECT_TRUE(f.elements().empty());
}

TEST(EditorUndo, ANudgeBurstIsOneStepClosedAfterSixTenthsOfASecond) {
    EditorFixture f;
    f.editor->setTool(T::rectangle);
    f.drag({100, 100}, {{200, 200}});
    for (int i = 0; i < 10; ++i) {
        f.editor->nudgeSelected(1, 0);
        f.queue.advance(0.2);
    }
    f.queue.advance(0.6);
    EXPECT_EQ(f.elements()[0].geometry.asRect()->origin.x, 110);
    f.editor->performUndo();
    EXPECT_EQ(f.elements()[0].geometry.asRect()->origin.x, 100) << "ten nudges, one step";
}

TEST(EditorUndo, UndoAfterARegionChangeReturnsElementsInTheNewCoordinates) {
    EditorFixture f;
    f.editor->setTool(T::rectangle);
    f.drag({100, 100}, {{200, 200}});
    f.editor->nudgeSelected(5, 0);
    f.queue.advance(1);
    f.editor->beginWatermarkEdit();
    f.editor->updateWatermarkText("W");
    f.editor->finishWatermarkEdit();
    f.editor->adjustRegion(blankImage(900, 700), {-30, 20});
    EXPECT_EQ(f.elements()[0].geometry.asRect()->origin, (Point{75, 120}));
    EXPECT_EQ(*f.editor->existingWatermark()->geometry.asRect(), Rect(0, 0, 900, 700));
    f.editor->performUndo(); // the watermark
    f.editor->performUndo(); // the nudge
    EXPECT_EQ(f.elements()[0].geometry.asRect()->origin, (Point{70, 120}));
    EXPECT_EQ(f.editor->document().base().width(), 900);
}

TEST(EditorUndo, ADoubleTapOnAToolResetsIt) {
    EditorFixture f;
    f.editor->setTool(T::arrow);
    f.editor->setLineWidth(30);
    f.editor->setDashed(true);
    f.editor->handleToolTap(T::line);
    f.queue.advance(1);
    f.editor->handleToolTap(T::arrow);
    f.queue.advance(0.2);
    f.editor->handleToolTap(T::arrow);
    EXPECT_EQ(f.editor->state().lineWidth, 12);
    EXPECT_FALSE(f.editor->state().dashed);
}

TEST(EditorCommands, DeleteDuplicateAndReorder) {
    EditorFixture f;
    f.editor->setTool(T::rectangle);
    f.drag({10, 10}, {{50, 50}});
    f.editor->setTool(T::ellipse);
    f.drag({100, 10}, {{150, 50}});
    f.editor->duplicateSelected();
    ASSERT_EQ(f.elements().size(), 3u);
    EXPECT_EQ(*f.elements()[2].geometry.asRect(), Rect(116, 26, 50, 40));
    EXPECT_NE(f.elements()[2].id, f.elements()[1].id);
    f.editor->moveSelectedToEdge(false);
    EXPECT_EQ(kinds(f.elements()), (std::vector<C>{C::ellipse, C::rectangle, C::ellipse}));
    f.editor->moveSelected(true);
    EXPECT_EQ(f.elements()[1].geometry.asRect()->origin, (Point{116, 26}));
    f.editor->deleteSelected();
    EXPECT_EQ(f.elements().size(), 2u);
    f.editor->selectAll();
    f.editor->deleteSelected();
    EXPECT_TRUE(f.elements().empty());
    f.editor->performUndo();
    EXPECT_EQ(f.elements().size(), 2u);
}

TEST(EditorCommands, CycleColourWalksThePaletteAndWraps) {
    EditorFixture f;
    f.editor->setTool(T::arrow);
    f.editor->setStrokeColor(RGBAColor::Palette::black);
    f.editor->cycleColor(false);
    EXPECT_EQ(f.editor->state().strokeColor, RGBAColor::Palette::red);
    f.editor->cycleColor(true);
    EXPECT_EQ(f.editor->state().strokeColor, RGBAColor::Palette::black);
}

TEST(EditorCommands, CopyCutAndPasteKeepEveryKindAndCascade) {
    EditorFixture f;
    AnnotationElementClipboard clipboard;
    FakePasteboard pasteboard;
    f.editor->setTool(T::rectangle);
    f.drag({10, 10}, {{50, 50}});
    f.editor->setTool(T::text);
    f.editor->beginTextDraft({200, 200});
    f.editor->promoteTextDraftToEdit();
    f.editor->finishTextEdit("copied");
    f.editor->selectAll();
    f.editor->copySelected(clipboard, pasteboard);
    f.editor->pasteElements(clipboard.take({20, 20}));
    f.editor->pasteElements(clipboard.take({20, 20}));
    ASSERT_EQ(f.elements().size(), 6u);
    EXPECT_EQ(f.elements()[2].geometry.asRect()->origin, (Point{30, 30}));
    EXPECT_EQ(f.elements()[4].geometry.asRect()->origin, (Point{50, 50}));
    EXPECT_EQ(f.elements()[5].kind.textPayload(), "copied");
    f.editor->cutSelected(clipboard, pasteboard);
    EXPECT_EQ(f.elements().size(), 4u);
}

PasteboardContent picture(int width, int height) {
    MutableImage image(width, height);
    image.fill({10, 20, 200, 255});
    PasteboardContent content;
    content.add("image/png", *PngEncoder::encode(std::move(image).freeze()));
    return content;
}

TEST(EditorCommands, ANewerPictureOnTheClipboardPastesAsAnImageWithinHalfTheCanvas) {
    EditorFixture f;
    AnnotationElementClipboard clipboard;
    FakePasteboard pasteboard;
    f.editor->setTool(T::rectangle);
    f.drag({10, 10}, {{50, 50}});
    f.editor->copySelected(clipboard, pasteboard);
    pasteboard.write(picture(2400, 1200)); // another program copies a picture
    ASSERT_TRUE(f.editor->paste(clipboard, pasteboard));
    const AnnotationElement& pasted = f.elements().back();
    ASSERT_TRUE(pasted.kind.imagePayload());
    EXPECT_EQ(*pasted.geometry.asRect(), Rect(200, 200, 400, 200)) << "half the 800x600 canvas, in its middle";
    EXPECT_EQ(pasted.kind.imagePayload()->pixelWidth, 1600) << "stored at twice the canvas's larger side";
    EXPECT_TRUE(f.editor->state().canUndo);
}

TEST(EditorCommands, PastedBytesThatAreNotAPictureChangeNothing) {
    EditorFixture f;
    AnnotationElementClipboard clipboard;
    FakePasteboard pasteboard;
    PasteboardContent garbage;
    garbage.add("image/png", Bytes(100, 0x42));
    pasteboard.write(garbage);
    EXPECT_FALSE(f.editor->paste(clipboard, pasteboard));
    EXPECT_TRUE(f.elements().empty());
    EXPECT_FALSE(f.editor->state().canUndo);
}

TEST(EditorCommands, EffectIntensityRoundsAndLimitsByKind) {
    EditorFixture f;
    f.editor->setTool(T::blur);
    f.drag({10, 10}, {{50, 50}});
    f.editor->setEffectIntensity(70.6);
    EXPECT_EQ(f.elements()[0].style.blurRadius, 60);
    f.editor->setTool(T::magnifier);
    f.editor->setEffectIntensity(2.349);
    EXPECT_DOUBLE_EQ(f.editor->effectIntensity().value, 2.3);
    f.editor->setTool(T::arrow);
    EXPECT_EQ(f.editor->effectIntensity().value, 0);
}

TEST(EditorDefaults, StyleChoicesAreRememberedPerToolAcrossEditors) {
    EditorFixture f;
    f.editor->setTool(T::arrow);
    f.editor->setLineWidth(20);
    f.editor->setDashed(true);
    f.editor->setStrokeColor(RGBAColor::Palette::green);
    f.editor->setTool(T::mosaic);
    f.editor->adjustToolProperty(4);
    f.queue.advance(1);
    f.open();
    AnnotationEditorController& e = *f.editor;
    e.setTool(T::arrow);
    EXPECT_EQ(e.state().lineWidth, 20);
    EXPECT_TRUE(e.state().dashed);
    EXPECT_EQ(e.state().strokeColor, RGBAColor::Palette::green);
    e.setTool(T::mosaic);
    EXPECT_EQ(e.state().mosaicBlockSize, 20);
    e.setTool(T::line);
    EXPECT_FALSE(e.state().dashed) << "dashes were chosen for arrows only";
}

TEST(EditorDefaults, AnEditorThatDoesNotPersistLeavesTheStoreAlone) {
    AnnotationEditorController::Configuration sticker;
    sticker.persistsDefaults = false;
    EditorFixture f(sticker);
    f.editor->setTool(T::arrow);
    f.editor->setLineWidth(40);
    EXPECT_FALSE(f.defaults.value(std::string(AnnotationStyleStore::defaultsKey)));
}

TEST(EditorDefaults, StoredDefaultsOfTheWrongShapeFallBackAndTheDocumentIsUntouched) {
    EditorFixture f;
    f.defaults.set(std::string(AnnotationStyleStore::defaultsKey), std::string(R"({"strokeColor":"red"})"));
    f.open();
    f.editor->setTool(T::arrow);
    EXPECT_EQ(f.editor->state().strokeColor, RGBAColor::Palette::red);
    EXPECT_EQ(f.editor->state().lineWidth, 12);
}

class FakeTranslation final : public EditorTranslation {
public:
    std::optional<std::string> unavailableReason() const override { return reason; }
    void translate(const ImageBuffer&, const std::string&, Completion done) override { pending.push_back(std::move(done)); }
    void cancel() override { ++cancelled; }

    std::optional<std::string> reason;
    std::vector<Completion> pending;
    int cancelled = 0;
};

TEST(EditorTranslation, ResultsReplaceEarlierOnesAndLateResultsAreDropped) {
    EditorFixture f;
    FakeTranslation translation;
    f.editor->setTranslation(&translation);
    f.editor->translateNow();
    EXPECT_EQ(f.editor->state().translateState.phase, TranslateState::Phase::running);
    f.queue.advance(2.5);
    EXPECT_EQ(f.editor->state().translateElapsedSeconds, 2);
    f.editor->translateNow(); // supersedes the first run
    TranslatedBlock block;
    block.target = "hello";
    EditorTranslation::Output output{{AnnotationElement{Uuid::random(), AnnotationKind::translatedText(block), Geometry::rect({1, 1, 50, 20}), {}}},
                                     0, "de → en", "apertium"};
    translation.pending[0]({}, output);
    EXPECT_TRUE(f.elements().empty()) << "the superseded run's result is dropped";
    translation.pending[1]({}, output);
    EXPECT_EQ(f.elements().size(), 1u);
    EXPECT_EQ(f.editor->state().translateState.phase, TranslateState::Phase::ready);
    EXPECT_EQ(f.editor->state().translateState.count, 1);
    f.editor->performUndo();
    EXPECT_TRUE(f.elements().empty());
}

TEST(EditorTranslation, WithoutAnEngineTheStateSaysWhy) {
    EditorFixture f;
    f.editor->translateNow();
    EXPECT_EQ(f.editor->state().translateState.phase, TranslateState::Phase::failed);
    FakeTranslation translation;
    translation.reason = "translate.provider.notReady";
    f.editor->setTranslation(&translation);
    f.editor->translateNow();
    EXPECT_EQ(f.editor->state().translateState.message, "translate.provider.notReady");
    EXPECT_TRUE(translation.pending.empty());
}

} // namespace
} // namespace tosvar::editing

namespace tosvar::editing {
namespace {

// One element of `tool`'s kind drawn and selected, for the style commands.
void drawSelected(EditorFixture& f, AnnotationTool tool) {
    f.editor->setTool(tool);
    f.drag({100, 100}, {{250, 220}});
}

TEST(EditorStyleCommands, EachChangesTheSelectionTheToolAndOneUndoStep) {
    struct Row {
        const char* name;
        AnnotationTool tool;
        std::function<void(AnnotationEditorController&)> command;
        std::function<bool(const AnnotationStyle&)> applied;
    };
    const std::vector<Row> rows{
        {"opacity toggles to a half", T::arrow, [](auto& e) { e.toggleElementOpacity(); }, [](const auto& s) { return s.opacity == 0.5; }},
        {"outline on a line", T::line, [](auto& e) { e.setOutline(true); }, [](const auto& s) { return s.outline; }},
        {"outline of a region is its border", T::blur, [](auto& e) { e.setOutline(true); }, [](const auto& s) { return s.textOutline; }},
        {"shadow", T::ellipse, [](auto& e) { e.setShadow(true); }, [](const auto& s) { return s.shadow; }},
        {"veil of a spotlight", T::spotlight, [](auto& e) { e.setSpotlightVeilOpacity(0.8); },
         [](const auto& s) { return s.fillColor && std::abs(s.fillColor->alpha - 0.8) < 1e-9; }},
        {"fill opacity steps by a twentieth", T::rectangle,
         [](auto& e) {
             e.setFilled(true);
             e.adjustFillOpacity(-2);
         },
         [](const auto& s) { return s.fillColor && std::abs(s.fillColor->alpha - 0.9) < 1e-9; }},
        {"censoring switches a mosaic to a blur", T::mosaic, [](auto& e) { e.setCensorBlur(true); }, [](const auto&) { return true; }},
    };
    for (const Row& row : rows) {
        EditorFixture f;
        drawSelected(f, row.tool);
        const AnnotationSnapshot before = f.editor->document().snapshot();
        row.command(*f.editor);
        f.queue.advance(1); // bursts close
        ASSERT_EQ(f.elements().size(), 1u) << row.name;
        EXPECT_TRUE(row.applied(f.elements()[0].style)) << row.name;
        EXPECT_NE(f.editor->document().snapshot(), before) << row.name;
        f.editor->performUndo();
        if (row.tool == T::rectangle) f.editor->performUndo(); // the fill was its own step
        EXPECT_EQ(f.editor->document().snapshot(), before) << row.name << ": undone in one step";
    }
}

TEST(EditorStyleCommands, CensoringCarriesTheSelectedRegionOverToTheOtherEffect) {
    EditorFixture f;
    drawSelected(f, T::mosaic);
    f.editor->setCensorBlur(true);
    EXPECT_EQ(f.editor->state().tool, T::blur);
    EXPECT_TRUE(f.elements()[0].kind.is(C::blur));
    EXPECT_EQ(f.editor->state().selectedID, f.elements()[0].id);
}

TEST(EditorStyleCommands, ResettingAToggleReturnsToTheToolsDefault) {
    EditorFixture f;
    f.editor->setTool(T::arrow);
    f.editor->setOutline(false);
    f.editor->setTool(T::line);
    f.editor->setTool(T::arrow);
    EXPECT_FALSE(f.editor->state().outlineEnabled) << "remembered for arrows";
    f.editor->resetOutlineToDefault();
    EXPECT_TRUE(f.editor->state().outlineEnabled) << "arrows are outlined by default";
}

TEST(EditorStyleCommands, LeaderWidthStaysWithinItsLimits) {
    EditorFixture f;
    f.editor->setTool(T::stepBadge);
    f.editor->pointerDown({100, 100}, false, false, false);
    f.editor->pointerDragged({300, 300}, false, false);
    f.editor->pointerUp();
    const Uuid badge = f.elements()[0].id;
    ASSERT_TRUE(f.elements()[0].style.leaderTip);
    f.editor->adjustLeaderWidth(badge, 100);
    EXPECT_EQ(f.elements()[0].style.leaderWidth, 60);
    f.editor->adjustLeaderWidth(badge, -100);
    EXPECT_EQ(f.elements()[0].style.leaderWidth, 1.5);
}

} // namespace
} // namespace tosvar::editing
