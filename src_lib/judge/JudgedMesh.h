#ifndef ZEF_JUDGEDMESH_H
#define ZEF_JUDGEDMESH_H

#include "Point3.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace TARN_ZEF
{
// The mesh under judgement: refers to the caller's points and corners. Corner c belongs to triangle c / 3, and so
// does the half-edge c, which leads from it to the next corner of its triangle.
class JudgedMesh
{
public:
    // All corners are indices of points, three for each triangle.
    JudgedMesh(const std::vector<Point3>& vPoints_, const std::vector<int>& vCorners_)
        : vPoints(vPoints_)
        , vCorners(vCorners_)
    {
    }

    [[nodiscard]] const std::vector<Point3>& getPoints() const { return vPoints; }
    [[nodiscard]] const std::vector<int>& getCorners() const { return vCorners; }
    [[nodiscard]] std::size_t getNumTriangles() const { return vCorners.size() / 3; }

    [[nodiscard]] static std::uint32_t getNext(std::uint32_t corner)
    {
        return corner % 3 == 2 ? corner - 2 : corner + 1;
    }
    [[nodiscard]] const Point3& getPoint(std::uint32_t corner) const
    {
        return vPoints[static_cast<std::size_t>(vCorners[corner])];
    }
    // Of the edge at which the half-edge lies.
    [[nodiscard]] Point3 getMiddle(std::uint32_t halfEdge) const;
    [[nodiscard]] Point3 getCentre(std::size_t triangle) const;
    // The middle of what the boxes around two triangles that meet have in common.
    [[nodiscard]] Point3 getMiddleOfCommonBox(std::size_t first, std::size_t second) const;

private:
    const std::vector<Point3>& vPoints;
    const std::vector<int>& vCorners;
};

} // namespace TARN_ZEF

#endif
