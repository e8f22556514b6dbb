// PLY, in text and in both byte orders. Properties beyond coordinates, normals, colors and intensity are passed over.
#include "core/cancel.h"
#include "files/plyOutput.h"
#include "formats/Format.h"
#include "formats/coordinateForm.h"
#include "formats/polygons.h"

#include <tinyply.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>

namespace TARN_ZEF
{
namespace
{
using PlyDataPtr = std::shared_ptr<tinyply::PlyData>;

int sniffPly(std::string_view head, u64)
{
    return head.starts_with("ply") && head.size() > 3 &&
                   (head[3] == '\n' || head[3] == '\r' || head[3] == ' ')
               ? 2
               : 0;
}

// Calls take(T()) with the type of the values.
template <class Take>
void dispatch(tinyply::Type type, Take take)
{
    switch (type)
    {
    case tinyply::Type::INT8: // NOLINT(bugprone-branch-clone): the branches differ in type
        return take(std::int8_t());
    case tinyply::Type::UINT8:
        return take(std::uint8_t());
    case tinyply::Type::INT16:
        return take(std::int16_t());
    case tinyply::Type::UINT16:
        return take(std::uint16_t());
    case tinyply::Type::INT32:
        return take(std::int32_t());
    case tinyply::Type::UINT32:
        return take(std::uint32_t());
    case tinyply::Type::FLOAT32:
        return take(float());
    case tinyply::Type::FLOAT64:
        return take(double());
    default:
        throw FileError("a property is of no known type; get the file anew");
    }
}

// Value number i of the buffer, which may stand at any address.
template <class T>
[[nodiscard]] T valueAt(const std::uint8_t* pBytes, std::size_t i) noexcept
{
    T value;
    std::memcpy(&value, pBytes + i * sizeof(T), sizeof(T));
    return value;
}

// Const buffers have no get() in every tinyply.
[[nodiscard]] const std::uint8_t* bytesOf(const tinyply::PlyData& data)
{
    return const_cast<tinyply::PlyData&>(data).buffer.get();
}

template <class To>
[[nodiscard]] std::vector<To> toValues(const tinyply::PlyData& data)
{
    const std::uint8_t* pBytes = bytesOf(data);
    std::vector<To> vValues;
    dispatch(data.t,
             [&]<class T>(T)
             {
                 const std::size_t num = data.buffer.size_bytes() / sizeof(T);
                 vValues.reserve(num);
                 for (std::size_t i = 0; i < num; ++i)
                 {
                     checkCancelledAt(i);
                     vValues.push_back(static_cast<To>(valueAt<T>(pBytes, i)));
                 }
             });
    return vValues;
}

#ifdef ZEF_OWN_TINYPLY
// What lists without counts of their own have; see cornersOf().
constexpr std::uint32_t USUAL_CORNERS = 3;
#else
// The library takes the hint as a promise; 0 lets it count.
constexpr std::uint32_t USUAL_CORNERS = 0;
#endif

// Null if the element has no such properties.
[[nodiscard]] PlyDataPtr requestIfThere(tinyply::PlyFile& ply, const char* element,
                                        const std::vector<std::string>& vNames,
                                        std::uint32_t listSizeHint = 0)
{
    try
    {
        return ply.request_properties_from_element(element, vNames, listSizeHint);
    }
    catch (const std::invalid_argument&)
    {
        return nullptr;
    }
}

[[nodiscard]] std::vector<Point3> toPoints(const tinyply::PlyData& data)
{
    const std::uint8_t* pBytes = bytesOf(data);
    std::vector<Point3> vPoints;
    dispatch(data.t,
             [&]<class T>(T)
             {
                 const std::size_t num = data.buffer.size_bytes() / (3 * sizeof(T));
                 const auto coordinate = [pBytes](std::size_t i)
                 { return static_cast<double>(valueAt<T>(pBytes, i)); };
                 vPoints.reserve(num);
                 for (std::size_t i = 0; i < num; ++i)
                 {
                     checkCancelledAt(i);
                     vPoints.emplace_back(coordinate(3 * i), coordinate(3 * i + 1), coordinate(3 * i + 2));
                 }
             });
    return vPoints;
}

// Floats are shares of 1.
[[nodiscard]] std::vector<PointColor> toColors(const tinyply::PlyData& data)
{
    const bool bShares = data.t == tinyply::Type::FLOAT32 || data.t == tinyply::Type::FLOAT64;
    const bool bWide = data.t == tinyply::Type::UINT16;
    const std::vector<double> vRGB = toValues<double>(data);
    const auto toByte = [&](double value)
    {
        const double scaled = bShares ? 255.0 * value + 0.5 : bWide ? value / 257.0 : value;
        return static_cast<std::uint8_t>(std::isfinite(scaled) ? std::clamp(scaled, 0.0, 255.0) : 0.0);
    };
    std::vector<PointColor> vColors;
    vColors.reserve(vRGB.size() / 3);
    for (std::size_t i = 0; i + 2 < vRGB.size(); i += 3)
        vColors.push_back({toByte(vRGB[i]), toByte(vRGB[i + 1]), toByte(vRGB[i + 2])});
    return vColors;
}

// The properties of the vertices that a caller may want.
struct VertexRequests
{
    PlyDataPtr pXYZ;
    PlyDataPtr pNormals;
    PlyDataPtr pColors;
    PlyDataPtr pIntensity;

    VertexRequests(tinyply::PlyFile& ply, bool bAll)
        : pXYZ(ply.request_properties_from_element("vertex", {"x", "y", "z"}))
        , pColors(requestIfThere(ply, "vertex", {"red", "green", "blue"}))
    {
        if (!bAll)
            return;
        pNormals = requestIfThere(ply, "vertex", {"nx", "ny", "nz"});
        for (const char* name : {"intensity", "scalar_Intensity", "scalar_intensity"})
            pIntensity = pIntensity ? pIntensity : requestIfThere(ply, "vertex", {name});
    }
};

void parseHeader(tinyply::PlyFile& ply, InputFile& file)
{
    if (!ply.parse_header(file.getStream()))
        throw FileError("the header is broken; check that the file is a PLY");
}

// Puts every error of the reader of PLY into our own; a full memory passes.
template <class Read>
void guarded(Read read)
{
    try
    {
        read();
    }
    catch (const FileError&)
    {
        throw;
    }
    catch (const std::bad_alloc&)
    {
        throw;
    }
    catch (const std::exception& e)
    {
        throw FileError(std::string(e.what()) + "; check that the file is a whole PLY, or get it anew");
    }
}

void readPlyPoints(InputFile& file, const ReadOptions&, PointData& data)
{
    guarded(
        [&]
        {
            tinyply::PlyFile ply;
            parseHeader(ply, file);
            const VertexRequests requests(ply, true);
            ply.read(file.getStream());
            data.vPoints = toPoints(*requests.pXYZ);
            if (requests.pNormals)
            {
                const std::vector<Point3> vNormals = toPoints(*requests.pNormals);
                for (const Point3& n : vNormals)
                    data.vNormals.emplace_back(n.x(), n.y(), n.z());
            }
            if (requests.pColors)
                data.vColors = toColors(*requests.pColors);
            if (requests.pIntensity)
                data.vIntensities = toValues<double>(*requests.pIntensity);
        });
}

[[nodiscard]] PlyDataPtr requestFaces(tinyply::PlyFile& ply)
{
    for (const char* name : {"vertex_indices", "vertex_index"})
    {
        if (PlyDataPtr pFaces = requestIfThere(ply, "face", {name}, USUAL_CORNERS))
            return pFaces;
    }
    throw FileError("it has no faces with a list vertex_indices, points at most; for a cloud read points");
}

// The number of corners of face i; with an outside library all faces have as many.
[[nodiscard]] std::size_t cornersOf(const tinyply::PlyData& faces, std::size_t i, std::size_t numIndices)
{
#ifdef ZEF_OWN_TINYPLY
    static_cast<void>(numIndices);
    return faces.listCounts.empty() ? USUAL_CORNERS : faces.listCounts[i];
#else
    static_cast<void>(i);
    if (numIndices % std::max<std::size_t>(faces.count, 1) != 0)
        throw FileError("the faces have different numbers of corners; write triangles");
    return numIndices / std::max<std::size_t>(faces.count, 1);
#endif
}

// Whether it is known beforehand.
[[nodiscard]] bool areTriangles([[maybe_unused]] const tinyply::PlyData& faces)
{
#ifdef ZEF_OWN_TINYPLY
    return faces.listCounts.empty() && USUAL_CORNERS == 3;
#else
    return false;
#endif
}

[[nodiscard]] bool areBelow(const std::vector<std::uint32_t>& vIndices, std::size_t end)
{
    std::uint32_t largest = 0;
    for (const std::uint32_t index : vIndices)
        largest = std::max(largest, index);
    return vIndices.empty() || largest < end;
}

void appendFaces(const tinyply::PlyData& faces, TriangleData& data)
{
    if (!faces.isList)
        throw FileError("the vertex indices of the faces are no list; get the file anew");
    if (faces.t == tinyply::Type::FLOAT32 || faces.t == tinyply::Type::FLOAT64)
        throw FileError("the vertex indices of the faces are no integers; get the file anew");
    // Negative indices become large ones, and thus fall out of range.
    std::vector<std::uint32_t> vIndices = toValues<std::uint32_t>(faces);
    if (areTriangles(faces) && areBelow(vIndices, data.vPoints.size()))
    {
        data.vCorners = std::move(vIndices);
        return;
    }
    std::size_t first = 0;
    for (std::size_t i = 0; i < faces.count; ++i)
    {
        checkCancelledAt(i);
        const std::size_t num = cornersOf(faces, i, vIndices.size());
        const std::span<const std::uint32_t> polygon(vIndices.data() + first, num);
        for (const std::uint32_t index : polygon)
        {
            if (index >= data.vPoints.size())
                throw FileError("face " + std::to_string(i) + " names vertex " + std::to_string(index) +
                                " of " + std::to_string(data.vPoints.size()) + "; get the file anew");
        }
        appendPolygon(data.vPoints, polygon, data.vCorners);
        data.numSkipped += num < 3 ? 1 : 0;
        first += num;
    }
}

void readPlyTriangles(InputFile& file, TriangleData& data)
{
    guarded(
        [&]
        {
            tinyply::PlyFile ply;
            parseHeader(ply, file);
            const VertexRequests requests(ply, false);
            const PlyDataPtr pFaces = requestFaces(ply);
            ply.read(file.getStream());
            data.vPoints = toPoints(*requests.pXYZ);
            if (requests.pColors)
                data.vColors = toColors(*requests.pColors);
            appendFaces(*pFaces, data);
            noteSmallFaces(data, data.numSkipped);
        });
}

// A face element with rows.
bool plyHoldsTriangles(InputFile& file)
{
    constexpr std::string_view FACES = "element face ";
    std::string_view line;
    while (file.nextLine(line) && line != "end_header")
    {
        if (line.starts_with(FACES))
            return line.size() > FACES.size() && line[FACES.size()] >= '1' && line[FACES.size()] <= '9';
    }
    return false;
}

// --- Writing ----------------------------------------------------------------------------------------------

// Gathers the columns of a PLY; the values last as long as it does.
class PlyWriter
{
public:
    PlyWriter(const std::vector<Point3>& vPoints, const WriteOptions& options)
        : num(vPoints.size())
        , bFloat(areFloatsEnough(vPoints, options.spacing))
    {
        if (bFloat)
            vFloats = packFloats(vPoints);
        else
        {
            for (const Point3& p : vPoints)
                vDoubles.insert(vDoubles.end(), {p.x(), p.y(), p.z()});
        }
        const void* pXYZ = bFloat ? static_cast<const void*>(vFloats.data()) : vDoubles.data();
        add({"x", "y", "z"}, bFloat ? tinyply::Type::FLOAT32 : tinyply::Type::FLOAT64, pXYZ);
    }

    void addNormals(const std::vector<Vector3>& vNormals)
    {
        for (const Vector3& n : vNormals)
            vNormalFloats.insert(vNormalFloats.end(), {static_cast<float>(n.x()), static_cast<float>(n.y()),
                                                       static_cast<float>(n.z())});
        if (!vNormals.empty())
            add({"nx", "ny", "nz"}, tinyply::Type::FLOAT32, vNormalFloats.data());
    }
    void addColors(const std::vector<PointColor>& vColors)
    {
        if (!vColors.empty())
            add({"red", "green", "blue"}, tinyply::Type::UINT8, vColors.data());
    }
    void addIntensities(const std::vector<double>& vIntensities)
    {
        for (const double value : vIntensities)
            vIntensityFloats.push_back(static_cast<float>(value));
        if (!vIntensities.empty())
            add({"intensity"}, tinyply::Type::FLOAT32, vIntensityFloats.data());
    }
    void addFaces(const std::vector<std::uint32_t>& vCorners)
    {
        ply.add_properties_to_element("face", {"vertex_indices"}, tinyply::Type::UINT32, vCorners.size() / 3,
                                      reinterpret_cast<const std::uint8_t*>(vCorners.data()),
                                      tinyply::Type::UINT8, 3);
    }
    void write(OutputFile& file, const WriteOptions& options)
    {
        std::ostream& stream = file.getStream();
        stream.imbue(std::locale::classic());
        stream.precision(bFloat ? std::numeric_limits<float>::max_digits10
                                : std::numeric_limits<double>::max_digits10);
        ply.write(stream, !options.bASCII);
    }

private:
    void add(const std::vector<std::string>& vNames, tinyply::Type type, const void* pValues)
    {
        ply.add_properties_to_element("vertex", vNames, type, num, static_cast<const std::uint8_t*>(pValues),
                                      tinyply::Type::INVALID, 0);
    }

    std::size_t num;
    bool bFloat;
    std::vector<float> vFloats;
    std::vector<double> vDoubles;
    std::vector<float> vNormalFloats;
    std::vector<float> vIntensityFloats;
    tinyply::PlyFile ply;
};

void writePlyPoints(OutputFile& file, const PointData& data, const WriteOptions& options)
{
    PlyWriter writer(data.vPoints, options);
    writer.addNormals(data.vNormals);
    writer.addColors(data.vColors);
    writer.addIntensities(data.vIntensities);
    writer.write(file, options);
}

void writePlyTriangles(OutputFile& file, const TriangleData& data, const WriteOptions& options)
{
    PlyWriter writer(data.vPoints, options);
    writer.addColors(data.vColors);
    writer.addFaces(data.vCorners);
    writer.write(file, options);
}

} // namespace

const Format PLY_FORMAT = {.name = "PLY",
                           .extensions = ".ply ",
                           .sniff = sniffPly,
                           .readPoints = readPlyPoints,
                           .readTriangles = readPlyTriangles,
                           .writePoints = writePlyPoints,
                           .writeTriangles = writePlyTriangles,
                           .holdsTriangles = plyHoldsTriangles};

} // namespace TARN_ZEF
