// Windows-side reference for the bitmap decoder: draws each listed bitmap into a fresh 32-bit
// DIB section with StretchDIBits, as the driver does on Windows, and writes the section's
// pixels. Input: a list file of lines "NAME.bmp WIDTH HEIGHT"; output: NAME.out beside each
// bitmap (WIDTH × HEIGHT × 4 bytes, bottom row first), or NAME.fail when the call failed.
#include <windows.h>

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

// Mirrors the driver's conversion: the header block starts at byte 14, the bits follow the
// header and the palette by the colours-used rule.
bool draw(const std::vector<unsigned char>& file, int width, int height,
          std::vector<unsigned char>& out) {
    const unsigned char* block = file.data() + 14;
    BITMAPINFOHEADER header;
    std::memcpy(&header, block, sizeof header);
    unsigned long colors = header.biClrUsed;
    if (colors == 0) {
        colors = header.biBitCount < 24 ? 1ul << header.biBitCount : 0;
    }
    const unsigned char* bits = block + header.biSize + 4 * colors;

    HDC dc = CreateCompatibleDC(nullptr);
    BITMAPINFO target;
    std::memset(&target, 0, sizeof target);
    target.bmiHeader.biSize = 40;
    target.bmiHeader.biWidth = width;
    target.bmiHeader.biHeight = height;
    target.bmiHeader.biPlanes = 1;
    target.bmiHeader.biBitCount = 32;
    void* pixels = nullptr;
    HBITMAP section = CreateDIBSection(dc, &target, DIB_RGB_COLORS, &pixels, nullptr, 0);
    if (section == nullptr) {
        DeleteDC(dc);
        return false;
    }
    HGDIOBJ old = SelectObject(dc, section);
    const int lines =
        StretchDIBits(dc, 0, 0, width, height, 0, 0, header.biWidth,
                      header.biHeight < 0 ? -header.biHeight : header.biHeight, bits,
                      reinterpret_cast<const BITMAPINFO*>(block), DIB_RGB_COLORS, SRCCOPY);
    GdiFlush();
    out.assign(static_cast<const unsigned char*>(pixels),
               static_cast<const unsigned char*>(pixels) + static_cast<size_t>(width) * height * 4);
    SelectObject(dc, old);
    DeleteObject(section);
    DeleteDC(dc);
    return lines != 0;
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
        if (!readAll(path, file) || file.size() < 54 || !draw(file, width, height, out)) {
            writeAll(stem + ".fail", "", 0);
        }
        writeAll(stem + ".out", out.data(), out.size());
        ++count;
    }
    std::fclose(f);
    std::printf("dibref: %d bitmaps drawn\n", count);
    return 0;
}
