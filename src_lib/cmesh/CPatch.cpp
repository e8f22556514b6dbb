#include "cmesh/CPatch.h"

#include "cmesh/CMesh.h"
#include "geometry/tools.h"

#include <algorithm>
#include <atomic>
#include <string>

namespace TARN_ZEF
{
namespace
{
std::atomic<u64> nextId{0}; // never comes round again, however long the process lives

const std::size_t MIN_SIZE_CLOSED = 4; // a tetrahedron

// Refuses a deg without a meaning.
bool fitsKnownDegree(int degree, int deg)
{
    if (!isDegreeQuery(deg))
    {
        printText("deg=" + std::to_string(deg) + "\n");
        ASSEX(deg > 0);
    }
    return fitsDegree(degree, deg);
}

bool fitsCount(int count, int num)
{
    switch (num)
    {
    case -1:
        return count % 2 == 1;
    case -2:
        return count % 2 == 0;
    case -3:
        return count > 2;
    case -4:
        return count % 2 == 0 && count > 2;
    default:
        ASSEX(num > 0);
        return count == num;
    }
}

// f(pCE, count) for each run of equal entries. Sorts by creation.
template <typename F>
void forEachRun(std::vector<CEdge*>& vCE, F f)
{
    std::sort(vCE.begin(), vCE.end(), ByCreationCE());
    for (std::size_t i = 0; i < vCE.size();)
    {
        std::size_t end = i + 1;
        while (end < vCE.size() && vCE[end] == vCE[i])
            ++end;
        f(vCE[i], static_cast<int>(end - i));
        i = end;
    }
}

void appendEdges(const std::vector<CTriangle*>& vT, std::vector<CEdge*>& vCE)
{
    vCE.reserve(vCE.size() + 3 * vT.size());
    for (const CTriangle* pCT : vT)
        if (pCT->isAlive())
            for (int i = 0; i < 3; ++i)
                vCE.push_back(pCT->getCEdge(i));
}

void sortUnique(std::vector<u64>& v)
{
    std::sort(v.begin(), v.end());
    v.erase(std::unique(v.begin(), v.end()), v.end());
}
} // namespace

bool ByIdPatch::operator()(const CPatch* pA, const CPatch* pB) const noexcept
{
    return pA->getId() < pB->getId();
}

PatchMembers::PatchMembers(CMesh* pCMesh_)
    : pCMesh(pCMesh_)
    , id(nextId.fetch_add(1, std::memory_order_relaxed))
{
}

CPatch::CPatch(CMesh* pCMesh_, Calc* pCalc_)
    : PatchMembers(pCMesh_)
    , pCalc(pCalc_)
{
}

CPatch::~CPatch()
{
    for (CTriangle* pCT : vMemberCT)
        if (isMember(pCT))
            pCT->setPatch(nullptr);
}

// --- Members -----------------------------------------------------------------------------------------------

void CPatch::addT(CTriangle* pCT)
{
    bWallsKnown = false;
    vMemberCT.push_back(pCT);
    pCT->setPatch(this);
}

void CPatch::keepMembers(const std::vector<CTriangle*>& vKeepCT)
{
    bWallsKnown = false;
    for (CTriangle* pCT : vMemberCT)
        if (isMember(pCT))
            pCT->setPatch(nullptr);
    vMemberCT = vKeepCT;
    for (CTriangle* pCT : vMemberCT)
        pCT->setPatch(this);
}

void CPatch::kill()
{
    bAlive = false;
    bWallsKnown = false;
    for (CTriangle* pCT : vMemberCT)
        if (pCT->isAlive())
            pCT->kill(pCMesh);
    vMemberCT.clear();
    vPatchBoundaryCE.clear();
    numInnerVtx = -1;
}

void CPatch::flipAll()
{
    for (CTriangle* pCT : vMemberCT)
        if (pCT->isAlive())
            pCT->flipOrientation();
}

void CPatch::assimilate(CPatch* pOther, bool bUpdateBoundary)
{
    ASSEX(isAlive() && pOther->isAlive());
    ASSEX_TEXT(
        !bUpdateBoundary || pOther->getSize() == 0 || !pOther->vPatchBoundaryCE.empty() || pOther->isClosed(),
        "pOtherPatch->getSize()==0 || !pOtherPatch->vPatchBoundaryCE.empty() || pOtherPatch->isClosed()");
    std::vector<CEdge*> vMerged;
    if (bUpdateBoundary)
    {
        std::vector<CEdge*> vBoth = vPatchBoundaryCE;
        vBoth.insert(vBoth.end(), pOther->vPatchBoundaryCE.begin(), pOther->vPatchBoundaryCE.end());
        forEachRun(vBoth,
                   [&](CEdge* pCE, int num)
                   {
                       const int cnt = getDegreeOn(pCE) + pOther->getDegreeOn(pCE);
                       ASSEX(num == 1 || cnt > 1);
                       if (num == 1)
                           vMerged.push_back(pCE);
                   });
    }
    vPatchBoundaryCE.swap(vMerged);
    for (CTriangle* pCT : pOther->vMemberCT)
        addT(pCT);
    pOther->vPatchBoundaryCE.clear();
    pOther->vMemberCT.clear();
    pOther->kill();
}

// --- Measures ----------------------------------------------------------------------------------------------

double PatchMembers::getArea() const
{
    double area = 0.0;
    for (const CTriangle* pCT : vMemberCT)
        if (pCT->isAlive())
            area += pCT->getArea(pCMesh);
    return area;
}

double PatchMembers::getVolume() const
{
    const Point3* pRef = nullptr;
    double sum = 0.0;
    for (const CTriangle* pCT : vMemberCT)
    {
        if (!pCT->isAlive())
            continue;
        const Point3* pCorner = pCT->getVtx(pCMesh, 0);
        if (pRef == nullptr)
            pRef = pCorner;
        bool bOK = false;
        Vector3 nnv;
        pCT->getNNV(nnv, pCMesh, bOK);
        sum += pCT->getArea(pCMesh) * (nnv * (*pCorner - *pRef));
    }
    return sum / 3.0;
}

void CPatch::setNumInnerVtx()
{
    std::vector<u64> vAllVCD;
    for (const CTriangle* pCT : vMemberCT)
        if (pCT->isAlive())
            vAllVCD.insert(vAllVCD.end(), {pCT->getC0(), pCT->getC1(), pCT->getC2()});
    std::vector<u64> vBoundaryVCD;
    for (const CEdge* pCE : vPatchBoundaryCE)
        vBoundaryVCD.insert(vBoundaryVCD.end(), {pCE->v0, pCE->v1});
    sortUnique(vAllVCD);
    sortUnique(vBoundaryVCD);
    ASSEX(vBoundaryVCD.size() <= vAllVCD.size());
    numInnerVtx = static_cast<int>(vAllVCD.size() - vBoundaryVCD.size());
}

// --- Edges -------------------------------------------------------------------------------------------------

void PatchMembers::getAllCE(std::vector<CEdge*>& vCE) const
{
    std::vector<CEdge*> vAll;
    appendEdges(vMemberCT, vAll);
    forEachRun(vAll, [&](CEdge* pCE, int) { vCE.push_back(pCE); });
}

void PatchMembers::getCEByDegree(int deg, std::vector<CEdge*>& vCE) const
{
    std::vector<CEdge*> vAll;
    appendEdges(vMemberCT, vAll);
    forEachRun(vAll,
               [&](CEdge* pCE, int)
               {
                   if (fitsKnownDegree(pCE->getDegree(), deg))
                       vCE.push_back(pCE);
               });
}

void PatchMembers::getHighDegCE(std::vector<CEdge*>& vCE) const
{
    getCEByDegree(DEG_NON_MANIFOLD, vCE);
}

void PatchMembers::getDegWithRespectToOwn(int deg, std::vector<CEdge*>& vCE) const
{
    std::vector<CEdge*> vAll;
    appendEdges(vMemberCT, vAll);
    forEachRun(vAll,
               [&](CEdge* pCE, int)
               {
                   if (fitsKnownDegree(getDegreeOn(pCE), deg))
                       vCE.push_back(pCE);
               });
}

void getDegNEdges(int num, const std::vector<CTriangle*>& vT, std::vector<CEdge*>& vCE)
{
    std::vector<CEdge*> vAll;
    appendEdges(vT, vAll);
    forEachRun(vAll,
               [&](CEdge* pCE, int count)
               {
                   if (fitsCount(count, num))
                       vCE.push_back(pCE);
               });
}

int PatchMembers::getDegreeOn(const CEdge* pCE) const noexcept
{
    return static_cast<int>(std::count_if(pCE->vCT.begin(), pCE->vCT.end(),
                                          [this](const CTriangle* pCT) { return isMember(pCT); }));
}

// --- Outer boundary ----------------------------------------------------------------------------------------

void CPatch::setWalls(std::vector<CEdge*> vWalls_)
{
    vWalls = std::move(vWalls_);
    bWallsKnown = true;
    numAllT = pCMesh->getAllT().size();
    numAliveT = pCMesh->getNumAliveT();
}

bool CPatch::areWallsKnown() const noexcept
{
    if (!bWallsKnown || numAllT != pCMesh->getAllT().size())
        return false;
    return numAliveT == pCMesh->getNumAliveT() ||
           std::all_of(vMemberCT.begin(), vMemberCT.end(),
                       [](const CTriangle* pCT) { return pCT->isAlive(); });
}

void CPatch::setOuterBoundary()
{
    ASSEX(isAlive());
    vPatchBoundaryCE.clear();
    std::vector<CEdge*> vOuter;
    if (areWallsKnown())
        vOuter = vWalls;
    else
        for (const CTriangle* pCT : vMemberCT)
            for (int i = 0; pCT->isAlive() && i < 3; ++i)
                if (getDegreeOn(pCT->getCEdge(i)) == 1)
                    vOuter.push_back(pCT->getCEdge(i));
    forEachRun(vOuter,
               [&](CEdge* pCE, int count)
               {
                   if (count == 1)
                       vPatchBoundaryCE.push_back(pCE);
               });
}

void CPatch::getPatchBoundaryCE(std::vector<CEdge*>& vCE) const
{
    ASSEX(isAlive());
    vCE.insert(vCE.end(), vPatchBoundaryCE.begin(), vPatchBoundaryCE.end());
}

void CPatch::getPatchBoundaryCE(std::set<CEdge*, ByCreationCE>& sCE) const
{
    ASSEX(isAlive());
    sCE.insert(vPatchBoundaryCE.begin(), vPatchBoundaryCE.end());
}

std::size_t CPatch::getPatchBoundarySize() const
{
    ASSEX(isAlive());
    return vPatchBoundaryCE.size();
}

bool CPatch::isClosed() const
{
    if (getSize() < MIN_SIZE_CLOSED)
        return false;
    const auto isInner = [this](const CEdge* pCE) { return !pCE->isBorder() && getDegreeOn(pCE) >= 2; };
    if (areWallsKnown())
        return std::all_of(vWalls.begin(), vWalls.end(), isInner);
    return std::all_of(vMemberCT.begin(), vMemberCT.end(),
                       [&](const CTriangle* pCT)
                       {
                           return !pCT->isAlive() || (isInner(pCT->getCEdge(0)) &&
                                                      isInner(pCT->getCEdge(1)) && isInner(pCT->getCEdge(2)));
                       });
}

// --- Orientation -------------------------------------------------------------------------------------------

void CPatch::orient()
{
    for (CTriangle* pCT : vMemberCT)
        pCT->bVisited = false;
    std::vector<CTriangle*> vWorkspace;
    for (CTriangle* pSeed : vMemberCT)
    {
        if (!pSeed->isAlive() || pSeed->bVisited)
            continue;
        pSeed->bVisited = true;
        vWorkspace.push_back(pSeed);
        while (!vWorkspace.empty())
        {
            CTriangle* pCurrentCT = vWorkspace.back();
            vWorkspace.pop_back();
            for (int i = 0; i < 3; ++i)
            {
                const CEdge::TriangleList& vNeigs = pCurrentCT->getCEdge(i)->vCT;
                if (vNeigs.size() != 2)
                    continue;
                CTriangle* pNeigT = vNeigs[vNeigs[0] == pCurrentCT ? 1 : 0];
                if (pNeigT->bVisited || !isMember(pNeigT))
                    continue;
                if (pCurrentCT->needFlip(pNeigT))
                    pNeigT->flipOrientation();
                pNeigT->bVisited = true;
                vWorkspace.push_back(pNeigT);
            }
        }
    }
    for (CTriangle* pCT : vMemberCT)
        pCT->bVisited = false;
    orientPatch();
}

Vector3 getLatticeNormal(const Calc& calc, const CTriangle& ct)
{
    const Point3 p0 = calc.getRef(ct.getC0());
    const Point3 p1 = calc.getRef(ct.getC1());
    const Point3 p2 = calc.getRef(ct.getC2());
    bool bOK = false;
    return getNormalVector(&p0, &p1, &p2, bOK);
}

u64 CPatch::getTopmostCCD() const
{
    bool bFound = false;
    u64 topmost = 0;
    for (const CTriangle* pCT : vMemberCT)
    {
        if (!pCT->isAlive())
            continue;
        for (const u64 ccd : {pCT->getC0(), pCT->getC1(), pCT->getC2()})
        {
            if (bFound && (ccd & SPARSE_Z) <= (topmost & SPARSE_Z))
                continue;
            topmost = ccd;
            bFound = true;
        }
    }
    if (bFound)
        return topmost;
    errorMessage(ZEF_HERE, "reorientation failed");
    throw ZefBugException();
}

void CPatch::orientPatch()
{
    const u64 vtx = getTopmostCCD();
    std::vector<CTriangle*> vIncT;
    pCMesh->getIncT(vtx, vIncT);
    Vector3 sum;
    for (const CTriangle* pCT : vIncT)
    {
        // Another patch that touches this one in the corner has its own way up.
        if (isMember(pCT))
            sum.add(getLatticeNormal(*pCalc, *pCT));
    }
    if (sum.z() < 0.0)
        flipAll();
}

} // namespace TARN_ZEF
