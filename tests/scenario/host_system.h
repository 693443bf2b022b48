// What a scenario needs of the host's system beyond the host window (tools/common), once for
// X11 and once for Win32: handles that name no window, a pipe, the heap in use, the screen's
// current mode and a private copy of the driver library loaded at run time.
#pragma once

#include "host_window.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace scenario {

using norvgl::host::HostWindow;
using norvgl::host::Image;
using norvgl::host::Rgb;

// A name in the file system that is a pipe no one writes to: opening and reading it as a
// file would wait for ever.
class PipeName {
public:
    PipeName();
    ~PipeName();
    PipeName(const PipeName&) = delete;
    PipeName& operator=(const PipeName&) = delete;
    const std::string& path() const { return path_; }

private:
    std::string path_;
    std::uintptr_t object_ = 0; // Win32: the pipe's server end
};

// A live system object whose handle names no window (an X pixmap, a Win32 event).
class NotAWindow {
public:
    NotAWindow();
    ~NotAWindow();
    NotAWindow(const NotAWindow&) = delete;
    NotAWindow& operator=(const NotAWindow&) = delete;
    std::intptr_t handle() const;

private:
    void* connection_ = nullptr;
    std::uintptr_t object_ = 0;
};

// Whether the calling thread has a GL context current.
bool glContextCurrent();

// Bytes the process holds from the C library's heap (all blocks in use); 0 when unknown.
std::size_t heapBytesInUse();

// The screen's mode right now, as the driver's display-mode records describe modes.
struct ScreenMode {
    unsigned width = 0;
    unsigned height = 0;
    unsigned bits = 0;
};
ScreenMode currentScreenMode();

// A copy of the driver library that the program links, placed in a directory and loaded from
// there, so that its load-time entry runs again with that directory current.
class PrivateLibrary {
public:
    explicit PrivateLibrary(const std::string& directory);
    ~PrivateLibrary();
    PrivateLibrary(const PrivateLibrary&) = delete;
    PrivateLibrary& operator=(const PrivateLibrary&) = delete;

    bool loaded() const { return module_ != nullptr; }
    // Why loading failed, for the test's message.
    const std::string& error() const { return error_; }
    // An exported entry of the copy; null when it has none of that name.
    template <typename F> F* function(const char* name) const {
        return reinterpret_cast<F*>(symbol(name));
    }

private:
    using Entry = void (*)();
    Entry symbol(const char* name) const;
    void* module_ = nullptr;
    std::string error_;
};

} // namespace scenario
