// Meshes to better meshes.
#include "bindings.h"

#include <memory>
#include <utility>
#include <vector>

#include "Call.h"
#include "MeshHandle.h"
#include "arrays.h"
#include "figures.h"
#include "options.h"

namespace TARN_PYTHON
{
namespace
{
using TARN_ZEF::BorderLoop;
using TARN_ZEF::Mesh;
using MeshPtr = std::shared_ptr<Mesh>;
using HandlePtr = std::shared_ptr<MeshHandle>;

py::tuple finish(MeshHandle& handle, const py::array& points, const py::dict& options, Call& call)
{
    const auto finishOptions = readOptions<TARN_ZEF::FinishOptions>(options);
    const std::vector<TARN_ZEF::Point3> vCloud = toPoints(points);
    TARN_ZEF::FinishReport report;
    const auto work = [&](const Mesh& mesh)
    { return TARN_ZEF::finishSurface(mesh, vCloud, finishOptions, &report); };
    HandlePtr pHandle = call.run([&] { return std::make_shared<MeshHandle>(handle.read(work)); });
    return py::make_tuple(std::move(pHandle), toDict(report));
}

void flips(MeshHandle& handle, Call& call)
{
    call.run([&] { handle.change([](const MeshPtr& pMesh) { TARN_ZEF::edgeFlips(pMesh); }); });
}

void anneal(MeshHandle& handle, Call& call)
{
    call.run([&] { handle.change([](const MeshPtr& pMesh) { TARN_ZEF::edgeFlipsSimA(pMesh); }); });
}

int reduce(MeshHandle& handle, double maxEdgeLength, double maxDevAngle, bool bKeepTopology, Call& call)
{
    const auto work = [=](const MeshPtr& pMesh)
    { return TARN_ZEF::reduce(pMesh, maxEdgeLength, maxDevAngle, bKeepTopology); };
    return call.run([&] { return handle.change(work); });
}

void smooth(MeshHandle& handle, int numIterations, Call& call)
{
    const auto work = [=](const MeshPtr& pMesh) { TARN_ZEF::laplacianSmoothing(pMesh, numIterations); };
    call.run([&] { handle.change(work); });
}

// Of a loop, fillHoles() looks at the vertices.
std::vector<BorderLoop> toLoops(const py::list& loops)
{
    std::vector<BorderLoop> vLoops;
    for (const py::handle& vertices : loops)
    {
        BorderLoop loop;
        loop.vVertices = toInts(py::cast<py::array_t<int, py::array::c_style>>(vertices));
        vLoops.push_back(std::move(loop));
    }
    return vLoops;
}

py::tuple fill(MeshHandle& handle, const py::list& loops, const py::dict& options, Call& call)
{
    const auto fillOptions = readOptions<TARN_ZEF::FillOptions>(options);
    const std::vector<BorderLoop> vChosen = toLoops(loops);
    std::vector<TARN_ZEF::FillResult> vResults;
    const auto work = [&](const Mesh& mesh)
    { return TARN_ZEF::fillHoles(mesh, vChosen, fillOptions, &vResults); };
    HandlePtr pHandle = call.run([&] { return std::make_shared<MeshHandle>(handle.read(work)); });
    py::list results;
    for (const TARN_ZEF::FillResult& result : vResults)
        results.append(toDict(result));
    return py::make_tuple(std::move(pHandle), results);
}
} // namespace

void bindMeshCalls(py::module_& module)
{
    module.def("finish", &finish);
    module.def("flips", &flips);
    module.def("anneal", &anneal);
    module.def("reduce", &reduce);
    module.def("smooth", &smooth);
    module.def("fill", &fill);
}

} // namespace TARN_PYTHON
