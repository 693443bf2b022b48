/* A host built against an installed norvgl (find_package, pkg-config) or against its sources
   (add_subdirectory): the header's version must be the loaded library's, and the frames must
   reach the window in the clear colour, green. */
#include "host.h"
#include "norvgl.h"

#include <stdio.h>
#include <string.h>

int main(int argc, char** argv) {
    const char* version = (const char*)GFX_GetProperty(PROP_DRIVER_VERSION);
    HostLoop* loop = host_open(argc, argv, 160, 120, "norvgl tiny host");
    if (!loop)
        return 1;
    if (strcmp(version, NORVGL_VERSION_STRING) != 0) {
        fprintf(stderr, "header %s, library %s\n", NORVGL_VERSION_STRING, version);
        return 1;
    }
    GFX_SetProperty(PROP_WINDOW, host_window(loop));
    if (GFX_Init() != 0)
        return host_fail("GFX_Init");
    GFX_SetClearColor(0, 1, 0, 0);
    GFX_SetRenderProperty(RPROP_CLEAR_COLOR, 1);
    while (host_next_frame(loop)) {
        GFX_BeginRender();
        GFX_EndRender();
    }
    GFX_Destroy();
    return host_close(loop);
}
