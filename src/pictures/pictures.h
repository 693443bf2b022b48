// Pictures and text: the picture table with its textures, the loading of 3DF files and
// bitmaps into it, pictures drawn on screen, and bitmap-font text.
#pragma once

#include <cstddef>
#include <cstdint>

namespace norvgl {

inline constexpr std::uint32_t PICTURE_CAPACITY = 1024; // ids 1-1024; record 0 stays empty
inline constexpr std::size_t kPictureNameSize = 128;    // 127 characters and a terminator

struct PictureRecord {
    char name[kPictureNameSize];
    // GL texture name; 0 for a picture held as pixels.
    std::uint32_t texture;
    // Size as stored in the file, before any rounding for the texture.
    std::uint32_t width;
    std::uint32_t height;
    std::uint32_t extra; // no loader sets it
    // RGBA pixels, bottom row first, width x height, for a picture that is not a texture.
    std::uint8_t* pixels;
};

struct PictureState {
    PictureRecord table[PICTURE_CAPACITY + 1];
    // Pictures loaded since the table was last emptied; also the highest valid id.
    std::uint32_t pictureCount;
};

extern PictureState pictures;

inline constexpr std::uint32_t kNoFont = 0xFFFFFFFFu;
inline constexpr std::int32_t FONT_GRID_COLUMNS = 16;

struct FontState {
    float fontWidth = 0.0f;  // cell width as a fraction of the window width
    float fontHeight = 0.0f; // cell height as a fraction of the window height
    std::uint32_t fontPicture = kNoFont;
};

extern FontState font;

// Picture table.
// The record `id` names, or the empty record 0 for an id past the table.
const PictureRecord& pictureRecord(std::uint32_t id);
// The record the next load fills.
PictureRecord& nextPictureRecord();
std::uint32_t PictureTexture(std::uint32_t id);
std::uint32_t FindPictureTexture(const char* name);
std::uint32_t RegisterPicture(const char* name);
void CreatePictureTexture(std::uint32_t* textureSlot, bool mipmapped);
void HalveRgb(std::uint8_t* pixels, std::uint32_t width, std::uint32_t height);
void HalveRgba(std::uint8_t* pixels, std::uint32_t width, std::uint32_t height);
int getPictureDimensions(std::uint32_t id, std::uint32_t* width, std::uint32_t* height,
                         std::uint32_t* extra);
// State request for a texture name, as looked up by PictureTexture.
int requestTexture(std::uint32_t texture);
void UnloadPictures();
// Back to the state of a fresh load, without GL: records and pixels freed, font unset. The
// textures are the context's, gone with it.
void Pictures_Reset();

// Loading. `size` bounds every read of `data`; a load from memory passes kUnknownSize.
inline constexpr std::size_t kUnknownSize = static_cast<std::size_t>(-1);
int loadPicture(const char* name, const void* data, std::uint32_t aux, std::uint32_t* idOut,
                std::uint32_t flags);
int LoadPictureData(const char* name, const void* data, std::size_t size, std::uint32_t aux,
                    std::uint32_t* idOut, std::uint32_t flags);
int Read3df(const std::uint8_t* data, std::size_t size, PictureRecord& record);
int ReadBitmap(const std::uint8_t* data, std::size_t size, std::uint32_t flags,
               PictureRecord& record);

// Drawing.
int DrawPictureRect(std::uint32_t id, float x, float y, float width, float height,
                    bool proportional);

// One host vertex of a screen-space quad: at depth 1, normal along +z, with its texture
// coordinate.
inline void setScreenVertex(float* v, float x, float y, float s, float t) {
    v[0] = x;
    v[1] = y;
    v[2] = 1.0f;
    v[3] = 0.0f;
    v[4] = 0.0f;
    v[5] = 1.0f;
    v[6] = s;
    v[7] = t;
}

// Text.
int setFontSize(float width, float height);
int setFontBitmap(std::uint32_t id);
int beginText();
int endText();
int printByProportion(float x, float y, const char* text);

} // namespace norvgl
