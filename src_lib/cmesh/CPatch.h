#ifndef ZEF_CPATCH_H
#define ZEF_CPATCH_H

#include "Point3.h"
#include "Vector3.h"
#include "cmesh/CEdge.h"
#include "cmesh/CTriangle.h"
#include "core/definitions.h"

#include <cstddef>
#include <map>
#include <set>
#include <vector>

namespace TARN_ZEF
{
class Calc;
class CMesh;
class CPatch;

// Orders patches by their ids, that is by creation.
struct ByIdPatch
{
    bool operator()(const CPatch* pA, const CPatch* pB) const noexcept;
};

// The triangles of a patch, and what can be asked about them alone.
//
// Ownership:  none; triangles and edges belong to the mesh.
// Cost:       every query walks the members.
class PatchMembers
{
public:
    [[nodiscard]] u64 getId() const noexcept { return id; }
    [[nodiscard]] std::size_t getSize() const noexcept { return vMemberCT.size(); }
    // In flood order; some may be dead.
    [[nodiscard]] const std::vector<CTriangle*>& getMembers() const noexcept { return vMemberCT; }
    [[nodiscard]] bool isMember(const CTriangle* pCT) const noexcept;

    // --- Measures, on bundle positions ---
    [[nodiscard]] double getArea() const;
    [[nodiscard]] double getVolume() const; // signed; positive if the members face outwards

    // --- Edges of the alive members, by creation, each once ---
    void getAllCE(std::vector<CEdge*>& vCE) const;
    void getCEByDegree(int deg, std::vector<CEdge*>& vCE) const; // deg as in CMesh::getDegN
    void getHighDegCE(std::vector<CEdge*>& vCE) const;           // degree above 2
    // The same, but counting only the members on the edge.
    void getDegWithRespectToOwn(int deg, std::vector<CEdge*>& vCE) const;

protected:
    explicit PatchMembers(CMesh* pCMesh_);
    ~PatchMembers() = default;

    [[nodiscard]] int getDegreeOn(const CEdge* pCE) const noexcept; // alive members on the edge

    CMesh* pCMesh;
    std::vector<CTriangle*> vMemberCT;

private:
    u64 id;
};

// A connected piece of a CMesh, bounded by borders, non-manifold edges or given cuts. The repair decides over
// patches, not triangles: a whole patch survives or dies.
//
// Ownership:  none; triangles and edges belong to the mesh. The patches of createPatches and createCCPatches
//             belong to the mesh, those of createPatchesOrient to the caller. All must go before the
//             triangles do.
// Invariant:  an alive member's pPatch is this patch, and a triangle whose pPatch is this patch is a member.
//             Members may die on their own; then the lists of the patch are stale, and only the next cut into
//             patches mends that.
// Threads:    none, but for the counter of ids.
// Cost:       every query walks the members, unless it says otherwise.
class CPatch : public PatchMembers
{
public:
    CPatch(CMesh* pCMesh_, Calc* pCalc_);
    // Takes the patch away from those members that still have it.
    ~CPatch();
    CPatch(const CPatch&) = delete;
    CPatch& operator=(const CPatch&) = delete;

    // --- Members ---
    [[nodiscard]] bool isAlive() const noexcept { return bAlive; }
    void addT(CTriangle* pCT); // sets its pPatch
    void reserve(std::size_t num) { vMemberCT.reserve(num); }
    // Leaves only the given members, in the given order; the others lose this patch.
    void keepMembers(const std::vector<CTriangle*>& vKeepCT);
    void kill();    // with all alive members; the patch is an empty dead object from then on
    void flipAll(); // the orientation of every alive member
    // Takes over all members of pOther, which dies. Both must be alive. With bUpdateBoundary the outer
    // boundaries of both are merged, otherwise that of this patch is cleared.
    void assimilate(CPatch* pOther, bool bUpdateBoundary);

    // --- Inside ---
    // Corners off the outer boundary; -1 until setNumInnerVtx(), which needs setOuterBoundary().
    void setNumInnerVtx();
    [[nodiscard]] int getNumInnerVtx() const noexcept { return numInnerVtx; }

    // --- Outer boundary: the edges on which exactly one member stands; the patch must be alive ---
    void setOuterBoundary(); // by creation, so equal boundaries give equal vectors
    [[nodiscard]] const std::vector<CEdge*>& getPatchBoundary() const noexcept { return vPatchBoundaryCE; }
    void getPatchBoundaryCE(std::vector<CEdge*>& vCE) const; // appends
    void getPatchBoundaryCE(std::set<CEdge*, ByCreationCE>& sCE) const;
    [[nodiscard]] std::size_t getPatchBoundarySize() const;
    // At least four members, none at a border, and two or more members on every edge.
    [[nodiscard]] bool isClosed() const;
    // Says where the flood that has just filled this patch was stopped: an edge for each side of it on which
    // a member stands. Until the mesh gets new triangles or the members change, the two calls above look at
    // these edges only.
    void setWalls(std::vector<CEdge*> vWalls);

    // --- Orientation ---
    void orient(); // makes the members consistent over edges of degree 2, then orientPatch()
    // Flips all members if the normals of those at the topmost corner point down.
    void orientPatch();

    // --- Split (CPatchSplit.cpp) ---
    // Cuts a thin closed patch that touches the rest of the mesh into its two sides and kills one of them, by
    // triangle: this patch stays alive with stale members. With bStrict not if both sides are anchored
    // elsewhere. Returns whether it killed; the members are reoriented in any case.
    bool splitClosedPatchKill(bool bStrict);
    // False if the patch has no edge to begin a split at, as far as its walls are known: then the call above
    // would do nothing but reorient. Looks at the walls only.
    [[nodiscard]] bool canBeSplit() const;

    // --- Partners (CPatchPaths.cpp) ---
    // The share of at most 500 of the non-manifold edges vBorderME that have a likely continuation: another
    // patch whose corner is a face neighbour of the own one. mCCDPatch  corner to patch, see createPatches.
    void setPartnerCertainty(const std::map<u64, CPatch*>& mCCDPatch);
    [[nodiscard]] double getPartnerCertainty() const noexcept { return partnerCertainty; }
    [[nodiscard]] const std::set<CPatch*, ByIdPatch>& getPartners() const noexcept { return sPartners; }
    std::vector<CEdge*> vBorderME; // filled by createPatches: by creation, each once

    // Paths over the inside of the patch that join the loose ends of its border in pairs; appended, each from
    // its target back to its source. mPos must hold all corners of the members.
    void findPartitioningPath(std::vector<CEdge*>& vPath, const std::map<u64, Point3>& mPos) const;
    bool canKillLeaveDeg2() const; // always false, with a warning

private:
    [[nodiscard]] bool areWallsKnown() const noexcept;
    [[nodiscard]] bool isCandidateForSplit() const;
    // The first non-manifold edge with exactly two members, these two too; null if there is none.
    [[nodiscard]] CEdge* findStartME(CTriangle*& pCT0, CTriangle*& pCT1) const;
    [[nodiscard]] u64 getTopmostCCD() const;

    double partnerCertainty = 0.0;
    std::set<CPatch*, ByIdPatch> sPartners; // met across non-manifold edges
    std::vector<CEdge*> vPatchBoundaryCE;
    bool bAlive = true;
    Calc* pCalc;
    int numInnerVtx = -1;

    // See setWalls(); good while the mesh makes no triangle and all members live.
    std::vector<CEdge*> vWalls;
    bool bWallsKnown = false;
    std::size_t numAllT = 0;
    std::size_t numAliveT = 0;
};

inline bool PatchMembers::isMember(const CTriangle* pCT) const noexcept
{
    return pCT->getPatch() == this;
}

// Unit normal on the lattice positions of the corners; (0,0,0) if these stand on one line.
[[nodiscard]] Vector3 getLatticeNormal(const Calc& calc, const CTriangle& ct);

// Counts how often each edge occurs among the triangles and appends, by creation, those of count num, if
// above 0. -1: odd counts; -2: even counts; -3: counts above 2; -4: even counts above 2; anything else is fatal.
void getDegNEdges(int num, const std::vector<CTriangle*>& vT, std::vector<CEdge*>& vCE);

} // namespace TARN_ZEF

#endif
