// Models and meshes as a host loads and draws them: a textured VRML model with both windings
// under culling, the same model under the caller's state, a host mesh with its picture at two
// places, and many cycles of GFX_Init to GFX_Destroy with everything loaded and drawn, which
// must give back what they took.
#include "picture_assets.h"
#include "scenario.h"
#include "support/scene.h"

#include "norvgl.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#if defined(__SANITIZE_ADDRESS__)
#define NVGL_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define NVGL_ADDRESS_SANITIZER 1
#endif
#endif
#ifndef NVGL_ADDRESS_SANITIZER
#define NVGL_ADDRESS_SANITIZER 0
#endif

namespace scenario {
namespace {

namespace assets = norvgl::assets;
using nvtest::Pixel;
using nvtest::project;

constexpr float kDepth = 10.0f; // the panels' distance from the camera

// Red and green on the top half of the picture, blue and white on the bottom half.
std::vector<std::uint8_t> quadrantBitmap() {
    assets::RgbImage image{16, 16, {}};
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x)
            image.pixels.push_back(y < 8 ? (x < 8 ? 0xFF0000u : 0x00FF00u)
                                         : (x < 8 ? 0x0000FFu : 0xFFFFFFu));
    return assets::writeColorBitmap(image);
}

// A 2 x 2 panel centred at (x, 0) in the model, as a VRML transform with a face set of two
// triangles and the picture's corners on the panel's corners. `clockwise`: listed clockwise as
// the camera sees it, so that the face normal points at the camera.
std::string panel(const std::string& name, float x, bool ccw, bool clockwise) {
    const std::string points = clockwise ? "-1 -1 0, -1 1 0, 1 1 0, 1 -1 0"  // up, then right
                                         : "-1 -1 0, 1 -1 0, 1 1 0, -1 1 0"; // right, then up
    const std::string uv = clockwise ? "0 0, 0 1, 1 1, 1 0" : "0 0, 1 0, 1 1, 0 1";
    return "DEF " + name + " Transform {\r\n  translation " + std::to_string(x) + " 0 0\r\n" +
           "  children [ Shape {\r\n" +
           "    appearance Appearance { texture ImageTexture { url \"quad.bmp\" } }\r\n" +
           "    geometry DEF " + name + "Faces IndexedFaceSet {\r\n" + "      ccw " +
           (ccw ? "TRUE" : "FALSE") + "\r\n" + "      coord DEF " + name +
           "Points Coordinate { point [ " + points + " ] }\r\n" +
           "      coordIndex [ 0, 1, 2, -1, 0, 2, 3, -1 ]\r\n" + "      texCoord DEF " + name +
           "UV TextureCoordinate { point [ 0 0, " + uv + " ] }\r\n" +
           "      texCoordIndex [ 1, 2, 3, -1, 1, 3, 4, -1 ]\r\n" + "    }\r\n  } ]\r\n}\r\n";
}

// Three panels at z = 10: left, front faces with winding TRUE; middle, the same winding on a
// face listed the other way, which culling removes; right, front faces with winding FALSE.
std::string threePanels() {
    return "#VRML V2.0 utf8\r\nDEF Model Transform {\r\n  translation 0 0 10\r\n  children [\r\n" +
           panel("Left", -3, true, true) + panel("Middle", 0, true, false) +
           panel("Right", 3, false, false) + "  ]\r\n}\r\n";
}

// The four colours of the picture on the panel centred at (x, y), as the window shows them.
void expectPicture(const Image& image, float x, float y, const char* what) {
    const struct {
        float dx, dy;
        Rgb color;
    } corners[] = {
        {-0.5f, 0.5f, kRed}, {0.5f, 0.5f, kGreen}, {-0.5f, -0.5f, kBlue}, {0.5f, -0.5f, kWhite}};
    for (const auto& c : corners) {
        const Pixel p = project(x + c.dx, y + c.dy, kDepth);
        EXPECT_EQ(image.at(p.x, p.y), c.color) << what << " at " << c.dx << ", " << c.dy;
    }
}

Rgb at(const Image& image, float x, float y) {
    const Pixel p = project(x, y, kDepth);
    return image.at(p.x, p.y);
}

// The picture and the three panels loaded.
class Models : public WindowScenario {
protected:
    void SetUp() override {
        WindowScenario::SetUp();
        const auto bitmap = quadrantBitmap();
        ASSERT_EQ(GFX_LoadPicture("quad.bmp", bitmap.data(), 0, &picture_, PICTURE_NO_MIPMAPS), 0);
        const std::string text = threePanels();
        float bounds[6] = {};
        ASSERT_EQ(GFX_LoadVRML(0, static_cast<unsigned>(text.size()), text.c_str(), &model_, 0, 0,
                               0, bounds),
                  0);
        EXPECT_EQ(std::vector<float>(bounds, bounds + 6),
                  (std::vector<float>{-4, -1, kDepth, 4, 1, kDepth}));
    }

    // A frame with depth testing off, so that it does not depend on the depth phase.
    static void beginFrame(bool culling) {
        GFX_BeginRender();
        GFX_SetRenderProperty(RPROP_DEPTH_TEST, 0);
        GFX_SetRenderProperty(RPROP_CULLING, culling ? 1 : 0);
    }

    unsigned picture_ = 0;
    unsigned model_ = 0;
};

TEST_F(Models, TexturedModelShowsItsFrontFacesUnderCulling) {
    beginFrame(true);
    EXPECT_EQ(GFX_DrawObject(model_, 0, 0, 0), 0);
    const Image culled = endFrame();
    expectPicture(culled, -3, 0, "winding TRUE, listed clockwise");
    expectPicture(culled, 3, 0, "winding FALSE, listed counter-clockwise");
    EXPECT_EQ(at(culled, 0, 0.5f), kBlack) << "the middle panel faces away";
    EXPECT_EQ(at(culled, -4.5f, 0), kBlack) << "nothing beside the panels";

    // Without culling the middle panel shows its picture too.
    beginFrame(false);
    GFX_DrawObject(model_, 0, 0, 0);
    expectPicture(endFrame(), 0, 0, "the middle panel");
}

TEST_F(Models, DrawObjectExDrawsUnderTheCallersStateOnly) {
    const unsigned cullOffNoTexture[2] = {CULL_OFF, 0};
    const float below[] = {-1, -3, kDepth, 0, 0, -1, 0, 1, 1,  -3, kDepth, 0, 0, -1, 1, 1,
                           1,  -2, kDepth, 0, 0, -1, 1, 0, -1, -2, kDepth, 0, 0, -1, 0, 0};
    beginFrame(true);
    GFX_SelectTexture(picture_);
    EXPECT_EQ(
        GFX_DrawObjectEx(model_, 0, 1, 0, PRIM_NONE, STATE_CULL | STATE_TEXTURE, cullOffNoTexture),
        0);
    // After the call the frame's own state is back: culled and textured.
    EXPECT_EQ(GFX_DrawPolygon(PRIM_QUADS, 4, below), 0);
    const Image image = endFrame();
    for (float x : {-3.0f, 0.0f, 3.0f})
        for (float y : {1.5f, 0.5f})
            EXPECT_EQ(at(image, x + 0.5f, y), kWhite) << "panel at " << x << ", untextured";
    EXPECT_EQ(at(image, -0.5f, -2.25f), kRed) << "the quad after the call is textured";
    EXPECT_EQ(at(image, 0.5f, -2.75f), kWhite);
}

TEST_F(Models, HostMeshDrawsWithItsPictureWhereItIsPut) {
    // A square at the origin, counter-clockwise on screen; texture v runs down the picture.
    float positions[] = {-1, -1, kDepth, 1, -1, kDepth, 1, 1, kDepth, -1, 1, kDepth};
    float normals[] = {0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1};
    float texCoords[] = {0, 1, 1, 1, 1, 0, 0, 0};
    const unsigned short indices[] = {0, 1, 2, 0, 2, 3};
    unsigned mesh = 0;
    ASSERT_EQ(GFX_LoadMeshIndirect(PRIM_TRIANGLES, 4, positions, normals, texCoords, indices, 6,
                                   picture_, &mesh),
              0);
    EXPECT_EQ(mesh, model_ + 1);
    beginFrame(true);
    EXPECT_EQ(GFX_DrawObject(mesh, -3, 2, 0), 0);
    EXPECT_EQ(GFX_DrawObject(mesh, 3, -2, 0), 0);
    const Image image = endFrame();
    expectPicture(image, -3, 2, "first place");
    expectPicture(image, 3, -2, "second place, not moved on from the first");
    EXPECT_EQ(at(image, 0, 0), kBlack) << "nothing at the mesh's own place";
}

constexpr int kModelsPerCycle = 16;

// Everything a host does in one life of the driver on its window.
void oneCycle(const HostWindow& window, const std::string& text, bool check) {
    GFX_SetProperty(PROP_WINDOW, window.handle());
    ASSERT_EQ(GFX_Init(), 0);
    const auto bitmap = quadrantBitmap();
    unsigned pictures[2] = {}, models[kModelsPerCycle] = {}, mesh = 0;
    ASSERT_EQ(GFX_LoadPicture("quad.bmp", bitmap.data(), 0, &pictures[0], 0), 0);
    ASSERT_EQ(GFX_LoadPicture("other.bmp", bitmap.data(), 0, &pictures[1], 0), 0);
    // Enough models that losing them every cycle would show in the heap.
    for (unsigned& model : models)
        ASSERT_EQ(GFX_LoadVRML(0, static_cast<unsigned>(text.size()), text.c_str(), &model, 0, 0, 0,
                               nullptr),
                  0);
    float positions[] = {-1, -1, kDepth, 1, -1, kDepth, 1, 1, kDepth};
    float normals[] = {0, 0, -1, 0, 0, -1, 0, 0, -1};
    float texCoords[] = {0, 1, 1, 1, 1, 0};
    ASSERT_EQ(GFX_LoadMeshIndirect(PRIM_TRIANGLES, 3, positions, normals, texCoords, nullptr, 0,
                                   pictures[1], &mesh),
              0);
    for (int frame = 0; frame < 2; ++frame) {
        GFX_BeginRender();
        GFX_SetRenderProperty(RPROP_DEPTH_TEST, 0);
        for (unsigned model : models)
            GFX_DrawObject(model, 0, 0, 0);
        GFX_DrawObject(mesh, 0, 2, 0);
        GFX_DrawPicture(pictures[0], 0, 0, 32, 32);
        GFX_EndRender();
    }
    if (check)
        expectPicture(window.capture(), -3, 0, "the model");
    EXPECT_EQ(GFX_UnloadAll(), 0);
    EXPECT_EQ(GFX_Destroy(), 0);
}

// The resident size is not the figure: the system's GL keeps a few kilobytes more for every
// context that has drawn (software and JIT rasterisers alike, with the driver drawing plain
// polygons only), so it grows with the cycles whatever the driver does. What the driver takes
// is heap memory, and that must come back.
TEST(ModelCycles, TwoHundredLivesGiveBackWhatTheyTook) {
    constexpr int kCycles = 200;
    constexpr std::size_t kAllowedGrowth = 1 << 20;
    HostWindow window(640, 480);
    const std::string text = threePanels();
    oneCycle(window, text, false);
    const std::size_t afterFirst = heapBytesInUse();
    for (int cycle = 2; cycle <= kCycles && !HasFatalFailure(); ++cycle)
        oneCycle(window, text, cycle == kCycles);
    const std::size_t afterLast = heapBytesInUse();
    GFX_SetProperty(PROP_WINDOW, 0);
#if NVGL_ADDRESS_SANITIZER
    // The sanitizer's allocator answers for the heap here, and LeakSanitizer checks at exit
    // that nothing is lost.
    (void)afterFirst;
    (void)afterLast;
    (void)kAllowedGrowth;
#else
    ASSERT_GT(afterFirst, 0u) << "the system does not say how much heap is in use";
    EXPECT_LE(afterLast, afterFirst + kAllowedGrowth)
        << "heap in use after cycle 1: " << afterFirst << " bytes, after cycle " << kCycles << ": "
        << afterLast;
#endif
}

} // namespace
} // namespace scenario
