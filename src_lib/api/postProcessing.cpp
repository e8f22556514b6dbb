// The public calls that improve a finished mesh.
#include "zef_api_functions.h"

#include "core/Progress.h"
#include "geometry/tools.h"
#include "rmesh/LaplacianSmoother.h"
#include "rmesh/RMesh.h"
#include "rmesh/edgeFlips.h"

namespace TARN_ZEF
{
namespace
{
// The tree of progress for the time of a call. A call inside another one reports in the outer tree.
class ProgressScope
{
public:
    // prepare makes the tree of this call.
    template <typename Prepare>
    explicit ProgressScope(Prepare prepare)
        : bOwnProgress(ownsProgress())
    {
        if (bOwnProgress)
            prepare();
    }
    // After an exception, nothing is reported, but the tree must not look taken.
    ~ProgressScope()
    {
        if (bOwnProgress)
            getRootProgress()->reset();
    }
    ProgressScope(const ProgressScope&) = delete;
    ProgressScope& operator=(const ProgressScope&) = delete;

    void finish()
    {
        if (bOwnProgress)
            finishProgress();
        bOwnProgress = false;
    }

private:
    bool bOwnProgress;
};

RMesh* getRMesh(const std::shared_ptr<Mesh>& pMesh)
{
    ASSEX_TEXT(pMesh != nullptr, "pMesh!=0");
    return pMesh->getRMesh();
}
} // namespace

int reduce(std::shared_ptr<Mesh> pMesh, double maxEdgeLength, double maxDevAngle)
{
    return reduce(pMesh, maxEdgeLength, maxDevAngle, false);
}

int reduce(std::shared_ptr<Mesh> pMesh, double maxEdgeLength, double maxDevAngle, bool bKeepTopology)
{
    RMesh* pRMesh = getRMesh(pMesh);
    ASSEX(!isNaN(maxEdgeLength) && !isNaN(maxDevAngle));
    ProgressScope progress([] { prepareProgress("Reduce"); });
    const int numKilled = pRMesh->reduce(maxEdgeLength * maxEdgeLength, maxDevAngle, bKeepTopology);
    pRMesh->killDegenerate(bKeepTopology);
    progress.finish();
    return numKilled;
}

void edgeFlips(std::shared_ptr<Mesh> pMesh)
{
    RMesh* pRMesh = getRMesh(pMesh);
    ProgressScope progress([] { prepareProgress("EdgeFlips"); });
    flipGreedily(pRMesh);
    pRMesh->killDegenerate();
    progress.finish();
}

void edgeFlipsSimA(std::shared_ptr<Mesh> pMesh)
{
    RMesh* pRMesh = getRMesh(pMesh);
    const std::vector<double> vTemperatures = getAnnealingTemperatures();
    ProgressScope progress([&] { prepareProgressSimA(vTemperatures); });
    edgeFlips(pMesh);
    for (const double temperature : vTemperatures)
        edgeFlipsSimA(pRMesh, temperature);
    edgeFlips(pMesh);
    progress.finish();
}

void laplacianSmoothing(std::shared_ptr<Mesh> pMesh, int numIterations)
{
    RMesh* pRMesh = getRMesh(pMesh);
    ProgressScope progress([=] { prepareProgressSmoothing(numIterations); });
    LaplacianSmoother smoother(pRMesh, true);
    smoother.run(numIterations);
    pRMesh->killDegenerate();
    progress.finish();
}

} // namespace TARN_ZEF
