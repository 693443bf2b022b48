// VRML reader: line splitting, tokens, the keyword table and the list entries of both passes.
// The counting pass sizes the pools; the storing pass fills them, checking every write
// against its pool, since a text whose passes disagree could otherwise write past one.
#include "formats/vrml_reader.h"

#include <charconv>
#include <cstring>
#include <limits>
#include <new>
#include <string_view>
#include <type_traits>

namespace norvgl {

namespace {

enum ListKind : int {
    LIST_NONE = 0,
    LIST_POINTS = 1,
    LIST_COORD_INDEX = 2,
    LIST_TEX_COORDS = 3,
    LIST_TEX_COORD_INDEX = 4,
};
constexpr int kListKinds = 5;

using Token = std::string_view;

// The state of one load. The line buffer and the texture-block flags are the two fixed
// buffers; everything else is cursors, switches and counts.
struct VrmlReader {
    // The text and the line being read.
    const std::uint8_t* text = nullptr;
    std::size_t remaining = 0;
    char line[kVrmlLineBufferSize] = {};
    std::size_t lineLength = 0;
    std::size_t lineCursor = 0;

    bool storing = false;
    VrmlNode* current = nullptr;
    std::unique_ptr<VrmlNode, VrmlNodeListDeleter> nodes;
    int listKind = LIST_NONE;
    bool listOpen = false;
    bool defSwitch = true;
    bool textureKeyword = false; // never turned off within a load
    std::uint16_t depth = 0;
    bool textureBlock[kVrmlMaxDepth] = {};
    std::uint64_t totals[kListKinds] = {};

    VrmlReading* pools = nullptr; // empty in the counting pass
    bool outOfMemory = false;
};

bool isSeparator(char c) {
    return c == ' ' || c == ',' || c == '\t' || c == '\r' || c == '\n';
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// Copies the next CR-ended line into the line buffer, upper-cased. False when the text is
// exhausted, a last line without its CR included.
bool Vrml_ReadLine(VrmlReader& r) {
    if (r.remaining == 0) {
        return false;
    }
    const void* cr = std::memchr(r.text, '\r', r.remaining);
    if (cr == nullptr) {
        r.remaining = 0;
        return false;
    }
    const auto raw = static_cast<std::size_t>(static_cast<const std::uint8_t*>(cr) - r.text);
    const void* nul = std::memchr(r.text, 0, raw);
    std::size_t length =
        nul != nullptr ? static_cast<std::size_t>(static_cast<const std::uint8_t*>(nul) - r.text)
                       : raw;
    if (length >= kVrmlLineBufferSize) {
        // Keep the tokens that fit whole: cut at the last separator at or before the limit.
        length = kVrmlLineBufferSize - 1;
        while (length > 0 && !isSeparator(static_cast<char>(r.text[length]))) {
            --length;
        }
    }
    for (std::size_t i = 0; i < length; ++i) {
        const char c = static_cast<char>(r.text[i]);
        r.line[i] = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    }
    r.line[length] = '\0';
    r.lineLength = length;
    r.lineCursor = 0;
    // Skip the CR and, unseen, the byte after it.
    const std::size_t skip = raw + 2 < r.remaining ? raw + 2 : r.remaining;
    r.text += skip;
    r.remaining -= skip;
    return true;
}

// The next token of the line; empty when the line has no more.
Token nextToken(VrmlReader& r) {
    std::size_t at = r.lineCursor;
    while (at < r.lineLength && isSeparator(r.line[at])) {
        ++at;
    }
    const std::size_t start = at;
    while (at < r.lineLength && !isSeparator(r.line[at])) {
        ++at;
    }
    r.lineCursor = at;
    return Token(r.line + start, at - start);
}

void skipRestOfLine(VrmlReader& r) {
    r.lineCursor = r.lineLength;
}

// A decimal floating-point literal at the start of the token; 0 when there is none.
float readNumber(Token t) {
    std::size_t at = 0;
    bool negative = false;
    if (at < t.size() && (t[at] == '+' || t[at] == '-')) {
        negative = t[at] == '-';
        ++at;
    }
    const std::size_t start = at;
    // The decimal position of the first significant digit, to tell an overflow from an
    // underflow when the value is out of range.
    long magnitude = 0;
    bool significant = false;
    std::size_t digits = 0;
    for (; at < t.size() && isDigit(t[at]); ++at, ++digits) {
        significant = significant || t[at] != '0';
        magnitude += significant ? 1 : 0;
    }
    if (at < t.size() && t[at] == '.') {
        for (++at; at < t.size() && isDigit(t[at]); ++at, ++digits) {
            significant = significant || t[at] != '0';
            magnitude -= significant ? 0 : 1;
        }
    }
    if (digits == 0) {
        return 0.0f;
    }
    long exponent = 0;
    if (at < t.size() && (t[at] == 'E' || t[at] == 'e')) {
        std::size_t e = at + 1;
        bool negativeExponent = false;
        if (e < t.size() && (t[e] == '+' || t[e] == '-')) {
            negativeExponent = t[e] == '-';
            ++e;
        }
        if (e < t.size() && isDigit(t[e])) {
            for (; e < t.size() && isDigit(t[e]); ++e) {
                exponent = exponent < 100000 ? exponent * 10 + (t[e] - '0') : exponent;
            }
            exponent = negativeExponent ? -exponent : exponent;
            at = e;
        }
    }
    float value = 0.0f;
    const auto parsed = std::from_chars(t.data() + start, t.data() + at, value);
    if (parsed.ec == std::errc::result_out_of_range) {
        value =
            significant && magnitude + exponent > 0 ? std::numeric_limits<float>::infinity() : 0.0f;
    }
    return negative ? -value : value;
}

// A decimal integer with optional sign at the start of the token, kept in 16 bits unsigned
// (-1 is 65535); 0 when there is none.
std::uint16_t readIndex(Token t) {
    std::size_t at = 0;
    bool negative = false;
    if (at < t.size() && (t[at] == '+' || t[at] == '-')) {
        negative = t[at] == '-';
        ++at;
    }
    std::uint32_t value = 0;
    for (; at < t.size() && isDigit(t[at]); ++at) {
        value = (value * 10 + static_cast<std::uint32_t>(t[at] - '0')) & 0xFFFF;
    }
    return static_cast<std::uint16_t>(negative ? (0x10000 - value) & 0xFFFF : value);
}

void copyName(char (&to)[kVrmlNameSize], Token from) {
    const std::size_t length = from.size() < kVrmlNameSize ? from.size() : kVrmlNameSize - 1;
    if (length > 0) { // an empty token may have no data at all
        std::memcpy(to, from.data(), length);
    }
    to[length] = '\0';
}

bool equalNoCase(const char* a, const char* b) {
    for (;; ++a, ++b) {
        const char x = *a >= 'a' && *a <= 'z' ? static_cast<char>(*a - 'a' + 'A') : *a;
        const char y = *b >= 'a' && *b <= 'z' ? static_cast<char>(*b - 'a' + 'A') : *b;
        if (x != y) {
            return false;
        }
        if (x == '\0') {
            return true;
        }
    }
}

// A node's list of one kind, seen with the pool it lies in.
template <typename T> struct List {
    std::uint32_t& count;
    T*& first;
    T* pool;
    std::uint32_t poolEntries;
    std::size_t width; // values an entry
};

// Calls `f` with the node's list of `kind` (a kind other than LIST_NONE). In the counting
// pass the pools are empty.
template <typename F> void withList(VrmlReading& p, VrmlNode& n, int kind, F&& f) {
    switch (kind) {
    case LIST_POINTS:
        f(List<float>{n.pointCount, n.points, p.pointPool.get(), p.pointPoolEntries,
                      kVrmlPointFloats});
        break;
    case LIST_COORD_INDEX:
        f(List<std::uint16_t>{n.coordIndexCount, n.coordIndex, p.coordIndexPool.get(),
                              p.coordIndexPoolEntries, 1});
        break;
    case LIST_TEX_COORDS:
        f(List<float>{n.texCoordCount, n.texCoords, p.texCoordPool.get(), p.texCoordPoolEntries,
                      kVrmlTexCoordFloats});
        break;
    default:
        f(List<std::uint16_t>{n.texCoordIndexCount, n.texCoordIndex, p.texCoordIndexPool.get(),
                              p.texCoordIndexPoolEntries, 1});
        break;
    }
}

// Points the node's list of `kind` at the pool entry `offset`, or at nothing when the pool
// has no such entry (an empty pool, or a text whose passes disagree).
void setList(VrmlReader& r, VrmlNode& node, int kind, std::uint64_t offset) {
    withList(*r.pools, node, kind, [&](auto list) {
        list.first = offset < list.poolEntries
                         ? list.pool + static_cast<std::size_t>(offset) * list.width
                         : nullptr;
    });
}

// One list entry, beginning with `first`; further components come from the line. A "]" in
// the last component read closes the list after this entry.
void addEntry(VrmlReader& r, Token first) {
    const int kind = r.listKind;
    if (kind == LIST_NONE) {
        return;
    }
    const bool numbers = kind == LIST_POINTS || kind == LIST_TEX_COORDS;
    const int components = kind == LIST_POINTS ? 3 : kind == LIST_TEX_COORDS ? 2 : 1;
    // The counting pass only counts: its values are never stored, so they are not converted.
    const bool convert = r.storing;
    float values[3] = {convert && numbers ? readNumber(first) : 0.0f, 0, 0};
    const std::uint16_t index = convert && !numbers ? readIndex(first) : 0;
    Token last = first;
    for (int i = 1; i < components; ++i) {
        last = nextToken(r);
        values[i] = convert ? readNumber(last) : 0.0f;
    }
    if (last.find(']') != Token::npos) {
        r.listOpen = false;
        r.listKind = LIST_NONE;
    }
    ++r.totals[kind];
    if (r.current == nullptr) {
        return;
    }
    withList(*r.pools, *r.current, kind, [&](auto list) {
        if (!r.storing) {
            ++list.count;
            return;
        }
        if (list.first == nullptr) {
            return;
        }
        const std::size_t slot =
            static_cast<std::size_t>(list.first - list.pool) / list.width + list.count;
        if (slot >= list.poolEntries) {
            return;
        }
        auto* to = list.pool + slot * list.width;
        if constexpr (std::is_same_v<decltype(to), float*>) {
            std::memcpy(to, values, static_cast<std::size_t>(components) * sizeof(float));
        } else {
            *to = index;
        }
        ++list.count;
    });
}

void defineNode(VrmlReader& r, Token name) {
    VrmlNode* node = new (std::nothrow) VrmlNode{};
    if (node == nullptr) {
        r.outOfMemory = true;
        return;
    }
    copyName(node->name, name);
    node->depth = r.depth;
    node->parentNode = r.current;
    if (r.current != nullptr) {
        std::memcpy(node->textureName, r.current->textureName, kVrmlNameSize);
        node->ccw = r.current->ccw;
    }
    node->nextNode = r.nodes.release();
    r.nodes.reset(node);
    r.current = node;
}

// Instancing: the current node takes the found node's counts and shares its index and
// texture coordinate lists, but gets a copy of its points of its own.
void useNode(VrmlReader& r, Token name) {
    char wanted[kVrmlNameSize];
    copyName(wanted, name);
    const VrmlNode* found = name.empty() ? nullptr : Vrml_FindNode(r.nodes.get(), wanted);
    if (found == nullptr) {
        return;
    }
    VrmlNode& node = *r.current;
    const float* sourcePoints = found->points; // the found node may be this one
    const std::uint32_t sourceCount = found->pointCount;
    node.pointCount = found->pointCount;
    node.coordIndexCount = found->coordIndexCount;
    node.texCoordCount = found->texCoordCount;
    node.texCoordIndexCount = found->texCoordIndexCount;
    if (r.storing) {
        node.coordIndex = found->coordIndex;
        node.texCoords = found->texCoords;
        node.texCoordIndex = found->texCoordIndex;
        const std::uint64_t offset = r.totals[LIST_POINTS];
        const std::uint32_t entries = r.pools->pointPoolEntries;
        const std::uint64_t room = offset < entries ? entries - offset : 0;
        const auto copied = static_cast<std::uint32_t>(sourceCount < room ? sourceCount : room);
        setList(r, node, LIST_POINTS, offset);
        if (copied > 0) {
            std::memmove(node.points, sourcePoints, copied * kVrmlPointFloats * sizeof(float));
        }
        node.pointCount = copied;
    }
    r.totals[LIST_POINTS] += sourceCount;
}

void readNumbers(VrmlReader& r, float* to, int count) {
    for (int i = 0; i < count; ++i) {
        to[i] = readNumber(nextToken(r));
    }
}

// The keyword table: true when the token is a keyword that acts now. One that cannot act
// ("DEF" with the switch off, any other without a current node) is an ordinary token.
bool keyword(VrmlReader& r, Token t) {
    if (t == "DEF") {
        if (!r.defSwitch) {
            return false;
        }
        defineNode(r, nextToken(r));
        return true;
    }
    VrmlNode* node = r.current;
    if (node == nullptr) {
        return false;
    }
    if (t == "SCALE") {
        readNumbers(r, node->scale, 3);
    } else if (t == "TRANSLATION") {
        float add[3];
        readNumbers(r, add, 3);
        for (int i = 0; i < 3; ++i) {
            node->translation[i] += add[i];
        }
    } else if (t == "ROTATION") {
        readNumbers(r, node->rotationAxis, 3);
        node->rotationAngle = readNumber(nextToken(r));
    } else if (t == "DIFFUSECOLOR" || t == "SPECULARCOLOR") {
        for (int i = 0; i < 3; ++i) {
            nextToken(r);
        }
    } else if (t == "CCW") {
        node->ccw = nextToken(r) == "TRUE" ? 1 : 0;
    } else if (t == "COORD") {
        r.listKind = LIST_POINTS;
        r.defSwitch = false;
    } else if (t == "COORDINDEX") {
        r.listKind = LIST_COORD_INDEX;
    } else if (t == "TEXCOORD") {
        r.listKind = LIST_TEX_COORDS;
        r.defSwitch = false;
    } else if (t == "TEXCOORDINDEX") {
        r.listKind = LIST_TEX_COORD_INDEX;
    } else if (t == "TEXTURE") {
        r.textureKeyword = true;
    } else if (t == "URL") {
        if (r.depth > 0 && r.textureBlock[r.depth - 1]) {
            const Token quoted = nextToken(r);
            copyName(node->textureName,
                     quoted.size() >= 2 ? quoted.substr(1, quoted.size() - 2) : Token());
        }
    } else if (t == "USE") {
        useNode(r, nextToken(r));
    } else {
        return false;
    }
    return true;
}

void Vrml_ParseToken(VrmlReader& r, Token t) {
    if (t.empty()) {
        return;
    }
    if (t[0] == '#') {
        skipRestOfLine(r);
        return;
    }
    if (r.listOpen) {
        if (t[0] == ']') {
            r.listOpen = false;
            r.listKind = LIST_NONE;
            return;
        }
        addEntry(r, t);
    }
    if (keyword(r, t)) {
        return;
    }
    if (t[0] == '[') {
        if (r.current != nullptr && r.listKind != LIST_NONE) {
            r.listOpen = true;
            // A second list of a kind replaces the node's first.
            withList(*r.pools, *r.current, r.listKind, [](auto list) { list.count = 0; });
            if (r.storing) {
                setList(r, *r.current, r.listKind, r.totals[r.listKind]);
            }
        }
        return;
    }
    if (r.current != nullptr && (t == "TITLE" || t == "INFO")) {
        skipRestOfLine(r);
        return;
    }
    if (t[0] == '{') {
        if (r.depth < kVrmlMaxDepth) {
            r.textureBlock[r.depth] = r.textureKeyword;
            ++r.depth;
        }
    } else if (t[0] == '}') {
        if (r.depth > 0) {
            --r.depth;
            if (r.current != nullptr) {
                r.defSwitch = true;
                if (r.current->depth == r.depth) {
                    r.current = r.current->parentNode;
                }
            }
        }
    }
}

// One pass over the whole text from the same start state. The counting pass stops early
// once a total is past kVrmlMaxEntries.
void readPass(VrmlReader& r, const std::uint8_t* text, std::size_t length, bool storing) {
    r.text = text;
    r.remaining = text != nullptr ? length : 0;
    r.storing = storing;
    r.current = nullptr;
    r.nodes.reset();
    r.listKind = LIST_NONE;
    r.listOpen = false;
    r.defSwitch = true;
    r.depth = 0;
    for (std::uint64_t& total : r.totals) {
        total = 0;
    }
    while (Vrml_ReadLine(r)) {
        for (Token t = nextToken(r); !t.empty(); t = nextToken(r)) {
            Vrml_ParseToken(r, t);
            if (r.outOfMemory) {
                return;
            }
        }
        if (!storing) {
            for (const std::uint64_t total : r.totals) {
                if (total > kVrmlMaxEntries) {
                    return;
                }
            }
        }
    }
}

template <typename T>
bool allocatePool(std::unique_ptr<T[]>& pool, std::uint32_t& entries, std::uint64_t counted,
                  std::size_t width) {
    entries = static_cast<std::uint32_t>(2 * counted);
    if (entries == 0) {
        return true;
    }
    pool.reset(new (std::nothrow) T[entries * width]());
    return pool != nullptr;
}

} // namespace

void VrmlNodeListDeleter::operator()(VrmlNode* head) const noexcept {
    while (head != nullptr) {
        VrmlNode* next = head->nextNode;
        delete head;
        head = next;
    }
}

VrmlNode* Vrml_FindNode(VrmlNode* head, const char* name) {
    for (VrmlNode* node = head; node != nullptr; node = node->nextNode) {
        if (equalNoCase(node->name, name)) {
            return node;
        }
    }
    return nullptr;
}

VrmlResult Vrml_Read(const std::uint8_t* text, std::size_t length, VrmlReading& out) {
    out = VrmlReading{};
    VrmlReader r;
    VrmlReading result;
    r.pools = &result;
    readPass(r, text, length, false);
    if (r.outOfMemory) {
        return VrmlResult::OutOfMemory;
    }
    for (const std::uint64_t total : r.totals) {
        if (total > kVrmlMaxEntries) {
            return VrmlResult::TooLarge;
        }
    }
    if (!allocatePool(result.pointPool, result.pointPoolEntries, r.totals[LIST_POINTS],
                      kVrmlPointFloats) ||
        !allocatePool(result.coordIndexPool, result.coordIndexPoolEntries,
                      r.totals[LIST_COORD_INDEX], 1) ||
        !allocatePool(result.texCoordPool, result.texCoordPoolEntries, r.totals[LIST_TEX_COORDS],
                      kVrmlTexCoordFloats) ||
        !allocatePool(result.texCoordIndexPool, result.texCoordIndexPoolEntries,
                      r.totals[LIST_TEX_COORD_INDEX], 1)) {
        return VrmlResult::OutOfMemory;
    }
    readPass(r, text, length, true);
    if (r.outOfMemory) {
        return VrmlResult::OutOfMemory;
    }
    result.nodes = std::move(r.nodes);
    out = std::move(result);
    return VrmlResult::Ok;
}

} // namespace norvgl
