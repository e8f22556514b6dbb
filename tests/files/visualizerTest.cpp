#include "files/Visualizer3.h"

#include "ZefBugException.h"
#include "helpers/StreamCapture.h"
#include "helpers/TempFile.h"
#include "lattice/Calc.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <sstream>

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
        const StreamCapture out;
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
    const struct
    {
        const char* what;
        std::function<void(Visualizer3&)> write;
        std::string expected;
    } rows[] = {
        {"points", [&](Visualizer3& s) { s.writePoints(vPoints, 3, CGREEN); },
         "{ appearance{linewidth 3} VECT 3 3 1 1 1 1 1 0 0 0 0 0 1 0 0.1 0 1 1e-20 0 1 0 0.5 }"},
        {"cell", [&](Visualizer3& s) { s.writePoints(std::vector<CCD>{ccd}, 1, CRED); },
         "{ appearance{linewidth 1} VECT 1 1 1 1 1 2.5 3.5 4.5 1 0 0 0.5 }"},
        {"segment", [&](Visualizer3& s) { s.writeSegment(a, b, 2, CRED); },
         "{ appearance{linewidth 2} VECT 1 2 1 2 1 0 0 0 1 0 0.1 1 0 0 0.5 }"},
        {"triangle", [&](Visualizer3& s) { s.writeTriangle(a, b, c, CRED); },
         "{ OFF 3 1 0 0 0 0 1 0 0.1 0 1 1e-20 3 0 1 2 1 0 0 0.5 }"},
        {"shared corners", [&](Visualizer3& s) { s.writeTriangles(vShared, CRED); },
         "{ OFF 3 2 0 0 0 0 1 0 0.1 0 1 1e-20 3 0 1 2 1 0 0 0.5 3 0 2 1 1 0 0 0.5 }"},
        {"nothing", [&](Visualizer3& s) { s.writePoints(std::vector<Point3>(), 3, CGREEN); }, ""},
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.expected, writeScene(row.write, &calc)) << row.what;
}

TEST(Visualizer3Test, RefusalsAndFailures)
{
    const TempFile file(".list");
    const StreamCapture out;
    {
        EXPECT_THROW(Visualizer3(file.path, nullptr, false), ZefBugException);
        EXPECT_FALSE(std::filesystem::exists(file.path));
    }
    {
        Visualizer3 scene("/nonexistent/folder/a.list", nullptr, true);
        EXPECT_FALSE(scene.isOpen());
        EXPECT_FALSE(scene.finish());
    }
    Visualizer3 scene(file.path, nullptr, true);
    EXPECT_THROW(scene.writePoint(CCD{0}, 1, CRED), ZefBugException);
    EXPECT_THROW(scene.writeCbs8(std::vector<Point3>(7), CRED), ZefBugException);
}

} // namespace TARN_ZEF
