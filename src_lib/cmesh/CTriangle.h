#ifndef ZEF_CTRIANGLE_H
#define ZEF_CTRIANGLE_H

#include "Point3.h"
#include "Vector3.h"
#include "cmesh/CTriangleCorners.h"
#include "core/definitions.h"

namespace TARN_ZEF
{
class CEdge;
class CMesh;
class CPatch;

// Which position of a corner to use.
enum VisType
{
    VT_COARSE = 0, // the cell's centre
    VT_REAL = 1    // the bundle's position
};

// A triangle of the combinatorial mesh, on three lattice corners. Edge i lies opposite corner i.
//
// Ownership:  lives in a pool of the mesh, never moves; kill() only marks it dead, so a stale pointer is
//             safe to ask isAlive() until the mesh ends or is cleared. Corners and edges of a dead triangle
//             stay readable.
// Invariant:  alive: three different corners, and it stands once in each of its edges and corner lists.
//             Dead: it stands in none.
class CTriangle : public CTriangleCorners
{
public:
    // number  creation number in the mesh
    CTriangle(CVertex* pV0, CVertex* pV1, CVertex* pV2, u64 generatingVCD_, int cfg_,
              unsigned int number_) noexcept;

    // --- Edges ---
    [[nodiscard]] CEdge* getCEdge(int ici) const // the edge opposite corner ici
    {
        ASSEX(ici >= 0 && ici < 3);
        return aEdge[ici];
    }
    // The corner at which the triangle's way along the edge begins; it must be one of its edges.
    [[nodiscard]] const CVertex* getStart(const CEdge* pCE) const noexcept
    {
        // Without a branch, since it could not be foretold.
        return aVertex[(pCE == aEdge[0] ? 1 : 0) + (pCE == aEdge[1] ? 2 : 0)];
    }
    [[nodiscard]] bool hasBorderEdge() const;
    [[nodiscard]] bool allEdgesManifold() const; // all three edges have exactly 2 triangles

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
    void print() const;

    bool bVisited = false; // scratch mark of floods; whoever floods clears it first

private:
    friend class CMeshRecords;
    friend class ExtractionRenewal;

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
