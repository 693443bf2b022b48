// VRML reader: line splitting, which DEFs make nodes, keyword effects, lists and their pools,
// USE, texture names, the buffer limits, and the sample texts in assets/vrml.
#include "formats/vrml_reader.h"
#include "picture_assets.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#ifndef NORVGL_VRML_ASSETS
#define NORVGL_VRML_ASSETS "assets/vrml"
#endif

namespace norvgl {
namespace {

using Lines = std::vector<std::string>;

std::string crlf(const Lines& lines) {
    std::string text;
    for (const std::string& line : lines) {
        text += line + "\r\n";
    }
    return text;
}

// The lines as the body of a node named N.
Lines inNodeN(const Lines& body) {
    Lines lines = {"DEF N T {"};
    lines.insert(lines.end(), body.begin(), body.end());
    lines.push_back("}");
    return lines;
}

VrmlResult read(const std::string& text, VrmlReading& out) {
    return Vrml_Read(reinterpret_cast<const std::uint8_t*>(text.data()), text.size(), out);
}

VrmlReading readOk(const std::string& text) {
    VrmlReading out;
    EXPECT_EQ(read(text, out), VrmlResult::Ok);
    return out;
}

// Node names, newest first.
std::vector<std::string> names(const VrmlReading& reading) {
    std::vector<std::string> out;
    for (const VrmlNode* n = reading.nodes.get(); n != nullptr; n = n->nextNode) {
        out.emplace_back(n->name);
    }
    return out;
}

const VrmlNode& node(const VrmlReading& reading, const char* name) {
    static const VrmlNode missing{};
    const VrmlNode* found = Vrml_FindNode(reading.nodes.get(), name);
    EXPECT_NE(found, nullptr) << name;
    return found != nullptr ? *found : missing;
}

std::vector<float> xyz(const VrmlNode& n) {
    std::vector<float> out;
    for (std::uint32_t i = 0; i < n.pointCount; ++i) {
        out.insert(out.end(), n.points + i * kVrmlPointFloats, n.points + i * kVrmlPointFloats + 3);
    }
    return out;
}

std::vector<int> indices(const std::uint16_t* list, std::uint32_t count) {
    return count == 0 ? std::vector<int>() : std::vector<int>(list, list + count);
}

std::vector<float> uv(const VrmlNode& n) {
    const std::size_t floats = n.texCoordCount * kVrmlTexCoordFloats;
    return floats == 0 ? std::vector<float>()
                       : std::vector<float>(n.texCoords, n.texCoords + floats);
}

TEST(VrmlReader, LinesEndAtCrAndAreUpperCased) {
    struct Case {
        std::string text;
        std::vector<std::string> names; // newest first
    };
    const Case cases[] = {
        {"", {}},
        {"DEF A\r\nDEF B", {"A"}},          // the last line has no CR LF
        {"DEF A\r", {"A"}},                 // a CR that is the last byte ends the text
        {"DEF A\rDEF B\r\n", {"A"}},        // the byte after a CR is skipped unseen
        {"DEF A\r\rDEF B\r\n", {"B", "A"}}, // even when it is a CR
        {"DEF A\nDEF B\r\n", {"B", "A"}},   // a bare LF only separates tokens
        {"DEF,A\tDEF   B\r\n", {"B", "A"}},
        {"def a\r\n", {"A"}},
        {"# DEF A\r\nDEF B # DEF C\r\n#DEF D\r\n", {"B"}},
        {std::string("DEF A\0 DEF B\r\nDEF C\r\n", 21), {"C", "A"}}, // a NUL ends its line
    };
    for (const Case& c : cases) {
        EXPECT_EQ(names(readOk(c.text)), c.names) << testing::PrintToString(c.text);
    }
    VrmlReading out = readOk("DEF A\r\n");
    EXPECT_EQ(Vrml_Read(nullptr, 100, out), VrmlResult::Ok); // null is no text, and empties out
    EXPECT_EQ(out.nodes, nullptr);
}

TEST(VrmlReader, WhichDefsMakeNodes) {
    struct Case {
        Lines lines;
        std::vector<std::string> names; // newest first
    };
    const Case cases[] = {
        // DEF names a coordinate set after COORD and TEXCOORD; the next "}" ends that.
        {{"DEF A T {", "coord DEF P C {", "}", "DEF B T {", "}", "}"}, {"B", "A"}},
        {{"DEF A T {", "texCoord DEF P C { }", "DEF B T { }", "}"}, {"B", "A"}},
        {{"DEF A T {", "coordIndex DEF B T { }", "}"}, {"B", "A"}},
        // Keywords other than DEF act only on a current node; their values are plain tokens.
        {{"coord", "DEF A T { }"}, {"A"}},
        {{"translation DEF B T { }"}, {"B"}},
        {{"title DEF B T { }"}, {"B"}},
        // A keyword's values are consumed, not examined.
        {{"DEF A T { info DEF B", "use DEF C", "}"}, {"A"}},
        {{"DEF A T { diffuseColor DEF B 1 DEF C", "}"}, {"C", "A"}},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(names(readOk(crlf(c.lines))), c.names) << testing::PrintToString(c.lines);
    }
}

TEST(VrmlReader, NodesNestByBracesAndInheritTextureAndWinding) {
    const VrmlReading r = readOk(crlf({
        "DEF A T { ccw FALSE texture I { url \"a.bmp\" }",
        "  children [ DEF B T {",
        "    DEF C T { ccw TRUE }",
        "  } ]",
        "  DEF D T { }",
        "}",
        "DEF E T { }",
    }));
    EXPECT_EQ(names(r), (std::vector<std::string>{"E", "D", "C", "B", "A"}));
    struct Expect {
        const char* name;
        const char* parent;
        int depth;
        std::uint32_t ccw;
        const char* texture;
    };
    for (const Expect e : {Expect{"A", nullptr, 0, 0, "A.BMP"}, Expect{"B", "A", 1, 0, "A.BMP"},
                           Expect{"C", "B", 2, 1, "A.BMP"}, Expect{"D", "A", 1, 0, "A.BMP"},
                           Expect{"E", nullptr, 0, 1, ""}}) {
        const VrmlNode& n = node(r, e.name);
        EXPECT_EQ(n.parentNode, e.parent ? &node(r, e.parent) : nullptr) << e.name;
        EXPECT_EQ(n.depth, e.depth) << e.name;
        EXPECT_EQ(n.ccw, e.ccw) << e.name;
        EXPECT_STREQ(n.textureName, e.texture) << e.name;
    }
}

TEST(VrmlReader, KeywordsSetTheTransformAndWinding) {
    const float inf = std::numeric_limits<float>::infinity();
    struct Case {
        Lines body;
        std::vector<float> translation = {0, 0, 0};
        std::vector<float> scale = {1, 1, 1};
        std::vector<float> rotation = {0, 0, 0, 0}; // axis, angle
        std::uint32_t ccw = 1;
    };
    const Case cases[] = {
        {{"translation 1 0 0", "translation 1 0 0"}, {2, 0, 0}},
        {{"scale 1 2 3", "scale 4 5 6"}, {0, 0, 0}, {4, 5, 6}},
        {{"sCaLe 2 2 2"}, {0, 0, 0}, {2, 2, 2}},
        {{"rotation 0 0 1 1.5"}, {0, 0, 0}, {1, 1, 1}, {0, 0, 1, 1.5f}},
        {{"ccw FALSE"}, {0, 0, 0}, {1, 1, 1}, {0, 0, 0, 0}, 0},
        {{"ccw 1"}, {0, 0, 0}, {1, 1, 1}, {0, 0, 0, 0}, 0},
        {{"ccw FALSE", "ccw true"}, {0, 0, 0}, {1, 1, 1}, {0, 0, 0, 0}, 1},
        {{"ccw"}, {0, 0, 0}, {1, 1, 1}, {0, 0, 0, 0}, 0},
        // Colours take three tokens, whatever they are; TITLE and INFO take the line.
        {{"diffuseColor 1 1 scale 2 2 2"}},
        {{"specularColor 1 1 translation 1 1 1 translation 0 0 5"}, {0, 0, 5}},
        {{"title scale 2 2 2", "info translation 1 1 1"}},
        // Values missing at the end of the line read as 0.
        {{"translation 1 2", "3"}, {1, 2, 0}},
        {{"rotation 0 1"}, {0, 0, 0}, {1, 1, 1}, {0, 1, 0, 0}},
        // Number forms.
        {{"translation -1.5e1 .5 +2"}, {-15, 0.5f, 2}},
        {{"translation 3abc x 1E2E"}, {3, 0, 100}},
        {{"translation 0.1 -4.75 1e-2"}, {0.1f, -4.75f, 0.01f}},
        {{"translation 1e39 -1e39 1e-50"}, {inf, -inf, 0}},
        {{"translation inf nan 0x10"}, {0, 0, 0}},
    };
    for (const Case& c : cases) {
        const VrmlReading r = readOk(crlf(inNodeN(c.body)));
        const VrmlNode& n = node(r, "N");
        const std::string label = testing::PrintToString(c.body);
        EXPECT_EQ(std::vector<float>(n.translation, n.translation + 3), c.translation) << label;
        EXPECT_EQ(std::vector<float>(n.scale, n.scale + 3), c.scale) << label;
        EXPECT_EQ((std::vector<float>{n.rotationAxis[0], n.rotationAxis[1], n.rotationAxis[2],
                                      n.rotationAngle}),
                  c.rotation)
            << label;
        EXPECT_EQ(n.ccw, c.ccw) << label;
    }
}

TEST(VrmlReader, ListEntries) {
    struct Case {
        Lines body;
        std::vector<float> points = {};
        std::vector<int> coordIndex = {};
        std::vector<float> texCoords = {};
        std::vector<int> texCoordIndex = {};
    };
    const Case cases[] = {
        {{"coord DEF P C { point [ 1 2 3, 4 5 6 ] }"}, {1, 2, 3, 4, 5, 6}},
        {{"coord DEF P C { point [ 1 2 3, 4 5 6] }"}, {1, 2, 3, 4, 5, 6}},
        {{"coord DEF P C { point [", "1 2 3", "4 5 6 ]", "}"}, {1, 2, 3, 4, 5, 6}},
        // Only the last component is looked at for the bracket.
        {{"coord DEF P C { point [ 1] 2 3, 4 5 6 ] }"}, {1, 2, 3, 4, 5, 6}},
        // A point split over two lines: the missing component reads as 0.
        {{"coord DEF P C { point [ 1 2", "3 4 5 ] }"}, {1, 2, 0, 3, 4, 5}},
        {{"coordIndex [ 0, 1, 2, -1 ]"}, {}, {0, 1, 2, 65535}},
        {{"coordIndex [ 0 1 2 -1]"}, {}, {0, 1, 2, 65535}},
        {{"coordIndex [0 1 2 -1 ]"}, {}, {1, 2, 65535}}, // the bracket's token is not an entry
        {{"coordIndex [ 70000 1.9 +3 x -65536 ]"}, {}, {4464, 1, 3, 0, 0}},
        {{"coordIndex [ 1 # 2 3", "4 ]"}, {}, {1, 4}},
        {{"coordIndex [ 0 1 -1 ]", "coordIndex [ 3 4 5 -1 ]"}, {}, {3, 4, 5, 65535}},
        {{"texCoord DEF U X { point [ 0 0.5, 1 1] }", "texCoordIndex [ 1 0 -1 ]"},
         {},
         {},
         {0, 0.5f, 1, 1},
         {1, 0, 65535}},
        // "[" opens a list only after a list keyword.
        {{"children [ 1 2 3 ]"}},
    };
    for (const Case& c : cases) {
        const VrmlReading r = readOk(crlf(inNodeN(c.body)));
        const VrmlNode& n = node(r, "N");
        const std::string label = testing::PrintToString(c.body);
        EXPECT_EQ(xyz(n), c.points) << label;
        EXPECT_EQ(indices(n.coordIndex, n.coordIndexCount), c.coordIndex) << label;
        EXPECT_EQ(uv(n), c.texCoords) << label;
        EXPECT_EQ(indices(n.texCoordIndex, n.texCoordIndexCount), c.texCoordIndex) << label;
    }
}

TEST(VrmlReader, ListsOfAKindShareOnePoolOfTwiceTheirCount) {
    const VrmlReading r = readOk(crlf({
        "DEF A T { coord DEF P C { point [ 1 2 3, 4 5 6 ] } coordIndex [ 0 1 -1 ] }",
        "DEF B T { coord DEF Q C { point [ 7 8 9 ] } coordIndex [ 0 -1 ] }",
    }));
    const VrmlNode& a = node(r, "A");
    const VrmlNode& b = node(r, "B");
    EXPECT_EQ(a.points, r.pointPool.get());
    EXPECT_EQ(b.points, a.points + 2 * kVrmlPointFloats);
    EXPECT_EQ(b.coordIndex, a.coordIndex + 3);
    EXPECT_EQ(r.pointPoolEntries, 6u);
    EXPECT_EQ(r.coordIndexPoolEntries, 10u);
    EXPECT_EQ(r.texCoordPool, nullptr);
    EXPECT_EQ(r.texCoordPoolEntries, 0u);
    // Normal and texture coordinate floats of an entry stay 0.
    EXPECT_EQ(std::vector<float>(b.points + 3, b.points + 8), std::vector<float>(5, 0.0f));
}

TEST(VrmlReader, UseCopiesPointsAndSharesTheOtherLists) {
    const VrmlReading r = readOk(crlf({
        "DEF A T {",
        "geometry DEF F IFS {",
        "coord DEF P C { point [ 1 2 3, 4 5 6 ] } coordIndex [ 0 1 -1 ]",
        "texCoord DEF U X { point [ 0 0, 1 1 ] } texCoordIndex [ 1 0 -1 ]",
        "}",
        "}",
        "DEF B T { translation 5 0 0 ccw FALSE coordIndex [ 9 9 ] geometry USE f }",
        "DEF C T { coord DEF Q C { point [ 7 8 9 ] } USE LATER }",
        "DEF LATER T { }",
    }));
    const VrmlNode& f = node(r, "F");
    const VrmlNode& b = node(r, "B");
    const VrmlNode& c = node(r, "C");
    EXPECT_NE(b.points, f.points);
    EXPECT_EQ(xyz(b), xyz(f));
    EXPECT_EQ(b.coordIndex, f.coordIndex);
    EXPECT_EQ(b.coordIndexCount, 3u); // the list B had before the USE is dropped
    EXPECT_EQ(b.texCoords, f.texCoords);
    EXPECT_EQ(b.texCoordCount, 2u);
    EXPECT_EQ(b.texCoordIndex, f.texCoordIndex);
    EXPECT_EQ(b.texCoordIndexCount, 3u);
    EXPECT_EQ(b.translation[0], 5.0f);
    EXPECT_EQ(b.ccw, 0u);
    // The copy counts in the pool: the next list starts after it.
    EXPECT_EQ(c.points, b.points + 2 * kVrmlPointFloats);
    EXPECT_EQ(xyz(c), (std::vector<float>{7, 8, 9})); // a name defined later is not found
    EXPECT_EQ(r.pointPoolEntries, 10u);
}

TEST(VrmlReader, UseFindsTheNewestNodeOfAName) {
    const VrmlReading r = readOk(crlf({
        "DEF F T { coordIndex [ 0 -1 ] }",
        "DEF f T { coordIndex [ 0 1 2 -1 ] }",
        "DEF B T { USE F }",
    }));
    EXPECT_EQ(node(r, "B").coordIndexCount, 4u);
    EXPECT_EQ(Vrml_FindNode(r.nodes.get(), "f"), r.nodes->nextNode);
}

TEST(VrmlReader, TextureNames) {
    const std::string longName(200, 'w');
    struct Case {
        Lines lines;
        std::string texture; // of node N
    };
    const Case cases[] = {
        {{"DEF N T {", "texture ImageTexture { url \"wood.bmp\" }", "}"}, "WOOD.BMP"},
        // The second pass starts with the flag the first turned on.
        {{"DEF N T { url \"early.bmp\" }", "DEF M T { texture }"}, "EARLY.BMP"},
        {{"DEF N T { url \"wood.bmp\" }"}, ""},
        {{"texture", "DEF N T { url \"wood.bmp\" }"}, ""},         // TEXTURE without a node
        {{"DEF M T { texture }", "DEF N T url \"wood.bmp\""}, ""}, // outside all braces
        {{"DEF N T { texture X { url wood } }"}, "OO"},
        {{"DEF N T { texture X { url \"\" } }"}, ""},
        {{"DEF N T { texture X { url x } }"}, ""},
        {{"DEF N T { texture X { url \"" + longName + "\" } }"},
         std::string(kVrmlNameSize - 1, 'W')},
    };
    for (const Case& c : cases) {
        const VrmlReading r = readOk(crlf(c.lines));
        EXPECT_EQ(std::string(node(r, "N").textureName), c.texture)
            << testing::PrintToString(c.lines);
    }
}

TEST(VrmlReader, EveryPassStartsFromTheSameState) {
    // The first pass ends inside A's block with the DEF switch off and a list open.
    const VrmlReading r = readOk(crlf({"DEF A T {", "coordIndex [ 1 2", "coord"}));
    EXPECT_EQ(names(r), std::vector<std::string>{"A"});
    EXPECT_EQ(node(r, "A").depth, 0);
    EXPECT_EQ(indices(node(r, "A").coordIndex, node(r, "A").coordIndexCount),
              (std::vector<int>{1, 2, 0}));
}

TEST(VrmlReader, PassesThatDisagreeStayInsideThePools) {
    // The "}" after URL ends A in the counting pass, but is A's texture name in the storing
    // pass, where A's block is a texture block from the start: A then meets more entries.
    const Lines divergent = {"DEF B T { coordIndex [ 5 -1 ] coord DEF P C { point [ 1 2 3 ] } }",
                             "DEF A T { texture", "url }"};
    Lines lists = divergent;
    lists.push_back("coordIndex [ 0 1 2 -1 ]");
    const VrmlReading r = readOk(crlf(lists));
    ASSERT_EQ(r.coordIndexPoolEntries, 4u);
    EXPECT_EQ(indices(node(r, "A").coordIndex, node(r, "A").coordIndexCount),
              (std::vector<int>{0, 1}));
    Lines uses = divergent;
    uses.push_back("USE B");
    uses.push_back("USE B");
    const VrmlReading u = readOk(crlf(uses));
    ASSERT_EQ(u.pointPoolEntries, 2u);
    EXPECT_EQ(node(u, "A").pointCount, 0u); // the first copy fitted, the second did not
    EXPECT_EQ(node(u, "A").coordIndexCount, 2u);
}

TEST(VrmlReader, BuffersAreBounded) {
    Lines deep(1100, "{ {");
    deep.push_back("DEF A");
    const std::string longName(200, 'N');
    const std::string cutName(kVrmlNameSize - 1, 'N');
    // 1023 characters are read whole; a longer line loses the token at the cut.
    EXPECT_EQ(names(readOk(crlf({std::string(1017, ' ') + "DEF AB"}))),
              std::vector<std::string>{"AB"});
    EXPECT_EQ(names(readOk(crlf({std::string(1018, ' ') + "DEF AB"}))),
              std::vector<std::string>{""});
    EXPECT_EQ(names(readOk(crlf({std::string(1018, ' ') + "DEF ABC", "DEF NEXT"}))),
              (std::vector<std::string>{"NEXT", ""}));
    // Braces beyond the depth limit or below depth 0 are ignored.
    EXPECT_EQ(node(readOk(crlf(deep)), "A").depth, kVrmlMaxDepth);
    const VrmlReading unbalanced = readOk(crlf({"} } DEF A T {", "} DEF B T { }"}));
    EXPECT_EQ(node(unbalanced, "A").depth, 0);
    EXPECT_EQ(node(unbalanced, "B").parentNode, nullptr);
    // A long name is cut, and found by USE under its long spelling.
    const VrmlReading cut = readOk(crlf(
        {"DEF " + longName + " T { coordIndex [ 1 -1 ] }", "DEF U T { USE " + longName + " }"}));
    EXPECT_EQ(names(cut), (std::vector<std::string>{"U", cutName}));
    EXPECT_EQ(node(cut, "U").coordIndexCount, 2u);
}

TEST(VrmlReader, TextsThatCountTooManyEntriesAreRefused) {
    // 1024 points, then each USE of the node by itself counts another 1024.
    const auto text = [](int uses) {
        Lines lines = {"DEF A T { coord DEF P C { point ["};
        lines.insert(lines.end(), 1024, "1 2 3");
        lines.push_back("] }");
        lines.insert(lines.end(), static_cast<std::size_t>(uses), "USE A");
        return crlf(lines);
    };
    VrmlReading out;
    ASSERT_EQ(read(text(1023), out), VrmlResult::Ok); // exactly kVrmlMaxEntries
    EXPECT_EQ(out.pointPoolEntries, 2 * kVrmlMaxEntries);
    EXPECT_EQ(xyz(node(out, "A")).back(), 3.0f);
    EXPECT_EQ(read(text(1024), out), VrmlResult::TooLarge);
    EXPECT_EQ(out.nodes, nullptr);
    EXPECT_EQ(out.pointPool, nullptr);
}

std::string asset(const std::string& name) {
    const std::string text = assets::readText(std::string(NORVGL_VRML_ASSETS) + "/" + name);
    EXPECT_FALSE(text.empty()) << name;
    return text;
}

TEST(VrmlReader, SampleTexts) {
    struct Expect {
        const char* file;
        const char* name;
        const char* parent;
        std::uint32_t counts[4]; // points, coordIndex, texCoords, texCoordIndex
        const char* texture;
        std::uint32_t ccw;
    };
    const Expect rows[] = {
        {"nested_transforms.wrl", "OUTER", nullptr, {0, 0, 0, 0}, "", 1},
        {"nested_transforms.wrl", "INNER", "OUTER", {0, 0, 0, 0}, "", 1},
        {"nested_transforms.wrl", "INNERFACES", "INNER", {3, 4, 0, 0}, "", 1},
        {"textured_quad.wrl", "PANELFACES", "PANEL", {4, 8, 5, 8}, "CHECKER.BMP", 1},
        {"instanced.wrl", "WEDGE", "LEFT", {4, 8, 0, 0}, "", 1},
        {"instanced.wrl", "RIGHT", nullptr, {4, 8, 0, 0}, "", 1},
        {"windings.wrl", "FRONTFACES", "FRONT", {3, 4, 0, 0}, "", 1},
        {"windings.wrl", "BACKFACES", "BACK", {3, 4, 0, 0}, "", 0},
    };
    for (const Expect& e : rows) {
        const VrmlReading r = readOk(asset(e.file));
        const VrmlNode& n = node(r, e.name);
        const std::uint32_t counts[4] = {n.pointCount, n.coordIndexCount, n.texCoordCount,
                                         n.texCoordIndexCount};
        EXPECT_EQ(std::vector<std::uint32_t>(counts, counts + 4),
                  std::vector<std::uint32_t>(e.counts, e.counts + 4))
            << e.name;
        EXPECT_EQ(n.parentNode, e.parent ? &node(r, e.parent) : nullptr) << e.name;
        EXPECT_STREQ(n.textureName, e.texture) << e.name;
        EXPECT_EQ(n.ccw, e.ccw) << e.name;
    }
}

} // namespace
} // namespace norvgl
