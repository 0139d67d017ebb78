#pragma once

#include "AnnotationEditorController.h"
#include "InMemoryDefaultsStore.h"
#include "VirtualMainQueue.h"

#include <memory>

namespace tosvar::editing {

// Half an em per character and one em per line, so text boxes can be worked
// out by hand. Makes no canvases: these tests never flatten.
class StandInBackend final : public DrawingBackend {
public:
    class Face final : public TextMeasuring {
    public:
        FontLineMetrics metrics(double fontSize) const override { return {0.75 * fontSize, 0.25 * fontSize, 0}; }
        double lineWidth(std::string_view line, double fontSize) const override {
            return 0.5 * fontSize * static_cast<double>(line.size());
        }
    };
    std::unique_ptr<ImageCanvas> makeCanvas(int, int) const override { return nullptr; }
    std::unique_ptr<ImageCanvas> makeCanvas(const ImageBuffer&) const override { return nullptr; }
    const TextMeasuring& measuring(FontFace) const override { return face_; }

private:
    Face face_;
};

inline ImageBuffer blankImage(int width = 800, int height = 600) {
    MutableImage image(width, height);
    image.fill({255, 255, 255, 255});
    return std::move(image).freeze();
}

// A controller over an 800x600 white image, with its queue and defaults.
struct EditorFixture {
    StandInBackend backend;
    AnnotationRenderer renderer{backend};
    VirtualMainQueue queue;
    InMemoryDefaultsStore defaults;
    std::unique_ptr<AnnotationEditorController> editor;

    explicit EditorFixture(AnnotationEditorController::Configuration configuration = {}) { open(configuration); }

    void open(AnnotationEditorController::Configuration configuration = {}) {
        editor = std::make_unique<AnnotationEditorController>(AnnotationDocument(blankImage(), 1), renderer, queue, &defaults, configuration);
    }

    // A press, drags through the points, and a release.
    void drag(Point from, std::initializer_list<Point> through, bool constrained = false) {
        editor->pointerDown(from, constrained, false, false);
        for (Point p : through) editor->pointerDragged(p, constrained, false);
        editor->pointerUp();
    }

    const std::vector<AnnotationElement>& elements() const { return editor->document().elements; }
};

} // namespace tosvar::editing
