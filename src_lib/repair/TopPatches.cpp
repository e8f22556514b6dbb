// The passes of Top over patches, and the orientation of what is left.
#include "repair/Top.h"

#include "cmesh/CMesh.h"
#include "cmesh/CPatch.h"
#include "cmesh/SurfacePieces.h"
#include "cmesh/uniteAcrossEdges.h"
#include "core/Progress.h"
#include "parallel/parallelFor.h"
#include "parallel/produceInOrder.h"
#include "repair/PatchSolver.h"

#include <algorithm>

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

const std::size_t TRIANGLES_PER_PART = 1 << 14;
const std::size_t LARGE_PART = 16; // a piece with this part of the triangles is large

// A piece that hangs together over edges of degree 2, while all pieces are being oriented.
struct Component
{
    unsigned int seed = 0; // number of its first triangle
    u64 topmostCCD = 0;
    bool bTopKnown = false; // topmostCCD is final
    bool bTwisted = false;  // no orientation fits all its edges
    bool bTurn = false;     // the seed must be turned, and all that agrees with it
};

// Turns all that the seed reaches over edges of degree 2 to agree with it, and appends it to vFlood: breadth
// first, over triangles whose edges all have degree 2 as long as there are any. bVisited tells what was
// reached.
void floodOriented(CTriangle* pSeed, std::vector<CTriangle*>& vFlood)
{
    std::vector<CTriangle*> vReserveT;
    pSeed->bVisited = true;
    vFlood.push_back(pSeed);
    for (std::size_t i = 0; i < vFlood.size(); ++i)
    {
        CTriangle* pCurrentCT = vFlood[i];
        for (int ici = 0; ici < 3; ++ici)
        {
            const CEdge& edge = *pCurrentCT->getCEdge(ici);
            if (!edge.isInner())
                continue;
            CTriangle* pNeigT = edge.vCT[edge.vCT[0] == pCurrentCT ? 1 : 0];
            if (pNeigT->bVisited)
                continue;
            pNeigT->bVisited = true;
            if (pCurrentCT->getStart(&edge) == pNeigT->getStart(&edge))
                pNeigT->flipOrientation();
            (pNeigT->allEdgesManifold() ? vFlood : vReserveT).push_back(pNeigT);
        }
        if (i + 1 == vFlood.size())
        {
            vFlood.insert(vFlood.end(), vReserveT.begin(), vReserveT.end());
            vReserveT.clear();
        }
    }
}

// Orients all pieces of a mesh, each with its topmost corner facing up. That takes a few walks in memory
// order, since the turn of a triangle against the first one of its piece is unique. Only a twisted piece
// needs a flood, whose order decides where the twist ends.
class Orienter
{
public:
    // pieces  of the present mesh
    Orienter(CMesh* pCMesh_, const Calc* pCalc_, SurfacePieces pieces)
        : pCMesh(pCMesh_)
        , pCalc(pCalc_)
        , turns(std::move(pieces.turns))
        , vTwisted(std::move(pieces.vTwisted))
    {
    }

    void run()
    {
        collectComponents();
        if (vComponents.empty())
            return;
        for (const std::uint32_t number : vTwisted)
            if (pCMesh->getAllT()[number]->isAlive())
                vComponents[vComponentOf[turns.findRoot(number)]].bTwisted = true;
        for (Component& component : vComponents)
            component.bTurn = !component.bTwisted && isUpsideDown(component);
        turnTriangles();
        for (const Component& component : vComponents)
            if (component.bTwisted)
                orientTwisted(component);
    }

private:
    // The topmost corner of some triangles in a row that are of one component.
    struct Peak
    {
        unsigned int component;
        u64 topmostCCD;
    };
    using Peaks = std::vector<Peak>;

    void collectComponents()
    {
        turns.flatten();
        const std::vector<CTriangle*>& vCT = pCMesh->getAllT();
        vComponentOf.resize(vCT.size());
        for (unsigned int number = 0; number < vCT.size(); ++number)
            if (turns.isRoot(number) && vCT[number]->isAlive())
            {
                vComponentOf[number] = static_cast<unsigned int>(vComponents.size());
                vComponents.push_back({number, vCT[number]->getC0()});
            }
        if (vComponents.empty())
            return;
        findTopOfLarge();
        produceRangesInOrder<Peaks>(
            vCT.size(), TRIANGLES_PER_PART,
            [this](Peaks& vPeaks, std::size_t from, std::size_t to)
            {
                vPeaks.clear();
                collectPeaks(from, to, vPeaks);
            },
            [&](const Peaks& vPeaks)
            {
                for (const Peak& peak : vPeaks)
                    raiseTo(vComponents[peak.component].topmostCCD, peak.topmostCCD);
            });
    }
    [[nodiscard]] unsigned int getComponent(std::size_t number) const
    {
        return vComponentOf[turns.look(static_cast<std::uint32_t>(number)).root];
    }
    // The uppermost corners of a large piece, as far as a walk over all corners has come.
    struct Summit
    {
        unsigned int component;
        u64 z = 0;
        std::vector<u64> vCCD;
    };
    // Walks over the corners instead of the triangles, and looks only at those that are as high as the lowest
    // summit so far. Where these are many, as on a plate, it gives up.
    void findTopOfLarge()
    {
        std::vector<Summit> vSummits;
        for (unsigned int i = 0; i < vComponents.size(); ++i)
            if (turns.getSize(vComponents[i].seed) > pCMesh->getNumAliveT() / LARGE_PART)
                vSummits.push_back({i, 0, {}});
        if (vSummits.empty())
            return;
        u64 lowestZ = 0;
        std::size_t numLooks = 0;
        const std::size_t maxLooks = pCMesh->getAllT().size() / LARGE_PART;
        pCMesh->forEachVertex(
            [&](const CVertex& vertex)
            {
                if ((vertex.ccd & SPARSE_Z) < lowestZ || vertex.pFirstT == nullptr || ++numLooks > maxLooks)
                    return;
                climb(vertex.ccd, vSummits);
                lowestZ = std::min_element(vSummits.begin(), vSummits.end(),
                                           [](const Summit& a, const Summit& b) { return a.z < b.z; })
                              ->z;
            });
        if (numLooks > maxLooks)
            return;
        for (const Summit& summit : vSummits)
        {
            vComponents[summit.component].topmostCCD = getFirstCorner(summit);
            vComponents[summit.component].bTopKnown = true;
        }
    }
    void climb(u64 ccd, std::vector<Summit>& vSummits)
    {
        vIncT.clear();
        pCMesh->getIncT(ccd, vIncT);
        const u64 z = ccd & SPARSE_Z;
        for (Summit& summit : vSummits)
        {
            if (z < summit.z || !std::any_of(vIncT.begin(), vIncT.end(),
                                             [&](const CTriangle* pCT)
                                             { return getComponent(pCT->getNumber()) == summit.component; }))
                continue;
            if (z > summit.z)
                summit.vCCD.clear();
            summit.z = z;
            summit.vCCD.push_back(ccd);
        }
    }
    // Of the corners at the summit, the first one of the first triangle that has one.
    [[nodiscard]] u64 getFirstCorner(const Summit& summit)
    {
        vIncT.clear();
        for (const u64 ccd : summit.vCCD)
            pCMesh->getIncT(ccd, vIncT);
        std::erase_if(vIncT, [&](const CTriangle* pCT)
                      { return getComponent(pCT->getNumber()) != summit.component; });
        const CTriangle* pFirstT = *std::min_element(vIncT.begin(), vIncT.end(), ByCreationCT());
        u64 topmostCCD = pFirstT->getC0();
        raiseTo(topmostCCD, pFirstT->getC1());
        raiseTo(topmostCCD, pFirstT->getC2());
        return topmostCCD;
    }
    void collectPeaks(std::size_t from, std::size_t to, Peaks& vPeaks) const
    {
        for (std::size_t i = from; i < to; ++i)
        {
            const unsigned int component = getComponent(i);
            if (vComponents[component].bTopKnown)
                continue; // without a look at the triangle
            const CTriangle& ct = *pCMesh->getAllT()[i];
            if (!ct.isAlive())
                continue;
            if (vPeaks.empty() || vPeaks.back().component != component)
                vPeaks.push_back({component, ct.getC0()});
            for (const u64 ccd : {ct.getC0(), ct.getC1(), ct.getC2()})
                raiseTo(vPeaks.back().topmostCCD, ccd);
        }
    }
    // By the normals of its own triangles at its topmost corner: as the seed runs, or, in a twisted piece, as
    // they run themselves.
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
            up += !component.bTwisted && found.bTurned ? -z : z;
        }
        return up < 0.0;
    }
    void turnTriangles()
    {
        const std::vector<CTriangle*>& vCT = pCMesh->getAllT();
        parallelFor(vCT.size(), TRIANGLES_PER_PART,
                    [&](std::size_t from, std::size_t to)
                    {
                        for (std::size_t i = from; i < to; ++i)
                            turn(*vCT[i], turns.look(static_cast<std::uint32_t>(i)));
                    });
    }
    // Most triangles stay as they are, so these are not even looked at. The dead belong to any component.
    void turn(CTriangle& ct, const TriangleUnion::Found& found) const
    {
        const Component& component = vComponents[vComponentOf[found.root]];
        if (component.bTwisted)
            ct.bVisited = false;
        else if (found.bTurned != component.bTurn && ct.isAlive())
            ct.flipOrientation();
    }
    void orientTwisted(const Component& component)
    {
        std::vector<CTriangle*> vFlood;
        floodOriented(pCMesh->getAllT()[component.seed], vFlood);
        if (isUpsideDown(component))
            for (CTriangle* pCT : vFlood)
                pCT->flipOrientation();
    }

    CMesh* pCMesh;
    const Calc* pCalc;
    TriangleUnion turns;
    std::vector<std::uint32_t> vTwisted;
    std::vector<unsigned int> vComponentOf; // by number of its seed
    std::vector<Component> vComponents;
    std::vector<CTriangle*> vIncT;
};

SurfacePieces findPieces(const CMesh& mesh)
{
    const std::size_t numEdges = mesh.getNumEdgeSlots();
    TriangleUnion turns(mesh.getAllT().size());
    std::vector<std::uint32_t> vTwisted =
        uniteAcrossEdges(turns, mesh.getAllT().size(), numEdges, getNumUnionParts(numEdges),
                         [&mesh](std::size_t, std::size_t from, std::size_t to, auto join)
                         {
                             mesh.forEachEdge(from, to,
                                              [&join](const CEdge* pCE)
                                              {
                                                  if (pCE->isInner())
                                                      join(getJoint(*pCE));
                                              });
                         });
    return {mesh, std::move(turns), std::move(vTwisted)};
}
} // namespace

bool Top::solvePatches(bool bStrict)
{
    PatchSolver solver(pCMesh, pCalc);
    return runPass(solver, bStrict);
}

SurfacePieces Top::solveAllPatches(bool bStrict, Progress* pProgress)
{
    PatchSolver solver(pCMesh, pCalc);
    while (runPass(solver, bStrict))
        if (pProgress != nullptr)
            pProgress->increment();
    return solver.releasePieces();
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
    std::vector<CTriangle*> vFlood;
    for (CTriangle* pSeed : vT)
    {
        if (!pSeed->isAlive() || pSeed->bVisited)
            continue;
        vPatches.push_back(new CPatch(pCMesh, pCalc));
        vFlood.clear();
        floodOriented(pSeed, vFlood);
        for (CTriangle* pCT : vFlood)
            vPatches.back()->addT(pCT);
    }
}

// The same as createPatchesOrient() on all triangles and orientPatch() on each of its patches.
void Top::orientAll()
{
    orientAll(findPieces(*pCMesh));
}

void Top::orientAll(SurfacePieces pieces)
{
    Orienter(pCMesh, pCalc, std::move(pieces)).run();
}

} // namespace TARN_ZEF
