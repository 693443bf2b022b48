// norvgl-check: tells a content maker what the driver will do with each file, without a
// window. Bitmaps, 3DF textures and VRML texts are read with the driver's own readers, and
// judged and placed by the driver's own rules and transforms, so the verdict is the driver's.
//   norvgl-check FILE...
// Exit status 0 only when every file loads whole: a file that is refused, that loads without
// an image, or whose model the driver cuts (a limit exceeded) makes it 1.
#include "formats/bitmap_decoder.h"
#include "formats/texture_file.h"
#include "formats/vrml_reader.h"
#include "manager3d/limits.h"
#include "models/models.h"

#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

namespace {

using namespace norvgl;

// A model's vertices all go through the render queue's vertex heap before they are sealed.
constexpr std::uint32_t kModelMaxVertices = kVertexHeapFloats / 3;

bool startsWith(const std::vector<std::uint8_t>& data, std::size_t offset, const char* text) {
    const std::size_t length = std::strlen(text);
    return data.size() >= offset + length && std::memcmp(&data[offset], text, length) == 0;
}

bool endsWithNoCase(const std::string& name, const char* suffix) {
    const std::size_t length = std::strlen(suffix);
    if (name.size() < length)
        return false;
    for (std::size_t i = 0; i < length; ++i) {
        char c = name[name.size() - length + i];
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
        if (c != suffix[i])
            return false;
    }
    return true;
}

const char* compressionName(std::uint32_t compression) {
    return compression == kBitmapRgb    ? "uncompressed"
           : compression == kBitmapRle8 ? "RLE8"
           : compression == kBitmapRle4 ? "RLE4"
                                        : "an unknown compression";
}

bool checkBitmap(const std::vector<std::uint8_t>& data) {
    BitmapInfo info;
    const BitmapResult parsed = parseBitmap(data.data(), data.size(), info);
    if (parsed != BitmapResult::Ok) {
        static const char* const kWhy[] = {"",
                                           "it does not begin with BM",
                                           "its file size field is below 54 bytes",
                                           "the file is shorter than its file size field says",
                                           "its info header is below 40 bytes",
                                           "its info header reaches past the file's end",
                                           "its width is 0 or below",
                                           "its height is 0"};
        const auto why = static_cast<std::size_t>(parsed);
        std::printf("  refused: %s (Invalid file data)\n",
                    why < std::size(kWhy) ? kWhy[why] : "its headers are broken");
        return false;
    }
    std::printf("  %d x %u pixels, %u bits per pixel, %s, rows stored %s\n", info.width,
                info.absHeight, info.bitsPerPixel, compressionName(info.compression),
                info.topDown ? "top first" : "bottom first");
    if (info.paletteColors > 0)
        std::printf("  palette: %llu colours\n",
                    static_cast<unsigned long long>(info.paletteColors));
    const bool drawable =
        info.bitsPerPixel == 4 || info.bitsPerPixel == 8 || info.bitsPerPixel == 24;
    if (drawable && !bitmapBitsFit(info)) {
        std::printf("  refused: the palette or the pixel rows reach past the file's end "
                    "(Invalid file data)\n");
        return false;
    }
    const BitmapPlan plan =
        planBitmap(static_cast<std::uint32_t>(info.width), info.absHeight, true);
    switch (plan.target) {
    case BitmapTarget::Texture:
        std::printf("  becomes a texture of %u x %u (sides rounded to a square power of two)%s\n",
                    plan.width, plan.height,
                    plan.width == static_cast<std::uint32_t>(info.width) &&
                            plan.height == info.absHeight
                        ? ""
                        : ": the picture is stretched to it");
        break;
    case BitmapTarget::TextureWithoutImage:
        std::printf("  loads WITHOUT AN IMAGE: its sides round to unequal powers of two and one "
                    "reaches %u\n",
                    kBitmapMaxTextureSide);
        return false;
    case BitmapTarget::PixelArray:
        std::printf("  becomes a pixel-array picture (a side above %u): GFX_DrawPicture copies it "
                    "at its own size to the window's lower-left corner, and it cannot texture "
                    "anything\n",
                    kBitmapMaxTextureSide);
        break;
    }
    std::printf("  with PROP_NO_TEXTURES set: a pixel-array picture of %d x %u\n", info.width,
                info.absHeight);
    if (!drawable) {
        std::printf("  loads WITHOUT AN IMAGE: only 4, 8 and 24 bits per pixel are drawn "
                    "(Invalid file data: Could not create bitmap: bits = %u)\n",
                    info.bitsPerPixel);
        return false;
    }
    std::vector<std::uint8_t> pixels(static_cast<std::size_t>(info.width) * info.absHeight * 4);
    if (stretchBitmap(data.data(), data.size(), info, info.width,
                      static_cast<std::int32_t>(info.absHeight),
                      pixels.data()) != BitmapResult::Ok) {
        std::printf("  loads WITHOUT AN IMAGE: its pixels cannot be decoded\n");
        return false;
    }
    std::size_t black = 0;
    for (std::size_t i = 0; i < pixels.size(); i += 4)
        black += (pixels[i] | pixels[i + 1] | pixels[i + 2]) == 0;
    std::printf("  black: %zu of %zu pixels are pure black and become transparent (alpha 0) "
                "where the blend mode uses source alpha\n",
                black, pixels.size() / 4);
    std::printf("  loads\n");
    return true;
}

bool checkTdf(const std::vector<std::uint8_t>& data) {
    TdfImage image;
    const TdfResult result = readTextureFile(data.data(), data.size(), image);
    static const char* const kWhy[] = {
        "",
        "a header line is broken (magic, format line, lod range or aspect ratio)",
        "the sizes are not usable (small <= 0, an aspect of 0, or not powers of two)",
        "it announces more than 8 levels",
        "the texels end before the last level",
        "out of memory"};
    if (result != TdfResult::Ok) {
        std::printf("  refused: %s (%s)\n", kWhy[static_cast<int>(result)],
                    result == TdfResult::OutOfMemory ? "Out of memory" : "Invalid file data");
        return false;
    }
    const TdfHeader& h = image.header;
    std::printf("  %s, lod range %d %d, aspect ratio %d %d: %d x %d texels\n",
                h.format == TdfFormat::Rgb565 ? "rgb565" : "argb8332 (alpha is not used)", h.small,
                h.large, h.a1, h.a2, h.width, h.height);
    std::printf("  %d level%s read:", h.levelCount, h.levelCount == 1 ? "" : "s");
    for (std::int32_t i = 0; i < h.levelCount; ++i)
        std::printf(" %dx%d", image.levels[i].width, image.levels[i].height);
    std::printf("\n");
    const TdfLevel& last = image.levels[h.levelCount - 1];
    if (h.levelCount == 1)
        std::printf("  with RPROP_MIPMAPS set, the driver makes the smaller levels itself\n");
    else if (last.width > 1 || last.height > 1)
        std::printf("  with RPROP_MIPMAPS set it draws UNTEXTURED: its levels stop at %dx%d and "
                    "mip-mapped filtering needs them down to 1x1; load it with RPROP_MIPMAPS at 0 "
                    "(level 0 only) or store one level\n",
                    last.width, last.height);
    std::printf("  loads\n");
    return true;
}

struct ModelCount {
    std::uint32_t faces = 0, vertices = 0, skipped = 0, notTriangles = 0, largestFace = 0;
};

// The faces as the model build takes them: runs of indices up to -1; a run of fewer than
// three or naming a missing point is skipped.
void countFaces(const VrmlNode& node, ModelCount& count) {
    std::uint32_t p = 0;
    while (p < node.coordIndexCount) {
        std::uint32_t end = p;
        bool known = true;
        for (; end < node.coordIndexCount && node.coordIndex[end] != kVrmlEndOfFace; ++end)
            known = known && node.coordIndex[end] < node.pointCount;
        const std::uint32_t size = end - p;
        p = end + 1;
        if (!known || size < 3) {
            ++count.skipped;
            continue;
        }
        ++count.faces;
        count.vertices += size;
        count.notTriangles += size != 3;
        count.largestFace = size > count.largestFace ? size : count.largestFace;
    }
}

bool checkVrml(const std::vector<std::uint8_t>& data) {
    VrmlReading reading;
    const VrmlResult result = Vrml_Read(data.data(), data.size(), reading);
    if (result != VrmlResult::Ok) {
        std::printf("  refused: %s (Out of memory)\n",
                    result == VrmlResult::TooLarge ? "more than 1048576 list entries of one kind"
                                                   : "the reader ran out of memory");
        return false;
    }
    std::uint32_t nodes = 0, withFaces = 0, points = 0;
    ModelCount count;
    std::set<std::string> textures;
    float low[3] = {0, 0, 0}, high[3] = {0, 0, 0};
    bool any = false;
    for (const VrmlNode* node = reading.nodes.get(); node; node = node->nextNode) {
        ++nodes;
        if (node->textureName[0] != '\0')
            textures.insert(node->textureName);
        if (node->pointCount == 0 || node->coordIndexCount == 0)
            continue;
        ++withFaces;
        points += node->pointCount;
        countFaces(*node, count);
        // Bounds of the points as the model build places them.
        for (std::uint32_t i = 0; i < node->pointCount; ++i) {
            float point[3] = {node->points[8 * i], node->points[8 * i + 1],
                              node->points[8 * i + 2]};
            Vrml_TransformPoint(*node, point);
            for (int k = 0; k < 3; ++k) {
                low[k] = any && low[k] < point[k] ? low[k] : point[k];
                high[k] = any && high[k] > point[k] ? high[k] : point[k];
            }
            any = true;
        }
    }
    std::printf("  nodes: %u (%u with faces), points: %u, faces: %u, vertices: %u\n", nodes,
                withFaces, points, count.faces, count.vertices);
    if (textures.empty())
        std::printf("  textures named: none\n");
    for (const std::string& name : textures)
        std::printf("  texture named: %s (load a picture of that name, in any letter case, "
                    "before the model)\n",
                    name.c_str());
    if (any)
        std::printf("  bounds: min %g %g %g, max %g %g %g\n", low[0], low[1], low[2], high[0],
                    high[1], high[2]);
    else
        std::printf("  no geometry: the model loads and draws nothing\n");

    bool whole = true;
    const VrmlLimitNotes& limits = reading.limits;
    auto exceeds = [&](const char* what) {
        std::printf("  LIMIT %s\n", what);
        whole = false;
    };
    char line[256];
    if (limits.linesCut > 0) {
        std::snprintf(line, sizeof line,
                      "line length: %u line%s longer than %zu characters (longest %zu) cut",
                      limits.linesCut, limits.linesCut == 1 ? "" : "s", kVrmlLineBufferSize - 1,
                      limits.longestLine);
        exceeds(line);
    }
    if (limits.namesCut > 0) {
        std::snprintf(line, sizeof line, "name length: %u name%s longer than %zu characters cut",
                      limits.namesCut, limits.namesCut == 1 ? "" : "s", kVrmlNameSize - 1);
        exceeds(line);
    }
    if (limits.bracesIgnored > 0) {
        std::snprintf(line, sizeof line, "nesting: %u brace%s deeper than %u levels ignored",
                      limits.bracesIgnored, limits.bracesIgnored == 1 ? "" : "s", kVrmlMaxDepth);
        exceeds(line);
    }
    if (count.notTriangles > 0) {
        std::snprintf(line, sizeof line,
                      "face size: %u face%s of more than 3 points (largest %u): faces are drawn "
                      "as triangle lists, so the triangles after them shift",
                      count.notTriangles, count.notTriangles == 1 ? "" : "s", count.largestFace);
        exceeds(line);
    }
    if (count.skipped > 0) {
        std::snprintf(line, sizeof line,
                      "face size: %u face%s of fewer than 3 points or naming a missing point "
                      "skipped",
                      count.skipped, count.skipped == 1 ? "" : "s");
        exceeds(line);
    }
    if (count.vertices > kModelMaxVertices) {
        std::snprintf(line, sizeof line,
                      "vertex heap: %u vertices, the heap holds %u: the rest are dropped",
                      count.vertices, kModelMaxVertices);
        exceeds(line);
    }
    std::printf("  %s\n", whole ? "loads" : "loads CUT: the driver draws less than the file says");
    return whole;
}

bool checkFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        std::printf("%s: not found (File not found)\n", path.c_str());
        return false;
    }
    const std::vector<std::uint8_t> data{std::istreambuf_iterator<char>(in), {}};
    // The same signatures, in the same order, as GFX_LoadPicture; VRML goes to GFX_LoadVRML.
    if (startsWith(data, 0, kTdfMagicLine)) {
        std::printf("%s: 3DF texture\n", path.c_str());
        return checkTdf(data);
    }
    if (startsWith(data, 0, "BM")) {
        std::printf("%s: Windows bitmap\n", path.c_str());
        return checkBitmap(data);
    }
    if (startsWith(data, 6, "JFIF")) {
        std::printf("%s: JPEG\n  refused: JPEG pictures are not read (Invalid file data)\n",
                    path.c_str());
        return false;
    }
    if (startsWith(data, 0, "#VRML") || endsWithNoCase(path, ".wrl")) {
        std::printf("%s: VRML text for GFX_LoadVRML\n", path.c_str());
        return checkVrml(data);
    }
    std::printf("%s: unknown\n  refused: not a 3DF texture, a bitmap or a VRML text (Invalid "
                "file data: Unknown bitmap type)\n",
                path.c_str());
    return false;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: norvgl-check FILE...\n"
                             "  what the driver makes of each bitmap, 3DF texture or VRML text;\n"
                             "  exit status 0 only when every file loads whole\n");
        return 2;
    }
    bool all = true;
    for (int i = 1; i < argc; ++i)
        all = checkFile(argv[i]) && all;
    return all ? 0 : 1;
}
