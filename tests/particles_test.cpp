// Particle systems: start values predicted from the generator's formula, chains built from
// the host's block, the simulation's steps, the refusals, and the end-of-frame pass as a
// call sequence on a fixed clock.
#include "core/core.h"
#include "particles/particles.h"
#include "support/driver_fixture.h"
#include "support/gl_recorder.h"

#include <GL/gl.h>

#include <cmath>
#include <initializer_list>
#include <cstring>
#include <map>
#include <vector>

using namespace norvgl;
using norvgl::GlCall;
using nvtest::GlRecorder;

namespace {

// The generator as documented: state x 214013 + 2531011, bits 16 to 30.
struct Generator {
    std::uint32_t state = 1;
    std::uint32_t next() {
        state = state * 214013u + 2531011u;
        return state >> 16 & 0x7FFF;
    }
    float between(float lo, float hi) { return (hi - lo) * float(next() % 100) * 0.01f + lo; }
};

EmitterParams block(std::uint32_t count, std::uint32_t flags) {
    EmitterParams p = {};
    p.count = count;
    p.flags = flags;
    p.headMarker = 0xABCDEF77u;
    const float lo[4] = {0.1f, 0.2f, 0.3f, 0.25f}, hi[4] = {0.9f, 0.8f, 0.7f, 1.0f};
    std::memcpy(p.colorMin, lo, sizeof lo);
    std::memcpy(p.colorMax, hi, sizeof hi);
    p.sizeMin = 1, p.sizeMax = 5, p.ageStepMin = 0.01f, p.ageStepMax = 0.05f;
    p.azimuthMin = -3, p.azimuthMax = 3, p.elevationMin = 0.2f, p.elevationMax = 1.4f;
    p.speedMin = 0.5f, p.speedMax = 2;
    return p;
}

std::vector<ParticleRecord*> chain(std::uint32_t id) {
    std::vector<ParticleRecord*> records;
    for (ParticleRecord* r = Particle_Find(id); r; r = r->next)
        records.push_back(r);
    return records;
}

std::uint32_t create(EmitterParams p) {
    std::uint32_t id = 0;
    EXPECT_EQ(Particle_NewObject(&id, &p), 0);
    return id;
}

using ParticleTest = nvtest::DriverTest;

TEST_F(ParticleTest, StartValuesFollowTheGeneratorInItsOrder) {
    Generator g;
    for (std::uint32_t flags : {0u, unsigned(PF_FIRE), unsigned(PF_SMOKE),
                                unsigned(PF_FIRE | PF_SMOKE), unsigned(PF_NO_GRAVITY)}) {
        const EmitterParams p = block(2, flags);
        for (const ParticleRecord* r : chain(create(p))) {
            SCOPED_TRACE(flags);
            const float a = g.between(p.azimuthMin, p.azimuthMax);
            const float e = g.between(p.elevationMin, p.elevationMax);
            const float s = g.between(p.speedMin, p.speedMax);
            EXPECT_EQ(r->size, g.between(p.sizeMin, p.sizeMax));
            float axis[3];
            for (float& c : axis)
                c = float(100 - int(g.next() % 200));
            const float length =
                std::sqrt(axis[0] * axis[0] + axis[1] * axis[1] + axis[2] * axis[2]);
            for (int i = 0; i < 3; ++i)
                EXPECT_EQ(r->axis[i], axis[i] / length) << i;
            EXPECT_EQ(r->velocity[0], std::cos(e) * std::cos(a) * s);
            EXPECT_EQ(r->velocity[1], std::sin(e) * s);
            EXPECT_EQ(r->velocity[2], std::cos(e) * std::sin(a) * s);
            EXPECT_EQ(r->ageStep, g.between(p.ageStepMin, p.ageStepMax));
            float color[3], lift = flags & PF_NO_GRAVITY ? 0.0f : -0.01f;
            if (flags & PF_FIRE) {
                color[0] = 1, color[1] = float(g.next() % 100) * 0.01f, color[2] = 0.15f;
            } else if (flags & PF_SMOKE) {
                color[0] = color[1] = color[2] = float(g.next() % 100) * 0.01f;
                lift = 0.001f;
            } else {
                for (int i = 0; i < 3; ++i)
                    color[i] = g.between(p.colorMin[i], p.colorMax[i]);
            }
            g.next(); // the opacity's draw, never read
            EXPECT_EQ(std::memcmp(r->color, color, sizeof color), 0);
            EXPECT_EQ(r->acceleration[1], lift);
            EXPECT_EQ(r->age, 0.0f);
        }
    }
}

TEST_F(ParticleTest, BlockCountBuildsTheChainAndIsConsumed) {
    struct Case {
        std::uint32_t count;
        std::size_t records;
        std::uint32_t marker;
    };
    for (const Case& c : {Case{3, 4, 0xABCDEF00u}, Case{0, 1, 0xABCDEF01u}}) {
        EmitterParams p = block(c.count, 0);
        std::uint32_t id = 0;
        ASSERT_EQ(Particle_NewObject(&id, &p), 0);
        EXPECT_EQ(chain(id).size(), c.records);
        EXPECT_EQ(p.count, 0u);
        EXPECT_EQ(p.headMarker, c.marker);
    }
    // A rebuild with count 1 replaces the three records after the head by one.
    const std::uint32_t id = create(block(3, 0));
    EmitterParams again = block(1, 0);
    EXPECT_EQ(Particle_SetObjectProperty(id, &again), 0);
    EXPECT_EQ(chain(id).size(), 2u);
}

TEST_F(ParticleTest, StaggeredRecordsWaitOrDieAtTheirFirstStep) {
    const std::uint32_t looping = create(block(3, PF_STAGGER | PF_LOOP | PF_NO_GRAVITY));
    const std::uint32_t once = create(block(3, PF_STAGGER | PF_NO_GRAVITY));
    std::vector<float> delays;
    for (ParticleRecord* r : chain(looping))
        delays.push_back(r->delay);
    EXPECT_EQ(delays, (std::vector<float>{3, 2, 1, 0}));
    ParticleRecord& head = *Particle_Find(looping);
    for (int step = 1; step <= 3; ++step) {
        Particle_Update(head);
        EXPECT_EQ(head.age, 0.0f) << step;
    }
    Particle_Update(head);
    EXPECT_EQ(head.age, head.ageStep);
    const auto records = chain(once);
    for (ParticleRecord* r : records)
        Particle_Update(*r);
    for (std::size_t i = 0; i < records.size(); ++i)
        EXPECT_EQ(records[i]->age, i + 1 < records.size() ? kDeadAge : records[i]->ageStep);
}

TEST_F(ParticleTest, AgeStepOfATenthEndsALifeAfterTenSteps) {
    for (std::uint32_t flags : {0u, unsigned(PF_LOOP)}) {
        EmitterParams p = block(0, flags);
        p.ageStepMin = p.ageStepMax = 0.1f;
        ParticleRecord& r = *Particle_Find(create(p));
        for (int step = 0; step < 9; ++step)
            Particle_Update(r);
        EXPECT_LT(r.age, 1.0f);
        EXPECT_GT(r.position[1], 0.0f);
        Particle_Update(r);
        // Respawned at the origin, or dead where it was.
        EXPECT_EQ(r.age, flags ? 0.0f : kDeadAge);
        EXPECT_EQ(r.position[1] == 0.0f, flags != 0);
    }
}

TEST_F(ParticleTest, SetFlagsBlockChangesOnlyTheFlags) {
    const std::uint32_t id = create(block(2, PF_LOOP));
    std::vector<ParticleRecord> before(chain(id).size());
    for (std::size_t i = 0; i < before.size(); ++i)
        std::memcpy(&before[i], chain(id)[i], sizeof before[i]); // padding included
    const std::uint32_t randState = particles.randState;
    EmitterParams flagsOnly = block(7, PF_SET_FLAGS | PF_FIRE);
    EXPECT_EQ(Particle_SetObjectProperty(id, &flagsOnly), 0);
    EXPECT_EQ(flagsOnly.count, 7u);
    EXPECT_EQ(particles.randState, randState);
    const auto after = chain(id);
    ASSERT_EQ(after.size(), before.size());
    for (std::size_t i = 0; i < after.size(); ++i) {
        EXPECT_EQ(after[i]->params.flags, unsigned(PF_SET_FLAGS | PF_FIRE));
        before[i].params.flags = after[i]->params.flags;
        EXPECT_EQ(std::memcmp(&before[i], after[i], sizeof before[i]), 0) << i;
    }
}

TEST_F(ParticleTest, RefusedRequestsTakeNothingAndSayWhy) {
    EmitterParams huge = block(kMaxParticleCount + 1, 0);
    std::uint32_t id = 77;
    EXPECT_EQ(Particle_NewObject(&id, &huge), 1);
    EXPECT_EQ(driver.lastError, ERR_INVALID_PARAMETER);
    EXPECT_EQ(Particle_NewObject(nullptr, nullptr), 1);
    EXPECT_EQ(particles.emitterCount, 0u);
    for (std::uint32_t i = 1; i <= kEmitterSlots; ++i)
        EXPECT_EQ(create(block(0, 0)), i);
    EmitterParams last = block(1, 0);
    EXPECT_EQ(Particle_NewObject(&id, &last), 1);
    EXPECT_EQ(driver.lastError, ERR_OUT_OF_MEMORY);
    EXPECT_EQ(id, 77u);
    EXPECT_EQ(last.headMarker, 0xABCDEF77u);
    EXPECT_EQ(last.count, 1u);
    EXPECT_NE(log().find("all 64 particle system slots are taken"), std::string::npos);
    // Id 0 names no system, though free slots hold it.
    EXPECT_EQ(Particle_SetObjectProperty(0, &last), 0);
    EXPECT_EQ(last.count, 1u);
}

TEST_F(ParticleTest, SystemsKeepTheirIdsThroughUnloadAll) {
    const std::uint32_t first = create(block(0, 0));
    GFX_UnloadAll();
    const std::uint32_t second = create(block(0, 0));
    EXPECT_EQ(first, 1u);
    EXPECT_EQ(second, 2u);
    EXPECT_EQ(Particle_Find(first), &particles.table[0]);
}

TEST_F(ParticleTest, AllZeroAxisTumblesAboutTheVerticalAxis) {
    // The generator's state six draws before three draws in a row that each make a 0
    // component: the fifth to seventh draws of a spawn are its axis.
    Generator g;
    std::uint32_t before[8];
    std::uint32_t n = 0;
    for (int run = 0; run < 3 || n < 7; ++n) {
        before[n % 8] = g.state;
        run = g.next() % 200 == 100 ? run + 1 : 0;
    }
    particles.randState = before[(n - 7) % 8];
    const ParticleRecord& r = *Particle_Find(create(block(0, 0)));
    EXPECT_EQ(r.axis[0], 0.0f);
    EXPECT_EQ(r.axis[1], 1.0f);
    EXPECT_EQ(r.axis[2], 0.0f);
}

// --- The end-of-frame pass ----------------------------------------------------------------

double fixedClock() {
    return 100.0; // one step per draw
}

class ParticleDrawTest : public nvtest::WindowTest {
protected:
    void SetUp() override {
        WindowTest::SetUp();
        particles.clock = fixedClock;
    }
    // A system that never moves: speed 0, no gravity.
    static std::uint32_t still(std::uint32_t count, std::uint32_t flags, float ageStep = 0) {
        EmitterParams p = block(count, flags | PF_NO_GRAVITY);
        p.speedMin = p.speedMax = 0;
        p.ageStepMin = p.ageStepMax = ageStep;
        return create(p);
    }
    static void frame(std::initializer_list<std::uint32_t> ids) {
        GFX_BeginRender();
        for (std::uint32_t id : ids)
            GFX_DrawParticleSystem(id, 0, 0, 30);
        GFX_EndRender();
    }
};

TEST_F(ParticleDrawTest, BufferFlushesWhenFull) {
    struct Case {
        std::uint32_t flags;
        GLenum mode;
        std::vector<double> counts;
    };
    for (const Case& c :
         {Case{0, GL_QUADS, {800, 200}}, Case{PF_SHARDS, GL_TRIANGLES, {702, 48}}}) {
        const std::uint32_t id = still(249, c.flags);
        GlRecorder rec;
        frame({id});
        std::vector<double> counts;
        for (const auto& call : rec.only({GlCall::DrawArrays})) {
            EXPECT_EQ(call.args[0], c.mode);
            counts.push_back(call.args[2]);
        }
        EXPECT_EQ(counts, c.counts);
        // Drawn from the last record back: the second draw began with record 49 (of 0-249),
        // whose quad's third vertex is its corner at -size / 2.
        if (c.mode == GL_QUADS) {
            EXPECT_EQ(particles.vertices[2 * kParticleVertexFloats], -0.5f * chain(id)[49]->size);
        }
    }
}

TEST_F(ParticleDrawTest, UnknownIdDrawsNothingAndLeavesLightingAlone) {
    still(0, 0);
    GlRecorder rec;
    frame({0, 99});
    EXPECT_EQ(rec.count(GlCall::ColorPointer), 0u);
    EXPECT_EQ(rec.count(GlCall::DrawArrays), 0u);
    EXPECT_FALSE(glIsEnabled(GL_LIGHTING));
    frame({1});
    EXPECT_TRUE(glIsEnabled(GL_LIGHTING));
}

TEST_F(ParticleDrawTest, ShardsAreDrawnPlainAndBlendingAndTexturingComeBack) {
    const std::uint32_t shards = still(2, PF_SHARDS), quads = still(2, 0);
    GlRecorder rec;
    frame({quads, shards});
    // The state each draw saw, replayed through the frame.
    std::map<double, bool> on;
    std::vector<std::vector<double>> draws;
    for (const auto& call : rec.calls()) {
        if (call.call == GlCall::Enable || call.call == GlCall::EnableClientState)
            on[call.args[0]] = true;
        if (call.call == GlCall::Disable || call.call == GlCall::DisableClientState)
            on[call.args[0]] = false;
        if (call.call == GlCall::DrawArrays)
            draws.push_back({call.args[0], double(on[GL_BLEND]), double(on[GL_TEXTURE_2D]),
                             double(on[GL_TEXTURE_COORD_ARRAY])});
    }
    // Slot order: the shards were created first.
    EXPECT_EQ(draws,
              (std::vector<std::vector<double>>{{GL_TRIANGLES, 0, 0, 0}, {GL_QUADS, 1, 1, 1}}));
}

TEST_F(ParticleDrawTest, QuadShrinksWithAgeAndFacesTheCamera) {
    struct Case {
        float turn; // radians about the host's y axis before the request
        float right[3], up[3];
    };
    const float half = 3.14159265f / 2;
    for (const Case& c : {Case{0, {1, 0, 0}, {0, 1, 0}}, Case{half, {0, 0, 1}, {0, 1, 0}}}) {
        EmitterParams p = block(0, PF_NO_GRAVITY);
        p.speedMin = p.speedMax = 0, p.sizeMin = p.sizeMax = 4, p.ageStepMin = p.ageStepMax = 0.5f;
        const std::uint32_t id = create(p);
        for (int drawn = 0; drawn < 2; ++drawn) {
            GFX_BeginRender();
            GFX_Rotate(c.turn, 0, 1, 0);
            GFX_DrawParticleSystem(id, 0, 0, 30);
            GFX_EndRender();
        }
        // Drawn at age 0.5 the second time: edge 2, corner at -1 on every model axis, and the
        // opacity halfway from its birth value down to its end value.
        const float* v = particles.vertices;
        const float corner[3] = {-1, -1, -1};
        const float ends[4][2] = {{1, 1}, {0, 1}, {0, 0}, {1, 0}}; // along right, up
        for (int k = 0; k < 4; ++k, v += kParticleVertexFloats) {
            for (int i = 0; i < 3; ++i)
                EXPECT_NEAR(v[i], corner[i] + 2 * (ends[k][0] * c.right[i] + ends[k][1] * c.up[i]),
                            1e-5)
                    << "vertex " << k << " axis " << i << " turn " << c.turn;
            EXPECT_FLOAT_EQ(v[6], 0.25f + (1.0f - 0.25f) * 0.5f);
        }
        // Dead after its second step: the next frame draws nothing.
        GlRecorder rec;
        frame({id});
        EXPECT_EQ(rec.count(GlCall::DrawArrays), 0u);
    }
}

} // namespace
