#ifndef ZEF_CTRIANGLE_H
#define ZEF_CTRIANGLE_H

#include "Point3.h"
#include "Vector3.h"
#include "cmesh/CVertex.h"
#include "core/definitions.h"

#include <iosfwd>

namespace TARN_ZEF
{
class CEdge;
class CMesh;
class CPatch;

// Result of getHEDirection2: how a triangle runs along a pair of corners.
enum HalfEdgeDirection
{
    HE_NONE = 0,
    HE_SAME = 1,
    HE_OPPOSITE = 2
};

// Which position of a corner to use.
enum VisType
{
    VT_COARSE = 0, // the cell's centre
    VT_REAL = 1    // the bundle's position
};

// A triangle of the combinatorial mesh, on three lattice corners. Their cyclic order is its orientation.
//
// ICI is the index 0, 1 or 2 of a corner in its triangle; edge i lies opposite corner i.
//
// Ownership:  lives in a pool of the mesh, never moves; kill() only marks it dead, so a stale pointer is
//             safe to ask isAlive() until the mesh ends or is cleared. Corners and edges of a dead triangle
//             stay readable.
// Invariant:  alive: three different corners, and it stands once in each of its edges and corner lists.
//             Dead: it stands in none.
class CTriangle
{
public:
    // number  creation number in the mesh
    CTriangle(CVertex* pV0, CVertex* pV1, CVertex* pV2, u64 generatingVCD_, int cfg_,
              unsigned int number_) noexcept;

    // --- Corners ---
    [[nodiscard]] u64 getC0() const noexcept { return aVertex[0]->ccd; }
    [[nodiscard]] u64 getC1() const noexcept { return aVertex[1]->ccd; }
    [[nodiscard]] u64 getC2() const noexcept { return aVertex[2]->ccd; }
    [[nodiscard]] u64 getCorner(int ici) const // outside 0 to 2 is fatal
    {
        ASSEX(ici >= 0 && ici < 3);
        return aVertex[ici]->ccd;
    }
    [[nodiscard]] bool hasCorner(u64 ccd) const noexcept
    {
        return getC0() == ccd || getC1() == ccd || getC2() == ccd;
    }
    [[nodiscard]] int getICI(u64 ccd) const;     // not a corner is fatal
    [[nodiscard]] int getICI(u64 a, u64 b) const // the corner that is neither; none is fatal
    {
        for (int i = 0; i < 3; ++i)
            if (aVertex[i]->ccd != a && aVertex[i]->ccd != b)
                return i;
        ASSEX_TEXT(false, "false");
    }
    [[nodiscard]] u64 getThirdCCD(u64 a, u64 b) const { return aVertex[getICI(a, b)]->ccd; }
    // The other two corners; at the middle corner against the cycle, on purpose: c0: (c1,c2), c1: (c0,c2),
    // c2: (c1,c0). No corner is fatal.
    void getOtherCCDs(u64 ccd, u64& a, u64& b) const;
    [[nodiscard]] static constexpr int getNext(int ici) noexcept { return ici == 2 ? 0 : ici + 1; }
    [[nodiscard]] static constexpr int getPrev(int ici) noexcept { return ici == 0 ? 2 : ici - 1; }

    // --- Edges ---
    [[nodiscard]] CEdge* getCEdge(int ici) const // the edge opposite corner ici
    {
        ASSEX(ici >= 0 && ici < 3);
        return aEdge[ici];
    }
    void getEdgeCCDs(int ici, u64& a, u64& b) const; // its ends in the direction of the triangle
    // The corner at which the triangle's way along the edge begins; it must be one of its edges.
    [[nodiscard]] const CVertex* getStart(const CEdge* pCE) const noexcept
    {
        // Without a branch, since it could not be foretold.
        return aVertex[(pCE == aEdge[0] ? 1 : 0) + (pCE == aEdge[1] ? 2 : 0)];
    }
    [[nodiscard]] bool hasBorderEdge() const;
    [[nodiscard]] bool allEdgesManifold() const; // all three edges have exactly 2 triangles

    // --- Orientation ---
    [[nodiscard]] HalfEdgeDirection getHEDirection2(u64 a, u64 b) const noexcept;
    // Whether other, which shares an edge, runs along it in the same direction. No common edge is fatal.
    [[nodiscard]] bool needFlip(const CTriangle* pOther) const;
    void flipOrientation() noexcept; // swaps c1 and c2; corner c0 stays

    // --- Geometry, on bundle positions ---
    [[nodiscard]] Point3* getVtx(const CMesh* pMesh, int ici) const; // position of a corner
    // Two equal corners, a null vector from c0, or a cross product of exactly zero length.
    [[nodiscard]] bool isDegenerate(const CMesh* pMesh) const;
    // ICI opposite the longest edge; ties go first to 2, then to 0, then to 1. NaN is fatal.
    [[nodiscard]] int getLargestEdgeICI(const CMesh* pMesh) const;
    [[nodiscard]] double getArea(const CMesh* pMesh) const;
    void getNNV(Vector3& nnv, const CMesh* pMesh, bool& bOK) const; // unit normal; bOK false: degenerate
    // Both unit normals as if this neighbour ran the same way; false if one is missing.
    [[nodiscard]] bool getNNVs(const CTriangle* pNeigT, const CMesh* pMesh, Vector3& own,
                               Vector3& neig) const;
    // Unit normal from the corners alone: the cross product of the signs of their differences.
    void getCoarseNormal(Vector3& nnv) const;
    // Degrees by which the normal turns if corner ici moves to pos. 360.0 if the moved triangle is
    // degenerate, -1.0 if only the present one is.
    [[nodiscard]] double getDevAngle(const CMesh* pMesh, int ici, const Point3& pos) const;
    [[nodiscard]] Point3 getCentroid(const CMesh* pMesh, VisType vt) const;

    // --- Life, patch, marks ---
    [[nodiscard]] bool isAlive() const noexcept { return bAlive; }
    void kill(CMesh* pMesh); // killing a dead triangle is fatal
    [[nodiscard]] CPatch* getPatch() const noexcept { return pPatch; }
    void setPatch(CPatch* pPatch_) noexcept { pPatch = pPatch_; }
    // The cell that produced the triangle and its cube configuration; 0 for triangles made by repair.
    [[nodiscard]] u64 getGeneratingVCD() const noexcept { return generatingVCD; }
    [[nodiscard]] int getCfg() const noexcept { return cfg; }
    // Creation number: the order of triangles wherever an order of pointers would be visible.
    [[nodiscard]] unsigned int getNumber() const noexcept { return number; }
    void print(std::ostream& os) const;

    bool bVisited = false; // scratch mark of floods; whoever floods clears it first

private:
    friend class CMesh;
    friend class ExtractionRenewal;

    [[nodiscard]] int indexOf(const CVertex* pVertex) const noexcept
    {
        return aVertex[0] == pVertex ? 0 : aVertex[1] == pVertex ? 1 : 2;
    }

    CVertex* aVertex[3];
    CEdge* aEdge[3] = {nullptr, nullptr, nullptr};        // aEdge[i] opposite corner i
    CTriangle* aNextInc[3] = {nullptr, nullptr, nullptr}; // next triangle at corner i
    u64 generatingVCD;
    CPatch* pPatch = nullptr;
    unsigned int number;
    short cfg;
    bool bAlive : 1 = true;
    bool bTurned : 1 = false; // flipOrientation() was called an odd number of times
};

// Orders triangles by creation.
struct ByCreationCT
{
    bool operator()(const CTriangle* pA, const CTriangle* pB) const noexcept
    {
        return pA->getNumber() < pB->getNumber();
    }
};

} // namespace TARN_ZEF

#endif
