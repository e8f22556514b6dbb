#include "meshCurvature.h"

#include "Vector3.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace TARN_TOOL
{
using TARN_ZEF::Point3;
using TARN_ZEF::Vector3;

namespace
{
// An edge of a triangle as its triangle goes along it.
struct SidedEdge
{
    int low;
    int high;
    bool bRising; // from low to high
    int triangle;
};

bool isSameEdge(const SidedEdge& e, const SidedEdge& f)
{
    return e.low == f.low && e.high == f.high;
}

std::vector<SidedEdge> sortedEdges(const std::vector<int>& vCorners)
{
    std::vector<SidedEdge> vEdges;
    vEdges.reserve(vCorners.size());
    for (std::size_t i = 0; i < vCorners.size(); ++i)
    {
        const int a = vCorners[i];
        const int b = vCorners[i % 3 == 2 ? i - 2 : i + 1];
        vEdges.push_back({std::min(a, b), std::max(a, b), a < b, static_cast<int>(i / 3)});
    }
    std::sort(vEdges.begin(), vEdges.end(),
              [](const SidedEdge& e, const SidedEdge& f) {
                  return e.low != f.low     ? e.low < f.low
                         : e.high != f.high ? e.high < f.high
                                            : e.triangle < f.triangle;
              });
    return vEdges;
}

Vector3 cross(const Vector3& a, const Vector3& b)
{
    return {a.y() * b.z() - a.z() * b.y(), a.z() * b.x() - a.x() * b.z(), a.x() * b.y() - a.y() * b.x()};
}

// The angle between two triangles at an edge, above 0 where it bulges. along goes as the first triangle does.
double bendOf(const Vector3& firstNormal, const Vector3& secondNormal, const Vector3& along)
{
    const Vector3 across = cross(firstNormal, secondNormal);
    const double angle = std::atan2(across.length(), firstNormal * secondNormal);
    return across * along < 0.0 ? -angle : angle;
}
// Of each vertex its own value and those at the other ends of its edges.
std::vector<double> sumOverNeighbours(const std::vector<double>& vValues,
                                      const std::vector<SidedEdge>& vEdges)
{
    std::vector<double> vSums = vValues;
    for (std::size_t i = 0; i < vEdges.size(); ++i)
    {
        const auto low = static_cast<std::size_t>(vEdges[i].low);
        const auto high = static_cast<std::size_t>(vEdges[i].high);
        if (i > 0 && isSameEdge(vEdges[i], vEdges[i - 1]))
            continue;
        vSums[low] += vValues[high];
        vSums[high] += vValues[low];
    }
    return vSums;
}

class CurvatureSum
{
public:
    CurvatureSum(const std::vector<Point3>& vPoints_, const std::vector<int>& vCorners_)
        : vPoints(vPoints_)
        , vCorners(vCorners_)
        , vNormals(vCorners_.size() / 3)
        , vAreas(vPoints_.size(), 0.0)
        , vBends(vPoints_.size(), 0.0)
    {
    }

    [[nodiscard]] std::vector<double> run()
    {
        for (std::size_t t = 0; t < vNormals.size(); ++t)
            takeTriangle(t);
        const std::vector<SidedEdge> vEdges = sortedEdges(vCorners);
        for (std::size_t i = 0, next = 0; i < vEdges.size(); i = next)
        {
            while (next < vEdges.size() && isSameEdge(vEdges[i], vEdges[next]))
                ++next;
            if (next - i == 2 && vEdges[i].bRising != vEdges[i + 1].bRising)
                bend(vEdges[i], vEdges[i + 1]);
        }
        vBends = sumOverNeighbours(vBends, vEdges);
        vAreas = sumOverNeighbours(vAreas, vEdges);
        for (std::size_t i = 0; i < vBends.size(); ++i)
            vBends[i] = vAreas[i] > 0.0 ? vBends[i] / vAreas[i] : std::numeric_limits<double>::quiet_NaN();
        return std::move(vBends);
    }

private:
    [[nodiscard]] const Point3& getPoint(int i) const { return vPoints[static_cast<std::size_t>(i)]; }

    void takeTriangle(std::size_t t)
    {
        const int* const pCorners = &vCorners[3 * t];
        const Point3& first = getPoint(pCorners[0]);
        vNormals[t] = cross(getPoint(pCorners[1]) - first, getPoint(pCorners[2]) - first);
        for (std::size_t k = 0; k < 3; ++k)
            vAreas[static_cast<std::size_t>(pCorners[k])] += vNormals[t].length() / 6.0;
    }

    // Half the angle is the edge's share of the curvature, and half of that each end's.
    void bend(const SidedEdge& edge, const SidedEdge& opposite)
    {
        const Vector3 rising = getPoint(edge.high) - getPoint(edge.low);
        const double angle = bendOf(vNormals[static_cast<std::size_t>(edge.triangle)],
                                    vNormals[static_cast<std::size_t>(opposite.triangle)],
                                    rising * (edge.bRising ? 1.0 : -1.0));
        for (const int end : {edge.low, edge.high})
            vBends[static_cast<std::size_t>(end)] += 0.25 * rising.length() * angle;
    }

    const std::vector<Point3>& vPoints;
    const std::vector<int>& vCorners;
    std::vector<Vector3> vNormals; // of triangles, as long as twice the area
    std::vector<double> vAreas;    // of vertices: a third of their triangles
    std::vector<double> vBends;    // of vertices, then by area
};
} // namespace

std::vector<double> findCurvatures(const std::vector<Point3>& vPoints, const std::vector<int>& vCorners)
{
    return CurvatureSum(vPoints, vCorners).run();
}

} // namespace TARN_TOOL
