#ifndef ZEF_DISTANCEKEEPER_H
#define ZEF_DISTANCEKEEPER_H

#include "remesh/EdgeTrace.h"
#include "remesh/NearnessProof.h"
#include "remesh/WorkSurface.h"

#include <cmath>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
class EdgeFlipper;
class VertexRelaxer;

// The last step: sees to it that result and source are within the tolerance of one another, both ways, and
// splits triangles where they are not. Seen from above, the edges of both part the surface into pieces over
// which both are plane, so the distance is largest at corners of pieces: where edges cross (EdgeTrace follows
// those of the result), and at vertices of the source; those of the result lie on it. Where an edge cannot be
// followed, NearnessProof looks at its triangles. Flat patches need none of this.
class DistanceKeeper
{
public:
    explicit DistanceKeeper(WorkSurface& work_)
        : work(work_)
        , mesh(work_.mesh)
        , trace(work_.walker, work_.settings.tolerance)
        , proof(work_.walker, work_.settings.tolerance)
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
    [[nodiscard]] bool isEdgeFar(int h);
    [[nodiscard]] bool isTriangleFar(int t);
    [[nodiscard]] std::vector<int> findBelowSource();
    [[nodiscard]] std::vector<int> splitAll(const std::vector<int>& vFar);
    [[nodiscard]] int splitTriangle(int t);
    void flipAround(const std::vector<int>& vVertices, EdgeFlipper& flipper) const;
    void relaxAround(std::vector<int> vVertices, VertexRelaxer& relaxer);
    [[nodiscard]] bool isKnown(int h) const;
    void know(int h);
    void forgetAround(int v);

    WorkSurface& work;
    HalfEdgeMesh& mesh;
    EdgeTrace trace;                         // on the source
    NearnessProof proof;                     // likewise
    std::vector<std::pair<int, int>> vKnown; // a half-edge each: its ends when it was near enough
    std::vector<int> vNear;                  // a triangle of the source each: one of the result near it
    int numFar = 0;
    double sqFarthest = 0.0;
};

} // namespace TARN_ZEF

#endif
