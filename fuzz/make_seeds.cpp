// Seed corpus for the fuzz targets, made with our asset writer: 3DF files of both formats
// and several level counts, bitmaps of every depth, row order and compression.
#include "picture_assets.h"

#include <cstdio>
#include <string>

using namespace norvgl::assets;

namespace {

RgbImage gradient(std::int32_t w, std::int32_t h) {
    RgbImage image{w, h, {}};
    for (std::int32_t y = 0; y < h; ++y) {
        for (std::int32_t x = 0; x < w; ++x) {
            image.pixels.push_back(rgb(x * 255 / w, y * 255 / h, (x ^ y) * 16));
        }
    }
    return image;
}

IndexedImage stripes(std::int32_t w, std::int32_t h, int colors) {
    IndexedImage image{w, h, {}};
    for (std::int32_t y = 0; y < h; ++y) {
        for (std::int32_t x = 0; x < w; ++x) {
            image.pixels.push_back(static_cast<std::uint8_t>((x / 3 + y) % colors));
        }
    }
    return image;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: fuzz_seeds TDF_DIR BITMAP_DIR\n");
        return 2;
    }
    const std::string tdf = argv[1];
    const std::string bmp = argv[2];
    int n = 0;
    for (int format = 0; format < 2; ++format) {
        writeFile(tdf + "/level1_" + std::to_string(format),
                  writeTdfFromImage(gradient(8, 8), format == 0, 1));
        writeFile(tdf + "/levels4_" + std::to_string(format),
                  writeTdfFromImage(gradient(16, 4), format == 0, 4));
        writeFile(tdf + "/levels3_" + std::to_string(format),
                  writeTdfFromImage(gradient(2, 8), format == 0, 3));
        n += 3;
    }
    std::vector<std::uint32_t> palette;
    for (int i = 0; i < 256; ++i) {
        palette.push_back(rgb(i, 255 - i, i * 7));
    }
    const std::int32_t sizes[][2] = {{5, 3}, {16, 16}, {33, 7}};
    for (const auto& s : sizes) {
        const std::string tag = std::to_string(s[0]) + "x" + std::to_string(s[1]);
        writeFile(bmp + "/rgb24_" + tag, writeColorBitmap(gradient(s[0], s[1]), 24, false));
        writeFile(bmp + "/rgb24_top_" + tag, writeColorBitmap(gradient(s[0], s[1]), 24, true));
        writeFile(bmp + "/rgb16_" + tag, writeColorBitmap(gradient(s[0], s[1]), 16, false));
        writeFile(bmp + "/pal8_" + tag, writeIndexedBitmap(stripes(s[0], s[1], 200), palette, 8));
        writeFile(bmp + "/pal8_used_" + tag,
                  writeIndexedBitmap(stripes(s[0], s[1], 12), palette, 8, 0, true, 10));
        writeFile(bmp + "/pal4_" + tag, writeIndexedBitmap(stripes(s[0], s[1], 16), palette, 4));
        writeFile(bmp + "/rle8_" + tag, writeIndexedBitmap(stripes(s[0], s[1], 5), palette, 8, 1));
        writeFile(bmp + "/rle4_" + tag, writeIndexedBitmap(stripes(s[0], s[1], 7), palette, 4, 2));
        n += 8;
    }
    for (int four = 0; four < 2; ++four) {
        RleWriter rle(four != 0);
        rle.run(4, 0x21);
        rle.delta(2, 1);
        rle.absolute({1, 2, 3, 4, 5});
        rle.endOfLine();
        rle.run(30, 0x43);
        rle.endOfBitmap();
        BitmapFields fields;
        fields.width = 12;
        fields.height = 5;
        fields.bits = four != 0 ? 4 : 8;
        fields.compression = four != 0 ? 2 : 1;
        palette.resize(four != 0 ? 16 : 256);
        writeFile(bmp + "/rle_codes_" + std::to_string(four),
                  assembleBitmap(fields, palette, rle.bytes()));
        ++n;
    }
    std::printf("fuzz_seeds: %d files\n", n);
    return 0;
}
