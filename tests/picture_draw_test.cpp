// Picture drawing: the screen-space quad of a rectangle in pixels or fractions, size
// defaults, and what reaches the window, for textures and for pictures held as pixels.
#include "core/core.h"
#include "manager3d/manager3d.h"
#include "picture_assets.h"
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
namespace assets = norvgl::assets;

namespace {

constexpr Rgba kRed = {255, 0, 0, 255};
constexpr Rgba kGreen = {0, 255, 0, 255};
constexpr Rgba kBlue = {0, 0, 255, 255};
constexpr Rgba kWhite = {255, 255, 255, 255};
constexpr Rgba kBlack = {0, 0, 0, 255};

// A loaded bitmap of the given size: top left red, top right green, bottom left blue,
// bottom right white.
std::uint32_t loadQuadrants(std::int32_t width, std::int32_t height) {
    assets::RgbImage image;
    image.width = width;
    image.height = height;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.pixels.push_back(y < height / 2 ? (x < width / 2 ? 0xFF0000u : 0x00FF00u)
                                                  : (x < width / 2 ? 0x0000FFu : 0xFFFFFFu));
    const auto bytes = assets::writeColorBitmap(image);
    std::uint32_t id = 0;
    EXPECT_EQ(GFX_LoadPicture("quadrants.bmp", bytes.data(), 0, &id, 0), 0);
    return id;
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
    const std::uint32_t id = loadQuadrants(64, 64);
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
    const std::uint32_t id = loadQuadrants(64, 64);
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
    const std::uint32_t id = loadQuadrants(64, 48);
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
    const std::uint32_t id = loadQuadrants(64, 64);
    GFX_BeginRender();
    GFX_DrawPicture(id, 320, 240, 160, 120);
    expectQuad(0, 0, 0.5f, -0.5f);
    GFX_EndRender();
}

TEST_F(PictureDrawTest, NothingHappensWhileDisabled) {
    const std::uint32_t id = loadQuadrants(64, 64);
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

TEST_F(PictureDrawTest, TwoLettersOfTextInTheirCells) {
    // 16-pixel cells; the top half of the A's cell is white, so a glyph upside down shows.
    assets::RgbImage fontImage = assets::makeGlyphFont(16);
    const int ax = 16 * 1, ay = 16 * 4; // code 65: row 4, column 1
    for (int y = ay + 1; y < ay + 8; ++y)
        for (int x = ax + 1; x < ax + 15; ++x)
            fontImage.pixels[static_cast<std::size_t>(y) * 256 + x] = 0xFFFFFF;
    const auto bytes = assets::writeColorBitmap(fontImage);
    std::uint32_t id = 0;
    ASSERT_EQ(GFX_LoadPicture("font.bmp", bytes.data(), 0, &id, 0), 0);
    GFX_SetFontBitmap(id);
    GFX_SetFontSize(0.25f, 0.25f); // cells of 160 x 120 pixels

    GFX_BeginRender();
    GFX_BeginText();
    GFX_PrintByProportion(0, 0, "AB");
    GFX_EndText();
    GFX_EndRender();
    const Image frame = window->capture();
    const std::uint32_t a = assets::glyphColor('A'), b = assets::glyphColor('B');
    const auto colour = [](std::uint32_t c) {
        return Rgba{static_cast<std::uint8_t>(c >> 16), static_cast<std::uint8_t>(c >> 8),
                    static_cast<std::uint8_t>(c), 255};
    };
    EXPECT_EQ(frame.at(80, 30), kWhite);
    EXPECT_EQ(frame.at(80, 90), colour(a));
    EXPECT_EQ(frame.at(240, 30), colour(b));
    EXPECT_EQ(frame.at(240, 90), colour(b));
    EXPECT_EQ(frame.at(2, 2), kBlack); // the cell's black frame adds nothing
    EXPECT_EQ(frame.at(400, 60), kBlack);
    EXPECT_EQ(frame.at(80, 200), kBlack);

    // A text of spaces draws nothing.
    GFX_SetRenderProperty(RPROP_CLEAR_COLOR, 1);
    GFX_BeginRender();
    GFX_BeginText();
    GFX_PrintByProportion(0, 0, "    ");
    GFX_EndText();
    GFX_EndRender();
    const Image blank = window->capture();
    EXPECT_EQ(blank.at(80, 30), kBlack);
    EXPECT_EQ(blank.at(240, 90), kBlack);
}

} // namespace
