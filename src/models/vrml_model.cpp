// VRML models: the text read by the VRML reader, every node's transform chain baked into its
// points, the model bounds, and each face handed to the mesh store as triangle-list vertices
// with a flat normal, grouped by the node's texture.
#include "core/core.h"
#include "core/messages.h"
#include "models/models.h"
#include "pictures/pictures.h"
#include "platform/gl_table.h"

#include <cmath>

namespace norvgl {

namespace {

constexpr std::size_t kUvOffset = 6;      // floats into a point entry
constexpr std::int32_t kPointStride = 32; // bytes between point entries
constexpr float kDegenerateNormal[3] = {0.0f, 0.0f, -1.0f};

void extendBounds(const float* point, float* bounds) {
    for (int axis = 0; axis < 3; ++axis) {
        if (point[axis] < bounds[axis])
            bounds[axis] = point[axis];
        if (point[axis] > bounds[3 + axis])
            bounds[3 + axis] = point[axis];
    }
}

float* pointAt(const VrmlNode& node, std::uint32_t index) {
    return node.points + static_cast<std::size_t>(index) * kVrmlPointFloats;
}

// u, v of the point at face position q from the node's texture coordinates, where its index
// names one (index 0 included in "keeps what it had").
void assignTexCoord(const VrmlNode& node, std::uint32_t q, float* point) {
    if (!node.texCoords || !node.texCoordIndex || q >= node.texCoordIndexCount)
        return;
    const std::uint32_t t = node.texCoordIndex[q];
    if (t == 0 || t >= node.texCoordCount)
        return;
    point[kUvOffset] = node.texCoords[kVrmlTexCoordFloats * t];
    point[kUvOffset + 1] = node.texCoords[kVrmlTexCoordFloats * t + 1];
}

// Hands the node's faces to the store. Returns the store's first failure, or MESH_OK.
int addFaces(std::uint32_t id, const VrmlNode& node, std::uint16_t texture) {
    const std::uint16_t* list = node.coordIndex;
    const std::uint32_t length = node.coordIndexCount;
    std::uint32_t p = 0;
    while (p < length) {
        std::uint32_t end = p;
        bool known = true;
        for (; end < length && list[end] != kVrmlEndOfFace; ++end)
            known = known && list[end] < node.pointCount;
        const std::uint32_t start = p;
        p = end + 1;
        if (!known || end - start < 3)
            continue;
        float normal[3];
        FaceNormal(pointAt(node, list[start]), pointAt(node, list[start + 1]),
                   pointAt(node, list[start + 2]), normal);
        for (std::uint32_t q = start; q < end; ++q)
            assignTexCoord(node, q, pointAt(node, list[q]));
        // Winding 1 lists the face the other way round: last vertex first.
        const bool reversed = node.ccw == 1;
        for (std::uint32_t k = 0; k < end - start; ++k) {
            const float* point = pointAt(node, list[reversed ? end - 1 - k : start + k]);
            const int result = MeshStore_AddVertices(id, PRIM_TRIANGLES, 1, point, normal,
                                                     point + kUvOffset, kPointStride, texture);
            if (result != MESH_OK)
                return result;
        }
    }
    return MESH_OK;
}

std::uint16_t nodeTexture(const VrmlNode& node) {
    if (node.textureName[0] == '\0')
        return 0;
    return static_cast<std::uint16_t>(FindPictureTexture(node.textureName));
}

} // namespace

void FaceNormal(const float* p0, const float* p1, const float* p2, float normal[3]) {
    const float u[3] = {p1[0] - p0[0], p1[1] - p0[1], p1[2] - p0[2]};
    const float v[3] = {p2[0] - p0[0], p2[1] - p0[1], p2[2] - p0[2]};
    const float n[3] = {u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2],
                        u[0] * v[1] - u[1] * v[0]};
    // In double, so that the length of a very long or very short normal neither overflows
    // nor vanishes.
    const double length =
        std::sqrt(static_cast<double>(n[0]) * n[0] + static_cast<double>(n[1]) * n[1] +
                  static_cast<double>(n[2]) * n[2]);
    if (!(length > 0.0) || !std::isfinite(length)) {
        for (int i = 0; i < 3; ++i)
            normal[i] = kDegenerateNormal[i];
        return;
    }
    for (int i = 0; i < 3; ++i)
        normal[i] = static_cast<float>(n[i] / length);
}

void Vrml_TransformPoint(const VrmlNode& node, float point[3]) {
    for (const VrmlNode* n = &node; n; n = n->parentNode) {
        for (int i = 0; i < 3; ++i)
            point[i] *= n->scale[i];
        if (n->rotationAngle != 0.0f)
            RotateAboutAxis(point, n->rotationAxis, n->rotationAngle);
        for (int i = 0; i < 3; ++i)
            point[i] += n->translation[i];
    }
}

std::uint32_t Vrml_BuildModel(VrmlNode* nodes, float bounds[kBoundsFloats]) {
    const std::uint32_t id = IssueObjectId();
    gl.NewList(id, GL_COMPILE);
    bool offering = true;
    bool outOfMemory = false;
    for (VrmlNode* node = nodes; node && !outOfMemory; node = node->nextNode) {
        if (node->pointCount == 0 || node->coordIndexCount == 0)
            continue;
        for (std::uint32_t i = 0; i < node->pointCount; ++i) {
            float* point = pointAt(*node, i);
            Vrml_TransformPoint(*node, point);
            extendBounds(point, bounds);
        }
        if (!offering)
            continue;
        const int result = addFaces(id, *node, nodeTexture(*node));
        offering = result == MESH_OK;
        outOfMemory = result == MESH_OUT_OF_MEMORY;
    }
    // Without a single vertex there is no mesh, and nothing to seal.
    if (!outOfMemory && MeshStore_Find(id))
        outOfMemory = MeshStore_Seal(id) == MESH_OUT_OF_MEMORY;
    gl.Disable(GL_TEXTURE_2D);
    gl.EndList();
    if (outOfMemory) {
        MeshStore_Discard(id);
        gl.DeleteLists(id, 1);
        ReturnObjectId(id);
        return 0;
    }
    return id;
}

int LoadVrml(const char* text, std::uint32_t length, std::uint32_t* idOut, float* boundsOut) {
    if (!text) {
        ReportError(ERR_INVALID_PARAMETER, kNullVrmlText);
        return 1;
    }
    if (!idOut) {
        ReportError(ERR_INVALID_PARAMETER, kNullIdPointer);
        return 1;
    }
    if (!Models_CanLoad())
        return 1;
    float bounds[kBoundsFloats] = {kBoundsStart,  kBoundsStart,  kBoundsStart,
                                   -kBoundsStart, -kBoundsStart, -kBoundsStart};
    VrmlReading reading;
    switch (Vrml_Read(reinterpret_cast<const std::uint8_t*>(text), length, reading)) {
    case VrmlResult::Ok:
        break;
    case VrmlResult::TooLarge:
        ReportError(ERR_OUT_OF_MEMORY, kVrmlTooLarge, kVrmlMaxEntries);
        return 1;
    default:
        ReportError(ERR_OUT_OF_MEMORY, kVrmlNoMemory);
        return 1;
    }
    const std::uint32_t id = Vrml_BuildModel(reading.nodes.get(), bounds);
    if (id == 0) {
        ReportError(ERR_OUT_OF_MEMORY, kModelNoMemory);
        return 1;
    }
    *idOut = id;
    if (boundsOut)
        for (int i = 0; i < kBoundsFloats; ++i)
            boundsOut[i] = bounds[i];
    return 0;
}

} // namespace norvgl
