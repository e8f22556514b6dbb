#include "repair/EnergyFlips.h"

#include "cmesh/CMesh.h"
#include "cmesh/EdgeEnergy.h"
#include "core/numbers.h"
#include "geometry/tools.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace TARN_ZEF
{
namespace
{
const double MIN_IMPROVEMENT = 0.01;

// Heap order: the largest improvement leaves first, equal ones by creation of the edge.
bool isLessImportant(const EdgeEnergy& a, const EdgeEnergy& b)
{
    if (a.getImprovement() != b.getImprovement())
        return a.getImprovement() < b.getImprovement();
    return a.getCEdge()->getNumber() > b.getCEdge()->getNumber();
}
} // namespace

EnergyFlips::EnergyFlips(CMesh* pCMesh_)
    : pCMesh(pCMesh_)
{
}

void EnergyFlips::run(double maxAngle)
{
    std::vector<CEdge*> vOptimizable;
    getEdges(maxAngle, vOptimizable);
    std::vector<EdgeEnergy> msPrioq; // a heap
    for (CEdge* pCE : vOptimizable)
    {
        const EdgeEnergy ee(pCMesh, pCE);
        if (ee.getImprovement() != LOWEST_DBL)
            msPrioq.push_back(ee);
    }
    std::make_heap(msPrioq.begin(), msPrioq.end(), isLessImportant);
    std::vector<CEdge*> vRejected;
    std::vector<CEdge*> vFlipped; // the new edges
    while (!msPrioq.empty())
    {
        std::pop_heap(msPrioq.begin(), msPrioq.end(), isLessImportant);
        EdgeEnergy ee = msPrioq.back();
        msPrioq.pop_back();
        CEdge* pFlipEdge = ee.getCEdge();
        const double storedImprovement = ee.getImprovement();
        ee.compute();
        if (ee.getImprovement() <= MIN_IMPROVEMENT) // the sentinel too
        {
            vRejected.push_back(pFlipEdge);
            continue;
        }
        if (ee.getImprovement() < storedImprovement)
        {
            msPrioq.push_back(ee);
            std::push_heap(msPrioq.begin(), msPrioq.end(), isLessImportant);
            continue;
        }
        ASSEX_TEXT(ee.getImprovement() > 0, "ee.improvement>0");
        ASSEX_TEXT(pFlipEdge->getDegree() == 2, "pFlipEdge->getDegree()==2");
        vFlipped.push_back(pFlipEdge->flipEdge(pCMesh, nullptr, nullptr));
    }
    printText("edgeFlips(" + toText(maxAngle) + "): " + std::to_string(vFlipped.size()) + " flipped, " +
              std::to_string(vRejected.size()) + " rejected\n");
}

void EnergyFlips::getEdges(double maxAngle, std::vector<CEdge*>& vOptimizable) const
{
    const double minCos = std::cos(maxAngle / 180.0 * 3.14159);
    std::vector<CEdge*> vDeg2;
    pCMesh->getDegN(DEG_INNER, vDeg2);
    for (CEdge* pCE : vDeg2)
    {
        const CTriangle* pCT0 = pCE->vCT[0];
        const CTriangle* pCT1 = pCE->vCT[1];
        ASSEX(pCT0->isAlive() && pCT1->isAlive());
        Vector3 nnv0;
        Vector3 nnv1;
        if (!pCT0->getNNVs(pCT1, pCMesh, nnv0, nnv1))
        {
            warningMessage(ZEF_HERE, "No NNV, skipped edge");
            continue;
        }
        if (!(getCosPhi(nnv0, nnv1) > minCos))
            vOptimizable.push_back(pCE);
    }
}

} // namespace TARN_ZEF
