/* The host's header must be plain C: this file only has to compile and link. */
#include "norvgl.h"

#include <stddef.h>

/* Every entry is callable through a C function pointer of the type the header declares. */
int norvgl_header_is_c(void) {
    int (*init)(void) = GFX_Init;
    int (*draw)(int, unsigned int, const float*) = GFX_DrawPolygon;
    void (*lastError)(char*, char*) = GFX_GetLastError;
    DisplayModeRecord mode;
    EmitterParams emitter;
    (void)mode;
    (void)emitter;
    return init != NULL && draw != NULL && lastError != NULL && ERROR_TITLE_SIZE == 24 &&
           ERROR_DETAILS_SIZE == 165;
}
