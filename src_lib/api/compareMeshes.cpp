#include "compareMeshes.h"

#include "api/flatMesh.h"
#include "comparison/SurfaceComparer.h"
#include "core/CallScope.h"
#include "core/refuse.h"
#include "geometry/requireTriangles.h"

#include <string>

namespace TARN_ZEF
{
namespace
{
// Squares of lengths must stay numbers.
constexpr double SMALLEST_EXTENT = 1e-100;
constexpr double LARGEST_EXTENT = 1e100;

void requireSurface(const FiniteSurface& surface, const char* which)
{
    const std::string name = std::string("the ") + which + " surface";
    if (surface.vCorners.empty())
        refuse<ZefBadArgument>("a triangle with finite corners",
                               name + " has no triangle with finite corners; give one that has");
    const double extent = surface.getExtent();
    if (!(extent <= LARGEST_EXTENT) || (extent < SMALLEST_EXTENT && extent != 0.0))
        refuse<ZefBadArgument>("extent from 1e-100 to 1e100",
                               name + " has an extent outside 1e-100 to 1e100; scale both surfaces");
}

void requireNear(const FiniteSurface& first, const FiniteSurface& second)
{
    const Vector3 apart = second.getFirstCorner() - first.getFirstCorner();
    if (!(apart.length() <= LARGEST_EXTENT))
        refuse<ZefBadArgument>("surfaces no more than 1e100 apart",
                               "the surfaces lie more than 1e100 apart; scale both, or bring them together");
}
} // namespace

MeshComparison compareMeshes(const std::vector<Point3>& vFirstPoints, const std::vector<int>& vFirstCorners,
                             const std::vector<Point3>& vSecondPoints, const std::vector<int>& vSecondCorners,
                             const CompareOptions& options)
{
    const CallScope call;
    requireTriangles(vFirstPoints.size(), vFirstCorners);
    requireTriangles(vSecondPoints.size(), vSecondCorners);
    if (options.numSamples == 0)
        refuse<ZefBadArgument>("numSamples > 0", "numSamples is 0; it must be above 0, 200000 are usual");
    const FiniteSurface first(vFirstPoints, vFirstCorners);
    const FiniteSurface second(vSecondPoints, vSecondCorners);
    requireSurface(first, "first");
    requireSurface(second, "second");
    requireNear(first, second);
    MeshComparison comparison;
    comparison.toSecond =
        SurfaceComparer(first, TriangleTree(vSecondPoints, second.vCorners)).run(options.numSamples);
    comparison.toFirst =
        SurfaceComparer(second, TriangleTree(vFirstPoints, first.vCorners)).run(options.numSamples);
    return comparison;
}

MeshComparison compareMeshes(const Mesh& first, const Mesh& second, const CompareOptions& options)
{
    const CallScope call;
    std::vector<Point3> vFirstPoints;
    std::vector<Point3> vSecondPoints;
    std::vector<int> vFirstCorners;
    std::vector<int> vSecondCorners;
    getFlat(first, vFirstPoints, vFirstCorners);
    getFlat(second, vSecondPoints, vSecondCorners);
    return compareMeshes(vFirstPoints, vFirstCorners, vSecondPoints, vSecondCorners, options);
}

} // namespace TARN_ZEF
