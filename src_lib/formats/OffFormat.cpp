// OFF and its kin: a word, the numbers of vertices, faces and edges, a line a vertex, a line a face. In front of
// "OFF" a C tells of colours at the vertices, an N of normals, ST of texture coordinates.
#include "formats/Format.h"
#include "formats/polygons.h"
#include "formats/textRows.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
struct OffKind
{
    bool bTexture = false;
    bool bColors = false;
    bool bNormals = false;
    bool bOtherDimension = false;
    std::size_t length = 0; // of the word; 0: there is none
};

[[nodiscard]] OffKind parseKind(std::string_view text) noexcept
{
    OffKind kind;
    const std::size_t size = text.size();
    const auto take = [&text](std::string_view prefix)
    {
        const bool bThere = text.starts_with(prefix);
        text.remove_prefix(bThere ? prefix.size() : 0);
        return bThere;
    };
    kind.bTexture = take("ST");
    kind.bColors = take("C");
    kind.bNormals = take("N");
    const bool b4 = take("4");
    const bool bN = take("n");
    kind.bOtherDimension = b4 || bN;
    if (take("OFF"))
        kind.length = size - text.size();
    return kind;
}

int sniffOff(std::string_view head, u64)
{
    const std::vector<std::string_view> vLines = contentLines(head);
    return !vLines.empty() && parseKind(vLines[0]).length > 0 ? 2 : 0;
}

class OffReader
{
public:
    explicit OffReader(InputFile& file_)
        : file(file_)
    {
    }

    void readVertices()
    {
        readCounts();
        // A vertex takes six bytes at least: "0 0 0" and the end of the line.
        vPoints.reserve(file.limitCount(numVertices, 6));
        for (u64 i = 0; i < numVertices; ++i)
        {
            std::string_view line;
            needLine(line, "vertices", i, numVertices);
            takeVertex(line);
        }
        if (vColors.size() != vPoints.size())
            vColors.clear();
        if (vNormals.size() != vPoints.size())
            vNormals.clear();
    }

    void readFaces(std::vector<std::uint32_t>& vCorners)
    {
        std::vector<std::uint32_t> vPolygon;
        for (u64 i = 0; i < numFaces; ++i)
        {
            std::string_view line;
            needLine(line, "faces", i, numFaces);
            takeFace(line, vPolygon);
            numSmallFaces += vPolygon.size() < 3 ? 1 : 0;
            appendPolygon(vPoints, vPolygon, vCorners);
        }
    }

    std::vector<Point3> vPoints;
    std::vector<Vector3> vNormals;
    std::vector<PointColor> vColors;
    u64 numSmallFaces = 0;

private:
    void needLine(std::string_view& line, const char* what, u64 num, u64 wanted)
    {
        if (!file.nextContent(line))
            file.failHere("the file ends after " + std::to_string(num) + " of " + std::to_string(wanted) +
                          " " + what + "; it was cut, get it anew");
    }

    void readCounts()
    {
        std::string_view line;
        if (!file.nextContent(line))
            throw FileError("it is empty; check that it was written");
        kind = parseKind(line);
        if (kind.bOtherDimension)
            file.failHere("found " + quote(line) +
                          ", vertices of other than three dimensions; write it as plain OFF");
        line = trim(line.substr(kind.length));
        if (line.starts_with("BINARY"))
            file.failHere("binary OFF is not read; write it as text, or as PLY");
        if (line.empty() && !file.nextContent(line))
            file.failHere("the file ends before the number of vertices; it was cut, get it anew");
        std::array<double, 2> aCounts{};
        if (takeNumbers(line, aCounts.data(), 2) < 2 || !isCount(aCounts[0]) || !isCount(aCounts[1]))
            file.failHere("the numbers of vertices and faces are wanted, found " + quote(line) +
                          "; check that the file is an OFF");
        numVertices = static_cast<u64>(aCounts[0]);
        numFaces = static_cast<u64>(aCounts[1]);
    }

    [[nodiscard]] static bool isCount(double value) noexcept
    {
        return value >= 0.0 && value < UINT32_MAX && value == std::floor(value);
    }

    void takeVertex(std::string_view line)
    {
        std::array<double, 10> aValues{};
        const std::size_t num = takeNumbers(line, aValues.data(), aValues.size());
        if (num < 3)
            file.failHere("a vertex wants three numbers, found " + quote(line) + "; get the file anew");
        vPoints.emplace_back(aValues[0], aValues[1], aValues[2]);
        std::size_t next = 3;
        if (kind.bNormals && num >= next + 3)
        {
            vNormals.emplace_back(aValues[3], aValues[4], aValues[5]);
            next += 3;
        }
        if (kind.bColors && num >= next + 3)
            takeColor(aValues.data() + next, line);
    }

    // Whole numbers up to 255, or with a point in the line shares of 1.
    void takeColor(const double* values, std::string_view line)
    {
        const bool bShares = *std::max_element(values, values + 3) <= 1.0 &&
                             line.find('.', line.find_last_of(" \t")) != std::string_view::npos;
        PointColor color{};
        for (std::size_t k = 0; k < 3; ++k)
        {
            const double value = bShares ? 255.0 * values[k] + 0.5 : values[k];
            color[k] = static_cast<std::uint8_t>(std::isfinite(value) ? std::clamp(value, 0.0, 255.0) : 0.0);
        }
        vColors.push_back(color);
    }

    void takeFace(std::string_view line, std::vector<std::uint32_t>& vPolygon)
    {
        const char* p = line.data();
        const char* pEnd = p + line.size();
        std::uint32_t num = 0;
        if (!parseNumber(nextToken(p, pEnd), num))
            file.failHere("a face starts with its number of corners, found " + quote(line) +
                          "; get the file anew");
        vPolygon.clear();
        for (std::uint32_t i = 0; i < num; ++i)
        {
            const std::string_view word = nextToken(p, pEnd);
            std::uint32_t index = 0;
            if (!parseNumber(word, index) || index >= vPoints.size())
                file.failHere("corner " + std::to_string(i + 1) + " of " + std::to_string(num) +
                              " of a face is " + quote(word) + ", but a number below " +
                              std::to_string(vPoints.size()) + " is wanted; get the file anew");
            vPolygon.push_back(index);
        }
    }

    InputFile& file;
    OffKind kind;
    u64 numVertices = 0;
    u64 numFaces = 0;
};

void readOffPoints(InputFile& file, const ReadOptions&, PointData& data)
{
    OffReader reader(file);
    reader.readVertices();
    data.vPoints = std::move(reader.vPoints);
    data.vNormals = std::move(reader.vNormals);
    data.vColors = std::move(reader.vColors);
}

void readOffTriangles(InputFile& file, TriangleData& data)
{
    OffReader reader(file);
    reader.readVertices();
    reader.readFaces(data.vCorners);
    data.vPoints = std::move(reader.vPoints);
    data.vColors = std::move(reader.vColors);
    noteSmallFaces(data, reader.numSmallFaces);
}

void writeHead(OutputFile& file, bool bNormals, bool bColors, std::size_t numVertices, std::size_t numFaces)
{
    TextWriter& out = file.getText();
    out.text(bColors ? "C" : "");
    out.text(bNormals ? "NOFF\n" : "OFF\n");
    out.exact(u64{numVertices});
    out.text(" ");
    out.exact(u64{numFaces});
    out.text(" 0\n");
}

void writeVertices(OutputFile& file, const std::vector<Point3>& vPoints, const std::vector<Vector3>& vNormals,
                   const std::vector<PointColor>& vColors)
{
    TextWriter& out = file.getText();
    for (std::size_t i = 0; i < vPoints.size(); ++i)
    {
        file.exactPoint(vPoints[i]);
        if (!vNormals.empty())
        {
            out.text(" ");
            file.exactPoint(Point3(vNormals[i].x(), vNormals[i].y(), vNormals[i].z()));
        }
        for (std::size_t k = 0; k < 3 && !vColors.empty(); ++k)
        {
            out.text(" ");
            out.exact(static_cast<unsigned int>(vColors[i][k]));
        }
        out.text(vColors.empty() ? "\n" : " 255\n");
        file.step();
    }
}

void writeOffPoints(OutputFile& file, const PointData& data, const WriteOptions&)
{
    writeHead(file, !data.vNormals.empty(), !data.vColors.empty(), data.vPoints.size(), 0);
    writeVertices(file, data.vPoints, data.vNormals, data.vColors);
}

void writeOffTriangles(OutputFile& file, const TriangleData& data, const WriteOptions&)
{
    writeHead(file, false, !data.vColors.empty(), data.vPoints.size(), data.vCorners.size() / 3);
    writeVertices(file, data.vPoints, {}, data.vColors);
    TextWriter& out = file.getText();
    for (std::size_t i = 0; i < data.vCorners.size(); i += 3)
    {
        out.text("3");
        for (std::size_t k = 0; k < 3; ++k)
        {
            out.text(" ");
            out.exact(data.vCorners[i + k]);
        }
        out.text("\n");
        file.step();
    }
}

bool offHoldsTriangles(InputFile& file)
{
    std::array<double, 2> aCounts{};
    std::string_view line;
    while (file.nextContent(line))
    {
        line = line.substr(parseKind(line).length);
        if (takeNumbers(line, aCounts.data(), 2) == 2)
            return aCounts[1] > 0.0;
    }
    return false;
}

} // namespace

const Format OFF_FORMAT = {.name = "OFF",
                           .extensions = ".off .coff ",
                           .sniff = sniffOff,
                           .readPoints = readOffPoints,
                           .readTriangles = readOffTriangles,
                           .writePoints = writeOffPoints,
                           .writeTriangles = writeOffTriangles,
                           .holdsTriangles = offHoldsTriangles};

} // namespace TARN_ZEF
