// Render-state tree: node selection, creation, sharing and the limits of the state heap.
#include "core/core.h"
#include "manager3d/manager3d.h"
#include "support/driver_fixture.h"

#include <cstring>

using namespace norvgl;

namespace {

class StateTreeTest : public nvtest::InFrameTest {
protected:
    static void request(std::uint32_t mask, std::uint32_t value) {
        Manager3D_StateCommand(mask, &value);
    }
    static void material(float red) {
        const float colors[12] = {red, 0, 0, 1, red, 0, 0, 1, 0, 0, 0, 1};
        Manager3D_StateCommand(STATE_MATERIAL, colors);
    }
    static StateNode* permanent(int level) { return &m3d.stateHeap[level]; }
    static std::uint32_t created() { return m3d.stateCursor - kPermanentNodes; }
};

TEST_F(StateTreeTest, RequestThatChangesNothingLeavesTreeButEndsMerging) {
    request(STATE_CULL, CULL_OFF);
    const std::uint32_t sameKeys[3] = {DEPTH_ON, BLEND_OFF, 0};
    Manager3D_StateCommand(STATE_DEPTH | STATE_BLEND | STATE_TEXTURE, sameKeys);
    EXPECT_EQ(m3d.currentNode, permanent(4));
    EXPECT_EQ(created(), 0u);
    EXPECT_EQ(permanent(4)->isAppendable, 0);
}

TEST_F(StateTreeTest, MaterialAlwaysWalksAndFindsTheSameNode) {
    material(0.5f);
    StateNode* first = m3d.currentNode;
    EXPECT_EQ(created(), 2u); // a new material node and its texture child
    first->isAppendable = 1;
    material(0.5f);
    EXPECT_EQ(m3d.currentNode, first);
    EXPECT_EQ(created(), 2u);
    // The walk clears the flag of the node it leaves, which here is the node it finds again.
    EXPECT_EQ(first->isAppendable, 0);

    // Raw words: -0.0 is another material than +0.0.
    const float negativeZero[12] = {0.5f, -0.0f, 0, 1, 0.5f, 0, 0, 1, 0, 0, 0, 1};
    Manager3D_StateCommand(STATE_MATERIAL, negativeZero);
    EXPECT_NE(m3d.currentNode, first);
}

TEST_F(StateTreeTest, TexturesBecomeSiblingsUnderOneMaterialAndKeyOn16Bits) {
    request(STATE_TEXTURE, 7);
    StateNode* seven = m3d.currentNode;
    EXPECT_EQ(created(), 1u);
    EXPECT_EQ(seven->prevSibling, permanent(4));
    EXPECT_EQ(permanent(4)->nextSibling, seven);
    request(STATE_TEXTURE, 9);
    EXPECT_EQ(created(), 2u);
    EXPECT_EQ(seven->nextSibling, m3d.currentNode);
    EXPECT_EQ(m3d.currentNode->level, 4);

    request(STATE_TEXTURE, 0x10007); // the low 16 bits select texture 7
    EXPECT_EQ(m3d.currentNode, seven);
    request(STATE_TEXTURE, 65536); // and 65536 is texture 0
    EXPECT_EQ(m3d.currentNode, permanent(4));
    EXPECT_EQ(created(), 2u);
}

TEST_F(StateTreeTest, CullChangeTakesAWholeChainCarryingTheKeys) {
    request(STATE_TEXTURE, 3);
    request(STATE_CULL, CULL_ON);
    EXPECT_EQ(created(), 1u + 5u);
    StateNode* node = m3d.currentNode;
    EXPECT_EQ(node->level, 4);
    EXPECT_EQ(node->texture, 3); // keys not named keep the current node's
    for (StateNode* up = node; up; up = up->parent) {
        EXPECT_EQ(up->cullMode, CULL_ON);
        EXPECT_EQ(up->isPermanent, 0);
        if (!up->parent) {
            EXPECT_EQ(up->prevSibling, permanent(0));
        }
    }
    // Blend under the new cull node: three records (levels 2 to 4).
    request(STATE_BLEND, BLEND_ADD);
    EXPECT_EQ(created(), 6u + 3u);
}

TEST_F(StateTreeTest, PackedValuesAreReadInMaskOrder) {
    const std::uint32_t words[3] = {DEPTH_OFF, BLEND_ALPHA, 12};
    Manager3D_StateCommand(STATE_DEPTH | STATE_BLEND | STATE_TEXTURE, words);
    EXPECT_EQ(m3d.currentNode->cullMode, CULL_OFF);
    EXPECT_EQ(m3d.currentNode->depthMode, DEPTH_OFF);
    EXPECT_EQ(m3d.currentNode->blendMode, BLEND_ALPHA);
    EXPECT_EQ(m3d.currentNode->texture, 12);
}

TEST_F(StateTreeTest, FullStateHeapLogsAndKeepsTheCurrentNode) {
    // Each distinct texture takes one record; fill up to the last free one.
    const std::uint32_t free = kStateHeapNodes - kPermanentNodes;
    for (std::uint32_t t = 1; t <= free; ++t)
        request(STATE_TEXTURE, t);
    EXPECT_EQ(m3d.stateCursor, kStateHeapNodes);
    StateNode* last = m3d.currentNode;
    EXPECT_EQ(log().find("Manager3D Error: state heap exhausted"), std::string::npos);

    request(STATE_TEXTURE, 5000);
    EXPECT_EQ(m3d.currentNode, last);
    request(STATE_CULL, CULL_ON); // a chain of five has no room either
    EXPECT_EQ(m3d.currentNode, last);
    EXPECT_EQ(last->nextSibling, nullptr);
    EXPECT_EQ(m3d.stateCursor, kStateHeapNodes);
    EXPECT_NE(log().find("Manager3D Error: state heap exhausted\r\n"), std::string::npos);
    request(STATE_TEXTURE, 2); // existing nodes are still found
    EXPECT_EQ(m3d.currentNode->texture, 2);
}

TEST_F(StateTreeTest, PartialChainNeverLinkedWhenOnlySomeRecordsAreFree) {
    const std::uint32_t free = kStateHeapNodes - kPermanentNodes;
    for (std::uint32_t t = 1; t <= free - 3; ++t) // leave three records
        request(STATE_TEXTURE, t);
    StateNode* before = m3d.currentNode;
    request(STATE_CULL, CULL_ON); // needs five
    EXPECT_EQ(m3d.currentNode, before);
    EXPECT_EQ(permanent(0)->nextSibling, nullptr);
    request(STATE_BLEND, BLEND_ADD); // needs three: fits exactly
    EXPECT_EQ(m3d.currentNode->blendMode, BLEND_ADD);
    EXPECT_EQ(m3d.stateCursor, kStateHeapNodes);
}

TEST_F(StateTreeTest, LockIgnoresEveryRequestUntilUnlockOrFrameEnd) {
    const std::uint32_t blend = BLEND_ALPHA;
    EXPECT_EQ(GFX_LockRenderState(STATE_BLEND, &blend), 0);
    StateNode* locked = m3d.currentNode;
    EXPECT_EQ(locked->blendMode, BLEND_ALPHA);
    locked->isAppendable = 1;
    request(STATE_TEXTURE, 4);
    GFX_SetRenderProperty(RPROP_CULLING, 1);
    GFX_SetMaterialColor(1, 0, 0, 1, 0, 0, 0, 0, 0);
    const float position[3] = {0, 0, 0};
    GFX_DrawBillboard(position, 1.0f);
    EXPECT_EQ(m3d.currentNode, locked);
    EXPECT_EQ(locked->isAppendable, 1); // not even the flag is touched
    GFX_UnlockRenderState();
    request(STATE_TEXTURE, 4);
    EXPECT_EQ(m3d.currentNode->texture, 4);

    GFX_LockRenderState(0, nullptr);
    GFX_LockRenderMesh(PRIM_POINTS);
    EXPECT_TRUE(m3d.stateLocked);
    EXPECT_EQ(m3d.typeOverride, PRIM_POINTS);
    GFX_EndRender();
    EXPECT_FALSE(m3d.stateLocked);
    EXPECT_EQ(m3d.typeOverride, PRIM_NONE);
    GFX_BeginRender();
}

TEST_F(StateTreeTest, LockWithNullValuesIsRefused) {
    EXPECT_EQ(GFX_LockRenderState(STATE_TEXTURE, nullptr), 1);
    EXPECT_FALSE(m3d.stateLocked);
    char title[ERROR_TITLE_SIZE];
    GFX_GetLastError(title, nullptr);
    EXPECT_STREQ(title, "Invalid parameter");
}

TEST_F(StateTreeTest, SavedNodesAreBoundedAndPairedWithPops) {
    StateNode* base = m3d.currentNode;
    for (int i = 0; i < 6; ++i) {
        Manager3D_PushState();
        request(STATE_TEXTURE, static_cast<std::uint32_t>(i + 1));
    }
    EXPECT_EQ(m3d.savedCount, kSavedNodeDepth);
    EXPECT_NE(log().find("Manager3D Error: saved-node stack exhausted"), std::string::npos);
    for (int i = 0; i < 6; ++i)
        Manager3D_PopState();
    EXPECT_EQ(m3d.currentNode, base);
    Manager3D_PopState(); // one pop too many changes nothing
    EXPECT_EQ(m3d.currentNode, base);
}

TEST_F(StateTreeTest, NextFrameIsThePermanentChainAgain) {
    request(STATE_CULL, CULL_ON);
    request(STATE_TEXTURE, 8);
    GFX_EndRender();
    for (int level = 0; level < 5; ++level) {
        EXPECT_EQ(permanent(level)->nextSibling, nullptr);
        EXPECT_EQ(permanent(level)->vertexBatches, nullptr);
    }
    GFX_BeginRender();
    EXPECT_EQ(created(), 0u);
    EXPECT_EQ(m3d.currentNode, permanent(4));
    EXPECT_EQ(permanent(4)->isAppendable, 1);
}

} // namespace
