// Particle systems: emitters and their drawing at the end of each frame.
#pragma once

namespace norvgl {

// The end-of-frame pass that draws the particle systems requested in the frame; the render
// queue calls it through its particle-pass hook after the state tree.
void Particle_DrawAll();

} // namespace norvgl
