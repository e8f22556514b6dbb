#ifndef ZEF_FINISH_POINTOWNERS_H
#define ZEF_FINISH_POINTOWNERS_H

#include "core/definitions.h"
#include "surface/HalfEdgeMesh.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
// Which points of a cloud belong to which triangle of a surface: to the nearest one, among those around the nearest
// vertices. Points farther from all vertices than about two cells belong to none.
//
// A snapshot of mesh and cloud. The constructor works on the pool; the result is the same for every number of threads.
// Cost:  two sorts, and for each point a look at the vertices in its neighbourhood. 24 bytes a point and 4 a triangle
//        stay.
class PointOwners
{
public:
    // cellSize, maxReach: in units of the points. vAsked: vertices; where some are named, only points within about
    // maxReach of them get an owner.
    PointOwners(const HalfEdgeMesh& mesh, const std::vector<Point3>& vCloud, double cellSize_,
                double maxReach, const std::vector<int>& vAsked);

    // The points of a triangle, in their order in the cloud.
    [[nodiscard]] std::span<const Point3> getPoints(int t) const noexcept
    {
        const auto i = static_cast<std::size_t>(t);
        return {vPoints.data() + vStarts[i], vStarts[i + 1] - vStarts[i]};
    }

private:
    using Entry = std::pair<u64, std::uint32_t>; // cell; vertex or point
    using Stretch = std::pair<u64, u64>;         // of cells, the last one included
    // What one worker uses again for each cell: the vertices around it.
    struct Scratch;

    void chooseFrame(const HalfEdgeMesh& mesh);
    [[nodiscard]] u64 getCell(const Point3& p) const noexcept;
    [[nodiscard]] std::vector<Entry> sortVertices(const HalfEdgeMesh& mesh) const;
    [[nodiscard]] std::vector<Entry> sortCloud(const std::vector<Point3>& vCloud) const;
    [[nodiscard]] std::vector<Stretch> findAskedCells(const HalfEdgeMesh& mesh, double maxReach,
                                                      const std::vector<int>& vAsked) const;
    [[nodiscard]] std::vector<int> findOwners(const HalfEdgeMesh& mesh, const std::vector<Point3>& vCloud,
                                              const std::vector<Stretch>& vAskedCells) const;
    void gatherNear(const HalfEdgeMesh& mesh, const std::vector<Entry>& vVertices, u64 cell,
                    Scratch& scratch) const;
    [[nodiscard]] static int findOwner(const HalfEdgeMesh& mesh, const Point3& p, Scratch& scratch);
    void collect(const std::vector<Point3>& vCloud, const std::vector<int>& vOwner, std::size_t numTriangles);

    double cellSize; // of the grid
    Point3 low;
    std::array<u64, 3> lastCells = {};  // beyond which a point has no vertex around, on each axis
    std::array<int, 3> shifts = {};     // of an axis in the number of a cell
    std::vector<std::uint32_t> vStarts; // of each triangle in vPoints
    std::vector<Point3> vPoints;
};

} // namespace TARN_ZEF

#endif
