// Fuzz target: bitmap header parsing and the stretch, into the size the texture rule would
// pick and into a second size taken from the file size field.
#include "formats/bitmap_decoder.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace {

std::int32_t floorPowerOfTwo(std::uint32_t v) {
    std::int32_t p = 1;
    while (static_cast<std::uint32_t>(p) * 2 <= v && p < (1 << 30)) {
        p *= 2;
    }
    return p;
}

void draw(const std::uint8_t* data, std::size_t size, const norvgl::BitmapInfo& info,
          std::int32_t width, std::int32_t height) {
    std::vector<std::uint8_t> out(static_cast<std::size_t>(width) * height * 4, 0x5A);
    norvgl::stretchBitmap(data, size, info, width, height, out.data());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    norvgl::BitmapInfo info;
    if (norvgl::parseBitmap(data, size, info) != norvgl::BitmapResult::Ok) {
        return 0;
    }
    // Large images take long to decode without reaching new code, so the fuzzer keeps to
    // 16384 pixels; larger uncompressed ones still meet the decoder's checks, which refuse
    // them cheaply (RLE would decode them whole first).
    const std::uint64_t pixels = static_cast<std::uint64_t>(info.width) * info.absHeight;
    if (pixels > (1u << 14)) {
        if (info.compression == 0) {
            std::uint8_t dummy[4];
            norvgl::stretchBitmap(data, size, info, 1, 1, dummy);
        }
        return 0;
    }
    const auto w = static_cast<std::uint32_t>(info.width);
    const std::uint32_t h = info.absHeight;
    if (w <= 256 && h <= 256) {
        const std::int32_t pw = floorPowerOfTwo(w);
        const std::int32_t ph = floorPowerOfTwo(h);
        const std::int32_t side = pw == ph ? pw : 2 * (pw > ph ? pw : ph);
        if (side <= 256) {
            draw(data, size, info, side, side);
        }
    } else {
        draw(data, size, info, info.width, static_cast<std::int32_t>(h));
    }
    draw(data, size, info, static_cast<std::int32_t>(info.fileSize % 97 + 1),
         static_cast<std::int32_t>(info.fileSize % 89 + 1));
    return 0;
}
