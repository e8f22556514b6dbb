#include "RTop.h"

#include "LaplacianSmoother.h"
#include "RMesh.h"

namespace TARN_ZEF
{
void RTop::run()
{
    pRMesh->killDuplicateT();
    pRMesh->createPatchesOrient();
    pRMesh->killDegenerate();
}

void RTop::laplacianSmoothing(int numIterations)
{
    LaplacianSmoother smoother(pRMesh, false);
    smoother.run(numIterations);
    pRMesh->killDegenerate();
}

} // namespace TARN_ZEF
