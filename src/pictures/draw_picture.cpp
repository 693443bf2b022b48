// Picture drawing: a rectangle in window pixels or fractions, top-left origin, becomes one
// textured quad queued in screen space; a picture held as pixels is copied to the frame at once.
#include "core/core.h"
#include "manager3d/manager3d.h"
#include "pictures/pictures.h"
#include "platform/gl_table.h"

namespace norvgl {

namespace {

constexpr int kQuadVertices = 4;
constexpr int kVertexFloats = 8;

void drawPixels(const PictureRecord& record) {
    // The pixels land at the context's raster position, which stays at its initial place,
    // the window's lower-left corner. That position's depth (0) would fail the far-to-near
    // test of every other frame, so the copy is made without depth testing; between frames
    // the depth test is always on.
    gl.Disable(GL_DEPTH_TEST);
    gl.DrawPixels(static_cast<GLsizei>(record.width), static_cast<GLsizei>(record.height), GL_RGBA,
                  GL_UNSIGNED_BYTE, record.pixels);
    gl.Enable(GL_DEPTH_TEST);
}

// As the host's RPROP_SCREEN_SPACE does: the stored property follows the queue.
void setScreenSpace(bool on) {
    driver.renderProperties[RPROP_SCREEN_SPACE] = on ? 1 : 0;
    Manager3D_ScreenSpace(on);
}

} // namespace

int DrawPictureRect(std::uint32_t id, float x, float y, float width, float height,
                    bool proportional) {
    const PictureRecord& record = pictureRecord(id);
    if (width == 0.0f)
        width = static_cast<float>(record.width);
    if (height == 0.0f)
        height = static_cast<float>(record.height);

    float X, Y, W, H;
    if (proportional) {
        X = 2.0f * x - 1.0f;
        Y = 1.0f - 2.0f * y;
        W = 2.0f * width;
        H = 2.0f * height;
    } else {
        // Halved as whole pixels: a 641-pixel window has 320 pixels a side.
        const auto hw = static_cast<float>(static_cast<std::uint32_t>(driver.clientWidth) / 2);
        const auto hh = static_cast<float>(static_cast<std::uint32_t>(driver.clientHeight) / 2);
        X = x / hw - 1.0f;
        Y = 1.0f - y / hh;
        W = width / hw;
        H = height / hh;
    }

    if (record.pixels) {
        drawPixels(record);
        return 0;
    }

    // The queue stores t negated; with repeat wrapping the quad's top edge shows the
    // picture's top row.
    float quad[kQuadVertices * kVertexFloats];
    setScreenVertex(quad + 0 * kVertexFloats, X, Y, 0.0f, 0.0f);
    setScreenVertex(quad + 1 * kVertexFloats, X, Y - H, 0.0f, 1.0f);
    setScreenVertex(quad + 2 * kVertexFloats, X + W, Y - H, 1.0f, 1.0f);
    setScreenVertex(quad + 3 * kVertexFloats, X + W, Y, 1.0f, 0.0f);

    requestTexture(PictureTexture(id));
    setScreenSpace(true);
    Manager3D_SubmitHostVertices(PRIM_QUADS, kQuadVertices, quad, nullptr, 0);
    setScreenSpace(false);
    return 0;
}

} // namespace norvgl
