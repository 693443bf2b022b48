// Exported entries of the driver frame: properties and errors, context and display modes,
// frame cycle, teardown, and the shared entries kept for older hosts.
#include "core/core.h"
#include "session/session.h"

using namespace norvgl;

extern "C" {

void GFX_GetLastError(char* title, char* details) {
    getLastError(title, details);
}
intptr_t GFX_GetProperty(unsigned int index) {
    return getProperty(index);
}
int GFX_SetProperty(unsigned int index, intptr_t value) {
    return setProperty(index, value);
}
int GFX_GetRenderProperty(int index) {
    return getRenderProperty(index);
}
int GFX_SetRenderProperty(int index, int value) {
    // Guarded only in part: the value is always stored and the clear of RPROP_CLEAR_COLOR
    // always acts; the state requests of the other indices follow PROP_ENABLED.
    return setRenderProperty(index, value, renderingEnabled());
}

int GFX_Init(void) {
    return initContext();
}
int GFX_Destroy(void) {
    return destroyContext();
}
int GFX_UnloadAll(void) {
    return unloadAll();
}
int GFX_EnumResolutions(DisplayModeRecord* mode) {
    return enumResolutions(mode);
}
int GFX_SetResolution(const DisplayModeRecord* mode) {
    return setResolution(mode);
}

int GFX_BeginRender(void) {
    if (!renderingEnabled())
        return 0;
    return beginRender();
}
int GFX_EndRender(void) {
    if (!renderingEnabled())
        return 0;
    return endRender();
}
int GFX_SetClearColor(float red, float green, float blue, float alpha) {
    if (!renderingEnabled())
        return 0;
    return setClearColor(red, green, blue, alpha);
}

// Entries that older hosts call and that have nothing to do: one function under three names.
int norvgl_EmptyEntry(...) {
    return 0;
}
int GFX_Print(...) __attribute__((alias("norvgl_EmptyEntry")));
int GFX_Resize(...) __attribute__((alias("norvgl_EmptyEntry")));
int GFX_SetBlitArea(...) __attribute__((alias("norvgl_EmptyEntry")));

// Not offered by this driver: one function under ten names, each call logged.
int norvgl_UnsupportedEntry(...) {
    ReportError(ERR_NOT_SUPPORTED, nullptr);
    return 1;
}
int GFX_AddRenderWindow(...) __attribute__((alias("norvgl_UnsupportedEntry")));
int GFX_GetAvailableDevices(...) __attribute__((alias("norvgl_UnsupportedEntry")));
int GFX_GetRenderState(...) __attribute__((alias("norvgl_UnsupportedEntry")));
int GFX_GetRenderWindow(...) __attribute__((alias("norvgl_UnsupportedEntry")));
int GFX_RemoveRenderWindow(...) __attribute__((alias("norvgl_UnsupportedEntry")));
int GFX_SetDevice(...) __attribute__((alias("norvgl_UnsupportedEntry")));
int GFX_SetRenderState(...) __attribute__((alias("norvgl_UnsupportedEntry")));
int GFX_SetRenderWindow(...) __attribute__((alias("norvgl_UnsupportedEntry")));
int GFX_TestRenderState(...) __attribute__((alias("norvgl_UnsupportedEntry")));
int GFX_UnloadPicture(...) __attribute__((alias("norvgl_UnsupportedEntry")));

// Indexed meshes come in through GFX_LoadMeshIndirect; this older entry fails without
// touching the last error.
int GFX_LoadIndexedMesh(...) {
    return 1;
}

} // extern "C"
