#pragma once

#include "KeyboardMonitoring.h"

#include <cstdint>
#include <functional>
#include <memory>

namespace tosvar {

// Recognises two taps of one modifier key (Command, Option or Control)
// within 0.3 seconds, with no other key or modifier in between.
class DoubleTapMonitor {
public:
    static constexpr double tapWindowSeconds = 0.3;

    // None unless `monitoringAllowed` (the direct channel) and `modifierFlag`
    // is ModifierFlag::command, option or control.
    static std::unique_ptr<DoubleTapMonitor> make(KeyboardMonitoring& keyboard, bool monitoringAllowed,
                                                  std::uint32_t modifierFlag, std::function<void()> handler);

    DoubleTapMonitor(std::uint32_t modifierFlag, std::function<void()> handler);
    void handleFlagsChanged(double timestamp, std::uint32_t modifierFlags);
    void handleKeyDown() { lastTapTime_ = 0; }
    void stop();

private:
    std::uint32_t modifier_;
    std::function<void()> handler_;
    double lastTapTime_ = 0;
    double lastHandledEventTime_ = -1;
    std::unique_ptr<KeyboardMonitoring::Token> flagsMonitor_;
    std::unique_ptr<KeyboardMonitoring::Token> keyDownMonitor_;
};

} // namespace tosvar
