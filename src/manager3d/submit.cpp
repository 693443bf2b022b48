// Geometry submission: copies host vertices into the vertex heap in GL's coordinates (z and v
// negated) and files them as a batch under the current node, merging runs that can share a draw.
#include "core/core.h"
#include "core/messages.h"
#include "manager3d/manager3d.h"

#include <cstring>

namespace norvgl {

namespace {

constexpr std::uint16_t kBillboardIndices[6] = {0, 1, 2, 0, 2, 3};
constexpr std::int32_t kHostVertexStride = 32;
constexpr std::size_t kHostNormalOffset = 3;   // floats
constexpr std::size_t kHostTexCoordOffset = 6; // floats
constexpr std::uint32_t kBillboardVertices = 4;

const float* at(const float* base, std::uint32_t i, std::int32_t stride) {
    return reinterpret_cast<const float*>(reinterpret_cast<const unsigned char*>(base) +
                                          static_cast<std::size_t>(i) * stride);
}

bool vertexRoom(std::uint64_t vertices) {
    if (m3d.positionCursor + 3 * vertices > kVertexHeapFloats) {
        DebugLog("%s", kVertexHeapExhausted);
        return false;
    }
    return true;
}

void copyVertices(std::uint32_t count, const float* positions, const float* normals,
                  const float* texCoords, std::int32_t stride) {
    float* p = m3d.positions + m3d.positionCursor;
    float* n = m3d.normals + m3d.normalCursor;
    float* t = m3d.texCoords + m3d.texCoordCursor;
    for (std::uint32_t i = 0; i < count; ++i) {
        const float* sp = at(positions, i, stride);
        const float* sn = at(normals, i, stride);
        const float* st = at(texCoords, i, stride);
        p[0] = sp[0];
        p[1] = sp[1];
        p[2] = -sp[2];
        n[0] = sn[0];
        n[1] = sn[1];
        n[2] = -sn[2];
        t[0] = st[0];
        t[1] = -st[1];
        p += 3;
        n += 3;
        t += 2;
    }
}

// Camera-facing square around the first position; its size is the first normal's x.
void expandBillboard(const float* positions, const float* normals) {
    const float* M = m3d.matrixHeap[m3d.currentMatrix].m;
    const float size = normals[0];
    const float half = size * 0.5f;
    const float right[3] = {M[0], M[4], M[8]};
    const float up[3] = {M[1], M[5], M[9]};
    const float base[3] = {positions[0] - half, positions[1] - half, -(positions[2] - half)};

    float* p = m3d.positions + m3d.positionCursor;
    for (int c = 0; c < 3; ++c) {
        p[0 + c] = base[c] + size * (right[c] + up[c]);
        p[3 + c] = base[c] + size * up[c];
        p[6 + c] = base[c];
        p[9 + c] = base[c] + size * right[c];
    }
    float* n = m3d.normals + m3d.normalCursor;
    for (std::uint32_t v = 0; v < kBillboardVertices; ++v) {
        n[3 * v + 0] = 0.0f;
        n[3 * v + 1] = 0.0f;
        n[3 * v + 2] = 1.0f;
    }
    static constexpr float kCornerTexCoords[8] = {1, 0, 1, 1, 0, 1, 0, 0};
    std::memcpy(m3d.texCoords + m3d.texCoordCursor, kCornerTexCoords, sizeof kCornerTexCoords);
}

DrawBatch* mergeCandidate(std::int32_t type, const std::uint16_t* indices, std::uint16_t indexCount,
                          int copy) {
    StateNode* node = m3d.currentNode;
    if (!node->isAppendable || !node->vertexBatches)
        return nullptr;
    DrawBatch* last = node->vertexBatches;
    const bool indexed = indices && indexCount;
    const bool lastIndexed = last->indices && last->indexCount;
    if (last->primitive != type || !copy || indexed || lastIndexed)
        return nullptr;
    if (last->modelview != &m3d.matrixHeap[m3d.currentMatrix] ||
        last->projection != &m3d.projectionStack[m3d.projectionIndex])
        return nullptr;
    if (last->data + 3 * static_cast<std::size_t>(last->count) !=
        m3d.positions + m3d.positionCursor)
        return nullptr;
    return last;
}

} // namespace

int Manager3D_Submit(std::int32_t type, std::uint32_t count, const float* positions,
                     const float* normals, const float* texCoords, const std::uint16_t* indices,
                     std::uint16_t indexCount, std::int32_t stride, int copy) {
    if (!m3d.currentNode)
        return 1;
    if (m3d.typeOverride != PRIM_NONE)
        type = m3d.typeOverride;
    // A billboard is built from its first vertex, so it needs one.
    if (copy && type == PRIM_BILLBOARD && (count == 0 || !positions || !normals))
        return 1;

    DrawBatch* candidate = mergeCandidate(type, indices, indexCount, copy);

    const float* batchPositions = positions;
    const float* batchNormals = normals;
    const float* batchTexCoords = texCoords;
    if (copy && type == PRIM_BILLBOARD) {
        if (!vertexRoom(kBillboardVertices))
            return 1;
        candidate = nullptr; // a billboard is indexed, so it never joins a batch
        expandBillboard(positions, normals);
        indices = kBillboardIndices;
        indexCount = 6;
    } else if (copy) {
        if (!vertexRoom(count))
            return 1;
        copyVertices(count, positions, normals, texCoords, stride);
    }
    std::uint32_t taken = count;
    if (copy) {
        if (type == PRIM_BILLBOARD)
            taken = kBillboardVertices;
        batchPositions = m3d.positions + m3d.positionCursor;
        batchNormals = m3d.normals + m3d.normalCursor;
        batchTexCoords = m3d.texCoords + m3d.texCoordCursor;
    }

    if (candidate) {
        m3d.positionCursor += 3 * taken;
        m3d.normalCursor += 3 * taken;
        m3d.texCoordCursor += 2 * taken;
        StateNode* node = m3d.currentNode;
        node->vertexBatches->count += count;
        node->normalBatches->count += count;
        node->texCoordBatches->count += count;
        return 0;
    }

    if (m3d.batchCursor + kRecordsPerBatch > kBatchHeapRecords) {
        DebugLog("%s", kBatchHeapExhausted);
        return 1;
    }
    if (copy) {
        m3d.positionCursor += 3 * taken;
        m3d.normalCursor += 3 * taken;
        m3d.texCoordCursor += 2 * taken;
    }
    StateNode* node = m3d.currentNode;
    DrawBatch* lists[kRecordsPerBatch] = {};
    DrawBatch** heads[kRecordsPerBatch] = {&node->vertexBatches, &node->normalBatches,
                                           &node->texCoordBatches};
    const float* data[kRecordsPerBatch] = {batchPositions, batchNormals, batchTexCoords};
    for (std::uint32_t r = 0; r < kRecordsPerBatch; ++r) {
        DrawBatch* record = &m3d.batchHeap[m3d.batchCursor++];
        std::memset(record, 0, sizeof *record);
        record->data = data[r];
        record->count = count;
        record->modelview = &m3d.matrixHeap[m3d.currentMatrix];
        record->projection = &m3d.projectionStack[m3d.projectionIndex];
        record->next = *heads[r];
        *heads[r] = record;
        lists[r] = record;
    }
    lists[0]->primitive = type;
    lists[0]->indices = indices;
    lists[0]->indexCount = indexCount;
    return 0;
}

int Manager3D_SubmitHostVertices(std::int32_t type, std::uint32_t count, const float* vertices,
                                 const std::uint16_t* indices, std::uint16_t indexCount) {
    // No offset is taken from a null array: an empty submission carries none.
    const float* normals = vertices ? vertices + kHostNormalOffset : nullptr;
    const float* texCoords = vertices ? vertices + kHostTexCoordOffset : nullptr;
    return Manager3D_Submit(type, count, vertices, normals, texCoords, indices, indexCount,
                            kHostVertexStride, 1);
}

} // namespace norvgl
