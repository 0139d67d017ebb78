#include "GoldenImages.h"

#include "PngDecoder.h"
#include "PngEncoder.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>

namespace tosvar {

namespace {

bool updating() {
    const char* value = std::getenv("TOSVAR_UPDATE_GOLDENS");
    return value && std::strcmp(value, "1") == 0;
}

std::filesystem::path outputFolder() {
    const char* chosen = std::getenv("TOSVAR_TEST_OUTPUT");
    std::filesystem::path folder = chosen && *chosen ? std::filesystem::path(chosen)
                                                     : std::filesystem::temp_directory_path() / "tosvar-golden-failures";
    std::filesystem::create_directories(folder);
    return folder;
}

int channelDelta(Rgba8 a, Rgba8 b) {
    return std::max({std::abs(a.r - b.r), std::abs(a.g - b.g), std::abs(a.b - b.b), std::abs(a.a - b.a)});
}

} // namespace

::testing::AssertionResult matchesGolden(const ImageBuffer& actual, const std::filesystem::path& golden, ImageTolerance tolerance) {
    if (updating()) {
        if (std::optional<Error> error = PngEncoder::writeFile(actual, golden))
            return ::testing::AssertionFailure() << "cannot write " << golden << ": " << error->message;
        return ::testing::AssertionSuccess();
    }
    const Expected<ImageBuffer> expected = PngDecoder::decodeFile(golden);
    if (!expected) {
        return ::testing::AssertionFailure() << "no reference image at " << golden << " (" << expected.error().message
                                             << "); run the test with TOSVAR_UPDATE_GOLDENS=1 to make it";
    }
    const std::string name = golden.stem().string();
    const std::filesystem::path folder = outputFolder();
    auto keep = [&] {
        (void)PngEncoder::writeFile(actual, folder / (name + ".actual.png"));
        (void)PngEncoder::writeFile(*expected, folder / (name + ".expected.png"));
    };
    if (expected->width() != actual.width() || expected->height() != actual.height()) {
        keep();
        return ::testing::AssertionFailure() << name << ": size " << actual.width() << "x" << actual.height() << " differs from the reference's "
                                             << expected->width() << "x" << expected->height() << "; images in " << folder;
    }
    int differing = 0, worst = 0;
    MutableImage map(actual.width(), actual.height());
    for (int y = 0; y < actual.height(); ++y) {
        for (int x = 0; x < actual.width(); ++x) {
            const int delta = channelDelta(actual.pixel(x, y), expected->pixel(x, y));
            worst = std::max(worst, delta);
            if (delta > tolerance.channelTolerance) {
                ++differing;
                map.setPixel(x, y, {255, 0, 0, 255});
            }
        }
    }
    if (differing <= tolerance.differingPixels) return ::testing::AssertionSuccess();
    keep();
    (void)PngEncoder::writeFile(std::move(map).freeze(), folder / (name + ".diff.png"));
    return ::testing::AssertionFailure() << name << ": " << differing << " pixels differ by more than " << tolerance.channelTolerance
                                         << " (allowed " << tolerance.differingPixels << ", largest difference " << worst
                                         << "); actual, reference and difference map in " << folder;
}

} // namespace tosvar
