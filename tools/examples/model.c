/* A model: a VRML text loaded with its textures, turning under two lights, in front of a wall
   that covers the window so that every frame writes depth everywhere (frames never clear it).
   Run in a directory holding scene.wrl, crate.bmp and stone.3df (the demo's assets). */
#include "host.h"
#include "norvgl.h"

#include <stdio.h>
#include <stdlib.h>

int main(int argc, char** argv) {
    static const float wall[6 * 8] = {-900, -900, 0, 0, 0, -1, 0, 0, 900,  -900, 0, 0, 0, -1, 0, 0,
                                      900,  900,  0, 0, 0, -1, 0, 0, -900, -900, 0, 0, 0, -1, 0, 0,
                                      900,  900,  0, 0, 0, -1, 0, 0, -900, 900,  0, 0, 0, -1, 0, 0};
    unsigned model = 0, crate = 0, stone = 0;
    float bounds[6];
    static char text[1 << 16];
    size_t length;
    FILE* file = fopen("scene.wrl", "rb");
    HostLoop* loop = host_open(argc, argv, 640, 480, "norvgl example: model");
    if (!loop || !file)
        return 1;
    length = fread(text, 1, sizeof text, file);
    fclose(file);
    GFX_SetProperty(PROP_WINDOW, host_window(loop));
    if (GFX_Init() != 0)
        return host_fail("GFX_Init");
    /* Textures first: the model finds them by the file names it gives, in any letter case. */
    if (GFX_LoadPicture("crate.bmp", NULL, 0, &crate, 0) != 0 ||
        GFX_LoadPicture("stone.3df", NULL, 0, &stone, 0) != 0)
        return host_fail("GFX_LoadPicture");
    if (GFX_LoadVRML(0, (unsigned)length, text, &model, 0, 0, 0, bounds) != 0)
        return host_fail("GFX_LoadVRML");
    GFX_AddLight(0, 1, -0.5f, -1.0f, -0.5f);  /* directional, from above (y goes in negated) */
    GFX_AddLight(1, 0, 80.0f, 40.0f, -60.0f); /* a point light; both start full white */
    GFX_SetLightColor(1, 0, 0, 0, 0.3f, 0.3f, 0.6f, 0, 0, 0);

    while (host_next_frame(loop)) {
        GFX_BeginRender();
        GFX_Look(0.0f, 40.0f, -110.0f, 0.0f, 20.0f, 0.0f, 0, 0, 0);
        GFX_SetMaterialColor(0.3f, 0.3f, 0.4f, 0, 0, 0, 0, 0, 0);
        GFX_Translate(0.0f, 0.0f, 600.0f);
        GFX_DrawPolygon(PRIM_TRIANGLES, 6, wall);
        GFX_Untransform(1);
        GFX_SetMaterialColor(0.4f, 0.4f, 0.4f, 1, 1, 1, 0, 0, 0);
        GFX_SetRenderProperty(RPROP_CULLING, 1);
        GFX_Rotate(0.03f * (float)host_frame(loop), 0.0f, 1.0f, 0.0f);
        GFX_DrawObject(model, 0.0f, -(bounds[1] + bounds[4]) / 2 + 20.0f, 0.0f);
        GFX_EndRender();
    }
    GFX_Destroy();
    return host_close(loop);
}
