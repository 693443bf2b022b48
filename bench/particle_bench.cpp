// The particle pass against its floor, in the same binary and run:
//  - Particles/Pass: 16 looping systems of 250 particles requested and drawn by the end-of-
//    frame pass, simulation steps included, textured by a loaded "particle.bmp".
//  - Particles/PlainLoop: the same quads, captured from one pass, drawn from the host's own
//    arrays with the same GL state, one draw per system.
// Each iteration ends with glFinish, so both include the rasteriser's work on the quads.
#include "bench_session.h"
#include "particles/particles.h"
#include "picture_assets.h"
#include "pictures/pictures.h"
#include "platform/gl_table.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <vector>

using namespace norvgl;

namespace {

constexpr int kSystems = 16;
constexpr std::uint32_t kParticlesPerSystem = 250;
constexpr std::uint32_t kVerticesPerSystem = 4 * kParticlesPerSystem;

struct ParticleScene {
    std::array<std::uint32_t, kSystems> ids = {};
    std::array<std::array<float, 3>, kSystems> origins = {};
    std::uint32_t texture = 0;
    // The quads of one pass, system after system, as the pass laid them out.
    std::vector<float> quads;

    ParticleScene() {
        bench::session();
        // A frame first, so that the modelview slot a request captures holds the identity.
        GFX_BeginRender();
        GFX_EndRender();
        // A soft round spot, as particle textures are.
        assets::RgbImage spot{16, 16, {}};
        for (int y = 0; y < 16; ++y)
            for (int x = 0; x < 16; ++x) {
                const int d = (x - 8) * (x - 8) + (y - 8) * (y - 8);
                const auto v = static_cast<std::uint32_t>(d < 64 ? 255 - 4 * d : 0);
                spot.pixels.push_back(assets::rgb(v, v, v));
            }
        const std::vector<std::uint8_t> bitmap = assets::writeColorBitmap(spot);
        unsigned picture = 0;
        GFX_LoadPicture("particle.bmp", bitmap.data(), 0, &picture, 0);
        texture = PictureTexture(picture);

        EmitterParams sparks = {};
        sparks.flags = PF_LOOP;
        const float lo[4] = {0.5f, 0.3f, 0.1f, 0.0f}, hi[4] = {1.0f, 0.9f, 0.5f, 1.0f};
        for (int i = 0; i < 4; ++i)
            sparks.colorMin[i] = lo[i], sparks.colorMax[i] = hi[i];
        sparks.sizeMin = 1, sparks.sizeMax = 3;
        sparks.ageStepMin = 0.002f, sparks.ageStepMax = 0.005f;
        sparks.azimuthMin = 0, sparks.azimuthMax = 6.28f;
        sparks.elevationMin = 0.3f, sparks.elevationMax = 1.5f;
        sparks.speedMin = 0.05f, sparks.speedMax = 0.3f;
        for (int s = 0; s < kSystems; ++s) {
            sparks.count = kParticlesPerSystem - 1;
            if (Particle_NewObject(&ids[s], &sparks) != 0) {
                std::fprintf(stderr, "bench: no particle system\n");
                std::exit(1);
            }
            origins[s] = {-60.0f + 40.0f * static_cast<float>(s % 4),
                          -45.0f + 30.0f * static_cast<float>(s / 4), 300.0f};
        }
        // Run the systems into their steady state of ages and places (a life is 200 to 500
        // steps, a pass at least one), so that the quads captured next cover as many pixels as
        // those of the passes timed later; then capture one pass's vertices as it draws them.
        for (int frame = 0; frame < 1500; ++frame)
            driverPass();
        capture = this;
        const auto drawArrays = gl.DrawArrays;
        gl.DrawArrays = [](GLenum, GLint, GLsizei count) {
            const float* v = particles.vertices;
            capture->quads.insert(capture->quads.end(), v,
                                  v + static_cast<std::size_t>(count) * kParticleVertexFloats);
        };
        driverPass();
        gl.DrawArrays = drawArrays;
        if (quads.size() != kSystems * kVerticesPerSystem * kParticleVertexFloats) {
            std::fprintf(stderr, "bench: the pass drew %zu vertices\n",
                         quads.size() / kParticleVertexFloats);
            std::exit(1);
        }
    }

    void driverPass() const {
        for (int s = 0; s < kSystems; ++s)
            GFX_DrawParticleSystem(ids[s], origins[s][0], origins[s][1], origins[s][2]);
        Particle_DrawAll();
    }

    // What a host that holds the quads itself does: the pass's state once, then one draw of
    // each system's quads under its translation.
    void plainLoop() const {
        gl.MatrixMode(GL_PROJECTION);
        gl.LoadIdentity();
        gl.gluPerspective(45.0, 1.0696, 10.0, 10000.0);
        gl.MatrixMode(GL_MODELVIEW);
        gl.Disable(GL_LIGHTING);
        gl.DisableClientState(GL_NORMAL_ARRAY);
        gl.EnableClientState(GL_COLOR_ARRAY);
        gl.EnableClientState(GL_TEXTURE_COORD_ARRAY);
        gl.Enable(GL_TEXTURE_2D);
        gl.Disable(GL_DEPTH_TEST);
        gl.Enable(GL_BLEND);
        gl.BlendFunc(GL_SRC_ALPHA, GL_ONE);
        gl.TexEnvf(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
        gl.BindTexture(GL_TEXTURE_2D, texture);
        constexpr GLsizei stride = kParticleVertexFloats * sizeof(float);
        for (int s = 0; s < kSystems; ++s) {
            const float* v = &quads[s * kVerticesPerSystem * kParticleVertexFloats];
            gl.LoadIdentity();
            gl.Translatef(origins[s][0], origins[s][1], -origins[s][2]);
            gl.VertexPointer(3, GL_FLOAT, stride, v);
            gl.ColorPointer(4, GL_FLOAT, stride, v + 3);
            gl.TexCoordPointer(2, GL_FLOAT, stride, v + 7);
            gl.DrawArrays(GL_QUADS, 0, kVerticesPerSystem);
        }
        gl.DisableClientState(GL_COLOR_ARRAY);
        gl.EnableClientState(GL_NORMAL_ARRAY);
        gl.Enable(GL_LIGHTING);
    }

    static inline ParticleScene* capture = nullptr;
};

ParticleScene& particleScene() {
    static ParticleScene scene;
    return scene;
}

void Particles_Pass(benchmark::State& state) {
    const ParticleScene& scene = particleScene();
    for (auto _ : state) {
        scene.driverPass();
        glFinish();
    }
    state.SetItemsProcessed(state.iterations() * kSystems * kParticlesPerSystem);
}

void Particles_PlainLoop(benchmark::State& state) {
    const ParticleScene& scene = particleScene();
    for (auto _ : state) {
        scene.plainLoop();
        glFinish();
    }
    state.SetItemsProcessed(state.iterations() * kSystems * kParticlesPerSystem);
}

BENCHMARK(Particles_Pass)->Unit(benchmark::kMicrosecond);
BENCHMARK(Particles_PlainLoop)->Unit(benchmark::kMicrosecond);

} // namespace
