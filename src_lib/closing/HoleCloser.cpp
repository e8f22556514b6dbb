#include "closing/HoleCloser.h"

#include "core/cancel.h"
#include "core/refuse.h"
#include "judge/judgeMesh.h"

#include <algorithm>
#include <string>
#include <utility>

namespace TARN_ZEF
{
namespace
{
// Faults of new triangles come first in the judge's lists.
constexpr std::size_t MOST_FAULTS = 1'000'000;
} // namespace

HoleCloser::HoleCloser(const std::vector<Point3>& vPoints_, const std::vector<int>& vCorners_,
                       const std::vector<BorderLoop>& vChosen_, const FillOptions& options_)
    : vPoints(vPoints_)
    , vCorners(vCorners_)
    , vChosen(vChosen_)
    , options(options_)
    , mates(vCorners_)
    , rings(vCorners_, markLoops())
    , around{vPoints, vCorners, mates, rings, taken}
    , vFills(vChosen_.size())
    , vResults(vChosen_.size())
{
}

// Each loop is looked at before anything is done with its vertices.
std::vector<char> HoleCloser::markLoops() const
{
    std::vector<char> vMarks(vPoints.size(), 0);
    for (const BorderLoop& loop : vChosen)
    {
        requireLoop(loop);
        for (const int v : loop.vVertices)
            vMarks[static_cast<std::size_t>(v)] = 1;
    }
    return vMarks;
}

void HoleCloser::requireLoop(const BorderLoop& loop) const
{
    const std::size_t num = loop.vVertices.size();
    const auto number = std::to_string(&loop - vChosen.data());
    for (std::size_t i = 0; i < num; ++i)
    {
        const int a = loop.vVertices[i];
        const int b = loop.vVertices[(i + 1) % num];
        const bool bIndices = std::min(a, b) >= 0 && std::max(a, b) < static_cast<int>(vPoints.size());
        const bool bMayEnd = !loop.bClosed && i + 1 == num;
        if (!bIndices || (!bMayEnd && mates.findBorder(a, b) >= EdgeMates::NO_EDGE))
            refuse<ZefBadArgument>("each edge of a loop is one of the mesh's border",
                                   "loop " + number + " is none of this mesh: there is no border edge from " +
                                       std::to_string(a) + " to " + std::to_string(b) +
                                       "; take loops that findBorderLoops() gives for the same mesh");
    }
    std::vector<int> vSorted = loop.vVertices;
    std::sort(vSorted.begin(), vSorted.end());
    if (std::adjacent_find(vSorted.begin(), vSorted.end()) != vSorted.end())
        refuse<ZefBadArgument>("a loop names each vertex once", "loop " + number +
                                                                    " names a vertex twice; take loops that "
                                                                    "findBorderLoops() gives");
}

void HoleCloser::run(std::vector<Point3>& vNewPoints, std::vector<int>& vNewCorners)
{
    for (std::size_t i = 0; i < vChosen.size(); ++i)
    {
        checkCancelled();
        make(i);
    }
    while (mendFaults())
    {
    }
    std::vector<std::size_t> vOwners;
    collect(vNewPoints, vNewCorners, vOwners);
    for (std::size_t i = 0; i < vFills.size(); ++i)
    {
        vResults[i].bFilled = vFills[i].level != Level::OPEN;
        vResults[i].numTriangles = vFills[i].vCorners.size() / 3;
        vResults[i].numVertices = vFills[i].vPoints.size();
    }
}

void HoleCloser::make(std::size_t i)
{
    const BorderLoop& loop = vChosen[i];
    if (!loop.bClosed || loop.vVertices.size() < 3)
    {
        leaveOpen(i, "it leads round nothing");
        return;
    }
    HolePatch patch(around, loop.vVertices);
    if (!patch.triangulate(vFills[i].level == Level::SMALL))
    {
        leaveOpen(i, "every way to close it needs an edge that is there already, or a flat triangle");
        return;
    }
    if (vFills[i].level == Level::FULL && options.bRefine)
    {
        patch.refine();
        if (options.bFair)
            patch.fair();
    }
    vFills[i].vPoints = patch.getNewPoints();
    vFills[i].vCorners = patch.getCorners();
    forEachNewEdge(vFills[i], [this](u64 key) { taken.insert(key); });
}

// Those between two vertices of the mesh; nobody else can make the others.
template <typename F>
void HoleCloser::forEachNewEdge(const Fill& fill, F f) const
{
    const std::vector<int>& v = fill.vCorners;
    for (std::size_t c = 0; c < v.size(); ++c)
    {
        const int a = v[c];
        const int b = v[c % 3 == 2 ? c - 2 : c + 1];
        if (std::max(a, b) < static_cast<int>(vPoints.size()) && !mates.hasEdge(a, b))
            f(EdgeMates::keyOf(a, b));
    }
}

void HoleCloser::leaveOpen(std::size_t i, const char* reason)
{
    vFills[i] = Fill{Level::OPEN, {}, {}};
    vResults[i].reason = reason;
}

bool HoleCloser::mendFaults()
{
    // The new ones first: see MOST_FAULTS.
    std::vector<Point3> vAllPoints = vPoints;
    std::vector<int> vAllCorners;
    std::vector<std::size_t> vOwners;
    collect(vAllPoints, vAllCorners, vOwners);
    if (vOwners.empty())
        return false;
    vAllCorners.insert(vAllCorners.end(), vCorners.begin(), vCorners.end());
    CheckOptions checkOptions;
    checkOptions.maxPlaces = MOST_FAULTS;
    const MeshCheck check = judgeShapes(vAllPoints, vAllCorners, checkOptions);
    std::vector<char> vAtFault(vFills.size(), 0);
    const auto isNew = [&](int t) { return t >= 0 && static_cast<std::size_t>(t) < vOwners.size(); };
    for (const MeshFault& fault : check.vFaults)
    {
        // Of two fills that are in each other's way, the later one gives in.
        const int t = isNew(fault.otherTriangle)
                          ? std::max(fault.otherTriangle, isNew(fault.triangle) ? fault.triangle : -1)
                          : fault.triangle;
        if (isNew(t))
            vAtFault[vOwners[static_cast<std::size_t>(t)]] = 1;
    }
    for (std::size_t i = 0; i < vFills.size(); ++i)
    {
        if (vAtFault[i] == 0)
            continue;
        const Level next = vFills[i].level == Level::FULL && options.bRefine ? Level::TIGHT
                           : vFills[i].level != Level::SMALL                 ? Level::SMALL
                                                                             : Level::OPEN;
        forEachNewEdge(vFills[i], [this](u64 key) { taken.erase(key); });
        if (next != Level::OPEN)
        {
            vFills[i] = Fill{next, {}, {}};
            make(i);
        }
        else
            leaveOpen(i, "the fill would intersect or double other triangles, or hold a flat one");
    }
    return std::any_of(vAtFault.begin(), vAtFault.end(), [](char fault) { return fault != 0; });
}

void HoleCloser::collect(std::vector<Point3>& vNewPoints, std::vector<int>& vNewCorners,
                         std::vector<std::size_t>& vOwners) const
{
    const auto numOld = static_cast<int>(vPoints.size());
    for (std::size_t i = 0; i < vFills.size(); ++i)
    {
        const int shift = static_cast<int>(vNewPoints.size()) - numOld;
        for (const int v : vFills[i].vCorners)
            vNewCorners.push_back(v < numOld ? v : v + shift);
        vNewPoints.insert(vNewPoints.end(), vFills[i].vPoints.begin(), vFills[i].vPoints.end());
        vOwners.insert(vOwners.end(), vFills[i].vCorners.size() / 3, i);
    }
}

} // namespace TARN_ZEF
