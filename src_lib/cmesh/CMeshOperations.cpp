// The local edits of CMesh and the moves of its corners.
#include "cmesh/CMesh.h"

#include "cmesh/PointSum.h"
#include "geometry/tools.h"
#include "lattice/Bundle.h"
#include "parallel/collectInOrder.h"

#include <algorithm>

namespace TARN_ZEF
{
namespace
{
const double MAX_MOVE = 0.1;        // of laplacianForOne, in spacings
const double MAX_TURN_ANGLE = 90.0; // of a triangle beside the moved corner, in degrees

// Replaces the triangles at src by such at trg; those that hold both corners just go.
void mergeCorner(CMesh& mesh, u64 src, u64 trg)
{
    std::vector<CTriangle*> vIncT;
    mesh.getIncT(src, vIncT);
    ASSEX(!vIncT.empty());
    for (CTriangle* pCT : vIncT)
    {
        pCT->kill(&mesh);
        if (pCT->hasCorner(trg))
            continue;
        const int ici = pCT->getICI(src);
        mesh.createT(trg, pCT->getCorner(CTriangle::getNext(ici)), pCT->getCorner(CTriangle::getPrev(ici)),
                     pCT->getGeneratingVCD(), 0);
    }
}

// Moves the first corner that lets itself be moved, from corner ici on.
bool moveOneCorner(CMesh& mesh, const CTriangle& ct, int ici)
{
    for (int i = 0; i < 3; ++i)
        if (mesh.laplacianForOne(ct.getCorner((ici + i) % 3)))
            return true;
    return false;
}

// A triangle on the same corners, null if there is none. Two triangles share two edges only if they have the
// same corners.
CTriangle* findTwin(const CTriangle& ct)
{
    const CEdge::TriangleList& vBeside0 = ct.getCEdge(0)->vCT;
    const CEdge::TriangleList& vBeside1 = ct.getCEdge(1)->vCT;
    if (vBeside0.size() < 2 || vBeside1.size() < 2)
        return nullptr;
    const auto it = std::find_if(
        vBeside0.begin(), vBeside0.end(),
        [&](const CTriangle* pOther)
        { return pOther != &ct && std::find(vBeside1.begin(), vBeside1.end(), pOther) != vBeside1.end(); });
    return it == vBeside0.end() ? nullptr : *it;
}
} // namespace

// --- Collapse ----------------------------------------------------------------------------------------------

u64 CMesh::collapseEdgeToMidpoint(CEdge* pCE)
{
    if (pCE->isOrphan())
        return ~u64{0};
    const Point3 mid = pCE->getMidPoint(this);
    getVtx(pCE->v1)->set(mid);
    mergeCorner(*this, pCE->v0, pCE->v1);
    return pCE->v1;
}

bool CMesh::collapseEdgeToEndpoint(CEdge* pCE, u64 src, u64 trg)
{
    ASSEX((src == pCE->v0 && trg == pCE->v1) || (src == pCE->v1 && trg == pCE->v0));
    if (pCE->isOrphan() || !canCollapse(src, trg))
        return false;
    mergeCorner(*this, src, trg);
    return true;
}

// --- Moves -------------------------------------------------------------------------------------------------

bool CMesh::laplacianForOne(u64 ccd)
{
    std::vector<CEdge*> vIncCE;
    getIncCE(ccd, vIncCE);
    if (vIncCE.empty())
        return false;
    PointSum ring;
    for (const CEdge* pCE : vIncCE)
        ring.add(*getVtx(pCE->getOtherVCD(ccd)));
    Point3* pVtx = getVtx(ccd);
    const Point3 newPos = limitMove(*pVtx, ring.getMean(), MAX_MOVE * getAvgSpacing());

    std::vector<CTriangle*> vIncT;
    getIncT(ccd, vIncT);
    for (const CTriangle* pCT : vIncT)
    {
        const double devAngle = pCT->getDevAngle(this, pCT->getICI(ccd), newPos);
        printText("devAngle would be " + toText(devAngle) + "\n");
        if (devAngle > MAX_TURN_ANGLE)
            return false;
    }
    pVtx->set(newPos);
    return true;
}

// --- Extra corners -----------------------------------------------------------------------------------------

bool CMesh::removeBundle(Bundle* pBundle)
{
    std::vector<CEdge*> vIncCE;
    getIncCE(pBundle->ccd, vIncCE);
    return std::any_of(vIncCE.begin(), vIncCE.end(),
                       [&](CEdge* pCE)
                       { return collapseEdgeToEndpoint(pCE, pBundle->ccd, pCE->getOtherVCD(pBundle->ccd)); });
}

void CMesh::removeUnusableBundles()
{
    eraseBundlesIf([this](Bundle* pBundle) { return removeBundle(pBundle); });
}

// --- Clean-up ----------------------------------------------------------------------------------------------

void CMesh::splitDegenerate()
{
    std::vector<CTriangle*> vWork;
    for (std::size_t i = getAllT().size(); i-- > 0;)
    {
        vWork.push_back(getAllT()[i]);
        while (!vWork.empty())
        {
            CTriangle* pCT = vWork.back();
            vWork.pop_back();
            if (!pCT->isAlive() || !pCT->isDegenerate(this))
                continue;
            const int ici = pCT->getLargestEdgeICI(this);
            if (pCT->getCEdge(ici)->trySplitNeigsKillT(this, pCT, ici, vWork))
                continue;
            printText("\n Not able to split: ");
            pCT->print();
            moveOneCorner(*this, *pCT, ici);
        }
    }
}

int CMesh::killDuplicates()
{
    // Kills make no duplicates, so what has none now needs no look later.
    const std::vector<CTriangle*> vWithTwin =
        collectInOrder<CTriangle*>(getAllT().size(),
                                   [this](std::size_t from, std::size_t to, std::vector<CTriangle*>& vFound)
                                   {
                                       for (std::size_t i = from; i < to; ++i)
                                           if (getAllT()[i]->isAlive() && findTwin(*getAllT()[i]) != nullptr)
                                               vFound.push_back(getAllT()[i]);
                                   });
    int numKilled = 0;
    for (const CTriangle* pCT : vWithTwin)
    {
        // The first one created is met first.
        if (!pCT->isAlive())
            continue;
        while (CTriangle* pTwin = findTwin(*pCT))
        {
            pTwin->kill(this);
            ++numKilled;
        }
    }
    return numKilled;
}

} // namespace TARN_ZEF
