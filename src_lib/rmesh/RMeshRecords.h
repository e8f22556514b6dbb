#ifndef ZEF_RMESHRECORDS_H
#define ZEF_RMESHRECORDS_H

#include "core/definitions.h"
#include "geometry/PointTable.h"
#include "rmesh/REdge.h"
#include "rmesh/RTriangle.h"
#include "rmesh/RVertex.h"
#include "tarn_tools/SimplePool.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
// What an RMesh consists of: vertices, edges and triangles, how they hang together, and how to find them.
//
// Triangles and edges are never freed while the mesh lives. A triangle is made, later marked dead and left
// where it stands; an edge without triangles has degree 0. So a pointer to either stays valid through every
// operation, and an algorithm may keep stale pointers in a queue and test them again later.
//
// Ownership:  owns vertices, triangles and edges. Every Point3* it takes must be its own.
// Invariant:  an alive triangle has three different corners and stands once in the lists of its corners and
//             edges; a dead one stands in none. A vertex belongs to the visible mesh only if a triangle uses
//             it.
// Order:      by creation number: of vertices (in a fresh mesh: by cell), edges and triangles.
// Threads:    none. Const queries may run in parallel while nothing changes.
// Cost:       createT, kill and getRE are a few list steps at a vertex.
class RMeshRecords
{
public:
    RMeshRecords(const RMeshRecords&) = delete;
    RMeshRecords& operator=(const RMeshRecords&) = delete;

    // --- Making ---
    // Makes a triangle and the edges that are missing. Equal corners are fatal.
    RTriangle* createT(Point3* c0, Point3* c1, Point3* c2);
    // The vertex at these coordinates, made if there is none. One that exists gives null with bFailIfExists.
    [[nodiscard]] Point3* getVertexAt(const Point3& pnt, bool bFailIfExists);
    [[nodiscard]] Point3* getVertexAt(double x, double y, double z, bool bFailIfExists);
    [[nodiscard]] bool hasVertexAt(const Point3& pnt) const;
    // Moves a vertex to coordinates that differ and that no vertex has. Normals kept by triangles stay.
    void updateVertex(Point3* pVtx, const Point3& newPoint);
    void unregisterTriangle(RTriangle* pRT); // from the lists of its corners; it must stand in all three

    // --- Looking up ---
    void getIncidentT(const Point3* pVtx, std::vector<RTriangle*>& vIncT) const; // appends
    // Calls f(pRT, i) for each triangle at the vertex, its corner i. f must not change the mesh.
    template <typename F>
    void forEachIncidentT(const Point3* pVtx, F f) const
    {
        for (RTriangle* pRT = RVertex::of(pVtx)->pFirstT; pRT != nullptr;)
        {
            const int i = pRT->indexOf(pVtx);
            f(pRT, i);
            pRT = pRT->aNextInc[i];
        }
    }
    // Appends the edges of the triangles at the vertex that touch it, by creation, each once.
    void getIncidentRE(const Point3* pVtx, std::vector<REdge*>& vIncRE) const;
    void getRingRE(const Point3* pVtx, std::vector<REdge*>& vRing) const; // appends the opposite edges
    // Appends the other corners of the triangles at the vertex, by creation, each once.
    void getRingVtx(const Point3* pVtx, std::vector<Point3*>& vRing) const;
    // Brings the records of the vertices, and of the triangles and corners around them, near the processor. For
    // a caller that knows where it will work next: walks over lists of different vertices overlap in time.
    void fetchFans(const std::vector<const Point3*>& vVtx, std::vector<const RTriangle*>& vBuffer) const;
    // The same for edges, with the triangles at them, their corners and the neighbours across their edges.
    static void fetchQuads(const std::vector<const REdge*>& vRE);
    [[nodiscard]] REdge* getRE(const Point3* pA, const Point3* pB) const noexcept; // null if absent
    [[nodiscard]] bool hasEdge(const Point3* pA, const Point3* pB) const noexcept; // with degree at least 1
    void getAdjacentT(const Point3* pA, const Point3* pB, std::vector<RTriangle*>& vRT) const;
    // Appends the edges of degree deg >= 0 that can be found by their ends, ordered by the ends. -1: degree
    // above 2; -99: degree above 0; any other negative value is fatal.
    void getDegN(int deg, std::vector<REdge*>& vRE) const;

    // --- The whole mesh ---
    void getPoints(std::vector<Point3*>& vP) const; // must come in empty: used vertices, by creation
    void getTriangles(std::vector<Point3*>& vTriCorners) const; // appends three corners a triangle
    void getAliveT(std::vector<RTriangle*>& vRT) const;         // appends, by creation
    [[nodiscard]] const std::vector<RTriangle*>& getAllT() const noexcept { return vAllRT; } // dead ones too
    [[nodiscard]] const std::vector<REdge*>& getAllRE() const noexcept { return vAllRE; }    // degree 0 too
    void getAllRE(std::vector<REdge*>& vRE) const { vRE = vAllRE; }
    [[nodiscard]] double getCellSize() const noexcept { return cellSize; }
    [[nodiscard]] std::size_t getNumT() const noexcept { return numAliveT; }
    [[nodiscard]] std::size_t getNumRE() const noexcept { return vAllRE.size(); }
    [[nodiscard]] std::size_t getNumVertices() const noexcept { return numVertices; } // unused ones too

    // --- Moving many (RMeshMove.cpp) ---
    // Moves each vertex in turn, unless a vertex stands at its new point by then. Each vertex at most once.
    // Normals kept by triangles stay.
    void moveVertices(const std::vector<std::pair<Point3*, Point3>>& vOldVtx2NewPnt);
    // Puts every vertex, unused ones too, where f says of its place. Normals kept by triangles stay.
    template <typename F>
    void placeVertices(F f)
    {
        vtxPool.forEach([&f](RVertex* pVertex) { pVertex->point = f(pVertex->point); });
        dropPointTable();
    }
    // Calls f(const Point3&) for every vertex, unused ones too.
    template <typename F>
    void forEachVertex(F f) const
    {
        vtxPool.forEach([&f](const RVertex* pVertex) { f(pVertex->point); });
    }

protected:
    explicit RMeshRecords(double cellSize_);
    ~RMeshRecords();

    // How many vertices and triangles will come; the blocks of vStorage may be taken.
    void initPools(std::size_t numPoints, std::size_t numTriangles, std::vector<StorageBlock>& vStorage);
    Point3* makeVertex(const Point3& pnt);
    // Puts pTrg in the place of pSrc. They must have no edge in use in common.
    void replaceVertex(Point3* pSrc, Point3* pTrg);

private:
    friend class RTriangle;

    void ensurePointTable() const;
    void dropPointTable() noexcept; // to be made anew at its next use
    REdge* getOrMakeEdge(Point3* pA, Point3* pB);
    void linkEdge(REdge* pRE) noexcept;   // enters it under its lower end
    void unlinkEdge(REdge* pRE) noexcept; // it must be entered
    void appendToVertex(RTriangle* pRT, int i) noexcept;
    void moveEdge(REdge* pRE, Point3* pSrc, Point3* pTrg);
    void mergeEdge(REdge* pRE, REdge* pExistingRE);
    [[nodiscard]] bool
    areAllPlacesDifferent(const std::vector<std::pair<Point3*, Point3>>& vOldVtx2NewPnt) const;

    double cellSize;
    SimplePool<RVertex> vtxPool;
    SimplePool<RTriangle> triPool;
    SimplePool<REdge> edgePool;
    std::size_t numVertices = 0;
    std::size_t numAliveT = 0;
    std::vector<RTriangle*> vAllRT; // in order of creation
    std::vector<REdge*> vAllRE;     // in order of creation
    // All vertices by coordinates; of equal ones the first. Made at first use: most meshes never need it.
    mutable PointTable pointTable;
    mutable bool bPointTable = false;
};

} // namespace TARN_ZEF

#endif
