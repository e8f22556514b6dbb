// The raw surface of a set of cells, for tests of the repair: as rough as a real one, and more.
#ifndef ZEF_TESTS_CELLMESH_H
#define ZEF_TESTS_CELLMESH_H

#include "cmesh/CMesh.h"
#include "core/Progress.h"
#include "extraction/Voro.h"
#include "lattice/Bundle.h"
#include "lattice/BundleMap.h"
#include "lattice/Calc.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <deque>
#include <map>
#include <memory>
#include <random>
#include <vector>

namespace TARN_ZEF
{
// Prepares the progress tree of the thread. Cells have edge 1. The position of a cell's bundle is off its centre by up to 0.3 on each axis.
class CellMesh
{
public:
    // The cells for which isIn(x, y, z, rng) is true, of those with indices 6 to 5 + size.
    template <typename IsIn>
    CellMesh(int size, unsigned int seed, const IsIn& isIn)
        : calc(0.0, 0.0, 0.0, 64.0, 64.0, 64.0, 6)
    {
        std::mt19937_64 rng(seed);
        std::map<u64, Bundle*> mBundle;
        for (int x = 6; x < 6 + size; ++x)
            for (int y = 6; y < 6 + size; ++y)
                for (int z = 6; z < 6 + size; ++z)
                    if (isIn(x, y, z, rng))
                        add(x, y, z, rng, mBundle);
        prepareProgress("Reconstruct");
        map.assignSorted({mBundle.begin(), mBundle.end()});
        pVoro = std::make_unique<Voro>(&calc, &map, TM_FAT);
        pVoro->fatExtractTriangles();
    }
    [[nodiscard]] CMesh& mesh() { return *pVoro->getCMesh(); }

    // Corners of all alive triangles, each triple ascending, in ascending order.
    [[nodiscard]] std::vector<std::array<u64, 3>> getTriples()
    {
        std::vector<CTriangle*> vT;
        mesh().getAliveT(vT);
        std::vector<std::array<u64, 3>> vTriples;
        for (const CTriangle* pCT : vT)
        {
            vTriples.push_back({pCT->getC0(), pCT->getC1(), pCT->getC2()});
            std::sort(vTriples.back().begin(), vTriples.back().end());
        }
        std::sort(vTriples.begin(), vTriples.end());
        return vTriples;
    }

    Calc calc;
    BundleMap map;
    std::unique_ptr<Voro> pVoro;

private:
    void add(int x, int y, int z, std::mt19937_64& rng, std::map<u64, Bundle*>& mBundle)
    {
        std::uniform_real_distribution<double> offset(0.2, 0.8);
        dPoints.emplace_back(x + offset(rng), y + offset(rng), z + offset(rng));
        dBundles.emplace_back(&dPoints.back());
        dBundles.back().ccd = calc.getCCD(dPoints.back());
        mBundle[dBundles.back().ccd] = &dBundles.back();
    }

    std::deque<Point3> dPoints;
    std::deque<Bundle> dBundles;
};

// Each cell with the given probability, in percent.
inline auto randomCells(unsigned int percent)
{
    return [percent](int, int, int, std::mt19937_64& rng) { return rng() % 100 < percent; };
}

// A hollow ball of radius r around cell 20, one to two cells thick, with every numGap-th cell missing at
// random (0: none).
inline auto ballCells(double r, unsigned int numGap)
{
    return [r, numGap](int x, int y, int z, std::mt19937_64& rng)
    {
        const double d =
            std::sqrt((x - 20.0) * (x - 20.0) + (y - 20.0) * (y - 20.0) + (z - 20.0) * (z - 20.0));
        return std::fabs(d - r) < 0.7 && (numGap == 0 || rng() % numGap != 0);
    };
}

} // namespace TARN_ZEF

#endif
