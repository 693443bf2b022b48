// Bitmap conversion on Windows: GDI draws the file's image, palettes and run-length coding
// included, stretched into a 32-bit device-independent bitmap section.
#include "formats/bitmap_decoder.h"
#include "platform/gl_headers.h"
#include "platform/platform.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace norvgl::platform {

bool convertBitmap(const std::uint8_t* file, std::size_t, const BitmapInfo& info,
                   std::int32_t width, std::int32_t height, std::uint8_t* out) {
    HDC dc = CreateCompatibleDC(nullptr);
    if (!dc)
        return false;
    BITMAPINFO target = {};
    target.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
    target.bmiHeader.biWidth = width;
    target.bmiHeader.biHeight = height; // rows stored bottom first
    target.bmiHeader.biPlanes = 1;
    target.bmiHeader.biBitCount = 32;
    target.bmiHeader.biCompression = BI_RGB;
    void* bits = nullptr;
    HBITMAP section = CreateDIBSection(dc, &target, DIB_RGB_COLORS, &bits, nullptr, 0);
    if (!section || !bits) {
        if (section)
            DeleteObject(section);
        DeleteDC(dc);
        return false;
    }
    const HGDIOBJ previous = SelectObject(dc, section);

    // The info header and palette, copied so that run-length data can be told where it
    // ends: GDI reads compressed bits as far as the header's image size says.
    std::vector<std::uint8_t> header(file + kBitmapFileHeaderSize, file + info.bitsOffset);
    if (info.compression == kBitmapRle8 || info.compression == kBitmapRle4) {
        const auto available = static_cast<DWORD>(info.fileSize - info.bitsOffset);
        auto* infoHeader = reinterpret_cast<BITMAPINFOHEADER*>(header.data());
        infoHeader->biSizeImage = infoHeader->biSizeImage
                                      ? std::min<DWORD>(infoHeader->biSizeImage, available)
                                      : available;
    }
    StretchDIBits(dc, 0, 0, width, height, 0, 0, info.width, static_cast<int>(info.absHeight),
                  file + info.bitsOffset, reinterpret_cast<const BITMAPINFO*>(header.data()),
                  DIB_RGB_COLORS, SRCCOPY);
    GdiFlush();
    std::memcpy(out, bits, static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4);

    SelectObject(dc, previous);
    DeleteObject(section);
    DeleteDC(dc);
    return true;
}

} // namespace norvgl::platform
