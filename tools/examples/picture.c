/* A picture: loads a bitmap and draws it at its own size in pixels from the top-left corner,
   and stretched over a fraction of the window. Run in a directory holding logo.bmp (the
   demo's assets: build/tools/demo-assets). */
#include "host.h"
#include "norvgl.h"

int main(int argc, char** argv) {
    unsigned logo = 0;
    HostLoop* loop = host_open(argc, argv, 640, 480, "norvgl example: picture");
    if (!loop)
        return 1;
    GFX_SetProperty(PROP_WINDOW, host_window(loop));
    if (GFX_Init() != 0)
        return host_fail("GFX_Init");
    if (GFX_LoadPicture("logo.bmp", NULL, 0, &logo, PICTURE_NO_MIPMAPS) != 0)
        return host_fail("GFX_LoadPicture");

    /* Every frame starts by clearing the colour; pictures need no depth from earlier frames. */
    GFX_SetClearColor(0.1f, 0.1f, 0.15f, 0.0f);
    GFX_SetRenderProperty(RPROP_CLEAR_COLOR, 1);
    while (host_next_frame(loop)) {
        GFX_BeginRender();
        GFX_DrawPicture(logo, 16, 16, 0, 0); /* 0 x 0: the picture's own size */
        /* Black in a bitmap is transparent while blending uses source alpha. */
        GFX_SetRenderProperty(RPROP_ALPHA_BLEND, 1);
        GFX_DrawPictureByProportion(logo, 0.1f, 0.4f, 0.8f, 0.3f);
        GFX_EndRender();
    }
    GFX_Destroy();
    return host_close(loop);
}
