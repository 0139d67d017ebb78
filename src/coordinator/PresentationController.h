#pragma once

#include "DefaultsStore.h"

#include <functional>

namespace tosvar {

// Drawing on the live screen.
class PresentationController {
public:
    virtual ~PresentationController() = default;
    virtual bool isActive() const = 0;
    virtual void start(int annotatingMode) = 0;
    virtual void stop() = 0;
    // Drawing on or off while presenting.
    virtual void toggleAnnotate() = 0;

    std::function<void(const Bytes& png)> onSnapshot;
    // Started or stopped.
    std::function<void()> onStateChange;
};

} // namespace tosvar
