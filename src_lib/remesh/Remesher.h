#ifndef ZEF_REMESHER_H
#define ZEF_REMESHER_H

#include "remesh/EdgeFlipper.h"
#include "remesh/WorkSurface.h"

#include <functional>
#include <vector>

namespace TARN_ZEF
{
struct ChainSample;

// Remeshes a surface evenly. The features are cut into even pieces first and never touched again; between
// them long edges are split, short ones collapsed, diagonals flipped and vertices relaxed in their tangent plane, in
// rounds, each vertex brought back onto its own patch of the source. (Botsch and Kobbelt, A remeshing approach to
// multiresolution modeling, 2004; here with features by patch, sizes by the room between features and by
// the distance from the source, and a last step that measures both ways.)
//
// Invariant:  the mesh keeps the topology of the source throughout.
// Threads:    none.
class Remesher
{
public:
    Remesher(const SourceSurface& source, const RemeshSettings& settings);

    // progress is told the part that is done, from 0 to 1. False, and no use of the mesh, if it would have more
    // triangles than the settings allow.
    [[nodiscard]] bool run(const std::function<void(double)>& progress);

    [[nodiscard]] const HalfEdgeMesh& getMesh() const { return work.mesh; }
    // Triangles that the last step could not bring within the tolerance, and the largest distance measured there.
    [[nodiscard]] int getNumFarPlaces() const { return numFar; }
    [[nodiscard]] double getFarthest() const { return farthest; }

private:
    void cutChains();
    void cutChain(const CreaseChain& chain, const std::vector<ChainSample>& vSamples);
    [[nodiscard]] int edgeBetween(int a, int b) const;

    WorkSurface work;
    EdgeFlipper flipper;
    int numFar = 0;
    double farthest = 0.0;
};

} // namespace TARN_ZEF

#endif
