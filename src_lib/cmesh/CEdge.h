#ifndef ZEF_CEDGE_H
#define ZEF_CEDGE_H

#include "Point3.h"
#include "cmesh/CTriangle.h"
#include "cmesh/EdgeOfTriangles.h"
#include "cmesh/TriangleUnion.h"
#include "cmesh/edgeDegree.h"
#include "core/definitions.h"
#include "tarn_tools/SmallVec.h"

#include <map>
#include <vector>

namespace TARN_ZEF
{
class CMesh;
class CPatch;

// Direction given to an edge by a chain.
enum EdgeDir : unsigned char
{
    ED_NONE = 0,
    ED_V0_TO_V1 = 1,
    ED_V1_TO_V0 = 2
};

// An edge of the combinatorial mesh: two corners and any number of triangles.
//
// Ownership:  lives in a pool of the mesh, never moves, dies with the mesh or its clearAll().
// Invariant:  v0 < v1. vCT holds alive triangles only, each once: a dying triangle leaves at once, and the
//             last entry takes its place, so the order is not stable.
class CEdge : public EdgeOfTriangles<CEdge, CTriangle>
{
public:
    using TriangleList = SmallVec<CTriangle*, 2>;

    // number  creation number in the mesh
    CEdge(u64 v0_, u64 v1_, unsigned int number_);

    // --- Ends ---
    const u64 v0;
    const u64 v1;
    [[nodiscard]] bool hasVCD(u64 vcd) const noexcept { return v0 == vcd || v1 == vcd; }
    [[nodiscard]] u64 getOtherVCD(u64 vcd) const; // anything but an end is fatal
    [[nodiscard]] Point3 getMidPoint(const CMesh* pMesh) const;

    // --- Triangles ---
    TriangleList vCT; // Rotx and Top reorder it
    [[nodiscard]] const TriangleList& getTriangles() const noexcept { return vCT; }
    [[nodiscard]] bool hasTriangle(u64 a, u64 b, u64 c) const; // in any order
    void checkOut(CTriangle* pCT);                             // removes it; not found is fatal

    // --- Triangles and patches ---
    [[nodiscard]] CTriangle* getAdjInPatch(const CTriangle* pCT) const;    // none is fatal
    [[nodiscard]] CTriangle* getUniqueInPatch(const CPatch* pPatch) const; // null unless exactly one
    [[nodiscard]] int getDegreeInPatch(const CPatch* pPatch) const;
    // Appends the patches of the triangles, in order of their ids, each once.
    void getPatches(std::vector<CPatch*>& vPatches) const;

    // --- Direction ---
    // Replacing a set direction by another set one is fatal.
    void setDirection(EdgeDir ed);
    [[nodiscard]] EdgeDir getDirection() const noexcept { return edgeDir; }
    [[nodiscard]] u64 getSource() const; // fatal without a direction, as getTarget()
    [[nodiscard]] u64 getTarget() const;

    // --- Edits and angles (CEdgeOperations.cpp) ---
    // Swaps the diagonal of two triangles on this edge and returns the new edge (pCT0's corner off this
    // edge, pCT1's). Null triangles are found if the degree is exactly 2. Keeps the orientation of pCT0; the
    // new triangles have generatingVCD and cfg 0. Null, with a message, if it can't be done. Neither
    // geometry nor an existing new diagonal is tested: that is the caller's.
    CEdge* flipEdge(CMesh* pMesh, CTriangle* pCT0, CTriangle* pCT1);
    // Removes pKillCT, a nearly flat triangle whose corner ici lies on this edge, by splitting its
    // neighbours across this edge at that corner. The new triangles are appended to vKids. False, and
    // nothing changed, if a neighbour would turn by more than 90 degrees or has no normal.
    [[nodiscard]] bool trySplitNeigsKillT(CMesh* pMesh, CTriangle* pKillCT, int ici,
                                          std::vector<CTriangle*>& vKids);
    // Angle in degrees between the two triangles: 180 flat, near 0 a fold. 362 with more than two triangles,
    // 363 with fewer, 364 without a normal: no sentinel passes a test for at most 180.
    [[nodiscard]] double getDihedralAngle(const std::map<u64, Point3>& mPos) const;
    [[nodiscard]] double getDihedralAngle(const CMesh* pMesh) const;

    // Creation number: the order of edges wherever an order of pointers would be visible.
    [[nodiscard]] unsigned int getNumber() const noexcept { return number; }
    // False if a renewed extraction does without it; until the next whole one it may still be asked that.
    [[nodiscard]] bool isInMesh() const noexcept { return number != TAKEN_OUT; }

private:
    friend class CMeshRecords;
    friend class ExtractionRenewal;

    static constexpr unsigned int TAKEN_OUT = ~0u; // number of one that the mesh holds no more

    CEdge* pNextAtV0 = nullptr; // list of the mesh: edges with the same lower end
    unsigned int number;
    EdgeDir edgeDir = ED_NONE;
};

// Orders edges by creation.
struct ByCreationCE
{
    bool operator()(const CEdge* pA, const CEdge* pB) const noexcept
    {
        return pA->getNumber() < pB->getNumber();
    }
};

// Map order: ascending in (v0, v1), whatever the order of creation.
struct ByMapOrderCE
{
    bool operator()(const CEdge* pA, const CEdge* pB) const noexcept
    {
        return pA->v0 != pB->v0 ? pA->v0 < pB->v0 : pA->v1 < pB->v1;
    }
};

// Whether the triangle, which stands on the edge, runs from v0 to v1 along it.
[[nodiscard]] inline bool runsUp(const CTriangle& ct, const CEdge& edge) noexcept
{
    return ct.getStart(&edge)->ccd == edge.v0;
}

// The two triangles of an edge of degree 2.
[[nodiscard]] inline Joint getJoint(const CEdge& edge) noexcept
{
    const CTriangle& ct0 = *edge.vCT[0];
    const CTriangle& ct1 = *edge.vCT[1];
    return {ct0.getNumber(), ct1.getNumber(), ct0.getStart(&edge) == ct1.getStart(&edge)};
}

} // namespace TARN_ZEF

#endif
