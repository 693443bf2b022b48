// VRML loading against its floor, in the same binary and run:
//  - Load/Vrml: GFX_LoadVRML of a generated model of about 1 MB of text (nested transforms,
//    textured grids of triangles in both windings, USE instances), both reading passes and the
//    model build; the mesh store is emptied between iterations, untimed.
//  - Load/StrtofFloor: one pass over the same bytes that only converts every number with
//    strtof.
// Both report MB/s (10^6 bytes of text per second).
#include "bench_session.h"
#include "manager3d/limits.h"
#include "models/models.h"
#include "pictures/pictures.h"
#include "platform/gl_table.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

using namespace norvgl;

namespace {

constexpr std::size_t kModelBytes = 1000000;
constexpr int kGridSide = 16;       // quads along each side of a node's grid
constexpr int kNodesPerUse = 6;     // every sixth node is a USE of the one before it
constexpr int kNodesPerNesting = 4; // every fourth node sits inside an extra transform
const char* const kTextures[] = {"wood.bmp", "stone.bmp"};

// Names of letters only, so that the floor converts no number that is not a value.
std::string letters(unsigned n) {
    std::string s;
    do {
        s += static_cast<char>('A' + n % 26);
        n /= 26;
    } while (n);
    return s;
}

// A fixed sequence of values in [-1, 1), the same in every run.
struct Values {
    std::uint32_t state = 12345;
    float next() {
        state = state * 1664525u + 1013904223u;
        return static_cast<float>(state >> 8) / static_cast<float>(1 << 23) - 1.0f;
    }
};

void append(std::string& text, const char* format, double a, double b = 0, double c = 0) {
    char line[128];
    std::snprintf(line, sizeof line, format, a, b, c);
    text += line;
}

void appendGrid(std::string& text, const std::string& name, int node, Values& values) {
    const int side = kGridSide + 1;
    text += "    Shape {\r\n      appearance Appearance {\r\n";
    text += "        material Material { diffuseColor 0.8 0.6 0.4 }\r\n";
    text += std::string("        texture ImageTexture { url \"") + kTextures[node % 2] +
            "\" }\r\n      }\r\n";
    text += "      geometry DEF " + name + "Faces IndexedFaceSet {\r\n";
    text += node % 3 ? "        ccw TRUE\r\n" : "        ccw FALSE\r\n";
    text += "        coord DEF " + name + "Points Coordinate {\r\n          point [\r\n";
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x)
            append(text, "            %.6f %.6f %.6f,\r\n", x + 0.25 * values.next(),
                   y + 0.25 * values.next(), 4.0 * values.next());
    text += "          ]\r\n        }\r\n        coordIndex [\r\n";
    std::string indices;
    for (int y = 0; y < kGridSide; ++y)
        for (int x = 0; x < kGridSide; ++x) {
            const int a = y * side + x, b = a + 1, c = a + side + 1, d = a + side;
            indices += "          " + std::to_string(a) + ", " + std::to_string(b) + ", " +
                       std::to_string(c) + ", -1, " + std::to_string(a) + ", " + std::to_string(c) +
                       ", " + std::to_string(d) + ", -1,\r\n";
        }
    text += indices + "        ]\r\n";
    // Texture coordinate 0 is a spare: an index of 0 keeps a point's u, v.
    text += "        texCoord DEF " + name + "UV TextureCoordinate {\r\n          point [\r\n";
    text += "            0 0,\r\n";
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x)
            append(text, "            %.4f %.4f,\r\n", double(x) / kGridSide,
                   double(y) / kGridSide);
    text += "          ]\r\n        }\r\n        texCoordIndex [\r\n";
    for (int y = 0; y < kGridSide; ++y)
        for (int x = 0; x < kGridSide; ++x) {
            const int a = y * side + x + 1, b = a + 1, c = a + side + 1, d = a + side;
            text += "          " + std::to_string(a) + ", " + std::to_string(b) + ", " +
                    std::to_string(c) + ", -1, " + std::to_string(a) + ", " + std::to_string(c) +
                    ", " + std::to_string(d) + ", -1,\r\n";
        }
    text += "        ]\r\n      }\r\n    }\r\n";
}

std::string generatedModel() {
    std::string text = "#VRML V2.0 utf8\r\n# Grids of textured triangles in nested transforms\r\n";
    Values values;
    std::string previous;
    for (int node = 0; text.size() < kModelBytes; ++node) {
        const std::string name = "Part" + letters(static_cast<unsigned>(node));
        const bool nested = node % kNodesPerNesting == 1;
        text += "DEF " + name + " Transform {\r\n";
        append(text, "  translation %.6f %.6f %.6f\r\n", 40.0 * values.next(), 30.0 * values.next(),
               100.0 + 20.0 * values.next());
        append(text, "  rotation 0 1 0 %.6f\r\n", 3.0 * values.next());
        append(text, "  scale %.3f %.3f %.3f\r\n", 1.5, 1.5, 1.5);
        text += "  children [\r\n";
        if (nested)
            text += "  DEF " + name + "Inner Transform { rotation 1 0 0 0.5 children [\r\n";
        if (node % kNodesPerUse == kNodesPerUse - 1 && !previous.empty())
            text += "    Shape { geometry USE " + previous + "Faces }\r\n";
        else
            appendGrid(text, name, node, values);
        if (nested)
            text += "  ] }\r\n";
        text += "  ]\r\n}\r\n";
        previous = name;
    }
    return text;
}

const std::string& model() {
    static const std::string text = generatedModel();
    return text;
}

void loadTextures() {
    static const bool loaded = [] {
        for (const char* name : kTextures) {
            CreatePictureTexture(&nextPictureRecord().texture, false);
            RegisterPicture(name);
        }
        return true;
    }();
    (void)loaded;
}

void megabytesPerSecond(benchmark::State& state) {
    state.counters["MB/s"] = benchmark::Counter(static_cast<double>(state.iterations()) *
                                                    static_cast<double>(model().size()) / 1e6,
                                                benchmark::Counter::kIsRate);
}

void Load_Vrml(benchmark::State& state) {
    bench::session();
    loadTextures();
    const std::string& text = model();
    std::uint64_t vertices = 0;
    for (auto _ : state) {
        unsigned id = 0;
        if (GFX_LoadVRML(0, static_cast<unsigned>(text.size()), text.c_str(), &id, 0, 0, 0,
                         nullptr) != 0) {
            state.SkipWithError("GFX_LoadVRML failed");
            break;
        }
        state.PauseTiming();
        vertices = 0;
        for (const StateNode* g = MeshStore_Find(id); g; g = g->firstChild)
            for (const DrawBatch* b = g->vertexBatches; b; b = b->next)
                vertices += b->count;
        MeshStore_Clear();
        gl.DeleteLists(id, 1);
        state.ResumeTiming();
    }
    megabytesPerSecond(state);
    state.counters["text_bytes"] = static_cast<double>(text.size());
    state.counters["mesh_vertices"] = static_cast<double>(vertices);
}

bool startsNumber(char c) {
    return (c >= '0' && c <= '9') || c == '-' || c == '+' || c == '.';
}

void Load_StrtofFloor(benchmark::State& state) {
    const std::string& text = model();
    std::uint64_t numbers = 0;
    for (auto _ : state) {
        const char* p = text.c_str();
        const char* const end = p + text.size();
        float sum = 0.0f;
        numbers = 0;
        while (p < end) {
            if (startsNumber(*p)) {
                char* after = nullptr;
                const float value = std::strtof(p, &after);
                if (after != p) {
                    sum += value;
                    ++numbers;
                    p = after;
                    continue;
                }
            }
            ++p;
        }
        benchmark::DoNotOptimize(sum);
    }
    megabytesPerSecond(state);
    state.counters["numbers"] = static_cast<double>(numbers);
}

BENCHMARK(Load_Vrml)->Unit(benchmark::kMillisecond);
BENCHMARK(Load_StrtofFloor)->Unit(benchmark::kMillisecond);

} // namespace
