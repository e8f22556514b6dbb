#include "Mesh.h"
#include "RMesh.h"
#include "helpers/LatticeMesh.h"
#include "helpers/StreamCapture.h"
#include "helpers/TempFile.h"
#include "zef_api_functions.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <memory>
#include <random>
#include <set>
#include <sstream>

namespace TARN_ZEF
{
namespace
{
// A mesh on real vertices of its own.
class MeshFilesTest : public ::testing::Test
{
protected:
    MeshFilesTest()
        : pRMesh(new RMesh(&lattice.mesh))
        , pMesh(std::make_shared<Mesh>(pRMesh))
    {
    }

    Point3* at(double x, double y, double z) { return pRMesh->getVertexAt(x, y, z, false); }

    // A grid of num * num squares with random heights; each third triangle is killed again.
    void addGrid(int num)
    {
        std::mt19937 rng(1);
        std::vector<double> vHeights;
        for (int i = 0; i <= num * (num + 1) + num; ++i)
            vHeights.push_back(static_cast<double>(rng()) / 1e9);
        const auto corner = [&](int x, int y)
        { return at(x / 3.0, y / 7.0, vHeights[static_cast<std::size_t>(x * (num + 1) + y)]); };
        for (int x = 0; x < num; ++x)
        {
            for (int y = 0; y < num; ++y)
            {
                pRMesh->createT(corner(x, y), corner(x + 1, y), corner(x + 1, y + 1));
                pRMesh->createT(corner(x, y), corner(x + 1, y + 1), corner(x, y + 1));
            }
        }
        for (std::size_t i = 0; i < pRMesh->getAllT().size(); i += 3)
            pRMesh->getAllT()[i]->kill(pRMesh);
    }

    [[nodiscard]] std::vector<Point3> getCorners() const
    {
        std::vector<Point3*> vPointers;
        pMesh->getTriangles(vPointers);
        std::vector<Point3> vCorners;
        for (const Point3* pCorner : vPointers)
            vCorners.push_back(*pCorner);
        return vCorners;
    }

    LatticeMesh lattice;
    RMesh* pRMesh; // owned by pMesh
    std::shared_ptr<Mesh> pMesh;
};

// Finds the first line that starts with prefix, and gives the rest of it.
[[nodiscard]] std::string restOfLine(const std::string& text, const std::string& prefix)
{
    const std::size_t pos = ("\n" + text).find("\n" + prefix);
    if (pos == std::string::npos)
        return "missing";
    return text.substr(pos + prefix.size(), text.find('\n', pos) - pos - prefix.size());
}

} // namespace

TEST_F(MeshFilesTest, PlyHoldsTheAliveTrianglesInBothCrossedFormats)
{
    addGrid(40);
    const std::vector<Point3> vCorners = getCorners();
    std::vector<Point3> vFloats;
    for (const Point3& p : vCorners)
        vFloats.emplace_back(static_cast<float>(p.x()), static_cast<float>(p.y()), static_cast<float>(p.z()));
    std::vector<Point3> vFirstUse;
    std::set<Point3> sSeen;
    for (const Point3& p : vFloats)
    {
        if (sSeen.insert(p).second)
            vFirstUse.push_back(p);
    }

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

TEST_F(MeshFilesTest, StlHoldsCornersAndUnitNormals)
{
    addGrid(20);
    pRMesh->createT(at(50, 0, 0), at(51, 0, 0), at(52, 0, 0)); // degenerate
    TempFile file(".stl");
    ASSERT_TRUE(pMesh->writeStl_ASCII(file.path));
    std::vector<Point3> vRead;
    ASSERT_TRUE(readSTL_ASCII(file.c_str(), vRead));
    const std::vector<Point3> vCorners = getCorners();
    ASSERT_EQ(vCorners.size(), vRead.size());
    for (std::size_t i = 0; i < vCorners.size(); ++i)
    {
        const double tolerance = 1e-9 * (1.0 + std::fabs(vCorners[i].z()));
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

TEST_F(MeshFilesTest, UnwritableTargetsAreReported)
{
    pRMesh->createT(at(0, 0, 0), at(1, 0, 0), at(0, 1, 0));
    std::vector<std::string> vNames = {"/nonexistent/folder/a"};
    if (std::filesystem::exists("/dev/full"))
        vNames.emplace_back("/dev/full");
    for (const std::string& name : vNames)
    {
        for (const auto pWrite :
             {&Mesh::writePly_BIN, &Mesh::writePly_ASCII, &Mesh::writeStl_ASCII, &Mesh::writeGeomview_ASCII})
        {
            const StreamCapture out;
            EXPECT_FALSE((*pMesh.*pWrite)(name));
            EXPECT_TRUE(out.contains(name));
        }
    }
}

} // namespace TARN_ZEF
