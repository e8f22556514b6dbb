#include "outer/SheetSealer.h"

#include "closing/EdgeMates.h"
#include "closing/HoleCloser.h"
#include "closing/LoopFinder.h"
#include "remesh/samePlaces.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace TARN_ZEF
{
namespace
{
// Of a loop that single triangles have left: flat faces come back as they were. A longer one is closed as the surface
// bends around it.
constexpr std::size_t MOST_TIGHT = 5;
} // namespace

void SheetSealer::run()
{
    joinPinches();
    for (const bool bSmooth : {false, true})
    {
        std::vector<BorderLoop> vLoops;
        for (BorderLoop& loop : findLoops())
            if (bSmooth == (loop.vVertices.size() > MOST_TIGHT))
                vLoops.push_back(std::move(loop));
        fill(vLoops, bSmooth);
    }
    for (const BorderLoop& loop : findLoops())
        if (loop.bClosed)
            closeRound(loop);
}

// Two holes that touch in a corner are two loops only where the corner is one vertex, not one for each fan of triangles.
// Vertices that share an edge with the same place stay apart: they belong to sheets that touch along it.
void SheetSealer::joinPinches()
{
    const std::vector<int> vPlace = findSamePlaces(soup.vPoints);
    std::vector<std::tuple<int, int, int>> vSpokes; // place, place at the other end, vertex
    for (int c = 0; c < static_cast<int>(soup.vCorners.size()); ++c)
        for (const int end : {FlatSoup::next(c), FlatSoup::prev(c)})
            vSpokes.emplace_back(vPlace[soup.vCorners[c]], vPlace[soup.vCorners[end]], soup.vCorners[c]);
    std::sort(vSpokes.begin(), vSpokes.end());
    std::vector<bool> vTouching(soup.vPoints.size(), false); // by place
    for (std::size_t i = 1; i < vSpokes.size(); ++i)
    {
        const auto& [place, end, vertex] = vSpokes[i];
        const auto& [lastPlace, lastEnd, lastVertex] = vSpokes[i - 1];
        if (place == lastPlace && end == lastEnd && vertex != lastVertex)
            vTouching[place] = true;
    }
    for (int& v : soup.vCorners)
        if (!vTouching[vPlace[v]])
            v = vPlace[v];
}

std::vector<BorderLoop> SheetSealer::findLoops() const
{
    const EdgeMates mates(soup.vCorners);
    return LoopFinder(soup.vPoints, soup.vCorners, mates).run();
}

void SheetSealer::fill(const std::vector<BorderLoop>& vLoops, bool bSmooth)
{
    if (vLoops.empty())
        return;
    FillOptions options;
    options.bRefine = bSmooth;
    options.bFair = bSmooth;
    std::vector<Point3> vPoints = soup.vPoints;
    std::vector<int> vCorners;
    HoleCloser closer(soup.vPoints, soup.vCorners, vLoops, options);
    closer.run(vPoints, vCorners);
    const std::vector<FillResult>& vResults = closer.getResults();
    numSealed += static_cast<int>(std::count_if(vResults.begin(), vResults.end(),
                                                [](const FillResult& result) { return result.bFilled; }));
    soup.vPoints = std::move(vPoints);
    soup.vCorners.insert(soup.vCorners.end(), vCorners.begin(), vCorners.end());
}

void SheetSealer::closeRound(const BorderLoop& loop)
{
    const std::vector<int>& v = loop.vVertices;
    const Point3& base = soup.vPoints[v.front()];
    Vector3 sum;
    for (const int vertex : v)
        sum.add(soup.vPoints[vertex] - base);
    const int hub = static_cast<int>(soup.vPoints.size());
    const Point3 middle = base + sum / static_cast<double>(v.size());
    soup.vPoints.push_back(middle);
    for (std::size_t i = 0; i < v.size(); ++i)
        soup.vCorners.insert(soup.vCorners.end(), {v[(i + 1) % v.size()], v[i], hub});
    ++numSealed;
}

} // namespace TARN_ZEF
