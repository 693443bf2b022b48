// Objects: display lists that the host opens and closes, and the drawing of an object's mesh,
// whose batches go to the render queue by reference under a texture state and a translation.
#include "core/core.h"
#include "core/messages.h"
#include "models/models.h"
#include "platform/gl_table.h"

namespace norvgl {

namespace {

constexpr std::int32_t kDisplayListObject = 0;
constexpr std::int32_t kStoredStride = 12; // tightly packed: the store's arrays

bool atOrigin(float x, float y, float z) {
    return x == 0.0f && y == 0.0f && z == 0.0f;
}

} // namespace

int NewObject(std::uint32_t* idOut, std::int32_t type) {
    if (type != kDisplayListObject)
        return 0;
    if (!idOut) {
        ReportError(ERR_INVALID_PARAMETER, kNullIdPointer);
        return 1;
    }
    const std::uint32_t id = IssueObjectId();
    gl.NewList(id, GL_COMPILE);
    *idOut = id;
    return 0;
}

int EndObject() {
    gl.EndList();
    return 0;
}

void Objects_CloseOpenList() {
    GLfloat open = 0.0f;
    gl.GetFloatv(GL_LIST_INDEX, &open);
    if (open != 0.0f)
        gl.EndList();
}

int Object_Draw(std::uint32_t id, float x, float y, float z, std::int32_t type, std::uint32_t mask,
                const void* values) {
    StateNode* mesh = MeshStore_Find(id);
    StateNode* remembered = m3d.currentNode;
    const bool translated = !atOrigin(x, y, z);
    if (translated)
        Manager3D_Translate(x, y, z);
    for (StateNode* group = mesh; group; group = group->firstChild) {
        if (mask == 0) {
            const std::uint32_t texture = group->texture;
            Manager3D_StateCommand(STATE_TEXTURE, &texture);
        } else {
            Manager3D_StateCommand(mask, values);
        }
        DrawBatch* p = group->vertexBatches;
        DrawBatch* n = group->normalBatches;
        DrawBatch* t = group->texCoordBatches;
        for (; p && n && t; p = p->next, n = n->next, t = t->next) {
            if (p->count == 0)
                continue; // no vertex for any index to name
            Manager3D_Submit(type == PRIM_NONE ? p->primitive : type, p->count, p->data, n->data,
                             t->data, p->indices, p->indexCount, kStoredStride, 0);
        }
        if (mask != 0)
            m3d.currentNode = remembered;
    }
    if (translated)
        Manager3D_Translate(-x, -y, -z);
    return 0;
}

} // namespace norvgl
