#include "repair/DuplicatePoints.h"

#include "cmesh/CMesh.h"
#include "core/zefRand.h"
#include "lattice/Bundle.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstddef>
#include <set>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
namespace
{
// Positions first, NaN after all numbers, so that this is an order for any input.
bool isCoordinateLess(double a, double b)
{
    return std::isnan(b) ? !std::isnan(a) : a < b;
}
bool isPositionLess(const Point3& a, const Point3& b)
{
    const double aA[3] = {a.x(), a.y(), a.z()};
    const double aB[3] = {b.x(), b.y(), b.z()};
    return std::lexicographical_compare(aA, aA + 3, aB, aB + 3, isCoordinateLess);
}
using PointBundle = std::pair<Point3, Bundle*>;
bool isPointBundleLess(const PointBundle& a, const PointBundle& b)
{
    return isPositionLess(a.first, b.first);
}

// Up to a hundredth of a spacing on each axis. An offset that is too small for the coordinates moves x to the
// next value that there is.
Point3 shiftAtRandom(const Point3& p, double spacing)
{
    double aOffset[3];
    for (double& offset : aOffset)
        offset = zefRand() % 1000 / 100000.0 * spacing;
    const Point3 moved(p.x() + aOffset[0], p.y() + aOffset[1], p.z() + aOffset[2]);
    if (moved != p)
        return moved;
    return {std::nextafter(p.x(), DBL_MAX), p.y(), p.z()};
}

// Of runs of equal positions, in their order.
std::vector<Bundle*> getThoseWithTwins(const std::vector<PointBundle>& vPointBundle)
{
    std::vector<Bundle*> vDupBundles;
    for (std::size_t i = 0; i < vPointBundle.size();)
    {
        std::size_t end = i + 1;
        while (end < vPointBundle.size() && vPointBundle[end].first == vPointBundle[i].first)
            ++end;
        for (std::size_t k = i; end - i >= 2 && k < end; ++k)
            vDupBundles.push_back(vPointBundle[k].second);
        i = end;
    }
    return vDupBundles;
}
} // namespace

DuplicatePoints::DuplicatePoints(CMesh* pCMesh_)
    : pCMesh(pCMesh_)
{
}

void DuplicatePoints::separate()
{
    std::vector<PointBundle> vPointBundle;
    vPointBundle.reserve(pCMesh->getBundleMap()->size());
    pCMesh->getBundleMap()->forEach([&](u64, Bundle* pBundle)
                                    { vPointBundle.emplace_back(*pBundle->pPoint, pBundle); });
    std::stable_sort(vPointBundle.begin(), vPointBundle.end(), isPointBundleLess);
    std::set<Point3> sUniquePoints; // of those that had a twin
    for (Bundle* pBundle : getThoseWithTwins(vPointBundle))
    {
        Point3 pos = *pBundle->pPoint;
        bool bFree = sUniquePoints.insert(pos).second;
        while (!bFree)
        {
            pos = shiftAtRandom(pos, pCMesh->getAvgSpacing());
            const bool bTaken = std::binary_search(vPointBundle.begin(), vPointBundle.end(),
                                                   PointBundle(pos, nullptr), isPointBundleLess);
            bFree = !bTaken && sUniquePoints.insert(pos).second;
        }
        pBundle->pPoint->set(pos);
    }
}

} // namespace TARN_ZEF
