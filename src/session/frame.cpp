// Frame cycle: the alternating depth phase, the frame's open and close around the render
// queue, the clear colour, and what setting each render property does.
#include "manager3d/manager3d.h"
#include "session/session.h"
#include "platform/gl_table.h"
#include "platform/platform.h"

namespace norvgl {

namespace {

void request(std::uint32_t mask, std::uint32_t value) {
    Manager3D_StateCommand(mask, &value);
}

} // namespace

SessionState session;

int beginRender() {
    platform::keepErrorTrap();
    // Each frame writes depth into its own half of the range, so the depth buffer of the
    // frame before never has to be cleared.
    if (session.depthPhase) {
        gl.DepthFunc(GL_LESS);
        gl.DepthRange(0.0, 0.5);
    } else {
        gl.DepthFunc(GL_GREATER);
        gl.DepthRange(1.0, 0.5);
    }
    session.depthPhase = !session.depthPhase;
    if (driver.renderProperties[RPROP_CLEAR_COLOR])
        gl.Clear(GL_COLOR_BUFFER_BIT);
    Manager3D_BeginFrame();
    return 0;
}

int endRender() {
    platform::keepErrorTrap();
    Manager3D_EndFrame();
    gl.Flush();
    platform::swapBuffers();
    return 0;
}

int setClearColor(float red, float green, float blue, float alpha) {
    gl.ClearColor(red, green, blue, alpha);
    return 0;
}

int setRenderProperty(std::int32_t index, std::int32_t value, bool stateRequests) {
    if (index < 0 || index >= kRenderPropertyCount) {
        ReportError(ERR_BAD_PROPERTY, nullptr);
        return 1;
    }
    driver.renderProperties[index] = value;
    switch (index) {
    case RPROP_ALPHA_BLEND:
        if (stateRequests)
            request(STATE_BLEND, value ? BLEND_ALPHA : BLEND_OFF);
        break;
    case RPROP_ADDITIVE_BLEND:
        if (stateRequests)
            request(STATE_BLEND, value ? BLEND_ADD : BLEND_OFF);
        break;
    case RPROP_DEPTH_TEST:
        if (stateRequests)
            request(STATE_DEPTH, value ? DEPTH_ON : DEPTH_OFF);
        break;
    case RPROP_SCREEN_SPACE:
        if (stateRequests)
            Manager3D_ScreenSpace(value != 0);
        break;
    case RPROP_CULLING:
        if (stateRequests)
            request(STATE_CULL, value ? CULL_ON : CULL_OFF);
        break;
    case RPROP_CLEAR_COLOR:
        // Not a state request: a full clear of colour and depth, always.
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
