// LAS 1.0 to 1.4: a header, other records, points of one of eleven forms. Coordinates are whole numbers with a scale
// and an offset. Written is 1.2.
#include "formats/Format.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace TARN_ZEF
{
namespace
{
struct PointForm
{
    std::size_t bytes;       // at least
    std::size_t colorOffset; // 0: without colors
};
constexpr std::array<PointForm, 11> FORMS = {{{20, 0},
                                              {28, 0},
                                              {26, 20},
                                              {34, 28},
                                              {57, 0},
                                              {63, 28},
                                              {30, 0},
                                              {36, 30},
                                              {38, 30},
                                              {59, 0},
                                              {67, 30}}};
constexpr int FIRST_NEW_FORM = 6; // from here on returns and classes take more bits
constexpr std::size_t COORDINATE_BYTES = 12;
constexpr std::size_t HEADER_BYTES = 227;
constexpr std::size_t HEADER_BYTES_1_4 = 375;

int sniffLas(std::string_view head, u64)
{
    return head.starts_with("LASF") ? 2 : 0;
}

class LasReader
{
public:
    LasReader(InputFile& file_, const ReadOptions& options_, PointData& data_)
        : file(file_)
        , options(options_)
        , data(data_)
    {
    }

    void run()
    {
        readHeader();
        const std::size_t num = file.limitCount(numPoints, recordBytes);
        data.vPoints.reserve(num);
        data.vIntensities.reserve(num);
        data.vColors.reserve(FORMS[form].colorOffset == 0 ? 0 : num);
        for (u64 i = 0; i + 1 < numPoints; ++i)
            takeRecord(file.take(recordBytes, "a point"));
        if (numPoints > 0)
            takeLastRecord();
        if (data.numSkipped > 0)
            data.vNotes.push_back("points left out by return or class: " + std::to_string(data.numSkipped) +
                                  " of " + std::to_string(numPoints));
        narrowColors();
    }

private:
    void readHeader()
    {
        const char* p = file.take(HEADER_BYTES, "the header");
        const auto headerBytes = loadValue<std::uint16_t>(p + 94);
        const auto dataOffset = loadValue<std::uint32_t>(p + 96);
        const auto formByte = loadValue<std::uint8_t>(p + 104);
        const int minor = loadValue<std::uint8_t>(p + 25);
        if ((formByte & 0xC0) != 0)
            failAtByte(104,
                       "the points are compressed, as in LAZ, which is not read; unpack it to LAS first, "
                       "as with \"laszip -i in.laz -o out.las\" or \"pdal translate in.laz out.las\"");
        if (formByte >= FORMS.size())
            failAtByte(104, "points of form " + std::to_string(formByte) +
                                "; 0 to 10 are known, get the file anew");
        form = formByte;
        recordBytes = loadValue<std::uint16_t>(p + 105);
        if (recordBytes < FORMS[form].bytes)
            failAtByte(105, "a point of form " + std::to_string(form) + " takes " +
                                std::to_string(FORMS[form].bytes) + " bytes, the file tells " +
                                std::to_string(recordBytes) + "; get it anew");
        numPoints = loadValue<std::uint32_t>(p + 107);
        for (std::size_t k = 0; k < 3; ++k)
        {
            aScale[k] = loadValue<double>(p + 131 + 8 * k);
            aOffset[k] = loadValue<double>(p + 155 + 8 * k);
            if (!std::isfinite(aScale[k]) || aScale[k] == 0.0 || !std::isfinite(aOffset[k]))
                failAtByte(131 + 8 * k, "the scale or the offset of the coordinates is no usable number; get "
                                        "the file anew");
        }
        u64 numRead = HEADER_BYTES;
        if (minor >= 4 && headerBytes >= HEADER_BYTES_1_4)
        {
            const char* pMore = file.take(HEADER_BYTES_1_4 - HEADER_BYTES, "the header");
            const auto num = loadValue<std::uint64_t>(pMore + (247 - HEADER_BYTES));
            numPoints = num > 0 ? num : numPoints;
            numRead = HEADER_BYTES_1_4;
        }
        skipTo(dataOffset, numRead);
    }

    void skipTo(u64 dataOffset, u64 numRead)
    {
        if (dataOffset < numRead || !file.getBytes().skip(dataOffset - numRead))
            failAtByte(96, "the points start at byte " + std::to_string(dataOffset) + " of a file of " +
                               std::to_string(file.getSize()) + "; it was cut, get it anew");
    }

    // Whether the point is wanted.
    [[nodiscard]] bool isWanted(const char* p) const
    {
        const auto returns = loadValue<std::uint8_t>(p + 14);
        const bool bNew = form >= FIRST_NEW_FORM;
        const int number = bNew ? returns & 15 : returns & 7;
        const int of = bNew ? returns >> 4 : (returns >> 3) & 7;
        if (options.bLastReturns && number < of)
            return false;
        if (options.vClasses.empty())
            return true;
        const int pointClass = bNew ? loadValue<std::uint8_t>(p + 16) : loadValue<std::uint8_t>(p + 15) & 31;
        return std::find(options.vClasses.begin(), options.vClasses.end(), pointClass) !=
               options.vClasses.end();
    }

    void takeRecord(const char* p)
    {
        if (!isWanted(p))
        {
            ++data.numSkipped;
            return;
        }
        double aXYZ[3];
        for (std::size_t k = 0; k < 3; ++k)
            aXYZ[k] = loadValue<std::int32_t>(p + 4 * k) * aScale[k] + aOffset[k];
        data.vPoints.emplace_back(aXYZ[0], aXYZ[1], aXYZ[2]);
        data.vIntensities.push_back(loadValue<std::uint16_t>(p + 12));
        const std::size_t colorOffset = FORMS[form].colorOffset;
        if (colorOffset == 0)
            return;
        for (std::size_t k = 0; k < 3; ++k)
            vWideColors.push_back(loadValue<std::uint16_t>(p + colorOffset + 2 * k));
    }

    // Some programs cut it behind what they fill in.
    void takeLastRecord()
    {
        const u64 left = file.getBytes().getRemaining().value_or(0);
        if (left < COORDINATE_BYTES || left >= recordBytes)
        {
            takeRecord(file.take(recordBytes, "a point"));
            return;
        }
        std::string record(file.take(static_cast<std::size_t>(left), "a point"),
                           static_cast<std::size_t>(left));
        record.resize(recordBytes, '\0');
        takeRecord(record.data());
        data.vNotes.emplace_back(
            "the file ends within the last point, of which only the coordinates are sure");
    }

    // The format wants 16 bits, but some programs write 8.
    void narrowColors()
    {
        const bool bWide =
            std::any_of(vWideColors.begin(), vWideColors.end(), [](auto c) { return c > 255; });
        for (std::size_t i = 0; i < vWideColors.size(); i += 3)
        {
            PointColor color{};
            for (std::size_t k = 0; k < 3; ++k)
                color[k] = static_cast<std::uint8_t>(bWide ? vWideColors[i + k] >> 8 : vWideColors[i + k]);
            data.vColors.push_back(color);
        }
    }

    InputFile& file;
    const ReadOptions& options;
    PointData& data;
    std::size_t form = 0;
    std::size_t recordBytes = 0;
    u64 numPoints = 0;
    double aScale[3] = {};
    double aOffset[3] = {};
    std::vector<std::uint16_t> vWideColors; // three a point
};

void readLas(InputFile& file, const ReadOptions& options, PointData& data)
{
    LasReader(file, options, data).run();
}

// --- Writing ----------------------------------------------------------------------------------------------

struct Axis
{
    double low = 0.0;
    double high = 0.0;
    double scale = 1.0;
    double offset = 0.0;

    [[nodiscard]] std::int32_t code(double value) const
    {
        return static_cast<std::int32_t>(std::lround((value - offset) / scale));
    }
};

// The offset is in the middle, so that 2^31 steps reach to both sides; the scale is a power of ten, as others
// expect, that leaves room.
[[nodiscard]] Axis layAxis(double low, double high)
{
    Axis axis{low, high};
    const double half = (high - low) / 2.0;
    axis.offset = std::floor(low + half);
    const double reach = std::max(high - axis.offset, axis.offset - low);
    if (!std::isfinite(reach))
        throw FileError("LAS holds finite coordinates only; leave out the others, or write PLY");
    axis.scale = 1e-9;
    while (reach / axis.scale > 2e9)
        axis.scale *= 10.0;
    return axis;
}

[[nodiscard]] std::array<Axis, 3> layAxes(const std::vector<Point3>& vPoints)
{
    double aLow[3] = {0.0, 0.0, 0.0};
    double aHigh[3] = {0.0, 0.0, 0.0};
    for (std::size_t i = 0; i < vPoints.size(); ++i)
    {
        const double aXYZ[3] = {vPoints[i].x(), vPoints[i].y(), vPoints[i].z()};
        for (std::size_t k = 0; k < 3; ++k)
        {
            if (!std::isfinite(aXYZ[k]))
                throw FileError("LAS holds finite coordinates only, point " + std::to_string(i) +
                                " has another; leave it out, or write PLY");
            aLow[k] = i == 0 ? aXYZ[k] : std::min(aLow[k], aXYZ[k]);
            aHigh[k] = i == 0 ? aXYZ[k] : std::max(aHigh[k], aXYZ[k]);
        }
    }
    return {layAxis(aLow[0], aHigh[0]), layAxis(aLow[1], aHigh[1]), layAxis(aLow[2], aHigh[2])};
}

void zeros(OutputFile& file, std::size_t num)
{
    for (std::size_t i = 0; i < num; ++i)
        file.value(std::uint8_t{0});
}

void padded(OutputFile& file, std::string_view text, std::size_t size)
{
    file.getText().text(text);
    zeros(file, size - text.size());
}

void writeHeader(OutputFile& file, const std::array<Axis, 3>& aAxes, std::uint32_t num, bool bColors)
{
    file.getText().text("LASF");
    zeros(file, 20); // source, encoding, project
    file.value(std::uint8_t{1});
    file.value(std::uint8_t{2});
    padded(file, "ZEF", 32);
    padded(file, "ZEF", 32);
    zeros(file, 4); // day and year
    file.value(static_cast<std::uint16_t>(HEADER_BYTES));
    file.value(static_cast<std::uint32_t>(HEADER_BYTES));
    file.value(std::uint32_t{0});
    file.value(static_cast<std::uint8_t>(bColors ? 2 : 0));
    file.value(static_cast<std::uint16_t>(bColors ? 26 : 20));
    file.value(num);
    file.value(num); // all are first returns
    zeros(file, 16);
    for (const Axis& axis : aAxes)
        file.value(axis.scale);
    for (const Axis& axis : aAxes)
        file.value(axis.offset);
    for (const Axis& axis : aAxes)
    {
        file.value(axis.high);
        file.value(axis.low);
    }
}

void writeLas(OutputFile& file, const PointData& data, const WriteOptions&)
{
    if (data.vPoints.size() > UINT32_MAX)
        throw FileError("LAS 1.2 holds at most 4294967295 points; write PLY");
    const std::array<Axis, 3> aAxes = layAxes(data.vPoints);
    const bool bColors = !data.vColors.empty();
    writeHeader(file, aAxes, static_cast<std::uint32_t>(data.vPoints.size()), bColors);
    for (std::size_t i = 0; i < data.vPoints.size(); ++i)
    {
        file.value(aAxes[0].code(data.vPoints[i].x()));
        file.value(aAxes[1].code(data.vPoints[i].y()));
        file.value(aAxes[2].code(data.vPoints[i].z()));
        const double intensity = data.vIntensities.empty() ? 0.0 : data.vIntensities[i];
        file.value(static_cast<std::uint16_t>(intensity >= 0.0 ? std::min(intensity, 65535.0) : 0.0));
        file.value(std::uint8_t{0x09}); // the only return
        zeros(file, 5);                 // class, angle, user data, source
        for (std::size_t k = 0; k < 3 && bColors; ++k)
            file.value(static_cast<std::uint16_t>(data.vColors[i][k] * 257));
        file.step();
    }
}

} // namespace

const Format LAS_FORMAT = {.name = "LAS",
                           .extensions = ".las .laz ",
                           .sniff = sniffLas,
                           .readPoints = readLas,
                           .writePoints = writeLas};

} // namespace TARN_ZEF
