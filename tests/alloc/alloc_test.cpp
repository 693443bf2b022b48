// Counts heap allocations made by the driver between GFX_BeginRender and the end of
// GFX_EndRender. malloc and friends are interposed in this binary. Time spent inside the
// system's libraries is not the driver's and is not counted: GL is reached only through the
// driver's GL table, which is wrapped here, and the two X calls of a buffer swap (glXSwapBuffers
// and the XSync that catches a destroyed window's error) are interposed below.
#include "core/core.h"
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

// Out of line so that a debugger can stop on each counted allocation.
[[gnu::noinline]] void countAllocation() {
    ++allocations;
    asm volatile("");
}

void noteAllocation() {
    if (counting && insideSystem == 0)
        countAllocation();
}

} // namespace

extern "C" {
void* malloc(std::size_t size) {
    noteAllocation();
    return __libc_malloc(size);
}
void* calloc(std::size_t count, std::size_t size) {
    noteAllocation();
    return __libc_calloc(count, size);
}
void* realloc(void* pointer, std::size_t size) {
    noteAllocation();
    return __libc_realloc(pointer, size);
}
void* memalign(std::size_t alignment, std::size_t size) {
    noteAllocation();
    return __libc_memalign(alignment, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
    noteAllocation();
    return __libc_memalign(alignment, size);
}
int posix_memalign(void** out, std::size_t alignment, std::size_t size) {
    noteAllocation();
    *out = __libc_memalign(alignment, size);
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
    systemGl = norvgl::gl;
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

// One frame with every kind of work a host does between GFX_BeginRender and GFX_EndRender.
void mixedFrame(int frame, std::uint32_t particleSystem) {
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
    GFX_LockRenderMesh(PRIM_POINTS);
    GFX_DrawPolygon(PRIM_TRIANGLES, 6, floats(square));
    GFX_SetRenderProperty(RPROP_DEPTH_TEST, frame % 2);
    GFX_DrawParticleSystem(particleSystem, 0, 0, 40);
    GFX_EndRender();
}

TEST_F(AllocationTest, HundredsOfMixedFramesAllocateNothing) {
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
    mixedFrame(0, particleSystem); // the first frame may settle the system's own state

    allocations = 0;
    counting = true;
    for (int frame = 1; frame <= 120; ++frame)
        mixedFrame(frame, particleSystem);
    counting = false;
    EXPECT_EQ(allocations, 0);
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
