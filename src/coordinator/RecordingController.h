#pragma once

#include "Rect.h"
#include "ScreenLayout.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <vector>

namespace tosvar {

enum class RecordingFormat { mp4, gif };

// What to record: a display, optionally only part of it, or one window on it.
// The display is known by its frame in screen points.
struct RecordingTarget {
    Rect displayFrame;
    std::optional<Rect> sourceRect; // display points, top-left origin; none: the whole display
    double scale = 1;               // movie pixels per point
    std::optional<std::uint32_t> windowID;

    // A region or window picked on the screen (points, y up) on the display
    // that holds its middle, else the first it meets; none off every display.
    static std::optional<RecordingTarget> picked(const Rect& screenRect, std::optional<std::uint32_t> windowID,
                                                 const std::vector<ScreenInfo>& screens);
    friend bool operator==(const RecordingTarget&, const RecordingTarget&) = default;
};

// Screen recording: arming, countdown, pause and delivery.
class RecordingController {
public:
    enum class State { idle, countingDown, starting, recording, paused, stopping };

    virtual ~RecordingController() = default;

    virtual State state() const = 0;
    virtual void beginInteractive() = 0;
    virtual void abortCountdown() = 0;
    virtual void stopAndDeliver() = 0;
    virtual void togglePause() = 0;
    virtual void arm(const RecordingTarget& target, RecordingFormat format, bool pinAfterGIF) = 0;

    std::function<void()> onStateChange;
    std::function<void(double elapsed)> onTick;
    std::function<void(const std::filesystem::path& file, const Rect& frame)> onPinCapture;
    std::function<void(const std::filesystem::path& file)> onDeliverFile;

    // countingDown through paused: a session the user started and has not ended.
    static bool isActive(State s) { return s >= State::countingDown && s <= State::paused; }
};

} // namespace tosvar
