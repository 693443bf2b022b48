// Particle systems: the end-of-frame pass that draws the systems requested in the frame.
#include "particles/particles.h"

namespace norvgl {

// No entry that creates or requests a particle system is exported by this build, so a frame
// never holds one to draw.
void Particle_DrawAll() {}

} // namespace norvgl
