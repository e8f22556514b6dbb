#include "inputChecks.h"

#include <algorithm>
#include <cmath>

#include "PointBox.h"
#include "ToolError.h"
#include "numberText.h"

namespace TARN_TOOL
{
using TARN_ZEF::Point3;

namespace
{
// Lattice cells along the extent that the library can tell apart, its frame left out.
constexpr double MAX_CELLS = 2097152.0 - 9.0;
constexpr std::size_t MAX_POINTS = 2147483647;

double areaOf(const std::vector<Point3>& vTriCorners)
{
    double sum = 0.0;
    for (std::size_t i = 0; i + 2 < vTriCorners.size(); i += 3)
    {
        const TARN_ZEF::Vector3 a = vTriCorners[i + 1] - vTriCorners[i];
        const TARN_ZEF::Vector3 b = vTriCorners[i + 2] - vTriCorners[i];
        const double dot = a * b;
        sum += 0.5 * std::sqrt(std::max(0.0, a.sqLength() * b.sqLength() - dot * dot));
    }
    return sum;
}
} // namespace

void requireUsable(const Options& options, const std::vector<Point3>& vPoints)
{
    const std::string name = options.getInputText();
    if (vPoints.empty())
        throw ToolError(
            name + (options.hasTriangles()
                        ? std::string(" holds no triangles with finite coordinates") + options.getCloudHint()
                        : " holds no points with finite coordinates; check its format"));
    if (vPoints.size() > MAX_POINTS)
        throw ToolError(name + " holds more than 2147483647 points or corners; thin it out");
    if (!std::isfinite(PointBox(vPoints).getMaxExtent()))
        throw ToolError("the coordinates in " + name + " are too large to work with; check its format");
}

void requireExtent(const Options& options, const std::vector<Point3>& vPoints)
{
    const std::string name = options.getInputText();
    if (vPoints.size() < 3)
        throw ToolError(name + " holds only " + std::to_string(vPoints.size()) +
                        " points, too few for a surface; give a denser cloud");
    if (PointBox(vPoints).getMaxExtent() == 0.0)
        throw ToolError("all points in " + name + " are the same; give input with an extent");
}

void requireSpacing(const Options& options, const std::vector<Point3>& vPoints)
{
    if (options.spacingAbs <= 0.0)
        return;
    const double extent = PointBox(vPoints).getMaxExtent();
    if (extent / options.spacingAbs > MAX_CELLS)
        throw ToolError("a spacing of " + textOf(options.spacingAbs) + " is too small for an extent of " +
                        textOf(extent) + "; try -a " + textOf(2.0 * extent / MAX_CELLS) + " or more");
}

void requireCells(const Options& options, const std::vector<Point3>& vTriCorners)
{
    if (options.spacingAbs <= 0.0)
        return;
    // About one point for each cell that the triangles cross.
    const double area = areaOf(vTriCorners);
    const double most = static_cast<double>(MAX_POINTS);
    if (area / (options.spacingAbs * options.spacingAbs) > most)
        throw ToolError("a spacing of " + textOf(options.spacingAbs) + " is too small for an area of " +
                        textOf(area) + "; try -a " + textOf(2.0 * std::sqrt(area / most)) + " or more");
}

std::vector<Point3> getFiniteCorners(const TARN_ZEF::TriangleData& data)
{
    std::vector<Point3> vTriCorners;
    vTriCorners.reserve(data.vCorners.size());
    for (std::size_t i = 0; i + 2 < data.vCorners.size(); i += 3)
    {
        const Point3& a = data.vPoints[data.vCorners[i]];
        const Point3& b = data.vPoints[data.vCorners[i + 1]];
        const Point3& c = data.vPoints[data.vCorners[i + 2]];
        if (isFinite(a) && isFinite(b) && isFinite(c))
            vTriCorners.insert(vTriCorners.end(), {a, b, c});
    }
    return vTriCorners;
}

bool isEmpty(const std::shared_ptr<TARN_ZEF::Mesh>& pMesh)
{
    std::vector<Point3*> vTriCorners;
    if (pMesh)
        pMesh->getTriangles(vTriCorners);
    return vTriCorners.empty();
}

} // namespace TARN_TOOL
