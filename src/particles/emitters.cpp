// Particle emitters: the table of systems, their chains of records built from the host's
// block, the library's own generator, and one simulation step of a particle.
#include "core/core.h"
#include "core/messages.h"
#include "particles/particles.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace norvgl {

ParticleState particles = {};

namespace {

constexpr std::uint32_t kRandMultiplier = 214013;
constexpr std::uint32_t kRandIncrement = 2531011;
constexpr float kGravity = -0.01f;
constexpr float kSmokeLift = 0.001f;
constexpr float kFireBlue = 0.15f;
// Taken when all three random components of an axis come out 0: straight up.
constexpr float kFixedAxis[3] = {0.0f, 1.0f, 0.0f};
constexpr std::uint32_t kLowByte = 0xFFu;
// Bounds of the owed-step count before its conversion to an integer.
constexpr double kOwedLow = -2147483646.0;
constexpr double kOwedHigh = 2147483647.0;

void freeChain(ParticleRecord* record) {
    while (record) {
        ParticleRecord* const next = record->next;
        std::free(record);
        record = next;
    }
}

float hundredth() {
    return static_cast<float>(Particle_Rand() % 100) * 0.01f;
}

// A block whose count would build more records than a system may hold is refused whole.
bool countAllowed(const EmitterParams* params) {
    if (!params || (params->flags & PF_SET_FLAGS) || params->count <= kMaxParticleCount)
        return true;
    ReportError(ERR_INVALID_PARAMETER, kParticleCountTooLarge, params->count, kMaxParticleCount);
    return false;
}

} // namespace

void Particle_Reset() {
    for (std::uint32_t slot = 0; slot < particles.emitterCount; ++slot)
        freeChain(particles.table[slot].next);
    std::memset(&particles, 0, sizeof particles);
    particles.randState = kRandomSeed;
    particles.clock = ClockSeconds;
}

std::uint32_t Particle_Rand() {
    particles.randState = particles.randState * kRandMultiplier + kRandIncrement;
    return (particles.randState >> 16) & 0x7FFFu;
}

float Particle_RandomBetween(float lo, float hi) {
    const float step = static_cast<float>(Particle_Rand() % 100);
    return (hi - lo) * step * 0.01f + lo;
}

int Particle_NewObject(std::uint32_t* idOut, EmitterParams* params) {
    if (!idOut) {
        ReportError(ERR_INVALID_PARAMETER, kNullIdPointer);
        return 1;
    }
    if (particles.emitterCount >= kEmitterSlots) {
        ReportError(ERR_OUT_OF_MEMORY, kEmitterTableFull, kEmitterSlots);
        return 1;
    }
    if (!countAllowed(params))
        return 1;
    if (params)
        params->headMarker = (params->headMarker & ~kLowByte) | 1u;
    const std::uint32_t id = IssueObjectId();
    Particle_Create(params, id, nullptr);
    *idOut = id;
    return 0;
}

int Particle_SetObjectProperty(std::uint32_t id, EmitterParams* params) {
    ParticleRecord* const head = Particle_Find(id);
    if (!head)
        return 0;
    if (!countAllowed(params))
        return 1;
    Particle_Create(params, id, head);
    return 0;
}

ParticleRecord* Particle_Create(EmitterParams* params, std::uint32_t id, ParticleRecord* record) {
    if (!record) {
        if (particles.emitterCount >= kEmitterSlots)
            return nullptr;
        record = &particles.table[particles.emitterCount++];
    }
    ParticleRecord* const head = record;
    std::uint32_t built = 1;
    while (true) {
        record->id = id;
        if (!params)
            break;
        if (params->flags & PF_SET_FLAGS) {
            record->params.flags = params->flags;
            record = record->next;
            if (!record)
                break;
            continue;
        }
        std::memcpy(&record->params, params, sizeof *params);
        Particle_Spawn(*record);
        if (params->flags & PF_STAGGER)
            record->delay = static_cast<float>(params->count);
        if (params->count == 0)
            break;
        --params->count;
        params->headMarker &= ~kLowByte;
        auto* const added = static_cast<ParticleRecord*>(std::calloc(1, sizeof(ParticleRecord)));
        // A rebuilt system drops the records that followed its head; nothing else holds them.
        freeChain(record->next);
        record->next = added;
        if (!added) {
            ReportError(ERR_OUT_OF_MEMORY, kParticleRecordRefused, built, id);
            break;
        }
        record = added;
        ++built;
    }
    return head;
}

void Particle_Spawn(ParticleRecord& record) {
    const EmitterParams& p = record.params;
    record.age = 0.0f;
    record.position[0] = record.position[1] = record.position[2] = 0.0f;
    const float azimuth = Particle_RandomBetween(p.azimuthMin, p.azimuthMax);
    const float elevation = Particle_RandomBetween(p.elevationMin, p.elevationMax);
    const float speed = Particle_RandomBetween(p.speedMin, p.speedMax);
    record.size = Particle_RandomBetween(p.sizeMin, p.sizeMax);

    float axis[3];
    for (float& component : axis)
        component = static_cast<float>(100 - static_cast<std::int32_t>(Particle_Rand() % 200));
    const float length = std::sqrt(axis[0] * axis[0] + axis[1] * axis[1] + axis[2] * axis[2]);
    for (int i = 0; i < 3; ++i)
        record.axis[i] = length > 0.0f ? axis[i] / length : kFixedAxis[i];

    record.velocity[0] = std::cos(elevation) * std::cos(azimuth) * speed;
    record.velocity[1] = std::sin(elevation) * speed;
    record.velocity[2] = std::cos(elevation) * std::sin(azimuth) * speed;
    record.acceleration[0] = record.acceleration[2] = 0.0f;
    record.acceleration[1] = (p.flags & PF_NO_GRAVITY) ? 0.0f : kGravity;
    record.ageStep = Particle_RandomBetween(p.ageStepMin, p.ageStepMax);

    if (p.flags & PF_FIRE) {
        record.color[0] = 1.0f;
        record.color[1] = hundredth();
        record.color[2] = kFireBlue;
    } else if (p.flags & PF_SMOKE) {
        record.acceleration[1] = kSmokeLift;
        record.color[0] = record.color[1] = record.color[2] = hundredth();
    } else {
        for (int i = 0; i < 3; ++i)
            record.color[i] = Particle_RandomBetween(p.colorMin[i], p.colorMax[i]);
    }
    // The opacity comes from the age when drawn, so this value is unused; the call keeps
    // every later particle's values in the sequence hosts were tuned with.
    Particle_RandomBetween(p.colorMin[3], p.colorMax[3]);
}

void Particle_Update(ParticleRecord& record) {
    if (record.delay > 0.0f) {
        if (record.params.flags & PF_LOOP) {
            record.delay -= 1.0f;
        } else {
            record.delay = 0.0f;
            record.age = kDeadAge;
        }
        return;
    }
    if (record.age == kDeadAge)
        return;
    for (int i = 0; i < 3; ++i)
        record.velocity[i] += record.acceleration[i];
    record.position[0] += record.velocity[0];
    record.position[1] += record.velocity[1];
    // Left-handed coordinates: z runs the other way.
    record.position[2] -= record.velocity[2];
    record.age += record.ageStep;
    if (record.age >= 1.0f) {
        if (record.params.flags & PF_LOOP)
            Particle_Spawn(record);
        else
            record.age = kDeadAge;
    }
}

std::int32_t Particle_StepCount(ParticleRecord& record, double now) {
    if (record.lastTime == 0.0f)
        record.lastTime = static_cast<float>(now);
    // One step per whole hundredth of a second since the last count, and one more.
    double owed = (now - static_cast<double>(record.lastTime)) * -100.0;
    if (std::isnan(owed))
        owed = 0.0;
    owed = std::clamp(owed, kOwedLow, kOwedHigh);
    record.lastTime = static_cast<float>(now);
    return 1 - static_cast<std::int32_t>(owed);
}

ParticleRecord* Particle_Find(std::uint32_t id) {
    if (id == 0)
        return nullptr;
    for (std::uint32_t slot = 0; slot < particles.emitterCount; ++slot)
        if (particles.table[slot].id == id)
            return &particles.table[slot];
    return nullptr;
}

bool Particle_HoldsId(std::uint32_t id) {
    return Particle_Find(id) != nullptr;
}

} // namespace norvgl
