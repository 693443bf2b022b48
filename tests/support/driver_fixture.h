// Test fixtures: each test runs in its own temporary directory (the debug log lands in the
// current directory) with the driver's tables as after a fresh load.
#pragma once

#include "host_window.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace nvtest {

class DriverTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;
    // The whole debug log written during this test.
    std::string log() const;
    std::string directory() const { return directory_; }

private:
    std::string previous_;
    std::string directory_;
};

// A driver attached to a 640 x 480 window with a successful GFX_Init.
class WindowTest : public DriverTest {
protected:
    void SetUp() override;
    void TearDown() override;
    std::unique_ptr<norvgl::host::HostWindow> window;
};

// A WindowTest with a frame open for the whole test.
class InFrameTest : public WindowTest {
protected:
    void SetUp() override;
    void TearDown() override;
};

} // namespace nvtest
