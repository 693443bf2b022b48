// Compares the driver's Linux bitmap conversion with its Windows one, run by norvgl_dibref
// under Wine. "make DIR" writes a fixed set of generated bitmaps and their target sizes to
// DIR/list.txt; "check DIR" converts each and compares with the reference's pixels.
#include "formats/bitmap_decoder.h"
#include "picture_assets.h"
#include "platform/platform.h"

#include <cstdio>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace norvgl::assets;

struct Case {
    std::vector<std::uint8_t> file;
    std::int32_t width;
    std::int32_t height;
};

IndexedImage randomIndices(std::mt19937& rng, std::int32_t w, std::int32_t h, int colors,
                           int runBias) {
    IndexedImage image;
    image.width = w;
    image.height = h;
    std::uint8_t last = 0;
    for (std::int32_t i = 0; i < w * h; ++i) {
        if (static_cast<int>(rng() % 100) >= runBias) {
            last = static_cast<std::uint8_t>(rng() % static_cast<unsigned>(colors));
        }
        image.pixels.push_back(last);
    }
    return image;
}

std::vector<std::uint32_t> randomPalette(std::mt19937& rng, std::size_t n) {
    std::vector<std::uint32_t> palette;
    for (std::size_t i = 0; i < n; ++i) {
        palette.push_back(rng() & 0xFFFFFF);
    }
    return palette;
}

std::vector<Case> makeCases() {
    std::mt19937 rng(1234);
    std::vector<Case> cases;
    const std::int32_t sides[] = {1, 2, 3, 5, 8, 13, 16, 17, 31, 64, 100};
    const std::int32_t targets[] = {1, 2, 3, 4, 7, 16, 32, 64, 128, 256};
    for (std::int32_t w : sides) {
        for (std::int32_t h : sides) {
            if ((w * 7 + h) % 3 != 0 && w != h) {
                continue;
            }
            const std::int32_t tw = targets[rng() % 10];
            const std::int32_t th = rng() % 4 == 0 ? tw : targets[rng() % 10];
            for (int kind = 0; kind < 6; ++kind) {
                const auto palette = randomPalette(rng, 256);
                switch (kind) {
                case 0: { // 24-bit, random row order
                    RgbImage image{w, h, {}};
                    for (std::int32_t i = 0; i < w * h; ++i) {
                        image.pixels.push_back(rng() & 0xFFFFFF);
                    }
                    cases.push_back({writeColorBitmap(image, 24, rng() % 2 == 0), tw, th});
                    break;
                }
                case 1: // 8-bit with a short palette: indices beyond it
                    cases.push_back({writeIndexedBitmap(randomIndices(rng, w, h, 40, 30), palette,
                                                        8, 0, rng() % 2 == 0, 20),
                                     tw, th});
                    break;
                case 2:
                    cases.push_back({writeIndexedBitmap(randomIndices(rng, w, h, 16, 20), palette,
                                                        4, 0, rng() % 2 == 0),
                                     tw, th});
                    break;
                case 3:
                    cases.push_back(
                        {writeIndexedBitmap(randomIndices(rng, w, h, 200, 70), palette, 8, 1), tw,
                         th});
                    break;
                case 4:
                    cases.push_back(
                        {writeIndexedBitmap(randomIndices(rng, w, h, 16, 60), palette, 4, 2), tw,
                         th});
                    break;
                default: { // the same size as the source: RLE draws only its runs
                    const bool four = rng() % 2 == 0;
                    cases.push_back({writeIndexedBitmap(randomIndices(rng, w, h, 16, 60), palette,
                                                        four ? 4 : 8, four ? 2 : 1),
                                     w, h});
                    break;
                }
                }
            }
        }
    }
    // The sizes the texture rule makes: rounded to square powers of two, or kept as they are.
    const std::int32_t textureCases[][4] = {{100, 50, 128, 128},  {255, 255, 128, 128},
                                            {256, 256, 256, 256}, {300, 200, 300, 200},
                                            {40, 130, 256, 256},  {7, 200, 256, 256}};
    for (const auto& t : textureCases) {
        const auto palette = randomPalette(rng, 256);
        cases.push_back({writeIndexedBitmap(randomIndices(rng, t[0], t[1], 256, 50), palette, 8, 1),
                         t[2], t[3]});
        RgbImage image{t[0], t[1], {}};
        for (std::int32_t i = 0; i < t[0] * t[1]; ++i) {
            image.pixels.push_back(rng() & 0xFFFFFF);
        }
        cases.push_back({writeColorBitmap(image, 24, false), t[2], t[3]});
    }
    // Hand-made RLE streams: deltas, odd starts, runs past the edge, early ends.
    for (int four = 0; four < 2; ++four) {
        for (int variant = 0; variant < 8; ++variant) {
            RleWriter rle(four != 0);
            const std::int32_t w = 11 + variant;
            const std::int32_t h = 6;
            rle.run(3, 0x12);
            rle.absolute({1, 2, 3, 4, 5});
            rle.delta(static_cast<std::uint8_t>(variant % 3), 1);
            rle.run(static_cast<std::uint8_t>(20 + variant), 0x34);
            rle.endOfLine();
            rle.delta(1, 0);
            rle.absolute({7, 6, 5, 4, 3, 2, 1});
            rle.run(1, 0x56);
            rle.absolute({9, 9, 8});
            if (variant % 2 == 0) {
                rle.endOfLine();
                rle.run(static_cast<std::uint8_t>(w + 5), 0x78);
            }
            if (variant % 4 < 2) {
                rle.endOfBitmap();
            }
            BitmapFields fields;
            fields.width = w;
            fields.height = h;
            fields.bits = four != 0 ? 4 : 8;
            fields.compression = four != 0 ? 2 : 1;
            const auto palette = randomPalette(rng, four != 0 ? 16 : 256);
            const auto file = assembleBitmap(fields, palette, rle.bytes());
            cases.push_back({file, w, h});
            cases.push_back({file, 2 * w + 1, 3 * h});
            cases.push_back({file, 5, 4});
        }
    }
    return cases;
}

int make(const std::string& dir) {
    const auto cases = makeCases();
    FILE* list = std::fopen((dir + "/list.txt").c_str(), "w");
    if (list == nullptr) {
        return 1;
    }
    for (std::size_t i = 0; i < cases.size(); ++i) {
        const std::string name = "case" + std::to_string(i) + ".bmp";
        writeFile(dir + "/" + name, cases[i].file);
        std::fprintf(list, "%s %d %d\n", name.c_str(), cases[i].width, cases[i].height);
    }
    std::fclose(list);
    std::printf("dibcompare: %zu bitmaps in %s\n", cases.size(), dir.c_str());
    return 0;
}

int check(const std::string& dir) {
    const auto cases = makeCases();
    int failures = 0;
    for (std::size_t i = 0; i < cases.size(); ++i) {
        const std::string stem = dir + "/case" + std::to_string(i);
        std::vector<std::uint8_t> expected;
        std::vector<std::uint8_t> failMarker;
        const bool refFailed = readFile(stem + ".fail", failMarker);
        if (!readFile(stem + ".out", expected)) {
            std::printf("case %zu: no reference output\n", i);
            ++failures;
            continue;
        }
        const Case& c = cases[i];
        std::vector<std::uint8_t> actual(static_cast<std::size_t>(c.width) * c.height * 4, 0);
        norvgl::BitmapInfo info;
        const norvgl::BitmapResult r = norvgl::parseBitmap(c.file.data(), c.file.size(), info);
        const bool drew = r == norvgl::BitmapResult::Ok &&
                          norvgl::platform::convertBitmap(c.file.data(), c.file.size(), info,
                                                          c.width, c.height, actual.data());
        if (drew == refFailed) {
            std::printf("case %zu: header result %d, reference %s\n", i, static_cast<int>(r),
                        refFailed ? "failed" : "drew");
            ++failures;
            continue;
        }
        if (actual.size() != expected.size()) {
            std::printf("case %zu: reference holds %zu bytes\n", i, expected.size());
            ++failures;
            continue;
        }
        {
            std::size_t diffs = 0;
            std::size_t first = 0;
            for (std::size_t p = 0; p < actual.size(); p += 4) {
                if (actual[p] != expected[p] || actual[p + 1] != expected[p + 1] ||
                    actual[p + 2] != expected[p + 2]) {
                    if (diffs++ == 0) {
                        first = p / 4;
                    }
                }
            }
            if (diffs == 0) {
                continue;
            }
            std::printf("case %zu (%d x %d -> %d x %d, bits %d, compression %u): %zu pixels "
                        "differ, first at x %zu row %zu\n",
                        i, info.width, info.height, c.width, c.height, info.bitsPerPixel,
                        info.compression, diffs, first % static_cast<std::size_t>(c.width),
                        first / static_cast<std::size_t>(c.width));
            ++failures;
        }
    }
    std::printf("dibcompare: %zu bitmaps, %d differ from the reference\n", cases.size(), failures);
    return failures == 0 ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
    if (argc == 3 && std::string(argv[1]) == "make") {
        return make(argv[2]);
    }
    if (argc == 3 && std::string(argv[1]) == "check") {
        return check(argv[2]);
    }
    std::fprintf(stderr, "usage: norvgl_dibcompare make|check DIR\n");
    return 2;
}
