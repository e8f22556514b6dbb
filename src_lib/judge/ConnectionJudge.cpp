#include "judge/ConnectionJudge.h"

#include "judge/AtomicUnion.h"
#include "judge/BorderLoops.h"
#include "judge/StarScan.h"
#include "parallel/parallelFor.h"
#include "parallel/produceInOrder.h"
#include "parallel/sortMT2.h"

#include <atomic>
#include <utility>

namespace TARN_ZEF
{
namespace
{
constexpr std::size_t CORNERS_PER_PART = 1 << 15;

void addUp(const StarScan& scan, MeshCheck& check, FaultList& faults)
{
    check.numVertices += scan.numVertices;
    check.numEdges += scan.numEdges;
    check.numNonManifoldEdges += scan.numNonManifoldEdges;
    check.numDisagreeingEdges += scan.numDisagreeingEdges;
    check.numNonManifoldVertices += scan.numNonManifoldVertices;
    faults.append(scan.faults);
}
} // namespace

ConnectionJudge::ConnectionJudge(const JudgedMesh& mesh_, const std::vector<int>& vVertices_)
    : mesh(mesh_)
    , vVertices(vVertices_)
{
}

void ConnectionJudge::run(std::size_t numPoints, std::size_t maxPlaces, MeshCheck& check, FaultList& faults)
{
    sortCorners();
    scanVertices(maxPlaces, check, faults);
    const auto numProper = static_cast<std::int64_t>(vCorners.size() / 3);
    vCorners = {};
    check.numPieces = countPieces(numPoints, check.numVertices);
    check.eulerNumber =
        static_cast<std::int64_t>(check.numVertices) - static_cast<std::int64_t>(check.numEdges) + numProper;
    check.numBorderEdges = vBorder.size();
    const BorderLoops loops(mesh, std::move(vBorder), vJoints);
    check.numBorderLoops = loops.numLoops;
    check.borderLength = loops.length;
    check.longestLoopLength = loops.longestLength;
    check.numLongestLoopEdges = loops.numLongestEdges;
}

void ConnectionJudge::scanVertices(std::size_t maxPlaces, MeshCheck& check, FaultList& faults)
{
    // A part has the vertices whose first corner is in it.
    const auto isFirst = [this](std::size_t i)
    { return i == 0 || vCorners[i - 1].first != vCorners[i].first; };
    produceRangesInOrder<StarScan>(
        vCorners.size(), CORNERS_PER_PART,
        [&](StarScan& scan, std::size_t from, std::size_t to)
        {
            scan.reset(maxPlaces);
            while (from < to && !isFirst(from))
                ++from;
            while (from < to)
            {
                std::size_t end = from + 1;
                while (end < vCorners.size() && !isFirst(end))
                    ++end;
                scan.lookAt(mesh, vVertices, &vCorners[from], end - from);
                from = end;
            }
        },
        [&](const StarScan& scan)
        {
            addUp(scan, check, faults);
            vBorder.insert(vBorder.end(), scan.vBorder.begin(), scan.vBorder.end());
            vJoints.insert(vJoints.end(), scan.vJoints.begin(), scan.vJoints.end());
        });
}

bool ConnectionJudge::isProper(std::size_t triangle) const
{
    const int* pVertices = &vVertices[3 * triangle];
    return pVertices[0] != pVertices[1] && pVertices[1] != pVertices[2] && pVertices[2] != pVertices[0];
}

void ConnectionJudge::sortCorners()
{
    constexpr std::uint32_t leftOut = ~std::uint32_t{0}; // above all vertices
    vCorners.resize(vVertices.size());
    parallelFor(mesh.getNumTriangles(), 10'000,
                [this](std::size_t from, std::size_t to)
                {
                    for (std::size_t t = from; t < to; ++t)
                        for (std::size_t corner = 3 * t; corner < 3 * t + 3; ++corner)
                            vCorners[corner] = {isProper(t) ? static_cast<std::uint32_t>(vVertices[corner])
                                                            : leftOut,
                                                static_cast<std::uint32_t>(corner)};
                });
    sortByFirstMT(vCorners.begin(), vCorners.end());
    while (!vCorners.empty() && vCorners.back().first == leftOut)
        vCorners.pop_back();
}

std::size_t ConnectionJudge::countPieces(std::size_t numPoints, std::size_t numVertices) const
{
    AtomicUnion pieces(numPoints);
    std::atomic<std::size_t> numUnions = 0;
    parallelFor(mesh.getNumTriangles(), 10'000,
                [&](std::size_t from, std::size_t to)
                {
                    std::size_t num = 0;
                    for (std::size_t t = from; t < to; ++t)
                    {
                        if (!isProper(t))
                            continue;
                        const auto a = static_cast<std::uint32_t>(vVertices[3 * t]);
                        num += pieces.unite(a, static_cast<std::uint32_t>(vVertices[3 * t + 1]));
                        num += pieces.unite(a, static_cast<std::uint32_t>(vVertices[3 * t + 2]));
                    }
                    numUnions += num;
                });
    return numVertices - numUnions;
}

} // namespace TARN_ZEF
