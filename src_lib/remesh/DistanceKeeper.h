#ifndef ZEF_DISTANCEKEEPER_H
#define ZEF_DISTANCEKEEPER_H

#include "remesh/WorkSurface.h"

#include <array>
#include <vector>

namespace TARN_ZEF
{
class VertexRelaxer;

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
    [[nodiscard]] std::vector<int> findFarTriangles();
    [[nodiscard]] bool isFar(int t, const Point3& a, const Point3& b, const Point3& c, int depth) const;
    [[nodiscard]] bool isKnown(int t) const;
    void know(int t);
    void forget(int t);
    void relaxAround(std::vector<int> vVertices, VertexRelaxer& relaxer);
    [[nodiscard]] std::vector<int> findBelowSource();
    [[nodiscard]] int splitTriangle(int t);

    WorkSurface& work;
    HalfEdgeMesh& mesh;
    std::vector<std::array<int, 3>> vKnown; // a triangle each: its corners when it was near enough
    std::vector<int> vNear;                 // a triangle of the source each: one of the result near it
    int numFar = 0;
};

} // namespace TARN_ZEF

#endif
