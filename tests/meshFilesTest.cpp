#include "Mesh.h"
#include "RMesh.h"
#include "helpers/LatticeMesh.h"
#include "helpers/StreamCapture.h"
#include "helpers/TempFile.h"
#include "zef_api_functions.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <iostream>
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
    EXPECT_EQ("solid - ZEF", line);
    std::size_t numNormals = 0;
    while (std::getline(lines, line) && line.starts_with("facet normal "))
    {
        double x = 0.0;
        double y = 0.0;
        double z = 0.0;
        std::istringstream(line.substr(13)) >> x >> y >> z;
        const Vector3 nv(x, y, z);
        const Point3* pCorner = &vCorners[3 * numNormals++];
        if (numNormals * 3 == vCorners.size())
        {
            EXPECT_TRUE(nv.isDegenerate());
        }
        else
        {
            EXPECT_NEAR(1.0, nv.length(), 1e-8);
            EXPECT_NEAR(0.0, nv * (pCorner[1] - pCorner[0]), 1e-8);
            EXPECT_NEAR(0.0, nv * (pCorner[2] - pCorner[0]), 1e-8);
            EXPECT_GT(nv.z(), 0.0);
        }
        for (int i = 0; i < 6; ++i)
            std::getline(lines, line);
    }
    EXPECT_EQ(vCorners.size(), 3 * numNormals);
    EXPECT_EQ("endsolid - ZEF", line);
}

TEST_F(MeshFilesTest, EmptyMeshGivesSoundFiles)
{
    TempFile stl(".stl");
    EXPECT_TRUE(writeMesh_auto(stl.path, pMesh, true));
    EXPECT_EQ("solid - ZEF\nendsolid - ZEF\n", stl.read());
    for (const bool bASCII : {true, false})
    {
        TempFile ply(".ply");
        EXPECT_TRUE(writeMesh_auto(ply.path, pMesh, bASCII));
        std::vector<Point3> vRead;
        EXPECT_TRUE(readPly(ply.c_str(), false, vRead));
        EXPECT_TRUE(vRead.empty());
    }
    TempFile list(".list");
    const StreamCapture out(std::cout);
    EXPECT_TRUE(writeMesh_auto(list.path, pMesh, true));
    EXPECT_EQ("LIST\n{\n}\n", list.read());
}

TEST_F(MeshFilesTest, ExtensionChoosesTheWriter)
{
    pRMesh->createT(at(0, 0, 0), at(1, 0, 0), at(0, 1, 0));
    const struct
    {
        const char* extension;
        bool bASCII;
        const char* start;
    } rows[] = {
        {".stl", true, "solid - ZEF\n"},
        {".PLY", true, "ply\nformat binary_little_endian 1.0\n"},
        {".ply", false, "ply\nformat ascii 1.0\n"},
        {".List", true, "LIST\n{\n"},
        {".xyz", true, "ply\nformat ascii 1.0\n"},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.extension);
        TempFile file(row.extension);
        const StreamCapture out(std::cout);
        const StreamCapture err(std::cerr);
        EXPECT_TRUE(writeMesh_auto(file.path, pMesh, row.bASCII));
        EXPECT_TRUE(file.read().starts_with(row.start)) << file.read();
        EXPECT_EQ(row.extension == std::string(".xyz"),
                  err.contains("Filename [" + file.path + "] is not valid, using [zef_output.ply] instead"));
    }
}

TEST_F(MeshFilesTest, SceneSharesTheVerticesOfTheMesh)
{
    addGrid(10);
    TempFile file(".list");
    const StreamCapture out(std::cout);
    ASSERT_TRUE(pMesh->writeGeomview_ASCII(file.path));
    EXPECT_TRUE(out.contains("Writing " + file.path));

    std::istringstream words(file.read());
    std::string word;
    std::size_t numVertices = 0;
    std::size_t numFaces = 0;
    std::size_t numEdges = 1;
    words >> word >> word >> word >> word >> numVertices >> numFaces >> numEdges;
    EXPECT_EQ("OFF", word);
    EXPECT_EQ(0U, numEdges);
    std::vector<Point3*> vUsed;
    pMesh->getPoints(vUsed);
    EXPECT_EQ(vUsed.size(), numVertices);
    std::vector<Point3> vVertices;
    for (std::size_t i = 0; i < numVertices; ++i)
    {
        double x = 0.0;
        double y = 0.0;
        double z = 0.0;
        words >> x >> y >> z;
        vVertices.emplace_back(x, y, z);
    }
    const std::vector<Point3> vCorners = getCorners();
    ASSERT_EQ(vCorners.size(), 3 * numFaces);
    for (std::size_t face = 0; face < numFaces; ++face)
    {
        std::size_t aIndex[3] = {0, 0, 0};
        std::string aColour[4];
        words >> word >> aIndex[0] >> aIndex[1] >> aIndex[2] >> aColour[0] >> aColour[1] >> aColour[2] >>
            aColour[3];
        ASSERT_EQ("3 0 1 0 0.5",
                  word + " " + aColour[0] + " " + aColour[1] + " " + aColour[2] + " " + aColour[3]);
        for (std::size_t ici = 0; ici < 3; ++ici)
            ASSERT_LE((vVertices.at(aIndex[ici]) - vCorners[3 * face + ici]).length(), 1e-13);
    }
    words >> word;
    EXPECT_EQ("}", word);
    words >> word;
    EXPECT_EQ("}", word);
    EXPECT_FALSE(words >> word);
}

TEST_F(MeshFilesTest, UnwritableTargetsAreReported)
{
    pRMesh->createT(at(0, 0, 0), at(1, 0, 0), at(0, 1, 0));
    std::vector<std::string> vNames = {"/nonexistent/folder/a"};
    if (std::filesystem::exists("/dev/full"))
        vNames.emplace_back("/dev/full");
    for (const std::string& name : vNames)
    {
        const struct
        {
            const char* what;
            bool (Mesh::*pWrite)(const std::string&) const;
        } rows[] = {
            {"PLY ASCII", &Mesh::writePly_BIN},
            {"PLY binary", &Mesh::writePly_ASCII},
            {"STL", &Mesh::writeStl_ASCII},
            {"scene", &Mesh::writeGeomview_ASCII},
        };
        for (const auto& row : rows)
        {
            SCOPED_TRACE(name + " " + row.what);
            const StreamCapture out(std::cout);
            EXPECT_FALSE((*pMesh.*row.pWrite)(name));
            EXPECT_TRUE(out.contains("ERROR: ") || out.contains("WARNING: ")) << out.text();
            EXPECT_TRUE(out.contains(name));
        }
    }
}

} // namespace TARN_ZEF
