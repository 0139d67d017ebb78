#pragma once

#include "Expected.h"
#include "MediaSamples.h"
#include "Rect.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace tosvar {

// A display that can be captured, known by where it stands: its frame in
// screen points (bottom-left origin, as `ScreenInfo` has it).
struct ShareableDisplay {
    Rect frame;
    double scale = 1; // pixels per point
    friend bool operator==(const ShareableDisplay&, const ShareableDisplay&) = default;
};

struct ShareableWindow {
    std::uint32_t id = 0;
    std::int64_t ownerPID = 0;
    Rect frame; // global points, top-left origin
    friend bool operator==(const ShareableWindow&, const ShareableWindow&) = default;
};

struct ShareableContent {
    std::vector<ShareableDisplay> displays;
    std::vector<ShareableWindow> windows;

    const ShareableDisplay* display(const Rect& frame) const {
        for (const ShareableDisplay& d : displays)
            if (d.frame == frame) return &d;
        return nullptr;
    }
    const ShareableWindow* window(std::uint32_t id) const {
        for (const ShareableWindow& w : windows)
            if (w.id == id) return &w;
        return nullptr;
    }
};

// What of a display a stream shows.
struct ContentFilter {
    enum class Kind {
        display, // everything except the windows of `excludedProcesses`, though `windows` stay
        windows, // only `windows`
    };
    Rect displayFrame;
    Kind kind = Kind::display;
    std::vector<std::int64_t> excludedProcesses;
    std::vector<std::uint32_t> windows;
    friend bool operator==(const ContentFilter&, const ContentFilter&) = default;
};

struct StreamConfiguration {
    int width = 0; // pixels of the delivered frames
    int height = 0;
    std::optional<Rect> sourceRect; // display points, top-left origin; none: the whole display
    int fps = 30;                   // at most this many frames a second
    bool showsCursor = true;
    int queueDepth = 6;
    friend bool operator==(const StreamConfiguration&, const StreamConfiguration&) = default;
};

// A running screen capture. Frames come on a thread of the stream's own, and
// only when the picture changed.
class ScreenStream {
public:
    virtual ~ScreenStream() = default;
    virtual std::optional<Error> updateConfiguration(const StreamConfiguration& configuration) = 0;
    virtual std::optional<Error> updateContentFilter(const ContentFilter& filter) = 0;
    // Returns once no frame is being delivered any more.
    virtual void stop() = 0;
};

struct ScreenStreamHandlers {
    std::function<void(VideoFrame)> onFrame;
    std::function<void(const Error&)> onStopped; // the stream died by itself
};

// The screen as a source of frames. Any thread; calls may block briefly.
class ScreenStreaming {
public:
    virtual ~ScreenStreaming() = default;
    virtual Expected<ShareableContent> shareableContent() = 0;
    virtual Expected<std::unique_ptr<ScreenStream>> startStream(const ContentFilter& filter,
                                                                const StreamConfiguration& configuration,
                                                                ScreenStreamHandlers handlers) = 0;
};

} // namespace tosvar
