#pragma once

#include "AppSettings.h"

#include <filesystem>
#include <functional>
#include <string>

namespace tosvar {

// Sound-only recording.
class AudioRecordingController {
public:
    enum class State { idle, recording, paused };
    enum class Ending { keep, discard };

    virtual ~AudioRecordingController() = default;

    virtual State state() const = 0;
    virtual void start(const AppSettings& settings) = 0;
    virtual void stop(Ending ending) = 0;
    virtual void togglePause() = 0;
    // Asks the user whether to throw the recording away; `completion` says whether they did.
    virtual void confirmDiscard(std::function<void(bool discarded)> completion) = 0;

    std::function<void()> onStateChange;
    std::function<void(double elapsed)> onTick;
    std::function<void(float level)> onAudioLevel;
    std::function<void(const std::filesystem::path& file)> onFinished;
    std::function<void(const std::string& error)> onFailure;
};

// The floating panel of a running sound recording.
class AudioRecordingHUD {
public:
    virtual ~AudioRecordingHUD() = default;
    virtual void show(std::function<void()> onPause, std::function<void()> onStop, std::function<void()> onDiscard) = 0;
    virtual void close() = 0;
    virtual void setPaused(bool paused) = 0;
    virtual void setElapsed(double seconds) = 0;
    virtual void report(float level) = 0;
    // Remembers where the panel stood, then closes it.
    virtual void storeFrameAndClose() = 0;
};

} // namespace tosvar
