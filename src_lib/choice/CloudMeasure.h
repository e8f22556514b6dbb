#ifndef ZEF_CLOUDMEASURE_H
#define ZEF_CLOUDMEASURE_H

#include "Point3.h"
#include "Vector3.h"
#include "autoReconstruct.h"
#include "choice/PointGrid.h"

#include <cstddef>
#include <vector>

namespace TARN_ZEF
{
// Measures evenness, noise and layers of a cloud at points spread over it, without making a surface.
//
// Ownership:  refers to the points, which must be finite.
// Threads:    one caller; the grid is sorted on the pool. The same figures for every number of threads, and for
//             all lengths doubled.
// Cost:       a sort of the points by cell, and some thousand plane fits.
class CloudMeasure
{
public:
    // spacing  the detected one
    CloudMeasure(const std::vector<Point3>& vPoints_, double spacing_);

    [[nodiscard]] CloudFigures measure() const;

private:
    using Hits = std::vector<PointGrid::Hit>;
    struct Sample
    {
        double toNearest; // by the spacing around the point, as all lengths here
        double residual;  // mean squared distance to the plane
        bool bLayered;
    };

    // False if there are too few neighbours.
    [[nodiscard]] bool sampleAt(std::size_t point, Hits& vHits, Sample& sample) const;
    [[nodiscard]] Vector3 fitPlane(std::size_t point, const Hits& vHits, double& residual) const;
    // Those that lie off the plane no more than the same sheet would.
    [[nodiscard]] Hits keepSheet(std::size_t point, const Hits& vHits, const Vector3& normal,
                                 double unit) const;
    [[nodiscard]] bool seesOtherSheet(std::size_t point, const Hits& vHits, const Vector3& normal,
                                      double unit) const;

    const std::vector<Point3>& vPoints;
    double spacing;
    PointGrid grid;
};

} // namespace TARN_ZEF

#endif
