#include "X11KeyboardMonitor.h"

#include "Log.h"

#include <cstdlib>
#include <vector>

#include <xcb/xinput.h>

namespace tosvar {

namespace {

std::uint32_t flagOfModifierKey(std::uint32_t macKeyCode)
{
    switch (macKeyCode) {
    case 54:
    case 55: return ModifierFlag::command;
    case 56:
    case 60: return ModifierFlag::shift;
    case 58:
    case 61: return ModifierFlag::option;
    case 59:
    case 62: return ModifierFlag::control;
    default: return 0;
    }
}

} // namespace

class X11KeyboardMonitor::MonitorToken final : public KeyboardMonitoring::Token {
public:
    MonitorToken(X11KeyboardMonitor& owner, int id) : owner_(owner), id_(id) {}
    ~MonitorToken() override { owner_.removeMonitor(id_); }

private:
    X11KeyboardMonitor& owner_;
    int id_;
};

X11KeyboardMonitor::X11KeyboardMonitor(X11KeyboardConnection& keyboard) : keyboard_(keyboard)
{
    xcb_connection_t* connection = keyboard_.connection();
    const xcb_query_extension_reply_t* extension = xcb_get_extension_data(connection, &xcb_input_id);
    if (!extension || !extension->present) {
        logLine("[Hotkeys] the X server has no XInput extension; key monitoring is off");
        return;
    }
    auto* version = xcb_input_xi_query_version_reply(connection, xcb_input_xi_query_version(connection, 2, 0), nullptr);
    const bool hasXI2 = version && version->major_version >= 2;
    std::free(version);
    if (!hasXI2) {
        logLine("[Hotkeys] the X server has no XInput 2; key monitoring is off");
        return;
    }
    inputOpcode_ = extension->major_opcode;
    eventToken_ = keyboard_.addEventHandler([this](const xcb_generic_event_t& event) { handleEvent(event); });
}

X11KeyboardMonitor::~X11KeyboardMonitor()
{
    if (eventToken_)
        keyboard_.removeHandler(eventToken_);
    if (!monitors_.empty())
        selectRawEvents(false);
}

std::unique_ptr<KeyboardMonitoring::Token> X11KeyboardMonitor::addMonitor(unsigned eventMask,
                                                                          std::function<void(const KeyEvent&)> handler)
{
    if (!inputOpcode_)
        return nullptr;
    if (monitors_.empty())
        selectRawEvents(true);
    const int id = nextMonitor_++;
    monitors_[id] = {eventMask, std::move(handler)};
    return std::make_unique<MonitorToken>(*this, id);
}

void X11KeyboardMonitor::removeMonitor(int id)
{
    monitors_.erase(id);
    if (monitors_.empty())
        selectRawEvents(false);
}

void X11KeyboardMonitor::selectRawEvents(bool enabled)
{
    struct {
        xcb_input_event_mask_t header;
        std::uint32_t bits;
    } mask{{XCB_INPUT_DEVICE_ALL_MASTER, 1},
           enabled ? std::uint32_t(XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE) : 0u};
    xcb_input_xi_select_events(keyboard_.connection(), keyboard_.root(), 1, &mask.header);
    xcb_flush(keyboard_.connection());
    if (!enabled) {
        heldKeys_.clear();
        heldModifierKeys_.clear();
    }
}

std::uint32_t X11KeyboardMonitor::heldFlags() const
{
    std::uint32_t flags = 0;
    for (std::uint32_t key : heldModifierKeys_)
        flags |= flagOfModifierKey(key);
    return flags;
}

void X11KeyboardMonitor::handleEvent(const xcb_generic_event_t& event)
{
    if ((event.response_type & 0x7f) != XCB_GE_GENERIC)
        return;
    const auto& generic = reinterpret_cast<const xcb_ge_generic_event_t&>(event);
    if (generic.extension != inputOpcode_)
        return;
    if (generic.event_type != XCB_INPUT_RAW_KEY_PRESS && generic.event_type != XCB_INPUT_RAW_KEY_RELEASE)
        return;
    const auto& raw = reinterpret_cast<const xcb_input_raw_key_press_event_t&>(event);
    const std::optional<std::uint32_t> keyCode = keyboard_.translator().macKeyCode(static_cast<std::uint8_t>(raw.detail));
    if (!keyCode)
        return;
    const bool down = generic.event_type == XCB_INPUT_RAW_KEY_PRESS;
    KeyEvent key;
    key.keyCode = *keyCode;
    key.timestamp = raw.time / 1000.0;
    if (flagOfModifierKey(*keyCode)) {
        const bool changed = down ? heldModifierKeys_.insert(*keyCode).second : heldModifierKeys_.erase(*keyCode) > 0;
        if (!changed)
            return; // a modifier's own key repeat
        key.type = KeyEvent::Type::flagsChanged;
        key.modifierFlags = heldFlags();
    } else {
        key.type = down ? KeyEvent::Type::keyDown : KeyEvent::Type::keyUp;
        key.modifierFlags = heldFlags();
        key.isRepeat = down && !heldKeys_.insert(*keyCode).second;
        if (!down)
            heldKeys_.erase(*keyCode);
    }
    deliver(key);
}

void X11KeyboardMonitor::deliver(const KeyEvent& event)
{
    const auto bit = static_cast<unsigned>(event.type == KeyEvent::Type::keyDown ? EventMask::keyDown
                                           : event.type == KeyEvent::Type::keyUp ? EventMask::keyUp
                                                                                 : EventMask::flagsChanged);
    std::vector<int> ids;
    for (const auto& [id, monitor] : monitors_)
        ids.push_back(id);
    for (int id : ids) {
        const auto found = monitors_.find(id);
        if (found != monitors_.end() && (found->second.mask & bit)) {
            const auto handler = found->second.handler;
            handler(event);
        }
    }
}

} // namespace tosvar
