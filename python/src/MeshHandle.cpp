#include "MeshHandle.h"

#include <chrono>
#include <optional>

#include "Call.h"

namespace TARN_PYTHON
{
namespace
{
using TARN_ZEF::Mesh;
using TARN_ZEF::Point3;

constexpr std::chrono::milliseconds LOOK_AROUND{20};

// finishSurface() leaves nothing of a triangle without area: so calls on an empty mesh refuse what they would refuse
// of any other.
std::shared_ptr<Mesh> makeEmptyMesh()
{
    TARN_ZEF::TriangleData flat;
    flat.vPoints = {Point3(0.0, 0.0, 0.0), Point3(1.0, 0.0, 0.0), Point3(2.0, 0.0, 0.0)};
    flat.vCorners = {0, 1, 2};
    return TARN_ZEF::finishSurface(*TARN_ZEF::makeMesh(flat));
}

SurfacePtr makeSurface(const Mesh& mesh)
{
    auto pSurface = std::make_shared<Surface>();
    std::vector<Point3*> vPoints;
    mesh.getVertexIndexData(vPoints, pSurface->vCorners);
    pSurface->vPoints.reserve(vPoints.size());
    for (const Point3* pPoint : vPoints)
        pSurface->vPoints.push_back(*pPoint);
    return pSurface;
}

std::shared_ptr<MeshHandle> makeHandle(const Surface& surface)
{
    TARN_ZEF::TriangleData data;
    data.vPoints = surface.vPoints;
    data.vCorners.assign(surface.vCorners.begin(), surface.vCorners.end());
    return std::make_shared<MeshHandle>(TARN_ZEF::makeMesh(data));
}

Call makePlainCall()
{
    return Call(py::none(), false, std::nullopt);
}
} // namespace

MeshHandle::MeshHandle(std::shared_ptr<Mesh> pMesh_)
    : pMesh(pMesh_ == nullptr ? makeEmptyMesh() : std::move(pMesh_))
{
}

MeshHandle::Lock MeshHandle::waitForMesh()
{
    Lock lock(mtx, std::defer_lock);
    while (!lock.try_lock_for(LOOK_AROUND))
        Call::checkCancelled();
    if (pMesh == nullptr)
        throw TARN_ZEF::ZefRefusedException("the mesh is lost: memory ran out while it was changed");
    return lock;
}

SurfacePtr MeshHandle::getSurface()
{
    const Lock lock = waitForMesh();
    if (pSurface == nullptr)
        pSurface = makeSurface(*pMesh);
    return pSurface;
}

void bindMeshHandle(py::module_& module)
{
    py::class_<MeshHandle, std::shared_ptr<MeshHandle>>(module, "Mesh", "The library's mesh.")
        .def(py::init([](const SurfacePtr& pSurface)
                      { return makePlainCall().run([&] { return makeHandle(*pSurface); }); }),
             py::arg("surface"))
        .def("surface",
             [](MeshHandle& handle) { return makePlainCall().run([&] { return handle.getSurface(); }); })
        .def("averageEdgeLength",
             [](MeshHandle& handle)
             {
                 return makePlainCall().run(
                     [&]
                     { return handle.read([](const Mesh& mesh) { return mesh.getAverageEdgeLength(); }); });
             });
}

} // namespace TARN_PYTHON
