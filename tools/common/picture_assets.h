// Writes picture files of our own making: Windows bitmaps of every depth, row order and
// compression (with our own RLE encoder), 3DF texture files, and a glyph-grid font image.
// Used by the tests, the texture converter and the fuzz seed corpus.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace norvgl::assets {

// Colours are 0x00RRGGBB.
inline constexpr std::uint32_t rgb(std::uint32_t r, std::uint32_t g, std::uint32_t b) {
    return (r & 255) << 16 | (g & 255) << 8 | (b & 255);
}

// An image of pixel values, top row first.
template <typename Pixel> struct PixelImage {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::vector<Pixel> pixels;
    Pixel at(std::int32_t x, std::int32_t y) const {
        return pixels[static_cast<std::size_t>(y) * width + x];
    }
};

// Palette indices.
using IndexedImage = PixelImage<std::uint8_t>;
// Colours, 0x00RRGGBB.
using RgbImage = PixelImage<std::uint32_t>;

// The info header's fields as they will be written. `imageSize` 0 writes the size of the
// pixel bits; `fileSize` 0 writes the real file size.
struct BitmapFields {
    std::uint32_t headerSize = 40;
    std::int32_t width = 0;
    std::int32_t height = 0; // negative: rows stored top first
    std::uint16_t planes = 1;
    std::uint16_t bits = 8;
    std::uint32_t compression = 0;
    std::uint32_t imageSize = 0;
    std::uint32_t colorsUsed = 0;
    std::uint32_t fileSize = 0;
};

// File header, info header (padded with zeros to `headerSize`), palette entries and pixel
// bits, exactly as given: no checks, so that malformed files can be made too.
std::vector<std::uint8_t> assembleBitmap(const BitmapFields& fields,
                                         const std::vector<std::uint32_t>& palette,
                                         const std::vector<std::uint8_t>& bits);

// Uncompressed rows of 4- or 8-bit indices or 24-, 16- (5-5-5) or 32-bit colours, each row
// padded to 4 bytes, in the file's row order.
std::vector<std::uint8_t> packIndexRows(const IndexedImage& image, int bits, bool topDown);
std::vector<std::uint8_t> packColorRows(const RgbImage& image, int bits, bool topDown);

// Builds an RLE stream code by code. In 4-bit mode counts are pixels and values hold two
// indices (high nibble first).
class RleWriter {
public:
    explicit RleWriter(bool fourBit) : fourBit_(fourBit) {}
    void run(std::uint8_t count, std::uint8_t value);
    // Absolute run of 3 to 255 indices, padded to a 16-bit boundary.
    void absolute(const std::vector<std::uint8_t>& indices);
    void endOfLine();
    void delta(std::uint8_t right, std::uint8_t up);
    void endOfBitmap();
    const std::vector<std::uint8_t>& bytes() const { return bytes_; }

private:
    bool fourBit_;
    std::vector<std::uint8_t> bytes_;
};

// Encodes a whole image, bottom row first: repeated indices as runs, varied stretches as
// absolute runs, one end of line per row and an end of bitmap.
std::vector<std::uint8_t> encodeRle(const IndexedImage& image, bool fourBit);

// A complete palette bitmap. `colorsUsed` 0 writes the full 2^bits palette (padded with
// black); otherwise that many entries are written and the field says so. Compression 1 and
// 2 encode with encodeRle (rows bottom first; `topDown` is then ignored).
std::vector<std::uint8_t> writeIndexedBitmap(const IndexedImage& image,
                                             const std::vector<std::uint32_t>& palette, int bits,
                                             std::uint32_t compression = 0, bool topDown = false,
                                             std::uint32_t colorsUsed = 0);
// A complete 24-, 16- or 32-bit uncompressed bitmap.
std::vector<std::uint8_t> writeColorBitmap(const RgbImage& image, int bits = 24,
                                           bool topDown = false);

// 3DF texels.
std::uint16_t packRgb565(std::uint32_t color);
std::uint16_t packArgb8332(std::uint32_t color, std::uint8_t alpha = 255);

// The four header lines.
std::string tdfHeader(bool rgb565, std::int32_t small, std::int32_t large, std::int32_t a1,
                      std::int32_t a2);
// A 3DF file: the header and each level's texels (file order: top row first), big-endian.
std::vector<std::uint8_t> writeTdf(bool rgb565, std::int32_t small, std::int32_t large,
                                   std::int32_t a1, std::int32_t a2,
                                   const std::vector<std::vector<std::uint16_t>>& levels);
// A 3DF file with levels from `image` (level 0) halved by 2 × 2 averages, as many levels as
// the lod range calls for. The image's sides must be powers of two.
std::vector<std::uint8_t> writeTdfFromImage(const RgbImage& image, bool rgb565,
                                            std::int32_t levels);

// A glyph font: 16 × 16 cells of `cell` pixels, code 16 × row + column in each. Every cell
// has a one-pixel black frame and is filled with glyphColor(code).
RgbImage makeGlyphFont(std::int32_t cell);
std::uint32_t glyphColor(std::uint8_t code);

bool writeFile(const std::string& path, const std::vector<std::uint8_t>& bytes);
bool readFile(const std::string& path, std::vector<std::uint8_t>& bytes);
// The whole of a file as text; empty when it cannot be read.
std::string readText(const std::string& path);

} // namespace norvgl::assets
