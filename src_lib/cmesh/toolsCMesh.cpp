#include "cmesh/toolsCMesh.h"

#include "cmesh/CMesh.h"

namespace TARN_ZEF
{
namespace
{
const Point3* getCorner(const CMesh* pMesh, u64 ccd)
{
    const Point3* pVtx = pMesh->getVtx(ccd);
    if (pVtx == nullptr)
    {
        printText("pVtx is NULL\n");
        ASSEX(false);
    }
    return pVtx;
}
} // namespace

Vector3 getNormalVector(const CMesh* pMesh, u64 i0, u64 i1, u64 i2, bool& bOK)
{
    const Point3* p0 = getCorner(pMesh, i0);
    const Point3* p1 = getCorner(pMesh, i1);
    const Point3* p2 = getCorner(pMesh, i2);
    return getNormalVector(p0, p1, p2, bOK);
}

} // namespace TARN_ZEF
