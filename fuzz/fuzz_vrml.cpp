// Fuzz target: the VRML reader on arbitrary bytes, then the model build on what it read. Every
// entry of every node's lists is read, every list is checked to lie inside its pool, and every
// name to end within its buffer; every vertex of the model's mesh is read, and checked to be
// within the vertex heap's capacity with a unit normal.
#include "core/core.h"
#include "formats/vrml_reader.h"
#include "manager3d/limits.h"
#include "models/models.h"
#include "pictures/pictures.h"
#include "platform/gl_table.h"
#include "session/session.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace {

// The list [list, list + count × width) lies inside [pool, pool + entries × width).
template <typename T>
bool inside(const T* list, std::uint32_t count, const T* pool, std::uint32_t entries,
            std::size_t width) {
    if (count == 0) {
        return true;
    }
    if (list == nullptr || pool == nullptr || list < pool) {
        return false;
    }
    const auto offset = static_cast<std::size_t>(list - pool);
    return offset % width == 0 && offset / width + count <= entries;
}

template <typename T> unsigned sum(const T* list, std::size_t values) {
    unsigned total = 0;
    for (std::size_t i = 0; i < values; ++i) {
        total += static_cast<unsigned>(list[i] == list[i]); // false for NaN only
    }
    return total;
}

// GL without a context: the build's display list goes nowhere.
#pragma clang diagnostic ignored "-Wunused-parameter"
#define NVGL_GL(result, name, params, args)                                                        \
    result NVGL_APIENTRY none_##name params {                                                      \
        return result();                                                                           \
    }
#include "platform/gl_funcs.inl"
#undef NVGL_GL

// Reads every vertex of the model's mesh; false where the store broke its own rules.
bool meshIsSound(std::uint32_t id) {
    std::uint64_t vertices = 0;
    for (norvgl::StateNode* g = norvgl::MeshStore_Find(id); g; g = g->firstChild) {
        const norvgl::DrawBatch *p = g->vertexBatches, *n = g->normalBatches,
                                *t = g->texCoordBatches;
        for (; p || n || t; p = p->next, n = n->next, t = t->next) {
            if (!p || !n || !t || p->primitive != PRIM_TRIANGLES || p->count != n->count ||
                p->count != t->count || p->indices)
                return false;
            vertices += p->count;
            for (std::uint32_t i = 0; i < p->count; ++i) {
                const float* normal = n->data + 3 * i;
                const double length =
                    std::sqrt(double(normal[0]) * normal[0] + double(normal[1]) * normal[1] +
                              double(normal[2]) * normal[2]);
                volatile float touch = p->data[3 * i + 2] + t->data[2 * i + 1];
                (void)touch;
                if (std::fabs(length - 1.0) > 1e-3)
                    return false;
            }
        }
    }
    return vertices <= norvgl::kVertexHeapFloats / 3;
}

char logDirectory[] = "/tmp/norvgl-fuzz-vrml-XXXXXX";

void removeLogDirectory() {
    std::remove("debuglog.txt");
    rmdir(logDirectory);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    using namespace norvgl;
    // The debug log goes to a directory of the target's own, removed at exit.
    if (!mkdtemp(logDirectory) || chdir(logDirectory) != 0)
        std::abort();
    std::atexit(removeLogDirectory);
    attachLibrary();
#define NVGL_GL(result, name, params, args) gl.name = none_##name;
#include "platform/gl_funcs.inl"
#undef NVGL_GL
    if (Manager3D_InitHeaps() != 0)
        std::abort();
    // Pictures that texture names in the texts may find.
    for (const char* name : {"A", "B", "CHECKER.BMP"}) {
        nextPictureRecord().texture = pictures.pictureCount + 1;
        RegisterPicture(name);
    }
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace norvgl;
    VrmlReading r;
    if (Vrml_Read(data, size, r) != VrmlResult::Ok) {
        if (r.nodes != nullptr || r.pointPool != nullptr) {
            __builtin_trap();
        }
        return 0;
    }
    unsigned total = 0;
    for (const VrmlNode* n = r.nodes.get(); n != nullptr; n = n->nextNode) {
        if (!inside<float>(n->points, n->pointCount, r.pointPool.get(), r.pointPoolEntries,
                           kVrmlPointFloats) ||
            !inside<std::uint16_t>(n->coordIndex, n->coordIndexCount, r.coordIndexPool.get(),
                                   r.coordIndexPoolEntries, 1) ||
            !inside<float>(n->texCoords, n->texCoordCount, r.texCoordPool.get(),
                           r.texCoordPoolEntries, kVrmlTexCoordFloats) ||
            !inside<std::uint16_t>(n->texCoordIndex, n->texCoordIndexCount,
                                   r.texCoordIndexPool.get(), r.texCoordIndexPoolEntries, 1) ||
            std::memchr(n->name, 0, kVrmlNameSize) == nullptr ||
            std::memchr(n->textureName, 0, kVrmlNameSize) == nullptr || n->depth > kVrmlMaxDepth) {
            __builtin_trap();
        }
        // Read through the pointers themselves, so ASan sees any entry outside its pool.
        total += sum(n->points, n->pointCount * kVrmlPointFloats);
        total += sum(n->coordIndex, n->coordIndexCount);
        total += sum(n->texCoords, n->texCoordCount * kVrmlTexCoordFloats);
        total += sum(n->texCoordIndex, n->texCoordIndexCount);
        total += static_cast<unsigned>(std::strlen(n->name) + std::strlen(n->textureName));
        if (n->parentNode != nullptr) {
            total += n->parentNode->depth; // a parent is a live node of the same reading
        }
    }
    float bounds[kBoundsFloats] = {};
    const std::uint32_t id = Vrml_BuildModel(r.nodes.get(), bounds);
    if (id == 0 || !meshIsSound(id) || m3d.positionCursor != 0) {
        __builtin_trap();
    }
    MeshStore_Clear();
    driver.objectIdCounter = 0;
    std::remove("debuglog.txt");
    return total == 0xFFFFFFFFu ? 1 : 0;
}
