/* Particles: a looping fountain and a fire, textured with the picture named "particle.bmp".
   A system steps once per hundredth of a second of wall clock, as it is drawn. Run in a
   directory holding particle.bmp (the demo's assets). */
#include "host.h"
#include "norvgl.h"

#include <string.h>

int main(int argc, char** argv) {
    unsigned dot = 0, fountain = 0, fire = 0;
    EmitterParams p;
    HostLoop* loop = host_open(argc, argv, 640, 480, "norvgl example: particles");
    if (!loop)
        return 1;
    GFX_SetProperty(PROP_WINDOW, host_window(loop));
    if (GFX_Init() != 0)
        return host_fail("GFX_Init");
    if (GFX_LoadPicture("particle.bmp", NULL, 0, &dot, 0) != 0)
        return host_fail("GFX_LoadPicture");

    memset(&p, 0, sizeof p);
    p.count = 200; /* 201 particles; the driver counts this down to 0 */
    p.flags = PF_LOOP | PF_STAGGER;
    p.colorMin[0] = 0.2f, p.colorMin[1] = 0.4f, p.colorMin[2] = 1.0f, p.colorMin[3] = 0.0f;
    p.colorMax[0] = 0.5f, p.colorMax[1] = 0.9f, p.colorMax[2] = 1.0f, p.colorMax[3] = 1.0f;
    p.sizeMin = 4, p.sizeMax = 7;
    p.ageStepMin = 0.008f, p.ageStepMax = 0.012f; /* about a second of life */
    p.azimuthMax = 6.2832f;
    p.elevationMin = 1.2f, p.elevationMax = 1.5f; /* radians above the horizontal */
    p.speedMin = 0.4f, p.speedMax = 0.6f;         /* units per step; gravity 0.01 */
    if (GFX_NewObject(&fountain, OBJECT_PARTICLE_SYSTEM, &p) != 0)
        return host_fail("GFX_NewObject");
    p.count = 120;
    p.flags = PF_LOOP | PF_FIRE | PF_NO_GRAVITY;
    p.speedMin = 0.1f, p.speedMax = 0.25f;
    if (GFX_NewObject(&fire, OBJECT_PARTICLE_SYSTEM, &p) != 0)
        return host_fail("GFX_NewObject");

    GFX_SetRenderProperty(RPROP_CLEAR_COLOR, 1); /* particles are drawn without depth test */
    while (host_next_frame(loop)) {
        GFX_BeginRender();
        GFX_Look(0.0f, 15.0f, -60.0f, 0.0f, 10.0f, 0.0f, 0, 0, 0);
        GFX_DrawParticleSystem(fountain, -15.0f, 0.0f, 0.0f);
        GFX_DrawParticleSystem(fire, 15.0f, 0.0f, 0.0f);
        GFX_EndRender();
    }
    GFX_Destroy();
    return host_close(loop);
}
