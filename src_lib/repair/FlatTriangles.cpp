#include "repair/FlatTriangles.h"

#include "cmesh/CMesh.h"
#include "parallel/collectInOrder.h"

#include <cstddef>
#include <set>

namespace TARN_ZEF
{
namespace
{
// All flat triangles, in order of creation; looked for by the workers.
std::vector<CTriangle*> findFlat(const CMesh& mesh)
{
    const std::vector<CTriangle*>& vCT = mesh.getAllT();
    return collectInOrder<CTriangle*>(vCT.size(),
                                      [&](std::size_t from, std::size_t to, std::vector<CTriangle*>& vFlat)
                                      {
                                          for (std::size_t i = from; i < to; ++i)
                                              if (vCT[i]->isAlive() && vCT[i]->isDegenerate(&mesh))
                                                  vFlat.push_back(vCT[i]);
                                      });
}
} // namespace

FlatTriangles::FlatTriangles(CMesh* pCMesh_)
    : pCMesh(pCMesh_)
{
}

// In order of creation. What is done about one may make others flat: of these, the later ones have their
// turn.
void FlatTriangles::run()
{
    const std::vector<CTriangle*>& vAllT = pCMesh->getAllT();
    const std::size_t numT = vAllT.size(); // what the loop makes comes behind
    std::set<unsigned int> sFlat;
    for (const CTriangle* pCT : findFlat(*pCMesh))
        sFlat.insert(sFlat.end(), pCT->getNumber());
    vMovedCCD.clear();
    std::vector<CTriangle*> vAtMoved;
    while (!sFlat.empty())
    {
        const unsigned int number = *sFlat.begin();
        sFlat.erase(sFlat.begin());
        CTriangle* pCT = vAllT[number];
        if (!pCT->isAlive() || !pCT->isDegenerate(pCMesh))
            continue;
        const std::size_t numMoved = vMovedCCD.size();
        killFlat(pCT);
        vAtMoved.clear();
        for (std::size_t i = numMoved; i < vMovedCCD.size(); ++i)
            pCMesh->getIncT(vMovedCCD[i], vAtMoved);
        for (const CTriangle* pNeigT : vAtMoved)
            if (pNeigT->getNumber() > number && pNeigT->getNumber() < numT)
                sFlat.insert(pNeigT->getNumber());
    }
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
        vMovedCCD.push_back(ccd);
        return true;
    }
    return false;
}

} // namespace TARN_ZEF
