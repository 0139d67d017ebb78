#include "X11HotkeyGrabber.h"

#include "Log.h"

#include <cstdlib>

namespace tosvar {

namespace {
constexpr std::uint8_t badAccess = 10;
}

X11HotkeyGrabber::X11HotkeyGrabber(X11KeyboardConnection& keyboard) : keyboard_(keyboard)
{
    eventToken_ = keyboard_.addEventHandler([this](const xcb_generic_event_t& event) { handleEvent(event); });
    mappingToken_ = keyboard_.addMappingHandler([this] { regrabAll(); });
}

X11HotkeyGrabber::~X11HotkeyGrabber()
{
    keyboard_.removeHandler(eventToken_);
    keyboard_.removeHandler(mappingToken_);
    for (const auto& [id, grab] : grabs_)
        ungrabOnServer(grab);
    xcb_flush(keyboard_.connection());
}

HotkeyGrabbing::GrabResult X11HotkeyGrabber::grab(std::uint32_t keyCode, std::uint32_t carbonModifiers, std::uint32_t id)
{
    release(id);
    for (const auto& [otherId, other] : grabs_) {
        if (other.keyCode == keyCode && other.carbonModifiers == carbonModifiers)
            return GrabResult::takenByAnotherProgram;
    }
    Grab grab{keyCode, carbonModifiers};
    const GrabResult result = grabOnServer(grab);
    if (result == GrabResult::registered)
        grabs_.emplace(id, grab);
    keyboard_.dispatchPending();
    return result;
}

HotkeyGrabbing::GrabResult X11HotkeyGrabber::grabOnServer(Grab& grab)
{
    const KeyTranslator& translator = keyboard_.translator();
    const std::optional<std::uint8_t> keycode = translator.xKeycode(grab.keyCode);
    if (!keycode)
        return GrabResult::unknownKey;
    grab.xKeycode = *keycode;
    grab.xModifiers = translator.xModifiers(grab.carbonModifiers);
    xcb_connection_t* connection = keyboard_.connection();
    std::vector<xcb_void_cookie_t> cookies;
    for (std::uint16_t locks : translator.lockVariants()) {
        cookies.push_back(xcb_grab_key_checked(connection, 1, keyboard_.root(), grab.xModifiers | locks, grab.xKeycode,
                                               XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
    }
    bool taken = false;
    for (xcb_void_cookie_t cookie : cookies) {
        if (xcb_generic_error_t* error = xcb_request_check(connection, cookie)) {
            taken = taken || error->error_code == badAccess;
            if (error->error_code != badAccess)
                logLine("[Hotkeys] grab failed with X error " + std::to_string(error->error_code));
            std::free(error);
        }
    }
    if (taken) {
        ungrabOnServer(grab);
        return GrabResult::takenByAnotherProgram;
    }
    return GrabResult::registered;
}

void X11HotkeyGrabber::ungrabOnServer(const Grab& grab)
{
    for (std::uint16_t locks : keyboard_.translator().lockVariants())
        xcb_ungrab_key(keyboard_.connection(), grab.xKeycode, keyboard_.root(), grab.xModifiers | locks);
}

void X11HotkeyGrabber::release(std::uint32_t id)
{
    const auto found = grabs_.find(id);
    if (found == grabs_.end())
        return;
    ungrabOnServer(found->second);
    xcb_flush(keyboard_.connection());
    grabs_.erase(found);
}

void X11HotkeyGrabber::regrabAll()
{
    // The keycodes and modifier bits may have moved: grab everything anew.
    for (auto& [id, grab] : grabs_) {
        ungrabOnServer(grab);
        if (grabOnServer(grab) != GrabResult::registered)
            logLine("[Hotkeys] hotkey " + std::to_string(id) + " lost after a keyboard mapping change");
    }
    xcb_flush(keyboard_.connection());
}

std::optional<std::uint32_t> X11HotkeyGrabber::grabFor(xcb_keycode_t keycode, std::uint16_t state) const
{
    const KeyTranslator& translator = keyboard_.translator();
    const auto relevant = static_cast<std::uint16_t>(XModifier::shift | XModifier::control | translator.altMask()
                                                     | translator.superMask());
    for (const auto& [id, grab] : grabs_) {
        if (grab.xKeycode == keycode && (state & relevant) == grab.xModifiers)
            return id;
    }
    return std::nullopt;
}

void X11HotkeyGrabber::handleEvent(const xcb_generic_event_t& event)
{
    const std::uint8_t type = event.response_type & 0x7f;
    if (type != XCB_KEY_PRESS && type != XCB_KEY_RELEASE)
        return;
    const auto& key = reinterpret_cast<const xcb_key_press_event_t&>(event);
    if (type == XCB_KEY_RELEASE) {
        // The modifiers may already be up: the key alone ends the press.
        for (auto& [id, grab] : grabs_) {
            if (grab.xKeycode == key.detail && grab.isDown) {
                grab.isDown = false;
                grab.lastRelease = key.time;
            }
        }
        return;
    }
    const std::optional<std::uint32_t> id = grabFor(key.detail, key.state);
    if (!id)
        return;
    Grab& grab = grabs_.at(*id);
    // A held key repeats as presses, or as release-press pairs that share one time.
    const bool repeat = grab.isDown || key.time == grab.lastRelease;
    grab.isDown = true;
    if (!repeat && onPressed_)
        onPressed_(*id);
}

} // namespace tosvar
