// Core of the driver: the property tables, the last error, the debug log, the file layer and
// the clock. Module-wide state in `driver`; every layer above may read it.
#pragma once

#include "norvgl.h"

#include <cstdarg>
#include <cstdint>

#if defined(__GNUC__)
#define NVGL_PRINTF(fmt, args) __attribute__((format(printf, fmt, args)))
#else
#define NVGL_PRINTF(fmt, args)
#endif

namespace norvgl {

inline constexpr int kDriverPropertyCount = 8;
// The eight render properties and a ninth slot that index 8 stores into; nothing acts on it.
inline constexpr int kRenderPropertyCount = 9;
// One debug-log entry, CR LF and terminator included.
inline constexpr int kLogLineSize = 2048;
// Detail text of an error report, terminator included.
inline constexpr int kErrorDetailSize = 2048;

struct DriverState {
    std::intptr_t properties[kDriverPropertyCount];
    std::int32_t renderProperties[kRenderPropertyCount];
    std::int32_t lastError;
    // Client size captured by GFX_Init; read by the frame reset and screen-space drawing.
    std::int32_t clientWidth;
    std::int32_t clientHeight;
    // Last ObjectId issued; shared by every kind of object.
    std::uint32_t objectIdCounter;
    // Whether a mesh or a particle system still holds an id; null while nothing can.
    bool (*objectIdHeld)(std::uint32_t id);
};

extern DriverState driver;

inline bool renderingEnabled() {
    return driver.properties[PROP_ENABLED] != 0;
}

// Load-time set-up of the core: banner, property tables, last error. Also the core's reset.
void libraryAttach();

// Properties and errors.
void ReportError(std::int32_t code, const char* detailFormat, ...) NVGL_PRINTF(2, 3);
void getLastError(char* title, char* details);
std::intptr_t getProperty(std::uint32_t index);
int setProperty(std::uint32_t index, std::intptr_t value);
int getRenderProperty(std::int32_t index);

// ObjectIds. GFX_UnloadAll restarts the count while meshes and particle systems keep their
// ids, so issuing skips every id that one of them still holds (and 0): no two live objects
// ever share an id, and with none held the count goes 1, 2, 3 as before.
std::uint32_t IssueObjectId();
// Takes back `id` when it is the one issued last, so that a failed load leaves no gap.
void ReturnObjectId(std::uint32_t id);
void SetObjectIdHeldCheck(bool (*held)(std::uint32_t id));

// Debug log and files.
enum FileMode : std::uint32_t { FILE_READ = 1, FILE_WRITE = 2, FILE_APPEND = 4 };
int DebugLog(const char* format, ...) NVGL_PRINTF(1, 2);
int DebugLogV(const char* format, std::va_list args);
int FileOpen(std::intptr_t* handle, const char* name, std::uint32_t mode);
int FileClose(std::intptr_t handle);
std::uint32_t FileSize(std::intptr_t handle);
int FileRead(void* destination, std::uint32_t count, std::intptr_t handle);
int FileReadAll(void** block, std::uint32_t count, std::intptr_t handle);
int FileWrite(const void* source, std::uint32_t count, std::intptr_t handle);
int MemAlloc(std::uint32_t count, void** block);
int MemFree(void** block);
double ClockSeconds();

} // namespace norvgl
