// The scenario host's system on Windows: a plain Win32 window class, WGL, LoadLibrary.
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include "host_window.h"

#include <windows.h>

#include <malloc.h>

#include <filesystem>
#include <stdexcept>

namespace scenario {

namespace {

constexpr char kWindowClass[] = "NorvglScenarioHost";
constexpr DWORD kWindowStyle = WS_OVERLAPPEDWINDOW;

// Lets Windows deliver what showing the window queued (size, activation, paint).
void pumpMessages() {
    MSG message;
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
}

void registerClassOnce() {
    static const bool registered = [] {
        WNDCLASSA windowClass = {};
        // No CS_OWNDC: the driver must live with a device context from the common cache.
        windowClass.style = CS_HREDRAW | CS_VREDRAW;
        windowClass.lpfnWndProc = DefWindowProcA;
        windowClass.hInstance = GetModuleHandleA(nullptr);
        windowClass.hCursor = LoadCursorA(nullptr, reinterpret_cast<LPCSTR>(IDC_ARROW));
        // No background brush: erasing would paint over what GL shows.
        windowClass.hbrBackground = nullptr;
        windowClass.lpszClassName = kWindowClass;
        return RegisterClassA(&windowClass) != 0;
    }();
    if (!registered)
        throw std::runtime_error("RegisterClass failed");
}

} // namespace

HostWindow::HostWindow(int clientWidth, int clientHeight)
    : width_(clientWidth), height_(clientHeight) {
    registerClassOnce();
    RECT frame = {0, 0, clientWidth, clientHeight};
    AdjustWindowRect(&frame, kWindowStyle, FALSE);
    HWND window = CreateWindowA(kWindowClass, "norvgl scenario", kWindowStyle, 0, 0,
                                frame.right - frame.left, frame.bottom - frame.top, nullptr,
                                nullptr, GetModuleHandleA(nullptr), nullptr);
    if (!window)
        throw std::runtime_error("CreateWindow failed");
    window_ = reinterpret_cast<std::uintptr_t>(window);
    ShowWindow(window, SW_SHOW);
    UpdateWindow(window);
    pumpMessages();
    RECT client = {};
    GetClientRect(window, &client);
    if (client.right != clientWidth || client.bottom != clientHeight) {
        DestroyWindow(window);
        throw std::runtime_error("the window's client area is not the size asked for");
    }
}

HostWindow::~HostWindow() {
    if (!destroyed_)
        DestroyWindow(reinterpret_cast<HWND>(window_));
    pumpMessages();
}

void HostWindow::destroy() {
    if (destroyed_)
        return;
    DestroyWindow(reinterpret_cast<HWND>(window_));
    pumpMessages();
    destroyed_ = true;
}

std::intptr_t HostWindow::handle() const {
    return static_cast<std::intptr_t>(window_);
}

Image HostWindow::capture() const {
    Image image;
    HWND window = reinterpret_cast<HWND>(window_);
    HDC source = GetDC(window);
    if (!source)
        return image;
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = width_;
    info.bmiHeader.biHeight = -height_; // top-down rows, as the image keeps them
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    void* bits = nullptr;
    HDC memory = CreateCompatibleDC(source);
    HBITMAP section = CreateDIBSection(source, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    if (memory && section && bits) {
        HGDIOBJ previous = SelectObject(memory, section);
        if (BitBlt(memory, 0, 0, width_, height_, source, 0, 0, SRCCOPY)) {
            GdiFlush();
            image.width = width_;
            image.height = height_;
            image.pixels.resize(static_cast<std::size_t>(width_) * height_);
            const auto* bgrx = static_cast<const std::uint8_t*>(bits);
            for (std::size_t i = 0; i < image.pixels.size(); ++i)
                image.pixels[i] = {bgrx[4 * i + 2], bgrx[4 * i + 1], bgrx[4 * i]};
        }
        SelectObject(memory, previous);
    }
    if (section)
        DeleteObject(section);
    if (memory)
        DeleteDC(memory);
    ReleaseDC(window, source);
    return image;
}

DestroyedWindow::DestroyedWindow() {
    registerClassOnce();
    HWND window = CreateWindowA(kWindowClass, "destroyed", kWindowStyle, 0, 0, 64, 64, nullptr,
                                nullptr, GetModuleHandleA(nullptr), nullptr);
    if (!window)
        throw std::runtime_error("CreateWindow failed");
    window_ = reinterpret_cast<std::uintptr_t>(window);
    DestroyWindow(window);
    pumpMessages();
}

DestroyedWindow::~DestroyedWindow() = default;

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
