// A real X11 window on the test display for the driver to attach to, and read-back of what
// the driver put on screen.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace nvtest {

struct Rgba {
    std::uint8_t r, g, b, a;
    bool operator==(const Rgba&) const = default;
};

// Pixels with a top-left origin, as a host thinks of its window.
struct Image {
    int width = 0;
    int height = 0;
    std::vector<Rgba> pixels;
    Rgba at(int x, int y) const { return pixels[static_cast<std::size_t>(y) * width + x]; }
    bool savePpm(const std::string& path) const;
};

class TestWindow {
public:
    explicit TestWindow(int width = 640, int height = 480);
    ~TestWindow();
    TestWindow(const TestWindow&) = delete;
    TestWindow& operator=(const TestWindow&) = delete;

    std::intptr_t handle() const { return static_cast<std::intptr_t>(window_); }
    // What the window shows now (the last swapped frame).
    Image capture() const;

private:
    void* display_ = nullptr;
    unsigned long window_ = 0;
    int width_ = 0;
    int height_ = 0;
};

// A pixmap id: a valid X resource that is not a window.
class TestPixmap {
public:
    TestPixmap();
    ~TestPixmap();
    std::intptr_t handle() const { return static_cast<std::intptr_t>(pixmap_); }

private:
    void* display_ = nullptr;
    unsigned long pixmap_ = 0;
};

// An InputOnly window: a window that has nothing to draw on.
class InputOnlyWindow {
public:
    InputOnlyWindow();
    ~InputOnlyWindow();
    std::intptr_t handle() const { return static_cast<std::intptr_t>(window_); }

private:
    void* display_ = nullptr;
    unsigned long window_ = 0;
};

} // namespace nvtest
