#include "DisplayFullScreenCapture.h"

#include "Log.h"
#include "PngEncoder.h"

namespace tosvar {

void DisplayFullScreenCapture::captureScreenUnderCursor(
    std::function<void(const std::optional<FullScreenGrab>&)> completion) {
    const std::optional<CapturedDisplay> display = displays_.captureScreenUnderCursor(layout_);
    if (!display) {
        completion(std::nullopt);
        return;
    }
    Expected<std::vector<std::uint8_t>> png = PngEncoder::encode(display->image);
    if (!png) {
        logLine("full screen capture: " + png.error().message);
        completion(std::nullopt);
        return;
    }
    completion(FullScreenGrab{std::move(png).value(), display->screen.frame, display->scale});
}

} // namespace tosvar
