#ifndef ZEF_DISTANCEKEEPER_H
#define ZEF_DISTANCEKEEPER_H

#include "remesh/WorkSurface.h"

#include <vector>

namespace TARN_ZEF
{
// The last step: measures the distances between result and source, both ways, and splits triangles where one is above
// the tolerance.
class DistanceKeeper
{
public:
    explicit DistanceKeeper(WorkSurface& work_)
        : work(work_)
        , mesh(work_.mesh)
    {
    }

    void run();

    // Places that are farther off than the tolerance, and could not be mended.
    [[nodiscard]] int getNumFar() const { return numFar; }

private:
    [[nodiscard]] std::vector<int> findFarTriangles() const;
    [[nodiscard]] bool isFar(int t, const Point3& a, const Point3& b, const Point3& c, int depth) const;
    [[nodiscard]] std::vector<int> findBelowSource() const;
    [[nodiscard]] bool splitTriangle(int t);

    WorkSurface& work;
    HalfEdgeMesh& mesh;
    int numFar = 0;
};

} // namespace TARN_ZEF

#endif
