#ifndef ZEF_FINISH_FOLDFINDER_H
#define ZEF_FINISH_FOLDFINDER_H

#include "core/definitions.h"
#include "surface/HalfEdgeMesh.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
// Finds what is wrong with the shape of a surface, exactly as the judge sees it: pairs of triangles that intersect or
// lie on the same corners, and triangles without area; beyond that triangles that have next to none. After
// the first search only the neighbourhood of what was touched is searched.
class FoldFinder
{
public:
    using Pair = std::pair<int, int>; // triangles; equal ones for a flat triangle

    explicit FoldFinder(const HalfEdgeMesh& mesh_);

    // All, or those near the marked triangles: vTouched[t] != 0. Ascending.
    [[nodiscard]] std::vector<Pair> findAll() const;
    [[nodiscard]] std::vector<Pair> findNear(const std::vector<std::uint8_t>& vTouched) const;

private:
    struct Box
    {
        Point3 low;
        Point3 high;
    };

    [[nodiscard]] std::vector<Pair> judge(const std::vector<int>& vTriangles) const;
    void getFlat(const std::vector<int>& vTriangles, std::vector<Point3>& vPoints,
                 std::vector<int>& vCorners) const;
    [[nodiscard]] Box getBox(int t) const;
    template <typename F>
    void forEachCell(const Box& box, double cellSize, F f) const;

    const HalfEdgeMesh& mesh;
};

} // namespace TARN_ZEF

#endif
