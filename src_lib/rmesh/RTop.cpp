#include "rmesh/RTop.h"

#include "rmesh/LaplacianSmoother.h"
#include "rmesh/RMesh.h"
#include "rmesh/countTriangles.h"

namespace TARN_ZEF
{
void RTop::run()
{
    runPass("doubled triangles", countsOf(pRMesh), [this] { pRMesh->killDuplicateT(); });
    pRMesh->createPatchesOrient();
    runPass("flat triangles", countsOf(pRMesh), [this] { removeFlat(); });
}

// The collapse that turns normals least may tear a clean surface: then others are tried first.
void RTop::removeFlat()
{
    if (!pRMesh->isClosedManifold() || pRMesh->killDegenerate(true) != 0)
        pRMesh->killDegenerate();
}

void RTop::laplacianSmoothing(int numIterations)
{
    LaplacianSmoother smoother(pRMesh, false);
    smoother.run(numIterations);
    pRMesh->killDegenerate();
}

} // namespace TARN_ZEF
