#ifndef ZEF_DISTANCEKEEPER_H
#define ZEF_DISTANCEKEEPER_H

#include "remesh/WorkSurface.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
class EdgeFlipper;
class VertexRelaxer;

// The last step: sees to it that result and source are within the tolerance of one another, both ways, and splits triangles
// where they are not. Flat patches need no proof.
class DistanceKeeper
{
public:
    explicit DistanceKeeper(WorkSurface& work_)
        : work(work_)
        , mesh(work_.mesh)
    {
    }

    void run();

    // Triangles of the result that could not be mended: a place of them, or one of the source
    // near them, was measured farther off than the tolerance.
    [[nodiscard]] int getNumFar() const { return numFar; }
    // The largest distance that was measured there; 0 if there are none.
    [[nodiscard]] double getFarthest() const { return std::sqrt(sqFarthest); }

private:
    [[nodiscard]] std::vector<int> findFarTriangles();
    [[nodiscard]] std::vector<int> splitAll(const std::vector<int>& vFar);
    void flipAround(const std::vector<int>& vVertices, EdgeFlipper& flipper) const;
    [[nodiscard]] bool isStillProven(int s) const;
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
    // A triangle of the source each: which witnesses show that it is near the result.
    std::vector<std::pair<std::ptrdiff_t, std::ptrdiff_t>> vProofs;
    std::vector<int> vWitnesses; // triangles of the result
    int numFar = 0;
    double sqFarthest = 0.0;
};

} // namespace TARN_ZEF

#endif
