#ifndef ZEF_CONNECTIONJUDGE_H
#define ZEF_CONNECTIONJUDGE_H

#include "judge/FaultList.h"
#include "judge/JudgedMesh.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
// Counts what can be told from the numbers of vertices alone: edges by their triangles, fans around vertices, borders,
// pieces. Vertex by vertex, each with the triangles around it.
//
// Threads:    works on the pool; the result is the same for every number of threads.
// Cost        some 70 bytes a triangle while it runs.
class ConnectionJudge
{
public:
    // vVertices: the vertex of each corner. Keeps references.
    ConnectionJudge(const JudgedMesh& mesh_, const std::vector<int>& vVertices_);

    // Call once. Fills in what is about edges, vertices, borders and pieces; up to maxPlaces of a kind are added to faults.
    // Vertices are below numPoints.
    void run(std::size_t numPoints, std::size_t maxPlaces, MeshCheck& check, FaultList& faults);

private:
    using Corner = std::pair<std::uint32_t, std::uint32_t>; // vertex, corner

    [[nodiscard]] bool isProper(std::size_t triangle) const;
    void sortCorners();
    void scanVertices(std::size_t maxPlaces, MeshCheck& check, FaultList& faults);
    [[nodiscard]] std::size_t countPieces(std::size_t numPoints, std::size_t numVertices) const;

    const JudgedMesh& mesh;
    const std::vector<int>& vVertices;
    std::vector<Corner> vCorners; // of proper triangles, sorted
    std::vector<std::uint32_t> vBorder;
    std::vector<std::pair<std::uint32_t, std::uint32_t>> vJoints; // of half-edges in vBorder
};

} // namespace TARN_ZEF

#endif
