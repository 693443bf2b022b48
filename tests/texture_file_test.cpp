// 3DF reader: texel conversions, level counts and sizes, row order, header refusals, short data.
#include "picture_assets.h"
#include "formats/texture_file.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace norvgl {
namespace {

using assets::tdfHeader;
using assets::writeTdf;

std::vector<std::uint8_t> bytesOf(const std::string& text) {
    return std::vector<std::uint8_t>(text.begin(), text.end());
}

TdfResult read(const std::vector<std::uint8_t>& file, TdfImage& image) {
    return readTextureFile(file.data(), file.size(), image);
}

TdfResult readHeader(const std::string& text) {
    TdfHeader header;
    const auto file = bytesOf(text);
    return parseTdfHeader(file.data(), file.size(), header);
}

// R, G, B of texel (x, y) of a level, y counted in file order (first file row = 0).
std::vector<int> texel(const TdfLevel& level, int x, int fileRow) {
    const int row = level.height - 1 - fileRow;
    const std::uint8_t* p = level.rgb.get() + (row * level.width + x) * 3;
    return {p[0], p[1], p[2]};
}

std::vector<int> convertOne(bool rgb565, std::uint8_t high, std::uint8_t low) {
    TdfImage image;
    const auto file = writeTdf(rgb565, 1, 1, 1, 1, {{static_cast<std::uint16_t>(high << 8 | low)}});
    EXPECT_EQ(read(file, image), TdfResult::Ok);
    return texel(image.levels[0], 0, 0);
}

TEST(TextureFile, TexelConversionsOfBothFormats) {
    EXPECT_EQ(convertOne(true, 0xF8, 0x1F), (std::vector<int>{248, 0, 248}));
    EXPECT_EQ(convertOne(true, 0xFF, 0xFF), (std::vector<int>{248, 252, 248}));
    EXPECT_EQ(convertOne(true, 0x07, 0xE0), (std::vector<int>{0, 252, 0}));
    EXPECT_EQ(convertOne(true, 0x00, 0x01), (std::vector<int>{0, 0, 8}));
    EXPECT_EQ(convertOne(false, 0x00, 0xE3), (std::vector<int>{252, 0, 255}));
    EXPECT_EQ(convertOne(false, 0x00, 0xFF), (std::vector<int>{252, 252, 255}));
    EXPECT_EQ(convertOne(false, 0x00, 0x25), (std::vector<int>{36, 36, 85}));
    // The alpha byte is not carried into the colour.
    EXPECT_EQ(convertOne(false, 0xFF, 0xE3), convertOne(false, 0x12, 0xE3));
}

// A wide one is read level by level below; a tall one of one level here.
TEST(TextureFile, SizesFollowLodRangeAndAspect) {
    TdfHeader header;
    const auto h = bytesOf(tdfHeader(false, 128, 256, 1, 2));
    ASSERT_EQ(parseTdfHeader(h.data(), h.size(), header), TdfResult::Ok);
    EXPECT_EQ(header.format, TdfFormat::Argb8332);
    EXPECT_EQ(header.width, 128);
    EXPECT_EQ(header.height, 256);
    EXPECT_EQ(header.levelCount, 1);
}

TEST(TextureFile, FirstFileRowBecomesLastBufferRow) {
    // 2 × 2: file rows (red, green) then (blue, white).
    const std::vector<std::uint16_t> texels = {0xF800, 0x07E0, 0x001F, 0xFFFF};
    TdfImage image;
    ASSERT_EQ(read(writeTdf(true, 2, 2, 1, 1, {texels}), image), TdfResult::Ok);
    const std::uint8_t* buffer = image.levels[0].rgb.get();
    // The buffer's first row holds the file's second row.
    EXPECT_EQ(std::vector<int>(buffer, buffer + 6), (std::vector<int>{0, 0, 248, 248, 252, 248}));
    EXPECT_EQ(std::vector<int>(buffer + 6, buffer + 12), (std::vector<int>{248, 0, 0, 0, 252, 0}));
    // Room for 4 bytes a texel, the rest zero.
    EXPECT_EQ(std::vector<int>(buffer + 12, buffer + 16), (std::vector<int>{0, 0, 0, 0}));
}

TEST(TextureFile, EveryAnnouncedLevelIsReadInOrderAndNoMore) {
    // 8 × 4, lod 2 8: levels 8 × 4, 4 × 2 (2 levels); a third level follows but is not read.
    std::vector<std::vector<std::uint16_t>> levels(3);
    levels[0].assign(32, 0xF800);
    levels[1].assign(8, 0x07E0);
    levels[1][0] = 0x001F; // first texel of the first file row of level 1
    levels[2].assign(2, 0xFFFF);
    TdfImage image;
    ASSERT_EQ(read(writeTdf(true, 2, 8, 2, 1, levels), image), TdfResult::Ok);
    ASSERT_EQ(image.header.levelCount, 2);
    EXPECT_EQ(image.levels[0].width, 8);
    EXPECT_EQ(image.levels[0].height, 4);
    EXPECT_EQ(texel(image.levels[0], 7, 3), (std::vector<int>{248, 0, 0}));
    EXPECT_EQ(image.levels[1].width, 4);
    EXPECT_EQ(image.levels[1].height, 2);
    EXPECT_EQ(texel(image.levels[1], 0, 0), (std::vector<int>{0, 0, 248}));
    EXPECT_EQ(texel(image.levels[1], 1, 0), (std::vector<int>{0, 252, 0}));
    EXPECT_EQ(image.levels[2].rgb, nullptr);
}

TEST(TextureFile, EightLevelsOfAWideTextureEndAtTwoByOne) {
    std::vector<std::vector<std::uint16_t>> levels;
    for (int i = 0, w = 256, h = 128; i<8; ++i, w /= 2, h = h> 1 ? h / 2 : 1) {
        levels.emplace_back(static_cast<std::size_t>(w * h), static_cast<std::uint16_t>(i));
    }
    TdfImage image;
    ASSERT_EQ(read(writeTdf(true, 1, 256, 2, 1, levels), image), TdfResult::Ok);
    ASSERT_EQ(image.header.levelCount, 8);
    EXPECT_EQ(image.levels[6].width, 4);
    EXPECT_EQ(image.levels[6].height, 2);
    EXPECT_EQ(image.levels[7].width, 2);
    EXPECT_EQ(image.levels[7].height, 1);
    EXPECT_EQ(texel(image.levels[7], 1, 0), (std::vector<int>{0, 0, 56})); // texel value 7
}

TEST(TextureFile, MalformedHeaderLinesAreRefused) {
    EXPECT_EQ(readHeader(tdfHeader(true, 1, 8, 1, 1)), TdfResult::Ok);
    const char* const headers[] = {
        "3df v1.1\nrgb565\r\nlod range: 1 8\naspect ratio: 1 1\n",
        "3df v1.0\nrgb565\nlod range: 1 8\naspect ratio: 1 1\n",
        "3df v1.1 \nrgb565\nlod range: 1 8\naspect ratio: 1 1\n",
        "3df v1.1\nRGB565\nlod range: 1 8\naspect ratio: 1 1\n",
        "3df v1.1\nrgb555\nlod range: 1 8\naspect ratio: 1 1\n",
        "3df v1.1\nrgb565\nlod range: 8\naspect ratio: 1 1\n",
        "3df v1.1\nrgb565\nlod range: 1 8\naspect: 1 1\n",
        "3df v1.1\nrgb565\nlod range: 1 x\naspect ratio: 1 1\n",
        "3df v1.1\nrgb565\nlod range: 1 99999999999\naspect ratio: 1 1\n",
        "3df v1.1\nrgb565\nlod range: 1 8\naspect ratio: 1 1", // no fourth line feed
        ""};
    for (const char* header : headers)
        EXPECT_EQ(readHeader(header), TdfResult::BadHeader) << testing::PrintToString(header);
}

TEST(TextureFile, ScansAcceptWhiteSpaceAndTrailingText) {
    EXPECT_EQ(readHeader("3df v1.1\nrgb565\nlod range:  1\t8 extra\naspect ratio:1 +1\r\n"),
              TdfResult::Ok);
}

TEST(TextureFile, LinesAreAtMost256BytesWithTheLineFeed) {
    const std::string head = "3df v1.1\nrgb565\n";
    const std::string tail = "aspect ratio: 1 1\n";
    const std::string value = "lod range: 1 8";
    const auto lodLine = [&](std::size_t bytes) {
        return value + std::string(bytes - 1 - value.size(), ' ') + "\n";
    };
    EXPECT_EQ(readHeader(head + lodLine(256) + tail), TdfResult::Ok);
    EXPECT_EQ(readHeader(head + lodLine(257) + tail), TdfResult::BadHeader);
}

TEST(TextureFile, HeaderValuesItCannotHandleAreRefused) {
    EXPECT_EQ(readHeader(tdfHeader(true, 0, 8, 1, 1)), TdfResult::BadSizes);
    EXPECT_EQ(readHeader(tdfHeader(true, -4, 8, 1, 1)), TdfResult::BadSizes);
    EXPECT_EQ(readHeader(tdfHeader(true, 1, 8, 0, 1)), TdfResult::BadSizes);
    EXPECT_EQ(readHeader(tdfHeader(true, 1, 8, 1, 0)), TdfResult::BadSizes);
    EXPECT_EQ(readHeader(tdfHeader(true, 1, 100, 1, 1)), TdfResult::BadSizes);
    EXPECT_EQ(readHeader(tdfHeader(true, 1, 96, 3, 1)), TdfResult::BadSizes);
    EXPECT_EQ(readHeader(tdfHeader(true, 1, 0, 1, 1)), TdfResult::BadSizes);
    EXPECT_EQ(readHeader(tdfHeader(true, 1, 16, 32, 1)), TdfResult::BadSizes); // height 0
    EXPECT_EQ(readHeader(tdfHeader(true, 1, 512, 1, 1)), TdfResult::TooManyLevels);
    EXPECT_EQ(readHeader(tdfHeader(true, 2, 512, 1, 1)), TdfResult::Ok);
}

TEST(TextureFile, DataShorterThanItsLevelsIsRefused) {
    // lod 2 8, aspect 1 1: levels 8 × 8 and 4 × 4, 2 × (64 + 16) bytes.
    std::vector<std::vector<std::uint16_t>> levels = {std::vector<std::uint16_t>(64, 1),
                                                      std::vector<std::uint16_t>(16, 2)};
    auto file = writeTdf(true, 2, 8, 1, 1, levels);
    TdfImage image;
    ASSERT_EQ(read(file, image), TdfResult::Ok);
    file.pop_back();
    EXPECT_EQ(read(file, image), TdfResult::Truncated);
    for (const TdfLevel& level : image.levels) {
        EXPECT_EQ(level.rgb, nullptr);
    }
    const auto headerOnly = bytesOf(tdfHeader(true, 2, 8, 1, 1));
    EXPECT_EQ(read(headerOnly, image), TdfResult::Truncated);
}

} // namespace
} // namespace norvgl
