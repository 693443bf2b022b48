// 3DF texture files: header lines, level count and texel conversion, bounded by the data.
#include "pictures/texture_file.h"

namespace norvgl {

std::int32_t tdfLevelDimension(std::int32_t size0, std::int32_t) {
    return size0;
}
std::int32_t tdfLevelCount(std::int32_t, std::int32_t) {
    return 0;
}
void tdfConvertTexel(TdfFormat, std::uint16_t, std::uint8_t rgb[3]) {
    rgb[0] = rgb[1] = rgb[2] = 0;
}

// Not written yet: refuses everything.
TdfResult parseTdfHeader(const std::uint8_t*, std::size_t, TdfHeader&) {
    return TdfResult::BadHeader;
}

TdfResult readTextureFile(const std::uint8_t*, std::size_t, TdfImage&) {
    return TdfResult::BadHeader;
}

} // namespace norvgl
