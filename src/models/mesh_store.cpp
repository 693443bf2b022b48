// Mesh store: meshes filed by ObjectId as texture groups of batch triples, built vertex by vertex
// in the render queue's vertex heap and sealed into arrays of their own, or registered from the
// host's arrays, converted in place. Records come from general memory and outlive frames.
#include "core/core.h"
#include "core/messages.h"
#include "manager3d/limits.h"
#include "models/models.h"
#include "pictures/pictures.h"
#include "platform/platform.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace norvgl {

MeshStoreState meshStore = {};

namespace {

constexpr std::size_t kPositionFloats = 3;
constexpr std::size_t kNormalFloats = 3;
constexpr std::size_t kTexCoordFloats = 2;
constexpr std::size_t kVertexFloats = kPositionFloats + kNormalFloats + kTexCoordFloats;

// The three records of a batch triple, allocated together so that a triple is made whole or
// not at all. The position record comes first: freeing it frees the triple.
struct BatchTriple {
    DrawBatch position;
    DrawBatch normal;
    DrawBatch texCoord;
};

// A mesh's first group, with the one block of arrays that sealing allocated (null for a host
// mesh and for a mesh still in the vertex heap).
struct StoredMesh {
    StateNode first;
    float* arrays;
};
static_assert(offsetof(StoredMesh, first) == 0, "a first group is its mesh");
static_assert(offsetof(BatchTriple, position) == 0, "a position record is its triple");

StoredMesh* stored(StateNode* first) {
    return reinterpret_cast<StoredMesh*>(first);
}

template <typename T> T* allocateZeroed() {
    return static_cast<T*>(std::calloc(1, sizeof(T)));
}

StateNode* nextGroup(const StateNode* group) {
    return group->firstChild;
}

StoredMesh* newMesh(std::uint32_t id, std::uint16_t texture) {
    StoredMesh* mesh = allocateZeroed<StoredMesh>();
    if (!mesh)
        return nullptr;
    mesh->first.objectId = id;
    mesh->first.texture = texture;
    return mesh;
}

void linkMesh(StoredMesh* mesh) {
    StateNode* first = &mesh->first;
    first->nextSibling = meshStore.meshes;
    if (meshStore.meshes)
        meshStore.meshes->prevSibling = first;
    meshStore.meshes = first;
}

// Fills a triple with `count` vertices of the three arrays, drawn as `type`, and puts it at
// the head of the group's lists.
void linkTriple(StateNode* group, BatchTriple* triple, std::int32_t type, const float* positions,
                const float* normals, const float* texCoords, std::uint32_t count) {
    triple->position.primitive = type;
    triple->position.data = positions;
    triple->position.count = count;
    triple->normal.data = normals;
    triple->normal.count = count;
    triple->texCoord.data = texCoords;
    triple->texCoord.count = count;
    triple->position.next = group->vertexBatches;
    triple->normal.next = group->normalBatches;
    triple->texCoord.next = group->texCoordBatches;
    group->vertexBatches = &triple->position;
    group->normalBatches = &triple->normal;
    group->texCoordBatches = &triple->texCoord;
}

void freeGroupRecords(StateNode* first) {
    for (StateNode* group = first; group;) {
        for (DrawBatch* batch = group->vertexBatches; batch;) {
            DrawBatch* next = batch->next;
            std::free(batch); // the triple's position record
            batch = next;
        }
        StateNode* next = nextGroup(group);
        if (group != first)
            std::free(group);
        group = next;
    }
    StoredMesh* mesh = stored(first);
    std::free(mesh->arrays);
    std::free(mesh);
}

void rewindVertexHeap() {
    m3d.positionCursor = m3d.normalCursor = m3d.texCoordCursor = 0;
}

const float* advance(const float* p, std::size_t bytes) {
    return reinterpret_cast<const float*>(reinterpret_cast<const unsigned char*>(p) + bytes);
}

} // namespace

StateNode* MeshStore_Find(std::uint32_t id) {
    for (StateNode* mesh = meshStore.meshes; mesh; mesh = mesh->nextSibling)
        if (mesh->objectId == id)
            return mesh;
    return nullptr;
}

int MeshStore_AddVertices(std::uint32_t id, std::int32_t type, std::uint32_t count,
                          const float* positions, const float* normals, const float* texCoords,
                          std::int32_t stride, std::uint16_t texture) {
    if (!m3d.positions)
        return MESH_REFUSED; // no heap to build in outside GFX_Init .. GFX_Destroy
    StateNode* mesh = MeshStore_Find(id);
    if (!mesh && m3d.positionCursor != 0)
        return MESH_REFUSED;
    if (m3d.positionCursor + kPositionFloats * std::uint64_t{count} > kVertexHeapFloats) {
        DebugLog("%s", kVertexHeapExhausted);
        return MESH_REFUSED;
    }
    float* p = m3d.positions + m3d.positionCursor;
    float* n = m3d.normals + m3d.normalCursor;
    float* t = m3d.texCoords + m3d.texCoordCursor;

    StateNode* group = nullptr;
    StateNode* last = nullptr;
    for (StateNode* g = mesh; g; g = nextGroup(g)) {
        if (g->texture == texture) {
            group = g;
            break;
        }
        last = g;
    }
    // Only the newest triple of the type may grow, and only when it ends where these begin.
    DrawBatch* grows = nullptr;
    if (group) {
        for (DrawBatch* b = group->vertexBatches; b; b = b->next) {
            if (b->primitive == type) {
                if (b->data + kPositionFloats * b->count == p)
                    grows = b;
                break;
            }
        }
    }
    // Every record is allocated before anything is linked or reserved.
    BatchTriple* triple = nullptr;
    if (!grows && !(triple = allocateZeroed<BatchTriple>()))
        return MESH_OUT_OF_MEMORY;
    StoredMesh* created = nullptr;
    StateNode* newGroup = nullptr;
    if (!mesh)
        created = newMesh(id, texture);
    else if (!group)
        newGroup = allocateZeroed<StateNode>();
    if ((!mesh && !created) || (mesh && !group && !newGroup)) {
        std::free(triple);
        return MESH_OUT_OF_MEMORY;
    }
    if (created) {
        linkMesh(created);
        group = &created->first;
    } else if (newGroup) {
        newGroup->objectId = id;
        newGroup->texture = texture;
        last->firstChild = newGroup;
        group = newGroup;
    }
    if (grows) {
        BatchTriple* grown = reinterpret_cast<BatchTriple*>(grows);
        grown->position.count += count;
        grown->normal.count += count;
        grown->texCoord.count += count;
    } else {
        linkTriple(group, triple, type, p, n, t, count);
    }

    m3d.positionCursor += static_cast<std::uint32_t>(kPositionFloats * count);
    m3d.normalCursor += static_cast<std::uint32_t>(kNormalFloats * count);
    m3d.texCoordCursor += static_cast<std::uint32_t>(kTexCoordFloats * count);
    const std::size_t step[3] = {
        stride ? static_cast<std::size_t>(stride) : kPositionFloats * sizeof(float),
        stride ? static_cast<std::size_t>(stride) : kNormalFloats * sizeof(float),
        stride ? static_cast<std::size_t>(stride) : kTexCoordFloats * sizeof(float)};
    for (std::uint32_t i = 0; i < count; ++i) {
        p[0] = positions[0];
        p[1] = positions[1];
        p[2] = -positions[2];
        n[0] = normals[0];
        n[1] = normals[1];
        n[2] = -normals[2];
        t[0] = texCoords[0];
        t[1] = texCoords[1];
        p += kPositionFloats;
        n += kNormalFloats;
        t += kTexCoordFloats;
        positions = advance(positions, step[0]);
        normals = advance(normals, step[1]);
        texCoords = advance(texCoords, step[2]);
    }
    return MESH_OK;
}

int MeshStore_Seal(std::uint32_t id) {
    StateNode* first = MeshStore_Find(id);
    if (!first)
        return MESH_REFUSED;
    StoredMesh* mesh = stored(first);
    if (mesh->arrays)
        return MESH_OK;
    std::size_t vertices = 0;
    for (StateNode* group = first; group; group = nextGroup(group))
        for (DrawBatch* b = group->vertexBatches; b; b = b->next)
            vertices += b->count;
    // One block for all of the mesh's arrays, at its final size: positions, normals and
    // texture coordinates of each triple in turn.
    float* block =
        static_cast<float*>(std::malloc((vertices ? vertices : 1) * kVertexFloats * sizeof(float)));
    if (!block)
        return MESH_OUT_OF_MEMORY;
    float* to = block;
    for (StateNode* group = first; group; group = nextGroup(group)) {
        DrawBatch* p = group->vertexBatches;
        DrawBatch* n = group->normalBatches;
        DrawBatch* t = group->texCoordBatches;
        for (; p && n && t; p = p->next, n = n->next, t = t->next) {
            DrawBatch* records[3] = {p, n, t};
            const std::size_t widths[3] = {kPositionFloats, kNormalFloats, kTexCoordFloats};
            for (int r = 0; r < 3; ++r) {
                const std::size_t floats = widths[r] * records[r]->count;
                if (floats)
                    std::memcpy(to, records[r]->data, floats * sizeof(float));
                records[r]->data = to;
                to += floats;
            }
        }
    }
    mesh->arrays = block;
    rewindVertexHeap();
    return MESH_OK;
}

int MeshStore_AddIndirect(std::uint32_t id, std::int32_t type, std::uint32_t count,
                          float* positions, float* normals, float* texCoords,
                          const std::uint16_t* indices, std::uint16_t indexCount,
                          std::uint16_t texture) {
    StateNode* first = MeshStore_Find(id);
    if ((!first && m3d.positionCursor != 0) || (count == 0 && indexCount == 0)) {
        DebugLog("%s", kLoadMeshIndirectFailed);
        return MESH_REFUSED;
    }
    BatchTriple* triple = allocateZeroed<BatchTriple>();
    if (!triple)
        return MESH_OUT_OF_MEMORY;
    if (!first) {
        StoredMesh* mesh = newMesh(id, texture);
        if (!mesh) {
            std::free(triple);
            return MESH_OUT_OF_MEMORY;
        }
        linkMesh(mesh);
        first = &mesh->first;
    }
    triple->position.indices = indexCount ? indices : nullptr;
    triple->position.indexCount = indexCount;
    linkTriple(first, triple, type, positions, normals, texCoords, count);
    for (std::uint32_t i = 0; i < count; ++i) {
        positions[kPositionFloats * i + 2] = -positions[kPositionFloats * i + 2];
        normals[kNormalFloats * i + 2] = -normals[kNormalFloats * i + 2];
        texCoords[kTexCoordFloats * i + 1] = 1.0f - texCoords[kTexCoordFloats * i + 1];
    }
    return MESH_OK;
}

void MeshStore_Discard(std::uint32_t id) {
    StateNode* first = MeshStore_Find(id);
    if (!first)
        return;
    if (first->prevSibling)
        first->prevSibling->nextSibling = first->nextSibling;
    else
        meshStore.meshes = first->nextSibling;
    if (first->nextSibling)
        first->nextSibling->prevSibling = first->prevSibling;
    if (!stored(first)->arrays)
        rewindVertexHeap();
    freeGroupRecords(first);
}

void MeshStore_Clear() {
    for (StateNode* first = meshStore.meshes; first;) {
        StateNode* next = first->nextSibling;
        freeGroupRecords(first);
        first = next;
    }
    meshStore.meshes = nullptr;
}

bool Models_CanLoad() {
    // A model builds in the render queue's heap and records a display list; a mesh made before
    // GFX_Init would be emptied by it, one made after GFX_Destroy would outlive every clear.
    if (Manager3D_HeapsReady() && platform::hasContext())
        return true;
    ReportError(ERR_CREATE_CONTEXT, kNoContextForModel);
    return false;
}

void Models_Reset() {
    MeshStore_Clear();
}

int LoadMeshIndirect(std::int32_t type, std::uint32_t count, float* positions, float* normals,
                     float* texCoords, const std::uint16_t* indices, std::uint32_t indexCount,
                     std::uint32_t pictureId, std::uint32_t* idOut) {
    if (!idOut) {
        ReportError(ERR_INVALID_PARAMETER, kNullIdPointer);
        return 1;
    }
    if (!Models_CanLoad())
        return 1;
    if (count > 0) {
        const struct {
            const float* array;
            const char* name;
        } arrays[3] = {{positions, "position"}, {normals, "normal"}, {texCoords, "texture"}};
        for (const auto& a : arrays) {
            if (!a.array) {
                ReportError(ERR_INVALID_PARAMETER, kNullMeshArray, a.name, count);
                return 1;
            }
        }
    }
    if (indexCount > kMaxIndexCount) {
        ReportError(ERR_INVALID_PARAMETER, kIndexCountTooLarge, indexCount);
        return 1;
    }
    if (indexCount > 0 && !indices) {
        ReportError(ERR_INVALID_PARAMETER, kNullIndices, indexCount);
        return 1;
    }
    // Every draw reads the vertices the indices name, so each must be one of the mesh's.
    for (std::uint32_t i = 0; count > 0 && i < indexCount; ++i) {
        if (indices[i] >= count) {
            ReportError(ERR_INVALID_PARAMETER, kIndexOutOfRange, indices[i], i, count);
            return 1;
        }
    }
    const std::uint32_t id = IssueObjectId();
    const auto texture = static_cast<std::uint16_t>(PictureTexture(pictureId));
    const int result =
        MeshStore_AddIndirect(id, type, count, positions, normals, texCoords, indices,
                              static_cast<std::uint16_t>(indexCount), texture);
    if (result != MESH_OK) {
        ReturnObjectId(id);
        if (result == MESH_OUT_OF_MEMORY)
            ReportError(ERR_OUT_OF_MEMORY, kMeshNoMemory);
        return 1;
    }
    *idOut = id;
    return 0;
}

} // namespace norvgl
