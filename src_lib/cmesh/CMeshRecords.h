#ifndef ZEF_CMESHRECORDS_H
#define ZEF_CMESHRECORDS_H

#include "cmesh/CEdge.h"
#include "cmesh/CTriangle.h"
#include "cmesh/CornerTable.h"
#include "cmesh/DegreeIndex.h"
#include "cmesh/ExtractionRecord.h"
#include "core/definitions.h"
#include "lattice/BundleMap.h"
#include "tarn_tools/SimplePool.h"

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
// What a CMesh consists of: corners, edges and triangles, how they hang together, and how to find them. Nothing
// here knows where a corner stands.
//
// Ownership:  owns triangles, edges and corner records. The bundle map is shared, not owned.
// Invariant:  an alive triangle has three different corners and stands in its three edges and in the lists of
//             its three corners. A dead triangle stands nowhere. Two alive triangles on the same corners exist
//             only if a caller did not check.
// Order:      "map order" of edges is ascending in (v0, v1), whatever the order of creation.
// Threads:    none; one mesh belongs to one thread at a time. Queries that change nothing may run in
//             parallel.
// Cost:       createT, kill, getCE cost a few list steps at a corner; getDegN walks all edges unless there is
//             none of that degree or the irregular ones are known; getAllCE walks all corners.
class CMeshRecords
{
public:
    CMeshRecords(const CMeshRecords&) = delete;
    CMeshRecords& operator=(const CMeshRecords&) = delete;

    // --- Building ---
    // Makes the records of the given corners (strictly ascending) at once, with their bundles where the map
    // has them. The mesh must be empty. Optional: createT makes missing corners itself.
    void prepareCorners(const std::vector<u64>& vCCD);
    // Record i of prepareCorners().
    [[nodiscard]] CVertex* getPreparedCorner(std::size_t i) const { return corners.getPrepared(i); }
    // Makes an alive triangle with this orientation and the edges that are missing. Equal corners are fatal;
    // whether an equal triangle exists is not tested.
    CTriangle* createT(u64 v0, u64 v1, u64 v2, u64 generatingVCD, int cfg);
    CTriangle* createT(CVertex* pV0, CVertex* pV1, CVertex* pV2, u64 generatingVCD, int cfg);
    // Removes the triangle from the lists of its corners; it must stand in all three.
    void unregisterTriangle(CTriangle* pCT);
    // The record of a corner, made if it is missing.
    [[nodiscard]] CVertex* getCorner(u64 ccd);
    // Says that an extraction ends here: an ExtractionRenewal can come back to what the mesh is now. All
    // triangles must be alive; those from numCubeT on are the ones of flat cubes.
    void markExtracted(std::size_t numCubeT);
    // Not known from clearAll() on.
    [[nodiscard]] const ExtractionRecord& getExtraction() const noexcept { return extraction; }

    // --- Edges ---
    // Appends the edges of degree deg > 0, or what another name of edgeDegree.h asks for, in map order; anything
    // else is fatal.
    void getDegN(int deg, std::vector<CEdge*>& vCE) const;
    // Whether getDegN() would find any, at once; for degrees from DegreeIndex::NUM_DEGREES on: whether it may.
    [[nodiscard]] bool hasDegree(int deg) const { return degrees.has(deg); }
    // From whoever has walked over all edges: those of degree 1 or above 2, in any order. From then on and until
    // clearAll() the mesh keeps track of them.
    void setIrregularEdges(std::vector<CEdge*> vCE) { degrees.setIrregular(std::move(vCE)); }
    [[nodiscard]] bool hasEdge(u64 a, u64 b) const; // exists with degree at least 1; a and b must differ
    [[nodiscard]] CEdge* getCE(u64 a, u64 b) const; // in either order; null if absent; orphans count
    [[nodiscard]] CEdge* getCE(const CVertex* pA, const CVertex* pB) const noexcept;
    void getIncCE(u64 ccd,
                  std::vector<CEdge*>& vCE) const; // edges of alive triangles at the corner, by creation
    void getAllCE(std::vector<CEdge*>& vCE) const; // appends all, orphans included, in map order

    // --- Triangles ---
    void getIncT(u64 ccd, std::vector<CTriangle*>& vT) const; // appends the alive ones, in order of creation
    void getAliveT(std::vector<CTriangle*>& vT) const;        // appends, in order of creation
    [[nodiscard]] const std::vector<CTriangle*>& getAllT() const noexcept
    {
        return vCT;
    } // dead ones included
    [[nodiscard]] std::size_t getNumAliveT() const noexcept { return numAliveT; }
    void clearVisited(); // of all triangles, dead ones included

    // --- Corners ---
    void getUsedCCDs(std::vector<u64>& vCCD) const; // corners of alive triangles, ascending
    // The link test: whether no triangle at src would fall on one at trg, if src went there.
    [[nodiscard]] bool canCollapse(u64 src, u64 trg) const;
    [[nodiscard]] BundleMap* getBundleMap() const noexcept { return pCCDBundle; }

    // f(const CVertex&) for each corner record and f(CEdge*) for each edge, orphans included, in the order in
    // which they stand in memory. That is the order of creation as long as no extraction was renewed.
    template <typename F>
    void forEachVertex(F&& f) const;
    template <typename F>
    void forEachEdge(F&& f) const;
    // The edges in the slots [from, to) of getNumEdgeSlots(), each of which holds one at most.
    template <typename F>
    void forEachEdge(std::size_t from, std::size_t to, F&& f) const;
    [[nodiscard]] std::size_t getNumEdgeSlots() const { return pEdgePool ? pEdgePool->size() : 0; }
    // All creation numbers of edges are below this one.
    [[nodiscard]] unsigned int getNumEdges() const noexcept { return numEdges; }

protected:
    explicit CMeshRecords(BundleMap* pCCDBundle_);
    ~CMeshRecords();

    [[nodiscard]] CVertex* findVertex(u64 ccd) const noexcept { return corners.find(ccd); } // null if absent
    // Drops all records, and keeps the memory of triangles and edges for those to come.
    void clearRecords();
    // Hands over the memory of triangles and edges. Nothing but the destructor may follow.
    [[nodiscard]] std::vector<StorageBlock> releaseRecords();

private:
    friend class CTriangle;
    friend class ExtractionRenewal;

    CVertex* makeCorner(u64 ccd);
    // The edge from a corner up to a higher one; null if absent.
    [[nodiscard]] static CEdge* findUpward(const CVertex* pLower, u64 upper) noexcept;
    CEdge* getOrMakeEdge(CVertex* pA, CVertex* pB);
    // Puts the triangle at the end of the lists of its edges and corners; it must stand in none.
    void registerTriangle(CTriangle* pCT);
    void appendToCorner(CTriangle* pCT, int ici) noexcept;
    template <typename Filter>
    void collectInMapOrder(std::vector<CEdge*>& vCE, Filter filter) const;
    // Few of all edges, in map order.
    template <typename Filter>
    [[nodiscard]] std::vector<CEdge*> findEdges(Filter filter) const;
    void initPools(std::size_t numCorners);
    void destroyEdges();

    BundleMap* pCCDBundle;

    CornerTable corners;
    std::vector<CTriangle*> vCT; // all triangles ever made, in order of creation
    std::size_t numAliveT = 0;
    std::unique_ptr<SimplePool<CTriangle>> pTrianglePool; // null before the first corner, as the next
    std::unique_ptr<SimplePool<CEdge>> pEdgePool;
    unsigned int numEdges = 0;
    DegreeIndex degrees;
    ExtractionRecord extraction;
};

template <typename F>
void CMeshRecords::forEachVertex(F&& f) const
{
    corners.forEach([&f](const CVertex* pVertex) { f(*pVertex); });
}

template <typename F>
void CMeshRecords::forEachEdge(F&& f) const
{
    forEachEdge(0, getNumEdgeSlots(), f);
}

template <typename F>
void CMeshRecords::forEachEdge(std::size_t from, std::size_t to, F&& f) const
{
    if (pEdgePool)
        pEdgePool->forEach(from, to,
                           [&f](CEdge* pCE)
                           {
                               if (pCE->isInMesh())
                                   f(pCE);
                           });
}

} // namespace TARN_ZEF

#endif
