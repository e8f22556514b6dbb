// PCD 0.7 and before: a header in text that names the fields, then rows as text, as bytes, or as packed bytes field
// by field.
#include "core/cancel.h"
#include "formats/Format.h"
#include "formats/lzf.h"
#include "formats/textRows.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace TARN_ZEF
{
namespace
{
struct Field
{
    std::string name;
    std::size_t bytes = 4;
    char type = 'F';
    std::size_t count = 1;
    std::size_t offset = 0; // in a row, in bytes
    std::size_t column = 0; // in a row of text

    [[nodiscard]] bool isUsable() const
    {
        const bool bFloat = type == 'F' && (bytes == 4 || bytes == 8);
        const bool bInteger =
            (type == 'I' || type == 'U') && (bytes == 1 || bytes == 2 || bytes == 4 || bytes == 8);
        return bFloat || bInteger;
    }
    [[nodiscard]] double load(const char* p) const noexcept;
};

template <class T>
[[nodiscard]] double loadAs(const char* p) noexcept
{
    return static_cast<double>(loadValue<T>(p));
}

double Field::load(const char* p) const noexcept
{
    const bool bSigned = type == 'I';
    if (type == 'F')
        return bytes == 4 ? loadAs<float>(p) : loadAs<double>(p);
    switch (bytes)
    {
    case 1:
        return bSigned ? loadAs<std::int8_t>(p) : loadAs<std::uint8_t>(p);
    case 2:
        return bSigned ? loadAs<std::int16_t>(p) : loadAs<std::uint16_t>(p);
    case 4:
        return bSigned ? loadAs<std::int32_t>(p) : loadAs<std::uint32_t>(p);
    default:
        return bSigned ? loadAs<std::int64_t>(p) : loadAs<std::uint64_t>(p);
    }
}

// What a point takes its values from, in this order.
enum Role
{
    X,
    Y,
    Z,
    NX,
    NY,
    NZ,
    INTENSITY,
    RGB,
    NUM_ROLES
};
constexpr std::array<std::string_view, NUM_ROLES> ROLE_NAMES = {
    "x", "y", "z", "normal_x", "normal_y", "normal_z", "intensity", "rgb"};

int sniffPcd(std::string_view head, u64)
{
    if (head.starts_with("# .PCD"))
        return 2;
    const std::vector<std::string_view> vLines = contentLines(head);
    return !vLines.empty() && (vLines[0].starts_with("VERSION ") || vLines[0].starts_with("FIELDS ")) ? 2 : 0;
}

[[nodiscard]] std::vector<std::string_view> splitWords(std::string_view line)
{
    std::vector<std::string_view> vWords;
    const char* p = line.data();
    for (std::string_view word = nextToken(p, line.data() + line.size()); !word.empty();
         word = nextToken(p, line.data() + line.size()))
        vWords.push_back(word);
    return vWords;
}

class PcdReader
{
public:
    PcdReader(InputFile& file_, PointData& data_)
        : file(file_)
        , data(data_)
        , headerLines(file.getBytes(), LineEnds::LF)
    {
    }

    void run()
    {
        readHeader();
        findRoles();
        if (form == "ascii")
            readRows();
        else if (form == "binary")
            readRecords();
        else if (form == "binary_compressed")
            readPacked();
        else
            file.failHere("the data is of the form " + quote(form) +
                          "; ascii, binary and binary_compressed are read");
    }

private:
    using Values = std::array<double, NUM_ROLES>;

    void readHeader()
    {
        std::string_view line;
        while (form.empty())
        {
            const bool bThere = headerLines.next(line);
            file.getLines().setLineNumber(headerLines.getLineNumber());
            if (!bThere)
                file.failHere("the file ends before its DATA line; it was cut, or is no PCD");
            line = trim(line);
            const std::vector<std::string_view> vWords = splitWords(line);
            if (!vWords.empty() && !vWords[0].starts_with('#'))
                takeHeaderLine(vWords, line);
        }
        layOut();
        if (!bPoints)
            numPoints = width * height;
    }

    void takeHeaderLine(const std::vector<std::string_view>& vWords, std::string_view line)
    {
        const std::string_view key = vWords[0];
        if (key == "FIELDS" || key == "COLUMNS")
        {
            for (std::size_t i = 1; i < vWords.size(); ++i)
                vFields.push_back({.name = std::string(vWords[i])});
        }
        else if (key == "SIZE" || key == "TYPE" || key == "COUNT")
            takeFieldLine(vWords, line);
        else if (key == "WIDTH")
            width = takeCount(vWords, line);
        else if (key == "HEIGHT")
            height = takeCount(vWords, line);
        else if (key == "POINTS")
        {
            numPoints = takeCount(vWords, line);
            bPoints = true;
        }
        else if (key == "DATA")
            form = vWords.size() > 1 ? std::string(vWords[1]) : std::string("?");
        else if (key != "VERSION" && key != "VIEWPOINT")
            file.failHere("a line of a PCD header is wanted, found " + quote(line) +
                          "; check that the file is a PCD");
    }

    void takeFieldLine(const std::vector<std::string_view>& vWords, std::string_view line)
    {
        if (vWords.size() != vFields.size() + 1)
            file.failHere("an entry for each of " + std::to_string(vFields.size()) +
                          " fields is wanted, found " + quote(line) + "; get the file anew");
        for (std::size_t i = 0; i < vFields.size(); ++i)
        {
            const std::string_view word = vWords[i + 1];
            std::uint16_t number = 0;
            if (vWords[0] == "TYPE")
                vFields[i].type = word[0];
            else if (!parseNumber(word, number) || number == 0)
                file.failHere("a number from 1 up is wanted, found " + quote(word) + "; get the file anew");
            else
                (vWords[0] == "SIZE" ? vFields[i].bytes : vFields[i].count) = number;
        }
    }

    [[nodiscard]] u64 takeCount(const std::vector<std::string_view>& vWords, std::string_view line) const
    {
        std::uint32_t number = 0;
        if (vWords.size() < 2 || !parseNumber(vWords[1], number))
            file.failHere("a number is wanted, found " + quote(line) + "; get the file anew");
        return number;
    }

    void layOut()
    {
        for (Field& field : vFields)
        {
            field.offset = rowBytes;
            field.column = numColumns;
            rowBytes += field.bytes * field.count;
            numColumns += field.count;
        }
    }

    void findRoles()
    {
        for (std::size_t role = 0; role < NUM_ROLES; ++role)
        {
            const auto it = std::find_if(vFields.begin(), vFields.end(),
                                         [&](const Field& field) {
                                             return field.name == ROLE_NAMES[role] ||
                                                    (role == RGB && field.name == "rgba");
                                         });
            if (it != vFields.end() && it->isUsable())
                aFields[role] = &*it;
            else if (role <= Z)
                file.failHere("the fields have no " + std::string(ROLE_NAMES[role]) +
                              " that is a number; write x, y and z into the file");
        }
        bNormals = aFields[NX] != nullptr && aFields[NY] != nullptr && aFields[NZ] != nullptr;
    }

    void take(const Values& values, std::uint32_t rgb)
    {
        data.vPoints.emplace_back(values[X], values[Y], values[Z]);
        if (bNormals)
            data.vNormals.emplace_back(values[NX], values[NY], values[NZ]);
        if (aFields[INTENSITY] != nullptr)
            data.vIntensities.push_back(values[INTENSITY]);
        if (aFields[RGB] != nullptr)
            data.vColors.push_back({static_cast<std::uint8_t>(rgb >> 16), static_cast<std::uint8_t>(rgb >> 8),
                                    static_cast<std::uint8_t>(rgb)});
    }

    void reserve(std::size_t num)
    {
        data.vPoints.reserve(num);
        data.vNormals.reserve(bNormals ? num : 0);
        data.vIntensities.reserve(aFields[INTENSITY] != nullptr ? num : 0);
        data.vColors.reserve(aFields[RGB] != nullptr ? num : 0);
    }

    void readRows()
    {
        reserve(file.limitCount(numPoints, 2 * numColumns));
        std::vector<double> vRow(numColumns);
        std::string_view line;
        for (u64 i = 0; i < numPoints; ++i)
        {
            if (!file.nextContent(line))
                file.failHere("the file ends after " + std::to_string(i) + " of " +
                              std::to_string(numPoints) + " points; it was cut, get it anew");
            if (takeNumbers(line, vRow.data(), numColumns) < numColumns)
                file.failHere("a row wants " + std::to_string(numColumns) + " numbers, found " + quote(line) +
                              "; mend or delete the line, or get the file anew");
            Values values{};
            for (std::size_t role = 0; role < NUM_ROLES; ++role)
                values[role] = aFields[role] == nullptr ? 0.0 : vRow[aFields[role]->column];
            take(values, asRgb(values[RGB]));
        }
    }

    // A color stands in the bits of a float, or as a whole number.
    [[nodiscard]] std::uint32_t asRgb(double value) const
    {
        if (aFields[RGB] == nullptr)
            return 0;
        if (aFields[RGB]->type == 'F')
            return std::bit_cast<std::uint32_t>(static_cast<float>(value));
        return value >= 0.0 && value <= UINT32_MAX ? static_cast<std::uint32_t>(value) : 0;
    }

    template <class Locate>
    void takeRecord(Locate locate)
    {
        Values values{};
        for (std::size_t role = 0; role < RGB; ++role)
        {
            if (aFields[role] != nullptr)
                values[role] = aFields[role]->load(locate(*aFields[role]));
        }
        const bool bRgb = aFields[RGB] != nullptr && aFields[RGB]->bytes == 4;
        take(values, bRgb ? loadValue<std::uint32_t>(locate(*aFields[RGB])) : 0);
    }

    void readRecords()
    {
        reserve(file.limitCount(numPoints, rowBytes));
        for (u64 i = 0; i < numPoints; ++i)
        {
            const char* p = file.take(rowBytes, "a point");
            takeRecord([p](const Field& field) { return p + field.offset; });
        }
    }

    // All values of the first field, then all of the second, and so on.
    void readPacked()
    {
        const auto packedBytes = loadValue<std::uint32_t>(file.take(4, "the size of the packed data"));
        const auto bytes = loadValue<std::uint32_t>(file.take(4, "the size of the data"));
        const u64 offset = file.getBytes().getOffset();
        if (bytes != numPoints * rowBytes)
            failAtByte(offset - 4, "the packed data counts " + std::to_string(bytes) + " bytes, but " +
                                       std::to_string(numPoints) + " points take " +
                                       std::to_string(numPoints * rowBytes) + "; get the file anew");
        std::string unpacked;
        if (packedBytes > file.getSize() - offset)
            failAtByte(offset, "the file ends within the packed data; it was cut, get it anew");
        const char* p = file.take(packedBytes, "the packed data");
        if (!unpackLzf({p, packedBytes}, bytes, unpacked))
            failAtByte(offset, "the packed data is damaged; get the file anew, or write it as binary");
        reserve(numPoints);
        for (u64 i = 0; i < numPoints; ++i)
            takeRecord(
                [&](const Field& field)
                { return unpacked.data() + field.offset * numPoints + i * field.bytes * field.count; });
    }

    InputFile& file;
    PointData& data;
    // Ends at LF alone: after the header come bytes, of which the first must not be taken for a line end.
    LineReader headerLines;
    std::vector<Field> vFields;
    std::array<const Field*, NUM_ROLES> aFields{};
    std::size_t rowBytes = 0;
    std::size_t numColumns = 0;
    u64 width = 0;
    u64 height = 1;
    u64 numPoints = 0;
    bool bPoints = false; // whether a line tells their number
    bool bNormals = false;
    std::string form;
};

void readPcd(InputFile& file, const ReadOptions&, PointData& data)
{
    PcdReader(file, data).run();
}

// --- Writing ----------------------------------------------------------------------------------------------

void writeHeader(OutputFile& file, const PointData& data, std::string_view form)
{
    std::string fields = "x y z";
    std::string sizes = "8 8 8";
    std::string types = "F F F";
    std::string counts = "1 1 1";
    const auto add = [&](const char* field, const char* size, const char* type, const char* count)
    {
        fields += field;
        sizes += size;
        types += type;
        counts += count;
    };
    if (!data.vNormals.empty())
        add(" normal_x normal_y normal_z", " 4 4 4", " F F F", " 1 1 1");
    if (!data.vIntensities.empty())
        add(" intensity", " 4", " F", " 1");
    if (!data.vColors.empty())
        add(" rgb", " 4", " U", " 1");
    const std::string num = std::to_string(data.vPoints.size());
    file.getText().text("# .PCD v0.7 - Point Cloud Data file format\nVERSION 0.7\nFIELDS " + fields +
                        "\nSIZE " + sizes + "\nTYPE " + types + "\nCOUNT " + counts + "\nWIDTH " + num +
                        "\nHEIGHT 1\nVIEWPOINT 0 0 0 1 0 0 0\nPOINTS " + num + "\nDATA ");
    file.getText().text(form);
    file.getText().text("\n");
}

[[nodiscard]] std::uint32_t packRgb(const PointColor& color) noexcept
{
    return std::uint32_t{color[0]} << 16 | std::uint32_t{color[1]} << 8 | color[2];
}

// Calls put(value) for each field of a point.
template <class Put>
void forEachValue(const PointData& data, std::size_t i, Put put)
{
    const Point3& point = data.vPoints[i];
    put(point.x());
    put(point.y());
    put(point.z());
    if (!data.vNormals.empty())
    {
        put(static_cast<float>(data.vNormals[i].x()));
        put(static_cast<float>(data.vNormals[i].y()));
        put(static_cast<float>(data.vNormals[i].z()));
    }
    if (!data.vIntensities.empty())
        put(static_cast<float>(data.vIntensities[i]));
    if (!data.vColors.empty())
        put(packRgb(data.vColors[i]));
}

template <class T>
void appendValue(T value, std::string& bytes)
{
    std::array<char, sizeof(T)> aBytes;
    OutputFile::store(value, aBytes.data());
    bytes.append(aBytes.data(), aBytes.size());
}

// All values of the first field, then all of the second, and so on.
[[nodiscard]] std::string columnsOf(const PointData& data)
{
    std::vector<std::string> vColumns;
    for (std::size_t i = 0; i < data.vPoints.size(); ++i)
    {
        checkCancelledAt(i);
        std::size_t column = 0;
        forEachValue(data, i,
                     [&](auto value)
                     {
                         if (vColumns.size() <= column)
                             vColumns.emplace_back().reserve(sizeof value * data.vPoints.size());
                         appendValue(value, vColumns[column++]);
                     });
    }
    std::string columns;
    for (std::string& column : vColumns)
        columns.append(std::exchange(column, {}));
    return columns;
}

void writePacked(OutputFile& file, const PointData& data)
{
    const std::string columns = columnsOf(data);
    const std::string packed = packLzf(columns);
    if (std::max(columns.size(), packed.size()) > UINT32_MAX)
        throw FileError("a compressed PCD holds less than 4 GB, " + std::to_string(columns.size()) +
                        " bytes are wanted; leave out the compression");
    file.value(static_cast<std::uint32_t>(packed.size()));
    file.value(static_cast<std::uint32_t>(columns.size()));
    file.getText().text(packed);
}

void writePcd(OutputFile& file, const PointData& data, const WriteOptions& options)
{
    const bool bPacked = options.bCompressed && !options.bASCII;
    writeHeader(file, data, options.bASCII ? "ascii" : bPacked ? "binary_compressed" : "binary");
    if (bPacked)
        return writePacked(file, data);
    TextWriter& out = file.getText();
    for (std::size_t i = 0; i < data.vPoints.size(); ++i)
    {
        bool bFirst = true;
        const auto put = [&](auto value)
        {
            if (!options.bASCII)
            {
                file.value(value);
                return;
            }
            out.text(bFirst ? "" : " ");
            out.exact(value);
            bFirst = false;
        };
        forEachValue(data, i, put);
        out.text(options.bASCII ? "\n" : "");
        file.step();
    }
}

} // namespace

const Format PCD_FORMAT = {
    .name = "PCD", .extensions = ".pcd ", .sniff = sniffPcd, .readPoints = readPcd, .writePoints = writePcd};

} // namespace TARN_ZEF
