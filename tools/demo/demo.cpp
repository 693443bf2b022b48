// The demo host: opens an X11 window, attaches the driver to it, reports what the driver says
// about itself and the display, draws a small lit scene through the public API only, and saves
// what reached the window as "demo.png" in the current directory.
#include "norvgl.h"

#include "host_window.h"

#include <cmath>
#include <cstdio>
#include <vector>

namespace {

constexpr int kWidth = 640;
constexpr int kHeight = 480;

struct Vertex {
    float x, y, z, nx, ny, nz, u, v;
};

// A square facing the viewer (host normal along -z), two counter-clockwise triangles.
std::vector<Vertex> square(float half) {
    return {{-half, -half, 0, 0, 0, -1, 0, 0}, {half, -half, 0, 0, 0, -1, 1, 0},
            {half, half, 0, 0, 0, -1, 1, 1},   {-half, -half, 0, 0, 0, -1, 0, 0},
            {half, half, 0, 0, 0, -1, 1, 1},   {-half, half, 0, 0, 0, -1, 0, 1}};
}

// A closed cube of 12 triangles with outward normals, for the lighting to show its faces.
std::vector<Vertex> cube(float h) {
    std::vector<Vertex> out;
    const float faces[6][3] = {{0, 0, -1}, {0, 0, 1}, {-1, 0, 0}, {1, 0, 0}, {0, -1, 0}, {0, 1, 0}};
    for (const auto& n : faces) {
        // Two axes spanning the face, ordered so the winding is counter-clockwise seen from
        // outside in the host's left-handed coordinates.
        float a[3], b[3];
        if (n[0] != 0) {
            a[0] = 0, a[1] = 0, a[2] = n[0];
            b[0] = 0, b[1] = 1, b[2] = 0;
        } else if (n[1] != 0) {
            a[0] = 1, a[1] = 0, a[2] = 0;
            b[0] = 0, b[1] = 0, b[2] = n[1];
        } else {
            a[0] = n[2] < 0 ? 1.0f : -1.0f, a[1] = 0, a[2] = 0;
            b[0] = 0, b[1] = 1, b[2] = 0;
        }
        auto corner = [&](float s, float t) {
            return Vertex{h * (n[0] + s * a[0] + t * b[0]),
                          h * (n[1] + s * a[1] + t * b[1]),
                          h * (n[2] + s * a[2] + t * b[2]),
                          n[0],
                          n[1],
                          n[2],
                          0,
                          0};
        };
        out.insert(out.end(), {corner(-1, -1), corner(1, -1), corner(1, 1), corner(-1, -1),
                               corner(1, 1), corner(-1, 1)});
    }
    return out;
}

void drawScene() {
    GFX_BeginRender();
    GFX_SetRenderProperty(RPROP_CULLING, 1);
    GFX_Look(0, 30, -120, 0, 0, 0, 0, 0, 0);

    // Three lit cubes in their own materials.
    const std::vector<Vertex> box = cube(10);
    const float colours[3][3] = {{0.9f, 0.3f, 0.2f}, {0.3f, 0.8f, 0.3f}, {0.3f, 0.4f, 0.9f}};
    for (int i = 0; i < 3; ++i) {
        GFX_SetMaterialColor(0.15f, 0.15f, 0.15f, colours[i][0], colours[i][1], colours[i][2], 0, 0,
                             0);
        GFX_Translate(-35.0f + 35.0f * static_cast<float>(i), 0, 0);
        GFX_Rotate(0.5f + 0.4f * static_cast<float>(i), 0, 1, 0);
        GFX_DrawPolygon(PRIM_TRIANGLES, static_cast<unsigned>(box.size()), &box[0].x);
        GFX_Untransform(2);
    }

    // A floor of lines.
    std::vector<Vertex> grid;
    for (int i = -5; i <= 5; ++i) {
        const float t = 12.0f * static_cast<float>(i);
        grid.push_back({t, -10, -60, 0, 1, 0, 0, 0});
        grid.push_back({t, -10, 60, 0, 1, 0, 0, 0});
        grid.push_back({-60, -10, t, 0, 1, 0, 0, 0});
        grid.push_back({60, -10, t, 0, 1, 0, 0, 0});
    }
    GFX_SetMaterialColor(0.5f, 0.5f, 0.5f, 0.3f, 0.3f, 0.3f, 0, 0, 0);
    GFX_DrawPolygon(PRIM_LINES, static_cast<unsigned>(grid.size()), &grid[0].x);

    // Two translucent panes in front, blended over the cubes. They keep culling on: groups are
    // drawn by cull mode first, so panes without culling would go out before the cubes.
    GFX_SetRenderProperty(RPROP_ALPHA_BLEND, 1);
    const std::vector<Vertex> pane = square(12);
    GFX_SetMaterialColorEx(0.6f, 0.6f, 0.1f, 0.5f, 0.9f, 0.9f, 0.2f, 0.5f, 0, 0, 0, 0.5f);
    GFX_Translate(-18, 18, -30);
    GFX_DrawPolygon(PRIM_TRIANGLES, 6, &pane[0].x);
    GFX_Untransform(1);
    GFX_SetMaterialColorEx(0.1f, 0.5f, 0.6f, 0.5f, 0.2f, 0.8f, 0.9f, 0.5f, 0, 0, 0, 0.5f);
    GFX_Translate(18, 18, -30);
    GFX_DrawPolygon(PRIM_TRIANGLES, 6, &pane[0].x);
    GFX_Untransform(1);
    GFX_EndRender();
}

} // namespace

int main() {
    norvgl::host::HostWindow window(kWidth, kHeight, "norvgl demo");
    GFX_SetProperty(PROP_WINDOW, window.handle());
    if (GFX_Init() != 0) {
        char title[ERROR_TITLE_SIZE], details[ERROR_DETAILS_SIZE];
        GFX_GetLastError(title, details);
        std::fprintf(stderr, "demo: GFX_Init failed: %s: %s\n", title, details);
        return 1;
    }
    std::printf("driver:  %s\n", reinterpret_cast<const char*>(GFX_GetProperty(PROP_DRIVER_NAME)));
    std::printf("version: %s\n",
                reinterpret_cast<const char*>(GFX_GetProperty(PROP_DRIVER_VERSION)));
    DisplayModeRecord mode;
    while (GFX_EnumResolutions(&mode) == 0)
        std::printf("mode:    %u x %u, %u bits\n", mode.width, mode.height, mode.bits);

    GFX_SetClearColor(0.08f, 0.08f, 0.12f, 0);
    GFX_SetRenderProperty(RPROP_CLEAR_COLOR, 1);
    // Directional, from above and behind the viewer's left shoulder; the light's y goes in
    // negated.
    GFX_AddLight(0, 1, -0.5f, -1, -0.8f);
    GFX_SetLightColor(0, 0.2f, 0.2f, 0.2f, 1, 1, 1, 0, 0, 0);
    drawScene();
    const bool saved = window.capture().savePng("demo.png");
    GFX_Destroy();
    if (!saved) {
        std::fprintf(stderr, "demo: could not save demo.png\n");
        return 1;
    }
    std::printf("picture: demo.png\n");
    return 0;
}
