// The public calls that improve a finished mesh.
#include "zef_api_functions.h"

#include "api/NearMesh.h"
#include "api/reportMesh.h"
#include "api/requireMesh.h"
#include "core/CallScope.h"
#include "core/ProgressScope.h"
#include "core/numbers.h"
#include "rmesh/LaplacianSmoother.h"
#include "rmesh/RMesh.h"
#include "rmesh/countTriangles.h"
#include "rmesh/edgeFlips.h"

namespace TARN_ZEF
{
namespace
{
constexpr int MAX_SMOOTHING_PASSES = 10000;

RMesh* getRMesh(const std::shared_ptr<Mesh>& pMesh)
{
    requireMesh(pMesh);
    return pMesh->getRMesh();
}

void requireNumbers(double maxEdgeLength, double maxDevAngle,
                    const SourceLocation& where = SourceLocation::current())
{
    const char* const condition = "!isNaN(maxEdgeLength) && !isNaN(maxDevAngle)";
    if (isNaN(maxEdgeLength))
        refuse<ZefBadArgument>(
            condition, "the maximum edge length is not a number; give a length in units of the points",
            where);
    if (isNaN(maxDevAngle))
        refuse<ZefBadArgument>(
            condition, "the maximum deviation angle is not a number; give degrees, usually 10 to 30", where);
}

// Each pass has a node of its own in the tree of progress; and no detail is left long before this many.
void requirePasses(int numIterations, const SourceLocation& where = SourceLocation::current())
{
    if (numIterations > MAX_SMOOTHING_PASSES)
        refuse<ZefBadArgument>("numIterations<=MAX_SMOOTHING_PASSES",
                               std::to_string(numIterations) +
                                   " smoothing iterations are too many; take 1 to " +
                                   std::to_string(MAX_SMOOTHING_PASSES) + ", usually 1 to 3",
                               where);
}

// A pass over the mesh, for the report of the call if there is one.
template <typename Work>
void pass(const char* name, const RMesh* pRMesh, Work work)
{
    runPass(name, countsOf(pRMesh), work);
}

void removeFlat(RMesh* pRMesh, bool bKeepTopology = false)
{
    pass("flat triangles", pRMesh, [=] { pRMesh->killDegenerate(bKeepTopology); });
}

void flipOnce(RMesh* pRMesh)
{
    pass("flips", pRMesh, [=] { flipGreedily(pRMesh); });
    removeFlat(pRMesh);
}
} // namespace

int reduce(std::shared_ptr<Mesh> pMesh, double maxEdgeLength, double maxDevAngle)
{
    return reduce(pMesh, maxEdgeLength, maxDevAngle, false);
}

int reduce(std::shared_ptr<Mesh> pMesh, double maxEdgeLength, double maxDevAngle, bool bKeepTopology)
{
    const CallScope call("reduce");
    RMesh* pRMesh = getRMesh(pMesh);
    requireNumbers(maxEdgeLength, maxDevAngle);
    ProgressScope progress([] { prepareProgress("Reduce"); });
    const NearMesh nearMesh(*pRMesh);
    addToReport(&CallReport::numRawT, pRMesh->getNumT());
    int numKilled = 0;
    pass("collapses", pRMesh,
         [&] { numKilled = pRMesh->reduce(maxEdgeLength * maxEdgeLength, maxDevAngle, bKeepTopology); });
    removeFlat(pRMesh, bKeepTopology);
    progress.finish();
    reportMesh(pMesh);
    return numKilled;
}

void edgeFlips(std::shared_ptr<Mesh> pMesh)
{
    const CallScope call("edgeFlips");
    RMesh* pRMesh = getRMesh(pMesh);
    ProgressScope progress([] { prepareProgress("EdgeFlips"); });
    const NearMesh nearMesh(*pRMesh);
    addToReport(&CallReport::numRawT, pRMesh->getNumT());
    flipOnce(pRMesh);
    progress.finish();
    reportMesh(pMesh);
}

void edgeFlipsSimA(std::shared_ptr<Mesh> pMesh)
{
    const CallScope call("edgeFlipsSimA");
    RMesh* pRMesh = getRMesh(pMesh);
    const std::vector<double> vTemperatures = getAnnealingTemperatures();
    ProgressScope progress([&] { prepareProgressSimA(vTemperatures); });
    const NearMesh nearMesh(*pRMesh);
    if (isIndependentCall())
        pRMesh->restartAnnealing();
    addToReport(&CallReport::numRawT, pRMesh->getNumT());
    flipOnce(pRMesh);
    for (const double temperature : vTemperatures)
        pass("annealing", pRMesh, [=] { edgeFlipsSimA(pRMesh, temperature); });
    flipOnce(pRMesh);
    progress.finish();
    reportMesh(pMesh);
}

void laplacianSmoothing(std::shared_ptr<Mesh> pMesh, int numIterations)
{
    const CallScope call("laplacianSmoothing");
    RMesh* pRMesh = getRMesh(pMesh);
    requirePasses(numIterations);
    ProgressScope progress([=] { prepareProgressSmoothing(numIterations); });
    const NearMesh nearMesh(*pRMesh);
    addToReport(&CallReport::numRawT, pRMesh->getNumT());
    {
        const StageScope stage("smoothing");
        LaplacianSmoother smoother(pRMesh, true);
        smoother.run(numIterations);
    }
    removeFlat(pRMesh);
    progress.finish();
    reportMesh(pMesh);
}

} // namespace TARN_ZEF
