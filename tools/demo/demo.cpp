// The demo host: a scene of everything the driver does, through the public header only, the
// way a real host drives it. A textured VRML model with nested transforms and a USE instance,
// lit by two lights; a host mesh (the ground); a 3DF texture with mip levels; pictures in
// pixels and in proportions; bitmap-font text; billboards; fire, smoke, a staggered fountain
// and shards; alpha and additive blending; culling on and off; a moving camera.
//   norvgl_demo [--frames N] [--out FILE.png] [--assets DIR] [--skip NAME,...]
// With --frames it draws N frames, each moving the scene by a fixed 1/30 s, paced to at least
// that much wall clock (particles step by the wall clock), and --out saves the last one.
// Without --frames it runs until the window is closed or Esc is pressed. --skip leaves out
// capabilities by name (see kCapabilities), to see what each one adds.
#include "host_window.h"

#include "norvgl.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr int kWidth = 640;
constexpr int kHeight = 480;
constexpr float kTick = 1.0f / 30.0f; // scene time per frame in --frames mode
constexpr float kSky = 3000.0f;       // half side of the sky box; inside the far plane
constexpr float kPi = 3.14159265f;

const char* const kCapabilities[] = {"model",        "mesh",    "texture3df", "pictures",
                                     "proportional", "text",    "billboards", "fire",
                                     "smoke",        "stagger", "shards",     "alpha",
                                     "culling",      "lights",  "camera",     "backdrop"};

struct Options {
    long frames = -1;
    std::string out;
    std::string assets = NORVGL_DEMO_ASSETS;
    std::set<std::string> skip;
    bool on(const char* capability) const { return skip.count(capability) == 0; }
};

struct Vertex {
    float x, y, z, nx, ny, nz, u, v;
};

// A driver call failed: its title and details, then out.
[[noreturn]] void fail(const char* call) {
    char title[ERROR_TITLE_SIZE] = "", details[ERROR_DETAILS_SIZE] = "";
    GFX_GetLastError(title, details);
    std::fprintf(stderr, "demo: %s failed: %s: %s\n", call, title, details);
    GFX_Destroy();
    std::exit(1);
}

void check(int result, const char* call) {
    if (result != 0)
        fail(call);
}

unsigned loadPicture(const Options& o, const char* name, unsigned flags = 0) {
    unsigned id = 0;
    // Loaded from memory under its bare name: the model and the particles find textures by it.
    std::ifstream in(o.assets + "/" + name, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(in), {}};
    if (bytes.empty()) {
        std::fprintf(stderr, "demo: cannot read %s/%s\n", o.assets.c_str(), name);
        GFX_Destroy();
        std::exit(1);
    }
    check(GFX_LoadPicture(name, bytes.data(), 0, &id, flags), name);
    return id;
}

// Quad as two counter-clockwise triangles (as seen from the side the normal points to).
void quad(std::vector<Vertex>& out, const float (&c)[4][3], const float (&n)[3], float repeat) {
    const float uv[4][2] = {{0, repeat}, {repeat, repeat}, {repeat, 0}, {0, 0}};
    for (int i : {0, 1, 2, 0, 2, 3})
        out.push_back({c[i][0], c[i][1], c[i][2], n[0], n[1], n[2], uv[i][0], uv[i][1]});
}

// The sky: a box around everything, its walls seen from inside. Frames never clear depth, so
// something must write depth on every pixel every frame; the sky and the ground do.
std::vector<Vertex> skyBox() {
    std::vector<Vertex> box;
    // The walls go down below the ground and up to a lid high enough that the view ends on them.
    const float h = kSky, g = -40, top = 1200;
    const float n[3] = {0, 0, 0}; // lit by the ambient term only
    quad(box, {{-h, g, h}, {h, g, h}, {h, top, h}, {-h, top, h}}, n, 1);
    quad(box, {{h, g, -h}, {-h, g, -h}, {-h, top, -h}, {h, top, -h}}, n, 1);
    quad(box, {{-h, g, -h}, {-h, g, h}, {-h, top, h}, {-h, top, -h}}, n, 1);
    quad(box, {{h, g, h}, {h, g, -h}, {h, top, -h}, {h, top, h}}, n, 1);
    quad(box, {{-h, top, h}, {h, top, h}, {h, top, -h}, {-h, top, -h}}, n, 0);
    return box;
}

// The ground, a host mesh: a grid of tiles whose arrays the driver keeps referring to.
struct Ground {
    static constexpr int kCells = 8;
    static constexpr int kSide = kCells + 1;
    float positions[kSide * kSide * 3];
    float normals[kSide * kSide * 3];
    float texCoords[kSide * kSide * 2];
    unsigned short indices[kCells * kCells * 6];
    unsigned id = 0;

    void load(unsigned texture) {
        const float extent = kSky;
        for (int z = 0; z < kSide; ++z)
            for (int x = 0; x < kSide; ++x) {
                const int i = z * kSide + x;
                positions[3 * i] = -extent + 2 * extent * static_cast<float>(x) / kCells;
                positions[3 * i + 1] = 0;
                positions[3 * i + 2] = -extent + 2 * extent * static_cast<float>(z) / kCells;
                normals[3 * i] = 0, normals[3 * i + 1] = 1, normals[3 * i + 2] = 0;
                texCoords[2 * i] = 40.0f * static_cast<float>(x) / kCells; // 1 tile: 75 units
                texCoords[2 * i + 1] = 40.0f * static_cast<float>(z) / kCells;
            }
        unsigned short* out = indices;
        for (int z = 0; z < kCells; ++z)
            for (int x = 0; x < kCells; ++x) {
                const auto a = static_cast<unsigned short>(z * kSide + x);
                const auto b = static_cast<unsigned short>(a + kSide);
                // Counter-clockwise seen from above: the side culling keeps.
                for (unsigned short i :
                     {a, static_cast<unsigned short>(b + 1), b, a,
                      static_cast<unsigned short>(a + 1), static_cast<unsigned short>(b + 1)})
                    *out++ = i;
            }
        check(GFX_LoadMeshIndirect(PRIM_TRIANGLES, kSide * kSide, positions, normals, texCoords,
                                   indices, kCells * kCells * 6, texture, &id),
              "GFX_LoadMeshIndirect");
    }
};

EmitterParams emitter(unsigned count, unsigned flags, float size, float life, float speed,
                      float elevation) {
    EmitterParams p = {};
    p.count = count;
    p.flags = flags;
    p.colorMin[0] = 0.3f, p.colorMin[1] = 0.5f, p.colorMin[2] = 1.0f, p.colorMin[3] = 0.0f;
    p.colorMax[0] = 0.6f, p.colorMax[1] = 1.0f, p.colorMax[2] = 1.0f, p.colorMax[3] = 1.0f;
    p.sizeMin = size * 0.6f, p.sizeMax = size;
    p.ageStepMin = 1.0f / life, p.ageStepMax = 1.6f / life;
    p.azimuthMin = 0, p.azimuthMax = 2 * kPi;
    p.elevationMin = elevation, p.elevationMax = kPi / 2;
    p.speedMin = speed * 0.5f, p.speedMax = speed;
    return p;
}

unsigned newSystem(EmitterParams params) {
    unsigned id = 0;
    check(GFX_NewObject(&id, OBJECT_PARTICLE_SYSTEM, &params), "GFX_NewObject");
    return id;
}

struct Scene {
    unsigned sky = 0, ground = 0, crate = 0, stone = 0, logo = 0, font = 0, particle = 0;
    unsigned model = 0;
    Ground groundMesh;
    unsigned fire = 0, smoke = 0, fountain = 0, shards = 0;
    std::vector<Vertex> skyVertices = skyBox();
};

void load(Scene& s, const Options& o) {
    // Mip levels for the scene's textures; the font and the logo stay crisp without them.
    check(GFX_SetRenderProperty(RPROP_MIPMAPS, 1), "GFX_SetRenderProperty");
    s.sky = loadPicture(o, "sky.bmp");
    s.ground = loadPicture(o, "ground.bmp");
    s.crate = loadPicture(o, "crate.bmp");
    s.particle = loadPicture(o, "particle.bmp");
    // A 3DF file's own levels stop above 1 x 1, which mip-mapped filtering needs: it loads
    // with RPROP_MIPMAPS at 0, its level 0 filtered as nearest.
    check(GFX_SetRenderProperty(RPROP_MIPMAPS, 0), "GFX_SetRenderProperty");
    if (o.on("texture3df")) // without it, the model's stone crate goes untextured
        s.stone = loadPicture(o, "stone.3df");
    s.logo = loadPicture(o, "logo.bmp", PICTURE_NO_MIPMAPS);
    s.font = loadPicture(o, "font.bmp", PICTURE_NO_MIPMAPS);
    check(GFX_SetRenderProperty(RPROP_MIPMAPS, 0), "GFX_SetRenderProperty");
    check(GFX_SetFontBitmap(s.font), "GFX_SetFontBitmap");
    GFX_SetFontSize(16.0f / kWidth, 16.0f / kHeight);

    std::ifstream in(o.assets + "/scene.wrl", std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(in), {}};
    float bounds[6];
    check(GFX_LoadVRML(0, static_cast<unsigned>(text.size()), text.c_str(), &s.model, 0, 0, 0,
                       bounds),
          "GFX_LoadVRML");
    s.groundMesh.load(s.ground);

    // Every kind of particle system. Speeds are per step (1/100 s); gravity is 0.01 per step.
    EmitterParams fire = emitter(160, PF_FIRE | PF_LOOP | PF_NO_GRAVITY, 8, 60, 0.3f, 1.35f);
    s.fire = newSystem(fire);
    EmitterParams smoke = emitter(90, PF_SMOKE | PF_LOOP | PF_STAGGER, 12, 150, 0.08f, 1.3f);
    smoke.colorMax[3] = 0.5f;
    s.smoke = newSystem(smoke);
    EmitterParams fountain = emitter(120, PF_LOOP | PF_STAGGER, 4, 90, 0.55f, 1.25f);
    s.fountain = newSystem(fountain);
    EmitterParams shards = emitter(100, PF_SHARDS | PF_LOOP, 2, 120, 0.45f, 0.9f);
    shards.colorMin[0] = 0.9f, shards.colorMin[1] = 0.8f, shards.colorMin[2] = 0.2f;
    s.shards = newSystem(shards);
}

void lights(const Options& o) {
    // A white sun from above and behind the camera's start; the light's y goes in negated.
    check(GFX_AddLight(0, 1, -0.4f, -1.0f, -0.6f), "GFX_AddLight");
    GFX_SetLightColor(0, 0.35f, 0.35f, 0.38f, 0.85f, 0.82f, 0.75f, 0.2f, 0.2f, 0.2f);
    if (o.on("lights")) {
        // An orange lamp beside the tower, without fall-off.
        check(GFX_AddLight(1, 0, 60, 30, -40), "GFX_AddLight");
        GFX_SetLightColor(1, 0, 0, 0, 0.9f, 0.45f, 0.1f, 0, 0, 0);
    }
}

void drawFrame(const Scene& s, const Options& o, long frame, float time, float frameMs) {
    GFX_BeginRender();
    const float angle = o.on("camera") ? 0.35f * time : 0.0f;
    GFX_Look(150 * std::sin(angle - 0.5f), 45, -150 * std::cos(angle - 0.5f), 0, 22, 0, 0, 0, 0);

    if (o.on("backdrop")) {
        // Bright enough under the ambient light alone: material colours may exceed 1.
        GFX_SetMaterialColor(1.7f, 1.7f, 1.7f, 0, 0, 0, 0, 0, 0);
        GFX_SelectTexture(s.sky);
        GFX_DrawPolygon(PRIM_TRIANGLES, static_cast<unsigned>(s.skyVertices.size()),
                        &s.skyVertices[0].x);
        GFX_SelectTexture(0);
    }
    GFX_SetRenderProperty(RPROP_CULLING, 1);
    if (o.on("mesh"))
        GFX_DrawObject(s.groundMesh.id, 0, 0, 0);
    if (o.on("model")) {
        GFX_SetMaterialColor(0.4f, 0.4f, 0.4f, 1, 1, 1, 0.3f, 0.3f, 0.3f);
        GFX_DrawObject(s.model, 0, 0, 0);
        // A second tower, turning, under its own transforms.
        GFX_Translate(-55, 0, 35);
        GFX_Rotate(0.8f * time, 0, 1, 0);
        GFX_Scale(0.6f, 0.6f, 0.6f);
        GFX_DrawObject(s.model, 0, 0, 0);
        GFX_Untransform(3);
    }

    // Two banners with their backs to the camera: culling hides the second.
    const float n[3] = {0, 0, 1};
    std::vector<Vertex> banner;
    quad(banner, {{8, 0, 0}, {-8, 0, 0}, {-8, 12, 0}, {8, 12, 0}}, n, 1);
    GFX_SelectTexture(s.crate);
    GFX_SetMaterialColor(1.2f, 1.2f, 1.4f, 0.6f, 0.6f, 1.0f, 0, 0, 0);
    GFX_SetRenderProperty(RPROP_CULLING, 0);
    GFX_Translate(40, 5, 30);
    GFX_DrawPolygon(PRIM_TRIANGLES, 6, &banner[0].x);
    GFX_Untransform(1);
    GFX_SetRenderProperty(RPROP_CULLING, o.on("culling") ? 1 : 0);
    GFX_Translate(62, 5, 30);
    GFX_DrawPolygon(PRIM_TRIANGLES, 6, &banner[0].x);
    GFX_Untransform(1);
    GFX_SelectTexture(0);

    if (o.on("alpha")) {
        // A pane of tinted glass, blended by its material's alpha.
        GFX_SetRenderProperty(RPROP_ALPHA_BLEND, 1);
        GFX_SetMaterialColorEx(0.2f, 0.5f, 0.6f, 0.45f, 0.3f, 0.8f, 0.9f, 0.45f, 0, 0, 0, 0.45f);
        std::vector<Vertex> pane;
        quad(pane, {{-20, 0, 0}, {20, 0, 0}, {20, 30, 0}, {-20, 30, 0}}, {0, 0, -1}, 1);
        GFX_Translate(-45, 0, 10);
        GFX_Rotate(0.6f, 0, 1, 0);
        GFX_DrawPolygon(PRIM_TRIANGLES, 6, &pane[0].x);
        GFX_Untransform(2);
        GFX_SetRenderProperty(RPROP_ALPHA_BLEND, 0);
    }
    GFX_SetRenderProperty(RPROP_CULLING, 1);
    GFX_SetMaterialColor(1, 1, 1, 1, 1, 1, 0, 0, 0);

    if (o.on("billboards")) {
        // Four glowing lamps circling the tower.
        GFX_SelectTexture(s.particle);
        for (int i = 0; i < 4; ++i) {
            const float a = 1.2f * time + kPi / 2 * static_cast<float>(i);
            const float lamp[3] = {24 * std::cos(a), 44, 24 * std::sin(a)};
            GFX_DrawBillboard(lamp, 6);
        }
        GFX_SelectTexture(0);
    }
    if (o.on("fire"))
        GFX_DrawParticleSystem(s.fire, 30, 0, -20);
    if (o.on("smoke"))
        GFX_DrawParticleSystem(s.smoke, 30, 18, -20);
    if (o.on("stagger"))
        GFX_DrawParticleSystem(s.fountain, -40, 0, -10);
    if (o.on("shards"))
        GFX_DrawParticleSystem(s.shards, 10, 55, 20);

    // Pictures: the logo at its own size in pixels from the top-left corner, and stretched to
    // a fraction of the window at the bottom right; its black stays clear under alpha blending.
    GFX_SetRenderProperty(RPROP_ALPHA_BLEND, 1);
    if (o.on("pictures"))
        GFX_DrawPicture(s.logo, 8, 8, 0, 0);
    if (o.on("proportional"))
        GFX_DrawPictureByProportion(s.logo, 0.70f, 0.86f, 0.28f, 0.11f);
    GFX_SetRenderProperty(RPROP_ALPHA_BLEND, 0);

    if (o.on("text")) {
        char line[96];
        GFX_BeginText();
        std::snprintf(line, sizeof line, "frame %ld", frame);
        GFX_PrintByProportion(0.02f, 0.12f, line);
        std::snprintf(line, sizeof line, "%.1f ms", static_cast<double>(frameMs));
        GFX_PrintByProportion(0.02f, 0.17f, line);
        std::snprintf(line, sizeof line, "%s %s",
                      reinterpret_cast<const char*>(GFX_GetProperty(PROP_DRIVER_NAME)),
                      reinterpret_cast<const char*>(GFX_GetProperty(PROP_DRIVER_VERSION)));
        GFX_PrintByProportion(0.02f, 0.95f, line);
        GFX_EndText();
    }
    GFX_EndRender();
}

bool parse(int argc, char** argv, Options& o) {
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        const bool value = i + 1 < argc;
        if (arg == "--frames" && value) {
            o.frames = std::strtol(argv[++i], nullptr, 10);
            if (o.frames < 1)
                return false;
        } else if (arg == "--out" && value) {
            o.out = argv[++i];
        } else if (arg == "--assets" && value) {
            o.assets = argv[++i];
        } else if (arg == "--skip" && value) {
            std::string list = argv[++i];
            for (std::size_t start = 0; start <= list.size();) {
                const std::size_t end = std::min(list.find(',', start), list.size());
                const std::string name = list.substr(start, end - start);
                if (std::find(std::begin(kCapabilities), std::end(kCapabilities), name) ==
                    std::end(kCapabilities))
                    return false;
                o.skip.insert(name);
                start = end + 1;
            }
        } else {
            return false;
        }
    }
    return true;
}

} // namespace

int main(int argc, char** argv) {
    Options o;
    if (!parse(argc, argv, o)) {
        std::fprintf(stderr, "usage: norvgl_demo [--frames N] [--out FILE.png] [--assets DIR] "
                             "[--skip NAME,...]\n  NAME:");
        for (const char* name : kCapabilities)
            std::fprintf(stderr, " %s", name);
        std::fprintf(stderr, "\n");
        return 2;
    }
    try {
        norvgl::host::HostWindow window(kWidth, kHeight, "norvgl demo");
        GFX_SetProperty(PROP_WINDOW, window.handle());
        check(GFX_Init(), "GFX_Init");
        std::printf("driver:  %s %s\n",
                    reinterpret_cast<const char*>(GFX_GetProperty(PROP_DRIVER_NAME)),
                    reinterpret_cast<const char*>(GFX_GetProperty(PROP_DRIVER_VERSION)));
        Scene scene;
        load(scene, o);
        lights(o);

        using Clock = std::chrono::steady_clock;
        const auto start = Clock::now();
        auto last = start;
        float frameMs = 0;
        for (long frame = 0; window.poll() && (o.frames < 0 || frame < o.frames); ++frame) {
            const float time = o.frames < 0
                                   ? std::chrono::duration<float>(Clock::now() - start).count()
                                   : kTick * static_cast<float>(frame);
            drawFrame(scene, o, frame, time, frameMs);
            if (o.frames > 0) // a steady pace: particles step by the wall clock
                std::this_thread::sleep_until(last + std::chrono::duration<float>(kTick));
            const auto now = Clock::now();
            frameMs = std::chrono::duration<float, std::milli>(now - last).count();
            last = now;
        }
        bool saved = true;
        if (!o.out.empty()) {
            saved = window.capture().savePng(o.out);
            std::printf("picture: %s\n", saved ? o.out.c_str() : "could not be saved");
        }
        GFX_Destroy();
        return saved ? 0 : 1;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "demo: %s\n", failure.what());
        return 1;
    }
}
