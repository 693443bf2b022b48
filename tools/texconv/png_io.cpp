// PNG reading and writing with libpng's simplified interface.
#include "png_io.h"

#include <png.h>

#include <cstring>
#include <vector>

namespace norvgl::texconv {

bool readPng(const std::string& path, assets::RgbImage& image, std::string& error) {
    png_image png;
    std::memset(&png, 0, sizeof png);
    png.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_file(&png, path.c_str()) == 0) {
        error = png.message;
        return false;
    }
    png.format = PNG_FORMAT_RGB;
    std::vector<std::uint8_t> rgb(PNG_IMAGE_SIZE(png));
    if (png_image_finish_read(&png, nullptr, rgb.data(), 0, nullptr) == 0) {
        error = png.message;
        png_image_free(&png);
        return false;
    }
    image.width = static_cast<std::int32_t>(png.width);
    image.height = static_cast<std::int32_t>(png.height);
    image.pixels.resize(static_cast<std::size_t>(png.width) * png.height);
    for (std::size_t i = 0; i < image.pixels.size(); ++i) {
        image.pixels[i] = assets::rgb(rgb[3 * i], rgb[3 * i + 1], rgb[3 * i + 2]);
    }
    return true;
}

bool writePng(const std::string& path, const assets::RgbImage& image, std::string& error) {
    std::vector<std::uint8_t> rgb;
    rgb.reserve(image.pixels.size() * 3);
    for (std::uint32_t c : image.pixels) {
        rgb.push_back(static_cast<std::uint8_t>(c >> 16));
        rgb.push_back(static_cast<std::uint8_t>(c >> 8));
        rgb.push_back(static_cast<std::uint8_t>(c));
    }
    png_image png;
    std::memset(&png, 0, sizeof png);
    png.version = PNG_IMAGE_VERSION;
    png.width = static_cast<png_uint_32>(image.width);
    png.height = static_cast<png_uint_32>(image.height);
    png.format = PNG_FORMAT_RGB;
    if (png_image_write_to_file(&png, path.c_str(), 0, rgb.data(), 0, nullptr) == 0) {
        error = png.message;
        return false;
    }
    return true;
}

} // namespace norvgl::texconv
