// The scenario host's system on Linux: Xlib windows on $DISPLAY, GLX, dlopen.
#include "host_window.h"
#include "support/x11_capture.h"

#include <GL/glx.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <dlfcn.h>
#include <sys/stat.h>
#include <malloc.h>
#include <time.h>

#include <filesystem>
#include <stdexcept>

namespace scenario {

namespace {

Display* openDisplay() {
    // Xvfb turns away an occasional connection when many come at once: try a few times.
    for (int attempt = 0; attempt < 5; ++attempt) {
        if (Display* display = XOpenDisplay(nullptr))
            return display;
        const timespec pause = {0, 2'000'000};
        nanosleep(&pause, nullptr);
    }
    throw std::runtime_error("no X display: set DISPLAY or run through scripts/test.sh");
}

Bool isMapNotify(Display*, XEvent* event, XPointer window) {
    return event->type == MapNotify &&
           event->xmap.window == static_cast<Window>(reinterpret_cast<std::uintptr_t>(window));
}

} // namespace

HostWindow::HostWindow(int clientWidth, int clientHeight)
    : width_(clientWidth), height_(clientHeight) {
    Display* display = openDisplay();
    connection_ = display;
    const int screen = DefaultScreen(display);
    const Window window =
        XCreateSimpleWindow(display, RootWindow(display, screen), 0, 0,
                            static_cast<unsigned>(clientWidth), static_cast<unsigned>(clientHeight),
                            0, BlackPixel(display, screen), BlackPixel(display, screen));
    window_ = window;
    XStoreName(display, window, "norvgl scenario");
    XSelectInput(display, window, StructureNotifyMask);
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

Image HostWindow::capture() const {
    Image image;
    image.pixels.resize(static_cast<std::size_t>(width_) * height_);
    image.width = width_;
    image.height = height_;
    if (!nvtest::captureWindow(static_cast<Display*>(connection_), static_cast<Window>(window_),
                               width_, height_,
                               [&](int x, int y, std::uint8_t r, std::uint8_t g, std::uint8_t b) {
                                   image.at(x, y) = {r, g, b};
                               }))
        return Image{};
    return image;
}

DestroyedWindow::DestroyedWindow() {
    // The id stays allocated to this connection, so no other client's resource takes it.
    Display* display = openDisplay();
    connection_ = display;
    const Window window =
        XCreateSimpleWindow(display, DefaultRootWindow(display), 0, 0, 16, 16, 0, 0, 0);
    window_ = window;
    XDestroyWindow(display, window);
    XSync(display, False);
}

DestroyedWindow::~DestroyedWindow() {
    XCloseDisplay(static_cast<Display*>(connection_));
}

NotAWindow::NotAWindow() {
    Display* display = openDisplay();
    connection_ = display;
    object_ = XCreatePixmap(display, DefaultRootWindow(display), 16, 16,
                            static_cast<unsigned>(DefaultDepth(display, DefaultScreen(display))));
    XSync(display, False);
}

NotAWindow::~NotAWindow() {
    auto* display = static_cast<Display*>(connection_);
    XFreePixmap(display, static_cast<Pixmap>(object_));
    XCloseDisplay(display);
}

std::intptr_t NotAWindow::handle() const {
    return static_cast<std::intptr_t>(object_);
}

PipeName::PipeName() {
    char pattern[] = "/tmp/norvgl-pipe-XXXXXX";
    const char* directory = mkdtemp(pattern);
    if (!directory)
        throw std::runtime_error("mkdtemp failed");
    path_ = std::string(directory) + "/picture.bmp";
    if (mkfifo(path_.c_str(), 0600) != 0)
        throw std::runtime_error("mkfifo failed");
}

PipeName::~PipeName() {
    std::error_code ignored;
    std::filesystem::remove_all(std::filesystem::path(path_).parent_path(), ignored);
}

bool glContextCurrent() {
    return glXGetCurrentContext() != nullptr;
}

ScreenMode currentScreenMode() {
    Display* display = openDisplay();
    const int screen = DefaultScreen(display);
    ScreenMode mode;
    mode.width = static_cast<unsigned>(DisplayWidth(display, screen));
    mode.height = static_cast<unsigned>(DisplayHeight(display, screen));
    mode.bits = static_cast<unsigned>(DefaultDepth(display, screen));
    XCloseDisplay(display);
    return mode;
}

PrivateLibrary::PrivateLibrary(const std::string& directory) {
    // The linked library's own file: where its exported entry lives.
    Dl_info info = {};
    void* entry = dlsym(RTLD_DEFAULT, "GFX_Init");
    if (!entry || !dladdr(entry, &info) || !info.dli_fname) {
        error_ = "the linked driver library was not found";
        return;
    }
    const std::filesystem::path original = info.dli_fname;
    const std::filesystem::path copy = std::filesystem::path(directory) / original.filename();
    std::error_code failed;
    std::filesystem::copy_file(original, copy, failed);
    if (failed) {
        error_ = "copying " + original.string() + ": " + failed.message();
        return;
    }
    // Another file than the linked one, so the loader maps a second instance.
    module_ = dlopen(copy.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!module_)
        error_ = dlerror();
}

PrivateLibrary::~PrivateLibrary() {
    if (module_)
        dlclose(module_);
}

PrivateLibrary::Entry PrivateLibrary::symbol(const char* name) const {
    return module_ ? reinterpret_cast<Entry>(dlsym(module_, name)) : nullptr;
}

std::size_t heapBytesInUse() {
    const struct mallinfo2 info = mallinfo2(); // every arena, and blocks mapped on their own
    return info.uordblks + info.hblkhd;
}

} // namespace scenario
