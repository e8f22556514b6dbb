#ifndef ZEF_FINISH_CREASESIDES_H
#define ZEF_FINISH_CREASESIDES_H

#include "finish/LocalSurface.h"
#include "surface/HalfEdgeMesh.h"
#include "tarn_tools/Box.h"

#include <vector>

namespace TARN_ZEF
{
// Which side of a crease each vertex lies on. Around a crease no single fit holds, but those a little farther off on
// either side do: each vertex takes the plane of one that holds, for most of them their own.
//
// Ownership:  keeps references to mesh and surfaces.
// Threads:    the choice runs on the pool; the result is the same for every number of threads.
class CreaseSides
{
public:
    using Surfaces = std::vector<LocalSurface>;

    // Lengths in units of the points but for noise and radius, which are in cells.
    CreaseSides(const HalfEdgeMesh& mesh_, const Surfaces& vSurfaces_, double cellSize_, double noise_,
                double radius_, const Box& room_);

    void run();

    // Vertices that came later are not known, and have no side.
    [[nodiscard]] bool knows(int v) const noexcept { return v < static_cast<int>(vSide.size()); }
    [[nodiscard]] bool has(int v) const noexcept { return knows(v) && get(v) != NONE; }
    // The vertex whose plane v takes, or NONE. REQUIRES: knows(v).
    [[nodiscard]] int get(int v) const noexcept { return vSide[static_cast<std::size_t>(v)]; }
    // REQUIRES: has(v).
    [[nodiscard]] const LocalSurface& surfaceOf(int v) const noexcept
    {
        return vSurfaces[static_cast<std::size_t>(get(v))];
    }
    [[nodiscard]] TangentPlane planeOf(int v) const { return surfaceOf(v).getPlane(); }
    // Whether two sides, by their vertices, are one.
    [[nodiscard]] bool agree(int side, int otherSide) const;
    // Where the planes of the ends of an edge meet, next to its middle; false if no crease is there.
    [[nodiscard]] bool meet(int a, int b, Point3& point) const;
    [[nodiscard]] bool isBroken(int a, int b) const;

private:
    static constexpr int NONE = HalfEdgeMesh::NONE;

    void choose();
    void vote();
    [[nodiscard]] int findSide(int v, std::vector<int>& vNear) const;
    [[nodiscard]] double getCost(int v, int side) const;
    [[nodiscard]] bool isGood(int v) const;

    const HalfEdgeMesh& mesh;
    const Surfaces& vSurfaces;
    double cellSize;
    Box room;
    double noise;
    double radius;
    std::vector<int> vSide; // of each vertex
};

} // namespace TARN_ZEF

#endif
