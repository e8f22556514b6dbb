#include "intake/Pixel.h"

#include <algorithm>
#include <cmath>
#include <functional>

#include "core/CallRecorder.h"
#include "core/Progress.h"
#include "core/cancel.h"
#include "core/largeVectors.h"
#include "geometry/tools.h"
#include "intake/SegmentWalk.h"
#include "lattice/CellSet.h"
#include "parallel/sortMT2.h"

namespace TARN_ZEF
{
namespace
{
// Rows, and the points of a row, this part of a cell apart stay closer than a cell's diagonal.
constexpr double ROW_STEP = 0.577;
constexpr double DEGREES_TO_RAD = 3.14159 / 180.0;
// Corner angle in degrees at the longest edge below which a triangle has no inside to speak of.
constexpr double NEEDLE_ANGLE = 1e-05;
// Squared lengths below this are too near to the end of the double's range to normalise by.
constexpr double TINY_SQ_LENGTH = 1e-290;

Point3 project(const Plane& plane, const Point3& p)
{
    return p - plane.getNV() * plane.getSignedDistance(p);
}

// Whether a unit normal can be had, whichever corner it is computed from.
bool isUsable(const Point3* a, const Point3* b, const Point3* c)
{
    if (sqDistance(*a, *b) < TINY_SQ_LENGTH || sqDistance(*b, *c) < TINY_SQ_LENGTH ||
        sqDistance(*c, *a) < TINY_SQ_LENGTH)
        return false;
    bool bOK = false;
    (void)getNormalVector(a, b, c, bOK);
    return bOK;
}

// Reports steps in portions of the node's own stride.
class StridedProgress
{
public:
    explicit StridedProgress(Progress* pProgress_)
        : pProgress(pProgress_)
        , stride(pProgress_->getReportEvery())
    {
    }
    void step()
    {
        cancel.step();
        if (++numVisited < stride)
            return;
        pProgress->increment(numVisited);
        numVisited = 0;
    }

private:
    Progress* pProgress;
    u64 stride;
    u64 numVisited = 0;
    CancelStride cancel;
};

// The corners of feature edges come before all other pixels.
void pixelFeatureCorners(const FeatureList& vFeatureEdges, const Calc& calc, CellSet& sUsed,
                         std::vector<RCDPoint>& vPixelRCD)
{
    Progress* const pProgress = getRootProgress()->getChildProgressSetTodo("rFins", vFeatureEdges.size());
    for (const auto& [maxDih, ends] : vFeatureEdges)
    {
        for (const Point3* pPoint : {ends.first, ends.second})
        {
            const RCD rcd = calc.getRCD(*pPoint);
            if (sUsed.insert(rcd))
                vPixelRCD.emplace_back(rcd, *pPoint);
        }
        pProgress->increment();
    }
    pProgress->setFinished(true);
}

void appendCellPairs(const std::vector<RCDPoint>& vRaster, const Calc& calc, CCDPairs& vPairs)
{
    for (std::size_t i = 1; i < vRaster.size(); ++i)
    {
        const CCD ccd0 = calc.getCCD(vRaster[i - 1].second);
        const CCD ccd1 = calc.getCCD(vRaster[i].second);
        ASSEX_TEXT(ccd0 != ccd1, "ccd0!=ccd1");
        vPairs.emplace_back(std::min(ccd0, ccd1), std::max(ccd0, ccd1));
    }
}

void orderFeatures(double featureAngle, FeatureList& vFeatureEdges)
{
    sortMT(vFeatureEdges.begin(), vFeatureEdges.end());
    Progress* const pProgress = getRootProgress()->getChildProgressSetTodo("reo", 1);
    FeatureChainMgr mgr(vFeatureEdges);
    mgr.reorder();
    pProgress->increment();
    pProgress->setFinished(true);
    if (featureAngle >= 360.0)
        std::reverse(vFeatureEdges.begin(), vFeatureEdges.end());
}
} // namespace

Pixel::Pixel(const std::vector<Point3*>& vTriangleCorners, const Calc* pCalc_)
    : pCalc(pCalc_)
    , spacingAbs(pCalc_->getCellSizeX())
{
    ASSEX_TEXT(!vTriangleCorners.empty(), "!vTriangleCorners.empty()");
    ASSEX_TEXT(vTriangleCorners.size() % 3 == 0, "vTriangleCorners.size()%3==0");
    ASSEX_TEXT(spacingAbs > 0, "spacingAbs>0");
    linkEdge2T(vTriangleCorners);
    if (vTri.empty())
        warningMessage("Pixel", "No non-degenerate triangles");
    else
        bfsSort();
}

void Pixel::run(std::vector<Point3>& vPixels, CCDPairs& vFeatures, CCDPairs& vBorders, double featureAngle)
{
    if (vTri.empty())
        return;
    std::vector<RCDPoint> vEdgePixels;
    pixelAllEdges(featureAngle, vEdgePixels, vFeatures, vBorders);

    CellPixels triPixels;
    pixelAllTriangles(triPixels);

    Progress* const pSort = getRootProgress()->getChildProgressSetTodo("oifc", 1);
    const std::vector<RCDPoint> vTriPixels = triPixels.take();
    pSort->increment();
    pSort->setFinished(true);

    CellSet sUsedRCD(vEdgePixels.size());
    Progress* const pEdges = getRootProgress()->getChildProgressSetTodo("mandiffe", vEdgePixels.size());
    CancelStride cancel;
    for (const auto& [rcd, point] : vEdgePixels)
    {
        cancel.step();
        makeRoomFor(vPixels);
        if (sUsedRCD.insert(rcd))
            vPixels.push_back(point);
        pEdges->increment();
    }
    pEdges->setFinished(true);

    Progress* const pInside = getRootProgress()->getChildProgressSetTodo("mandiffa", vTriPixels.size());
    StridedProgress strided(pInside);
    for (const auto& [rcd, point] : vTriPixels)
    {
        makeRoomFor(vPixels);
        if (sUsedRCD.insert(rcd))
            vPixels.push_back(point);
        strided.step();
    }
    pInside->setFinished(true);
}

// --- Connectivity -----------------------------------------------------------------------------------------

void Pixel::linkEdge2T(const std::vector<Point3*>& vTriangleCorners)
{
    const std::less<Point3*> isLower;
    const auto [itLow, itHigh] =
        std::minmax_element(vTriangleCorners.begin(), vTriangleCorners.end(), isLower);
    pBase = *itLow;
    ASSEX(static_cast<u64>(*itHigh - pBase) >> 32 == 0);
    vTri.reserve(vTriangleCorners.size() / 3 + 1);
    vEdge2Tri.reserve(vTriangleCorners.size() + 1);
    std::size_t skip = 0;
    CancelStride cancel;
    for (std::size_t i = 0; i < vTriangleCorners.size(); i += 3)
    {
        cancel.step();
        Point3* corners[3] = {vTriangleCorners[i], vTriangleCorners[i + 1], vTriangleCorners[i + 2]};
        bool bOK = isUsable(corners[0], corners[1], corners[2]);
        std::sort(corners, corners + 3, isLower);
        // Near the limit the order of the corners decides, and the normal is later asked for in this one.
        bOK = bOK && isUsable(corners[0], corners[1], corners[2]);
        if (!bOK)
        {
            ++skip;
            continue;
        }
        const std::uint32_t tri = static_cast<std::uint32_t>(vTri.size());
        vTri.emplace_back(corners[0], corners[1], corners[2]);
        vEdge2Tri.emplace_back(makeEdge(corners[0], corners[1]), tri);
        vEdge2Tri.emplace_back(makeEdge(corners[1], corners[2]), tri);
        vEdge2Tri.emplace_back(makeEdge(corners[0], corners[2]), tri);
    }
    sortMT(vEdge2Tri.begin(), vEdge2Tri.end());
    addToReport(&CallReport::numUsedPoints, 3 * vTri.size());
    addToReport(&CallReport::numFlatCorners, 3 * skip);
    if (skip > 0)
        warningMessage("Pixel", "Skipped " + std::to_string(skip) + " degenerate triangles");
}

u64 Pixel::makeEdge(const Point3* a, const Point3* b) const noexcept
{
    return static_cast<u64>(a - pBase) << 32 | static_cast<u64>(b - pBase);
}

std::pair<Point3*, Point3*> Pixel::getEnds(u64 edge) const noexcept
{
    return {pBase + (edge >> 32), pBase + (edge & 0xFFFFFFFF)};
}

std::size_t Pixel::getGroupEnd(std::size_t begin) const noexcept
{
    std::size_t end = begin + 1;
    while (end < vEdge2Tri.size() && vEdge2Tri[end].first == vEdge2Tri[begin].first)
        ++end;
    return end;
}

// For triangle t and its edge opposite corner i: where in vEdge2Tri that edge begins, at place 3 t + i.
std::vector<std::uint32_t> Pixel::findEdgeGroups() const
{
    std::vector<std::uint32_t> vGroups;
    growTo(vGroups, vEdge2Tri.size());
    std::size_t begin = 0;
    for (std::size_t k = 0; k < vEdge2Tri.size(); ++k)
    {
        checkCancelledAt(k);
        const auto& [edge, tri] = vEdge2Tri[k];
        if (edge != vEdge2Tri[begin].first)
            begin = k;
        const auto [a, b] = getEnds(edge);
        const std::size_t opposite = a == vTri[tri].getP1() ? 0 : b == vTri[tri].getP2() ? 1 : 2;
        vGroups[std::size_t{3} * tri + opposite] = static_cast<std::uint32_t>(begin);
    }
    return vGroups;
}

// Breadth first over shared edges, so that triangles next to each other are handled next to each other.
void Pixel::bfsSort()
{
    const std::vector<std::uint32_t> vGroups = findEdgeGroups();
    std::vector<char> vVisited;
    growTo(vVisited, vTri.size());
    std::vector<char> vIsDone; // by group
    growTo(vIsDone, vEdge2Tri.size());
    std::vector<std::uint32_t> vOrder; // the queue, too: its front moves through it
    vOrder.reserve(vTri.size());
    std::size_t front = 0;
    for (std::size_t seed = vTri.size(); seed-- > 0;)
    {
        if (vVisited[seed])
            continue;
        vVisited[seed] = 1;
        vOrder.push_back(static_cast<std::uint32_t>(seed));
        for (; front < vOrder.size(); ++front)
        {
            checkCancelledAt(front);
            const std::size_t firstEdge = std::size_t{3} * vOrder[front];
            for (std::size_t i = firstEdge; i < firstEdge + 3; ++i)
            {
                // Once is enough, however many triangles meet at an edge.
                if (std::exchange(vIsDone[vGroups[i]], char{1}))
                    continue;
                const u64 edge = vEdge2Tri[vGroups[i]].first;
                for (std::size_t k = vGroups[i]; k < vEdge2Tri.size() && vEdge2Tri[k].first == edge; ++k)
                {
                    const std::uint32_t tri = vEdge2Tri[k].second;
                    if (!std::exchange(vVisited[tri], char{1}))
                        vOrder.push_back(tri);
                }
            }
        }
    }
    ASSEX(vOrder.size() == vTri.size());
    renumber(vOrder);
}

void Pixel::renumber(const std::vector<std::uint32_t>& vOrder)
{
    std::vector<Tri> vSorted;
    vSorted.reserve(vTri.size());
    std::vector<std::uint32_t> vNewPlaces;
    growTo(vNewPlaces, vTri.size());
    CancelStride cancel;
    for (const std::uint32_t old : vOrder)
    {
        cancel.step();
        vNewPlaces[old] = static_cast<std::uint32_t>(vSorted.size());
        vSorted.push_back(vTri[old]);
    }
    vTri.swap(vSorted);
    for (auto& entry : vEdge2Tri)
        entry.second = vNewPlaces[entry.second];
}

// --- Edges ------------------------------------------------------------------------------------------------

void Pixel::pixelAllEdges(double featureAngle, std::vector<RCDPoint>& vPixelRCD, CCDPairs& vFeatures,
                          CCDPairs& vBorders)
{
    FeatureList vFeatureEdges;
    std::vector<std::size_t> vFlatEdges; // places in vEdge2Tri
    sortOutEdges(featureAngle, vFeatureEdges, vFlatEdges);
    orderFeatures(featureAngle, vFeatureEdges);

    CellSet sUsed(2 * vFeatureEdges.size());
    pixelFeatureCorners(vFeatureEdges, *pCalc, sUsed, vPixelRCD);

    std::vector<RCDPoint> vRaster;
    Progress* const pFeature = getRootProgress()->getChildProgressSetTodo("feate", vFeatureEdges.size());
    CancelStride cancel;
    for (const auto& [maxDih, ends] : vFeatureEdges)
    {
        cancel.step();
        vRaster.clear();
        rasterizeEdge(*ends.first, *ends.second, vRaster);
        makeRoomFor(vPixelRCD, vRaster.size());
        for (const RCDPoint& pixel : vRaster)
            if (sUsed.insert(pixel.first))
                vPixelRCD.push_back(pixel);
        makeRoomFor(vFeatures, vRaster.size());
        appendCellPairs(vRaster, *pCalc, vFeatures);
        if (maxDih == FeatureEdge::BORDER_DIH)
            appendCellPairs(vRaster, *pCalc, vBorders);
        pFeature->increment();
    }
    pFeature->setFinished(true);

    Progress* const pFlat = getRootProgress()->getChildProgressSetTodo("nfeate", vFlatEdges.size());
    for (const std::size_t group : vFlatEdges)
    {
        cancel.step();
        const auto [a, b] = getEnds(vEdge2Tri[group].first);
        const Plane plane(*a, vTri[vEdge2Tri[group].second].getNNV(a, b));
        vRaster.clear();
        rasterizeEdge(*a, *b, vRaster);
        makeRoomFor(vPixelRCD, vRaster.size());
        for (RCDPoint& pixel : vRaster)
        {
            if (sUsed.contains(pixel.first))
                continue;
            pixelFlatEdge(plane, pixel);
            vPixelRCD.push_back(pixel);
        }
        pFlat->increment();
    }
    pFlat->setFinished(true);
}

void Pixel::sortOutEdges(double featureAngle, FeatureList& vFeatureEdges,
                         std::vector<std::size_t>& vFlatEdges)
{
    Progress* const pProgress = getRootProgress()->getChildProgressSetTodo("dih2e", vEdge2Tri.size());
    CancelStride cancel;
    for (std::size_t begin = 0, end = 0; begin < vEdge2Tri.size(); begin = end)
    {
        cancel.step();
        end = getGroupEnd(begin);
        const bool bBorder = end - begin == 1;
        const double maxDih = bBorder ? FeatureEdge::BORDER_DIH : getMaxDih(begin, end);
        if (!bBorder && !(maxDih > featureAngle))
            vFlatEdges.push_back(begin);
        else
            vFeatureEdges.emplace_back(maxDih, getEnds(vEdge2Tri[begin].first));
        pProgress->increment(end - begin);
    }
    pProgress->setFinished(true);
}

// Largest bend at an edge against its first triangle, in degrees. The others are asked for the side seen
// from the opposite direction: two triangles in one plane on both sides of the edge give 0.
double Pixel::getMaxDih(std::size_t begin, std::size_t end)
{
    const auto [a, b] = getEnds(vEdge2Tri[begin].first);
    const Vector3 nnv0 = vTri[vEdge2Tri[begin].second].getNNV(a, b);
    double maxDih = -1.0;
    for (std::size_t k = begin + 1; k < end; ++k)
        maxDih = std::max(maxDih, getAngleDegree(nnv0, vTri[vEdge2Tri[k].second].getNNV(b, a)));
    return maxDih;
}

// Moves the point of a cell on a flat edge to the part of the surface nearest to the cell's centre.
void Pixel::pixelFlatEdge(const Plane& plane, RCDPoint& pixel) const
{
    const Point3 projectedPoint = project(plane, pCalc->getMidOfRCD(pixel.first));
    if (pCalc->getRCD(projectedPoint) == pixel.first)
    {
        pixel.second = projectedPoint;
        return;
    }
    bool bOK = false;
    const Point3 midOfCutPlane = getMidOfCutPlane(pixel.first, plane, bOK);
    if (bOK)
        pixel.second = midOfCutPlane;
}

void Pixel::rasterizeEdge(const Point3& p0, const Point3& p1, std::vector<RCDPoint>& vEdgeRaster) const
{
    const RCD startRCD = pCalc->getRCD(p0);
    const RCD stopRCD = pCalc->getRCD(p1);
    if (startRCD == stopRCD)
        return;
    vEdgeRaster.emplace_back(startRCD, p0);
    SegmentWalk walk(p0, p1, pCalc->getRefOfRCD(startRCD), spacingAbs);
    // A straight line meets no more walls than the lattice has on the three axes.
    const u64 maxPasses = 3 * pCalc->getNumCells();
    for (u64 pass = 0;; ++pass)
    {
        ASSEX(pass < maxPasses);
        checkCancelledAt(static_cast<std::size_t>(pass));
        walk.findWall();
        const Point3 middle = walk.getMiddle();
        const RCD rcd = pCalc->getRCD(middle);
        if (rcd != startRCD)
        {
            if (rcd == stopRCD || walk.isBeyondEnd(middle))
                break;
            if (vEdgeRaster.back().first != rcd)
                vEdgeRaster.emplace_back(rcd, middle);
        }
        walk.goToWall();
    }
    ASSEX_TEXT(vEdgeRaster.back().first != stopRCD, "vEdgeRaster.back().first!=stopRCD");
    vEdgeRaster.emplace_back(stopRCD, p1);
}

Point3 Pixel::getMidOfCutPlane(RCD rcd, const Plane& plane, bool& bOK) const
{
    const Point3 ref = pCalc->getRefOfRCD(rcd);
    Point3 corners[8];
    double distances[8];
    for (unsigned i = 0; i < 8; ++i)
    {
        corners[i].set(ref.x() + ((i & 4) ? spacingAbs : 0.0), ref.y() + ((i & 2) ? spacingAbs : 0.0),
                       ref.z() + ((i & 1) ? spacingAbs : 0.0));
        distances[i] = plane.getSignedDistance(corners[i]);
    }
    bOK = false;
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
    int numCuts = 0;
    for (unsigned i = 0; i < 8; ++i)
    {
        for (unsigned axis = 1; axis < 8; axis *= 2)
        {
            const unsigned j = i | axis;
            if (j == i || (distances[i] > 0.0) == (distances[j] > 0.0))
                continue;
            const double t = distances[i] / (distances[i] - distances[j]);
            if (!(t >= 0.0 && t <= 1.0))
            {
                warningMessage(ZEF_HERE, "!aBools");
                return {};
            }
            (corners[i] + (corners[j] - corners[i]) * t).addOwnCoords(x, y, z);
            ++numCuts;
        }
    }
    if (numCuts < 3)
    {
        warningMessage(ZEF_HERE, "Not enough intersections, numCuts:" + std::to_string(numCuts));
        return {};
    }
    bOK = true;
    return {x / numCuts, y / numCuts, z / numCuts};
}

// --- Triangles --------------------------------------------------------------------------------------------

void Pixel::pixelAllTriangles(CellPixels& pixels) const
{
    Progress* const pProgress = getRootProgress()->getChildProgressSetTodo("ar4", vTri.size());
    CancelStride cancel;
    for (const Tri& tri : vTri)
    {
        cancel.step();
        pixels.startTriangle();
        rasterizeTriangle(tri.getP0(), tri.getP1(), tri.getP2(), pixels);
        pixels.endTriangle();
        pProgress->increment();
    }
    pProgress->setFinished(true);
}

// Rows across the triangle, along its longest edge p1-p2, up to the corner p0.
void Pixel::rasterizeTriangle(const Point3* p0, const Point3* p1, const Point3* p2, CellPixels& pixels) const
{
    const Plane plane(*p0, *p1, *p2);
    double len1 = (*p1 - *p2).length();
    double len2 = (*p0 - *p2).length();
    double len3 = (*p0 - *p1).length();
    if (len1 < len2)
    {
        std::swap(len1, len2);
        std::swap(p0, p1);
    }
    if (len1 < len3)
    {
        std::swap(len1, len3);
        std::swap(p0, p2);
    }
    const Vector3 vec10 = normalize(*p0 - *p1);
    const Vector3 vec20 = normalize(*p0 - *p2);
    const Vector3 vec12 = normalize(*p2 - *p1);
    const double angle1 = getAngleDegree(vec12, vec10);
    const double angle2 = getAngleDegree(vec12 * -1.0, vec20);
    if (angle1 < NEEDLE_ANGLE || angle2 < NEEDLE_ANGLE)
        return;
    const double lift1 = spacingAbs / std::sin(angle1 * DEGREES_TO_RAD) * ROW_STEP;
    const double lift2 = spacingAbs / std::sin(angle2 * DEGREES_TO_RAD) * ROW_STEP;
    const double numRows = std::ceil((*p0 - *p1).length() / lift1);
    CancelStride cancel;
    for (double i = 0.0; i < numRows; i += 1.0)
    {
        cancel.step();
        rasterizePlane(plane, *p1 + vec10 * (i * lift1), *p2 + vec20 * (i * lift2), pixels);
    }
}

// The row's first cell is left to its neighbours.
void Pixel::rasterizePlane(const Plane& plane, const Point3& a, const Point3& b, CellPixels& pixels) const
{
    Vector3 v = b - a;
    const double len = v.length();
    if (len == 0.0)
        return;
    const double maxComponent = v.getMaxAbsComponent();
    ASSEX_TEXT(maxComponent != 0, "maxComponent!=0");
    v.mul(spacingAbs * ROW_STEP / maxComponent);
    const double num = std::ceil(len / v.length());
    RCD lastRCD = pCalc->getRCD(a);
    CancelStride cancel;
    for (double i = 0.0; i < num; i += 1.0)
    {
        cancel.step();
        const Point3 onRow = a + v * i;
        const RCD rcd = pCalc->getRCD(onRow);
        if (rcd == lastRCD)
            continue;
        Point3 p = project(plane, pCalc->getMidOfRCD(rcd));
        if (pCalc->getRCD(p) != rcd)
            p = onRow;
        if (i + 1.0 >= num && (p - a).length() > len)
            break;
        pixels.add(rcd, p);
        lastRCD = rcd;
    }
}

} // namespace TARN_ZEF
