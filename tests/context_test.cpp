// What attaching to an X11 window means beyond what every host sees (the scenario program
// checks that on both systems): windows with nothing to draw on, X errors with a host's own
// handler in place, and display modes restored by GFX_Destroy.
#include "support/driver_fixture.h"

#include "norvgl.h"

#include <X11/Xlib.h>
#include <X11/extensions/Xrandr.h>

using nvtest::DriverTest;

namespace {

std::string lastErrorTitle() {
    char title[ERROR_TITLE_SIZE] = "";
    GFX_GetLastError(title, nullptr);
    return title;
}

// The host's own connection for the duration of a test.
struct HostDisplay {
    Display* display = XOpenDisplay(nullptr);
    ~HostDisplay() {
        if (display)
            XCloseDisplay(display);
    }
};

TEST_F(DriverTest, AnInputOnlyWindowHasNothingToDrawOn) {
    HostDisplay host;
    ASSERT_NE(host.display, nullptr);
    XSetWindowAttributes attributes = {};
    const Window window = XCreateWindow(host.display, DefaultRootWindow(host.display), 0, 0, 16, 16,
                                        0, 0, InputOnly, CopyFromParent, 0, &attributes);
    XSync(host.display, False);
    GFX_SetProperty(PROP_WINDOW, static_cast<std::intptr_t>(window));
    EXPECT_EQ(GFX_Init(), 1);
    EXPECT_EQ(lastErrorTitle(), "SetPixelFormat failed");
}

int hostErrors = 0;
int countHostError(Display*, XErrorEvent*) {
    ++hostErrors;
    return 0;
}

TEST_F(DriverTest, HostHandlerInstalledLaterGetsOnlyItsOwnErrorsAndTheDriverSurvivesItsWindow) {
    HostDisplay host;
    ASSERT_NE(host.display, nullptr);
    const Window window =
        XCreateSimpleWindow(host.display, DefaultRootWindow(host.display), 0, 0, 64, 64, 0, 0, 0);
    XMapWindow(host.display, window);
    XSync(host.display, False);
    GFX_SetProperty(PROP_WINDOW, static_cast<std::intptr_t>(window));
    ASSERT_EQ(GFX_Init(), 0);

    // The host puts in its own handler after GFX_Init, then destroys the driver's window.
    hostErrors = 0;
    const XErrorHandler before = XSetErrorHandler(countHostError);
    XDestroyWindow(host.display, window);
    XSync(host.display, False);
    const float triangle[24] = {0, 0, 50, 0, 0, 1,  0,  0, 10, 0, 50, 0,
                                0, 1, 1,  0, 0, 10, 50, 0, 0,  1, 0,  1};
    EXPECT_EQ(GFX_BeginRender(), 0);
    GFX_DrawPolygon(PRIM_TRIANGLES, 3, triangle);
    EXPECT_EQ(GFX_EndRender(), 0);
    EXPECT_EQ(hostErrors, 0); // the driver's errors stayed the driver's

    // An error of the host's own connection still reaches the host's handler.
    XWindowAttributes attributes;
    XGetWindowAttributes(host.display, window, &attributes);
    XSync(host.display, False);
    EXPECT_EQ(hostErrors, 1);

    GFX_Destroy();
    XSetErrorHandler(before);
}

// The screen's first output and its CRTC as they are now.
struct FirstOutput {
    explicit FirstOutput(Display* display)
        : resources(XRRGetScreenResourcesCurrent(display, DefaultRootWindow(display))),
          output(XRRGetOutputInfo(display, resources, resources->outputs[0])),
          crtc(XRRGetCrtcInfo(display, resources, output->crtc)) {}
    ~FirstOutput() {
        XRRFreeCrtcInfo(crtc);
        XRRFreeOutputInfo(output);
        XRRFreeScreenResources(resources);
    }
    XRRScreenResources* resources;
    XRROutputInfo* output;
    XRRCrtcInfo* crtc;
};

RRMode currentMode(Display* display) {
    return FirstOutput(display).crtc->mode;
}

void setMode(Display* display, RRMode mode) {
    const FirstOutput first(display);
    XRRSetCrtcConfig(display, first.resources, first.output->crtc, CurrentTime, first.crtc->x,
                     first.crtc->y, mode, first.crtc->rotation, first.resources->outputs, 1);
}

// A mode of 800 x 600 offered by the screen's output while the host's connection lives.
RRMode addMode(Display* display) {
    char name[] = "norvgl-800x600";
    XRRModeInfo info = {};
    info.width = 800;
    info.height = 600;
    info.dotClock = 40000000;
    info.hSyncStart = 840;
    info.hSyncEnd = 968;
    info.hTotal = 1056;
    info.vSyncStart = 601;
    info.vSyncEnd = 605;
    info.vTotal = 628;
    info.name = name;
    info.nameLength = sizeof name - 1;
    const RRMode mode = XRRCreateMode(display, DefaultRootWindow(display), &info);
    XRRAddOutputMode(display, FirstOutput(display).resources->outputs[0], mode);
    XSync(display, False);
    return mode;
}

TEST_F(DriverTest, DestroyRestoresTheDisplayModeOnlyWhenTheHostSaysItChangedIt) {
    HostDisplay host;
    ASSERT_NE(host.display, nullptr);
    const RRMode original = currentMode(host.display);
    const RRMode smaller = addMode(host.display);
    const DisplayModeRecord wanted = {800, 600,
                                      static_cast<unsigned char>(DefaultDepth(host.display, 0))};
    norvgl::host::HostWindow window;
    GFX_SetProperty(PROP_WINDOW, window.handle());
    for (const int changed : {0, 1}) {
        ASSERT_EQ(GFX_Init(), 0);
        ASSERT_EQ(GFX_SetResolution(&wanted), 0);
        EXPECT_EQ(currentMode(host.display), smaller);
        GFX_SetProperty(PROP_MODE_CHANGED, changed);
        EXPECT_EQ(GFX_Destroy(), 0);
        EXPECT_EQ(currentMode(host.display), changed ? original : smaller) << changed;
    }
    setMode(host.display, original);
    GFX_SetProperty(PROP_MODE_CHANGED, 0);
}

} // namespace
