// Pictures as a host loads and draws them: bitmaps of every depth, palette size, compression
// and row order, stretched up and down to their square textures, and 3DF files of both texel
// formats, each read back from its texture (level 0 and a mip level) and dumped for the
// comparison of one system's run with the other's; then frames with pictures and text.
// Run-length escapes are left to the decoder's tests and the Wine bitmap check.
#include "picture_assets.h"
#include "scenario.h"
#include "texture_level.h"
#include "scenario_gl.h"

#include "norvgl.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

namespace scenario {
namespace {

namespace assets = norvgl::assets;

// <name>.rgba: "RGBA width height" on a line, then the texels.
bool saveLevel(const std::string& name, const Level& level) {
    const std::string path = outputPath(name + ".rgba");
    if (path.empty())
        return true;
    std::ofstream out(path, std::ios::binary);
    out << "RGBA " << level.width << ' ' << level.height << '\n';
    out.write(reinterpret_cast<const char*>(level.rgba.data()),
              static_cast<std::streamsize>(level.rgba.size()));
    return static_cast<bool>(out);
}

// The colour a texel of a bitmap texture holds for a source colour: black turns transparent.
::testing::AssertionResult texelIs(const std::uint8_t* texel, std::uint32_t color) {
    const int r = color >> 16 & 255, g = color >> 8 & 255, b = color & 255;
    const int a = color == 0 ? 0 : 255;
    if (texel[0] == r && texel[1] == g && texel[2] == b && texel[3] == a)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure()
           << "texel (" << int(texel[0]) << ", " << int(texel[1]) << ", " << int(texel[2]) << ", "
           << int(texel[3]) << ") is not (" << r << ", " << g << ", " << b << ", " << a << ")";
}

// Level `lod` of a mipmapped texture is the 2 x 2 average of the level above it, per channel
// rounded down.
::testing::AssertionResult halvesLevelAbove(const Level& above, const Level& level) {
    if (level.width != above.width / 2 || level.height != above.height / 2)
        return ::testing::AssertionFailure() << level.width << " x " << level.height << " under "
                                             << above.width << " x " << above.height;
    for (int y = 0; y < level.height; ++y)
        for (int x = 0; x < level.width; ++x)
            for (int c = 0; c < 4; ++c) {
                const int sum = above.at(2 * x, 2 * y)[c] + above.at(2 * x + 1, 2 * y)[c] +
                                above.at(2 * x, 2 * y + 1)[c] + above.at(2 * x + 1, 2 * y + 1)[c];
                if (level.at(x, y)[c] != sum >> 2)
                    return ::testing::AssertionFailure()
                           << "texel " << x << ", " << y << " channel " << c << " is "
                           << int(level.at(x, y)[c]);
            }
    return ::testing::AssertionSuccess();
}

std::vector<std::uint32_t> randomPalette(std::mt19937& rng, std::size_t count) {
    std::vector<std::uint32_t> palette;
    for (std::size_t i = 0; i < count; ++i)
        palette.push_back(static_cast<std::uint32_t>(rng()) & 0xFFFFFF);
    palette[0] = 0; // black, which turns transparent
    return palette;
}

// Indices below `colors`, in runs of random length so that RLE finds both kinds of stretch.
assets::IndexedImage randomIndices(std::mt19937& rng, std::int32_t width, std::int32_t height,
                                   unsigned colors) {
    assets::IndexedImage image{width, height, {}};
    std::uint8_t index = 0;
    for (std::int32_t i = 0; i < width * height; ++i) {
        if (rng() % 3 == 0)
            index = static_cast<std::uint8_t>(rng() % colors);
        image.pixels.push_back(index);
    }
    return image;
}

assets::RgbImage randomColors(std::mt19937& rng, std::int32_t width, std::int32_t height) {
    assets::RgbImage image{width, height, {}};
    for (std::int32_t i = 0; i < width * height; ++i)
        image.pixels.push_back(rng() % 8 == 0 ? 0u : static_cast<std::uint32_t>(rng()) & 0xFFFFFF);
    return image;
}

assets::RgbImage colorsOf(const assets::IndexedImage& image,
                          const std::vector<std::uint32_t>& palette) {
    assets::RgbImage out{image.width, image.height, {}};
    for (std::uint8_t index : image.pixels)
        out.pixels.push_back(palette[index]);
    return out;
}

// A bitmap of each depth, palette size, compression and row order.
struct Case {
    std::string name;
    std::vector<std::uint8_t> bytes;
    bool fromFile;
    int textureSide;         // the square texture it becomes
    assets::RgbImage colors; // what the file holds, top row first
};

std::vector<Case> bitmapCases() {
    // 24 bits a pixel have no palette; a palette shorter than the depth's is announced as the
    // colours used.
    const struct {
        const char* name;
        int bits, compression, palette, indices;
        bool topDown;
        std::int32_t width, height;
        int side;
    } rows[] = {
        {"bits4-full-bottomup", 4, 0, 16, 16, false, 64, 64, 64},
        {"bits4-used6-topdown-100x50", 4, 0, 6, 6, true, 100, 50, 128},
        {"bits8-full-bottomup-255x255", 8, 0, 256, 256, false, 255, 255, 128},
        {"bits8-used40-topdown", 8, 0, 40, 40, true, 32, 32, 32},
        {"rle8-encoded", 8, 1, 256, 200, false, 64, 64, 64},
        {"rle4-encoded-100x50", 4, 2, 16, 16, false, 100, 50, 128},
        {"bits24-bottomup", 24, 0, 0, 0, false, 64, 64, 64},
        {"bits24-topdown", 24, 0, 0, 0, true, 16, 16, 16},
        {"bits24-bottomup-100x50", 24, 0, 0, 0, false, 100, 50, 128},
        {"bits24-topdown-255x255", 24, 0, 0, 0, true, 255, 255, 128},
    };
    std::mt19937 rng(20240607);
    std::vector<Case> cases;
    for (const auto& s : rows) {
        Case c{s.name, {}, cases.size() % 2 == 0, s.side, {}};
        if (s.bits == 24) {
            c.colors = randomColors(rng, s.width, s.height);
            c.bytes = assets::writeColorBitmap(c.colors, 24, s.topDown);
        } else {
            const auto palette = randomPalette(rng, static_cast<std::size_t>(s.palette));
            const auto image =
                randomIndices(rng, s.width, s.height, static_cast<unsigned>(s.indices));
            const auto used = static_cast<std::uint32_t>(s.palette < (1 << s.bits) ? s.palette : 0);
            c.bytes = assets::writeIndexedBitmap(
                image, palette, s.bits, static_cast<std::uint32_t>(s.compression), s.topDown, used);
            c.colors = colorsOf(image, palette);
        }
        cases.push_back(std::move(c));
    }
    return cases;
}

// Mip levels made for every load.
class Pictures : public WindowScenario {
protected:
    void SetUp() override {
        WindowScenario::SetUp();
        GFX_SetRenderProperty(RPROP_MIPMAPS, 1);
    }
    void TearDown() override {
        GFX_SetRenderProperty(RPROP_MIPMAPS, 0);
        WindowScenario::TearDown();
    }

    // Loads from the file or from memory; picture k of a fresh context has texture name k.
    static int load(const std::string& name, const std::vector<std::uint8_t>& bytes, bool fromFile,
                    unsigned* id) {
        if (!fromFile)
            return GFX_LoadPicture(name.c_str(), bytes.data(), 0, id, 0);
        // In the current directory, so that the name the log shows is the same on both systems.
        EXPECT_TRUE(assets::writeFile(name, bytes)) << name;
        const int result = GFX_LoadPicture(name.c_str(), nullptr, 0, id, 0);
        std::error_code ignored;
        std::filesystem::remove(name, ignored);
        return result;
    }

    // Line per load for the comparison: the result, id, size and the last error's texts.
    void note(const std::string& line) { notes_ += line + '\n'; }
    void saveNotes(const std::string& name) {
        const std::string path = outputPath(name + ".txt");
        if (path.empty())
            return;
        std::ofstream out(path, std::ios::binary);
        out << notes_;
        EXPECT_TRUE(static_cast<bool>(out)) << path;
    }

private:
    std::string notes_;
};

// The last error is noted only where the load reported one: it outlives tests, which the two
// systems may run in different orders.
std::string describeLoad(const std::string& name, int result, unsigned id, LogWatch& log) {
    unsigned width = 0, height = 0, extra = 7;
    const int dimensions = GFX_GetPictureDimensions(id, &width, &height, &extra);
    std::string line = name + ": result " + std::to_string(result) + " id " + std::to_string(id) +
                       " size " + std::to_string(dimensions) + " " + std::to_string(width) + "x" +
                       std::to_string(height) + "+" + std::to_string(extra);
    if (!log.appended().empty()) {
        const LastError error = lastError();
        line += " error '" + error.title + "' '" + error.details + "'";
    }
    return line;
}

TEST_F(Pictures, BitmapsBecomeSquareMipmappedTextures) {
    unsigned expectedId = 0;
    LogWatch log;
    for (const Case& c : bitmapCases()) {
        SCOPED_TRACE(c.name);
        unsigned id = 0;
        const int result = load(c.name + ".bmp", c.bytes, c.fromFile, &id);
        note(describeLoad(c.name, result, id, log));
        ASSERT_EQ(result, 0);
        ASSERT_EQ(id, ++expectedId);
        unsigned width = 0, height = 0;
        EXPECT_EQ(GFX_GetPictureDimensions(id, &width, &height, nullptr), 0);
        EXPECT_EQ(width, static_cast<unsigned>(c.colors.width));
        EXPECT_EQ(height, static_cast<unsigned>(c.colors.height));

        ASSERT_TRUE(glIsTexture(id));
        const Level top = readLevel(id, 0);
        ASSERT_EQ(top.width, c.textureSide);
        ASSERT_EQ(top.height, c.textureSide);
        EXPECT_TRUE(saveLevel("Pictures." + c.name + "-level0", top));
        // Level 2 is a quarter of the side: two halvings from level 0.
        const Level one = readLevel(id, 1), two = readLevel(id, 2);
        EXPECT_TRUE(halvesLevelAbove(top, one));
        EXPECT_TRUE(halvesLevelAbove(one, two));
        EXPECT_TRUE(saveLevel("Pictures." + c.name + "-level2", two));

        const assets::RgbImage& image = c.colors;
        if (top.width == image.width && top.height == image.height) { // no stretch involved
            int wrong = 0;
            for (int y = 0; y < top.height && wrong < 5; ++y)
                for (int x = 0; x < top.width && wrong < 5; ++x) {
                    const auto check = texelIs(top.at(x, y), image.at(x, image.height - 1 - y));
                    if (!check) {
                        ++wrong;
                        ADD_FAILURE() << "texel " << x << ", " << y << ": " << check.message();
                    }
                }
        }
    }
    saveNotes("Pictures.bitmap-loads");
}

TEST_F(Pictures, SixteenBitBitmapLoadsWithoutAnImage) {
    std::mt19937 rng(7);
    const auto bytes = assets::writeColorBitmap(randomColors(rng, 8, 8), 16);
    LogWatch log;
    unsigned id = 0;
    const int result = load("bits16.bmp", bytes, true, &id);
    EXPECT_NE(LogWatch(log).appended().find("Error details: Could not create bitmap: bits = 16"),
              std::string::npos);
    note(describeLoad("bits16", result, id, log));
    EXPECT_EQ(result, 0);
    EXPECT_EQ(id, 1u);
    EXPECT_EQ(lastError().title, "Invalid file data"); // reported although the load succeeds
    // The picture keeps a texture name, without an image.
    EXPECT_EQ(readLevel(1, 0).width, 0);

    // Refusals: no signature, a missing file.
    const std::vector<std::uint8_t> junk = {'P', 'N', 'G', 0, 1, 2, 3, 4, 5, 6};
    id = 0;
    const int junkResult = load("junk.dat", junk, true, &id);
    EXPECT_NE(LogWatch(log).appended().find("Error details: Unknown bitmap type: junk.dat!"),
              std::string::npos);
    note(describeLoad("junk", junkResult, id, log));
    EXPECT_EQ(junkResult, 1);
    EXPECT_EQ(id, 0u);
    note(describeLoad("missing", GFX_LoadPicture("missing.bmp", nullptr, 0, &id, 0), id, log));
    EXPECT_EQ(id, 0u);
    saveNotes("Pictures.refused-loads");
}

TEST_F(Pictures, TdfFilesOfBothFormats) {
    std::mt19937 rng(99);
    // rgb565 with four levels of its own; argb8332 with one level and mip levels made at load.
    const auto many = assets::writeTdfFromImage(randomColors(rng, 64, 64), true, 4);
    const auto one = assets::writeTdfFromImage(randomColors(rng, 32, 32), false, 1);
    unsigned first = 0, second = 0;
    LogWatch log;
    const int r1 = load("many.3df", many, true, &first);
    note(describeLoad("rgb565", r1, first, log));
    const int r2 = load("one.3df", one, false, &second);
    note(describeLoad("argb8332", r2, second, log));
    ASSERT_EQ(r1, 0);
    ASSERT_EQ(r2, 0);
    ASSERT_EQ(first, 1u);
    ASSERT_EQ(second, 2u);
    const Level manyTop = readLevel(1, 0), manyThree = readLevel(1, 3);
    EXPECT_EQ(manyTop.width, 64);
    EXPECT_EQ(manyThree.width, 8);
    EXPECT_EQ(readLevel(1, 4).width, 0); // only the levels the file holds
    const Level oneTop = readLevel(2, 0), oneTwo = readLevel(2, 2);
    EXPECT_EQ(oneTop.width, 32);
    EXPECT_TRUE(halvesLevelAbove(oneTop, readLevel(2, 1)));
    EXPECT_TRUE(saveLevel("Pictures.rgb565-level0", manyTop));
    EXPECT_TRUE(saveLevel("Pictures.rgb565-level3", manyThree));
    EXPECT_TRUE(saveLevel("Pictures.argb8332-level0", oneTop));
    EXPECT_TRUE(saveLevel("Pictures.argb8332-level2", oneTwo));
    saveNotes("Pictures.tdf-loads");
}

// Red on the pixels from (left, top) to before (right, bottom), and not on those around them.
void expectRedRectangle(const Image& image, int left, int top, int right, int bottom) {
    const struct {
        int x, y;
        bool inside;
    } probes[] = {{left, top, true},          {right - 1, bottom - 1, true},
                  {left - 1, top, false},     {left, top - 1, false},
                  {right, bottom - 1, false}, {right - 1, bottom, false}};
    for (const auto& p : probes) {
        if (p.x >= 0 && p.y >= 0 && p.x < image.width && p.y < image.height) {
            EXPECT_EQ(image.at(p.x, p.y) == kRed, p.inside) << p.x << ", " << p.y;
        }
    }
}

// Four quadrants: red, green at the top; blue, white at the bottom.
assets::RgbImage quadrants(std::int32_t width, std::int32_t height) {
    assets::RgbImage image{width, height, {}};
    for (std::int32_t y = 0; y < height; ++y)
        for (std::int32_t x = 0; x < width; ++x)
            image.pixels.push_back(y < height / 2 ? (x < width / 2 ? 0xFF0000u : 0x00FF00u)
                                                  : (x < width / 2 ? 0x0000FFu : 0xFFFFFFu));
    return image;
}

TEST_F(Pictures, PicturesAndPixelArrayOnScreen) {
    std::mt19937 rng(5);
    const auto palette = randomPalette(rng, 16);
    unsigned indexed = 0, proportional = 0, big = 0, red = 0;
    ASSERT_EQ(load("", assets::writeIndexedBitmap(randomIndices(rng, 64, 64, 16), palette, 4),
                   false, &indexed),
              0);
    ASSERT_EQ(load("", assets::writeColorBitmap(quadrants(100, 50)), false, &proportional), 0);
    ASSERT_EQ(load("", assets::writeColorBitmap(quadrants(300, 200)), false, &big), 0);
    ASSERT_EQ(
        load("", assets::writeColorBitmap({64, 48, std::vector(64 * 48, 0xFF0000u)}), false, &red),
        0);

    // Two frames, one in each depth phase: the pixel array's copy must not depend on it.
    Image image;
    for (int frame = 0; frame < 2; ++frame) {
        if (frame == 0)
            beginNearToFarFrame();
        else
            GFX_BeginRender();
        // Drawn at once, at its own size at the lower-left corner.
        EXPECT_EQ(GFX_DrawPicture(big, 400, 10, 0, 0), 0);
        EXPECT_EQ(GFX_DrawPicture(indexed, 0, 0, 320, 240), 0);
        EXPECT_EQ(GFX_DrawPictureByProportion(proportional, 0.5f, 0.5f, 0.5f, 0.5f), 0);
        // A size of 0 is the picture's own, in fractions too: 64 window widths wide.
        EXPECT_EQ(GFX_DrawPicture(red, 330, 10, 0, 0), 0);
        EXPECT_EQ(GFX_DrawPictureByProportion(red, 0.9f, 0.25f, 0, 0.125f), 0);
        EXPECT_EQ(GFX_GetRenderProperty(RPROP_SCREEN_SPACE), 0);
        image = endFrame();
        // The pixel array: blue and white at its bottom, red at its top.
        EXPECT_EQ(image.at(20, 470), kBlue) << frame;
        EXPECT_EQ(image.at(280, 470), kWhite) << frame;
        EXPECT_EQ(image.at(20, 290), kRed) << frame;
        EXPECT_EQ(image.at(20, 270), kBlack) << frame; // above it
    }
    // The proportional picture upright in the bottom-right quarter.
    EXPECT_EQ(image.at(360, 280), kRed);
    EXPECT_EQ(image.at(600, 280), kGreen);
    EXPECT_EQ(image.at(360, 450), kBlue);
    EXPECT_EQ(image.at(600, 450), kWhite);
    // The indexed picture covers the top-left quarter and nothing beyond it.
    EXPECT_EQ(image.at(330, 100), kBlack);
    EXPECT_EQ(image.at(100, 250), kBlack);
    // The red ones: pixels 330 to 393 by 10 to 57, and 576 to the right edge by 120 to 179.
    expectRedRectangle(image, 330, 10, 394, 58);
    expectRedRectangle(image, 576, 120, 640, 180);
}

// Pixel rectangles are halved as whole pixels: a 641-pixel window has 320 pixels a side.
class OddWindow : public WindowScenario {
public:
    OddWindow() : WindowScenario(641, 481) {}
};

TEST_F(OddWindow, PictureRectanglesUseWholePixelHalves) {
    unsigned red = 0;
    const auto bitmap = assets::writeColorBitmap({64, 48, std::vector(64 * 48, 0xFF0000u)});
    ASSERT_EQ(GFX_LoadPicture("red.bmp", bitmap.data(), 0, &red, 0), 0);
    GFX_BeginRender();
    GFX_SetRenderProperty(RPROP_DEPTH_TEST, 0); // whichever depth phase this frame is in
    EXPECT_EQ(GFX_DrawPicture(red, 160, 120, 320, 240), 0);
    // With halves of 320 and 240 it spans 160.25 to 480.75 across and 120.25 to 360.75 down;
    // exact halves of 320.5 and 240.5 would end it a pixel sooner.
    expectRedRectangle(endFrame(), 160, 120, 481, 361);
}

TEST_F(Pictures, TextFromTheFontBitmap) {
    // The top half of the A's cell white, so that a glyph drawn upside down shows.
    auto font = assets::makeGlyphFont(8); // 128 x 128
    for (int y = 8 * 4 + 1; y < 8 * 4 + 4; ++y)
        for (int x = 8 + 1; x < 8 + 7; ++x)
            font.pixels[static_cast<std::size_t>(y) * 128 + x] = 0xFFFFFF;
    unsigned id = 0;
    ASSERT_EQ(load("font.bmp", assets::writeColorBitmap(font), false, &id), 0);
    ASSERT_EQ(GFX_SetFontBitmap(id), 0);
    EXPECT_EQ(GFX_SetFontSize(0.25f, 0.25f), 0);
    GFX_SetClearColor(0, 0, 1, 1);
    GFX_BeginRender();
    GFX_BeginText();
    // Four cells of 160 x 120 pixels from (0, 120). A space takes its place and draws nothing;
    // 0xC1 counts as -63, whose cell the texture's repeat folds onto cell 209; a line feed is
    // the glyph of cell 10.
    EXPECT_EQ(GFX_PrintByProportion(0, 0.25f, "A \xC1\n"), 0);
    GFX_EndText();
    const Image image = endFrame();
    // Added to the blue of the clear colour, the middle of each cell shows its glyph's colour
    // with full blue.
    EXPECT_EQ(image.at(80, 150), kWhite); // the top of the A
    const int codes[4] = {'A', -1, 209, '\n'};
    for (int i = 0; i < 4; ++i) {
        const std::uint32_t c = codes[i] < 0 ? 0 : assets::glyphColor(std::uint8_t(codes[i]));
        EXPECT_EQ(image.at(160 * i + 80, 210),
                  (Rgb{std::uint8_t(c >> 16), std::uint8_t(c >> 8), 255}))
            << "cell " << i;
    }
    EXPECT_EQ(image.at(80, 300), kBlue); // below the text
}

} // namespace
} // namespace scenario
