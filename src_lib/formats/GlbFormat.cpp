// GLB, the binary form of glTF 2: a head in JSON and one block of bytes. Read are the triangles of all meshes, each
// as often as the scene shows it and where the scene has it.
#include "core/cancel.h"
#include "formats/Format.h"
#include "formats/Json.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace TARN_ZEF
{
namespace
{
constexpr std::uint32_t MAGIC = 0x46546C67;      // "glTF"
constexpr std::uint32_t CHUNK_JSON = 0x4E4F534A; // "JSON"
constexpr std::uint32_t CHUNK_BIN = 0x004E4942;  // "BIN"
constexpr std::size_t FLOAT = 5126;
constexpr std::size_t UINT8 = 5121;
constexpr std::size_t UINT16 = 5123;
constexpr std::size_t UINT32 = 5125;
constexpr int MAX_DEPTH = 100;
// A scene may show a mesh more than once; a small file must not fill the memory by that.
constexpr std::size_t MAX_CORNERS = std::size_t{1} << 30;
constexpr std::size_t MAX_GROWTH = 100000;

int sniffGlb(std::string_view head, u64)
{
    return head.starts_with("glTF") ? 2 : 0;
}

// Columns one after the other, as the format has them.
using Matrix = std::array<double, 16>;
constexpr Matrix UNIT = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

[[nodiscard]] Matrix multiply(const Matrix& a, const Matrix& b)
{
    Matrix product{};
    for (std::size_t column = 0; column < 4; ++column)
    {
        for (std::size_t row = 0; row < 4; ++row)
        {
            for (std::size_t k = 0; k < 4; ++k)
                product[4 * column + row] += a[4 * k + row] * b[4 * column + k];
        }
    }
    return product;
}

[[nodiscard]] Point3 transform(const Matrix& m, const Point3& p)
{
    const auto coordinate = [&](std::size_t row)
    { return m[row] * p.x() + m[4 + row] * p.y() + m[8 + row] * p.z() + m[12 + row]; };
    return {coordinate(0), coordinate(1), coordinate(2)};
}

// A negative one mirrors, so that triangles must be turned.
[[nodiscard]] double determinant(const Matrix& m)
{
    return m[0] * (m[5] * m[10] - m[9] * m[6]) - m[4] * (m[1] * m[10] - m[9] * m[2]) +
           m[8] * (m[1] * m[6] - m[5] * m[2]);
}

[[nodiscard]] Matrix matrixOf(const Json& node)
{
    Matrix matrix = UNIT;
    const Json& given = node["matrix"];
    if (given.size() == 16)
    {
        for (std::size_t i = 0; i < 16; ++i)
            matrix[i] = given[i].number(0.0);
        return matrix;
    }
    const Json& q = node["rotation"];
    const double x = q[0].number(0.0);
    const double y = q[1].number(0.0);
    const double z = q[2].number(0.0);
    const double w = q[3].number(1.0);
    const std::array<double, 9> aRotation = {
        1 - 2 * (y * y + z * z), 2 * (x * y + z * w),     2 * (x * z - y * w),
        2 * (x * y - z * w),     1 - 2 * (x * x + z * z), 2 * (y * z + x * w),
        2 * (x * z + y * w),     2 * (y * z - x * w),     1 - 2 * (x * x + y * y)};
    for (std::size_t column = 0; column < 3; ++column)
    {
        for (std::size_t row = 0; row < 3; ++row)
            matrix[4 * column + row] = aRotation[3 * column + row] * node["scale"][column].number(1.0);
        matrix[12 + column] = node["translation"][column].number(0.0);
    }
    return matrix;
}

class GlbReader
{
public:
    GlbReader(InputFile& file_, TriangleData& data_)
        : file(file_)
        , data(data_)
    {
    }

    void run()
    {
        readChunks();
        const Json& scenes = json["scenes"];
        const Json& scene = scenes[json["scene"].index().value_or(0)];
        if (scenes.size() == 0)
            showAll();
        for (std::size_t i = 0; i < scene["nodes"].size(); ++i)
            showNode(scene["nodes"][i], UNIT, 0);
        if (data.numSkipped > 0)
            data.vNotes.push_back("parts that are no triangles left out: " + std::to_string(data.numSkipped));
    }

private:
    // Values of one kind in the block of bytes.
    struct Accessor
    {
        std::size_t count = 0;
        std::size_t stride = 0;
        std::size_t type = 0;
        std::size_t start = 0; // in the block
    };

    void readChunks()
    {
        const char* p = file.take(12, "the head");
        const auto version = loadValue<std::uint32_t>(p + 4);
        if (version != 2)
            failAtByte(4, "version " + std::to_string(version) + "; version 2 is read");
        const std::string text = takeChunk(CHUNK_JSON, "JSON");
        json = Json::parse(text);
        for (std::size_t i = 0; i < json["extensionsRequired"].size(); ++i)
        {
            const std::string& name = json["extensionsRequired"][i].text();
            if (name == "KHR_draco_mesh_compression" || name == "EXT_meshopt_compression")
                throw FileError("the triangles are compressed by " + name +
                                ", which is not read; write the file without compression");
        }
        if (file.getBytes().need(8))
            bytes = takeChunk(CHUNK_BIN, "bytes");
    }

    [[nodiscard]] std::string takeChunk(std::uint32_t wanted, const char* what)
    {
        const u64 offset = file.getBytes().getOffset();
        const char* p = file.take(8, "the head of a part");
        const auto size = loadValue<std::uint32_t>(p);
        const auto type = loadValue<std::uint32_t>(p + 4);
        if (type != wanted)
            failAtByte(offset + 4, std::string("a part of ") + what + " is wanted; get the file anew");
        if (size > file.getBytes().getRemaining().value_or(0))
            failAtByte(offset,
                       std::string("the file ends within its part of ") + what + "; it was cut, get it anew");
        return file.takeCopy(size, what);
    }

    void showAll()
    {
        for (std::size_t i = 0; i < json["meshes"].size(); ++i)
            showMesh(json["meshes"][i], UNIT);
    }

    void showNode(const Json& number, const Matrix& parent, int depth)
    {
        if (depth > MAX_DEPTH)
            throw FileError("the nodes are nested more than " + std::to_string(MAX_DEPTH) +
                            " deep, or in a ring; get the file anew");
        if (++numShown > MAX_GROWTH)
            throw FileError("the scene shows more than " + std::to_string(MAX_GROWTH) +
                            " nodes; write the parts into files of their own");
        const Json& node = json["nodes"][number.index().value_or(std::numeric_limits<std::size_t>::max())];
        const Matrix matrix = multiply(parent, matrixOf(node));
        if (const auto mesh = node["mesh"].index())
            showMesh(json["meshes"][*mesh], matrix);
        for (std::size_t i = 0; i < node["children"].size(); ++i)
            showNode(node["children"][i], matrix, depth + 1);
    }

    void showMesh(const Json& mesh, const Matrix& matrix)
    {
        const Json& primitives = mesh["primitives"];
        for (std::size_t i = 0; i < primitives.size(); ++i)
        {
            const double mode = primitives[i]["mode"].number(4.0);
            if (mode >= 4.0 && mode <= 6.0)
                showPrimitive(primitives[i], matrix, static_cast<int>(mode));
            else
                ++data.numSkipped;
        }
    }

    [[nodiscard]] Accessor accessorOf(const Json& number, std::size_t valuesEach) const
    {
        const Json& given =
            json["accessors"][number.index().value_or(std::numeric_limits<std::size_t>::max())];
        const Json& view =
            json["bufferViews"]
                [given["bufferView"].index().value_or(std::numeric_limits<std::size_t>::max())];
        if (given.has("sparse") || !given.has("bufferView") || view["buffer"].number(0.0) != 0.0 ||
            json["buffers"][0].has("uri"))
            throw FileError("its values do not stand in the file itself, or are sparse; write the file "
                            "with its values inside");
        Accessor accessor;
        accessor.count = given["count"].index().value_or(0);
        accessor.type = given["componentType"].index().value_or(0);
        const std::size_t each = valuesEach * sizeOf(accessor.type);
        accessor.stride = view["byteStride"].index().value_or(each);
        accessor.stride = valuesEach == 1 ? each : std::max(accessor.stride, each);
        accessor.start = view["byteOffset"].index().value_or(0) + given["byteOffset"].index().value_or(0);
        if (accessor.count > 0 &&
            (accessor.start > bytes.size() || bytes.size() - accessor.start < each ||
             (accessor.count - 1) > (bytes.size() - accessor.start - each) / accessor.stride))
            throw FileError("it names more values than it holds; it was cut, get it anew");
        return accessor;
    }

    [[nodiscard]] static std::size_t sizeOf(std::size_t type)
    {
        switch (type)
        {
        case FLOAT:
        case UINT32:
            return 4;
        case UINT16:
            return 2;
        case UINT8:
            return 1;
        default:
            throw FileError("its values are of type " + std::to_string(type) +
                            "; floats for places and whole numbers for corners are read");
        }
    }

    void showPrimitive(const Json& primitive, const Matrix& matrix, int mode)
    {
        const Accessor places = accessorOf(primitive["attributes"]["POSITION"], 3);
        if (places.type != FLOAT)
            throw FileError("the places of its vertices are no floats; write the file without quantization");
        const std::size_t first = data.vPoints.size();
        if (places.count > MAX_CORNERS - first)
            throw FileError("the scene shows too many vertices; write the parts into files of their own");
        if (first == 0) // only then: exact steps of growth would take a copy for each of many small parts
            data.vPoints.reserve(places.count);
        for (std::size_t i = 0; i < places.count; ++i)
        {
            const char* p = bytes.data() + places.start + i * places.stride;
            data.vPoints.push_back(
                transform(matrix, {loadValue<float>(p), loadValue<float>(p + 4), loadValue<float>(p + 8)}));
        }
        const TriangleRow row = {mode, static_cast<std::uint32_t>(first), determinant(matrix) < 0.0};
        appendPrimitive(primitive, places.count, row);
    }

    // How a row of indices makes triangles.
    struct TriangleRow
    {
        int mode;            // 4: three each; 5: a strip, of which every second triangle is turned; 6: a fan
        std::uint32_t first; // vertex that index 0 is
        bool bTurn;
    };

    void appendPrimitive(const Json& primitive, std::size_t numVertices, const TriangleRow& row)
    {
        if (!primitive.has("indices"))
            return appendTriangles(numVertices, row,
                                   [](std::size_t i) { return static_cast<std::uint32_t>(i); });
        const Accessor corners = accessorOf(primitive["indices"], 1);
        const char* const pStart = bytes.data() + corners.start;
        switch (corners.type)
        {
        case UINT8:
            return appendIndexed<std::uint8_t>(pStart, corners, numVertices, row);
        case UINT16:
            return appendIndexed<std::uint16_t>(pStart, corners, numVertices, row);
        default:
            return appendIndexed<std::uint32_t>(pStart, corners, numVertices, row);
        }
    }

    template <class T>
    void appendIndexed(const char* pStart, const Accessor& corners, std::size_t numVertices,
                       const TriangleRow& row)
    {
        const auto indexAt = [pStart](std::size_t i)
        { return std::uint32_t{loadValue<T>(pStart + i * sizeof(T))}; };
        for (std::size_t i = 0; i < corners.count; ++i)
        {
            checkCancelledAt(i);
            if (corners.type == FLOAT || indexAt(i) >= numVertices)
                throw FileError("a triangle names vertex " + std::to_string(indexAt(i)) + " of " +
                                std::to_string(numVertices) + "; get the file anew");
        }
        appendTriangles(corners.count, row, indexAt);
    }

    template <class IndexAt>
    void appendTriangles(std::size_t num, const TriangleRow& row, IndexAt indexAt)
    {
        const std::size_t step = row.mode == 4 ? 3 : 1;
        if (data.vCorners.empty())
            data.vCorners.reserve(3 * (num / step + 1));
        for (std::size_t i = 0; i + 2 < num; i += step)
        {
            checkCancelledAt(i);
            std::array<std::uint32_t, 3> aCorners = {indexAt(row.mode == 6 ? 0 : i), indexAt(i + 1),
                                                     indexAt(i + 2)};
            if (row.bTurn != (row.mode == 5 && i % 2 == 1))
                std::swap(aCorners[1], aCorners[2]);
            for (const std::uint32_t corner : aCorners)
                data.vCorners.push_back(row.first + corner);
        }
        if (data.vCorners.size() > 6 * MAX_CORNERS)
            throw FileError("the scene shows too many triangles; write the parts into files of their own");
    }

    InputFile& file;
    TriangleData& data;
    Json json;
    std::string bytes;
    std::size_t numShown = 0;
};

void readGlb(InputFile& file, TriangleData& data)
{
    GlbReader(file, data).run();
}

// --- Writing ----------------------------------------------------------------------------------------------

// The box of the places, which the format wants told; with floats, as they are written.
struct Box
{
    std::array<float, 3> low{};
    std::array<float, 3> high{};
};

[[nodiscard]] std::array<float, 3> toFloats(const Vector3& p, bool bYUp)
{
    const auto x = static_cast<float>(p.x());
    const auto y = static_cast<float>(p.y());
    const auto z = static_cast<float>(p.z());
    return bYUp ? std::array<float, 3>{x, z, -y} : std::array<float, 3>{x, y, z};
}

[[nodiscard]] Box boxOf(const std::vector<std::array<float, 3>>& vFloats)
{
    Box box;
    for (std::size_t i = 0; i < vFloats.size(); ++i)
    {
        for (std::size_t k = 0; k < 3; ++k)
        {
            const float v = vFloats[i][k];
            if (!std::isfinite(v))
                throw FileError("GLB holds finite floats only, vertex " + std::to_string(i) +
                                " has another; leave it out, or write PLY");
            box.low[k] = i == 0 ? v : std::min(box.low[k], v);
            box.high[k] = i == 0 ? v : std::max(box.high[k], v);
        }
    }
    return box;
}

[[nodiscard]] std::string listText(const std::array<float, 3>& a)
{
    std::string text = "[";
    for (std::size_t k = 0; k < 3; ++k)
    {
        char aDigits[32];
        const char* pEnd = std::to_chars(aDigits, aDigits + sizeof aDigits, a[k]).ptr;
        text.append(k == 0 ? "" : ",").append(aDigits, static_cast<std::size_t>(pEnd - aDigits));
    }
    return text + "]";
}

// Doubles move the middle to the origin, so that floats tell more.
[[nodiscard]] Point3 middleOf(const std::vector<Point3>& vPoints)
{
    if (vPoints.empty())
        return {};
    Point3 low = vPoints[0];
    Point3 high = vPoints[0];
    for (const Point3& p : vPoints)
    {
        low.set(std::min(low.x(), p.x()), std::min(low.y(), p.y()), std::min(low.z(), p.z()));
        high.set(std::max(high.x(), p.x()), std::max(high.y(), p.y()), std::max(high.z(), p.z()));
    }
    const Point3 middle((low.x() + high.x()) / 2.0, (low.y() + high.y()) / 2.0, (low.z() + high.z()) / 2.0);
    return {std::floor(middle.x()), std::floor(middle.y()), std::floor(middle.z())};
}

[[nodiscard]] std::string headOf(const TriangleData& data, const Box& box, const Vector3& offset, bool bYUp)
{
    const std::size_t placeBytes = 12 * data.vPoints.size();
    const std::size_t cornerBytes = 4 * data.vCorners.size();
    const std::string translation =
        offset.isDegenerate() ? "" : ",\"translation\":" + listText(toFloats(offset, bYUp));
    std::string head =
        R"({"asset":{"version":"2.0","generator":"ZEF"},"scene":0,"scenes":[{"nodes":[0]}],"nodes":[{"mesh":0)" +
        translation +
        R"(}],"meshes":[{"primitives":[{"attributes":{"POSITION":0},"indices":1,"mode":4}]}],"buffers":[{"byteLength":)" +
        std::to_string(placeBytes + cornerBytes) + R"(}],"bufferViews":[{"buffer":0,"byteLength":)" +
        std::to_string(placeBytes) + R"(,"target":34962},{"buffer":0,"byteOffset":)" +
        std::to_string(placeBytes) + R"(,"byteLength":)" + std::to_string(cornerBytes) +
        R"(,"target":34963}],"accessors":[{"bufferView":0,"componentType":5126,"type":"VEC3","count":)" +
        std::to_string(data.vPoints.size()) + ",\"min\":" + listText(box.low) +
        ",\"max\":" + listText(box.high) +
        R"(},{"bufferView":1,"componentType":5125,"type":"SCALAR","count":)" +
        std::to_string(data.vCorners.size()) + "}]}";
    head.resize((head.size() + 3) / 4 * 4, ' ');
    return head;
}

void writeGlb(OutputFile& file, const TriangleData& data, const WriteOptions& options)
{
    if (data.vCorners.empty())
        throw FileError("GLB holds no empty mesh; write PLY");
    const Point3 middle = middleOf(data.vPoints);
    // Only where floats lose something: the corners of a scan in millimetres stay where they are.
    const bool bMove = std::any_of(data.vPoints.begin(), data.vPoints.end(),
                                   [](const Point3& p)
                                   {
                                       return static_cast<double>(static_cast<float>(p.x())) != p.x() ||
                                              static_cast<double>(static_cast<float>(p.y())) != p.y() ||
                                              static_cast<double>(static_cast<float>(p.z())) != p.z();
                                   });
    const Point3 origin = bMove ? middle : Point3();
    std::vector<std::array<float, 3>> vFloats;
    vFloats.reserve(data.vPoints.size());
    for (const Point3& p : data.vPoints)
        vFloats.push_back(toFloats(p - origin, options.bYUp));
    const std::string head = headOf(data, boxOf(vFloats), origin - Point3(), options.bYUp);
    const u64 numBytes = u64{12} * data.vPoints.size() + u64{4} * data.vCorners.size();
    const u64 total = 12 + 8 + head.size() + 8 + numBytes;
    if (total > UINT32_MAX)
        throw FileError("GLB holds at most 4 GB; write PLY");
    for (const std::uint32_t word :
         {MAGIC, 2u, static_cast<std::uint32_t>(total), static_cast<std::uint32_t>(head.size()), CHUNK_JSON})
        file.value(word);
    file.getText().text(head);
    file.value(static_cast<std::uint32_t>(numBytes));
    file.value(CHUNK_BIN);
    for (const std::array<float, 3>& a : vFloats)
    {
        for (const float v : a)
            file.value(v);
        file.step();
    }
    for (const std::uint32_t corner : data.vCorners)
        file.value(corner);
}

} // namespace

const Format GLB_FORMAT = {.name = "GLB",
                           .extensions = ".glb ",
                           .sniff = sniffGlb,
                           .readTriangles = readGlb,
                           .writeTriangles = writeGlb};

} // namespace TARN_ZEF
