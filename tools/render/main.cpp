// tosvar-render ELEMENTS.json BASE.png OUT.png
// Flattens a JSON array of annotation elements over a base image at scale 1
// and writes the result as a PNG. Elements that cannot be read or drawn are
// left out and listed on standard error; the exit code is then 1, after the
// image of everything else has been written. Unreadable input writes nothing
// and exits with 2.
#include "AnnotationJson.h"
#include "AnnotationRenderer.h"
#include "FileContents.h"
#include "ParallelFor.h"
#include "PngDecoder.h"
#include "PngEncoder.h"
#include "QtDrawingBackend.h"

#include <QGuiApplication>

#include <cstdio>
#include <string>

using namespace tosvar;

namespace {

int fail(const std::string& message) {
    std::fprintf(stderr, "tosvar-render: %s\n", message.c_str());
    return 2;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: tosvar-render ELEMENTS.json BASE.png OUT.png\n");
        return 2;
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication application(argc, argv);

    const Expected<std::string> json = readFileText(argv[1]);
    if (!json) return fail(std::string("cannot read ") + argv[1] + ": " + json.error().message);
    const AnnotationJson::ElementsReading reading = AnnotationJson::decodeElementsLeniently(*json);
    if (reading.failure) return fail(std::string(argv[1]) + ": " + *reading.failure);

    Expected<ImageBuffer> base = PngDecoder::decodeFile(argv[2]);
    if (!base) return fail(std::string("cannot read the base image ") + argv[2] + ": " + base.error().message);

    const AnnotationDocument document(*base, 1, std::nullopt, reading.elements);
    const AnnotationRenderer renderer(QtDrawingBackend::shared(), [](int count, const std::function<void(int, int)>& body) {
        parallelFor(WorkerPool::shared(), count, static_cast<int>(WorkerPool::shared().threadCount()) * 4, body);
    });
    std::vector<SkippedElement> skipped;
    const std::optional<ImageBuffer> image = renderer.render(document, &skipped);
    if (!image) return fail("the base image has no pixels to draw on");
    if (std::optional<Error> error = PngEncoder::writeFile(*image, argv[3])) {
        return fail(std::string("cannot write ") + argv[3] + ": " + error->message);
    }

    for (const auto& rejected : reading.rejected)
        std::fprintf(stderr, "tosvar-render: element %zu left out: %s\n", rejected.index, rejected.reason.c_str());
    // Indices into the drawn list map back past the rejected ones.
    for (const SkippedElement& s : skipped) {
        std::size_t index = s.index;
        for (const auto& rejected : reading.rejected)
            if (rejected.index <= index) ++index;
        std::fprintf(stderr, "tosvar-render: element %zu not drawn: %s\n", index, s.reason.c_str());
    }
    return reading.rejected.empty() && skipped.empty() ? 0 : 1;
}
