// Light and material entries of the render queue.
#pragma once

#include <cstdint>

namespace norvgl {

int addLight(std::uint32_t light, std::int32_t type, float x, float y, float z);
int setLightPosition(std::uint32_t light, float x, float y, float z);
int setLightColor(std::uint32_t light, const float ambient[3], const float diffuse[3],
                  const float specular[3]);
int removeLight(std::uint32_t light);
// Twelve floats: ambient, diffuse, specular RGBA. A state request of the render queue.
int setMaterialColor(const float colors[12]);

} // namespace norvgl
