// Frame cycle through the recording table: the alternating depth phases, what each render
// property requests, and what a disabled driver leaves alone.
#include "core/core.h"
#include "manager3d/manager3d.h"
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

TEST_F(FrameCycleTest, QueuePropertiesRequestStateForTheRestOfTheFrame) {
    struct Case {
        int index;
        int value;
        std::int32_t StateNode::*key;
        std::int32_t expected;
    };
    const Case cases[] = {
        {RPROP_ALPHA_BLEND, 1, &StateNode::blendMode, BLEND_ALPHA},
        {RPROP_ALPHA_BLEND, 0, &StateNode::blendMode, BLEND_OFF},
        {RPROP_ADDITIVE_BLEND, 7, &StateNode::blendMode, BLEND_ADD},
        {RPROP_ADDITIVE_BLEND, 0, &StateNode::blendMode, BLEND_OFF},
        {RPROP_DEPTH_TEST, 0, &StateNode::depthMode, DEPTH_OFF},
        {RPROP_DEPTH_TEST, 1, &StateNode::depthMode, DEPTH_ON},
        {RPROP_CULLING, 1, &StateNode::cullMode, CULL_ON},
        {RPROP_CULLING, 0, &StateNode::cullMode, CULL_OFF},
    };
    for (const Case& c : cases) {
        GFX_BeginRender();
        // Start from the opposite value so that every request must change the key.
        if (c.expected == BLEND_OFF)
            GFX_SetRenderProperty(c.index, 1);
        else if (c.index == RPROP_DEPTH_TEST && c.expected == DEPTH_ON)
            GFX_SetRenderProperty(c.index, 0);
        EXPECT_EQ(GFX_SetRenderProperty(c.index, c.value), 0);
        EXPECT_EQ(m3d.currentNode->*c.key, c.expected) << c.index << " = " << c.value;
        EXPECT_EQ(GFX_GetRenderProperty(c.index), c.value);
        GFX_EndRender();
    }
}

TEST_F(FrameCycleTest, PropertiesSetOutsideTheFrameDoNotReachIt) {
    GFX_SetRenderProperty(RPROP_CULLING, 1);
    GFX_SetRenderProperty(RPROP_ADDITIVE_BLEND, 1);
    GFX_BeginRender();
    EXPECT_EQ(m3d.currentNode, &m3d.stateHeap[4]);
    EXPECT_EQ(m3d.currentNode->cullMode, CULL_OFF);
    EXPECT_EQ(m3d.currentNode->blendMode, BLEND_OFF);
    GFX_EndRender();
}

TEST_F(FrameCycleTest, ClearPropertyClearsBothBuffersEvenWhenDisabledAndFrameStartOnlyColour) {
    GlRecorder rec;
    GFX_SetProperty(PROP_ENABLED, 0);
    GFX_SetRenderProperty(RPROP_CLEAR_COLOR, 0);
    GFX_SetProperty(PROP_ENABLED, 1);
    EXPECT_EQ(rec.texts({GlCall::DepthRange, GlCall::Clear}),
              (std::vector<std::string>{
                  "glDepthRange(0, 1)",
                  "glClear(" + std::to_string(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT) + ")",
                  "glDepthRange(0, 0.5)"}));
    rec.clear();
    GFX_BeginRender();
    GFX_EndRender();
    EXPECT_EQ(rec.count(GlCall::Clear), 0u);
    GFX_SetRenderProperty(RPROP_CLEAR_COLOR, 1);
    rec.clear();
    GFX_BeginRender();
    GFX_EndRender();
    EXPECT_EQ(rec.texts({GlCall::Clear}),
              std::vector<std::string>{"glClear(" + std::to_string(GL_COLOR_BUFFER_BIT) + ")"});
}

} // namespace
