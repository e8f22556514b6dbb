#ifndef ZEF_FINISH_CREASEUNFOLDING_H
#define ZEF_FINISH_CREASEUNFOLDING_H

#include "finish/CreaseCrossings.h"
#include "finish/CreaseSides.h"
#include "surface/HalfEdgeMesh.h"

#include <vector>

namespace TARN_ZEF
{
// Puts the triangles along a fresh cut in order. Cells cross a crease awkwardly: chains turn back, vertices lie next to
// the crease or beyond it.
//
// Ownership:  works on the caller's mesh; keeps references.
class CreaseUnfolding
{
public:
    CreaseUnfolding(HalfEdgeMesh& mesh_, const CreaseSides& sides_, const CreaseCrossings& crossings_,
                    double cellSize_);

    // vCorners: vertices; those that vanish into others are taken out.
    void run(std::vector<int>& vCorners);

private:
    static constexpr int NONE = HalfEdgeMesh::NONE;
    using Crossing = CreaseCrossings::Crossing;

    void straightenChains();
    void snapToCrease();
    [[nodiscard]] bool maySnap(int h) const;
    void unfold(std::vector<int>& vCorners);
    void improve(int v);
    void dissolve(int v);
    [[nodiscard]] bool isCorner(int v) const;
    [[nodiscard]] double getShape(int v, const Point3& p, int other) const;

    HalfEdgeMesh& mesh;
    const CreaseSides& sides;
    const std::vector<Crossing>& vCrossings;
    double cellSize;
};

} // namespace TARN_ZEF

#endif
