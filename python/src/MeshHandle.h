#ifndef ZEF_PYTHON_MESHHANDLE_H
#define ZEF_PYTHON_MESHHANDLE_H

#include <memory>
#include <mutex>
#include <new>
#include <utility>

#include "arrays.h"
#include "zef.h"

namespace TARN_PYTHON
{
// A finished mesh that several threads of Python may hold.
//
// The library's mesh belongs to one thread at a time, so calls on one mesh queue up here. What views look at is a
// plain copy of it, the surface, which a change of the mesh replaces and never touches.
//
// Ownership:  shares the library's mesh with nobody.
// Threads:    all members on the thread of a Call; they wait for calls on the same mesh, and end if theirs is cancelled.
class MeshHandle
{
public:
    // Null, which the library returns if nothing could be built, is a mesh without triangles.
    explicit MeshHandle(std::shared_ptr<TARN_ZEF::Mesh> pMesh_);
    MeshHandle(const MeshHandle&) = delete;
    MeshHandle& operator=(const MeshHandle&) = delete;

    // work(mesh) on the mesh, which it does not change.
    template <typename Work>
    auto read(Work work)
    {
        const Lock lock = waitForMesh();
        return work(std::as_const(*pMesh));
    }

    // work(pMesh) changes the mesh in place. If memory runs out meanwhile, the mesh is lost.
    template <typename Work>
    auto change(Work work)
    {
        const Lock lock = waitForMesh();
        const OutOfDate outOfDate{pSurface};
        try
        {
            return work(pMesh);
        }
        catch (const std::bad_alloc&)
        {
            pMesh.reset();
            throw;
        }
    }

    [[nodiscard]] SurfacePtr getSurface();

private:
    using Lock = std::unique_lock<std::timed_mutex>;

    // However a change ends, the surface is that of before.
    struct OutOfDate
    {
        SurfacePtr& pSurface;
        ~OutOfDate() { pSurface.reset(); }
    };

    [[nodiscard]] Lock waitForMesh();

    std::timed_mutex mtx;                  // over all below
    std::shared_ptr<TARN_ZEF::Mesh> pMesh; // null once it is lost
    SurfacePtr pSurface;                   // null until wanted
};

void bindMeshHandle(py::module_& module);

} // namespace TARN_PYTHON

#endif
