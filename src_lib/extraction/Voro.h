#ifndef ZEF_VORO_H
#define ZEF_VORO_H

#include "extraction/Casx.h"
#include "lattice/BundleMap.h"
#include "lattice/Calc.h"
#include "lattice/CellIndex.h"
#include "lattice/CubeWalk.h"

#include <array>
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
// Cost:       one linear walk over the cells; no list of cubes and members is kept. borderFix() makes only the
//             cubes around changed cells anew, as long as these are few.
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
    // a cell in exchange, and extracts again: what passes did to the mesh since is lost, and pointers to its
    // triangles and edges are invalid. Every cell in use has a bundle afterwards. Returns the mesh.
    CMesh* borderFix(const std::vector<u64>& vGeneratingVCDs);

    [[nodiscard]] const std::vector<u64>& getCells() const noexcept { return vCCD; }

private:
    // The cube that a triangle comes from.
    struct Origin
    {
        u64 baseCCD;
        int cfg;
    };
    // A triangle, by rank of its corners in vCCD.
    struct Found
    {
        std::uint32_t aRank[3];
        Origin origin;
    };
    // The two triangles of a flat cube, waiting for the other cubes.
    struct Ambiguous
    {
        std::uint32_t aRank[6];
        Origin origin;
    };
    // The same, by corners.
    using Square = std::array<CVertex*, 6>;
    // Of the parts of an extraction.
    using AmbiguousLists = std::vector<std::vector<Ambiguous>>;
    struct Part;

    void buildIndex();
    void extract(AmbiguousLists& vAmbiguousT);
    void readTable(const CubeWalk::Cube& cube, Part& part) const;
    void solveAmbiguousT(const AmbiguousLists& vAmbiguousT);
    void solveSquare(const Square& square, const Origin& origin);
    void createUnlessThere(CVertex* pA, CVertex* pB, CVertex* pC, const Origin& origin);
    void pruneCase27();
    void createExtraCCDs_borderFix(const std::vector<u64>& vGeneratingVCDs, std::vector<u64>& vExtraCCD,
                                   std::vector<u64>& vRemoveCCD) const;
    // 0 if no cell of the cube is occupied.
    [[nodiscard]] int getConfig(u64 baseCCD) const;
    [[nodiscard]] bool removeCells(const std::vector<u64>& vRemoveCCD, const std::vector<u64>& vExtraCCD);
    // Brings the mesh to the cells in use. vOldCCD are those of the last extraction.
    void extractAfterChange(const std::vector<u64>& vOldCCD);
    // The cubes that one of the cells belongs to and all that share a face with one of those, ascending.
    [[nodiscard]] std::vector<u64> getCubesAround(const std::vector<u64>& vCells) const;
    void renew(std::vector<u64> vBases);
    // The record of the cell at a corner of the cube, 0 to 7.
    [[nodiscard]] CVertex* getCorner(u64 baseCCD, int corner) const;

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
