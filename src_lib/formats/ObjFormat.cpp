// OBJ: lines "v x y z [r g b]" and "f a b c ...", where a corner is "vertex[/texture][/normal]", counted from 1 or
// with a minus from the end. Groups, materials, normals and what else there is are passed over.
#include "core/cancel.h"
#include "formats/Format.h"
#include "formats/polygons.h"
#include "formats/textRows.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
constexpr std::array<std::string_view, 14> KEYWORDS = {"v", "vn", "vt", "vp",     "f",      "l",  "p",
                                                       "o", "g",  "s",  "usemtl", "mtllib", "mg", "call"};

[[nodiscard]] std::string_view firstWord(std::string_view line) noexcept
{
    const char* p = line.data();
    return nextToken(p, p + line.size());
}

int sniffObj(std::string_view head, u64)
{
    const std::vector<std::string_view> vLines = contentLines(head);
    if (vLines.empty())
        return 0;
    const std::string_view word = firstWord(vLines[0]);
    const bool bKnown =
        word.size() < vLines[0].size() && std::find(KEYWORDS.begin(), KEYWORDS.end(), word) != KEYWORDS.end();
    return bKnown ? 2 : 0;
}

[[nodiscard]] std::uint8_t toByte(double share) noexcept
{
    return std::isfinite(share) ? static_cast<std::uint8_t>(std::lround(std::clamp(share, 0.0, 1.0) * 255.0))
                                : 0;
}

class ObjReader
{
public:
    explicit ObjReader(InputFile& file_)
        : file(file_)
    {
    }

    void run(bool bFaces)
    {
        std::string_view line;
        while (nextJoined(line))
        {
            if (line[0] == 'v' && line.size() > 1 && isBlank(line[1]))
                takeVertex(line.substr(2));
            else if (bFaces && line[0] == 'f' && line.size() > 1 && isBlank(line[1]))
                takeFace(line.substr(2));
        }
        if (vPoints.empty())
            throw FileError("it holds no vertices (lines \"v x y z\"); check that it is an OBJ");
        if (vColors.size() != vPoints.size())
            vColors.clear();
    }

    // Once: takes the indices of the faces.
    [[nodiscard]] std::vector<std::uint32_t> cutFaces()
    {
        requireVertices();
        if (std::all_of(vFaces.begin(), vFaces.end(), [](const FaceRun& run) { return run.numCorners == 3; }))
            return std::move(vIndices);
        std::vector<std::uint32_t> vCorners;
        std::size_t first = 0;
        for (const FaceRun& run : vFaces)
            for (std::size_t i = 0; i < run.numFaces; ++i, first += run.numCorners)
            {
                checkCancelledAt(i);
                appendPolygon(vPoints, {vIndices.data() + first, run.numCorners}, vCorners);
            }
        return vCorners;
    }

    std::vector<Point3> vPoints;
    std::vector<PointColor> vColors;
    u64 numSmallFaces = 0; // of fewer than three corners

private:
    // Faces of as many corners on lines that follow each other: most files have few of these.
    struct FaceRun
    {
        u64 line; // of the first
        std::size_t numFaces;
        std::size_t numCorners; // of each
    };

    void addFace(u64 line, std::size_t numCorners)
    {
        if (!vFaces.empty() && vFaces.back().numCorners == numCorners &&
            vFaces.back().line + vFaces.back().numFaces == line)
            ++vFaces.back().numFaces;
        else
            vFaces.push_back({line, 1, numCorners});
    }

    // Faces may stand before their vertices, so that this is known at the end only.
    void requireVertices() const
    {
        const auto itWrong = std::find_if(vIndices.begin(), vIndices.end(),
                                          [&](std::uint32_t index) { return index >= vPoints.size(); });
        if (itWrong == vIndices.end())
            return;
        auto before = static_cast<std::size_t>(itWrong - vIndices.begin());
        for (const FaceRun& run : vFaces)
        {
            if (before < run.numFaces * run.numCorners)
                failAtLine(run.line + before / run.numCorners,
                           "a face names vertex " + std::to_string(u64{*itWrong} + 1) +
                               ", but the file has " + std::to_string(vPoints.size()) +
                               "; it is damaged, get it anew");
            before -= run.numFaces * run.numCorners;
        }
    }

    // A backslash at the end of a line joins it with the next one.
    [[nodiscard]] bool nextJoined(std::string_view& line)
    {
        do
        {
            if (!file.nextLine(line))
                return false;
        } while (line.empty());
        if (line.back() != '\\')
            return true;
        joined.clear();
        bool bMore = true;
        while (bMore && !line.empty() && line.back() == '\\')
        {
            joined.append(line.substr(0, line.size() - 1)).append(" ");
            bMore = file.nextLine(line);
        }
        if (bMore)
            joined.append(line);
        line = joined;
        return true;
    }

    void takeVertex(std::string_view row)
    {
        std::array<double, 7> aValues{};
        const std::size_t num = takeNumbers(row, aValues.data(), aValues.size());
        if (num < 3)
            file.failHere("a vertex wants three numbers, found " + quote(row) +
                          "; mend or delete the line, or get the file anew");
        vPoints.emplace_back(aValues[0], aValues[1], aValues[2]);
        if (num == 6 || num == 7)
            vColors.push_back({toByte(aValues[3]), toByte(aValues[4]), toByte(aValues[5])});
    }

    void takeFace(std::string_view row)
    {
        const std::size_t first = vIndices.size();
        const char* p = row.data();
        const char* pEnd = p + row.size();
        for (std::string_view word = nextToken(p, pEnd); !word.empty() && word[0] != '#';
             word = nextToken(p, pEnd))
            vIndices.push_back(toIndex(word));
        const std::size_t num = vIndices.size() - first;
        if (num >= 3)
            addFace(file.getLines().getLineNumber(), num);
        else
        {
            vIndices.resize(first);
            ++numSmallFaces;
        }
    }

    [[nodiscard]] std::uint32_t toIndex(std::string_view word) const
    {
        std::int64_t number = 0;
        const auto [pNext, ec] = std::from_chars(word.data(), word.data() + word.size(), number);
        const auto numVertices = static_cast<std::int64_t>(vPoints.size());
        const std::int64_t index = number < 0 ? numVertices + number : number - 1;
        if (ec != std::errc() || (pNext != word.data() + word.size() && *pNext != '/') || index < 0 ||
            index >= UINT32_MAX)
            file.failHere("a face wants numbers of vertices, from 1 up or from -1 down to -" +
                          std::to_string(numVertices) + ", found " + quote(word) +
                          "; the file is damaged, get it anew");
        return static_cast<std::uint32_t>(index);
    }

    InputFile& file;
    std::string joined;
    std::vector<std::uint32_t> vIndices; // of all faces, in order
    std::vector<FaceRun> vFaces;
};

void readObjPoints(InputFile& file, const ReadOptions&, PointData& data)
{
    ObjReader reader(file);
    reader.run(false);
    data.vPoints = std::move(reader.vPoints);
    data.vColors = std::move(reader.vColors);
}

void readObjTriangles(InputFile& file, TriangleData& data)
{
    ObjReader reader(file);
    reader.run(true);
    data.vCorners = reader.cutFaces();
    data.vPoints = std::move(reader.vPoints);
    data.vColors = std::move(reader.vColors);
    noteSmallFaces(data, reader.numSmallFaces);
}

void writeVertices(OutputFile& file, const std::vector<Point3>& vPoints,
                   const std::vector<PointColor>& vColors)
{
    TextWriter& out = file.getText();
    for (std::size_t i = 0; i < vPoints.size(); ++i)
    {
        out.text("v ");
        file.exactPoint(vPoints[i]);
        for (std::size_t k = 0; k < 3 && !vColors.empty(); ++k)
        {
            out.text(" ");
            out.exact(static_cast<float>(vColors[i][k]) / 255.0f);
        }
        out.text("\n");
        file.step();
    }
}

void writeObjPoints(OutputFile& file, const PointData& data, const WriteOptions&)
{
    writeVertices(file, data.vPoints, data.vColors);
}

void writeObjTriangles(OutputFile& file, const TriangleData& data, const WriteOptions&)
{
    writeVertices(file, data.vPoints, data.vColors);
    TextWriter& out = file.getText();
    for (std::size_t i = 0; i < data.vCorners.size(); i += 3)
    {
        out.text("f");
        for (std::size_t k = 0; k < 3; ++k)
        {
            out.text(" ");
            out.exact(u64{data.vCorners[i + k]} + 1);
        }
        out.text("\n");
        file.step();
    }
}

bool objHoldsTriangles(InputFile& file)
{
    std::string_view line;
    while (file.nextLine(line))
    {
        if (line.size() > 1 && line[0] == 'f' && isBlank(line[1]))
            return true;
    }
    return false;
}

} // namespace

const Format OBJ_FORMAT = {.name = "OBJ",
                           .extensions = ".obj ",
                           .sniff = sniffObj,
                           .readPoints = readObjPoints,
                           .readTriangles = readObjTriangles,
                           .writePoints = writeObjPoints,
                           .writeTriangles = writeObjTriangles,
                           .holdsTriangles = objHoldsTriangles};

} // namespace TARN_ZEF
