#ifndef ZEF_FINISH_CREASECUT_H
#define ZEF_FINISH_CREASECUT_H

#include "finish/CreaseCrossings.h"
#include "finish/CreaseSides.h"
#include "surface/HalfEdgeMesh.h"

#include <cstddef>
#include <vector>

namespace TARN_ZEF
{
// Cuts a surface along its creases: each crossing becomes a vertex, those of a triangle are joined by feature edges,
// three of them by way of a vertex in the corner.
//
// Ownership:  works on the caller's mesh and crossings; keeps references.
class CreaseCut
{
public:
    CreaseCut(HalfEdgeMesh& mesh_, const CreaseSides& sides_, CreaseCrossings& crossings_, double cellSize_);

    void run();

    [[nodiscard]] std::size_t getNumEdges() const noexcept { return numEdges; }
    [[nodiscard]] const std::vector<int>& getCorners() const noexcept { return vCorners; } // vertices

private:
    static constexpr int NONE = HalfEdgeMesh::NONE;

    void putOnSides();
    void cut();
    void join(int a, int b);
    void makeCorner(const CreaseCrossings::Passage& passage);

    HalfEdgeMesh& mesh;
    const CreaseSides& sides;
    CreaseCrossings& crossings;
    double cellSize;
    std::size_t numEdges = 0;
    std::vector<int> vCorners;
};

} // namespace TARN_ZEF

#endif
