/* An animated triangle: host vertices of 8 floats (position, normal, texture coordinate),
   turned a little further every frame about the z axis. */
#include "host.h"
#include "norvgl.h"

int main(int argc, char** argv) {
    /* x, y, z, nx, ny, nz, s, t: left-handed, the camera looks along +z from the origin. */
    static const float triangle[3 * 8] = {
        -40.0f, -30.0f, 0.0f, 0.0f, 0.0f, -1.0f, 0.0f, 0.0f, /* counter-clockwise as seen */
        40.0f,  -30.0f, 0.0f, 0.0f, 0.0f, -1.0f, 0.0f, 0.0f,
        0.0f,   40.0f,  0.0f, 0.0f, 0.0f, -1.0f, 0.0f, 0.0f};
    HostLoop* loop = host_open(argc, argv, 640, 480, "norvgl example: triangle");
    if (!loop)
        return 1;
    GFX_SetProperty(PROP_WINDOW, host_window(loop));
    if (GFX_Init() != 0)
        return host_fail("GFX_Init");

    /* Without a light there is no lighting, and materials do not show: a light from the
       camera's side (directional; its y goes in negated). */
    GFX_AddLight(0, 1, 0.0f, 0.0f, -1.0f);
    GFX_SetClearColor(0.05f, 0.05f, 0.1f, 0.0f);
    GFX_SetRenderProperty(RPROP_CLEAR_COLOR, 1);
    while (host_next_frame(loop)) {
        GFX_BeginRender();
        /* Frames never clear depth and alternate depth halves: geometry that moves and does not
           cover the window must be drawn without the depth test. */
        GFX_SetRenderProperty(RPROP_DEPTH_TEST, 0);
        GFX_SetMaterialColor(0.2f, 0.1f, 0.0f, 1.0f, 0.6f, 0.1f, 0.0f, 0.0f, 0.0f);
        GFX_Translate(0.0f, 0.0f, 150.0f);                             /* in front of the camera */
        GFX_Rotate(0.05f * (float)host_frame(loop), 0.0f, 0.0f, 1.0f); /* radians */
        GFX_DrawPolygon(PRIM_TRIANGLES, 3, triangle);
        GFX_EndRender();
    }
    GFX_Destroy();
    return host_close(loop);
}
