#pragma once

#include "KeyTranslator.h"

#include <functional>
#include <map>
#include <memory>

#include <xcb/xcb.h>

class QSocketNotifier;

namespace tosvar {

// Our own connection to the X server for keys: global hotkeys and the
// keyboard monitor. It lives on the main thread; the Qt event loop wakes it
// when the server has sent something. It keeps the keyboard mapping and
// reads it again when the server announces a new one.
class X11KeyboardConnection {
public:
    using EventHandler = std::function<void(const xcb_generic_event_t&)>;

    // None when no X server answers on $DISPLAY.
    static std::unique_ptr<X11KeyboardConnection> open();
    ~X11KeyboardConnection();
    X11KeyboardConnection(const X11KeyboardConnection&) = delete;
    X11KeyboardConnection& operator=(const X11KeyboardConnection&) = delete;

    xcb_connection_t* connection() const { return connection_; }
    xcb_window_t root() const { return root_; }
    const KeyTranslator& translator() const { return *translator_; }

    // Every event from the server goes to every handler; a new mapping also
    // to the mapping handlers, after the translator has been rebuilt.
    int addEventHandler(EventHandler handler);
    int addMappingHandler(std::function<void()> handler);
    void removeHandler(int token);

    // Reads what the server has sent and hands it out. Called by the event
    // loop, and after our own requests, whose replies may have queued events.
    void dispatchPending();

private:
    X11KeyboardConnection(xcb_connection_t* connection, xcb_window_t root);
    void readMapping();

    xcb_connection_t* connection_;
    xcb_window_t root_;
    std::unique_ptr<KeyTranslator> translator_;
    std::unique_ptr<QSocketNotifier> notifier_;
    std::map<int, EventHandler> eventHandlers_;
    std::map<int, std::function<void()>> mappingHandlers_;
    int nextToken_ = 1;
};

} // namespace tosvar
