#ifndef ZEF_CMESH_H
#define ZEF_CMESH_H

#include "cmesh/CEdge.h"
#include "cmesh/CTriangle.h"
#include "cmesh/CVertex.h"
#include "cmesh/DegreeIndex.h"
#include "core/definitions.h"
#include "lattice/BundleMap.h"
#include "lattice/Calc.h"
#include "tarn_tools/SimplePool.h"

#include <algorithm>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <unordered_set>
#include <vector>

namespace TARN_ZEF
{
class CPatch;

// The combinatorial mesh: triangles on lattice corners, which are named by their cell codes.
//
// It is deliberately not manifold: an edge may carry any number of triangles, and the repair exists to
// remove the surplus. Nothing is edited in place: every change kills triangles and creates others. The real
// position of a corner is that of its bundle.
//
// Ownership:  owns triangles, edges, corner records, patches, and the bundles and points of the extra
//             corners that it made. Bundle map and lattice are shared, not owned.
// Invariant:  an alive triangle has three different corners, stands in its three edges and in the lists of
//             its three corners, and each of its corners has a bundle once positions are asked for. A dead
//             triangle stands nowhere. Two alive triangles on the same corners exist only if a caller did
//             not check.
// Order:      "map order" of edges is ascending in (v0, v1), whatever the order of creation.
// Threads:    none; one mesh belongs to one thread at a time. Queries that change nothing may run in
//             parallel.
// Cost:       createT, kill, getCE cost a few list steps at a corner; getDegN walks all edges unless there is
//             none of that degree or the irregular ones are known; getAllCE walks all corners.
class CMesh
{
public:
    CMesh(Calc* pCalc_, BundleMap* pCCDBundle_);
    ~CMesh();
    CMesh(const CMesh&) = delete;
    CMesh& operator=(const CMesh&) = delete;

    // --- Building ---
    // Makes the records of the given corners (strictly ascending) at once, with their bundles where the map
    // has them. The mesh must be empty. Optional: createT makes missing corners itself.
    void prepareCorners(const std::vector<u64>& vCCD);
    // Record i of prepareCorners().
    [[nodiscard]] CVertex* getPreparedCorner(std::size_t i) const { return pPrepared + i; }
    // Makes an alive triangle with this orientation and the edges that are missing. Equal corners are fatal;
    // whether an equal triangle exists is not tested.
    CTriangle* createT(u64 v0, u64 v1, u64 v2, u64 generatingVCD, int cfg);
    CTriangle* createT(CVertex* pV0, CVertex* pV1, CVertex* pV2, u64 generatingVCD, int cfg);
    // Puts the triangle at the end of the lists of its edges and corners; it must stand in none.
    void registerTriangle(CTriangle* pCT);
    // Removes the triangle from the lists of its corners; it must stand in all three.
    void unregisterTriangle(CTriangle* pCT);
    // The record of a corner, made if it is missing.
    [[nodiscard]] CVertex* getCorner(u64 ccd) { return getOrMakeVertex(ccd); }
    // Says that an extraction ends here: an ExtractionRenewal can come back to what the mesh is now. All
    // triangles must be alive; those from numCubeT on are the ones of flat cubes.
    void markExtracted(std::size_t numCubeT);
    // False from clearAll() on.
    [[nodiscard]] bool isExtractionKnown() const noexcept { return extracted.numT > 0; }
    // The triangles with the lowest numbers are the ones that the last extraction made.
    [[nodiscard]] std::size_t getNumExtractedT() const noexcept { return extracted.numT; }
    // Extractions that ended here, whole ones and renewed ones.
    [[nodiscard]] unsigned int getNumExtractions() const noexcept { return numExtractions; }
    // Whether no triangle has come or gone since.
    [[nodiscard]] bool isAsExtracted() const noexcept
    {
        return vCT.size() == extracted.numT && extracted.vKilled.empty();
    }
    // Where a mesh of a renewed extraction differs from what it was right before.
    struct Renewed
    {
        std::vector<CTriangle*> vMadeT;     // made anew
        std::vector<CTriangle*> vTakenOutT; // dead; stood in their place
        std::vector<CTriangle*> vRevivedT;  // killed by passes since the extraction before
    };
    // Null if the last extraction was a whole one. Holds until the next extraction or clearAll().
    [[nodiscard]] const Renewed* getRenewed() const noexcept { return pRenewed.get(); }
    // Drops patches, edges, triangles and corner records, so that the extraction can run again. Bundles stay.
    // Every pointer to a triangle or edge becomes invalid.
    void clearAll();
    // The memory of triangles and edges, for whoever needs that much next. The mesh may only be destroyed
    // afterwards.
    [[nodiscard]] std::vector<StorageBlock> releaseStorage();

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

    // --- Corners and positions ---
    void getUsedCCDs(std::vector<u64>& vCCD) const; // corners of alive triangles, ascending
    [[nodiscard]] Point3* getVtx(u64 ccd) const;    // position of the corner's bundle; no bundle is fatal
    [[nodiscard]] Point3* getBundleVtx(u64 ccd) const { return getVtx(ccd); }
    [[nodiscard]] Point3 getAvgPoint(u64 ccd) const { return *getVtx(ccd); }
    [[nodiscard]] Point3 getCoarsePoint(u64 ccd) const; // the cell's centre
    [[nodiscard]] Bundle* findBundle(u64 ccd) const;    // null if absent
    [[nodiscard]] double getAvgSpacing() const;         // cell edge of the lattice
    [[nodiscard]] double getArea() const;               // of the alive triangles
    [[nodiscard]] Calc* getCalc() const noexcept { return pCalc; }
    [[nodiscard]] BundleMap* getBundleMap() const noexcept { return pCCDBundle; }

    // --- Extra bundles ---
    // Makes a bundle and a point at the centre of the cell and averages it. A cell that has a bundle is left
    // alone.
    void addBundle(u64 ccd);
    [[nodiscard]] const std::vector<Bundle*>& getExtraBundles() const noexcept { return vBundles; }
    [[nodiscard]] bool isExtraVtx(const Point3* pVtx) const { return sExtraVtx.count(pVtx) != 0; }

    // --- Local operations (CMeshOperations.cpp) ---
    // Moves v1's bundle to the midpoint and merges v0 into v1. Returns v1, or -1 as u64 at degree 0.
    u64 collapseEdgeToMidpoint(CEdge* pCE);
    // Merges src into trg, the ends of the edge, unless the link test forbids it. No position changes.
    bool collapseEdgeToEndpoint(CEdge* pCE, u64 src, u64 trg);
    [[nodiscard]] bool canCollapse(u64 src, u64 trg) const;
    // Moves a corner slightly past the mean of its ring; real ring points count before extra ones.
    void averageBundle(Bundle* pBundle);
    void averageBundles(); // of all extra bundles, in order of creation
    // Moves one corner towards its ring's mean, at most a tenth of the spacing, unless a triangle would turn
    // by more than 90 degrees: then false.
    bool laplacianForOne(u64 ccd);
    bool removeBundle(Bundle* pBundle); // tries to dissolve an extra corner
    void removeUnusableBundles();
    void splitDegenerate(); // removes all geometrically degenerate triangles that can be split away
    int killDuplicates();   // kills all but the earliest of triangles on the same corners; returns how many

    // --- Patches (CMeshPatches.cpp) ---
    // Cuts all alive triangles into patches: pieces between borders, non-manifold edges and the given cuts
    // (null: none). The mesh owns the patches until the next call; vPatches gets them too.
    // mBorderCCD2Patch    third corner at a non-manifold edge to its patch, the last one written
    // vBorderME           the non-manifold edges met, by creation, each once
    void createPatches(const std::set<CEdge*, ByCreationCE>* pCuts, std::vector<CPatch*>& vPatches,
                       std::map<u64, CPatch*>& mBorderCCD2Patch, std::vector<CEdge*>& vBorderME);
    void createCCPatches(); // connected components over edges of any degree
    [[nodiscard]] const std::vector<CPatch*>& getPatches() const noexcept { return vPatches_; }
    // Hands the patches over to the caller, who owns them from then on.
    void takePatches(std::vector<CPatch*>& vPatches);
    void deletePatches();

    // --- Diagnostics: print, change nothing ---
    void statistics(const std::string& name) const;
    bool checkNoDups(const std::string& name) const;       // true if clean
    bool checkNoDegenerate(const std::string& name) const; // true if clean
    [[nodiscard]] bool hasNaN() const;

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

private:
    friend class CTriangle;
    friend class ExtractionRenewal;

    // What markExtracted() found, and what died of it since.
    struct Extracted
    {
        std::size_t numT = 0; // 0: not known
        std::size_t numCubeT = 0;
        std::size_t numEdgeSlots = 0;
        std::vector<CTriangle*> vKilled;
    };

    [[nodiscard]] CVertex* findVertex(u64 ccd) const noexcept; // null if absent
    CVertex* getOrMakeVertex(u64 ccd);
    [[nodiscard]] std::size_t hashSlot(u64 ccd) const noexcept;
    CVertex* makeVertex(u64 ccd);
    void enterInTable(CVertex* pVertex);
    void growTable(std::size_t numCorners);
    void getVerticesAscending(std::vector<CVertex*>& vVertices) const;
    // The edge from a corner up to a higher one; null if absent.
    [[nodiscard]] static CEdge* findUpward(const CVertex* pLower, u64 upper) noexcept;
    CEdge* getOrMakeEdge(CVertex* pA, CVertex* pB);
    void appendToCorner(CTriangle* pCT, int ici) noexcept;
    void eraseBundle(Bundle* pBundle); // from the map and from the corner's record; deletes bundle and point
    template <typename Filter>
    void collectInMapOrder(std::vector<CEdge*>& vCE, Filter filter) const;
    // Few of all edges, in map order.
    template <typename Filter>
    [[nodiscard]] std::vector<CEdge*> findEdges(Filter filter) const;
    void initPools(std::size_t numCorners);
    void destroyEdges();

    Calc* pCalc;
    BundleMap* pCCDBundle;

    std::vector<CTriangle*> vCT; // all triangles ever made, in order of creation
    std::size_t numAliveT = 0;
    std::unique_ptr<SimplePool<CTriangle>> pTrianglePool; // null before the first corner, as the next two
    std::unique_ptr<SimplePool<CEdge>> pEdgePool;
    std::unique_ptr<SimplePool<CVertex>> pVertexPool; // null while there are no corners
    CVertex* pPrepared = nullptr; // first record of prepareCorners(); they stand in one block
    std::vector<CVertex*> vTable; // open addressing on the code; size a power of two
    std::size_t numVertices = 0;
    unsigned int numEdges = 0;
    DegreeIndex degrees;
    u64 lastAscendingCCD = 0;     // code of the last of these:
    std::size_t numAscending = 0; // the first records, made in ascending order of code
    Extracted extracted;
    unsigned int numExtractions = 0;
    std::unique_ptr<Renewed> pRenewed;

    std::unordered_set<const Point3*> sExtraVtx; // points of vBundles
    std::vector<Bundle*> vBundles;               // extra bundles, in order of creation; owned
    std::vector<CPatch*> vPatches_;              // owned
};

template <typename F>
void CMesh::forEachVertex(F&& f) const
{
    if (pVertexPool)
        pVertexPool->forEach([&f](const CVertex* pVertex) { f(*pVertex); });
}

template <typename F>
void CMesh::forEachEdge(F&& f) const
{
    forEachEdge(0, getNumEdgeSlots(), f);
}

template <typename F>
void CMesh::forEachEdge(std::size_t from, std::size_t to, F&& f) const
{
    if (pEdgePool)
        pEdgePool->forEach(from, to,
                           [&f](CEdge* pCE)
                           {
                               if (pCE->number != CEdge::TAKEN_OUT)
                                   f(pCE);
                           });
}

} // namespace TARN_ZEF

#endif
