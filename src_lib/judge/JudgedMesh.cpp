#include "judge/JudgedMesh.h"

#include <algorithm>

namespace TARN_ZEF
{
namespace
{
struct Bounds
{
    Bounds(const Point3& a, const Point3& b, const Point3& c)
        : low(std::min({a.x(), b.x(), c.x()}), std::min({a.y(), b.y(), c.y()}),
              std::min({a.z(), b.z(), c.z()}))
        , high(std::max({a.x(), b.x(), c.x()}), std::max({a.y(), b.y(), c.y()}),
               std::max({a.z(), b.z(), c.z()}))
    {
    }
    Point3 low;
    Point3 high;
};

// Halved first: sums of large coordinates could overflow.
double middleOfCommon(double lowA, double lowB, double highA, double highB)
{
    return 0.5 * std::max(lowA, lowB) + 0.5 * std::min(highA, highB);
}
} // namespace

Point3 JudgedMesh::getMiddle(std::uint32_t halfEdge) const
{
    const Point3& a = getPoint(halfEdge);
    const Point3& b = getPoint(getNext(halfEdge));
    return {0.5 * a.x() + 0.5 * b.x(), 0.5 * a.y() + 0.5 * b.y(), 0.5 * a.z() + 0.5 * b.z()};
}

Point3 JudgedMesh::getCentre(std::size_t triangle) const
{
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
    for (std::uint32_t k = 0; k < 3; ++k)
        getPoint(static_cast<std::uint32_t>(3 * triangle) + k).addWeightedOwnCoords(1.0 / 3.0, x, y, z);
    return {x, y, z};
}

Point3 JudgedMesh::getMiddleOfCommonBox(std::size_t first, std::size_t second) const
{
    const auto i = static_cast<std::uint32_t>(3 * first);
    const auto k = static_cast<std::uint32_t>(3 * second);
    const Bounds a(getPoint(i), getPoint(i + 1), getPoint(i + 2));
    const Bounds b(getPoint(k), getPoint(k + 1), getPoint(k + 2));
    return {middleOfCommon(a.low.x(), b.low.x(), a.high.x(), b.high.x()),
            middleOfCommon(a.low.y(), b.low.y(), a.high.y(), b.high.y()),
            middleOfCommon(a.low.z(), b.low.z(), a.high.z(), b.high.z())};
}

} // namespace TARN_ZEF
