// The host window on Windows: a plain Win32 window class, read back through GDI.
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include "host_window.h"

#include <windows.h>

#include <stdexcept>

namespace norvgl::host {

namespace {

constexpr char kWindowClass[] = "NorvglHostWindow";
// Not resizable: the driver keeps the client size it found at GFX_Init.
constexpr DWORD kWindowStyle = WS_OVERLAPPEDWINDOW & ~(WS_THICKFRAME | WS_MAXIMIZEBOX);

// Lets Windows deliver what is queued (size, activation, paint, input).
void pumpMessages() {
    MSG message;
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
}

// The close button and Esc only raise the window's flag: the host decides when to go.
LRESULT CALLBACK windowProc(HWND window, UINT message, WPARAM w, LPARAM l) {
    auto* closeAsked = reinterpret_cast<bool*>(GetWindowLongPtrA(window, GWLP_USERDATA));
    if (closeAsked && (message == WM_CLOSE || (message == WM_KEYDOWN && w == VK_ESCAPE))) {
        *closeAsked = true;
        return 0;
    }
    return DefWindowProcA(window, message, w, l);
}

void registerClassOnce() {
    static const bool registered = [] {
        WNDCLASSA windowClass = {};
        // No CS_OWNDC: the driver must live with a device context from the common cache.
        windowClass.style = CS_HREDRAW | CS_VREDRAW;
        windowClass.lpfnWndProc = windowProc;
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

HostWindow::HostWindow(int clientWidth, int clientHeight, const char* title)
    : width_(clientWidth), height_(clientHeight) {
    registerClassOnce();
    RECT frame = {0, 0, clientWidth, clientHeight};
    AdjustWindowRect(&frame, kWindowStyle, FALSE);
    HWND window = CreateWindowA(kWindowClass, title, kWindowStyle, 0, 0, frame.right - frame.left,
                                frame.bottom - frame.top, nullptr, nullptr,
                                GetModuleHandleA(nullptr), nullptr);
    if (!window)
        throw std::runtime_error("CreateWindow failed");
    window_ = reinterpret_cast<std::uintptr_t>(window);
    SetWindowLongPtrA(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(&closeAsked_));
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

bool HostWindow::poll() {
    pumpMessages();
    return !closeAsked_ && !destroyed_;
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

} // namespace norvgl::host
