// Picture drawing: where the screen-space quad of a rectangle in pixels or fractions lands,
// with its size defaults and whole-pixel halves. What reaches the window is checked by the
// scenario program on both systems.
#include "manager3d/manager3d.h"
#include "picture_assets.h"
#include "support/driver_fixture.h"

#include "norvgl.h"

using namespace norvgl;

namespace {

struct Rectangle {
    const char* what;
    int windowWidth, windowHeight;
    bool proportional;
    float x, y, width, height;
    float left, top, right, bottom; // the quad in device coordinates
};

// A 64 x 48 picture in windows of 640 x 480 (half sides of 320 and 240) or 641 x 481.
const Rectangle kRectangles[] = {
    {"pixels", 640, 480, false, 0, 0, 320, 240, -1, 1, 0, 0},
    {"fractions", 640, 480, true, 0.5f, 0.5f, 0.5f, 0.5f, 0, 0, 1, -1},
    {"own size in pixels", 640, 480, false, 10, 10, 0, 0, 10.0f / 320 - 1, 1 - 10.0f / 240,
     74.0f / 320 - 1, 1 - 58.0f / 240},
    // In fractions, the picture's own size reads as a fraction as it is.
    {"own width in fractions", 640, 480, true, 0, 0, 0, 0.25f, -1, 1, 127, 0.5f},
    {"odd window", 641, 481, false, 320, 240, 160, 120, 0, 0, 0.5f, -0.5f},
};

class PictureDrawTest : public nvtest::DriverTest,
                        public ::testing::WithParamInterface<Rectangle> {};

TEST_P(PictureDrawTest, RectangleBecomesAScreenSpaceQuad) {
    const Rectangle& r = GetParam();
    norvgl::host::HostWindow window(r.windowWidth, r.windowHeight);
    GFX_SetProperty(PROP_WINDOW, window.handle());
    ASSERT_EQ(GFX_Init(), 0);
    assets::RgbImage image{64, 48, std::vector<std::uint32_t>(64 * 48, 0xFF0000u)};
    const auto bytes = assets::writeColorBitmap(image);
    unsigned id = 0;
    ASSERT_EQ(GFX_LoadPicture("p.bmp", bytes.data(), 0, &id, 0), 0);

    GFX_BeginRender();
    if (r.proportional)
        EXPECT_EQ(GFX_DrawPictureByProportion(id, r.x, r.y, r.width, r.height), 0);
    else
        EXPECT_EQ(GFX_DrawPicture(id, static_cast<int>(r.x), static_cast<int>(r.y),
                                  static_cast<int>(r.width), static_cast<int>(r.height)),
                  0);
    // Corners counter-clockwise from the top left; t runs down the picture and is stored
    // negated, z = 1 likewise.
    const float corners[4][4] = {{r.left, r.top, 0, 0},
                                 {r.left, r.bottom, 0, -1},
                                 {r.right, r.bottom, 1, -1},
                                 {r.right, r.top, 1, 0}};
    ASSERT_EQ(m3d.positionCursor, 12u);
    for (int i = 0; i < 4; ++i) {
        EXPECT_FLOAT_EQ(m3d.positions[3 * i], corners[i][0]) << i;
        EXPECT_FLOAT_EQ(m3d.positions[3 * i + 1], corners[i][1]) << i;
        EXPECT_FLOAT_EQ(m3d.positions[3 * i + 2], -1.0f) << i;
        EXPECT_FLOAT_EQ(m3d.texCoords[2 * i], corners[i][2]) << i;
        EXPECT_FLOAT_EQ(m3d.texCoords[2 * i + 1], corners[i][3]) << i;
    }
    // Drawn with identity matrices, and screen space left again.
    const DrawBatch* batch = m3d.currentNode->vertexBatches;
    ASSERT_NE(batch, nullptr);
    EXPECT_EQ(batch->primitive, PRIM_QUADS);
    EXPECT_EQ(batch->modelview, &m3d.matrixHeap[kIdentitySlot]);
    EXPECT_EQ(batch->projection->m[0], 1.0f);
    EXPECT_EQ(GFX_GetRenderProperty(RPROP_SCREEN_SPACE), 0);
    GFX_EndRender();
    GFX_Destroy();
}

INSTANTIATE_TEST_SUITE_P(Rectangles, PictureDrawTest, ::testing::ValuesIn(kRectangles),
                         [](const ::testing::TestParamInfo<Rectangle>& rectangle) {
                             std::string name = rectangle.param.what;
                             for (char& c : name)
                                 if (c == ' ')
                                     c = '_';
                             return name;
                         });

} // namespace
