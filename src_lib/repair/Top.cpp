#include "repair/Top.h"

#include "cmesh/CMesh.h"
#include "cmesh/CPatch.h"
#include "cmesh/SurfacePieces.h"
#include "core/Progress.h"
#include "core/zefRand.h"
#include "extraction/Voro.h"
#include "holes/HoleToCCD.h"
#include "lattice/Bundle.h"
#include "parallel/collectInOrder.h"
#include "repair/CornerParter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <set>

namespace TARN_ZEF
{
namespace
{
// Largest pieces that killTinyBorderPatches may remove, by the place in the order of passes.
const int MAX_TINY_BEFORE_PATCHES = 40;
const int MAX_TINY_MELT = 8;

// Cube configurations that leave dangling triangles: the rotations and mirrors of one.
const std::array<int, 8> vKillConfigs = {27, 39, 78, 114, 141, 177, 216, 228};

// Appends the values that occur exactly num times; sorts the input.
void appendRepeated(u64* pBegin, u64* pEnd, std::ptrdiff_t num, std::vector<u64>& vResult)
{
    std::sort(pBegin, pEnd);
    while (pBegin != pEnd)
    {
        u64* pNext = std::upper_bound(pBegin, pEnd, *pBegin);
        if (pNext - pBegin == num)
            vResult.push_back(*pBegin);
        pBegin = pNext;
    }
}

// The cell corners that the unit cells of all three corners of the triangle share.
void appendSharedByTriangle(const Calc& calc, const CTriangle& ct, std::vector<u64>& vGeneratingVCDs)
{
    std::array<u64, 24> vVCD24;
    for (std::size_t i = 0; i < 3; ++i)
    {
        vVCD24[8 * i] = ct.getCorner(static_cast<int>(i));
        calc.completeArray8Up(&vVCD24[8 * i]);
    }
    appendRepeated(vVCD24.data(), vVCD24.data() + vVCD24.size(), 3, vGeneratingVCDs);
}

void appendSharedByEdge(const Calc& calc, const CEdge& edge, std::vector<u64>& vGeneratingVCDs)
{
    std::array<u64, 16> vTmpVCD;
    vTmpVCD[0] = edge.v0;
    calc.completeArray8Up(&vTmpVCD[0]);
    vTmpVCD[8] = edge.v1;
    calc.completeArray8Up(&vTmpVCD[8]);
    appendRepeated(vTmpVCD.data(), vTmpVCD.data() + vTmpVCD.size(), 2, vGeneratingVCDs);
}

// Positions first, NaN after all numbers, so that this is an order for any input.
bool isCoordinateLess(double a, double b)
{
    return std::isnan(b) ? !std::isnan(a) : a < b;
}
bool isPositionLess(const Point3& a, const Point3& b)
{
    const double aA[3] = {a.x(), a.y(), a.z()};
    const double aB[3] = {b.x(), b.y(), b.z()};
    return std::lexicographical_compare(aA, aA + 3, aB, aB + 3, isCoordinateLess);
}
using PointBundle = std::pair<Point3, Bundle*>;
bool isPointBundleLess(const PointBundle& a, const PointBundle& b)
{
    return isPositionLess(a.first, b.first);
}

// Up to a hundredth of a spacing on each axis. An offset that is too small for the coordinates moves x to the
// next value that there is.
Point3 shiftAtRandom(const Point3& p, double spacing)
{
    double aOffset[3];
    for (double& offset : aOffset)
        offset = zefRand() % 1000 / 100000.0 * spacing;
    const Point3 moved(p.x() + aOffset[0], p.y() + aOffset[1], p.z() + aOffset[2]);
    if (moved != p)
        return moved;
    return {std::nextafter(p.x(), DBL_MAX), p.y(), p.z()};
}

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

Top::Top(CMesh* pCMesh_, Calc* pCalc_)
    : pCMesh(pCMesh_)
    , pCalc(pCalc_)
    , rotx(pCMesh_, true)
{
}

// --- The orders of passes ----------------------------------------------------------------------------------

void Top::run(Voro* pVoro)
{
    Progress* pProgress = getRootProgress()->getChildProgressSetTodo("TP_unif", 2);
    unifyDiagonals();
    pProgress->increment();
    killDegenerate();
    pProgress->increment();
    pProgress->setFinished(true);

    solveAllPatches(true, nullptr);
    cbsComplete(pVoro);
    killDegenerate();

    pProgress = getRootProgress()->getChildProgressSetTodo("TP_itr", 3);
    std::vector<CEdge*> vBorders;
    getBordersKillDeg1nn(vBorders);
    pProgress->increment();
    for (CEdge* pCE : vBorders)
        integrateCCD(pCE);
    pProgress->increment();
    killTinyBorderPatches(MAX_TINY_BEFORE_PATCHES);
    pProgress->increment();
    pProgress->setFinished(true);

    CornerParter cornerParter(pCMesh, pCalc);
    cornerParter.addCandidates();
    pProgress = getRootProgress()->getChildProgressSetTodo("TP_pps", 5);
    SurfacePieces pieces = solveAllPatches(false, pProgress);
    pProgress->setFinished(true);
    finish(cornerParter, std::move(pieces));
}

void Top::runMelt(Voro* pVoro)
{
    unifyDiagonals();
    cbsComplete(pVoro);
    cbsComplete(pVoro);
    std::vector<CEdge*> vBorders;
    getBordersKillDeg1nn(vBorders);
    for (CEdge* pCE : vBorders)
        integrateCCD(pCE);
    killTinyBorderPatches(MAX_TINY_MELT);
    solveAllPatches(true, nullptr);
    killTinyBorderPatches(MAX_TINY_MELT);
    pCMesh->averageBundles();
    pCMesh->splitDegenerate();
    separateDuplicatePoints();
    orientAll();
}

void Top::finish(CornerParter& cornerParter, SurfacePieces pieces)
{
    Progress* pProgress = getRootProgress()->getChildProgressSetTodo("TP_fin", 1);
    killTinyBorderPatches(MAX_TINY_AT_END);
    pProgress->increment();
    // A cut of the whole mesh into patches belongs here, but nothing reads it.
    pCMesh->deletePatches();
    pProgress->increment();
    if (pCMesh->hasDegree(DEG_NON_MANIFOLD))
    {
        cleanSeams();
        orientAll();
    }
    else if (pieces.isOf(*pCMesh)) // nothing has been flipped
        orientAll(std::move(pieces));
    else
        orientAll();
    pProgress->increment();
    const bool bHasBorder = pCMesh->hasDegree(DEG_BORDER);
    HoleToCCD holeToCCD(pCMesh, pCalc);
    std::vector<Point3> vPixels;
    holeToCCD.run(vPixels);
    if (bHasBorder)
    {
        // Where a border ran along a fin, the filling leaves the fin beside it, as a piece of its own.
        killBorderEars();
        killTinyBorderPatches(MAX_TINY_AT_END);
        closeTriangularHoles();
        decideSeams();
        // The filling turns triangles along the borders, and new ones follow their neighbours only.
        orientAll();
    }
    cornerParter.addCandidates();
    if (cornerParter.run() > 0)
        orientAll(); // what was one piece may be two
    pProgress->increment();
    pProgress->setFinished(true);
}

// --- Flat faces and flat triangles -------------------------------------------------------------------------

bool Top::moveOneCorner(const CTriangle& ct, int ici)
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

// All flat triangles, in any order, and some of them several times.
std::vector<CTriangle*> Top::findFlat() const
{
    const CMesh::Renewed* pRenewed = pCMesh->getRenewed();
    if (flatExtraction == 0 || pRenewed == nullptr || pCMesh->getNumExtractions() != flatExtraction + 1)
        return getFlat(*pCMesh, pCMesh->getAllT());
    // All that came through both extractions were not flat, or one of their corners has been moved.
    std::vector<CTriangle*> vSuspects = pRenewed->vMadeT;
    vSuspects.insert(vSuspects.end(), pRenewed->vRevivedT.begin(), pRenewed->vRevivedT.end());
    const std::vector<CTriangle*>& vAllT = pCMesh->getAllT();
    vSuspects.insert(vSuspects.end(), vAllT.begin() + static_cast<std::ptrdiff_t>(pCMesh->getNumExtractedT()),
                     vAllT.end());
    for (const Bundle* pBundle : pCMesh->getExtraBundles())
        pCMesh->getIncT(pBundle->ccd, vSuspects);
    for (const u64 ccd : vMovedCCD)
        pCMesh->getIncT(ccd, vSuspects);
    return getFlat(*pCMesh, vSuspects);
}

// In order of creation. What is done about one may make others flat: of these, the later ones have their turn.
void Top::killDegenerate()
{
    const std::vector<CTriangle*>& vAllT = pCMesh->getAllT();
    const std::size_t numT = vAllT.size(); // what the loop makes comes behind
    std::set<unsigned int> sFlat;
    for (const CTriangle* pCT : findFlat())
        sFlat.insert(pCT->getNumber());
    flatExtraction = 0;
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
    flatExtraction = pCMesh->getNumExtractions();
}

void Top::killFlat(CTriangle* pCT)
{
    const int ici = pCT->getLargestEdgeICI(pCMesh);
    CEdge* pCE = pCT->getCEdge(ici);
    if (pCE->isBorder())
    {
        pCT->kill(pCMesh);
        return;
    }
    std::vector<CTriangle*> vKids;
    if (pCE->trySplitNeigsKillT(pCMesh, pCT, ici, vKids) || moveOneCorner(*pCT, ici))
        return;
    errorMessage(ZEF_HERE, "No success of trySplitNeigsKillT() and laplacianForOne()");
    throw ZefBugException();
}

// --- Borders -----------------------------------------------------------------------------------------------

void Top::cbsComplete(Voro* pVoro)
{
    Progress* pProgress = getRootProgress()->getChildProgressSetTodo("TP_cbcpl", 7);
    std::vector<CEdge*> vBorders;
    getBordersKillDeg1nn(vBorders);
    pProgress->increment();
    std::vector<u64> vGeneratingVCDs;
    for (const CEdge* pCE : vBorders)
    {
        ASSEX_TEXT(pCE->vCT.size() == 1, "vT.size()==1");
        appendSharedByTriangle(*pCalc, *pCE->vCT[0], vGeneratingVCDs);
    }
    pProgress->increment();
    std::vector<CEdge*> vDeg4;
    pCMesh->getDegN(4, vDeg4);
    pProgress->increment();
    for (const CEdge* pCE : vDeg4)
        appendSharedByEdge(*pCalc, *pCE, vGeneratingVCDs);
    pProgress->increment();
    std::sort(vGeneratingVCDs.begin(), vGeneratingVCDs.end());
    vGeneratingVCDs.erase(std::unique(vGeneratingVCDs.begin(), vGeneratingVCDs.end()), vGeneratingVCDs.end());
    pCMesh = pVoro->borderFix(vGeneratingVCDs);
    pProgress->increment();
    pCMesh->averageBundles();
    pProgress->increment();
    unifyDiagonals();
    pProgress->increment();
    pProgress->setFinished(true);
}

void Top::pruneCases()
{
    std::array<std::vector<CTriangle*>, vKillConfigs.size()> vByConfig;
    for (CTriangle* pCT : pCMesh->getAllT())
    {
        const int cfg = std::max(pCT->getCfg(), 0);
        ASSEX(cfg < 256);
        const auto it = std::find(vKillConfigs.begin(), vKillConfigs.end(), cfg);
        if (pCT->isAlive() && it != vKillConfigs.end())
            vByConfig[static_cast<std::size_t>(it - vKillConfigs.begin())].push_back(pCT);
    }
    for (const std::vector<CTriangle*>& vT : vByConfig)
        for (CTriangle* pCT : vT)
            if (pCT->hasBorderEdge())
                pCT->kill(pCMesh);
}

// --- Positions ---------------------------------------------------------------------------------------------

void Top::separateDuplicatePoints()
{
    std::vector<PointBundle> vPointBundle;
    vPointBundle.reserve(pCMesh->getBundleMap()->size());
    pCMesh->getBundleMap()->forEach([&](u64, Bundle* pBundle)
                                    { vPointBundle.emplace_back(*pBundle->pPoint, pBundle); });
    std::stable_sort(vPointBundle.begin(), vPointBundle.end(), isPointBundleLess);
    std::vector<Bundle*> vDupBundles;
    for (std::size_t i = 0; i < vPointBundle.size();)
    {
        std::size_t end = i + 1;
        while (end < vPointBundle.size() && vPointBundle[end].first == vPointBundle[i].first)
            ++end;
        for (std::size_t k = i; end - i >= 2 && k < end; ++k)
            vDupBundles.push_back(vPointBundle[k].second);
        i = end;
    }
    std::set<Point3> sUniquePoints;
    for (Bundle* pBundle : vDupBundles)
    {
        Point3 pos = *pBundle->pPoint;
        bool bFree = sUniquePoints.insert(pos).second;
        while (!bFree)
        {
            pos = shiftAtRandom(pos, pCMesh->getAvgSpacing());
            const bool bTaken = std::binary_search(vPointBundle.begin(), vPointBundle.end(),
                                                   PointBundle(pos, nullptr), isPointBundleLess);
            bFree = !bTaken && sUniquePoints.insert(pos).second;
        }
        pBundle->pPoint->set(pos);
    }
}

} // namespace TARN_ZEF
