// Hostile call orders, as a careless or unlucky host makes them: calls before GFX_Init and
// after GFX_Destroy, modes left open across a destroy, a window the host destroyed, a second
// or failed GFX_Init, empty arrays, a pipe for a file name. Each row runs on a freshly loaded
// copy of the library and ends with a normal frame whose pixels, and the picture loaded
// before the hostile calls, are checked. The test command also runs these with the address
// and undefined-behaviour sanitizers.
#include "host_system.h"
#include "picture_assets.h"
#include "scenario.h"

#include "norvgl.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace scenario {
namespace {

// The entries a row calls, each taken from the row's own copy of the library.
// clang-format off
#define NVGL_HOSTILE_ENTRIES(X)                                                                    \
    X(GFX_GetLastError) X(GFX_SetProperty) X(GFX_SetRenderProperty) X(GFX_Init) X(GFX_Destroy)    \
    X(GFX_UnloadAll) X(GFX_BeginRender) X(GFX_EndRender) X(GFX_SetClearColor) X(GFX_Translate)   \
    X(GFX_Rotate) X(GFX_Scale) X(GFX_Look) X(GFX_Untransform) X(GFX_AddLight)                     \
    X(GFX_SetLightPosition) X(GFX_SetLightColor) X(GFX_RemoveLight) X(GFX_SetMaterialColor)       \
    X(GFX_LockRenderState) X(GFX_UnlockRenderState) X(GFX_DrawPolygon) X(GFX_DrawIndexedPolygon) \
    X(GFX_DrawBillboard) X(GFX_LoadPicture) X(GFX_DrawPicture) X(GFX_SelectTexture)              \
    X(GFX_SetFontBitmap) X(GFX_SetFontSize) X(GFX_BeginText) X(GFX_EndText)                       \
    X(GFX_PrintByProportion) X(GFX_LoadVRML) X(GFX_LoadMeshIndirect) X(GFX_NewObject)           \
    X(GFX_EndObject) X(GFX_DrawObject) X(GFX_DrawObjectEx) X(GFX_SetObjectProperty)           \
    X(GFX_DrawParticleSystem)
// clang-format on

struct Driver {
    explicit Driver(const PrivateLibrary& library) {
#define NVGL_TAKE(name)                                                                            \
    name = library.function<decltype(::name)>(#name);                                              \
    EXPECT_NE(name, nullptr) << #name;
        NVGL_HOSTILE_ENTRIES(NVGL_TAKE)
#undef NVGL_TAKE
    }
#define NVGL_ENTRY(name) decltype(&::name) name = nullptr;
    NVGL_HOSTILE_ENTRIES(NVGL_ENTRY)
#undef NVGL_ENTRY
};

constexpr int kWindowSide = 128; // a Win32 frame window is no narrower
const Rgb kClear = {0, 0, 255};
const Rgb kPictureColor = {255, 0, 0};

std::vector<std::uint8_t> redBitmap() {
    norvgl::assets::RgbImage image;
    image.width = image.height = 4;
    image.pixels.assign(16, norvgl::assets::rgb(255, 0, 0));
    return norvgl::assets::writeColorBitmap(image);
}

// What a row works with: its own copy of the library, the host's window, and the picture it
// loaded before its hostile calls (0 when none).
struct Host {
    ScratchDirectory scratch;
    PrivateLibrary library{scratch.path()};
    Driver gfx{library};
    std::unique_ptr<HostWindow> window = std::make_unique<HostWindow>(kWindowSide, kWindowSide);
    unsigned picture = 0;
    // Whether the driver still draws into `window` without another GFX_Init.
    bool attached = false;

    void init() {
        gfx.GFX_SetProperty(PROP_WINDOW, window->handle());
        ASSERT_EQ(gfx.GFX_Init(), 0);
        attached = true;
    }
    unsigned loadPicture() {
        const std::vector<std::uint8_t> bitmap = redBitmap();
        unsigned id = 0;
        EXPECT_EQ(gfx.GFX_LoadPicture("red.bmp", bitmap.data(), 0, &id, 0), 0);
        return id;
    }
    std::string lastErrorTitle() const { return lastErrorOf(gfx.GFX_GetLastError).title; }
};

// A quad of host vertices in screen space, top-left corner (x, y), in device coordinates.
std::vector<float> screenQuad(float x, float y, float side) {
    const float corners[4][2] = {{x, y}, {x, y - side}, {x + side, y - side}, {x + side, y}};
    std::vector<float> vertices;
    for (const auto& c : corners)
        vertices.insert(vertices.end(), {c[0], c[1], 1.0f, 0.0f, 0.0f, 1.0f, 0.0f, 0.0f});
    return vertices;
}

// One ordinary frame: the picture in the top-left quarter, a white quad in the bottom-right
// one, the clear colour between them.
void normalFrame(Host& host) {
    Driver& gfx = host.gfx;
    if (!host.attached)
        host.init();
    if (host.picture == 0)
        host.picture = host.loadPicture();
    gfx.GFX_SetClearColor(0.0f, 0.0f, 1.0f, 1.0f);
    gfx.GFX_SetRenderProperty(RPROP_CLEAR_COLOR, 1);
    gfx.GFX_BeginRender();
    // Depth off: this frame must not depend on which depth half it falls in.
    gfx.GFX_SetRenderProperty(RPROP_DEPTH_TEST, 0);
    gfx.GFX_DrawPicture(host.picture, 0, 0, kWindowSide / 2, kWindowSide / 2);
    const std::vector<float> quad = screenQuad(0.0f, 0.0f, 1.0f);
    gfx.GFX_SelectTexture(0); // the picture left its texture selected
    gfx.GFX_SetRenderProperty(RPROP_SCREEN_SPACE, 1);
    gfx.GFX_DrawPolygon(PRIM_QUADS, 4, quad.data());
    gfx.GFX_SetRenderProperty(RPROP_SCREEN_SPACE, 0);
    gfx.GFX_EndRender();
    gfx.GFX_SetRenderProperty(RPROP_CLEAR_COLOR, 0);

    const Image image = host.window->capture();
    ASSERT_FALSE(image.empty());
    const int quarter = kWindowSide / 4;
    EXPECT_EQ(image.at(quarter, quarter), kPictureColor);
    EXPECT_EQ(image.at(3 * quarter, 3 * quarter), kWhite);
    EXPECT_EQ(image.at(3 * quarter, quarter), kClear);
    EXPECT_EQ(image.at(quarter, 3 * quarter), kClear);
}

// A one-triangle model and a one-triangle host mesh (whose arrays must outlive its draws).
struct Meshes {
    float positions[9] = {0, 0, 50, 10, 0, 50, 0, 10, 50};
    float normals[9] = {0, 0, -1, 0, 0, -1, 0, 0, -1};
    float texCoords[6] = {0, 0, 1, 0, 0, 1};
    unsigned model = 0;
    unsigned mesh = 0;
    void load(Driver& gfx) {
        static const char text[] = "DEF A T { coord DEF P C { point [ 0 0 50, 9 0 50, 0 9 50 ] } "
                                   "coordIndex [ 0 1 2 ] }\r\n";
        gfx.GFX_LoadVRML(0, sizeof text - 1, text, &model, 0, 0, 0, nullptr);
        gfx.GFX_LoadMeshIndirect(PRIM_TRIANGLES, 3, positions, normals, texCoords, nullptr, 0, 1,
                                 &mesh);
    }
    void draw(Driver& gfx) const {
        const unsigned noTexture = 0;
        gfx.GFX_DrawObject(model, 0, 0, 0);
        gfx.GFX_DrawObject(mesh, 1, 2, 3);
        gfx.GFX_DrawObjectEx(mesh, 0, 0, 0, PRIM_POINTS, STATE_TEXTURE, &noTexture);
    }
};

// Every kind of call a host makes between frames and inside them, with harmless arguments.
void everyDrawingCall(Driver& gfx) {
    const float triangle[24] = {0, 0, 50, 0, 0, 1,  0,  0, 10, 0, 50, 0,
                                0, 1, 1,  0, 0, 10, 50, 0, 0,  1, 0,  1};
    const unsigned short indices[3] = {0, 1, 2};
    const unsigned depthOff = DEPTH_OFF;
    const float position[3] = {0, 0, 50};
    Meshes meshes;
    unsigned object = 0;
    meshes.load(gfx);
    gfx.GFX_NewObject(&object, OBJECT_DISPLAY_LIST, nullptr);
    gfx.GFX_EndObject();
    EmitterParams sparks = {}; // particles of size 0: nothing to see when a later frame draws
    sparks.count = 5;
    unsigned particles = 0;
    EXPECT_EQ(gfx.GFX_NewObject(&particles, OBJECT_PARTICLE_SYSTEM, &sparks), 0);
    EXPECT_EQ(gfx.GFX_SetClearColor(0.5f, 0.5f, 0.5f, 1.0f), 0);
    EXPECT_EQ(gfx.GFX_SetRenderProperty(RPROP_CLEAR_COLOR, 0), 0);
    EXPECT_EQ(gfx.GFX_SetRenderProperty(RPROP_CULLING, 1), 0);
    EXPECT_EQ(gfx.GFX_BeginRender(), 0);
    gfx.GFX_Translate(1, 2, 3);
    gfx.GFX_Rotate(0.5f, 0, 1, 0);
    gfx.GFX_Scale(2, 2, 2);
    gfx.GFX_Look(0, 0, 0, 0, 0, 10, 0, 1, 0);
    gfx.GFX_Untransform(1);
    gfx.GFX_Untransform(1000);
    EXPECT_EQ(gfx.GFX_AddLight(0, 0, 1, 2, 3), 0);
    EXPECT_EQ(gfx.GFX_SetLightPosition(0, 1, 2, 3), 0);
    EXPECT_EQ(gfx.GFX_SetLightColor(0, 1, 1, 1, 1, 1, 1, 1, 1, 1), 0);
    EXPECT_EQ(gfx.GFX_RemoveLight(0), 0);
    EXPECT_EQ(gfx.GFX_SetMaterialColor(1, 0, 0, 1, 0, 0, 0, 0, 0), 0);
    gfx.GFX_LockRenderState(STATE_DEPTH, &depthOff);
    gfx.GFX_UnlockRenderState();
    gfx.GFX_DrawPolygon(PRIM_TRIANGLES, 3, triangle);
    gfx.GFX_DrawIndexedPolygon(PRIM_TRIANGLES, 3, triangle, 3, indices);
    gfx.GFX_DrawBillboard(position, 4.0f);
    gfx.GFX_DrawPicture(1, 0, 0, 0, 0);
    gfx.GFX_SelectTexture(1);
    gfx.GFX_SetFontBitmap(1);
    gfx.GFX_SetFontSize(0.1f, 0.1f);
    gfx.GFX_BeginText();
    gfx.GFX_PrintByProportion(0.1f, 0.1f, "AB");
    gfx.GFX_EndText();
    meshes.draw(gfx);
    EXPECT_EQ(gfx.GFX_DrawParticleSystem(particles, 0, 0, 50), 0);
    EXPECT_EQ(gfx.GFX_EndRender(), 0);
    EXPECT_EQ(gfx.GFX_UnloadAll(), 0);
    EXPECT_EQ(gfx.GFX_SetRenderProperty(RPROP_CULLING, 0), 0);
}

void expectPictureRefusedWithoutContext(Host& host) {
    const std::vector<std::uint8_t> bitmap = redBitmap();
    unsigned id = 77;
    EXPECT_EQ(host.gfx.GFX_LoadPicture("red.bmp", bitmap.data(), 0, &id, 0), 1);
    EXPECT_EQ(id, 77u);
    EXPECT_EQ(host.lastErrorTitle(), "wglCreateContext failed");
}

struct HostileOrder {
    const char* name;
    void (*calls)(Host& host);
};

void PrintTo(const HostileOrder& order, std::ostream* out) {
    *out << order.name;
}

const HostileOrder kHostileOrders[] = {
    {"EveryCallBeforeInit", [](Host& host) { everyDrawingCall(host.gfx); }},
    {"PictureAndScreenSpaceExitBeforeInit",
     [](Host& host) {
         expectPictureRefusedWithoutContext(host);
         host.gfx.GFX_SetRenderProperty(RPROP_SCREEN_SPACE, 0);
         EXPECT_EQ(host.gfx.GFX_Untransform(1), 1);
         host.gfx.GFX_SetRenderProperty(RPROP_SCREEN_SPACE, 1);
         host.gfx.GFX_SetRenderProperty(RPROP_SCREEN_SPACE, 0);
         host.gfx.GFX_SetRenderProperty(RPROP_SCREEN_SPACE, 0);
         host.gfx.GFX_Untransform(0);
     }},
    {"EveryCallAfterDestroy",
     [](Host& host) {
         host.init();
         host.loadPicture();
         EXPECT_EQ(host.gfx.GFX_Destroy(), 0);
         host.attached = false;
         everyDrawingCall(host.gfx);
         expectPictureRefusedWithoutContext(host);
     }},
    {"TextModeOpenAcrossDestroy",
     [](Host& host) {
         Driver& gfx = host.gfx;
         host.init();
         gfx.GFX_BeginRender();
         gfx.GFX_BeginText();
         gfx.GFX_EndRender();
         EXPECT_EQ(gfx.GFX_Destroy(), 0);
         host.attached = false;
         gfx.GFX_EndText();
         gfx.GFX_SetMaterialColor(1, 0, 0, 1, 0, 0, 0, 0, 0);
         gfx.GFX_BeginText();
     }},
    {"StateLockedAndFrameOpenAcrossDestroy",
     [](Host& host) {
         Driver& gfx = host.gfx;
         const unsigned blend = BLEND_ALPHA;
         host.init();
         gfx.GFX_BeginRender();
         gfx.GFX_LockRenderState(STATE_BLEND, &blend);
         gfx.GFX_BeginText();
         gfx.GFX_BeginText();
         EXPECT_EQ(gfx.GFX_Destroy(), 0);
         host.attached = false;
         everyDrawingCall(gfx);
         gfx.GFX_EndText();
         gfx.GFX_EndText();
         gfx.GFX_EndRender();
     }},
    {"HostDestroysItsWindowThenDrawsAFrame",
     [](Host& host) {
         Driver& gfx = host.gfx;
         host.init();
         host.picture = host.loadPicture();
         normalFrame(host);
         host.window->destroy();
         const float triangle[24] = {0, 0, 50, 0, 0, 1,  0,  0, 10, 0, 50, 0,
                                     0, 1, 1,  0, 0, 10, 50, 0, 0,  1, 0,  1};
         EXPECT_EQ(gfx.GFX_BeginRender(), 0);
         gfx.GFX_DrawPolygon(PRIM_TRIANGLES, 3, triangle);
         EXPECT_EQ(gfx.GFX_EndRender(), 0);
         // The host carries on in a new window; the picture loaded before still draws.
         host.window = std::make_unique<HostWindow>(kWindowSide, kWindowSide);
         host.attached = false;
     }},
    {"SecondInitOnTheSameWindowKeepsPictures",
     [](Host& host) {
         host.init();
         host.picture = host.loadPicture();
         ASSERT_EQ(host.gfx.GFX_Init(), 0);
     }},
    {"SecondInitOnAnotherWindowKeepsPictures",
     [](Host& host) {
         host.init();
         host.picture = host.loadPicture();
         normalFrame(host);
         host.window = std::make_unique<HostWindow>(kWindowSide, kWindowSide);
         host.attached = false;
     }},
    {"FailedInitKeepsTheContext",
     [](Host& host) {
         host.init();
         host.picture = host.loadPicture();
         host.gfx.GFX_SetProperty(PROP_WINDOW, 0);
         EXPECT_EQ(host.gfx.GFX_Init(), 1);
         EXPECT_EQ(host.lastErrorTitle(), kPixelFormatTitle);
         host.gfx.GFX_SetProperty(PROP_WINDOW, host.window->handle());
     }},
    {"ModelsAcrossUnloadingASecondInitAndAnOpenObject",
     [](Host& host) {
         Driver& gfx = host.gfx;
         Meshes meshes;
         unsigned object = 0;
         host.init();
         meshes.load(gfx);
         EXPECT_EQ(gfx.GFX_UnloadAll(), 0);
         gfx.GFX_BeginRender();
         Meshes inFrame;
         inFrame.load(gfx); // before any copied polygon: a model and a mesh are made
         meshes.draw(gfx);
         inFrame.draw(gfx);
         gfx.GFX_EndRender();
         ASSERT_EQ(gfx.GFX_Init(), 0); // a new context starts with no meshes
         gfx.GFX_BeginRender();
         meshes.draw(gfx);
         gfx.GFX_EndRender();
         gfx.GFX_NewObject(&object, OBJECT_DISPLAY_LIST, nullptr); // left open
         EXPECT_EQ(gfx.GFX_Destroy(), 0);
         host.attached = false;
     }},
    {"EmptyPolygonsWithoutArrays",
     [](Host& host) {
         Driver& gfx = host.gfx;
         host.init();
         gfx.GFX_BeginRender();
         for (int type : {PRIM_POINTS, PRIM_TRIANGLES, PRIM_QUADS, PRIM_BILLBOARD}) {
             gfx.GFX_DrawPolygon(type, 0, nullptr);
             gfx.GFX_DrawIndexedPolygon(type, 0, nullptr, 0, nullptr);
         }
         gfx.GFX_EndRender();
     }},
    {"PipeAsAPictureFile",
     [](Host& host) {
         host.init();
         PipeName pipe;
         unsigned id = 77;
         EXPECT_EQ(host.gfx.GFX_LoadPicture(pipe.path().c_str(), nullptr, 0, &id, 0), 1);
         EXPECT_EQ(id, 77u);
         EXPECT_EQ(host.lastErrorTitle(), "File not found");
     }},
    {"ParticleSystemRebuiltAndLeftRequestedAcrossDestroy",
     [](Host& host) {
         Driver& gfx = host.gfx;
         host.init();
         EmitterParams block = {}; // size 0 throughout
         block.count = 40;
         block.flags = PF_SHARDS | PF_LOOP;
         unsigned id = 0;
         ASSERT_EQ(gfx.GFX_NewObject(&id, OBJECT_PARTICLE_SYSTEM, &block), 0);
         for (unsigned count : {100u, 0u, 3u, 70000u}) {
             block.count = count;
             gfx.GFX_SetObjectProperty(id, &block);
         }
         gfx.GFX_SetObjectProperty(id, nullptr);
         gfx.GFX_BeginRender();
         gfx.GFX_DrawParticleSystem(id, 0, 0, 50);
         EXPECT_EQ(gfx.GFX_Destroy(), 0);
         host.attached = false;
         gfx.GFX_EndRender();
     }},
    {"EverythingTwice",
     [](Host& host) {
         Driver& gfx = host.gfx;
         EXPECT_EQ(gfx.GFX_Destroy(), 0);
         host.init();
         host.init();
         host.picture = host.loadPicture();
         gfx.GFX_BeginRender();
         gfx.GFX_BeginRender();
         gfx.GFX_EndRender();
         gfx.GFX_EndRender();
         gfx.GFX_EndText();
         gfx.GFX_EndText();
         gfx.GFX_UnlockRenderState();
         gfx.GFX_UnloadAll();
         gfx.GFX_UnloadAll();
         host.picture = 0;
     }},
};

class HostileCalls : public ::testing::TestWithParam<HostileOrder> {};

TEST_P(HostileCalls, HostLivesOnAndTheNextFrameDraws) {
    Host host;
    ASSERT_TRUE(host.library.loaded()) << host.library.error();
    GetParam().calls(host);
    normalFrame(host);
    // The copy is unloaded after this; nothing of it may stay in the process's hands.
    host.gfx.GFX_Destroy();
}

INSTANTIATE_TEST_SUITE_P(Orders, HostileCalls, ::testing::ValuesIn(kHostileOrders),
                         [](const ::testing::TestParamInfo<HostileOrder>& order) {
                             return std::string(order.param.name);
                         });

} // namespace
} // namespace scenario
