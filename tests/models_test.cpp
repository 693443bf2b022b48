// Models and objects through the driver's internals: what a VRML text becomes in the mesh
// store, host meshes and their refusals, ids, object drawing as queue batches and GL calls,
// and unloading. What reaches the window is checked by the scenario program on both systems.
#include "core/core.h"
#include "core/messages.h"
#include "manager3d/manager3d.h"
#include "models/models.h"
#include "pictures/pictures.h"
#include "picture_assets.h"
#include "support/driver_fixture.h"
#include "support/gl_recorder.h"
#include "support/scene.h"

#include <GL/gl.h>

#include <string>
#include <vector>

using namespace norvgl;
using norvgl::GlCall;

namespace {

using Lines = std::vector<std::string>;

std::string crlf(const Lines& lines) {
    std::string text;
    for (const std::string& line : lines)
        text += line + "\r\n";
    return text;
}

// A face set node: its points and index lists as the text writes them.
std::string faceSet(const std::string& name, const std::string& points, const std::string& indices,
                    const std::string& extra = "") {
    return "DEF " + name + " IFS { " + extra + " coord DEF P C { point [ " + points +
           " ] } coordIndex [ " + indices + " ] }";
}

// A vertex as the store holds it, turned back into the host's coordinates.
struct Vertex {
    float x, y, z, nx, ny, nz, u, v;
};

struct Group {
    std::uint16_t texture;
    std::vector<std::vector<Vertex>> triples; // oldest first
};

std::vector<Group> groupsOf(std::uint32_t id) {
    std::vector<Group> groups;
    for (StateNode* g = MeshStore_Find(id); g; g = g->firstChild) {
        Group group{g->texture, {}};
        const DrawBatch *p = g->vertexBatches, *n = g->normalBatches, *t = g->texCoordBatches;
        for (; p; p = p->next, n = n->next, t = t->next) {
            std::vector<Vertex> vertices;
            for (std::uint32_t i = 0; i < p->count; ++i)
                vertices.push_back({p->data[3 * i], p->data[3 * i + 1], -p->data[3 * i + 2],
                                    n->data[3 * i], n->data[3 * i + 1], -n->data[3 * i + 2],
                                    t->data[2 * i], t->data[2 * i + 1]});
            group.triples.insert(group.triples.begin(), vertices);
        }
        groups.push_back(group);
    }
    return groups;
}

std::vector<float> positions(const std::vector<Vertex>& vertices) {
    std::vector<float> out;
    for (const Vertex& v : vertices)
        out.insert(out.end(), {v.x, v.y, v.z});
    return out;
}

class ModelsTest : public nvtest::WindowTest {
protected:
    static std::uint32_t load(const std::string& text, float* bounds = nullptr) {
        std::uint32_t id = 0;
        EXPECT_EQ(
            GFX_LoadVRML(0, static_cast<unsigned>(text.size()), text.c_str(), &id, 0, 0, 0, bounds),
            0);
        return id;
    }
    // A 2 x 2 picture under `name`; its texture name.
    static std::uint32_t picture(const char* name) {
        assets::RgbImage image{2, 2, std::vector<std::uint32_t>(4, 0xFFFFFF)};
        const auto bytes = assets::writeColorBitmap(image);
        unsigned id = 0;
        EXPECT_EQ(GFX_LoadPicture(name, bytes.data(), 0, &id, 0), 0);
        return PictureTexture(id);
    }
};

TEST_F(ModelsTest, PointsFollowTheirNodeChain) {
    struct Case {
        const char* what;
        Lines lines;
        std::vector<float> expected; // the vertices, as submitted (F with ccw 0)
    };
    const std::string tri = faceSet("F", "1 1 1, 1 0 0, 0 0 0", "0 1 2 -1", "ccw FALSE");
    const Case cases[] = {
        {"scale inside translation",
         {"DEF O T { translation 10 0 0", "DEF I T { scale 2 2 2", tri, "} }"},
         {12, 2, 2, 12, 0, 0, 10, 0, 0}},
        {"quarter turn about z",
         {"DEF R T { rotation 0 0 1 1.5707963", tri, "}"},
         {-1, 1, 1, 0, 1, 0, 0, 0, 0}},
        {"scale, rotation, translation of one node in that order",
         {"DEF R T { translation 0 0 5 rotation 0 0 1 1.5707963 scale 2 1 1", tri, "}"},
         {-1, 2, 6, 0, 2, 5, 0, 0, 5}},
        {"nothing outside the chain",
         {"DEF A T { translation 9 9 9 }", tri},
         {1, 1, 1, 1, 0, 0, 0, 0, 0}},
        // The newest node comes first: B's copy, in B's winding, then F's own points.
        {"a USE inside a translated node is a translated copy",
         {"DEF A T {", tri, "}", "DEF B T { translation 5 0 0 USE F }"},
         {5, 0, 0, 6, 0, 0, 6, 1, 1, 1, 1, 1, 1, 0, 0, 0, 0, 0}},
    };
    for (const Case& c : cases) {
        const std::uint32_t id = load(crlf(c.lines));
        const auto groups = groupsOf(id);
        ASSERT_EQ(groups.size(), 1u) << c.what;
        const std::vector<float> got = positions(groups[0].triples.at(0));
        ASSERT_EQ(got.size(), c.expected.size()) << c.what;
        for (std::size_t i = 0; i < c.expected.size(); ++i)
            EXPECT_NEAR(got[i], c.expected[i], 1e-5) << c.what << " value " << i;
    }
}

TEST_F(ModelsTest, FacesBecomeTriangleVerticesWithoutReadingPastAList) {
    struct Case {
        const char* what;
        std::string node;
        std::vector<float> expected; // x, u, v of each submitted vertex
    };
    const std::string points = "0 0 0, 1 0 0, 2 0 0, 3 0 0";
    const std::string uvs = " texCoord DEF U X { point [ 0 0, 0.1 0.2, 0.3 0.4 ] } ";
    const Case cases[] = {
        {"ccw 1: third, second, first",
         faceSet("N", points, "0 1 2 -1"),
         {2, 0, 0, 1, 0, 0, 0, 0, 0}},
        {"ccw 0: as listed",
         faceSet("N", points, "0 1 2 -1", "ccw FALSE"),
         {0, 0, 0, 1, 0, 0, 2, 0, 0}},
        {"index 0 keeps the earlier u, v; 1 and 2 set them",
         faceSet("N", points, "0 1 2 -1 0 1 2 -1",
                 "ccw FALSE" + uvs + "texCoordIndex [ 2 2 2 -1 0 1 2 -1 ]"),
         {0, .3f, .4f, 1, .3f, .4f, 2, .3f, .4f, 0, .3f, .4f, 1, .1f, .2f, 2, .3f, .4f}},
        {"short texture index list and indices past the coordinates keep u, v",
         faceSet("N", points, "0 1 2 -1", "ccw FALSE" + uvs + "texCoordIndex [ 1 7 ]"),
         {0, .1f, .2f, 1, 0, 0, 2, 0, 0}},
        {"a face of four goes whole",
         faceSet("N", points, "0 1 2 3 -1", "ccw FALSE"),
         {0, 0, 0, 1, 0, 0, 2, 0, 0, 3, 0, 0}},
        {"short faces and unknown points are skipped; the last face needs no mark",
         faceSet("N", points, "0 1 -1 -1 0 1 4 -1 3 2 1", "ccw FALSE"),
         {3, 0, 0, 2, 0, 0, 1, 0, 0}},
    };
    for (const Case& c : cases) {
        const auto groups = groupsOf(load(crlf({c.node})));
        ASSERT_EQ(groups.size(), 1u) << c.what;
        std::vector<float> got;
        for (const Vertex& v : groups[0].triples.at(0))
            got.insert(got.end(), {v.x, v.u, v.v});
        EXPECT_EQ(got, c.expected) << c.what;
    }
}

TEST(FaceNormal, IsTheUnitNormalOrFacesTheCameraWhereThereIsNone) {
    struct Case {
        float p[3][3];
        float normal[3];
    };
    const float big = 3e38f;
    const Case cases[] = {
        {{{0, 0, 0}, {2, 0, 0}, {0, 3, 0}}, {0, 0, 1}},
        {{{0, 0, 0}, {0, 3, 0}, {2, 0, 0}}, {0, 0, -1}},
        {{{1, 1, 1}, {1, 1, 5}, {1, 4, 1}}, {-1, 0, 0}},
        {{{0, 0, 0}, {1, 1, 1}, {2, 2, 2}}, {0, 0, -1}},           // on a line
        {{{0, 0, 0}, {big, 0, 0}, {0, big, 0}}, {0, 0, -1}},       // not finite
        {{{0, 0, 0}, {1e-30f, 0, 0}, {0, 1e-30f, 0}}, {0, 0, -1}}, // too small for floats
    };
    for (const Case& c : cases) {
        float n[3];
        FaceNormal(c.p[0], c.p[1], c.p[2], n);
        EXPECT_EQ(std::vector<float>(n, n + 3), std::vector<float>(c.normal, c.normal + 3));
    }
}

TEST_F(ModelsTest, TexturesGroupTheMeshInTheOrderTheyCome) {
    const std::uint32_t one = picture("one.bmp");
    const std::uint32_t two = picture("two.bmp");
    const auto node = [](const char* name, const char* texture, const char* x) {
        return std::string("DEF ") + name + " T { texture I { url \"" + texture + "\" } " +
               faceSet(std::string(name) + "F", std::string(x) + " 0 0, 0 1 0, 0 0 1", "0 1 2 -1") +
               " }";
    };
    // Newest first: C (one), B (two), A (ONE), then D with a texture nobody loaded.
    const std::uint32_t id = load(crlf({node("D", "none.bmp", "4"), node("A", "ONE.BMP", "1"),
                                        node("B", "two.bmp", "2"), node("C", "one.bmp", "3")}));
    const auto groups = groupsOf(id);
    ASSERT_EQ(groups.size(), 3u);
    EXPECT_EQ(groups[0].texture, one);
    EXPECT_EQ(groups[1].texture, two);
    EXPECT_EQ(groups[2].texture, 0u);
    // One's vertices came in two runs, so it holds two triples: C's, then A's.
    ASSERT_EQ(groups[0].triples.size(), 2u);
    EXPECT_EQ(groups[0].triples[0].at(2).x, 3.0f);
    EXPECT_EQ(groups[0].triples[1].at(2).x, 1.0f);
    EXPECT_EQ(groups[1].triples.size(), 1u);
}

TEST_F(ModelsTest, BoundsTakeEveryPointOfANodeWithFaces) {
    struct Case {
        const char* what;
        Lines lines;
        float bounds[6];
        bool mesh;
    };
    const Case cases[] = {
        {"no faces",
         {"DEF A T { coord DEF P C { point [ 1 2 3 ] } }"},
         {30000, 30000, 30000, -30000, -30000, -30000},
         false},
        {"no text", {}, {30000, 30000, 30000, -30000, -30000, -30000}, false},
        {"unused points count; a node without faces does not",
         {faceSet("A", "0 0 0, 1 0 0, 0 1 0, -5 7 9", "0 1 2 -1"),
          "DEF B T { coord DEF P C { point [ 100 100 100 ] } }"},
         {-5, 0, 0, 1, 7, 9},
         true},
    };
    for (const Case& c : cases) {
        float bounds[6] = {};
        const std::uint32_t id = load(crlf(c.lines), bounds);
        EXPECT_NE(id, 0u) << c.what;
        EXPECT_EQ(std::vector<float>(bounds, bounds + 6),
                  std::vector<float>(c.bounds, c.bounds + 6))
            << c.what;
        EXPECT_EQ(MeshStore_Find(id) != nullptr, c.mesh) << c.what;
    }
}

TEST_F(ModelsTest, AModelHoldsWhatTheVertexHeapHoldsAndSaysSoOnce) {
    // 3641 triangles: one vertex more than the heap's 10922.
    Lines lines = {"DEF N T { ccw FALSE coord DEF P C { point [ 0 0 0, 1 0 0, 0 1 0 ] }",
                   "coordIndex ["};
    lines.insert(lines.end(), 3641, "0 1 2 -1");
    lines.push_back("] }");
    const std::uint32_t id = load(crlf(lines));
    const auto groups = groupsOf(id);
    ASSERT_EQ(groups.size(), 1u);
    EXPECT_EQ(groups[0].triples.at(0).size(), kVertexHeapFloats / 3);
    const std::string text = log();
    const std::size_t first = text.find(kVertexHeapExhausted);
    EXPECT_NE(first, std::string::npos);
    EXPECT_EQ(text.find(kVertexHeapExhausted, first + 1), std::string::npos);
    EXPECT_EQ(m3d.positionCursor, 0u); // sealed: the heap is rewound
}

TEST_F(ModelsTest, HostMeshesAreConvertedInPlaceAndRefusedWholeWhenBad) {
    float p[6] = {1, 2, 3, 4, 5, 6}, n[6] = {0, 0, 1, 0, 0, -1}, t[4] = {0.25f, 0.25f, 1, 0};
    const unsigned short indices[3] = {0, 1, 1}, bad[2] = {0, 2};
    unsigned id = 0;
    ASSERT_EQ(GFX_LoadMeshIndirect(PRIM_LINES, 2, p, n, t, indices, 3, 0, &id), 0);
    EXPECT_EQ(std::vector<float>(p, p + 6), (std::vector<float>{1, 2, -3, 4, 5, -6}));
    EXPECT_EQ(std::vector<float>(n, n + 6), (std::vector<float>{0, 0, -1, 0, 0, 1}));
    EXPECT_EQ(std::vector<float>(t, t + 4), (std::vector<float>{0.25f, 0.75f, 1, 1}));
    const DrawBatch* batch = MeshStore_Find(id)->vertexBatches;
    EXPECT_EQ(batch->data, p); // referred to, not copied
    EXPECT_EQ(batch->indices, indices);
    ASSERT_EQ(GFX_LoadMeshIndirect(PRIM_LINES, 2, p, n, t, nullptr, 0, 0, &id), 0);
    EXPECT_EQ(std::vector<float>(p, p + 6), (std::vector<float>{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(std::vector<float>(t, t + 4), (std::vector<float>{0.25f, 0.25f, 1, 0}));

    struct Refusal {
        const char* what;
        unsigned count;
        float *p, *n, *t;
        const unsigned short* indices;
        unsigned indexCount;
        std::int32_t error; // ERR_NONE: only the log line
    };
    const Refusal refusals[] = {
        {"null positions", 2, nullptr, n, t, nullptr, 0, ERR_INVALID_PARAMETER},
        {"null normals", 2, p, nullptr, t, nullptr, 0, ERR_INVALID_PARAMETER},
        {"null texture coordinates", 2, p, n, nullptr, nullptr, 0, ERR_INVALID_PARAMETER},
        {"null indices", 2, p, n, t, nullptr, 1, ERR_INVALID_PARAMETER},
        {"index past the vertices", 2, p, n, t, bad, 2, ERR_INVALID_PARAMETER},
        {"more than 65535 indices", 2, p, n, t, indices, 65536, ERR_INVALID_PARAMETER},
        {"no vertices, no indices", 0, nullptr, nullptr, nullptr, nullptr, 0, ERR_NONE},
    };
    for (const Refusal& r : refusals) {
        ReportError(ERR_NONE, nullptr);
        const std::size_t logged = log().size();
        unsigned untouched = 77;
        EXPECT_EQ(GFX_LoadMeshIndirect(PRIM_LINES, r.count, r.p, r.n, r.t, r.indices, r.indexCount,
                                       0, &untouched),
                  1)
            << r.what;
        EXPECT_EQ(untouched, 77u) << r.what;
        EXPECT_EQ(driver.lastError, r.error) << r.what;
        EXPECT_EQ(std::vector<float>(p, p + 6), (std::vector<float>{1, 2, 3, 4, 5, 6})) << r.what;
        if (r.error == ERR_NONE) {
            EXPECT_EQ(log().substr(logged), std::string(kLoadMeshIndirectFailed) + "\r\n");
        }
    }
    // No vertices but indices: a mesh that draws nothing.
    EXPECT_EQ(GFX_LoadMeshIndirect(PRIM_TRIANGLES, 0, nullptr, nullptr, nullptr, bad, 2, 0, &id),
              0);
    EXPECT_EQ(id, 3u); // the refusals left no gap
}

// A mesh starts only in an empty vertex heap: a host mesh is refused while the frame holds
// copied geometry, a model then gets its id but no mesh, and the frame's geometry stays.
TEST_F(ModelsTest, MeshesStartOnlyWhileTheFrameHasNoCopiedGeometry) {
    float p[3] = {0, 0, 10}, n[3] = {0, 0, -1}, t[2] = {0, 0};
    const auto tri = nvtest::triangle(0, 0, 10, 1);
    unsigned id = 0;
    GFX_BeginRender();
    EXPECT_EQ(GFX_LoadMeshIndirect(PRIM_POINTS, 1, p, n, t, nullptr, 0, 0, &id), 0);
    GFX_DrawPolygon(PRIM_TRIANGLES, 3, nvtest::floats(tri));
    EXPECT_EQ(GFX_LoadMeshIndirect(PRIM_POINTS, 1, p, n, t, nullptr, 0, 0, &id), 1);
    EXPECT_EQ(id, 1u);
    const std::uint32_t model = load(crlf({faceSet("F", "0 0 0, 1 0 0, 0 1 0", "0 1 2 -1")}));
    EXPECT_EQ(model, 2u);
    EXPECT_EQ(MeshStore_Find(model), nullptr);
    EXPECT_EQ(m3d.positionCursor, 9u);
    GFX_EndRender();
    EXPECT_EQ(GFX_LoadMeshIndirect(PRIM_POINTS, 1, p, n, t, nullptr, 0, 0, &id), 0);
    EXPECT_EQ(id, 3u);
}

TEST_F(ModelsTest, IdsRunWithoutGapsAndSkipWhatMeshesHoldAfterUnloading) {
    float p[3] = {}, n[3] = {}, t[2] = {};
    unsigned ids[6] = {};
    nvtest::GlRecorder rec;
    EXPECT_EQ(GFX_NewObject(&ids[0], OBJECT_DISPLAY_LIST, nullptr), 0);
    EXPECT_EQ(GFX_EndObject(), 0);
    ids[1] = load(crlf({faceSet("N", "0 0 0, 1 0 0, 0 1 0", "0 1 2 -1")}));
    EXPECT_EQ(GFX_LoadMeshIndirect(PRIM_POINTS, 1, p, nullptr, t, nullptr, 0, 0, &ids[2]), 1);
    EXPECT_EQ(GFX_LoadMeshIndirect(PRIM_POINTS, 1, p, n, t, nullptr, 0, 0, &ids[2]), 0);
    EXPECT_EQ((std::vector<unsigned>(ids, ids + 3)), (std::vector<unsigned>{1, 2, 3}));
    EXPECT_EQ(rec.texts({GlCall::NewList, GlCall::EndList, GlCall::Disable}),
              (std::vector<std::string>{"glNewList(1, 4864)", "glEndList()", "glNewList(2, 4864)",
                                        "glDisable(3553)", "glEndList()"}));
    // Other types do nothing.
    unsigned untouched = 77;
    EXPECT_EQ(GFX_NewObject(&untouched, 2, nullptr), 0);
    EXPECT_EQ(GFX_NewObject(nullptr, OBJECT_DISPLAY_LIST, nullptr), 1);
    EXPECT_EQ(untouched, 77u);

    // Unloading deletes the lists of ids 1 to 3 once and restarts the count, but 2 and 3 are
    // held by their meshes, which still draw.
    rec.clear();
    EXPECT_EQ(GFX_UnloadAll(), 0);
    EXPECT_EQ(GFX_UnloadAll(), 0);
    EXPECT_EQ(rec.texts({GlCall::DeleteLists}), std::vector<std::string>{"glDeleteLists(1, 3)"});
    EXPECT_EQ(GFX_NewObject(&ids[3], OBJECT_DISPLAY_LIST, nullptr), 0);
    GFX_EndObject();
    ids[4] = load(crlf({}));
    EXPECT_EQ((std::vector<unsigned>(ids + 3, ids + 5)), (std::vector<unsigned>{1, 4}));
    EXPECT_NE(MeshStore_Find(2), nullptr);
    EXPECT_NE(MeshStore_Find(3), nullptr);
    driver.objectIdCounter = 0xFFFFFFFFu; // the count wraps past 0
    EXPECT_EQ(load(crlf({})), 1u);
}

class ObjectDrawTest : public ModelsTest {
protected:
    void SetUp() override {
        ModelsTest::SetUp();
        picture("one.bmp");
        // Newest first: a textured node, then an untextured one.
        model = load(crlf({faceSet("B", "0 0 9, 1 0 9, 0 1 9", "0 1 2 -1"),
                           "DEF A T { texture I { url \"one.bmp\" } " +
                               faceSet("AF", "0 0 9, 1 0 9, 0 1 9", "0 1 2 -1") + " }"}));
    }
    std::uint32_t model = 0;
};

TEST_F(ObjectDrawTest, GroupsGoToTheQueueByReferenceUnderTheirTextureAndATranslationPair) {
    for (const float z : {0.0f, 1.0f}) {
        nvtest::GlRecorder rec;
        GFX_BeginRender();
        EXPECT_EQ(GFX_DrawObject(model, 0, 0, z), 0);
        EXPECT_EQ(rec.count(GlCall::Translatef), z == 0.0f ? 0u : 2u);
        // The queue keeps the last group's texture, so a polygon now would go under it; its
        // batch points at the mesh's own arrays.
        EXPECT_EQ(m3d.currentNode->texture, 0u);
        EXPECT_EQ(m3d.currentNode->vertexBatches->data,
                  MeshStore_Find(model)->firstChild->vertexBatches->data);
        GFX_EndRender();
    }
}

TEST_F(ObjectDrawTest, ExReplacesEveryBatchTypeButNone) {
    for (const std::int32_t type : {PRIM_NONE, PRIM_POINTS, PRIM_LINES}) {
        GFX_BeginRender();
        EXPECT_EQ(GFX_DrawObjectEx(model, 0, 0, 0, type, 0, nullptr), 0);
        EXPECT_EQ(m3d.currentNode->vertexBatches->primitive,
                  type == PRIM_NONE ? PRIM_TRIANGLES : type);
        GFX_EndRender();
    }
    EXPECT_EQ(GFX_DrawObjectEx(model, 0, 0, 0, PRIM_NONE, STATE_TEXTURE, nullptr), 1);
    EXPECT_EQ(driver.lastError, ERR_INVALID_PARAMETER);
}

TEST_F(ObjectDrawTest, DestroyEmptiesTheStoreClosesAnOpenObjectAndLoadsWaitForTheNextInit) {
    unsigned object = 0;
    GFX_NewObject(&object, OBJECT_DISPLAY_LIST, nullptr);
    nvtest::GlRecorder rec;
    EXPECT_EQ(GFX_Destroy(), 0);
    EXPECT_EQ(rec.texts({GlCall::EndList, GlCall::DeleteLists}),
              (std::vector<std::string>{"glEndList()", "glDeleteLists(1, 2)"}));
    EXPECT_EQ(meshStore.meshes, nullptr);
    unsigned id = 77;
    EXPECT_EQ(GFX_LoadVRML(0, 0, "", &id, 0, 0, 0, nullptr), 1);
    EXPECT_EQ(driver.lastError, ERR_CREATE_CONTEXT);
    EXPECT_EQ(GFX_DrawObject(model, 0, 0, 0), 0);
    EXPECT_EQ(id, 77u);
    ASSERT_EQ(GFX_Init(), 0);
}

} // namespace
