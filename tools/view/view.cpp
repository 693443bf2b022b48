// norvgl-view: shows a VRML model, a bitmap or a 3DF texture with the driver. A model is
// centred from its bounds, scaled to a fixed size and lit by two lights under an orbiting
// camera, both sides of its faces drawn, so that a flat model seen from behind still shows
// (a host decides on culling; the viewer shows what the file holds); a picture is drawn at
// its own size in a window of that size.
//   norvgl-view FILE [--frames N] [--out FILE.png]
// With --out it renders N frames (1 unless given) and saves the last; without, it runs until
// the window is closed or Esc is pressed. Driver failures are shown with their title and
// details from GFX_GetLastError.
#include "host.h"
#include "host_window.h"

#include "formats/vrml_reader.h"
#include "norvgl.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

constexpr int kModelWindow = 640;
constexpr int kMaxWindow = 1024;       // the test display's screen holds it whole
constexpr float kModelRadius = 100.0f; // the model's size on screen: well past the near plane
constexpr float kBackdrop = 3000.0f;   // half side of the box that covers every pixel

struct Options {
    std::string file;
    long frames = -1;
    std::string out;
};

bool readBytes(const fs::path& path, std::vector<std::uint8_t>& bytes) {
    std::ifstream in(path, std::ios::binary);
    if (!in)
        return false;
    bytes.assign(std::istreambuf_iterator<char>(in), {});
    return true;
}

std::string lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

// The file beside the model whose name matches, without regard to case: the reader keeps
// texture names in capitals, as the driver compares them.
fs::path findBeside(const fs::path& model, const std::string& name) {
    std::error_code ignored;
    const fs::path directory = model.has_parent_path() ? model.parent_path() : fs::path(".");
    for (const auto& entry : fs::directory_iterator(directory, ignored))
        if (lower(entry.path().filename().string()) == lower(name))
            return entry.path();
    return {};
}

struct Vertex {
    float x, y, z, nx, ny, nz, u, v;
};

// A box around everything, seen from inside: frames never clear the depth buffer, so every
// frame must write depth on every pixel for the next one (in the other depth half) to show.
void drawBackdrop() {
    static const std::vector<Vertex> box = [] {
        std::vector<Vertex> out;
        const float h = kBackdrop;
        const float corners[6][4][3] = {{{-h, -h, h}, {h, -h, h}, {h, h, h}, {-h, h, h}},
                                        {{-h, -h, -h}, {-h, h, -h}, {h, h, -h}, {h, -h, -h}},
                                        {{-h, -h, -h}, {-h, -h, h}, {-h, h, h}, {-h, h, -h}},
                                        {{h, -h, -h}, {h, h, -h}, {h, h, h}, {h, -h, h}},
                                        {{-h, h, -h}, {-h, h, h}, {h, h, h}, {h, h, -h}},
                                        {{-h, -h, -h}, {h, -h, -h}, {h, -h, h}, {-h, -h, h}}};
        for (const auto& face : corners)
            for (int i : {0, 1, 2, 0, 2, 3})
                out.push_back({face[i][0], face[i][1], face[i][2], 0, 0, 0, 0, 0});
        return out;
    }();
    // Unlit in effect: only the ambient term, since the normals are zero.
    GFX_SetMaterialColor(0.25f, 0.27f, 0.32f, 0, 0, 0, 0, 0, 0);
    GFX_DrawPolygon(PRIM_TRIANGLES, static_cast<unsigned>(box.size()), &box[0].x);
}

int fail(const char* call) {
    host_fail(call);
    GFX_Destroy();
    return 1;
}

int run(const Options& options) {
    const fs::path path = options.file;
    const bool model = lower(path.extension().string()) == ".wrl";
    std::vector<std::uint8_t> text;
    if (model && !readBytes(path, text)) {
        std::fprintf(stderr, "norvgl-view: %s: cannot read the file\n", options.file.c_str());
        return 1;
    }
    // A picture's size comes from the driver, which needs a window first: a small one to ask.
    int width = kModelWindow, height = kModelWindow * 3 / 4;
    std::unique_ptr<norvgl::host::HostWindow> window;
    unsigned picture = 0;
    if (!model) {
        auto probe = std::make_unique<norvgl::host::HostWindow>(64, 64, "norvgl-view");
        GFX_SetProperty(PROP_WINDOW, probe->handle());
        if (GFX_Init() != 0)
            return fail("GFX_Init");
        if (GFX_LoadPicture(options.file.c_str(), nullptr, 0, &picture, 0) != 0)
            return fail("GFX_LoadPicture");
        unsigned w = 0, h = 0;
        GFX_GetPictureDimensions(picture, &w, &h, nullptr);
        GFX_Destroy();
        width = std::clamp(static_cast<int>(w), 64, kMaxWindow);
        height = std::clamp(static_cast<int>(h), 64, kMaxWindow);
        std::printf("picture: %u x %u\n", w, h);
    }
    window = std::make_unique<norvgl::host::HostWindow>(
        width, height, ("norvgl-view " + path.filename().string()).c_str());
    GFX_SetProperty(PROP_WINDOW, window->handle());
    if (GFX_Init() != 0)
        return fail("GFX_Init");

    unsigned object = 0;
    float bounds[6] = {};
    if (model) {
        // The textures the model names, loaded from beside it under the names it uses.
        norvgl::VrmlReading reading;
        norvgl::Vrml_Read(text.data(), text.size(), reading);
        std::vector<std::string> loaded;
        for (const norvgl::VrmlNode* n = reading.nodes.get(); n; n = n->nextNode) {
            const std::string name = n->textureName;
            if (name.empty() || std::find(loaded.begin(), loaded.end(), name) != loaded.end())
                continue;
            loaded.push_back(name);
            std::vector<std::uint8_t> bytes;
            const fs::path file = findBeside(path, name);
            unsigned id = 0;
            if (file.empty() || !readBytes(file, bytes)) {
                std::fprintf(stderr, "norvgl-view: texture %s not found beside the model\n",
                             name.c_str());
            } else if (GFX_LoadPicture(name.c_str(), bytes.data(), 0, &id, 0) != 0) {
                return fail(("GFX_LoadPicture " + name).c_str());
            }
        }
        if (GFX_LoadVRML(0, static_cast<unsigned>(text.size()),
                         reinterpret_cast<const char*>(text.data()), &object, 0, 0, 0, bounds) != 0)
            return fail("GFX_LoadVRML");
        std::printf("model: bounds %g %g %g to %g %g %g\n", bounds[0], bounds[1], bounds[2],
                    bounds[3], bounds[4], bounds[5]);
        GFX_AddLight(0, 1, -0.5f, -1.0f, -0.8f);
        GFX_SetLightColor(0, 0.25f, 0.25f, 0.25f, 0.9f, 0.9f, 0.85f, 0.3f, 0.3f, 0.3f);
        GFX_AddLight(1, 1, 0.8f, 0.3f, 0.5f);
        GFX_SetLightColor(1, 0, 0, 0, 0.25f, 0.3f, 0.45f, 0, 0, 0);
    } else {
        GFX_SetClearColor(0.25f, 0.27f, 0.32f, 0);
        GFX_SetRenderProperty(RPROP_CLEAR_COLOR, 1);
        if (GFX_LoadPicture(options.file.c_str(), nullptr, 0, &picture, 0) != 0)
            return fail("GFX_LoadPicture");
    }
    const bool empty = bounds[0] > bounds[3];
    float centre[3] = {0, 0, 0}, radius = 1;
    if (!empty) {
        float diagonal = 0;
        for (int k = 0; k < 3; ++k) {
            centre[k] = (bounds[k] + bounds[k + 3]) / 2;
            diagonal += (bounds[k + 3] - bounds[k]) * (bounds[k + 3] - bounds[k]);
        }
        radius = std::max(std::sqrt(diagonal) / 2, 1e-3f);
    }

    const long frames = options.frames > 0 ? options.frames : options.out.empty() ? -1 : 1;
    for (long frame = 0; window->poll() && (frames < 0 || frame < frames); ++frame) {
        GFX_BeginRender();
        if (model) {
            const float angle = 0.6f + 0.02f * static_cast<float>(frame);
            const float distance = 3.2f * kModelRadius;
            GFX_Look(distance * std::sin(angle), 0.45f * distance, -distance * std::cos(angle), 0,
                     0, 0, 0, 0, 0);
            drawBackdrop();
            GFX_SetRenderProperty(RPROP_CULLING, 0);
            GFX_SetMaterialColor(0.3f, 0.3f, 0.3f, 0.85f, 0.85f, 0.85f, 0.2f, 0.2f, 0.2f);
            const float scale = kModelRadius / radius;
            GFX_Scale(scale, scale, scale);
            GFX_DrawObject(object, -centre[0], -centre[1], -centre[2]);
            GFX_Untransform(1);
        } else {
            GFX_DrawPicture(picture, 0, 0, 0, 0);
        }
        GFX_EndRender();
    }
    bool saved = true;
    if (!options.out.empty()) {
        saved = window->capture().savePng(options.out);
        if (!saved)
            std::fprintf(stderr, "norvgl-view: could not save %s\n", options.out.c_str());
    }
    GFX_Destroy();
    return saved ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--frames" && i + 1 < argc)
            options.frames = std::strtol(argv[++i], nullptr, 10);
        else if (arg == "--out" && i + 1 < argc)
            options.out = argv[++i];
        else if (options.file.empty() && !arg.starts_with("--"))
            options.file = arg;
        else
            options.file.clear(), i = argc;
    }
    if (options.file.empty()) {
        std::fprintf(stderr, "usage: norvgl-view FILE.wrl|FILE.bmp|FILE.3df [--frames N] "
                             "[--out FILE.png]\n");
        return 2;
    }
    try {
        return run(options);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "norvgl-view: %s\n", failure.what());
        return 1;
    }
}
