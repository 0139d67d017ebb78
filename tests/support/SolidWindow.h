#pragma once

#include "TestApplication.h"
#include "XvfbServer.h"

#include <QApplication>
#include <QWidget>

#include <cstdlib>
#include <memory>

namespace tosvar {

// The test program's Qt application on the shared Xvfb server.
inline QApplication& xvfbApplication() {
    XvfbServer::shared().useAsDisplay();
    ::setenv("QT_QPA_PLATFORM", "xcb", 1);
    return testApplication<QApplication>();
}

// A window of one colour at `geometry` (root coordinates): borderless and
// shown without a window manager's say, or, `managed`, framed and stacked by
// the window manager like any program's window.
inline std::unique_ptr<QWidget> showSolidWindow(const QRect& geometry, const QColor& colour, bool managed = false) {
    auto window = std::make_unique<QWidget>();
    if (!managed) window->setWindowFlags(Qt::FramelessWindowHint | Qt::X11BypassWindowManagerHint);
    QPalette palette;
    palette.setColor(QPalette::Window, colour);
    window->setPalette(palette);
    window->setAutoFillBackground(true);
    window->setGeometry(geometry);
    window->show();
    return window;
}

} // namespace tosvar
