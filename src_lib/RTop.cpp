#include "RTop.h"

#include "LaplacianSmoother.h"
#include "RMesh.h"

namespace TARN_ZEF
{
void RTop::run()
{
    pRMesh->killDuplicateT();
    pRMesh->createPatchesOrient();
    // The collapse that turns normals least may leave a border and an edge of three triangles on a closed surface.
    if (pRMesh->killDegenerate(true) > 0)
        pRMesh->killDegenerate();
}

void RTop::laplacianSmoothing(int numIterations)
{
    LaplacianSmoother smoother(pRMesh, false);
    smoother.run(numIterations);
    pRMesh->killDegenerate();
}

} // namespace TARN_ZEF
