#include "choice/countTrialFaults.h"

#include "judge/judgeMesh.h"
#include "parallel/sortMT2.h"

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <utility>

namespace TARN_ZEF
{
namespace
{
using Edge = std::pair<std::uint32_t, std::uint32_t>; // the lower vertex first

std::vector<Edge> collectEdges(const std::vector<int>& vCorners)
{
    std::vector<Edge> vEdges;
    vEdges.reserve(vCorners.size());
    for (std::size_t i = 0; i < vCorners.size(); ++i)
    {
        const auto a = static_cast<std::uint32_t>(vCorners[i]);
        const auto b = static_cast<std::uint32_t>(vCorners[i % 3 == 2 ? i - 2 : i + 1]);
        vEdges.emplace_back(std::minmax(a, b));
    }
    sortMT(vEdges.begin(), vEdges.end());
    return vEdges;
}

// Those of one triangle.
std::vector<Edge> collectBorder(const std::vector<int>& vCorners)
{
    const std::vector<Edge> vEdges = collectEdges(vCorners);
    std::vector<Edge> vBorder;
    for (auto it = vEdges.begin(); it != vEdges.end();)
    {
        const auto end = std::find_if(it, vEdges.end(), [&](const Edge& e) { return e != *it; });
        if (end - it == 1)
            vBorder.push_back(*it);
        it = end;
    }
    return vBorder;
}

// Numbers of edges of the borders that hang together.
std::vector<std::size_t> measureBorders(const std::vector<Edge>& vBorder, std::size_t numVertices)
{
    std::vector<std::uint32_t> vParents(numVertices);
    std::iota(vParents.begin(), vParents.end(), 0);
    const auto find = [&](std::uint32_t v)
    {
        while (vParents[v] != v)
            v = vParents[v] = vParents[vParents[v]];
        return v;
    };
    for (const Edge& edge : vBorder)
        vParents[find(edge.first)] = find(edge.second);
    std::vector<std::size_t> vNumEdges(numVertices, 0);
    for (const Edge& edge : vBorder)
        ++vNumEdges[find(edge.first)];
    return vNumEdges;
}
} // namespace

void countTrialFaults(const std::vector<Point3>& vPoints, const std::vector<int>& vCorners,
                      std::size_t mostEdgesOfHole, AutoTrial& trial)
{
    CheckOptions options;
    options.bFindIntersections = false;
    options.maxPlaces = 0;
    const MeshCheck check = judgeMesh(vPoints, vCorners, options);
    trial.numBorderEdges = check.numBorderEdges;
    trial.numBorderLoops = check.numBorderLoops;
    trial.numTriangles = check.numTriangles;
    trial.numPieces = check.numPieces;
    trial.numNonManifoldEdges = check.numNonManifoldEdges;
    trial.numNonManifoldVertices = check.numNonManifoldVertices;
    const std::vector<std::size_t> vNumEdges = measureBorders(collectBorder(vCorners), vPoints.size());
    trial.numHoles = 0;
    trial.numRims = 0;
    for (const std::size_t num : vNumEdges)
        if (num > 0)
            ++(num <= mostEdgesOfHole ? trial.numHoles : trial.numRims);
}

} // namespace TARN_ZEF
