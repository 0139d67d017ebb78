#pragma once

#include "DisplayCapturing.h"
#include "MainQueue.h"

#include <functional>
#include <memory>

namespace tosvar {

// Keeps the first capture after a pause fast: a grab at launch sets up the
// shared-memory segment the display grabs reuse, and one every four minutes
// and after the machine wakes keeps it, and the server's pages behind it,
// warm. The grabs run off the main thread; the display under the pointer is
// looked up on it.
class CaptureWarmer {
public:
    static constexpr double periodSeconds = 240;
    static constexpr double slowMilliseconds = 200;

    using RunDetached = std::function<void(std::function<void()>)>;

    // `displays` must be safe to call from the detached work, which holds it
    // until it is done.
    CaptureWarmer(MainQueue& mainQueue, std::shared_ptr<DisplayCapturing> displays, const ScreenLayout& layout,
                  std::function<bool()> mayCapture, RunDetached runDetached)
        : mainQueue_(mainQueue), displays_(std::move(displays)), layout_(layout), mayCapture_(std::move(mayCapture)),
          runDetached_(std::move(runDetached)) {}

    ~CaptureWarmer() { timer_.cancel(); }
    CaptureWarmer(const CaptureWarmer&) = delete;
    CaptureWarmer& operator=(const CaptureWarmer&) = delete;

    // Once; later calls do nothing.
    void start();
    // One warm-up now, for `reason` ("launch", "periodic", "wake"); nothing
    // without screen access.
    void warm(const char* reason);

private:
    MainQueue& mainQueue_;
    std::shared_ptr<DisplayCapturing> displays_;
    const ScreenLayout& layout_;
    std::function<bool()> mayCapture_;
    RunDetached runDetached_;
    TimerHandle timer_;
    bool started_ = false;
};

} // namespace tosvar
