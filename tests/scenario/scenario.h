// Shared pieces of the scenario programs: the texts a host sees, the debug log in the current
// directory, and where captures go (the directory named by NORVGL_SCENARIO_OUT, when set).
#pragma once

#include "host_system.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <string>

namespace scenario {

inline constexpr Rgb kBlack = {0, 0, 0};
inline constexpr Rgb kWhite = {255, 255, 255};
inline constexpr Rgb kRed = {255, 0, 0};
inline constexpr Rgb kGreen = {0, 255, 0};
inline constexpr Rgb kBlue = {0, 0, 255};

inline constexpr char kLogBanner[] = "***********************************\r\n"
                                     "NORVGL.DLL Entry Point\r\n";
inline constexpr char kNoErrorText[] = "No error has occured";
inline constexpr char kBadPropertyTitle[] = "Bad property";
inline constexpr char kBadPropertyDetails[] =
    "You attempted to get or set a video property that does not exist";
inline constexpr char kPixelFormatTitle[] = "SetPixelFormat failed";
inline constexpr char kPixelFormatDetails[] =
    "Windows was not able to find the specified depth buffer, pixel depth, or OpenGL support "
    "necessary to initialize the graphics mode.";

// The log entry that an error report with no detail text appends.
std::string errorReport(const std::string& title, const std::string& details);

// The last error as the host reads it.
struct LastError {
    std::string title;
    std::string details;
};
template <typename GetLastError> LastError lastErrorOf(GetLastError* get) {
    // Room beyond what the texts need, so that a missing terminator shows as garbage.
    char title[64] = "untouched";
    char details[256] = "untouched";
    get(title, details);
    return {title, details};
}
LastError lastError();

// Follows "debuglog.txt" in the current directory: what was appended since the last look.
class LogWatch {
public:
    LogWatch();
    // Treats the first `seen` bytes as already seen.
    explicit LogWatch(std::size_t seen);
    std::string appended();

private:
    std::size_t seen_ = 0;
};

// The path of `file` in the output directory; empty when none is set.
std::string outputPath(const std::string& file);

// Writes a capture as <name>.ppm into the output directory; does nothing when none is set.
// False when the file could not be written.
bool saveCapture(const std::string& name, const Image& image);

// A window (640 x 480 unless a fixture says otherwise) with the driver attached, clearing
// the colour at every frame start.
class WindowScenario : public ::testing::Test {
protected:
    explicit WindowScenario(int width = 640, int height = 480) : width_(width), height_(height) {}
    void SetUp() override;
    void TearDown() override;
    // Opens a frame of the near-to-far phase, closing one of the other phase empty first: the
    // tests before may leave either phase, and the two systems run them in other orders.
    static void beginNearToFarFrame();
    // Closes the frame and returns what the window shows, saved as <suite>.<test>-<n>; black
    // when the window could not be read.
    Image endFrame();

private:
    int width_, height_;
    std::unique_ptr<HostWindow> window_;
    int captures_ = 0;
};

// A directory of its own under the system's temporary directory, made current while this
// lives; the previous current directory is restored and the directory removed afterwards.
class ScratchDirectory {
public:
    ScratchDirectory();
    ~ScratchDirectory();
    ScratchDirectory(const ScratchDirectory&) = delete;
    ScratchDirectory& operator=(const ScratchDirectory&) = delete;
    const std::string& path() const { return path_; }

private:
    std::string previous_;
    std::string path_;
};

} // namespace scenario
