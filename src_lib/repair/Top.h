#ifndef ZEF_TOP_H
#define ZEF_TOP_H

#include "Point3.h"
#include "cmesh/CEdge.h"
#include "cmesh/Rotx.h"
#include "core/StableQueue.h"
#include "core/definitions.h"
#include "repair/CrossingDiagonals.h"

#include <map>
#include <set>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
class Calc;
class Chain;
class CMesh;
class CPatch;
class CornerParter;
class Progress;
struct SurfacePieces;
class Voro;

// What a collapse tries.
enum SimplifyMode
{
    SM_MID_THEN_ENDS = 0,
    SM_ENDS = 1,
    SM_MID = 2
};

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
    // call. After a renewed extraction that call looks only at what is new or was moved: between the two,
    // nobody but this object and the averaging of extra bundles may move a corner.
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
    // Closes each hole of three edges, whatever lies around it. Orientation is left to the caller.
    void closeTriangularHoles();
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
    // Finds the edge that joins the ends of an open chain, or two edges over a corner off the chain with the
    // least sum of degrees; appends them. A closed chain gives true and no edge. False if there are none, or if
    // an edge of the chain has degree 0 or 2.
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

    // --- Simplify and flips (TopSimplify.cpp) ---
    // Shortest edge first, the smallest key of equal ones by time of entry: squared length to edge.
    using EdgeQueue = std::multimap<double, CEdge*>;

    // Corners on features and on known borders, for the flips and for a melt.
    void addFeatureCCD(u64 ccd) { sFeatureCCD.insert(ccd); }
    void addBorderCCD(u64 ccd) { sBorderCCD.insert(ccd); }
    [[nodiscard]] const std::set<u64>& getFeatureCCDs() const noexcept { return sFeatureCCD; }

    // Flips and collapses that smooth the lattice mesh, in a fixed order.
    void optimize();
    // Collapses the edges shorter than maxLen, shortest first, off the borders, where the surface around them
    // is flat to 5 degrees. Returns whether another pass pays. Two passes over the twins that a collapse may
    // leave kill all of these.
    bool simplify(int passNo, double maxLen, SimplifyMode mode);
    // Collapses the edge to its midpoint if no triangle around would leave its plane by more than 5 degrees
    // were its corner at mid. The edges at the corner that stays enter mm if they are shorter than allowed.
    [[nodiscard]] bool killMid(CEdge* pCE, const Point3& mid, double sqMaxLen, EdgeQueue& mm);
    // The same with end 0 or 1 dying in favour of the other one, which stays where it is.
    [[nodiscard]] bool killSingle(CEdge* pCE, int end, double sqMaxLen, EdgeQueue& mm);
    // Kills triangles with a border at edges of more than two triangles, smallest first, until two are left.
    void killBorderEars();

    // --- Flips (TopFlips.cpp) ---
    // Greedy flips, the largest gain in energy first, of edges that bend by maxAngle degrees or more.
    void edgeFlips(double maxAngle);
    // Appends the edges of degree 2 that bend by maxAngle degrees or more, in map order.
    void getEdgesForOptimization(double maxAngle, std::vector<CEdge*>& vOptimizable) const;
    // Three turns of flips that join lattice neighbours on features by edges.
    void flipFeatures();
    // Edges that go on at a or b straight from the line (a, b), to 0.2 degrees.
    [[nodiscard]] int countCollinearConnectors(u64 a, u64 b) const;
    // Whether the diagonal (v0, v1), v0 < v1, may become (ccd0, ccd1): a new edge, off known borders, that
    // bends by less than 120 degrees.
    [[nodiscard]] bool canFlip(u64 v0, u64 v1, u64 ccd0, u64 ccd1) const;
    // Flips the long edges of triangles with an angle of 170 degrees or more; with bFinal, one that cannot be
    // flipped loses that corner. Returns the number of changes.
    int flipExtremeCaps(bool bFinal);
    // Appends (bend in degrees, edge) for the edges of degree 2 that bend by minAngle or more, the largest
    // bend first, equal ones by creation.
    void getAngles(double minAngle, std::vector<std::pair<double, CEdge*>>& vAngle) const;
    // Flips edges that bend by 150 degrees or more where that makes the bend smaller by 5 degrees.
    void flipCreases();

protected:
    using PatchPair = std::pair<CPatch*, CPatch*>;

    // Sorts vPatches by their outer boundaries. A patch without one is closed; one whose successor has the
    // same makes a pair with it; all others are open. Three patches with one boundary make two pairs.
    static void classifyPatches(std::vector<CPatch*>& vPatches, std::vector<PatchPair>& vPatchPairs,
                                std::vector<CPatch*>& vClosedPatches, std::vector<CPatch*>& vOpenPatches);
    // Kills one of the two, unless they are large; false if both stay. sumArea  of the whole mesh
    static bool solvePair(CPatch* p0, CPatch* p1, double sumArea);
    void flipCreases(double minAngle);
    // Of the triangles at the outermost corner, the first that faces along x, those with few corners beside it
    // first; and whether it faces inwards. Null if none does.
    static CTriangle* findFacing(const std::vector<CTriangle*>& vIncT, u64 maxCCD, bool& bNeedFlip);
    // --- Seams (TopSeams.cpp) ---
    // Largest pieces at a border that may be removed at the end.
    static const int MAX_TINY_AT_END = 100;
    // What the passes over patches leave at edges of more than two triangles: patches that only together can
    // be decided, and ears at borders.
    void cleanSeams();
    // Degrees between the triangles at an edge of degree 2; false if one has no normal.
    [[nodiscard]] bool getBend(const CEdge* pCE, double& angle) const;

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

    // Whether the triangles at killCCD that do not hold trgCCD keep their planes if it moves to trgPos.
    [[nodiscard]] bool staysFlat(u64 killCCD, u64 trgCCD, const Point3& trgPos) const;
    [[nodiscard]] bool tryCollapse(CEdge* pCE, SimplifyMode mode, double sqMaxLen, EdgeQueue& mm);
    void enqueueEdgesAt(u64 ccd, double sqMaxLen, EdgeQueue& mm) const;
    void flipFeaturesAt(u64 ccd);
    [[nodiscard]] bool removeCap(CEdge* pCE, u64 apex);
    bool tryFlipCrease(CEdge* pCE, double curAngle);
    bool unifyDiagonalAt(CEdge* pCE);
    [[nodiscard]] std::vector<CTriangle*> findFlat() const;
    void killFlat(CTriangle* pCT);
    void splitNewFlat(CTriangle* pNewT);
    // Moves the first corner that lets itself be moved, from corner ici on; false if none does.
    [[nodiscard]] bool moveOneCorner(const CTriangle& ct, int ici);
    // Passes until nothing changes; a step of progress, if given, after each that changed something.
    // Returns the pieces of what is left.
    SurfacePieces solveAllPatches(bool bStrict, Progress* pProgress);
    void orientAll();
    void orientAll(SurfacePieces pieces); // those of the present mesh
    void decideSeams();
    // cornerParter: knows where the surface was rough before the passes over patches.
    // pieces: of the present mesh
    void finish(CornerParter& cornerParter, SurfacePieces pieces);

    StableQueue<EnqueuedT, AngleOf> mmEnqueued; // the least bend first
    CrossingDiagonals crossing;
    // For the search of flat triangles:
    unsigned int flatExtraction = 0; // after which all were dealt with; 0: never
    std::vector<u64> vMovedCCD;      // corners that were moved since then, those of extra bundles aside
};

} // namespace TARN_ZEF

#endif
