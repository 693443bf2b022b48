// Queue submission and flush through the recording table: which GL calls a frame makes, in
// which order, and how the fixed heaps behave when they fill up.
#include "core/core.h"
#include "manager3d/limits.h"
#include "manager3d/manager3d.h"
#include "support/driver_fixture.h"
#include "support/gl_recorder.h"
#include "support/scene.h"

#include <GL/gl.h>

using namespace norvgl;
using norvgl::GlCall;
using nvtest::GlRecorder;

namespace {

constexpr std::uint32_t kVertexCapacity = kVertexHeapFloats / 3;               // 10922
constexpr std::uint32_t kBatchCapacity = kBatchHeapRecords / kRecordsPerBatch; // 341

// "glEnable(3042)", as the recorder writes calls.
std::string call(GlCall kind, std::initializer_list<double> args) {
    return nvtest::RecordedCall{kind, args}.text();
}

const std::string kDisableBlend = call(GlCall::Disable, {GL_BLEND});
const std::string kEnableCull = call(GlCall::Enable, {GL_CULL_FACE});
const std::string kDisableCull = call(GlCall::Disable, {GL_CULL_FACE});
const std::string kEnableDepth = call(GlCall::Enable, {GL_DEPTH_TEST});
const std::string kDisableTexture = call(GlCall::Disable, {GL_TEXTURE_2D});
const std::string kDisableTexCoords = call(GlCall::DisableClientState, {GL_TEXTURE_COORD_ARRAY});

class FlushTest : public nvtest::WindowTest {
protected:
    static void request(std::uint32_t mask, std::uint32_t value) {
        Manager3D_StateCommand(mask, &value);
    }
    // Two points at the centre: the smallest submission that draws through the arrays.
    static int points(unsigned count = 2) {
        static std::vector<nvtest::HostVertex> vertices(kVertexCapacity + 1,
                                                        nvtest::vertex(0, 0, 10));
        return GFX_DrawPolygon(PRIM_POINTS, count, nvtest::floats(vertices));
    }
    static int lines(unsigned count) {
        static std::vector<nvtest::HostVertex> vertices(64, nvtest::vertex(0, 0, 10));
        return GFX_DrawPolygon(PRIM_LINES, count, nvtest::floats(vertices));
    }
    // glDrawArrays counts, in drawing order.
    static std::vector<double> drawnCounts(const GlRecorder& rec) {
        std::vector<double> counts;
        for (const auto& c : rec.only({GlCall::DrawArrays}))
            counts.push_back(c.args[2]);
        return counts;
    }
};

TEST_F(FlushTest, EmptyFrameOnlyRestores) {
    GlRecorder rec;
    GFX_BeginRender();
    rec.clear();
    GFX_EndRender();
    // Of the calls that change state or draw, only the restore's.
    EXPECT_EQ(
        rec.texts({GlCall::Enable, GlCall::Disable, GlCall::BlendFunc, GlCall::BindTexture,
                   GlCall::TexEnvf, GlCall::EnableClientState, GlCall::DisableClientState,
                   GlCall::Materialfv, GlCall::Begin, GlCall::DrawArrays, GlCall::DrawElements}),
        (std::vector<std::string>{kDisableBlend, kEnableDepth, kDisableTexture, kDisableTexCoords,
                                  kEnableCull}));
}

TEST_F(FlushTest, TexturesUnderOneMaterialAreDrawnNewestFirstAndUntexturedLast) {
    GLuint names[2];
    glGenTextures(2, names);
    GlRecorder rec;
    GFX_BeginRender();
    points();
    request(STATE_TEXTURE, names[0]);
    points();
    request(STATE_TEXTURE, names[1]);
    points();
    rec.clear();
    GFX_EndRender();
    EXPECT_EQ(rec.texts({GlCall::BindTexture, GlCall::Disable}),
              (std::vector<std::string>{
                  kDisableCull, call(GlCall::BindTexture, {GL_TEXTURE_2D, double(names[1])}),
                  call(GlCall::BindTexture, {GL_TEXTURE_2D, double(names[0])}), kDisableTexture,
                  // restore
                  kDisableBlend, kDisableTexture}));
    // Texturing is switched on once for the two textured nodes.
    EXPECT_EQ(rec.count(GlCall::TexEnvf), 1u);
    EXPECT_EQ(rec.count(GlCall::DrawArrays), 3u);
    glDeleteTextures(2, names);
}

TEST_F(FlushTest, UnmergedBatchesAreDrawnNewestFirst) {
    GlRecorder rec;
    GFX_BeginRender();
    lines(2);
    GFX_Translate(0, 0, 1);
    lines(4);
    GFX_Translate(0, 0, 1);
    lines(6);
    rec.clear();
    GFX_EndRender();
    EXPECT_EQ(drawnCounts(rec), (std::vector<double>{6, 4, 2}));
    // Each batch has its own slot, so each loads its matrix.
    EXPECT_EQ(rec.count(GlCall::LoadMatrixf), 3u + 1u /* projection */);
}

TEST_F(FlushTest, MergingJoinsOnlyCompatibleNeighbours) {
    GlRecorder rec;
    GFX_BeginRender();
    const auto square = nvtest::square(0, 0, 10, 1);
    ASSERT_EQ(GFX_DrawPolygon(PRIM_TRIANGLES, 6, nvtest::floats(square)), 0);
    ASSERT_EQ(GFX_DrawPolygon(PRIM_TRIANGLES, 6, nvtest::floats(square)), 0);
    rec.clear();
    GFX_EndRender();
    EXPECT_EQ(rec.count(GlCall::Begin), 1u);
    EXPECT_EQ(rec.count(GlCall::Vertex3fv), 12u);

    // A different type, an indexed call, a transform or a state request each end the run.
    const std::uint16_t indices[2] = {0, 1};
    GFX_BeginRender();
    lines(2);
    lines(2); // joins
    // Geometry handed over by reference is not in the heap: it never joins a run.
    static const float referenced[6] = {0, 0, 10, 0, 0, 10};
    Manager3D_Submit(PRIM_LINES, 2, referenced, referenced, nullptr, nullptr, 0, 12, 0);
    points(2);
    lines(2);
    GFX_DrawIndexedPolygon(PRIM_LINES, 2, nvtest::floats(square), 2, indices);
    lines(2);
    GFX_Translate(1, 0, 0);
    lines(2);
    request(STATE_CULL, CULL_OFF); // changes nothing, still ends the run
    lines(2);
    rec.clear();
    GFX_EndRender();
    EXPECT_EQ(drawnCounts(rec), (std::vector<double>{2, 2, 2, 2, 2, 2, 4}));
    EXPECT_EQ(rec.count(GlCall::DrawElements), 1u);
}

TEST_F(FlushTest, RepeatedIndexResendsTheVertex) {
    GlRecorder rec;
    GFX_BeginRender();
    const auto square = nvtest::square(0, 0, 10, 1);
    const std::uint16_t indices[6] = {0, 1, 2, 0, 2, 3};
    ASSERT_EQ(GFX_DrawIndexedPolygon(PRIM_TRIANGLES, 4, nvtest::floats(square), 6, indices), 0);
    rec.clear();
    GFX_EndRender();
    const auto vertices = rec.only({GlCall::Vertex3fv});
    ASSERT_EQ(vertices.size(), 6u);
    EXPECT_EQ(vertices[0].args, vertices[3].args);
    EXPECT_EQ(vertices[2].args, vertices[4].args);
    EXPECT_NE(vertices[0].args, vertices[1].args);
    // Normal, then vertex; no texture coordinate for an untextured node.
    const auto perVertex = rec.texts({GlCall::Normal3fv, GlCall::TexCoord2fv, GlCall::Vertex3fv});
    ASSERT_EQ(perVertex.size(), 12u);
    EXPECT_EQ(perVertex[0].rfind("glNormal3fv", 0), 0u);
    EXPECT_EQ(perVertex[1].rfind("glVertex3fv", 0), 0u);
}

TEST_F(FlushTest, CullCacheCarriesAcrossFrames) {
    GlRecorder rec;
    auto cullCalls = [&] {
        std::vector<std::string> out;
        for (const auto& text : rec.texts({GlCall::Enable, GlCall::Disable}))
            if (text == kEnableCull || text == kDisableCull)
                out.push_back(text);
        rec.clear();
        return out;
    };
    // The permanent chain draws with culling off; the restore leaves it off.
    GFX_BeginRender();
    points();
    rec.clear();
    GFX_EndRender();
    EXPECT_EQ(cullCalls(), std::vector<std::string>{kDisableCull});
    // Nothing to change in the next frame.
    GFX_BeginRender();
    points();
    rec.clear();
    GFX_EndRender();
    EXPECT_EQ(cullCalls(), std::vector<std::string>{});
    // Culling on is sent once by the walk and once by the restore.
    GFX_BeginRender();
    request(STATE_CULL, CULL_ON);
    points();
    rec.clear();
    GFX_EndRender();
    EXPECT_EQ(cullCalls(), (std::vector<std::string>{kEnableCull, kEnableCull}));
}

// Under a mesh lock host triangles are drawn as the locked type (the lock's end with the
// frame is the state tree's).
TEST_F(FlushTest, TrianglesUnderAMeshLockAreDrawnAsPoints) {
    const auto tri = nvtest::triangle(0, 0, 10, 1);
    GlRecorder rec;
    GFX_BeginRender();
    GFX_LockRenderMesh(PRIM_POINTS);
    ASSERT_EQ(GFX_DrawPolygon(PRIM_TRIANGLES, 3, nvtest::floats(tri)), 0);
    rec.clear();
    GFX_EndRender();
    EXPECT_EQ(rec.texts({GlCall::DrawArrays, GlCall::Begin}),
              std::vector<std::string>{call(GlCall::DrawArrays, {GL_POINTS, 0, 3})});
}

TEST_F(FlushTest, StateCallsFollowGroupsNotBatches) {
    GLuint names[2];
    glGenTextures(2, names);
    GlRecorder rec;
    GFX_BeginRender();
    rec.clear();
    // Twenty submissions alternating between two full state sets: two groups.
    for (int i = 0; i < 20; ++i) {
        const bool odd = i % 2;
        const std::uint32_t depth = odd ? DEPTH_OFF : DEPTH_ON;
        const std::uint32_t blend = odd ? BLEND_ADD : BLEND_ALPHA;
        const std::uint32_t keys[4] = {CULL_ON, depth, blend, names[odd]};
        Manager3D_StateCommand(STATE_CULL | STATE_DEPTH | STATE_BLEND, keys);
        Manager3D_StateCommand(STATE_TEXTURE, &keys[3]);
        points();
    }
    GFX_EndRender();
    EXPECT_EQ(rec.count(GlCall::DrawArrays), 20u);
    EXPECT_EQ(rec.count(GlCall::BindTexture), 2u);
    EXPECT_EQ(rec.count(GlCall::BlendFunc), 2u);
    EXPECT_EQ(rec.count(GlCall::TexEnvf), 1u);
    // Material colours go out for each node that draws, three calls each.
    EXPECT_EQ(rec.count(GlCall::Materialfv), 6u);
    // One modelview slot for all twenty batches, one projection.
    EXPECT_EQ(rec.count(GlCall::LoadMatrixf), 2u);
    // Walk: enable blend, disable depth; restore: disable blend, enable depth, disable
    // texturing, enable culling.
    EXPECT_EQ(rec.count(GlCall::Enable), 1u /* texturing */ + 1u + 2u);
    EXPECT_EQ(rec.count(GlCall::Disable), 1u + 2u);
    glDeleteTextures(2, names);
}

// Referenced geometry may come without normals: triangles are then skipped with a warning,
// other primitives draw with the normal array off for their own draw only.
TEST_F(FlushTest, BatchesWithoutNormals) {
    static float positions[9] = {-1, -1, 10, 1, -1, 10, 0, 1, 10};
    static float texCoords[6] = {};
    GlRecorder rec;
    GFX_BeginRender();
    ASSERT_EQ(Manager3D_Submit(PRIM_TRIANGLES, 3, positions, nullptr, texCoords, nullptr, 0, 12, 0),
              0);
    ASSERT_EQ(Manager3D_Submit(PRIM_LINES, 2, positions, nullptr, nullptr, nullptr, 0, 12, 0), 0);
    rec.clear();
    GFX_EndRender();
    EXPECT_EQ(rec.count(GlCall::Begin), 0u);
    EXPECT_EQ(
        rec.texts({GlCall::DisableClientState, GlCall::EnableClientState, GlCall::DrawArrays}),
        (std::vector<std::string>{call(GlCall::DisableClientState, {GL_NORMAL_ARRAY}),
                                  call(GlCall::DrawArrays, {GL_LINES, 0, 2}),
                                  call(GlCall::EnableClientState, {GL_NORMAL_ARRAY}),
                                  kDisableTexCoords}));
    EXPECT_TRUE(glIsEnabled(GL_NORMAL_ARRAY));
    EXPECT_NE(log().find("Warning: Attempt to draw triangles w/out normals\r\n"),
              std::string::npos);
}

// What the submitting entries refuse before anything is recorded: each row's submission in a
// frame, its result, the last error and the vertices queued.
TEST_F(FlushTest, SubmissionsAreCheckedAtTheEntries) {
    const auto square = nvtest::square(0, 0, 10, 1); // six vertices
    const float* v = nvtest::floats(square);
    const std::uint16_t lastInside[3] = {0, 5, 2};
    const std::uint16_t oneBeyond[3] = {0, 6, 2};
    static const std::vector<std::uint16_t> longest(kMaxIndexCount, 1);
    struct Row {
        const char* what;
        std::uint32_t count;
        const float* vertices;
        std::uint32_t indexCount; // indexed when not 0 or when `indices` is given
        const std::uint16_t* indices;
        int result;
        int error;
        std::uint32_t queued;
    };
    const Row rows[] = {
        {"plain", 6, v, 0, nullptr, 0, ERR_NONE, 6},
        {"no vertices, none given", 0, nullptr, 0, nullptr, 0, ERR_NONE, 0},
        {"vertices missing", 3, nullptr, 0, nullptr, 1, ERR_INVALID_PARAMETER, 0},
        {"last index inside", 6, v, 3, lastInside, 0, ERR_NONE, 6},
        {"index one past the vertices", 6, v, 3, oneBeyond, 1, ERR_INVALID_PARAMETER, 0},
        {"index into no vertices", 0, nullptr, 3, lastInside, 1, ERR_INVALID_PARAMETER, 0},
        {"indices missing", 6, v, 3, nullptr, 1, ERR_INVALID_PARAMETER, 0},
        {"as many indices as a batch holds", 6, v, kMaxIndexCount, longest.data(), 0, ERR_NONE, 6},
        {"one index more", 6, v, kMaxIndexCount + 1, longest.data(), 1, ERR_INVALID_PARAMETER, 0},
    };
    for (const Row& row : rows) {
        ReportError(ERR_NONE, nullptr);
        GFX_BeginRender();
        const bool indexed = row.indices || row.indexCount;
        const int result = indexed ? GFX_DrawIndexedPolygon(PRIM_TRIANGLES, row.count, row.vertices,
                                                            row.indexCount, row.indices)
                                   : GFX_DrawPolygon(PRIM_TRIANGLES, row.count, row.vertices);
        EXPECT_EQ(result, row.result) << row.what;
        EXPECT_EQ(driver.lastError, row.error) << row.what;
        EXPECT_EQ(m3d.positionCursor, 3 * row.queued) << row.what;
        GFX_EndRender();
    }
}

// --- Heaps ---------------------------------------------------------------------------------

TEST_F(FlushTest, VertexHeapHoldsExactlyItsCapacityAndRefusesTheRest) {
    GlRecorder rec;
    GFX_BeginRender();
    ASSERT_EQ(points(kVertexCapacity - 1), 0);
    ASSERT_EQ(points(2), 1);
    EXPECT_EQ(log().find("Manager3D Error: Vertex heap exhausted"),
              log().rfind("Manager3D Error: Vertex heap exhausted"));
    ASSERT_NE(log().find("Manager3D Error: Vertex heap exhausted\r\n"), std::string::npos);
    // A count whose position floats do not fit in 32 bits is refused, not wrapped.
    EXPECT_EQ(points(0x55555556u), 1);
    const std::uint32_t cursor = m3d.positionCursor;
    EXPECT_EQ(cursor, 3u * (kVertexCapacity - 1));
    EXPECT_EQ(points(1), 0); // the last vertex that fits
    rec.clear();
    GFX_EndRender();
    EXPECT_EQ(drawnCounts(rec), std::vector<double>{double(kVertexCapacity)});

    GFX_BeginRender();
    ASSERT_EQ(lines(2), 0);
    rec.clear();
    GFX_EndRender();
    EXPECT_EQ(drawnCounts(rec), std::vector<double>{2});
}

TEST_F(FlushTest, BatchHeapHolds341BatchesAndTheNextFrameDrawsNormally) {
    const auto square = nvtest::square(0, 0, 10, 1);
    const std::uint16_t indices[2] = {0, 1};
    GlRecorder rec;
    GFX_BeginRender();
    for (unsigned i = 0; i < kBatchCapacity; ++i)
        ASSERT_EQ(GFX_DrawIndexedPolygon(PRIM_LINES, 2, nvtest::floats(square), 2, indices), 0)
            << i;
    EXPECT_EQ(log().find("Manager3D Error: Float heap exhausted"), std::string::npos);
    const StateNode before = *m3d.currentNode;
    EXPECT_EQ(GFX_DrawIndexedPolygon(PRIM_LINES, 2, nvtest::floats(square), 2, indices), 1);
    EXPECT_NE(log().find("Manager3D Error: Float heap exhausted\r\n"), std::string::npos);
    EXPECT_EQ(m3d.currentNode->vertexBatches, before.vertexBatches);
    rec.clear();
    GFX_EndRender();
    EXPECT_EQ(rec.count(GlCall::DrawElements), 341u);

    GFX_BeginRender();
    ASSERT_EQ(lines(4), 0);
    rec.clear();
    GFX_EndRender();
    EXPECT_EQ(drawnCounts(rec), std::vector<double>{4});
}

TEST_F(FlushTest, BillboardBecomesASquareFacingTheViewer) {
    GFX_BeginRender();
    // Under an identity slot a billboard of size 2 at the origin is a square facing -z.
    m3d.matrixHeap[m3d.currentMatrix] = Matrix4{{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}};
    const float origin[3] = {0, 0, 0};
    ASSERT_EQ(GFX_DrawBillboard(origin, 2), 0);
    const DrawBatch* b = nullptr;
    for (std::uint32_t i = 0; i < m3d.stateCursor && !b; ++i)
        if (m3d.stateHeap[i].vertexBatches &&
            m3d.stateHeap[i].vertexBatches->primitive == PRIM_BILLBOARD)
            b = m3d.stateHeap[i].vertexBatches;
    ASSERT_NE(b, nullptr);
    EXPECT_EQ((std::vector<float>(b->data, b->data + 12)),
              (std::vector<float>{1, 1, 1, -1, 1, 1, -1, -1, 1, 1, -1, 1}));
    EXPECT_EQ(b->indexCount, 6);
    EXPECT_EQ(b->count, 1u);
    GFX_EndRender();
}

} // namespace
