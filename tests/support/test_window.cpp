// X11 test windows and front-buffer read-back.
#include "support/test_window.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include "platform/x11/display.h"
#include "support/x11_capture.h"

#include <cstdio>
#include <stdexcept>

namespace nvtest {

namespace {

Display* openDisplay() {
    Display* display = norvgl::x11::openDisplay();
    if (!display)
        throw std::runtime_error("no X display: set DISPLAY or run through scripts/test.sh");
    return display;
}

} // namespace

TestWindow::TestWindow(int width, int height) : width_(width), height_(height) {
    Display* display = openDisplay();
    display_ = display;
    const int screen = DefaultScreen(display);
    window_ = XCreateSimpleWindow(display, RootWindow(display, screen), 0, 0,
                                  static_cast<unsigned>(width), static_cast<unsigned>(height), 0,
                                  BlackPixel(display, screen), BlackPixel(display, screen));
    XSelectInput(display, window_, StructureNotifyMask);
    XMapWindow(display, window_);
    XEvent event;
    do
        XNextEvent(display, &event);
    while (event.type != MapNotify);
}

TestWindow::~TestWindow() {
    auto* display = static_cast<Display*>(display_);
    XDestroyWindow(display, window_);
    XCloseDisplay(display);
}

TestPixmap::TestPixmap() {
    Display* display = openDisplay();
    display_ = display;
    pixmap_ = XCreatePixmap(display, DefaultRootWindow(display), 16, 16,
                            static_cast<unsigned>(DefaultDepth(display, DefaultScreen(display))));
    XSync(display, False);
}

TestPixmap::~TestPixmap() {
    auto* display = static_cast<Display*>(display_);
    XFreePixmap(display, pixmap_);
    XCloseDisplay(display);
}

InputOnlyWindow::InputOnlyWindow() {
    Display* display = openDisplay();
    display_ = display;
    XSetWindowAttributes attributes = {};
    window_ = XCreateWindow(display, DefaultRootWindow(display), 0, 0, 64, 64, 0, 0, InputOnly,
                            CopyFromParent, 0, &attributes);
    XSync(display, False);
}

InputOnlyWindow::~InputOnlyWindow() {
    auto* display = static_cast<Display*>(display_);
    XDestroyWindow(display, window_);
    XCloseDisplay(display);
}

Image TestWindow::capture() const {
    Image image;
    image.pixels.resize(static_cast<std::size_t>(width_) * height_);
    if (!captureWindow(static_cast<Display*>(display_), window_, width_, height_,
                       [&](int x, int y, std::uint8_t r, std::uint8_t g, std::uint8_t b) {
                           image.pixels[static_cast<std::size_t>(y) * width_ + x] = {r, g, b, 255};
                       }))
        return Image{};
    image.width = width_;
    image.height = height_;
    return image;
}

bool Image::savePpm(const std::string& path) const {
    FILE* file = std::fopen(path.c_str(), "wb");
    if (!file)
        return false;
    std::fprintf(file, "P6\n%d %d\n255\n", width, height);
    for (const Rgba& p : pixels) {
        const unsigned char rgb[3] = {p.r, p.g, p.b};
        std::fwrite(rgb, 1, 3, file);
    }
    std::fclose(file);
    return true;
}

} // namespace nvtest
