#include "zef_formats.h"

#include "checkMesh.h"
#include "formats/Format.h"
#include "formats/lzf.h"
#include "formats/polygons.h"
#include "helpers/StreamCapture.h"
#include "helpers/TempFile.h"
#include "helpers/dataDir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <fstream>
#include <map>
#include <random>
#include <set>
#include <sstream>

namespace TARN_ZEF
{
namespace
{
// The reason of a refusal, or "" if the call went well.
template <class Call>
[[nodiscard]] std::string refusalOf(Call call)
{
    const StreamCapture quiet;
    try
    {
        call();
        return {};
    }
    catch (const ZefBadFile& bad)
    {
        return bad.what();
    }
}

[[nodiscard]] std::string refusalOfPoints(const std::string& path)
{
    return refusalOf([&] { static_cast<void>(readPoints(path)); });
}

[[nodiscard]] PointData pointsOf(const std::string& content, const std::string& extension = ".txt",
                                 const ReadOptions& options = {})
{
    return readPoints(TempFile(extension, content).path, options);
}

[[nodiscard]] ReadOptions columnsAre(const char* columns)
{
    ReadOptions options;
    options.columns = columns;
    return options;
}

[[nodiscard]] PointData somePoints(bool bAttributes)
{
    std::mt19937_64 rng(3);
    PointData data;
    for (int i = 0; i < 200; ++i)
    {
        const auto some = [&rng] { return static_cast<double>(rng() % 4000001) / 1000.0 - 2000.0; };
        data.vPoints.emplace_back(some() + 500000.0, some() + 5800000.0, some());
        if (!bAttributes)
            continue;
        data.vNormals.emplace_back(0.0, i % 2 == 0 ? 0.6 : -0.6, 0.8);
        data.vColors.push_back({static_cast<std::uint8_t>(i), static_cast<std::uint8_t>(255 - i), 7});
        data.vIntensities.push_back(i % 100);
    }
    return data;
}

// A tetrahedron whose coordinates floats hold.
[[nodiscard]] TriangleData someTriangles()
{
    TriangleData data;
    data.vPoints = {{0, 0, 0}, {1, 0, 0.5}, {0, 1, 0.25}, {0, 0.125, -3}};
    data.vCorners = {0, 1, 2, 0, 3, 1, 1, 3, 2, 2, 3, 0};
    return data;
}

[[nodiscard]] std::vector<Point3> cornersOf(const TriangleData& data)
{
    std::vector<Point3> vCorners;
    for (const std::uint32_t corner : data.vCorners)
        vCorners.push_back(data.vPoints[corner]);
    return vCorners;
}

struct Expected
{
    std::string file, points, triangles, box;
};

[[nodiscard]] std::vector<Expected> readExpected(const std::string& dir)
{
    std::ifstream file(dir + "expected.tsv");
    std::vector<Expected> vRows;
    std::string line;
    std::getline(file, line);
    while (std::getline(file, line))
    {
        std::istringstream fields(line);
        Expected row;
        std::getline(fields, row.file, '\t');
        std::getline(fields, row.points, '\t');
        std::getline(fields, row.triangles, '\t');
        std::getline(fields, row.box, '\t');
        vRows.push_back(row);
    }
    return vRows;
}

// To the seven digits that the table has.
void expectBox(const std::vector<Point3>& vPoints, const std::string& box)
{
    std::istringstream numbers(box);
    double aBox[6];
    for (double& value : aBox)
    {
        if (!(numbers >> value))
            return;
    }
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        double low = INFINITY;
        double high = -INFINITY;
        for (const Point3& p : vPoints)
        {
            const double aXYZ[3] = {p.x(), p.y(), p.z()};
            low = std::fmin(low, aXYZ[axis]);
            high = std::fmax(high, aXYZ[axis]);
        }
        EXPECT_NEAR(low, aBox[axis], 1e-6 * std::fabs(aBox[axis]));
        EXPECT_NEAR(high, aBox[axis + 3], 1e-6 * std::fabs(aBox[axis + 3]));
    }
}

} // namespace

TEST(Formats, FilesOfOtherProgramsAreReadAsExpected)
{
    const std::string dir = dataDir() + "/formats/";
    const std::map<std::string, std::string> refused = {
        {"simple.laz", "laszip"}, {"no_vertex.obj", "no vertices"}, {"obj_empty.obj", "no vertices"}};
    for (const Expected& row : readExpected(dir))
    {
        SCOPED_TRACE(row.file);
        const auto isRefused = refused.find(row.file);
        if (isRefused != refused.end())
        {
            EXPECT_NE(refusalOfPoints(dir + row.file).find(isRefused->second), std::string::npos)
                << refusalOfPoints(dir + row.file);
            continue;
        }
        if (row.points != "-")
        {
            const PointData data = readPoints(dir + row.file);
            EXPECT_EQ(std::to_string(data.vPoints.size()), row.points);
            // Its header names longitude, latitude and elevation, columns 4 to 6; their box is from awk.
            const bool bNamed = row.file == "ilvis2.txt";
            expectBox(data.vPoints,
                      bNamed ? "101.215096 78.307512 1956.292 301.215410 78.307673 1956.583" : row.box);
            EXPECT_EQ(data.vPoints.empty(), row.points == "0");
        }
        if (row.triangles != "-")
        {
            const TriangleData data = readTriangles(dir + row.file);
            EXPECT_EQ(std::to_string(data.vCorners.size() / 3), row.triangles);
            expectBox(data.vPoints, row.box);
            EXPECT_EQ(data.vCorners.empty(),
                      !data.vNotes.empty() && data.vNotes.back() == "the file holds no triangles");
        }
    }
}

TEST(Formats, PointsComeBackAsTheyWereWritten)
{
    for (const bool bAttributes : {false, true})
    {
        const PointData data = somePoints(bAttributes);
        for (const Format* pFormat : getFormats())
        {
            for (const WriteOptions& form :
                 {WriteOptions{}, WriteOptions{.bASCII = true}, WriteOptions{.bCompressed = true}})
            {
                if (pFormat->writePoints == nullptr)
                    continue;
                SCOPED_TRACE(std::string(pFormat->name) + (form.bASCII ? " ASCII" : "") +
                             (form.bCompressed ? " compressed" : "") + (bAttributes ? " more" : ""));
                const TempFile file(std::string(pFormat->extensions.substr(0, 4)));
                writePoints(file.path, data, form);
                const PointData read = readPoints(file.path);
                EXPECT_EQ(read.format, pFormat->name);
                ASSERT_EQ(read.vPoints.size(), data.vPoints.size());
                for (std::size_t i = 0; i < data.vPoints.size(); ++i)
                {
                    // LAS counts in steps.
                    const double step = pFormat == &LAS_FORMAT ? 1e-6 : 0.0;
                    EXPECT_LE((read.vPoints[i] - data.vPoints[i]).length(), step);
                }
                EXPECT_TRUE(read.vColors.empty() || read.vColors == data.vColors);
                EXPECT_TRUE(!bAttributes || read.vIntensities.empty() ||
                            read.vIntensities == data.vIntensities);
                const std::set<std::string_view> keepNormals = {"PLY", "PCD", "OFF", "text"};
                EXPECT_EQ(!read.vNormals.empty(), bAttributes && keepNormals.count(pFormat->name) > 0);
                EXPECT_EQ(!read.vColors.empty(), bAttributes && pFormat != &BIN_FORMAT);
            }
        }
    }
}

// Noise, repetitions of every length and distance, and both together, to the limits of what a copy can tell.
TEST(Lzf, whatWasPackedIsUnpacked)
{
    std::mt19937 rng(5);
    std::vector<std::string> texts = {"", "a", "ab", "abc", std::string(100000, 'x')};
    for (const std::size_t distance : {1u, 2u, 3u, 31u, 32u, 33u, 255u, 256u, 257u, 8191u, 8192u, 8193u})
        for (const std::size_t num : {2u, 3u, 8u, 9u, 263u, 264u, 265u, 1000u})
        {
            std::string text;
            for (std::size_t i = 0; i < distance; ++i)
                text.push_back(static_cast<char>(rng()));
            for (std::size_t i = 0; i < num; ++i)
                text.push_back(text[text.size() - distance]);
            texts.push_back(text + "end");
        }
    for (const std::string& text : texts)
    {
        const std::string packed = packLzf(text);
        EXPECT_LE(packed.size(), text.size() + text.size() / 30 + 1);
        std::string unpacked;
        EXPECT_TRUE(unpackLzf(packed, text.size(), unpacked)) << text.size();
        EXPECT_TRUE(unpacked == text) << text.size();
    }
    EXPECT_LT(packLzf(texts[4]).size(), 2000u);
}

TEST(Formats, TrianglesComeBackAsTheyWereWritten)
{
    const TriangleData data = someTriangles();
    for (const Format* pFormat : getFormats())
    {
        for (const bool bASCII : {false, true})
        {
            if (pFormat->writeTriangles == nullptr)
                continue;
            SCOPED_TRACE(std::string(pFormat->name) + (bASCII ? " ASCII" : ""));
            const TempFile file(std::string(pFormat->extensions.substr(0, 4)));
            writeTriangles(file.path, data, {.bASCII = bASCII});
            EXPECT_TRUE(holdsTriangles(file.path));
            EXPECT_EQ(cornersOf(readTriangles(file.path)), cornersOf(data));
        }
    }
    const std::shared_ptr<Mesh> pMesh = makeMesh(data);
    EXPECT_TRUE(checkMesh(*pMesh).isSound());
}

// Faces of any number of corners, none among them, in the first place and in the last.
TEST(Formats, PlyFacesOfAnySizeAreCutOrLeftOut)
{
    const std::string head = "ply\nformat ascii 1.0\nelement vertex 4\nproperty float x\nproperty float y\n"
                             "property float z\nelement face ";
    const std::string vertices =
        "\nproperty list uchar int vertex_indices\nend_header\n0 0 0\n1 0 0\n1 1 0\n0 1 0\n";
    const struct
    {
        const char* faces;
        int numFaces;
        std::size_t numTriangles, numSkipped;
    } cases[] = {
        {"0\n", 1, 0, 1},
        {"0\n0\n0\n", 3, 0, 3},
        {"3 0 1 2\n0\n", 2, 1, 1},
        {"0\n3 0 1 2\n", 2, 1, 1},
        {"2 0 1\n4 0 1 2 3\n3 0 1 2\n1 0\n", 4, 3, 2},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.faces);
        const TriangleData data =
            readTriangles(TempFile(".ply", head + std::to_string(c.numFaces) + vertices + c.faces).path);
        EXPECT_EQ(data.vCorners.size(), 3 * c.numTriangles);
        EXPECT_EQ(data.numSkipped, c.numSkipped);
    }
}

TEST(Formats, PointsAloneAreNoTriangles)
{
    for (const Format* pFormat : getFormats())
    {
        if (pFormat->writePoints == nullptr)
            continue;
        SCOPED_TRACE(std::string(pFormat->name));
        const TempFile file(std::string(pFormat->extensions.substr(0, 4)));
        writePoints(file.path, somePoints(false));
        EXPECT_FALSE(holdsTriangles(file.path));
    }
}

// No crash, and a reason with the name; a text may be whole at any line.
TEST(Formats, FilesCutAnywhereAreRefusedOrRead)
{
    PointData points = somePoints(true);
    points.vPoints.resize(4);
    points.vNormals.resize(4);
    points.vColors.resize(4);
    points.vIntensities.resize(4);
    for (const Format* pFormat : getFormats())
    {
        for (const bool bTriangles : {false, true})
        {
            if (bTriangles ? pFormat->writeTriangles == nullptr : pFormat->writePoints == nullptr)
                continue;
            const TempFile whole(std::string(pFormat->extensions.substr(0, 4)));
            bTriangles ? writeTriangles(whole.path, someTriangles()) : writePoints(whole.path, points);
            const std::string content = whole.read();
            const TempFile cut(std::string(pFormat->extensions.substr(0, 4)));
            for (std::size_t size = 0; size < content.size(); ++size)
            {
                SCOPED_TRACE(std::string(pFormat->name) + " of " + std::to_string(size) + " bytes");
                cut.write(content.substr(0, size));
                const std::string refusal = refusalOf(
                    [&]
                    {
                        if (bTriangles)
                            static_cast<void>(readTriangles(cut.path));
                        else
                            static_cast<void>(readPoints(cut.path));
                    });
                const bool bLines = pFormat == &OBJ_FORMAT || pFormat == &TEXT_FORMAT;
                const bool bCounted =
                    pFormat == &OFF_FORMAT || pFormat == &PTS_FORMAT || pFormat == &PTX_FORMAT;
                const bool bInLastLine = content.find('\n', size) >= content.size() - 1;
                // A record of LAS begins with the coordinates, and other programs cut the rest of the last one.
                const bool bInLastRecord = pFormat == &LAS_FORMAT && content.size() - size <= 14;
                EXPECT_TRUE(bLines || (bCounted && bInLastLine) || bInLastRecord || !refusal.empty());
                EXPECT_TRUE(refusal.empty() || refusal.starts_with(cut.path + ": ")) << refusal;
            }
        }
    }
}

// Any bytes behind a head that names the format, and heads with bytes changed: a reading or a refusal.
TEST(Formats, DamagedFilesEndInAReadingOrARefusal)
{
    std::mt19937_64 rng(5);
    for (const Format* pFormat : getFormats())
    {
        const TempFile file(std::string(pFormat->extensions.substr(0, 4)));
        const bool bTriangles = pFormat->writeTriangles != nullptr;
        bTriangles ? writeTriangles(file.path, someTriangles()) : writePoints(file.path, somePoints(true));
        const std::string content = file.read();
        for (int i = 0; i < 60; ++i)
        {
            std::string damaged = content;
            for (std::size_t n = 1 + rng() % 4; n > 0; --n)
                damaged[rng() % std::min<std::size_t>(damaged.size(), 700)] = static_cast<char>(rng());
            file.write(damaged);
            const std::string refusal = bTriangles
                                            ? refusalOf([&] { static_cast<void>(readTriangles(file.path)); })
                                            : refusalOfPoints(file.path);
            EXPECT_TRUE(refusal.empty() || refusal.starts_with(file.path)) << refusal;
        }
    }
}

struct TextCase
{
    const char* name;
    const char* content;
    std::size_t numPoints;
    std::uint64_t numSkipped;
    int attributes; // 1 intensity, 2 colors, 4 normals
};
const TextCase TEXTS[] = {
    {"plain", "1 2 3\n4 5 6\n", 2, 0, 0},
    {"old Mac line ends", "1 2 3\r4 5 6\r", 2, 0, 0},
    {"Windows line ends and tabs", "1\t2\t3\r\n4\t5\t6\r\n", 2, 0, 0},
    {"byte-order mark",
     "\xEF\xBB\xBF"
     "1 2 3\n",
     1, 0, 0},
    {"semicolons", "1;2;3\n4;5;6\n", 2, 0, 0},
    {"commas", "1,2,3\n4,5,6\n", 2, 0, 0},
    {"commas and blanks", "X, Y, Z\n1, 2, 3\n", 1, 0, 0},
    {"comments", "# a\n// b\n1 2 3\n\n\n# c\n4 5 6\n", 2, 0, 0},
    {"garbage is counted", "hello\n1 2 3\nworld\n4 5\n7 8 9\n", 2, 3, 0},
    {"not a number", "1 2 3\nnan nan nan\n", 1, 1, 0},
    {"intensity", "1 2 3 0.5\n4 5 6 17\n", 2, 0, 1},
    {"colors", "1 2 3 0 128 255\n4 5 6 1 2 3\n", 2, 0, 2},
    {"normals", "1 2 3 0 0.6 0.8\n4 5 6 1 0 0.0\n", 2, 0, 4},
    {"intensity and colors", "1 2 3 -500 0 128 255\n", 1, 0, 3},
    {"neither", "1 2 3 1000 2000 3000\n", 1, 0, 0},
    {"a row without them", "1 2 3 0 128 255\n4 5 6\n", 2, 0, 0},
};

TEST(TextColumns, AreFoundAsUsersExpect)
{
    for (const TextCase& c : TEXTS)
    {
        SCOPED_TRACE(c.name);
        const PointData data = pointsOf(c.content);
        ASSERT_EQ(data.vPoints.size(), c.numPoints);
        EXPECT_EQ(data.vPoints[0], Point3(1, 2, 3));
        EXPECT_EQ(data.numSkipped, c.numSkipped);
        EXPECT_EQ(c.numSkipped > 0,
                  !data.vNotes.empty() && data.vNotes.back().find("left out:") != std::string::npos);
        EXPECT_EQ((data.vIntensities.empty() ? 0 : 1) + (data.vColors.empty() ? 0 : 2) +
                      (data.vNormals.empty() ? 0 : 4),
                  c.attributes);
    }
}

TEST(TextColumns, CanBeNamed)
{
    const PointData data = pointsOf("9 3 1 2 77\n", ".txt", columnsAre("-,z,x,y,i"));
    ASSERT_EQ(data.vPoints.size(), 1u);
    EXPECT_EQ(data.vPoints[0], Point3(1, 2, 3));
    EXPECT_EQ(data.vIntensities, std::vector<double>{77.0});
    for (const char* wrong : {"x,y", "x,y,z,w", "x,x,y,z"})
        EXPECT_NE(refusalOf([&] { static_cast<void>(pointsOf("1 2 3 4\n", ".txt", columnsAre(wrong))); }), "")
            << wrong;
}

struct RefusalCase
{
    const char* name;
    const char* extension;
    const char* content;
    const char* reason;
};
const RefusalCase REFUSALS[] = {
    {"decimal commas", ".txt", "1,5 2,5 3,5\n", "line 1: commas stand for decimal points"},
    {"decimal commas and semicolons", ".csv", "1,5;2,5;3,5\n", "line 1: commas stand for decimal points"},
    {"no numbers", ".xyz", "hello\nworld\n", "line 1, \"hello\""},
    {"unknown by both", ".foo", "hello\n", "neither its first bytes nor its name"},
    {"triangles only", ".txt", "solid a\nendsolid a\n", "format STL, from which no points"},
    {"bad vertex", ".obj", "v 1 2 3\nv 1 2 x\n", "line 2: a vertex wants three numbers"},
    {"empty", ".ply", "", "the file is empty"},
    {"missing field", ".pcd", "FIELDS x y\nSIZE 4 4\nTYPE F F\nCOUNT 1 1\nPOINTS 1\nDATA ascii\n1 2\n",
     "have no z"},
    {"four dimensions", ".off", "4OFF\n1 0 0\n1 2 3 4\n", "line 1: found \"4OFF\""},
};

TEST(Formats, RefusalsTellThePlaceAndTheWayOut)
{
    for (const RefusalCase& c : REFUSALS)
    {
        SCOPED_TRACE(c.name);
        const TempFile file(c.extension, c.content);
        const std::string refusal = refusalOfPoints(file.path);
        EXPECT_NE(refusal.find(c.reason), std::string::npos) << refusal;
    }
    const TempFile face(".obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 4\n");
    EXPECT_NE(
        refusalOf([&] { static_cast<void>(readTriangles(face.path)); }).find("line 4: a face names vertex 4"),
        std::string::npos);
    // The line counts across faces of other sizes, blank lines and faces of too few corners.
    const TempFile faces(
        ".obj", "f 1 2 3\nv 0 0 0\nv 1 0 0\nv 0 1 0\nv 1 1 0\nf 1 2 4 3\nf 1 2\n\nf 2 4 3\nf 2 4 5\n");
    EXPECT_NE(refusalOf([&] { static_cast<void>(readTriangles(faces.path)); })
                  .find("line 10: a face names vertex 5"),
              std::string::npos);
}

TEST(Formats, ContentCountsBeforeTheName)
{
    const TempFile file(".xyz");
    const TempFile obj(".obj");
    writePoints(obj.path, somePoints(false));
    file.write(obj.read());
    const PointData data = readPoints(file.path);
    EXPECT_EQ(data.format, "OBJ");
    EXPECT_EQ(data.vNotes, std::vector<std::string>{"the file is of the format OBJ in spite of its name"});
}

TEST(Formats, LasTakesReturnsAndClassesAsAsked)
{
    const TempFile file(".las");
    PointData data = somePoints(false);
    writePoints(file.path, data);
    std::string content = file.read();
    for (std::size_t i = 0; i < data.vPoints.size(); ++i)
    {
        content[227 + 20 * i + 14] = static_cast<char>(i % 2 == 0 ? 0x11 : 0x12); // first or second of two
        content[227 + 20 * i + 15] = static_cast<char>(i % 4 == 0 ? 2 : 7);
    }
    file.write(content);
    ReadOptions lastReturns;
    lastReturns.bLastReturns = true;
    ReadOptions ground;
    ground.vClasses = {2};
    EXPECT_EQ(readPoints(file.path, lastReturns).vPoints.size(), 100u);
    EXPECT_EQ(readPoints(file.path, ground).vPoints.size(), 50u);
    EXPECT_EQ(readPoints(file.path, ground).numSkipped, 150u);
}

// The triangles of a simple polygon have its area together, all turned as it is.
TEST(Polygons, ConcaveFacesKeepTheirArea)
{
    std::mt19937_64 rng(11);
    for (int round = 0; round < 300; ++round)
    {
        // A star with random radii is simple, however concave.
        const std::size_t n = 4 + rng() % 30;
        std::vector<Point3> vPoints;
        std::vector<std::uint32_t> vPolygon;
        double area = 0.0;
        for (std::size_t i = 0; i < n; ++i)
        {
            const double angle = 6.283185307179586 * static_cast<double>(i) / static_cast<double>(n);
            const double r = 0.05 + static_cast<double>(rng() % 1000) / 1000.0;
            vPoints.emplace_back(5.0, r * std::cos(angle), r * std::sin(angle));
            vPolygon.push_back(static_cast<std::uint32_t>(i));
        }
        const auto turn = [](const Point3& a, const Point3& b, const Point3& c)
        { return (b.y() - a.y()) * (c.z() - a.z()) - (b.z() - a.z()) * (c.y() - a.y()); };
        const Point3 centre(5, 0, 0);
        for (std::size_t i = 0; i < n; ++i)
            area += turn(centre, vPoints[i], vPoints[(i + 1) % n]);
        if (round % 2 == 1) // from the other side
            std::reverse(vPolygon.begin(), vPolygon.end());
        const double sign = round % 2 == 1 ? -1.0 : 1.0;
        std::vector<std::uint32_t> vCorners;
        appendPolygon(vPoints, vPolygon, vCorners);
        ASSERT_EQ(vCorners.size(), 3 * (n - 2));
        double sum = 0.0;
        for (std::size_t i = 0; i < vCorners.size(); i += 3)
        {
            const double each =
                sign * turn(vPoints[vCorners[i]], vPoints[vCorners[i + 1]], vPoints[vCorners[i + 2]]);
            EXPECT_GE(each, 0.0);
            sum += each;
        }
        EXPECT_NEAR(sum, area, 1e-12 * area);
    }
}

} // namespace TARN_ZEF
