// One level of a GL texture read back as RGBA bytes, for tests that check what a picture
// became: row 0 is the one at t = 0. A level without an image reads as 0 x 0.
#pragma once

#include "scenario_gl.h"

#include <array>
#include <cstdint>
#include <vector>

namespace scenario {

struct Level {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> rgba;
    const std::uint8_t* at(int x, int y) const {
        return &rgba[4 * (static_cast<std::size_t>(y) * width + x)];
    }
    // Texel `i` in row order, as four numbers.
    std::array<int, 4> texel(std::size_t i) const {
        return {rgba[4 * i], rgba[4 * i + 1], rgba[4 * i + 2], rgba[4 * i + 3]};
    }
};

inline Level readLevel(GLuint texture, int lod) {
    Level level;
    glBindTexture(GL_TEXTURE_2D, texture);
    glGetTexLevelParameteriv(GL_TEXTURE_2D, lod, GL_TEXTURE_WIDTH, &level.width);
    glGetTexLevelParameteriv(GL_TEXTURE_2D, lod, GL_TEXTURE_HEIGHT, &level.height);
    level.rgba.resize(static_cast<std::size_t>(level.width) * level.height * 4);
    if (!level.rgba.empty()) {
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        glGetTexImage(GL_TEXTURE_2D, lod, GL_RGBA, GL_UNSIGNED_BYTE, level.rgba.data());
    }
    return level;
}

} // namespace scenario
