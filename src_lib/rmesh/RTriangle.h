#ifndef ZEF_RTRIANGLE_H
#define ZEF_RTRIANGLE_H

#include "Point3.h"
#include "Vector3.h"
#include "cmesh/CornerCycle.h"
#include "core/definitions.h"

#include <vector>

namespace TARN_ZEF
{
class REdge;
class RMesh;
class RPatch;

// A triangle of the refined mesh. Its corners come in the order of its orientation; ICI is the index 0, 1
// or 2 of a corner, and edge i lies opposite corner i.
//
// The unit normal is computed at first use and kept. It is dropped when a corner pointer changes and not
// when a vertex moves, so after smoothing it is out of date until the next change of a corner.
//
// Ownership:  lives in a pool of the mesh, never moves; kill() only marks it dead, so a stale pointer is
//             safe to ask isAlive(). Corners and edges of a dead triangle stay readable.
// Threads:    getNNV() fills the kept normal: fill it for all triangles before they are read in parallel.
class RTriangle : public CornerCycle
{
public:
    // number  creation number in the mesh
    RTriangle(Point3* c0, Point3* c1, Point3* c2, unsigned int number_) noexcept
        : aCorner{c0, c1, c2}
        , number(number_)
    {
    }

    // --- Corners ---
    [[nodiscard]] Point3* getCorner(int i) const // outside 0 to 2 is fatal
    {
        ASSEX_TEXT(i >= 0 && i < 3, "false");
        return aCorner[i];
    }
    [[nodiscard]] int getICI(const Point3* pVtx) const;                // not a corner is fatal
    [[nodiscard]] int getICI(const Point3* pA, const Point3* pB) const // the corner that is neither
    {
        for (int i = 0; i < 3; ++i)
            if (aCorner[i] != pA && aCorner[i] != pB)
                return i;
        ASSEX_TEXT(false, "false");
    }
    [[nodiscard]] Point3* getThirdPoint(const Point3* pA, const Point3* pB) const
    {
        return aCorner[getICI(pA, pB)];
    }
    [[nodiscard]] bool has(const Point3* pVtx) const noexcept
    {
        return aCorner[0] == pVtx || aCorner[1] == pVtx || aCorner[2] == pVtx;
    }
    // At least two corners are among the two.
    [[nodiscard]] bool hasEdge(const Point3* pA, const Point3* pB) const noexcept;
    void setCorner(int i, Point3* pVtx) noexcept // drops the normal
    {
        aCorner[i] = pVtx;
        clearNNV();
    }

    // --- Edges and neighbours ---
    [[nodiscard]] REdge* getRE(int i) const // the edge opposite corner i
    {
        ASSEX_TEXT(i >= 0 && i < 3, "false");
        return aRE[i];
    }
    void getREs(std::vector<REdge*>& vOut) const;              // appends the edges 0-1, 0-2, 1-2
    void getNeigs(int i, std::vector<RTriangle*>& vOut) const; // appends the others at edge i
    [[nodiscard]] bool hasBorderEdge() const;

    // --- Orientation ---
    // Whether pOther, which shares an edge, runs along it in the same direction. No common edge is fatal.
    [[nodiscard]] bool needFlip(const RTriangle* pOther) const;
    void flipOrientation() noexcept; // swaps corners 0 and 1 and negates the normal

    // --- Geometry ---
    // Unit normal; the value (0,0,0) is that of a triangle without one. bOK is true whenever a normal is
    // kept from before.
    const Vector3& getNNV(bool& bOK);
    void clearNNV() noexcept { nnv.set(0.0, 0.0, 0.0); }
    // The corner opposite the longest edge; ties go first to 2, then to 0.
    [[nodiscard]] int getLargestEdgeICI() const noexcept;
    [[nodiscard]] bool isCombDegenerate() const noexcept; // two corners are the same vertex
    // A null vector from corner 0, or a cross product of exactly zero length.
    [[nodiscard]] bool isZeroArea() const noexcept;
    [[nodiscard]] double getArea() const;
    // Degrees by which the normal turns if corner ici moves to *pNew. 360.0 if the present triangle has no
    // normal, -1.0 if only the moved one has none. With bSkipIfOnCorner, 0.0 if *pNew equals a corner.
    [[nodiscard]] double getDevAngle(int ici, const Point3* pNew, bool bSkipIfOnCorner) const;

    // --- Life, patch, marks ---
    [[nodiscard]] bool isAlive() const noexcept { return bAlive; }
    void kill(RMesh* pMesh); // killing a dead triangle is fatal
    [[nodiscard]] RPatch* getPatch() const noexcept { return pRP; }
    void setPatch(RPatch* pRP_) noexcept { pRP = pRP_; }
    // Creation number: the order of triangles wherever an order of pointers would be visible.
    [[nodiscard]] unsigned int getNumber() const noexcept { return number; }

    bool bVisited = false; // traversal mark of the patch builders

private:
    friend class RMeshRecords;

    [[nodiscard]] int indexOf(const Point3* pVtx) const noexcept
    {
        return aCorner[0] == pVtx ? 0 : aCorner[1] == pVtx ? 1 : 2;
    }

    // Walks around vertices read these: side by side, they mostly come with one or two cache lines.
    Point3* aCorner[3];
    RTriangle* aNextInc[3] = {nullptr, nullptr, nullptr}; // next triangle at corner i
    REdge* aRE[3] = {nullptr, nullptr, nullptr};          // aRE[i] opposite corner i

    Vector3 nnv;
    RPatch* pRP = nullptr;
    unsigned int number;
    bool bAlive = true;
};

// Orders triangles by creation.
struct ByCreationRT
{
    bool operator()(const RTriangle* pA, const RTriangle* pB) const noexcept
    {
        return pA->getNumber() < pB->getNumber();
    }
};

} // namespace TARN_ZEF

#endif
