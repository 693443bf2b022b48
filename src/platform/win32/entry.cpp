// Library entry on Windows: the driver's load-time set-up runs at process attach; every other
// notification is answered with success.
#include "driver/driver.h"
#include "platform/gl_headers.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH)
        norvgl::libraryAttach();
    return TRUE;
}
