// Every fixed text the driver writes or hands out: the error table, log lines, names.
// Tests compare against these constants.
#pragma once

#include <cstdint>

namespace norvgl {

inline constexpr char kDriverName[] = "Norvash OpenGL Driver";
inline constexpr char kDriverVersion[] = "8.29.00.1";

inline constexpr char kLogFileName[] = "debuglog.txt";
inline constexpr char kBannerStars[] = "***********************************";
inline constexpr char kBannerEntry[] = "NORVGL.DLL Entry Point";
inline constexpr char kErrorReportFormat[] = "Norvgl: Error report: %s: %s\r\nError details: %s";
inline constexpr char kNoDetail[] = "(none)";

struct ErrorEntry {
    std::int32_t code;
    const char* title;
    const char* details;
};

inline constexpr int kErrorCount = 11;

inline constexpr ErrorEntry kErrorTable[kErrorCount] = {
    {0, "No error has occured", "No error has occured"},
    {1, "SetPixelFormat failed",
     "Windows was not able to find the specified depth buffer, pixel depth, or OpenGL support "
     "necessary to initialize the graphics mode."},
    {2, "wglCreateContext failed",
     "You may have failed to pass in a valid window handle before initializing the library."},
    {3, "wglMakeCurrent failed", "There is no suggested resolution for this error."},
    {4, "Bad property", "You attempted to get or set a video property that does not exist"},
    {5, "Feature not supported",
     "The render feature (lighting, etc.) you attempted to enable is not supported by your "
     "computer. Or, a function call you made is not supported by this library."},
    {6, "File not found",
     "The file you specified may contain an invalid file path, or may be corrupted."},
    {7, "Invalid file data",
     "The file or data you specified was found, but is invalid for performing the desired "
     "operation. For example, you may have tried to load an unsupported bitmap format."},
    {8, "Invalid parameter",
     "One of the parameters you passed to a prior function is invalid or NULL when it should "
     "not be NULL."},
    {9, "Out of memory",
     "This module has run out of available memory. You may want to try rebooting your system, "
     "or not add so many bitmaps, VRML models or objects to this module."},
    {10, "Unknown error", "An unknown error has occured. Please contact Norvash if this occurs."},
};

// Render queue.
inline constexpr char kVertexHeapExhausted[] = "Manager3D Error: Vertex heap exhausted";
inline constexpr char kStateHeapExhausted[] = "Manager3D Error: state heap exhausted";
inline constexpr char kBatchHeapExhausted[] = "Manager3D Error: Float heap exhausted";
inline constexpr char kMatrixHeapExhausted[] = "Matrix heap exhausted";
inline constexpr char kProjectionStackExhausted[] = "Manager3D Error: projection stack exhausted";
inline constexpr char kSavedNodesExhausted[] = "Manager3D Error: saved-node stack exhausted";
inline constexpr char kTrianglesWithoutNormals[] =
    "Warning: Attempt to draw triangles w/out normals";

// Picture loading.
inline constexpr char kUnknownBitmapType[] = "Unknown bitmap type: %s!";
inline constexpr char kBitmapBitsUnsupported[] = "Could not create bitmap: bits = %d";
inline constexpr char kNoDibSection[] = "Norvgl: Could not create DIB section";
inline constexpr char kNoContextForPicture[] =
    "no rendering context: pictures load between GFX_Init and GFX_Destroy";

// Parameter checks at the boundary (detail texts of ERR_INVALID_PARAMETER).
inline constexpr char kNullStateValues[] = "state values are NULL for mask %u";
inline constexpr char kNullVertices[] = "vertex pointer is NULL for %u vertices";
inline constexpr char kNullIndices[] = "index pointer is NULL for %u indices";
inline constexpr char kIndexCountTooLarge[] = "index count %u is above 65535";
inline constexpr char kIndexOutOfRange[] =
    "index %u at position %u is not below the vertex count %u";
inline constexpr char kNullIdPointer[] = "object id pointer is NULL";
inline constexpr char kNullVrmlText[] = "VRML text pointer is NULL";
inline constexpr char kNullMeshArray[] = "mesh %s array is NULL for %u vertices";
inline constexpr char kParticleCountTooLarge[] = "particle count %u is above %u";

// Models, meshes and objects.
inline constexpr char kLoadMeshIndirectFailed[] = "LoadMeshIndirect failed";
inline constexpr char kNoContextForModel[] =
    "no rendering context: models and meshes load between GFX_Init and GFX_Destroy";
inline constexpr char kVrmlTooLarge[] = "VRML text counts more than %u entries of one kind";
inline constexpr char kVrmlNoMemory[] = "the VRML reader's nodes or lists";
inline constexpr char kModelNoMemory[] = "the mesh records or arrays of a VRML model";
inline constexpr char kMeshNoMemory[] = "the mesh records of a host mesh";

// Particle systems (detail texts of ERR_OUT_OF_MEMORY).
inline constexpr char kEmitterTableFull[] = "all %u particle system slots are taken";
inline constexpr char kParticleRecordRefused[] =
    "particle record %u of system %u could not be allocated";

} // namespace norvgl
