// Particle systems: start values predicted from the generator's formula, chains built from
// the host's block, the simulation's steps, the refusals, and the end-of-frame pass as a
// call sequence on a fixed clock.
#include "core/core.h"
#include "particles/particles.h"
#include "support/driver_fixture.h"
#include "support/gl_recorder.h"

#include <GL/gl.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <initializer_list>
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

EmitterParams block(std::uint32_t count, std::uint32_t flags, float speed = 2) {
    // clang-format off
    return {count, flags, 0xABCDEF77u, {0.1f, 0.2f, 0.3f, 0.25f}, {0.9f, 0.8f, 0.7f, 1},
            1, 5,              // size
            0.01f, 0.05f,      // age step
            -3, 3, 0.2f, 1.4f, // azimuth, elevation
            speed / 4, speed, 0};
    // clang-format on
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
    for (std::uint32_t flags : {0, PF_FIRE, PF_SMOKE, PF_FIRE | PF_SMOKE, PF_NO_GRAVITY}) {
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
        }
    }
}

TEST_F(ParticleTest, BlockCountBuildsTheChainAndIsConsumed) {
    for (std::uint32_t count : {3u, 0u}) {
        EmitterParams p = block(count, 0);
        std::uint32_t id = 0;
        ASSERT_EQ(Particle_NewObject(&id, &p), 0);
        EXPECT_EQ(chain(id).size(), count + 1);
        EXPECT_EQ(p.count, 0u);
        EXPECT_EQ(p.headMarker, count ? 0xABCDEF00u : 0xABCDEF01u);
    }
    // Rebuilding system 1 with count 1 replaces the three records after its head by one.
    EmitterParams again = block(1, 0);
    EXPECT_EQ(Particle_SetObjectProperty(1, &again), 0);
    EXPECT_EQ(chain(1).size(), 2u);
}

TEST_F(ParticleTest, StaggeredRecordsWaitOrDieAtTheirFirstStep) {
    const auto looping = chain(create(block(3, PF_STAGGER | PF_LOOP)));
    const auto once = chain(create(block(3, PF_STAGGER)));
    for (int step = 1; step <= 4; ++step) {
        for (std::size_t i = 0; i < 4; ++i) {
            EXPECT_EQ(looping[i]->delay, float(std::max(3 - int(i) - step + 1, 0)));
            Particle_Update(*looping[i]);
            // Record i waits 3 - i steps and moves from the next one on.
            EXPECT_EQ(looping[i]->age > 0, step > 3 - int(i)) << i << " at step " << step;
            if (step == 1)
                Particle_Update(*once[i]);
            EXPECT_EQ(once[i]->age, i < 3 ? kDeadAge : once[i]->ageStep);
        }
    }
}

TEST_F(ParticleTest, AgeStepOfATenthEndsALifeAfterTenSteps) {
    for (std::uint32_t flags : {0, PF_LOOP}) {
        EmitterParams p = block(0, flags);
        p.ageStepMin = p.ageStepMax = 0.1f;
        ParticleRecord& r = *Particle_Find(create(p));
        const float v[3] = {r.velocity[0], r.velocity[1] - 0.01f, r.velocity[2]};
        Particle_Update(r); // gravity first, then the move; z runs the other way
        EXPECT_EQ(std::vector<float>(r.position, r.position + 3),
                  (std::vector<float>{v[0], v[1], -v[2]}));
        for (int step = 1; step < 9; ++step)
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
    const auto records = chain(create(block(2, PF_LOOP)));
    std::vector<ParticleRecord> before(records.size());
    for (std::size_t i = 0; i < records.size(); ++i)
        std::memcpy(&before[i], records[i], sizeof before[i]); // padding included
    const std::uint32_t randState = particles.randState;
    EmitterParams flagsOnly = block(7, PF_SET_FLAGS | PF_FIRE);
    EXPECT_EQ(Particle_SetObjectProperty(records[0]->id, &flagsOnly), 0);
    EXPECT_EQ(flagsOnly.count, 7u);
    EXPECT_EQ(particles.randState, randState);
    EXPECT_EQ(chain(records[0]->id), records);
    for (std::size_t i = 0; i < records.size(); ++i) {
        before[i].params.flags = PF_SET_FLAGS | PF_FIRE;
        EXPECT_EQ(std::memcmp(&before[i], records[i], sizeof before[i]), 0) << i;
    }
}

TEST_F(ParticleTest, IdsAreSharedAndOutliveUnloadAllAndRefusalsTakeNone) {
    unsigned ids[3] = {};
    EmitterParams first = block(0, 0);
    EXPECT_EQ(GFX_NewObject(&ids[0], OBJECT_DISPLAY_LIST, nullptr), 0);
    GFX_EndObject();
    EXPECT_EQ(GFX_NewObject(&ids[1], OBJECT_PARTICLE_SYSTEM, &first), 0);
    EXPECT_EQ(GFX_NewObject(&ids[2], OBJECT_DISPLAY_LIST, nullptr), 0);
    GFX_EndObject();
    EXPECT_EQ(std::vector<unsigned>(ids, ids + 3), (std::vector<unsigned>{1, 2, 3}));
    GFX_UnloadAll(); // restarts the id count, which then passes over the system's id
    EXPECT_EQ(create(block(0, 0)), 1u);
    EXPECT_EQ(create(block(0, 0)), 3u);

    EmitterParams huge = block(kMaxParticleCount + 1, 0);
    std::uint32_t id = 77;
    EXPECT_EQ(Particle_NewObject(&id, &huge), 1);
    EXPECT_EQ(driver.lastError, ERR_INVALID_PARAMETER);
    EXPECT_EQ(Particle_NewObject(nullptr, nullptr), 1);
    for (std::uint32_t i = 4; i <= kEmitterSlots; ++i)
        EXPECT_EQ(create(block(0, 0)), i);
    EXPECT_EQ(Particle_Find(2), &particles.table[0]);
    EmitterParams last = block(1, 0);
    EXPECT_EQ(Particle_NewObject(&id, &last), 1);
    EXPECT_EQ(driver.lastError, ERR_OUT_OF_MEMORY);
    EXPECT_NE(log().find("all 64 particle system slots are taken"), std::string::npos);
    EXPECT_EQ(id, 77u);
    EXPECT_EQ(last.headMarker, 0xABCDEF77u);
    // Id 0 names no system, though free slots hold it.
    EXPECT_EQ(Particle_SetObjectProperty(0, &last), 0);
    EXPECT_EQ(last.count, 1u);
}

TEST_F(ParticleTest, AllZeroAxisTumblesAboutTheVerticalAxis) {
    // Start six draws before three in a row that each make a 0 component: a spawn's fifth
    // to seventh draws are its axis.
    Generator g;
    std::uint32_t before[8], n = 0;
    for (int run = 0; run < 3 || n < 7; ++n) {
        before[n % 8] = g.state;
        run = g.next() % 200 == 100 ? run + 1 : 0;
    }
    particles.randState = before[(n - 7) % 8];
    const float* axis = Particle_Find(create(block(0, 0)))->axis;
    EXPECT_EQ(std::vector<float>(axis, axis + 3), (std::vector<float>{0, 1, 0}));
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
    static EmitterParams still(std::uint32_t count, std::uint32_t flags, float ageStep = 0) {
        EmitterParams p = block(count, flags | PF_NO_GRAVITY, 0);
        p.ageStepMin = p.ageStepMax = ageStep;
        return p;
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
        const std::uint32_t id = create(still(249, c.flags));
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
    create(still(0, 0));
    GlRecorder rec;
    frame({0, 99});
    EXPECT_EQ(rec.count(GlCall::ColorPointer), 0u);
    EXPECT_EQ(rec.count(GlCall::DrawArrays), 0u);
    EXPECT_FALSE(glIsEnabled(GL_LIGHTING));
    frame({1});
    EXPECT_TRUE(glIsEnabled(GL_LIGHTING));
}

TEST_F(ParticleDrawTest, ShardsAreDrawnPlainAndBlendingAndTexturingComeBack) {
    const std::uint32_t shards = create(still(2, PF_SHARDS)), quads = create(still(2, 0));
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
        EmitterParams p = still(0, 0, 0.5f);
        p.sizeMin = p.sizeMax = 4;
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
