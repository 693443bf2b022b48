// Picture drawing: the screen-space quad of a rectangle in pixels or fractions, size
// defaults, and what reaches the window, for textures and for pictures held as pixels.
#include "driver/driver.h"
#include "manager3d/manager3d.h"
#include "pictures/pictures.h"
#include "support/driver_fixture.h"
#include "support/gl_recorder.h"

#include <cstdlib>
#include <cstring>
#include <vector>

using namespace norvgl;
using nvtest::GlRecorder;
using nvtest::Image;
using nvtest::Rgba;

namespace {

constexpr Rgba kRed = {255, 0, 0, 255};
constexpr Rgba kGreen = {0, 255, 0, 255};
constexpr Rgba kBlue = {0, 0, 255, 255};
constexpr Rgba kWhite = {255, 255, 255, 255};
constexpr Rgba kBlack = {0, 0, 0, 255};

// A 2 x 2 texture picture as a bitmap load leaves it: rows bottom first, so its top row is
// red, green and its bottom row blue, white.
std::uint32_t addQuadrantPicture(std::uint32_t width, std::uint32_t height) {
    PictureRecord& record = nextPictureRecord();
    CreatePictureTexture(&record.texture, false);
    const std::uint8_t rgba[16] = {0,   0, 255, 255, 255, 255, 255, 255,
                                   255, 0, 0,   255, 0,   255, 0,   255};
    glTexImage2D(GL_TEXTURE_2D, 0, 4, 2, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE, rgba);
    record.width = width;
    record.height = height;
    record.pixels = nullptr;
    return RegisterPicture("quadrants.bmp");
}

// A picture held as pixels: bottom half blue, top half red.
std::uint32_t addPixelPicture(std::uint32_t width, std::uint32_t height) {
    PictureRecord& record = nextPictureRecord();
    record.texture = 0;
    record.width = width;
    record.height = height;
    record.pixels = static_cast<std::uint8_t*>(std::malloc(std::size_t{width} * height * 4));
    for (std::uint32_t y = 0; y < height; ++y)
        for (std::uint32_t x = 0; x < width; ++x) {
            std::uint8_t* p = record.pixels + 4 * (std::size_t{y} * width + x);
            const bool top = y >= height / 2;
            p[0] = top ? 255 : 0;
            p[1] = 0;
            p[2] = top ? 0 : 255;
            p[3] = 255;
        }
    return RegisterPicture("big.bmp");
}

class PictureDrawTest : public nvtest::WindowTest {
protected:
    void SetUp() override {
        WindowTest::SetUp();
        pictures = {};
    }
    // The queued quad's corner i: screen-space x and y.
    static float cornerX(int i) { return m3d.positions[3 * i]; }
    static float cornerY(int i) { return m3d.positions[3 * i + 1]; }
    static std::uint32_t queuedVertices() { return m3d.positionCursor / 3; }
    void expectQuad(float left, float top, float right, float bottom) const {
        ASSERT_EQ(queuedVertices(), 4u);
        EXPECT_FLOAT_EQ(cornerX(0), left);
        EXPECT_FLOAT_EQ(cornerY(0), top);
        EXPECT_FLOAT_EQ(cornerX(1), left);
        EXPECT_FLOAT_EQ(cornerY(1), bottom);
        EXPECT_FLOAT_EQ(cornerX(2), right);
        EXPECT_FLOAT_EQ(cornerY(2), bottom);
        EXPECT_FLOAT_EQ(cornerX(3), right);
        EXPECT_FLOAT_EQ(cornerY(3), top);
    }
};

TEST_F(PictureDrawTest, PixelRectangleBecomesAScreenSpaceQuad) {
    const std::uint32_t id = addQuadrantPicture(2, 2);
    GFX_BeginRender();
    EXPECT_EQ(GFX_DrawPicture(id, 0, 0, 320, 240), 0);
    expectQuad(-1, 1, 0, 0);
    // Texture corners: top left (0, 0) to bottom right (1, 1), t stored negated.
    EXPECT_FLOAT_EQ(m3d.texCoords[1], 0.0f);
    EXPECT_FLOAT_EQ(m3d.texCoords[3], -1.0f);
    EXPECT_FLOAT_EQ(m3d.texCoords[4], 1.0f);
    EXPECT_FLOAT_EQ(m3d.positions[2], -1.0f); // z = 1
    const DrawBatch* batch = m3d.currentNode->vertexBatches;
    ASSERT_NE(batch, nullptr);
    EXPECT_EQ(batch->primitive, PRIM_QUADS);
    EXPECT_EQ(batch->modelview, &m3d.matrixHeap[kIdentitySlot]);
    EXPECT_EQ(batch->projection->m[0], 1.0f); // identity projection: screen space
    EXPECT_EQ(m3d.currentNode->texture, PictureTexture(id));
    EXPECT_EQ(GFX_GetRenderProperty(RPROP_SCREEN_SPACE), 0);
    GFX_EndRender();

    const Image image = window->capture();
    EXPECT_EQ(image.at(80, 60), kRed);
    EXPECT_EQ(image.at(240, 60), kGreen);
    EXPECT_EQ(image.at(80, 180), kBlue);
    EXPECT_EQ(image.at(240, 180), kWhite);
    EXPECT_EQ(image.at(400, 100), kBlack);
    EXPECT_EQ(image.at(100, 300), kBlack);
}

TEST_F(PictureDrawTest, ProportionalRectangle) {
    const std::uint32_t id = addQuadrantPicture(2, 2);
    GFX_BeginRender();
    EXPECT_EQ(GFX_DrawPictureByProportion(id, 0.5f, 0.5f, 0.5f, 0.5f), 0);
    expectQuad(0, 0, 1, -1);
    GFX_EndRender();
    const Image image = window->capture();
    EXPECT_EQ(image.at(400, 300), kRed);
    EXPECT_EQ(image.at(560, 420), kWhite);
    EXPECT_EQ(image.at(200, 100), kBlack);
}

TEST_F(PictureDrawTest, ZeroSizeMeansThePicturesOwnSize) {
    const std::uint32_t id = addQuadrantPicture(64, 48);
    GFX_BeginRender();
    GFX_DrawPicture(id, 10, 10, 0, 0);
    expectQuad(10.0f / 320 - 1, 1 - 10.0f / 240, 74.0f / 320 - 1, 1 - 58.0f / 240);
    GFX_EndRender();
    const Image image = window->capture();
    EXPECT_EQ(image.at(12, 12), kRed);
    EXPECT_EQ(image.at(72, 56), kWhite);
    EXPECT_EQ(image.at(76, 30), kBlack);
    EXPECT_EQ(image.at(30, 60), kBlack);

    // In fractions, the pixel size reads as a fraction as it is.
    GFX_BeginRender();
    GFX_DrawPictureByProportion(id, 0, 0, 0, 0.25f);
    expectQuad(-1, 1, 127, 0.5f);
    GFX_EndRender();
}

TEST_F(PictureDrawTest, HalfSizesAreWholePixels) {
    GFX_Destroy();
    window.reset();
    window = std::make_unique<nvtest::TestWindow>(641, 481);
    GFX_SetProperty(PROP_WINDOW, window->handle());
    ASSERT_EQ(GFX_Init(), 0);
    const std::uint32_t id = addQuadrantPicture(2, 2);
    GFX_BeginRender();
    GFX_DrawPicture(id, 320, 240, 160, 120);
    expectQuad(0, 0, 0.5f, -0.5f);
    GFX_EndRender();
}

TEST_F(PictureDrawTest, NothingHappensWhileDisabled) {
    const std::uint32_t id = addQuadrantPicture(2, 2);
    const std::uint32_t pixelId = addPixelPicture(4, 4);
    GFX_BeginRender();
    StateNode* before = m3d.currentNode;
    GFX_SetProperty(PROP_ENABLED, 0);
    {
        GlRecorder recorder;
        EXPECT_EQ(GFX_DrawPicture(id, 0, 0, 10, 10), 0);
        EXPECT_EQ(GFX_DrawPictureByProportion(pixelId, 0, 0, 1, 1), 0);
        EXPECT_TRUE(recorder.calls().empty());
    }
    GFX_SetProperty(PROP_ENABLED, 1);
    EXPECT_EQ(queuedVertices(), 0u);
    EXPECT_EQ(m3d.currentNode, before);
    GFX_EndRender();
}

TEST_F(PictureDrawTest, PixelPictureIsCopiedAtOnceToTheLowerLeftCorner) {
    const std::uint32_t id = addPixelPicture(300, 200);
    // Two frames: one in each depth phase.
    for (int frame = 0; frame < 2; ++frame) {
        GFX_SetRenderProperty(RPROP_CLEAR_COLOR, 1);
        GFX_BeginRender();
        {
            GlRecorder recorder;
            EXPECT_EQ(GFX_DrawPicture(id, 500, 10, 20, 20), 0); // the rectangle is not used
            const auto draws = recorder.only({GlCall::DrawPixels});
            ASSERT_EQ(draws.size(), 1u);
            EXPECT_EQ(draws[0].args[0], 300);
            EXPECT_EQ(draws[0].args[1], 200);
            EXPECT_TRUE(recorder.glErrors().empty());
        }
        EXPECT_EQ(queuedVertices(), 0u);
        GFX_EndRender();
        const Image image = window->capture();
        EXPECT_EQ(image.at(5, 475), kBlue) << frame;
        EXPECT_EQ(image.at(295, 385), kBlue) << frame;
        EXPECT_EQ(image.at(5, 285), kRed) << frame;
        EXPECT_EQ(image.at(295, 281), kRed) << frame;
        EXPECT_EQ(image.at(305, 470), kBlack) << frame;
        EXPECT_EQ(image.at(5, 275), kBlack) << frame;
    }
}

} // namespace
