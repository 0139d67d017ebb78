#pragma once

namespace tosvar {

// Waits until the X server has carried out every request Qt's own connection
// has sent (a window hidden a moment ago is then off the screen), so that a
// grab on another connection sees the result. Does nothing off X11.
void syncQtWithX11Server();

} // namespace tosvar
