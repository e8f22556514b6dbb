#include "zef_api_functions.h"

#include "helpers/StreamCapture.h"
#include "helpers/TempFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace TARN_ZEF
{
namespace
{
const std::string TRIANGLE = "0 0 0\n1 0 0\n0 1 0\n";
const std::string XYZ = "property float x\nproperty float y\nproperty float z\n";
const std::string VERTEX_3 = "element vertex 3\n" + XYZ;
const std::string FACE_1 = "element face 1\nproperty list uchar int vertex_indices\n";
const std::string ASCII = "ply\nformat ascii 1.0\n";
const std::string BINARY = "ply\nformat binary_little_endian 1.0\n";

struct ScalarType
{
    const char* name;
    const char* sizedName;
    std::size_t size;
};
constexpr ScalarType TYPES[] = {
    {"char", "int8", 1}, {"uchar", "uint8", 1}, {"short", "int16", 2},   {"ushort", "uint16", 2},
    {"int", "int32", 4}, {"uint", "uint32", 4}, {"float", "float32", 4}, {"double", "float64", 8},
};

// A PLY file of random form about random content: format, types and their spelling, order of elements and
// properties, further elements and properties with lists, comments, kinds of line ends. All values are whole
// numbers that every type holds exactly.
class RandomPly
{
public:
    explicit RandomPly(unsigned int seed)
        : rng(seed)
        , format(rng() % 3)
        , end(pick({"\n", "\r\n", "\r"}))
        , blank(pick({" ", "  ", "\t", " \t "}))
    {
        for (std::size_t n = 3 + rng() % 40; n > 0; --n)
            vVertices.emplace_back(rng() % 101, rng() % 101, rng() % 101);
        for (std::size_t n = rng() % 40; n > 0; --n)
            for (int& index : vFaces.emplace_back(rng() % 3 == 0 ? rng() % 7 : 3))
                index = static_cast<int>(rng() % vVertices.size());
        std::vector<int> vKinds = {0, 1, 2, 3};
        std::shuffle(vKinds.begin(), vKinds.end(), rng);
        for (const int kind : vKinds)
            if (kind == 0)
                addRows("vertex", vVertices.size(), {"x", "y", "z"});
            else if (kind == 1)
                addRows("face", vFaces.size(), {pick({"vertex_indices", "vertex_index"})});
            else if (rng() % 2 == 0)
                addRows(kind == 2 ? "edge" : "other", rng() % 20, {});
    }
    [[nodiscard]] std::string text() const
    {
        const char* const formats[] = {"ascii", "binary_little_endian", "binary_big_endian"};
        return "ply" + end + "comment x" + end + "format " + formats[format] + " 1.0" + end + header +
               "end_header" + end + body;
    }

    std::vector<Point3> vVertices;
    std::vector<std::vector<int>> vFaces;

private:
    const char* pick(std::initializer_list<const char*> texts) { return texts.begin()[rng() % texts.size()]; }

    void addRows(const std::string& element, std::size_t numRows, std::vector<std::string> vNames)
    {
        for (std::size_t n = rng() % 4; n > 0; --n)
            vNames.push_back(pick({"list", "extra", "extra"}) + std::to_string(n));
        std::shuffle(vNames.begin(), vNames.end(), rng);
        header += (rng() % 2 == 0 ? blank : "") + "element" + blank + element + blank +
                  std::to_string(numRows) + (rng() % 2 == 0 ? blank : "") + end;
        constexpr std::size_t coordinateTypes[] = {4, 6, 7};
        const std::size_t coordinateType = coordinateTypes[rng() % 3];
        std::vector<std::size_t> vTypes;
        for (const std::string& name : vNames)
        {
            // Coordinates share a type, indices are integers.
            vTypes.push_back(name.size() == 1 ? coordinateType : rng() % (name[0] == 'v' ? 6 : 8));
            header += "property" + blank + (isList(name) ? "list" + blank + spell(1) + blank : "") +
                      spell(vTypes.back()) + blank + name + end +
                      (rng() % 5 == 0 ? "obj_info element vertex 99" + end : "");
        }
        for (std::size_t row = 0; row < numRows; ++row)
        {
            for (std::size_t i = 0; i < vNames.size(); ++i)
                addValues(vNames[i], row, vTypes[i]);
            body += format == 0 && !vNames.empty() ? end : "";
        }
    }
    static bool isList(const std::string& name) { return name[0] == 'v' || name[0] == 'l'; }
    std::string spell(std::size_t type) { return pick({TYPES[type].name, TYPES[type].sizedName}); }

    void addValues(const std::string& name, std::size_t row, std::size_t type)
    {
        std::vector<int> vValues(name[0] == 'l' ? rng() % 5 : 1, 9);
        if (name[0] == 'v')
            vValues = vFaces[row];
        else if (name.size() == 1)
            vValues[0] = static_cast<int>((vVertices[row] - Point3()).getCartesian(name[0] - 'x'));
        if (isList(name))
            addValue(1, static_cast<int>(vValues.size()));
        for (const int value : vValues)
            addValue(type, value);
    }

    void addValue(std::size_t type, int value)
    {
        const float f = static_cast<float>(value);
        const double d = value;
        const void* p = &value;
        if (type >= 6)
            p = type == 6 ? static_cast<const void*>(&f) : &d;
        std::string bytes(static_cast<const char*>(p), TYPES[type].size);
        if (format == 2)
            std::reverse(bytes.begin(), bytes.end());
        body += format == 0 ? std::to_string(value) + pick({" ", " ", "\t "}) : bytes;
    }

    std::mt19937 rng;
    std::size_t format;
    std::string end;
    std::string blank;
    std::string header;
    std::string body;
};

} // namespace

TEST(PlyTest, AnyFormOfFileGivesItsContent)
{
    for (unsigned int seed = 0; seed < 400; ++seed)
    {
        SCOPED_TRACE("seed " + std::to_string(seed));
        RandomPly ply(seed);
        const TempFile file(".ply", ply.text());
        std::vector<Point3> vPoints;
        ASSERT_TRUE(readPly(file.c_str(), true, vPoints));
        ASSERT_EQ(ply.vVertices, vPoints);

        std::vector<Point3> vExpected;
        for (const std::vector<int>& vFace : ply.vFaces)
            for (std::size_t i = 2; i < vFace.size(); ++i)
                for (const std::size_t corner : {std::size_t{0}, i - 1, i})
                    vExpected.push_back(ply.vVertices[static_cast<std::size_t>(vFace[corner])]);
        std::vector<Point3> vCorners;
        ASSERT_TRUE(readPly(file.c_str(), false, vCorners));
        ASSERT_EQ(vExpected, vCorners);
    }
}

TEST(PlyTest, EveryCutIsNoticed)
{
    for (const bool bASCII : {true, false})
    {
        std::string content = (bASCII ? ASCII : BINARY) + VERTEX_3 + FACE_1 + "end_header\n";
        content += bASCII ? TRIANGLE + "3 0 1 2" : std::string(36, '\0') + '\3' + std::string(12, '\0');
        for (std::size_t size = 0; size <= content.size(); ++size)
        {
            SCOPED_TRACE("first " + std::to_string(size) + " bytes of\n" + content);
            const TempFile file(".ply", content.substr(0, size));
            const StreamCapture out;
            for (const bool bPointsOnly : {true, false})
            {
                std::vector<Point3> vPoints(1);
                const bool bWhole = size == content.size();
                // The rows of a text are counted where only the points matter, their values are not.
                if (bASCII && bPointsOnly && size > content.size() - 7 && !bWhole)
                    continue;
                ASSERT_EQ(bWhole, readPly(file.c_str(), bPointsOnly, vPoints));
                ASSERT_EQ(bWhole ? 4U : 1U, vPoints.size());
            }
        }
    }
}

TEST(PlyTest, BrokenFilesAreRefusedWithTheReason)
{
    const std::string face = ASCII + VERTEX_3 + FACE_1 + "end_header\n" + TRIANGLE;
    const struct
    {
        const char* what;
        std::string content;
        const char* words;
    } rows[] = {
        {"no format", "ply\n" + VERTEX_3 + "end_header\n" + TRIANGLE, "format"},
        {"negative count", ASCII + "element vertex -3\n", "line 3"},
        {"element twice", ASCII + VERTEX_3 + VERTEX_3, "line 7"},
        {"unknown type", ASCII + "element vertex 3\nproperty real x\n", "line 4"},
        {"list counted in float", ASCII + "element face 3\nproperty list float int vertex_indices\n",
         "line 4"},
        {"endless line", ASCII + std::string(100000, 'x'), "line 3"},
        {"missing z", ASCII + "element vertex 1\nproperty float x\nproperty float y\nend_header\n1 2\n",
         "'z'"},
        {"indices with fraction",
         ASCII + VERTEX_3 + "element face 1\nproperty list int float vertex_indices\nend_header\n" +
             TRIANGLE + "3 0 1 2\n",
         "no integers"},
        {"index too large", face + "3 0 1 3\n", "vertex 3 of 3"},
        {"negative index", face + "3 0 1 -1\n", "of 3"},
        {"negative binary list",
         BINARY + VERTEX_3 + "element face 1\nproperty list char int vertex_indices\nend_header\n" +
             std::string(36, '\0') + "\x80",
         "does not fit"},
        {"count too large for the row", face + "4000000000 0 1 2\n", "line 13"},
        {"no number", ASCII + VERTEX_3 + FACE_1 + "end_header\n0 0 0\n0,5 0 0\n0 0 0\n3 0 1 2\n",
         "line 11: '0,5'"},
        {"vertices beyond the file", ASCII + "element vertex 4000000000\n" + XYZ + FACE_1 + "end_header\n",
         "4000000000 rows"},
        {"vertices whose bytes wrap",
         BINARY + "element vertex 18446744073709551615\n" + XYZ + FACE_1 + "end_header\n" +
             std::string(48, '\0'),
         "rows of element 'vertex'"},
        {"other element beyond the file",
         BINARY + "element a 4000000000\nproperty list uint int b\n" + VERTEX_3 + FACE_1 + "end_header\n",
         "'a'"},
        {"list beyond the file",
         BINARY + VERTEX_3 + "element face 1\nproperty list int int vertex_indices\nend_header\n" +
             std::string(36, '\0') + "\xFF\xFF\xFF\x7F",
         "does not fit"},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.what);
        const TempFile file(".ply", row.content);
        const StreamCapture out;
        std::vector<Point3> vPoints(1);
        EXPECT_FALSE(readPly(file.c_str(), false, vPoints));
        EXPECT_EQ(1U, vPoints.size());
        EXPECT_TRUE(out.contains("readPly, ERROR: ")) << out.text();
        EXPECT_TRUE(out.contains(file.path) && out.contains(row.words)) << out.text();
    }
}

TEST(PlyTest, OddFilesThatAreSound)
{
    const std::string noise = "element empty 4000000000\nelement vertex 2\n";
    const struct
    {
        const char* what;
        std::string content;
    } rows[] = {
        {"types that differ, an element without properties",
         ASCII + noise + "property int x\nproperty double z\nproperty float y\nend_header\n1 3 2\n\n4 6 5"},
        {"number forms", ASCII + noise + XYZ + "end_header\n+1 2.0 .3e1 rest\n4 5e0 6\nrest"},
        {"row number in an integer",
         ASCII + noise + "property int i\n" + XYZ + "end_header\n7 1 2 3\n8 4 5 6\n"},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.what);
        const TempFile file(".ply", row.content);
        std::vector<Point3> vPoints = {Point3(9, 9, 9)};
        EXPECT_TRUE(readPly(file.c_str(), true, vPoints));
        EXPECT_EQ(std::vector<Point3>({{9, 9, 9}, {1, 2, 3}, {4, 5, 6}}), vPoints);
    }
}

TEST(PlyTest, RandomBytesNeverCrash)
{
    std::mt19937 rng(1);
    const std::string sound = RandomPly(5).text();
    const StreamCapture out;
    for (int i = 0; i < 2000; ++i)
    {
        std::string content = sound;
        for (std::size_t n = 1 + rng() % 4; n > 0; --n)
            content[rng() % content.size()] = static_cast<char>(rng() % 5 == 0 ? rng() : '0' + rng() % 10);
        const TempFile file(".ply", content);
        std::vector<Point3> vPoints(1);
        const bool bOK = readPly(file.c_str(), i % 2 == 0, vPoints);
        ASSERT_TRUE(bOK || vPoints.size() == 1);
    }
}

} // namespace TARN_ZEF
