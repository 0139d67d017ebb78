#pragma once

#include "AudioCapturing.h"
#include "AudioLevel.h"
#include "Expected.h"
#include "MainQueue.h"
#include "MovieWriter.h"
#include "RecordingController.h"
#include "ScreenStreaming.h"
#include "SerialQueue.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <variant>
#include <vector>

namespace tosvar {

struct CaptureEngineServices {
    MainQueue& mainQueue;
    // Runs blocking work off the main thread (the shared worker pool in the product).
    std::function<void(std::function<void()>)> runDetached;
    ScreenStreaming& screen;
    AudioCapturing& audio;
    MovieEncoderFactory makeEncoder;
    std::filesystem::path temporaryDirectory;
    std::int64_t ownProcessID = 0;
};

// One screen recording's capture: a screen stream, the system's sound and
// the microphone, written to a temporary movie by `MovieWriter`. It can move
// the captured rectangle and admit the program's own overlay windows while
// it runs. Used once: start, any of pause, resume, updateSourceRect and
// includeOwnWindows, then stop or cancel.
//
// Threads: every public operation is called on the main thread, and every
// completion comes back there; blocking platform calls run detached. Frames
// and sound go through the serial sample queue, which alone touches the
// writer and the paused flag while the capture runs. Build it with `make`:
// work in flight keeps the engine alive.
class CaptureEngine : public std::enable_shared_from_this<CaptureEngine> {
public:
    // What the stream's filter is rebuilt from when the admitted windows change.
    struct DisplayRecipe {
        Rect displayFrame;
    };
    struct WindowsRecipe {
        Rect displayFrame;
        std::vector<std::uint32_t> windowIDs;
    };
    using FilterRecipe = std::variant<DisplayRecipe, WindowsRecipe>;

    struct Result {
        std::filesystem::path url;
        double duration = 0;
        int appendedFrames = 0;
        int droppedFrames = 0;
    };

    static std::shared_ptr<CaptureEngine> make(CaptureEngineServices services, int fps, bool showsCursor,
                                               bool capturesSystemAudio, bool capturesMic);
    ~CaptureEngine();

    std::function<void(const Error&)> onRuntimeError; // main thread: the stream died by itself
    std::function<void(float level)> onAudioLevel;    // sample queue, at most 20 a second; set before `start`

    void start(const RecordingTarget& target, std::function<void(std::optional<Error>)> completion);
    void pause();
    void resume();
    // Moves the captured rectangle (display points, top-left origin). During a
    // drag only the newest rectangle reaches the stream, one update at a time.
    void updateSourceRect(const Rect& rect);
    // Lets these windows of ours into the movie; a no-op without a stream or ids.
    void includeOwnWindows(std::vector<std::uint32_t> ids, std::function<void(std::optional<Error>)> completion);
    // Both may come while `start` is still under way: they wait for it.
    void stop(std::function<void(Expected<Result>)> completion);
    // Stops and removes the temporary movie.
    void cancel(std::function<void()> completion);

    bool hasStream() const { return running_.has_value(); }

    // The stream's filter: the display without our windows, except those
    // admitted; or only the recipe's windows and those admitted. None when the
    // display or every window is gone.
    static std::optional<ContentFilter> filter(const FilterRecipe& recipe, const std::vector<std::uint32_t>& including,
                                               const ShareableContent& content, std::int64_t ownProcessID);

private:
    struct Intake;
    struct Running {
        std::shared_ptr<ScreenStream> stream;
        StreamConfiguration configuration;
        FilterRecipe recipe;
        std::unique_ptr<AudioCaptureStream> systemAudio;
        std::unique_ptr<AudioCaptureStream> microphone;
    };

    CaptureEngine(CaptureEngineServices services, int fps, bool showsCursor, bool capturesSystemAudio,
                  bool capturesMic);
    Expected<Running> startCapture(const RecordingTarget& target); // detached
    void applyPendingSourceRect();
    void admitWindows(std::vector<std::uint32_t> ids, bool retried,
                      std::function<void(std::optional<Error>)> completion);
    void shutDown(std::function<void(std::unique_ptr<MovieWriter>)> then);

    CaptureEngineServices services_;
    int fps_;
    bool showsCursor_;
    bool capturesSystemAudio_;
    bool capturesMic_;
    std::shared_ptr<SerialQueue> sampleQueue_;
    std::shared_ptr<Intake> intake_;
    std::optional<Running> running_;
    std::optional<Rect> pendingSourceRect_;
    bool isApplyingSourceRect_ = false;
    bool isStarting_ = false;
    std::function<void()> afterStart_; // a stop or cancel asked for while starting
};

} // namespace tosvar
