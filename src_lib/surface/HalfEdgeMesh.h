#ifndef ZEF_HALFEDGEMESH_H
#define ZEF_HALFEDGEMESH_H

#include "Point3.h"

#include "core/cancel.h"

#include <cstdint>
#include <string>
#include <vector>

namespace TARN_ZEF
{
// An oriented, edge-manifold triangle mesh that changes under local operations: the ground of everything
// that remeshes, simplifies or completes a surface. The page of the room "surface": flat data comes in and
// goes out; the room knows no lattice, no CMesh and no RMesh.
//
// Naming:     triangle t has the half-edges 4t, 4t + 1, 4t + 2, counter-clockwise seen from outside. A
//             half-edge h starts in corner from(h) and belongs to the triangle triangleOf(h). Its partner runs
//             the other way in the neighbouring triangle; NONE on a border.
// Ownership:  owns all. Numbers of dead triangles and vertices are used again.
// Invariant:  partners are mutual and share feature bytes; each alive vertex has one fan of triangles, and its
//             outgoing half-edge is the border one of a border vertex, so that one walk counter-clockwise sees
//             all. getFault() proves it.
// Validity:   numbers stay valid through every operation on other places; compact() renumbers.
// Threads:    none; const queries may run at the same time.
// Cost:       36 bytes a triangle, 29 a vertex. flip() and split() are constant, collapse() a walk round the
//             vertex.
class HalfEdgeMesh
{
public:
    static constexpr int NONE = -1;

    // What may happen to a vertex: all, only along its chain of features, nothing. The mesh itself only
    // keeps it.
    enum class Kind : std::uint8_t
    {
        FREE,
        CHAIN,
        FIXED
    };

    // --- Making ---
    // Replaces the mesh. vCorners: three consecutive indices into vPoints are one triangle. A vertex where
    // several fans meet is parted into one for each fan; vOrigin tells the index in vPoints of each vertex, and
    // points without triangles are left out. False, and an empty mesh, if a triangle has equal corners or two
    // triangles run along an edge in the same direction.
    [[nodiscard]] bool build(const std::vector<Point3>& vPoints, const std::vector<int>& vCorners,
                             std::vector<int>* pOrigin = nullptr);
    void clear();

    // --- Walking ---
    [[nodiscard]] static int triangleOf(int h) noexcept { return h >> 2; }
    [[nodiscard]] static int next(int h) noexcept { return (h & 3) == 2 ? h - 2 : h + 1; }
    [[nodiscard]] static int prev(int h) noexcept { return (h & 3) == 0 ? h + 2 : h - 1; }
    [[nodiscard]] int from(int h) const noexcept { return vCorner[h]; }
    [[nodiscard]] int to(int h) const noexcept { return vCorner[next(h)]; }
    [[nodiscard]] int apex(int h) const noexcept { return vCorner[prev(h)]; } // the corner opposite
    [[nodiscard]] int partner(int h) const noexcept { return vPartner[h]; }
    [[nodiscard]] bool isBorder(int h) const noexcept { return vPartner[h] == NONE; }
    // Each edge has one half-edge that stands for it: the only one, or the one of the lower number.
    [[nodiscard]] bool isEdge(int h) const noexcept { return vPartner[h] == NONE || h < vPartner[h]; }
    [[nodiscard]] bool isBorderVertex(int v) const noexcept { return isBorder(vOutgoing[v]); }
    [[nodiscard]] int outgoing(int v) const noexcept { return vOutgoing[v]; } // NONE: dead
    // The next half-edge out of from(h), counter-clockwise or clockwise; NONE beyond a border.
    [[nodiscard]] int rotateLeft(int h) const noexcept { return vPartner[prev(h)]; }
    [[nodiscard]] int rotateRight(int h) const noexcept
    {
        return vPartner[h] == NONE ? NONE : next(vPartner[h]);
    }
    // Calls f(h) for each half-edge out of v, counter-clockwise. f must not change the mesh.
    template <typename F>
    void forEachOutgoing(int v, F f) const
    {
        const int first = vOutgoing[v];
        int h = first;
        do
        {
            f(h);
            h = rotateLeft(h);
        } while (h != first && h != NONE);
    }
    // Calls f(u) for each neighbour of v, counter-clockwise.
    template <typename F>
    void forEachNeighbour(int v, F f) const
    {
        int last = NONE;
        forEachOutgoing(v,
                        [&](int h)
                        {
                            f(to(h));
                            last = h;
                        });
        if (isBorder(prev(last)))
            f(apex(last));
    }
    // Calls f(h) for every half-edge that stands for its edge.
    template <typename F>
    void forEachEdge(F f) const
    {
        CancelStride cancel;
        for (int t = 0; t < endTriangles(); ++t)
        {
            cancel.step();
            if (isAlive(t))
                for (int h = 4 * t; h < 4 * t + 3; ++h)
                    if (isEdge(h))
                        f(h);
        }
    }
    [[nodiscard]] int findHalfEdge(int a, int b) const; // from a to b; NONE if there is none
    [[nodiscard]] bool hasEdge(int a, int b) const;     // in either direction
    [[nodiscard]] int valence(int v) const;             // number of neighbours

    // --- Whole ---
    [[nodiscard]] int endTriangles() const noexcept { return static_cast<int>(vCorner.size() / 4); }
    [[nodiscard]] int endVertices() const noexcept { return static_cast<int>(vPoint.size()); }
    [[nodiscard]] bool isAlive(int t) const noexcept { return vCorner[4 * t] != NONE; }
    [[nodiscard]] bool isAliveVertex(int v) const noexcept { return vOutgoing[v] != NONE; }
    [[nodiscard]] int getNumTriangles() const noexcept { return numTriangles; }
    [[nodiscard]] int getNumVertices() const noexcept { return numVertices; }
    // What is alive, in order of the numbers; both are replaced.
    void getFlat(std::vector<Point3>& vPoints, std::vector<int>& vCorners) const;
    // The first broken invariant in words; empty if all hold.
    [[nodiscard]] std::string getFault() const;

    // --- Marks ---
    [[nodiscard]] const Point3& point(int v) const noexcept { return vPoint[v]; }
    void setPoint(int v, const Point3& p) noexcept { vPoint[v] = p; }
    [[nodiscard]] Kind kind(int v) const noexcept { return vKind[v]; }
    void setKind(int v, Kind kind) noexcept { vKind[v] = kind; }
    // The caller's byte of an edge: 0 is a plain one. Operations hand it on along the edge.
    [[nodiscard]] std::uint8_t feature(int h) const noexcept { return vFeature[h]; }
    void setFeature(int h, std::uint8_t value) noexcept;
    // The caller's number of a triangle, such as its patch; both halves of a split triangle keep it.
    [[nodiscard]] int label(int t) const noexcept { return vCorner[4 * t + 3]; }
    void setLabel(int t, int value) noexcept { vCorner[4 * t + 3] = value; }

    // --- Changing ---
    // Replaces the edge by the other diagonal of its two triangles; h then runs from the old apex of its partner
    // to its own old apex. Refused on a border, on a feature and where that diagonal exists already.
    [[nodiscard]] bool mayFlip(int h) const;
    void flip(int h);
    // Puts a vertex on an edge and returns it. h keeps its start, and ends in the new vertex; the new piece of
    // the edge is the half-edge that outgoing() of it names.
    int split(int h, const Point3& p);
    // For one split to come; what else would move large arrays in the midst of it is done here, where a cancelled call
    // may end.
    void makeRoomToSplit();
    // Lets from(h) vanish into to(h). Allowed where the surface keeps its topology: the ends share no other
    // neighbours than the apexes, no inner edge joins two borders, and no triangle folds onto another.
    [[nodiscard]] bool mayCollapse(int h) const;
    void collapse(int h);
    void killTriangle(int t); // opens a border; a vertex keeps one fan only if the caller sees to it
    int addTriangle(int a, int b, int c); // unlinked; link() its half-edges, then refreshVertex() its corners
    int addVertex(const Point3& p);
    void link(int h, int g) noexcept; // makes two half-edges partners; they must run opposite ways
    // Finds the outgoing half-edge of a vertex again, from any one of its half-edges.
    void refreshVertex(int v, int anyOutgoing) noexcept;

    // Renumbers: what is alive moves together. Vertices get numbers in the order of their first triangle.
    // pOld tells the old number of each vertex.
    void compact(std::vector<int>* pOld = nullptr);

private:
    // A half-edge at the lower end of its edge.
    struct Spoke
    {
        int end; // the other one
        int h;
    };

    [[nodiscard]] bool linkPartners(const std::vector<int>& vCorners);
    [[nodiscard]] bool linkSpokes(Spoke* pBegin, Spoke* pEnd);
    void partFans(const std::vector<Point3>& vPoints, std::vector<int>* pOrigin);
    void takeOver(int h, int g) noexcept; // h gets partner and feature of g
    void mergeSides(int h, int b);
    void freeTriangle(int t);
    [[nodiscard]] std::string getFaultAt(int h) const;
    [[nodiscard]] std::string getVertexFault(int v, int degree) const;

    std::vector<int> vCorner;           // 4t + k: start of half-edge k; 4t + 3: label; NONE first: dead
    std::vector<int> vPartner;          // 4t + k; 4t of a dead one: next dead one
    std::vector<std::uint8_t> vFeature; // 4t + k
    std::vector<Point3> vPoint;         // a vertex each
    std::vector<int> vOutgoing;         // a vertex each; NONE: dead
    std::vector<Kind> vKind;            // a vertex each
    std::vector<int> vFreeVertices;     // dead ones, the last is used first
    int firstFree = NONE;               // head of the list of dead triangles
    int numTriangles = 0;
    int numVertices = 0;
};

} // namespace TARN_ZEF

#endif
