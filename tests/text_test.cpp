// Bitmap-font text: glyph cells and positions in the queue, the text-mode render state and
// its restoration, the font settings and their checks.
#include "core/core.h"
#include "manager3d/manager3d.h"
#include "pictures/pictures.h"
#include "support/driver_fixture.h"

#include <cstdint>

using namespace norvgl;

namespace {

class TextTest : public nvtest::WindowTest {
protected:
    void SetUp() override {
        WindowTest::SetUp();
        pictures = {};
        font = {};
        GFX_BeginRender();
    }
    void TearDown() override {
        GFX_EndRender();
        WindowTest::TearDown();
    }
    // Queued vertex i as the queue holds it (z and t negated).
    static const float* position(std::uint32_t i) { return m3d.positions + 3 * i; }
    static const float* texCoord(std::uint32_t i) { return m3d.texCoords + 2 * i; }
    static std::uint32_t queuedVertices() { return m3d.positionCursor / 3; }
};

TEST_F(TextTest, LettersTakeTheirCellsAndSpacesOnlyTheirPlace) {
    GFX_SetFontSize(0.05f, 0.1f);
    EXPECT_EQ(GFX_PrintByProportion(0, 0, "A B"), 0);
    ASSERT_EQ(queuedVertices(), 12u);
    // A: code 65, row 4, column 1; from (-1, 1) to (-0.9, 0.8).
    const float a[6][4] = {{-1, 1, 0.0625f, 0.25f},        {-1, 0.8f, 0.0625f, 0.3125f},
                           {-0.9f, 1, 0.125f, 0.25f},      {-1, 0.8f, 0.0625f, 0.3125f},
                           {-0.9f, 0.8f, 0.125f, 0.3125f}, {-0.9f, 1, 0.125f, 0.25f}};
    for (std::uint32_t v = 0; v < 6; ++v) {
        EXPECT_FLOAT_EQ(position(v)[0], a[v][0]) << v;
        EXPECT_FLOAT_EQ(position(v)[1], a[v][1]) << v;
        EXPECT_FLOAT_EQ(position(v)[2], -1.0f) << v;
        EXPECT_FLOAT_EQ(texCoord(v)[0], a[v][2]) << v;
        EXPECT_FLOAT_EQ(texCoord(v)[1], -a[v][3]) << v;
    }
    // B, column 2, in the third cell.
    EXPECT_FLOAT_EQ(position(6)[0], -0.8f);
    EXPECT_FLOAT_EQ(position(10)[0], -0.7f);
    EXPECT_FLOAT_EQ(texCoord(6)[0], 0.125f);
    GFX_PrintByProportion(0, 0, "   ");
    EXPECT_EQ(queuedVertices(), 12u);
}

TEST_F(TextTest, HighAndControlCodesAreCellsToo) {
    GFX_SetFontSize(0.1f, 0.1f);
    // 193 is -63 as a signed byte: row -3, column -15, which repeat wrapping folds onto
    // row 13, column 1. A line feed is the glyph of cell 10.
    GFX_PrintByProportion(0, 0, "\xC1\n");
    ASSERT_EQ(queuedVertices(), 12u);
    EXPECT_FLOAT_EQ(texCoord(0)[0], -15 * 0.0625f);
    EXPECT_FLOAT_EQ(texCoord(0)[1], 3 * 0.0625f);
    EXPECT_FLOAT_EQ(texCoord(4)[0], -14 * 0.0625f);
    EXPECT_FLOAT_EQ(texCoord(6)[0], 10 * 0.0625f);
}

TEST_F(TextTest, TextModeSelectsItsStateAndRestoresTheHosts) {
    StateNode* host = m3d.currentNode;
    const std::uint32_t hostProjection = m3d.projectionIndex;
    EXPECT_EQ(GFX_BeginText(), 0);
    const StateNode* text = m3d.currentNode;
    EXPECT_EQ(text->depthMode, DEPTH_OFF);
    EXPECT_EQ(text->blendMode, BLEND_ADD);
    EXPECT_EQ(text->cullMode, host->cullMode);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(text->specular[i], 1.0f);
    EXPECT_EQ(text->texture, 0xFFFF); // no font chosen: low 16 bits of the unset id
    EXPECT_EQ(m3d.projectionIndex, hostProjection + 1);
    EXPECT_EQ(GFX_EndText(), 0);
    EXPECT_EQ(m3d.currentNode, host);
    EXPECT_EQ(m3d.projectionIndex, hostProjection);

    // Without textures text mode is off, while glyphs still queue under the host's state.
    GFX_SetProperty(PROP_NO_TEXTURES, 1);
    GFX_BeginText();
    EXPECT_EQ(m3d.currentNode, host);
    GFX_PrintByProportion(0, 0, "A");
    GFX_EndText();
    GFX_SetProperty(PROP_NO_TEXTURES, 0);
    EXPECT_EQ(m3d.savedCount, 0u);
    EXPECT_EQ(host->vertexBatches->count, 6u);
}

TEST_F(TextTest, FontMustBeALoadedPictureAndBindsItsTexture) {
    EXPECT_EQ(GFX_SetFontBitmap(0), 0);
    EXPECT_EQ(GFX_SetFontBitmap(1), 1);
    EXPECT_EQ(driver.lastError, ERR_INVALID_PARAMETER);
    EXPECT_EQ(font.fontPicture, 0u);
    // A picture held as pixels takes no texture name, so the font's name is not its id.
    nextPictureRecord().texture = 0;
    RegisterPicture("big.bmp");
    PictureRecord& record = nextPictureRecord();
    CreatePictureTexture(&record.texture, false);
    ASSERT_EQ(GFX_SetFontBitmap(RegisterPicture("font.bmp")), 0);
    GFX_BeginText();
    EXPECT_EQ(m3d.currentNode->texture, record.texture);
    GFX_EndText();
    GFX_UnloadAll(); // the font setting outlives the pictures
    EXPECT_EQ(font.fontPicture, 2u);
}

} // namespace
