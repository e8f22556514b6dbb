#ifndef ZEF_REMESHER_H
#define ZEF_REMESHER_H

#include "remesh/PatchWalker.h"
#include "remesh/SourceSurface.h"
#include "surface/HalfEdgeMesh.h"

#include <functional>
#include <vector>

namespace TARN_ZEF
{
// Remeshes a surface evenly. The features are cut into even pieces first and never touched again; between
// them long edges are split, short ones collapsed, diagonals flipped and vertices relaxed in their tangent plane, in
// rounds, each vertex brought back onto its own patch of the source. (Botsch and Kobbelt, A remeshing approach to
// multiresolution modeling, 2004; here with features by patch, sizes by the room between features and by
// the distance from the source, and a last step that measures both ways.)
//
// Invariant:  the mesh keeps the topology of the source throughout; a FREE vertex lies on its patch; FIXED ones on
//             their chain. CHAIN vertices are those of the source that are to vanish.
// Threads:    none.
class Remesher
{
public:
    struct Settings
    {
        double length = 1.0;
        double tolerance = 0.02; // in units of the points
        bool bGraded = true;     // smaller triangles where features are nearer than the length
    };

    Remesher(const SourceSurface& source_, const Settings& settings_);

    // progress is told the part that is done, from 0 to 1.
    void run(const std::function<void(double)>& progress);

    [[nodiscard]] const HalfEdgeMesh& getMesh() const { return mesh; }
    // Places that the last step measured farther off than the tolerance, and could not mend.
    [[nodiscard]] int getNumFarPlaces() const { return numFar; }

private:
    enum class FlipAim
    {
        VALENCE,
        SHAPE
    };

    void cutChains();
    void cutChain(const CreaseChain& chain, const std::vector<struct ChainSample>& vSamples);
    [[nodiscard]] int edgeBetween(int a, int b) const;

    [[nodiscard]] std::vector<int> splitLong();
    void splitUntilDone();
    int splitAt(int h);
    int collapseShort(bool bOnlySurplus);
    [[nodiscard]] bool tryCollapse(int h);
    [[nodiscard]] bool keepsSurface(int h, double longest) const;
    void flipAll(FlipAim aim);
    void flipFrom(std::vector<int>& vQueue, FlipAim aim);
    [[nodiscard]] bool wantsFlip(int h, FlipAim aim) const;
    [[nodiscard]] bool keepsSurfaceFlipped(int h) const;
    void relax(bool bOnlyBetter);
    [[nodiscard]] bool mayMove(int v, const Point3& p, bool bOnlyBetter) const;
    [[nodiscard]] Point3 middleOfFan(int v) const;

    void findSizes();
    void sizeByDistance();
    void spreadSizes();
    void keepTolerance();
    [[nodiscard]] int splitFarTriangles();
    [[nodiscard]] int splitBelowSource();
    [[nodiscard]] bool splitTriangle(int t);

    [[nodiscard]] const Patch& patchOf(int t) const { return source.getPatches()[mesh.label(t)]; }
    [[nodiscard]] Vector3 normalOf(int t) const;
    [[nodiscard]] Point3 onPatch(const Point3& p, int t, double far, int* pTriangle = nullptr) const;
    [[nodiscard]] double sqDistanceFromPatch(const Point3& p, int t) const;
    [[nodiscard]] double lengthOf(int h) const;
    [[nodiscard]] double sizeOf(int h) const;
    void noteSplit(int h, int m, int sourceTriangle);

    const SourceSurface& source;
    Settings settings;
    PatchWalker walker;
    HalfEdgeMesh mesh;
    std::vector<double> vSize; // wanted edge length at a vertex
    std::vector<int> vValence; // while flipping
    std::vector<char> vQueued; // while flipping, a half-edge each
    std::vector<int> vHint;    // a triangle of the source near each triangle, of the same patch
    int numFar = 0;
};

} // namespace TARN_ZEF

#endif
