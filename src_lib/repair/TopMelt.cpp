#include "repair/TopMelt.h"

#include "cmesh/CMesh.h"
#include "cmesh/CPatch.h"
#include "cmesh/toolsCMesh.h"
#include "files/Visualizer3.h"
#include "geometry/tools.h"
#include "lattice/cellCodes.h"
#include "repair/CreaseFlips.h"
#include "repair/PatchGrowing.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <memory>
#include <string>
#include <unordered_set>

namespace TARN_ZEF
{
namespace
{
const double CREASE_ANGLE = 140.0;
const double MAX_LOSS_OF_BEND = 15.0; // by which a crease may open when a corner leaves it
const int MIN_BENT_EDGES = 2;
const double NO_ANGLE = 360.0;

bool touches(const std::set<u64>& sCCD, const CTriangle& ct)
{
    return sCCD.count(ct.getC0()) != 0 || sCCD.count(ct.getC1()) != 0 || sCCD.count(ct.getC2()) != 0;
}

void clearVisited(const std::vector<CTriangle*>& vT)
{
    for (CTriangle* pCT : vT)
        pCT->bVisited = false;
}
} // namespace

// --- The flow ----------------------------------------------------------------------------------------------

void TopMelt::finalize2(const std::vector<std::pair<u64, u64>>& vFeatures)
{
    unifyDiagonals();
    writeScene("unifiedDiagonals.list");
    for (const auto& [ccd0, ccd1] : vFeatures)
    {
        state.sFeatureCCD.insert(ccd0);
        state.sFeatureCCD.insert(ccd1);
    }
    flipFeatures();

    PatchClasses classes;
    cutAndClassify(nullptr, classes);
    const double sumArea = state.pCMesh->getArea();
    solvePairs(classes, sumArea);

    printText("Calling strategyMST()...\n");
    EdgeSet sProblemCE;
    strategyMST(sProblemCE);
    writeScene("afterMST.list");

    cutAndClassify(&sProblemCE, classes);
    printText("sumPatches=" + std::to_string(classes.vPatches.size()) +
              "\nvClosedPatches.size()=" + std::to_string(classes.vClosedPatches.size()) +
              "\nvOpenPatches.size()=" + std::to_string(classes.vOpenPatches.size()) +
              "\nvPatchPairs.size()=" + std::to_string(classes.vPatchPairs.size()) + "\n");
    state.pCMesh->statistics("beforeSolvePatches2");
    writeScene("beforeSolvePatches2.list");
    solvePairs(classes, sumArea);
    state.pCMesh->statistics("afterSolvePatches2");
    writeScene("afterSolvePatches2.list");
    state.pCMesh->deletePatches();

    flipFeatures();
    closeChainsKillT();
    std::vector<CPatch*> vPatches;
    const auto deleteAll = [](const std::vector<CPatch*>* pvPatches)
    {
        for (const CPatch* pPatch : *pvPatches)
            delete pPatch;
    };
    const std::unique_ptr<std::vector<CPatch*>, decltype(deleteAll)> pOwner(&vPatches, deleteAll);
    createPatchesOrient(state.pCMesh->getAllT(), vPatches);
    writeScene("finalFatMesh.list");
}

void TopMelt::cutAndClassify(const EdgeSet* pCuts, PatchClasses& classes)
{
    classes = {};
    std::map<u64, CPatch*> mBorderCCD2Patch;
    std::vector<CEdge*> vBorderME;
    state.pCMesh->createPatches(pCuts, classes.vPatches, mBorderCCD2Patch, vBorderME);
    PatchPass::classifyPatches(classes.vPatches, classes.vPatchPairs, classes.vClosedPatches,
                               classes.vOpenPatches);
}

void TopMelt::solvePairs(const PatchClasses& classes, double sumArea)
{
    for (const auto& [p0, p1] : classes.vPatchPairs)
        solvePair(p0, p1, sumArea);
}

void TopMelt::writeScene(const char* name) const
{
    if constexpr (DEBUG_SCENES)
    {
        std::vector<CTriangle*> vAliveT;
        state.pCMesh->getAliveT(vAliveT);
        Visualizer3 vis(name, state.pCalc, true);
        vis.writeTriangles(vAliveT, CLIGHTBLUE);
    }
}

// --- Growing -----------------------------------------------------------------------------------------------

CTriangle* TopMelt::getFlippedMaxT_for_closed_melt(const std::vector<CTriangle*>& vT)
{
    u64 maxCCD = 0;
    for (const CTriangle* pCT : vT)
        if (pCT->isAlive())
            maxCCD = std::max({maxCCD, pCT->getC0(), pCT->getC1(), pCT->getC2()});
    std::vector<CTriangle*> vIncT;
    for (CTriangle* pCT : vT)
        if (pCT->isAlive() && pCT->hasCorner(maxCCD))
            vIncT.push_back(pCT);
    ASSEX(!vIncT.empty());
    bool bNeedFlip = false;
    CTriangle* pMaxT = PatchGrowing::findFacing(vIncT, maxCCD, bNeedFlip);
    if (bNeedFlip)
        pMaxT->flipOrientation();
    return pMaxT;
}

CTriangle* TopMelt::getFlippedMaxT_for_open_melt(const std::vector<CTriangle*>& vT)
{
    ASSEX_TEXT(!state.sBorderCCD.empty(), "!sBorderCCD.empty()");
    CTriangle* pStartT = getFlippedMaxT_for_closed_melt(vT);
    clearVisited(vT);
    if (pStartT == nullptr)
        return nullptr;
    std::vector<CTriangle*> vWork{pStartT}; // a queue that keeps what has left it
    std::unordered_set<const CTriangle*> sSeenT{pStartT};
    for (std::size_t i = 0; i < vWork.size(); ++i)
    {
        CTriangle* pCT = vWork[i];
        if (touches(state.sBorderCCD, *pCT))
        {
            printText("has border\n");
            return pCT;
        }
        for (int ici = 0; ici < 3; ++ici)
        {
            CEdge* pCE = pCT->getCEdge(ici);
            if (!state.rotx.sortStar(pCT, pCE) || pCE->vCT.size() < 2 || !sSeenT.insert(pCE->vCT[1]).second)
                continue;
            if (pCT->needFlip(pCE->vCT[1]))
                pCE->vCT[1]->flipOrientation();
            vWork.push_back(pCE->vCT[1]);
        }
    }
    return nullptr;
}

void TopMelt::meshGrowing(const std::vector<CTriangle*>& vT, bool bOpen)
{
    clearVisited(vT);
    CTriangle* pMaxCT = bOpen ? getFlippedMaxT_for_open_melt(vT) : getFlippedMaxT_for_closed_melt(vT);
    ASSEX_TEXT(pMaxCT != nullptr, "pMaxCT!=0");
    std::vector<CTriangle*> vWork{pMaxCT};
    pMaxCT->bVisited = true;
    while (!vWork.empty())
    {
        CTriangle* pCT = vWork.back();
        vWork.pop_back();
        for (int ici = 0; ici < 3; ++ici)
        {
            CTriangle* pNeigT = findFlippedNeig(pCT, ici);
            if (pNeigT == nullptr || pNeigT->bVisited)
                continue;
            pNeigT->bVisited = true;
            vWork.push_back(pNeigT);
        }
    }
    std::vector<CTriangle*> vDiscarded;
    for (CTriangle* pCT : vT)
        if (pCT->isAlive() && !pCT->bVisited)
            vDiscarded.push_back(pCT);
    for (CTriangle* pCT : vDiscarded)
        if (pCT->isAlive())
            pCT->kill(state.pCMesh);
}

CTriangle* TopMelt::findFlippedNeig(CTriangle* pCT, int ici)
{
    CEdge* pCE = pCT->getCEdge(ici);
    if (!state.rotx.sortStar(pCT, pCE))
    {
        writeScene("rotbug.list");
        return nullptr;
    }
    ASSEX_TEXT(pCE->vCT.empty() || pCE->vCT[0] == pCT, "pCE->vCT.empty() || pCE->vCT[0]==pCT");
    if (pCE->vCT.size() < 2)
        return nullptr;
    // The surface doesn't cross a known border.
    if (state.sBorderCCD.count(pCE->v0) != 0 && state.sBorderCCD.count(pCE->v1) != 0)
        return nullptr;
    CTriangle* pNeigT = pCE->vCT[1];
    if (pCT->needFlip(pNeigT))
        pNeigT->flipOrientation();
    return pNeigT;
}

// --- Creases -----------------------------------------------------------------------------------------------

void TopMelt::flipCreases()
{
    CreaseFlips(state.pCMesh).run(CREASE_ANGLE);
}

void TopMelt::removeCreaseCCDs()
{
    std::vector<std::pair<double, CEdge*>> vAngle;
    getAngles(CREASE_ANGLE, vAngle);
    std::vector<CEdge*> vIncCE;
    for (const auto& [angle, pCE] : vAngle)
    {
        for (const u64 ccd : {pCE->v0, pCE->v1})
        {
            vIncCE.clear();
            state.pCMesh->getIncCE(ccd, vIncCE);
            tryRemoveCCD(ccd, vIncCE, CREASE_ANGLE);
        }
    }
}

bool TopMelt::getWorstAngle(const std::vector<CEdge*>& vIncCE, double maxAngle, double& worstAngle) const
{
    worstAngle = 0.0;
    int numBent = 0;
    for (const CEdge* pCE : vIncCE)
    {
        double angle = 0.0;
        if (!pCE->isInner() || !CreaseFlips(state.pCMesh).getBend(pCE, angle))
            return false;
        worstAngle = std::max(worstAngle, angle);
        numBent += angle > maxAngle ? 1 : 0;
    }
    return numBent >= MIN_BENT_EDGES;
}

double TopMelt::getAngleOfFan(u64 killCCD, u64 fromCCD, const std::vector<CTriangle*>& vIncT) const
{
    double value = 0.0;
    for (const CTriangle* pCT : vIncT)
    {
        const int ici = pCT->getICI(killCCD);
        const CTriangle* pNeigT = pCT->getCEdge(ici)->getNeigT(pCT);
        if (pNeigT == nullptr)
            return NO_ANGLE;
        bool bOK = false;
        Vector3 neigNNV;
        pNeigT->getNNV(neigNNV, state.pCMesh, bOK);
        if (!bOK)
            return NO_ANGLE;
        const u64 c1 = pCT->getCorner(CTriangle::getNext(ici));
        const u64 c2 = pCT->getCorner(CTriangle::getPrev(ici));
        if (c1 == fromCCD || c2 == fromCCD)
            continue;
        const Vector3 nnv = getNormalVector(state.pCMesh, fromCCD, c1, c2, bOK);
        if (!bOK)
            return NO_ANGLE;
        if (pCT->needFlip(pNeigT))
            neigNNV.mul(-1.0);
        value = std::max(value, getAngleDegree(nnv, neigNNV));
    }
    return value;
}

bool TopMelt::tryRemoveCCD(u64 killCCD, const std::vector<CEdge*>& vIncCE, double maxAngle)
{
    double worstAngle = 0.0;
    if (!getWorstAngle(vIncCE, maxAngle, worstAngle))
        return false;
    std::vector<CTriangle*> vIncT;
    state.pCMesh->getIncT(killCCD, vIncT);
    double bestAngle = NO_ANGLE;
    u64 fromCCD = killCCD;
    for (const CEdge* pCE : vIncCE)
    {
        const u64 candidate = pCE->getOtherVCD(killCCD);
        const double value = getAngleOfFan(killCCD, candidate, vIncT);
        if (value < bestAngle)
        {
            bestAngle = value;
            fromCCD = candidate;
        }
    }
    const bool bKeepsCrease = bestAngle >= CREASE_ANGLE && worstAngle - bestAngle <= MAX_LOSS_OF_BEND;
    if (fromCCD == killCCD || !bKeepsCrease)
        return false;
    ASSEX_TEXT(fromCCD != killCCD, "fromCCD!=killCCD");
    for (CTriangle* pCT : vIncT)
    {
        const int ici = pCT->getICI(killCCD);
        const u64 ccd1 = pCT->getCorner(CTriangle::getNext(ici));
        const u64 ccd2 = pCT->getCorner(CTriangle::getPrev(ici));
        pCT->kill(state.pCMesh);
        if (ccd1 == fromCCD || ccd2 == fromCCD)
            continue;
        state.pCMesh->createT(fromCCD, ccd1, ccd2, 0, 0);
    }
    return true;
}

} // namespace TARN_ZEF
