#include "intake/Smooth.h"

#include <algorithm>
#include <cmath>

#include "core/CallRecorder.h"
#include "core/CallScope.h"
#include "core/Progress.h"
#include "core/cancel.h"
#include "core/largeVectors.h"
#include "lattice/CellOrder.h"
#include "occupancy/SheetGaps.h"
#include "parallel/parallelFor.h"
#include "parallel/sortMT2.h"

namespace TARN_ZEF
{
namespace
{
constexpr std::size_t MIN_CHUNK = 5000;
constexpr std::size_t POINTS_AHEAD = 16;

void prefetch([[maybe_unused]] const void* p)
{
#ifdef __GNUC__
    __builtin_prefetch(p);
#endif
}

// Weights of the smoothing step: how far a node is drawn back towards where it started (the rest goes to
// where it stood), and how much of the draw-back is its own (the rest is its neighbours' mean).
// Source: the HC algorithm of J. Vollmer, R. Mencl, H. Mueller: Improved Laplacian smoothing of noisy
// surface meshes, Computer Graphics Forum 18 (1999).
constexpr double START_WEIGHT = 0.3;
constexpr double PREVIOUS_WEIGHT = 0.7;
constexpr double OWN_WEIGHT = 0.2;
constexpr double OTHERS_WEIGHT = 0.8;
// With fewer neighbours, a node stands at a border, which smoothing would pull in.
constexpr std::size_t MIN_LINKS_TO_MOVE = 8;

// Every element of [0, n) on its own.
template <typename F>
void forEachParallel(std::size_t n, F f)
{
    parallelFor(n, MIN_CHUNK,
                [&f](std::size_t from, std::size_t to)
                {
                    for (std::size_t i = from; i < to; ++i)
                        f(i);
                });
}
} // namespace

Smooth::Smooth(std::vector<Point3> vPoints_, const Calc* pCalc_)
    : vPoints(std::move(vPoints_))
    , pCalc(pCalc_)
    , cellSize(pCalc_->getCellSizeX())
    , bOwnMinArea(isIndependentCall())
{
}

void Smooth::clear()
{
    std::vector<SNode>().swap(vNodes);
    std::vector<Point3>().swap(vStartPoints);
    links.clear();
}

void Smooth::run(bool bSmooth)
{
    Progress* const pProgress = getRootProgress()->getChildProgressSetTodo("SM_run", 9);
    createNodes();
    pProgress->increment();
    completeNodes();
    pProgress->increment();
    relinkNodes();
    pProgress->increment();
    if (bSmooth)
    {
        moveNodes();
        pProgress->increment();
        completeNodes();
        pProgress->increment();
        relinkNodes();
        pProgress->increment();
    }
    estimateNNV();
    pProgress->increment();
    pProgress->setFinished(true);
}

// --- The nodes --------------------------------------------------------------------------------------------

void Smooth::createNodes()
{
    std::vector<u64> vCodes;
    growTo(vCodes, vPoints.size());
    forEachParallel(vCodes.size(), [&](std::size_t i) { vCodes[i] = pCalc->getRCD(vPoints[i]); });
    const CellOrder order(std::move(vCodes));
    const std::vector<std::uint32_t> vFirsts = order.getFirsts();
    const std::size_t numNodes = vFirsts.size() - 1;
    addToReport(&CallReport::numPointCells, numNodes);
    // Room for the nodes to come; address space only, until they do.
    vNodes.reserve(numNodes + numNodes / 2);
    growTo(vNodes, numNodes);
    forEachParallel(numNodes,
                    [&](std::size_t i)
                    {
                        const std::size_t first = vFirsts[i];
                        // The points of a cell may stand anywhere in the cloud.
                        if (first + POINTS_AHEAD < order.size())
                            prefetch(&vPoints[order.getElement(first + POINTS_AHEAD)]);
                        vNodes[i] = makeNode(
                            vFirsts[i + 1] - first,
                            [&](std::size_t k) { return order.getElement(first + k); }, order.getCode(first),
                            i);
                    });
    std::vector<Point3>().swap(vPoints);
}

template <typename GetPlace>
SNode Smooth::makeNode(std::size_t num, GetPlace getPlace, u64 rcd, std::size_t number) const
{
    Point3 pos = vPoints[getPlace(0)];
    if (num > 1)
    {
        double x = 0.0;
        double y = 0.0;
        double z = 0.0;
        for (std::size_t i = 0; i < num; ++i)
            vPoints[getPlace(i)].addOwnCoords(x, y, z);
        const double count = static_cast<double>(num);
        pos.set(x / count, y / count, z / count);
    }
    return {rcd, pos, static_cast<int>(num), static_cast<std::uint32_t>(number)};
}

std::vector<CCD> Smooth::getOccupiedCells() const
{
    std::vector<CCD> vOrgCCD(vNodes.size());
    forEachParallel(vNodes.size(), [&](std::size_t i) { vOrgCCD[i] = pCalc->getCCD(vNodes[i].getPoint()); });
    sortMT(vOrgCCD.begin(), vOrgCCD.end());
    vOrgCCD.erase(std::unique(vOrgCCD.begin(), vOrgCCD.end()), vOrgCCD.end());
    return vOrgCCD;
}

void Smooth::completeNodes()
{
    links.clear();
    const SheetGaps gaps(getOccupiedCells(), pCalc);
    std::vector<SNode> vNew;
    vNew.reserve(gaps.getEnclosed().size() + gaps.getNeeded().size());
    for (const std::vector<CCD>* pCells : {&gaps.getEnclosed(), &gaps.getNeeded()})
        for (const CCD ccd : *pCells)
            vNew.emplace_back(pCalc->ccdToRCD(ccd), pCalc->getMid(ccd), SNode::GAP_FILLER,
                              static_cast<std::uint32_t>(vNodes.size() + vNew.size()));
    addToReport(&CallReport::numFilledCells, vNew.size());
    addNodes(std::move(vNew));
}

void Smooth::addNodes(std::vector<SNode> vNew)
{
    ASSEX(vNodes.size() + vNew.size() < 0xFFFFFFFF);
    std::stable_sort(vNew.begin(), vNew.end(),
                     [](const SNode& a, const SNode& b) { return a.getRCD() < b.getRCD(); });
    // Merged from the end, so that no second array of nodes is needed. Of equal cells the new node is last.
    std::size_t from = vNodes.size();
    std::size_t to = vNodes.size() + vNew.size();
    vNodes.resize(to);
    while (!vNew.empty())
    {
        checkCancelledAt(to);
        if (from > 0 && vNew.back().getRCD() < vNodes[from - 1].getRCD())
        {
            vNodes[--to] = vNodes[--from];
            continue;
        }
        vNodes[--to] = vNew.back();
        vNew.pop_back();
    }
}

// --- The smoothing step -----------------------------------------------------------------------------------

void Smooth::moveNodes()
{
    rememberStartPoints();
    const std::vector<Vector3> vMoves = averagePositions();
    std::vector<char> vLeaves(vNodes.size());
    std::vector<Point3> vTargets(vNodes.size());
    forEachParallel(vNodes.size(),
                    [&](std::size_t i) { vLeaves[i] = findTarget(i, vMoves, vTargets[i]) ? 1 : 0; });
    // Made in the order of the nodes that left.
    std::vector<std::pair<std::uint32_t, std::uint32_t>> vSmoothPoints;
    for (std::size_t i = 0; i < vNodes.size(); ++i)
        if (vLeaves[i] != 0)
            vSmoothPoints.emplace_back(vNodes[i].getNumber(), static_cast<std::uint32_t>(i));
    sortMT(vSmoothPoints.begin(), vSmoothPoints.end());
    std::vector<SNode> vNew;
    vNew.reserve(vSmoothPoints.size());
    for (const auto& [number, node] : vSmoothPoints)
        vNew.emplace_back(pCalc->getRCD(vTargets[node]), vTargets[node], SNode::MOVED,
                          static_cast<std::uint32_t>(vNodes.size() + vNew.size()));
    addToReport(&CallReport::numMovedCells, vNew.size());
    addNodes(std::move(vNew));
}

void Smooth::rememberStartPoints()
{
    const std::size_t numKnown = vStartPoints.size();
    vStartPoints.resize(vNodes.size());
    for (const SNode& node : vNodes)
        if (node.getNumber() >= numKnown)
            vStartPoints[node.getNumber()] = node.getPoint();
}

std::vector<Vector3> Smooth::averagePositions()
{
    std::vector<Point3> vPrevious(vNodes.size());
    forEachParallel(vNodes.size(), [&](std::size_t i) { vPrevious[i] = vNodes[i].getPoint(); });
    std::vector<Vector3> vMoves(vNodes.size());
    const auto average = [&](std::size_t i)
    {
        if (getLinks(i).empty())
            return;
        double x = 0.0;
        double y = 0.0;
        double z = 0.0;
        std::size_t num = 0;
        for (const std::uint32_t link : getLinks(i))
            if (vNodes[link].getNumPoints() != SNode::GAP_FILLER)
            {
                vPrevious[link].addOwnCoords(x, y, z);
                ++num;
            }
        Point3 mean(x, y, z);
        if (num > 0)
        {
            const double count = static_cast<double>(num);
            mean.set(x / count, y / count, z / count);
            vNodes[i].setPoint(mean);
        }
        // Among gap fillers only, the mean counts as the origin: the far move keeps node and neighbours in place.
        const Point3& start = vStartPoints[vNodes[i].getNumber()];
        const Point3& previous = vPrevious[i];
        vMoves[i].set(mean.x() - (START_WEIGHT * start.x() + PREVIOUS_WEIGHT * previous.x()),
                      mean.y() - (START_WEIGHT * start.y() + PREVIOUS_WEIGHT * previous.y()),
                      mean.z() - (START_WEIGHT * start.z() + PREVIOUS_WEIGHT * previous.z()));
    };
    forEachParallel(vNodes.size(), average);
    return vMoves;
}

bool Smooth::findTarget(std::size_t node, const std::vector<Vector3>& vMoves, Point3& target) const
{
    const std::span<const std::uint32_t> neighbours = getLinks(node);
    if (neighbours.size() < MIN_LINKS_TO_MOVE)
        return false;
    Vector3 sum;
    for (const std::uint32_t link : neighbours)
        sum.add(vMoves[link]);
    const double othersWeight = OTHERS_WEIGHT / static_cast<double>(neighbours.size());
    const Vector3 back = vMoves[node] * OWN_WEIGHT + sum * othersWeight;
    if (!(std::fabs(back.x()) < cellSize && std::fabs(back.y()) < cellSize && std::fabs(back.z()) < cellSize))
        return false;
    target = vNodes[node].getPoint() - back;
    return pCalc->getRCD(target) != vNodes[node].getRCD();
}

} // namespace TARN_ZEF
