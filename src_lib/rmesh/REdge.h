#ifndef ZEF_REDGE_H
#define ZEF_REDGE_H

#include "Point3.h"
#include "cmesh/EdgeOfTriangles.h"
#include "cmesh/edgeDegree.h"
#include "rmesh/RTriangle.h"
#include "tarn_tools/SmallVec.h"

#include <vector>

namespace TARN_ZEF
{
class RMesh;

// An edge of the refined mesh: two vertices and any number of triangles.
//
// An edge out of use keeps its place in the mesh, so that a later flip back revives the same object.
//
// Ownership:  lives in a pool of the mesh, never moves, dies with the mesh.
// Invariant:  p0 was made before p1. vRT holds alive triangles only, each once, in no particular order.
class REdge : public EdgeOfTriangles<REdge, RTriangle>
{
public:
    using TriangleList = SmallVec<RTriangle*, 2>;

    // number  creation number in the mesh. The ends must come in order of creation.
    REdge(Point3* p0_, Point3* p1_, unsigned int number_);

    // --- Ends ---
    [[nodiscard]] Point3* getVtx0() const noexcept { return p0; }
    [[nodiscard]] Point3* getVtx1() const noexcept { return p1; }
    [[nodiscard]] Point3* getVertex(int i) const;                  // 0 or 1, anything else is fatal
    [[nodiscard]] Point3* getOtherPoint(const Point3* pVtx) const; // anything but an end is fatal
    [[nodiscard]] bool has(const Point3* pVtx) const noexcept { return p0 == pVtx || p1 == pVtx; }
    [[nodiscard]] double getSqLength() const noexcept;

    // --- Triangles ---
    [[nodiscard]] const TriangleList& getTriangles() const noexcept { return vRT; }
    [[nodiscard]] bool isAlive() const noexcept { return !vRT.empty(); } // no orphan
    [[nodiscard]] bool getTwoT(RTriangle*& pRT0, RTriangle*& pRT1, bool bExactlyTwo) const
    {
        return getTwoTriangles(pRT0, pRT1, bExactlyTwo);
    }
    void checkOut(RTriangle* pRT); // removes it; not there is fatal

    // --- Edits ---
    // Replaces the diagonal of two triangles, with the orientation of pRT0, and returns the new edge. Null
    // triangles are found if the degree is exactly 2. Null, and nothing changed, if a triangle is dead, the
    // new diagonal exists, or a new triangle would be flat.
    REdge* tryFlipEdge(RMesh* pMesh, RTriangle* pRT0, RTriangle* pRT1);
    // Replaces each triangle by two that meet at pNew.
    void split(Point3* pNew, RMesh* pMesh);
    // Removes the almost flat cap pKillRT, whose corner ici lies on this edge, by connecting that corner to
    // the opposite corners of the other triangles. The new triangles are appended to vNewT. False, and
    // nothing changed, if one would turn by more than 90 degrees, has no normal, or exists.
    [[nodiscard]] bool trySplitNeigsKillT(RMesh* pMesh, RTriangle* pKillRT, int ici,
                                          std::vector<RTriangle*>& vNewT);

    // Creation number: the order of edges wherever an order of pointers would be visible.
    [[nodiscard]] unsigned int getNumber() const noexcept { return number; }
    // Lexicographic by the creation of the ends.
    [[nodiscard]] bool operator<(const REdge& other) const noexcept;

private:
    friend class RMeshRecords;

    Point3* p0;
    Point3* p1;
    TriangleList vRT;
    REdge* pNextAtVtx0 = nullptr; // list of the mesh: edges found under the same lower end
    unsigned int number;
};

// Orders edges by creation.
struct ByCreationRE
{
    bool operator()(const REdge* pA, const REdge* pB) const noexcept
    {
        return pA->getNumber() < pB->getNumber();
    }
};

// Whether the angle at a between b - a and c - a is below 0.01 or above 179.99 degrees, or a side has no
// length. Only the corner a is looked at.
[[nodiscard]] bool isFlat(const Point3* a, const Point3* b, const Point3* c);

} // namespace TARN_ZEF

#endif
