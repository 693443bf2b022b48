// Opening a connection to the X server named by $DISPLAY.
#pragma once

#include <X11/Xlib.h>

namespace norvgl::x11 {

// XOpenDisplay, tried a few times: a server under a burst of connects now and then resets
// one at accept, and a host should not lose GFX_Init to that. Null when the server stays
// unreachable.
Display* openDisplay();

} // namespace norvgl::x11
