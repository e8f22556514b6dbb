#ifndef ZEF_CROSSINGDIAGONALS_H
#define ZEF_CROSSINGDIAGONALS_H

#include "CMesh.h"

#include <vector>

namespace TARN_ZEF
{
class CEdge;

// The edges of a mesh on square lattice faces that carry both diagonals. After a renewed extraction the search
// goes on from what it found right before, and looks at what was made anew only.
//
// Ownership:  none; holds pointers to edges of one mesh, for the next find().
class CrossingDiagonals
{
public:
    // Searches on the workers of the pool. False, and nothing is found, in a mesh with an edge that does not
    // lie within one cube: there any edge may cross another.
    [[nodiscard]] bool find(const CMesh& mesh);
    // In map order: all such edges, and some others.
    [[nodiscard]] const std::vector<CEdge*>& get() const noexcept { return vCE; }

private:
    [[nodiscard]] bool findAll(const CMesh& mesh);
    [[nodiscard]] bool update(const CMesh& mesh, const CMesh::Renewed& renewed);

    std::vector<CEdge*> vCE;
    unsigned int extraction = 0; // after which they were found; 0: of no use
};

} // namespace TARN_ZEF

#endif
