#pragma once

#include "AppSettings.h"
#include "CaptureEngine.h"
#include "DefaultsStore.h"
#include "FileManager.h"
#include "MainQueue.h"
#include "MovieFileProcessing.h"
#include "RecordingChrome.h"
#include "RecordingController.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tosvar {

class WorkerPool;

struct ScreenRecorderServices {
    MainQueue& mainQueue;
    // Runs blocking work off the main thread (the shared worker pool in the product).
    std::function<void(std::function<void()>)> runDetached;
    // A capture engine for the settings of one session.
    std::function<std::shared_ptr<CaptureEngine>(const AppSettings&)> makeEngine;
    MovieFileProcessing& processing;
    DefaultsStore& defaults;
    FileManager& files;
    WorkerPool& pool; // dithers GIF frames
    std::function<AppSettings()> settings;
    // Lets the user pick a region or window to record; the pick comes back through `arm`.
    std::function<void()> pickTarget;
    // A short message by its localisation key, with its arguments.
    std::function<void(const std::string& key, const std::vector<std::string>& arguments)> toast;
    std::function<void()> beep;
    // Where a window stands now (global points, top-left origin); none once it is gone.
    std::function<std::optional<Rect>(std::uint32_t windowID)> windowFrame = {};
    // The countdown, brackets and bar; none shows nothing.
    RecordingChrome* chrome = nullptr;
    std::function<std::chrono::system_clock::time_point()> now = [] { return std::chrono::system_clock::now(); };
};

// One screen recording from a known target to the file in the save folder:
// the countdown, the capture engine, pause on the media clock, and on stop
// the MP4 (sound mixed, remuxed) or the GIF, delivered through
// `onDeliverFile`. A second request while it runs stops it. Main thread
// only; build it with std::make_shared, since work in flight holds it weakly.
class ScreenRecorder final : public RecordingController, public std::enable_shared_from_this<ScreenRecorder> {
public:
    explicit ScreenRecorder(ScreenRecorderServices services) : s_(std::move(services)) {}
    ~ScreenRecorder() override;

    State state() const override { return state_; }
    void beginInteractive() override;
    void abortCountdown() override;
    void stopAndDeliver() override;
    void togglePause() override;
    void arm(const RecordingTarget& target, RecordingFormat format, bool pinAfterGIF) override;
    // Stops and keeps nothing.
    void cancelRecording();
    // A recorded region dragged by the bar's grip: `offset` points (y down)
    // from where the drag began; it stays on its display. Windows and whole
    // displays do not move.
    void beginRegionMove();
    void moveRegion(Point offset);

    // Seconds recorded so far, pauses left out.
    double currentElapsed() const;
    // The rectangle recorded, in screen points (y up).
    std::optional<Rect> screenRect() const;

private:
    void setState(State state);
    void countDown(int remaining);
    void startEngine();
    void finish(std::shared_ptr<CaptureEngine> engine, bool keep);
    void deliver(const CaptureEngine::Result& movie);
    void failed(const std::string& logged, const std::string& toastKey);
    // A recorded window is followed four times a second; gone twice, the recording ends.
    void startFollowingWindow();
    void followWindow();

    ScreenRecorderServices s_;
    State state_ = State::idle;
    std::optional<RecordingTarget> target_;
    RecordingFormat format_ = RecordingFormat::mp4;
    bool pinAfterGIF_ = false;
    AppSettings settings_;
    std::shared_ptr<CaptureEngine> engine_;
    TimerHandle countdown_, ticker_, follower_;
    struct FollowStart {
        Rect window; // global, top-left origin
        Rect source; // the recorded rectangle then, display points
    };
    std::optional<FollowStart> followStart_;
    std::optional<Rect> moveStart_; // the recorded rectangle when a grip drag began
    int followMisses_ = 0;
    float audioLevel_ = 0; // as the meter shows it
    std::optional<double> startedAt_, pauseBegan_;
    double pausedAccumulated_ = 0;
};

} // namespace tosvar
