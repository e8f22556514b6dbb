// STL, binary and as text: told apart by what the file holds, since binary ones may start with "solid" too.
#include "formats/Format.h"
#include "formats/textRows.h"
#include "tarn_tools/PageWarmer.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
constexpr std::size_t HEADER_BYTES = 84; // 80 of any text, and the number of triangles
constexpr std::size_t RECORD_BYTES = 50;

[[nodiscard]] bool hasBinarySize(std::string_view head, u64 fileBytes)
{
    return head.size() >= HEADER_BYTES &&
           fileBytes == HEADER_BYTES + u64{RECORD_BYTES} * loadValue<std::uint32_t>(head.data() + 80);
}

[[nodiscard]] std::string_view firstWord(std::string_view line) noexcept
{
    const char* p = line.data();
    return nextToken(p, p + line.size());
}

[[nodiscard]] bool isText(std::string_view head)
{
    if (head.find('\0') != std::string_view::npos)
        return false;
    const std::vector<std::string_view> vLines = contentLines(head);
    if (vLines.empty())
        return false;
    const std::string_view word = firstWord(vLines[0]);
    return isWord(word, "solid") || isWord(word, "facet") || isWord(word, "outer");
}

int sniffStl(std::string_view head, u64 fileBytes)
{
    return hasBinarySize(head, fileBytes) || isText(head) ? 2 : 0;
}

class StlTextReader
{
public:
    StlTextReader(InputFile& file_, TriangleData& data_)
        : file(file_)
        , data(data_)
    {
    }

    void run()
    {
        std::string_view line;
        while (file.nextLine(line))
            takeLine(line);
        if (numCorners != 0)
            file.failHere("the file ends within a facet, after " + std::to_string(numCorners) +
                          " corners; it was cut, get it anew");
    }

private:
    // Some programs write the loop on the line of the facet, so that a line may hold several words.
    void takeLine(std::string_view line)
    {
        const char* p = line.data();
        const char* pEnd = p + line.size();
        const std::string_view word = nextToken(p, pEnd);
        if (isWord(word, "vertex"))
            takeVertex({p, static_cast<std::size_t>(pEnd - p)}, line);
        else if (isWord(word, "endloop") || isWord(word, "endfacet") || isWord(word, "outer") ||
                 isWord(word, "facet"))
            closeFacet();
    }

    void takeVertex(std::string_view numbers, std::string_view line)
    {
        double aXYZ[3];
        if (takeNumbers(numbers, aXYZ, 3) < 3)
            file.failHere("a vertex wants three numbers, found " + quote(line) +
                          "; delete the facet, or get the file anew");
        data.vPoints.emplace_back(aXYZ[0], aXYZ[1], aXYZ[2]);
        ++numCorners;
    }

    void closeFacet()
    {
        if (numCorners != 0 && numCorners != 3)
            file.failHere("a facet has " + std::to_string(numCorners) +
                          " corners, three are wanted; delete it, or get the file anew");
        numCorners = 0;
    }

    InputFile& file;
    TriangleData& data;
    std::size_t numCorners = 0; // of the open facet
};

void readBinary(InputFile& file, TriangleData& data)
{
    const char* pHeader = file.take(HEADER_BYTES, "the header of a binary STL");
    const auto num = loadValue<std::uint32_t>(pHeader + 80);
    const std::size_t numThere = file.limitCount(num, RECORD_BYTES);
    if (numThere < num)
        failAtByte(80, "binary STL: the file counts " + std::to_string(num) + " triangles and holds " +
                           std::to_string(numThere) + "; it was cut or is no STL, get it anew");
    data.vPoints.reserve(3 * numThere);
    PageWarmer warmer; // the points are most of the memory, and filled front to back
    warmer.begin(data.vPoints.data(), data.vPoints.capacity() * sizeof(Point3));
    std::size_t numAtHand = 0;
    std::size_t warmBytes = 0;
    for (std::size_t numLeft = num; numLeft > 0; numLeft -= numAtHand)
    {
        numAtHand = numLeft;
        if (data.vPoints.size() * sizeof(Point3) >= warmBytes)
            warmBytes = warmer.advance();
        const char* const pRecords = file.takeRecords(RECORD_BYTES, numAtHand, "a triangle");
        for (std::size_t i = 0; i < numAtHand; ++i)
        {
            const char* const p = pRecords + i * RECORD_BYTES + 12; // past the normal
            for (std::size_t k = 0; k < 3; ++k)
                data.vPoints.emplace_back(loadValue<float>(p + 12 * k), loadValue<float>(p + 12 * k + 4),
                                          loadValue<float>(p + 12 * k + 8));
        }
    }
    const u64 left = file.getBytes().getRemaining().value_or(0);
    if (left > 0)
        data.vNotes.push_back("bytes after the last triangle: " + std::to_string(left));
}

void readStl(InputFile& file, TriangleData& data)
{
    if (!hasBinarySize(file.getHead(), file.getSize()) && isText(file.getHead()))
        StlTextReader(file, data).run();
    else
        readBinary(file, data);
    data.vCorners.reserve(data.vPoints.size());
    for (std::size_t i = 0; i < data.vPoints.size(); ++i)
        data.vCorners.push_back(static_cast<std::uint32_t>(i));
}

// --- Writing ----------------------------------------------------------------------------------------------

// Of length 1; zero for a triangle without area.
[[nodiscard]] Vector3 normalOf(const Point3& a, const Point3& b, const Point3& c)
{
    const Vector3 u = b - a;
    const Vector3 v = c - a;
    Vector3 normal(u.y() * v.z() - u.z() * v.y(), u.z() * v.x() - u.x() * v.z(),
                   u.x() * v.y() - u.y() * v.x());
    const double length = normal.length();
    if (!(length > 0.0) || !std::isfinite(length))
        return {};
    normal.div(length);
    return normal;
}

void writeFacet(OutputFile& file, const std::array<Point3, 4>& aPoints)
{
    TextWriter& out = file.getText();
    out.text("facet normal ");
    file.exactPoint(aPoints[0]);
    out.text("\n outer loop\n");
    for (std::size_t k = 1; k < 4; ++k)
    {
        out.text("  vertex ");
        file.exactPoint(aPoints[k]);
        out.text("\n");
    }
    out.text(" endloop\nendfacet\n");
}

void writeRecord(OutputFile& file, const std::array<Point3, 4>& aPoints)
{
    for (const Point3& p : aPoints)
    {
        file.value(static_cast<float>(p.x()));
        file.value(static_cast<float>(p.y()));
        file.value(static_cast<float>(p.z()));
    }
    file.value(std::uint16_t{0});
}

void writeStl(OutputFile& file, const TriangleData& data, const WriteOptions& options)
{
    const std::size_t numTriangles = data.vCorners.size() / 3;
    if (!options.bASCII && numTriangles > UINT32_MAX)
        throw FileError("binary STL holds at most 4294967295 triangles; write PLY");
    TextWriter& out = file.getText();
    if (options.bASCII)
        out.text("solid ZEF\n");
    else
    {
        std::string header = "binary STL by ZEF";
        header.resize(80, ' ');
        out.text(header);
        file.value(static_cast<std::uint32_t>(numTriangles));
    }
    for (std::size_t i = 0; i < data.vCorners.size(); i += 3)
    {
        const Point3& a = data.vPoints[data.vCorners[i]];
        const Point3& b = data.vPoints[data.vCorners[i + 1]];
        const Point3& c = data.vPoints[data.vCorners[i + 2]];
        const Vector3 normal = normalOf(a, b, c);
        const std::array<Point3, 4> aPoints = {Point3(normal.x(), normal.y(), normal.z()), a, b, c};
        options.bASCII ? writeFacet(file, aPoints) : writeRecord(file, aPoints);
        file.step();
    }
    if (options.bASCII)
        out.text("endsolid ZEF\n");
}

} // namespace

const Format STL_FORMAT = {.name = "STL",
                           .extensions = ".stl ",
                           .sniff = sniffStl,
                           .readTriangles = readStl,
                           .writeTriangles = writeStl};

} // namespace TARN_ZEF
