// Points and triangles in PLY files.
#include "zef_files.h"

#include "core/cancel.h"
#include "core/definitions.h"
#include "files/plyOutput.h"

#include <tinyply.h>

#include <cstring>
#include <fstream>
#include <new>
#include <stdexcept>

namespace TARN_ZEF
{
namespace
{
using PlyDataPtr = std::shared_ptr<tinyply::PlyData>;

const char* const TAG = "readPly";

#ifdef ZEF_OWN_TINYPLY
constexpr std::uint32_t LIST_SIZE_HINT = 3;
#else
// The library takes the hint as a promise; 0 lets it count.
constexpr std::uint32_t LIST_SIZE_HINT = 0;
#endif

// Calls take(value) for each of the values.
template <class T, class Take>
void forEachValue(tinyply::PlyData& data, Take take)
{
    const std::uint8_t* pBytes = data.buffer.get();
    const std::size_t num = data.buffer.size_bytes() / sizeof(T);
    for (std::size_t i = 0; i < num; ++i)
    {
        checkCancelledAt(i);
        T value;
        std::memcpy(&value, pBytes + i * sizeof(T), sizeof(T));
        take(value);
    }
}

template <class T>
void appendCoordinates(tinyply::PlyData& data, std::vector<Point3>& vPoints)
{
    vPoints.reserve(vPoints.size() + data.count);
    double aXYZ[3];
    int axis = 0;
    forEachValue<T>(data,
                    [&](T value)
                    {
                        aXYZ[axis++] = static_cast<double>(value);
                        if (axis == 3)
                        {
                            vPoints.emplace_back(aXYZ[0], aXYZ[1], aXYZ[2]);
                            axis = 0;
                        }
                    });
}

// False if the coordinates are of a type that is not read.
[[nodiscard]] bool appendPoints(tinyply::PlyData& data, std::vector<Point3>& vPoints)
{
    switch (data.t)
    {
    case tinyply::Type::INT32:
        appendCoordinates<std::int32_t>(data, vPoints);
        return true;
    case tinyply::Type::FLOAT32:
        appendCoordinates<float>(data, vPoints);
        return true;
    case tinyply::Type::FLOAT64:
        appendCoordinates<double>(data, vPoints);
        return true;
    default:
        return false;
    }
}

// Negative indices become large ones, and thus fall out of range with them.
template <class T>
[[nodiscard]] std::vector<unsigned int> toIndices(tinyply::PlyData& data)
{
    std::vector<unsigned int> vIndices;
    vIndices.reserve(data.buffer.size_bytes() / sizeof(T));
    forEachValue<T>(data, [&vIndices](T value) { vIndices.push_back(static_cast<unsigned int>(value)); });
    return vIndices;
}

[[nodiscard]] std::vector<unsigned int> getIndices(tinyply::PlyData& data)
{
    switch (data.t)
    {
    case tinyply::Type::INT8:
        return toIndices<std::int8_t>(data);
    case tinyply::Type::UINT8:
        return toIndices<std::uint8_t>(data);
    case tinyply::Type::INT16:
        return toIndices<std::int16_t>(data);
    case tinyply::Type::UINT16:
        return toIndices<std::uint16_t>(data);
    case tinyply::Type::INT32:
        return toIndices<std::int32_t>(data);
    case tinyply::Type::UINT32:
        return toIndices<std::uint32_t>(data);
    default:
        throw std::runtime_error("the vertex indices of the faces are no integers");
    }
}

// The number of corners of each face; empty if all are triangles.
[[nodiscard]] std::vector<std::uint32_t> getCornerCounts(const tinyply::PlyData& data, std::size_t numIndices)
{
#ifdef ZEF_OWN_TINYPLY
    static_cast<void>(numIndices);
    return data.listCounts;
#else
    if (numIndices != 3 * data.count)
        throw std::runtime_error("a face is no triangle");
    return {};
#endif
}

// Appends the faces as triangles. A face of n corners gives a fan of n - 2 triangles about its first corner.
void appendTriangles(tinyply::PlyData& faces, const std::vector<Point3>& vVertices,
                     std::vector<Point3>& vCorners)
{
    if (!faces.isList)
        throw std::runtime_error("the vertex indices of the faces are no list");
    const std::vector<unsigned int> vIndices = getIndices(faces);
    for (std::size_t i = 0; i < vIndices.size(); ++i)
    {
        checkCancelledAt(i);
        if (vIndices[i] >= vVertices.size())
            throw std::runtime_error("entry " + std::to_string(i) + " of the faces names vertex " +
                                     std::to_string(vIndices[i]) + " of " + std::to_string(vVertices.size()));
    }

    const std::vector<std::uint32_t> vCounts = getCornerCounts(faces, vIndices.size());
    if (vCounts.empty())
    {
        vCorners.reserve(vIndices.size());
        for (const unsigned int index : vIndices)
            vCorners.push_back(vVertices[index]);
        return;
    }
    std::size_t first = 0;
    for (const std::uint32_t count : vCounts)
    {
        checkCancelledAt(first / 3);
        for (std::size_t i = 2; i < count; ++i)
        {
            vCorners.push_back(vVertices[vIndices[first]]);
            vCorners.push_back(vVertices[vIndices[first + i - 1]]);
            vCorners.push_back(vVertices[vIndices[first + i]]);
        }
        first += count;
    }
}

[[nodiscard]] PlyDataPtr requestFaces(tinyply::PlyFile& file)
{
    try
    {
        return file.request_properties_from_element("face", {"vertex_indices"}, LIST_SIZE_HINT);
    }
    catch (const std::bad_alloc&)
    {
        throw;
    }
    catch (const std::exception&)
    {
        try
        {
            // The other name in use.
            return file.request_properties_from_element("face", {"vertex_index"}, LIST_SIZE_HINT);
        }
        catch (const std::bad_alloc&)
        {
            throw;
        }
        catch (const std::exception&)
        {
        }
        throw;
    }
}

} // namespace

bool readPly(const char* filename, bool bPointsOnly, std::vector<Point3>& vPoints)
{
    std::ifstream stream(filename, std::ios::binary);
    if (!stream)
    {
        errorMessage(TAG, std::string("Failed to open ") + filename);
        return false;
    }
    stream.imbue(std::locale::classic());
    try
    {
        tinyply::PlyFile file;
        if (!file.parse_header(stream))
            throw std::runtime_error("the header is broken");
        const PlyDataPtr pVertices = file.request_properties_from_element("vertex", {"x", "y", "z"});
        const PlyDataPtr pFaces = bPointsOnly ? nullptr : requestFaces(file);
        file.read(stream);

        std::vector<Point3> vRead;
        if (!appendPoints(*pVertices, vRead))
        {
            errorMessage(TAG, std::string("unsupported type in ") + filename);
            return false;
        }
        if (!bPointsOnly)
        {
            std::vector<Point3> vCorners;
            appendTriangles(*pFaces, vRead, vCorners);
            vRead.swap(vCorners);
        }
        if (vPoints.empty())
            vPoints.swap(vRead);
        else
            vPoints.insert(vPoints.end(), vRead.begin(), vRead.end());
        return true;
    }
    catch (const std::bad_alloc&)
    {
        throw;
    }
    catch (const std::exception& e)
    {
        checkCancelled(); // which is no fault of the file
        errorMessage(TAG, std::string(filename) + " is unreadable, " + e.what());
        return false;
    }
}

bool writePointsPly(const std::string& filename, std::vector<Point3>& vPoints, bool bASCII)
{
    printText("writePointsPly, received " + std::to_string(vPoints.size()) + " points\n");
    try
    {
        const std::vector<float> vXYZ = packFloats(vPoints);
        tinyply::PlyFile file;
        file.add_properties_to_element("vertex", {"x", "y", "z"}, tinyply::Type::FLOAT32, vPoints.size(),
                                       reinterpret_cast<const std::uint8_t*>(vXYZ.data()),
                                       tinyply::Type::INVALID, 0);
        if (writePlyFile(file, filename, bASCII))
            return true;
        printErrorFailure("Can't write " + filename + "\n");
    }
    catch (const std::bad_alloc&)
    {
        throw;
    }
    catch (const std::exception& e)
    {
        checkCancelled(); // which is no fault of the file
        errorMessage("writePointsPly", filename + " can't be written, " + e.what());
    }
    return false;
}

} // namespace TARN_ZEF
