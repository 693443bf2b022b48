// Per-test directory and a fresh driver; window tests attach the driver to a real window.
#include "support/driver_fixture.h"

#include "picture_assets.h"
#include "session/session.h"

#include <cstdlib>
#include <filesystem>
#include <unistd.h>

namespace nvtest {

void DriverTest::SetUp() {
    previous_ = std::filesystem::current_path().string();
    char pattern[] = "/tmp/norvgl-test-XXXXXX";
    const char* made = mkdtemp(pattern);
    ASSERT_NE(made, nullptr);
    directory_ = made;
    std::filesystem::current_path(directory_);
    // As after a fresh load: the tables of every layer back to their load-time state.
    norvgl::attachLibrary();
}

void DriverTest::TearDown() {
    std::filesystem::current_path(previous_);
    std::error_code ignored;
    std::filesystem::remove_all(directory_, ignored);
}

std::string DriverTest::log() const {
    return norvgl::assets::readText(directory_ + "/debuglog.txt");
}

void WindowTest::SetUp() {
    DriverTest::SetUp();
    window = std::make_unique<norvgl::host::HostWindow>();
    GFX_SetProperty(PROP_WINDOW, window->handle());
    ASSERT_EQ(GFX_Init(), 0);
}

void WindowTest::TearDown() {
    GFX_Destroy();
    window.reset();
    DriverTest::TearDown();
}

void InFrameTest::SetUp() {
    WindowTest::SetUp();
    GFX_BeginRender();
}

void InFrameTest::TearDown() {
    GFX_EndRender();
    WindowTest::TearDown();
}

} // namespace nvtest
