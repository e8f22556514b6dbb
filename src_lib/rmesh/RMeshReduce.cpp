// Members of RMesh that evaluate and run the reduction.
#include "rmesh/CollapsePenalty.h"
#include "rmesh/RMesh.h"
#include "rmesh/Reducer.h"

namespace TARN_ZEF
{
namespace
{
const double RAD_PER_DEGREE = 0.01745329251;
} // namespace

double RMesh::getCollapsePenalty(const REdge* pRE, int iSrc, const CollapseLimits& limits,
                                 CollapseFans& fans) const
{
    fans.forget();
    return CollapsePenalty(*this, limits).get(pRE, iSrc, fans);
}

int RMesh::reduce(double maxSqLen, double maxDevAngle, bool bKeepTopology)
{
    Reducer reducer(this, CollapseLimits{maxSqLen, maxDevAngle * RAD_PER_DEGREE, bKeepTopology});
    return reducer.run();
}

} // namespace TARN_ZEF
