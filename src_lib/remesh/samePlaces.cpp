#include "remesh/samePlaces.h"

#include <algorithm>
#include <numeric>
#include <tuple>

namespace TARN_ZEF
{
std::vector<int> findSamePlaces(const std::vector<Point3>& vPoints)
{
    std::vector<int> vOrder(vPoints.size());
    std::iota(vOrder.begin(), vOrder.end(), 0);
    const auto placeOf = [&](int v) { return std::tuple(vPoints[v].x(), vPoints[v].y(), vPoints[v].z()); };
    std::sort(vOrder.begin(), vOrder.end(),
              [&](int a, int b) { return std::tuple(placeOf(a), a) < std::tuple(placeOf(b), b); });
    std::vector<int> vPlace(vPoints.size());
    for (std::size_t i = 0; i < vOrder.size(); ++i)
        vPlace[vOrder[i]] =
            i > 0 && placeOf(vOrder[i]) == placeOf(vOrder[i - 1]) ? vPlace[vOrder[i - 1]] : vOrder[i];
    return vPlace;
}

} // namespace TARN_ZEF
