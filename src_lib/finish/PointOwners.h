#ifndef ZEF_FINISH_POINTOWNERS_H
#define ZEF_FINISH_POINTOWNERS_H

#include "core/definitions.h"
#include "surface/HalfEdgeMesh.h"

#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
// Which points of a cloud belong to which triangle of a surface: to the nearest one, among those around the nearest
// vertices. Points farther from all vertices than about two cells belong to none.
//
// A snapshot of the mesh; keeps references to mesh and cloud.
// Cost:  two sorts, and for each point a look at the vertices in its neighbourhood, on the pool.
class PointOwners
{
public:
    PointOwners(const HalfEdgeMesh& mesh_, const std::vector<Point3>& vCloud_, double cellSize_);

    // Indices of the points of a triangle, ascending.
    [[nodiscard]] std::span<const std::uint32_t> getPoints(int t) const noexcept
    {
        const auto i = static_cast<std::size_t>(t);
        return {vPoints.data() + vStarts[i], vStarts[i + 1] - vStarts[i]};
    }
    [[nodiscard]] const Point3& getPoint(std::uint32_t i) const noexcept { return vCloud[i]; }

private:
    using Entry = std::pair<u64, std::uint32_t>; // cell; vertex or point

    void chooseFrame();
    [[nodiscard]] u64 getCell(const Point3& p) const noexcept;
    [[nodiscard]] std::vector<Entry> sortVertices() const;
    [[nodiscard]] std::vector<Entry> sortCloud() const;
    void findOwners(const std::vector<Entry>& vVertices, const std::vector<Entry>& vSorted, std::size_t from,
                    std::size_t to);
    [[nodiscard]] int findOwner(const Point3& p, const std::vector<std::uint32_t>& vNear) const;
    void collect();

    const HalfEdgeMesh& mesh;
    const std::vector<Point3>& vCloud;
    double cellSize; // of the grid
    Point3 low;
    std::vector<int> vOwner; // of each point; HalfEdgeMesh::NONE
    std::vector<std::size_t> vStarts;
    std::vector<std::uint32_t> vPoints;
};

} // namespace TARN_ZEF

#endif
