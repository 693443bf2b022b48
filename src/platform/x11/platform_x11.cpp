// X11 backend: the host's window is an X11 Window id on $DISPLAY. The driver opens its own
// display connection (its "device context"), renders with GLX on the window's own visual and
// lists display modes through XRandR.
#include "platform/platform.h"
#include "platform/x11/display.h"

#include "platform/gl_headers.h"

#include <GL/glx.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/Xrandr.h>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

namespace norvgl::x11 {

struct X11State {
    Display* display = nullptr;
    Window window = 0;
    XVisualInfo visual = {};
    GLXContext context = nullptr;
    // A window that GFX_Init has checked and whose context createContext makes next.
    Window pendingWindow = 0;
    XVisualInfo pendingVisual = {};
    // The handler that was in place before the driver's; it gets the errors of every other
    // display.
    XErrorHandler hostHandler = nullptr;
    int trappedErrors = 0;
    // The mode to go back to, saved before the driver's first mode change.
    bool modeSaved = false;
    RRMode savedMode = 0;
};

X11State state;

Display* openDisplay() {
    constexpr int kAttempts = 5;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        if (Display* display = XOpenDisplay(nullptr))
            return display;
        const timespec pause = {0, 2'000'000};
        nanosleep(&pause, nullptr);
    }
    return nullptr;
}

namespace {

// Xlib's default handler ends the process; an error on the driver's own connection (a host
// that destroyed its window, a handle that names none) must not. Errors of the driver's
// connection are counted; every other display's go to the handler that was there before.
int onXError(Display* display, XErrorEvent* event) {
    // A host handler that hands unknown errors back to the one it replaced (this one) would
    // otherwise bounce an error between the two for ever.
    static bool forwarding = false;
    if (display == state.display && display) {
        ++state.trappedErrors;
        return 0;
    }
    if (forwarding || !state.hostHandler)
        return 0;
    forwarding = true;
    const int result = state.hostHandler(display, event);
    forwarding = false;
    return result;
}

// Puts the trap in front; a handler the host set since becomes the one errors of other
// displays go to.
void holdErrorTrap() {
    const XErrorHandler previous = XSetErrorHandler(onXError);
    if (previous != onXError)
        state.hostHandler = previous;
}

// Gives the host its handler back, unless the host has put in another one since.
void releaseErrorTrap() {
    const XErrorHandler current = XSetErrorHandler(state.hostHandler);
    if (current != onXError)
        XSetErrorHandler(current);
    state.hostHandler = nullptr;
}

// The library may be unloaded with its connection still open; the process's handler must not
// be left pointing into it.
struct TrapRelease {
    ~TrapRelease() {
        if (state.display)
            releaseErrorTrap();
    }
} trapRelease;

// Runs Xlib requests on the driver's connection and waits for their errors. True when the
// server reported none.
template <typename F> bool trapped(Display* display, F&& request) {
    holdErrorTrap();
    XSync(display, False);
    state.trappedErrors = 0;
    request();
    XSync(display, False);
    return state.trappedErrors == 0;
}

bool usableVisual(Display* display, XVisualInfo& info) {
    int useGl = 0, rgba = 0, doubleBuffer = 0, depth = 0;
    if (glXGetConfig(display, &info, GLX_USE_GL, &useGl) != 0 || !useGl)
        return false;
    glXGetConfig(display, &info, GLX_RGBA, &rgba);
    glXGetConfig(display, &info, GLX_DOUBLEBUFFER, &doubleBuffer);
    glXGetConfig(display, &info, GLX_DEPTH_SIZE, &depth);
    return rgba && doubleBuffer && depth >= 16;
}

// A connection for display-mode queries: the device connection when there is one.
struct ModeConnection {
    Display* display = state.display;
    bool owned = false;
    ModeConnection() {
        if (!display) {
            display = openDisplay();
            owned = display != nullptr;
        }
    }
    ~ModeConnection() {
        if (owned)
            XCloseDisplay(display);
    }
    ModeConnection(const ModeConnection&) = delete;
    ModeConnection& operator=(const ModeConnection&) = delete;
};

// The screen's primary output, or the first connected one, with its current CRTC.
struct OutputModes {
    XRRScreenResources* resources = nullptr;
    XRROutputInfo* output = nullptr;
    RROutput outputId = 0;
    explicit OutputModes(Display* display) {
        int eventBase = 0, errorBase = 0;
        if (!display || !XRRQueryExtension(display, &eventBase, &errorBase))
            return;
        const Window root = DefaultRootWindow(display);
        resources = XRRGetScreenResourcesCurrent(display, root);
        if (!resources)
            return;
        outputId = XRRGetOutputPrimary(display, root);
        if (outputId)
            output = XRRGetOutputInfo(display, resources, outputId);
        for (int i = 0; !output && i < resources->noutput; ++i) {
            XRROutputInfo* info = XRRGetOutputInfo(display, resources, resources->outputs[i]);
            if (info && info->connection == RR_Connected && info->nmode > 0) {
                output = info;
                outputId = resources->outputs[i];
            } else if (info) {
                XRRFreeOutputInfo(info);
            }
        }
    }
    ~OutputModes() {
        if (output)
            XRRFreeOutputInfo(output);
        if (resources)
            XRRFreeScreenResources(resources);
    }
    OutputModes(const OutputModes&) = delete;
    OutputModes& operator=(const OutputModes&) = delete;

    const XRRModeInfo* info(RRMode id) const {
        for (int i = 0; i < resources->nmode; ++i)
            if (resources->modes[i].id == id)
                return &resources->modes[i];
        return nullptr;
    }
};

bool setCrtcMode(Display* display, RRMode mode) {
    OutputModes modes(display);
    if (!modes.output || !modes.output->crtc)
        return false;
    XRRCrtcInfo* crtc = XRRGetCrtcInfo(display, modes.resources, modes.output->crtc);
    if (!crtc)
        return false;
    if (!state.modeSaved) {
        state.savedMode = crtc->mode;
        state.modeSaved = true;
    }
    RROutput output = modes.outputId;
    const Status status =
        XRRSetCrtcConfig(display, modes.resources, modes.output->crtc, CurrentTime, crtc->x,
                         crtc->y, mode, crtc->rotation, &output, 1);
    XRRFreeCrtcInfo(crtc);
    return status == RRSetConfigSuccess;
}

} // namespace

} // namespace norvgl::x11

namespace norvgl::platform {

using x11::state;

bool attachWindow(std::intptr_t window) {
    // The connection stays open from the first GFX_Init to GFX_Destroy, whatever each init
    // finds: a window that fails leaves the one attached before, and its context, as they were.
    if (!state.display) {
        state.display = x11::openDisplay();
        if (!state.display)
            return false;
        x11::holdErrorTrap();
    }
    if (window == 0)
        return false;
    const Window id = static_cast<Window>(window);
    XWindowAttributes attributes = {};
    Status status = 0;
    if (!x11::trapped(state.display,
                      [&] { status = XGetWindowAttributes(state.display, id, &attributes); }) ||
        !status)
        return false;
    if (attributes.c_class == InputOnly)
        return false;
    XVisualInfo wanted = {};
    wanted.visualid = XVisualIDFromVisual(attributes.visual);
    int found = 0;
    XVisualInfo* infos = XGetVisualInfo(state.display, VisualIDMask, &wanted, &found);
    if (!infos)
        return false;
    XVisualInfo info = infos[0];
    XFree(infos);
    if (found < 1 || !x11::usableVisual(state.display, info))
        return false;
    state.pendingVisual = info;
    state.pendingWindow = id;
    return true;
}

void createContext() {
    if (!state.display || !state.pendingWindow)
        return;
    const Window window = state.pendingWindow;
    state.pendingWindow = 0;
    if (state.context && window == state.window) {
        // The same window again: its context, with the host's textures and lists, stays.
        x11::trapped(state.display, [&] { glXMakeCurrent(state.display, window, state.context); });
        return;
    }
    // A new window gets a new context that shares textures and display lists with the old one,
    // so pictures and objects loaded before keep drawing.
    GLXContext context = glXCreateContext(state.display, &state.pendingVisual, state.context, True);
    if (!context)
        return;
    x11::trapped(state.display, [&] {
        glXMakeCurrent(state.display, window, context);
        if (state.context)
            glXDestroyContext(state.display, state.context);
    });
    state.context = context;
    state.window = window;
    state.visual = state.pendingVisual;
}

bool hasContext() {
    return state.context != nullptr;
}

void keepErrorTrap() {
    if (state.display)
        x11::holdErrorTrap();
}

void clientSize(std::int32_t& width, std::int32_t& height) {
    width = height = 0;
    if (!state.display || !state.window)
        return;
    XWindowAttributes attributes = {};
    Status status = 0;
    if (x11::trapped(
            state.display,
            [&] { status = XGetWindowAttributes(state.display, state.window, &attributes); }) &&
        status) {
        width = attributes.width;
        height = attributes.height;
    }
}

void swapBuffers() {
    if (!state.display || !state.window || !state.context)
        return;
    // The host may have destroyed its window; the trap keeps that from ending the process.
    x11::trapped(state.display, [&] { glXSwapBuffers(state.display, state.window); });
}

bool releaseContext() {
    if (!state.context)
        return true;
    bool madeNone = false;
    x11::trapped(state.display, [&] { madeNone = glXMakeCurrent(state.display, None, nullptr); });
    if (!madeNone)
        return false;
    x11::trapped(state.display, [&] { glXDestroyContext(state.display, state.context); });
    state.context = nullptr;
    return true;
}

bool releaseWindow(std::intptr_t) {
    if (!state.display)
        return true;
    // Closing flushes what is still queued; its errors are the driver's to swallow.
    XCloseDisplay(state.display);
    x11::releaseErrorTrap();
    state.display = nullptr;
    state.window = 0;
    state.pendingWindow = 0;
    return true;
}

bool displayMode(std::uint32_t index, DisplayMode& mode) {
    x11::ModeConnection connection;
    x11::OutputModes modes(connection.display);
    if (!modes.output || index >= static_cast<std::uint32_t>(modes.output->nmode))
        return false;
    const RRMode id = modes.output->modes[index];
    const XRRModeInfo* info = modes.info(id);
    if (!info)
        return false;
    mode.width = info->width;
    mode.height = info->height;
    mode.bits = static_cast<std::uint32_t>(
        DefaultDepth(connection.display, DefaultScreen(connection.display)));
    mode.native = id;
    return true;
}

bool testDisplayMode(const DisplayMode& mode) {
    x11::ModeConnection connection;
    x11::OutputModes modes(connection.display);
    if (!modes.output)
        return false;
    for (int i = 0; i < modes.output->nmode; ++i)
        if (modes.output->modes[i] == mode.native)
            return true;
    return false;
}

void changeDisplayMode(const DisplayMode& mode) {
    x11::ModeConnection connection;
    if (connection.display)
        x11::setCrtcMode(connection.display, static_cast<RRMode>(mode.native));
}

void restoreDisplayMode() {
    if (!state.modeSaved)
        return;
    x11::ModeConnection connection;
    if (connection.display)
        x11::setCrtcMode(connection.display, state.savedMode);
}

bool fileOpenRead(const char* name, std::intptr_t& handle) {
    // Without blocking, so that a pipe with no writer does not hold the open; only regular
    // files are read, since a pipe or a device could keep a read waiting for ever.
    const int fd = ::open(name, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0)
        return false;
    struct stat info = {};
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
        ::close(fd);
        return false;
    }
    handle = fd;
    return true;
}

bool fileOpenWrite(const char* name, std::intptr_t& handle) {
    const int fd = ::open(name, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0)
        return false;
    handle = fd;
    return true;
}

bool fileOpenAppend(const char* name, std::intptr_t& handle) {
    const int fd = ::open(name, O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    if (fd < 0)
        return false;
    ::lseek(fd, 0, SEEK_END);
    handle = fd;
    return true;
}

void fileClose(std::intptr_t handle) {
    ::close(static_cast<int>(handle));
}

std::uint64_t fileSize(std::intptr_t handle) {
    struct stat info = {};
    if (::fstat(static_cast<int>(handle), &info) != 0)
        return 0;
    return static_cast<std::uint64_t>(info.st_size);
}

std::int64_t fileRead(std::intptr_t handle, void* destination, std::uint32_t count) {
    auto* out = static_cast<char*>(destination);
    std::uint32_t done = 0;
    while (done < count) {
        const ssize_t n = ::read(static_cast<int>(handle), out + done, count - done);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return -1;
        if (n == 0)
            break;
        done += static_cast<std::uint32_t>(n);
    }
    return done;
}

std::int64_t fileWrite(std::intptr_t handle, const void* source, std::uint32_t count) {
    const auto* in = static_cast<const char*>(source);
    std::uint32_t done = 0;
    while (done < count) {
        const ssize_t n = ::write(static_cast<int>(handle), in + done, count - done);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return -1;
        done += static_cast<std::uint32_t>(n);
    }
    return done;
}

std::uint32_t tickMilliseconds() {
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    const std::uint64_t ms = static_cast<std::uint64_t>(now.tv_sec) * 1000u +
                             static_cast<std::uint64_t>(now.tv_nsec) / 1000000u;
    return static_cast<std::uint32_t>(ms);
}

} // namespace norvgl::platform
