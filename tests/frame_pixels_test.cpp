// What a frame puts on screen: host geometry where the left-handed coordinates and the
// projection put it, culling, the alternating depth phases, blending, lighting and clearing.
#include "norvgl.h"
#include "support/driver_fixture.h"
#include "support/scene.h"

#include <cstdio>
#include <cstdlib>

using namespace nvtest;

namespace {

constexpr Rgba kBlack = {0, 0, 0, 255};
constexpr Rgba kWhite = {255, 255, 255, 255};

class FramePixelsTest : public WindowTest {
protected:
    Image frame() {
        Image image = window->capture();
        const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
        if (const char* dir = std::getenv("NORVGL_TEST_IMAGES"))
            image.savePpm(std::string(dir) + "/" + info->name() + std::to_string(shot_++) + ".ppm");
        return image;
    }
    // Unlit colour comes from material-less GL colour (white); lit colour from the material.
    static void redLight() { GFX_AddLight(0, 1, 0, 0, -1); }
    static void diffuse(float r, float g, float b, float a = 1.0f) {
        GFX_SetMaterialColorEx(0, 0, 0, a, r, g, b, a, 0, 0, 0, a);
    }
    static bool near(Rgba p, int r, int g, int b, int tolerance = 2) {
        return std::abs(p.r - r) <= tolerance && std::abs(p.g - g) <= tolerance &&
               std::abs(p.b - b) <= tolerance;
    }
    int shot_ = 0;
};

::testing::AssertionResult looksLike(Rgba p, int r, int g, int b, int tolerance = 2) {
    if (std::abs(p.r - r) <= tolerance && std::abs(p.g - g) <= tolerance &&
        std::abs(p.b - b) <= tolerance)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure()
           << "pixel (" << int(p.r) << ", " << int(p.g) << ", " << int(p.b) << ") is not (" << r
           << ", " << g << ", " << b << ")";
}

TEST_F(FramePixelsTest, TriangleLandsWhereLeftHandedCoordinatesPutIt) {
    GFX_BeginRender();
    // Up and to the right of the centre, in front of the camera at host z = +100.
    const auto tri = triangle(20, 15, 100, 6);
    ASSERT_EQ(GFX_DrawPolygon(PRIM_TRIANGLES, 3, floats(tri)), 0);
    GFX_EndRender();
    const Image image = frame();
    const Pixel centre = project(20, 14, 100);
    EXPECT_EQ(image.at(centre.x, centre.y), kWhite);
    const Pixel mirrored = project(-20, -14, 100);
    EXPECT_EQ(image.at(mirrored.x, mirrored.y).r, 0);
    EXPECT_EQ(image.at(320, 240).r, 0);
    EXPECT_GT(centre.x, 320);
    EXPECT_LT(centre.y, 240);

    // Behind the camera (host z < 0) nothing is drawn.
    GFX_BeginRender();
    GFX_SetRenderProperty(RPROP_CLEAR_COLOR, 0);
    const auto behind = triangle(0, 0, -100, 30);
    GFX_DrawPolygon(PRIM_TRIANGLES, 3, floats(behind));
    GFX_EndRender();
    const Image empty = frame();
    EXPECT_EQ(empty.at(320, 240).r, 0);
}

TEST_F(FramePixelsTest, QuadsLinesAndPoints) {
    GFX_BeginRender();
    const HostVertex quad[4] = {vertex(-30, 10, 100), vertex(-10, 10, 100), vertex(-10, 30, 100),
                                vertex(-30, 30, 100)};
    const HostVertex line[2] = {vertex(10, -20, 100), vertex(40, -20, 100)};
    const HostVertex points[2] = {vertex(0, -30, 100), vertex(20, 30, 100)};
    EXPECT_EQ(GFX_DrawPolygon(PRIM_QUADS, 4, &quad[0].x), 0);
    EXPECT_EQ(GFX_DrawPolygon(PRIM_LINES, 2, &line[0].x), 0);
    EXPECT_EQ(GFX_DrawPolygon(PRIM_POINTS, 2, &points[0].x), 0);
    GFX_EndRender();
    const Image image = frame();
    const Pixel q = project(-20, 20, 100);
    EXPECT_EQ(image.at(q.x, q.y), kWhite);
    const Pixel l0 = project(10, -20, 100), l1 = project(40, -20, 100);
    int lit = 0;
    for (int x = l0.x + 2; x < l1.x - 2; ++x)
        for (int dy = -1; dy <= 1; ++dy)
            lit += image.at(x, l0.y + dy) == kWhite;
    EXPECT_GE(lit, l1.x - l0.x - 4); // one pixel of line per column
    for (const HostVertex& p : points) {
        const Pixel at = project(p.x, p.y, p.z);
        int found = 0;
        for (int dy = -1; dy <= 1; ++dy)
            for (int dx = -1; dx <= 1; ++dx)
                found += image.at(at.x + dx, at.y + dy) == kWhite;
        EXPECT_GE(found, 1);
    }
}

TEST_F(FramePixelsTest, BackFacesAreCulledOnlyWithCullingOn) {
    GFX_SetRenderProperty(RPROP_CLEAR_COLOR, 1); // colour only at frame start
    for (int culling : {0, 1}) {
        // Each round a little nearer: depth left from two frames before is in the same half
        // of the range and would hide an exact repeat.
        const float z = 100.0f - 10.0f * static_cast<float>(culling);
        const auto front = triangle(-20, 0, z, 10);
        auto back = triangle(20, 0, z, 10);
        std::swap(back[0], back[1]); // clockwise on screen
        GFX_BeginRender();
        GFX_SetRenderProperty(RPROP_CULLING, culling);
        GFX_DrawPolygon(PRIM_TRIANGLES, 3, floats(front));
        GFX_DrawPolygon(PRIM_TRIANGLES, 3, floats(back));
        GFX_EndRender();
        const Image image = frame();
        const Pixel f = project(-20, -2, z), b = project(20, -2, z);
        EXPECT_EQ(image.at(f.x, f.y), kWhite) << culling;
        EXPECT_EQ(image.at(b.x, b.y), culling ? kBlack : kWhite) << culling;
        // Around the triangles the depth buffer still holds the cleared 1.0, which a frame of
        // the far-to-near phase never passes: skip that phase.
        GFX_BeginRender();
        GFX_EndRender();
    }
}

TEST_F(FramePixelsTest, NearerHidesFartherInBothDepthPhasesButNotAcrossFrames) {
    redLight();
    for (int frameNumber = 0; frameNumber < 2; ++frameNumber) {
        GFX_BeginRender();
        // Near green first, far red second, then the other way round, in separate halves.
        const auto nearLeft = square(-15, 0, 80, 8), farLeft = square(-15, 0, 120, 12);
        const auto nearRight = square(15, 0, 80, 8), farRight = square(15, 0, 120, 12);
        diffuse(0, 1, 0);
        GFX_DrawPolygon(PRIM_TRIANGLES, 6, floats(nearLeft));
        GFX_DrawPolygon(PRIM_TRIANGLES, 6, floats(farRight));
        diffuse(1, 0, 0);
        GFX_DrawPolygon(PRIM_TRIANGLES, 6, floats(farLeft));
        GFX_DrawPolygon(PRIM_TRIANGLES, 6, floats(nearRight));
        GFX_EndRender();
        const Image image = frame();
        const Pixel left = project(-15, 0, 80), right = project(15, 0, 80);
        EXPECT_TRUE(looksLike(image.at(left.x, left.y), 0, 255, 0)) << "phase " << frameNumber;
        EXPECT_TRUE(looksLike(image.at(right.x, right.y), 255, 0, 0)) << "phase " << frameNumber;
    }
    // The previous frame's near squares do not hide this frame's far one.
    GFX_BeginRender();
    diffuse(0, 0, 1);
    const auto far = square(0, 0, 500, 100);
    GFX_DrawPolygon(PRIM_TRIANGLES, 6, floats(far));
    GFX_EndRender();
    const Image image = frame();
    const Pixel left = project(-15, 0, 80), right = project(15, 0, 80);
    EXPECT_TRUE(looksLike(image.at(left.x, left.y), 0, 0, 255));
    EXPECT_TRUE(looksLike(image.at(right.x, right.y), 0, 0, 255));
}

TEST_F(FramePixelsTest, DepthTestOffDrawsInSubmissionGroupOrder) {
    redLight();
    GFX_BeginRender();
    GFX_SetRenderProperty(RPROP_DEPTH_TEST, 0);
    diffuse(0, 1, 0);
    const auto nearSquare = square(0, 0, 80, 8), farSquare = square(0, 0, 120, 12);
    GFX_DrawPolygon(PRIM_TRIANGLES, 6, floats(nearSquare));
    diffuse(1, 0, 0);
    GFX_DrawPolygon(PRIM_TRIANGLES, 6, floats(farSquare)); // drawn after, no depth test: on top
    GFX_EndRender();
    const Image image = frame();
    EXPECT_TRUE(looksLike(image.at(320, 240), 255, 0, 0));
}

TEST_F(FramePixelsTest, AlphaAndAdditiveBlending) {
    redLight();
    GFX_BeginRender();
    diffuse(1, 0, 0);
    const auto base = square(0, 0, 120, 30);
    GFX_DrawPolygon(PRIM_TRIANGLES, 6, floats(base));
    GFX_SetRenderProperty(RPROP_ALPHA_BLEND, 1);
    diffuse(0, 1, 0, 0.5f);
    const auto left = square(-10, 0, 100, 6);
    GFX_DrawPolygon(PRIM_TRIANGLES, 6, floats(left));
    GFX_SetRenderProperty(RPROP_ADDITIVE_BLEND, 1);
    diffuse(0, 0, 1, 1.0f);
    const auto right = square(10, 0, 100, 6);
    GFX_DrawPolygon(PRIM_TRIANGLES, 6, floats(right));
    GFX_EndRender();
    const Image image = frame();
    const Pixel l = project(-10, 0, 100), r = project(10, 0, 100);
    EXPECT_TRUE(looksLike(image.at(l.x, l.y), 128, 128, 0, 3));
    EXPECT_TRUE(looksLike(image.at(r.x, r.y), 255, 0, 255));
}

TEST_F(FramePixelsTest, LightingFollowsAddLightAndSetLightColor) {
    const auto tri = triangle(0, 0, 100, 20);
    GFX_BeginRender();
    diffuse(1, 1, 1);
    GFX_DrawPolygon(PRIM_TRIANGLES, 3, floats(tri));
    GFX_EndRender();
    EXPECT_EQ(frame().at(320, 240), kWhite); // unlit: plain colour

    GFX_AddLight(0, 1, 0, 0, -1); // shining along the viewing direction
    GFX_SetLightColor(0, 0, 0, 0, 0.5f, 0.25f, 0.75f, 0, 0, 0);
    GFX_BeginRender();
    diffuse(1, 1, 1);
    GFX_DrawPolygon(PRIM_TRIANGLES, 3, floats(tri));
    GFX_EndRender();
    EXPECT_TRUE(looksLike(frame().at(320, 240), 128, 64, 191));

    GFX_SetLightColor(0, 0, 0, 0, 1, 1, 1, 0, 0, 0);
    GFX_AddLight(0, 1, 0, 0, 1); // from behind the triangle: dark
    GFX_BeginRender();
    diffuse(1, 1, 1);
    GFX_DrawPolygon(PRIM_TRIANGLES, 3, floats(tri));
    GFX_EndRender();
    EXPECT_TRUE(looksLike(frame().at(320, 240), 0, 0, 0));
}

TEST_F(FramePixelsTest, ClearColorPropertyClearsNowAndAtEveryFrameStart) {
    GFX_SetClearColor(0, 0, 1, 1);
    GFX_BeginRender();
    const auto tri = triangle(0, 0, 100, 20);
    GFX_DrawPolygon(PRIM_TRIANGLES, 3, floats(tri));
    GFX_EndRender();
    GFX_BeginRender(); // no clear: the triangle of the last frame stays in the other buffer
    GFX_EndRender();
    GFX_BeginRender();
    GFX_EndRender();
    EXPECT_EQ(frame().at(320, 240), kWhite);

    GFX_SetRenderProperty(RPROP_CLEAR_COLOR, 1);
    GFX_BeginRender();
    GFX_EndRender();
    const Image cleared = frame();
    EXPECT_TRUE(looksLike(cleared.at(320, 240), 0, 0, 255));
    EXPECT_TRUE(looksLike(cleared.at(0, 0), 0, 0, 255));
}

} // namespace
