// The passes of Top over patches, and the orientation of what is left.
#include "Top.h"

#include "CMesh.h"
#include "CPatch.h"
#include "PatchSolver.h"
#include "Progress.h"
#include "TriangleUnion.h"

#include <algorithm>
#include <memory>

namespace TARN_ZEF
{
namespace
{
const u64 NUM_STEPS_PATCHES = 100; // of the progress node of one pass

bool runPass(PatchSolver& solver, bool bStrict)
{
    Progress* pProgress = getRootProgress()->getChildProgressSetTodo("TP_pps", NUM_STEPS_PATCHES);
    const bool bChanged = solver.pass(bStrict, *pProgress);
    pProgress->setFinished(true);
    return bChanged;
}

// A piece that hangs together over edges of degree 2, while all pieces are being oriented.
struct Component
{
    unsigned int seed = 0; // number of its first triangle
    u64 topmostCCD = 0;
    bool bTwisted = false; // no orientation fits all its edges
    bool bTurn = false;    // the seed must be turned, and all that agrees with it
};

// Orients all pieces of a mesh from a few walks in memory order. The turn of each triangle against the first
// one of its piece is unique, unless the piece is twisted.
class Orienter
{
public:
    Orienter(CMesh* pCMesh_, const Calc* pCalc_)
        : pCMesh(pCMesh_)
        , pCalc(pCalc_)
        , turns(pCMesh_->getAllT().size())
    {
    }

    // vTwistedT gets the triangles of twisted pieces, which stay as they are.
    void run(std::vector<CTriangle*>& vTwistedT)
    {
        std::vector<unsigned int> vTwistedSeeds;
        pCMesh->forEachEdge(
            [&](const CEdge* pCE)
            {
                if (pCE->getDegree() != 2)
                    return;
                const CTriangle* pCT0 = pCE->vCT[0];
                const CTriangle* pCT1 = pCE->vCT[1];
                if (!turns.unite(pCT0->getNumber(), pCT1->getNumber(),
                                 runsUp(*pCT0, *pCE) == runsUp(*pCT1, *pCE)))
                    vTwistedSeeds.push_back(pCT0->getNumber());
            });
        collectComponents();
        for (const unsigned int number : vTwistedSeeds)
            vComponents[vComponentOf[turns.findRoot(number)]].bTwisted = true;
        for (Component& component : vComponents)
            component.bTurn = isUpsideDown(component);
        turnTriangles(vTwistedT);
    }

private:
    void collectComponents()
    {
        vComponentOf.resize(pCMesh->getAllT().size());
        for (const CTriangle* pCT : pCMesh->getAllT())
        {
            if (!pCT->isAlive())
                continue;
            const unsigned int number = pCT->getNumber();
            const unsigned int root = turns.findRoot(number);
            if (root == number)
            {
                vComponentOf[number] = static_cast<unsigned int>(vComponents.size());
                vComponents.push_back({number, pCT->getC0()});
            }
            vComponentOf[number] = vComponentOf[root];
            u64& topmost = vComponents[vComponentOf[root]].topmostCCD;
            for (const u64 ccd : {pCT->getC0(), pCT->getC1(), pCT->getC2()})
                if ((ccd & SPARSE_Z) > (topmost & SPARSE_Z))
                    topmost = ccd;
        }
    }
    // By the normals of its own triangles at its topmost corner, seen as the seed runs.
    [[nodiscard]] bool isUpsideDown(const Component& component)
    {
        vIncT.clear();
        pCMesh->getIncT(component.topmostCCD, vIncT);
        double up = 0.0;
        for (const CTriangle* pCT : vIncT)
        {
            const TriangleUnion::Found found = turns.find(pCT->getNumber());
            if (found.root != component.seed)
                continue;
            const double z = getLatticeNormal(*pCalc, *pCT).z();
            up += found.bTurned ? -z : z;
        }
        return up < 0.0;
    }
    void turnTriangles(std::vector<CTriangle*>& vTwistedT)
    {
        for (CTriangle* pCT : pCMesh->getAllT())
        {
            if (!pCT->isAlive())
                continue;
            const Component& component = vComponents[vComponentOf[pCT->getNumber()]];
            if (component.bTwisted)
                vTwistedT.push_back(pCT);
            else if (turns.find(pCT->getNumber()).bTurned != component.bTurn)
                pCT->flipOrientation();
        }
    }

    CMesh* pCMesh;
    const Calc* pCalc;
    TriangleUnion turns;
    std::vector<unsigned int> vComponentOf; // by number of an alive triangle
    std::vector<Component> vComponents;
    std::vector<CTriangle*> vIncT;
};
} // namespace

bool Top::solvePatches(bool bStrict)
{
    PatchSolver solver(pCMesh, pCalc);
    return runPass(solver, bStrict);
}

void Top::solveAllPatches(bool bStrict, Progress* pProgress)
{
    PatchSolver solver(pCMesh, pCalc);
    while (runPass(solver, bStrict))
        if (pProgress != nullptr)
            pProgress->increment();
}

void Top::classifyPatches(std::vector<CPatch*>& vPatches, std::vector<PatchPair>& vPatchPairs,
                          std::vector<CPatch*>& vClosedPatches, std::vector<CPatch*>& vOpenPatches)
{
    for (CPatch* pPatch : vPatches)
        pPatch->setOuterBoundary();
    std::sort(vPatches.begin(), vPatches.end(),
              [](const CPatch* pA, const CPatch* pB)
              {
                  const std::vector<CEdge*>& vA = pA->getPatchBoundary();
                  const std::vector<CEdge*>& vB = pB->getPatchBoundary();
                  if (vA == vB)
                      return ByIdPatch()(pA, pB);
                  return std::lexicographical_compare(vA.begin(), vA.end(), vB.begin(), vB.end(),
                                                      ByCreationCE());
              });
    for (std::size_t i = 0; i < vPatches.size(); ++i)
    {
        CPatch* pPatch = vPatches[i];
        if (!pPatch->isAlive())
            continue;
        CPatch* pNext = i + 1 < vPatches.size() ? vPatches[i + 1] : nullptr;
        if (pPatch->getPatchBoundary().empty())
            vClosedPatches.push_back(pPatch);
        else if (pNext != nullptr && pNext->isAlive() &&
                 pNext->getPatchBoundary() == pPatch->getPatchBoundary())
            vPatchPairs.emplace_back(pPatch, pNext);
        else
            vOpenPatches.push_back(pPatch);
    }
}

bool Top::solvePair(CPatch* p0, CPatch* p1, double sumArea)
{
    CPatch* pVictim = PatchSolver::chooseVictim(p0, p1, sumArea);
    if (pVictim == nullptr)
        return false;
    pVictim->kill();
    return true;
}

void Top::createPatchesOrient(const std::vector<CTriangle*>& vT, std::vector<CPatch*>& vPatches)
{
    ASSEX(vPatches.empty());
    for (CTriangle* pCT : vT)
        pCT->bVisited = false;
    std::vector<CTriangle*> dWorkspace; // a queue; its first numPopped entries have left it
    std::vector<CTriangle*> vReserveT;
    for (CTriangle* pSeed : vT)
    {
        if (!pSeed->isAlive() || pSeed->bVisited)
            continue;
        auto* pPatch = new CPatch(pCMesh, pCalc);
        vPatches.push_back(pPatch);
        pSeed->bVisited = true;
        dWorkspace.assign(1, pSeed);
        for (std::size_t numPopped = 0; numPopped < dWorkspace.size();)
        {
            CTriangle* pCurrentCT = dWorkspace[numPopped++];
            pPatch->addT(pCurrentCT);
            for (int i = 0; i < 3; ++i)
            {
                const CEdge& edge = *pCurrentCT->getCEdge(i);
                if (edge.getDegree() != 2)
                    continue;
                CTriangle* pNeigT = edge.vCT[edge.vCT[0] == pCurrentCT ? 1 : 0];
                if (pNeigT->bVisited)
                    continue;
                pNeigT->bVisited = true;
                if (runsUp(*pCurrentCT, edge) == runsUp(*pNeigT, edge))
                    pNeigT->flipOrientation();
                (pNeigT->allEdgesManifold() ? dWorkspace : vReserveT).push_back(pNeigT);
            }
            if (numPopped == dWorkspace.size())
            {
                dWorkspace.swap(vReserveT);
                vReserveT.clear();
                numPopped = 0;
            }
        }
    }
}

// The same as createPatchesOrient() on all triangles and orientPatch() on each of its patches. These go over
// the surface step by step, which only a twisted piece needs: there the order decides where the twist ends.
void Top::orientAll()
{
    std::vector<CTriangle*> vTwistedT;
    Orienter(pCMesh, pCalc).run(vTwistedT);
    std::vector<CPatch*> vPatches;
    createPatchesOrient(vTwistedT, vPatches);
    const std::vector<std::unique_ptr<CPatch>> vOwned(vPatches.begin(), vPatches.end());
    for (CPatch* pPatch : vPatches)
        pPatch->orientPatch();
}

} // namespace TARN_ZEF
