// The scenario host's system on Linux: Xlib on $DISPLAY, GLX, dlopen.
#include "host_system.h"

#include <GL/glx.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <dlfcn.h>
#include <sys/stat.h>
#include <malloc.h>

#include <filesystem>
#include <stdexcept>

namespace scenario {

namespace {

Display* openDisplay() {
    return static_cast<Display*>(norvgl::host::openDisplay());
}

} // namespace

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
