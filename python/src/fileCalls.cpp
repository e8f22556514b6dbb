// Files of points and of triangles. Names of files come as bytes.
#include "bindings.h"

#include <string>
#include <utility>

#include "Call.h"
#include "arrays.h"
#include "errors.h"
#include "figures.h"
#include "options.h"

namespace TARN_PYTHON
{
namespace
{
using TARN_ZEF::PointData;
using TARN_ZEF::TriangleData;

// An attribute that is not there is None.
template <typename Entry, typename Make>
py::object optional(std::vector<Entry>& vEntries, Make make)
{
    return vEntries.empty() ? py::object(py::none()) : py::object(make(std::move(vEntries)));
}

// What all files tell.
template <typename Data>
py::dict describe(const Data& data)
{
    py::list notes;
    for (const std::string& note : data.vNotes)
        notes.append(toText(note));
    py::dict file;
    file["format"] = toText(data.format);
    file["numSkipped"] = data.numSkipped;
    file["notes"] = notes;
    return file;
}

py::dict readPoints(const std::string& path, const py::dict& options, Call& call)
{
    const auto fileOptions = readOptions<TARN_ZEF::ReadOptions>(options);
    PointData data = call.run([&] { return TARN_ZEF::readPoints(path, fileOptions); });
    py::dict file = describe(data);
    file["points"] = fromPoints(std::move(data.vPoints));
    file["normals"] = optional(data.vNormals, fromVectors);
    file["colors"] = optional(data.vColors, fromColors);
    file["intensities"] = optional(data.vIntensities, fromDoubles);
    return file;
}

py::dict readTriangles(const std::string& path, Call& call)
{
    TriangleData data = call.run([&] { return TARN_ZEF::readTriangles(path); });
    py::dict file = describe(data);
    auto pSurface = std::make_shared<Surface>();
    pSurface->vPoints = std::move(data.vPoints);
    pSurface->vCorners.assign(data.vCorners.begin(), data.vCorners.end());
    file["surface"] = pSurface;
    file["colors"] = optional(data.vColors, fromColors);
    return file;
}

template <typename Values, typename Make>
void setIfGiven(Values& vValues, const py::object& given, Make make)
{
    if (!given.is_none())
        vValues = make(given);
}

// attributes: normals, colors, intensities; each an array or None
void writePoints(const std::string& path, const py::array& points, const py::object& normals,
                 const py::object& colors, const py::object& intensities, const py::dict& options, Call& call)
{
    const auto writeOptions = readOptions<TARN_ZEF::WriteOptions>(options);
    PointData data;
    data.vPoints = toPoints(points);
    setIfGiven(data.vNormals, normals, toVectors);
    setIfGiven(data.vColors, colors, toColors);
    setIfGiven(data.vIntensities, intensities, toDoubles);
    call.run([&] { TARN_ZEF::writePoints(path, data, writeOptions); });
}

void writeTriangles(const std::string& path, const Surface& surface, const py::object& colors,
                    const py::dict& options, Call& call)
{
    const auto writeOptions = readOptions<TARN_ZEF::WriteOptions>(options);
    TriangleData data;
    setIfGiven(data.vColors, colors, toColors);
    call.run(
        [&]
        {
            data.vPoints = surface.vPoints;
            data.vCorners.assign(surface.vCorners.begin(), surface.vCorners.end());
            TARN_ZEF::writeTriangles(path, data, writeOptions);
        });
}
} // namespace

void bindFileCalls(py::module_& module)
{
    module.def("read_points", &readPoints);
    module.def("read_triangles", &readTriangles);
    module.def("write_points", &writePoints);
    module.def("write_triangles", &writeTriangles);
    module.def("holds_triangles", &TARN_ZEF::holdsTriangles);
    module.def("format_use", [](const std::string& path) { return toDict(TARN_ZEF::getFormatUse(path)); });
}

} // namespace TARN_PYTHON
