#include "QtScreenLayout.h"

#include "ScreenCoordinates.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>

namespace tosvar {

namespace {

Rect rectOf(const QRect& r) { return Rect(r.x(), r.y(), r.width(), r.height()); }

} // namespace

Rect QtScreenLayout::mainGlobalFrame() {
    const QScreen* primary = QGuiApplication::primaryScreen();
    return primary ? rectOf(primary->geometry()) : Rect();
}

std::vector<ScreenInfo> QtScreenLayout::screens() const {
    std::vector<ScreenInfo> result;
    const Rect main = mainGlobalFrame();
    const QScreen* primary = QGuiApplication::primaryScreen();
    auto add = [&](const QScreen* screen) {
        result.push_back({ScreenCoordinates::fromGlobal(rectOf(screen->geometry()), main),
                          ScreenCoordinates::fromGlobal(rectOf(screen->availableGeometry()), main),
                          screen->devicePixelRatio()});
    };
    if (primary) add(primary);
    for (const QScreen* screen : QGuiApplication::screens())
        if (screen != primary) add(screen);
    return result;
}

Point QtScreenLayout::mouseLocation() const {
    // The centre of the pixel under the pointer, so the pointer on a display's
    // top row still lies inside that display's half-open frame.
    const QPoint global = QCursor::pos();
    return ScreenCoordinates::pointFromGlobal(Point{global.x() + 0.5, global.y() + 0.5}, mainGlobalFrame());
}

} // namespace tosvar
