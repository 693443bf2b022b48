// Frames a host draws on its window, checked on what the window shows after GFX_EndRender:
// primitives where the left-handed coordinates put them, culling, the alternating depth
// phases, blending, lighting and clearing. Every capture is also saved for the comparison of
// one system's run with the other's.
#include "scenario.h"
#include "scenario_gl.h"
#include "support/scene.h"

#include "norvgl.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <utility>

namespace scenario {
namespace {

using nvtest::floats;
using nvtest::HostVertex;
using nvtest::Pixel;
using nvtest::project;
using nvtest::square;
using nvtest::triangle;
using nvtest::vertex;

::testing::AssertionResult looksLike(Rgb p, int r, int g, int b, int tolerance = 2) {
    if (std::abs(p.r - r) <= tolerance && std::abs(p.g - g) <= tolerance &&
        std::abs(p.b - b) <= tolerance)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure()
           << "pixel (" << int(p.r) << ", " << int(p.g) << ", " << int(p.b) << ") is not (" << r
           << ", " << g << ", " << b << ")";
}

GLenum depthFunction() {
    GLint function = 0;
    glGetIntegerv(GL_DEPTH_FUNC, &function);
    return static_cast<GLenum>(function);
}

class Frames : public WindowScenario {
protected:
    // Clears colour and depth, then opens a frame of the near-to-far phase: after a depth
    // clear, a frame of the other phase would pass no fragment at all.
    static void freshFrame() {
        GFX_SetRenderProperty(RPROP_CLEAR_COLOR, GFX_GetRenderProperty(RPROP_CLEAR_COLOR));
        beginNearToFarFrame();
    }

    // A white directional light along the view: lit colour is the material's diffuse colour.
    static void frontLight() { GFX_AddLight(0, 1, 0, 0, -1); }
    static void diffuse(float r, float g, float b, float a = 1.0f) {
        GFX_SetMaterialColorEx(0, 0, 0, a, r, g, b, a, 0, 0, 0, a);
    }
};

TEST_F(Frames, TriangleLandsWhereLeftHandedCoordinatesPutIt) {
    freshFrame();
    // Up and to the right of the centre, in front of the camera at host z = +100.
    const auto tri = triangle(20, 15, 100, 6);
    ASSERT_EQ(GFX_DrawPolygon(PRIM_TRIANGLES, 3, floats(tri)), 0);
    const Image image = endFrame();
    const Pixel inside = project(20, 14, 100);
    EXPECT_GT(inside.x, 320);
    EXPECT_LT(inside.y, 240);
    EXPECT_EQ(image.at(inside.x, inside.y), kWhite);
    const Pixel mirrored = project(-20, -14, 100);
    EXPECT_EQ(image.at(mirrored.x, mirrored.y), kBlack);
    EXPECT_EQ(image.at(320, 240), kBlack);

    // Behind the camera (host z < 0) nothing is drawn.
    freshFrame();
    const auto behind = triangle(0, 0, -100, 30);
    GFX_DrawPolygon(PRIM_TRIANGLES, 3, floats(behind));
    const Image empty = endFrame();
    EXPECT_EQ(empty.at(320, 240), kBlack);
    EXPECT_EQ(empty.at(inside.x, inside.y), kBlack);
}

TEST_F(Frames, QuadLinesAndPoints) {
    freshFrame();
    const HostVertex quad[4] = {vertex(-30, 10, 100), vertex(-10, 10, 100), vertex(-10, 30, 100),
                                vertex(-30, 30, 100)};
    const HostVertex line[2] = {vertex(10, -20, 100), vertex(40, -20, 100)};
    const HostVertex points[2] = {vertex(0, -30, 100), vertex(20, 30, 100)};
    EXPECT_EQ(GFX_DrawPolygon(PRIM_QUADS, 4, &quad[0].x), 0);
    EXPECT_EQ(GFX_DrawPolygon(PRIM_LINES, 2, &line[0].x), 0);
    EXPECT_EQ(GFX_DrawPolygon(PRIM_POINTS, 2, &points[0].x), 0);
    const Image image = endFrame();
    const Pixel q = project(-20, 20, 100);
    EXPECT_EQ(image.at(q.x, q.y), kWhite);
    const Pixel outsideQuad = project(-35, 20, 100);
    EXPECT_EQ(image.at(outsideQuad.x, outsideQuad.y), kBlack);
    // One pixel of the line in every column it spans.
    const Pixel l0 = project(10, -20, 100), l1 = project(40, -20, 100);
    int columns = 0;
    for (int x = l0.x + 2; x < l1.x - 2; ++x) {
        bool lit = false;
        for (int dy = -1; dy <= 1; ++dy)
            lit |= image.at(x, l0.y + dy) == kWhite;
        columns += lit;
    }
    EXPECT_EQ(columns, l1.x - l0.x - 4);
    for (const HostVertex& p : points) {
        const Pixel at = project(p.x, p.y, p.z);
        int found = 0;
        for (int dy = -1; dy <= 1; ++dy)
            for (int dx = -1; dx <= 1; ++dx)
                found += image.at(at.x + dx, at.y + dy) == kWhite;
        EXPECT_GE(found, 1) << p.x << ", " << p.y;
        EXPECT_LE(found, 4) << p.x << ", " << p.y; // a point, not a blot
    }
}

TEST_F(Frames, BackFacesAreCulledOnlyWithCullingOn) {
    for (int culling : {0, 1}) {
        const auto front = triangle(-20, 0, 100, 10);
        auto back = triangle(20, 0, 100, 10);
        std::swap(back[0], back[1]); // clockwise on screen
        freshFrame();
        GFX_SetRenderProperty(RPROP_CULLING, culling);
        GFX_DrawPolygon(PRIM_TRIANGLES, 3, floats(front));
        GFX_DrawPolygon(PRIM_TRIANGLES, 3, floats(back));
        const Image image = endFrame();
        const Pixel f = project(-20, -2, 100), b = project(20, -2, 100);
        EXPECT_EQ(image.at(f.x, f.y), kWhite) << "culling " << culling;
        EXPECT_EQ(image.at(b.x, b.y), culling ? kBlack : kWhite) << "culling " << culling;
    }
    // Set before the frame starts, culling does not reach the frame's geometry.
    GFX_SetRenderProperty(RPROP_CULLING, 1);
    auto back = triangle(20, 0, 100, 10);
    std::swap(back[0], back[1]);
    freshFrame();
    GFX_DrawPolygon(PRIM_TRIANGLES, 3, floats(back));
    const Image image = endFrame();
    const Pixel b = project(20, -2, 100);
    EXPECT_EQ(image.at(b.x, b.y), kWhite);
}

TEST_F(Frames, NearerHidesFartherInBothDepthPhasesButNotAcrossFrames) {
    frontLight();
    const Pixel left = project(-15, 0, 80), right = project(15, 0, 80), low = project(0, -20, 80);
    freshFrame();
    for (int phase = 0; phase < 2; ++phase) {
        if (phase == 1) {
            GFX_BeginRender();
            ASSERT_EQ(depthFunction(), static_cast<GLenum>(GL_GREATER));
        }
        // Near green first and far red second on the left, the other way round on the right;
        // below them as on the left but with the depth test off, so that the later far square
        // covers the near one. Each far square covers what its near one covers, so the second
        // phase only meets depth the first one wrote.
        const auto nearLeft = square(-15, 0, 80, 8), farLeft = square(-15, 0, 120, 12);
        const auto nearRight = square(15, 0, 80, 8), farRight = square(15, 0, 120, 12);
        const auto nearLow = square(0, -20, 80, 8), farLow = square(0, -30, 120, 12);
        diffuse(0, 1, 0);
        GFX_DrawPolygon(PRIM_TRIANGLES, 6, floats(nearLeft));
        GFX_DrawPolygon(PRIM_TRIANGLES, 6, floats(farRight));
        diffuse(1, 0, 0);
        GFX_DrawPolygon(PRIM_TRIANGLES, 6, floats(farLeft));
        GFX_DrawPolygon(PRIM_TRIANGLES, 6, floats(nearRight));
        diffuse(0, 1, 0);
        GFX_SetRenderProperty(RPROP_DEPTH_TEST, 0);
        GFX_DrawPolygon(PRIM_TRIANGLES, 6, floats(nearLow));
        diffuse(1, 0, 0);
        GFX_DrawPolygon(PRIM_TRIANGLES, 6, floats(farLow));
        const Image image = endFrame();
        EXPECT_TRUE(looksLike(image.at(left.x, left.y), 0, 255, 0)) << "phase " << phase;
        EXPECT_TRUE(looksLike(image.at(right.x, right.y), 255, 0, 0)) << "phase " << phase;
        EXPECT_TRUE(looksLike(image.at(low.x, low.y), 255, 0, 0)) << "phase " << phase;
    }
    // The previous frame's near squares, in the other half of the range, do not hide this
    // frame's far square.
    GFX_BeginRender();
    ASSERT_EQ(depthFunction(), static_cast<GLenum>(GL_LESS));
    diffuse(0, 0, 1);
    const auto backdrop = square(0, 0, 500, 100);
    GFX_DrawPolygon(PRIM_TRIANGLES, 6, floats(backdrop));
    const Image image = endFrame();
    EXPECT_TRUE(looksLike(image.at(left.x, left.y), 0, 0, 255));
    EXPECT_TRUE(looksLike(image.at(right.x, right.y), 0, 0, 255));
}

TEST_F(Frames, AlphaAndAdditiveBlending) {
    frontLight();
    freshFrame();
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
    // Either property at 0 turns blending off altogether.
    diffuse(0, 1, 0, 0.5f);
    GFX_SetRenderProperty(RPROP_ALPHA_BLEND, 0);
    const auto bottom = square(0, -15, 100, 4);
    GFX_DrawPolygon(PRIM_TRIANGLES, 6, floats(bottom));
    GFX_SetRenderProperty(RPROP_ALPHA_BLEND, 1);
    GFX_SetRenderProperty(RPROP_ADDITIVE_BLEND, 0);
    const auto top = square(0, 15, 100, 4);
    GFX_DrawPolygon(PRIM_TRIANGLES, 6, floats(top));
    const Image image = endFrame();
    const Pixel l = project(-10, 0, 100), r = project(10, 0, 100), b = project(0, -15, 100),
                t = project(0, 15, 100);
    EXPECT_TRUE(looksLike(image.at(l.x, l.y), 128, 128, 0, 3));
    EXPECT_TRUE(looksLike(image.at(r.x, r.y), 255, 0, 255));
    EXPECT_TRUE(looksLike(image.at(b.x, b.y), 0, 255, 0));
    EXPECT_TRUE(looksLike(image.at(t.x, t.y), 0, 255, 0));
}

TEST_F(Frames, LitTriangleFollowsAddLightAndSetLightColor) {
    // The centre of a white triangle facing the viewer, in a frame of its own.
    const auto centre = [this] {
        const auto tri = triangle(0, 0, 100, 20);
        freshFrame();
        diffuse(1, 1, 1);
        GFX_DrawPolygon(PRIM_TRIANGLES, 3, floats(tri));
        return endFrame().at(320, 240);
    };
    EXPECT_EQ(centre(), kWhite); // unlit: plain colour
    frontLight();
    EXPECT_EQ(GFX_SetLightColor(0, 0, 0, 0, 0.5f, 0.25f, 0.75f, 0, 0, 0), 0);
    EXPECT_TRUE(looksLike(centre(), 128, 64, 191));
    // A new light starts full white; from behind the triangle it leaves the front dark.
    EXPECT_EQ(GFX_AddLight(0, 1, 0, 0, 1), 0);
    EXPECT_EQ(centre(), kBlack);
}

TEST_F(Frames, ClearColorPropertyClearsNowAndAtEveryFrameStart) {
    GFX_SetRenderProperty(RPROP_CLEAR_COLOR, 0);
    freshFrame(); // colour and depth cleared once, in black
    EXPECT_EQ(GFX_SetClearColor(0, 0, 1, 1), 0);
    const auto tri = triangle(0, 0, 100, 20);
    GFX_DrawPolygon(PRIM_TRIANGLES, 3, floats(tri));
    const Image drawn = endFrame();
    EXPECT_EQ(drawn.at(320, 240), kWhite);
    EXPECT_EQ(drawn.at(20, 20), kBlack); // the new clear colour is not used yet
    // Frames that start without a clear keep what the buffers held.
    GFX_BeginRender();
    GFX_EndRender();
    GFX_BeginRender();
    const Image kept = endFrame();
    EXPECT_EQ(kept.at(320, 240), kWhite);
    EXPECT_EQ(kept.at(20, 20), kBlack);

    GFX_SetRenderProperty(RPROP_CLEAR_COLOR, 1);
    GFX_BeginRender();
    const Image cleared = endFrame();
    EXPECT_TRUE(looksLike(cleared.at(320, 240), 0, 0, 255));
    EXPECT_TRUE(looksLike(cleared.at(0, 0), 0, 0, 255));
    EXPECT_TRUE(looksLike(cleared.at(639, 479), 0, 0, 255));
}

} // namespace
} // namespace scenario
