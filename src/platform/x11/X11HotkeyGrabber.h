#pragma once

#include "HotkeyGrabbing.h"
#include "X11KeyboardConnection.h"

#include <map>
#include <optional>

namespace tosvar {

// Global hotkeys as passive key grabs on the root window: four grabs per
// combination so Caps Lock and Num Lock do not matter. A grab another client
// holds fails with BadAccess; the server would let us grab one combination
// twice, so a combination we already hold under another id is refused here.
class X11HotkeyGrabber final : public HotkeyGrabbing {
public:
    explicit X11HotkeyGrabber(X11KeyboardConnection& keyboard);
    ~X11HotkeyGrabber() override;

    GrabResult grab(std::uint32_t keyCode, std::uint32_t carbonModifiers, std::uint32_t id) override;
    void release(std::uint32_t id) override;
    void setPressedHandler(std::function<void(std::uint32_t id)> onPressed) override { onPressed_ = std::move(onPressed); }

private:
    struct Grab {
        std::uint32_t keyCode;
        std::uint32_t carbonModifiers;
        xcb_keycode_t xKeycode = 0;
        std::uint16_t xModifiers = 0;
        bool isDown = false;
        xcb_timestamp_t lastRelease = 0;
    };

    GrabResult grabOnServer(Grab& grab);
    void ungrabOnServer(const Grab& grab);
    void handleEvent(const xcb_generic_event_t& event);
    void regrabAll();
    std::optional<std::uint32_t> grabFor(xcb_keycode_t keycode, std::uint16_t state) const;

    X11KeyboardConnection& keyboard_;
    std::map<std::uint32_t, Grab> grabs_;
    std::function<void(std::uint32_t)> onPressed_;
    int eventToken_ = 0;
    int mappingToken_ = 0;
};

} // namespace tosvar
