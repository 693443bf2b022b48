// Submission and whole-frame costs of the render queue, each next to its baseline in the same
// binary and run:
//  - Submit/DrawPolygon: a frame reset and host triangle lists copied into the vertex heap up
//    to its limit, against Submit/PlainCopy, a loop that does the same copy and negation with
//    nothing else (the floor).
//  - Frame/Driver: 300 submissions over 20 distinct states from GFX_BeginRender to
//    GFX_EndRender, against Frame/NaiveHost: the same triangles drawn the same way by a host that
//    sets every state before every draw with plain GL 1.1 calls, and Frame/HandSortedHost: the
//    best a careful host does by hand, each state set once and each group drawn with one
//    vertex-array call. All report their GL state calls per frame (counted once through the
//    recording table, outside the timed loop).
//  - Scale/Submissions and Scale/MergedVertices: how a frame's cost grows, per unmerged
//    submission (up to the batch heap's 341) and per vertex of merged submissions (up to the
//    vertex heap's 10922).
#include "bench_session.h"
#include "core/core.h"
#include "manager3d/limits.h"
#include "manager3d/manager3d.h"
#include "platform/gl_table.h"
#include "support/gl_recorder.h"

#include <benchmark/benchmark.h>

#include <GL/glx.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <tuple>
#include <vector>

using namespace norvgl;

namespace {

struct Vertex {
    float x, y, z, nx, ny, nz, u, v;
};

// Six-vertex triangle lists, as many as fit in the vertex heap.
constexpr std::uint32_t kPolygonVertices = 6;
constexpr std::uint32_t kPolygons = kVertexHeapFloats / 3 / kPolygonVertices - 1;

std::vector<Vertex> hostVertices() {
    std::vector<Vertex> v(kPolygons * kPolygonVertices);
    for (std::size_t i = 0; i < v.size(); ++i) {
        const float f = static_cast<float>(i);
        v[i] = {f, f + 1, f + 2, 0, 0, 1, f * 0.5f, f * 0.25f};
    }
    return v;
}

void Submit_DrawPolygon(benchmark::State& state) {
    bench::session();
    const std::vector<Vertex> vertices = hostVertices();
    GFX_BeginRender();
    // Each iteration is a whole frame's submissions: the queue's frame reset that makes room
    // is timed with them (pausing the timer costs as much as what is timed here).
    for (auto _ : state) {
        Manager3D_BeginFrame();
        for (std::uint32_t p = 0; p < kPolygons; ++p)
            GFX_DrawPolygon(PRIM_TRIANGLES, kPolygonVertices, &vertices[p * kPolygonVertices].x);
        benchmark::ClobberMemory();
    }
    GFX_EndRender();
    state.SetItemsProcessed(state.iterations() * kPolygons * kPolygonVertices);
}

void Submit_PlainCopy(benchmark::State& state) {
    const std::vector<Vertex> vertices = hostVertices();
    std::vector<float> positions(kVertexHeapFloats), normals(kVertexHeapFloats),
        texCoords(kVertexHeapFloats);
    for (auto _ : state) {
        std::size_t cursor = 0;
        for (std::uint32_t p = 0; p < kPolygons; ++p) {
            const Vertex* in = &vertices[p * kPolygonVertices];
            for (std::uint32_t i = 0; i < kPolygonVertices; ++i, ++cursor) {
                float* pos = &positions[3 * cursor];
                float* nor = &normals[3 * cursor];
                float* tex = &texCoords[2 * cursor];
                pos[0] = in[i].x;
                pos[1] = in[i].y;
                pos[2] = -in[i].z;
                nor[0] = in[i].nx;
                nor[1] = in[i].ny;
                nor[2] = -in[i].nz;
                tex[0] = in[i].u;
                tex[1] = -in[i].v;
            }
            benchmark::DoNotOptimize(positions.data());
        }
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kPolygons * kPolygonVertices);
}

// --- Whole frames -----------------------------------------------------------------------------

constexpr int kSubmissions = 300;
constexpr int kStates = 20;

struct SceneState {
    std::uint32_t cull, depth, blend, texture;
    std::array<float, 12> material;
};

struct Scene {
    std::array<GLuint, 3> textures = {};
    std::array<SceneState, kStates> states = {};
    std::array<std::array<Vertex, 6>, kSubmissions> squares = {};

    Scene() {
        gl.GenTextures(3, textures.data());
        for (std::size_t t = 0; t < textures.size(); ++t) {
            std::array<std::uint8_t, 16 * 16 * 4> pixels;
            for (std::size_t i = 0; i < pixels.size(); ++i)
                pixels[i] = static_cast<std::uint8_t>(i * (t + 3));
            gl.BindTexture(GL_TEXTURE_2D, textures[t]);
            gl.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
            gl.TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 16, 16, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                          pixels.data());
        }
        gl.BindTexture(GL_TEXTURE_2D, 0);
        // Twenty distinct combinations of every key kind.
        std::set<std::tuple<std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t, float>>
            distinct;
        for (int s = 0; s < kStates; ++s) {
            SceneState& st = states[s];
            st.cull = s % 2 ? CULL_OFF : CULL_ON;
            st.depth = (s / 2) % 2 ? DEPTH_OFF : DEPTH_ON;
            st.blend = static_cast<std::uint32_t>(s % 3);
            st.texture = s % 4 ? textures[s % 3] : 0;
            const float shade = 0.2f + 0.15f * static_cast<float>(s % 5);
            st.material = {shade, shade, shade, 1, shade, 0.5f, 0.5f, 1, 0, 0, 0, 1};
            distinct.insert({st.cull, st.depth, st.blend, st.texture, shade});
        }
        if (distinct.size() != kStates) {
            std::fprintf(stderr, "bench: scene states are not distinct\n");
            std::exit(1);
        }
        // Small squares spread over the window, each facing the viewer from both sides' view.
        for (int i = 0; i < kSubmissions; ++i) {
            const float x = -60.0f + 8.0f * static_cast<float>(i % 15);
            const float y = -40.0f + 4.0f * static_cast<float>(i / 15);
            const float z = 200.0f + static_cast<float>(i % 7);
            const float h = 1.5f;
            squares[i] = {
                Vertex{x - h, y - h, z, 0, 0, -1, 0, 0}, {x + h, y - h, z, 0, 0, -1, 1, 0},
                {x + h, y + h, z, 0, 0, -1, 1, 1},       {x - h, y - h, z, 0, 0, -1, 0, 0},
                {x + h, y + h, z, 0, 0, -1, 1, 1},       {x - h, y + h, z, 0, 0, -1, 0, 1}};
        }
    }
    const SceneState& stateOf(int submission) const { return states[submission % kStates]; }
};

Scene& scene() {
    bench::session();
    static Scene s;
    return s;
}

void driverFrame(const Scene& sc) {
    GFX_BeginRender();
    for (int i = 0; i < kSubmissions; ++i) {
        const SceneState& st = sc.stateOf(i);
        const std::uint32_t keys[4] = {st.cull, st.depth, st.blend, st.texture};
        Manager3D_StateCommand(STATE_CULL | STATE_DEPTH | STATE_BLEND, keys);
        Manager3D_StateCommand(STATE_MATERIAL, st.material.data());
        Manager3D_StateCommand(STATE_TEXTURE, &keys[3]);
        GFX_DrawPolygon(PRIM_TRIANGLES, 6, &sc.squares[i][0].x);
    }
    GFX_EndRender();
}

// What a host without a render queue does: every state before every draw, then the triangles
// vertex by vertex, in the driver's coordinate convention so the pictures are the same.
void naiveFrame(const Scene& sc, const float* projection) {
    gl.Clear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    gl.MatrixMode(GL_PROJECTION);
    gl.LoadMatrixf(projection);
    gl.MatrixMode(GL_MODELVIEW);
    gl.LoadIdentity();
    for (int i = 0; i < kSubmissions; ++i) {
        const SceneState& st = sc.stateOf(i);
        if (st.cull == CULL_OFF)
            gl.Disable(GL_CULL_FACE);
        else
            gl.Enable(GL_CULL_FACE);
        if (st.depth == DEPTH_OFF)
            gl.Disable(GL_DEPTH_TEST);
        else
            gl.Enable(GL_DEPTH_TEST);
        if (st.blend == BLEND_OFF) {
            gl.Disable(GL_BLEND);
        } else {
            gl.Enable(GL_BLEND);
            gl.BlendFunc(GL_SRC_ALPHA, st.blend == BLEND_ADD ? GL_ONE : GL_ONE_MINUS_SRC_ALPHA);
        }
        gl.Materialfv(GL_FRONT, GL_AMBIENT, &st.material[0]);
        gl.Materialfv(GL_FRONT, GL_DIFFUSE, &st.material[4]);
        gl.Materialfv(GL_FRONT, GL_SPECULAR, &st.material[8]);
        if (st.texture) {
            gl.Enable(GL_TEXTURE_2D);
            gl.TexEnvf(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
            gl.BindTexture(GL_TEXTURE_2D, st.texture);
        } else {
            gl.Disable(GL_TEXTURE_2D);
        }
        gl.Begin(GL_TRIANGLES);
        for (const Vertex& v : sc.squares[i]) {
            const float normal[3] = {v.nx, v.ny, -v.nz};
            const float position[3] = {v.x, v.y, -v.z};
            gl.Normal3fv(normal);
            if (st.texture) {
                const float uv[2] = {v.u, -v.v};
                gl.TexCoord2fv(uv);
            }
            gl.Vertex3fv(position);
        }
        gl.End();
    }
    gl.Flush();
    glXSwapBuffers(glXGetCurrentDisplay(), glXGetCurrentDrawable());
}

// The scene's squares grouped by state once, in GL's coordinates, groups in the order the
// driver's tree draws them (cull, depth, blend, material, texture), so that each draw sets
// only what differs from the group before.
struct SortedGroup {
    SceneState state;
    std::vector<float> positions, normals, texCoords;
};

std::vector<SortedGroup> sortScene(const Scene& sc) {
    std::vector<SortedGroup> groups(kStates);
    for (int s = 0; s < kStates; ++s)
        groups[s].state = sc.states[s];
    for (int i = 0; i < kSubmissions; ++i) {
        SortedGroup& g = groups[i % kStates];
        for (const Vertex& v : sc.squares[i]) {
            g.positions.insert(g.positions.end(), {v.x, v.y, -v.z});
            g.normals.insert(g.normals.end(), {v.nx, v.ny, -v.nz});
            g.texCoords.insert(g.texCoords.end(), {v.u, -v.v});
        }
    }
    std::sort(groups.begin(), groups.end(), [](const SortedGroup& a, const SortedGroup& b) {
        return std::tie(a.state.cull, a.state.depth, a.state.blend, a.state.material,
                        a.state.texture) < std::tie(b.state.cull, b.state.depth, b.state.blend,
                                                    b.state.material, b.state.texture);
    });
    return groups;
}

void handSortedFrame(const std::vector<SortedGroup>& groups, const float* projection) {
    gl.Clear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    gl.MatrixMode(GL_PROJECTION);
    gl.LoadMatrixf(projection);
    gl.MatrixMode(GL_MODELVIEW);
    gl.LoadIdentity();
    const SceneState* last = nullptr;
    for (const SortedGroup& g : groups) {
        const SceneState& st = g.state;
        if (!last || st.cull != last->cull) {
            if (st.cull == CULL_OFF)
                gl.Disable(GL_CULL_FACE);
            else
                gl.Enable(GL_CULL_FACE);
        }
        if (!last || st.depth != last->depth) {
            if (st.depth == DEPTH_OFF)
                gl.Disable(GL_DEPTH_TEST);
            else
                gl.Enable(GL_DEPTH_TEST);
        }
        if (!last || st.blend != last->blend) {
            if (st.blend == BLEND_OFF) {
                gl.Disable(GL_BLEND);
            } else {
                gl.Enable(GL_BLEND);
                gl.BlendFunc(GL_SRC_ALPHA, st.blend == BLEND_ADD ? GL_ONE : GL_ONE_MINUS_SRC_ALPHA);
            }
        }
        if (!last || st.material != last->material) {
            gl.Materialfv(GL_FRONT, GL_AMBIENT, &st.material[0]);
            gl.Materialfv(GL_FRONT, GL_DIFFUSE, &st.material[4]);
            gl.Materialfv(GL_FRONT, GL_SPECULAR, &st.material[8]);
        }
        if (!last || st.texture != last->texture) {
            if (st.texture) {
                if (!last || !last->texture) {
                    gl.Enable(GL_TEXTURE_2D);
                    gl.TexEnvf(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
                    gl.EnableClientState(GL_TEXTURE_COORD_ARRAY);
                }
                gl.BindTexture(GL_TEXTURE_2D, st.texture);
            } else {
                gl.Disable(GL_TEXTURE_2D);
                gl.DisableClientState(GL_TEXTURE_COORD_ARRAY);
            }
        }
        last = &st;
        gl.VertexPointer(3, GL_FLOAT, 0, g.positions.data());
        gl.NormalPointer(GL_FLOAT, 0, g.normals.data());
        if (st.texture)
            gl.TexCoordPointer(2, GL_FLOAT, 0, g.texCoords.data());
        gl.DrawArrays(GL_TRIANGLES, 0, static_cast<GLsizei>(g.positions.size() / 3));
    }
    gl.DisableClientState(GL_TEXTURE_COORD_ARRAY);
    gl.Flush();
    glXSwapBuffers(glXGetCurrentDisplay(), glXGetCurrentDrawable());
}

// The driver's own projection for this window, as its frames load it.
std::array<float, 16> driverProjection() {
    GFX_BeginRender();
    std::array<float, 16> m;
    gl.GetFloatv(GL_PROJECTION_MATRIX, m.data());
    GFX_EndRender();
    return m;
}

template <typename F> void countStateCalls(benchmark::State& state, F&& frame) {
    nvtest::GlRecorder rec;
    frame();
    std::size_t calls = 0;
    for (const auto& c : rec.calls())
        for (norvgl::GlCall kind : nvtest::kStateCalls)
            calls += c.call == kind;
    state.counters["state_calls"] = static_cast<double>(calls);
    state.counters["material_calls"] = static_cast<double>(rec.count(norvgl::GlCall::Materialfv));
}

void Frame_Driver(benchmark::State& state) {
    const Scene& sc = scene();
    countStateCalls(state, [&] { driverFrame(sc); });
    for (auto _ : state)
        driverFrame(sc);
    glFinish();
    state.SetItemsProcessed(state.iterations() * kSubmissions);
}

void Frame_NaiveHost(benchmark::State& state) {
    const Scene& sc = scene();
    const std::array<float, 16> projection = driverProjection();
    countStateCalls(state, [&] { naiveFrame(sc, projection.data()); });
    for (auto _ : state)
        naiveFrame(sc, projection.data());
    glFinish();
    // Leave GL as the driver's next frame expects it.
    GFX_BeginRender();
    GFX_EndRender();
    state.SetItemsProcessed(state.iterations() * kSubmissions);
}

void Frame_HandSortedHost(benchmark::State& state) {
    const Scene& sc = scene();
    const std::array<float, 16> projection = driverProjection();
    const std::vector<SortedGroup> groups = sortScene(sc);
    countStateCalls(state, [&] { handSortedFrame(groups, projection.data()); });
    for (auto _ : state)
        handSortedFrame(groups, projection.data());
    glFinish();
    GFX_BeginRender();
    GFX_EndRender();
    state.SetItemsProcessed(state.iterations() * kSubmissions);
}

// --- How a frame's cost grows ------------------------------------------------------------------

// Seconds per item: the frame's time divided by what it held.
benchmark::Counter perItem(double items) {
    return benchmark::Counter(items, benchmark::Counter::kIsIterationInvariantRate |
                                         benchmark::Counter::kInvert);
}

// `n` single triangles, each under the next of the scene's 20 states, so that none merges:
// every one takes its own batch and walks the tree.
void Scale_Submissions(benchmark::State& state) {
    const Scene& sc = scene();
    const auto n = static_cast<int>(state.range(0));
    for (auto _ : state) {
        GFX_BeginRender();
        for (int i = 0; i < n; ++i) {
            const SceneState& st = sc.stateOf(i);
            const std::uint32_t keys[4] = {st.cull, st.depth, st.blend, st.texture};
            Manager3D_StateCommand(STATE_CULL | STATE_DEPTH | STATE_BLEND, keys);
            Manager3D_StateCommand(STATE_MATERIAL, st.material.data());
            Manager3D_StateCommand(STATE_TEXTURE, &keys[3]);
            GFX_DrawPolygon(PRIM_TRIANGLES, 3, &sc.squares[i % kSubmissions][0].x);
        }
        GFX_EndRender();
    }
    glFinish();
    state.counters["per_submission"] = perItem(static_cast<double>(n));
}

// Six-vertex squares under one state, merged into one batch: `n` vertices in all.
void Scale_MergedVertices(benchmark::State& state) {
    const Scene& sc = scene();
    const auto n = static_cast<int>(state.range(0));
    for (auto _ : state) {
        GFX_BeginRender();
        for (int v = 0; v + 6 <= n; v += 6)
            GFX_DrawPolygon(PRIM_TRIANGLES, 6, &sc.squares[(v / 6) % kSubmissions][0].x);
        GFX_EndRender();
    }
    glFinish();
    state.counters["per_vertex"] = perItem(static_cast<double>(n / 6 * 6));
}

BENCHMARK(Submit_DrawPolygon)->Unit(benchmark::kMicrosecond);
BENCHMARK(Submit_PlainCopy)->Unit(benchmark::kMicrosecond);
BENCHMARK(Frame_Driver)->Unit(benchmark::kMicrosecond);
BENCHMARK(Frame_NaiveHost)->Unit(benchmark::kMicrosecond);
BENCHMARK(Frame_HandSortedHost)->Unit(benchmark::kMicrosecond);
BENCHMARK(Scale_Submissions)->Arg(50)->Arg(150)->Arg(340)->Unit(benchmark::kMicrosecond);
BENCHMARK(Scale_MergedVertices)->Arg(300)->Arg(3000)->Arg(10902)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
