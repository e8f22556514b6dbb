// Sheets and boxes of unit squares on a lattice, with holes, for tests of borders.
#ifndef ZEF_TESTS_SHEETMESH_H
#define ZEF_TESTS_SHEETMESH_H

#include "cmesh/CEdge.h"
#include "cmesh/CTriangle.h"
#include "helpers/LatticeMesh.h"
#include "helpers/checkMesh.h"

#include <array>
#include <cmath>
#include <map>
#include <vector>

namespace TARN_ZEF
{
struct SheetMesh : LatticeMesh
{
    u64 cellAt(int x, int y, int z, const Point3& position)
    {
        const u64 ccd = cell(x, y, z);
        map.find(ccd)->pPoint->set(position);
        return ccd;
    }
    CTriangle* add(u64 a, u64 b, u64 c) { return mesh.createT(a, b, c, 0, 0); }
    void addSquare(u64 a, u64 b, u64 c, u64 d)
    {
        add(a, b, c);
        add(a, c, d);
    }
    void addTetrahedron(u64 a, u64 b, u64 c, u64 d)
    {
        add(a, c, b);
        add(a, b, d);
        add(b, c, d);
        add(c, a, d);
    }
    // The squares of [0, size) x [0, size) but for those that isHole(x, y) names, facing +z.
    template <typename IsHole>
    void addSheet(int size, const IsHole& isHole)
    {
        for (int x = 0; x < size; ++x)
            for (int y = 0; y < size; ++y)
                if (!isHole(x, y))
                    addSquare(cell(x, y, 8), cell(x + 1, y, 8), cell(x + 1, y + 1, 8), cell(x, y + 1, 8));
    }
    void addSheet(int size)
    {
        addSheet(size, [](int, int) { return false; });
    }
    // The surface of a box of unit squares, facing outwards, without those that isHole(side, u, v) names.
    template <typename IsHole>
    void addBox(const std::array<int, 3>& low, const std::array<int, 3>& size, const IsHole& isHole)
    {
        for (std::size_t side = 0; side < 6; ++side)
            for (int u = 0; u < size[(side / 2 + 1) % 3]; ++u)
                for (int v = 0; v < size[(side / 2 + 2) % 3]; ++v)
                    if (!isHole(static_cast<int>(side), u, v))
                        addBoxSquare(low, size, side, u, v);
    }
    template <typename IsHole>
    void addCube(int size, const IsHole& isHole)
    {
        addBox({8, 8, 8}, {size, size, size}, isHole);
    }
    void addCube(int size)
    {
        addCube(size, [](int, int, int) { return false; });
    }
    // A closed strip of num squares, one square wide, on a ring of radius num; a twisted one is a Moebius
    // band.
    void addRing(int num, bool bTwisted)
    {
        const auto corner = [&](int i, int side)
        {
            const int k = i % num;
            const int z = (bTwisted && i >= num) ? 1 - side : side;
            const double phi = 6.283185307179586 * k / num;
            return cellAt(k, 0, z, Point3(32 + num * std::cos(phi), 32 + num * std::sin(phi), z));
        };
        for (int i = 0; i < num; ++i)
            addSquare(corner(i, 0), corner(i + 1, 0), corner(i + 1, 1), corner(i, 1));
    }

    [[nodiscard]] std::vector<CEdge*> getBorders() const
    {
        std::vector<CEdge*> vCE;
        mesh.getDegN(DEG_BORDER, vCE);
        return vCE;
    }
    [[nodiscard]] bool isManifold() const { return countEdges(mesh, -1) == 0; }
    [[nodiscard]] bool isOriented() const { return countDisagreeing(mesh) == 0; }
    [[nodiscard]] std::map<u64, Point3> positions() const
    {
        std::vector<u64> vCCD;
        mesh.getUsedCCDs(vCCD);
        std::map<u64, Point3> mPos;
        for (const u64 ccd : vCCD)
            mPos[ccd] = mesh.getAvgPoint(ccd);
        return mPos;
    }
    // Makes the orientation of each piece uniform over edges of degree 2; says whether that can be done.
    [[nodiscard]] bool orient()
    {
        mesh.clearVisited();
        std::vector<CTriangle*> vAliveT;
        mesh.getAliveT(vAliveT);
        for (CTriangle* pSeedT : vAliveT)
            if (!pSeedT->bVisited)
                orientFrom(pSeedT);
        return isOriented();
    }

private:
    void orientFrom(CTriangle* pSeedT)
    {
        std::vector<CTriangle*> vWorkspace{pSeedT};
        pSeedT->bVisited = true;
        while (!vWorkspace.empty())
        {
            CTriangle* pCT = vWorkspace.back();
            vWorkspace.pop_back();
            for (int i = 0; i < 3; ++i)
            {
                CTriangle* pNeigT = pCT->getCEdge(i)->getNeigT(pCT);
                if (pNeigT == nullptr || pNeigT->bVisited)
                    continue;
                pNeigT->bVisited = true;
                if (pCT->needFlip(pNeigT))
                    pNeigT->flipOrientation();
                vWorkspace.push_back(pNeigT);
            }
        }
    }

    void addBoxSquare(const std::array<int, 3>& low, const std::array<int, 3>& size, std::size_t side, int u,
                      int v)
    {
        const std::size_t axis = side / 2;
        u64 c[4];
        for (std::size_t i = 0; i < 4; ++i)
        {
            std::array<int, 3> pos = low;
            pos[axis] += side % 2 == 0 ? 0 : size[axis];
            pos[(axis + 1) % 3] += u + (i == 1 || i == 2 ? 1 : 0);
            pos[(axis + 2) % 3] += v + (i >= 2 ? 1 : 0);
            c[side % 2 == 0 ? 3 - i : i] = cell(pos[0], pos[1], pos[2]);
        }
        addSquare(c[0], c[1], c[2], c[3]);
    }
};

} // namespace TARN_ZEF

#endif
