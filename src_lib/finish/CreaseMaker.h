#ifndef ZEF_FINISH_CREASEMAKER_H
#define ZEF_FINISH_CREASEMAKER_H

#include "finish/CreaseSides.h"
#include "surface/HalfEdgeMesh.h"

#include <cstddef>

namespace TARN_ZEF
{
// Gives a surface the creases that its points have. Each vertex takes the plane of the side that it lies on. An edge
// whose ends took different sides crosses the crease: it gets a vertex where the planes meet. The new vertices of a
// triangle are joined by feature edges, those of a triangle between three sides by way of a vertex in the corner.
//
// Ownership:  works on the caller's mesh.
// Invariant:  a vertex is of kind CHAIN if two feature edges meet in it without much of a turn, FIXED if others do.
// Threads:    what is read only runs on the pool; edits are made in the order of numbers.
class CreaseMaker
{
public:
    // Lengths in units of the points but for noise and radius, which are in cells.
    // room: where creases may run.
    CreaseMaker(HalfEdgeMesh& mesh_, const CreaseSides::Surfaces& vSurfaces_, double cellSize_, double noise_,
                double radius_, const Box& room);

    void run();

    [[nodiscard]] std::size_t getNumCreaseEdges() const noexcept { return numEdges; }
    [[nodiscard]] std::size_t getNumCorners() const noexcept { return numCorners; }

private:
    void setKinds();

    HalfEdgeMesh& mesh;
    double cellSize;
    CreaseSides sides;
    std::size_t numEdges = 0;
    std::size_t numCorners = 0;
};

} // namespace TARN_ZEF

#endif
