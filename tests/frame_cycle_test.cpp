// Frame cycle through the recording table: the alternating depth phases and the clears, and
// what a disabled driver leaves alone. What the render properties do to a frame is checked
// on the window by the scenario program.
#include "core/core.h"
#include "support/driver_fixture.h"
#include "support/gl_recorder.h"

#include <GL/gl.h>

using namespace norvgl;
using norvgl::GlCall;
using nvtest::GlRecorder;

namespace {

class FrameCycleTest : public nvtest::WindowTest {
protected:
    static std::vector<std::string> depthSetup(const GlRecorder& rec) {
        return rec.texts({GlCall::DepthFunc, GlCall::DepthRange});
    }
};

TEST_F(FrameCycleTest, DepthPhasesAlternateAndSkipDisabledFrames) {
    GlRecorder rec;
    std::vector<std::vector<std::string>> frames;
    for (int frame = 0; frame < 4; ++frame) {
        if (frame == 2)
            GFX_SetProperty(PROP_ENABLED, 0); // a disabled frame does not turn the phase
        GFX_BeginRender();
        frames.push_back(depthSetup(rec));
        rec.clear();
        GFX_EndRender();
        GFX_SetProperty(PROP_ENABLED, 1);
    }
    const std::vector<std::string> less = {"glDepthFunc(513)", "glDepthRange(0, 0.5)"};
    const std::vector<std::string> greater = {"glDepthFunc(516)", "glDepthRange(1, 0.5)"};
    // The first frame after load uses the near half, as GFX_Init left it.
    EXPECT_EQ(frames[0], less);
    EXPECT_EQ(frames[1], greater);
    EXPECT_TRUE(frames[2].empty());
    EXPECT_EQ(frames[3], less);
}

TEST_F(FrameCycleTest, ClearPropertyClearsBothBuffersEvenWhenDisabledAndFrameStartsOnlyColour) {
    GlRecorder rec;
    GFX_SetProperty(PROP_ENABLED, 0);
    GFX_SetRenderProperty(RPROP_CLEAR_COLOR, 0);
    GFX_SetProperty(PROP_ENABLED, 1);
    EXPECT_EQ(rec.texts({GlCall::DepthRange, GlCall::Clear}),
              (std::vector<std::string>{
                  "glDepthRange(0, 1)",
                  "glClear(" + std::to_string(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT) + ")",
                  "glDepthRange(0, 0.5)"}));
    GFX_SetRenderProperty(RPROP_CLEAR_COLOR, 1);
    rec.clear();
    GFX_BeginRender();
    GFX_EndRender();
    EXPECT_EQ(rec.texts({GlCall::Clear}),
              std::vector<std::string>{"glClear(" + std::to_string(GL_COLOR_BUFFER_BIT) + ")"});
}

} // namespace
