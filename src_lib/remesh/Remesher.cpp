#include "remesh/Remesher.h"

#include "remesh/ChainSampler.h"
#include "remesh/DistanceKeeper.h"
#include "remesh/EdgeCollapser.h"
#include "remesh/EdgeSplitter.h"
#include "remesh/SizeField.h"
#include "remesh/VertexRelaxer.h"

#include <utility>

namespace TARN_ZEF
{
namespace
{
using Aim = EdgeFlipper::Aim;
constexpr int NONE = HalfEdgeMesh::NONE;

constexpr double CHORD_ERROR = 0.6; // of chains, in tolerances
constexpr int NUM_ROUNDS = 6;
constexpr int NUM_SHAPE_ROUNDS = 3;
} // namespace

Remesher::Remesher(const SourceSurface& source, const RemeshSettings& settings)
    : work(source, settings)
    , flipper(work)
{
}

bool Remesher::run(const std::function<void(double)>& progress)
{
    EdgeSplitter splitter(work, flipper);
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
        splitter.splitLong();
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
    farthest = keeper.getFarthest();
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

} // namespace TARN_ZEF
