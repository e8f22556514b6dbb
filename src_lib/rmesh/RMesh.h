#ifndef ZEF_RMESH_H
#define ZEF_RMESH_H

#include "rmesh/RMeshRecords.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
class CMesh;
class CollapseFans;
class RPatch;
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
// How it hangs together, and for how long pointers into it are good, is told in RMeshRecords. Here is what is done
// with it.
//
// Ownership:  owns its patches, beside the records.
// Threads:    none. Const queries may run in parallel while nothing changes and all normals are filled
//             (fillNormals()).
class RMesh : public RMeshRecords
{
public:
    explicit RMesh(const CMesh* pCMesh);
    // vStorage: memory that the mesh may use, whatever its size.
    explicit RMesh(const RMeshSource& source, std::vector<StorageBlock> vStorage = {});
    ~RMesh();

    // --- Around vertices ---
    // The edge collapse: pTrg takes the place of pSrc in all its triangles, the triangles on their common
    // edge die, and edges that fall together merge. It can leave two triangles on the same corners: test
    // before, or run killDuplicateT() after. pSrc stays as a vertex without triangles.
    void exchangeCorner(Point3* pSrc, Point3* pTrg);
    [[nodiscard]] bool hasDisjointRings(const Point3* pA, const Point3* pB) const; // rings share no edge
    // Groups the triangles at a vertex into closed fans. If one is not closed: a warning and one group of
    // all.
    void getUmbrellas(const Point3* pCenter, std::vector<std::vector<RTriangle*>>& vUmbrellas) const;

    // --- The whole mesh ---
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

    // The next pass with a temperature counts as the first.
    void restartAnnealing() noexcept { numAnnealingPasses = 0; }

    // --- Reduction (RMeshReduce.cpp) ---
    // Collapses edges up to that squared length, the cheapest first, as long as no triangle turns by more than
    // maxDevAngle degrees. Returns the number of triangles that died with their edges.
    int reduce(double maxSqLen, double maxDevAngle, bool bKeepTopology = false);
    // See CollapsePenalty, to which more than a few calls should turn. iSrc is the end that vanishes.
    [[nodiscard]] double getCollapsePenalty(const REdge* pRE, int iSrc, const CollapseLimits& limits,
                                            CollapseFans& fans) const;

    // --- Diagnostics ---
    void printStatistics(const std::string& s) const;
    void printEnergy(); // histogram of the angles at edges of degree 2
    void checkDataStructures(const std::string& name) const;
    bool checkNoDups(const std::string& name) const;       // true if clean
    bool checkNoDegenerate(const std::string& name) const; // true if clean

private:
    void deletePatches();
    // One job of the evaluation, on [from, to). An edge that has to wait for the calling thread is marked by
    // an improvement of NaN.
    void getEdgeFlipCandidates_MT_priv(const std::vector<REdge*>& vInRE, double minImprovement,
                                       double temperature, std::size_t from, std::size_t to,
                                       std::vector<std::pair<double, REdge*>>& vImpRE, int);
    void computePostponedFlips(double minImprovement, double temperature,
                               std::vector<std::pair<double, REdge*>>& vImpRE);

    unsigned int numAnnealingPasses = 0; // so that no two passes draw the same numbers
    std::vector<RPatch*> vRP;            // owned
};

} // namespace TARN_ZEF

#endif
