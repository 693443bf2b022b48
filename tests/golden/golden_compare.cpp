// Compares the demo's picture with the golden one (docs/demo.png). Particles step by the wall
// clock, so their pixels differ from run to run: they are judged by coverage, not pixel by
// pixel. The test draws the demo twice, once whole and once without particles, and:
// - outside the particle regions and the frame-time text, every pixel of both runs must be
//   within kTolerance of the golden picture in each channel, but for at most kEdgePixels: the
//   Windows C library's sine and cosine differ from Linux's in the last bit, which moves a few
//   pixels on the edges of the moving camera's geometry;
// - in each particle region, the pixels where the whole run differs from the run without
//   particles (by more than kParticleContrast) must number within kCoverageSpread of what
//   the golden picture covers there.
//   norvgl_golden_compare GOLDEN.png WHOLE.png WITHOUT_PARTICLES.png
#include "png_io.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

using norvgl::assets::RgbImage;

constexpr int kTolerance = 2;           // per channel, outside the particle regions
constexpr int kEdgePixels = 30;         // 0.01 % of the picture may lie beyond it
constexpr int kParticleContrast = 24;   // a particle's pixel differs by more than this
constexpr double kCoverageSpread = 0.4; // coverage within 40 % of the golden picture's

struct Region {
    const char* name;
    int x0, y0, x1, y1; // inclusive
    bool particles;     // false: left out of every comparison
};

// Where the demo's 60th frame shows what changes from run to run, with room to spare.
constexpr Region kRegions[] = {
    {"frame time text", 8, 76, 160, 102, false}, {"fire", 420, 285, 510, 395, true},
    {"smoke", 420, 180, 510, 284, true},         {"staggered fountain", 65, 240, 185, 360, true},
    {"shards", 290, 40, 460, 285, true},
};

const Region* regionAt(int x, int y) {
    for (const Region& r : kRegions)
        if (x >= r.x0 && x <= r.x1 && y >= r.y0 && y <= r.y1)
            return &r;
    return nullptr;
}

int difference(std::uint32_t a, std::uint32_t b) {
    int most = 0;
    for (int shift = 0; shift < 24; shift += 8)
        most = std::max(most, std::abs(static_cast<int>((a >> shift) & 255) -
                                       static_cast<int>((b >> shift) & 255)));
    return most;
}

// Pixels outside every region that differ from the golden picture by more than kTolerance.
int outsideDifferences(const RgbImage& golden, const RgbImage& run, const char* what) {
    int count = 0;
    for (int y = 0; y < golden.height; ++y)
        for (int x = 0; x < golden.width; ++x)
            if (!regionAt(x, y) && difference(golden.at(x, y), run.at(x, y)) > kTolerance &&
                ++count <= 3)
                std::printf("golden: %s differs at (%d, %d): %06x, golden %06x\n", what, x, y,
                            run.at(x, y), golden.at(x, y));
    return count;
}

int coverage(const RgbImage& image, const RgbImage& without, const Region& r) {
    int count = 0;
    for (int y = r.y0; y <= r.y1; ++y)
        for (int x = r.x0; x <= r.x1; ++x)
            count += difference(image.at(x, y), without.at(x, y)) > kParticleContrast;
    return count;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: norvgl_golden_compare GOLDEN.png WHOLE.png "
                             "WITHOUT_PARTICLES.png\n");
        return 2;
    }
    RgbImage images[3];
    for (int i = 0; i < 3; ++i) {
        std::string error;
        if (!norvgl::texconv::readPng(argv[i + 1], images[i], error)) {
            std::fprintf(stderr, "golden: %s: %s\n", argv[i + 1], error.c_str());
            return 1;
        }
        if (images[i].width != images[0].width || images[i].height != images[0].height) {
            std::fprintf(stderr, "golden: %s is not the golden picture's size\n", argv[i + 1]);
            return 1;
        }
    }
    const RgbImage& golden = images[0];
    bool pass = true;
    for (int i : {1, 2}) {
        const int count = outsideDifferences(golden, images[i], argv[i + 1]);
        std::printf("golden: %s: %d pixels outside the particle regions beyond %d (at most %d)\n",
                    argv[i + 1], count, kTolerance, kEdgePixels);
        pass = pass && count <= kEdgePixels;
    }
    for (const Region& r : kRegions) {
        if (!r.particles)
            continue;
        const int expected = coverage(golden, images[2], r);
        const int got = coverage(images[1], images[2], r);
        const bool near = expected > 0 && got >= expected * (1 - kCoverageSpread) &&
                          got <= expected * (1 + kCoverageSpread);
        std::printf("golden: %s covers %d pixels, the golden picture %d%s\n", r.name, got, expected,
                    near ? "" : ": too far apart");
        pass = pass && near;
    }
    std::printf("golden: %s\n", pass ? "passed" : "FAILED");
    return pass ? 0 : 1;
}
