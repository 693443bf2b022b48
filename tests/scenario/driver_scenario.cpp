// A host's first contact with the driver: what a freshly loaded library holds and logs, the
// property calls and their errors, GFX_Init on a real window and on handles that are none,
// and the display-mode list.
#include "host_system.h"
#include "picture_assets.h"
#include "scenario.h"
#include "scenario_gl.h"

#include "norvgl.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace scenario {
namespace {

TEST(FreshLibrary, LoadLogsTheBannerAndStartsWithDefaultsAndNoError) {
    ScratchDirectory scratch;
    PrivateLibrary library(scratch.path());
    ASSERT_TRUE(library.loaded()) << library.error();
    // Loading alone wrote the banner into the current directory's log.
    EXPECT_EQ(norvgl::assets::readText("debuglog.txt"), kLogBanner);

    auto* getLastError = library.function<decltype(GFX_GetLastError)>("GFX_GetLastError");
    auto* getProperty = library.function<decltype(GFX_GetProperty)>("GFX_GetProperty");
    auto* getRenderProperty =
        library.function<decltype(GFX_GetRenderProperty)>("GFX_GetRenderProperty");
    ASSERT_TRUE(getLastError && getProperty && getRenderProperty);

    const LastError error = lastErrorOf(getLastError);
    EXPECT_EQ(error.title, kNoErrorText);
    EXPECT_EQ(error.details, kNoErrorText);

    EXPECT_STREQ(reinterpret_cast<const char*>(getProperty(PROP_DRIVER_NAME)),
                 "Norvash OpenGL Driver");
    EXPECT_STREQ(reinterpret_cast<const char*>(getProperty(PROP_DRIVER_VERSION)), "8.29.00.1");
    const intptr_t expected[] = {0, 0, 0, 0, 0, -1, -1, 0};
    for (unsigned index = PROP_WINDOW; index <= PROP_MODE_CURSOR; ++index)
        EXPECT_EQ(getProperty(index), expected[index]) << "property " << index;
    const int expectedRender[] = {0, 0, -1, -1, 0, 0, 0, 0};
    for (int index = RPROP_ALPHA_BLEND; index <= RPROP_CLEAR_COLOR; ++index)
        EXPECT_EQ(getRenderProperty(index), expectedRender[index]) << "render property " << index;
    // Reading the defaults reported nothing.
    EXPECT_EQ(norvgl::assets::readText("debuglog.txt"), kLogBanner);
}

// The linked library, as the host uses it; its log is the run's "debuglog.txt".
class Properties : public ::testing::Test {
protected:
    void TearDown() override {
        GFX_SetProperty(PROP_SPARE, -1);
        GFX_SetProperty(PROP_NO_TEXTURES, 0);
        GFX_SetProperty(PROP_MODE_CURSOR, 0);
        GFX_SetRenderProperty(RPROP_SPARE, -1);
        GFX_SetRenderProperty(8, 0);
    }
    LogWatch log;
};

TEST_F(Properties, SlotsKeepWhatTheHostStores) {
    EXPECT_EQ(GFX_SetProperty(PROP_SPARE, 0x7fffffff), 0);
    EXPECT_EQ(GFX_GetProperty(PROP_SPARE), 0x7fffffff);
    EXPECT_EQ(GFX_SetProperty(PROP_NO_TEXTURES, -5), 0);
    EXPECT_EQ(GFX_GetProperty(PROP_NO_TEXTURES), -5);
    EXPECT_EQ(GFX_SetRenderProperty(RPROP_SPARE, 77), 0);
    EXPECT_EQ(GFX_GetRenderProperty(RPROP_SPARE), 77);
    // Index 8 is accepted by both render property calls and only stored.
    EXPECT_EQ(GFX_SetRenderProperty(8, 3), 0);
    EXPECT_EQ(GFX_GetRenderProperty(8), 3);
    EXPECT_EQ(log.appended(), "");
}

TEST_F(Properties, EveryOutOfRangeIndexReportsBadPropertyOnce) {
    const std::string report = errorReport(kBadPropertyTitle, kBadPropertyDetails);
    EXPECT_EQ(GFX_GetProperty(8), 1);
    EXPECT_EQ(log.appended(), report);
    EXPECT_EQ(GFX_SetProperty(0xffffffffu, 3), 1);
    EXPECT_EQ(log.appended(), report);
    EXPECT_EQ(GFX_GetRenderProperty(9), 1);
    EXPECT_EQ(log.appended(), report);
    EXPECT_EQ(GFX_SetRenderProperty(-1, 3), 1);
    EXPECT_EQ(log.appended(), report);
    const LastError error = lastError();
    EXPECT_EQ(error.title, kBadPropertyTitle);
    EXPECT_EQ(error.details, kBadPropertyDetails);
    // A later successful call leaves the error as it was and logs nothing.
    EXPECT_EQ(GFX_SetProperty(PROP_SPARE, 9), 0);
    EXPECT_EQ(lastError().title, kBadPropertyTitle);
    EXPECT_EQ(log.appended(), "");

    // Null buffers are skipped; the other one is still filled.
    char title[64] = "";
    GFX_GetLastError(title, nullptr);
    EXPECT_STREQ(title, kBadPropertyTitle);
    char details[256] = "";
    GFX_GetLastError(nullptr, details);
    EXPECT_STREQ(details, kBadPropertyDetails);
}

TEST_F(Properties, EntriesKeptForOlderHostsAnswerWithoutActing) {
    // Not offered: each call fails with its own report, whatever it is passed.
    int (*const unsupported[])(...) = {
        GFX_AddRenderWindow,    GFX_GetAvailableDevices, GFX_GetRenderState, GFX_GetRenderWindow,
        GFX_RemoveRenderWindow, GFX_SetDevice,           GFX_SetRenderState, GFX_SetRenderWindow,
        GFX_TestRenderState,    GFX_UnloadPicture};
    const std::string report =
        errorReport("Feature not supported", "The render feature (lighting, etc.) you attempted to "
                                             "enable is not supported by your computer. Or, a "
                                             "function call you made is not supported by this "
                                             "library.");
    for (auto* entry : unsupported) {
        GFX_GetProperty(8); // another error first, which the call must replace
        log.appended();
        EXPECT_EQ(entry(1, 2, 3), 1);
        EXPECT_EQ(lastError().title, "Feature not supported");
        EXPECT_EQ(log.appended(), report);
    }
    // Nothing to do: success, and nothing logged or recorded.
    for (auto* entry : {GFX_Print, GFX_Resize, GFX_SetBlitArea}) {
        EXPECT_EQ(entry(640, 480), 0);
        EXPECT_EQ(log.appended(), "");
    }
    // The older mesh entry fails without touching the last error.
    EXPECT_EQ(GFX_LoadIndexedMesh(1, 2, 3), 1);
    EXPECT_EQ(lastError().title, "Feature not supported");
    EXPECT_EQ(log.appended(), "");
}

void expectInitialState(const HostWindow& window) {
    ASSERT_TRUE(glContextCurrent());
    GLfloat range[2] = {-1, -1};
    glGetFloatv(GL_DEPTH_RANGE, range);
    EXPECT_EQ(range[0], 0.0f);
    EXPECT_EQ(range[1], 0.5f);
    GLint function = 0;
    glGetIntegerv(GL_DEPTH_FUNC, &function);
    EXPECT_EQ(function, GL_LESS);
    for (const GLenum capability :
         {GL_CULL_FACE, GL_DEPTH_TEST, GL_NORMALIZE, GL_VERTEX_ARRAY, GL_NORMAL_ARRAY})
        EXPECT_TRUE(glIsEnabled(capability)) << capability;
    GLfloat shininess = 0;
    glGetMaterialfv(GL_FRONT, GL_SHININESS, &shininess);
    EXPECT_EQ(shininess, 30.0f);
    GLint matrixMode = 0;
    glGetIntegerv(GL_MATRIX_MODE, &matrixMode);
    EXPECT_EQ(matrixMode, GL_MODELVIEW);
    GLint viewport[4] = {-1, -1, -1, -1};
    glGetIntegerv(GL_VIEWPORT, viewport);
    EXPECT_EQ(viewport[0], 0);
    EXPECT_EQ(viewport[1], 0);
    EXPECT_EQ(viewport[2], window.clientWidth());
    EXPECT_EQ(viewport[3], window.clientHeight());
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

class Init : public ::testing::Test {
protected:
    void TearDown() override { GFX_SetProperty(PROP_WINDOW, 0); }
};

TEST_F(Init, HandlesThatNameNoWindowFailAndALaterInitWorks) {
    const std::string report = errorReport(kPixelFormatTitle, kPixelFormatDetails);
    NotAWindow notAWindow;
    // The host's window destroyed; its connection lives on, so no other window takes its id.
    HostWindow destroyed;
    destroyed.destroy();
    const std::intptr_t handles[] = {0, notAWindow.handle(), destroyed.handle()};
    for (std::intptr_t handle : handles) {
        LogWatch log;
        GFX_SetProperty(PROP_WINDOW, handle);
        EXPECT_EQ(GFX_Init(), 1) << handle;
        EXPECT_FALSE(glContextCurrent()) << handle;
        EXPECT_EQ(log.appended(), report) << handle;
        const LastError error = lastError();
        EXPECT_EQ(error.title, kPixelFormatTitle) << handle;
        EXPECT_EQ(error.details, kPixelFormatDetails) << handle;
    }

    // Straight after the failures, a real window attaches, silently; after a destroy, which
    // lets go of the context but not of the property, an init on another window of another
    // size works too.
    LogWatch log;
    HostWindow first;
    GFX_SetProperty(PROP_WINDOW, first.handle());
    ASSERT_EQ(GFX_Init(), 0);
    expectInitialState(first);
    EXPECT_EQ(GFX_Destroy(), 0);
    EXPECT_FALSE(glContextCurrent());
    EXPECT_EQ(GFX_GetProperty(PROP_WINDOW), first.handle());
    HostWindow second(320, 200);
    GFX_SetProperty(PROP_WINDOW, second.handle());
    ASSERT_EQ(GFX_Init(), 0);
    expectInitialState(second);
    EXPECT_EQ(GFX_Destroy(), 0);
    EXPECT_EQ(log.appended(), "");
    // The failures' error stays: success reports nothing.
    EXPECT_EQ(lastError().title, kPixelFormatTitle);
}

TEST(DisplayModes, EnumerationListsTheCurrentModeThenEndsAndStartsOver) {
    const ScreenMode current = currentScreenMode();
    ASSERT_GT(current.width, 0u);
    GFX_SetProperty(PROP_MODE_CURSOR, 0);
    std::vector<DisplayModeRecord> modes;
    DisplayModeRecord mode = {};
    while (modes.size() < 1000 && GFX_EnumResolutions(&mode) == 0)
        modes.push_back(mode);
    ASSERT_FALSE(modes.empty());
    ASSERT_LT(modes.size(), 1000u);
    EXPECT_EQ(GFX_GetProperty(PROP_MODE_CURSOR), 0);
    bool listed = false;
    for (const DisplayModeRecord& m : modes)
        listed |= m.width == current.width && m.height == current.height &&
                  m.bits == static_cast<unsigned char>(current.bits);
    EXPECT_TRUE(listed) << current.width << "x" << current.height << "x" << current.bits;

    EXPECT_EQ(GFX_EnumResolutions(nullptr), 1);
    EXPECT_EQ(GFX_GetProperty(PROP_MODE_CURSOR), 0);
    ASSERT_EQ(GFX_EnumResolutions(&mode), 0);
    EXPECT_EQ(mode.width, modes[0].width);
    EXPECT_EQ(mode.height, modes[0].height);
    EXPECT_EQ(mode.bits, modes[0].bits);
    EXPECT_EQ(GFX_GetProperty(PROP_MODE_CURSOR), 1);
    GFX_SetProperty(PROP_MODE_CURSOR, 0);

    // A size the screen does not offer matches nothing and changes nothing.
    const DisplayModeRecord unknown = {12345, 7, modes[0].bits};
    EXPECT_EQ(GFX_SetResolution(&unknown), 1);
    EXPECT_EQ(currentScreenMode().width, current.width);
}

} // namespace
} // namespace scenario
