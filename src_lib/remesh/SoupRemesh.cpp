#include "remesh/SoupRemesh.h"

#include "core/definitions.h"
#include "core/refuse.h"
#include "geometry/isFinite.h"
#include "remesh/BodyFinder.h"
#include "remesh/BodyParter.h"
#include "remesh/PartTurner.h"
#include "remesh/Remesher.h"
#include "remesh/SoupWelder.h"
#include "remesh/SourceSurface.h"
#include "remesh/TwinPatches.h"
#include "remesh/triangles.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <string>

namespace TARN_ZEF
{
namespace
{
constexpr double LEAST_EXTENT = 1e-100;
constexpr double MOST_EXTENT = 1e100;
// A length that is found: this part of the extents, or less where a tenth of the features is smaller.
constexpr double PIECES_PER_EXTENT = 40.0;
constexpr double MOST_PIECES_PER_EXTENT = 400.0;
constexpr double SMALL_FEATURES = 0.1;
constexpr double PIECES_ROUND = 6.0; // of a closed feature
// A rough scan is followed less closely: this many times its roughness, at most this part of the length.
constexpr double ROUGHNESS_FACTOR = 10.0;
constexpr double ROUGH_TOLERANCE = 0.1;
// Triangles on a square of the length: usually, and at least; pieces of features on a length, at least.
constexpr double TRIANGLES_PER_SQUARE = 2.31;
constexpr double LEAST_PER_SQUARE = 1.29;
constexpr double LEAST_PER_LENGTH = 0.75;
constexpr double LONGER = 1.25; // each time a length that was found makes too many triangles

double extentOf(const std::vector<Point3>& vPoints)
{
    Point3 low = vPoints.front();
    Point3 high = low;
    for (const Point3& p : vPoints)
    {
        low.set(std::min(low.x(), p.x()), std::min(low.y(), p.y()), std::min(low.z(), p.z()));
        high.set(std::max(high.x(), p.x()), std::max(high.y(), p.y()), std::max(high.z(), p.z()));
    }
    return getMax(high.x() - low.x(), high.y() - low.y(), high.z() - low.z());
}

void scale(std::vector<Point3>& vPoints, double factor)
{
    for (Point3& p : vPoints)
        p.set(p.x() * factor, p.y() * factor, p.z() * factor);
}

// The value below which the given part of all lies; reorders.
double quantile(std::vector<double>& values, double part)
{
    const auto it =
        values.begin() + static_cast<std::ptrdiff_t>(part * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), it, values.end());
    return *it;
}
} // namespace

// All is worked out at extents of about 1, and brought back in the end: neither volumes nor fourth powers of lengths
// leave the range of numbers then. The factor is a power of two, so nothing is rounded.
bool SoupRemesh::run(const std::vector<Point3>& vTriCorners, const std::function<void(double)>& progress,
                     const Reshape& reshape)
{
    std::vector<Point3> vFinite = takeFinite(vTriCorners);
    const double extent = vFinite.empty() ? 0.0 : extentOf(vFinite);
    if (extent == 0.0)
        return false;
    if (!(extent > LEAST_EXTENT && extent < MOST_EXTENT))
        refuse<ZefBadArgument>("extent > LEAST_EXTENT && extent < MOST_EXTENT",
                               "the extents of the triangles are outside 1e-100 to 1e100");
    const int exponent = std::ilogb(extent);
    scale(vFinite, std::ldexp(1.0, -exponent));
    if (options.length != RemeshOptions::FOUND)
        options.length = std::clamp(options.length * std::ldexp(1.0, -exponent), DBL_MIN, MOST_EXTENT);
    if (!runAtUnit(vFinite, progress, reshape))
        return false;
    scale(result.vPoints, std::ldexp(1.0, exponent));
    report.length *= std::ldexp(1.0, exponent);
    report.tolerance *= std::ldexp(1.0, exponent);
    report.farthestPlace *= std::ldexp(1.0, exponent);
    return true;
}

bool SoupRemesh::runAtUnit(const std::vector<Point3>& vTriCorners,
                           const std::function<void(double)>& progress, const Reshape& reshape)
{
    FlatSoup soup;
    SourceSurface source;
    if (!makeSound(vTriCorners, soup))
        return false;
    ASSEX_TEXT(source.build(soup), "the parted soup is no oriented manifold");
    soup = FlatSoup();
    report.featureAngle =
        options.featureAngle == RemeshOptions::FOUND ? source.findFeatureAngle() : options.featureAngle;
    const bool bGiven = options.length != RemeshOptions::FOUND;
    report.length = bGiven ? options.length : findLength(source);
    if (reshape && !replace(source, reshape))
        return false;
    while (!tryLength(source, progress))
    {
        if (bGiven)
            refuse<ZefBadArgument>("numTriangles <= maxTriangles",
                                   "this length makes more than the largest number of triangles, " +
                                       std::to_string(options.maxTriangles));
        if (report.length > source.getExtent())
            refuse<ZefBadArgument>("numTriangles <= maxTriangles",
                                   "the features alone need more than the largest number of triangles, " +
                                       std::to_string(options.maxTriangles));
        report.length *= LONGER;
    }
    return true;
}

bool SoupRemesh::replace(SourceSurface& source, const Reshape& reshape) const
{
    FlatSoup soup;
    source.getMesh().getFlat(soup.vPoints, soup.vCorners);
    reshape(soup, report.length);
    if (soup.vCorners.empty())
        return false;
    ASSEX_TEXT(source.build(soup), "the surface in place of the soup is no oriented manifold");
    return true;
}

// False if there would be too many triangles.
bool SoupRemesh::tryLength(SourceSurface& source, const std::function<void(double)>& progress)
{
    const double tolerance =
        std::max(options.tolerance,
                 std::min(ROUGH_TOLERANCE,
                          ROUGHNESS_FACTOR * source.getRoughness(report.featureAngle) / report.length)) *
        report.length;
    report.tolerance = tolerance;
    source.markFeatures(report.featureAngle, report.length, tolerance,
                        tolerance > options.tolerance * report.length);
    if (needsTooMany(source))
        return false;
    Remesher remesher(source, {report.length, tolerance, !options.bCoarse, options.maxTriangles});
    if (!remesher.run(progress))
        return false;
    report.numFarPlaces = remesher.getNumFarPlaces();
    report.farthestPlace = remesher.getFarthest();
    // Only where bodies were parted can any have touched.
    if (report.numParted > 0)
        TwinPatches(source).getFlat(remesher.getMesh(), result);
    else
        remesher.getMesh().getFlat(result.vPoints, result.vCorners);
    report.numTriangles = result.numTriangles();
    return true;
}

// By area and features alone, before anything is made: no edge stays longer than 4/3 of the length, and a face of n
// edges has at least n - 2 triangles.
bool SoupRemesh::needsTooMany(const SourceSurface& source) const
{
    const double sqLength = report.length * report.length;
    double along = 0.0;
    for (const CreaseChain& chain : source.getChains())
        along += source.lengthOf(chain);
    return LEAST_PER_SQUARE * source.getArea() > options.maxTriangles * sqLength ||
           LEAST_PER_LENGTH * along >
               (options.maxTriangles + 2.0 * source.getMesh().getNumTriangles()) * report.length;
}

std::vector<Point3> SoupRemesh::takeFinite(const std::vector<Point3>& vTriCorners)
{
    std::vector<Point3> vFinite;
    vFinite.reserve(vTriCorners.size());
    for (std::size_t i = 0; i < vTriCorners.size(); i += 3)
        if (std::all_of(&vTriCorners[i], &vTriCorners[i] + 3, isFinite))
            vFinite.insert(vFinite.end(), &vTriCorners[i], &vTriCorners[i] + 3);
        else
            ++report.numNonFinite;
    return vFinite;
}

bool SoupRemesh::makeSound(const std::vector<Point3>& vTriCorners, FlatSoup& soup)
{
    SoupWelder welder(options.weldTolerance * extentOf(vTriCorners));
    welder.run(vTriCorners, soup);
    report.numWelded = welder.getNumWelded();
    report.numFlat = welder.getNumFlat();
    report.numDoubled = welder.getNumDoubled();
    report.numJoints = welder.getNumJoints();
    if (soup.vCorners.empty())
        return false;
    BodyFinder finder(soup);
    finder.run();
    report.numParted = finder.getNumCrowded();
    BodyParter parter;
    parter.run(soup);
    report.numCut = parter.getNumCut();
    report.numParts = parter.getNumParts();
    std::vector<bool> vTurned = parter.getTurned();
    PartTurner turner(soup, parter.getParts(), parter.getNumParts(), vTurned);
    turner.run();
    report.numClosed = turner.getNumClosed();
    report.numCavities = turner.getNumCavities();
    report.numTurned = static_cast<int>(std::count(vTurned.begin(), vTurned.end(), true));
    return true;
}

// Told nothing: a tenth of the chains of features may be shorter than the length, no more; a round one counts as one
// of six pieces. A soup without features keeps its own edge length.
double SoupRemesh::findLength(SourceSurface& source) const
{
    source.markFeatures(report.featureAngle, DBL_MAX, DBL_MAX, false);
    std::vector<double> vSizes;
    for (const CreaseChain& chain : source.getChains())
    {
        const double len = source.lengthOf(chain);
        vSizes.push_back(chain.vVertices.front() == chain.vVertices.back() ? len / PIECES_ROUND : len);
    }
    double length = source.getExtent() / PIECES_PER_EXTENT;
    if (!vSizes.empty())
        length = std::min(length, quantile(vSizes, SMALL_FEATURES));
    else
    {
        std::vector<double> vEdges;
        source.getMesh().forEachEdge(
            [&](int h)
            {
                const HalfEdgeMesh& mesh = source.getMesh();
                vEdges.push_back((mesh.point(mesh.to(h)) - mesh.point(mesh.from(h))).length());
            });
        length = std::min(length, quantile(vEdges, 0.5));
    }
    length = std::max(length, source.getExtent() / MOST_PIECES_PER_EXTENT) * options.lengthFactor;
    return std::max(length, std::sqrt(TRIANGLES_PER_SQUARE * source.getArea() / options.maxTriangles));
}

} // namespace TARN_ZEF
