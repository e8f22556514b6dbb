#include "repair/Top.h"

#include "cmesh/CMesh.h"
#include "cmesh/countTriangles.h"
#include "core/Progress.h"
#include "holes/HoleToCCD.h"
#include "repair/BorderRepair.h"
#include "repair/CellCompletion.h"
#include "repair/CornerParter.h"
#include "repair/DuplicatePoints.h"
#include "repair/FlatTriangles.h"
#include "repair/Orientation.h"
#include "repair/SeamPass.h"
#include "repair/TinyBorderPieces.h"
#include "repair/UnifyDiagonals.h"
#include "repair/orientedFlood.h"

namespace TARN_ZEF
{
namespace
{
// Largest pieces that killTinyBorderPatches may remove, by the place in the order of passes.
const int MAX_TINY_BEFORE_PATCHES = 40;
const int MAX_TINY_AT_END = 100;
const int MAX_TINY_MELT = 8;
const int MAX_TINY_OPTIMIZE = 5;

const double MAX_LEN_IN_CELLS = 1.5; // of an edge that optimize() collapses
} // namespace

// --- The orders of passes ----------------------------------------------------------------------------------

void Top::run(Voro* pVoro)
{
    Progress* pProgress = getRootProgress()->getChildProgressSetTodo("TP_unif", 2);
    pass("diagonals", [this] { unifyDiagonals(); });
    pProgress->increment();
    pass("flat triangles", [this] { killDegenerate(); });
    pProgress->increment();
    pProgress->setFinished(true);

    pass("patches", [this] { PatchPass(state).runAll(true, nullptr); });
    pass("more cells", [=, this] { cbsComplete(pVoro); });
    pass("flat triangles", [this] { killDegenerate(); });
    pass("borders", [this] { completeBorders(); });
    CornerParter cornerParter(state.pCMesh, state.pCalc); // knows where the surface was rough until here
    cornerParter.addCandidates();
    pass("patches", [this] { solveAllPatches(); });
    finish(cornerParter);
}

template <typename Work>
void Top::pass(const char* name, Work work)
{
    runPass(name, countsOf(state.pCMesh), work);
}

void Top::completeBorders()
{
    Progress* pProgress = getRootProgress()->getChildProgressSetTodo("TP_itr", 3);
    std::vector<CEdge*> vBorders;
    getBordersKillDeg1nn(vBorders);
    pProgress->increment();
    for (CEdge* pCE : vBorders)
        integrateCCD(pCE);
    pProgress->increment();
    killTinyBorderPatches(MAX_TINY_BEFORE_PATCHES);
    pProgress->increment();
    pProgress->setFinished(true);
}

void Top::solveAllPatches()
{
    Progress* pProgress = getRootProgress()->getChildProgressSetTodo("TP_pps", 5);
    state.keepPieces(PatchPass(state).runAll(false, pProgress));
    pProgress->setFinished(true);
}

void Top::finish(CornerParter& cornerParter)
{
    Progress* pProgress = getRootProgress()->getChildProgressSetTodo("TP_fin", 1);
    pass("small pieces", [this] { killTinyBorderPatches(MAX_TINY_AT_END); });
    pProgress->increment();
    // A cut of the whole mesh into patches belongs here, but nothing reads it.
    state.pCMesh->deletePatches();
    pProgress->increment();
    if (state.pCMesh->hasDegree(DEG_NON_MANIFOLD))
        pass("seams", [this] { cleanSeams(); });
    Orientation(state).run();
    pProgress->increment();
    const bool bHasBorder = state.pCMesh->hasDegree(DEG_BORDER);
    HoleToCCD holeToCCD(state.pCMesh, state.pCalc);
    std::vector<Point3> vPixels;
    pass("holes", [&] { holeToCCD.run(vPixels); });
    if (bHasBorder)
        pass("filled borders", [this] { cleanFilledBorders(); });
    pass("touching sheets",
         [&]
         {
             cornerParter.addCandidates();
             if (cornerParter.run() > 0)
                 Orientation(state).run(); // what was one piece may be two
         });
    pProgress->increment();
    pProgress->setFinished(true);
}

// What the passes over patches leave at edges of more than two triangles: patches that only together can be
// decided, and ears at borders.
void Top::cleanSeams()
{
    SeamPass(state).run();
    killBorderEars(); // they would also break the rings around holes
    killTinyBorderPatches(MAX_TINY_AT_END);
}

// Where a border ran along a fin, the filling leaves the fin beside it, as a piece of its own.
void Top::cleanFilledBorders()
{
    killBorderEars();
    killTinyBorderPatches(MAX_TINY_AT_END);
    BorderRepair(state.pCMesh).closeTriangularHoles();
    SeamPass(state).run();
    // The filling turns triangles along the borders, and new ones follow their neighbours only.
    Orientation(state).run();
}

void Top::runMelt(Voro* pVoro)
{
    pass("diagonals", [this] { unifyDiagonals(); });
    pass("more cells", [=, this] { cbsComplete(pVoro); });
    pass("more cells", [=, this] { cbsComplete(pVoro); });
    pass("borders", [this] { completeMeltBorders(); });
    pass("patches", [this] { PatchPass(state).runAll(true, nullptr); });
    pass("small pieces", [this] { killTinyBorderPatches(MAX_TINY_MELT); });
    state.pCMesh->averageBundles();
    pass("flat triangles", [this] { state.pCMesh->splitDegenerate(); });
    separateDuplicatePoints();
    Orientation(state).run();
}

void Top::completeMeltBorders()
{
    std::vector<CEdge*> vBorders;
    getBordersKillDeg1nn(vBorders);
    for (CEdge* pCE : vBorders)
        integrateCCD(pCE);
    killTinyBorderPatches(MAX_TINY_MELT);
}

void Top::optimize()
{
    killDegenerate();
    edgeFlips(0.1);
    edgeFlips(1.0);
    const double maxLen = MAX_LEN_IN_CELLS * state.pCMesh->getAvgSpacing();
    simplify(0, maxLen, SM_MID_THEN_ENDS);
    infoMessage(ZEF_HERE, "lap deactivated");
    killTinyBorderPatches(MAX_TINY_OPTIMIZE);
    simplify(0, maxLen, SM_MID_THEN_ENDS);
    for (int i = 0; i < 3; ++i)
        edgeFlips(0.1);
}

// --- The passes by themselves ------------------------------------------------------------------------------

void Top::unifyDiagonals()
{
    UnifyDiagonals(state).run();
}

void Top::killDegenerate()
{
    FlatTriangles(state.pCMesh).run();
}

void Top::cbsComplete(Voro* pVoro)
{
    CellCompletion(state).run(pVoro);
}

void Top::getBordersKillDeg1nn(std::vector<CEdge*>& vBorders)
{
    BorderRepair(state.pCMesh).getBordersKillDeg1nn(vBorders);
}

void Top::integrateCCD(CEdge* pCE)
{
    BorderRepair(state.pCMesh).integrateCCD(pCE);
}

void Top::killBorderEars()
{
    BorderRepair(state.pCMesh).killBorderEars();
}

void Top::pruneCases()
{
    BorderRepair(state.pCMesh).pruneCases();
}

void Top::killTinyBorderPatches(int maxNumT)
{
    TinyBorderPieces(state.pCMesh).kill(maxNumT);
}

bool Top::solvePatches(bool bStrict)
{
    return PatchPass(state).run(bStrict);
}

bool Top::solvePair(CPatch* p0, CPatch* p1, double sumArea)
{
    return PatchPass::solvePair(p0, p1, sumArea);
}

bool Top::solveClosedPatches(std::vector<CPatch*>& vClosedPatches, bool bStrict)
{
    return PatchPass::solveClosedPatches(vClosedPatches, bStrict);
}

void Top::createPatchesOrient(const std::vector<CTriangle*>& vT, std::vector<CPatch*>& vPatches)
{
    TARN_ZEF::createPatchesOrient(state.pCMesh, state.pCalc, vT, vPatches);
}

void Top::separateDuplicatePoints()
{
    DuplicatePoints(state.pCMesh).separate();
}

} // namespace TARN_ZEF
