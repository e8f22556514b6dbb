#ifndef ZEF_API_NEARMESH_H
#define ZEF_API_NEARMESH_H

#include "geometry/NearFrame.h"
#include "rmesh/RMesh.h"

namespace TARN_ZEF
{
// Keeps the vertices of a mesh in the frame near them for the time of a call: coordinates far from the origin have
// few digits left for what sums and products of them add.
//
// Ownership:  refers to the mesh, which must outlive it.
// Invariant:  whatever was not moved meanwhile is back to the last bit in the end.
class NearMesh
{
public:
    explicit NearMesh(RMesh& mesh_)
        : mesh(mesh_)
        , frame(NearFrame::around([this](const auto& f) { mesh.forEachVertex(f); }, mesh.getCellSize()))
    {
        if (frame.isShifted())
            mesh.placeVertices([this](const Point3& p) { return frame.enter(p); });
    }
    ~NearMesh()
    {
        if (frame.isShifted())
            mesh.placeVertices([this](const Point3& p) { return frame.leave(p); });
    }
    NearMesh(const NearMesh&) = delete;
    NearMesh& operator=(const NearMesh&) = delete;

private:
    RMesh& mesh;
    const NearFrame frame;
};

} // namespace TARN_ZEF

#endif
