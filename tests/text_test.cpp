// Bitmap-font text: the text-mode render state and its restoration, the font settings and
// their checks. Where the glyphs land is checked on the window by the scenario program.
#include "core/core.h"
#include "manager3d/manager3d.h"
#include "pictures/pictures.h"
#include "support/driver_fixture.h"

using namespace norvgl;

namespace {

using TextTest = nvtest::InFrameTest;

TEST_F(TextTest, TextModeSelectsItsStateAndRestoresTheHosts) {
    StateNode* host = m3d.currentNode;
    const std::uint32_t hostProjection = m3d.projectionIndex;
    EXPECT_EQ(GFX_BeginText(), 0);
    const StateNode* text = m3d.currentNode;
    EXPECT_EQ(text->depthMode, DEPTH_OFF);
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
