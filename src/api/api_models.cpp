// Exported entries of models and objects: VRML models and host meshes, display-list objects,
// and drawing an object's mesh. Loading and objects are not guarded; drawing is.
#include "core/core.h"
#include "core/messages.h"
#include "models/models.h"
#include "particles/particles.h"

using namespace norvgl;

extern "C" {

int GFX_LoadVRML(int, unsigned int length, const char* text, unsigned int* id, int, int, int,
                 float* bounds) {
    return LoadVrml(text, length, id, bounds);
}

int GFX_LoadMeshIndirect(int type, unsigned int count, float* positions, float* normals,
                         float* texCoords, const unsigned short* indices, unsigned int indexCount,
                         unsigned int pictureId, unsigned int* id) {
    return LoadMeshIndirect(type, count, positions, normals, texCoords, indices, indexCount,
                            pictureId, id);
}

int GFX_NewObject(unsigned int* id, int type, EmitterParams* params) {
    if (type == OBJECT_PARTICLE_SYSTEM)
        return Particle_NewObject(id, params);
    return NewObject(id, type);
}

int GFX_EndObject(void) {
    // Never guarded: a list opened while drawing was enabled must still close, or every GL
    // command after it would be compiled into the list instead of running.
    return EndObject();
}

int GFX_DrawObject(unsigned int id, float x, float y, float z) {
    if (!renderingEnabled())
        return 0;
    return Object_Draw(id, x, y, z, PRIM_NONE, 0, nullptr);
}

int GFX_DrawObjectEx(unsigned int id, float x, float y, float z, int type, unsigned int mask,
                     const void* values) {
    if (!renderingEnabled())
        return 0;
    if ((mask & 0x1F) && !values) {
        ReportError(ERR_INVALID_PARAMETER, kNullStateValues, mask);
        return 1;
    }
    return Object_Draw(id, x, y, z, type, mask, values);
}

} // extern "C"
