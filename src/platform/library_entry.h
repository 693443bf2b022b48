// The system's hook for a library being loaded into a process: DllMain's process attach on
// Windows, a shared-library constructor elsewhere. NORVGL_LIBRARY_ENTRY(function) defines it
// to run `function` once at load; every other notification is answered with success.
#pragma once

#ifdef _WIN32
#include "platform/gl_headers.h"

#define NORVGL_LIBRARY_ENTRY(function)                                                             \
    extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {                              \
        if (reason == DLL_PROCESS_ATTACH)                                                          \
            function();                                                                            \
        return TRUE;                                                                               \
    }
#else
#define NORVGL_LIBRARY_ENTRY(function)                                                             \
    namespace {                                                                                    \
    __attribute__((constructor)) void onLibraryLoad() {                                            \
        function();                                                                                \
    }                                                                                              \
    }
#endif
