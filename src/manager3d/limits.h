// Capacities of the render queue's fixed pools. Nothing grows during a frame: a full pool
// logs its message and refuses the request.
#pragma once

#include <cstdint>

namespace norvgl {

inline constexpr std::uint32_t kVertexHeapFloats =
    32768;                                               // per array: positions, normals, texcoords
inline constexpr std::uint32_t kStateHeapNodes = 768;    // render-state tree nodes per frame
inline constexpr std::uint32_t kPermanentNodes = 5;      // the chain of frame defaults, levels 0-4
inline constexpr std::uint32_t kBatchHeapRecords = 1024; // DrawBatch records, three per batch
inline constexpr std::uint32_t kRecordsPerBatch = 3;     // positions, normals, texcoords
inline constexpr std::uint32_t kMatrixHeapSlots = 4096;  // modelview results of a frame
inline constexpr std::uint32_t kIdentitySlot = 0;        // kept for screen-space drawing
inline constexpr std::uint32_t kProjectionStackDepth = 8; // perspective + nested screen spaces
inline constexpr std::uint32_t kSavedNodeDepth = 4;       // text-mode pushes of currentNode
inline constexpr int kTreeLevels = 5;                     // cull, depth, blend, material, texture
inline constexpr std::uint32_t kMaxIndexCount = 0xFFFF;   // indexCount is 16-bit in a batch

inline constexpr float kFieldOfViewDegrees = 45.0f;
inline constexpr float kNearPlane = 10.0f;
inline constexpr float kFarPlane = 10000.0f;
// Radians to the degrees glRotatef takes, exactly as the host's tables were calibrated with
// (not the float nearest 180/pi).
inline constexpr float kRadiansToDegrees = 57.29582595825195f;
// Shortest usable up vector of a look-at: the float 1e-6 widened to double.
inline constexpr double kLookUpThreshold = static_cast<double>(1e-6f);

} // namespace norvgl
