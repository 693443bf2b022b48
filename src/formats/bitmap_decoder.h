// Windows bitmaps: reads the file and info headers from memory and draws the image, stretched
// to a target size, into 32-bit pixels the way the system's default stretch mode does.
// Decodes 4, 8 and 24 bits per pixel, palettes, BI_RGB, BI_RLE8 and BI_RLE4, both row orders.
#pragma once

#include <cstddef>
#include <cstdint>

namespace norvgl {

inline constexpr std::size_t kBitmapFileHeaderSize = 14;
inline constexpr std::uint32_t kBitmapInfoHeaderSize = 40;
// File header and info header: nothing shorter can be a bitmap we read.
inline constexpr std::uint32_t kBitmapMinFileSize = 54;

// Source and target images are limited to this many pixels: an RLE stream of two bytes can
// announce any size, and the decoded indices are held whole while they are stretched.
inline constexpr std::uint64_t kBitmapMaxPixels = std::uint64_t{1} << 26;

inline constexpr std::uint32_t kBitmapRgb = 0;  // BI_RGB
inline constexpr std::uint32_t kBitmapRle8 = 1; // BI_RLE8
inline constexpr std::uint32_t kBitmapRle4 = 2; // BI_RLE4

enum class BitmapResult {
    Ok,
    NotBitmap,              // does not begin with "BM"
    FileTooSmall,           // the file size field is below kBitmapMinFileSize
    Truncated,              // the data is shorter than its file size field
    HeaderTooSmall,         // info header size below 40
    HeaderTooLarge,         // info header reaches past the file size
    BadWidth,               // width 0 or below
    BadHeight,              // height 0
    UnsupportedBits,        // bits per pixel other than 4, 8 or 24
    UnsupportedCompression, // not BI_RGB, or an RLE kind that does not fit the depth or row order
    PaletteTruncated,       // the palette reaches past the file size
    PixelsTruncated,        // the pixel rows (BI_RGB) reach past the file size
    BadPlanes,              // planes 0 in an uncompressed bitmap
    MissingImageSize,       // an RLE bitmap whose image size field is 0
    TooLarge,               // more than kBitmapMaxPixels source or target pixels
    BadTarget,              // target width or height 0 or below
    OutOfMemory,            // a working buffer could not be allocated
};

// The header facts: what the file says, and where its parts lie.
struct BitmapInfo {
    std::uint32_t fileSize = 0;   // from the file header; never above the data's length
    std::uint32_t headerSize = 0; // info header size, at least 40
    std::int32_t width = 0;       // as stored, above 0
    std::int32_t height = 0;      // as stored: negative for rows stored top first
    std::uint32_t absHeight = 0;  // |height|
    std::uint16_t planes = 0;
    std::uint16_t bitsPerPixel = 0; // any value; only 4, 8 and 24 can be drawn
    std::uint32_t compression = 0;
    std::uint32_t imageSize = 0;
    std::uint32_t colorsUsed = 0;
    // Palette entries by the colours-used rule: colours used when not 0, else 2^bits below 24
    // bits, else 0.
    std::uint64_t paletteColors = 0;
    std::uint64_t paletteOffset = 0; // from the start of the file: 14 + header size
    std::uint64_t bitsOffset = 0;    // palette offset + 4 × palette colours
    bool topDown = false;
};

// What the driver makes of a bitmap: a texture when textures are on and neither side is
// above kBitmapMaxTextureSide, else a pixel array of the bitmap's own size. Texture sides are
// square: equal powers of two (each side rounded down) stay, otherwise the side is twice the
// larger one, unless one of them reaches kBitmapMaxTextureSide: then the texture gets no image.
inline constexpr std::uint32_t kBitmapMaxTextureSide = 256;
enum class BitmapTarget { Texture, TextureWithoutImage, PixelArray };
struct BitmapPlan {
    BitmapTarget target = BitmapTarget::PixelArray;
    std::uint32_t width = 0; // of the texture, or of the pixel array
    std::uint32_t height = 0;
};
BitmapPlan planBitmap(std::uint32_t width, std::uint32_t height, bool texturesOn);

// Whether the palette and, for uncompressed rows, every row lie inside the file size (the
// system's conversion is not told where the data ends), and the size is one a pixel array can
// have: a run-length stream of a few bytes can announce any size. `info` from parseBitmap.
bool bitmapBitsFit(const BitmapInfo& info);

// Reads and checks the two headers of `data` (`size` bytes, the whole file). Ok fills `info`;
// it does not check the depth, the compression, the palette or the pixel bits, so that a
// caller can still report the facts of a bitmap it cannot draw.
BitmapResult parseBitmap(const std::uint8_t* data, std::size_t size, BitmapInfo& info);

// Draws the whole image of a parsed bitmap into `out`, a target of `targetWidth` ×
// `targetHeight` pixels, 4 bytes each (blue, green, red, 0), bottom row first, as a 32-bit
// bottom-up DIB section holds them. Enlarging repeats source pixels; shrinking combines the
// pixels that fall together with a bitwise AND, as the default stretch mode (black on white)
// does; the steps are anchored at the top row and the left column. Palette indices beyond
// the palette give black. RLE pixels that the stream does not reach (end of line, end of
// bitmap, deltas, a stream that ends early) keep what `out` held when the target has the
// bitmap's own size, and take palette entry 0 when the image is stretched. Any result other
// than Ok leaves `out` untouched, as a failed StretchDIBits leaves a fresh (zeroed) section.
// `info` must come from parseBitmap on the same data; one that does not fit it is refused
// as Truncated.
BitmapResult stretchBitmap(const std::uint8_t* data, std::size_t size, const BitmapInfo& info,
                           std::int32_t targetWidth, std::int32_t targetHeight, std::uint8_t* out);

} // namespace norvgl
