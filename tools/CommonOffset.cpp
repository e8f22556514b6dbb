#include "CommonOffset.h"

#include <algorithm>
#include <cmath>

#include "Mesh.h"
#include "PointBox.h"

namespace TARN_TOOL
{
using TARN_ZEF::Point3;

namespace
{
constexpr double FAR = 1048576.0; // 2^20 extents

// The multiple of a power of two, of at least the extent, that lies next to the middle of one axis: coordinates of
// points of the box have no digits that the difference would lose. 0.0 if the middle is as near as that.
double offsetOf(double low, double high, double extent)
{
    const double unit = std::exp2(std::ceil(std::log2(extent)));
    const double middle = low + 0.5 * (high - low);
    return std::fabs(middle) < 2.0 * unit ? 0.0 : unit * std::round(middle / unit);
}
} // namespace

CommonOffset::CommonOffset(const std::vector<Point3>& vPoints)
{
    const PointBox box(vPoints);
    const double extent = box.getMaxExtent();
    const double farthest =
        std::max({std::fabs(box.low.x()), std::fabs(box.low.y()), std::fabs(box.low.z())});
    if (!(extent > 0.0) || !std::isfinite(extent) || !(farthest > FAR * extent))
        return;
    offset.set(offsetOf(box.low.x(), box.high.x(), extent), offsetOf(box.low.y(), box.high.y(), extent),
               offsetOf(box.low.z(), box.high.z(), extent));
}

void CommonOffset::takeOff(std::vector<Point3>& vPoints) const
{
    if (isNone())
        return;
    for (Point3& p : vPoints)
        p.set(p.x() - offset.x(), p.y() - offset.y(), p.z() - offset.z());
}

void CommonOffset::putBack(std::vector<Point3>& vPoints) const
{
    if (isNone())
        return;
    for (Point3& p : vPoints)
        p.set(p.x() + offset.x(), p.y() + offset.y(), p.z() + offset.z());
}

void CommonOffset::putBack(const TARN_ZEF::Mesh& mesh) const
{
    if (isNone())
        return;
    std::vector<Point3*> vVertices;
    mesh.getPoints(vVertices);
    for (Point3* pVertex : vVertices)
        pVertex->set(pVertex->x() + offset.x(), pVertex->y() + offset.y(), pVertex->z() + offset.z());
}

} // namespace TARN_TOOL
