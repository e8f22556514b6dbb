// Finished meshes of all kinds for the calls that improve them, and what must hold after each call.
#ifndef ZEF_TESTS_FINISHEDMESHES_H
#define ZEF_TESTS_FINISHEDMESHES_H

#include "Mesh.h"
#include "core/Progress.h"
#include "helpers/checkMesh.h"
#include "rmesh/RMesh.h"

#include <memory>
#include <random>
#include <string>
#include <vector>

namespace TARN_ZEF
{
struct PreparedTree
{
    PreparedTree() { prepareProgress("Reconstruct"); }
    ~PreparedTree() { finishProgress(); }
};

struct FinishedMesh
{
    std::string name;
    RMeshSource source;
};

// Both, b shifted.
[[nodiscard]] RMeshSource merged(RMeshSource a, const RMeshSource& b, const Vector3& shift);

// Each coordinate moves by up to amplitude.
[[nodiscard]] RMeshSource jittered(RMeshSource source, double amplitude, unsigned int seed);

// A ball, a torus, a cube, a flat and a rough plane with border, a plane with a fin, two pieces, nothing.
[[nodiscard]] std::vector<FinishedMesh> finishedMeshes();

// As a reconstruction leaves it.
[[nodiscard]] std::shared_ptr<Mesh> makeFinished(const RMeshSource& source);

// What a call must not change.
struct Topology
{
    explicit Topology(const RMesh& mesh);
    std::size_t numBorderLoops;
    bool bFacesOutward; // by volume; by the sum of area vectors along z where there is a border
};

// Consistent, no duplicate triangle, orientations agree, and topology as before.
void expectSound(const RMesh& mesh, const Topology& before);

// Corners of all alive triangles of a Mesh or RMesh, in their order.
template <typename M>
[[nodiscard]] std::vector<Point3> getCorners(const M& mesh)
{
    std::vector<Point3*> vCorners;
    mesh.getTriangles(vCorners);
    std::vector<Point3> v;
    for (const Point3* p : vCorners)
        v.push_back(*p);
    return v;
}
// Sum of ((1 - cos) * length)^0.335 over the edges of degree 2, with normals made anew.
[[nodiscard]] double getEnergySum(const RMesh& mesh);
[[nodiscard]] std::size_t countBorderLoops(const RMesh& mesh);
[[nodiscard]] long getEulerNumber(const RMesh& mesh);

} // namespace TARN_ZEF

#endif
