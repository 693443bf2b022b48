// Particle systems as a host makes and draws them, checked on what the window shows: a
// particle's square where its size and the pass's own camera put it, in front of scene
// geometry that is nearer, and textured by a "particle.bmp" of any letter case. The systems
// never move or age (speed and age step 0, no gravity), so the steps that the clock owes
// each frame change nothing that is drawn.
#include "picture_assets.h"
#include "scenario.h"
#include "support/scene.h"

#include "norvgl.h"

#include <gtest/gtest.h>

#include <cmath>

namespace scenario {
namespace {

// Where the pass's camera (45 degrees vertically, aspect 1.0696 whatever the window) puts a
// point at (x, y) and `depth` in front of it, in a 640 x 480 window, top-left origin.
int column(double x, double depth) {
    const double f = 1.0 / std::tan(22.5 * 3.14159265358979323846 / 180.0);
    return static_cast<int>((f / 1.0696 * x / depth + 1) * 320);
}
int row(double y, double depth) {
    const double f = 1.0 / std::tan(22.5 * 3.14159265358979323846 / 180.0);
    return static_cast<int>((1 - f * y / depth) * 240);
}

// One particle of the given size and opaque colour that stays where it is born.
unsigned stillParticle(float size, float r, float g, float b) {
    EmitterParams p = {};
    p.flags = PF_NO_GRAVITY;
    const float color[4] = {r, g, b, 1};
    for (int i = 0; i < 4; ++i)
        p.colorMin[i] = p.colorMax[i] = color[i];
    p.sizeMin = p.sizeMax = size;
    unsigned id = 0;
    EXPECT_EQ(GFX_NewObject(&id, OBJECT_PARTICLE_SYSTEM, &p), 0);
    EXPECT_NE(id, 0u);
    return id;
}

using Particles = WindowScenario;

TEST_F(Particles, SquareOfSizeAndCornerRuleDrawnOverNearerGeometry) {
    const unsigned id = stillParticle(2, 1, 0, 0);
    // A blue square lit from the front at host z 10.5, nearer than the particle.
    GFX_AddLight(0, 1, 0, 0, -1);
    // A frame of the near-to-far depth phase, the one that draws after a depth clear.
    beginNearToFarFrame();
    GFX_SetMaterialColorEx(0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 0, 1);
    const auto wall = nvtest::square(0, 0, 10.5f, 2);
    ASSERT_EQ(GFX_DrawPolygon(PRIM_TRIANGLES, 6, nvtest::floats(wall)), 0);
    // Edge 2 with its corner 1 back on every model axis: from -1 to 1 across at depth 12.
    ASSERT_EQ(GFX_DrawParticleSystem(id, 0, 0, 11), 0);
    const Image image = endFrame();
    const Rgb both = {255, 0, 255};
    EXPECT_EQ(image.at(320, 240), both);
    // Three pixels in from each edge and three out; drawn at depth 11 instead of 12, the
    // square would reach the outer ones.
    for (double side : {-1.0, 1.0}) {
        EXPECT_EQ(image.at(column(side, 12) - int(side) * 3, 240), both) << side;
        EXPECT_EQ(image.at(column(side, 12) + int(side) * 3, 240), kBlue) << side;
        EXPECT_EQ(image.at(320, row(side, 12) + int(side) * 3), both) << side;
        EXPECT_EQ(image.at(320, row(side, 12) - int(side) * 3), kBlue) << side;
    }
}

TEST_F(Particles, ParticleBitmapOfAnyLetterCaseTexturesTheQuads) {
    // Red on the left of the picture, green on the right. The quad's s runs from its bottom
    // (0) to its top (1), so the picture shows turned: green above, red below.
    norvgl::assets::RgbImage halves{16, 16, {}};
    for (int i = 0; i < 16 * 16; ++i)
        halves.pixels.push_back(i % 16 < 8 ? 0xFF0000u : 0x00FF00u);
    const auto bitmap = norvgl::assets::writeColorBitmap(halves);
    const unsigned id = stillParticle(2, 1, 1, 1);
    struct Case {
        const char* name;
        Rgb top, bottom;
    };
    for (const Case& c :
         {Case{"particle.bmp", kGreen, kRed}, Case{"PARTICLE.BMP", kGreen, kRed},
          Case{"Particle.Bmp", kGreen, kRed}, Case{"particles.bmp", kWhite, kWhite}}) {
        GFX_UnloadAll();
        unsigned picture = 0;
        ASSERT_EQ(GFX_LoadPicture(c.name, bitmap.data(), 0, &picture, 0), 0) << c.name;
        GFX_BeginRender();
        GFX_DrawParticleSystem(id, 0, 0, 11);
        const Image image = endFrame();
        EXPECT_EQ(image.at(320, row(0.5, 12)), c.top) << c.name;
        EXPECT_EQ(image.at(320, row(-0.5, 12)), c.bottom) << c.name;
        EXPECT_EQ(image.at(column(1, 12) + 3, 240), kBlack) << c.name;
    }
}

} // namespace
} // namespace scenario
