// PTX: scans one after the other. Each has the numbers of columns and rows, the place and the axes of the scanner,
// a matrix that moves the points to where they belong, and columns times rows points "x y z intensity [r g b]".
#include "formats/Format.h"
#include "formats/textRows.h"

#include <array>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
constexpr std::size_t AXIS_LINES = 4;
constexpr std::size_t SIZE = 4; // of the matrix

int sniffPtx(std::string_view head, u64)
{
    const std::vector<std::string_view> vLines = contentLines(head);
    double aRow[3];
    return vLines.size() > 2 && asCount(vLines[0]) && asCount(vLines[1]) &&
                   takeNumbers(vLines[2], aRow, 3) == 3
               ? 3
               : 0;
}

class PtxReader
{
public:
    PtxReader(InputFile& file_, PointData& data_)
        : file(file_)
        , data(data_)
    {
    }

    void run()
    {
        std::string_view line;
        while (file.nextContent(line))
        {
            const u64 numColumns = toCount(line);
            needLine(line);
            const u64 numRows = toCount(line);
            readPlace();
            readScan(numColumns * numRows);
        }
        if (data.vColors.size() != data.vPoints.size())
            data.vColors.clear();
        if (data.vIntensities.size() != data.vPoints.size())
            data.vIntensities.clear();
        if (data.numSkipped > 0)
            data.vNotes.push_back("rays without a point: " + std::to_string(data.numSkipped));
    }

private:
    void needLine(std::string_view& line)
    {
        if (!file.nextContent(line))
            file.failHere("the file ends within a scan; it was cut, get it anew");
    }

    [[nodiscard]] u64 toCount(std::string_view line) const
    {
        const std::optional<u64> count = asCount(line);
        if (!count || *count > UINT32_MAX)
            file.failHere("the number of columns or rows of a scan is wanted, found " + quote(line) +
                          "; get the file anew");
        return *count;
    }

    void needNumbers(double* values, std::size_t num)
    {
        std::string_view line;
        needLine(line);
        if (takeNumbers(line, values, num) < num)
            file.failHere(std::to_string(num) + " numbers are wanted, found " + quote(line) +
                          "; get the file anew");
    }

    void readPlace()
    {
        double aIgnored[3];
        for (std::size_t i = 0; i < AXIS_LINES; ++i)
            needNumbers(aIgnored, 3);
        for (std::size_t i = 0; i < SIZE; ++i)
            needNumbers(aMatrix[i].data(), SIZE);
    }

    void readScan(u64 num)
    {
        std::string_view line;
        for (u64 i = 0; i < num; ++i)
        {
            needLine(line);
            std::array<double, 7> aRow{};
            const std::size_t numValues = takeNumbers(line, aRow.data(), aRow.size());
            if (numValues < 3)
                file.failHere("a point wants three numbers, found " + quote(line) +
                              "; mend or delete the line, or get the file anew");
            takePoint(aRow, numValues);
        }
    }

    void takePoint(const std::array<double, 7>& aRow, std::size_t numValues)
    {
        if (aRow[0] == 0.0 && aRow[1] == 0.0 && aRow[2] == 0.0)
        {
            ++data.numSkipped;
            return;
        }
        data.vPoints.emplace_back(move(aRow, 0), move(aRow, 1), move(aRow, 2));
        if (numValues > 3)
            data.vIntensities.push_back(aRow[3]);
        if (numValues < 7)
            return;
        PointColor color{};
        for (std::size_t k = 0; k < 3; ++k)
            color[k] = static_cast<std::uint8_t>(aRow[4 + k] >= 0.0 ? std::min(aRow[4 + k], 255.0) : 0.0);
        data.vColors.push_back(color);
    }

    // The point is a row in front of the matrix; its last row moves.
    [[nodiscard]] double move(const std::array<double, 7>& aRow, std::size_t axis) const
    {
        return aRow[0] * aMatrix[0][axis] + aRow[1] * aMatrix[1][axis] + aRow[2] * aMatrix[2][axis] +
               aMatrix[3][axis];
    }

    InputFile& file;
    PointData& data;
    std::array<std::array<double, SIZE>, SIZE> aMatrix{};
};

void readPtx(InputFile& file, const ReadOptions&, PointData& data)
{
    PtxReader(file, data).run();
}

// One scan of one column, where it stands.
void writePtx(OutputFile& file, const PointData& data, const WriteOptions&)
{
    TextWriter& out = file.getText();
    out.text("1\n");
    out.exact(u64{data.vPoints.size()});
    out.text("\n0 0 0\n1 0 0\n0 1 0\n0 0 1\n1 0 0 0\n0 1 0 0\n0 0 1 0\n0 0 0 1\n");
    for (std::size_t i = 0; i < data.vPoints.size(); ++i)
    {
        file.exactPoint(data.vPoints[i]);
        out.text(" ");
        out.exact(data.vIntensities.empty() ? 0.5 : data.vIntensities[i]);
        for (std::size_t k = 0; k < 3 && !data.vColors.empty(); ++k)
        {
            out.text(" ");
            out.exact(static_cast<unsigned int>(data.vColors[i][k]));
        }
        out.text("\n");
        file.step();
    }
}

} // namespace

const Format PTX_FORMAT = {
    .name = "PTX", .extensions = ".ptx ", .sniff = sniffPtx, .readPoints = readPtx, .writePoints = writePtx};

} // namespace TARN_ZEF
