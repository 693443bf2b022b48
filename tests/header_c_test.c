/* The host's header as plain C, compiled once per C standard (NORVGL_C_ENTRY names this
   copy's function): every entry callable through a function pointer of the type the header
   declares, and the entries that ignore their arguments callable with arguments. */
#include "norvgl.h"

#include <stddef.h>

int NORVGL_C_ENTRY(void) {
    int (*init)(void) = GFX_Init;
    int (*draw)(int, unsigned int, const float*) = GFX_DrawPolygon;
    void (*lastError)(char*, char*) = GFX_GetLastError;
    DisplayModeRecord mode;
    EmitterParams emitter;
    (void)mode;
    (void)emitter;
    return init != NULL && draw != NULL && lastError != NULL && ERROR_TITLE_SIZE == 24 &&
           ERROR_DETAILS_SIZE == 165 && GFX_Print(1, "x") == 0 && GFX_Resize(640, 480) == 0 &&
           GFX_LoadIndexedMesh(1, 2, 3) == 1;
}
