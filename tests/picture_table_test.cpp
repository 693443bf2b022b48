// Picture table: ids, bounded names, lookups by id and name, dimensions, texture selection,
// emptying the table with GFX_UnloadAll, and the font and text mode that draw from it. Where
// glyphs land is checked on the window by the scenario program.
#include "core/core.h"
#include "manager3d/manager3d.h"
#include "pictures/pictures.h"
#include "support/driver_fixture.h"
#include "support/gl_recorder.h"

#include <cstdlib>
#include <cstring>
#include <string>

using namespace norvgl;

namespace {

class PictureTableTest : public nvtest::WindowTest {
protected:
    // What a reader leaves in the next record before registering it.
    static std::uint32_t add(const char* name, bool asPixels = false) {
        PictureRecord& record = nextPictureRecord();
        record.texture = 0;
        if (asPixels)
            record.pixels = static_cast<std::uint8_t*>(std::calloc(16, 1));
        else
            CreatePictureTexture(&record.texture, false);
        record.width = 100;
        record.height = 50;
        return RegisterPicture(name);
    }
};

TEST_F(PictureTableTest, IdsInOrderBoundedNamesAndLookupByName) {
    EXPECT_EQ(FindPictureTexture("particle.bmp"), 0u); // empty table
    EXPECT_EQ(add(std::string(300, 'n').c_str()), 1u);
    EXPECT_EQ(std::string(pictures.table[1].name), std::string(127, 'n'));
    std::strcpy(pictures.table[2].name, "left over");
    EXPECT_EQ(add(nullptr), 2u); // no name: the slot keeps what it held
    EXPECT_STREQ(pictures.table[2].name, "left over");
    const std::uint32_t first = add("particle.bmp");
    add("Particle.BMP");
    EXPECT_EQ(FindPictureTexture("PARTICLE.BMP"), PictureTexture(first));
    EXPECT_NE(PictureTexture(first), 0u);
    EXPECT_EQ(FindPictureTexture("particle.bm"), 0u);
    // Letters fold at both ends of the alphabet, nothing else does.
    const std::uint32_t az = add("aZ_[.bmp");
    EXPECT_EQ(FindPictureTexture("Az_[.BMP"), PictureTexture(az));
    EXPECT_EQ(FindPictureTexture("az_{.bmp"), 0u);
    // A record past the count is not a picture any more.
    std::strcpy(pictures.table[6].name, "stale.bmp");
    pictures.table[6].texture = 77;
    EXPECT_EQ(FindPictureTexture("stale.bmp"), 0u);
    // Ids past the table read the empty record.
    EXPECT_EQ(&pictureRecord(PICTURE_CAPACITY + 1), &pictures.table[0]);
    EXPECT_EQ(PictureTexture(0xFFFFFFFFu), 0u);
}

TEST_F(PictureTableTest, DimensionsOfKnownIdsOnly) {
    const std::uint32_t id = add("a.bmp");
    unsigned int width = 9, height = 9, extra = 9;
    EXPECT_EQ(GFX_GetPictureDimensions(id, &width, &height, &extra), 0);
    EXPECT_EQ(width, 100u);
    EXPECT_EQ(height, 50u);
    EXPECT_EQ(extra, 0u);
    EXPECT_EQ(GFX_GetPictureDimensions(0, &width, nullptr, nullptr), 0);
    EXPECT_EQ(width, 0u);
    width = 9;
    EXPECT_EQ(GFX_GetPictureDimensions(id + 1, &width, &height, &extra), 1);
    EXPECT_EQ(width, 9u);
    EXPECT_EQ(driver.lastError, ERR_NONE);
}

TEST_F(PictureTableTest, SelectTextureRequestsThePicturesTexture) {
    const std::uint32_t id = add("b.bmp");
    const std::uint32_t pixelId = add("c.bmp", true);
    GFX_BeginRender();
    GFX_SelectTexture(id);
    EXPECT_EQ(m3d.currentNode->texture, PictureTexture(id));
    GFX_SelectTexture(pixelId); // a picture held as pixels hands on no texture
    EXPECT_EQ(m3d.currentNode->texture, 0);
    GFX_EndRender();
}

TEST_F(PictureTableTest, UnloadAllDeletesTheTexturesAndReleasesPixels) {
    const std::uint32_t a = add("a.bmp");
    add("p.bmp", true);
    const std::uint32_t c = add("c.bmp");
    const std::uint32_t textureA = PictureTexture(a), textureC = PictureTexture(c);
    {
        nvtest::GlRecorder recorder;
        EXPECT_EQ(GFX_UnloadAll(), 0);
        EXPECT_EQ(GFX_UnloadAll(), 0); // nothing left: no second delete
        const auto deletes = recorder.only({GlCall::DeleteTextures});
        ASSERT_EQ(deletes.size(), 1u);
        EXPECT_EQ(deletes[0].args[0], 3.0);
    }
    EXPECT_FALSE(glIsTexture(textureA));
    EXPECT_FALSE(glIsTexture(textureC));
    EXPECT_EQ(pictures.pictureCount, 0u);
    EXPECT_EQ(pictures.table[2].pixels, nullptr);
    EXPECT_EQ(GFX_SetFontBitmap(1), 1); // id 1 no longer exists
    EXPECT_EQ(add("again.bmp"), 1u);
}

// Text mode: the font's texture, depth off, white material, a screen-space projection; the
// host's state and projection come back at its end.
TEST_F(PictureTableTest, TextModeSelectsItsStateAndRestoresTheHosts) {
    GFX_BeginRender();
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
    GFX_EndRender();
}

TEST_F(PictureTableTest, FontMustBeALoadedPictureAndBindsItsTexture) {
    EXPECT_EQ(GFX_SetFontBitmap(0), 0);
    EXPECT_EQ(GFX_SetFontBitmap(1), 1);
    EXPECT_EQ(driver.lastError, ERR_INVALID_PARAMETER);
    EXPECT_EQ(font.fontPicture, 0u);
    // A picture held as pixels takes no texture name, so the font's name is not its id.
    add("big.bmp", true);
    const std::uint32_t id = add("font.bmp");
    ASSERT_EQ(GFX_SetFontBitmap(id), 0);
    GFX_BeginRender();
    GFX_BeginText();
    EXPECT_EQ(m3d.currentNode->texture, PictureTexture(id));
    EXPECT_NE(PictureTexture(id), id);
    GFX_EndText();
    GFX_EndRender();
    GFX_UnloadAll(); // the font setting outlives the pictures
    EXPECT_EQ(font.fontPicture, 2u);
}

} // namespace
