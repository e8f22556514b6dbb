#ifndef ZEF_CMESH_H
#define ZEF_CMESH_H

#include "cmesh/CMeshPositions.h"

#include <map>
#include <set>
#include <string>
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
// How the mesh hangs together is in CMeshRecords, where it stands in CMeshPositions. Here is what is done with
// both: local edits, the cut into patches, checks.
//
// Ownership:  owns patches, beside what its bases own. Bundle map and lattice are shared, not owned.
// Threads:    as CMeshRecords.
class CMesh : public CMeshPositions
{
public:
    CMesh(Calc* pCalc_, BundleMap* pCCDBundle_);
    ~CMesh();

    // Drops patches, edges, triangles and corner records, so that the extraction can run again. Bundles stay.
    // Every pointer to a triangle or edge becomes invalid.
    void clearAll();
    // The memory of triangles and edges, for whoever needs that much next. The mesh may only be destroyed
    // afterwards.
    [[nodiscard]] std::vector<StorageBlock> releaseStorage();

    // --- The last extraction, see ExtractionRecord ---
    using Renewed = ExtractionRecord::Renewed;
    [[nodiscard]] const Renewed* getRenewed() const noexcept { return getExtraction().getRenewed(); }
    // The triangles with the lowest numbers are the ones that it made.
    [[nodiscard]] std::size_t getNumExtractedT() const noexcept { return getExtraction().getNumT(); }
    // Extractions that ended here, whole ones and renewed ones.
    [[nodiscard]] unsigned int getNumExtractions() const noexcept
    {
        return getExtraction().getNumExtractions();
    }
    // Whether no triangle has come or gone since.
    [[nodiscard]] bool isAsExtracted() const noexcept
    {
        return getAllT().size() == getNumExtractedT() && !getExtraction().hasKilled();
    }

    [[nodiscard]] double getArea() const; // of the alive triangles

    // --- Local operations (CMeshOperations.cpp) ---
    // Moves v1's bundle to the midpoint and merges v0 into v1. Returns v1, or -1 as u64 at degree 0.
    u64 collapseEdgeToMidpoint(CEdge* pCE);
    // Merges src into trg, the ends of the edge, unless the link test forbids it. No position changes.
    bool collapseEdgeToEndpoint(CEdge* pCE, u64 src, u64 trg);
    // Moves one corner towards its ring's mean, at most a tenth of the spacing, unless a triangle would turn
    // by more than 90 degrees: then false.
    bool laplacianForOne(u64 ccd);
    bool removeBundle(Bundle* pBundle); // tries to dissolve an extra corner
    void removeUnusableBundles();
    void splitDegenerate(); // removes all geometrically degenerate triangles that can be split away
    int killDuplicates();   // kills all but the earliest of triangles on the same corners; returns how many

    // --- Patches (CMeshPatches.cpp) ---
    // Cuts all alive triangles into patches: pieces between borders, non-manifold edges and the given cuts
    // (null: none). The mesh owns the patches until the next call; vOut gets them too.
    // mBorderCCD2Patch    third corner at a non-manifold edge to its patch, the last one written
    // vBorderME           the non-manifold edges met, by creation, each once
    void createPatches(const std::set<CEdge*, ByCreationCE>* pCuts, std::vector<CPatch*>& vOut,
                       std::map<u64, CPatch*>& mBorderCCD2Patch, std::vector<CEdge*>& vBorderME);
    void createCCPatches(); // connected components over edges of any degree
    [[nodiscard]] const std::vector<CPatch*>& getPatches() const noexcept { return vPatches; }
    void deletePatches();

    // --- Checks (CMeshDiagnostics.cpp): print, change nothing ---
    void statistics(const std::string& name) const;
    // True if clean: no two alive triangles on the same corners; no two that share an edge and whose corners off it
    // stand on one place; none without area.
    bool checkNoDups(const std::string& name) const;
    bool checkNoAdjGeomDups(const std::string& name) const;
    bool checkNoDegenerate(const std::string& name) const;
    [[nodiscard]] bool hasNaN() const; // among the positions of alive triangles

private:
    std::vector<CPatch*> vPatches; // of the last cut; owned
};

} // namespace TARN_ZEF

#endif
