#ifndef ZEF_VOLSOLVER_H
#define ZEF_VOLSOLVER_H

#include "cmesh/CEdge.h"
#include "cmesh/CPatch.h"
#include "cmesh/CTriangle.h"
#include "core/definitions.h"

#include <map>
#include <memory>
#include <set>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
class Calc;
class CMesh;

// Judges patches as the walls of bubbles. A patch with a corner off its boundary is strong and stays. One
// without is weak, a thin ribbon between non-manifold edges: it is matched against the boundaries of the
// strong ones, or removed.
//
// Ownership:  owns its patches until the next cut or its end; the mesh is the caller's, must outlive it, and
//             loses its own patches with a cut.
// Invariant:  after presolveBubbles() every patch is either strong or weak; those that died stay, empty.
// Threads:    none.
// Cost:       a few walks over the triangles; sorts of the boundaries.
class VolSolver
{
public:
    using EdgeSet = std::set<CEdge*, ByCreationCE>;
    using PatchSet = std::set<CPatch*, ByIdPatch>;

    // A patch that presolveBubbles() killed, and those that stood beside it, in order of their ids.
    struct Victim
    {
        CPatch* pPatch;
        std::vector<CPatch*> vAdjPatches;
    };

    VolSolver(CMesh* pCMesh_, Calc* pCalc_);
    ~VolSolver();
    VolSolver(const VolSolver&) = delete;
    VolSolver& operator=(const VolSolver&) = delete;

    // Cuts the alive triangles of vT into patches, as CMesh::createPatches() does with a whole mesh: at borders,
    // at edges of degree above 2, at the given walls, and where vT ends.
    // mOppVCD2Patch  third corner at a non-manifold edge to its patch, the last one written
    // vBorderME      the non-manifold edges met, by creation, each once
    void createPatches(const EdgeSet& sWalls, const std::vector<CTriangle*>& vT,
                       std::map<u64, CPatch*>& mOppVCD2Patch, std::vector<CEdge*>& vBorderME);
    // Cuts the whole mesh, tells strong patches from weak ones, and kills those weak ones that lie on the
    // boundaries of strong ones and share each of their edges with other weak ones. Without a strong patch
    // nothing dies.
    void presolveBubbles();
    // Sorts the boundary edges of the strong patches by their degree, and kills the triangles at those of
    // their corners where no strong patch is left. Needs the patches of presolveBubbles().
    void integrateDanglingAndKill();
    // The edge to work on at corner ccd: beyond edge ici of pCT stands another triangle with two further edges,
    // and the one of these that leads to a strong patch is taken, of both the nearer one. Without any, or
    // without such a triangle, the edge at ici. dist  from the corner to the edge taken
    [[nodiscard]] CEdge* adaptCE(u64 ccd, CTriangle* pCT, int ici, double& dist) const;

    // By number of inner corners, then the larger one first.
    [[nodiscard]] const std::vector<CPatch*>& getPatches() const noexcept { return vPatches; }
    [[nodiscard]] const PatchSet& getStrongPatches() const noexcept { return sStrongPatches; }
    [[nodiscard]] const std::vector<CPatch*>& getWeakPatches() const noexcept { return vWeakPatches; }
    // Boundary edges of exactly one strong patch, by creation.
    [[nodiscard]] const std::vector<CEdge*>& getIndivBorders() const noexcept { return vIndivBorders; }
    [[nodiscard]] const std::vector<Victim>& getKilled() const noexcept { return vKillList; }
    // Boundary edges of strong patches, by creation, as integrateDanglingAndKill() found them.
    [[nodiscard]] const std::vector<CEdge*>& getBorderCE() const noexcept { return vBorderCE; }
    [[nodiscard]] const std::vector<CEdge*>& getDeg3CE() const noexcept { return vDeg3CE; }
    [[nodiscard]] const std::vector<CEdge*>& getDeg4CE() const noexcept { return vDeg4CE; }

private:
    using RatedPatch = std::pair<double, CPatch*>;

    void deletePatches();
    void fillPatch(CPatch* pPatch, CTriangle* pSeed, const EdgeSet& sWalls,
                   std::map<u64, CPatch*>& mOppVCD2Patch, std::vector<CEdge*>& vBorderME) const;
    void classifyPatches();
    [[nodiscard]] std::vector<CEdge*> collectStrongBorders();
    [[nodiscard]] static std::vector<RatedPatch> rateWeakPatches(const std::vector<CPatch*>& vWeak,
                                                                 const std::vector<CEdge*>& vCurrentBorders);
    void collectKillList(const std::vector<RatedPatch>& vMatchRate2Patch);
    void sortBordersByDegree();
    void killDanglingAt(const std::vector<u64>& vVCD);
    [[nodiscard]] bool isInStrong(const CTriangle* pCT) const
    {
        return pCT->getPatch() != nullptr && sStrongPatches.count(pCT->getPatch()) != 0;
    }
    [[nodiscard]] bool leadsToStrong(const CEdge& edge, const CTriangle* pFromCT) const;

    CMesh* pCMesh;
    Calc* pCalc;
    std::vector<CPatch*> vPatches; // owned
    PatchSet sStrongPatches;
    std::vector<CPatch*> vWeakPatches;
    std::vector<CEdge*> vBorderCE;
    std::vector<CEdge*> vDeg3CE;
    std::vector<CEdge*> vDeg4CE;
    std::vector<CEdge*> vIndivBorders;
    std::vector<Victim> vKillList;
};

} // namespace TARN_ZEF

#endif
