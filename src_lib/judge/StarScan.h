#ifndef ZEF_STARSCAN_H
#define ZEF_STARSCAN_H

#include "judge/FaultList.h"
#include "judge/JudgedMesh.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
// Looks at the triangles around one vertex after the other and adds up what it finds. An edge counts at its lower
// vertex.
class StarScan
{
public:
    using HalfEdges = std::pair<std::uint32_t, std::uint32_t>;

    // Forgets all found before.
    void reset(std::size_t maxPlaces);

    // pCorners: those at the vertex, in rising order. vVertices: the vertex of each corner.
    void lookAt(const JudgedMesh& mesh, const std::vector<int>& vVertices,
                const std::pair<std::uint32_t, std::uint32_t>* pCorners, std::size_t numCorners);

    std::size_t numVertices = 0;
    std::size_t numEdges = 0;
    std::size_t numNonManifoldEdges = 0;
    std::size_t numDisagreeingEdges = 0;
    std::size_t numNonManifoldVertices = 0;
    std::vector<std::uint32_t> vBorder; // half-edges without a partner
    std::vector<HalfEdges> vJoints;     // those that meet at a vertex and belong to one fan there
    FaultList faults;

private:
    // An edge from the vertex as one triangle has it.
    struct Spoke
    {
        int end;
        std::uint32_t halfEdge;
        std::uint32_t triangle; // number among those around the vertex
        bool bLeaves;           // whether the half-edge leads away from the vertex
    };

    void collectSpokes(const std::vector<int>& vVertices,
                       const std::pair<std::uint32_t, std::uint32_t>* pCorners, std::size_t numCorners);
    void judgeEdge(const JudgedMesh& mesh, const Spoke* pFirst, std::size_t num);
    void addEdgeFault(const JudgedMesh& mesh, MeshFaultKind kind, const Spoke* pFirst, std::size_t num);
    void uniteAcrossEdge(const Spoke* pFirst, std::size_t num);
    void joinBorder(const Spoke& spoke);
    void judgeFans(const JudgedMesh& mesh, const std::pair<std::uint32_t, std::uint32_t>* pCorners,
                   std::size_t numCorners);
    [[nodiscard]] std::uint32_t findRoot(std::uint32_t triangle);

    // Of the vertex in hand.
    std::vector<Spoke> vSpokes;              // sorted by end
    std::vector<std::uint32_t> vParent;      // of triangles in one fan
    std::vector<std::uint32_t> vBorderOfFan; // by root: a half-edge, or NONE
};

} // namespace TARN_ZEF

#endif
