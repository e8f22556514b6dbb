#include "zef_api_functions.h"

#include "helpers/StreamCapture.h"
#include "helpers/TempFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>

namespace TARN_ZEF
{
namespace
{
const std::string kTriangle = "0 0 0\n1 0 0\n0 1 0\n";
const std::string kXYZ = "property float x\nproperty float y\nproperty float z\n";
const std::string kVertex3 = "element vertex 3\n" + kXYZ;
const std::string kFace1 = "element face 1\nproperty list uchar int vertex_indices\n";
const std::string kAscii = "ply\nformat ascii 1.0\n";
const std::string kBinary = "ply\nformat binary_little_endian 1.0\n";

struct ScalarType
{
    const char* name;
    const char* sizedName;
    std::size_t size;
};
constexpr ScalarType kTypes[] = {
    {"char", "int8", 1}, {"uchar", "uint8", 1}, {"short", "int16", 2},   {"ushort", "uint16", 2},
    {"int", "int32", 4}, {"uint", "uint32", 4}, {"float", "float32", 4}, {"double", "float64", 8},
};

// Makes PLY files of random form about given content: format, types and their spelling, order of elements
// and properties, further elements and properties with lists, comments, kinds of line ends.
class RandomPly
{
public:
    explicit RandomPly(unsigned int seed)
        : rng(seed)
    {
    }

    // Whole numbers from 0 to 100, so that every type holds them exactly.
    std::vector<Point3> vVertices;
    std::vector<std::vector<int>> vFaces;

    std::string make()
    {
        const char* const formats[] = {"ascii", "binary_little_endian", "binary_big_endian"};
        format = static_cast<int>(rng() % 3);
        const char* const ends[] = {"\n", "\r\n", "\r"};
        end = ends[rng() % 3];
        constexpr int coordinateTypes[] = {4, 6, 7};
        coordinateType = coordinateTypes[rng() % 3];
        makeContent();

        header = "ply" + end + "comment x" + end + "format " + formats[format] + " 1.0" + end;
        body.clear();
        std::vector<int> vKinds = {0, 1, 2, 3};
        std::shuffle(vKinds.begin(), vKinds.end(), rng);
        for (const int kind : vKinds)
            addElement(kind);
        return header + "end_header" + end + body;
    }

private:
    void makeContent()
    {
        vVertices.clear();
        vFaces.clear();
        for (std::size_t n = 3 + rng() % 40; n > 0; --n)
            vVertices.emplace_back(rng() % 101, rng() % 101, rng() % 101);
        for (std::size_t n = rng() % 40; n > 0; --n)
        {
            std::vector<int> vFace(rng() % 3 == 0 ? rng() % 7 : 3);
            for (int& index : vFace)
                index = static_cast<int>(rng() % vVertices.size());
            vFaces.push_back(vFace);
        }
    }

    void addElement(int kind)
    {
        if (kind == 0)
            addRows("vertex", vVertices.size(), {"x", "y", "z"});
        else if (kind == 1)
            addRows("face", vFaces.size(), {rng() % 2 == 0 ? "vertex_indices" : "vertex_index"});
        else if (rng() % 2 == 0)
            addRows(kind == 2 ? "edge" : "other", rng() % 20, {});
    }

    void addRows(const std::string& element, std::size_t numRows, std::vector<std::string> vNames)
    {
        for (std::size_t n = rng() % 4; n > 0; --n)
            vNames.push_back((rng() % 3 == 0 ? "list" : "extra") + std::to_string(n));
        std::shuffle(vNames.begin(), vNames.end(), rng);
        const char* const blanks[] = {" ", "  ", "\t", " \t "};
        const std::string blank = blanks[rng() % 4];
        header += (rng() % 2 == 0 ? blank : "") + "element" + blank + element + blank +
                  std::to_string(numRows) + (rng() % 2 == 0 ? blank : "") + end;
        std::vector<int> vTypes;
        for (const std::string& name : vNames)
        {
            const bool bIndex = name[0] == 'v';
            // Coordinates share a type; indices and counts are integers.
            int type = static_cast<int>(rng() % (bIndex ? 6 : 8));
            if (name.size() == 1)
                type = coordinateType;
            vTypes.push_back(type);
            header += "property" + blank;
            if (bIndex || name[0] == 'l')
                header += "list" + blank + spell(1) + blank;
            header += spell(type) + blank + name + end;
            if (rng() % 5 == 0)
                header += "obj_info element vertex 99" + end;
        }
        for (std::size_t row = 0; row < numRows; ++row)
            addRow(row, vNames, vTypes);
    }

    [[nodiscard]] std::string spell(int type)
    {
        return rng() % 2 == 0 ? kTypes[type].name : kTypes[type].sizedName;
    }

    void addRow(std::size_t row, const std::vector<std::string>& vNames, const std::vector<int>& vTypes)
    {
        if (vNames.empty())
            return;
        for (std::size_t i = 0; i < vNames.size(); ++i)
        {
            std::vector<int> vValues = {static_cast<int>(rng() % 101)};
            if (vNames[i].size() == 1)
            {
                const Point3& p = vVertices[row];
                vValues[0] = static_cast<int>(vNames[i] == "x" ? p.x() : vNames[i] == "y" ? p.y() : p.z());
            }
            else if (vNames[i][0] == 'v')
                vValues = vFaces[row];
            else if (vNames[i][0] == 'l')
                vValues.assign(rng() % 5, 9);
            if (vNames[i][0] == 'v' || vNames[i][0] == 'l')
                addValue(1, static_cast<int>(vValues.size()));
            for (const int value : vValues)
                addValue(vTypes[i], value);
        }
        if (format == 0)
            body += end;
    }

    void addValue(int type, int value)
    {
        if (format == 0)
        {
            body += std::to_string(value) + (rng() % 5 == 0 ? "\t " : " ");
            return;
        }
        char aBytes[8];
        const float f = static_cast<float>(value);
        const double d = value;
        if (type == 6)
            std::memcpy(aBytes, &f, 4);
        else if (type == 7)
            std::memcpy(aBytes, &d, 8);
        else
            std::memcpy(aBytes, &value, 4);
        std::string bytes(aBytes, kTypes[type].size);
        if (format == 2)
            std::reverse(bytes.begin(), bytes.end());
        body += bytes;
    }

    std::mt19937 rng;
    int format = 0;
    int coordinateType = 6;
    std::string end;
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
        const TempFile file(".ply", ply.make());
        std::vector<Point3> vPoints;
        ASSERT_TRUE(readPly(file.c_str(), true, vPoints));
        ASSERT_EQ(ply.vVertices, vPoints);

        std::vector<Point3> vExpected;
        for (const std::vector<int>& vFace : ply.vFaces)
        {
            for (std::size_t i = 2; i < vFace.size(); ++i)
            {
                for (const std::size_t corner : {std::size_t{0}, i - 1, i})
                    vExpected.push_back(ply.vVertices[static_cast<std::size_t>(vFace[corner])]);
            }
        }
        std::vector<Point3> vCorners;
        ASSERT_TRUE(readPly(file.c_str(), false, vCorners));
        ASSERT_EQ(vExpected, vCorners);
    }
}

TEST(PlyTest, EveryCutIsNoticed)
{
    for (const bool bASCII : {true, false})
    {
        std::string content = (bASCII ? kAscii : kBinary) + kVertex3 + kFace1 + "end_header\n";
        content += bASCII ? kTriangle + "3 0 1 2" : std::string(36, '\0') + '\3' + std::string(12, '\0');
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
    const std::string face = kAscii + kVertex3 + kFace1 + "end_header\n" + kTriangle;
    const struct
    {
        const char* what;
        std::string content;
        const char* words;
    } rows[] = {
        {"no format", "ply\n" + kVertex3 + "end_header\n" + kTriangle, "format"},
        {"negative count", kAscii + "element vertex -3\n", "line 3"},
        {"element twice", kAscii + kVertex3 + kVertex3, "line 7"},
        {"unknown type", kAscii + "element vertex 3\nproperty real x\n", "line 4"},
        {"list counted in float", kAscii + "element face 3\nproperty list float int vertex_indices\n",
         "line 4"},
        {"endless line", kAscii + std::string(100000, 'x'), "line 3"},
        {"missing z", kAscii + "element vertex 1\nproperty float x\nproperty float y\nend_header\n1 2\n",
         "'z'"},
        {"indices with fraction",
         kAscii + kVertex3 + "element face 1\nproperty list int float vertex_indices\nend_header\n" +
             kTriangle + "3 0 1 2\n",
         "no integers"},
        {"index too large", face + "3 0 1 3\n", "vertex 3 of 3"},
        {"negative index", face + "3 0 1 -1\n", "of 3"},
        {"negative binary list",
         kBinary + kVertex3 + "element face 1\nproperty list char int vertex_indices\nend_header\n" +
             std::string(36, '\0') + "\x80",
         "does not fit"},
        {"count too large for the row", face + "4000000000 0 1 2\n", "line 13"},
        {"no number", kAscii + kVertex3 + kFace1 + "end_header\n0 0 0\n0,5 0 0\n0 0 0\n3 0 1 2\n",
         "line 11: '0,5'"},
        {"vertices beyond the file", kAscii + "element vertex 4000000000\n" + kXYZ + kFace1 + "end_header\n",
         "4000000000 rows"},
        {"vertices whose bytes wrap",
         kBinary + "element vertex 18446744073709551615\n" + kXYZ + kFace1 + "end_header\n" +
             std::string(48, '\0'),
         "rows of element 'vertex'"},
        {"other element beyond the file",
         kBinary + "element a 4000000000\nproperty list uint int b\n" + kVertex3 + kFace1 + "end_header\n",
         "'a'"},
        {"list beyond the file",
         kBinary + kVertex3 + "element face 1\nproperty list int int vertex_indices\nend_header\n" +
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
         kAscii + noise + "property int x\nproperty double z\nproperty float y\nend_header\n1 3 2\n\n4 6 5"},
        {"number forms", kAscii + noise + kXYZ + "end_header\n+1 2.0 .3e1 rest\n4 5e0 6\nrest"},
        {"row number in an integer",
         kAscii + noise + "property int i\n" + kXYZ + "end_header\n7 1 2 3\n8 4 5 6\n"},
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
    RandomPly ply(5);
    const std::string sound = ply.make();
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

TEST(PlyTest, PointsComeBackAsFloats)
{
    std::mt19937 rng(2);
    std::uniform_real_distribution<double> any(-1e6, 1e6);
    std::vector<Point3> vPoints;
    std::vector<Point3> vFloats;
    for (int i = 0; i < 5000; ++i)
    {
        vPoints.emplace_back(any(rng), any(rng) * 1e-20, any(rng) * 1e20);
        vFloats.emplace_back(static_cast<float>(vPoints[i].x()), static_cast<float>(vPoints[i].y()),
                             static_cast<float>(vPoints[i].z()));
    }
    for (const bool bASCII : {true, false})
    {
        TempFile file(".ply");
        const StreamCapture out;
        ASSERT_TRUE(writePoints_auto(file.path, vPoints, bASCII));
        EXPECT_EQ(bASCII, file.read().starts_with("ply\nformat ascii 1.0\n"));
        std::vector<Point3> vRead;
        ASSERT_TRUE(readPoints_auto(file.path, vRead));
        EXPECT_EQ(vFloats, vRead);
    }
}

} // namespace TARN_ZEF
