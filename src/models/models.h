// Models and objects: the mesh store (geometry that outlives frames, filed by ObjectId and drawn
// by reference), display-list objects and object drawing, and VRML models built into meshes.
#pragma once

#include "formats/vrml_reader.h"
#include "manager3d/manager3d.h"

#include <cstdint>

namespace norvgl {

// A mesh is a chain of StateNode records, one per texture ("texture group"), of which only
// objectId, texture, the three batch lists and the links are used. The first group of each
// mesh is on the mesh list (nextSibling and prevSibling, newest mesh first); the mesh's further
// groups hang from it through firstChild, in the order in which their textures first came.
// A group's three DrawBatch lists run in step, newest triple first: positions (with the
// primitive type, the host's indices and the vertex count), normals, texture coordinates.
// Positions and normals have z negated: the arrays are in GL's coordinates. modelview and
// projection stay null: a draw uses the matrices of its frame.
struct MeshStoreState {
    StateNode* meshes; // first groups, newest first
};

extern MeshStoreState meshStore;

// Results of the store's adding calls. 0 and 1 as the driver's calls return them; a failed
// allocation is told apart so that a load can stop and say so. Nothing is linked on failure.
enum MeshResult : int {
    MESH_OK = 0,
    MESH_REFUSED = 1,       // a new mesh while the vertex heap holds geometry, or a full heap
    MESH_OUT_OF_MEMORY = 2, // a record or the sealed arrays could not be allocated
};

// The newest mesh with that id (its first group), or null.
StateNode* MeshStore_Find(std::uint32_t id);
// Appends `count` vertices to the mesh `id` in the render queue's vertex heap, creating the
// mesh when there is none; `stride` is the byte distance between vertices in all three source
// arrays, 0 for tightly packed (12, 12 and 8 bytes). A new mesh starts only in an empty heap;
// a full heap logs "Manager3D Error: Vertex heap exhausted". A triple that ends where the new
// vertices begin grows instead of a new one being made.
int MeshStore_AddVertices(std::uint32_t id, std::int32_t type, std::uint32_t count,
                          const float* positions, const float* normals, const float* texCoords,
                          std::int32_t stride, std::uint16_t texture);
// Moves the mesh's vertices out of the vertex heap into one block of its own, sized once, and
// rewinds the heap. MESH_REFUSED when there is no such mesh; a mesh sealed before stays as is.
int MeshStore_Seal(std::uint32_t id);
// Registers the host's arrays as a new mesh of one batch triple under `id`, converting them in
// place (z of positions and normals negated, v := 1 - v); nothing is copied. With no vertices
// and no indices, or while the vertex heap holds geometry, it logs "LoadMeshIndirect failed".
// A triple without vertices is kept but never drawn: its indices could name none.
int MeshStore_AddIndirect(std::uint32_t id, std::int32_t type, std::uint32_t count,
                          float* positions, float* normals, float* texCoords,
                          const std::uint16_t* indices, std::uint16_t indexCount,
                          std::uint16_t texture);
// Takes back the mesh a model build was making (the newest with `id`): unlinks and frees its
// records and rewinds the vertex heap that held its vertices.
void MeshStore_Discard(std::uint32_t id);
// Frees every mesh: records and sealed arrays; host arrays stay the host's. The list is empty.
void MeshStore_Clear();

// GFX_LoadMeshIndirect. Refused with ERR_INVALID_PARAMETER, before any id is issued or any
// value converted: a null id pointer; a null array of the three while the vertex count is
// above 0; more than 65535 indices, or a null index array for some; with vertices, an index
// not below the vertex count. Without a rendering context: ERR_CREATE_CONTEXT. The store's
// refusals return 1 with only their log line; a failed allocation reports ERR_OUT_OF_MEMORY.
// Every failure gives the id back, so ids stay without gaps. An index count of 0 makes a mesh
// drawn without indices, its vertices in order.
int LoadMeshIndirect(std::int32_t type, std::uint32_t count, float* positions, float* normals,
                     float* texCoords, const std::uint16_t* indices, std::uint32_t indexCount,
                     std::uint32_t pictureId, std::uint32_t* idOut);

// Display-list objects: type 0 issues an id and opens its list in compile mode; other types
// do nothing and write nothing (particle systems are dispatched above this layer). A null id
// pointer for type 0 is refused with ERR_INVALID_PARAMETER and result 1.
int NewObject(std::uint32_t* idOut, std::int32_t type);
int EndObject();
// Closes the list the host left open, if any: a context that goes away while compiling one
// never lets go of it.
void Objects_CloseOpenList();
// Hands the mesh `id` to the render queue by reference, translated by (x, y, z) and back.
// Mask 0: each texture group under its own texture, and the queue keeps the last group's
// state. Another mask: every group under the caller's state, the current node restored after
// each. `type` PRIM_NONE keeps each batch's own primitive; any other replaces it. An id with no
// mesh draws nothing (the translation pair still happens).
int Object_Draw(std::uint32_t id, float x, float y, float z, std::int32_t type, std::uint32_t mask,
                const void* values);

// Model bounds: min x, y, z, then max x, y, z.
inline constexpr int kBoundsFloats = 6;
inline constexpr float kBoundsStart = 30000.0f; // min starts here, max at its negative

// GFX_LoadVRML: reads the text and builds its model. A null text or id pointer is refused with
// ERR_INVALID_PARAMETER, a load without a rendering context with ERR_CREATE_CONTEXT, and a
// reader or build that runs out of memory (or a text that counts more than the reader's entry
// limit) with ERR_OUT_OF_MEMORY: each returns 1 with nothing issued, built or written.
int LoadVrml(const char* text, std::uint32_t length, std::uint32_t* idOut, float* boundsOut);

// Builds a reading into a model under a new id: each node's points transformed in place by its
// node chain and added to `bounds`, each face turned into triangle-list vertices with a flat
// normal, grouped by the node's texture, then sealed; a display list of the same id records
// only the disabling of GL_TEXTURE_2D. Nodes come newest first, as the reader leaves them.
//
// Faces, where the text is not of the expected shape (nothing is read past any list):
// - a face is the run of indices up to the next -1, or up to the end of the list when the
//   last face has no -1;
// - a face of fewer than three indices, or naming a point the node does not have, is skipped
//   whole: it has no plane, and a partial face would shift every triangle after it;
// - a face of any length is submitted whole: its vertices go from the index list to the store
//   without a per-face buffer;
// - a texture-coordinate index that is 0, past the end of its list, or not below the node's
//   texture coordinate count leaves the point's u, v as they were;
// - a face whose first three points are on a line (or not finite) gets the normal (0, 0, -1):
//   facing the default camera, which looks along +z;
// - once the store refuses a vertex (a full heap, or a new mesh in a heap that holds
//   geometry), the build offers it no more: the heap only gets fuller. A full heap therefore
//   logs once per load. Bounds still take in every node's points.
// Returns the id; 0 when memory ran out: the id is given back and nothing of the model stays.
std::uint32_t Vrml_BuildModel(VrmlNode* nodes, float bounds[kBoundsFloats]);
// Applies the node's transform and then each ancestor's: scale, rotation (when its angle is
// not 0), translation.
void Vrml_TransformPoint(const VrmlNode& node, float point[3]);
// Unit normal of the plane through three points, (p1 - p0) x (p2 - p0) normalised; (0, 0, -1)
// when the points span no plane or are not finite.
void FaceNormal(const float* p0, const float* p1, const float* p2, float normal[3]);

// Whether models and meshes can load now: between GFX_Init and GFX_Destroy, with the render
// queue's heaps and a rendering context. Otherwise reports ERR_CREATE_CONTEXT.
bool Models_CanLoad();
// Back to the state of a fresh load: every mesh freed.
void Models_Reset();

} // namespace norvgl
