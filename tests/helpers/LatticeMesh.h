// A combinatorial mesh on a small lattice of its own, for tests of edits.
#ifndef ZEF_TESTS_LATTICEMESH_H
#define ZEF_TESTS_LATTICEMESH_H

#include "cmesh/CMesh.h"
#include "lattice/Bundle.h"
#include "lattice/BundleMap.h"
#include "lattice/Calc.h"

#include <deque>

namespace TARN_ZEF
{
// Cells have edge 1; every cell that is named gets a bundle at its centre.
struct LatticeMesh
{
    Calc calc{0.0, 0.0, 0.0, 64.0, 64.0, 64.0, 6};
    BundleMap map;
    std::deque<Point3> dPoints;
    std::deque<Bundle> dBundles;
    CMesh mesh{&calc, &map};

    u64 cell(int x, int y, int z)
    {
        const u64 ccd = calc.getCCD(Point3(x + 0.5, y + 0.5, z + 0.5));
        if (map.find(ccd) == nullptr)
        {
            dPoints.push_back(calc.getMid(ccd));
            dBundles.emplace_back(&dPoints.back());
            dBundles.back().ccd = ccd;
            map.insert(ccd, &dBundles.back());
        }
        return ccd;
    }
};

} // namespace TARN_ZEF

#endif
