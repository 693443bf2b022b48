// Frame cycle: the alternating depth phase, the frame's open and close around the render
// queue, the clear colour, and what setting each render property does.
#include "driver/driver.h"
#include "manager3d/manager3d.h"
#include "platform/gl_table.h"
#include "platform/platform.h"

namespace norvgl {

namespace {

void request(std::uint32_t mask, std::uint32_t value) {
    Manager3D_StateCommand(mask, &value);
}

} // namespace

int beginRender() {
    if (!renderingEnabled())
        return 0;
    // Each frame writes depth into its own half of the range, so the depth buffer of the
    // frame before never has to be cleared.
    if (driver.depthPhase) {
        gl.DepthFunc(GL_LESS);
        gl.DepthRange(0.0, 0.5);
    } else {
        gl.DepthFunc(GL_GREATER);
        gl.DepthRange(1.0, 0.5);
    }
    driver.depthPhase = !driver.depthPhase;
    if (driver.renderProperties[RPROP_CLEAR_COLOR])
        gl.Clear(GL_COLOR_BUFFER_BIT);
    Manager3D_BeginFrame();
    return 0;
}

int endRender() {
    if (!renderingEnabled())
        return 0;
    Manager3D_EndFrame();
    gl.Flush();
    platform::swapBuffers();
    return 0;
}

int setClearColor(float red, float green, float blue, float alpha) {
    if (renderingEnabled())
        gl.ClearColor(red, green, blue, alpha);
    return 0;
}

int setRenderProperty(std::int32_t index, std::int32_t value) {
    if (index < 0 || index >= kRenderPropertyCount) {
        ReportError(ERR_BAD_PROPERTY, nullptr);
        return 1;
    }
    driver.renderProperties[index] = value;
    const bool enabled = renderingEnabled();
    switch (index) {
    case RPROP_ALPHA_BLEND:
        if (enabled)
            request(STATE_BLEND, value ? BLEND_ALPHA : BLEND_OFF);
        break;
    case RPROP_ADDITIVE_BLEND:
        if (enabled)
            request(STATE_BLEND, value ? BLEND_ADD : BLEND_OFF);
        break;
    case RPROP_DEPTH_TEST:
        if (enabled)
            request(STATE_DEPTH, value ? DEPTH_ON : DEPTH_OFF);
        break;
    case RPROP_SCREEN_SPACE:
        if (enabled)
            Manager3D_ScreenSpace(value != 0);
        break;
    case RPROP_CULLING:
        if (enabled)
            request(STATE_CULL, value ? CULL_ON : CULL_OFF);
        break;
    case RPROP_CLEAR_COLOR:
        // Acts whatever PROP_ENABLED says: a full clear of colour and depth.
        gl.DepthRange(0.0, 1.0);
        gl.Clear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        gl.DepthRange(0.0, 0.5);
        break;
    default:
        break;
    }
    return 0;
}

} // namespace norvgl
