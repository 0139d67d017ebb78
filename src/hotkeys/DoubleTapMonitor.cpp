#include "DoubleTapMonitor.h"

namespace tosvar {

std::unique_ptr<DoubleTapMonitor> DoubleTapMonitor::make(KeyboardMonitoring& keyboard, bool monitoringAllowed,
                                                         std::uint32_t modifierFlag, std::function<void()> handler)
{
    const bool tappable = modifierFlag == ModifierFlag::command || modifierFlag == ModifierFlag::option
                          || modifierFlag == ModifierFlag::control;
    if (!monitoringAllowed || !tappable)
        return nullptr;
    auto monitor = std::make_unique<DoubleTapMonitor>(modifierFlag, std::move(handler));
    DoubleTapMonitor* self = monitor.get();
    monitor->flagsMonitor_ = keyboard.addMonitor(static_cast<unsigned>(KeyboardMonitoring::EventMask::flagsChanged),
                                                 [self](const KeyEvent& event) {
                                                     self->handleFlagsChanged(event.timestamp, event.modifierFlags);
                                                 });
    monitor->keyDownMonitor_ = keyboard.addMonitor(static_cast<unsigned>(KeyboardMonitoring::EventMask::keyDown),
                                                   [self](const KeyEvent&) { self->handleKeyDown(); });
    return monitor;
}

DoubleTapMonitor::DoubleTapMonitor(std::uint32_t modifierFlag, std::function<void()> handler)
    : modifier_(modifierFlag), handler_(std::move(handler))
{
}

void DoubleTapMonitor::handleFlagsChanged(double timestamp, std::uint32_t modifierFlags)
{
    // One event may arrive through more than one monitor.
    if (timestamp == lastHandledEventTime_)
        return;
    lastHandledEventTime_ = timestamp;
    const std::uint32_t held = modifierFlags & ModifierFlag::deviceIndependent;
    if (held == modifier_) {
        if (lastTapTime_ > 0 && timestamp - lastTapTime_ <= tapWindowSeconds) {
            lastTapTime_ = 0;
            if (handler_)
                handler_();
        } else {
            lastTapTime_ = timestamp;
        }
    } else if (held != 0) {
        lastTapTime_ = 0; // a chord with another modifier breaks the tap
    }
}

void DoubleTapMonitor::stop()
{
    flagsMonitor_.reset();
    keyDownMonitor_.reset();
}

} // namespace tosvar
