#include "X11KeyboardConnection.h"

#include "Log.h"

#include <QSocketNotifier>

#include <cstdlib>
#include <vector>

// xkb.h names a structure field "explicit", a C++ keyword.
#define explicit explicit_
#include <xcb/xkb.h>
#undef explicit

namespace tosvar {

namespace {

// Calls each handler still registered when its turn comes: a handler may
// remove others, or itself.
template <typename Handler, typename... Arguments>
void notify(const std::map<int, Handler>& handlers, const Arguments&... arguments)
{
    std::vector<int> tokens;
    for (const auto& entry : handlers)
        tokens.push_back(entry.first);
    for (int token : tokens) {
        const auto found = handlers.find(token);
        if (found != handlers.end()) {
            const Handler handler = found->second;
            handler(arguments...);
        }
    }
}

template <typename Reply>
using ReplyPointer = std::unique_ptr<Reply, decltype(&std::free)>;

template <typename Reply>
ReplyPointer<Reply> owned(Reply* reply)
{
    return ReplyPointer<Reply>(reply, &std::free);
}

// Without this a held key arrives as release-press pairs; with it, as presses only.
void requestDetectableAutoRepeat(xcb_connection_t* connection)
{
    auto version = owned(xcb_xkb_use_extension_reply(connection, xcb_xkb_use_extension(connection, 1, 0), nullptr));
    if (!version || !version->supported)
        return;
    const auto flag = XCB_XKB_PER_CLIENT_FLAG_DETECTABLE_AUTO_REPEAT;
    std::free(xcb_xkb_per_client_flags_reply(
        connection, xcb_xkb_per_client_flags(connection, XCB_XKB_ID_USE_CORE_KBD, flag, flag, 0, 0, 0), nullptr));
}

} // namespace

std::unique_ptr<X11KeyboardConnection> X11KeyboardConnection::open()
{
    int screenNumber = 0;
    xcb_connection_t* connection = xcb_connect(nullptr, &screenNumber);
    if (xcb_connection_has_error(connection)) {
        xcb_disconnect(connection);
        logLine("[Hotkeys] no X server for global keys");
        return nullptr;
    }
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (int i = 0; i < screenNumber && screens.rem; ++i)
        xcb_screen_next(&screens);
    return std::unique_ptr<X11KeyboardConnection>(new X11KeyboardConnection(connection, screens.data->root));
}

X11KeyboardConnection::X11KeyboardConnection(xcb_connection_t* connection, xcb_window_t root)
    : connection_(connection), root_(root)
{
    requestDetectableAutoRepeat(connection_);
    readMapping();
    notifier_ = std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(connection_), QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, [this] { dispatchPending(); });
}

X11KeyboardConnection::~X11KeyboardConnection()
{
    notifier_.reset();
    xcb_disconnect(connection_);
}

void X11KeyboardConnection::readMapping()
{
    const xcb_setup_t* setup = xcb_get_setup(connection_);
    XKeyboardMapping mapping;
    mapping.minKeycode = setup->min_keycode;
    mapping.maxKeycode = setup->max_keycode;
    const auto count = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
    auto keyboard = owned(xcb_get_keyboard_mapping_reply(
        connection_, xcb_get_keyboard_mapping(connection_, setup->min_keycode, count), nullptr));
    if (keyboard) {
        mapping.keysymsPerKeycode = keyboard->keysyms_per_keycode;
        const xcb_keysym_t* symbols = xcb_get_keyboard_mapping_keysyms(keyboard.get());
        mapping.keysyms.assign(symbols, symbols + xcb_get_keyboard_mapping_keysyms_length(keyboard.get()));
    }
    auto modifiers = owned(xcb_get_modifier_mapping_reply(connection_, xcb_get_modifier_mapping(connection_), nullptr));
    if (modifiers) {
        mapping.keycodesPerModifier = modifiers->keycodes_per_modifier;
        const xcb_keycode_t* keycodes = xcb_get_modifier_mapping_keycodes(modifiers.get());
        mapping.modifierKeycodes.assign(keycodes, keycodes + xcb_get_modifier_mapping_keycodes_length(modifiers.get()));
    }
    translator_ = std::make_unique<KeyTranslator>(std::move(mapping));
}

int X11KeyboardConnection::addEventHandler(EventHandler handler)
{
    eventHandlers_[nextToken_] = std::move(handler);
    return nextToken_++;
}

int X11KeyboardConnection::addMappingHandler(std::function<void()> handler)
{
    mappingHandlers_[nextToken_] = std::move(handler);
    return nextToken_++;
}

void X11KeyboardConnection::removeHandler(int token)
{
    eventHandlers_.erase(token);
    mappingHandlers_.erase(token);
}

void X11KeyboardConnection::dispatchPending()
{
    while (xcb_generic_event_t* raw = xcb_poll_for_event(connection_)) {
        auto event = owned(raw);
        if ((event->response_type & 0x7f) == XCB_MAPPING_NOTIFY) {
            readMapping();
            notify(mappingHandlers_);
            continue;
        }
        notify(eventHandlers_, *event);
    }
}

} // namespace tosvar
