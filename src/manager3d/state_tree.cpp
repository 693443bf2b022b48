// Render-state tree: finds or creates the node for a state request. Nodes come from a fixed
// heap rewound every frame; the first five records are the permanent chain of frame defaults.
#include "core/core.h"
#include "core/messages.h"
#include "manager3d/manager3d.h"

#include <cstdlib>
#include <cstring>

namespace norvgl {

Manager3DState m3d = {};

namespace {

template <typename T> bool allocate(T*& heap, std::uint32_t count) {
    heap = static_cast<T*>(std::calloc(count, sizeof(T)));
    return heap != nullptr;
}

void buildPermanentChain() {
    StateNode* parent = nullptr;
    for (std::uint32_t level = 0; level < kPermanentNodes; ++level) {
        StateNode& node = m3d.stateHeap[level];
        std::memset(&node, 0, sizeof node);
        node.isPermanent = 1;
        node.isAppendable = 1;
        for (int i = 0; i < 4; ++i) {
            node.ambient[i] = 1.0f;
            node.diffuse[i] = 1.0f;
            node.specular[i] = 0.0f;
        }
        node.cullMode = CULL_OFF;
        node.depthMode = DEPTH_ON;
        node.blendMode = BLEND_OFF;
        node.texture = 0;
        node.level = static_cast<std::uint8_t>(level);
        node.parent = parent;
        if (parent)
            parent->firstChild = &node;
        parent = &node;
    }
}

std::uint32_t readWord(const unsigned char*& cursor) {
    std::uint32_t word;
    std::memcpy(&word, cursor, sizeof word);
    cursor += sizeof word;
    return word;
}

bool sameMaterial(const StateNode& a, const StateNode& b) {
    // Raw words, so +0.0 and -0.0 are different materials.
    return std::memcmp(a.ambient, b.ambient, sizeof a.ambient) == 0 &&
           std::memcmp(a.diffuse, b.diffuse, sizeof a.diffuse) == 0 &&
           std::memcmp(a.specular, b.specular, sizeof a.specular) == 0;
}

bool keyMatches(const StateNode& node, const StateNode& templ, int level) {
    switch (level) {
    case 0:
        return node.cullMode == templ.cullMode;
    case 1:
        return node.depthMode == templ.depthMode;
    case 2:
        return node.blendMode == templ.blendMode;
    case 3:
        return sameMaterial(node, templ);
    default:
        return node.texture == templ.texture;
    }
}

} // namespace

bool Manager3D_HeapsReady() {
    return m3d.stateHeap != nullptr;
}

void Manager3D_FreeHeaps() {
    std::free(m3d.positions);
    std::free(m3d.normals);
    std::free(m3d.texCoords);
    std::free(m3d.stateHeap);
    std::free(m3d.batchHeap);
    m3d.positions = m3d.normals = m3d.texCoords = nullptr;
    m3d.stateHeap = nullptr;
    m3d.batchHeap = nullptr;
    // Nothing may keep pointing into the freed pools: a text mode or a lock left open across
    // GFX_Destroy finds an empty queue, not the old nodes.
    m3d.rootNode = m3d.currentNode = nullptr;
    m3d.savedCount = 0;
    m3d.savedOverflow = 0;
    m3d.stateLocked = false;
    m3d.positionCursor = m3d.normalCursor = m3d.texCoordCursor = 0;
    m3d.stateCursor = 0;
    m3d.batchCursor = 0;
}

void Manager3D_Reset() {
    Manager3D_FreeHeaps();
    std::memset(&m3d, 0, sizeof m3d);
    // The transform cursors are valid from the start: screen space and untransforms before
    // any frame find the identity slots, not a cursor of 0 to step back from.
    Manager3D_ResetTransforms();
    m3d.typeOverride = PRIM_NONE;
}

int Manager3D_InitHeaps() {
    Manager3D_FreeHeaps();
    if (!allocate(m3d.positions, kVertexHeapFloats) || !allocate(m3d.normals, kVertexHeapFloats) ||
        !allocate(m3d.texCoords, kVertexHeapFloats) || !allocate(m3d.stateHeap, kStateHeapNodes) ||
        !allocate(m3d.batchHeap, kBatchHeapRecords))
        return 1;
    m3d.positionCursor = m3d.normalCursor = m3d.texCoordCursor = 0;
    m3d.batchCursor = 0;
    m3d.stateCursor = kPermanentNodes;
    m3d.rootNode = m3d.currentNode = &m3d.stateHeap[0];
    m3d.savedCount = 0;
    m3d.savedOverflow = 0;
    buildPermanentChain();
    Manager3D_ResetTransforms();
    m3d.stateLocked = false;
    m3d.typeOverride = PRIM_NONE;
    return 0;
}

int Manager3D_StateCommand(std::uint32_t mask, const void* values) {
    if (m3d.stateLocked || !m3d.currentNode)
        return 0;
    StateNode templ = *m3d.currentNode;
    m3d.currentNode->isAppendable = 0;

    const auto* cursor = static_cast<const unsigned char*>(values);
    bool changes = false;
    if (mask & STATE_CULL) {
        templ.cullMode = static_cast<std::int32_t>(readWord(cursor));
        changes |= templ.cullMode != m3d.currentNode->cullMode;
    }
    if (mask & STATE_DEPTH) {
        templ.depthMode = static_cast<std::int32_t>(readWord(cursor));
        changes |= templ.depthMode != m3d.currentNode->depthMode;
    }
    if (mask & STATE_BLEND) {
        templ.blendMode = static_cast<std::int32_t>(readWord(cursor));
        changes |= templ.blendMode != m3d.currentNode->blendMode;
    }
    if (mask & STATE_MATERIAL) {
        std::memcpy(templ.ambient, cursor, sizeof templ.ambient);
        std::memcpy(templ.diffuse, cursor + 16, sizeof templ.diffuse);
        std::memcpy(templ.specular, cursor + 32, sizeof templ.specular);
        cursor += 48;
        changes = true; // a material request always walks the tree
    }
    if (mask & STATE_TEXTURE) {
        templ.texture = static_cast<std::uint16_t>(readWord(cursor));
        changes |= templ.texture != m3d.currentNode->texture;
    }
    if (!changes)
        return 0;

    StateNode* node = Manager3D_FindOrInsert(templ);
    if (!node)
        return 0; // state heap full: keep drawing into the current node
    while (node->firstChild)
        node = node->firstChild;
    m3d.currentNode = node;
    return 0;
}

StateNode* Manager3D_FindOrInsert(const StateNode& templ) {
    StateNode* sibling = m3d.rootNode;
    for (int level = 0; level < kTreeLevels; ++level) {
        StateNode* last = sibling;
        for (; sibling; sibling = sibling->nextSibling) {
            if (keyMatches(*sibling, templ, level))
                break;
            last = sibling;
        }
        if (!sibling) {
            StateNode* chain = Manager3D_NewChain(templ, last->level);
            if (!chain)
                return nullptr;
            last->nextSibling = chain;
            chain->prevSibling = last;
            return chain;
        }
        if (level == kTreeLevels - 1)
            return sibling;
        sibling = sibling->firstChild;
    }
    return nullptr;
}

StateNode* Manager3D_NewChain(const StateNode& templ, int level) {
    // The whole chain down to level 4 is checked for room first, so a full heap never leaves a
    // node without its children.
    const std::uint32_t needed = static_cast<std::uint32_t>(kTreeLevels - level);
    if (m3d.stateCursor + needed > kStateHeapNodes) {
        DebugLog("%s", kStateHeapExhausted);
        return nullptr;
    }
    StateNode* top = nullptr;
    StateNode* parent = nullptr;
    for (int l = level; l < kTreeLevels; ++l) {
        StateNode* node = &m3d.stateHeap[m3d.stateCursor++];
        *node = templ;
        node->vertexBatches = node->normalBatches = node->texCoordBatches = nullptr;
        node->nextSibling = node->prevSibling = node->firstChild = node->parent = nullptr;
        node->level = static_cast<std::uint8_t>(l);
        node->isPermanent = 0;
        node->isAppendable = 1;
        node->isDrawn = 0;
        if (parent) {
            parent->firstChild = node;
            node->parent = parent;
        } else {
            top = node;
        }
        parent = node;
    }
    return top;
}

void Manager3D_PushState() {
    if (m3d.savedCount == kSavedNodeDepth) {
        DebugLog("%s", kSavedNodesExhausted);
        ++m3d.savedOverflow;
        return;
    }
    m3d.savedNodes[m3d.savedCount++] = m3d.currentNode;
}

void Manager3D_PopState() {
    if (m3d.savedOverflow > 0) {
        --m3d.savedOverflow;
        return;
    }
    if (m3d.savedCount == 0)
        return;
    m3d.currentNode = m3d.savedNodes[--m3d.savedCount];
}

void Manager3D_LockState() {
    m3d.stateLocked = true;
}
void Manager3D_UnlockState() {
    m3d.stateLocked = false;
}
void Manager3D_SetTypeOverride(std::int32_t type) {
    m3d.typeOverride = type;
}
void Manager3D_ClearTypeOverride() {
    m3d.typeOverride = PRIM_NONE;
}

} // namespace norvgl
