#pragma once

#include "Rect.h"

#include <functional>

namespace tosvar {

// What surrounds a screen recording on the screen: the countdown before it,
// the brackets around what is recorded and the bar with its time and
// buttons while it runs. Rectangles are in screen points (y up). Main thread.
class RecordingChrome {
public:
    struct Actions {
        std::function<void()> stop;
        std::function<void()> togglePause;
        std::function<void()> cancel;
        // A region (not a window or a whole display) can be dragged by the bar's grip:
        // none for the others. The offset is in points from where the drag began.
        std::function<void()> moveBegan = {};
        std::function<void(Point offset)> move = {};
        // Whether the bar shows a sound meter: an MP4 with the system's sound or the microphone.
        bool showsAudioMeter = false;
    };

    virtual ~RecordingChrome() = default;
    // The seconds left before the recording starts, over its rectangle; 0 takes the countdown away.
    virtual void showCountdown(const Rect& region, int remaining) = 0;
    virtual void showRecording(const Rect& region, Actions actions) = 0;
    // The recorded rectangle moved (its window did).
    virtual void follow(const Rect& region) = 0;
    virtual void setElapsed(double seconds) = 0;
    virtual void setPaused(bool paused) = 0;
    // The sound's level, 0...1, for the bar's meter; only recordings with sound report it.
    virtual void setAudioLevel(float level) = 0;
    // The share of a GIF made so far, 0...1; 1 takes the progress away.
    virtual void showExportProgress(double fraction) = 0;
    // Everything goes.
    virtual void close() = 0;
};

} // namespace tosvar
