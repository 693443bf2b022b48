// Fuzz target: the 3DF reader on arbitrary bytes. Every converted level is read back whole,
// so a buffer shorter than its level would show.
#include "formats/texture_file.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    norvgl::TdfImage image;
    if (norvgl::readTextureFile(data, size, image) != norvgl::TdfResult::Ok) {
        return 0;
    }
    unsigned sum = 0;
    for (int i = 0; i < image.header.levelCount; ++i) {
        const norvgl::TdfLevel& level = image.levels[i];
        const std::size_t bytes = 4 * static_cast<std::size_t>(level.width) * level.height;
        for (std::size_t k = 0; k < bytes; ++k) {
            sum += level.rgb[k];
        }
    }
    return sum == 0xFFFFFFFFu ? 1 : 0;
}
