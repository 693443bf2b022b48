// Picture table: ids in load order, lookups by id and by name, texture objects with their
// wrap and filter settings, the box filters that make mip levels, and emptying the table.
#include "core/core.h"
#include "manager3d/manager3d.h"
#include "pictures/pictures.h"
#include "platform/gl_table.h"

#include <cstdlib>
#include <cstring>
#include <vector>

namespace norvgl {

PictureState pictures = {};

namespace {

// Case-insensitive comparison of ASCII names, as the host's file names are compared.
bool sameName(const char* a, const char* b) {
    for (;; ++a, ++b) {
        unsigned char ca = static_cast<unsigned char>(*a);
        unsigned char cb = static_cast<unsigned char>(*b);
        if (ca >= 'A' && ca <= 'Z')
            ca = static_cast<unsigned char>(ca - 'A' + 'a');
        if (cb >= 'A' && cb <= 'Z')
            cb = static_cast<unsigned char>(cb - 'A' + 'a');
        if (ca != cb)
            return false;
        if (ca == 0)
            return true;
    }
}

template <std::uint32_t Channels>
void halve(std::uint8_t* pixels, std::uint32_t width, std::uint32_t height) {
    const std::uint32_t w2 = width / 2;
    const std::uint32_t h2 = height / 2;
    if (w2 == 0 || h2 == 0)
        return;
    std::vector<std::uint8_t> scratch(static_cast<std::size_t>(w2) * h2 * Channels);
    const std::size_t rowBytes = static_cast<std::size_t>(width) * Channels;
    std::uint8_t* out = scratch.data();
    for (std::uint32_t y = 0; y < h2; ++y) {
        const std::uint8_t* top = pixels + 2 * y * rowBytes;
        const std::uint8_t* bottom = top + rowBytes;
        for (std::uint32_t x = 0; x < w2; ++x) {
            const std::size_t left = static_cast<std::size_t>(2) * x * Channels;
            for (std::uint32_t c = 0; c < Channels; ++c) {
                const unsigned sum = top[left + c] + top[left + Channels + c] + bottom[left + c] +
                                     bottom[left + Channels + c];
                *out++ = static_cast<std::uint8_t>(sum >> 2);
            }
        }
    }
    std::memcpy(pixels, scratch.data(), scratch.size());
}

} // namespace

const PictureRecord& pictureRecord(std::uint32_t id) {
    return pictures.table[id <= PICTURE_CAPACITY ? id : 0];
}

PictureRecord& nextPictureRecord() {
    // Loads are refused while the table is full, so the next slot is always inside it.
    const std::uint32_t next =
        pictures.pictureCount < PICTURE_CAPACITY ? pictures.pictureCount + 1 : PICTURE_CAPACITY;
    return pictures.table[next];
}

std::uint32_t PictureTexture(std::uint32_t id) {
    return pictureRecord(id).texture;
}

std::uint32_t FindPictureTexture(const char* name) {
    if (!name)
        return 0;
    for (std::uint32_t id = 1; id <= pictures.pictureCount; ++id)
        if (sameName(pictures.table[id].name, name))
            return pictures.table[id].texture;
    return 0;
}

std::uint32_t RegisterPicture(const char* name) {
    PictureRecord& record = nextPictureRecord();
    if (name) {
        // Longer names are cut to what the field holds.
        std::strncpy(record.name, name, kPictureNameSize - 1);
        record.name[kPictureNameSize - 1] = '\0';
    }
    return ++pictures.pictureCount;
}

void CreatePictureTexture(std::uint32_t* textureSlot, bool mipmapped) {
    GLuint name = 0;
    gl.GenTextures(1, &name);
    *textureSlot = name;
    gl.BindTexture(GL_TEXTURE_2D, name);
    gl.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT);
    gl.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT);
    if (mipmapped) {
        gl.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    } else {
        gl.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        gl.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    }
}

void HalveRgb(std::uint8_t* pixels, std::uint32_t width, std::uint32_t height) {
    halve<3>(pixels, width, height);
}

void HalveRgba(std::uint8_t* pixels, std::uint32_t width, std::uint32_t height) {
    halve<4>(pixels, width, height);
}

int getPictureDimensions(std::uint32_t id, std::uint32_t* width, std::uint32_t* height,
                         std::uint32_t* extra) {
    if (id > pictures.pictureCount)
        return 1;
    const PictureRecord& record = pictureRecord(id);
    if (width)
        *width = record.width;
    if (height)
        *height = record.height;
    if (extra)
        *extra = record.extra;
    return 0;
}

int requestTexture(std::uint32_t texture) {
    return Manager3D_StateCommand(STATE_TEXTURE, &texture);
}

void UnloadPictures() {
    const std::uint32_t count = pictures.pictureCount;
    if (count == 0)
        return;
    // In a fresh context picture k has texture name k; the records' own names are what is
    // deleted, so pictures held as pixels (name 0, which GL skips) shift nothing.
    GLuint names[PICTURE_CAPACITY];
    for (std::uint32_t id = 1; id <= count; ++id) {
        PictureRecord& record = pictures.table[id];
        names[id - 1] = record.texture;
        std::free(record.pixels);
        record.pixels = nullptr;
    }
    gl.DeleteTextures(static_cast<GLsizei>(count), names);
    pictures.pictureCount = 0;
}

void Pictures_Reset() {
    for (PictureRecord& record : pictures.table) {
        std::free(record.pixels);
        record = PictureRecord{};
    }
    pictures.pictureCount = 0;
    font = FontState{};
}

} // namespace norvgl
