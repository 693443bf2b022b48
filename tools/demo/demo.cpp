// The demo host: opens an X11 window, attaches the driver to it and reports what the driver
// says about itself and the display.
#include "norvgl.h"

#include <X11/Xlib.h>

#include <cstdio>

int main() {
    Display* display = XOpenDisplay(nullptr);
    if (!display) {
        std::fprintf(stderr, "demo: cannot open the X display (is DISPLAY set?)\n");
        return 1;
    }
    const int screen = DefaultScreen(display);
    const Window window =
        XCreateSimpleWindow(display, RootWindow(display, screen), 0, 0, 640, 480, 0,
                            BlackPixel(display, screen), BlackPixel(display, screen));
    XStoreName(display, window, "norvgl demo");
    XMapWindow(display, window);
    XSync(display, False);

    GFX_SetProperty(PROP_WINDOW, static_cast<intptr_t>(window));
    if (GFX_Init() != 0) {
        char title[ERROR_TITLE_SIZE], details[ERROR_DETAILS_SIZE];
        GFX_GetLastError(title, details);
        std::fprintf(stderr, "demo: GFX_Init failed: %s: %s\n", title, details);
        return 1;
    }
    std::printf("driver:  %s\n", reinterpret_cast<const char*>(GFX_GetProperty(PROP_DRIVER_NAME)));
    std::printf("version: %s\n",
                reinterpret_cast<const char*>(GFX_GetProperty(PROP_DRIVER_VERSION)));
    DisplayModeRecord mode;
    while (GFX_EnumResolutions(&mode) == 0)
        std::printf("mode:    %u x %u, %u bits\n", mode.width, mode.height, mode.bits);
    GFX_Destroy();
    XDestroyWindow(display, window);
    XCloseDisplay(display);
    return 0;
}
