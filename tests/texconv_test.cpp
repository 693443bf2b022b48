// The texture converter end to end: raw RGB or PNG in, 3DF out (read back with the 3DF
// reader), and a 3DF level back out as PNG.
#include "picture_assets.h"
#include "formats/texture_file.h"
#include "png_io.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace norvgl {
namespace {

using assets::rgb;
using assets::RgbImage;

int texconv(const std::string& arguments) {
    const std::string command = std::string(NORVGL_TEXCONV) + " " + arguments + " 2>/dev/null";
    return std::system(command.c_str());
}

std::string temp(const std::string& name) {
    return testing::TempDir() + "texconv_" + name;
}

RgbImage sample(std::int32_t w, std::int32_t h) {
    RgbImage image{w, h, {}};
    for (std::int32_t y = 0; y < h; ++y) {
        for (std::int32_t x = 0; x < w; ++x) {
            image.pixels.push_back(rgb(x * 37 + 5, y * 61 + 3, (x * y * 13) ^ 0xA5));
        }
    }
    return image;
}

// Level `index` of a 3DF file as colours in file order.
RgbImage readLevel(const std::string& path, int index, TdfHeader* header = nullptr) {
    std::vector<std::uint8_t> bytes;
    EXPECT_TRUE(assets::readFile(path, bytes));
    TdfImage tdf;
    EXPECT_EQ(readTextureFile(bytes.data(), bytes.size(), tdf), TdfResult::Ok);
    if (header != nullptr) {
        *header = tdf.header;
    }
    const TdfLevel& level = tdf.levels[index];
    RgbImage image{level.width, level.height, {}};
    for (std::int32_t y = level.height - 1; y >= 0; --y) {
        const std::uint8_t* p = level.rgb.get() + static_cast<std::size_t>(y) * level.width * 3;
        for (std::int32_t x = 0; x < level.width; ++x, p += 3) {
            image.pixels.push_back(rgb(p[0], p[1], p[2]));
        }
    }
    return image;
}

TEST(Texconv, RawRgbToRgb565WithMipLevels) {
    const RgbImage image = sample(8, 4);
    std::vector<std::uint8_t> raw;
    for (std::uint32_t c : image.pixels) {
        raw.insert(raw.end(), {static_cast<std::uint8_t>(c >> 16),
                               static_cast<std::uint8_t>(c >> 8), static_cast<std::uint8_t>(c)});
    }
    ASSERT_TRUE(assets::writeFile(temp("in.rgb"), raw));
    ASSERT_EQ(texconv("to3df rgb565 3 " + temp("in.rgb") + " " + temp("a.3df") + " 8 4"), 0);
    TdfHeader header;
    const RgbImage level0 = readLevel(temp("a.3df"), 0, &header);
    EXPECT_EQ(header.levelCount, 3);
    EXPECT_EQ(header.format, TdfFormat::Rgb565);
    ASSERT_EQ(level0.width, 8);
    ASSERT_EQ(level0.height, 4);
    for (std::size_t i = 0; i < image.pixels.size(); ++i) {
        EXPECT_EQ(level0.pixels[i], image.pixels[i] & 0xF8FCF8) << i;
    }
    // Level 1 is the 2 × 2 average of level 0's source pixels.
    const RgbImage level1 = readLevel(temp("a.3df"), 1);
    ASSERT_EQ(level1.width, 4);
    ASSERT_EQ(level1.height, 2);
    std::uint32_t red = 0;
    for (std::uint32_t c : {image.at(2, 2), image.at(3, 2), image.at(2, 3), image.at(3, 3)}) {
        red += c >> 16;
    }
    EXPECT_EQ(level1.at(1, 1) >> 16, (red / 4) & 0xF8);
    EXPECT_EQ(readLevel(temp("a.3df"), 2).width, 2);
}

TEST(Texconv, PngToArgb8332AndBack) {
    // Colours on the 8332 steps survive the round trip exactly.
    RgbImage image{4, 8, {}};
    for (int i = 0; i < 32; ++i) {
        image.pixels.push_back(rgb((i % 8) * 36, ((i / 4) % 8) * 36, (i % 4) * 85));
    }
    std::string error;
    ASSERT_TRUE(texconv::writePng(temp("in.png"), image, error)) << error;
    ASSERT_EQ(texconv("to3df argb8332 1 " + temp("in.png") + " " + temp("b.3df")), 0);
    EXPECT_EQ(readLevel(temp("b.3df"), 0).pixels, image.pixels);
    ASSERT_EQ(texconv("topng " + temp("b.3df") + " " + temp("out.png")), 0);
    RgbImage back;
    ASSERT_TRUE(texconv::readPng(temp("out.png"), back, error)) << error;
    EXPECT_EQ(back.width, 4);
    EXPECT_EQ(back.height, 8);
    EXPECT_EQ(back.pixels, image.pixels);
}

TEST(Texconv, RefusesWhatItCannotWrite) {
    std::string error;
    ASSERT_TRUE(texconv::writePng(temp("odd.png"), sample(6, 4), error)) << error;
    EXPECT_NE(texconv("to3df rgb565 1 " + temp("odd.png") + " " + temp("c.3df")), 0);
    ASSERT_TRUE(texconv::writePng(temp("small.png"), sample(4, 4), error)) << error;
    EXPECT_NE(texconv("to3df rgb565 4 " + temp("small.png") + " " + temp("c.3df")), 0);
    EXPECT_NE(texconv("to3df rgb555 1 " + temp("small.png") + " " + temp("c.3df")), 0);
    EXPECT_NE(texconv("topng " + temp("small.png") + " " + temp("c.png")), 0);
}

} // namespace
} // namespace norvgl
