// Points in columns of text: XYZ, ASC, TXT, CSV, and PTS, which tells the number of its rows before them. Blanks, tabs,
// commas or semicolons part the columns; "#" and "//" start comments; lines end as on any system.
#include "formats/ColumnFinder.h"
#include "formats/Format.h"
#include "formats/textRows.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
// Rows that are looked at before columns are told apart by their shape.
constexpr std::size_t SAMPLE_ROWS = 32;
constexpr std::size_t MAX_COLUMNS = 64;
// Header lines are looked for that far.
constexpr std::size_t LEAST_ROW_BYTES = 6;

using Row = std::array<double, MAX_COLUMNS>;

[[nodiscard]] bool isComment(std::string_view line) noexcept
{
    return line.starts_with('#') || line.starts_with("//");
}

// "1,5 2,5 3,5" or "1,5;2,5;3,5": words with a comma between digits.
[[nodiscard]] bool hasDecimalCommas(std::string_view line)
{
    std::size_t numWords = 0;
    while (!line.empty())
    {
        const std::size_t end = std::min(line.find_first_of(" \t;"), line.size());
        const std::string_view word = line.substr(0, end);
        line.remove_prefix(std::min(end + 1, line.size()));
        if (word.empty())
            continue;
        const std::size_t comma = word.find(',');
        const auto isDigitAt = [&word](std::size_t i)
        { return i < word.size() && word[i] >= '0' && word[i] <= '9'; };
        if (comma == std::string_view::npos || comma == 0 || !isDigitAt(comma - 1) || !isDigitAt(comma + 1) ||
            word.find(',', comma + 1) != std::string_view::npos)
            return false;
        ++numWords;
    }
    return numWords >= 3;
}

class TextReader
{
public:
    TextReader(InputFile& file_, const ReadOptions& options, PointData& data_)
        : file(file_)
        , data(data_)
    {
        if (options.columns.empty())
            return;
        columns = parseColumns(options.columns);
        bColumns = true;
    }

    void run()
    {
        std::string_view line;
        while (file.nextLine(line))
        {
            if (line.empty())
                continue;
            if (!bColumns || data.vPoints.empty())
                takeEarly(line);
            else
                takeRow(line, file.getLines().getLineNumber());
        }
        settle();
        tell();
    }

private:
    struct Sample
    {
        std::string line;
        u64 number;
    };

    // Before the first point: comments and headers may tell the columns, and rows are kept until it is clear
    // what they hold.
    void takeEarly(std::string_view line)
    {
        Row row;
        const bool bRow = !isComment(line) && takeNumbers(line, row.data(), 3) == 3;
        if (bRow && hasDecimalCommas(line))
            file.failHere("commas stand for decimal points in " + quote(line) +
                          "; write points for them, as with \"sed s/,/./g\"");
        if (bRow)
            takeSample(line);
        else if (!bColumns && vSamples.empty())
            takeHeader(line);
        else if (!isComment(line) && !asCount(line))
            skip(line, file.getLines().getLineNumber());
    }

    void takeSample(std::string_view line)
    {
        vSamples.push_back({std::string(line), file.getLines().getLineNumber()});
        if (bColumns || vSamples.size() == SAMPLE_ROWS)
            settle();
    }

    void takeHeader(std::string_view line)
    {
        if (const std::optional<Columns> found = findColumns(line))
        {
            columns = *found;
            bColumns = true;
            if (!columns.why.empty())
                data.vNotes.push_back(columns.why);
        }
        else if (!isComment(line) && !asCount(line))
            skip(line, file.getLines().getLineNumber());
    }

    // Decides about the columns and takes the rows kept so far.
    void settle()
    {
        if (!bColumns)
        {
            std::vector<std::vector<double>> vRows;
            for (const Sample& sample : vSamples)
            {
                Row row;
                const std::size_t num = takeNumbers(sample.line, row.data(), row.size());
                vRows.emplace_back(row.begin(), row.begin() + static_cast<std::ptrdiff_t>(num));
            }
            columns = guessColumns(vRows);
            bColumns = true;
        }
        numWanted = std::min(columns.getMost(), MAX_COLUMNS);
        numLeast = columns.getLeast();
        if (numLeast > MAX_COLUMNS)
            throw FileError("the coordinates stand beyond column " + std::to_string(MAX_COLUMNS) +
                            "; write fewer columns");
        data.vPoints.reserve(file.limitCount(file.getSize(), 4 * LEAST_ROW_BYTES));
        for (const Sample& sample : vSamples)
            takeRow(sample.line, sample.number);
        vSamples.clear();
    }

    void takeRow(std::string_view line, u64 number)
    {
        Row row;
        const std::size_t num = takeNumbers(line, row.data(), numWanted);
        const auto get = [&row, this](Columns::Role role) { return row[columns.aColumn[role]]; };
        if (num < numLeast || !std::isfinite(get(Columns::X)) || !std::isfinite(get(Columns::Y)) ||
            !std::isfinite(get(Columns::Z)))
        {
            if (!isComment(line) && !asCount(line))
                skip(line, number);
            return;
        }
        data.vPoints.emplace_back(get(Columns::X), get(Columns::Y), get(Columns::Z));
        if (numWanted == numLeast)
            return;
        if (num < numWanted)
            dropAttributes(number);
        else
            takeAttributes(get);
    }

    template <class Get>
    void takeAttributes(Get get)
    {
        if (columns.has(Columns::INTENSITY))
            data.vIntensities.push_back(get(Columns::INTENSITY));
        if (columns.has(Columns::NX))
            data.vNormals.emplace_back(get(Columns::NX), get(Columns::NY), get(Columns::NZ));
        if (!columns.has(Columns::RED))
            return;
        const auto toByte = [](double value)
        { return static_cast<std::uint8_t>(value >= 0.0 ? std::min(value, 255.0) : 0.0); };
        data.vColors.push_back(
            {toByte(get(Columns::RED)), toByte(get(Columns::GREEN)), toByte(get(Columns::BLUE))});
    }

    // All points have them or none.
    void dropAttributes(u64 number)
    {
        data.vNotes.push_back("line " + std::to_string(number) +
                              " has only the coordinates, or not all further " +
                              "columns: these are left out everywhere");
        data.vIntensities.clear();
        data.vNormals.clear();
        data.vColors.clear();
        for (const Columns::Role role : {Columns::INTENSITY, Columns::RED, Columns::GREEN, Columns::BLUE,
                                         Columns::NX, Columns::NY, Columns::NZ})
            columns.aColumn[role] = Columns::NONE;
        numWanted = numLeast;
    }

    void skip(std::string_view line, u64 number)
    {
        if (data.numSkipped++ == 0)
            firstSkipped = "line " + std::to_string(number) + ", " + quote(line);
    }

    void tell()
    {
        if (data.vPoints.empty() && data.numSkipped > 0)
            throw FileError("no line holds three finite numbers; the first is " + firstSkipped +
                            "; check the format, or name the columns");
        if (data.numSkipped > 0)
            data.vNotes.push_back("lines without three finite numbers left out: " +
                                  std::to_string(data.numSkipped) + ", the first is " + firstSkipped);
    }

    InputFile& file;
    PointData& data;
    Columns columns;
    bool bColumns = false; // whether columns are known
    std::size_t numLeast = 3;
    std::size_t numWanted = 3;
    std::vector<Sample> vSamples;
    std::string firstSkipped;
};

int sniffText(std::string_view head, u64)
{
    if (head.find('\0') != std::string_view::npos)
        return 0;
    const std::vector<std::string_view> vLines = contentLines(head);
    double aRow[3];
    return std::any_of(vLines.begin(), vLines.end(),
                       [&aRow](std::string_view line) { return takeNumbers(line, aRow, 3) == 3; })
               ? 1
               : 0;
}

int sniffPts(std::string_view head, u64 fileBytes)
{
    const std::vector<std::string_view> vLines = contentLines(head);
    return sniffText(head, fileBytes) == 1 && vLines.size() > 1 && asCount(vLines[0]) && !asCount(vLines[1])
               ? 2
               : 0;
}

void readText(InputFile& file, const ReadOptions& options, PointData& data)
{
    TextReader(file, options, data).run();
}

constexpr std::size_t PTS_COLUMNS = 7;

// PTS: a row count stands before the rows of each scan.
void readPts(InputFile& file, const ReadOptions& options, PointData& data)
{
    const std::vector<std::string_view> vLines = contentLines(file.getHead());
    const u64 count = vLines.empty() ? 0 : asCount(vLines[0]).value_or(0);
    double aRow[PTS_COLUMNS];
    ReadOptions ptsOptions = options;
    if (options.columns.empty() && vLines.size() > 1 &&
        takeNumbers(vLines[1], aRow, PTS_COLUMNS) == PTS_COLUMNS)
        ptsOptions.columns = "x,y,z,i,r,g,b";
    readText(file, ptsOptions, data);
    const u64 numRows = data.vPoints.size() + data.numSkipped;
    if (count > numRows)
        file.failHere("the file counts " + std::to_string(count) + " points and holds " +
                      std::to_string(numRows) + "; it was cut, get it anew");
}

// --- Writing ----------------------------------------------------------------------------------------------

void writeRows(OutputFile& file, const PointData& data, std::string_view separator, bool bIntensityFirst)
{
    TextWriter& out = file.getText();
    const auto put = [&](auto value)
    {
        out.text(separator);
        out.exact(value);
    };
    for (std::size_t i = 0; i < data.vPoints.size(); ++i)
    {
        const Point3& point = data.vPoints[i];
        out.exact(point.x());
        put(point.y());
        put(point.z());
        if (bIntensityFirst && !data.vIntensities.empty())
            put(data.vIntensities[i]);
        for (std::size_t k = 0; k < 3 && !data.vColors.empty(); ++k)
            put(static_cast<unsigned int>(data.vColors[i][k]));
        if (!bIntensityFirst && !data.vIntensities.empty())
            put(data.vIntensities[i]);
        if (!bIntensityFirst && !data.vNormals.empty())
        {
            put(data.vNormals[i].x());
            put(data.vNormals[i].y());
            put(data.vNormals[i].z());
        }
        out.text("\n");
        file.step();
    }
}

// A header line tells the columns if there are further ones.
void writeText(OutputFile& file, const PointData& data, const WriteOptions&)
{
    const bool bCsv = file.getPath().ends_with(".csv") || file.getPath().ends_with(".CSV");
    const bool bMore = !data.vColors.empty() || !data.vIntensities.empty() || !data.vNormals.empty();
    if (bCsv || bMore)
    {
        std::string header = "x y z";
        header += data.vColors.empty() ? "" : " r g b";
        header += data.vIntensities.empty() ? "" : " intensity";
        header += data.vNormals.empty() ? "" : " nx ny nz";
        std::replace(header.begin(), header.end(), ' ', bCsv ? ',' : ' ');
        file.getText().text((bCsv ? "" : "# ") + header + "\n");
    }
    writeRows(file, data, bCsv ? "," : " ", false);
}

void writePts(OutputFile& file, const PointData& data, const WriteOptions&)
{
    file.getText().exact(u64{data.vPoints.size()});
    file.getText().text("\n");
    writeRows(file, data, " ", true);
}

} // namespace

const Format TEXT_FORMAT = {.name = "text",
                            .extensions = ".xyz .asc .txt .csv ",
                            .sniff = sniffText,
                            .readPoints = readText,
                            .writePoints = writeText};

const Format PTS_FORMAT = {
    .name = "PTS", .extensions = ".pts ", .sniff = sniffPts, .readPoints = readPts, .writePoints = writePts};

} // namespace TARN_ZEF
