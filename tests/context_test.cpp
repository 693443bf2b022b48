// Attaching the driver to a window: GFX_Init's GL state and failures, display modes, and
// teardown with a second init.
#include "session/session.h"
#include "manager3d/manager3d.h"
#include "support/driver_fixture.h"
#include "support/gl_recorder.h"

#include <GL/gl.h>
#include <X11/Xlib.h>

using namespace norvgl;
using nvtest::DriverTest;
using nvtest::GlRecorder;

namespace {

std::string lastErrorTitle() {
    char title[ERROR_TITLE_SIZE] = "";
    GFX_GetLastError(title, nullptr);
    return title;
}

void expectInitialState(int width, int height) {
    GLfloat range[2] = {-1, -1};
    glGetFloatv(GL_DEPTH_RANGE, range);
    EXPECT_EQ(range[0], 0.0f);
    EXPECT_EQ(range[1], 0.5f);
    GLint func = 0;
    glGetIntegerv(GL_DEPTH_FUNC, &func);
    EXPECT_EQ(func, GL_LESS);
    EXPECT_TRUE(glIsEnabled(GL_CULL_FACE));
    EXPECT_TRUE(glIsEnabled(GL_DEPTH_TEST));
    EXPECT_TRUE(glIsEnabled(GL_NORMALIZE));
    EXPECT_TRUE(glIsEnabled(GL_VERTEX_ARRAY));
    EXPECT_TRUE(glIsEnabled(GL_NORMAL_ARRAY));
    GLint viewport[4] = {};
    glGetIntegerv(GL_VIEWPORT, viewport);
    EXPECT_EQ(viewport[2], width);
    EXPECT_EQ(viewport[3], height);
    GLfloat shininess = 0;
    glGetMaterialfv(GL_FRONT, GL_SHININESS, &shininess);
    EXPECT_EQ(shininess, 30.0f);
    GLint mode = 0;
    glGetIntegerv(GL_MATRIX_MODE, &mode);
    EXPECT_EQ(mode, GL_MODELVIEW);
}

TEST_F(DriverTest, InitAttachesToAWindowWithTheInitialState) {
    nvtest::TestWindow window(320, 200);
    GFX_SetProperty(PROP_WINDOW, window.handle());
    GlRecorder rec;
    ASSERT_EQ(GFX_Init(), 0);
    expectInitialState(320, 200);
    EXPECT_EQ(driver.clientWidth, 320);
    EXPECT_EQ(driver.clientHeight, 200);
    EXPECT_TRUE(rec.glErrors().empty()) << rec.glErrors().front();
    // The state is set in this order, before the projection.
    const std::vector<std::string> expected = {"glClearDepth(1)",
                                               "glDepthFunc(513)",
                                               "glEnable(2929)",
                                               "glDepthMask(1)",
                                               "glDepthRange(0, 0.5)",
                                               "glClearColor(0, 0, 0, 0)",
                                               "glEnable(2884)",
                                               "glEnable(2977)",
                                               "glEnableClientState(32884)",
                                               "glEnableClientState(32885)"};
    const auto texts =
        rec.texts({GlCall::ClearDepth, GlCall::DepthFunc, GlCall::Enable, GlCall::DepthMask,
                   GlCall::DepthRange, GlCall::ClearColor, GlCall::EnableClientState});
    EXPECT_EQ(texts, expected);
    const auto perspective = rec.only({GlCall::gluPerspective});
    ASSERT_EQ(perspective.size(), 1u);
    EXPECT_EQ(perspective[0].args,
              (std::vector<double>{45, static_cast<double>(320.0f / 200.0f), 10, 10000}));
    EXPECT_EQ(GFX_Destroy(), 0);
}

TEST_F(DriverTest, InitOnSomethingThatIsNotAUsableWindowFailsAndTheProcessLivesOn) {
    nvtest::TestPixmap pixmap;
    nvtest::InputOnlyWindow inputOnly;
    const std::intptr_t handles[] = {0, 0x7ffffff, pixmap.handle(), inputOnly.handle()};
    for (std::intptr_t handle : handles) {
        attachLibrary();
        GFX_SetProperty(PROP_WINDOW, handle);
        EXPECT_EQ(GFX_Init(), 1) << handle;
        EXPECT_EQ(lastErrorTitle(), "SetPixelFormat failed") << handle;
    }
    EXPECT_NE(log().find("Error details: (none)\r\n"), std::string::npos);

    // A good window afterwards works, and so do destroy and a second init.
    nvtest::TestWindow window;
    GFX_SetProperty(PROP_WINDOW, window.handle());
    ASSERT_EQ(GFX_Init(), 0);
    expectInitialState(640, 480);
    EXPECT_EQ(GFX_Destroy(), 0);
    EXPECT_EQ(GFX_Destroy(), 0); // nothing left to release
    ASSERT_EQ(GFX_Init(), 0);
    expectInitialState(640, 480);
    EXPECT_EQ(GFX_Destroy(), 0);
}

TEST_F(DriverTest, InitResetsTheObjectIdCounterAndKeepsProperties) {
    nvtest::TestWindow window;
    GFX_SetProperty(PROP_WINDOW, window.handle());
    GFX_SetProperty(PROP_SPARE, 5);
    driver.objectIdCounter = 17;
    ASSERT_EQ(GFX_Init(), 0);
    EXPECT_EQ(driver.objectIdCounter, 0u);
    GFX_Destroy();
    EXPECT_EQ(GFX_GetProperty(PROP_SPARE), 5);
    EXPECT_FALSE(Manager3D_HeapsReady());
}

TEST_F(DriverTest, DisplayModesEnumerateRestartAndMatchExactly) {
    std::vector<DisplayModeRecord> modes;
    DisplayModeRecord mode;
    while (GFX_EnumResolutions(&mode) == 0 && modes.size() < 1000)
        modes.push_back(mode);
    ASSERT_FALSE(modes.empty());
    EXPECT_EQ(GFX_GetProperty(PROP_MODE_CURSOR), 0);
    ASSERT_EQ(GFX_EnumResolutions(&mode), 0); // starts again at the first mode
    EXPECT_EQ(mode.width, modes[0].width);
    EXPECT_EQ(mode.height, modes[0].height);
    EXPECT_EQ(GFX_GetProperty(PROP_MODE_CURSOR), 1);
    EXPECT_EQ(GFX_EnumResolutions(nullptr), 1);
    EXPECT_EQ(GFX_GetProperty(PROP_MODE_CURSOR), 1);
    GFX_SetProperty(PROP_MODE_CURSOR, 0);
    GFX_EnumResolutions(&mode);
    EXPECT_EQ(mode.width, modes[0].width);

    EXPECT_EQ(GFX_SetResolution(&modes[0]), 0); // the current mode is always settable
    DisplayModeRecord otherDepth = modes[0];
    otherDepth.bits = static_cast<unsigned char>(otherDepth.bits == 16 ? 8 : 16);
    EXPECT_EQ(GFX_SetResolution(&otherDepth), 1);
    DisplayModeRecord unknown = {12345, 7, modes[0].bits};
    EXPECT_EQ(GFX_SetResolution(&unknown), 1);
    EXPECT_EQ(GFX_SetResolution(nullptr), 1);
}

} // namespace

namespace x11host {

int hostErrors = 0;
int countHostError(Display*, XErrorEvent*) {
    ++hostErrors;
    return 0;
}

} // namespace x11host

TEST_F(DriverTest, HostHandlerInstalledLaterGetsOnlyItsOwnErrorsAndTheDriverSurvivesItsWindow) {
    Display* host = XOpenDisplay(nullptr);
    ASSERT_NE(host, nullptr);
    const Window window = XCreateSimpleWindow(host, DefaultRootWindow(host), 0, 0, 64, 64, 0, 0, 0);
    XMapWindow(host, window);
    XSync(host, False);
    GFX_SetProperty(PROP_WINDOW, static_cast<std::intptr_t>(window));
    ASSERT_EQ(GFX_Init(), 0);

    // The host puts in its own handler after GFX_Init, then destroys the driver's window.
    x11host::hostErrors = 0;
    const XErrorHandler before = XSetErrorHandler(x11host::countHostError);
    XDestroyWindow(host, window);
    XSync(host, False);
    const float triangle[24] = {0, 0, 50, 0, 0, 1,  0,  0, 10, 0, 50, 0,
                                0, 1, 1,  0, 0, 10, 50, 0, 0,  1, 0,  1};
    EXPECT_EQ(GFX_BeginRender(), 0);
    GFX_DrawPolygon(PRIM_TRIANGLES, 3, triangle);
    EXPECT_EQ(GFX_EndRender(), 0);
    EXPECT_EQ(x11host::hostErrors, 0); // the driver's errors stayed the driver's

    // An error of the host's own connection still reaches the host's handler.
    XWindowAttributes attributes;
    XGetWindowAttributes(host, window, &attributes);
    XSync(host, False);
    EXPECT_EQ(x11host::hostErrors, 1);

    GFX_Destroy();
    XSetErrorHandler(before);
    XCloseDisplay(host);
}
