#include "EarlyDisplayFreeze.h"

namespace tosvar {

std::shared_ptr<EarlyDisplayFreeze> EarlyDisplayFreeze::begin(std::shared_ptr<DisplayCapturing> displays,
                                                              const ScreenInfo& screen, const RunDetached& runDetached) {
    std::shared_ptr<EarlyDisplayFreeze> freeze(new EarlyDisplayFreeze);
    runDetached([freeze, displays = std::move(displays), screen] { freeze->finish(displays->capture(screen)); });
    return freeze;
}

void EarlyDisplayFreeze::finish(std::optional<CapturedDisplay> captured) {
    {
        const std::lock_guard lock(mutex_);
        captured_ = std::move(captured);
        done_ = true;
    }
    doneChanged_.notify_all();
}

std::optional<CapturedDisplay> EarlyDisplayFreeze::wait(Clock::time_point until) {
    std::unique_lock lock(mutex_);
    if (!doneChanged_.wait_until(lock, until, [this] { return done_; })) return std::nullopt;
    return captured_;
}

void EarlyDisplayFreeze::onCompletion(MainQueue& mainQueue, const RunDetached& runDetached,
                                      std::function<void(const std::optional<CapturedDisplay>&)> completion) {
    runDetached([self = shared_from_this(), &mainQueue, completion = std::move(completion)] {
        std::optional<CapturedDisplay> captured;
        {
            std::unique_lock lock(self->mutex_);
            self->doneChanged_.wait(lock, [&] { return self->done_; });
            captured = self->captured_;
        }
        mainQueue.async([completion, captured = std::move(captured)] { completion(captured); });
    });
}

} // namespace tosvar
