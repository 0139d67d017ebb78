// What one pointer move costs the editor's canvas on a 5120x2880 document
// with 50 elements: a selected rectangle dragged by a pixel, and the repaint
// of what that step can change, as the event loop runs it.
#include "QtBenchmarkMain.h"
#include "AnnotationCanvasView.h"
#include "AnnotationElementClipboard.h"
#include "MixedDocument.h"
#include "QtDrawingBackend.h"

#include <QApplication>
#include <QMouseEvent>
#include <benchmark/benchmark.h>

using namespace tosvar;

namespace {

// A main queue that never fires: the benchmark runs no timers.
class IdleQueue final : public MainQueue {
public:
    double now() const override { return 0; }
    TimerHandle after(double, std::function<void()>) override { return {}; }
    TimerHandle every(double, std::function<void()>) override { return {}; }
    void async(std::function<void()>) override {}
};

class NoPasteboard final : public Pasteboard {
public:
    std::int64_t changeCount() const override { return 0; }
    std::int64_t write(const PasteboardContent&) override { return 0; }
    bool isGeneral() const override { return false; }
    std::optional<Bytes> readImagePNG() const override { return std::nullopt; }
};

void send(QWidget& view, QEvent::Type type, QPointF at) {
    QMouseEvent event(type, at, view.mapToGlobal(at), type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton,
                      type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton, {});
    QApplication::sendEvent(&view, &event);
}

void BM_PointerMoveRedraw(benchmark::State& state) {
    const AnnotationRenderer renderer(QtDrawingBackend::shared());
    IdleQueue queue;
    AnnotationElementClipboard clipboard;
    NoPasteboard pasteboard;
    AnnotationEditorController controller(benchmarks::mixedDocument(), renderer, queue, nullptr, {});
    AnnotationCanvasView view(controller, clipboard, pasteboard);
    view.resize(1440, 810);
    view.show();
    QApplication::processEvents(); // the first paint makes the scaled base and the effect bitmaps

    // Grab the first rectangle by its left side and drag it a pixel at a time.
    const AnnotationElement* target = nullptr;
    for (const AnnotationElement& e : controller.document().elements)
        if (e.kind.is(AnnotationKind::Case::rectangle)) {
            target = &e;
            break;
        }
    const Rect box = *target->geometry.asRect();
    const Point grab = view.canvasGeometry().viewPoint({box.minX(), box.midY()});
    send(view, QEvent::MouseButtonPress, {grab.x, grab.y});
    QApplication::processEvents();
    double x = grab.x;
    for (auto _ : state) {
        x += 1;
        send(view, QEvent::MouseMove, {x, grab.y});
        QApplication::processEvents();
    }
    send(view, QEvent::MouseButtonRelease, {x, grab.y});
    const QRect painted = view.lastPaintedRect();
    state.counters["painted_px"] = static_cast<double>(painted.width()) * painted.height();
}
BENCHMARK(BM_PointerMoveRedraw)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

int main(int argc, char** argv) { return tosvar::runQtBenchmarks<QApplication>(argc, argv); }
