#ifndef ZEF_LEASTBEND_H
#define ZEF_LEASTBEND_H

#include "Point3.h"
#include "Vector3.h"

#include <array>
#include <cstddef>
#include <functional>
#include <vector>

namespace TARN_ZEF
{
// Triangulates a closed polygon in space without new vertices, so that the largest bend at an edge, those of the
// polygon included, is as small as can be, and among those the area.
//
// Long polygons are cut: first one between some of the vertices, then what remains beside each of its edges.
// Source:  P. Liepa, Filling holes in meshes, 2003; G. Barequet and M. Sharir, Filling gaps in the boundary of a
//          polyhedron, 1995. Bends are compared by their cosines.
// Cost:    at most some 100,000 triangles are weighed for each 100 vertices.
class LeastBend
{
public:
    using Triangle = std::array<std::size_t, 3>; // places on the polygon

    // vNormals[i]: unit normal of the triangle beside the edge from place i to i + 1; null if there is none.
    // mayJoin(i, k): whether an edge between these two places may be made.
    // bAreaAlone: bends do not count, so that the result is as small as can be.
    LeastBend(const std::vector<Point3>& vPolygon_, const std::vector<Vector3>& vNormals_, bool bAreaAlone_,
              std::function<bool(std::size_t, std::size_t)> mayJoin_);

    // False if no way is allowed. Triangles run against the polygon.
    [[nodiscard]] bool run(std::vector<Triangle>& vTriangles);

private:
    struct Weight
    {
        double bend = 0.0; // 1 - cosine of the largest
        double area = 0.0;
        [[nodiscard]] bool operator<(const Weight& other) const
        {
            return bend != other.bend ? bend < other.bend : area < other.area;
        }
    };
    // The best way to fill between places i and k of a part, and the normal of the triangle at that edge.
    struct Cut
    {
        Weight weight;
        Vector3 normal;
        std::size_t middle = 0;
        bool bPossible = true;
    };

    // The part is a closed polygon; vBeside[i] is beside its edge from i to i + 1, or null.
    [[nodiscard]] bool fillAny(const std::vector<std::size_t>& vPart, const std::vector<Vector3>& vBeside,
                               std::vector<Triangle>& vTriangles);
    [[nodiscard]] bool fill(const std::vector<std::size_t>& vPart, const std::vector<Vector3>& vBeside,
                            std::vector<Triangle>& vTriangles);
    void choose(std::size_t i, std::size_t k, const std::vector<std::size_t>& vPart,
                const std::vector<Vector3>& vBeside);
    // The normal that the triangle at the edge from i to k has; null if that edge is one of the part.
    [[nodiscard]] const Vector3& getNormal(std::size_t i, std::size_t k,
                                           const std::vector<Vector3>& vBeside) const;
    void collect(std::size_t i, std::size_t k, const std::vector<std::size_t>& vPart,
                 std::vector<Triangle>& vTriangles) const;
    [[nodiscard]] Cut& cutOf(std::size_t i, std::size_t k) { return vCuts[i * num + k]; }
    [[nodiscard]] const Cut& cutOf(std::size_t i, std::size_t k) const { return vCuts[i * num + k]; }

    const std::vector<Point3>& vPolygon;
    const std::vector<Vector3>& vNormals;
    bool bAreaAlone;
    std::function<bool(std::size_t, std::size_t)> mayJoin;
    std::size_t num = 0; // of the part in hand
    std::vector<Cut> vCuts;
};

} // namespace TARN_ZEF

#endif
