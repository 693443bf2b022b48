// Debug log ("debuglog.txt", one open-append-close per entry, CR LF endings), the small file
// layer shared with picture loading, memory blocks, and the seconds clock.
#include "core/core.h"
#include "core/messages.h"
#include "platform/platform.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace norvgl {

int DebugLogV(const char* format, std::va_list args) {
    char line[kLogLineSize];
    // Room for CR LF and the terminator; longer text is cut.
    int length = std::vsnprintf(line, kLogLineSize - 2, format, args);
    if (length < 0)
        length = 0;
    if (length > kLogLineSize - 3)
        length = kLogLineSize - 3;
    line[length++] = '\r';
    line[length++] = '\n';
    line[length] = '\0';

    std::intptr_t file = 0;
    if (FileOpen(&file, kLogFileName, FILE_APPEND) != 0)
        return 1;
    FileWrite(line, static_cast<std::uint32_t>(length), file);
    FileClose(file);
    return 0;
}

int DebugLog(const char* format, ...) {
    va_list args;
    va_start(args, format);
    const int result = DebugLogV(format, args);
    va_end(args);
    return result;
}

int FileOpen(std::intptr_t* handle, const char* name, std::uint32_t mode) {
    if (!handle || !name)
        return 1;
    std::intptr_t opened = 0;
    bool ok;
    if (mode & FILE_READ)
        ok = platform::fileOpenRead(name, opened);
    else if (mode & FILE_WRITE)
        ok = platform::fileOpenWrite(name, opened);
    else if (mode & FILE_APPEND)
        ok = platform::fileOpenAppend(name, opened);
    else
        return 1;
    if (!ok)
        return 1;
    *handle = opened;
    return 0;
}

int FileClose(std::intptr_t handle) {
    platform::fileClose(handle);
    return 0;
}

std::uint32_t FileSize(std::intptr_t handle) {
    return static_cast<std::uint32_t>(platform::fileSize(handle));
}

int FileRead(void* destination, std::uint32_t count, std::intptr_t handle) {
    return platform::fileRead(handle, destination, count) == static_cast<std::int64_t>(count) ? 0
                                                                                              : 1;
}

int FileReadAll(void** block, std::uint32_t count, std::intptr_t handle) {
    if (!block)
        return 1;
    MemAlloc(count, block);
    if (!*block)
        return 1;
    return FileRead(*block, count, handle);
}

int FileWrite(const void* source, std::uint32_t count, std::intptr_t handle) {
    return platform::fileWrite(handle, source, count) == static_cast<std::int64_t>(count) ? 0 : 1;
}

int MemAlloc(std::uint32_t count, void** block) {
    if (!block)
        return 1;
    // A zero-byte request still yields a block the caller can free.
    *block = std::calloc(count ? count : 1, 1);
    return 0;
}

int MemFree(void** block) {
    if (!block || !*block)
        return 1;
    std::free(*block);
    *block = nullptr;
    return 0;
}

double ClockSeconds() {
    return static_cast<double>(platform::tickMilliseconds()) * static_cast<double>(0.001f);
}

} // namespace norvgl
