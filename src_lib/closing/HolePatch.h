#ifndef ZEF_HOLEPATCH_H
#define ZEF_HOLEPATCH_H

#include "closing/EdgeMates.h"
#include "closing/RingTable.h"
#include "core/definitions.h"
#include "meshHoles.h"
#include "surface/HalfEdgeMesh.h"

#include <cstddef>
#include <set>
#include <vector>

namespace TARN_ZEF
{
// What a patch is made for: the mesh around it.
struct Surroundings
{
    const std::vector<Point3>& vPoints;
    const std::vector<int>& vCorners;
    const EdgeMates& mates;
    const RingTable& rings;     // of the vertices of loops
    const std::set<u64>& taken; // edges that other patches have made, by EdgeMates::keyOf()
};

// The triangles that close one loop, before they become part of the mesh.
//
// Made as a triangulation of the loop alone; refine() then cuts its edges down to the lengths around and turns them
// until the triangles are well shaped, and fair() moves the new vertices so that the patch bends evenly and goes on
// as the surface around it does.
// Source:   P. Liepa, Filling holes in meshes, 2003; edges are split in place of triangles. L. Kobbelt et al.,
//           Interactive multi-resolution modeling on arbitrary meshes, 1998, for the fairing.
// Threads:  one.
class HolePatch
{
public:
    HolePatch(const Surroundings& around_, const std::vector<int>& vLoop_);

    // By least bend, or by least area alone. False if the loop cannot be closed without an edge that is there already.
    [[nodiscard]] bool triangulate(bool bAreaAlone);
    void refine();
    void fair();

    [[nodiscard]] std::vector<Point3> getNewPoints() const;
    // Corners: a number below that of the mesh's points means one of these, the next ones the new points.
    [[nodiscard]] std::vector<int> getCorners() const;

private:
    [[nodiscard]] std::vector<Vector3> getNormalsBeside() const;
    // The vertex of the mesh, or, from the number of its points on, a new one.
    [[nodiscard]] int nameOf(int v) const;
    [[nodiscard]] bool mayJoin(int v, int u) const;
    [[nodiscard]] double getRatio(int h) const; // of length to size
    [[nodiscard]] bool splitLong();
    void turnEdges();
    [[nodiscard]] bool wantsTurn(int h) const;

    const Surroundings& around;
    const std::vector<int>& vLoop;
    HalfEdgeMesh patch;
    std::vector<int> vPlaces;   // of the first vertices of the patch, on the loop
    std::vector<double> vSizes; // by vertex of the patch: wanted lengths of edges
};

} // namespace TARN_ZEF

#endif
