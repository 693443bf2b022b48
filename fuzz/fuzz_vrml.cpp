// Fuzz target: the VRML reader on arbitrary bytes. Every entry of every node's lists is read,
// every list is checked to lie inside its pool, and every name to end within its buffer.
#include "formats/vrml_reader.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

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

} // namespace

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
    return total == 0xFFFFFFFFu ? 1 : 0;
}
