#pragma once

#include "DisplayCapturing.h"
#include "MainQueue.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

namespace tosvar {

// The display under the pointer, grabbed off the main thread as soon as a
// session starts, so the overlay can wait for it a short while and, when it
// comes later, still receive it.
class EarlyDisplayFreeze : public std::enable_shared_from_this<EarlyDisplayFreeze> {
public:
    using Clock = std::chrono::steady_clock;
    using RunDetached = std::function<void(std::function<void()>)>;
    // How long a session waits for the freeze before it goes on without it.
    static constexpr std::chrono::milliseconds deadline{80};

    // Starts the grab of `screen` through `runDetached`. `displays` must be
    // safe to call there; the work holds it until it is done.
    static std::shared_ptr<EarlyDisplayFreeze> begin(std::shared_ptr<DisplayCapturing> displays, const ScreenInfo& screen,
                                                     const RunDetached& runDetached);

    // The grab, once it is done before `until`; none at the time-out. Once
    // done, every later call answers at once.
    std::optional<CapturedDisplay> wait(Clock::time_point until);
    // Hands the grab, whenever it is done, to `completion` on the main thread.
    void onCompletion(MainQueue& mainQueue, const RunDetached& runDetached,
                      std::function<void(const std::optional<CapturedDisplay>&)> completion);

private:
    EarlyDisplayFreeze() = default;
    void finish(std::optional<CapturedDisplay> captured);

    std::mutex mutex_;
    std::condition_variable doneChanged_;
    bool done_ = false;
    std::optional<CapturedDisplay> captured_; // written before `done_`, read after it
};

} // namespace tosvar
