// The borders of a mesh in order, which of them are holes, and how to close those.
//
//     for (const BorderLoop& loop : findBorderLoops(*pMesh))
//         if (!loop.bRim && loop.length < 20.0 * edge)
//             vChosen.push_back(loop);
//     pMesh = fillHoles(*pMesh, vChosen);
#ifndef ZEF_MESHHOLES_H
#define ZEF_MESHHOLES_H

#include "Point3.h"
#include "zef_export.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace TARN_ZEF
{
class Mesh;

// A round of border edges: edges that only one triangle has.
struct BorderLoop
{
    // Indices of the points, in order around and each once; an edge leads from the last to the first. The first
    // triangle runs along them in this direction.
    std::vector<int> vVertices;
    double length = 0.0; // of all edges, in units of the points
    // Of what it encloses: the area of its shadow in the direction in which that is largest. Exact for a flat loop.
    double area = 0.0;
    // Whether it is where an open sheet ends; otherwise it is a hole in the surface.
    bool bRim = false;
    // False for a chain that ends where more than two triangles meet, and so leads round nothing. It has no area.
    bool bClosed = true;
    std::size_t piece = 0; // of the surface, connected over edges; numbered by their first triangles
    std::string reason;    // why it counts as a rim or as a hole
};

// The borders of a mesh, by their first triangle.
//
// A loop is a rim if what it encloses is at least a quarter of the area of its piece, and it runs the way that the
// border of the whole piece runs, as the outer border of a sheet does; the border of a hole in it runs the other way.
// So a flat sheet has one rim and holes in it, half a ball has a rim, a ball with a window of less than a third of
// its height a hole, and a short tube two rims. On a surface that cannot be oriented there is no way to run, and
// the areas alone decide.
//
// Two holes that touch in a point are two loops.
// Throws     ZefBadArgument if the number of corners is no multiple of 3, or a corner is no index of a point
// Cost       some tenths of a second for a million triangles
[[nodiscard]] ZEF_API std::vector<BorderLoop> findBorderLoops(const std::vector<Point3>& vPoints,
                                                              const std::vector<int>& vTriangleCorners);
// The same for a finished mesh; indices are those of Mesh::getVertexIndexData().
[[nodiscard]] ZEF_API std::vector<BorderLoop> findBorderLoops(const Mesh& mesh);

struct FillOptions
{
    // Whether fills get vertices of their own, so that their edges become as long as those around; if not, they
    // are triangles between the vertices of the loop alone.
    bool bRefine = true;
    // Whether these vertices move so that the fill goes on smoothly from the surface around it; if not, the fill is
    // as tight as a skin. Only with bRefine.
    bool bFair = true;
};

// What became of a loop.
struct FillResult
{
    bool bFilled = false;
    std::size_t numTriangles = 0; // new ones
    std::size_t numVertices = 0;  // new ones
    std::string reason;           // if it was left open
};

// Closes the chosen loops, each by triangles that bend as little as they can, and among those of least area.
//
// The new triangles face as those at the loop do. They never cut, touch or double others, nor are they flat: where
// a fill would, a tighter one is tried, and if that does as well the loop stays open. So what checkMesh() says of
// intersections, flat triangles, duplicates and edges is no worse than before.
//
// mesh       read, never changed. Its points keep their numbers, and its triangles come first
// vChosen    loops of this mesh, as findBorderLoops() gives them
// pResults   beside vChosen what became of them; may be null
// Returns    a new mesh of the caller's
// Throws     ZefBadArgument if a loop is none of this mesh
// Threads    runs on the caller's thread and the pool; the result is the same for every number of threads
[[nodiscard]] ZEF_API std::shared_ptr<Mesh> fillHoles(const Mesh& mesh,
                                                      const std::vector<BorderLoop>& vChosen,
                                                      const FillOptions& options = FillOptions(),
                                                      std::vector<FillResult>* pResults = nullptr);

} // namespace TARN_ZEF

#endif
