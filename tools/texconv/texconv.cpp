// Texture converter: writes 3DF texture files from a PNG or raw RGB image (either texel
// format, with mip levels made by 2 × 2 averages) and turns a 3DF level back into a PNG.
#include "picture_assets.h"
#include "formats/texture_file.h"
#include "png_io.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

using norvgl::assets::RgbImage;

int usage() {
    std::fprintf(stderr,
                 "usage: norvgl_texconv to3df rgb565|argb8332 LEVELS INPUT OUTPUT.3df [W H]\n"
                 "       norvgl_texconv topng INPUT.3df OUTPUT.png [LEVEL]\n"
                 "INPUT is a PNG file, or raw 8-bit RGB rows (top row first) when W and H are\n"
                 "given. Sides must be powers of two; LEVELS counts the stored levels, 1 to 8.\n");
    return 2;
}

bool parseInt(const char* text, long low, long high, std::int32_t& value) {
    char* end = nullptr;
    const long parsed = std::strtol(text, &end, 10);
    if (end == text || *end != '\0' || parsed < low || parsed > high) {
        return false;
    }
    value = static_cast<std::int32_t>(parsed);
    return true;
}

bool powerOfTwo(std::int32_t v) {
    return v > 0 && (v & (v - 1)) == 0;
}

int toTdf(int argc, char** argv) {
    if (argc != 6 && argc != 8) {
        return usage();
    }
    const std::string format = argv[2];
    if (format != "rgb565" && format != "argb8332") {
        return usage();
    }
    std::int32_t levels = 0;
    if (!parseInt(argv[3], 1, norvgl::kTdfMaxLevels, levels)) {
        return usage();
    }
    RgbImage image;
    std::string error;
    if (argc == 8) {
        if (!parseInt(argv[6], 1, 32768, image.width) ||
            !parseInt(argv[7], 1, 32768, image.height)) {
            return usage();
        }
        std::vector<std::uint8_t> raw;
        const std::size_t count = static_cast<std::size_t>(image.width) * image.height;
        if (!norvgl::assets::readFile(argv[4], raw) || raw.size() != 3 * count) {
            std::fprintf(stderr, "texconv: %s: cannot read %zu bytes of raw RGB\n", argv[4],
                         3 * count);
            return 1;
        }
        for (std::size_t i = 0; i < count; ++i) {
            image.pixels.push_back(norvgl::assets::rgb(raw[3 * i], raw[3 * i + 1], raw[3 * i + 2]));
        }
    } else if (!norvgl::texconv::readPng(argv[4], image, error)) {
        std::fprintf(stderr, "texconv: %s: %s\n", argv[4], error.c_str());
        return 1;
    }
    if (!powerOfTwo(image.width) || !powerOfTwo(image.height)) {
        std::fprintf(stderr, "texconv: %d x %d: sides must be powers of two\n", image.width,
                     image.height);
        return 1;
    }
    const std::int32_t large = image.width > image.height ? image.width : image.height;
    if ((large >> (levels - 1)) < 1) {
        std::fprintf(stderr, "texconv: %d levels do not fit a side of %d\n", levels, large);
        return 1;
    }
    const auto bytes = norvgl::assets::writeTdfFromImage(image, format == "rgb565", levels);
    if (!norvgl::assets::writeFile(argv[5], bytes)) {
        std::fprintf(stderr, "texconv: cannot write %s\n", argv[5]);
        return 1;
    }
    return 0;
}

int toPng(int argc, char** argv) {
    if (argc != 4 && argc != 5) {
        return usage();
    }
    std::int32_t levelIndex = 0;
    if (argc == 5 && !parseInt(argv[4], 0, norvgl::kTdfMaxLevels - 1, levelIndex)) {
        return usage();
    }
    std::vector<std::uint8_t> bytes;
    if (!norvgl::assets::readFile(argv[2], bytes)) {
        std::fprintf(stderr, "texconv: cannot read %s\n", argv[2]);
        return 1;
    }
    norvgl::TdfImage tdf;
    const norvgl::TdfResult result = norvgl::readTextureFile(bytes.data(), bytes.size(), tdf);
    if (result != norvgl::TdfResult::Ok) {
        std::fprintf(stderr, "texconv: %s: not a readable 3DF file (%d)\n", argv[2],
                     static_cast<int>(result));
        return 1;
    }
    if (levelIndex >= tdf.header.levelCount) {
        std::fprintf(stderr, "texconv: %s has %d levels\n", argv[2], tdf.header.levelCount);
        return 1;
    }
    const norvgl::TdfLevel& level = tdf.levels[levelIndex];
    // The level holds the file's last row first; the PNG shows the file's order.
    RgbImage image;
    image.width = level.width;
    image.height = level.height;
    for (std::int32_t y = level.height - 1; y >= 0; --y) {
        const std::uint8_t* row = level.rgb.get() + static_cast<std::size_t>(y) * level.width * 3;
        for (std::int32_t x = 0; x < level.width; ++x) {
            image.pixels.push_back(norvgl::assets::rgb(row[3 * x], row[3 * x + 1], row[3 * x + 2]));
        }
    }
    std::string error;
    if (!norvgl::texconv::writePng(argv[3], image, error)) {
        std::fprintf(stderr, "texconv: %s: %s\n", argv[3], error.c_str());
        return 1;
    }
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    if (argc >= 2 && std::string(argv[1]) == "to3df") {
        return toTdf(argc, argv);
    }
    if (argc >= 2 && std::string(argv[1]) == "topng") {
        return toPng(argc, argv);
    }
    return usage();
}
