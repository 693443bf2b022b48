// Manager3D, the render queue: records a frame's geometry under a five-level render-state
// tree (cull, depth, blend, material, texture) in fixed heaps and draws it sorted by state.
#pragma once

#include "manager3d/limits.h"

#include <cstdint>

namespace norvgl {

struct Matrix4 {
    float m[16]; // column-major, as read back from GL
};

struct DrawBatch {
    std::int32_t primitive;
    const float* data;
    const std::uint16_t* indices;
    const Matrix4* modelview;
    const Matrix4* projection;
    std::uint32_t count;
    std::uint16_t indexCount;
    DrawBatch* next; // next older record of the same list
};

struct StateNode {
    std::int32_t isPermanent;
    std::int32_t isAppendable;
    std::uint32_t objectId;
    DrawBatch* vertexBatches;
    DrawBatch* normalBatches;
    DrawBatch* texCoordBatches;
    float ambient[4];
    float diffuse[4];
    float specular[4];
    std::int32_t cullMode;
    std::int32_t depthMode;
    std::int32_t blendMode;
    std::uint16_t texture;
    std::uint8_t level;
    std::uint8_t isDrawn;
    StateNode* nextSibling;
    StateNode* prevSibling;
    StateNode* firstChild;
    StateNode* parent;
};

struct Manager3DState {
    // Vertex heap: three arrays filled without gaps; cursors count floats.
    float* positions;
    float* normals;
    float* texCoords;
    std::uint32_t positionCursor;
    std::uint32_t normalCursor;
    std::uint32_t texCoordCursor;

    StateNode* stateHeap;
    std::uint32_t stateCursor; // records in use
    DrawBatch* batchHeap;
    std::uint32_t batchCursor;

    StateNode* rootNode;
    StateNode* currentNode;
    StateNode* savedNodes[kSavedNodeDepth];
    std::uint32_t savedCount;
    std::uint32_t savedOverflow; // pushes refused while full, matched by the pops that follow
    bool stateLocked;
    std::int32_t typeOverride;

    // Transform stack.
    Matrix4 matrixHeap[kMatrixHeapSlots];
    std::uint32_t currentMatrix;
    std::uint32_t nextMatrix;
    Matrix4 projectionStack[kProjectionStackDepth];
    std::uint32_t projectionIndex;
    std::uint32_t screenSpaceDepth;    // screen-space entries that took a projection entry
    std::uint32_t screenSpaceOverflow; // entries refused while the stack was full

    // What the flush last sent to GL.
    std::int32_t appliedCull;
    std::int32_t appliedDepth;
    std::int32_t appliedBlend;
    std::uint16_t appliedTexture;
    const Matrix4* appliedModelview;
    const Matrix4* appliedProjection;

    // Drawn by the end of frame after the state tree; set by the layer that owns particles.
    void (*particlePass)();
};

extern Manager3DState m3d;

// Heaps and the state tree.
int Manager3D_InitHeaps();
void Manager3D_FreeHeaps();
// Back to the state of a fresh load: pools freed, every cursor, cache and hook cleared.
void Manager3D_Reset();
bool Manager3D_HeapsReady();
int Manager3D_StateCommand(std::uint32_t mask, const void* values);
StateNode* Manager3D_FindOrInsert(const StateNode& templ);
StateNode* Manager3D_NewChain(const StateNode& templ, int level);
void Manager3D_PushState();
void Manager3D_PopState();
void Manager3D_LockState();
void Manager3D_UnlockState();
void Manager3D_SetTypeOverride(std::int32_t type);
void Manager3D_ClearTypeOverride();

// Transform stack.
void Manager3D_Translate(float x, float y, float z);
void Manager3D_Rotate(float angle, float x, float y, float z);
void Manager3D_Scale(float x, float y, float z);
void Manager3D_LookAt(float eyeX, float eyeY, float eyeZ, float targetX, float targetY,
                      float targetZ);
int Manager3D_Untransform(std::uint32_t n);
void Manager3D_Perspective(float aspect, float zNear, float zFar);
void Manager3D_ScreenSpace(bool on);
void Manager3D_ResetTransforms();
// The modelview slot in effect for geometry submitted now; unchanged until the next frame.
const Matrix4* Manager3D_CurrentModelview();
// Rotates `point` in place about `axis` through the origin by `angle` radians, counter-
// clockwise seen from the axis' tip. The axis is taken as given: one that is not of unit
// length scales as well as rotates. Shared by model building and particle shards.
void RotateAboutAxis(float* point, const float* axis, float angle);

// Submission.
int Manager3D_Submit(std::int32_t type, std::uint32_t count, const float* positions,
                     const float* normals, const float* texCoords, const std::uint16_t* indices,
                     std::uint16_t indexCount, std::int32_t stride, int copy);
// Host vertices: eight floats each (position, normal, texture coordinate), 32 bytes apart,
// copied into the heap. `vertices` may be null only when `count` is 0.
int Manager3D_SubmitHostVertices(std::int32_t type, std::uint32_t count, const float* vertices,
                                 const std::uint16_t* indices, std::uint16_t indexCount);

// Frame.
// A new rendering context starts with culling on; the flush's cache follows it.
void Manager3D_ContextCreated();
void Manager3D_SetParticlePass(void (*pass)());
void Manager3D_BeginFrame();
void Manager3D_EndFrame();
void Manager3D_DrawTree(StateNode* root);
void Manager3D_DrawNode(StateNode* node);
void Manager3D_ApplyMaterial(const float* ambient, const float* diffuse, const float* specular);

// Lights.
void Manager3D_SetLightPosition(std::uint32_t light, float x, float y, float z);

} // namespace norvgl
