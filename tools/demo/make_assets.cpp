// Writes the demo's pictures and the tools' samples, all drawn by this code: a font of our
// own 5 x 7 glyphs, a particle dot, a sky, a ground (RLE8), a crate (4-bit), a logo, the raw
// stone image that the texture converter turns into a 3DF file with mip levels, and broken
// samples for the checker and the viewer.
//   norvgl_demo_assets DIRECTORY
#include "font5x7.h"
#include "picture_assets.h"

#include <cmath>
#include <cstdio>
#include <string>

namespace {

using namespace norvgl::assets;

constexpr int kCell = 8; // font cells: 16 x 16 of them, 128 x 128 pixels

IndexedImage makeFont() {
    IndexedImage font{16 * kCell, 16 * kCell, {}};
    font.pixels.assign(static_cast<std::size_t>(font.width) * font.height, 0);
    for (int code = norvgl::demo::kFirstGlyph; code <= norvgl::demo::kLastGlyph; ++code) {
        const auto& glyph = norvgl::demo::kGlyphs[code - norvgl::demo::kFirstGlyph];
        const int left = (code % 16) * kCell + 1, top = (code / 16) * kCell;
        for (int y = 0; y < norvgl::demo::kGlyphHeight; ++y)
            for (int x = 0; x < norvgl::demo::kGlyphWidth; ++x)
                if (glyph[y] >> (norvgl::demo::kGlyphWidth - 1 - x) & 1)
                    font.pixels[static_cast<std::size_t>(top + y) * font.width + left + x] = 1;
    }
    return font;
}

// Soft white dot fading to black, which the driver makes transparent at the edge.
RgbImage makeParticle() {
    RgbImage dot{32, 32, {}};
    for (int y = 0; y < 32; ++y)
        for (int x = 0; x < 32; ++x) {
            const double d = std::hypot(x - 15.5, y - 15.5) / 15.5;
            const auto v =
                static_cast<std::uint32_t>(255 * std::max(0.0, 1 - d) * std::max(0.0, 1 - d));
            dot.pixels.push_back(rgb(v, v, v));
        }
    return dot;
}

// Deep blue at the top to a pale haze at the bottom.
RgbImage makeSky() {
    RgbImage sky{64, 64, {}};
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 64; ++x) {
            const double t = y / 63.0;
            sky.pixels.push_back(rgb(static_cast<std::uint32_t>(40 + 150 * t),
                                     static_cast<std::uint32_t>(70 + 140 * t),
                                     static_cast<std::uint32_t>(150 + 90 * t)));
        }
    return sky;
}

// Tiles in two greens with a darker seam: long runs, which RLE8 keeps short.
IndexedImage makeGround() {
    IndexedImage ground{64, 64, {}};
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 64; ++x)
            ground.pixels.push_back(static_cast<std::uint8_t>(
                x % 32 == 0 || y % 32 == 0 ? 2 : ((x / 32 + y / 32) % 2 == 0 ? 0 : 1)));
    return ground;
}

// Planks with dark gaps and a frame: 4 bits per pixel.
IndexedImage makeCrate() {
    IndexedImage crate{64, 64, {}};
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 64; ++x) {
            const bool frame = x < 6 || x >= 58 || y < 6 || y >= 58;
            const bool gap = y % 13 == 0;
            crate.pixels.push_back(static_cast<std::uint8_t>(frame                   ? 3
                                                             : gap                   ? 2
                                                             : (x + y / 13) % 7 == 0 ? 1
                                                                                     : 0));
        }
    return crate;
}

// "norvgl" in the demo font, doubled, in amber on a dark frame; the black around it is clear.
RgbImage makeLogo(const IndexedImage& font) {
    RgbImage logo{128, 32, {}};
    logo.pixels.assign(128 * 32, 0);
    for (int x = 0; x < 128; ++x)
        logo.pixels[x] = logo.pixels[31 * 128 + x] = rgb(90, 90, 110);
    for (int y = 0; y < 32; ++y)
        logo.pixels[y * 128] = logo.pixels[y * 128 + 127] = rgb(90, 90, 110);
    const std::string word = "norvgl";
    for (std::size_t i = 0; i < word.size(); ++i) {
        const int code = static_cast<unsigned char>(word[i]);
        for (int y = 0; y < kCell; ++y)
            for (int x = 0; x < kCell; ++x)
                if (font.at((code % 16) * kCell + x, (code / 16) * kCell + y))
                    for (int k = 0; k < 4; ++k) {
                        const int px = 16 + static_cast<int>(i) * 16 + 2 * x + k % 2;
                        const int py = 9 + 2 * y + k / 2;
                        logo.pixels[static_cast<std::size_t>(py) * 128 + px] =
                            rgb(255, static_cast<std::uint32_t>(150 + 10 * y), 40);
                    }
    }
    return logo;
}

// Stone blocks in courses with dark mortar: raw RGB rows for the texture converter.
std::vector<std::uint8_t> makeStoneRgb() {
    std::vector<std::uint8_t> rgbRows;
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 64; ++x) {
            const int shifted = x + (y / 16 % 2) * 8;
            const bool mortar = y % 16 < 2 || shifted % 16 < 2;
            const int grain = (x * 7 + y * 13) % 5 * 6;
            const auto v = static_cast<std::uint8_t>(mortar ? 50 : 150 + grain);
            rgbRows.insert(rgbRows.end(), {v, static_cast<std::uint8_t>(v - 8),
                                           static_cast<std::uint8_t>(v - 20)});
        }
    return rgbRows;
}

// A model past the reader's limits: a face of four points, a name of 130 characters, and
// last a line of 120 points, far past 1023 characters, whose cut loses the list's end.
std::string brokenModel() {
    std::string text = "#VRML V2.0 utf8\r\nDEF Quad Transform {\r\n  children [ Shape { geometry "
                       "DEF QuadFaces IndexedFaceSet {\r\n    coord Coordinate { point [ 0 0 0, "
                       "1 0 0, 1 1 0, 0 1 0 ] }\r\n    coordIndex [ 0, 1, 2, 3, -1 ]\r\n  } } ]\r\n"
                       "}\r\nDEF " +
                       std::string(130, 'N') +
                       " Transform { }\r\nDEF Strip Transform {\r\n  children [ Shape { geometry "
                       "DEF StripFaces IndexedFaceSet {\r\n    coord Coordinate { point [";
    for (int i = 0; i < 120; ++i)
        text.append(" ").append(std::to_string(i)).append(".0 0.0 0.0,");
    text += " 0 1 0 ]\r\n    }\r\n    coordIndex [ 0, 1, 119, -1 ]\r\n  } } ]\r\n}\r\n";
    return text;
}

bool write(const std::string& dir, const char* name, const std::vector<std::uint8_t>& bytes) {
    if (writeFile(dir + "/" + name, bytes))
        return true;
    std::fprintf(stderr, "norvgl_demo_assets: cannot write %s/%s\n", dir.c_str(), name);
    return false;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: norvgl_demo_assets DIRECTORY\n");
        return 2;
    }
    const std::string dir = argv[1];
    const IndexedImage font = makeFont();
    const std::vector<std::uint8_t> crate = writeIndexedBitmap(
        makeCrate(), {rgb(168, 118, 62), rgb(140, 96, 50), rgb(70, 45, 25), rgb(96, 70, 40)}, 4);
    const std::string model = brokenModel();
    bool ok =
        write(dir, "font.bmp", writeIndexedBitmap(font, {rgb(0, 0, 0), rgb(255, 255, 255)}, 8)) &&
        write(dir, "particle.bmp", writeColorBitmap(makeParticle())) &&
        write(dir, "sky.bmp", writeColorBitmap(makeSky(), 24, true)) &&
        write(dir, "ground.bmp",
              writeIndexedBitmap(makeGround(),
                                 {rgb(70, 120, 50), rgb(85, 140, 60), rgb(50, 80, 35)}, 8, 1)) &&
        write(dir, "crate.bmp", crate) &&
        write(dir, "logo.bmp", writeColorBitmap(makeLogo(font))) &&
        write(dir, "stone.rgb", makeStoneRgb());
    // Broken samples: a bitmap cut short, one of a depth the driver does not draw, and a model
    // whose line, face and name exceed the reader's limits.
    const std::vector<std::uint8_t> cut(crate.begin(),
                                        crate.begin() + static_cast<long>(crate.size() / 2));
    RgbImage small{8, 8, std::vector<std::uint32_t>(64, rgb(200, 30, 30))};
    ok = ok && write(dir, "broken_cut.bmp", cut) &&
         write(dir, "broken_16bit.bmp", writeColorBitmap(small, 16)) &&
         write(dir, "broken_limits.wrl", std::vector<std::uint8_t>(model.begin(), model.end()));
    return ok ? 0 : 1;
}
