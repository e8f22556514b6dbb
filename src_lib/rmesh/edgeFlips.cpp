#include "rmesh/edgeFlips.h"

#include "core/Progress.h"
#include "core/StableQueue.h"
#include "core/cancel.h"
#include "core/zefRand.h"
#include "rmesh/REdgeEnergy.h"
#include "rmesh/RMesh.h"

#include <algorithm>
#include <utility>

namespace TARN_ZEF
{
namespace
{
const double MIN_IMPROVEMENT = 0.005;
const double START_TEMPERATURE = 0.02;
const double END_TEMPERATURE = 0.001;
const double COOLING = 0.9;

// The loops jump over the whole mesh: what the next edges need is brought near together.
const std::size_t NUM_AHEAD = 16;

using FlipCandidate = std::pair<double, REdge*>; // improvement, edge

struct LargestGainFirst
{
    double operator()(const FlipCandidate& candidate) const noexcept { return -candidate.first; }
};
using FlipQueue = StableQueue<FlipCandidate, LargestGainFirst>;

// From ascending to descending improvement; equal ones keep their order.
void reverseGains(std::vector<FlipCandidate>& vImpRE)
{
    std::reverse(vImpRE.begin(), vImpRE.end());
    for (auto first = vImpRE.begin(); first != vImpRE.end();)
    {
        const auto last =
            std::find_if(first, vImpRE.end(),
                         [first](const FlipCandidate& candidate) { return candidate.first != first->first; });
        std::reverse(first, last);
        first = last;
    }
}

void fetchAhead(FlipQueue& queue, std::vector<const REdge*>& vAhead)
{
    vAhead.clear();
    if (queue.lookAhead(NUM_AHEAD,
                        [&vAhead](const FlipCandidate& candidate) { vAhead.push_back(candidate.second); }))
        RMesh::fetchQuads(vAhead);
}

void fetchAhead(const std::vector<FlipCandidate>& vCandidates, std::size_t from,
                std::vector<const REdge*>& vAhead)
{
    vAhead.clear();
    for (std::size_t i = from; i < std::min(from + NUM_AHEAD, vCandidates.size()); ++i)
        vAhead.push_back(vCandidates[i].second);
    RMesh::fetchQuads(vAhead);
}

// An edge that must not be flipped has the lowest value. What the evaluation throws is a fault, and passes:
// between two flips the mesh is whole.
double getFreshImprovement(REdgeEnergy& energy, REdge* pRE)
{
    return energy.getImprovement(pRE);
}
} // namespace

int flipGreedily(RMesh* pRMesh)
{
    const std::vector<REdge*> vMeshRE = pRMesh->getAllRE();
    std::vector<FlipCandidate> vImpRE;
    pRMesh->getEdgeFlipCandidates_MT(vMeshRE, MIN_IMPROVEMENT, 0.0, vImpRE);
    reverseGains(vImpRE);
    FlipQueue queue;
    queue.addSorted(std::move(vImpRE));

    Progress* pProgress = getRootProgress()->getChildProgressSetTodo("efLoop", 3 * vMeshRE.size());
    REdgeEnergy energy(pRMesh, nullptr);
    int numFlips = 0;
    std::vector<const REdge*> vAhead;
    while (!queue.empty())
    {
        checkCancelled(); // the mesh is whole between two flips
        fetchAhead(queue, vAhead);
        const auto [savedImprovement, pRE] = queue.front();
        queue.pop();
        ASSEX(savedImprovement > LOWEST_DBL);
        ASSEX_TEXT(pRE != nullptr, "pRE!=0");
        const double freshImprovement = getFreshImprovement(energy, pRE);
        if (!(savedImprovement > freshImprovement))
        {
            pProgress->increment();
            ASSEX_TEXT(freshImprovement >= 0, "freshImprovement>=0");
            ASSEX_TEXT(pRE->getDegree() == 2, "pRE->getDegree()==2");
            ++numFlips;
            pRE->tryFlipEdge(pRMesh, nullptr, nullptr);
        }
        else if (freshImprovement > MIN_IMPROVEMENT)
        {
            // A flip nearby has spoilt it: it waits for its new turn.
            queue.add({freshImprovement, pRE});
        }
    }
    pProgress->setFinished(true);
    return numFlips;
}

void edgeFlipsSimA(RMesh* pRMesh, double temperature)
{
    std::vector<FlipCandidate> vImpRE;
    pRMesh->getEdgeFlipCandidates_MT(pRMesh->getAllRE(), 0.0, temperature, vImpRE);
    zefShuffle(vImpRE.begin(), vImpRE.end());
    REdgeEnergy energy(pRMesh, nullptr);
    std::vector<const REdge*> vAhead;
    for (std::size_t i = 0; i < vImpRE.size(); ++i)
    {
        checkCancelled();
        if (i % NUM_AHEAD == 0)
            fetchAhead(vImpRE, i, vAhead);
        REdge* pRE = vImpRE[i].second;
        if (pRE->isInner() && energy.isPossible(pRE))
            pRE->tryFlipEdge(pRMesh, nullptr, nullptr);
    }
}

std::vector<double> getAnnealingTemperatures()
{
    std::vector<double> vTemperatures;
    for (double temperature = START_TEMPERATURE; temperature > END_TEMPERATURE;)
    {
        temperature *= COOLING;
        vTemperatures.push_back(temperature);
    }
    return vTemperatures;
}

} // namespace TARN_ZEF
