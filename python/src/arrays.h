// Between arrays of numpy and the library's vectors.
#ifndef ZEF_PYTHON_ARRAYS_H
#define ZEF_PYTHON_ARRAYS_H

#include <pybind11/numpy.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "zef.h"

namespace TARN_PYTHON
{
namespace py = pybind11;

// Points and triangles as plain arrays: what a view of numpy looks at.
//
// Invariant:  never changed once a view or another thread has it.
struct Surface
{
    std::vector<TARN_ZEF::Point3> vPoints;
    std::vector<int> vCorners; // indices into vPoints; three consecutive entries are one triangle
};
using SurfacePtr = std::shared_ptr<Surface>;

// One copy, straight from float64 or float32 of any strides and any alignment; the lock is released meanwhile.
// Throws  ValueError unless the array is (n, columns); the package has made it so
[[nodiscard]] std::vector<TARN_ZEF::Point3> toPoints(const py::array& array);
[[nodiscard]] std::vector<TARN_ZEF::Vector3> toVectors(const py::array& array);
[[nodiscard]] std::vector<TARN_ZEF::PointColor> toColors(const py::array_t<std::uint8_t>& array);
// Of int32 or float64, of shape (m, 3) or (m,), row by row.
[[nodiscard]] std::vector<int> toInts(const py::array_t<int, py::array::c_style>& array);
[[nodiscard]] std::vector<double> toDoubles(const py::array_t<double, py::array::c_style>& array);

// Arrays that own the vector: no copy.
[[nodiscard]] py::array fromPoints(std::vector<TARN_ZEF::Point3> vPoints);
[[nodiscard]] py::array fromVectors(std::vector<TARN_ZEF::Vector3> vVectors);
[[nodiscard]] py::array fromColors(std::vector<TARN_ZEF::PointColor> vColors);
[[nodiscard]] py::array fromInts(std::vector<int> vInts);
[[nodiscard]] py::array fromLongInts(std::vector<std::int64_t> vInts);
[[nodiscard]] py::array fromDoubles(std::vector<double> vDoubles);

// Views of (n, 3) on the surface's memory, which lives as long as they do. They cannot be written to.
[[nodiscard]] py::array viewPoints(const SurfacePtr& pSurface);
[[nodiscard]] py::array viewTriangles(const SurfacePtr& pSurface);

// (x, y, z)
[[nodiscard]] py::tuple toTuple(const TARN_ZEF::Point3& point);

void bindArrays(py::module_& module);

} // namespace TARN_PYTHON

#endif
