#include "sourcePoints.h"

#include "api/flatMesh.h"
#include "comparison/PointTree.h"
#include "core/CallScope.h"
#include "core/cancel.h"
#include "core/refuse.h"
#include "geometry/isFinite.h"
#include "parallel/parallelFor.h"
#include "tarn_tools/Box.h"

#include <algorithm>

namespace TARN_ZEF
{
namespace
{
// Squares of distances must stay numbers.
constexpr double SMALLEST_EXTENT = 1e-100;
constexpr double LARGEST_EXTENT = 1e100;
constexpr std::size_t FEWEST_A_JOB = 1000;

void include(Box& box, const std::vector<Point3>& vPoints)
{
    for (const Point3& p : vPoints)
        if (isFinite(p))
            box.include({p.x(), p.y(), p.z(), p.x(), p.y(), p.z()});
}

void requireExtent(const std::vector<Point3>& vPlaces, const std::vector<Point3>& vCloud)
{
    Box box;
    include(box, vPlaces);
    include(box, vCloud);
    const double extent = std::max({box.xmax - box.xmin, box.ymax - box.ymin, box.zmax - box.zmin, 0.0});
    if (!(extent <= LARGEST_EXTENT) || (extent < SMALLEST_EXTENT && extent != 0.0))
        refuse<ZefBadArgument>("extent from 1e-100 to 1e100",
                               "places and cloud have an extent outside 1e-100 to 1e100; scale both");
}
} // namespace

std::vector<std::int64_t> findSourcePoints(const std::vector<Point3>& vPlaces,
                                           const std::vector<Point3>& vCloud)
{
    const CallScope call;
    requireExtent(vPlaces, vCloud);
    const PointTree tree(vCloud);
    std::vector<std::int64_t> vSources(vPlaces.size(), PointTree::NONE);
    parallelFor(vPlaces.size(), FEWEST_A_JOB,
                [&](std::size_t from, std::size_t to)
                {
                    for (std::size_t i = from; i < to; ++i)
                        if (isFinite(vPlaces[i]))
                            vSources[i] = tree.findNearest(vPlaces[i]);
                });
    return vSources;
}

std::vector<std::int64_t> findSourcePoints(const Mesh& mesh, const std::vector<Point3>& vCloud)
{
    const CallScope call;
    std::vector<Point3> vVertices;
    std::vector<int> vCorners;
    getFlat(mesh, vVertices, vCorners);
    return findSourcePoints(vVertices, vCloud);
}

} // namespace TARN_ZEF
