// The canvas on Qt's offscreen platform: where pointer events land in the
// image at different sizes and zooms, what a drag step repaints, and the
// inline text field.
#include "AnnotationCanvasView.h"
#include "AnnotationElementClipboard.h"
#include "FakePasteboard.h"
#include "InMemoryDefaultsStore.h"
#include "QtDrawingBackend.h"
#include "TestApplication.h"
#include "VirtualMainQueue.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QTextEdit>
#include <gtest/gtest.h>

namespace tosvar {
namespace {

ImageBuffer grey(int width, int height) {
    MutableImage image(width, height);
    image.fill({180, 180, 180, 255});
    return std::move(image).freeze();
}

class CanvasTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { testApplication<QApplication>(); }

    void open(int imageWidth, int imageHeight, double scale, QSize viewSize) {
        view.reset();
        controller = std::make_unique<AnnotationEditorController>(AnnotationDocument(grey(imageWidth, imageHeight), scale), renderer, queue,
                                                                  &defaults, AnnotationEditorController::Configuration{});
        view = std::make_unique<AnnotationCanvasView>(*controller, clipboard, pasteboard);
        view->resize(viewSize);
        view->show();
        QApplication::processEvents();
    }

    void mouse(QEvent::Type type, QPointF at, Qt::MouseButtons buttons = Qt::LeftButton, Qt::KeyboardModifiers modifiers = {}) {
        QMouseEvent event(type, at, view->mapToGlobal(at), type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton, buttons, modifiers);
        QApplication::sendEvent(view.get(), &event);
    }
    void drag(QPointF from, QPointF to) {
        mouse(QEvent::MouseButtonPress, from);
        mouse(QEvent::MouseMove, (from + to) / 2);
        mouse(QEvent::MouseMove, to);
        mouse(QEvent::MouseButtonRelease, to, Qt::NoButton);
    }
    void key(QWidget* target, int code, const QString& text = {}, Qt::KeyboardModifiers modifiers = {}) {
        QKeyEvent press(QEvent::KeyPress, code, modifiers, text);
        QApplication::sendEvent(target, &press);
        QKeyEvent release(QEvent::KeyRelease, code, modifiers, text);
        QApplication::sendEvent(target, &release);
    }
    const std::vector<AnnotationElement>& elements() const { return controller->document().elements; }

    AnnotationRenderer renderer{QtDrawingBackend::shared()};
    VirtualMainQueue queue;
    InMemoryDefaultsStore defaults;
    AnnotationElementClipboard clipboard;
    FakePasteboard pasteboard;
    std::unique_ptr<AnnotationEditorController> controller;
    std::unique_ptr<AnnotationCanvasView> view;
};

TEST_F(CanvasTest, PointerEventsLandInImagePixelsAtEverySizeAndZoom) {
    struct Row {
        const char* name;
        int imageWidth, imageHeight;
        double scale;
        QSize view;
        double zoom;
        QPointF from, to;
        Rect expected;
    };
    const Row rows[] = {
        {"one to one", 400, 300, 1, {400, 300}, 1, {40, 30}, {140, 130}, {40, 30, 100, 100}},
        {"a scale-2 capture fitted at half size", 800, 600, 2, {400, 300}, 1, {40, 30}, {140, 130}, {80, 60, 200, 200}},
        {"letterboxed: centred across the width", 400, 300, 1, {600, 300}, 1, {140, 30}, {240, 130}, {40, 30, 100, 100}},
        {"zoomed twice about the centre", 400, 300, 1, {400, 300}, 2, {200, 150}, {240, 190}, {200, 150, 20, 20}},
        {"a scale-2 capture zoomed three times", 800, 600, 2, {400, 300}, 3, {200, 150}, {230, 180}, {400, 300, 20, 20}},
    };
    for (const Row& row : rows) {
        open(row.imageWidth, row.imageHeight, row.scale, row.view);
        view->setZoomScale(row.zoom);
        controller->setTool(AnnotationTool::rectangle);
        drag(row.from, row.to);
        ASSERT_EQ(elements().size(), 1u) << row.name;
        const Rect drawn = *elements()[0].geometry.asRect();
        EXPECT_NEAR(drawn.minX(), row.expected.minX(), 1e-9) << row.name;
        EXPECT_NEAR(drawn.minY(), row.expected.minY(), 1e-9) << row.name;
        EXPECT_NEAR(drawn.width(), row.expected.width(), 1e-9) << row.name;
        EXPECT_NEAR(drawn.height(), row.expected.height(), 1e-9) << row.name;
    }
}

TEST_F(CanvasTest, WheelZoomStopsAtOneAndSix) {
    open(400, 300, 1, {400, 300});
    for (int i = 0; i < 200; ++i) {
        QWheelEvent wheel({200, 150}, view->mapToGlobal(QPointF(200, 150)), {}, {0, 120}, Qt::NoButton, {}, Qt::NoScrollPhase, false);
        QApplication::sendEvent(view.get(), &wheel);
    }
    EXPECT_DOUBLE_EQ(view->zoomScale(), 6);
    for (int i = 0; i < 200; ++i) {
        QWheelEvent wheel({200, 150}, view->mapToGlobal(QPointF(200, 150)), {}, {0, -120}, Qt::NoButton, {}, Qt::NoScrollPhase, false);
        QApplication::sendEvent(view.get(), &wheel);
    }
    EXPECT_DOUBLE_EQ(view->zoomScale(), 1);
}

TEST_F(CanvasTest, ADragStepRepaintsOnlyAroundWhatMoves) {
    open(2000, 1500, 1, {800, 600});
    controller->setTool(AnnotationTool::rectangle);
    drag({100, 100}, {140, 140});
    QApplication::processEvents();
    mouse(QEvent::MouseButtonPress, {100, 120}); // on the rectangle's left side
    mouse(QEvent::MouseMove, {110, 125});
    QApplication::processEvents();
    const QRect painted = view->lastPaintedRect();
    EXPECT_LT(painted.width() * painted.height(), 800 * 600 / 4) << "not the whole view";
    const Rect moved = view->canvasGeometry().viewRect(*elements()[0].geometry.asRect());
    EXPECT_TRUE(painted.contains(QRectF(moved.minX(), moved.minY(), moved.width(), moved.height()).toAlignedRect()));
    mouse(QEvent::MouseButtonRelease, {110, 125}, Qt::NoButton);
}

TEST_F(CanvasTest, TheInlineFieldCommitsOnReturnAndCancelsOnEscape) {
    open(400, 300, 1, {400, 300});
    key(view.get(), Qt::Key_T, QStringLiteral("t"));
    EXPECT_EQ(controller->state().tool, AnnotationTool::text);
    mouse(QEvent::MouseButtonPress, {50, 60});
    mouse(QEvent::MouseButtonRelease, {50, 60}, Qt::NoButton);
    ASSERT_TRUE(view->isEditingText());
    QTextEdit* field = view->findChild<QTextEdit*>();
    ASSERT_NE(field, nullptr);
    field->insertPlainText(QStringLiteral("Note"));
    key(field, Qt::Key_Return);
    EXPECT_FALSE(view->isEditingText());
    ASSERT_EQ(elements().size(), 1u);
    EXPECT_EQ(elements()[0].kind.textPayload(), "Note");

    // A click right after the field closed starts nothing new.
    mouse(QEvent::MouseButtonPress, {200, 200});
    mouse(QEvent::MouseButtonRelease, {200, 200}, Qt::NoButton);
    EXPECT_FALSE(view->isEditingText());
    EXPECT_EQ(elements().size(), 1u);

    // Clicking the selected text opens it again; Escape leaves it as it was.
    const Point anchor = *elements()[0].geometry.asPoint();
    const Point inside = view->canvasGeometry().viewPoint({anchor.x + 10, anchor.y + 10});
    QApplication::processEvents();
    mouse(QEvent::MouseButtonPress, {inside.x, inside.y});
    mouse(QEvent::MouseButtonRelease, {inside.x, inside.y}, Qt::NoButton);
    ASSERT_TRUE(view->isEditingText());
    field = view->findChild<QTextEdit*>();
    field->insertPlainText(QStringLiteral(" more"));
    key(field, Qt::Key_Escape);
    EXPECT_FALSE(view->isEditingText());
    EXPECT_EQ(elements()[0].kind.textPayload(), "Note");
}

TEST_F(CanvasTest, EscapeGoesToTheHostThenClearsTheSelection) {
    open(400, 300, 1, {400, 300});
    controller->setTool(AnnotationTool::rectangle);
    drag({40, 40}, {140, 140});
    ASSERT_TRUE(controller->state().selectedID);
    key(view.get(), Qt::Key_Escape);
    EXPECT_FALSE(controller->state().selectedID);
    int escapes = 0;
    view->onEscape = [&] { ++escapes; };
    key(view.get(), Qt::Key_Escape);
    EXPECT_EQ(escapes, 1);
}

} // namespace
} // namespace tosvar

#include "AnnotationEditorWindow.h"
#include "FileContents.h"
#include "PngEncoder.h"

#include <QMimeData>
#include <QUrl>
#include <fstream>

namespace tosvar {
namespace {

TEST_F(CanvasTest, ADroppedPictureFileBecomesAnImageWhereItLandsAndOtherDataChangesNothing) {
    open(800, 600, 1, {400, 300});
    MutableImage picture(100, 50);
    picture.fill({0, 200, 0, 255});
    const std::filesystem::path file = std::filesystem::temp_directory_path() / ("tosvar-drop-" + Uuid::random().string() + ".png");
    ASSERT_FALSE(PngEncoder::writeFile(std::move(picture).freeze(), file));
    QMimeData dropped;
    dropped.setUrls({QUrl::fromLocalFile(QString::fromStdString(file.string()))});
    ASSERT_TRUE(view->importPicture(dropped, {100, 75})); // image point (200, 150)
    ASSERT_EQ(elements().size(), 1u);
    ASSERT_TRUE(elements()[0].kind.imagePayload());
    EXPECT_EQ(*elements()[0].geometry.asRect(), Rect(150, 125, 100, 50)) << "centred where it was dropped, at its own size";
    std::filesystem::remove(file);

    QMimeData text;
    text.setText(QStringLiteral("not a picture"));
    EXPECT_FALSE(view->importPicture(text, {100, 75}));
    QMimeData broken;
    broken.setData(QStringLiteral("image/png"), QByteArray(64, 'x'));
    EXPECT_FALSE(view->importPicture(broken, {100, 75}));
    EXPECT_EQ(elements().size(), 1u);
}

TEST(AnnotationEditorWindow, ADraggedImageIsAFileOfItsOwn) {
    const Bytes png{0x89, 'P', 'N', 'G', 1, 2, 3};
    const std::optional<std::filesystem::path> file = AnnotationEditorWindow::writeDragFile(png, "Annotated Image.png");
    ASSERT_TRUE(file);
    EXPECT_EQ(file->filename(), "Annotated Image.png");
    EXPECT_EQ(*readFileBytes(*file), png);
    std::filesystem::remove_all(file->parent_path());
}

} // namespace
} // namespace tosvar
