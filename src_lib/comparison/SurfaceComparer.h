#ifndef ZEF_SURFACECOMPARER_H
#define ZEF_SURFACECOMPARER_H

#include "compareMeshes.h"
#include "comparison/TriangleTree.h"

#include <cstddef>
#include <vector>

namespace TARN_ZEF
{
// Triangles with finite corners as flat data.
struct FiniteSurface
{
    const std::vector<Point3>& vPoints;
    std::vector<int> vCorners;

    FiniteSurface(const std::vector<Point3>& vPoints_, const std::vector<int>& vCorners_);
    [[nodiscard]] const Point3& getFirstCorner() const
    {
        return vPoints[static_cast<std::size_t>(vCorners[0])];
    }
    // The longest edge of the box of what triangles use; 0.0 without any.
    [[nodiscard]] double getExtent() const;
};

// Measures the distances from one surface to another.
//
// Places on the surface are spread by running through the triangles in their order: every so much area is one, at a
// place within its triangle that goes by the golden sequence of the plane (Roberts 2018), folded into the triangle.
// Cost:       one query of the tree for each sample and point.
class SurfaceComparer
{
public:
    // All of them outlive it.
    SurfaceComparer(const FiniteSurface& surface_, const TriangleTree& other_);

    [[nodiscard]] SurfaceDistances run(std::size_t numSamples);

private:
    [[nodiscard]] std::vector<Point3> samplePlaces(std::size_t numSamples) const;
    [[nodiscard]] std::vector<double> measure(const std::vector<Point3>& vPlaces) const;
    void sumUp(std::vector<double> vDistances, SurfaceDistances& found) const;
    void includeLargest(const std::vector<Point3>& vPlaces, const std::vector<double>& vDistances,
                        SurfaceDistances& found) const;
    void measureUsedPoints(SurfaceDistances& found) const;

    const FiniteSurface& surface;
    const TriangleTree& other;
};

} // namespace TARN_ZEF

#endif
