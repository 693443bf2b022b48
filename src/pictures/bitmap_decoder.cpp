// Windows bitmaps: header checks, palette and RLE decoding, stretch into 32-bit pixels.
#include "pictures/bitmap_decoder.h"

namespace norvgl {

// Not written yet: refuses everything.
BitmapResult parseBitmap(const std::uint8_t*, std::size_t, BitmapInfo&) {
    return BitmapResult::NotBitmap;
}

BitmapResult stretchBitmap(const std::uint8_t*, std::size_t, const BitmapInfo&, std::int32_t,
                           std::int32_t, std::uint8_t*) {
    return BitmapResult::NotBitmap;
}

} // namespace norvgl
