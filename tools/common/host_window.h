// The host side that every norvgl host program of this repository shares (the demo, the
// viewer, the examples, the tests, the scenario program and the benchmarks): a top-level
// window to hand the driver, its events, and a picture of what it shows. Implemented once for
// X11 and once for Win32.
#pragma once

#include "host_image.h"

#include <cstdint>

namespace norvgl::host {

// A mapped top-level window with a client area of the given size, ready for GFX_Init. It
// takes key presses and the window manager's close button; nothing draws into it but the
// driver. Throws std::runtime_error when there is no display or the system refuses it.
#ifndef _WIN32
// A connection to $DISPLAY (a Display*), tried a few times, as Xvfb turns away an occasional
// connection when many come at once. Throws std::runtime_error when there is none.
void* openDisplay();
#endif

class HostWindow {
public:
    explicit HostWindow(int clientWidth = 640, int clientHeight = 480,
                        const char* title = "norvgl");
    ~HostWindow();
    HostWindow(const HostWindow&) = delete;
    HostWindow& operator=(const HostWindow&) = delete;

    // The value the host stores in PROP_WINDOW: the HWND on Windows, the X11 Window id on
    // Linux.
    std::intptr_t handle() const;
    int clientWidth() const { return width_; }
    int clientHeight() const { return height_; }
    // Handles the events that came since the last call, without waiting. False once the user
    // asked to close the window (its close button, or Esc).
    bool poll();
    // What the window's client area shows now: the last frame the driver swapped to it.
    // Empty when it cannot be read.
    Image capture() const;
    // The host destroys its window now, while the driver may still hold it; handle() keeps
    // naming the window that was.
    void destroy();

private:
    int width_;
    int height_;
    void* connection_ = nullptr; // X11: the host's own display connection
    std::uintptr_t window_ = 0;
    std::uintptr_t closeAtom_ = 0; // X11: WM_DELETE_WINDOW
    bool destroyed_ = false;
    bool closeAsked_ = false;
};

} // namespace norvgl::host
