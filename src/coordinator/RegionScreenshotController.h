#pragma once

#include "AnnotationResult.h"
#include "Rect.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace tosvar {

// What a region session hands back when it ends as a screenshot.
struct RegionAnnotationOutcome {
    AnnotationResult result;
    std::optional<Rect> frame; // screen rectangle of the capture
    bool freshCapture = true;
    double scale = 2;
};

// The frozen-screen selection session. Each request fills one result closure;
// a session that switches mode on the way ends through the session-level
// callback of its final mode instead, so only one closure ever runs.
class RegionScreenshotController {
public:
    virtual ~RegionScreenshotController() = default;

    virtual void capture(std::function<void(const RegionAnnotationOutcome&)> onResult) = 0;
    virtual void captureText(std::function<void(const std::optional<std::string>& text)> onText) = 0;
    virtual void translateRegion(std::function<void(const Bytes& png, const Rect& rect)> onImage) = 0;
    virtual void pickScrollRegion(std::function<void(const Rect& rect, std::optional<std::uint32_t> windowID)> onPicked) = 0;
    // A region or window to record, in screen points; nothing when the session ends without one.
    virtual void pickRecordingRegion(std::function<void(const Rect& rect, std::optional<std::uint32_t> windowID)> onPicked) = 0;

    std::function<void(const RegionAnnotationOutcome&)> onAnnotationResult;
    std::function<void(const Rect& rect, std::optional<std::uint32_t> windowID)> onScrollCaptureRequested;
    // A screenshot session switched to recording mode picked this.
    std::function<void(const Rect& rect, std::optional<std::uint32_t> windowID)> onRecordingRequested;
    std::function<void(const Bytes& png, const Rect& rect)> onTranslationCardRequested;
    std::function<void()> onAudioRecordRequested;
    std::function<void()> onPresentationRequested;
    std::function<void(const std::optional<std::string>& text)> onTextCaptureRequested;
};

} // namespace tosvar
