#ifndef ZEF_VORO_H
#define ZEF_VORO_H

#include "BundleMap.h"
#include "Calc.h"
#include "Casx.h"
#include "CellIndex.h"
#include "CubeWalk.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace TARN_ZEF
{
class CEdge;
class CMesh;
struct CVertex;

// Turns the set of occupied cells into the first triangles of the combinatorial mesh.
//
// Every group of eight cells around a lattice point is a cube, named by its highest cell (baseCCD, which
// need not be occupied). Its occupation gives a row of the table of cube configurations. Cubes whose four
// cells lie flat on one face are held back and decided afterwards against the edges that the others made.
//
// Ownership:  owns the mesh that it makes until takeMesh(). Lattice and bundle map are not owned.
// Invariant:  the index matches vCCD, the cells in use, whenever an extraction starts. After borderFix()
//             these are no longer the keys of the bundle map.
// Threads:    one caller. The extraction reads cubes on the workers of the pool.
// Cost:       one linear walk over the cells; no list of cubes and members is kept.
class Voro
{
public:
    Voro(Calc* pCalc_, BundleMap* pCCDBundle_, TriMode triMode_);
    ~Voro();
    Voro(const Voro&) = delete;
    Voro& operator=(const Voro&) = delete;

    // The extraction in use. Again: triangles and edges are new, bundles stay.
    void fatExtractTriangles();
    // The variant for the thin table, with a new mesh and pruneCase27() at the end. The driver never
    // selects it.
    void thinNewExtractTriangles();

    // The mesh; null before the first extraction. It stays at its address through borderFix().
    [[nodiscard]] CMesh* getCMesh() const noexcept { return pCMesh; }
    // Hands the ownership of the mesh over; getCMesh() goes on giving it.
    [[nodiscard]] CMesh* takeMesh() noexcept;

    // Completes nearly full cubes among the given ones by their missing cells, lets their opposite side lose
    // a cell in exchange, and extracts again. Every cell in use has a bundle afterwards. Returns the mesh.
    CMesh* borderFix(const std::vector<u64>& vGeneratingVCDs);

    [[nodiscard]] const std::vector<u64>& getCells() const noexcept { return vCCD; }

private:
    // The triangles of a cube, by rank of the corners in vCCD.
    struct Found
    {
        std::uint32_t aRank[3];
        int cfg;
        u64 baseCCD;
    };
    // The two triangles of a flat cube, waiting for the other cubes.
    struct Ambiguous
    {
        std::uint32_t aRank[6];
        int cfg;
        u64 baseCCD;
    };
    // Of the parts of an extraction.
    using AmbiguousLists = std::vector<std::vector<Ambiguous>>;
    struct Part;

    void buildIndex();
    void extract(AmbiguousLists& vAmbiguousT);
    void readTable(const CubeWalk::Cube& cube, Part& part) const;
    void solveAmbiguousT(const AmbiguousLists& vAmbiguousT);
    void solveOne(const Ambiguous& entry);
    void pruneCase27();
    void createExtraCCDs_borderFix(const std::vector<u64>& vGeneratingVCDs, std::vector<u64>& vExtraCCD,
                                   std::vector<u64>& vRemoveCCD) const;
    // 0 .. 255, or -1 if no cell of the cube is occupied.
    [[nodiscard]] int getConfig(u64 baseCCD) const;
    void removeCells(const std::vector<u64>& vRemoveCCD, const std::vector<u64>& vExtraCCD);
    // Makes the triangle unless that edge, null if there is none, carries it already.
    void createUnlessThere(const CEdge* pCE, CVertex* pA, CVertex* pB, CVertex* pC, const Ambiguous& entry);

    Calc* pCalc;
    BundleMap* pCCDBundle;
    CMesh* pCMesh = nullptr;
    bool bOwnsMesh = false;
    std::vector<u64> vCCD; // the cells in use, ascending
    std::unique_ptr<CellIndex> pIndex;
    Casx casx;
};

} // namespace TARN_ZEF

#endif
