// Picture loading: a file or a block of memory is recognised by its signature and read as a
// 3DF texture file or a Windows bitmap into the next record of the picture table.
#include "core/core.h"
#include "core/messages.h"
#include "formats/bitmap_decoder.h"
#include "pictures/pictures.h"
#include "formats/texture_file.h"
#include "platform/gl_table.h"
#include "platform/platform.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace norvgl {

namespace {

// Mip levels above level 0 that are made when a file brings only level 0.
constexpr std::int32_t kRgb565GeneratedLevels = 8;
constexpr std::int32_t kArgb8332GeneratedLevels = 7;
constexpr std::int32_t kBitmapGeneratedLevels = 8;
// glTexImage2D's internal format as a component count: red, green, blue and alpha.
constexpr GLint kRgbaComponents = 4;

constexpr char kJfifSignature[] = "JFIF";
constexpr std::size_t kJfifOffset = 6;
constexpr char kBitmapSignature[] = "BM";

// Compares the bytes of `signature` with `data` at `offset`, stopping at the first difference
// so that short data of unknown length is read no further than needed.
bool hasSignature(const std::uint8_t* data, std::size_t size, std::size_t offset,
                  const char* signature) {
    const std::size_t length = std::strlen(signature);
    if (size != kUnknownSize && (size < offset || size - offset < length))
        return false;
    for (std::size_t i = 0; i < length; ++i)
        if (data[offset + i] != static_cast<std::uint8_t>(signature[i]))
            return false;
    return true;
}

bool mipmapsWanted() {
    return driver.renderProperties[RPROP_MIPMAPS] != 0;
}

void uploadRgb(GLint level, std::int32_t width, std::int32_t height, const std::uint8_t* rgb) {
    gl.TexImage2D(GL_TEXTURE_2D, level, GL_RGB, width, height, 0, GL_RGB, GL_UNSIGNED_BYTE, rgb);
}

void uploadRgba(GLint level, std::int32_t width, std::int32_t height, const std::uint8_t* rgba) {
    gl.TexImage2D(GL_TEXTURE_2D, level, kRgbaComponents, width, height, 0, GL_RGBA,
                  GL_UNSIGNED_BYTE, rgba);
}

// The converted pixels to RGBA in place: blue and red exchanged, pure black transparent.
void toRgba(std::uint8_t* pixels, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i, pixels += 4) {
        std::swap(pixels[0], pixels[2]);
        pixels[3] = (pixels[0] | pixels[1] | pixels[2]) ? 255 : 0;
    }
}

void releasePixels(PictureRecord& record) {
    std::free(record.pixels);
    record.pixels = nullptr;
}

} // namespace

int loadPicture(const char* name, const void* data, std::uint32_t aux, std::uint32_t* idOut,
                std::uint32_t flags) {
    // A texture made now would belong to no context and draw white for ever.
    if (!platform::hasContext()) {
        ReportError(ERR_CREATE_CONTEXT, kNoContextForPicture);
        return 1;
    }
    if (data)
        return LoadPictureData(name, data, kUnknownSize, aux, idOut, flags);
    if (!name) {
        ReportError(ERR_INVALID_PARAMETER, nullptr);
        return 1;
    }
    std::intptr_t file = 0;
    if (FileOpen(&file, name, FILE_READ) != 0) {
        ReportError(ERR_FILE_NOT_FOUND, nullptr);
        return 1;
    }
    const std::uint32_t size = FileSize(file);
    void* block = nullptr;
    if (FileReadAll(&block, size, file) != 0) {
        MemFree(&block);
        FileClose(file);
        return 1;
    }
    FileClose(file);
    const int result = LoadPictureData(name, block, size, aux, idOut, flags);
    MemFree(&block);
    return result;
}

int LoadPictureData(const char* name, const void* data, std::size_t size, std::uint32_t,
                    std::uint32_t* idOut, std::uint32_t flags) {
    if (!data || !idOut || pictures.pictureCount >= PICTURE_CAPACITY) {
        ReportError(ERR_INVALID_FILE_DATA, nullptr);
        return 1;
    }

    const auto* bytes = static_cast<const std::uint8_t*>(data);
    PictureRecord& record = nextPictureRecord();
    int result;
    if (hasSignature(bytes, size, 0, kTdfMagicLine)) {
        result = Read3df(bytes, size, record);
    } else if (hasSignature(bytes, size, 0, kBitmapSignature)) {
        result = ReadBitmap(bytes, size, flags, record);
    } else if (hasSignature(bytes, size, kJfifOffset, kJfifSignature)) {
        // JPEG data is recognised, not decoded.
        ReportError(ERR_INVALID_FILE_DATA, nullptr);
        return 1;
    } else {
        ReportError(ERR_INVALID_FILE_DATA, kUnknownBitmapType, name ? name : "(null)");
        return 1;
    }
    if (result != 0)
        return result;
    *idOut = RegisterPicture(name);
    return 0;
}

int Read3df(const std::uint8_t* data, std::size_t size, PictureRecord& record) {
    TdfImage image;
    switch (readTextureFile(data, size, image)) {
    case TdfResult::Ok:
        break;
    case TdfResult::OutOfMemory:
        ReportError(ERR_OUT_OF_MEMORY, nullptr);
        return 1;
    default:
        ReportError(ERR_INVALID_FILE_DATA, nullptr);
        return 1;
    }
    const TdfHeader& header = image.header;
    releasePixels(record);
    record.width = static_cast<std::uint32_t>(header.width);
    record.height = static_cast<std::uint32_t>(header.height);
    const bool mipmaps = mipmapsWanted();
    CreatePictureTexture(&record.texture, mipmaps);

    if (header.levelCount > 1) {
        for (std::int32_t i = 0; i < header.levelCount; ++i)
            uploadRgb(i, image.levels[i].width, image.levels[i].height, image.levels[i].rgb.get());
        return 0;
    }
    std::int32_t width = header.width;
    std::int32_t height = header.height;
    std::uint8_t* level0 = image.levels[0].rgb.get();
    uploadRgb(0, width, height, level0);
    if (!mipmaps)
        return 0;
    // Each level is halved in place from the one before; a picture wider than tall reaches
    // a height of 0 before its width does.
    const std::int32_t extraLevels =
        header.format == TdfFormat::Rgb565 ? kRgb565GeneratedLevels : kArgb8332GeneratedLevels;
    for (std::int32_t level = 1; level <= extraLevels && width / 2 != 0; ++level) {
        HalveRgb(level0, static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height));
        width /= 2;
        height /= 2;
        uploadRgb(level, width, height, level0);
    }
    return 0;
}

int ReadBitmap(const std::uint8_t* data, std::size_t size, std::uint32_t flags,
               PictureRecord& record) {
    BitmapInfo info;
    if (parseBitmap(data, size, info) != BitmapResult::Ok) {
        ReportError(ERR_INVALID_FILE_DATA, nullptr);
        return 1;
    }
    const bool drawable =
        info.bitsPerPixel == 4 || info.bitsPerPixel == 8 || info.bitsPerPixel == 24;
    if (drawable && !bitmapBitsFit(info)) {
        ReportError(ERR_INVALID_FILE_DATA, nullptr);
        return 1;
    }

    releasePixels(record);
    record.texture = 0;
    record.width = static_cast<std::uint32_t>(info.width);
    record.height = info.absHeight;
    const BitmapPlan plan =
        planBitmap(record.width, record.height, driver.properties[PROP_NO_TEXTURES] == 0);
    const bool textured = plan.target != BitmapTarget::PixelArray;
    const bool mipmaps = mipmapsWanted() && (flags & PICTURE_NO_MIPMAPS) == 0;
    if (textured)
        CreatePictureTexture(&record.texture, mipmaps);
    if (plan.target == BitmapTarget::TextureWithoutImage)
        return 0;
    std::uint32_t width = plan.width;
    std::uint32_t height = plan.height;
    if (!drawable) {
        ReportError(ERR_INVALID_FILE_DATA, kBitmapBitsUnsupported, info.bitsPerPixel);
        return 0;
    }

    const std::size_t count = static_cast<std::size_t>(width) * height;
    auto* pixels = static_cast<std::uint8_t*>(std::calloc(count, 4));
    if (!pixels) {
        ReportError(ERR_OUT_OF_MEMORY, nullptr);
        return 0;
    }
    if (!platform::convertBitmap(data, size, info, static_cast<std::int32_t>(width),
                                 static_cast<std::int32_t>(height), pixels)) {
        std::free(pixels);
        ReportError(ERR_INVALID_FILE_DATA, kNoDibSection);
        return 0;
    }
    toRgba(pixels, count);

    if (!textured) {
        record.pixels = pixels;
        return 0;
    }
    uploadRgba(0, static_cast<GLsizei>(width), static_cast<GLsizei>(height), pixels);
    for (GLint level = 1; mipmaps && level <= kBitmapGeneratedLevels && width >= 2; ++level) {
        HalveRgba(pixels, width, height);
        width /= 2;
        height /= 2;
        uploadRgba(level, static_cast<GLsizei>(width), static_cast<GLsizei>(height), pixels);
    }
    std::free(pixels);
    return 0;
}

} // namespace norvgl
