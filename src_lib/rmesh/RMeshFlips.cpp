// Members of RMesh that evaluate flips of edges on the pool.
#include "rmesh/RMesh.h"

#include "core/Progress.h"
#include "core/cancel.h"
#include "core/zefRand.h"
#include "geometry/tools.h"
#include "parallel/JobGroup.h"
#include "parallel/sortMT2.h"
#include "rmesh/REdgeEnergy.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <limits>

namespace TARN_ZEF
{
namespace
{
const std::size_t MIN_EDGES_PER_JOB = 100;
const u64 STEPS_PER_JOB = 5; // announced; one is made for the evaluation
// Stands for an evaluation that has to edit the mesh and so waits for the calling thread.
const double NOT_YET = std::numeric_limits<double>::quiet_NaN();

// The number of [0, 1] belongs to the edge and the pass, so that it does not matter which thread draws it.
double drawFor(unsigned int pass, const REdge* pRE)
{
    u64 h = (static_cast<u64>(pass) << 32 | pRE->getNumber()) * 0x9E3779B97F4A7C15ull;
    h = (h ^ h >> 32) * 0xD6E8FEB86659FD93ull;
    ZefRandom random(static_cast<std::uint32_t>(h >> 32));
    return random.next() / ZEF_RAND_MAX;
}

// Chance accepts a loss with probability exp(loss / temperature).
bool acceptsLoss(double improvement, double temperature, unsigned int pass, const REdge* pRE)
{
    return drawFor(pass, pRE) <= std::exp(improvement / temperature);
}

// No candidate is below it. The logarithm and the exponential may be off by far more than they are.
double getBar(double minImprovement, double temperature, unsigned int pass, const REdge* pRE)
{
    const double barOfAll = std::min(minImprovement, 0.0);
    if (!(temperature > 0.0))
        return temperature == 0.0 ? barOfAll : LOWEST_DBL;
    const double logarithm = std::log(drawFor(pass, pRE));
    return std::min(barOfAll, temperature * (logarithm - 1e-12 * (1.0 - logarithm)));
}

// minImprovement never keeps out an improvement of 0.0 or more.
bool isCandidate(double improvement, double minImprovement, double temperature, unsigned int pass,
                 const REdge* pRE)
{
    if (improvement == LOWEST_DBL)
        return false;
    if (!(minImprovement > improvement && 0.0 > improvement))
        return true;
    return temperature != 0.0 && acceptsLoss(improvement, temperature, pass, pRE);
}
} // namespace

void RMesh::getEdgeFlipCandidates_MT(const std::vector<REdge*>& vInRE, double minImprovement,
                                     double temperature, std::vector<std::pair<double, REdge*>>& vImpRE)
{
    ASSEX_TEXT(vImpRE.empty(), "vImpRE.empty()");
    fillNormals();
    if (temperature > 0.0)
        ++numAnnealingPasses;
    const std::size_t n = vInRE.size();
    vImpRE.resize(n, {0.0, nullptr});
    const std::size_t chunk = std::max(MIN_EDGES_PER_JOB, n / static_cast<std::size_t>(getNumThreads()));
    const std::size_t numJobs = (n + chunk - 1) / chunk;
    Progress* pProgress =
        getRootProgress()->getChildProgressSetTodo(flipCandidatesTag(temperature), STEPS_PER_JOB * numJobs);

    std::deque<JobGroup> dJobs(numJobs);
    for (std::size_t i = 0; i < numJobs; ++i)
        dJobs[i].push(
            [&, from = i * chunk, to = std::min((i + 1) * chunk, n)]
            { getEdgeFlipCandidates_MT_priv(vInRE, minImprovement, temperature, from, to, vImpRE, 0); });
    for (JobGroup& job : dJobs)
    {
        job.finish();
        pProgress->increment();
    }
    computePostponedFlips(minImprovement, temperature, vImpRE);
    pProgress->setFinished(true);

    const auto newEnd = std::remove_if(vImpRE.begin(), vImpRE.end(),
                                       [](const auto& impRE) { return impRE.second == nullptr; });
    vImpRE.erase(newEnd, vImpRE.end());
    sortMT(vImpRE.begin(), vImpRE.end(),
           [](const auto& a, const auto& b)
           { return a.first != b.first ? a.first < b.first : ByCreationRE()(a.second, b.second); });
}

void RMesh::getEdgeFlipCandidates_MT_priv(const std::vector<REdge*>& vInRE, double minImprovement,
                                          double temperature, std::size_t from, std::size_t to,
                                          std::vector<std::pair<double, REdge*>>& vImpRE, int)
{
    ASSEX_TEXT(to <= vImpRE.size(), "to<=vImpRE.size()");
    ASSEX_TEXT(to <= vInRE.size(), "to<=vInRE.size()");
    REdgeEnergy ee(this, nullptr);
    for (std::size_t i = from; i < to; ++i)
    {
        checkCancelled();
        REdge* pRE = vInRE[i];
        if (!pRE->isInner())
            continue;
        double improvement = NOT_YET;
        const double bar = getBar(minImprovement, temperature, numAnnealingPasses, pRE);
        if (!ee.tryGetImprovement(pRE, improvement, bar))
            vImpRE[i] = {NOT_YET, pRE};
        else if (!(improvement < bar) &&
                 isCandidate(improvement, minImprovement, temperature, numAnnealingPasses, pRE))
            vImpRE[i] = {improvement, pRE};
    }
}

void RMesh::computePostponedFlips(double minImprovement, double temperature,
                                  std::vector<std::pair<double, REdge*>>& vImpRE)
{
    REdgeEnergy ee(this, nullptr);
    for (auto& [improvement, pRE] : vImpRE)
    {
        checkCancelled();
        if (pRE == nullptr || !isNaN(improvement))
            continue;
        improvement = ee.getImprovement(pRE);
        if (!isCandidate(improvement, minImprovement, temperature, numAnnealingPasses, pRE))
            pRE = nullptr;
    }
}

} // namespace TARN_ZEF
