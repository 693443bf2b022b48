// Counts heap allocations made by the driver between GFX_BeginRender and the end of
// GFX_EndRender, and makes the driver's allocations fail one by one while it loads models and
// meshes. malloc and friends are interposed in this binary. Time spent inside the
// system's libraries is not the driver's and is not counted: GL is reached only through the
// driver's GL table, which is wrapped here, and the two X calls of a buffer swap (glXSwapBuffers
// and the XSync that catches a destroyed window's error) are interposed below.
#include "core/core.h"
#include "manager3d/manager3d.h"
#include "models/models.h"
#include "particles/particles.h"
#include "platform/gl_table.h"
#include "support/driver_fixture.h"
#include "support/scene.h"

#include <gtest/gtest.h>

#include <GL/glx.h>
#include <X11/Xlib.h>
#include <dlfcn.h>

#include <cstddef>
#include <cstdlib>
#include <vector>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* pointer, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* pointer);
}

namespace {

bool counting = false;
int insideSystem = 0;
long allocations = 0;
// The driver's allocations still to succeed before one fails; negative: none fails.
long failAfter = -1;

// Out of line so that a debugger can stop on each counted allocation.
[[gnu::noinline]] void countAllocation() {
    ++allocations;
    asm volatile("");
}

// Counts the allocation; false when it is the one to fail.
bool noteAllocation() {
    if (insideSystem != 0)
        return true;
    if (counting)
        countAllocation();
    return failAfter < 0 || failAfter-- > 0;
}

} // namespace

extern "C" {
void* malloc(std::size_t size) {
    return noteAllocation() ? __libc_malloc(size) : nullptr;
}
void* calloc(std::size_t count, std::size_t size) {
    return noteAllocation() ? __libc_calloc(count, size) : nullptr;
}
void* realloc(void* pointer, std::size_t size) {
    return noteAllocation() ? __libc_realloc(pointer, size) : nullptr;
}
void* memalign(std::size_t alignment, std::size_t size) {
    return noteAllocation() ? __libc_memalign(alignment, size) : nullptr;
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return noteAllocation() ? __libc_memalign(alignment, size) : nullptr;
}
int posix_memalign(void** out, std::size_t alignment, std::size_t size) {
    *out = noteAllocation() ? __libc_memalign(alignment, size) : nullptr;
    return *out ? 0 : ENOMEM;
}
void free(void* pointer) {
    __libc_free(pointer);
}
}

namespace {

using SyncFunction = int (*)(Display*, Bool);
using SwapFunction = void (*)(Display*, GLXDrawable);
SyncFunction systemSync = nullptr;
SwapFunction systemSwap = nullptr;

// Looked up before counting starts: the lookup itself may allocate.
void findSystemFunctions() {
    systemSync = reinterpret_cast<SyncFunction>(dlsym(RTLD_NEXT, "XSync"));
    systemSwap = reinterpret_cast<SwapFunction>(dlsym(RTLD_NEXT, "glXSwapBuffers"));
}

} // namespace

extern "C" int XSync(Display* display, Bool discard) {
    if (!systemSync)
        findSystemFunctions();
    ++insideSystem;
    const int result = systemSync(display, discard);
    --insideSystem;
    return result;
}

extern "C" void glXSwapBuffers(Display* display, GLXDrawable drawable) {
    if (!systemSwap)
        findSystemFunctions();
    ++insideSystem;
    systemSwap(display, drawable);
    --insideSystem;
}

namespace {

norvgl::GlTable systemGl;

// Pass-through wrappers that mark time spent in the system's GL.
#define NVGL_GL(result, name, params, args)                                                        \
    result NVGL_APIENTRY counted_##name params {                                                   \
        ++insideSystem;                                                                            \
        struct Leave {                                                                             \
            ~Leave() { --insideSystem; }                                                           \
        } leave;                                                                                   \
        return systemGl.name args;                                                                 \
    }
#include "platform/gl_funcs.inl"
#undef NVGL_GL

void wrapGlTable() {
    systemGl = norvgl::systemGlTable(); // not `gl`, which an earlier test may have wrapped
#define NVGL_GL(result, name, params, args) norvgl::gl.name = counted_##name;
#include "platform/gl_funcs.inl"
#undef NVGL_GL
}

class AllocationTest : public nvtest::WindowTest {
protected:
    void SetUp() override {
        findSystemFunctions();
        WindowTest::SetUp();
    }
};

// One frame with every kind of work a host does between GFX_BeginRender and GFX_EndRender;
// `objects` and a particle system are drawn in it.
void mixedFrame(int frame, std::uint32_t particleSystem, const std::vector<unsigned>& objects) {
    using nvtest::floats;
    static const auto square = nvtest::square(0, 0, 20, 2);
    static const auto tri = nvtest::triangle(1, 1, 25, 1);
    static const std::uint16_t indices[6] = {0, 1, 2, 0, 2, 3};
    const float position[3] = {-2, 1, 30};

    GFX_BeginRender();
    GFX_Look(0, 0, static_cast<float>(-frame % 5), 0, 0, 10, 0, 0, 0);
    for (int i = 0; i < 12; ++i) {
        const float f = static_cast<float>(i);
        const std::uint32_t keys[4] = {static_cast<std::uint32_t>(i % 3 == 0 ? CULL_ON : CULL_OFF),
                                       static_cast<std::uint32_t>(i % 4 == 1), // depth
                                       static_cast<std::uint32_t>(i % 3),      // blend
                                       static_cast<std::uint32_t>(i % 5)};     // texture
        GFX_LockRenderState(STATE_CULL | STATE_DEPTH | STATE_BLEND | STATE_TEXTURE, keys);
        GFX_UnlockRenderState();
        GFX_SetMaterialColor(0.2f * static_cast<float>(i % 4), 0.5f, 0.5f, 1, 1, 1, 0, 0, 0);
        GFX_Translate(0.1f * f, 0, 0);
        GFX_Rotate(0.05f * f, 0, 1, 0);
        GFX_DrawPolygon(PRIM_TRIANGLES, 6, floats(square));
        GFX_DrawPolygon(PRIM_TRIANGLES, 3, floats(tri));
        GFX_DrawIndexedPolygon(PRIM_TRIANGLES, 4, floats(square), 6, indices);
        GFX_DrawPolygon(PRIM_LINES, 6, floats(square));
        GFX_DrawPolygon(i % 2 ? PRIM_QUADS : PRIM_LINE_STRIP, 4, floats(square));
        GFX_DrawBillboard(position, 1.5f);
        GFX_Scale(1.01f, 1, 1);
        GFX_Untransform(2);
    }
    const std::uint32_t cullOn = CULL_ON;
    for (unsigned id : objects) {
        GFX_DrawObject(id, 0, 0, static_cast<float>(frame % 3));
        GFX_DrawObjectEx(id, 1, 0, 0, PRIM_LINES, STATE_CULL, &cullOn);
    }
    GFX_LockRenderMesh(PRIM_POINTS);
    GFX_DrawPolygon(PRIM_TRIANGLES, 6, floats(square));
    GFX_SetRenderProperty(RPROP_DEPTH_TEST, frame % 2);
    GFX_DrawParticleSystem(particleSystem, 0, 0, 40);
    GFX_EndRender();
}

// Two textured nodes and an untextured one: several groups, triples and a sealed block.
const char kModel[] = "DEF A T { texture I { url \"a.bmp\" } coord DEF P C { point [ 0 0 9, 1 0 9, "
                      "0 1 9 ] } coordIndex [ 0 1 2 -1 2 1 0 -1 ] }\r\n"
                      "DEF B T { coord DEF P C { point [ 0 0 9, 1 0 9, 0 1 9 ] } "
                      "coordIndex [ 0 1 2 -1 ] }\r\n"
                      "DEF C T { texture I { url \"a.bmp\" } USE A }\r\n";

struct HostMesh {
    float positions[9] = {0, 0, 9, 1, 0, 9, 0, 1, 9};
    float normals[9] = {};
    float texCoords[6] = {};
    unsigned short indices[3] = {0, 1, 2};
};

unsigned loadModel() {
    unsigned id = 0;
    return GFX_LoadVRML(0, sizeof kModel - 1, kModel, &id, 0, 0, 0, nullptr) == 0 ? id : 0;
}

unsigned loadMesh(HostMesh& mesh) {
    unsigned id = 0;
    return GFX_LoadMeshIndirect(PRIM_TRIANGLES, 3, mesh.positions, mesh.normals, mesh.texCoords,
                                mesh.indices, 3, 1, &id) == 0
               ? id
               : 0;
}

TEST_F(AllocationTest, HundredsOfMixedFramesAllocateNothing) {
    HostMesh mesh;
    const std::vector<unsigned> objects = {loadModel(), loadMesh(mesh)};
    ASSERT_NE(objects[0], 0u);
    ASSERT_NE(objects[1], 0u);
    wrapGlTable();
    GFX_AddLight(0, 0, 0, 0, -1);
    GFX_SetLightColor(0, 0.2f, 0.2f, 0.2f, 1, 1, 1, 0, 0, 0);
    // Short-lived looping particles, so that frames respawn some of them.
    EmitterParams emitter = {};
    emitter.count = 299;
    emitter.flags = PF_LOOP;
    emitter.sizeMax = emitter.speedMax = 1;
    emitter.ageStepMin = emitter.ageStepMax = 0.4f;
    std::uint32_t particleSystem = 0;
    ASSERT_EQ(norvgl::Particle_NewObject(&particleSystem, &emitter), 0);
    mixedFrame(0, particleSystem, objects); // the first frame may settle the system's own state

    allocations = 0;
    counting = true;
    for (int frame = 1; frame <= 120; ++frame)
        mixedFrame(frame, particleSystem, objects);
    counting = false;
    EXPECT_EQ(allocations, 0);
}

// Each allocation of a load fails in turn: the load returns 1 with ERR_OUT_OF_MEMORY and
// leaves no mesh, no id and no heap space taken, until there are allocations enough.
TEST_F(AllocationTest, LoadsThatRunOutOfMemoryLeaveNothingBehind) {
    wrapGlTable();
    HostMesh mesh;
    struct Load {
        const char* what;
        unsigned (*load)(HostMesh&);
    };
    const Load loads[] = {{"VRML model", [](HostMesh&) { return loadModel(); }},
                          {"host mesh", loadMesh}};
    for (const Load& load : loads) {
        long failing = 0;
        for (;; ++failing) {
            const std::uint32_t counter = norvgl::driver.objectIdCounter;
            norvgl::StateNode* const newest = norvgl::meshStore.meshes;
            norvgl::ReportError(ERR_NONE, nullptr);
            failAfter = failing;
            const unsigned id = load.load(mesh);
            const bool failed = failAfter < 0; // the countdown ran out
            failAfter = -1;
            if (!failed) {
                EXPECT_NE(id, 0u) << load.what;
                EXPECT_EQ(norvgl::driver.lastError, ERR_NONE) << load.what;
                break;
            }
            EXPECT_EQ(id, 0u) << load.what << ", allocation " << failing;
            EXPECT_EQ(norvgl::driver.lastError, ERR_OUT_OF_MEMORY) << load.what << ", " << failing;
            EXPECT_EQ(norvgl::driver.objectIdCounter, counter) << load.what << ", " << failing;
            EXPECT_EQ(norvgl::meshStore.meshes, newest) << load.what << ", " << failing;
            EXPECT_EQ(norvgl::m3d.positionCursor, 0u) << load.what << ", " << failing;
            // Nothing was converted: the second load of the same arrays would undo the first.
            EXPECT_EQ(mesh.positions[2], 9.0f) << load.what << ", " << failing;
        }
        EXPECT_GE(failing, 2) << load.what << " allocates less than the test expects";
    }
}

// The counter itself must see allocations, or the test above proves nothing.
TEST(AllocationCounter, SeesMallocAndNew) {
    allocations = 0;
    counting = true;
    void* p = malloc(16);
    int* volatile q = new int(3); // volatile: the allocation may not be elided
    counting = false;
    free(p);
    delete q;
    EXPECT_EQ(allocations, 2);
}

} // namespace
