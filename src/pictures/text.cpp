// Bitmap-font text: a loaded picture holds a 16 x 16 grid of glyph cells; each character
// becomes two screen-space triangles, queued under text mode's own render state.
#include "core/core.h"
#include "manager3d/manager3d.h"
#include "pictures/pictures.h"

#include <cstring>

namespace norvgl {

FontState font;

namespace {

constexpr float kCellSpan = 1.0f / FONT_GRID_COLUMNS; // of the texture, each direction
constexpr int kGlyphVertices = 6;
constexpr int kVertexFloats = 8;
constexpr std::uint32_t kTextStateMask = STATE_DEPTH | STATE_BLEND | STATE_MATERIAL | STATE_TEXTURE;
constexpr std::uint8_t kSpace = 32;

bool textModeAvailable() {
    return driver.properties[PROP_NO_TEXTURES] == 0;
}

// The font picture's texture name. A picture ordinarily has the texture name equal to its
// id; a picture that kept no texture shifts the names of those loaded after it, so a loaded
// font is bound by its record. A font id that names no loaded picture is handed on as it is.
std::uint32_t fontTexture() {
    if (font.fontPicture >= 1 && font.fontPicture <= pictures.pictureCount)
        return PictureTexture(font.fontPicture);
    return font.fontPicture;
}

} // namespace

int setFontSize(float width, float height) {
    font.fontWidth = width;
    font.fontHeight = height;
    return 0;
}

int setFontBitmap(std::uint32_t id) {
    if (id > pictures.pictureCount) {
        ReportError(ERR_INVALID_PARAMETER, nullptr);
        return 1;
    }
    font.fontPicture = id;
    return 0;
}

int beginText() {
    if (!textModeAvailable())
        return 0;
    Manager3D_ScreenSpace(true);
    Manager3D_PushState();
    // Depth off, additive blending, white material, the font's texture (low 16 bits).
    unsigned char values[4 + 4 + 48 + 4];
    const std::uint32_t depth = DEPTH_OFF;
    const std::uint32_t blend = BLEND_ADD;
    const std::uint32_t texture = fontTexture() & 0xFFFFu;
    const float white = 1.0f;
    std::memcpy(values, &depth, 4);
    std::memcpy(values + 4, &blend, 4);
    for (int i = 0; i < 12; ++i)
        std::memcpy(values + 8 + 4 * i, &white, 4);
    std::memcpy(values + 56, &texture, 4);
    Manager3D_StateCommand(kTextStateMask, values);
    return 0;
}

int endText() {
    if (!textModeAvailable())
        return 0;
    Manager3D_ScreenSpace(false);
    Manager3D_PopState();
    return 0;
}

int printByProportion(float x, float y, const char* text) {
    if (!text)
        return 0;
    const float cw = 2.0f * font.fontWidth;
    const float ch = 2.0f * font.fontHeight;
    const float x0 = 2.0f * x - 1.0f;
    const float y0 = 1.0f - 2.0f * y;
    for (std::uint32_t i = 0; text[i] != '\0'; ++i) {
        if (static_cast<std::uint8_t>(text[i]) == kSpace)
            continue;
        // Codes 128-255 count as negative: their cells come out of the picture and the
        // texture's repeat wrapping folds them back in.
        const int c = static_cast<std::int8_t>(text[i]);
        const int row = c / FONT_GRID_COLUMNS;
        const int col = c - FONT_GRID_COLUMNS * row;
        const float xl = x0 + static_cast<float>(i) * cw;
        const float xr = x0 + static_cast<float>(i + 1) * cw;
        const float yt = y0;
        const float yb = y0 - ch;
        const float s0 = static_cast<float>(col) * kCellSpan;
        const float s1 = static_cast<float>(col + 1) * kCellSpan;
        const float t0 = static_cast<float>(row) * kCellSpan;
        const float t1 = static_cast<float>(row + 1) * kCellSpan;
        float glyph[kGlyphVertices * kVertexFloats];
        setScreenVertex(glyph + 0 * kVertexFloats, xl, yt, s0, t0);
        setScreenVertex(glyph + 1 * kVertexFloats, xl, yb, s0, t1);
        setScreenVertex(glyph + 2 * kVertexFloats, xr, yt, s1, t0);
        setScreenVertex(glyph + 3 * kVertexFloats, xl, yb, s0, t1);
        setScreenVertex(glyph + 4 * kVertexFloats, xr, yb, s1, t1);
        setScreenVertex(glyph + 5 * kVertexFloats, xr, yt, s1, t0);
        Manager3D_SubmitHostVertices(PRIM_TRIANGLES, kGlyphVertices, glyph, nullptr, 0);
    }
    return 0;
}

} // namespace norvgl
