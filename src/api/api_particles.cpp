// Exported entries of particle systems: reconfiguring a system and requesting it for the end
// of the frame. Creation comes through GFX_NewObject with object type 1.
#include "core/core.h"
#include "particles/particles.h"

using namespace norvgl;

extern "C" {

int GFX_SetObjectProperty(unsigned int id, EmitterParams* params) {
    // Not guarded: a host may reconfigure its systems while drawing is switched off.
    return Particle_SetObjectProperty(id, params);
}

int GFX_DrawParticleSystem(unsigned int id, float x, float y, float z) {
    if (!renderingEnabled())
        return 0;
    Particle_RequestDraw(id, x, y, z);
    return 0;
}

} // extern "C"
