#ifndef ZEF_RMESH_H
#define ZEF_RMESH_H

#include "core/definitions.h"
#include "geometry/PointTable.h"
#include "rmesh/REdge.h"
#include "rmesh/RTriangle.h"
#include "rmesh/RVertex.h"
#include "tarn_tools/SimplePool.h"

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
class CMesh;
class RPatch;
class TriangleUnion;
class CollapseFans;
struct CollapseFan;
struct CollapseLimits;

// What an RMesh is built from: the corners and alive triangles of a CMesh as flat data. It lets the CMesh
// go before the RMesh takes its memory.
struct RMeshSource
{
    RMeshSource() = default; // to be filled by hand
    explicit RMeshSource(const CMesh& mesh);

    double cellSize = 1.0;               // of the lattice, in units of the points
    std::vector<Point3> vPoints;         // of all bundles, ascending by cell
    std::vector<std::uint32_t> vCorners; // indices into vPoints; three consecutive entries are one triangle
};

// The triangle mesh on real vertices: the end of the pipeline, and what the public Mesh holds.
//
// Triangles and edges are never freed while the mesh lives. A triangle is made, later marked dead and left
// where it stands; an edge without triangles has degree 0. So a pointer to either stays valid through every
// operation, and an algorithm may keep stale pointers in a queue and test them again later.
//
// Ownership:  owns vertices, triangles, edges and patches. Every Point3* it takes must be its own.
// Invariant:  an alive triangle has three different corners and stands once in the lists of its corners and
//             edges; a dead one stands in none. A vertex belongs to the visible mesh only if a triangle uses
//             it.
// Order:      by creation number: of vertices (in a fresh mesh: by cell), edges and triangles.
// Threads:    none. Const queries may run in parallel while nothing changes and all normals are filled
//             (fillNormals()).
// Cost:       createT, kill and getRE are a few list steps at a vertex.
class RMesh
{
public:
    explicit RMesh(const CMesh* pCMesh);
    // vStorage: memory that the mesh may use, whatever its size.
    explicit RMesh(const RMeshSource& source, std::vector<StorageBlock> vStorage = {});
    ~RMesh();
    RMesh(const RMesh&) = delete;
    RMesh& operator=(const RMesh&) = delete;

    // --- Making ---
    // Makes a triangle and the edges that are missing. Equal corners are fatal.
    RTriangle* createT(Point3* c0, Point3* c1, Point3* c2);
    // The vertex at these coordinates, made if there is none. One that exists gives null with bFailIfExists.
    [[nodiscard]] Point3* getVertexAt(const Point3& pnt, bool bFailIfExists);
    [[nodiscard]] Point3* getVertexAt(double x, double y, double z, bool bFailIfExists);
    [[nodiscard]] bool hasVertexAt(const Point3& pnt) const;
    // Moves a vertex to coordinates that differ and that no vertex has. Normals kept by triangles stay.
    void updateVertex(Point3* pVtx, const Point3& newPoint);
    // The edge collapse: pTrg takes the place of pSrc in all its triangles, the triangles on their common
    // edge die, and edges that fall together merge. It can leave two triangles on the same corners: test
    // before, or run killDuplicateT() after. pSrc stays as a vertex without triangles.
    void exchangeCorner(Point3* pSrc, Point3* pTrg);
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
    [[nodiscard]] bool hasDisjointRings(const Point3* pA, const Point3* pB) const; // rings share no edge
    // Brings the records of the vertices, and of the triangles and corners around them, near the processor. For
    // a caller that knows where it will work next: walks over lists of different vertices overlap in time.
    void fetchFans(const std::vector<const Point3*>& vVtx, std::vector<const RTriangle*>& vBuffer) const;
    [[nodiscard]] REdge* getRE(const Point3* pA, const Point3* pB) const noexcept; // null if absent
    [[nodiscard]] bool hasEdge(const Point3* pA, const Point3* pB) const noexcept; // with degree at least 1
    void getAdjacentT(const Point3* pA, const Point3* pB, std::vector<RTriangle*>& vRT) const;
    // Appends the edges of degree deg >= 0 that can be found by their ends, ordered by the ends. -1: degree
    // above 2; -99: degree above 0; any other negative value is fatal.
    void getDegN(int deg, std::vector<REdge*>& vRE) const;
    // Groups the triangles at a vertex into closed fans. If one is not closed: a warning and one group of
    // all.
    void getUmbrellas(const Point3* pCenter, std::vector<std::vector<RTriangle*>>& vUmbrellas) const;

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
    [[nodiscard]] bool isClosedManifold() const; // each edge in use has two triangles
    [[nodiscard]] double getArea() const;
    [[nodiscard]] double getAverageEdgeLength() const; // of the edges in use; -1.0 without any
    void fillNormals();                                // of all alive triangles, on the pool

    // --- Cleaning (RMeshCleanup.cpp) ---
    // Makes orientations agree across edges of degree 2, patch by patch. Returns the number of patches.
    int createPatchesOrient();
    // Patches of at most maxT triangles, without orienting; uses the visited marks as they stand.
    void createPatches(int maxT);
    [[nodiscard]] const std::vector<RPatch*>& getPatches() const noexcept { return vRP; }
    int killDuplicateT(); // the earliest of triangles on the same corners stays; returns the kills noted
    // Collapses an edge of each flat triangle, choosing the collapse that turns normals least. With
    // bKeepTopology a flat triangle stays if each collapse would pinch the surface. Returns how many stayed.
    std::size_t killDegenerate(bool bKeepTopology = false);
    // Moves a vertex towards the mean of its neighbours, at most a tenth of a cell, to break a coincidence.
    // True if it moved or was there already.
    bool relocateVertex(Point3* pVtx);

    // --- Flips (RMeshFlips.cpp) ---
    // Evaluates the edges of degree 2 on the pool. Out, empty before: pairs (improvement, edge) of those whose
    // improvement is at least 0.0 or minImprovement, or which the temperature accepts by chance, ascending,
    // equal ones by creation. Turns or moves what REdgeEnergy has to, on the calling thread.
    void getEdgeFlipCandidates_MT(const std::vector<REdge*>& vInRE, double minImprovement, double temperature,
                                  std::vector<std::pair<double, REdge*>>& vImpRE);

    // --- Reduction (RMeshReduce.cpp) ---
    // Collapses edges up to that squared length, the cheapest first, as long as no triangle turns by more than
    // maxDevAngle degrees. Returns the number of triangles that died with their edges.
    int reduce(double maxSqLen, double maxDevAngle, bool bKeepTopology = false);
    // Square root of the edge's length in cells, plus 100 times the mean turn in radians of the triangles
    // that stay; NaN if none could be measured, DBL_MAX if the collapse is forbidden. iSrc is the end that
    // vanishes.
    [[nodiscard]] double getCollapsePenalty(const REdge* pRE, int iSrc, const CollapseLimits& limits,
                                            CollapseFans& fans) const;
    // Its two parts. The penalty but for what stands at the other end: it stays good as long as the triangles at
    // the vanishing one do.
    [[nodiscard]] double getTurnPenalty(const REdge* pRE, int iSrc, const CollapseLimits& limits,
                                        CollapseFans& fans) const;
    // Whether the rings of both ends share an edge: it would get two triangles on the same corners. With
    // bKeepTopology also whether they share a vertex that is no corner of a vanishing triangle. Such a collapse
    // is forbidden in both directions.
    [[nodiscard]] bool doRingsMeet(const REdge* pRE, bool bKeepTopology, CollapseFans& fans) const;

    // --- Smoothing (RMeshMove.cpp) ---
    // Moves each vertex in turn, unless a vertex stands at its new point by then. Each vertex at most once.
    // Normals kept by triangles stay.
    void moveVertices(const std::vector<std::pair<Point3*, Point3>>& vOldVtx2NewPnt);

    // --- Diagnostics ---
    void printStatistics(const std::string& s) const;
    void printEnergy(); // histogram of the angles at edges of degree 2
    void checkDataStructures(const std::string& name) const;
    bool checkNoDups(const std::string& name) const;       // true if clean
    bool checkNoDegenerate(const std::string& name) const; // true if clean

private:
    friend class RTriangle;

    Point3* makeVertex(const Point3& pnt);
    void ensurePointTable() const;
    REdge* getOrMakeEdge(Point3* pA, Point3* pB);
    void linkEdge(REdge* pRE) noexcept;   // enters it under its lower end
    void unlinkEdge(REdge* pRE) noexcept; // it must be entered
    void appendToVertex(RTriangle* pRT, int i) noexcept;
    void moveEdge(REdge* pRE, Point3* pSrc, Point3* pTrg);
    static bool growUmbrella(const Point3* pCenter, std::vector<RTriangle*>& vAvail,
                             std::vector<RTriangle*>& vUmbrella);
    void mergeEdge(REdge* pRE, REdge* pExistingRE);
    static void collectTwins(const REdge* pRE, std::vector<RTriangle*>& vKillT);
    void deletePatches();
    void initPools(std::size_t numPoints, std::size_t numTriangles, std::vector<StorageBlock>& vStorage);
    [[nodiscard]] bool collapseBest(RTriangle* pRT, bool bKeepTopology, std::vector<RTriangle*>& vWork);
    [[nodiscard]] bool keepsTopology(const REdge* pRE) const;
    [[nodiscard]] bool isBorderVertex(const Point3* pVtx) const;
    [[nodiscard]] std::vector<char> findFlatT() const; // by creation number, whether it is alive and flat
    [[nodiscard]] double worstTurn(const std::vector<RTriangle*>& vIncT, const Point3* pSrc,
                                   const Point3* pTrg) const;
    void uniteNeighbours(TriangleUnion& turns, std::vector<unsigned int>& vTwisted) const;
    void growPatch(RTriangle* pStart, RPatch* pPatch, class Progress* pProgress);
    // One job of the evaluation, on [from, to). An edge that has to wait for the calling thread is marked by
    // an improvement of NaN.
    void getEdgeFlipCandidates_MT_priv(const std::vector<REdge*>& vInRE, double minImprovement,
                                       double temperature, std::size_t from, std::size_t to,
                                       std::vector<std::pair<double, REdge*>>& vImpRE, int);
    void computePostponedFlips(double minImprovement, double temperature,
                               std::vector<std::pair<double, REdge*>>& vImpRE);
    CollapseFan& getFan(const REdge* pRE, int i, CollapseFans& fans) const; // of end i of the edge
    void gatherFan(const Point3* pVtx, CollapseFan& fan) const;
    [[nodiscard]] bool
    areAllPlacesDifferent(const std::vector<std::pair<Point3*, Point3>>& vOldVtx2NewPnt) const;

    double cellSize;
    SimplePool<RVertex> vtxPool;
    SimplePool<RTriangle> triPool;
    SimplePool<REdge> edgePool;
    std::size_t numVertices = 0;
    std::size_t numAliveT = 0;
    unsigned int numAnnealingPasses = 0; // so that no two passes draw the same numbers
    std::vector<RTriangle*> vAllRT;      // in order of creation
    std::vector<REdge*> vAllRE;          // in order of creation
    std::vector<RPatch*> vRP;            // owned
    // All vertices by coordinates; of equal ones the first. Made at first use: most meshes never need it.
    mutable PointTable pointTable;
    mutable bool bPointTable = false;
};

} // namespace TARN_ZEF

#endif
