#include "repair/FlatTriangles.h"

#include "cmesh/CMesh.h"
#include "lattice/Bundle.h"
#include "parallel/collectInOrder.h"
#include "repair/RepairState.h"

#include <cstddef>
#include <set>

namespace TARN_ZEF
{
namespace
{
// Those of the triangles that are alive and flat, in their order; looked for by the workers.
std::vector<CTriangle*> getFlat(const CMesh& mesh, const std::vector<CTriangle*>& vCT)
{
    return collectInOrder<CTriangle*>(vCT.size(),
                                      [&](std::size_t from, std::size_t to, std::vector<CTriangle*>& vFlat)
                                      {
                                          for (std::size_t i = from; i < to; ++i)
                                              if (vCT[i]->isAlive() && vCT[i]->isDegenerate(&mesh))
                                                  vFlat.push_back(vCT[i]);
                                      });
}
} // namespace

FlatTriangles::FlatTriangles(RepairState& state_)
    : state(state_)
    , pCMesh(state_.pCMesh)
{
}

// In order of creation. What is done about one may make others flat: of these, the later ones have their
// turn.
void FlatTriangles::run()
{
    const std::vector<CTriangle*>& vAllT = pCMesh->getAllT();
    const std::size_t numT = vAllT.size(); // what the loop makes comes behind
    std::set<unsigned int> sFlat;
    for (const CTriangle* pCT : findFlat())
        sFlat.insert(pCT->getNumber());
    state.flatExtraction = 0;
    state.vMovedCCD.clear();
    std::vector<CTriangle*> vAtMoved;
    while (!sFlat.empty())
    {
        const unsigned int number = *sFlat.begin();
        sFlat.erase(sFlat.begin());
        CTriangle* pCT = vAllT[number];
        if (!pCT->isAlive() || !pCT->isDegenerate(pCMesh))
            continue;
        const std::size_t numMoved = state.vMovedCCD.size();
        killFlat(pCT);
        vAtMoved.clear();
        for (std::size_t i = numMoved; i < state.vMovedCCD.size(); ++i)
            pCMesh->getIncT(state.vMovedCCD[i], vAtMoved);
        for (const CTriangle* pNeigT : vAtMoved)
            if (pNeigT->getNumber() > number && pNeigT->getNumber() < numT)
                sFlat.insert(pNeigT->getNumber());
    }
    state.flatExtraction = pCMesh->getNumExtractions();
}

void FlatTriangles::killFlat(CTriangle* pCT)
{
    const int ici = pCT->getLargestEdgeICI(pCMesh);
    if (pCT->getCEdge(ici)->isBorder())
    {
        pCT->kill(pCMesh);
        return;
    }
    if (splitOrMove(pCT, ici))
        return;
    errorMessage(ZEF_HERE, "No success of trySplitNeigsKillT() and laplacianForOne()");
    throw ZefBugException();
}

bool FlatTriangles::splitOrMove(CTriangle* pCT, int ici)
{
    std::vector<CTriangle*> vKids;
    return pCT->getCEdge(ici)->trySplitNeigsKillT(pCMesh, pCT, ici, vKids) || moveOneCorner(*pCT, ici);
}

bool FlatTriangles::moveOneCorner(const CTriangle& ct, int ici)
{
    for (int i = 0; i < 3; ++i)
    {
        const u64 ccd = ct.getCorner((ici + i) % 3);
        if (!pCMesh->laplacianForOne(ccd))
            continue;
        state.vMovedCCD.push_back(ccd);
        return true;
    }
    return false;
}

// All flat triangles, in any order, and some of them several times.
std::vector<CTriangle*> FlatTriangles::findFlat() const
{
    const CMesh::Renewed* pRenewed = pCMesh->getRenewed();
    if (state.flatExtraction == 0 || pRenewed == nullptr ||
        pCMesh->getNumExtractions() != state.flatExtraction + 1)
        return getFlat(*pCMesh, pCMesh->getAllT());
    // All that came through both extractions were not flat, or one of their corners has been moved.
    std::vector<CTriangle*> vSuspects = pRenewed->vMadeT;
    vSuspects.insert(vSuspects.end(), pRenewed->vRevivedT.begin(), pRenewed->vRevivedT.end());
    const std::vector<CTriangle*>& vAllT = pCMesh->getAllT();
    vSuspects.insert(vSuspects.end(), vAllT.begin() + static_cast<std::ptrdiff_t>(pCMesh->getNumExtractedT()),
                     vAllT.end());
    for (const Bundle* pBundle : pCMesh->getExtraBundles())
        pCMesh->getIncT(pBundle->ccd, vSuspects);
    for (const u64 ccd : state.vMovedCCD)
        pCMesh->getIncT(ccd, vSuspects);
    return getFlat(*pCMesh, vSuspects);
}

} // namespace TARN_ZEF
