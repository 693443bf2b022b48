// Window captures as plain RGB pixels with a top-left origin, stored as binary PPM files so
// that the captures of two systems can be compared byte for byte.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace scenario {

struct Rgb {
    std::uint8_t r = 0, g = 0, b = 0;
    bool operator==(const Rgb&) const = default;
};

struct Image {
    int width = 0;
    int height = 0;
    std::vector<Rgb> pixels;

    bool empty() const { return pixels.empty(); }
    Rgb at(int x, int y) const { return pixels[static_cast<std::size_t>(y) * width + x]; }
    Rgb& at(int x, int y) { return pixels[static_cast<std::size_t>(y) * width + x]; }

    bool savePpm(const std::string& path) const {
        std::FILE* file = std::fopen(path.c_str(), "wb");
        if (!file)
            return false;
        std::fprintf(file, "P6\n%d %d\n255\n", width, height);
        const bool written =
            std::fwrite(pixels.data(), sizeof(Rgb), pixels.size(), file) == pixels.size();
        return std::fclose(file) == 0 && written;
    }

    // Reads what savePpm wrote; false for anything else.
    bool loadPpm(const std::string& path) {
        std::FILE* file = std::fopen(path.c_str(), "rb");
        if (!file)
            return false;
        int maxValue = 0;
        bool ok = std::fscanf(file, "P6 %d %d %d", &width, &height, &maxValue) == 3 &&
                  maxValue == 255 && width > 0 && height > 0 && width <= 16384 && height <= 16384 &&
                  std::fgetc(file) == '\n';
        if (ok) {
            pixels.resize(static_cast<std::size_t>(width) * height);
            ok = std::fread(pixels.data(), sizeof(Rgb), pixels.size(), file) == pixels.size();
        }
        std::fclose(file);
        return ok;
    }
};
static_assert(sizeof(Rgb) == 3);

inline constexpr Rgb kBlack = {0, 0, 0};
inline constexpr Rgb kWhite = {255, 255, 255};
inline constexpr Rgb kRed = {255, 0, 0};
inline constexpr Rgb kGreen = {0, 255, 0};
inline constexpr Rgb kBlue = {0, 0, 255};

} // namespace scenario
