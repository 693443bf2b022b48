// Lights act on GL at once, in host coordinates converted on the way; materials are queue state.
#include "core/core.h"
#include "manager3d/manager3d.h"
#include "support/driver_fixture.h"
#include "support/gl_recorder.h"

#include <GL/gl.h>

#include <array>

using namespace norvgl;
using norvgl::GlCall;
using nvtest::GlRecorder;

namespace {

class LightsTest : public nvtest::WindowTest {
protected:
    // What GL holds now for a light parameter (the position as transformed at the call; the
    // modelview is the identity outside frames here).
    static std::array<float, 4> light(unsigned index, GLenum what) {
        std::array<float, 4> v = {};
        glGetLightfv(GL_LIGHT0 + index, what, v.data());
        return v;
    }
};

TEST_F(LightsTest, AddLightNegatesYAndZAndSetLightPositionOnlyZKeepingW) {
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    EXPECT_EQ(GFX_AddLight(0, 1, 0, 1, 0), 0);
    EXPECT_EQ(light(0, GL_POSITION), (std::array<float, 4>{0, -1, 0, 0}));
    EXPECT_EQ(GFX_AddLight(2, 0, 1, 2, 3), 0);
    EXPECT_EQ(light(2, GL_POSITION), (std::array<float, 4>{1, -2, -3, 1}));
    EXPECT_EQ(light(2, GL_DIFFUSE), (std::array<float, 4>{1, 1, 1, 1}));
    EXPECT_TRUE(glIsEnabled(GL_LIGHTING));
    EXPECT_TRUE(glIsEnabled(GL_LIGHT2));

    EXPECT_EQ(GFX_SetLightPosition(2, 1, 2, 3), 0);
    EXPECT_EQ(light(2, GL_POSITION), (std::array<float, 4>{1, 2, -3, 1}));
    EXPECT_EQ(GFX_SetLightPosition(0, 4, 5, 6), 0); // stays directional
    EXPECT_EQ(light(0, GL_POSITION), (std::array<float, 4>{4, 5, -6, 0}));

    EXPECT_EQ(GFX_SetLightColor(0, 0.1f, 0.2f, 0.3f, 0.4f, 0.5f, 0.6f, 0.7f, 0.8f, 0.9f), 0);
    EXPECT_EQ(light(0, GL_AMBIENT), (std::array<float, 4>{0.1f, 0.2f, 0.3f, 1}));
    EXPECT_EQ(light(0, GL_DIFFUSE), (std::array<float, 4>{0.4f, 0.5f, 0.6f, 1}));
    EXPECT_EQ(light(0, GL_SPECULAR), (std::array<float, 4>{0.7f, 0.8f, 0.9f, 1}));

    EXPECT_EQ(GFX_RemoveLight(2), 0);
    EXPECT_FALSE(glIsEnabled(GL_LIGHT2));
    EXPECT_TRUE(glIsEnabled(GL_LIGHTING));
}

// Types up to 2 are lights (1 directional, any other positional, the test being signed); a
// type above 2 is refused before any GL call.
TEST_F(LightsTest, TypesUpToTwoAreAcceptedAndHigherOnesRefusedBeforeAnyGlCall) {
    struct Case {
        int type;
        int result;
        float w; // the position's w after the call; -1 when nothing may reach GL
    };
    for (const Case c :
         {Case{3, 1, -1}, Case{2, 0, 1}, Case{1, 0, 0}, Case{0, 0, 1}, Case{-4, 0, 1}}) {
        GFX_RemoveLight(1);
        glLightfv(GL_LIGHT1, GL_POSITION, std::array<float, 4>{0, 0, 1, -1}.data());
        GlRecorder rec;
        EXPECT_EQ(GFX_AddLight(1, c.type, 0, 0, 0), c.result) << c.type;
        EXPECT_EQ(light(1, GL_POSITION)[3], c.w) << c.type;
        EXPECT_EQ(rec.calls().empty(), c.result == 1) << c.type;
        EXPECT_EQ(glIsEnabled(GL_LIGHT1) == GL_TRUE, c.result == 0) << c.type;
    }
    EXPECT_EQ(driver.lastError, ERR_NONE);
}

TEST_F(LightsTest, MaterialColorAndItsAlphaFormSelectOneNode) {
    GFX_BeginRender();
    GFX_SetMaterialColor(0.1f, 0.2f, 0.3f, 0.4f, 0.5f, 0.6f, 0.7f, 0.8f, 0.9f);
    StateNode* first = m3d.currentNode;
    EXPECT_EQ(first->diffuse[1], 0.5f);
    EXPECT_EQ(first->specular[3], 1.0f);
    GFX_SetMaterialColorEx(0.1f, 0.2f, 0.3f, 1, 0.4f, 0.5f, 0.6f, 1, 0.7f, 0.8f, 0.9f, 1);
    EXPECT_EQ(m3d.currentNode, first);
    EXPECT_EQ(first->isAppendable, 0);
    GFX_EndRender();
}

} // namespace
