// The scenario host's system on Windows: Win32 handles, WGL, LoadLibrary.
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include "host_system.h"

#include <windows.h>

#include <malloc.h>

#include <filesystem>
#include <stdexcept>

namespace scenario {

NotAWindow::NotAWindow() {
    object_ = reinterpret_cast<std::uintptr_t>(CreateEventA(nullptr, TRUE, FALSE, nullptr));
    if (!object_)
        throw std::runtime_error("CreateEvent failed");
}

NotAWindow::~NotAWindow() {
    CloseHandle(reinterpret_cast<HANDLE>(object_));
}

std::intptr_t NotAWindow::handle() const {
    return static_cast<std::intptr_t>(object_);
}

PipeName::PipeName() {
    path_ = "\\\\.\\pipe\\norvgl-picture-" + std::to_string(GetCurrentProcessId());
    HANDLE pipe = CreateNamedPipeA(path_.c_str(), PIPE_ACCESS_OUTBOUND, PIPE_TYPE_BYTE | PIPE_WAIT,
                                   1, 4096, 4096, 0, nullptr);
    if (pipe == INVALID_HANDLE_VALUE)
        throw std::runtime_error("CreateNamedPipe failed");
    object_ = reinterpret_cast<std::uintptr_t>(pipe);
}

PipeName::~PipeName() {
    CloseHandle(reinterpret_cast<HANDLE>(object_));
}

bool glContextCurrent() {
    return wglGetCurrentContext() != nullptr;
}

ScreenMode currentScreenMode() {
    DEVMODEA settings = {};
    settings.dmSize = sizeof settings;
    ScreenMode mode;
    if (EnumDisplaySettingsA(nullptr, ENUM_CURRENT_SETTINGS, &settings)) {
        mode.width = settings.dmPelsWidth;
        mode.height = settings.dmPelsHeight;
        mode.bits = settings.dmBitsPerPel;
    }
    return mode;
}

PrivateLibrary::PrivateLibrary(const std::string& directory) {
    char name[MAX_PATH] = {};
    HMODULE linked = GetModuleHandleA("norvgl.dll");
    if (!linked || !GetModuleFileNameA(linked, name, MAX_PATH)) {
        error_ = "the linked driver library was not found";
        return;
    }
    const std::filesystem::path original = name;
    const std::filesystem::path copy = std::filesystem::path(directory) / original.filename();
    std::error_code failed;
    std::filesystem::copy_file(original, copy, failed);
    if (failed) {
        error_ = "copying " + original.string() + ": " + failed.message();
        return;
    }
    // A full path to another file: the loader maps a second instance and attaches it.
    module_ = LoadLibraryA(copy.string().c_str());
    if (!module_)
        error_ = "LoadLibrary failed with error " + std::to_string(GetLastError());
}

PrivateLibrary::~PrivateLibrary() {
    if (module_)
        FreeLibrary(static_cast<HMODULE>(module_));
}

PrivateLibrary::Entry PrivateLibrary::symbol(const char* name) const {
    return module_ ? reinterpret_cast<Entry>(GetProcAddress(static_cast<HMODULE>(module_), name))
                   : nullptr;
}

std::size_t heapBytesInUse() {
    std::size_t used = 0;
    _HEAPINFO entry = {};
    int status;
    while ((status = _heapwalk(&entry)) == _HEAPOK)
        if (entry._useflag == _USEDENTRY)
            used += entry._size;
    return status == _HEAPEND ? used : 0;
}

} // namespace scenario
