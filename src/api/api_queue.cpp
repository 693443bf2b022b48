// Exported entries of the render queue: state locks, transforms, geometry, lights and
// materials. Bad pointers and counts are refused here, before anything is recorded.
#include "core/core.h"
#include "core/messages.h"
#include "manager3d/lights.h"
#include "manager3d/manager3d.h"

using namespace norvgl;

namespace {

bool validVertices(unsigned int count, const float* vertices) {
    if (count > 0 && !vertices) {
        ReportError(ERR_INVALID_PARAMETER, kNullVertices, count);
        return false;
    }
    return true;
}

} // namespace

extern "C" {

int GFX_LockRenderState(unsigned int mask, const void* values) {
    if (!renderingEnabled())
        return 0;
    if ((mask & 0x1F) && !values) {
        ReportError(ERR_INVALID_PARAMETER, kNullStateValues, mask);
        return 1;
    }
    Manager3D_StateCommand(mask, values);
    Manager3D_LockState();
    return 0;
}

void GFX_UnlockRenderState(void) {
    if (!renderingEnabled())
        return;
    Manager3D_UnlockState();
}

void GFX_LockRenderMesh(unsigned int type) {
    if (!renderingEnabled())
        return;
    Manager3D_SetTypeOverride(static_cast<std::int32_t>(type));
}

void GFX_UnlockRenderMesh(void) {
    if (!renderingEnabled())
        return;
    Manager3D_ClearTypeOverride();
}

void GFX_Translate(float x, float y, float z) {
    if (!renderingEnabled())
        return;
    Manager3D_Translate(x, y, z);
}

void GFX_Rotate(float angle, float x, float y, float z) {
    if (!renderingEnabled())
        return;
    Manager3D_Rotate(angle, x, y, z);
}

void GFX_Scale(float x, float y, float z) {
    if (!renderingEnabled())
        return;
    Manager3D_Scale(x, y, z);
}

void GFX_Look(float eyeX, float eyeY, float eyeZ, float targetX, float targetY, float targetZ,
              float, float, float) {
    if (!renderingEnabled())
        return;
    Manager3D_LookAt(eyeX, eyeY, eyeZ, targetX, targetY, targetZ);
}

int GFX_Untransform(unsigned int count) {
    if (!renderingEnabled())
        return 0;
    return Manager3D_Untransform(count);
}

int GFX_DrawPolygon(int type, unsigned int count, const float* vertices) {
    if (!renderingEnabled())
        return 0;
    if (!validVertices(count, vertices))
        return 1;
    return Manager3D_SubmitHostVertices(type, count, vertices, nullptr, 0);
}

int GFX_DrawIndexedPolygon(int type, unsigned int count, const float* vertices,
                           unsigned int indexCount, const unsigned short* indices) {
    if (!renderingEnabled())
        return 0;
    if (!validVertices(count, vertices))
        return 1;
    if (indexCount > kMaxIndexCount) {
        ReportError(ERR_INVALID_PARAMETER, kIndexCountTooLarge, indexCount);
        return 1;
    }
    if (indexCount > 0 && !indices) {
        ReportError(ERR_INVALID_PARAMETER, kNullIndices, indexCount);
        return 1;
    }
    // The flush reads each indexed vertex from the copy, which holds exactly `count` of them.
    for (unsigned int i = 0; i < indexCount; ++i) {
        if (indices[i] >= count) {
            ReportError(ERR_INVALID_PARAMETER, kIndexOutOfRange, indices[i], i, count);
            return 1;
        }
    }
    return Manager3D_SubmitHostVertices(type, count, vertices, indices,
                                        static_cast<std::uint16_t>(indexCount));
}

int GFX_DrawBillboard(const float* position, float size) {
    if (!position) {
        ReportError(ERR_INVALID_PARAMETER, kNullVertices, 1u);
        return 1;
    }
    const float vertex[8] = {position[0], position[1], position[2], size, 0.0f, 0.0f, 0.0f, 0.0f};
    const std::uint32_t blendAdd = BLEND_ADD;
    const std::uint32_t blendOff = BLEND_OFF;
    // Not guarded as a whole: the two blend requests always go to the queue, only the
    // billboard's own submission follows PROP_ENABLED.
    Manager3D_StateCommand(STATE_BLEND, &blendAdd);
    if (renderingEnabled())
        Manager3D_SubmitHostVertices(PRIM_BILLBOARD, 1, vertex, nullptr, 0);
    Manager3D_StateCommand(STATE_BLEND, &blendOff);
    return 0;
}

int GFX_AddLight(unsigned int light, int type, float x, float y, float z) {
    return addLight(light, type, x, y, z);
}

int GFX_SetLightPosition(unsigned int light, float x, float y, float z) {
    return setLightPosition(light, x, y, z);
}

int GFX_SetLightColor(unsigned int light, float ambientR, float ambientG, float ambientB,
                      float diffuseR, float diffuseG, float diffuseB, float specularR,
                      float specularG, float specularB) {
    const float ambient[3] = {ambientR, ambientG, ambientB};
    const float diffuse[3] = {diffuseR, diffuseG, diffuseB};
    const float specular[3] = {specularR, specularG, specularB};
    return setLightColor(light, ambient, diffuse, specular);
}

int GFX_RemoveLight(unsigned int light) {
    return removeLight(light);
}

int GFX_SetMaterialColorEx(float ambientR, float ambientG, float ambientB, float ambientA,
                           float diffuseR, float diffuseG, float diffuseB, float diffuseA,
                           float specularR, float specularG, float specularB, float specularA) {
    if (!renderingEnabled())
        return 0;
    const float colors[12] = {ambientR, ambientG, ambientB,  ambientA,  diffuseR,  diffuseG,
                              diffuseB, diffuseA, specularR, specularG, specularB, specularA};
    return setMaterialColor(colors);
}

int GFX_SetMaterialColor(float ambientR, float ambientG, float ambientB, float diffuseR,
                         float diffuseG, float diffuseB, float specularR, float specularG,
                         float specularB) {
    if (!renderingEnabled())
        return 0;
    // Opaque in all three colours.
    const float colors[12] = {ambientR, ambientG, ambientB,  1.0f,      diffuseR,  diffuseG,
                              diffuseB, 1.0f,     specularR, specularG, specularB, 1.0f};
    return setMaterialColor(colors);
}

} // extern "C"
