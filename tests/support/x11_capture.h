// Reads a window back from the X server. GL's front buffer reads back black with a software
// rasteriser that presents by copying to the window: the server's copy is what a user sees.
#pragma once

#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <cstdint>

namespace nvtest {

// Calls put(x, y, red, green, blue) for every pixel, top-left origin. False when the window
// could not be read.
template <typename Put>
bool captureWindow(Display* display, Window window, int width, int height, Put&& put) {
    XSync(display, False);
    XImage* shot = XGetImage(display, window, 0, 0, static_cast<unsigned>(width),
                             static_cast<unsigned>(height), AllPlanes, ZPixmap);
    if (!shot)
        return false;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const unsigned long p = XGetPixel(shot, x, y);
            put(x, y, static_cast<std::uint8_t>((p & shot->red_mask) >> 16),
                static_cast<std::uint8_t>((p & shot->green_mask) >> 8),
                static_cast<std::uint8_t>(p & shot->blue_mask));
        }
    }
    XDestroyImage(shot);
    return true;
}

} // namespace nvtest
