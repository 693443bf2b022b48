// The host window on Linux: an Xlib window on $DISPLAY, read back from the X server.
#include "host_window.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/keysym.h>

#include <time.h>

#include <stdexcept>

namespace norvgl::host {

namespace {

Bool isMapNotify(Display*, XEvent* event, XPointer window) {
    return event->type == MapNotify &&
           event->xmap.window == static_cast<Window>(reinterpret_cast<std::uintptr_t>(window));
}

} // namespace

void* openDisplay() {
    for (int attempt = 0; attempt < 5; ++attempt) {
        if (Display* display = XOpenDisplay(nullptr))
            return display;
        const timespec pause = {0, 2'000'000};
        nanosleep(&pause, nullptr);
    }
    throw std::runtime_error("no X display: set DISPLAY (or run under Xvfb)");
}

HostWindow::HostWindow(int clientWidth, int clientHeight, const char* title)
    : width_(clientWidth), height_(clientHeight) {
    auto* display = static_cast<Display*>(openDisplay());
    connection_ = display;
    const int screen = DefaultScreen(display);
    const Window window =
        XCreateSimpleWindow(display, RootWindow(display, screen), 0, 0,
                            static_cast<unsigned>(clientWidth), static_cast<unsigned>(clientHeight),
                            0, BlackPixel(display, screen), BlackPixel(display, screen));
    window_ = window;
    XStoreName(display, window, title);
    // A fixed size: the driver keeps the client size it found at GFX_Init.
    XSizeHints* hints = XAllocSizeHints();
    if (hints) {
        hints->flags = PMinSize | PMaxSize;
        hints->min_width = hints->max_width = clientWidth;
        hints->min_height = hints->max_height = clientHeight;
        XSetWMNormalHints(display, window, hints);
        XFree(hints);
    }
    Atom close = XInternAtom(display, "WM_DELETE_WINDOW", False);
    closeAtom_ = close;
    XSetWMProtocols(display, window, &close, 1);
    XSelectInput(display, window, StructureNotifyMask | KeyPressMask);
    XMapWindow(display, window);
    // The driver may only draw once the server shows the window.
    XEvent event;
    XIfEvent(display, &event, isMapNotify, reinterpret_cast<XPointer>(window_));
}

HostWindow::~HostWindow() {
    auto* display = static_cast<Display*>(connection_);
    if (!destroyed_)
        XDestroyWindow(display, static_cast<Window>(window_));
    XCloseDisplay(display);
}

void HostWindow::destroy() {
    if (destroyed_)
        return;
    auto* display = static_cast<Display*>(connection_);
    XDestroyWindow(display, static_cast<Window>(window_));
    XSync(display, False);
    destroyed_ = true;
}

std::intptr_t HostWindow::handle() const {
    return static_cast<std::intptr_t>(window_);
}

bool HostWindow::poll() {
    auto* display = static_cast<Display*>(connection_);
    while (!destroyed_ && XPending(display) > 0) {
        XEvent event;
        XNextEvent(display, &event);
        if (event.type == ClientMessage &&
            static_cast<std::uintptr_t>(event.xclient.data.l[0]) == closeAtom_)
            closeAsked_ = true;
        else if (event.type == KeyPress && XLookupKeysym(&event.xkey, 0) == XK_Escape)
            closeAsked_ = true;
        else if (event.type == DestroyNotify)
            closeAsked_ = true;
    }
    return !closeAsked_ && !destroyed_;
}

Image HostWindow::capture() const {
    // GL's front buffer reads back black with a software rasteriser that presents by copying
    // to the window: the server's copy is what a user sees.
    auto* display = static_cast<Display*>(connection_);
    XSync(display, False);
    XImage* shot =
        XGetImage(display, static_cast<Window>(window_), 0, 0, static_cast<unsigned>(width_),
                  static_cast<unsigned>(height_), AllPlanes, ZPixmap);
    if (!shot)
        return Image{};
    Image image;
    image.width = width_;
    image.height = height_;
    image.pixels.resize(static_cast<std::size_t>(width_) * height_);
    for (int y = 0; y < height_; ++y)
        for (int x = 0; x < width_; ++x) {
            const unsigned long p = XGetPixel(shot, x, y);
            image.at(x, y) = {static_cast<std::uint8_t>((p & shot->red_mask) >> 16),
                              static_cast<std::uint8_t>((p & shot->green_mask) >> 8),
                              static_cast<std::uint8_t>(p & shot->blue_mask)};
        }
    XDestroyImage(shot);
    return image;
}

} // namespace norvgl::host
