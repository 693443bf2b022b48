// Exported entries of pictures and text: loading, dimensions, texture selection, drawing
// pictures in pixels or fractions of the window, and bitmap-font text.
#include "core/core.h"
#include "pictures/pictures.h"

using namespace norvgl;

extern "C" {

int GFX_LoadPicture(const char* name, const void* data, unsigned int aux, unsigned int* id,
                    unsigned int flags) {
    return loadPicture(name, data, aux, id, flags);
}

int GFX_GetPictureDimensions(unsigned int id, unsigned int* width, unsigned int* height,
                             unsigned int* extra) {
    return getPictureDimensions(id, width, height, extra);
}

int GFX_SelectTexture(unsigned int id) {
    // The picture's texture is looked up before the flag is tested; only the state request
    // is guarded.
    const std::uint32_t texture = PictureTexture(id);
    if (!renderingEnabled())
        return 0;
    return requestTexture(texture);
}

int GFX_DrawPicture(unsigned int id, int x, int y, int width, int height) {
    if (!renderingEnabled())
        return 0;
    return DrawPictureRect(id, static_cast<float>(x), static_cast<float>(y),
                           static_cast<float>(width), static_cast<float>(height), false);
}

int GFX_DrawPictureByProportion(unsigned int id, float x, float y, float width, float height) {
    if (!renderingEnabled())
        return 0;
    return DrawPictureRect(id, x, y, width, height, true);
}

int GFX_SetFontSize(float width, float height) {
    return setFontSize(width, height);
}

int GFX_SetFontBitmap(unsigned int id) {
    return setFontBitmap(id);
}

int GFX_BeginText(void) {
    if (!renderingEnabled())
        return 0;
    return beginText();
}

int GFX_EndText(void) {
    if (!renderingEnabled())
        return 0;
    return endText();
}

int GFX_PrintByProportion(float x, float y, const char* text) {
    if (!renderingEnabled())
        return 0;
    return printByProportion(x, y, text);
}

} // extern "C"
