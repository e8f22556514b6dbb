// What can be asked of a surface.
#include "bindings.h"

#include <vector>

#include "Call.h"
#include "arrays.h"
#include "figures.h"
#include "options.h"

namespace TARN_PYTHON
{
namespace
{
py::dict check(const Surface& surface, const py::dict& options, Call& call)
{
    const auto checkOptions = readOptions<TARN_ZEF::CheckOptions>(options);
    return toDict(
        call.run([&] { return TARN_ZEF::checkMesh(surface.vPoints, surface.vCorners, checkOptions); }));
}

py::list borderLoops(const Surface& surface, Call& call)
{
    py::list loops;
    for (const TARN_ZEF::BorderLoop& loop :
         call.run([&] { return TARN_ZEF::findBorderLoops(surface.vPoints, surface.vCorners); }))
        loops.append(toDict(loop));
    return loops;
}

py::dict compare(const Surface& first, const Surface& second, const py::dict& options, Call& call)
{
    const auto compareOptions = readOptions<TARN_ZEF::CompareOptions>(options);
    return toDict(call.run(
        [&]
        {
            return TARN_ZEF::compareMeshes(first.vPoints, first.vCorners, second.vPoints, second.vCorners,
                                           compareOptions);
        }));
}

py::array sourceIndices(const Surface& surface, const py::array& points, Call& call)
{
    const std::vector<TARN_ZEF::Point3> vCloud = toPoints(points);
    return fromLongInts(call.run([&] { return TARN_ZEF::findSourcePoints(surface.vPoints, vCloud); }));
}
} // namespace

void bindQueryCalls(py::module_& module)
{
    module.def("check", &check);
    module.def("border_loops", &borderLoops);
    module.def("compare", &compare);
    module.def("source_indices", &sourceIndices);
}

} // namespace TARN_PYTHON
