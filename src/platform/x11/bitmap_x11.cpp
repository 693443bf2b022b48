// Bitmap conversion on Linux: the system has no device-independent bitmaps, so the driver's
// own decoder draws the image with the stretch that the Windows default mode gives.
#include "formats/bitmap_decoder.h"
#include "platform/platform.h"

namespace norvgl::platform {

bool convertBitmap(const std::uint8_t* file, std::size_t size, const BitmapInfo& info,
                   std::int32_t width, std::int32_t height, std::uint8_t* out) {
    // A bitmap the decoder refuses leaves the zeroed target, as a failed draw into a fresh
    // bitmap section does.
    stretchBitmap(file, size, info, width, height, out);
    return true;
}

} // namespace norvgl::platform
