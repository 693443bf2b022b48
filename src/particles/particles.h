// Particle systems: emitters with their simulation, and their drawing at the end of each
// frame. A system is a chain of records whose head lies in a fixed table of 64 slots.
#pragma once

#include "norvgl.h"

#include "manager3d/manager3d.h"

#include <cstdint>

namespace norvgl {

inline constexpr std::uint32_t kEmitterSlots = 64; // systems a library ever holds
// Records after the head that one block may ask for: keeps a hostile count from eating all
// memory one record at a time.
inline constexpr std::uint32_t kMaxParticleCount = 65535;
inline constexpr std::uint32_t kParticleBufferVertices = 800; // 200 quads per draw call
// Triangles go out once this many vertices are waiting, so three more always fit.
inline constexpr std::uint32_t kShardFlushVertices = 700;
inline constexpr std::uint32_t kParticleVertexFloats = 9; // position, RGBA, s t
inline constexpr float kDeadAge = -1.0f;
inline constexpr std::uint32_t kRandomSeed = 1;

static_assert(sizeof(EmitterParams) == 22 * 4, "the host's block is 22 words");

struct ParticleRecord {
    std::uint32_t id;     // the system's ObjectId, read in the head
    EmitterParams params; // the block's copy; params.flags are the record's flags
    float position[3];    // relative to the system's origin
    float velocity[3];
    float acceleration[3];
    float color[3];
    float age; // 0 at spawn, up to 1; kDeadAge when dead
    float ageStep;
    float size;
    float delay;                // steps to wait before moving and being drawn
    float axis[3];              // unit axis a shard tumbles about
    float lastTime;             // seconds of the previous step count; 0 before the first
    std::int32_t drawRequested; // head only
    ParticleRecord* next;
};

struct ParticleState {
    ParticleRecord table[kEmitterSlots]; // the heads; a free slot has id 0
    std::uint32_t emitterCount;          // slots handed out, in order, never given back
    std::uint32_t randState;
    // Where and under which modelview slot each requested system is drawn.
    float origin[kEmitterSlots][3];
    const Matrix4* modelview[kEmitterSlots];
    bool drawPending;
    float vertices[kParticleBufferVertices * kParticleVertexFloats];
    std::uint32_t fill; // vertices waiting in `vertices`
    // Seconds on the platform's millisecond clock; tests may put their own in front.
    double (*clock)();
};

extern ParticleState particles;

// Back to the state of a fresh load: every record after a head freed, the table empty, the
// generator at its seed, the platform clock.
void Particle_Reset();

// The library's own generator: 0 to 32767, the same sequence in every run.
std::uint32_t Particle_Rand();
// One of 100 evenly spaced values from lo up to lo + 0.99 (hi - lo), single precision.
float Particle_RandomBetween(float lo, float hi);

// GFX_NewObject of type 1: marks the block's head, takes an id and a slot, builds the chain
// and writes the id. 1 with the last error set, and nothing written or taken, when the table
// is full (ERR_OUT_OF_MEMORY), `idOut` is null or the block's count is above
// kMaxParticleCount (ERR_INVALID_PARAMETER).
int Particle_NewObject(std::uint32_t* idOut, EmitterParams* params);
// GFX_SetObjectProperty: rebuilds the system `id` from the block. 0 without effect when no
// system has the id (0 included); 1 with ERR_INVALID_PARAMETER for a count above the limit.
int Particle_SetObjectProperty(std::uint32_t id, EmitterParams* params);
// Builds (or, given the head, rebuilds) a system's chain from the block, consuming its count.
// Without a record it takes the next free slot; null when there is none.
ParticleRecord* Particle_Create(EmitterParams* params, std::uint32_t id, ParticleRecord* record);
// Fresh random start values, with the generator called in a fixed order.
void Particle_Spawn(ParticleRecord& record);
// One simulation step.
void Particle_Update(ParticleRecord& record);
// Steps the record owes at `now` (seconds on `particles.clock`) since its previous count. The
// pass reads the clock once per system and counts every record of it at that time.
std::int32_t Particle_StepCount(ParticleRecord& record, double now);
// The head of the system `id`; null for 0 and for ids no system has.
ParticleRecord* Particle_Find(std::uint32_t id);
// Whether a particle system holds `id`, so that no other object is given it.
bool Particle_HoldsId(std::uint32_t id);

// GFX_DrawParticleSystem: marks the system to be drawn at the end of the frame at (x, y, z),
// under the modelview slot in effect now. Ids no system has are ignored.
void Particle_RequestDraw(std::uint32_t id, float x, float y, float z);
// The end-of-frame pass that draws the particle systems requested in the frame; the render
// queue calls it through its particle-pass hook after the state tree.
void Particle_DrawAll();

} // namespace norvgl
