#include "arrays.h"

#include <cstring>
#include <string>
#include <utility>

namespace TARN_PYTHON
{
namespace
{
using TARN_ZEF::Point3;
using TARN_ZEF::PointColor;
using TARN_ZEF::Vector3;

constexpr py::ssize_t NUM_AXES = 3;

// What is copied as a row of three doubles.
static_assert(sizeof(Point3) == NUM_AXES * sizeof(double));
static_assert(sizeof(Vector3) == NUM_AXES * sizeof(double));
static_assert(sizeof(PointColor) == NUM_AXES);

void requireRows(const py::array& array)
{
    if (array.ndim() != 2 || array.shape(1) != NUM_AXES)
        throw py::value_error("an array of shape (n, 3) is wanted");
}

// The memory of an array of three columns; good while the array lives.
struct Rows
{
    explicit Rows(const py::array& array)
        : pData(static_cast<const char*>(array.data()))
        , num(static_cast<std::size_t>(array.shape(0)))
        , rowStride(array.strides(0))
        , columnStride(array.strides(1))
    {
    }

    // memcpy, since an element may stand at any address.
    template <typename T>
    [[nodiscard]] double get(std::size_t row, py::ssize_t column) const
    {
        T value;
        std::memcpy(&value, pData + static_cast<py::ssize_t>(row) * rowStride + column * columnStride,
                    sizeof(T));
        return static_cast<double>(value);
    }

    [[nodiscard]] bool areDense(std::size_t elementSize) const
    {
        const auto size = static_cast<py::ssize_t>(elementSize);
        return columnStride == size && rowStride == NUM_AXES * size;
    }

    const char* pData;
    std::size_t num;
    py::ssize_t rowStride;
    py::ssize_t columnStride;
};

template <typename T, typename Row>
void copyRows(const Rows& rows, std::vector<Row>& vRows)
{
    for (std::size_t i = 0; i < rows.num; ++i)
        vRows.emplace_back(rows.get<T>(i, 0), rows.get<T>(i, 1), rows.get<T>(i, 2));
}

template <typename Row>
std::vector<Row> toRows(const py::array& array)
{
    requireRows(array);
    const bool bDouble = py::isinstance<py::array_t<double>>(array);
    if (!bDouble && !py::isinstance<py::array_t<float>>(array))
        throw py::type_error("an array of float64 or float32 is wanted");
    const Rows rows(array);
    const py::gil_scoped_release release;
    std::vector<Row> vRows;
    if (bDouble && rows.areDense(sizeof(double)))
    {
        vRows.resize(rows.num);
        if (rows.num > 0)
            std::memcpy(static_cast<void*>(vRows.data()), rows.pData, rows.num * sizeof(Row));
        return vRows;
    }
    vRows.reserve(rows.num);
    if (bDouble)
        copyRows<double>(rows, vRows);
    else
        copyRows<float>(rows, vRows);
    return vRows;
}

template <typename T>
std::vector<T> toValues(const py::array_t<T, py::array::c_style>& array)
{
    const T* const pData = array.data();
    return std::vector<T>(pData, pData + array.size());
}

// An array of that shape on memory that the owner holds.
template <typename Element>
py::array makeArray(std::vector<py::ssize_t> shape, const void* pData, const py::object& owner)
{
    return py::array(py::dtype::of<Element>(), std::move(shape), {}, pData, owner);
}

// Hands the vector over to an array of the elements that its entries are made of.
template <typename Element, typename Entry>
py::array own(std::vector<Entry> vEntries)
{
    const auto num = static_cast<py::ssize_t>(vEntries.size());
    auto pOwned = std::make_unique<std::vector<Entry>>(std::move(vEntries));
    const py::capsule owner(pOwned.get(),
                            [](void* pVector) { delete static_cast<std::vector<Entry>*>(pVector); });
    const void* const pData = pOwned.release()->data();
    std::vector<py::ssize_t> shape = {num};
    if constexpr (sizeof(Entry) > sizeof(Element))
        shape.push_back(NUM_AXES);
    return makeArray<Element>(std::move(shape), pData, owner);
}

// numpy asks the owner before it lets anybody lift the ban.
py::array forbidWriting(py::array array)
{
    array.attr("setflags")(py::arg("write") = false);
    return array;
}
} // namespace

std::vector<Point3> toPoints(const py::array& array)
{
    return toRows<Point3>(array);
}

std::vector<Vector3> toVectors(const py::array& array)
{
    return toRows<Vector3>(array);
}

std::vector<PointColor> toColors(const py::array_t<std::uint8_t>& array)
{
    requireRows(array);
    const auto values = array.unchecked<2>();
    std::vector<PointColor> vColors;
    vColors.reserve(static_cast<std::size_t>(values.shape(0)));
    for (py::ssize_t i = 0; i < values.shape(0); ++i)
        vColors.push_back({values(i, 0), values(i, 1), values(i, 2)});
    return vColors;
}

std::vector<int> toInts(const py::array_t<int, py::array::c_style>& array)
{
    return toValues<int>(array);
}

std::vector<double> toDoubles(const py::array_t<double, py::array::c_style>& array)
{
    return toValues<double>(array);
}

py::array fromPoints(std::vector<Point3> vPoints)
{
    return own<double>(std::move(vPoints));
}

py::array fromVectors(std::vector<Vector3> vVectors)
{
    return own<double>(std::move(vVectors));
}

py::array fromColors(std::vector<PointColor> vColors)
{
    return own<std::uint8_t>(std::move(vColors));
}

py::array fromInts(std::vector<int> vInts)
{
    return own<int>(std::move(vInts));
}

py::array fromLongInts(std::vector<std::int64_t> vInts)
{
    return own<std::int64_t>(std::move(vInts));
}

py::array fromDoubles(std::vector<double> vDoubles)
{
    return own<double>(std::move(vDoubles));
}

py::array viewPoints(const SurfacePtr& pSurface)
{
    const auto num = static_cast<py::ssize_t>(pSurface->vPoints.size());
    return forbidWriting(makeArray<double>({num, NUM_AXES}, pSurface->vPoints.data(), py::cast(pSurface)));
}

py::array viewTriangles(const SurfacePtr& pSurface)
{
    const auto num = static_cast<py::ssize_t>(pSurface->vCorners.size()) / NUM_AXES;
    return forbidWriting(makeArray<int>({num, NUM_AXES}, pSurface->vCorners.data(), py::cast(pSurface)));
}

py::tuple toTuple(const Point3& point)
{
    return py::make_tuple(point.x(), point.y(), point.z());
}

void bindArrays(py::module_& module)
{
    py::class_<Surface, SurfacePtr>(module, "Surface", "Points and triangles that do not change.")
        .def(py::init(
                 [](const py::array& vertices, const py::array_t<int, py::array::c_style>& triangles) {
                     return std::make_shared<Surface>(Surface{toPoints(vertices), toInts(triangles)});
                 }),
             py::arg("vertices"), py::arg("triangles"))
        .def_property_readonly("vertices", &viewPoints)
        .def_property_readonly("triangles", &viewTriangles);
}

} // namespace TARN_PYTHON
