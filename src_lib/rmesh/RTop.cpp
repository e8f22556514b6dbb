#include "rmesh/RTop.h"

#include "rmesh/LaplacianSmoother.h"
#include "rmesh/RMesh.h"

namespace TARN_ZEF
{
void RTop::run()
{
    pRMesh->killDuplicateT();
    pRMesh->createPatchesOrient();
    // The collapse that turns normals least may tear a clean surface: then others are tried first.
    if (pRMesh->isClosedManifold() && pRMesh->killDegenerate(true) == 0)
        return;
    pRMesh->killDegenerate();
}

void RTop::laplacianSmoothing(int numIterations)
{
    LaplacianSmoother smoother(pRMesh, false);
    smoother.run(numIterations);
    pRMesh->killDegenerate();
}

} // namespace TARN_ZEF
