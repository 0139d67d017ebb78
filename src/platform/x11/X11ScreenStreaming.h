#pragma once

#include "ScreenStreaming.h"
#include "WindowListing.h"

#include <string>

namespace tosvar {

// Screen frames from the X server: the root window's pixels of the captured
// rectangle through shared memory, taken only when DAMAGE reports a change
// or the pointer moved, with the pointer drawn in from XFixes. A root grab
// shows every window on screen: our own windows cannot be filtered out, so
// the program keeps its chrome outside the captured rectangle instead.
class X11ScreenStreaming final : public ScreenStreaming {
public:
    // `mainGlobalFrame`: where the main display stands on the root window, in
    // points; `pointScale`: root pixels per point; `windows` (may be null):
    // the window list that shareable content reports.
    X11ScreenStreaming(Rect mainGlobalFrame, double pointScale, WindowListing* windows, std::string display = {});

    Expected<ShareableContent> shareableContent() override;
    Expected<std::unique_ptr<ScreenStream>> startStream(const ContentFilter& filter,
                                                        const StreamConfiguration& configuration,
                                                        ScreenStreamHandlers handlers) override;

private:
    Rect mainGlobalFrame_;
    double pointScale_;
    WindowListing* windows_;
    std::string display_;
};

} // namespace tosvar
