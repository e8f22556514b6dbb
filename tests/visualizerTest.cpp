#include "Visualizer3.h"

#include "Calc.h"
#include "Segment3.h"
#include "ZefBugException.h"
#include "helpers/StreamCapture.h"
#include "helpers/TempFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <functional>
#include <iostream>
#include <set>
#include <sstream>
#include <utility>

namespace TARN_ZEF
{
namespace
{
// The words of a scene with one object, without the list around it.
[[nodiscard]] std::string writeScene(const std::function<void(Visualizer3&)>& write,
                                     const Calc* pCalc = nullptr)
{
    const TempFile file(".list");
    {
        const StreamCapture out(std::cout);
        Visualizer3 scene(file.path, pCalc, true);
        write(scene);
    }
    std::istringstream words(file.read());
    std::string all;
    for (std::string word; words >> word;)
        all += (all.empty() ? "" : " ") + word;
    EXPECT_TRUE(all.starts_with("LIST { ") && all.ends_with("}")) << all;
    return all.size() < 9 ? "" : all.substr(7, all.size() - 9);
}

} // namespace

TEST(Visualizer3Test, ObjectsHaveTheFormOfTheViewer)
{
    const Calc calc(0.0, 0.0, 0.0, 16.0, 16.0, 16.0, 4);
    const CCD ccd = calc.getCCD(Point3(2.5, 3.5, 4.5));
    const Point3 a(0, 0, 0);
    const Point3 b(1, 0, 0.1);
    const Point3 c(0, 1, 1e-20);
    std::vector<Point3> vPoints = {a, b, c};
    std::vector<Point3*> vShared = {&vPoints[0], &vPoints[1], &vPoints[2],
                                    &vPoints[0], &vPoints[2], &vPoints[1]};
    const std::string segment = "{ appearance{linewidth 2} VECT 1 2 1 2 1 0 0 0 1 0 0.1 1 0 0 0.5 }";
    const struct
    {
        const char* what;
        std::function<void(Visualizer3&)> write;
        std::string expected;
    } rows[] = {
        {"one point", [&](Visualizer3& s) { s.writePoint(a, 10, CRED); },
         "{ appearance{linewidth 10} VECT 1 1 1 1 1 0 0 0 1 0 0 0.5 }"},
        {"points", [&](Visualizer3& s) { s.writePoints(vPoints, 3, CGREEN); },
         "{ appearance{linewidth 3} VECT 3 3 1 1 1 1 1 0 0 0 0 0 1 0 0.1 0 1 1e-20 0 1 0 0.5 }"},
        {"cell", [&](Visualizer3& s) { s.writePoints(std::vector<CCD>{ccd}, 1, CRED); },
         "{ appearance{linewidth 1} VECT 1 1 1 1 1 2.5 3.5 4.5 1 0 0 0.5 }"},
        {"packed cell", [&](Visualizer3& s) { s.writeRCD(makeRCD(2, 3, 4), 1, CRED); },
         "{ appearance{linewidth 1} VECT 1 1 1 1 1 2.5 3.5 4.5 1 0 0 0.5 }"},
        {"segment", [&](Visualizer3& s) { s.writeSegment(a, b, 2, CRED); }, segment},
        {"list of a segment",
         [&](Visualizer3& s) {
             s.writeSegments(std::vector<Segment3>{{a, b}}, 2, CRED);
         },
         segment},
        {"two segments",
         [&](Visualizer3& s) {
             s.writeSegments(std::vector<Point3>{a, c, c, a}, 2, CRED);
         },
         "{ appearance{linewidth 2} VECT 2 4 1 2 2 1 0 0 0 0 0 1 1e-20 0 1 1e-20 0 0 0 1 0 0 0.5 }"},
        {"triangle", [&](Visualizer3& s) { s.writeTriangle(a, b, c, CRED); },
         "{ OFF 3 1 0 0 0 0 1 0 0.1 0 1 1e-20 3 0 1 2 1 0 0 0.5 }"},
        {"shared corners", [&](Visualizer3& s) { s.writeTriangles(vShared, CRED); },
         "{ OFF 3 2 0 0 0 0 1 0 0.1 0 1 1e-20 3 0 1 2 1 0 0 0.5 3 0 2 1 1 0 0 0.5 }"},
        {"nothing", [&](Visualizer3& s) { s.writePoints(std::vector<Point3>(), 3, CGREEN); }, ""},
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.expected, writeScene(row.write, &calc)) << row.what;
}

TEST(Visualizer3Test, CubesCloseAroundTheirCells)
{
    const Calc calc(0.0, 0.0, 0.0, 16.0, 16.0, 16.0, 4);
    const CCD ccd = calc.getCCD(Point3(2.5, 3.5, 4.5));
    const std::string scene = writeScene([ccd](Visualizer3& s) { s.writeCbs({ccd, ccd}, CRED); }, &calc);
    const std::string head = "{ appearance { +edge material { backdiffuse .151 .0 .2 } } OFF 16 12 0 ";
    ASSERT_TRUE(scene.starts_with(head)) << scene;
    std::istringstream words(scene.substr(head.size()));
    std::vector<Point3> vCorners;
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
    while (vCorners.size() < 16 && words >> x >> y >> z)
        vCorners.emplace_back(x, y, z);
    // Each face lies in a plane of the cell, and each edge of the cube belongs to two faces.
    std::multiset<std::pair<std::size_t, std::size_t>> sEdges;
    for (int face = 0; face < 12; ++face)
    {
        std::size_t n = 0;
        std::size_t aIndex[4] = {0, 0, 0, 0};
        std::string colour;
        words >> n >> aIndex[0] >> aIndex[1] >> aIndex[2] >> aIndex[3];
        for (int i = 0; i < 4; ++i)
            words >> colour;
        ASSERT_EQ(4U, n);
        for (std::size_t i = 0; i < 4; ++i)
        {
            const std::size_t from = aIndex[i];
            const std::size_t to = aIndex[(i + 1) % 4];
            EXPECT_EQ(from / 8, static_cast<std::size_t>(face) / 6);
            EXPECT_EQ(1.0, (vCorners.at(from) - vCorners.at(to)).length());
            sEdges.insert(std::minmax(from, to));
        }
    }
    for (const auto& edge : sEdges)
        EXPECT_EQ(2U, sEdges.count(edge));
    EXPECT_EQ(48U, sEdges.size());
    for (const Point3& corner : vCorners)
        EXPECT_NEAR(std::sqrt(0.75), (corner - Point3(2.5, 3.5, 4.5)).length(), 1e-12);
}

TEST(Visualizer3Test, RefusalsAndFailures)
{
    const TempFile file(".list");
    {
        const StreamCapture out(std::cout);
        EXPECT_THROW(Visualizer3(file.path, nullptr, false), ZefBugException);
        EXPECT_TRUE(out.contains("Unauthorized write of " + file.path));
        EXPECT_TRUE(out.contains("Condition [ bAuthorized failed ]"));
        EXPECT_FALSE(std::filesystem::exists(file.path));
    }
    {
        const StreamCapture out(std::cout);
        Visualizer3 scene("/nonexistent/folder/a.list", nullptr, true);
        EXPECT_FALSE(scene.isOpen());
        EXPECT_FALSE(scene.finish());
        EXPECT_TRUE(
            out.contains("Visualizer3::openFile(), WARNING: /nonexistent/folder/a.list not writeable"));
    }
    const StreamCapture out(std::cout);
    Visualizer3 scene(file.path, nullptr, true);
    EXPECT_THROW(scene.writePoint(CCD{0}, 1, CRED), ZefBugException);
    EXPECT_TRUE(out.contains("Condition [ pCalc!=0 failed ]"));
    EXPECT_THROW(scene.writeCbs8(std::vector<Point3>(7), CRED), ZefBugException);
    EXPECT_TRUE(out.contains("vPoints.size() must be a multiple of 8"));
    scene.writePoints(std::vector<Point3>(), 1, CRED);
    EXPECT_TRUE(out.contains("Visualizer3::writePoints: no points"));
}

TEST(Visualizer3Test, ColourCycleLeavesOutFour)
{
    std::set<std::string> sNames;
    std::string first = Visualizer3::getNextColorName();
    std::string name = first;
    do
    {
        sNames.insert(name);
        name = Visualizer3::getNextColorName();
    } while (name != first);
    EXPECT_EQ(23U, sNames.size());
    for (const char* hidden : {"CBLACK", "CPURPLE", "CLIGHTGRAY", "CWHITE", "CUNKNOWN"})
        EXPECT_EQ(0U, sNames.count(hidden)) << hidden;
    EXPECT_EQ("CUNKNOWN", getColorName(27));
    EXPECT_EQ("CUNKNOWN", getColorName(-1));
    EXPECT_EQ("0.60\t0.98 0.60 0.5", getColor(20));
}

} // namespace TARN_ZEF
