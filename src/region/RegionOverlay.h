#pragma once

#include "CaptureModeShortcuts.h"
#include "DisplayCapturing.h"
#include "RegionScreenshotController.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace tosvar {

// How an overlay ends the session: one of these runs, once.
struct RegionOverlayCallbacks {
    std::function<void(const RegionAnnotationOutcome&)> onFinish;
    std::function<void(const std::optional<std::string>& text)> onTextCaptured;
    std::function<void(const Rect& rect, std::optional<std::uint32_t> windowID)> onScrollRegion;
    std::function<void(const Rect& rect, std::optional<std::uint32_t> windowID)> onRecordRegion;
    std::function<void(const Bytes& png, const Rect& rect)> onRegionTranslate;
    std::function<void()> onSwitchToAudio;
    std::function<void()> onSwitchToPresentation;
    // The selection moved on to annotating on this overlay's display.
    std::function<void()> onBeganAnnotation;
};

// The selection surface over one display. Shows at once, frozen or not;
// the frozen image may come later.
class RegionOverlay {
public:
    virtual ~RegionOverlay() = default;
    virtual void attachFrozen(const CapturedDisplay& display) = 0;
    virtual bool isFrozen() const = 0;
    virtual void show() = 0;
    virtual void orderOut() = 0;
    virtual void makeKey() = 0;
    virtual bool isKey() const = 0;
    // Window images grabbed ahead, by window id.
    virtual void addWindowImages(const std::map<std::uint32_t, ImageBuffer>& images) = 0;
    // The pointer starts over this overlay: hover what is under it.
    virtual void seedInitialHover() = 0;
};

// Makes the overlay of one display.
class RegionOverlayFactory {
public:
    virtual ~RegionOverlayFactory() = default;
    virtual std::unique_ptr<RegionOverlay> make(const ScreenInfo& screen, const std::optional<CapturedDisplay>& frozen,
                                                ScreenshotOverlayMode mode, RegionOverlayCallbacks callbacks) = 0;
};

} // namespace tosvar
