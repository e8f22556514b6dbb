// Whether a mesh is sound: what is wrong with it, how often, and where.
#ifndef ZEF_CHECKMESH_H
#define ZEF_CHECKMESH_H

#include "Point3.h"
#include "zef_export.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace TARN_ZEF
{
class Mesh;

// What can be wrong with a place of a mesh.
enum class MeshFaultKind
{
    NOT_FINITE,          // a triangle with a corner that has a NaN or infinite coordinate
    FLAT,                // a triangle whose corners lie exactly on one line, or coincide
    DUPLICATE,           // a triangle with the corners of an earlier one, in any order
    NON_MANIFOLD_EDGE,   // an edge of more than two triangles
    NON_MANIFOLD_VERTEX, // triangles around a vertex that no chain of common edges connects
    ORIENTATION,         // two triangles at an edge that face opposite sides
    INTERSECTION,        // two triangles that share what neighbours may not, see checkMesh()
    BORDER               // an edge of one triangle: no fault of a surface that is to be open
};

struct MeshFault
{
    MeshFaultKind kind = MeshFaultKind::FLAT;
    // Number of the triangle; its corners are the entries 3 * triangle and the next two.
    int triangle = -1;
    int otherTriangle = -1; // -1 where one triangle says all
    // NON_MANIFOLD_VERTEX: the vertex; edges: their middle; INTERSECTION: the middle of what the boxes around the
    // two triangles have in common; others: the centre of the triangle. Rounded.
    Point3 place;
};

struct CheckOptions
{
    // Places that are told of each kind. They are those first in the mesh: by the lowest triangles for NOT_FINITE,
    // FLAT, DUPLICATE and INTERSECTION, by the lowest vertex for the others.
    std::size_t maxPlaces = 10;
    // Whether vertices with equal coordinates count as one: for triangles that come each with corners of their
    // own. Intersections, flat and duplicate triangles are judged by coordinates in either case.
    bool bJoinEqualPoints = false;
    // Costs most of the time.
    bool bFindIntersections = true;
    // Ends the search for intersections after about so many pairs of triangles that lie close together; a usual
    // mesh has some 10 for each triangle. Only heaps of overlapping triangles reach it.
    std::uint64_t maxPairs = 500'000'000;
};

// What checkMesh() found. The queries sum up the counts.
struct MeshCheck
{
    std::size_t numVertices = 0;  // that triangles use; one for each point if equal points are joined
    std::size_t numTriangles = 0; // all
    std::size_t numEdges = 0;
    std::size_t numPieces = 0; // that share no vertex
    // Vertices minus edges plus triangles: 2 for a closed sphere, 0 for a torus. Triangles that name a vertex
    // twice are left out of it, as of all that is told about vertices and edges.
    std::int64_t eulerNumber = 0;

    std::size_t numNotFinite = 0;
    std::size_t numFlat = 0;
    std::size_t numDuplicates = 0;
    std::size_t numNonManifoldEdges = 0;
    std::size_t numNonManifoldVertices = 0;
    std::size_t numDisagreeingEdges = 0; // of two triangles that face opposite sides
    std::size_t numIntersections = 0;    // pairs of triangles
    // False if the search was not asked for, or ended at CheckOptions::maxPairs: numIntersections is then the
    // least number.
    bool bAllPairsJudged = false;

    std::size_t numBorderEdges = 0;
    std::size_t numBorderLoops = 0;
    double borderLength = 0.0; // in units of the points; edges with a corner that is not finite count 0
    double longestLoopLength = 0.0;
    std::size_t numLongestLoopEdges = 0; // of that loop

    // Up to CheckOptions::maxPlaces of each kind, kind after kind.
    std::vector<MeshFault> vFaults;

    // Whether each edge has at most two triangles.
    [[nodiscard]] bool isEdgeManifold() const noexcept { return numNonManifoldEdges == 0; }
    // Whether also the triangles around each vertex make one fan.
    [[nodiscard]] bool isManifold() const noexcept { return isEdgeManifold() && numNonManifoldVertices == 0; }
    [[nodiscard]] bool isOriented() const noexcept { return numDisagreeingEdges == 0; }
    [[nodiscard]] bool isClosed() const noexcept { return numBorderEdges == 0; }
    // Whether it is known that no triangles intersect.
    [[nodiscard]] bool isFreeOfIntersections() const noexcept
    {
        return bAllPairsJudged && numIntersections == 0;
    }
    // Whether all is as a surface should be. It may have a border.
    [[nodiscard]] bool isSound() const noexcept
    {
        return isManifold() && isOriented() && isFreeOfIntersections() && numNotFinite == 0 && numFlat == 0 &&
               numDuplicates == 0;
    }
};

// Judges a mesh. All decisions are exact for the coordinates as they are: no tolerance, no rounding.
//
// Two triangles intersect if they share a point that is neither a common corner nor on a common edge; corners are
// common if their coordinates are equal, whatever their vertices. So these intersect: triangles that cross or
// pierce each other, that overlap in one plane, also beside a common corner, that are folded onto each other at a
// common edge (an angle of exactly 0), and a corner or an edge that merely touches another triangle, on its edge
// too. Flat triangles, triangles that are not finite, and pairs of duplicates are left out: they count as what they
// are. One triangle that crosses three others makes three pairs.
//
// Returns    the same for every number of threads
// Throws     ZefBadArgument if the number of corners is no multiple of 3, or a corner is no index of a point
// Cost       well below a second for a million triangles, and some 70 bytes for each beyond the mesh
[[nodiscard]] ZEF_API MeshCheck checkMesh(const std::vector<Point3>& vPoints,
                                          const std::vector<int>& vTriangleCorners,
                                          const CheckOptions& options = CheckOptions());

// The same for a finished mesh. Triangles are numbered as Mesh::getTriangles() gives them.
[[nodiscard]] ZEF_API MeshCheck checkMesh(const Mesh& mesh, const CheckOptions& options = CheckOptions());

} // namespace TARN_ZEF

#endif
