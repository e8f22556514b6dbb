#include "helpers/StreamCapture.h"
#include "helpers/TempFile.h"
#include "helpers/finishedMeshes.h"
#include "helpers/meshShapes.h"
#include "zef_api_functions.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <sstream>

namespace TARN_ZEF
{
namespace
{
// A rough plane of num * num squares of which each third triangle is killed again.
std::shared_ptr<Mesh> makeSieve(int num)
{
    auto pRMesh = new RMesh(jittered(planeSource(num), 0.3, 1));
    for (std::size_t i = 0; i < pRMesh->getAllT().size(); i += 3)
        pRMesh->getAllT()[i]->kill(pRMesh);
    return std::make_shared<Mesh>(pRMesh);
}

// Finds the first line that starts with prefix, and gives the rest of it.
[[nodiscard]] std::string restOfLine(const std::string& text, const std::string& prefix)
{
    const std::size_t pos = ("\n" + text).find("\n" + prefix);
    if (pos == std::string::npos)
        return "missing";
    return text.substr(pos + prefix.size(), text.find('\n', pos) - pos - prefix.size());
}

} // namespace

TEST(MeshFilesTest, PlyHoldsTheAliveTrianglesInBothCrossedFormats)
{
    const std::shared_ptr<Mesh> pMesh = makeSieve(40);
    std::vector<Point3> vFloats;
    for (const Point3& p : getCorners(*pMesh))
        vFloats.emplace_back(static_cast<float>(p.x()), static_cast<float>(p.y()), static_cast<float>(p.z()));
    std::vector<Point3> vFirstUse;
    std::set<Point3> sSeen;
    for (const Point3& p : vFloats)
        if (sSeen.insert(p).second)
            vFirstUse.push_back(p);

    for (const bool bBIN : {true, false})
    {
        TempFile file(".ply");
        ASSERT_TRUE(bBIN ? pMesh->writePly_BIN(file.path) : pMesh->writePly_ASCII(file.path));
        const std::string content = file.read();
        EXPECT_EQ(bBIN ? "ascii 1.0" : "binary_little_endian 1.0", restOfLine(content, "format "));
        std::vector<Point3> vRead;
        ASSERT_TRUE(readPly(file.c_str(), false, vRead));
        EXPECT_EQ(vFloats, vRead);
        std::vector<Point3> vVertices;
        ASSERT_TRUE(readPly(file.c_str(), true, vVertices));
        EXPECT_EQ(vFirstUse, vVertices);
        EXPECT_EQ(bBIN, content.find("\n3 0 1 2\n") != std::string::npos);
    }
}

TEST(MeshFilesTest, StlHoldsCornersAndUnitNormals)
{
    const std::shared_ptr<Mesh> pMesh = makeSieve(20);
    RMesh& mesh = *pMesh->getRMesh();
    const auto at = [&](double x) { return mesh.getVertexAt(x, 0.0, 0.0, false); };
    mesh.createT(at(50), at(51), at(52)); // degenerate
    TempFile file(".stl");
    ASSERT_TRUE(pMesh->writeStl_ASCII(file.path));
    std::vector<Point3> vRead;
    ASSERT_TRUE(readSTL_ASCII(file.c_str(), vRead));
    const std::vector<Point3> vCorners = getCorners(*pMesh);
    ASSERT_EQ(vCorners.size(), vRead.size());
    for (std::size_t i = 0; i < vCorners.size(); ++i)
    {
        const double tolerance = 1e-9 * (1.0 + (vCorners[i] - Point3()).length());
        ASSERT_LE((vCorners[i] - vRead[i]).length(), tolerance);
    }

    std::istringstream lines(file.read());
    std::string line;
    std::getline(lines, line);
    std::size_t numNormals = 0;
    while (std::getline(lines, line) && line.starts_with("facet normal "))
    {
        double x = 0.0;
        double y = 0.0;
        double z = 0.0;
        std::istringstream(line.substr(13)) >> x >> y >> z;
        const Vector3 nv(x, y, z);
        const Point3* pCorner = &vCorners[3 * numNormals++];
        const bool bDegenerate = numNormals * 3 == vCorners.size();
        EXPECT_NEAR(bDegenerate ? 0.0 : 1.0, nv.length(), 1e-8);
        EXPECT_EQ(bDegenerate, nv.z() <= 0.0);
        EXPECT_NEAR(0.0, nv * (pCorner[1] - pCorner[0]), 1e-8);
        EXPECT_NEAR(0.0, nv * (pCorner[2] - pCorner[0]), 1e-8);
        for (int i = 0; i < 6; ++i)
            std::getline(lines, line);
    }
    EXPECT_EQ(vCorners.size(), 3 * numNormals);
}

TEST(MeshFilesTest, UnwritableTargetsAreReported)
{
    const std::shared_ptr<Mesh> pMesh = makeSieve(1);
    std::vector<std::string> vNames = {"/nonexistent/folder/a"};
    if (std::filesystem::exists("/dev/full"))
        vNames.emplace_back("/dev/full");
    for (const std::string& name : vNames)
        for (const auto pWrite :
             {&Mesh::writePly_BIN, &Mesh::writePly_ASCII, &Mesh::writeStl_ASCII, &Mesh::writeGeomview_ASCII})
        {
            const StreamCapture out;
            EXPECT_FALSE((*pMesh.*pWrite)(name));
            EXPECT_TRUE(out.contains(name));
        }
}

} // namespace TARN_ZEF
