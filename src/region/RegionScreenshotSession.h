#pragma once

#include "EarlyDisplayFreeze.h"
#include "MainQueue.h"
#include "RegionOverlay.h"
#include "ScreenCapturePermission.h"
#include "ScreenLayout.h"
#include "WindowListing.h"

#include <algorithm>
#include <memory>
#include <vector>

namespace tosvar {

// One capture session over the frozen screens, for every mode that picks a
// region. The overlays show at once, over the live screen if need be: the
// display under the pointer is waited for 80 ms at most, the rest freeze in
// the background and attach when they land. Exactly one result closure runs
// per session, whatever mode it ends in. Late results of an earlier session
// are recognised by its generation and dropped. Main thread only; grabs run
// through `runDetached`.
class RegionScreenshotSession final : public RegionScreenshotController,
                                      public std::enable_shared_from_this<RegionScreenshotSession> {
public:
    struct Services {
        std::shared_ptr<DisplayCapturing> displays;
        const ScreenLayout& layout;
        WindowListing& windows;
        RegionOverlayFactory& overlays;
        ScreenCapturePermission& permission;
        MainQueue& queue;
        EarlyDisplayFreeze::RunDetached runDetached;
        std::function<void()> beep;
        std::function<void(std::string_view key, double seconds)> toast;
        std::int64_t ownPID = 0;
        // A screen grab that would see the overlays (an X11 root grab does):
        // every display is then frozen before anything shows.
        bool grabsSeeOverlays = false;
        // Takes our own transient windows (toasts) off the screen before
        // such a grab, so the freeze does not hold them.
        std::function<void()> hideChrome = {};
    };

    static constexpr std::chrono::milliseconds earlyFreezeDeadline = EarlyDisplayFreeze::deadline;
    static constexpr double keyFocusFallbackSeconds = 2.0;

    static std::shared_ptr<RegionScreenshotSession> make(Services services);

    void capture(std::function<void(const RegionAnnotationOutcome&)> onResult) override;
    void captureText(std::function<void(const std::optional<std::string>& text)> onText) override;
    void translateRegion(std::function<void(const Bytes& png, const Rect& rect)> onImage) override;
    void pickScrollRegion(std::function<void(const Rect& rect, std::optional<std::uint32_t> windowID)> onPicked) override;
    void pickRecordingRegion(std::function<void(const Rect& rect, std::optional<std::uint32_t> windowID)> onPicked) override;

    bool isActive() const { return !overlays_.empty(); }
    // The overlays still standing (those of displays that failed are dropped).
    std::size_t overlayCount() const {
        return static_cast<std::size_t>(std::count_if(overlays_.begin(), overlays_.end(), [](const auto& o) { return o != nullptr; }));
    }
    int generation() const { return generation_; }
    // Ends the session from outside, as a cancel.
    void cancel();

private:
    explicit RegionScreenshotSession(Services services) : s_(std::move(services)) {}

    void begin(ScreenshotOverlayMode mode, RegionOverlayCallbacks callbacks);
    bool hasOpenMenu(const std::vector<WindowInfo>& list) const;
    void presentOverlays(ScreenshotOverlayMode mode, RegionOverlayCallbacks callbacks,
                         const std::vector<std::optional<CapturedDisplay>>& frozen, bool menuPath);
    void attachCaptures(const std::vector<std::optional<CapturedDisplay>>& captures);
    void grantKeyFocus();
    void dismiss();
    void keepOnly(std::size_t index);
    void retire(std::unique_ptr<RegionOverlay> overlay);

    Services s_;
    std::vector<ScreenInfo> screens_;
    std::vector<std::unique_ptr<RegionOverlay>> overlays_; // by screen; null once dropped
    bool finished_ = true;
    std::function<void()> finishAsCancelled_; // ends the session as its mode cancels
    int generation_ = 0;
};

} // namespace tosvar
