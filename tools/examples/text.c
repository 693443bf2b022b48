/* Text: a font picture of 16 x 16 cells (character code 16 * row + column) and lines printed
   at fractions of the window. Run in a directory holding font.bmp (the demo's assets). */
#include "host.h"
#include "norvgl.h"

#include <stdio.h>

int main(int argc, char** argv) {
    unsigned font = 0;
    char line[64];
    HostLoop* loop = host_open(argc, argv, 640, 480, "norvgl example: text");
    if (!loop)
        return 1;
    GFX_SetProperty(PROP_WINDOW, host_window(loop));
    if (GFX_Init() != 0)
        return host_fail("GFX_Init");
    if (GFX_LoadPicture("font.bmp", NULL, 0, &font, PICTURE_NO_MIPMAPS) != 0)
        return host_fail("GFX_LoadPicture");
    if (GFX_SetFontBitmap(font) != 0)
        return host_fail("GFX_SetFontBitmap");
    GFX_SetFontSize(0.03f, 0.05f); /* one cell: 3 % of the width, 5 % of the height */

    GFX_SetClearColor(0.0f, 0.1f, 0.2f, 0.0f);
    GFX_SetRenderProperty(RPROP_CLEAR_COLOR, 1);
    while (host_next_frame(loop)) {
        GFX_BeginRender();
        GFX_BeginText(); /* the font, additive blending, no depth test */
        GFX_PrintByProportion(0.05f, 0.1f, "Hello from norvgl");
        GFX_PrintByProportion(0.05f, 0.2f, (const char*)GFX_GetProperty(PROP_DRIVER_NAME));
        sprintf(line, "frame %u", host_frame(loop));
        GFX_PrintByProportion(0.05f, 0.3f, line);
        GFX_EndText();
        GFX_EndRender();
    }
    GFX_Destroy();
    return host_close(loop);
}
