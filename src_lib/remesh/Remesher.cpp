#include "remesh/Remesher.h"

#include "remesh/ChainSampler.h"
#include "remesh/DistanceKeeper.h"
#include "remesh/EdgeCollapser.h"
#include "remesh/SizeField.h"
#include "remesh/VertexRelaxer.h"

#include <algorithm>
#include <utility>

namespace TARN_ZEF
{
namespace
{
using Aim = EdgeFlipper::Aim;
constexpr int NONE = HalfEdgeMesh::NONE;

constexpr double TOO_LONG = 4.0 / 3.0; // in wanted lengths
constexpr double CHORD_ERROR = 0.6;    // of chains, in tolerances
constexpr int NUM_ROUNDS = 6;
constexpr int NUM_SHAPE_ROUNDS = 3;
constexpr int MAX_SPLIT_PASSES = 40;
} // namespace

Remesher::Remesher(const SourceSurface& source, const RemeshSettings& settings)
    : work(source, settings)
    , flipper(work)
{
}

bool Remesher::run(const std::function<void(double)>& progress)
{
    EdgeCollapser collapser(work);
    VertexRelaxer relaxer(work);
    SizeField sizes(work);
    const int numSteps = 4 * NUM_ROUNDS + NUM_SHAPE_ROUNDS + 2;
    int numDone = 0;
    const auto tell = [&] { progress(static_cast<double>(++numDone) / numSteps); };
    flipper.flipAll(Aim::SHAPE);
    cutChains();
    if (work.isFull())
        return false;
    collapser.collapseSurplus();
    sizes.find();
    tell();
    for (int round = 0; round < NUM_ROUNDS; ++round)
    {
        splitLong();
        if (work.isFull())
            return false;
        tell();
        collapser.collapseShort();
        tell();
        flipper.flipAll(round + 2 < NUM_ROUNDS ? Aim::VALENCE : Aim::SHAPE);
        tell();
        relaxer.relax(false);
        sizes.find();
        tell();
    }
    for (int round = 0; round < NUM_SHAPE_ROUNDS; ++round)
    {
        flipper.flipAll(Aim::SHAPE);
        relaxer.relax(true);
        tell();
    }
    DistanceKeeper keeper(work);
    keeper.run();
    numFar = keeper.getNumFar();
    tell();
    return work.mesh.getNumTriangles() <= work.settings.maxTriangles;
}

int Remesher::edgeBetween(int a, int b) const
{
    const int h = work.mesh.findHalfEdge(a, b);
    return h != NONE ? h : work.mesh.findHalfEdge(b, a);
}

void Remesher::cutChains()
{
    ChainSampler sampler(work.source, work.settings.length, CHORD_ERROR * work.settings.tolerance,
                         work.settings.bGraded);
    sampler.run();
    for (std::size_t i = 0; i < work.source.getChains().size() && !work.isFull(); ++i)
    {
        const CreaseChain& chain = work.source.getChains()[i];
        cutChain(chain, sampler.getSamples()[i]);
        for (const int end : {chain.vVertices.front(), chain.vVertices.back()})
            work.vSize[end] = sampler.sizeAt(end);
    }
}

void Remesher::cutChain(const CreaseChain& chain, const std::vector<ChainSample>& vSamples)
{
    int last = NONE; // the newest vertex on the current segment
    int segment = -1;
    for (const ChainSample& s : vSamples)
    {
        const int begin = chain.vVertices[s.segment];
        const int end = chain.vVertices[s.segment + 1];
        int v = s.along <= 0.0 ? begin : NONE;
        if (v == NONE)
        {
            const int start = segment == s.segment ? last : begin;
            const int h = edgeBetween(start, end);
            v = work.split(h, s.point);
            segment = s.segment;
            last = v;
        }
        work.mesh.setKind(v, HalfEdgeMesh::Kind::FIXED);
        work.vSize[v] = s.size;
    }
}

// Flips between the passes keep the pieces from getting thin.
void Remesher::splitLong()
{
    for (int pass = 0; pass < MAX_SPLIT_PASSES && !work.isFull(); ++pass)
    {
        std::vector<int> vQueue;
        for (const int v : splitLongOnce())
            work.mesh.forEachOutgoing(v,
                                      [&](int h)
                                      {
                                          vQueue.push_back(h);
                                          vQueue.push_back(HalfEdgeMesh::next(h));
                                      });
        if (vQueue.empty())
            return;
        flipper.flipFrom(std::move(vQueue), EdgeFlipper::Aim::SHAPE);
    }
}

// The longest first. Returns the new vertices.
std::vector<int> Remesher::splitLongOnce()
{
    std::vector<std::pair<double, int>> vLong;
    work.mesh.forEachEdge(
        [&](int h)
        {
            const double ratio = work.mesh.feature(h) != 0 ? 0.0 : work.lengthOf(h) / work.sizeOf(h);
            if (ratio > TOO_LONG)
                vLong.emplace_back(-ratio, h);
        });
    std::sort(vLong.begin(), vLong.end());
    std::vector<int> vNew;
    for (const auto& entry : vLong)
    {
        if (work.isFull())
            break;
        const int v = work.splitInMiddle(entry.second);
        if (v != NONE)
            vNew.push_back(v);
    }
    return vNew;
}

} // namespace TARN_ZEF
