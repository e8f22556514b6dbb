// The local edits of CMesh and the moves of its corners.
#include "cmesh/CMesh.h"

#include "core/zefRand.h"
#include "geometry/tools.h"
#include "lattice/Bundle.h"
#include "parallel/collectInOrder.h"

#include <algorithm>
#include <iostream>

namespace TARN_ZEF
{
namespace
{
// The mean is overshot by this factor, as seen from one ring point, and x gets a jitter of up to MAX_JITTER:
// so no two corners end up in exactly the same place.
const double RING_OVERSHOOT = 1.003;
const double MAX_JITTER = 1e-05;
// Fewer real ring points do not stand for a ring: then the extra ones count like them.
const double MIN_REAL_RING = 3.0;

const double MAX_MOVE = 0.1;        // of laplacianForOne, in spacings
const double MAX_TURN_ANGLE = 90.0; // of a triangle beside the moved corner, in degrees

// A running mean of positions.
struct PointSum
{
    double x = 0.0, y = 0.0, z = 0.0;
    double count = 0.0;

    void add(const Point3& p)
    {
        p.addOwnCoords(x, y, z);
        count += 1.0;
    }
    void add(const PointSum& other)
    {
        x += other.x;
        y += other.y;
        z += other.z;
        count += other.count;
    }
    [[nodiscard]] Point3 getMean() const { return {x / count, y / count, z / count}; }
};

// to, or the point at maxMove from from on the way there.
Point3 limitMove(const Point3& from, const Point3& to, double maxMove)
{
    const Vector3 move = to - from;
    const double len = move.length();
    return len > maxMove ? from + move * (maxMove / len) : to;
}

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

bool CMesh::canCollapse(u64 src, u64 trg) const
{
    const CVertex* pSrc = findVertex(src);
    const CVertex* pTrg = findVertex(trg);
    if (pSrc == nullptr || pTrg == nullptr || pSrc->pFirstT == nullptr || pTrg->pFirstT == nullptr)
        return false;
    // A triangle that holds both corners stands at trg with its own two other corners, so it forbids the
    // collapse of every living edge.
    for (const CTriangle* pSrcT = pSrc->pFirstT; pSrcT != nullptr;
         pSrcT = pSrcT->aNextInc[pSrcT->indexOf(pSrc)])
    {
        const int ici = pSrcT->indexOf(pSrc);
        const u64 a = pSrcT->aVertex[CTriangle::getNext(ici)]->ccd;
        const u64 b = pSrcT->aVertex[CTriangle::getPrev(ici)]->ccd;
        for (const CTriangle* pTrgT = pTrg->pFirstT; pTrgT != nullptr;
             pTrgT = pTrgT->aNextInc[pTrgT->indexOf(pTrg)])
            if (pTrgT->hasCorner(a) && pTrgT->hasCorner(b))
                return false;
    }
    return true;
}

// --- Moves -------------------------------------------------------------------------------------------------

void CMesh::averageBundle(Bundle* pBundle)
{
    std::vector<CEdge*> vIncCE;
    getIncCE(pBundle->ccd, vIncCE);
    if (vIncCE.size() < 2)
        return;
    PointSum real;
    PointSum extra;
    const Point3* pAnyRingVtx = nullptr;
    for (const CEdge* pCE : vIncCE)
    {
        ASSEX(pCE->getDegree() > 0);
        const Bundle* pOther = findBundle(pCE->getOtherVCD(pBundle->ccd));
        if (pOther == nullptr)
            continue;
        pAnyRingVtx = pOther->pPoint;
        (isExtraVtx(pAnyRingVtx) ? extra : real).add(*pAnyRingVtx);
    }
    if (real.count < MIN_REAL_RING)
        real.add(extra);
    if (real.count == 0.0)
    {
        pBundle->pPoint->set(pCalc->getMid(pBundle->ccd));
        return;
    }
    ASSEX(pAnyRingVtx != nullptr);
    const Vector3 d = real.getMean() - *pAnyRingVtx;
    const double eps = zefRand() * MAX_JITTER / ZEF_RAND_MAX;
    const Point3 pos = *pAnyRingVtx + d * RING_OVERSHOOT;
    pBundle->pPoint->set(pos.x() + eps, pos.y(), pos.z());
}

void CMesh::averageBundles()
{
    for (Bundle* pBundle : vBundles)
        averageBundle(pBundle);
}

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
        std::cout << "devAngle would be " << toText(devAngle) << "\n";
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
    std::vector<Bundle*> vRemoveBundles;
    std::vector<Bundle*> vKeptBundles;
    for (Bundle* pBundle : vBundles)
        (removeBundle(pBundle) ? vRemoveBundles : vKeptBundles).push_back(pBundle);
    vBundles.swap(vKeptBundles);
    for (Bundle* pBundle : vRemoveBundles)
        eraseBundle(pBundle);
}

// --- Clean-up ----------------------------------------------------------------------------------------------

void CMesh::splitDegenerate()
{
    std::vector<CTriangle*> vWork;
    for (std::size_t i = vCT.size(); i-- > 0;)
    {
        vWork.push_back(vCT[i]);
        while (!vWork.empty())
        {
            CTriangle* pCT = vWork.back();
            vWork.pop_back();
            if (!pCT->isAlive() || !pCT->isDegenerate(this))
                continue;
            const int ici = pCT->getLargestEdgeICI(this);
            if (pCT->getCEdge(ici)->trySplitNeigsKillT(this, pCT, ici, vWork))
                continue;
            std::cout << "\n Not able to split: ";
            pCT->print(std::cout);
            moveOneCorner(*this, *pCT, ici);
        }
    }
}

int CMesh::killDuplicates()
{
    // Kills make no duplicates, so what has none now needs no look later.
    const std::vector<CTriangle*> vWithTwin =
        collectInOrder<CTriangle*>(vCT.size(),
                                   [this](std::size_t from, std::size_t to, std::vector<CTriangle*>& vFound)
                                   {
                                       for (std::size_t i = from; i < to; ++i)
                                           if (vCT[i]->isAlive() && findTwin(*vCT[i]) != nullptr)
                                               vFound.push_back(vCT[i]);
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
