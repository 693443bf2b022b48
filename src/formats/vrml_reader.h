// VRML reader: two keyword-driven passes over CR LF text pick out named nodes with their
// transforms, point, index and texture coordinate lists, texture file names and winding.
// No GL, no globals, no OS: the text in, a node list and its pools out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace norvgl {

// A line holds at most kVrmlLineBufferSize - 1 characters. A longer line is cut at the last
// separator within that many characters, so no token is read cut short; the rest of the line
// up to its CR is dropped.
inline constexpr std::size_t kVrmlLineBufferSize = 1024;
// Names and texture names keep at most kVrmlNameSize - 1 characters; longer ones are cut.
// "USE" cuts the name it looks for alike, so a long name still finds its node.
inline constexpr std::size_t kVrmlNameSize = 128;
// Brace levels, each with its texture-block flag. A "{" that would open a deeper level and
// a "}" at depth 0 are ignored, so the depth always fits a node's 16-bit `depth`.
inline constexpr std::uint16_t kVrmlMaxDepth = 1024;
// Entries of one kind that a text may count in the first pass, every "USE" copy of points
// included; the pools hold twice that (the point pool then 64 MiB). A text past it is refused
// as TooLarge before any pool is allocated.
inline constexpr std::uint32_t kVrmlMaxEntries = std::uint32_t{1} << 20;
// A point entry: x, y, z, three floats left 0, u, v (the interleaved vertex layout).
inline constexpr std::size_t kVrmlPointFloats = 8;
// A texture coordinate entry: u, v.
inline constexpr std::size_t kVrmlTexCoordFloats = 2;
// The end-of-face mark of an index list, written -1 in the text.
inline constexpr std::uint16_t kVrmlEndOfFace = 65535;

// One node per accepted "DEF". Every list pointer points into a pool of the VrmlReading that
// holds the node; a count of 0 may come with any pointer, null included. Otherwise the list
// lies wholly inside its pool.
struct VrmlNode {
    std::uint32_t pointCount = 0;
    std::uint32_t coordIndexCount = 0;
    std::uint32_t texCoordCount = 0;
    std::uint32_t texCoordIndexCount = 0;
    float* points = nullptr;    // kVrmlPointFloats floats an entry
    float* texCoords = nullptr; // kVrmlTexCoordFloats floats an entry
    std::uint16_t* coordIndex = nullptr;
    std::uint16_t* texCoordIndex = nullptr;
    std::uint16_t depth = 0; // brace depth before the node's own "{"
    char name[kVrmlNameSize] = {};
    char textureName[kVrmlNameSize] = {}; // empty when none
    float translation[3] = {0, 0, 0};
    float rotationAxis[3] = {0, 0, 0};
    float rotationAngle = 0; // radians
    float scale[3] = {1, 1, 1};
    std::uint32_t ccw = 1;
    VrmlNode* nextNode = nullptr;   // the node created just before this one
    VrmlNode* parentNode = nullptr; // null at top level
};

// Frees a whole node list, following nextNode from the given head.
struct VrmlNodeListDeleter {
    void operator()(VrmlNode* head) const noexcept;
};

// Where the storing pass met the reader's fixed limits and cut what it read. The driver reads
// such a text all the same; a content maker wants to know.
struct VrmlLimitNotes {
    std::uint32_t linesCut = 0;      // lines longer than kVrmlLineBufferSize - 1 characters
    std::size_t longestLine = 0;     // characters of the longest line, CR not counted
    std::uint32_t namesCut = 0;      // DEF, USE and texture names over kVrmlNameSize - 1
    std::uint32_t bracesIgnored = 0; // "{" past kVrmlMaxDepth levels
    std::uint32_t deepestLevel = 0;  // the most braces open at once
};

// What a reading leaves for the model build: every node of the storing pass, newest first,
// and the four pools, each zero-filled with room for twice the entries the counting pass met
// (no pool when it met none). The build may write into the point entries. Moving the reading
// moves everything; destroying it frees everything.
struct VrmlReading {
    std::unique_ptr<VrmlNode, VrmlNodeListDeleter> nodes;
    std::unique_ptr<float[]> pointPool;
    std::unique_ptr<std::uint16_t[]> coordIndexPool;
    std::unique_ptr<float[]> texCoordPool;
    std::unique_ptr<std::uint16_t[]> texCoordIndexPool;
    std::uint32_t pointPoolEntries = 0;
    std::uint32_t coordIndexPoolEntries = 0;
    std::uint32_t texCoordPoolEntries = 0;
    std::uint32_t texCoordIndexPoolEntries = 0;
    VrmlLimitNotes limits;
};

// Nothing in the text itself is an error; only the reader's own memory can fail. For the
// loader: Ok goes on to the model build (also with no nodes); OutOfMemory and TooLarge both
// record ERR_OUT_OF_MEMORY ("Out of memory") and end the load with result 1, nothing built.
enum class VrmlResult {
    Ok,
    OutOfMemory, // a node record or a pool could not be allocated
    TooLarge,    // the counting pass met more than kVrmlMaxEntries entries of one kind
};

// Reads `length` bytes of `text` (need not end with a NUL; null reads as no text) in the
// counting and the storing pass. Ok fills `out`; any other result leaves it empty.
//
// Lines end at a CR; the byte after the CR is skipped unseen, and bytes after the last CR are
// not read. A NUL byte ends what is read of its line. Lines are upper-cased (ASCII letters)
// and split at " ,\t\r\n". Each pass starts with no current node, depth 0, no list open or
// pending and the DEF switch on; only the texture-keyword flag carries over to the second.
//
// Where the text is not of the expected shape:
// - a keyword or a point whose values run past the end of its line reads each missing
//   number as 0 and a missing name as empty ("DEF" still makes a node, "USE" does nothing,
//   "CCW" sets 0);
// - a node that opens a second list of a kind drops the first: its count for that kind
//   starts again, so it keeps the last list given, as "SCALE" keeps the last value;
// - list entries met while no node is current, or while the current node has no list of
//   their kind (a "}" or "DEF" inside an open list moved it), count in the load's totals
//   only: nothing is stored for them;
// - numbers beyond the float range read as infinity of their sign, indices wrap to 16 bits;
// - an entry or a "USE" copy that would land past the end of its pool (only a text whose
//   passes disagree, by a "URL" before the first "TEXTURE", can get there) is not stored,
//   and the counts stay within what was stored.
VrmlResult Vrml_Read(const std::uint8_t* text, std::size_t length, VrmlReading& out);

// The newest node from `head` on whose name equals `name` without regard to ASCII case: a
// walk down the list, newest first.
VrmlNode* Vrml_FindNode(VrmlNode* head, const char* name);

} // namespace norvgl
