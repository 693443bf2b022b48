// Small builders for host geometry in tests: 32-byte host vertices and common shapes.
#pragma once

#include <array>
#include <vector>

namespace nvtest {

struct HostVertex {
    float x, y, z;
    float nx, ny, nz;
    float u, v;
};
static_assert(sizeof(HostVertex) == 32);

// A vertex facing the viewer (host normal along -z).
inline HostVertex vertex(float x, float y, float z, float u = 0, float v = 0) {
    return {x, y, z, 0, 0, -1, u, v};
}

// Counter-clockwise on screen (a front face) around (cx, cy) at depth z.
inline std::array<HostVertex, 3> triangle(float cx, float cy, float z, float size) {
    return {vertex(cx - size, cy - size, z), vertex(cx + size, cy - size, z),
            vertex(cx, cy + size, z)};
}

// Two counter-clockwise triangles covering a square.
inline std::array<HostVertex, 6> square(float cx, float cy, float z, float half) {
    return {vertex(cx - half, cy - half, z), vertex(cx + half, cy - half, z),
            vertex(cx + half, cy + half, z), vertex(cx - half, cy - half, z),
            vertex(cx + half, cy + half, z), vertex(cx - half, cy + half, z)};
}

template <std::size_t N> const float* floats(const std::array<HostVertex, N>& vertices) {
    return &vertices[0].x;
}
inline const float* floats(const std::vector<HostVertex>& vertices) {
    return &vertices[0].x;
}

} // namespace nvtest

#include <cmath>

namespace nvtest {

struct Pixel {
    int x, y;
};

// Where the frame's default camera (45 degree field of view, identity modelview) puts a host
// point in a window of the given size, top-left origin.
inline Pixel project(float x, float y, float z, int width = 640, int height = 480) {
    const double f = 1.0 / std::tan(22.5 * 3.14159265358979323846 / 180.0);
    const double aspect = static_cast<double>(width) / height;
    const double ndcX = f / aspect * x / z;
    const double ndcY = f * y / z;
    return {static_cast<int>((ndcX + 1) * 0.5 * width),
            static_cast<int>((1 - ndcY) * 0.5 * height)};
}

} // namespace nvtest
