#ifndef ZEF_FINISH_CREASECROSSINGS_H
#define ZEF_FINISH_CREASECROSSINGS_H

#include "finish/CreaseSides.h"
#include "surface/HalfEdgeMesh.h"

#include <array>
#include <vector>

namespace TARN_ZEF
{
// Where creases run: the edges that they cross and the triangles that they pass. Chains that cross few edges are
// noise, and are left out.
//
// Ownership:  keeps references to mesh and sides.
class CreaseCrossings
{
public:
    // An edge between two sides.
    struct Crossing
    {
        int a = HalfEdgeMesh::NONE;
        int b = HalfEdgeMesh::NONE;
        Point3 point;                    // where the planes meet
        int vertex = HalfEdgeMesh::NONE; // that the cut puts there
    };
    // A triangle that two or three creases enter.
    struct Passage
    {
        std::array<int, 3> vertices = {}; // of the triangle
        // Of the edge from each vertex.
        std::array<int, 3> crossings = {HalfEdgeMesh::NONE, HalfEdgeMesh::NONE, HalfEdgeMesh::NONE};
        int number = 0;
    };

    CreaseCrossings(const HalfEdgeMesh& mesh_, const CreaseSides& sides_);

    void run();

    [[nodiscard]] std::vector<Crossing>& getCrossings() noexcept { return vCrossings; }
    [[nodiscard]] const std::vector<Crossing>& getCrossings() const noexcept { return vCrossings; }
    [[nodiscard]] const std::vector<Passage>& getPassages() const noexcept { return vPassages; }
    [[nodiscard]] int getVertex(int crossing) const
    {
        return vCrossings[static_cast<std::size_t>(crossing)].vertex;
    }

private:
    static constexpr int NONE = HalfEdgeMesh::NONE;

    void findCrossings();
    void findPassages();
    void dropShortChains();

    const HalfEdgeMesh& mesh;
    const CreaseSides& sides;
    std::vector<Crossing> vCrossings;
    std::vector<int> vCrossingOf; // of each half-edge
    std::vector<Passage> vPassages;
};

} // namespace TARN_ZEF

#endif
