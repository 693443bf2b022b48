// PNG files in and out of RGB images, through libpng. Alpha is dropped on reading; palette,
// grey and 16-bit images are expanded to 8-bit RGB.
#pragma once

#include "picture_assets.h"

#include <string>

namespace norvgl::texconv {

bool readPng(const std::string& path, assets::RgbImage& image, std::string& error);
bool writePng(const std::string& path, const assets::RgbImage& image, std::string& error);

} // namespace norvgl::texconv
