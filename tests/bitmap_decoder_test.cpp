// Bitmap decoder: header sizes, palettes and the colours-used rule, RLE against
// the same image uncompressed, RLE escapes, the default-mode stretch, and every refusal.
#include "picture_assets.h"
#include "formats/bitmap_decoder.h"

#include <gtest/gtest.h>

#include <vector>

namespace norvgl {
namespace {

using assets::assembleBitmap;
using assets::BitmapFields;
using assets::IndexedImage;
using assets::rgb;
using assets::RgbImage;
using assets::RleWriter;
using assets::writeColorBitmap;
using assets::writeIndexedBitmap;

// A decoded target as colours, top row first (the decoder stores the bottom row first).
struct Decoded {
    BitmapResult result = BitmapResult::Ok;
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::vector<std::uint8_t> raw;
    std::uint32_t at(std::int32_t x, std::int32_t y) const {
        const std::uint8_t* p = &raw[(static_cast<std::size_t>(height - 1 - y) * width + x) * 4];
        return rgb(p[2], p[1], p[0]);
    }
    std::vector<std::uint32_t> pixels() const {
        std::vector<std::uint32_t> out;
        for (std::int32_t y = 0; y < height; ++y) {
            for (std::int32_t x = 0; x < width; ++x) {
                out.push_back(at(x, y));
            }
        }
        return out;
    }
};

constexpr std::uint8_t kUntouched = 0x5A;
constexpr std::uint32_t kUntouchedColor = 0x5A5A5A;

Decoded decode(const std::vector<std::uint8_t>& file, std::int32_t width, std::int32_t height) {
    Decoded d;
    d.width = width;
    d.height = height;
    if (width > 0 && height > 0) {
        d.raw.assign(static_cast<std::size_t>(width) * height * 4, kUntouched);
    }
    BitmapInfo info;
    d.result = parseBitmap(file.data(), file.size(), info);
    if (d.result == BitmapResult::Ok) {
        d.result = stretchBitmap(file.data(), file.size(), info, width, height, d.raw.data());
    }
    return d;
}

// The file with a little-endian field of `bytes` bytes at `offset` replaced.
std::vector<std::uint8_t> setField(std::vector<std::uint8_t> file, std::size_t offset,
                                   std::uint32_t value, int bytes = 4) {
    for (int i = 0; i < bytes; ++i) {
        file[offset + i] = static_cast<std::uint8_t>(value >> (8 * i));
    }
    return file;
}

BitmapResult parse(const std::vector<std::uint8_t>& file) {
    BitmapInfo info;
    return parseBitmap(file.data(), file.size(), info);
}

std::vector<std::uint32_t> testPalette() {
    std::vector<std::uint32_t> palette;
    for (std::uint32_t i = 0; i < 256; ++i) {
        palette.push_back(rgb(i, 255 - i, (i * 37) & 255) | (i == 0 ? 0x000040u : 0u));
    }
    return palette;
}

IndexedImage patterned(std::int32_t w, std::int32_t h, int colors) {
    IndexedImage image{w, h, {}};
    for (std::int32_t y = 0; y < h; ++y) {
        for (std::int32_t x = 0; x < w; ++x) {
            // Runs and varied stretches both, so the encoder uses every kind of code.
            const int v = x < w / 2 ? (y % 3) : (x * 7 + y * 3);
            image.pixels.push_back(static_cast<std::uint8_t>(v % colors));
        }
    }
    return image;
}

std::vector<std::uint32_t> expectedColors(const IndexedImage& image,
                                          const std::vector<std::uint32_t>& palette) {
    std::vector<std::uint32_t> out;
    for (std::uint8_t index : image.pixels) {
        out.push_back(palette[index]);
    }
    return out;
}

TEST(BitmapDecoder, AHeaderLongerThan40BytesMovesTheBitsAlongWithIt) {
    BitmapFields fields;
    fields.headerSize = 108;
    fields.width = 1;
    fields.height = 1;
    fields.bits = 24;
    const auto file = assembleBitmap(fields, {}, {0x10, 0x20, 0x30, 0});
    EXPECT_EQ(decode(file, 1, 1).at(0, 0), rgb(0x30, 0x20, 0x10));
}

TEST(BitmapDecoder, ColoursUsedLocatesTheBitsAndIndicesBeyondThePaletteAreBlack) {
    const auto palette = testPalette();
    IndexedImage image{4, 1, {0, 3, 4, 200}};
    const Decoded d = decode(writeIndexedBitmap(image, palette, 8, 0, false, 4), 4, 1);
    ASSERT_EQ(d.result, BitmapResult::Ok);
    EXPECT_EQ(d.pixels(), (std::vector<std::uint32_t>{palette[0], palette[3], 0, 0}));
    // Colours used above the depth's count: only the first 16 entries serve, and the bits
    // still follow all of them.
    IndexedImage four{2, 1, {15, 1}};
    const Decoded d4 = decode(writeIndexedBitmap(four, palette, 4, 0, false, 20), 2, 1);
    ASSERT_EQ(d4.result, BitmapResult::Ok);
    EXPECT_EQ(d4.pixels(), (std::vector<std::uint32_t>{palette[15], palette[1]}));
}

TEST(BitmapDecoder, RleDecodesToTheSameImageAsUncompressed) {
    const auto palette = testPalette();
    for (int bits : {4, 8}) {
        for (std::int32_t width : {1, 2, 7, 40, 300}) {
            const IndexedImage image = patterned(width, 6, bits == 4 ? 16 : 256);
            const auto plain = writeIndexedBitmap(image, palette, bits, 0);
            const auto rle = writeIndexedBitmap(image, palette, bits, bits == 4 ? 2 : 1);
            const Decoded a = decode(plain, width, 6);
            const Decoded b = decode(rle, width, 6);
            ASSERT_EQ(b.result, BitmapResult::Ok) << bits << " " << width;
            EXPECT_EQ(b.pixels(), expectedColors(image, palette)) << bits << " " << width;
            EXPECT_EQ(a.pixels(), b.pixels());
            // Stretched as well: a fully covered RLE image draws like the uncompressed one.
            EXPECT_EQ(decode(plain, 16, 16).pixels(), decode(rle, 16, 16).pixels());
            EXPECT_LT(rle.size(), plain.size() + 64);
        }
    }
}

TEST(BitmapDecoder, RleEscapesSkipPixelsThatKeepTheTargetAtTheSameSize) {
    const auto palette = testPalette();
    for (bool four : {false, true}) {
        RleWriter rle(four);
        const std::uint8_t a = four ? 0x11 : 1;
        const std::uint8_t b = four ? 0x22 : 2;
        rle.run(2, a);           // bottom row: x 0, 1
        rle.delta(3, 1);         // to x 5 of the row above
        rle.absolute({3, 4, 5}); // x 5, 6, 7 (odd length: padded)
        rle.run(9, b);           // clipped at the right edge (width 10)
        rle.endOfLine();         // third row from the bottom
        rle.run(1, a);
        rle.endOfBitmap(); // the top row is never reached
        rle.run(4, b);     // after the end: ignored
        BitmapFields fields;
        fields.width = 10;
        fields.height = 4;
        fields.bits = four ? 4 : 8;
        fields.compression = four ? kBitmapRle4 : kBitmapRle8;
        const auto file = assembleBitmap(
            fields,
            std::vector<std::uint32_t>(palette.begin(), palette.begin() + (four ? 16 : 256)),
            rle.bytes());
        const Decoded d = decode(file, 10, 4);
        ASSERT_EQ(d.result, BitmapResult::Ok);
        const std::uint32_t u = kUntouchedColor;
        const std::uint32_t pa = palette[1];
        const std::uint32_t pb = palette[2];
        EXPECT_EQ(d.at(0, 3), pa);
        EXPECT_EQ(d.at(1, 3), pa);
        EXPECT_EQ(d.at(2, 3), u);
        for (int x = 0; x < 5; ++x) {
            EXPECT_EQ(d.at(x, 2), u) << x;
        }
        EXPECT_EQ(d.at(5, 2), palette[3]);
        EXPECT_EQ(d.at(7, 2), palette[5]);
        EXPECT_EQ(d.at(8, 2), pb);
        EXPECT_EQ(d.at(9, 2), pb);
        EXPECT_EQ(d.at(0, 1), pa);
        EXPECT_EQ(d.at(1, 1), u);
        for (int x = 0; x < 10; ++x) {
            EXPECT_EQ(d.at(x, 0), u) << x;
        }
        // Stretched, unreached pixels take palette entry 0.
        const Decoded s = decode(file, 20, 8);
        ASSERT_EQ(s.result, BitmapResult::Ok);
        EXPECT_EQ(s.at(0, 0), palette[0]);
        EXPECT_EQ(s.at(4, 7), palette[0]);
        EXPECT_EQ(s.at(0, 7), pa);
    }
}

TEST(BitmapDecoder, RleRunsWithoutAClosingEscapeAreNotDrawnAtTheSameSize) {
    // The last run is decoded but, with no escape after it, never drawn unstretched.
    RleWriter rle(false);
    rle.run(2, 7);
    rle.endOfLine();
    rle.run(3, 9);
    BitmapFields fields;
    fields.width = 3;
    fields.height = 2;
    fields.compression = kBitmapRle8;
    const auto palette = testPalette();
    const auto file = assembleBitmap(fields, palette, rle.bytes());
    const Decoded d = decode(file, 3, 2);
    ASSERT_EQ(d.result, BitmapResult::Ok);
    EXPECT_EQ(d.pixels(),
              (std::vector<std::uint32_t>{kUntouchedColor, kUntouchedColor, kUntouchedColor,
                                          palette[7], palette[7], kUntouchedColor}));
    const Decoded s = decode(file, 3, 4);
    EXPECT_EQ(s.at(2, 0), palette[9]);
}

TEST(BitmapDecoder, FourBitRleRunsEndingInsideAByteAlsoSetItsOtherPixel) {
    // A 3-pixel run of indices 1, 2 sets pixel 3 to 2 as well; only a stretch shows it, as
    // the pixel lies outside the run.
    RleWriter rle(true);
    rle.run(3, 0x12);
    rle.endOfLine();
    BitmapFields fields;
    fields.width = 6;
    fields.height = 1;
    fields.bits = 4;
    fields.compression = kBitmapRle4;
    const auto palette = testPalette();
    const auto file = assembleBitmap(
        fields, std::vector<std::uint32_t>(palette.begin(), palette.begin() + 16), rle.bytes());
    EXPECT_EQ(decode(file, 6, 1).at(3, 0), kUntouchedColor);
    EXPECT_EQ(decode(file, 6, 2).pixels(),
              (std::vector<std::uint32_t>{palette[1], palette[2], palette[1], palette[2],
                                          palette[0], palette[0], palette[1], palette[2],
                                          palette[1], palette[2], palette[0], palette[0]}));
}

TEST(BitmapDecoder, EnlargingRepeatsPixelsAnchoredAtTheTopLeft) {
    // Target pixel (x, y) shows source pixel (x * w / W, y * h / H), rows counted from the top.
    const RgbImage two{2, 2, {rgb(10, 0, 0), rgb(20, 0, 0), rgb(30, 0, 0), rgb(40, 0, 0)}};
    const RgbImage one{1, 1, {rgb(1, 2, 3)}};
    const struct {
        const RgbImage& source;
        std::int32_t width, height;
    } cases[] = {{two, 4, 4}, {two, 3, 3}, {two, 3, 5}, {one, 3, 2}};
    for (const auto& c : cases) {
        std::vector<std::uint32_t> expected;
        for (std::int32_t y = 0; y < c.height; ++y)
            for (std::int32_t x = 0; x < c.width; ++x)
                expected.push_back(
                    c.source.at(x * c.source.width / c.width, y * c.source.height / c.height));
        EXPECT_EQ(decode(writeColorBitmap(c.source, 24), c.width, c.height).pixels(), expected)
            << c.source.width << " to " << c.width << " x " << c.height;
    }
}

TEST(BitmapDecoder, ShrinkingAndsThePixelsThatFallTogether) {
    const std::uint32_t p0 = 0xF0F0F0;
    const std::uint32_t p1 = 0x3C3CFF;
    const std::uint32_t p2 = 0x0F0F0F;
    RgbImage row{3, 1, {p0, p1, p2}};
    // 3 to 2: the first two meet in the first target pixel.
    EXPECT_EQ(decode(writeColorBitmap(row, 24), 2, 1).pixels(),
              (std::vector<std::uint32_t>{p0 & p1, p2}));
    EXPECT_EQ(decode(writeColorBitmap(row, 24), 1, 1).pixels(),
              (std::vector<std::uint32_t>{p0 & p1 & p2}));
    RgbImage column{1, 3, {p0, p1, p2}};
    EXPECT_EQ(decode(writeColorBitmap(column, 24), 1, 2).pixels(),
              (std::vector<std::uint32_t>{p0 & p1, p2}));
    // Shrinking one way while enlarging the other still ANDs the merged rows.
    EXPECT_EQ(decode(writeColorBitmap(column, 24), 2, 2).pixels(),
              (std::vector<std::uint32_t>{p0 & p1, p0 & p1, p2, p2}));
    // A black pixel swallows its neighbours when shrunk.
    RgbImage checker{4, 4, {}};
    for (int i = 0; i < 16; ++i) {
        checker.pixels.push_back((i + i / 4) % 2 == 0 ? 0xFFFFFF : 0);
    }
    EXPECT_EQ(decode(writeColorBitmap(checker, 24), 2, 2).pixels(),
              std::vector<std::uint32_t>(4, 0));
}

TEST(BitmapDecoder, ParseRefusesWhatTheReadersCannotHandle) {
    const auto good = writeColorBitmap(RgbImage{2, 2, {1, 2, 3, 4}}, 24); // 70 bytes
    EXPECT_EQ(parse(good), BitmapResult::Ok);
    // One field of the good file changed: where it is, its size and its new value.
    const struct {
        std::size_t offset;
        int bytes;
        std::uint32_t value;
        BitmapResult result;
    } rows[] = {
        {1, 1, 'A', BitmapResult::NotBitmap},
        {2, 4, 53, BitmapResult::FileTooSmall},
        {2, 4, 71, BitmapResult::Truncated},
        {14, 4, 39, BitmapResult::HeaderTooSmall},
        {14, 4, 40 + 17, BitmapResult::HeaderTooLarge},
        {14, 4, 0xFFFFFFF0, BitmapResult::HeaderTooLarge},
        {18, 4, 0, BitmapResult::BadWidth},
        {18, 4, static_cast<std::uint32_t>(-3), BitmapResult::BadWidth},
        {22, 4, 0, BitmapResult::BadHeight},
    };
    for (const auto& r : rows)
        EXPECT_EQ(parse(setField(good, r.offset, r.value, r.bytes)), r.result)
            << "at " << r.offset << ": " << r.value;
    BitmapInfo info;
    EXPECT_EQ(parseBitmap(nullptr, 0, info), BitmapResult::NotBitmap);
    // A file size field below the data's length bounds the reads; above it, it is refused.
    auto longer = good;
    longer.resize(good.size() + 10, 0xEE);
    EXPECT_EQ(parse(longer), BitmapResult::Ok);
    auto shorter = good;
    shorter.pop_back();
    EXPECT_EQ(parse(shorter), BitmapResult::Truncated);
    EXPECT_EQ(parse(std::vector<std::uint8_t>{'B', 'M', 0}), BitmapResult::Truncated);
}

TEST(BitmapDecoder, DrawingRefusalsLeaveTheTargetUntouched) {
    const auto palette = testPalette();
    const IndexedImage image = patterned(4, 4, 16);
    auto expectRefused = [](const std::vector<std::uint8_t>& file, BitmapResult expected,
                            std::int32_t w = 4, std::int32_t h = 4) {
        const Decoded d = decode(file, w, h);
        EXPECT_EQ(d.result, expected);
        for (std::uint8_t byte : d.raw) {
            ASSERT_EQ(byte, kUntouched);
        }
    };
    RgbImage colors{4, 4, std::vector<std::uint32_t>(16, 0x123456)};
    for (int bits : {16, 32}) {
        const auto file = writeColorBitmap(colors, bits);
        EXPECT_EQ(parse(file), BitmapResult::Ok); // the facts are still there to report
        expectRefused(file, BitmapResult::UnsupportedBits);
    }
    BitmapFields fields;
    fields.width = 4;
    fields.height = 4;
    fields.bits = 1;
    expectRefused(assembleBitmap(fields, {0, 0xFFFFFF}, std::vector<std::uint8_t>(16, 0)),
                  BitmapResult::UnsupportedBits);

    auto plain = writeIndexedBitmap(image, palette, 8);
    auto rle8 = writeIndexedBitmap(image, palette, 8, 1);
    auto rle4 = writeIndexedBitmap(image, palette, 4, 2);
    expectRefused(setField(rle8, 30, kBitmapRle4), BitmapResult::UnsupportedCompression);
    expectRefused(setField(rle4, 30, kBitmapRle8), BitmapResult::UnsupportedCompression);
    expectRefused(setField(plain, 30, 3), BitmapResult::UnsupportedCompression);
    expectRefused(setField(rle8, 22, static_cast<std::uint32_t>(-4)),
                  BitmapResult::UnsupportedCompression); // RLE rows are stored bottom first
    expectRefused(setField(rle8, 34, 0), BitmapResult::MissingImageSize);
    expectRefused(setField(rle8, 34, static_cast<std::uint32_t>(rle8.size())),
                  BitmapResult::PixelsTruncated);
    expectRefused(setField(plain, 26, 0, 2), BitmapResult::BadPlanes);
    expectRefused(setField(plain, 46, 1000), BitmapResult::PaletteTruncated);
    expectRefused(setField(plain, 46, 0xFFFFFFFF), BitmapResult::PaletteTruncated);
    // One byte short of the last row, with the file size field saying so.
    plain.pop_back();
    expectRefused(setField(plain, 2, static_cast<std::uint32_t>(plain.size())),
                  BitmapResult::PixelsTruncated);
    // Sizes: a two-byte RLE stream may announce any image; the target must be drawable.
    RleWriter end(false);
    end.endOfBitmap();
    BitmapFields huge;
    huge.width = 30000;
    huge.height = 30000;
    huge.compression = kBitmapRle8;
    expectRefused(assembleBitmap(huge, palette, end.bytes()), BitmapResult::TooLarge);
    const auto small = writeIndexedBitmap(image, palette, 8);
    expectRefused(small, BitmapResult::BadTarget, 0, 4);
    expectRefused(small, BitmapResult::BadTarget, 4, -1);
}

TEST(BitmapDecoder, RleStreamsCutShortStopWithoutReadingPastTheirEnd) {
    // Every prefix of an RLE file (with sizes fixed up) decodes without error.
    const auto palette = testPalette();
    for (int bits : {4, 8}) {
        const auto full =
            writeIndexedBitmap(patterned(13, 5, 16), palette, bits, bits == 4 ? 2 : 1);
        BitmapInfo info;
        ASSERT_EQ(parseBitmap(full.data(), full.size(), info), BitmapResult::Ok);
        for (std::size_t cut = info.bitsOffset + 1; cut < full.size(); ++cut) {
            std::vector<std::uint8_t> file(full.begin(), full.begin() + cut);
            const auto size = static_cast<std::uint32_t>(cut);
            const auto stream = static_cast<std::uint32_t>(cut - info.bitsOffset);
            for (int i = 0; i < 4; ++i) {
                file[2 + i] = static_cast<std::uint8_t>(size >> (8 * i));
                file[34 + i] = static_cast<std::uint8_t>(stream >> (8 * i));
            }
            EXPECT_EQ(decode(file, 13, 5).result, BitmapResult::Ok) << cut;
        }
    }
}

} // namespace
} // namespace norvgl
