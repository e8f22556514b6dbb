#ifndef ZEF_FINISH_RELAXATION_H
#define ZEF_FINISH_RELAXATION_H

#include "finish/TriangleShape.h"
#include "surface/HalfEdgeMesh.h"

#include <cstdint>
#include <vector>

namespace TARN_ZEF
{
// Evens out the triangles of a surface without leaving it: flips edges towards larger angles, moves vertices along
// the surface towards the middle of their triangles, and collapses what stays thin. Feature edges stay; vertices on a
// chain of them move and collapse along it, fixed ones not at all.
//
// Ownership:  works on the caller's mesh.
// Threads:    what is read only runs on the pool; edits are made in the order of numbers. The result is the same for
//             every number of threads.
class Relaxation
{
public:
    using Flags = std::vector<std::uint8_t>;

    explicit Relaxation(HalfEdgeMesh& mesh_);

    // One round each; a few of them, in turn, make an even mesh.
    void flip();
    void smooth();
    // Triangles with an angle below that of the given cosine lose their shortest edge, where that is better. Returns
    // the number of collapses.
    std::size_t collapse(double maxCosine);
    // Border edges shorter than minLength, in units of the mesh, vanish where no triangle gets an angle below 25 degrees.
    // Returns their number.
    std::size_t collapseBorder(double minLength);

    // Of the triangles: which ones flips and collapses changed so far. Some of them may be dead.
    [[nodiscard]] const Flags& getTouched() const noexcept { return vTouched; }

private:
    [[nodiscard]] TriangleShape measureT(int t) const;
    [[nodiscard]] bool isBetterFlipped(int h, const TriangleShape& old0, const TriangleShape& old1) const;
    [[nodiscard]] std::vector<int> findCandidates();
    [[nodiscard]] Point3 propose(int v) const;
    [[nodiscard]] Point3 proposeOnBorder(int v) const;
    [[nodiscard]] Point3 proposeOnChain(int v) const;
    [[nodiscard]] bool turns(int t) const;
    [[nodiscard]] bool isHarmless(int v) const;
    [[nodiscard]] bool tryCollapse(int h, double worst);
    [[nodiscard]] bool mayVanish(int h) const;
    [[nodiscard]] bool isBetterCollapsed(int h, const Point3& target, double worst) const;
    [[nodiscard]] int getShortestEdge(int t) const;

    void touch(int h) { vTouched[static_cast<std::size_t>(HalfEdgeMesh::triangleOf(h))] = 1; }

    HalfEdgeMesh& mesh;
    Flags vTouched;
    // Kept from one round to the next, as large memory is dear to get.
    std::vector<TriangleShape> vShapes; // of the triangles
    std::vector<Point3> vProposed;      // for the vertices
    Flags vTurns;                       // triangles that would turn over
};

} // namespace TARN_ZEF

#endif
