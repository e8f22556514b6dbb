#include "cmesh/CMesh.h"

namespace TARN_ZEF
{
CMesh::CMesh(Calc* pCalc_, BundleMap* pCCDBundle_)
    : CMeshPositions(pCalc_, pCCDBundle_)
{
}

CMesh::~CMesh()
{
    deletePatches();
}

void CMesh::clearAll()
{
    deletePatches();
    clearRecords();
}

std::vector<StorageBlock> CMesh::releaseStorage()
{
    deletePatches();
    return releaseRecords();
}

double CMesh::getArea() const
{
    double area = 0.0;
    for (const CTriangle* pCT : getAllT())
        if (pCT->isAlive())
            area += pCT->getArea(this);
    return area;
}

} // namespace TARN_ZEF
