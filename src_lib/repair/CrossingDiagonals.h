#ifndef ZEF_CROSSINGDIAGONALS_H
#define ZEF_CROSSINGDIAGONALS_H

#include "cmesh/CMesh.h"

#include <vector>

namespace TARN_ZEF
{
class CEdge;

// Two triangles on an edge that fill a square lattice face, whose other diagonal is an edge too.
struct CrossedSquare
{
    CTriangle* pCT0 = nullptr;
    CTriangle* pCT1 = nullptr;
    CEdge* pOtherCE = nullptr; // null: there is no such square
    u64 ccd0 = 0;              // its end in pCT0
    u64 ccd1 = 0;
};

// The crossed square with this edge as its diagonal.
[[nodiscard]] CrossedSquare findCrossedSquare(const CMesh& mesh, const CEdge& edge);

// The diagonals of crossed squares in a mesh. After a renewed extraction the search goes on from what it found
// after the one before, and looks only at what was made anew.
//
// Ownership:  none; holds pointers to edges of one mesh, for the next find().
class CrossingDiagonals
{
public:
    // Searches on the workers of the pool. False, and nothing is found, in a mesh with an edge that does not
    // lie within one cube: there squares may touch more edges than their diagonals and sides.
    [[nodiscard]] bool find(const CMesh& mesh);
    // Both diagonals of each crossed square, in map order.
    [[nodiscard]] const std::vector<CEdge*>& get() const noexcept { return vCE; }

private:
    [[nodiscard]] bool findAll(const CMesh& mesh);
    [[nodiscard]] bool update(const CMesh& mesh, const CMesh::Renewed& renewed);

    std::vector<CEdge*> vCE;
    unsigned int extraction = 0; // after which they were found, with nothing changed in between; 0: none
};

} // namespace TARN_ZEF

#endif
