// Compares two runs of the scenario program, each a directory with results.txt, debuglog.txt,
// window captures (*.ppm), texture dumps (*.rgba) and other notes (*.txt): the same tests, all
// passed, each with the same log entries; logs of the same lines; every other file byte for
// byte. Both systems draw with the same software rasteriser, so the pictures must match
// exactly: a capture or texture that differs is reported with how many of its pixels do.
//   norvgl_compare_runs REFERENCE OTHER
#include "picture_assets.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace fs = std::filesystem;
using norvgl::assets::readText;

namespace {

std::set<std::string> filesOf(const fs::path& directory) {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(directory))
        if (entry.path().filename() != "results.txt" && entry.path().filename() != "debuglog.txt")
            names.insert(entry.path().filename().string());
    return names;
}

// Pixels of a capture (3 bytes) or a texture dump (4 bytes) that differ, counted over the
// files' tails; the headers are the same whenever the sizes are.
std::size_t differingPixels(const std::string& a, const std::string& b, std::size_t size) {
    std::size_t count = 0;
    for (std::size_t i = a.size() % size; i + size <= a.size(); i += size)
        count += a.compare(i, size, b, i, size) != 0;
    return count;
}

bool sameFiles(const fs::path& a, const fs::path& b) {
    const std::set<std::string> names = filesOf(a);
    if (names.empty() || names != filesOf(b)) {
        std::printf("compare: the two runs did not write the same files (%zu vs %zu)\n",
                    names.size(), filesOf(b).size());
        return false;
    }
    bool ok = true;
    std::size_t pictures = 0;
    for (const std::string& name : names) {
        const std::string left = readText((a / name).string());
        const std::string right = readText((b / name).string());
        if (left == right) {
            pictures += name.ends_with(".ppm") || name.ends_with(".rgba");
            continue;
        }
        ok = false;
        const std::size_t size = name.ends_with(".ppm") ? 3 : name.ends_with(".rgba") ? 4 : 0;
        if (size && left.size() == right.size())
            std::printf("compare: %s: %zu pixels differ\n", name.c_str(),
                        differingPixels(left, right, size));
        else
            std::printf("compare: %s differs:\n%s---\n%s", name.c_str(), left.c_str(),
                        right.c_str());
    }
    std::printf("compare: %zu files, %zu of them captures and textures\n", names.size(), pictures);
    return ok;
}

// results.txt: a block per test, its "name outcome" line followed by the log lines it caused,
// indented. Blocks are matched by name: the two programs may run the tests in other orders.
std::map<std::string, std::string> resultBlocks(const std::string& text) {
    std::map<std::string, std::string> blocks;
    std::istringstream in(text);
    std::string name;
    for (std::string line; std::getline(in, line);) {
        if (!line.starts_with("  "))
            name = line.substr(0, line.find(' '));
        blocks[name] += line + '\n';
    }
    return blocks;
}

bool sameResults(const fs::path& a, const fs::path& b) {
    const auto left = resultBlocks(readText(a.string()));
    const auto right = resultBlocks(readText(b.string()));
    if (left.size() < 2) {
        std::printf("compare: %s holds no test results\n", a.string().c_str());
        return false;
    }
    bool ok = left.size() == right.size();
    for (const auto& [name, block] : left) {
        const auto other = right.find(name);
        if (name != "(load)" && !block.starts_with(name + " passed\n")) {
            std::printf("compare: %s did not pass in %s\n", name.c_str(), a.string().c_str());
            ok = false;
        } else if (other == right.end() || other->second != block) {
            std::printf("compare: %s differs:\n%s---\n%s", name.c_str(), block.c_str(),
                        other == right.end() ? "(not run)\n" : other->second.c_str());
            ok = false;
        }
    }
    if (left.size() != right.size())
        std::printf("compare: %zu tests against %zu\n", left.size(), right.size());
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
    const std::string left = readText(a.string()), right = readText(b.string());
    if (left.empty() || sortedLines(left) != sortedLines(right)) {
        std::printf("compare: the debug logs %s and %s do not hold the same lines\n",
                    a.string().c_str(), b.string().c_str());
        return false;
    }
    return true;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: %s REFERENCE OTHER\n", argv[0]);
        return 2;
    }
    const fs::path reference = argv[1], other = argv[2];
    bool ok = sameResults(reference / "results.txt", other / "results.txt");
    ok &= sameLogLines(reference / "debuglog.txt", other / "debuglog.txt");
    ok &= sameFiles(reference, other);
    return ok ? 0 : 1;
}
