#pragma once

#include "AccessibleElements.h"
#include "AnnotationEditorServices.h"
#include "DefaultsStore.h"
#include "QtRegionOverlay.h"
#include "WindowListing.h"

#include <functional>

namespace tosvar {

// Makes `QtRegionOverlay`s, offering the windows of `windows` to pick.
class QtRegionOverlayFactory final : public RegionOverlayFactory {
public:
    struct Services {
        WindowListing& windows;
        std::function<Rect()> mainGlobalFrame;
        std::int64_t ownPID = 0;
        DefaultsStore* defaults = nullptr;            // keeps the last region, the loupe's zoom, the hint choice
        std::function<void(const std::string&)> copyText = {}; // a picked colour to the clipboard
        AccessibleElements* elements = nullptr;       // finds the elements Ctrl picks and drags snap to
        std::function<bool()> snapToElements = {};
        std::function<void(std::function<void()>)> runDetached = {}; // wakes programs' accessibility off the main thread
        // A window's own pixels, for a clicked window; none falls back to the frozen display.
        std::function<std::optional<ImageBuffer>(std::uint32_t windowID)> captureWindow = {};
        // Reads a region's text and QR codes, off the main thread, for text capture.
        std::function<std::optional<std::string>(const ImageBuffer& image, double scale)> readText = {};
        // Editing a committed region in place; without it a region is the capture at once.
        std::optional<AnnotationEditorServices> editing = {};
    };

    explicit QtRegionOverlayFactory(Services services) : services_(std::move(services)) {}

    std::unique_ptr<RegionOverlay> make(const ScreenInfo& screen, const std::optional<CapturedDisplay>& frozen, ScreenshotOverlayMode mode,
                                        RegionOverlayCallbacks callbacks) override;

private:
    Services services_;
};

} // namespace tosvar
