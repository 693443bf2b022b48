// The export table as a whole: the types of all 63 entries, and the master switch across
// them: with PROP_ENABLED at 0 every guarded entry returns 0 at once, with no GL call,
// nothing queued and no error, and the entries that are not guarded still act.
#include "core/core.h"
#include "manager3d/manager3d.h"
#include "particles/particles.h"
#include "picture_assets.h"
#include "pictures/pictures.h"
#include "support/driver_fixture.h"
#include "support/gl_recorder.h"
#include "support/scene.h"

#include <GL/gl.h>

#include <cstring>
#include <functional>
#include <string>
#include <type_traits>

using namespace norvgl;
using norvgl::GlCall;
using nvtest::GlRecorder;

// The catalogue that hosts compile against: each entry's result and argument types in order.
// The entries kept for older hosts take any arguments.
#define NVGL_ENTRY(name, ...) static_assert(std::is_same_v<decltype(name), __VA_ARGS__>, #name);
using F = float;
using U = unsigned int;
NVGL_ENTRY(GFX_GetLastError, void(char*, char*))
NVGL_ENTRY(GFX_GetProperty, intptr_t(U))
NVGL_ENTRY(GFX_SetProperty, int(U, intptr_t))
NVGL_ENTRY(GFX_GetRenderProperty, int(int))
NVGL_ENTRY(GFX_SetRenderProperty, int(int, int))
NVGL_ENTRY(GFX_Init, int())
NVGL_ENTRY(GFX_Destroy, int())
NVGL_ENTRY(GFX_UnloadAll, int())
NVGL_ENTRY(GFX_EnumResolutions, int(DisplayModeRecord*))
NVGL_ENTRY(GFX_SetResolution, int(const DisplayModeRecord*))
NVGL_ENTRY(GFX_BeginRender, int())
NVGL_ENTRY(GFX_EndRender, int())
NVGL_ENTRY(GFX_SetClearColor, int(F, F, F, F))
NVGL_ENTRY(GFX_LockRenderState, int(U, const void*))
NVGL_ENTRY(GFX_UnlockRenderState, void())
NVGL_ENTRY(GFX_LockRenderMesh, void(U))
NVGL_ENTRY(GFX_UnlockRenderMesh, void())
NVGL_ENTRY(GFX_Translate, void(F, F, F))
NVGL_ENTRY(GFX_Rotate, void(F, F, F, F))
NVGL_ENTRY(GFX_Scale, void(F, F, F))
NVGL_ENTRY(GFX_Look, void(F, F, F, F, F, F, F, F, F))
NVGL_ENTRY(GFX_Untransform, int(U))
NVGL_ENTRY(GFX_DrawPolygon, int(int, U, const float*))
NVGL_ENTRY(GFX_DrawIndexedPolygon, int(int, U, const float*, U, const unsigned short*))
NVGL_ENTRY(GFX_DrawBillboard, int(const float*, F))
NVGL_ENTRY(GFX_AddLight, int(U, int, F, F, F))
NVGL_ENTRY(GFX_SetLightPosition, int(U, F, F, F))
NVGL_ENTRY(GFX_SetLightColor, int(U, F, F, F, F, F, F, F, F, F))
NVGL_ENTRY(GFX_RemoveLight, int(U))
NVGL_ENTRY(GFX_SetMaterialColorEx, int(F, F, F, F, F, F, F, F, F, F, F, F))
NVGL_ENTRY(GFX_SetMaterialColor, int(F, F, F, F, F, F, F, F, F))
NVGL_ENTRY(GFX_LoadPicture, int(const char*, const void*, U, U*, U))
NVGL_ENTRY(GFX_GetPictureDimensions, int(U, U*, U*, U*))
NVGL_ENTRY(GFX_DrawPicture, int(U, int, int, int, int))
NVGL_ENTRY(GFX_DrawPictureByProportion, int(U, F, F, F, F))
NVGL_ENTRY(GFX_SelectTexture, int(U))
NVGL_ENTRY(GFX_SetFontSize, int(F, F))
NVGL_ENTRY(GFX_SetFontBitmap, int(U))
NVGL_ENTRY(GFX_BeginText, int())
NVGL_ENTRY(GFX_EndText, int())
NVGL_ENTRY(GFX_PrintByProportion, int(F, F, const char*))
NVGL_ENTRY(GFX_LoadVRML, int(int, U, const char*, U*, int, int, int, float*))
NVGL_ENTRY(GFX_LoadMeshIndirect,
           int(int, U, float*, float*, float*, const unsigned short*, U, U, U*))
NVGL_ENTRY(GFX_NewObject, int(U*, int, EmitterParams*))
NVGL_ENTRY(GFX_EndObject, int())
NVGL_ENTRY(GFX_DrawObject, int(U, F, F, F))
NVGL_ENTRY(GFX_DrawObjectEx, int(U, F, F, F, int, U, const void*))
NVGL_ENTRY(GFX_SetObjectProperty, int(U, EmitterParams*))
NVGL_ENTRY(GFX_DrawParticleSystem, int(U, F, F, F))
NVGL_ENTRY(GFX_Print, int(...))
NVGL_ENTRY(GFX_Resize, int(...))
NVGL_ENTRY(GFX_SetBlitArea, int(...))
NVGL_ENTRY(GFX_LoadIndexedMesh, int(...))
NVGL_ENTRY(GFX_AddRenderWindow, int(...))
NVGL_ENTRY(GFX_GetAvailableDevices, int(...))
NVGL_ENTRY(GFX_GetRenderState, int(...))
NVGL_ENTRY(GFX_GetRenderWindow, int(...))
NVGL_ENTRY(GFX_RemoveRenderWindow, int(...))
NVGL_ENTRY(GFX_SetDevice, int(...))
NVGL_ENTRY(GFX_SetRenderState, int(...))
NVGL_ENTRY(GFX_SetRenderWindow, int(...))
NVGL_ENTRY(GFX_TestRenderState, int(...))
NVGL_ENTRY(GFX_UnloadPicture, int(...))

namespace {

// Everything a guarded entry could change that the host or the next flush would see.
struct Snapshot {
    std::uint32_t positions, normals, texCoords, batches, nodes;
    const StateNode* current;
    std::uint32_t matrix, nextMatrix, projection, screenSpace, saved;
    bool locked;
    std::int32_t typeOverride;
    std::int32_t lastError;
    std::int32_t renderProperties[kRenderPropertyCount];
    bool particlesRequested;
    bool operator==(const Snapshot&) const = default;
};

Snapshot snapshot() {
    Snapshot s{m3d.positionCursor,   m3d.normalCursor, m3d.texCoordCursor,
               m3d.batchCursor,      m3d.stateCursor,  m3d.currentNode,
               m3d.currentMatrix,    m3d.nextMatrix,   m3d.projectionIndex,
               m3d.screenSpaceDepth, m3d.savedCount,   m3d.stateLocked,
               m3d.typeOverride,     driver.lastError, {},
               particles.drawPending};
    std::memcpy(s.renderProperties, driver.renderProperties, sizeof s.renderProperties);
    return s;
}

class ExportsTest : public nvtest::InFrameTest {
protected:
    void SetUp() override {
        InFrameTest::SetUp();
        const auto bitmap = assets::writeColorBitmap({2, 2, {1, 2, 3, 4}}, 24);
        ASSERT_EQ(GFX_LoadPicture("p.bmp", bitmap.data(), 0, &picture, 0), 0);
        ASSERT_EQ(GFX_SetFontBitmap(picture), 0);
        GFX_SetFontSize(0.1f, 0.1f);
        const std::string text = "DEF F IndexedFaceSet {\r\n"
                                 "coord DEF P Coordinate { point [ 0 0 9, 1 0 9, 0 1 9 ] }\r\n"
                                 "coordIndex [ 0, 1, 2, -1 ] }\r\n";
        ASSERT_EQ(GFX_LoadVRML(0, static_cast<unsigned>(text.size()), text.c_str(), &model, 0, 0, 0,
                               nullptr),
                  0);
        EmitterParams emitter = {};
        ASSERT_EQ(Particle_NewObject(&particleSystem, &emitter), 0);
    }
    unsigned int picture = 0;
    unsigned int model = 0;
    std::uint32_t particleSystem = 0;
};

struct Guarded {
    const char* name;
    std::function<int()> call;
    std::function<void()> prepare; // run while enabled, so the call has something to undo
};

TEST_F(ExportsTest, GuardedEntriesDoNothingWhileDisabled) {
    static const auto square = nvtest::square(0, 0, 10, 1);
    const float* v = nvtest::floats(square);
    static const std::uint16_t indices[3] = {0, 1, 2};
    const std::uint32_t blend = BLEND_ALPHA;
    const unsigned int id = picture;
    const unsigned int object = model;
    const unsigned int system = particleSystem;
    const Guarded rows[] = {
        {"GFX_BeginRender", [] { return GFX_BeginRender(); }, {}},
        {"GFX_EndRender", [] { return GFX_EndRender(); }, {}},
        {"GFX_SetClearColor", [] { return GFX_SetClearColor(1, 0, 0, 1); }, {}},
        {"GFX_LockRenderState", [&] { return GFX_LockRenderState(STATE_BLEND, &blend); }, {}},
        {"GFX_UnlockRenderState", [] { return GFX_UnlockRenderState(), 0; },
         [] { GFX_LockRenderState(0, nullptr); }},
        {"GFX_LockRenderMesh", [] { return GFX_LockRenderMesh(PRIM_POINTS), 0; }, {}},
        {"GFX_UnlockRenderMesh", [] { return GFX_UnlockRenderMesh(), 0; },
         [] { GFX_LockRenderMesh(PRIM_LINES); }},
        {"GFX_Translate", [] { return GFX_Translate(1, 2, 3), 0; }, {}},
        {"GFX_Rotate", [] { return GFX_Rotate(1, 0, 1, 0), 0; }, {}},
        {"GFX_Scale", [] { return GFX_Scale(2, 2, 2), 0; }, {}},
        {"GFX_Look", [] { return GFX_Look(0, 0, 0, 1, 0, 0, 0, 0, 0), 0; }, {}},
        {"GFX_Untransform", [] { return GFX_Untransform(1); }, [] { GFX_Translate(1, 0, 0); }},
        {"GFX_DrawPolygon", [=] { return GFX_DrawPolygon(PRIM_TRIANGLES, 6, v); }, {}},
        {"GFX_DrawIndexedPolygon",
         [=] { return GFX_DrawIndexedPolygon(PRIM_TRIANGLES, 6, v, 3, indices); },
         {}},
        {"GFX_SetMaterialColorEx",
         [] { return GFX_SetMaterialColorEx(1, 0, 0, 1, 1, 0, 0, 1, 0, 0, 0, 1); },
         {}},
        {"GFX_SetMaterialColor",
         [] { return GFX_SetMaterialColor(0, 1, 0, 0, 1, 0, 0, 0, 0); },
         {}},
        {"GFX_DrawPicture", [=] { return GFX_DrawPicture(id, 0, 0, 10, 10); }, {}},
        {"GFX_DrawPictureByProportion",
         [=] { return GFX_DrawPictureByProportion(id, 0, 0, 0.5f, 0.5f); },
         {}},
        {"GFX_SelectTexture", [=] { return GFX_SelectTexture(id); }, {}},
        {"GFX_BeginText", [] { return GFX_BeginText(); }, {}},
        {"GFX_EndText", [] { return GFX_EndText(); }, [] { GFX_BeginText(); }},
        {"GFX_PrintByProportion", [] { return GFX_PrintByProportion(0, 0, "AB"); }, {}},
        {"GFX_DrawObject", [=] { return GFX_DrawObject(object, 1, 2, 3); }, {}},
        {"GFX_DrawObjectEx",
         [=] { return GFX_DrawObjectEx(object, 1, 2, 3, PRIM_POINTS, STATE_TEXTURE, nullptr); },
         {}},
        {"GFX_DrawParticleSystem", [=] { return GFX_DrawParticleSystem(system, 0, 0, 50); }, {}},
    };
    for (const Guarded& row : rows) {
        if (row.prepare)
            row.prepare();
        ReportError(ERR_UNKNOWN, nullptr);
        const Snapshot before = snapshot();
        GFX_SetProperty(PROP_ENABLED, 0);
        GlRecorder rec;
        EXPECT_EQ(row.call(), 0) << row.name;
        GFX_SetProperty(PROP_ENABLED, 1);
        EXPECT_TRUE(rec.calls().empty()) << row.name << " made " << rec.calls()[0].text();
        EXPECT_TRUE(snapshot() == before) << row.name << " changed the queue or the last error";
    }
}

// Guarded in part: the billboard's two blend requests always reach the queue, its vertices
// only while enabled; a render property is always stored but requests no state.
TEST_F(ExportsTest, PartlyGuardedEntriesKeepOnlyTheirUnguardedPart) {
    const float position[3] = {0, 0, 10};
    GFX_SetProperty(PROP_ENABLED, 0);
    const Snapshot before = snapshot();
    EXPECT_EQ(GFX_DrawBillboard(position, 2), 0);
    EXPECT_EQ(m3d.positionCursor, before.positions);
    EXPECT_EQ(m3d.batchCursor, before.batches);
    EXPECT_GT(m3d.stateCursor, before.nodes);
    EXPECT_EQ(m3d.currentNode->blendMode, BLEND_OFF);

    const StateNode* node = m3d.currentNode;
    EXPECT_EQ(GFX_SetRenderProperty(RPROP_ALPHA_BLEND, 1), 0);
    EXPECT_EQ(GFX_GetRenderProperty(RPROP_ALPHA_BLEND), 1);
    EXPECT_EQ(m3d.currentNode, node);
    GFX_SetProperty(PROP_ENABLED, 1);
}

// Lights, fonts, loading, objects, particle systems' blocks and the property calls are not
// guarded.
TEST_F(ExportsTest, UnguardedEntriesActWhileDisabled) {
    GFX_SetProperty(PROP_ENABLED, 0);
    EXPECT_EQ(GFX_AddLight(3, 0, 0, 0, 0), 0);
    EXPECT_TRUE(glIsEnabled(GL_LIGHT3));
    EXPECT_EQ(GFX_SetLightColor(3, 0.5f, 0, 0, 0, 0, 0, 0, 0, 0), 0);
    float ambient[4] = {};
    glGetLightfv(GL_LIGHT3, GL_AMBIENT, ambient);
    EXPECT_EQ(ambient[0], 0.5f);
    EXPECT_EQ(GFX_RemoveLight(3), 0);
    EXPECT_FALSE(glIsEnabled(GL_LIGHT3));
    EXPECT_EQ(GFX_SetFontSize(0.25f, 0.5f), 0);
    EXPECT_EQ(font.fontHeight, 0.5f);
    const auto bitmap = assets::writeColorBitmap({4, 2, std::vector<std::uint32_t>(8, 7)}, 24);
    unsigned int id = 0;
    EXPECT_EQ(GFX_LoadPicture("q.bmp", bitmap.data(), 0, &id, 0), 0);
    unsigned int width = 0;
    EXPECT_EQ(GFX_GetPictureDimensions(id, &width, nullptr, nullptr), 0);
    EXPECT_EQ(width, 4u);
    EXPECT_EQ(GFX_SetFontBitmap(id), 0);
    EXPECT_EQ(font.fontPicture, id);
    unsigned int object = 0;
    GlRecorder rec;
    EXPECT_EQ(GFX_NewObject(&object, OBJECT_DISPLAY_LIST, nullptr), 0);
    EXPECT_EQ(GFX_EndObject(), 0);
    EXPECT_EQ(rec.texts({GlCall::NewList, GlCall::EndList}),
              (std::vector<std::string>{"glNewList(" + std::to_string(object) + ", 4864)",
                                        "glEndList()"}));
    EmitterParams rebuild = {};
    rebuild.count = 2;
    EXPECT_EQ(GFX_SetObjectProperty(particleSystem, &rebuild), 0);
    EXPECT_EQ(rebuild.count, 0u);
    EXPECT_EQ(GFX_GetProperty(PROP_ENABLED), 0);
    GFX_SetProperty(PROP_ENABLED, 1);
}

} // namespace
