// The free functions of ZEF: reconstruction, mesh files, version. zef_files.h has those for files of points.
//
// All calls are synchronous and run on the caller's thread; inside, sorting and evaluation use a pool of
// worker threads. Different threads may call at the same time, each with its own data and meshes. Lengths
// are in the units of the points, angles in degrees.
//
// What the calls refuse:
//
//   input                                                      answer
//   ---------------------------------------------------------  -----------------------------------------------
//   no points, or no finite ones                               empty pointer, with warnings
//   points without two dimensions (all on one line)            empty pointer, or a mesh without triangles
//   spacing or factor not above 0, or infinite                 ZefBadArgument
//   reconstruct_auto or estimateAvgSpacing of one point,       ZefUnusablePoints
//     of identical points, or of points that cannot be told
//     apart on a lattice of 2^20 cells along their extent
//   coordinates too far apart for a double                     ZefUnusablePoints
//   spacing below about extent / 2^21                          ZefBadArgument
//   more than 2^31 - 1 points, or cells in use; melt or        ZefTooManyPoints
//     toCloud of an area of more than 2^31 - 1 cells
//   melt or toCloud of a number of corners that 3 does not     ZefBadArgument
//     divide
//   melt or toCloud of degenerate triangles only               empty pointer or no points, warnings
//   an empty mesh pointer, or a NaN argument, in               ZefBadArgument
//     post-processing, findHoles or writeMesh_auto
//   laplacianSmoothing with more than 10000 iterations         ZefBadArgument
//   findHoles                                                  ZefRefusedException
//   a file name shorter than an extension                      std::out_of_range
//
// All of these types but the last derive from ZefRefusedException, and that from ZefBugException. what() tells
// the user which value is wrong and what to do; the same words go to the receiver of messages (see
// zef_messages.h), and the failed condition is printed if there is none. A ZefBugException of no derived type
// is a fault of the library. Either way the library stays usable, meshes stay valid, and the thread's progress
// starts afresh with the next call. Running out of memory ends in std::bad_alloc: nothing leaks, and the next
// call works; a mesh in the middle of its post-processing may be half changed then, and is only good for its
// destructor.
//
// A host can stop the calls of a thread from another one: CancelToken.h. They end with ZefCancelledException.
//
// Points with a NaN or infinite coordinate are left out, with one warning that tells their number.
//
// Calls are independent: what a call returns does not depend on the calls before it, in this thread or another,
// on their scale, or on how they ended. setIndependentCalls() of zef_calls.h can change that.
#ifndef ZEF_ZEF_API_FUNCTIONS_H
#define ZEF_ZEF_API_FUNCTIONS_H

#include "Mesh.h"
#include "Point3.h"
#include "zef_export.h"
#include "zef_files.h"

#include <memory>
#include <string>
#include <vector>

namespace TARN_ZEF
{
// --- Reconstruction ---------------------------------------------------------------------------------------

// Turns a point cloud into a mesh; the spacing is detected from the points.
//
// vPoints        read, never changed
// bSmooth        whether the points are smoothed first, for noisy scans
// spacingFactor  factor on the detected mean spacing: 1.0 for even clouds, 1.25 to 1.5 for random ones
// Returns        the mesh, or an empty pointer if nothing could be built; test it
// Throws         as the table above tells
[[nodiscard]] ZEF_API std::shared_ptr<Mesh> reconstruct_auto(std::vector<Point3>& vPoints, bool bSmooth,
                                                             double spacingFactor);

// The same with a given spacing, in units of the points. It is the edge of the lattice cells: detail below
// it vanishes, gaps above it stay open.
[[nodiscard]] ZEF_API std::shared_ptr<Mesh> reconstruct_abs(std::vector<Point3>& vPoints, bool bSmooth,
                                                            double spacingAbs);

// Remeshes a triangle soup evenly.
//
// vTriCorners   three consecutive entries are one triangle; corners with equal coordinates are one vertex.
//               Read, never changed
// spacingAbs    wanted edge length, in units of the points
// featureAngle  dihedral angle in degrees above which an edge is kept sharp; 361.0 keeps none but borders
// Returns       the mesh, or an empty pointer if nothing could be built; test it
// Throws        as the table above tells
[[nodiscard]] ZEF_API std::shared_ptr<Mesh> melt(std::vector<Point3>& vTriCorners, double spacingAbs,
                                                 double featureAngle);

// Samples a triangle soup: one point for each lattice cell that it crosses. Arguments as for melt(); the
// points are appended to vResult.
ZEF_API void toCloud(std::vector<Point3>& vTriCorners, double spacingAbs, double featureAngle,
                     std::vector<Point3>& vResult);

// The mean spacing that reconstruct_auto would detect; -1.0 with a warning if there are no points.
[[nodiscard]] ZEF_API double estimateAvgSpacing(std::vector<Point3>& vPoints);

// --- Post-processing --------------------------------------------------------------------------------------
//
// Each call improves a finished mesh in place: vertices are moved or left out, none is added. It reports
// progress from 0 to 1 under its own name, or inside the tree of an outer call. An empty pointer or a NaN
// argument is refused before anything changes. Results are the same for every number of threads.
//
// The unit of the points does not matter: twice the lengths give twice the mesh.

// Thins a mesh by collapsing edges into one of their ends, the cheapest first: short edges in flat regions.
// Run edgeFlips() afterwards to even out the triangles.
//
// maxEdgeLength  the longest edge that may be collapsed, in units of the points; the aim of the reduction.
//                0.0 collapses nothing. The sign is ignored
// maxDevAngle    degrees by which a triangle may turn in one collapse; about 10 to 30. 0.0 allows
//                collapses in exactly flat regions only. Turns add up over collapses
// bKeepTopology  whether a collapse is also refused where it would close a tunnel of three edges, and so
//                let the surface touch itself; recommended. The call without it does not test this
// Returns        the number of triangles that died with their edges; the clean-up at the end may remove a
//                few more
// Borders keep their shape: only where a border is straight within 10 degrees can it lose a vertex.
// Cost           some seconds for a million triangles; memory of about 150 bytes an edge for the time of the
//                call
ZEF_API int reduce(std::shared_ptr<Mesh> pMesh, double maxEdgeLength, double maxDevAngle);
ZEF_API int reduce(std::shared_ptr<Mesh> pMesh, double maxEdgeLength, double maxDevAngle, bool bKeepTopology);

// Replaces diagonals of neighbouring triangles where that makes the surface smoother: rough edges that run
// across a feature turn along it. One pass; a second call can find a little more. No vertex moves but those
// that coincide, by a tenth of the spacing.
// Cost           about a second for a million triangles
ZEF_API void edgeFlips(std::shared_ptr<Mesh> pMesh);

// The same by simulated annealing: 29 passes at falling temperatures between two passes of edgeFlips(),
// some 50 times its time and with a little better result.
ZEF_API void edgeFlipsSimA(std::shared_ptr<Mesh> pMesh);

// Moves each vertex off the border to the mean of its neighbours, numIterations times, all vertices at once.
// Border vertices stay. Closed shapes shrink, and detail goes: 1 to 3 iterations are usual. Former
// neighbours of edges that were flipped or collapsed before pull along. numIterations of 0 or less only
// removes flat triangles; more than 10000 are refused.
// Cost           some tenths of a second for a million triangles and each iteration
ZEF_API void laplacianSmoothing(std::shared_ptr<Mesh> pMesh, int numIterations);

// --- Queries ----------------------------------------------------------------------------------------------

// Would write the border edges as a scene for a viewer. Debug scenes are switched off in this build, so the
// call is refused before anything is written.
ZEF_API void findHoles(std::shared_ptr<Mesh> pMesh);

ZEF_API void getVersion(int& major, int& minor);
// Prints "ZEF, version 1.11", by way of the receiver of messages.
ZEF_API void printVersion();
[[nodiscard]] ZEF_API bool isRelease();

// --- Mesh files ----------------------------------------------------------------------------------------

// By extension: STL, PLY or a Geomview scene; anything else is reported and written as PLY under the given
// name. Mind bASCII for PLY: true writes binary, false writes ASCII (see the crossed writers of Mesh).
[[nodiscard]] ZEF_API bool writeMesh_auto(const std::string& name, std::shared_ptr<Mesh> pMesh, bool bASCII);

} // namespace TARN_ZEF

#endif
