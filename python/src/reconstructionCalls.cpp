// Points or triangles to meshes.
#include "bindings.h"

#include <map>
#include <string>
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
using TARN_ZEF::Point3;
using HandlePtr = std::shared_ptr<MeshHandle>;

const std::map<std::string, TARN_ZEF::ForecastCall> FORECAST_CALLS = {
    {"RECONSTRUCT_AUTO", TARN_ZEF::ForecastCall::RECONSTRUCT_AUTO},
    {"RECONSTRUCT_AUTO_SMOOTHED", TARN_ZEF::ForecastCall::RECONSTRUCT_AUTO_SMOOTHED},
    {"RECONSTRUCT_ABS", TARN_ZEF::ForecastCall::RECONSTRUCT_ABS},
    {"RECONSTRUCT_ABS_SMOOTHED", TARN_ZEF::ForecastCall::RECONSTRUCT_ABS_SMOOTHED},
    {"MELT", TARN_ZEF::ForecastCall::MELT},
    {"TO_CLOUD", TARN_ZEF::ForecastCall::TO_CLOUD},
};

HandlePtr hold(std::shared_ptr<TARN_ZEF::Mesh> pMesh)
{
    return std::make_shared<MeshHandle>(std::move(pMesh));
}

HandlePtr reconstructAuto(const py::array& points, bool bSmooth, double spacingFactor, Call& call)
{
    std::vector<Point3> vPoints = toPoints(points);
    return call.run([&] { return hold(TARN_ZEF::reconstruct_auto(vPoints, bSmooth, spacingFactor)); });
}

HandlePtr reconstructAbs(const py::array& points, bool bSmooth, double spacingAbs, Call& call)
{
    std::vector<Point3> vPoints = toPoints(points);
    return call.run([&] { return hold(TARN_ZEF::reconstruct_abs(vPoints, bSmooth, spacingAbs)); });
}

py::tuple autoReconstruct(const py::array& points, const py::dict& options, Call& call)
{
    const auto autoOptions = readOptions<TARN_ZEF::AutoOptions>(options);
    std::vector<Point3> vPoints = toPoints(points);
    TARN_ZEF::AutoReport report;
    HandlePtr pHandle =
        call.run([&] { return hold(TARN_ZEF::autoReconstruct(vPoints, autoOptions, &report)); });
    return py::make_tuple(std::move(pHandle), toDict(report));
}

HandlePtr melt(const py::array& corners, double spacingAbs, double featureAngle, Call& call)
{
    std::vector<Point3> vCorners = toPoints(corners);
    return call.run([&] { return hold(TARN_ZEF::melt(vCorners, spacingAbs, featureAngle)); });
}

py::array toCloud(const py::array& corners, double spacingAbs, double featureAngle, Call& call)
{
    std::vector<Point3> vCorners = toPoints(corners);
    std::vector<Point3> vCloud;
    call.run([&] { TARN_ZEF::toCloud(vCorners, spacingAbs, featureAngle, vCloud); });
    return fromPoints(std::move(vCloud));
}

py::tuple remesh(const py::array& corners, const py::dict& options, Call& call)
{
    const auto remeshOptions = readOptions<TARN_ZEF::RemeshOptions>(options);
    const std::vector<Point3> vCorners = toPoints(corners);
    TARN_ZEF::RemeshReport report;
    HandlePtr pHandle = call.run([&] { return hold(TARN_ZEF::remesh(vCorners, remeshOptions, &report)); });
    return py::make_tuple(std::move(pHandle), toDict(report));
}

double spacing(const py::array& points, Call& call)
{
    std::vector<Point3> vPoints = toPoints(points);
    return call.run([&] { return TARN_ZEF::estimateAvgSpacing(vPoints); });
}

// what: a name of ForecastCall
std::size_t forecast(const py::array& points, double spacing, const std::string& what, Call& call)
{
    const TARN_ZEF::ForecastCall forecastCall = FORECAST_CALLS.at(what);
    const std::vector<Point3> vPoints = toPoints(points);
    return call.run([&] { return TARN_ZEF::estimateMemory(vPoints, spacing, forecastCall); });
}

py::array sampleSurface(std::size_t num, unsigned int seed)
{
    std::vector<Point3> vPoints;
    TARN_ZEF::generateSampleSurface(num, seed, vPoints);
    return fromPoints(std::move(vPoints));
}
} // namespace

void bindReconstructionCalls(py::module_& module)
{
    module.def("reconstruct_auto", &reconstructAuto);
    module.def("reconstruct_abs", &reconstructAbs);
    module.def("auto_reconstruct", &autoReconstruct);
    module.def("melt", &melt);
    module.def("to_cloud", &toCloud);
    module.def("remesh", &remesh);
    module.def("spacing", &spacing);
    module.def("forecast", &forecast);
    module.def("sample_surface", &sampleSurface);
}

} // namespace TARN_PYTHON
