// The editor's output is the renderer's flatten of what the user drew, made
// off the main thread.
#include "AnnotationEditorController.h"
#include "InMemoryDefaultsStore.h"
#include "PngDecoder.h"
#include "QtDrawingBackend.h"
#include "TestApplication.h"
#include "VirtualMainQueue.h"

#include <QGuiApplication>
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace tosvar {
namespace {

ImageBuffer screen() {
    MutableImage image(320, 200);
    for (int y = 0; y < 200; ++y)
        for (int x = 0; x < 320; ++x) image.setPixel(x, y, {static_cast<std::uint8_t>(x * 255 / 320), 200, 180, 255});
    return std::move(image).freeze();
}

TEST(EditorOutput, TheBackgroundFlattenIsTheRenderersImageOfTheDocument) {
    testApplication<QGuiApplication>();
    VirtualMainQueue queue;
    InMemoryDefaultsStore defaults;
    const AnnotationRenderer renderer(QtDrawingBackend::shared());
    AnnotationEditorController editor(AnnotationDocument(screen(), 1), renderer, queue, &defaults, {});
    editor.setTool(AnnotationTool::rectangle);
    editor.pointerDown({20, 20}, false, false, false);
    editor.pointerDragged({150, 120}, false, false);
    editor.pointerUp();
    editor.setTool(AnnotationTool::blur);
    editor.pointerDown({160, 40}, false, false, false);
    editor.pointerDragged({300, 180}, false, false);
    editor.pointerUp();

    WorkerPool pool(1, "test-flatten");
    std::optional<std::optional<Bytes>> result;
    editor.flattenPNGInBackground(pool, [&](std::optional<Bytes> png) { result = std::move(png); });
    editor.setTool(AnnotationTool::arrow); // editing goes on; the copy is what gets flattened
    editor.pointerDown({10, 190}, false, false, false);
    editor.pointerDragged({300, 10}, false, false);
    editor.pointerUp();
    for (int i = 0; i < 10000 && !result; ++i) {
        queue.runUntilIdle();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    ASSERT_TRUE(result && *result);
    const Expected<ImageBuffer> decoded = PngDecoder::decode(**result);
    ASSERT_TRUE(decoded);

    AnnotationDocument before(screen(), 1, std::nullopt, editor.document().elements);
    before.elements.pop_back(); // the arrow came after the flatten began
    const std::optional<ImageBuffer> expected = renderer.render(before);
    ASSERT_TRUE(expected);
    EXPECT_TRUE(decoded->samePixels(*expected));
    EXPECT_FALSE(decoded->samePixels(*renderer.render(AnnotationDocument(screen(), 1)))) << "the drawing is in it";
}

} // namespace
} // namespace tosvar
