#include "intake/Cloud.h"

#include <cmath>
#include <new>

#include "core/CallRecorder.h"
#include "core/Progress.h"
#include "core/cancel.h"
#include "geometry/PointTable.h"
#include "geometry/isFinite.h"
#include "intake/Pixel.h"
#include "intake/Smooth.h"
#include "lattice/CellOrder.h"
#include "parallel/parallelFor.h"

namespace TARN_ZEF
{
namespace
{
constexpr std::size_t MIN_CHUNK = 5000;
constexpr std::size_t TRIANGLE_CORNERS = 3;
// With fewer neighbours a node stands at a border, where its plane says little about the cell's centre.
constexpr std::size_t MIN_LINKS_TO_PROJECT = 8;

// Drops every group of groupSize consecutive points that is not finite; the result is the number of such
// groups.
std::size_t dropNonFinite(std::vector<Point3>& v, std::size_t groupSize)
{
    std::size_t numKept = 0;
    for (std::size_t i = 0; i < v.size(); i += groupSize)
    {
        bool bFinite = true;
        for (std::size_t k = i; k < i + groupSize; ++k)
            bFinite = bFinite && isFinite(v[k]);
        if (!bFinite)
            continue;
        if (numKept != i)
            for (std::size_t k = 0; k < groupSize; ++k)
                v[numKept + k] = v[i + k];
        numKept += groupSize;
    }
    const std::size_t numDropped = (v.size() - numKept) / groupSize;
    v.resize(numKept);
    return numDropped;
}

// The node of each cell that was made first, if it has a plane; ascending by cell.
std::vector<std::pair<u64, std::uint32_t>> findFirstNodes(const Calc& calc, const std::vector<SNode>& vNodes)
{
    std::vector<u64> vCodes(vNodes.size());
    parallelFor(vNodes.size(), MIN_CHUNK,
                [&](std::size_t from, std::size_t to)
                {
                    for (std::size_t i = from; i < to; ++i)
                        vCodes[i] = calc.getCCD(vNodes[i].getPoint());
                });
    const CellOrder order(std::move(vCodes));
    std::vector<std::pair<u64, std::uint32_t>> vCCD2SN;
    vCCD2SN.reserve(order.size());
    const std::vector<std::uint32_t> vFirsts = order.getFirsts();
    for (std::size_t i = 0; i + 1 < vFirsts.size(); ++i)
    {
        std::uint32_t first = order.getElement(vFirsts[i]);
        for (std::size_t k = vFirsts[i] + 1; k < vFirsts[i + 1]; ++k)
            if (vNodes[order.getElement(k)].getNumber() < vNodes[first].getNumber())
                first = order.getElement(k);
        if (vNodes[first].hasPlane())
            vCCD2SN.emplace_back(order.getCode(vFirsts[i]), first);
    }
    return vCCD2SN;
}

} // namespace

Cloud::Cloud(const std::string& name_, double spacingAbs_, double spacingFactor_, bool bMelt_,
             SpacingBy spacingBy_)
    : name(name_)
    , spacingAbs(spacingAbs_)
    , spacingFactor(spacingFactor_)
    , bMelt(bMelt_)
    , spacingBy(spacingBy_)
{
}

Cloud::~Cloud() = default;

// --- Input ------------------------------------------------------------------------------------------------

void Cloud::setPoints(const std::vector<Point3>& v)
{
    requireNumber(v.size());
    takePoints(v);
}

void Cloud::takePoints(std::vector<Point3> v)
{
    requireNumber(v.size());
    requireTriangles(v.size());
    addToReport(&CallReport::numPoints, v.size());
    const std::size_t groupSize = bMelt ? TRIANGLE_CORNERS : 1;
    const std::size_t numDropped = dropNonFinite(v, groupSize);
    addToReport(&CallReport::numNotFinite, numDropped * groupSize);
    if (numDropped > 0)
        warningMessage("Cloud", "Skipped " + std::to_string(numDropped) + " non-finite " +
                                    (bMelt ? "triangles" : "points"));
    frame = NearFrame::around(v, spacingAbs);
    frame.enter(v);
    vPoints = std::move(v);
    numInputPoints = vPoints.size();
    if (!bMelt)
        addToReport(&CallReport::numUsedPoints, numInputPoints);
    if (!vPoints.empty())
        computeBoundingBox();
}

void Cloud::computeBoundingBox()
{
    vPoints.front().xyz(bbMin[0], bbMin[1], bbMin[2]);
    vPoints.front().xyz(bbMax[0], bbMax[1], bbMax[2]);
    for (const Point3& p : vPoints)
    {
        const double coords[3] = {p.x(), p.y(), p.z()};
        for (int axis = 0; axis < 3; ++axis)
        {
            if (coords[axis] > bbMax[axis])
                bbMax[axis] = coords[axis];
            else if (coords[axis] < bbMin[axis])
                bbMin[axis] = coords[axis];
        }
    }
}

bool Cloud::isEmpty() const
{
    if (!vPoints.empty())
        return false;
    warningMessage("Cloud", "Nothing to do for cloud " + name);
    return true;
}

// --- Scan intake ------------------------------------------------------------------------------------------

void Cloud::prepareScanPoints(bool bSmooth)
{
    ASSEX_TEXT(!bMelt, "!bMelt");
    if (isEmpty())
        return;
    estimateResolution();
    createCalc();
    requireMemory(bSmooth ? MemoryUse::SMOOTHED_SCAN : MemoryUse::SCAN);
    const StageScope stage("cells");
    Smooth sm(std::move(vPoints), pCalc.get());
    vPoints.clear();
    sm.run(bSmooth);
    createBundles(&sm);
}

std::size_t Cloud::forecastMemory(MemoryUse use)
{
    if (isEmpty())
        return 0;
    estimateResolution();
    createCalc();
    if (bMelt)
        requireArea();
    return MemoryForecast(vPoints, use).getBytes(usedSpacing);
}

void Cloud::createBundles(Smooth* pSmooth)
{
    Progress* const pProgress = getRootProgress()->getChildProgressSetTodo("CL_creb", 6);
    const std::vector<CellPoint> vPoints0 = makeBundlePoints(*pSmooth);
    addToReport(&CallReport::numRemovedCells, pSmooth->getNodes().size() - vPoints0.size());
    if (vPoints0.empty())
        tellOutliers(pSmooth->getNodes());
    pSmooth->clear();
    pProgress->increment(5);
    initPool(bundlePool, vPoints0.size());
    initPool(pointPool, vPoints0.size());
    CancelStride cancel;
    for (const CellPoint& cellPoint : vPoints0)
    {
        cancel.step();
        makeBundle(new (pointPool.getNext()) Point3(cellPoint.point), cellPoint.ccd);
    }
    pProgress->increment();
    pProgress->setFinished(true);
}

std::vector<Cloud::CellPoint> Cloud::makeBundlePoints(const Smooth& smooth) const
{
    const std::vector<SNode>& vNodes = smooth.getNodes();
    const std::vector<std::pair<u64, std::uint32_t>> vCCD2SN = findFirstNodes(*pCalc, vNodes);
    std::vector<CellPoint> vPoints0(vCCD2SN.size());
    parallelFor(vCCD2SN.size(), MIN_CHUNK,
                [&](std::size_t from, std::size_t to)
                {
                    for (std::size_t i = from; i < to; ++i)
                        vPoints0[i] = makeBundlePoint(smooth, vCCD2SN[i].second, vCCD2SN[i].first);
                });
    return vPoints0;
}

// A projected point can fall into another cell than its node, and then stands for that one. A gap filler
// stands for its own cell: the sheet needs it there, however far from the cell's centre the surface runs.
Cloud::CellPoint Cloud::makeBundlePoint(const Smooth& smooth, std::uint32_t node, u64 ccd) const
{
    const SNode& sn = smooth.getNodes()[node];
    if (sn.getNumPoints() == SNode::GAP_FILLER)
        return {smooth.seatOnSheet(node, pCalc->getMid(ccd)), ccd};
    if (smooth.getLinks(node).size() < MIN_LINKS_TO_PROJECT || sn.isCrease())
        return {sn.getPoint(), pCalc->getCCD(sn.getPoint())};
    const Point3 projected = sn.projection(pCalc->getMid(ccd));
    return {projected, pCalc->getCCD(projected)};
}

template <typename T>
void Cloud::initPool(SimplePool<T>& pool, std::size_t num)
{
    requireCells(num);
    const int initialSize = static_cast<int>(num);
    pool.init(initialSize, SimplePool<T>::increaseOf(initialSize));
}

void Cloud::makeBundle(Point3* pPoint, u64 ccd)
{
    Bundle* const pBundle = new (bundlePool.getNext()) Bundle(pPoint);
    pBundle->ccd = ccd;
}

void Cloud::getBundles(std::vector<std::pair<u64, Bundle*>>& v) const
{
    v.reserve(v.size() + bundlePool.size());
    bundlePool.forEach([&v](Bundle* pBundle) { v.emplace_back(pBundle->ccd, pBundle); });
}

// --- Melt intake ------------------------------------------------------------------------------------------

void Cloud::preparePixelsAndFeatures(double featureAngle, MemoryUse use)
{
    ASSEX_TEXT(bMelt, "bMelt");
    if (isEmpty())
        return;
    estimateResolution();
    createCalc();
    requireArea();
    requireMemory(use);
    const StageScope stage("cells");
    std::vector<Point3> vPixels;
    {
        // Refers to the points of the soup.
        Pixel pix(weld(), pCalc.get());
        pix.run(vPixels, vFeatures, vBorders, featureAngle);
    }
    vPoints = std::move(vPixels);
    addToReport(&CallReport::numPointCells, vPoints.size());
    initPool(bundlePool, vPoints.size());
    CancelStride cancel;
    for (Point3& p : vPoints)
    {
        cancel.step();
        makeBundle(&p, pCalc->getCCD(p));
    }
}

// The corners, where those with the same coordinates share the first of them.
std::vector<Point3*> Cloud::weld()
{
    std::vector<Point3*> vCorners;
    vCorners.reserve(vPoints.size());
    PointTable table;
    CancelStride cancel;
    for (Point3& p : vPoints)
    {
        cancel.step();
        Point3* pFirst = table.find(p);
        if (pFirst == nullptr)
        {
            (void)table.insert(&p);
            pFirst = &p;
        }
        vCorners.push_back(pFirst);
    }
    return vCorners;
}

} // namespace TARN_ZEF
