// Transform stack: what each transform does to GL's modelview matrix, the slots it takes, and
// untransform, look-at and screen space.
#include "core/core.h"
#include "manager3d/manager3d.h"
#include "support/driver_fixture.h"
#include "support/gl_recorder.h"

#include <cmath>
#include <cstring>

using namespace norvgl;
using nvtest::GlRecorder;

namespace {

class TransformTest : public nvtest::InFrameTest {
protected:
    static const float* slot(std::uint32_t i) { return m3d.matrixHeap[i].m; }
};

TEST_F(TransformTest, TranslateScaleAndRotateNegateZOnTheWay) {
    GlRecorder rec;
    GFX_Translate(1, 2, 3);
    GFX_Scale(1, 2, 3);
    GFX_Rotate(3.14159274f, 0, 0, 1);
    EXPECT_EQ(rec.texts({GlCall::Translatef, GlCall::Scalef}),
              (std::vector<std::string>{"glTranslatef(1, 2, -3)", "glScalef(1, 2, 3)"}));
    const auto rotate = rec.only({GlCall::Rotatef});
    ASSERT_EQ(rotate.size(), 1u);
    EXPECT_NEAR(rotate[0].args[0], 180.0, 1e-3); // radians in, degrees to GL
    EXPECT_EQ(rotate[0].args[3], -1.0);
    EXPECT_EQ(m3d.currentMatrix, 4u); // a slot each
}

TEST_F(TransformTest, UntransformCountsSlotsNotTransforms) {
    EXPECT_EQ(GFX_Untransform(1), 1); // nothing before slot 1
    GFX_Translate(5, 0, 0);           // slot 2
    GFX_Rotate(1.0f, 0, 1, 0);        // slot 3
    ASSERT_EQ(GFX_Untransform(2), 0); // slot 4 = copy of slot 1
    EXPECT_EQ(m3d.currentMatrix, 4u);
    EXPECT_EQ(std::memcmp(slot(4), slot(1), sizeof(Matrix4)), 0);
    GFX_Translate(0, 7, 0);           // slot 5
    ASSERT_EQ(GFX_Untransform(2), 0); // slot 6 = copy of slot 3, the undone rotate
    EXPECT_EQ(std::memcmp(slot(6), slot(3), sizeof(Matrix4)), 0);
    float loaded[16];
    glGetFloatv(GL_MODELVIEW_MATRIX, loaded);
    EXPECT_EQ(std::memcmp(loaded, slot(3), sizeof loaded), 0);
    EXPECT_EQ(GFX_Untransform(6), 1);
    EXPECT_EQ(GFX_Untransform(0xFFFFFFFFu), 1);
    EXPECT_EQ(m3d.currentMatrix, 6u);
}

TEST_F(TransformTest, LookStraightAlongYTakesTheZBasedUp) {
    GlRecorder rec;
    GFX_Look(0, 0, 0, 0, 5, 0, 9, 9, 9);
    const auto look = rec.only({GlCall::gluLookAt});
    ASSERT_EQ(look.size(), 1u);
    EXPECT_EQ(look[0].args, (std::vector<double>{0, 0, -0.0, 0, 5, -0.0, 0, 0, -1}));
    GFX_Look(1, 2, 3, 1, 2, 3, 0, 0, 0); // eye on target: nothing, no slot
    EXPECT_EQ(rec.count(GlCall::gluLookAt), 1u);
    EXPECT_EQ(m3d.currentMatrix, 2u);

    GFX_Look(0, 0, 0, 0, 0, 10, 0, 0, 0); // along z: the y-based up
    const auto second = rec.only({GlCall::gluLookAt});
    ASSERT_EQ(second.size(), 2u);
    EXPECT_EQ(second[1].args[6], 0);
    EXPECT_EQ(second[1].args[7], 1);
    EXPECT_EQ(second[1].args[5], -10);
}

TEST_F(TransformTest, FullMatrixHeapLogsAndKeepsTheLastSlot) {
    for (std::uint32_t i = 2; i < kMatrixHeapSlots; ++i)
        GFX_Translate(0, 0, 0);
    EXPECT_EQ(m3d.currentMatrix, kMatrixHeapSlots - 1);
    EXPECT_EQ(log().find("Matrix heap exhausted"), std::string::npos);
    GFX_Translate(1, 0, 0);
    EXPECT_EQ(m3d.currentMatrix, kMatrixHeapSlots - 1);
    EXPECT_EQ(GFX_Untransform(1), 0);
    EXPECT_EQ(m3d.currentMatrix, kMatrixHeapSlots - 1);
    EXPECT_NE(log().find("Matrix heap exhausted\r\n"), std::string::npos);
    EXPECT_EQ(std::memcmp(slot(0), slot(1), sizeof(Matrix4)), 0); // slot 0 still the identity
}

TEST_F(TransformTest, ScreenSpaceNestsOnTheProjectionStackAndRestores) {
    GFX_Translate(1, 0, 0);
    EXPECT_EQ(m3d.projectionIndex, 1u);
    GFX_SetRenderProperty(RPROP_SCREEN_SPACE, 1);
    EXPECT_EQ(m3d.currentMatrix, 0u);
    EXPECT_EQ(m3d.projectionIndex, 2u);
    EXPECT_EQ(std::memcmp(m3d.projectionStack[2].m, slot(0), sizeof(Matrix4)), 0);
    GFX_SetRenderProperty(RPROP_SCREEN_SPACE, 0);
    EXPECT_EQ(m3d.currentMatrix, 2u);
    EXPECT_EQ(m3d.projectionIndex, 1u);

    GFX_SetRenderProperty(RPROP_SCREEN_SPACE, 0); // an exit with no entry keeps the perspective
    EXPECT_EQ(m3d.projectionIndex, 1u);
    for (int i = 0; i < 10; ++i) // deeper than the stack: bounded
        GFX_SetRenderProperty(RPROP_SCREEN_SPACE, 1);
    EXPECT_EQ(m3d.projectionIndex, kProjectionStackDepth - 1);
    EXPECT_NE(log().find("Manager3D Error: projection stack exhausted"), std::string::npos);
    for (int i = 0; i < 10; ++i)
        GFX_SetRenderProperty(RPROP_SCREEN_SPACE, 0);
    EXPECT_EQ(m3d.projectionIndex, 1u);
}

} // namespace

// Rotation about an axis through the origin, with the axis used as given.
TEST(RotateAboutAxis, TurnsCounterClockwiseSeenFromTheAxisTip) {
    constexpr float kQuarter = 1.57079632679f;
    struct Case {
        float point[3];
        float axis[3];
        float angle;
        float expected[3];
    };
    const Case cases[] = {
        {{1, 0, 0}, {0, 0, 1}, kQuarter, {0, 1, 0}},
        {{0, 1, 0}, {1, 0, 0}, kQuarter, {0, 0, 1}},
        {{0, 0, 1}, {0, 1, 0}, kQuarter, {1, 0, 0}},
        {{1, 2, 3}, {0, 0, 1}, 0.0f, {1, 2, 3}},
        // An axis of length 2 is not normalised: the point leaves the unit circle.
        {{1, 0, 0}, {0, 0, 2}, kQuarter, {0, 2, 0}},
    };
    for (const Case& c : cases) {
        float p[3] = {c.point[0], c.point[1], c.point[2]};
        RotateAboutAxis(p, c.axis, c.angle);
        for (int i = 0; i < 3; ++i)
            EXPECT_NEAR(p[i], c.expected[i], 1e-6)
                << "axis " << c.axis[0] << c.axis[1] << c.axis[2] << " component " << i;
    }
}
