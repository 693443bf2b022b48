// Queue flush: the frame reset, and the end-of-frame walk that draws every batch grouped by
// state, sending a GL state call only where a node's key differs from what was last applied.
#include "core/core.h"
#include "core/messages.h"
#include "manager3d/manager3d.h"
#include "platform/gl_table.h"

namespace norvgl {

namespace {

void emptyLists(StateNode* node) {
    node->vertexBatches = node->normalBatches = node->texCoordBatches = nullptr;
}

GLenum arrayMode(std::int32_t primitive) {
    switch (primitive) {
    case PRIM_POINTS:
        return GL_POINTS;
    case PRIM_LINES:
        return GL_LINES;
    case PRIM_LINE_STRIP:
        return GL_LINE_STRIP;
    case PRIM_QUADS:
        return GL_QUADS;
    default:
        return 0xFFFFFFFFu;
    }
}

void drawTriangles(const DrawBatch& positions, const DrawBatch& normals, const DrawBatch& texCoords,
                   bool textured) {
    if (!normals.data) {
        DebugLog("%s", kTrianglesWithoutNormals);
        return;
    }
    const bool sendTexCoords = textured && texCoords.data;
    const std::uint32_t sent = positions.indices ? positions.indexCount : positions.count;
    gl.Begin(GL_TRIANGLES);
    for (std::uint32_t i = 0; i < sent; ++i) {
        const std::uint32_t v = positions.indices ? positions.indices[i] : i;
        gl.Normal3fv(normals.data + 3 * static_cast<std::size_t>(v));
        if (sendTexCoords)
            gl.TexCoord2fv(texCoords.data + 2 * static_cast<std::size_t>(v));
        gl.Vertex3fv(positions.data + 3 * static_cast<std::size_t>(v));
    }
    gl.End();
}

void drawArrays(const DrawBatch& positions, const DrawBatch& normals, const DrawBatch& texCoords,
                bool textured, GLenum mode) {
    // Arrays that the batch does not have are switched off for its draw rather than read
    // through a null pointer.
    if (!normals.data)
        gl.DisableClientState(GL_NORMAL_ARRAY);
    const bool noTexCoords = textured && !texCoords.data;
    if (noTexCoords)
        gl.DisableClientState(GL_TEXTURE_COORD_ARRAY);
    if (positions.indices)
        gl.DrawElements(mode, positions.indexCount, GL_UNSIGNED_SHORT, positions.indices);
    else
        gl.DrawArrays(mode, 0, static_cast<GLsizei>(positions.count));
    if (noTexCoords)
        gl.EnableClientState(GL_TEXTURE_COORD_ARRAY);
    if (!normals.data)
        gl.EnableClientState(GL_NORMAL_ARRAY);
}

} // namespace

void Manager3D_ApplyMaterial(const float* ambient, const float* diffuse, const float* specular) {
    gl.Materialfv(GL_FRONT, GL_AMBIENT, ambient);
    gl.Materialfv(GL_FRONT, GL_DIFFUSE, diffuse);
    gl.Materialfv(GL_FRONT, GL_SPECULAR, specular);
}

void Manager3D_ContextCreated() {
    m3d.appliedCull = CULL_ON;
}

void Manager3D_SetParticlePass(void (*pass)()) {
    m3d.particlePass = pass;
}

void Manager3D_BeginFrame() {
    if (!Manager3D_HeapsReady())
        return;
    gl.MatrixMode(GL_PROJECTION);
    gl.LoadIdentity();
    gl.MatrixMode(GL_MODELVIEW);
    gl.LoadIdentity();
    m3d.savedCount = 0;
    m3d.savedOverflow = 0;
    Manager3D_ResetTransforms();
    const std::int32_t height = driver.clientHeight > 0 ? driver.clientHeight : 1;
    Manager3D_Perspective(static_cast<float>(static_cast<double>(driver.clientWidth) / height),
                          kNearPlane, kFarPlane);
    m3d.positionCursor = m3d.normalCursor = m3d.texCoordCursor = 0;
    m3d.batchCursor = 0;
    m3d.stateCursor = kPermanentNodes;

    m3d.rootNode = &m3d.stateHeap[0];
    StateNode* node = m3d.rootNode;
    while (true) {
        node->isDrawn = 0;
        node->nextSibling = nullptr;
        // A frame that was begun but never ended leaves batches here whose records the
        // rewind above has just reclaimed.
        emptyLists(node);
        if (!node->firstChild)
            break;
        node = node->firstChild;
    }
    node->isAppendable = 1;
    m3d.currentNode = node;
}

void Manager3D_EndFrame() {
    if (!Manager3D_HeapsReady())
        return;
    m3d.appliedModelview = nullptr;
    m3d.appliedProjection = nullptr;
    m3d.appliedTexture = 0;
    m3d.stateLocked = false;
    m3d.typeOverride = PRIM_NONE;

    Manager3D_DrawTree(m3d.rootNode);
    if (m3d.particlePass)
        m3d.particlePass();

    gl.Disable(GL_BLEND);
    gl.Enable(GL_DEPTH_TEST);
    gl.Disable(GL_TEXTURE_2D);
    // Untextured batches of the next frame must not read texture coordinates through a stale
    // pointer.
    gl.DisableClientState(GL_TEXTURE_COORD_ARRAY);
    if (m3d.appliedCull == CULL_ON)
        gl.Enable(GL_CULL_FACE);
    m3d.appliedBlend = BLEND_OFF;
    m3d.appliedDepth = DEPTH_ON;
    m3d.appliedTexture = 0;
    m3d.positionCursor = m3d.normalCursor = m3d.texCoordCursor = 0;
}

void Manager3D_DrawTree(StateNode* root) {
    StateNode* x = root;
    while (x) {
        if (x->firstChild && !x->firstChild->isDrawn) {
            x = x->firstChild;
            continue;
        }
        if (x->nextSibling && !x->nextSibling->isDrawn) {
            x = x->nextSibling;
            continue;
        }
        Manager3D_DrawNode(x);
        x->isDrawn = 1;
        if (x->firstChild && !x->firstChild->isPermanent) {
            x->firstChild->parent = nullptr;
            x->firstChild = nullptr;
        }
        if (x->nextSibling && !x->nextSibling->isPermanent) {
            x->nextSibling->prevSibling = nullptr;
            x->nextSibling = nullptr;
        }
        x = x->prevSibling ? x->prevSibling : x->parent;
    }
}

void Manager3D_DrawNode(StateNode* node) {
    if (!node->vertexBatches || !node->normalBatches) {
        emptyLists(node);
        return;
    }
    Manager3D_ApplyMaterial(node->ambient, node->diffuse, node->specular);

    if (node->cullMode != m3d.appliedCull) {
        if (node->cullMode == CULL_OFF)
            gl.Disable(GL_CULL_FACE);
        else
            gl.Enable(GL_CULL_FACE);
        m3d.appliedCull = node->cullMode;
    }
    if (node->texture != m3d.appliedTexture) {
        if (node->texture) {
            if (!m3d.appliedTexture) {
                gl.Enable(GL_TEXTURE_2D);
                gl.TexEnvf(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
                gl.EnableClientState(GL_TEXTURE_COORD_ARRAY);
            }
            gl.BindTexture(GL_TEXTURE_2D, node->texture);
        } else {
            gl.DisableClientState(GL_TEXTURE_COORD_ARRAY);
            gl.Disable(GL_TEXTURE_2D);
        }
        m3d.appliedTexture = node->texture;
    }
    if (node->blendMode != m3d.appliedBlend) {
        switch (node->blendMode) {
        case BLEND_OFF:
            gl.Disable(GL_BLEND);
            break;
        case BLEND_ALPHA:
            if (m3d.appliedBlend == BLEND_OFF)
                gl.Enable(GL_BLEND);
            gl.BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
            break;
        case BLEND_ADD:
            if (m3d.appliedBlend == BLEND_OFF)
                gl.Enable(GL_BLEND);
            gl.BlendFunc(GL_SRC_ALPHA, GL_ONE);
            break;
        default:
            break;
        }
        m3d.appliedBlend = node->blendMode;
    }
    if (node->depthMode != m3d.appliedDepth) {
        if (node->depthMode == DEPTH_ON)
            gl.Enable(GL_DEPTH_TEST);
        else if (node->depthMode == DEPTH_OFF)
            gl.Disable(GL_DEPTH_TEST);
        m3d.appliedDepth = node->depthMode;
    }

    const bool textured = node->texture != 0;
    DrawBatch* p = node->vertexBatches;
    DrawBatch* n = node->normalBatches;
    DrawBatch* t = node->texCoordBatches;
    for (; p && n; p = p->next, n = n->next, t = t ? t->next : nullptr) {
        gl.VertexPointer(3, GL_FLOAT, 12, p->data);
        gl.NormalPointer(GL_FLOAT, 12, n->data);
        if (p->modelview != m3d.appliedModelview) {
            m3d.appliedModelview = p->modelview;
            gl.LoadMatrixf(p->modelview->m);
        }
        if (p->projection != m3d.appliedProjection) {
            gl.MatrixMode(GL_PROJECTION);
            m3d.appliedProjection = p->projection;
            gl.LoadMatrixf(p->projection->m);
            gl.MatrixMode(GL_MODELVIEW);
        }
        static const DrawBatch kNoTexCoords = {};
        const DrawBatch& texCoords = t ? *t : kNoTexCoords;
        if (textured && texCoords.data)
            gl.TexCoordPointer(2, GL_FLOAT, 8, texCoords.data);

        if (p->primitive == PRIM_TRIANGLES || p->primitive == PRIM_BILLBOARD) {
            drawTriangles(*p, *n, texCoords, textured);
        } else {
            const GLenum mode = arrayMode(p->primitive);
            if (mode != 0xFFFFFFFFu)
                drawArrays(*p, *n, texCoords, textured, mode);
        }
        p->data = n->data = nullptr;
        p->count = n->count = 0;
        if (t) {
            t->data = nullptr;
            t->count = 0;
        }
    }
    emptyLists(node);
}

} // namespace norvgl
