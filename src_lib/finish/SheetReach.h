#ifndef ZEF_FINISH_SHEETREACH_H
#define ZEF_FINISH_SHEETREACH_H

#include "Vector3.h"

#include "finish/PointOwners.h"
#include "surface/HalfEdgeMesh.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace TARN_ZEF
{
// Which points lie around a place of a surface on its own sheet: those whose triangles can be reached over the
// surface without a sharp turn, so that a sheet close by does not count. Feature edges are walls.
//
// A snapshot of mesh and cloud; keeps a reference to the mesh, whose vertices must not move meanwhile.
// Threads:  the constructor works on the pool; queries may run at the same time, each with a scratch of its own.
class SheetReach
{
public:
    // Points, as seen from the place in their middle.
    struct Surroundings
    {
        std::vector<double> vX;
        std::vector<double> vY;
        std::vector<double> vZ;

        // Calls f(d) for each point nearer than reach to the place at offset from the middle; d is the way to it
        // from there in units of reach.
        template <typename F>
        void forEachNear(const Vector3& offset, double reach, F f) const;
    };
    // What one worker uses again for each place.
    class Scratch
    {
    public:
        std::vector<int> vSeeds; // triangles from which points are reached

    private:
        friend class SheetReach;
        // A triangle and how far its corners are from the place, squared.
        struct Reached
        {
            int t;
            std::array<double, 3> sqDistances;
        };

        std::vector<Reached> vReached;
        std::vector<std::uint32_t> vStamps;
        std::uint32_t stamp = 0;
    };

    // cellSize, maxReach: in units of the points. Points are found within maxReach of the vertices vAsked, or everywhere
    // if none are named; maxReach does not count then.
    SheetReach(const HalfEdgeMesh& mesh_, const std::vector<Point3>& vCloud, double cellSize, double maxReach,
               const std::vector<int>& vAsked);

    // Of a vertex: filtered over its neighbours, of unit length; null on creases.
    [[nodiscard]] const Vector3& getNormal(int v) const noexcept
    {
        return vNormals[static_cast<std::size_t>(v)];
    }
    // Of the triangles of one side of a vertex.
    [[nodiscard]] Vector3 getSideNormal(const std::vector<int>& vSide) const;
    // The points nearer than reach, from the seeds on, over what faces as the normal does within 66 degrees.
    void gather(const Point3& centre, const Vector3& normal, double reach, Scratch& scratch,
                Surroundings& result) const;

private:
    using Reached = Scratch::Reached;
    using Facing = std::array<float, 3>; // of unit length

    void fillNormals();
    void fillFacings();
    [[nodiscard]] Vector3 getRawNormal(int v) const;
    [[nodiscard]] Vector3 getFacing(int t) const;
    [[nodiscard]] bool faces(int t, const Vector3& normal) const;
    void reachTriangles(const Point3& centre, const Vector3& normal, double reach, Scratch& scratch) const;
    [[nodiscard]] Reached reachAcross(int h, const Reached& near, const Point3& centre) const;

    const HalfEdgeMesh& mesh;
    PointOwners owners;
    std::vector<Vector3> vNormals; // of the vertices
    std::vector<Facing> vFacings;  // of the triangles
};

// What is near is gathered first, a block at a time: half of the points are not, without a pattern to foresee.
template <typename F>
void SheetReach::Surroundings::forEachNear(const Vector3& offset, double reach, F f) const
{
    constexpr std::size_t block = 64;
    std::array<Vector3, block> near;
    const double perReach = 1.0 / reach;
    for (std::size_t start = 0; start < vX.size(); start += block)
    {
        const std::size_t end = std::min(start + block, vX.size());
        std::size_t num = 0;
        for (std::size_t i = start; i < end; ++i)
        {
            near[num] = {(vX[i] - offset.x()) * perReach, (vY[i] - offset.y()) * perReach,
                         (vZ[i] - offset.z()) * perReach};
            num += near[num].sqLength() < 1.0 ? 1 : 0;
        }
        for (std::size_t i = 0; i < num; ++i)
            f(near[i]);
    }
}

} // namespace TARN_ZEF

#endif
