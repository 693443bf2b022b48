// Pictures of what a window shows: RGB pixels with a top-left origin, saved as PNG (the
// tools' pictures) or as binary PPM (the scenario's captures, compared byte for byte).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace norvgl::host {

struct Rgb {
    std::uint8_t r = 0, g = 0, b = 0;
    bool operator==(const Rgb&) const = default;
};
static_assert(sizeof(Rgb) == 3);

struct Image {
    int width = 0;
    int height = 0;
    std::vector<Rgb> pixels;

    bool empty() const { return pixels.empty(); }
    Rgb at(int x, int y) const { return pixels[static_cast<std::size_t>(y) * width + x]; }
    Rgb& at(int x, int y) { return pixels[static_cast<std::size_t>(y) * width + x]; }

    bool savePpm(const std::string& path) const;
    // Reads what savePpm wrote; false for anything else.
    bool loadPpm(const std::string& path);
    // An 8-bit RGB PNG, compressed with our own deflate encoder so that every system the
    // tools run on writes the same bytes without a compression library.
    bool savePng(const std::string& path) const;
};

// The zlib stream of `data`: fixed-code deflate blocks with matches found through a hash of
// three bytes. Exposed for the PNG writer's tests.
std::vector<std::uint8_t> deflateFixed(const std::vector<std::uint8_t>& data);

} // namespace norvgl::host
