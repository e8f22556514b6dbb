#include "sheets/FacingBodies.h"

#include "choice/PointGrid.h"
#include "core/Progress.h"
#include "core/cancel.h"
#include "parallel/sortMT2.h"
#include "sheets/BodySurface.h"
#include "sheets/FacingField.h"
#include "sheets/PointFacing.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <optional>
#include <utility>

namespace TARN_ZEF
{
namespace
{
constexpr std::size_t LEAST_POINTS = 100;
constexpr std::size_t NUM_SAMPLES = 1'000;
// The disc round a point that reaches to the tenth other one holds ten: so wide is one of them.
constexpr std::size_t RANK = 10;
constexpr double DISC = 0.56049912163979287; // root of pi / 10
constexpr double PROBE_REACH = 4.0;          // in detected spacings
// A cloud of very different densities has more points than that within reach, and no one spacing.
constexpr double MOST_WITHIN_REACH = 250.0;
// Of the points, the surface must pass that share.
constexpr double LEAST_COVERED = 0.99;

void tellDone(const char* step)
{
    getRootProgress()->getChildProgressSetTodo(step, 1)->setFinished(true);
}

// Of the points within reach of points spread over the cloud.
double getMeanWithin(const PointGrid& grid, const std::vector<Point3>& vPoints)
{
    const std::size_t step = vPoints.size() / NUM_SAMPLES + 1;
    std::size_t numHits = 0;
    std::size_t numSamples = 0;
    for (std::size_t i = 0; i < vPoints.size(); i += step, ++numSamples)
    {
        checkCancelled();
        grid.visit(vPoints[i], [&](const PointGrid::Hit&) { ++numHits; });
    }
    return static_cast<double>(numHits) / static_cast<double>(numSamples);
}
} // namespace

FacingBodies::FacingBodies(const std::vector<Point3>& vPoints_, double spacing_)
    : vPoints(vPoints_)
    , detected(spacing_)
{
    sortMT(vPoints.begin(), vPoints.end(), std::less<Point3>());
}

// The detected one depends on how evenly the points lie.
double FacingBodies::measureSpacing() const
{
    const PointGrid grid(vPoints, PROBE_REACH * detected);
    if (!(getMeanWithin(grid, vPoints) <= MOST_WITHIN_REACH))
        return 0.0;
    std::vector<double> vSquares;
    std::vector<PointGrid::Hit> vHits;
    const std::size_t step = vPoints.size() / NUM_SAMPLES + 1;
    for (std::size_t i = 0; i < vPoints.size(); i += step)
    {
        checkCancelled();
        grid.find(vPoints[i], vHits);
        if (vHits.size() > RANK)
            vSquares.push_back(vHits[RANK].squaredDistance);
    }
    if (vSquares.empty())
        return 0.0;
    const auto middle = vSquares.begin() + static_cast<std::ptrdiff_t>(vSquares.size() / 2);
    std::nth_element(vSquares.begin(), middle, vSquares.end());
    return DISC * std::sqrt(*middle);
}

bool FacingBodies::run()
{
    if (vPoints.size() < LEAST_POINTS)
        return false;
    const double spacing = measureSpacing();
    if (!(spacing > 0.0))
        return false;
    const PointGrid grid(vPoints, FacingField::REACH * spacing);
    PointFacing facing(vPoints, grid, spacing);
    facing.run();
    tellDone("BO_facing");
    FacingField field(vPoints, facing.getNormals(), grid, spacing);
    if (!field.run() || field.getCovered() < LEAST_COVERED)
        return false;
    tellDone("BO_field");
    std::optional<std::vector<DualSurface::Change>> oChanges = field.findChanges();
    if (!oChanges || oChanges->empty())
        return false;
    BodySurface surface(field);
    surface.run(std::move(*oChanges));
    tellDone("BO_surface");
    vVertices.reserve(surface.getVertices().size());
    for (const HullVertex& vertex : surface.getVertices())
        vVertices.push_back(vertex.point);
    vCorners = surface.getCorners();
    return true;
}

} // namespace TARN_ZEF
