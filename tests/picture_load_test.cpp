// Picture loading: signatures and refusals, bitmaps becoming square textures or pixel
// arrays, transparent black, mip levels made or read, the table's limit and restart.
#include "core/core.h"
#include "core/messages.h"
#include "pictures/pictures.h"
#include "picture_assets.h"
#include "scenario/texture_level.h"
#include "support/driver_fixture.h"

#include <GL/gl.h>

#include <array>
#include <string>
#include <vector>

using namespace norvgl;
namespace assets = norvgl::assets;

namespace {

using Texel = std::array<int, 4>;
using scenario::readLevel;

assets::RgbImage solid(std::int32_t width, std::int32_t height, std::uint32_t color) {
    assets::RgbImage image;
    image.width = width;
    image.height = height;
    image.pixels.assign(static_cast<std::size_t>(width) * height, color);
    return image;
}

class PictureLoadTest : public nvtest::WindowTest {
protected:
    static int loadBytes(const std::vector<std::uint8_t>& bytes, std::uint32_t* id,
                         const char* name = "memory.bmp", std::uint32_t flags = 0) {
        return GFX_LoadPicture(name, bytes.data(), 0, id, flags);
    }
    static int levelSize(std::uint32_t id, int lod) {
        return readLevel(PictureTexture(id), lod).width;
    }
    static Texel texel(std::uint32_t id, int lod, std::size_t i) {
        return readLevel(PictureTexture(id), lod).texel(i);
    }
    static int minFilter(std::uint32_t id) {
        glBindTexture(GL_TEXTURE_2D, PictureTexture(id));
        GLint filter = 0;
        glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, &filter);
        return filter;
    }
};

TEST_F(PictureLoadTest, RefusedLoadsRegisterNothing) {
    const auto good = assets::writeColorBitmap(solid(4, 4, assets::rgb(1, 2, 3)));
    auto shortHeader = good;
    shortHeader[14] = 36;
    auto huge = assets::writeIndexedBitmap(assets::IndexedImage{1, 1, {1}}, {0, 0xFFFFFF}, 8, 1);
    huge[18] = huge[19] = huge[22] = huge[23] = 0x7F; // 32639 x 32639 from a few bytes
    const auto tdf = assets::writeTdf(true, 4, 4, 2, 1, {std::vector<std::uint16_t>(8)});
    // Each refused with ERR_INVALID_FILE_DATA and a report without details.
    struct Refusal {
        const char* what;
        const char* name; // a file of that name holds `bytes`; null: the bytes are in memory
        std::vector<std::uint8_t> bytes;
    };
    const Refusal refusals[] = {
        {"jpeg", nullptr, {0xFF, 0xD8, 0xFF, 0xE0, 0, 0x10, 'J', 'F', 'I', 'F', 0, 1, 1}},
        {"short info header", nullptr, shortHeader},
        {"huge run-length image", nullptr, huge},
        {"bitmap cut short", "cut.bmp", {good.begin(), good.end() - 10}},
        {"3df cut short", "cut.3df", {tdf.begin(), tdf.end() - 1}},
    };
    for (const Refusal& r : refusals) {
        std::uint32_t id = 99;
        if (r.name) {
            ASSERT_TRUE(assets::writeFile(r.name, r.bytes));
        }
        const std::string before = log();
        EXPECT_EQ(GFX_LoadPicture(r.name, r.name ? nullptr : r.bytes.data(), 0, &id, 0), 1)
            << r.what;
        EXPECT_EQ(driver.lastError, ERR_INVALID_FILE_DATA) << r.what;
        EXPECT_NE(log().find("Error details: (none)\r\n", before.size()), std::string::npos)
            << r.what;
        EXPECT_EQ(id, 99u) << r.what;
    }
    // Arguments: no name and no data, a missing file, nowhere to put the id.
    std::uint32_t id = 99;
    EXPECT_EQ(GFX_LoadPicture(nullptr, nullptr, 0, &id, 0), 1);
    EXPECT_EQ(driver.lastError, ERR_INVALID_PARAMETER);
    EXPECT_EQ(GFX_LoadPicture("missing.bmp", nullptr, 0, &id, 0), 1);
    EXPECT_EQ(driver.lastError, ERR_FILE_NOT_FOUND);
    EXPECT_EQ(GFX_LoadPicture("a.bmp", good.data(), 0, nullptr, 0), 1);
    EXPECT_EQ(driver.lastError, ERR_INVALID_FILE_DATA);
    EXPECT_EQ(pictures.pictureCount, 0u);
}

// Sizes beyond those the scenario program loads: the edges of the square power-of-two rule.
TEST_F(PictureLoadTest, BitmapTexturesAreSquarePowersOfTwo) {
    struct Case {
        std::int32_t width, height;
        int side; // 0: a texture name without an image
    };
    for (const Case& c :
         {Case{256, 256, 256}, Case{1, 1, 1}, Case{256, 128, 0}, Case{50, 200, 256}}) {
        std::uint32_t id = 0;
        ASSERT_EQ(loadBytes(assets::writeColorBitmap(solid(c.width, c.height, 0xFF0000)), &id), 0);
        EXPECT_NE(PictureTexture(id), 0u);
        EXPECT_EQ(pictures.table[id].pixels, nullptr);
        const scenario::Level level = readLevel(PictureTexture(id), 0);
        EXPECT_EQ(level.width, c.side) << c.width << " x " << c.height;
        EXPECT_EQ(level.height, c.side) << c.width << " x " << c.height;
        if (c.side) {
            EXPECT_EQ(texel(id, 0, 0), (Texel{255, 0, 0, 255}));
        }
    }
    EXPECT_EQ(driver.lastError, ERR_NONE);
}

// With textures off a bitmap is held as its pixels (large ones always are: the scenario
// program draws one).
TEST_F(PictureLoadTest, NoTexturesGivePixelArrays) {
    std::uint32_t id = 0;
    GLint before = 0;
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &before);
    GFX_SetProperty(PROP_NO_TEXTURES, 1);
    ASSERT_EQ(loadBytes(assets::writeColorBitmap(solid(5, 3, 0x0000FF)), &id), 0);
    GFX_SetProperty(PROP_NO_TEXTURES, 0);
    ASSERT_NE(pictures.table[id].pixels, nullptr);
    EXPECT_EQ(pictures.table[id].pixels[2], 255); // blue, 5 x 3 as stored
    EXPECT_EQ(PictureTexture(id), 0u);
    GLint after = 0;
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &after);
    EXPECT_EQ(after, before); // no texture was made
}

// Made mip levels go down to one pixel and are sampled; what each holds is checked by the
// scenario program's read-backs.
TEST_F(PictureLoadTest, BitmapMipLevelsGoDownToOnePixel) {
    const auto bytes = assets::writeColorBitmap(solid(8, 8, assets::rgb(0, 0, 255)));
    GFX_SetRenderProperty(RPROP_MIPMAPS, 1);
    std::uint32_t id = 0;
    ASSERT_EQ(loadBytes(bytes, &id), 0);
    EXPECT_EQ(minFilter(id), GL_LINEAR_MIPMAP_LINEAR);
    for (int level = 0; level <= 3; ++level)
        EXPECT_EQ(levelSize(id, level), 8 >> level) << level;
    EXPECT_EQ(levelSize(id, 4), 0);

    std::uint32_t plain = 0;
    ASSERT_EQ(loadBytes(bytes, &plain, "plain.bmp", PICTURE_NO_MIPMAPS), 0);
    EXPECT_EQ(minFilter(plain), GL_NEAREST);
    EXPECT_EQ(levelSize(plain, 1), 0);
    GFX_SetRenderProperty(RPROP_MIPMAPS, 0);
}

TEST_F(PictureLoadTest, TdfMipLevelsAreGeneratedPerFormat) {
    std::uint32_t id = 0;
    // One level in the file: with mipmaps on, rgb565 gets levels down to 1 x 1, argb8332
    // down to 2 x 2.
    GFX_SetRenderProperty(RPROP_MIPMAPS, 1);
    for (const bool rgb565 : {true, false}) {
        const std::uint16_t stored = rgb565 ? assets::packRgb565(assets::rgb(255, 255, 255))
                                            : assets::packArgb8332(assets::rgb(255, 255, 255));
        std::vector<std::vector<std::uint16_t>> one = {
            std::vector<std::uint16_t>(256 * 256, stored)};
        ASSERT_EQ(loadBytes(assets::writeTdf(rgb565, 256, 256, 1, 1, one), &id), 0);
        const int last = rgb565 ? 8 : 7;
        EXPECT_EQ(levelSize(id, last), 256 >> last);
        EXPECT_EQ(levelSize(id, last + 1), 0);
        const Texel white = rgb565 ? Texel{248, 252, 248, 255} : Texel{252, 252, 255, 255};
        EXPECT_EQ(texel(id, last, 0), white);
        EXPECT_EQ(minFilter(id), GL_LINEAR_MIPMAP_LINEAR);
    }
    GFX_SetRenderProperty(RPROP_MIPMAPS, 0);
    // 3DF files become textures even when textures are off for bitmaps.
    GFX_SetProperty(PROP_NO_TEXTURES, 1);
    ASSERT_EQ(loadBytes(assets::writeTdf(true, 8, 8, 1, 1, {std::vector<std::uint16_t>(64)}), &id),
              0);
    GFX_SetProperty(PROP_NO_TEXTURES, 0);
    EXPECT_EQ(levelSize(id, 0), 8);
    EXPECT_EQ(levelSize(id, 1), 0);
    EXPECT_EQ(minFilter(id), GL_NEAREST);
}

TEST_F(PictureLoadTest, TdfTexelsAndRowOrder) {
    // First file row magenta (F8 1F), second row black: the first row lands at t = 1.
    std::vector<std::uint16_t> texelsInFile(4 * 2, 0);
    for (int x = 0; x < 4; ++x)
        texelsInFile[static_cast<std::size_t>(x)] = 0xF81F;
    std::uint32_t id = 0;
    const auto bytes = assets::writeTdf(true, 4, 4, 2, 1, {texelsInFile});
    ASSERT_EQ(loadBytes(bytes, &id, nullptr), 0);
    unsigned int width = 0, height = 0;
    GFX_GetPictureDimensions(id, &width, &height, nullptr);
    EXPECT_EQ(width, 4u);
    EXPECT_EQ(height, 2u);
    EXPECT_EQ(texel(id, 0, 0), (Texel{0, 0, 0, 255}));
    EXPECT_EQ(texel(id, 0, 4), (Texel{248, 0, 248, 255}));
}

TEST_F(PictureLoadTest, TheTableHoldsAThousandAndTwentyFourPictures) {
    const auto tiny = assets::writeColorBitmap(solid(1, 1, 0xFFFFFF));
    std::uint32_t id = 0;
    for (std::uint32_t n = 1; n <= PICTURE_CAPACITY; ++n) {
        ASSERT_EQ(loadBytes(tiny, &id), 0);
        ASSERT_EQ(id, n);
    }
    EXPECT_EQ(loadBytes(tiny, &id), 1);
    EXPECT_EQ(driver.lastError, ERR_INVALID_FILE_DATA);
    EXPECT_EQ(id, PICTURE_CAPACITY);
    EXPECT_EQ(pictures.pictureCount, PICTURE_CAPACITY);
}

} // namespace
