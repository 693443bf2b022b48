// Picture table: ids, bounded names, lookups by id and name, dimensions, texture selection,
// the box filters of mip levels, and emptying the table with GFX_UnloadAll.
#include "driver/driver.h"
#include "manager3d/manager3d.h"
#include "pictures/pictures.h"
#include "support/driver_fixture.h"
#include "support/gl_recorder.h"

#include <cstdlib>
#include <cstring>
#include <string>

using namespace norvgl;
using nvtest::GlRecorder;

namespace {

class PictureTableTest : public nvtest::WindowTest {
protected:
    void SetUp() override {
        WindowTest::SetUp();
        pictures = {}; // as at library load
        font = {};
    }
    // What a reader leaves in the next record before registering it.
    static std::uint32_t addTextured(const char* name, std::uint32_t width = 8,
                                     std::uint32_t height = 4) {
        PictureRecord& record = nextPictureRecord();
        CreatePictureTexture(&record.texture, false);
        record.width = width;
        record.height = height;
        return RegisterPicture(name);
    }
    static std::uint32_t addPixels(const char* name) {
        PictureRecord& record = nextPictureRecord();
        record.texture = 0;
        record.width = record.height = 2;
        record.pixels = static_cast<std::uint8_t*>(std::calloc(16, 1));
        return RegisterPicture(name);
    }
};

TEST(BoxFilter, HalveRgbAveragesTopLeftBlocksAndDropsOddEdges) {
    // 3 x 3 pixels; only the top-left 2 x 2 block counts.
    std::uint8_t image[27] = {};
    const std::uint8_t block[4][3] = {{10, 0, 255}, {11, 1, 255}, {12, 2, 255}, {14, 4, 254}};
    std::memcpy(image + 0, block[0], 3);
    std::memcpy(image + 3, block[1], 3);
    std::memcpy(image + 9, block[2], 3);
    std::memcpy(image + 12, block[3], 3);
    std::memset(image + 6, 200, 3);  // third column
    std::memset(image + 18, 200, 9); // third row
    HalveRgb(image, 3, 3);
    EXPECT_EQ(image[0], 11);  // 47 / 4 rounded down
    EXPECT_EQ(image[1], 1);   // 7 / 4
    EXPECT_EQ(image[2], 254); // 1019 / 4
    EXPECT_EQ(image[3], 11);  // the rest of the buffer keeps what it held
}

TEST(BoxFilter, HalveRgbaKeepsRowsApartAndFiltersAlpha) {
    // 4 x 2 RGBA: two output pixels, each from its own 2 x 2 block.
    std::uint8_t image[32];
    for (int i = 0; i < 32; ++i)
        image[i] = static_cast<std::uint8_t>(i * 7);
    HalveRgba(image, 4, 2);
    for (int c = 0; c < 4; ++c) {
        const int left = (c * 7 + (4 + c) * 7 + (16 + c) * 7 + (20 + c) * 7) / 4;
        const int right = ((8 + c) * 7 + (12 + c) * 7 + (24 + c) * 7 + (28 + c) * 7) / 4;
        EXPECT_EQ(image[c], left) << c;
        EXPECT_EQ(image[4 + c], right) << c;
    }
}

TEST_F(PictureTableTest, IdsAreIssuedInOrderAndNamesAreBounded) {
    EXPECT_EQ(addTextured("first.bmp"), 1u);
    EXPECT_EQ(pictures.pictureCount, 1u);
    const std::string longName(300, 'n');
    EXPECT_EQ(addTextured(longName.c_str()), 2u);
    EXPECT_EQ(std::string(pictures.table[2].name), longName.substr(0, 127));
    // No name: the slot keeps what it held.
    std::strcpy(pictures.table[3].name, "left over");
    EXPECT_EQ(addTextured(nullptr), 3u);
    EXPECT_STREQ(pictures.table[3].name, "left over");
}

TEST_F(PictureTableTest, FindByNameIgnoresCaseAndTheLowestIdWins) {
    EXPECT_EQ(FindPictureTexture("particle.bmp"), 0u); // empty table
    addTextured("other.bmp");
    const std::uint32_t first = addTextured("particle.bmp");
    addTextured("Particle.BMP");
    EXPECT_EQ(FindPictureTexture("PARTICLE.BMP"), PictureTexture(first));
    EXPECT_NE(FindPictureTexture("PARTICLE.BMP"), 0u);
    EXPECT_EQ(FindPictureTexture("particle.bm"), 0u);
    EXPECT_EQ(FindPictureTexture(nullptr), 0u);
    // A record past the count is not a picture any more.
    std::strcpy(pictures.table[4].name, "stale.bmp");
    pictures.table[4].texture = 77;
    EXPECT_EQ(FindPictureTexture("stale.bmp"), 0u);
}

TEST_F(PictureTableTest, DimensionsOfKnownIdsOnly) {
    const std::uint32_t id = addTextured("a.bmp", 100, 50);
    unsigned int width = 9, height = 9, extra = 9;
    EXPECT_EQ(GFX_GetPictureDimensions(id, &width, &height, &extra), 0);
    EXPECT_EQ(width, 100u);
    EXPECT_EQ(height, 50u);
    EXPECT_EQ(extra, 0u);
    EXPECT_EQ(GFX_GetPictureDimensions(id, nullptr, &height, nullptr), 0);

    EXPECT_EQ(GFX_GetPictureDimensions(0, &width, &height, &extra), 0);
    EXPECT_EQ(width, 0u);
    EXPECT_EQ(height, 0u);
    EXPECT_EQ(extra, 0u);

    width = height = extra = 9;
    GFX_SetProperty(PROP_ENABLED, 0); // no effect on this call
    EXPECT_EQ(GFX_GetPictureDimensions(id + 1, &width, &height, &extra), 1);
    EXPECT_EQ(width, 9u);
    EXPECT_EQ(height, 9u);
    EXPECT_EQ(extra, 9u);
    EXPECT_EQ(GFX_GetPictureDimensions(0xFFFFFFFFu, &width, &height, &extra), 1);
    EXPECT_EQ(driver.lastError, ERR_NONE);
}

TEST_F(PictureTableTest, IdsPastTheTableReadTheEmptyRecord) {
    addTextured("a.bmp");
    EXPECT_EQ(PictureTexture(PICTURE_CAPACITY + 1), 0u);
    EXPECT_EQ(PictureTexture(0xFFFFFFFFu), 0u);
    EXPECT_EQ(&pictureRecord(5000), &pictures.table[0]);
}

TEST_F(PictureTableTest, SelectTextureRequestsThePicturesTextureState) {
    addTextured("a.bmp");
    const std::uint32_t id = addTextured("b.bmp");
    const std::uint32_t pixelId = addPixels("c.bmp");
    GFX_BeginRender();
    StateNode* before = m3d.currentNode;
    GFX_SetProperty(PROP_ENABLED, 0);
    EXPECT_EQ(GFX_SelectTexture(id), 0);
    EXPECT_EQ(m3d.currentNode, before);
    GFX_SetProperty(PROP_ENABLED, 1);
    EXPECT_EQ(GFX_SelectTexture(id), 0);
    EXPECT_EQ(m3d.currentNode->texture, PictureTexture(id));
    EXPECT_NE(m3d.currentNode, before);
    // A picture held as pixels hands on no texture.
    EXPECT_EQ(GFX_SelectTexture(pixelId), 0);
    EXPECT_EQ(m3d.currentNode->texture, 0);
    GFX_EndRender();
}

TEST_F(PictureTableTest, UnloadAllDeletesTheTexturesAndRestartsIds) {
    const std::uint32_t a = addTextured("a.bmp");
    addPixels("p.bmp");
    const std::uint32_t c = addTextured("c.bmp");
    const std::uint32_t textureA = PictureTexture(a), textureC = PictureTexture(c);
    ASSERT_TRUE(glIsTexture(textureA));
    {
        GlRecorder recorder;
        EXPECT_EQ(GFX_UnloadAll(), 0);
        const auto deletes = recorder.only({GlCall::DeleteTextures});
        ASSERT_EQ(deletes.size(), 1u);
        EXPECT_EQ(deletes[0].args[0], 3.0);
        EXPECT_TRUE(recorder.glErrors().empty());
    }
    EXPECT_FALSE(glIsTexture(textureA));
    EXPECT_FALSE(glIsTexture(textureC));
    EXPECT_EQ(pictures.pictureCount, 0u);
    EXPECT_EQ(pictures.table[2].pixels, nullptr);  // pixel arrays are released
    EXPECT_STREQ(pictures.table[1].name, "a.bmp"); // records keep the rest
    EXPECT_EQ(GFX_SetFontBitmap(1), 1);            // id 1 no longer exists

    EXPECT_EQ(addTextured("again.bmp"), 1u);
    {
        GlRecorder recorder;
        GFX_UnloadAll();
        GFX_UnloadAll(); // nothing left: no second delete
        EXPECT_EQ(recorder.count(GlCall::DeleteTextures), 1u);
    }
}

TEST_F(PictureTableTest, TextureSettingsWithAndWithoutMipmaps) {
    PictureRecord& record = nextPictureRecord();
    CreatePictureTexture(&record.texture, true);
    GLint value = 0;
    GLint bound = 0;
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
    EXPECT_EQ(static_cast<std::uint32_t>(bound), record.texture);
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, &value);
    EXPECT_EQ(value, GL_LINEAR_MIPMAP_LINEAR);
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, &value);
    EXPECT_EQ(value, GL_LINEAR);
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, &value);
    EXPECT_EQ(value, GL_REPEAT);

    std::uint32_t plain = 0;
    CreatePictureTexture(&plain, false);
    EXPECT_NE(plain, record.texture);
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, &value);
    EXPECT_EQ(value, GL_NEAREST);
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, &value);
    EXPECT_EQ(value, GL_NEAREST);
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, &value);
    EXPECT_EQ(value, GL_REPEAT);
}

} // namespace
