// Windows-side reference for the bitmap decoder: draws each listed bitmap with the driver's
// Windows conversion (a fresh 32-bit DIB section and StretchDIBits) and writes the section's
// pixels. Input: a list file of lines "NAME.bmp WIDTH HEIGHT"; output: NAME.out beside each
// bitmap (WIDTH × HEIGHT × 4 bytes, bottom row first), and NAME.fail when the headers were
// refused or no section could be made.
#include "formats/bitmap_decoder.h"
#include "platform/platform.h"

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

bool readAll(const std::string& path, std::vector<unsigned char>& bytes) {
    FILE* f = std::fopen(path.c_str(), "rb");
    if (f == nullptr) {
        return false;
    }
    unsigned char buffer[65536];
    size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, f)) > 0) {
        bytes.insert(bytes.end(), buffer, buffer + n);
    }
    std::fclose(f);
    return true;
}

void writeAll(const std::string& path, const void* data, size_t size) {
    FILE* f = std::fopen(path.c_str(), "wb");
    if (f != nullptr) {
        std::fwrite(data, 1, size, f);
        std::fclose(f);
    }
}

// Through the driver's own Windows conversion, on a target zeroed as the driver's is. False
// when the headers are refused or no target bitmap could be made.
bool draw(const std::vector<unsigned char>& file, int width, int height,
          std::vector<unsigned char>& out) {
    out.assign(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4, 0);
    norvgl::BitmapInfo info;
    if (norvgl::parseBitmap(file.data(), file.size(), info) != norvgl::BitmapResult::Ok)
        return false;
    return norvgl::platform::convertBitmap(file.data(), file.size(), info, width, height,
                                           out.data());
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: norvgl_dibref LIST\n");
        return 2;
    }
    std::string list = argv[1];
    const std::string dir = list.substr(0, list.find_last_of("/\\") + 1);
    FILE* f = std::fopen(list.c_str(), "r");
    if (f == nullptr) {
        return 1;
    }
    char name[512];
    int width = 0;
    int height = 0;
    int count = 0;
    while (std::fscanf(f, "%511s %d %d", name, &width, &height) == 3) {
        std::vector<unsigned char> file;
        std::vector<unsigned char> out;
        const std::string path = dir + name;
        const std::string stem = path.substr(0, path.size() - 4);
        if (!readAll(path, file) || !draw(file, width, height, out)) {
            writeAll(stem + ".fail", "", 0);
        }
        writeAll(stem + ".out", out.data(), out.size());
        ++count;
    }
    std::fclose(f);
    std::printf("dibref: %d bitmaps drawn\n", count);
    return 0;
}
