#include "QtX11Sync.h"

#include <QGuiApplication>

#include <cstdlib>
#include <xcb/xcb.h>

namespace tosvar {

void syncQtWithX11Server() {
    auto* x11 = qGuiApp ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    if (!x11 || !x11->connection()) return;
    xcb_connection_t* connection = x11->connection();
    // A round trip: the reply comes after every earlier request is done.
    std::free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
}

} // namespace tosvar
