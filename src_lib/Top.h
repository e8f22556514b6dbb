#ifndef ZEF_TOP_H
#define ZEF_TOP_H

#include "CEdge.h"
#include "Rotx.h"
#include "StableQueue.h"
#include "definitions.h"

#include <set>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
class Calc;
class Chain;
class CMesh;
class CPatch;
class Progress;
class Voro;

// Takes the raw mesh of the extraction and removes what makes it unusable as a surface: crossing diagonals,
// flat triangles, dangling triangles and frayed pieces at the border, non-manifold fins and bubbles.
//
// The passes kill and split triangles and ask Voro for more cells. At the end every piece that hangs together
// over edges of degree 2 is consistently oriented, its topmost corner facing up. Borders remain, and so do
// those non-manifold edges that no pass can decide.
//
// Ownership:  none; mesh, lattice and Voro belong to the caller.
// Validity:   every pass invalidates pointers to the triangles and edges that it replaces; cbsComplete() all.
// Threads:    none; the progress tree of the calling thread must have been prepared.
// Errors:     a flat triangle that can neither be split away nor moved throws ZefBugException.
// Cost:       a small number of walks over the mesh.
class Top
{
public:
    Top(CMesh* pCMesh_, Calc* pCalc_);

    // --- The orders of passes ---
    void run(Voro* pVoro);     // after a reconstruction from points
    void runMelt(Voro* pVoro); // after a melt

    // --- Flat faces and flat triangles ---
    // A square lattice face that carries both diagonals gets one.
    void unifyDiagonals();
    // Splits away or moves all geometrically degenerate triangles. One that this makes stays for the next
    // call.
    void killDegenerate();

    // --- Borders ---
    // Lets Voro complete the cells around borders and edges of degree 4 and extract again.
    void cbsComplete(Voro* pVoro);
    // Kills each triangle that hangs between two non-manifold edges; appends the border edges that remain.
    void getBordersKillDeg1nn(std::vector<CEdge*>& vBorders);
    // Takes the free corner of a triangle with two borders into the fin that it hangs on; a triangle that
    // stands alone dies.
    void integrateCCD(CEdge* pCE);
    // Kills the pieces between borders and non-manifold edges that have few triangles, at most maxNumT, and
    // much border.
    void killTinyBorderPatches(int maxNumT);
    // Kills triangles with a border, of the cube configurations that leave such triangles behind.
    void pruneCases();

    // --- Patches ---
    // One pass: of two patches with one boundary one dies, thin closed patches lose a side. Returns whether a
    // pair was decided or a patch was split.
    bool solvePatches(bool bStrict);
    // Cuts the alive triangles of vT into patches that hang together over edges of degree 2, and orients each
    // of them in itself: through clean surface first, beside borders and non-manifold edges last. vPatches
    // must be empty; the caller owns what it gets.
    void createPatchesOrient(const std::vector<CTriangle*>& vT, std::vector<CPatch*>& vPatches);

    // --- Positions ---
    // Moves corners until no two of them hold the same position. The first one of a group stays.
    void separateDuplicatePoints();

    [[nodiscard]] CMesh* getCMesh() const noexcept { return pCMesh; }

    // --- Patch strategies (TopStrategies.cpp) ---
    using EdgeSet = std::set<CEdge*, ByCreationCE>;

    // Orients by a spanning tree over the triangles, from the first alive one on: of all ways on, the one
    // that bends least goes first. At edges of more than two triangles it leads to the next ones in rotation.
    // What it does not reach stays as it was. sProblemCE gets the edges of degree 2 in the whole mesh whose
    // triangles disagree. Takes all triangles out of their patches. A mesh of nothing but dead triangles, a
    // triangle without a normal, and a star whose order is unknown throw ZefBugException.
    void strategyMST(EdgeSet& sProblemCE);
    // Queues the neighbours of a triangle with a patch over its edge ici, those that have no patch.
    void enqueue(CTriangle* pCT, int ici);
    [[nodiscard]] std::size_t getNumEnqueued() const noexcept { return mmEnqueued.size(); }
    // Grows the outermost patch over its boundary, each time by the patch that is next in rotation, which is
    // turned to agree. Kills all other triangles of vPatches; a patch that was taken over is dead. The result
    // has its outer boundary. The patches must be those of the present mesh, each consistent in itself.
    CPatch* patchGrowing(const std::vector<CPatch*>& vPatches);
    // A triangle on the outermost corner of the patches, and whether it faces inwards. Throws
    // ZefBugException if none there has a side.
    [[nodiscard]] CTriangle* getMaxT(const std::vector<CPatch*>& vPatches, bool& bNeedFlip) const;
    // Kills every patch with an edge of degree 1.
    static void killBoundaryPatches(const std::vector<CPatch*>& vPatches);
    // Closes chains of edges of degree 3 and kills what they cut out.
    void closeChainsKillT();
    // Finds one or two edges that close an open chain; appends them. A closed one gives true and no edge; no
    // way, or a chain of which the mesh has lost an edge of degree 1 or 3 and more, gives false.
    [[nodiscard]] bool tryClose(const Chain* pChain, std::vector<CEdge*>& vNewCE) const;
    // Kills the first part that the chain and the new edges cut off, if it is small against the chain; says
    // whether it did.
    bool tryKillT(const Chain* pChain, const std::vector<CEdge*>& vNewCE);
    // All triangles that pStartT reaches without crossing an edge of sChainCE, breadth first, in place of the
    // content of vUsedT. False, and only a part of them, if these are more than maxNumT.
    [[nodiscard]] static bool bfs(CTriangle* pStartT, const EdgeSet& sChainCE, std::size_t maxNumT,
                                  std::vector<CTriangle*>& vUsedT);

    // --- Clusters of patches (TopClusters.cpp) ---
    // From the largest patch down: looks in the small patches around it for two sets with one boundary, lets
    // one of these die, and joins what is left to the patches that it hangs together with.
    void solvePatchPairsFrac(const std::vector<CPatch*>& vPatches);
    // Gathers the start patch and the patches around it, in place of the content of vCluster; at each edge
    // the largest neighbour stays outside. Always true.
    bool frac_createCluster(CPatch* pStartPatch, std::vector<CPatch*>& vCluster) const;
    // Looks for two disjoint sets of patches with the same boundary, makes each one patch, and decides that
    // pair. False if there is none or the pair is not decided. meshArea  of the whole mesh
    // Cost: exponential in the size of the cluster; more than 12 patches are turned away.
    bool frac_solvePatchCluster(const std::vector<CPatch*>& vCluster, double meshArea);

protected:
    using PatchPair = std::pair<CPatch*, CPatch*>;

    // Sorts vPatches by their outer boundaries. A patch without one is closed; one whose successor has the
    // same makes a pair with it; all others are open. Three patches with one boundary make two pairs.
    static void classifyPatches(std::vector<CPatch*>& vPatches, std::vector<PatchPair>& vPatchPairs,
                                std::vector<CPatch*>& vClosedPatches, std::vector<CPatch*>& vOpenPatches);
    // Kills one of the two, unless they are large; false if both stay. sumArea  of the whole mesh
    static bool solvePair(CPatch* p0, CPatch* p1, double sumArea);

    CMesh* pCMesh; // the same after cbsComplete(), with other contents
    Calc* pCalc;
    Rotx rotx;
    // Corners of feature lines and of known borders of a melt; empty unless a caller knows some.
    std::set<u64> sFeatureCCD;
    std::set<u64> sBorderCCD;

private:
    // A way on from a triangle that the tree has reached.
    struct EnqueuedT
    {
        CTriangle* pCT;
        CTriangle* pNeigT;
        float angle; // degrees; the bend between the two
    };
    struct AngleOf
    {
        double operator()(const EnqueuedT& entry) const noexcept { return entry.angle; }
    };

    void growTree(CTriangle* pStartT);
    void enqueueNeighbour(CTriangle* pCT, const Vector3& ownNNV, CTriangle* pNeigT, const char* textNoNormal);
    // The patch to take over next across a boundary edge, turned to agree; null without one.
    [[nodiscard]] CPatch* findForeignPatch(CEdge* pBoundaryCE, CPatch* pCurrentPatch, bool& bWarned) const;
    static bool absorbNeighbours(CPatch* pPatch);

    bool unifyDiagonalAt(CEdge* pCE);
    void splitNewFlat(CTriangle* pNewT);
    // Moves the first corner that lets itself be moved, from corner ici on; false if none does.
    [[nodiscard]] bool moveOneCorner(const CTriangle& ct, int ici);
    // Passes until nothing changes; a step of progress, if given, after each that changed something.
    void solveAllPatches(bool bStrict, Progress* pProgress);
    void orientAll();
    void finish();

    StableQueue<EnqueuedT, AngleOf> mmEnqueued; // the least bend first
};

} // namespace TARN_ZEF

#endif
