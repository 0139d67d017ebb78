#pragma once

#include "KeyboardMonitoring.h"
#include "X11KeyboardConnection.h"

#include <map>
#include <set>

namespace tosvar {

// The desktop's key events from XInput2 raw events on the root window: they
// arrive whichever client has the focus, and are not taken from it. Raw
// events carry no modifier state, so the held modifiers are tracked here,
// and a modifier key going down or up is a flags-changed event.
class X11KeyboardMonitor final : public KeyboardMonitoring {
public:
    explicit X11KeyboardMonitor(X11KeyboardConnection& keyboard);
    ~X11KeyboardMonitor() override;

    std::unique_ptr<Token> addMonitor(unsigned eventMask, std::function<void(const KeyEvent&)> handler) override;

private:
    class MonitorToken;
    struct Monitor {
        unsigned mask;
        std::function<void(const KeyEvent&)> handler;
    };

    void removeMonitor(int id);
    void selectRawEvents(bool enabled);
    void handleEvent(const xcb_generic_event_t& event);
    void deliver(const KeyEvent& event);
    std::uint32_t heldFlags() const;

    X11KeyboardConnection& keyboard_;
    std::uint8_t inputOpcode_ = 0;
    int eventToken_ = 0;
    std::map<int, Monitor> monitors_;
    int nextMonitor_ = 1;
    std::set<std::uint32_t> heldModifierKeys_; // macOS key codes 54…62
    std::set<std::uint32_t> heldKeys_;
};

} // namespace tosvar
