// The narrow interface between the driver core and the operating system: the host window's
// device and rendering contexts, display modes, files, ticks. One implementation per system.
#pragma once

#include "formats/bitmap_decoder.h"

#include <cstddef>
#include <cstdint>

namespace norvgl::platform {

// Device context: takes the host window named by `window`, chooses and sets the closest
// pixel format (RGBA, double-buffered, 16-bit colour and depth asked for). False when no
// such format can be set on it, which includes a window handle that names no window; the
// window and context held before are then kept as they were.
bool attachWindow(std::intptr_t window);
// Makes a rendering context current on the window attachWindow took: the context already
// held when it is the same window, else a new one that shares textures and display lists
// with the context held before, which is then released. Results are not examined by the
// caller: a context that could not be made leaves GL calls without effect.
void createContext();
// Whether a rendering context is held: GL objects made now will belong to it.
bool hasContext();
// Errors that the system reports on the driver's own connection to the window system must
// never end the host's process. Called at each frame's start and end, so that the driver's
// trap stays in front of any handler the host installed since.
void keepErrorTrap();
// Client size of the attached window in pixels.
void clientSize(std::int32_t& width, std::int32_t& height);
void swapBuffers();
// Makes no context current and deletes the rendering context; false when either step fails.
// True when there is no context.
bool releaseContext();
// Gives the device context back to the window; false when that fails. True when none is held.
bool releaseWindow(std::intptr_t window);

// Display modes of the screen, in the system's order.
struct DisplayMode {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t bits = 0;
    std::uintptr_t native = 0; // the system's own handle of the mode
};
bool displayMode(std::uint32_t index, DisplayMode& mode);
bool testDisplayMode(const DisplayMode& mode);
void changeDisplayMode(const DisplayMode& mode);
// Back to the mode saved by the system (the registry on Windows; on X11 the mode current
// before the driver's first change).
void restoreDisplayMode();

// Files: handles live in pointer-sized slots.
bool fileOpenRead(const char* name, std::intptr_t& handle);
bool fileOpenWrite(const char* name, std::intptr_t& handle);
bool fileOpenAppend(const char* name, std::intptr_t& handle);
void fileClose(std::intptr_t handle);
std::uint64_t fileSize(std::intptr_t handle);
// Bytes moved, or -1 on error.
std::int64_t fileRead(std::intptr_t handle, void* destination, std::uint32_t count);
std::int64_t fileWrite(std::intptr_t handle, const void* source, std::uint32_t count);

// Bitmap conversion: draws the image of a Windows bitmap file held in memory (`file`, `size`
// bytes, its headers read into `info`, palette and rows known to lie within its file size)
// stretched over `width` x `height` 32-bit pixels at `out`: bottom row first, bytes blue,
// green, red and one unused, as a 32-bit device-independent bitmap holds them. `out` comes
// zeroed; an image the system cannot draw leaves it so. False when no target bitmap could
// be made.
bool convertBitmap(const std::uint8_t* file, std::size_t size, const BitmapInfo& info,
                   std::int32_t width, std::int32_t height, std::uint8_t* out);

// Milliseconds since system start, wrapping at 32 bits.
std::uint32_t tickMilliseconds();

} // namespace norvgl::platform
