#include "zef_api_functions.h"

#include "core/definitions.h"
#include "helpers/StreamCapture.h"
#include "helpers/TempFile.h"
#include "helpers/dataDir.h"
#include "text/TextNumbers.h"
#include "text/TextWriter.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cfloat>
#include <cmath>
#include <cstring>
#include <functional>
#include <iostream>
#include <random>
#include <sstream>

namespace TARN_ZEF
{
namespace
{
// Equal bit for bit, so that NaN equals NaN and the sign of zero counts.
void expectSamePoints(const std::vector<Point3>& vA, const std::vector<Point3>& vB)
{
    const auto bits = [](const Point3& p) { return std::bit_cast<std::array<u64, 3>>(p); };
    ASSERT_EQ(vA.size(), vB.size());
    for (std::size_t i = 0; i < vA.size(); ++i)
        ASSERT_EQ(bits(vA[i]), bits(vB[i])) << "point " << i << ": " << vA[i] << " and " << vB[i];
}

// Doubles of any magnitude, denormal ones included, all finite.
[[nodiscard]] double anyFinite(std::mt19937_64& rng)
{
    for (;;)
    {
        const double d = std::bit_cast<double>(rng());
        if (std::isfinite(d))
            return d;
    }
}

// The judge of the text format: a stream of the standard library.
[[nodiscard]] std::vector<Point3> readByStream(const std::string& line)
{
    std::istringstream words(line);
    double x = 0.0, y = 0.0, z = 0.0;
    if (words >> x >> y >> z)
        return {Point3(x, y, z)};
    return {};
}

[[nodiscard]] std::string binContent(std::int32_t typ, std::uint64_t num, const std::vector<double>& vDoubles)
{
    std::string s(12 + 8 * vDoubles.size(), '\0');
    std::memcpy(s.data(), &typ, 4);
    std::memcpy(s.data() + 4, &num, 8);
    if (!vDoubles.empty())
        std::memcpy(s.data() + 12, vDoubles.data(), 8 * vDoubles.size());
    return s;
}

} // namespace

TEST(TextNumbersTest, LinesGiveThePointsThatAStreamExtracts)
{
    std::istringstream listed(
        "1 2 3| \t1\t\v2\f 3 \r|1. .5 -.5e1|1,2,3|1 2 3abc|1-2-3|1.2.3 4|nan 1 2|1 2 -inf|0x10 1 2|1 2 0x10|"
        "1 2 3e+x|1e 2 3|1e5.5 2|1 2 +-3|1 2 -.|1 2 .e5|1 2 5.e5|1 2 -1e999|4.9e-324 2e-324 2.5e-324|"
        "0e999999999999 1 2|1 2 1e99999999999999999999|1 2 1e-99999999999999999999|00012 -000.5 0000|"
        "1.7976931348623157e308 1.7976931348623159e308 1||1E5 1e+05 1e-05|1d5 2 3|\xEF\xBB\xBF"
        "1 2 3|"
        "123456789012345678901234567890 0.1234567890123456789012345 3");
    std::vector<std::string> vLines = {std::string("1 2\0 3", 6), std::string(400, '1') + "e-395 0." +
                                                                      std::string(400, '0') + "1e395 3"};
    for (std::string line; std::getline(listed, line, '|');)
        vLines.push_back(line);
    std::mt19937_64 rng(1);
    const std::string alphabet = "0123456789+-.eE \t\rxnaif,";
    for (int i = 0; i < 30000; ++i)
    {
        std::string line;
        for (std::size_t n = rng() % 24; n > 0; --n)
            line += alphabet[rng() % (rng() % 4 == 0 ? alphabet.size() : 17)];
        vLines.push_back(line);
    }
    for (int i = 0; i < 5000; ++i)
    {
        std::ostringstream os;
        os.precision(static_cast<std::streamsize>(1 + rng() % 19));
        os << anyFinite(rng) << " " << anyFinite(rng) << " " << anyFinite(rng);
        vLines.push_back(os.str());
    }
    for (const std::string& line : vLines)
    {
        SCOPED_TRACE("line [" + line + "]");
        const std::vector<Point3> vExpected = readByStream(line);
        Point3 point;
        ASSERT_EQ(!vExpected.empty(), extractPoint(line, point));
        if (!vExpected.empty())
            expectSamePoints(vExpected, {point});
    }
}

TEST(TextWriterTest, DigitsAreThoseOfAStream)
{
    std::mt19937_64 rng(2);
    std::vector<double> vValues = {0.0,          -0.0,          0.1,      1e5,      123456789.0, 1e15,
                                   1e16,         1e18,          1e-5,     DBL_MAX,  DBL_MIN,     5e-324,
                                   std::nan(""), -std::nan(""), INFINITY, -INFINITY};
    for (int i = 0; i < 20000; ++i)
        vValues.push_back(i % 2 == 0 ? anyFinite(rng) : std::ldexp(static_cast<double>(rng() % 100000), -8));
    for (const int precision : {10, 15, 18})
    {
        std::ostringstream expected;
        expected.precision(precision);
        std::ostringstream actual;
        TextWriter writer(actual, precision);
        for (const double value : vValues)
        {
            expected << value << "\n";
            writer.number(value);
            writer.text("\n");
        }
        writer.flush();
        EXPECT_EQ(expected.str(), actual.str());
    }
}

TEST(PointFilesTest, PointsComeBackExactlyFromPlyAsFloats)
{
    std::mt19937_64 rng(5);
    std::uniform_real_distribution<double> any(-1e6, 1e6);
    for (const char* extension : {".xyz", ".bin", ".ply"})
        for (const bool bASCII : {true, false})
        {
            const bool bPly = extension[1] == 'p';
            std::vector<Point3> vPoints;
            for (int i = 0; i < 5000; ++i)
                vPoints.emplace_back(any(rng), any(rng) * 1e-20, bPly ? any(rng) * 1e20 : anyFinite(rng));
            TempFile file(extension);
            const StreamCapture out;
            ASSERT_TRUE(writePoints_auto(file.path, vPoints, bASCII));
            EXPECT_EQ(bPly && bASCII, file.read().starts_with("ply\nformat ascii 1.0\n"));
            std::vector<Point3> vRead;
            ASSERT_TRUE(readPoints_auto(file.path, vRead));
            for (Point3& p : vPoints)
                if (bPly)
                    p.set(static_cast<float>(p.x()), static_cast<float>(p.y()), static_cast<float>(p.z()));
            expectSamePoints(vPoints, vRead);
        }
}

TEST(PointFilesTest, BinaryFilesThatAreShortOrOdd)
{
    const struct
    {
        const char* what;
        std::string content;
        bool bOK;
        std::vector<Point3> vExpected;
        const char* found = nullptr; // of a file that is read in part, what the warning says
    } rows[] = {
        {"whole", binContent(30, 1, {1, 2, 3}), true, {{1, 2, 3}}},
        {"bytes left over", binContent(30, 1, {1, 2, 3, 4}), true, {{1, 2, 3}}},
        {"two coordinates", binContent(20, 2, {1, 2, 3, 4}), true, {{1, 2, 0}, {3, 4, 0}}},
        {"short by a point and a half",
         binContent(30, 3, {1, 2, 3, 4, 5}),
         true,
         {{1, 2, 3}, {4, 5, 0}, {}},
         "counts 3 points and holds only 1"},
        {"cut within a double",
         binContent(30, 2, {1, 2, 3, 4, 5}).substr(0, 49),
         true,
         {{1, 2, 3}, {4, 0, 0}},
         "counts 2 points and holds only 1"},
        {"cut within the count", binContent(30, 1, {}).substr(0, 9), true, {}},
        {"cut within the type", std::string("\x1E\0", 2), false, {}},
        {"other type", binContent(40, 1, {1, 2, 3}), false, {}},
        {"count without points", binContent(30, 33'000'000, {}) + '\0', false, {}},
        {"count beyond 2^31", binContent(30, u64{1} << 31, {1, 2, 3}), false, {}},
        {"count that wraps", binContent(30, ~u64{0} / 24 + 2, {1, 2, 3}), false, {}},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.what);
        const TempFile file(".bin", row.content);
        const StreamCapture out;
        std::vector<Point3> vPoints = {Point3(7, 7, 7)};
        EXPECT_EQ(row.bOK, readPoints_BIN(file.c_str(), vPoints));
        const bool bWhole = row.bOK && row.found == nullptr;
        EXPECT_EQ(bWhole, !out.contains(file.path));
        EXPECT_TRUE(row.found == nullptr || out.contains(row.found));
        std::vector<Point3> vExpected = row.vExpected;
        vExpected.insert(vExpected.begin(), Point3(7, 7, 7));
        expectSamePoints(vExpected, vPoints);
    }
}

TEST(PointFilesTest, FailuresTellTheFileAndAppendNothing)
{
    std::string missing = "/nonexistent/folder/a";
    std::vector<Point3> vPoints = {Point3(1, 2, 3)};
    const std::function<bool(const std::string&)> calls[] = {
        [&](const std::string& name) { return readPoints_ASCII(name.c_str(), vPoints); },
        [&](const std::string& name) { return readPoints_BIN(name.c_str(), vPoints); },
        [&](const std::string& name) { return readSTL_ASCII(name.c_str(), vPoints); },
        [&](const std::string& name) { return readPly(name.c_str(), true, vPoints); },
        [&](const std::string& name) { return writePoints_ASCII(name.c_str(), vPoints); },
        [&](const std::string& name) { return writePoints_BIN(name.c_str(), vPoints); },
        [&](const std::string& name) { return writePointsPly(name, vPoints, true); },
        [&](std::string name) { return readPoints_auto(name += ".doc", vPoints); },
        [&](std::string name) { return readPoints_auto(name += ".stl", vPoints); },
    };
    for (const auto& call : calls)
    {
        SCOPED_TRACE(&call - calls);
        const StreamCapture out;
        const StreamCapture err(std::cerr);
        EXPECT_FALSE(call(missing));
        EXPECT_TRUE(out.contains(missing) || err.contains(missing)) << out.text() << err.text();
        EXPECT_EQ(1U, vPoints.size());
    }
    EXPECT_FALSE(calls[0]("/"));
}

TEST(PointFilesTest, FullDiskIsReported)
{
    if (!std::filesystem::exists("/dev/full"))
        return;
    std::vector<Point3> vPoints = {Point3(1, 2, 3)}; // fits every buffer: only the closing fails
    const StreamCapture out;
    const StreamCapture err(std::cerr);
    EXPECT_FALSE(writePoints_ASCII("/dev/full", vPoints));
    EXPECT_FALSE(writePoints_BIN("/dev/full", vPoints));
    EXPECT_FALSE(writePointsPly("/dev/full", vPoints, true));
    EXPECT_FALSE(writePointsPly("/dev/full", vPoints, false));
}

// Texts as they come: lines that start with three numbers give points, and what gives none is told unless it belongs
// into such a text.
TEST(PointFilesTest, TextsGiveTheirPointsAndTellWhatGivesNone)
{
    const std::string blanks(5000, '\n');
    const struct
    {
        const char* what;
        std::string content;
        std::size_t numPoints;
        const char* told; // nullptr: nothing at all
    } rows[] = {
        {"three columns", "1 2 3\n4 5 6\n", 2, nullptr},
        {"intensity", "1 2 3 0.5\n4 5 6 0.25\n", 2, nullptr},
        {"colors", "1 2 3 255 0 7\n4 5 6 1 2 3\n", 2, nullptr},
        {"intensity and colors", "1 2 3 0.5 255 0 7\n4 5 6 -3 1 2 3\n", 2, nullptr},
        {"header", "x y z\n1 2 3\n4 5 6\n", 2, nullptr},
        {"count", "2\n1 2 3\n4 5 6\n", 2, nullptr},
        {"comments", "# made\n// x y z\n1 2 3\n# middle\n4 5 6\n", 2, nullptr},
        {"tabs", "1\t2\t3\n\t4\t5\t6\n", 2, nullptr},
        {"line feed after carriage return", "1 2 3\r\n\r\n4 5 6\r\n", 2, nullptr},
        {"carriage returns alone", "1 2 3\r4 5 6\r", 2, nullptr},
        {"byte-order mark",
         "\xEF\xBB\xBF"
         "1 2 3\n4 5 6\n",
         2, nullptr},
        {"thousands of blank lines", "1 2 3\n" + blanks + "4 5 6" + blanks, 2, nullptr},
        {"semicolons", "1;2;3\n4;5;6\n", 0, "line 1, \"1;2;3\"; three numbers parted by blanks"},
        {"commas", "x,y,z\n1,2,3\n", 0, "line 2, \"1,2,3\"; three numbers parted by blanks"},
        {"decimal commas", "1,5 2,5 3,5\n", 0, "points as decimal signs"},
        {"a decimal comma", "1 2 3,5\n4 5 6\n", 2, "goes on with what is no number: 1, the first is line 1"},
        {"garbage", "1 2 3\nnothing\n4 5\n4 5 6\n", 2, "give no point: 2, the first is line 2, \"nothing\""},
        {"garbage after a header", "x y z\n\nnan 1 2\n1 2 3\n4 5 6\n", 2, "line 3"},
        {"two bytes a letter",
         std::string("\xFF\xFE"
                     "1\0 \0",
                     6),
         0, "two bytes a letter"},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.what);
        const TempFile file(".xyz", row.content);
        const StreamCapture out;
        std::vector<Point3> vPoints;
        EXPECT_TRUE(readPoints_ASCII(file.c_str(), vPoints));
        EXPECT_EQ(row.numPoints, vPoints.size());
        if (row.numPoints == 2)
            expectSamePoints({Point3(1, 2, 3), Point3(4, 5, 6)}, vPoints);
        if (row.told == nullptr)
            EXPECT_EQ("", out.text());
        else
            EXPECT_TRUE(out.contains(file.path) && out.contains(row.told)) << out.text();
    }
}

TEST(StlTest, FacetsAreTakenOrTheFileIsRefused)
{
    const std::string facet = "facet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex 0 1 0\n";
    const std::string whole = facet + "endloop\nendfacet\n";
    std::string binary(84 + 50, 'x');
    std::memcpy(binary.data() + 80, "\1\0\0\0", 4);
    std::string crlf;
    for (const char c : whole)
        crlf += c == '\n' ? std::string(" \r\n\t ") : std::string(1, c);
    const struct
    {
        const char* what;
        std::string content;
        int numTriangles;           // -1: refused
        const char* told = nullptr; // in the message, with the name of the file; refusals always have one
    } rows[] = {
        {"nothing", "", 0},
        {"no facets", "solid a\nendsolid a\n", 0},
        {"two solids, no ends", "solid a\n" + whole + "solid b\n" + whole, 2},
        {"blanks around, CRLF", "  solid a\r\n\t " + crlf, 1},
        {"keyword in the name", "solid vertex outer loop\n" + whole, 1},
        {"normal that is no number", "solid\nfacet normal NaN NaN NaN\n" + whole, 1},
        {"ends after the third corner", "solid\n" + facet, 1},
        {"next facet ends the first", "solid\n" + facet + whole, 2},
        {"corners outside facets", "solid\nvertex 9 9 9\n" + whole + "vertex 9 9 9\n", 1},
        {"four corners", "solid\n" + facet + "vertex 5 5 5\nendloop\n" + whole, -1},
        {"two corners", "solid\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nendloop\n" + whole, -1,
         "line 5: a facet with 2 corners\n"},
        {"capitals only", "SOLID\nOUTER LOOP\nVERTEX 0 0 0\nVERTEX 1 0 0\nVERTEX 0 1 0\nENDLOOP\n", -1,
         "count in small letters only; readTriangles()"},
        {"words with a capital", "Solid\nsolid\nOuter Loop\nVertex 0 0 0\n", 0, "but line 4 holds a vertex"},
        {"corner that is not finite",
         "solid\nouter loop\nvertex 0 0 0\nvertex nan 0 0\nvertex 0 1 0\nendloop\n" + whole, 1,
         "not finite: 1, the first ends in line 6"},
        {"cut within a facet", "solid\n" + whole + "outer loop\nvertex 0 0 0\n", -1},
        {"corner of two numbers", "solid\nouter loop\nvertex 0 0\n", -1, "line 3: a vertex without three"},
        {"other text", "ply\nformat ascii 1.0\n", -1},
        {"binary by its size", binary, -1, "binary STL is not supported; readTriangles()"},
        {"binary by its bytes", "solid a" + std::string(100, '\0'), -1},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.what);
        const TempFile file(".stl", row.content);
        const StreamCapture out;
        std::vector<Point3> vCorners(3);
        EXPECT_EQ(row.numTriangles >= 0, readSTL_ASCII(file.c_str(), vCorners));
        EXPECT_EQ(row.numTriangles < 0 || row.told != nullptr, out.contains(file.path));
        EXPECT_TRUE(row.told == nullptr || out.contains(row.told)) << out.text();
        EXPECT_EQ(3 + 3 * static_cast<std::size_t>(std::max(0, row.numTriangles)), vCorners.size());
        for (std::size_t i = 3; i < vCorners.size(); i += 3)
            EXPECT_EQ(Point3(1, 0, 0), vCorners[i + 1]);
    }
}

// Each row of the table of expected results: a count, "refuse", or several answers divided by "/".
TEST(PointFilesTest, RealFilesGiveWhatTheirTableTells)
{
    if (dataDir().empty())
        return;
    std::ifstream table(dataDir() + "/files/expected.tsv");
    std::string line;
    std::getline(table, line);
    int numRows = 0;
    for (; std::getline(table, line); ++numRows)
    {
        std::istringstream fields(line);
        std::string name;
        std::string aExpected[2];
        fields >> name >> aExpected[0] >> aExpected[1];
        SCOPED_TRACE(name);
        std::string path = dataDir() + "/files/" + name;
        const StreamCapture out;
        for (const bool bTriangles : {false, true})
        {
            if (aExpected[bTriangles] == "-")
                continue;
            std::vector<Point3> vPoints;
            const bool bOK = !bTriangles                   ? readPoints_auto(path, vPoints)
                             : getFileType(path) == FT_STL ? readSTL_ASCII(path.c_str(), vPoints)
                                                           : readPly(path.c_str(), false, vPoints);
            const std::string answer =
                bOK ? std::to_string(vPoints.size() / (bTriangles ? 3 : 1)) : std::string("refuse");
            EXPECT_NE(std::string::npos, ("/" + aExpected[bTriangles] + "/").find("/" + answer + "/"))
                << answer << " is not in " << aExpected[bTriangles];
        }
    }
    EXPECT_GT(numRows, 40);
}

} // namespace TARN_ZEF
