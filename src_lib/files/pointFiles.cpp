// Point clouds in text and binary files, and the choice by extension.
#include "zef_files.h"

#include "core/cancel.h"
#include "core/definitions.h"
#include "files/SkippedLines.h"
#include "files/Visualizer3.h"
#include "text/LineReader.h"
#include "text/TextNumbers.h"
#include "text/TextWriter.h"
#include "text/UnfinishedFile.h"
#include "text/closeWhole.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <new>
#include <stdexcept>
#include <type_traits>

namespace TARN_ZEF
{
namespace
{
// The ".bin" format: typ, number of points, coordinates.
constexpr std::int32_t TYP_3D = 30;
constexpr std::int32_t TYP_2D = 20;
constexpr u64 MAX_POINTS = 0x7FFFFFFF;
// A file that is short by more than this and more than it holds is no cut one: its zeros would only fill the
// memory.
constexpr u64 MAX_MISSING_POINTS = u64{1} << 16;

// Digits that give back every double.
constexpr int PRECISION = 18;

static_assert(sizeof(Point3) == 3 * sizeof(double) && std::is_trivially_copyable_v<Point3>,
              "points are written as they stand in memory");

// Takes back what a reader appended, unless it is told that the reading went well.
class AppendGuard
{
public:
    explicit AppendGuard(std::vector<Point3>& vPoints_)
        : vPoints(vPoints_)
        , size(vPoints_.size())
    {
    }
    ~AppendGuard() { vPoints.resize(size); }
    AppendGuard(const AppendGuard&) = delete;
    AppendGuard& operator=(const AppendGuard&) = delete;

    void keep() noexcept { size = vPoints.size(); }

private:
    std::vector<Point3>& vPoints;
    std::size_t size;
};

// Appends the points of the lines that start with three numbers, and tells about the others.
[[nodiscard]] SkippedLines readLines(LineReader& lines, std::vector<Point3>& vPoints)
{
    SkippedLines skipped;
    const std::size_t numBefore = vPoints.size();
    std::string_view line;
    std::string_view rest;
    Point3 point;
    while (lines.next(line))
    {
        if (extractPoint(line, point, rest))
        {
            vPoints.push_back(point);
            skipped.addRest(rest, line, lines.getLineNumber());
        }
        else
            skipped.add(line, lines.getLineNumber(), vPoints.size() == numBefore);
    }
    return skipped;
}

// The next bytes of source as a value; a stream that ends within it gives 0.
template <class T>
[[nodiscard]] T takeValue(ByteSource& source)
{
    T value{};
    if (source.need(sizeof(T)))
        std::memcpy(&value, source.getData(), sizeof(T));
    source.consume(std::min(sizeof(T), source.getAvailable()));
    return value;
}

// Says that a file is cut; throws if its count is not to be believed.
void requireMostOf(const char* filename, u64 num, u64 numPresent)
{
    const std::string counts =
        "the file counts " + std::to_string(num) + " points and holds only " + std::to_string(numPresent);
    if (num - numPresent > std::max(numPresent, MAX_MISSING_POINTS))
        throw std::runtime_error(counts);
    warningMessage("readPoints_BIN", std::string(filename) + " is cut: " + counts +
                                         "; the coordinates from there on are read as 0.0");
}

// Points of numCoords coordinates each, as far as whole doubles are there; 0.0 from there on.
void appendBinaryPoints(const char* filename, ByteSource& source, int numCoords, u64 num,
                        std::vector<Point3>& vPoints)
{
    const std::size_t pointBytes = static_cast<std::size_t>(numCoords) * sizeof(double);
    u64 numLeft = num;
    if (const auto numBytes = source.getRemaining())
        vPoints.reserve(vPoints.size() + static_cast<std::size_t>(std::min(num, *numBytes / pointBytes)));
    for (; numLeft > 0 && source.need(pointBytes); --numLeft)
    {
        double aXYZ[3] = {0.0, 0.0, 0.0};
        std::memcpy(aXYZ, source.getData(), pointBytes);
        source.consume(pointBytes);
        vPoints.emplace_back(aXYZ[0], aXYZ[1], aXYZ[2]);
    }
    if (numLeft == 0)
        return;
    requireMostOf(filename, num, num - numLeft);
    double aXYZ[3] = {0.0, 0.0, 0.0};
    std::memcpy(aXYZ, source.getData(), source.getAvailable() / sizeof(double) * sizeof(double));
    vPoints.emplace_back(aXYZ[0], aXYZ[1], aXYZ[2]);
    vPoints.resize(vPoints.size() + static_cast<std::size_t>(numLeft - 1));
}

[[nodiscard]] bool writeScene(const std::string& filename, const std::vector<Point3>& vPoints)
{
    const UnfinishedFile unfinished(filename);
    Visualizer3 scene(filename, nullptr, true);
    if (!scene.isOpen())
        return false;
    scene.writePoints(vPoints, 10, CRED);
    return scene.finish();
}

[[nodiscard]] bool closeReported(std::ofstream& file, const char* filename)
{
    if (closeWhole(file))
        return true;
    printFailure(std::string(filename) + " can't be written\n");
    return false;
}

} // namespace

// --- Reading ----------------------------------------------------------------------------------------------

bool readPoints_auto(std::string& filename, std::vector<Point3>& vPoints)
{
    switch (getFileType(filename))
    {
    case FT_PLY:
        return readPly(filename.c_str(), true, vPoints);
    case FT_ASCII:
        return readPoints_ASCII(filename.c_str(), vPoints);
    case FT_BIN:
        return readPoints_BIN(filename.c_str(), vPoints);
    default:
        break;
    }
    printErrorFailure("Filename extension of [" + filename +
                      "] is not valid, expected *.ply, *.xyz or *.bin\n");
    return false;
}

bool readPoints_ASCII(const char* filename, std::vector<Point3>& vPoints)
{
    std::ifstream file(filename, std::ios::binary);
    if (!file)
    {
        printFailure(std::string(filename) + " is unreadable\n");
        return false;
    }
    AppendGuard guard(vPoints);
    try
    {
        ByteSource source(file);
        skipByteOrderMark(source);
        LineReader lines(source, findLineEnds(source));
        readLines(lines, vPoints).warn(filename);
    }
    catch (const std::bad_alloc&)
    {
        throw;
    }
    catch (const std::exception& e)
    {
        checkCancelled(); // which is no fault of the file
        printFailure(std::string(filename) + " is unreadable, " + e.what() + "\n");
        return false;
    }
    guard.keep();
    return true;
}

bool readPoints_BIN(const char* filename, std::vector<Point3>& vPoints)
{
    std::ifstream file(filename, std::ios::binary);
    if (!file)
    {
        printFailure(std::string(filename) + " can't be read\n");
        return false;
    }
    AppendGuard guard(vPoints);
    try
    {
        ByteSource source(file);
        const auto typ = takeValue<std::int32_t>(source);
        if (typ != TYP_3D && typ != TYP_2D)
        {
            printFailure(std::string(filename) + " has wrong filetype " + std::to_string(typ) +
                         ", expected: 30 or 20\n");
            return false;
        }
        const auto num = takeValue<u64>(source);
        if (num > MAX_POINTS)
            throw std::runtime_error("byte 4: the file counts " + std::to_string(num) + " points, at most " +
                                     std::to_string(MAX_POINTS) +
                                     " are read; it is damaged, or no such file");
        appendBinaryPoints(filename, source, typ == TYP_3D ? 3 : 2, num, vPoints);
    }
    catch (const std::bad_alloc&)
    {
        throw;
    }
    catch (const std::exception& e)
    {
        checkCancelled(); // which is no fault of the file
        printFailure(std::string(filename) + " can't be read, " + e.what() + "\n");
        return false;
    }
    guard.keep();
    return true;
}

// --- Writing ----------------------------------------------------------------------------------------------

bool writePoints_auto(std::string& filename, std::vector<Point3>& vPoints, bool bASCII)
{
    switch (getFileType(filename))
    {
    case FT_PLY:
        return writePointsPly(filename, vPoints, bASCII);
    case FT_ASCII:
        return writePoints_ASCII(filename.c_str(), vPoints);
    case FT_BIN:
        return writePoints_BIN(filename.c_str(), vPoints);
    case FT_LIST:
        return writeScene(filename, vPoints);
    default:
        break;
    }
    // The message names another file than the one that is written; both stay as callers know them.
    printErrorFailure("Filename [" + filename + "] is not valid, using [zef_output_bin.ply] instead\n");
    static_cast<void>(writePointsPly(filename, vPoints, bASCII));
    return false;
}

bool writePoints_ASCII(const char* filename, const std::vector<Point3>& vPoints)
{
    const UnfinishedFile unfinished(filename);
    std::ofstream file(filename, std::ios::binary);
    if (!file)
    {
        printFailure(std::string(filename) + " can't be written\n");
        return false;
    }
    {
        TextWriter out(file, PRECISION);
        for (const Point3& point : vPoints)
            out.point(point);
    }
    return closeReported(file, filename);
}

bool writePoints_BIN(const char* filename, std::vector<Point3>& vPoints)
{
    const UnfinishedFile unfinished(filename);
    std::ofstream file(filename, std::ios::binary);
    if (!file)
    {
        printFailure(std::string(filename) + " can't be written\n");
        return false;
    }
    const std::int32_t typ = TYP_3D;
    const u64 num = vPoints.size();
    file.write(reinterpret_cast<const char*>(&typ), sizeof typ);
    file.write(reinterpret_cast<const char*>(&num), sizeof num);
    file.write(reinterpret_cast<const char*>(vPoints.data()),
               static_cast<std::streamsize>(vPoints.size() * sizeof(Point3)));
    return closeReported(file, filename);
}

} // namespace TARN_ZEF
