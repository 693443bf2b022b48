// Win32 backend: the host's window is an HWND. Its device context gets a pixel format chosen
// by GDI, a WGL rendering context and, for palette formats, a logical palette.
#include "platform/platform.h"

#include "platform/gl_headers.h"

#include <cstdlib>
#include <cstring>

namespace norvgl::win32 {

struct Win32State {
    HDC deviceContext = nullptr;
    HGLRC renderingContext = nullptr;
    HWND window = nullptr;
    // A window that GFX_Init has checked, with its device context, for createContext.
    HWND pendingWindow = nullptr;
    HDC pendingDeviceContext = nullptr;
};

Win32State state;

namespace {

// Palette formats only: a deeper format would need more entries than the header can count.
constexpr BYTE kMaxPaletteColorBits = 8;

BYTE paletteComponent(int index, BYTE bits, BYTE shift) {
    const int mask = (1 << bits) - 1;
    return static_cast<BYTE>(((index >> shift) & mask) * 255 / mask);
}

void realizePalette(HDC deviceContext, const PIXELFORMATDESCRIPTOR& format) {
    if (format.iPixelType != PFD_TYPE_RGBA || format.cColorBits > kMaxPaletteColorBits ||
        format.cColorBits == 0)
        return;
    const int entries = 1 << format.cColorBits;
    const std::size_t size = sizeof(LOGPALETTE) + sizeof(PALETTEENTRY) * (entries - 1);
    auto* palette = static_cast<LOGPALETTE*>(std::calloc(1, size));
    if (!palette)
        return;
    palette->palVersion = 0x300;
    palette->palNumEntries = static_cast<WORD>(entries);
    for (int i = 0; i < entries; ++i) {
        palette->palPalEntry[i].peRed =
            format.cRedBits ? paletteComponent(i, format.cRedBits, format.cRedShift) : 0;
        palette->palPalEntry[i].peGreen =
            format.cGreenBits ? paletteComponent(i, format.cGreenBits, format.cGreenShift) : 0;
        palette->palPalEntry[i].peBlue =
            format.cBlueBits ? paletteComponent(i, format.cBlueBits, format.cBlueShift) : 0;
        palette->palPalEntry[i].peFlags = 0;
    }
    HPALETTE handle = CreatePalette(palette);
    std::free(palette);
    if (handle) {
        SelectPalette(deviceContext, handle, FALSE);
        RealizePalette(deviceContext);
    }
}

} // namespace

} // namespace norvgl::win32

namespace norvgl::platform {

using win32::state;

bool attachWindow(std::intptr_t window) {
    // A window that fails leaves the one attached before, and its context, as they were.
    const HWND handle = reinterpret_cast<HWND>(window);
    if (!window || !IsWindow(handle))
        return false;
    if (handle == state.window && state.deviceContext && state.renderingContext &&
        WindowFromDC(state.deviceContext) == handle) {
        // The same window again keeps its device context and pixel format.
        state.pendingWindow = handle;
        state.pendingDeviceContext = state.deviceContext;
        return true;
    }
    HDC deviceContext = GetDC(handle);
    if (!deviceContext)
        return false;

    PIXELFORMATDESCRIPTOR format = {};
    format.nSize = 40;
    format.nVersion = 1;
    format.dwFlags = PFD_DRAW_TO_WINDOW | PFD_SUPPORT_OPENGL | PFD_DOUBLEBUFFER;
    format.iPixelType = PFD_TYPE_RGBA;
    format.cColorBits = 16;
    format.cDepthBits = 16;
    format.iLayerType = PFD_MAIN_PLANE;
    const int chosen = ChoosePixelFormat(deviceContext, &format);
    if (!SetPixelFormat(deviceContext, chosen, &format)) {
        ReleaseDC(handle, deviceContext);
        return false;
    }
    DescribePixelFormat(deviceContext, GetPixelFormat(deviceContext), 40, &format);
    win32::realizePalette(deviceContext, format);
    state.pendingWindow = handle;
    state.pendingDeviceContext = deviceContext;
    return true;
}

void createContext() {
    if (!state.pendingDeviceContext)
        return;
    const HWND window = state.pendingWindow;
    const HDC deviceContext = state.pendingDeviceContext;
    state.pendingWindow = nullptr;
    state.pendingDeviceContext = nullptr;
    // Device contexts come from a cache: a new window can get the handle value that a
    // destroyed one had, so the windows tell whether it is the same.
    if (window == state.window && deviceContext == state.deviceContext && state.renderingContext) {
        // The same window again: its context, with the host's textures and lists, stays.
        wglMakeCurrent(deviceContext, state.renderingContext);
        return;
    }
    // A new window gets a new context that shares textures and display lists with the old one,
    // so pictures and objects loaded before keep drawing.
    const HGLRC context = wglCreateContext(deviceContext);
    if (context && state.renderingContext)
        wglShareLists(state.renderingContext, context);
    wglMakeCurrent(deviceContext, context);
    if (state.renderingContext)
        wglDeleteContext(state.renderingContext);
    // A destroyed window took its device context with it, and the handle may already be the
    // new window's: only a live window's is given back.
    if (state.deviceContext && state.deviceContext != deviceContext && IsWindow(state.window))
        ReleaseDC(state.window, state.deviceContext);
    state.renderingContext = context;
    state.deviceContext = deviceContext;
    state.window = window;
}

bool hasContext() {
    return state.renderingContext != nullptr;
}

void keepErrorTrap() {}

void clientSize(std::int32_t& width, std::int32_t& height) {
    RECT rect = {};
    GetClientRect(state.window, &rect);
    width = rect.right;
    height = rect.bottom;
}

void swapBuffers() {
    SwapBuffers(state.deviceContext);
}

bool releaseContext() {
    if (!state.renderingContext)
        return true;
    if (!wglMakeCurrent(nullptr, nullptr))
        return false;
    if (!wglDeleteContext(state.renderingContext))
        return false;
    state.renderingContext = nullptr;
    return true;
}

bool releaseWindow(std::intptr_t window) {
    if (!state.deviceContext)
        return true;
    // A window the host destroyed took its device context with it; the handle may name
    // another window's by now.
    const HWND handle = reinterpret_cast<HWND>(window);
    const bool released = IsWindow(handle) && ReleaseDC(handle, state.deviceContext) != 0;
    // Either way the device context is no longer the driver's to use.
    state.deviceContext = nullptr;
    state.window = nullptr;
    return released;
}

bool displayMode(std::uint32_t index, DisplayMode& mode) {
    DEVMODEA settings = {};
    settings.dmSize = sizeof settings;
    if (!EnumDisplaySettingsA(nullptr, index, &settings))
        return false;
    mode.width = settings.dmPelsWidth;
    mode.height = settings.dmPelsHeight;
    mode.bits = settings.dmBitsPerPel;
    mode.native = index;
    return true;
}

namespace {

bool modeSettings(const DisplayMode& mode, DEVMODEA& settings) {
    settings = {};
    settings.dmSize = sizeof settings;
    return EnumDisplaySettingsA(nullptr, static_cast<DWORD>(mode.native), &settings) != 0;
}

} // namespace

bool testDisplayMode(const DisplayMode& mode) {
    DEVMODEA settings;
    return modeSettings(mode, settings) &&
           ChangeDisplaySettingsA(&settings, CDS_TEST) == DISP_CHANGE_SUCCESSFUL;
}

void changeDisplayMode(const DisplayMode& mode) {
    DEVMODEA settings;
    if (modeSettings(mode, settings))
        ChangeDisplaySettingsA(&settings, 0);
}

void restoreDisplayMode() {
    ChangeDisplaySettingsA(nullptr, 0);
}

namespace {

bool openFile(const char* name, DWORD access, DWORD disposition, std::intptr_t& handle) {
    HANDLE file =
        CreateFileA(name, access, 0, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return false;
    // Pipes and devices are no files: a read could wait for ever.
    if (GetFileType(file) != FILE_TYPE_DISK) {
        CloseHandle(file);
        return false;
    }
    handle = reinterpret_cast<std::intptr_t>(file);
    return true;
}

HANDLE fileHandle(std::intptr_t handle) {
    return reinterpret_cast<HANDLE>(handle);
}

} // namespace

bool fileOpenRead(const char* name, std::intptr_t& handle) {
    return openFile(name, GENERIC_READ, OPEN_EXISTING, handle);
}

bool fileOpenWrite(const char* name, std::intptr_t& handle) {
    return openFile(name, GENERIC_WRITE, CREATE_ALWAYS, handle);
}

bool fileOpenAppend(const char* name, std::intptr_t& handle) {
    if (!openFile(name, GENERIC_READ | GENERIC_WRITE, OPEN_ALWAYS, handle))
        return false;
    SetFilePointer(fileHandle(handle), 0, nullptr, FILE_END);
    return true;
}

void fileClose(std::intptr_t handle) {
    CloseHandle(fileHandle(handle));
}

std::uint64_t fileSize(std::intptr_t handle) {
    DWORD high = 0;
    const DWORD low = GetFileSize(fileHandle(handle), &high);
    return (static_cast<std::uint64_t>(high) << 32) | low;
}

std::int64_t fileRead(std::intptr_t handle, void* destination, std::uint32_t count) {
    DWORD done = 0;
    if (!ReadFile(fileHandle(handle), destination, count, &done, nullptr))
        return -1;
    return done;
}

std::int64_t fileWrite(std::intptr_t handle, const void* source, std::uint32_t count) {
    DWORD done = 0;
    if (!WriteFile(fileHandle(handle), source, count, &done, nullptr))
        return -1;
    return done;
}

std::uint32_t tickMilliseconds() {
    return GetTickCount();
}

} // namespace norvgl::platform
