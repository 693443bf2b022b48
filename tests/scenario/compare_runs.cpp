// Compares two runs of the scenario program, each a directory with results.txt, debuglog.txt,
// the window captures (*.ppm), texture dumps (*.rgba) and other notes (*.txt): the same tests,
// all passed, each with the same log entries; logs of the same lines; the same captures up to
// a per-channel bound on any pixel, the same texels up to a bound of their own; the same notes.
//   norvgl_compare_runs REFERENCE OTHER [MAX_CHANNEL_DIFFERENCE [MAX_TEXEL_DIFFERENCE]]
#include "image.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace fs = std::filesystem;
using scenario::Image;

namespace {

std::string readFile(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

std::set<std::string> filesOf(const fs::path& directory, const std::string& extension) {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(directory))
        if (entry.path().extension() == extension)
            names.insert(entry.path().filename().string());
    return names;
}

std::set<std::string> captures(const fs::path& directory) {
    return filesOf(directory, ".ppm");
}

// A texture dump: "RGBA width height" on a line, then the texels.
struct Texels {
    int width = 0;
    int height = 0;
    std::string bytes;
};

bool loadTexels(const fs::path& path, Texels& texels) {
    const std::string text = readFile(path);
    const std::size_t end = text.find('\n');
    if (end == std::string::npos ||
        std::sscanf(text.substr(0, end).c_str(), "RGBA %d %d", &texels.width, &texels.height) !=
            2 ||
        texels.width < 0 || texels.height < 0)
        return false;
    texels.bytes = text.substr(end + 1);
    return texels.bytes.size() == static_cast<std::size_t>(texels.width) * texels.height * 4;
}

// Texture dumps of the same sizes whose channels differ by at most `bound`, alpha included.
bool sameTexels(const fs::path& a, const fs::path& b, int bound) {
    const std::set<std::string> names = filesOf(a, ".rgba");
    if (names != filesOf(b, ".rgba")) {
        std::printf("compare: the two runs did not dump the same textures\n");
        return false;
    }
    bool ok = true;
    int worst = 0;
    std::size_t differing = 0, total = 0;
    for (const std::string& name : names) {
        Texels left, right;
        if (!loadTexels(a / name, left) || !loadTexels(b / name, right) ||
            left.width != right.width || left.height != right.height) {
            std::printf("compare: %s: unreadable or of different sizes\n", name.c_str());
            ok = false;
            continue;
        }
        int channel = 0;
        std::size_t count = 0;
        for (std::size_t i = 0; i < left.bytes.size(); i += 4) {
            int d = 0;
            for (std::size_t c = 0; c < 4; ++c)
                d = std::max(d, std::abs(static_cast<unsigned char>(left.bytes[i + c]) -
                                         static_cast<unsigned char>(right.bytes[i + c])));
            channel = std::max(channel, d);
            count += d != 0;
        }
        if (channel > bound) {
            std::printf("compare: %s: a channel differs by %d (bound %d), %zu texels differ\n",
                        name.c_str(), channel, bound, count);
            ok = false;
        }
        worst = std::max(worst, channel);
        differing += count;
        total += left.bytes.size() / 4;
    }
    std::printf("compare: %zu texture dumps, largest channel difference %d (bound %d), "
                "%zu of %zu texels differ\n",
                names.size(), worst, bound, differing, total);
    return ok;
}

// Every other note (*.txt), byte for byte.
bool sameNotes(const fs::path& a, const fs::path& b) {
    const std::set<std::string> names = filesOf(a, ".txt");
    if (names != filesOf(b, ".txt")) {
        std::printf("compare: the two runs did not write the same notes\n");
        return false;
    }
    bool ok = true;
    for (const std::string& name : names) {
        if (name == "results.txt" || name == "debuglog.txt")
            continue;
        if (readFile(a / name) != readFile(b / name)) {
            std::printf("compare: %s differs:\n%s---\n%s", name.c_str(), readFile(a / name).c_str(),
                        readFile(b / name).c_str());
            ok = false;
        }
    }
    return ok;
}

// results.txt: a block per test, its "name outcome" line followed by the log lines it caused,
// indented. Blocks are matched by name: the two programs may run the tests in other orders.
std::map<std::string, std::string> resultBlocks(const std::string& text) {
    std::map<std::string, std::string> blocks;
    std::istringstream in(text);
    std::string name;
    for (std::string line; std::getline(in, line);) {
        if (line.rfind("  ", 0) != 0)
            name = line.substr(0, line.find(' '));
        blocks[name] += line + '\n';
    }
    return blocks;
}

bool sameResults(const fs::path& a, const fs::path& b) {
    const auto left = resultBlocks(readFile(a)), right = resultBlocks(readFile(b));
    if (left.size() < 2) {
        std::printf("compare: %s holds no test results\n", a.string().c_str());
        return false;
    }
    bool ok = true;
    for (const auto& [name, block] : left) {
        if (name != "(load)" && block.rfind(name + " passed\n", 0) != 0) {
            std::printf("compare: %s did not pass in %s\n", name.c_str(), a.string().c_str());
            ok = false;
        }
        const auto other = right.find(name);
        if (other == right.end()) {
            std::printf("compare: %s did not run in %s\n", name.c_str(), b.string().c_str());
            ok = false;
        } else if (other->second != block) {
            std::printf("compare: %s differs:\n%s---\n%s", name.c_str(), block.c_str(),
                        other->second.c_str());
            ok = false;
        }
    }
    for (const auto& [name, block] : right) {
        if (!left.count(name)) {
            std::printf("compare: %s ran only in %s\n", name.c_str(), b.string().c_str());
            ok = false;
        }
    }
    return ok;
}

// The whole logs hold the same lines, whatever order the tests ran in.
bool sameLogLines(const fs::path& a, const fs::path& b) {
    auto sortedLines = [](const std::string& text) {
        std::vector<std::string> lines;
        std::istringstream in(text);
        for (std::string line; std::getline(in, line);)
            lines.push_back(line);
        std::sort(lines.begin(), lines.end());
        return lines;
    };
    const std::string left = readFile(a), right = readFile(b);
    if (left.empty() || left.size() != right.size() || sortedLines(left) != sortedLines(right)) {
        std::printf("compare: the debug logs %s and %s do not hold the same lines\n",
                    a.string().c_str(), b.string().c_str());
        return false;
    }
    return true;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 3 || argc > 5) {
        std::fprintf(stderr,
                     "usage: %s REFERENCE OTHER [MAX_CHANNEL_DIFFERENCE [MAX_TEXEL_DIFFERENCE]]\n",
                     argv[0]);
        return 2;
    }
    const fs::path reference = argv[1], other = argv[2];
    const int bound = argc >= 4 ? std::atoi(argv[3]) : 0;
    const int texelBound = argc == 5 ? std::atoi(argv[4]) : 0;

    bool ok = sameResults(reference / "results.txt", other / "results.txt");
    ok &= sameLogLines(reference / "debuglog.txt", other / "debuglog.txt");
    ok &= sameTexels(reference, other, texelBound);
    ok &= sameNotes(reference, other);

    const std::set<std::string> names = captures(reference);
    if (names.empty() || names != captures(other)) {
        std::printf("compare: the two runs did not capture the same frames (%zu vs %zu)\n",
                    names.size(), captures(other).size());
        return 1;
    }
    int worstChannel = 0;
    std::size_t differingPixels = 0, totalPixels = 0;
    for (const std::string& name : names) {
        Image a, b;
        if (!a.loadPpm((reference / name).string()) || !b.loadPpm((other / name).string()) ||
            a.width != b.width || a.height != b.height) {
            std::printf("compare: %s: unreadable or of different sizes\n", name.c_str());
            ok = false;
            continue;
        }
        int channel = 0;
        std::size_t differing = 0;
        for (std::size_t i = 0; i < a.pixels.size(); ++i) {
            const int d = std::max({std::abs(a.pixels[i].r - b.pixels[i].r),
                                    std::abs(a.pixels[i].g - b.pixels[i].g),
                                    std::abs(a.pixels[i].b - b.pixels[i].b)});
            channel = std::max(channel, d);
            differing += d != 0;
        }
        if (channel > bound) {
            std::printf("compare: %s: a channel differs by %d (bound %d), %zu pixels differ\n",
                        name.c_str(), channel, bound, differing);
            ok = false;
        }
        worstChannel = std::max(worstChannel, channel);
        differingPixels += differing;
        totalPixels += a.pixels.size();
    }
    std::printf("compare: %zu captures, largest channel difference %d (bound %d), "
                "%zu of %zu pixels differ\n",
                names.size(), worstChannel, bound, differingPixels, totalPixels);
    return ok ? 0 : 1;
}
