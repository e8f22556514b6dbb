#ifndef ZEF_LOOP_H
#define ZEF_LOOP_H

#include "core/definitions.h"
#include "holes/AngleEntry.h"

#include <vector>

namespace TARN_ZEF
{
class CEdge;
class CMesh;
class CTriangle;
class VcdEdgeMap;

// Fills one closed ring of border edges with triangles on the ring's own corners, by cutting ears: the
// corner with the smallest inner angle goes first.
//
// A ring around the outside of a surface is told from a hole by its turn sum, over all corners the inner
// angle less 180 degrees: -360 for a flat hole, +360 for a flat rim.
//
// Ownership:  owns its corner records; edges and triangles belong to the mesh, which must outlive the loop.
// Invariant:  the new triangles run with the ring, the surface around it runs against it.
// Threads:    none, but for the numbering of loops, which is atomic.
// Cost:       construction floods the connected triangles and clears the marks of the whole mesh; solve()
//             costs O(log n) and the triangles at three corners for each ear.
class Loop
{
public:
    // Takes one ring out of the map, starting at its lowest corner; an empty map is fatal. Turns the surface
    // at the ring against it, and all that is connected with it likewise.
    Loop(VcdEdgeMap& mmVCD2CE, CMesh* pCMesh_);
    Loop(const Loop&) = delete;
    Loop& operator=(const Loop&) = delete;

    [[nodiscard]] u64 getId() const noexcept { return id; }
    [[nodiscard]] bool isClosed() const noexcept { return bClosed; }
    // Cuts ears until none is left to cut. True if the result stays, even if nothing was cut; false if the
    // ring is the outside of a surface, or was cut from its wrong side: then the mesh is as before. An open
    // ring is fatal. Call once.
    [[nodiscard]] bool solve();

    void getEdges(std::vector<CEdge*>& vOut) const;    // appends the ring, in order
    void getBorderCE(std::vector<CEdge*>& vOut) const; // appends those of degree 1
    [[nodiscard]] bool hasVCD(u64 vcd) const;
    void getNewT(std::vector<CTriangle*>& vOut) const; // appends the triangles made
    [[nodiscard]] std::size_t getNumNewT() const noexcept { return vNewT.size(); }
    [[nodiscard]] CMesh* getCMesh() const noexcept { return pCMesh; }

private:
    // A corner that waits to be cut.
    struct Candidate
    {
        double angle;
        unsigned int order; // of entry: earlier first among equals
        AngleEntry* pAE;
    };

    bool orientChainAndAjacentT(VcdEdgeMap& mmVCD2CE, std::vector<CTriangle*>& vAdjT);
    void orientConnected(const std::vector<CTriangle*>& vAdjT);
    double initPrioq();
    void enqueue(double angle, AngleEntry* pAE);
    AngleEntry* getBestAE();
    bool triangulate();
    void addSignedArea(const CTriangle* pNewCT, double angle);

    double signedArea = 0.0; // of the triangles made; those at reflex corners count negative
    int numAE = 0;           // corners left
    std::vector<CEdge*> vCE; // the ring, in order
    bool bClosed;
    CMesh* pCMesh;
    std::vector<Candidate> vPrioq; // heap, smallest angle first
    unsigned int numEnqueued = 0;
    std::vector<CTriangle*> vNewT;
    u64 id;
    std::vector<AngleEntry> vAllAE; // never grows once the ring is linked
};

} // namespace TARN_ZEF

#endif
