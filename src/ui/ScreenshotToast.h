#pragma once

#include <QRect>
#include <QString>

namespace tosvar {

// A short message on a rounded plate near the bottom of the screen under the
// mouse: it fades in, stays, and fades out. A new toast replaces the one on
// screen. Main thread; needs a QApplication.
namespace ScreenshotToast {

inline constexpr double fadeSeconds = 0.15;
inline constexpr double cornerRadius = 10;
inline constexpr int bottomOffset = 120;
// How long capture code shows a toast.
inline constexpr double captureSeconds = 1.6;

void show(const QString& text, double seconds);
// Takes the toast on screen away at once, before a screen grab.
void dismiss();

// Where a plate of `size` stands on a screen whose visible area (without
// panels and docks) is `visibleFrame`: centred, its bottom 120 points above
// the frame's bottom.
QRect frame(const QRect& visibleFrame, const QSize& size);

} // namespace ScreenshotToast

} // namespace tosvar
