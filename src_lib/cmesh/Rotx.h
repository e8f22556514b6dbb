#ifndef ZEF_ROTX_H
#define ZEF_ROTX_H

#include "lattice/cellCodes.h"

#include <array>
#include <cstdint>

namespace TARN_ZEF
{
class Calc;
class CEdge;
class CMesh;
class CTriangle;

// The cyclic order of the triangles around an edge, which may carry any number of them, without floating
// point at run time.
//
// All edges of the combinatorial mesh join two cells of one cube, and the third corner of a triangle shares a
// cube with both ends. So, but for a shift, there are 56 directed edges with a few dozen third corners each:
// for all of them the angular rank of the third corner is computed once. In this model the ends have
// coordinates 1 or 2 and the third corners 0 to 3 on each axis. Cells are cubic, so one table serves all
// lattices.
//
// Ownership:  none; the table lives as long as the process.
// Threads:    the table is only read. sortStar() changes one edge.
// Cost:       one look-up per triangle of the edge.
class Rotx
{
public:
    // Takes the lattice of the mesh and does not touch the mesh again. Without bBuildTable every look-up
    // fails.
    Rotx(const CMesh* pCMesh, bool bBuildTable);

    // Rank of rcd2 around the directed edge from rcd0 to rcd1, in model coordinates: 0 and up, equal for
    // third corners in one half-plane. Only the cyclic order has a meaning. Cells that are not in the model
    // are fatal.
    [[nodiscard]] int getIdx(RCD rcd0, RCD rcd1, RCD rcd2) const;

    // Reorders the triangles of the edge: pRefCT comes first, the others follow in rising rank, seen along
    // the direction in which pRefCT runs. False, with a message and a valid list, if two triangles stand in
    // one half-plane, so that their order is unknown.
    bool sortStar(CTriangle* pRefCT, CEdge* pCE) const;

private:
    // By one bit for each coordinate of the ends and two for each of the third corner; -1: no such edge.
    using Table = std::array<std::int8_t, 4096>;

    [[nodiscard]] static Table buildTable();
    [[nodiscard]] int getIdx(const u64 aRCD0[3], const u64 aRCD1[3], const u64 aRCD2[3]) const;

    const Calc* pCalc;
    const Table* pTable; // null without bBuildTable
};

} // namespace TARN_ZEF

#endif
