#ifndef ZEF_PATCHSOLVER_H
#define ZEF_PATCHSOLVER_H

#include "cmesh/CPatch.h"
#include "cmesh/PatchFlood.h"
#include "cmesh/SurfacePieces.h"
#include "cmesh/TriangleUnion.h"
#include "core/NumberSet.h"

#include <cstdint>
#include <map>
#include <memory>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
class Calc;
class CMesh;
class Progress;

// The passes over the patches of a mesh: in each, one of two patches with the same outer boundary dies, thin
// closed patches lose a side, and free bubbles go.
//
// A pass treats the patches that CMesh::createPatches would make, in the order of their outer boundaries. But
// only few of them can be decided, so only these become objects. All others are a number: the lowest creation
// number of a member. Which triangle has which number survives the passes: a pass only kills triangles, which
// joins patches, and what it splits is small.
//
// Ownership:  owns its patches during a pass; the mesh is the caller's and loses its own patches.
// Invariant:  between passes, two alive triangles are in one set of labels if an edge of degree 2 joins them,
//             turned against each other as they are oriented; vWallCE holds every other edge with a triangle.
//             So nobody else may edit the mesh meanwhile.
// Cost:       a walk over all edges at the start; then passes that cost what the non-manifold and border
//             edges do, plus a walk over large closed patches that could be split.
class PatchSolver
{
public:
    static constexpr std::uint32_t MAX_BUBBLE = 7; // a closed patch below this size may be a free bubble

    PatchSolver(CMesh* pCMesh_, Calc* pCalc_);
    PatchSolver(const PatchSolver&) = delete;
    PatchSolver& operator=(const PatchSolver&) = delete;

    // Returns whether a pair was decided or a closed patch was split; a killed bubble does not count.
    // With bStrict a closed patch is not split if both sides are anchored. Four steps of progress.
    bool pass(bool bStrict, Progress& progress);

    // All patches as they are now, in the order of their first members; they hold their members by number.
    [[nodiscard]] std::vector<std::unique_ptr<CPatch>> makeAllPatches();

    // The pieces of the mesh as it is now. Only to be destroyed afterwards.
    [[nodiscard]] SurfacePieces releasePieces() { return {*pCMesh, std::move(labels), std::move(vTwisted)}; }

    // Which of a pair must die: the one with fewer triangles, else p1. Null if both stay, since they are
    // large and a good part of the mesh.
    [[nodiscard]] static CPatch* chooseVictim(CPatch* p0, CPatch* p1, double sumArea);
    // Whether chooseVictim() looks at areas.
    [[nodiscard]] static bool isLargePair(const CPatch* p0, const CPatch* p1);

private:
    using Label = std::uint32_t;

    // A patch at a wall, once for each of its members there.
    struct Side
    {
        Label label;
        CEdge* pCE;
    };
    // A patch with walls. Ranges are indices into vSides and vBoundaryCE.
    struct Record
    {
        Label label;
        std::size_t firstSide;
        std::size_t endSide;
        std::size_t firstBoundary;
        std::size_t endBoundary;
        CPatch* pPatch = nullptr; // made when it is needed
    };

    using RecordPair = std::pair<Record*, Record*>;

    void collectSides();
    void collectRecords();
    void classify(std::vector<RecordPair>& vPairs, std::vector<Record>& vClosedPatches);
    bool solvePairs(const std::vector<RecordPair>& vAllPairs);
    bool solveClosedPatches(std::vector<Record>& vClosedPatches, bool bStrict);
    void dropHugePairs(std::vector<RecordPair>& vPairs);
    // Twice the areas of the whole mesh and of patches.
    struct Areas
    {
        double sum = 0.0;
        std::vector<double> vOfLabel;
    };
    [[nodiscard]] Areas measureAreas(const std::vector<Label>& vLabels);
    [[nodiscard]] double getEnoughArea(double maxPairArea) const;
    [[nodiscard]] bool isBubble(const Record& record) const;
    [[nodiscard]] bool canBeSplit(const Record& record) const;
    [[nodiscard]] bool isLargePart(Label label) const;
    [[nodiscard]] bool isRemembered(const std::map<Label, std::uint32_t>& mSize, Label label) const;
    [[nodiscard]] bool isThick(const Record& record);
    [[nodiscard]] double computeThickness(Label label);
    [[nodiscard]] bool hasSameBoundary(const Record& a, const Record& b) const;
    [[nodiscard]] bool isBoundaryLess(const Record& a, const Record& b) const;
    CPatch* getPatch(Record& record);
    void killPatch(CPatch* pPatch);
    bool splitPatch(CPatch* pPatch, bool bStrict);
    void noteDead(const CTriangle* pCT);
    void joinAcross(const CEdge* pCE);
    void applyChanges();

    CMesh* pCMesh;
    Calc* pCalc;
    TriangleUnion labels;
    std::vector<std::uint32_t> vTwisted; // triangles of patches that no orientation fits
    std::vector<CEdge*> vWallCE;         // may hold edges that are no walls any more
    NumberSet wallCE;                    // what vWallCE holds
    // Large patches that need no second look while they have that size: no thin volume; a large share of the
    // mesh's area.
    std::map<Label, std::uint32_t> mThickSize;
    std::map<Label, std::uint32_t> mHugeSize;

    // Of the present pass:
    std::vector<Side> vSides;
    std::vector<CEdge*> vBoundaryCE;
    std::vector<Record> vRecords; // by boundary, then by label
    PatchFlood flood;
    std::vector<std::unique_ptr<CPatch>> vPatches;
    std::vector<CEdge*> vTouchedCE;                      // edges that lost a triangle
    std::vector<std::vector<CTriangle*>> vTurnedMembers; // of the patches that were reoriented, or even split
};

} // namespace TARN_ZEF

#endif
