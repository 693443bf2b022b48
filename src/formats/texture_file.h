// 3DF texture files: parses the four header lines and converts every stored level from its
// 16-bit texels to packed RGB, bounded by the length of the data. No GL here.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace norvgl {

inline constexpr char kTdfMagicLine[] = "3df v1.1\n";
inline constexpr std::size_t kTdfMagicLength = 9;
// A header line holds at most this many bytes including its line feed.
inline constexpr std::size_t kTdfMaxLineLength = 256;
// The working record has this many level slots; files that announce more are refused.
inline constexpr std::int32_t kTdfMaxLevels = 8;

enum class TdfFormat : std::int32_t {
    Rgb565 = 1,
    Argb8332 = 2,
};

// Every refusal but OutOfMemory is invalid file data to the loader.
enum class TdfResult {
    Ok,
    BadHeader,     // a line too long or unterminated, wrong magic, unknown format, failed scan
    BadSizes,      // small <= 0, a1 or a2 of 0, level 0 not a power of two in both directions
    TooManyLevels, // the level count rule gives more than kTdfMaxLevels
    Truncated,     // the data ends before the last texel of the last level read
    OutOfMemory,   // a level buffer could not be allocated
};

// What the four header lines say, and what follows from it.
struct TdfHeader {
    TdfFormat format = TdfFormat::Rgb565;
    std::int32_t small = 0; // "lod range: small large"
    std::int32_t large = 0;
    std::int32_t a1 = 0; // "aspect ratio: a1 a2"
    std::int32_t a2 = 0;
    std::int32_t width = 0;  // large / a2
    std::int32_t height = 0; // large / a1
    std::int32_t levelCount = 0;
    std::size_t dataOffset = 0; // first texel byte, just after the fourth line feed
};

// One converted level: rows of `width` texels, 3 bytes each (R, G, B), packed without row
// padding, the file's last row first. The buffer has room for 4 bytes a texel, so an
// upload that pads rows to 4 bytes never reads past it; the bytes past 3 × texels are 0.
struct TdfLevel {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::unique_ptr<std::uint8_t[]> rgb;
};

struct TdfImage {
    TdfHeader header;
    TdfLevel levels[kTdfMaxLevels];
};

// Size of level `level` from the size of level 0: each step halves a dimension, never below 1.
std::int32_t tdfLevelDimension(std::int32_t size0, std::int32_t level);

// The level count rule: 1 level, plus one for every halving of large / 2 that stays above
// `small`. Only meaningful for small > 0.
std::int32_t tdfLevelCount(std::int32_t small, std::int32_t large);

// Texel conversion of one 16-bit texel (most significant byte first in the file).
void tdfConvertTexel(TdfFormat format, std::uint16_t texel, std::uint8_t rgb[3]);

// Parses and checks the header lines of `data` (`size` bytes). Ok fills `header` completely,
// including the level count and the data offset. Does not look at the texels.
TdfResult parseTdfHeader(const std::uint8_t* data, std::size_t size, TdfHeader& header);

// Parses the header and converts every level that it announces. Ok fills `image`; any other
// result leaves `image` holding no level buffers.
TdfResult readTextureFile(const std::uint8_t* data, std::size_t size, TdfImage& image);

} // namespace norvgl
