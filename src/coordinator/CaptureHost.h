#pragma once

#include "MainQueue.h"

#include <functional>

namespace tosvar {

// The application shell as the coordinator sees it. The defaults are what
// this product uses; a shell with a window of its own overrides them.
class CaptureHost {
public:
    explicit CaptureHost(MainQueue& mainQueue) : mainQueue_(mainQueue) {}
    virtual ~CaptureHost() = default;

    // Runs `then` once the shell is out of the way: after `extraDelay` seconds
    // on the main queue when above 0, else at once.
    virtual void prepareForCapture(double extraDelay, std::function<void()> then) {
        if (extraDelay > 0) {
            mainQueue_.after(extraDelay, std::move(then));
        } else {
            then();
        }
    }
    // Whether the window stickers anchor to is on screen; there is none by default.
    virtual bool isPinAnchorWindowVisible() const { return false; }
    virtual void captureDidPin(bool /*wasAnchorWindowVisible*/) {}

private:
    MainQueue& mainQueue_;
};

} // namespace tosvar
