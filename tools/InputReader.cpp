#include "InputReader.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>
#include <system_error>

#include "PointBox.h"
#include "ToolError.h"
#include "platform.h"

namespace TARN_TOOL
{
using TARN_ZEF::Point3;
using TARN_ZEF::PointData;
using TARN_ZEF::TriangleData;

namespace
{
// Leaves out the entries whose point is not finite.
template <typename Attribute>
void keepFinite(std::vector<Attribute>& v, const std::vector<Point3>& vPoints)
{
    if (v.empty())
        return;
    std::size_t numKept = 0;
    for (std::size_t i = 0; i < vPoints.size(); ++i)
        if (isFinite(vPoints[i]))
            v[numKept++] = v[i];
    v.resize(numKept);
}

// Returns how many went.
std::size_t dropUnusablePoints(PointData& data)
{
    const std::size_t numBefore = data.vPoints.size();
    if (std::all_of(data.vPoints.begin(), data.vPoints.end(), isFinite))
        return 0;
    keepFinite(data.vNormals, data.vPoints);
    keepFinite(data.vColors, data.vPoints);
    keepFinite(data.vIntensities, data.vPoints);
    std::erase_if(data.vPoints, [](const Point3& p) { return !isFinite(p); });
    return numBefore - data.vPoints.size();
}

// An attribute that only some of the points would have is none.
template <typename Attribute>
void appendAttribute(std::vector<Attribute>& v, std::size_t numBefore, const std::vector<Attribute>& vMore)
{
    if (v.size() != numBefore || vMore.empty())
        v.clear();
    else
        v.insert(v.end(), vMore.begin(), vMore.end());
}

void append(PointData& data, const PointData& more)
{
    const std::size_t num = data.vPoints.size();
    appendAttribute(data.vNormals, num, more.vNormals);
    appendAttribute(data.vColors, num, more.vColors);
    appendAttribute(data.vIntensities, num, more.vIntensities);
    data.vPoints.insert(data.vPoints.end(), more.vPoints.begin(), more.vPoints.end());
}

void append(TriangleData& data, const TriangleData& more)
{
    const std::size_t num = data.vPoints.size();
    if (num + more.vPoints.size() > UINT32_MAX)
        throw ToolError("the inputs hold more than 4294967295 vertices; give fewer");
    appendAttribute(data.vColors, num, more.vColors);
    data.vPoints.insert(data.vPoints.end(), more.vPoints.begin(), more.vPoints.end());
    std::transform(more.vCorners.begin(), more.vCorners.end(), std::back_inserter(data.vCorners),
                   [num](std::uint32_t corner) { return corner + static_cast<std::uint32_t>(num); });
}

std::string textOfName(const std::string& name)
{
    return name == Options::STANDARD_STREAM ? "standard input" : name;
}

PointData makeBuiltInCloud()
{
    PointData data;
    TARN_ZEF::generateSampleSurface(TARN_ZEF::SAMPLE_SURFACE_POINTS, TARN_ZEF::SAMPLE_SURFACE_SEED,
                                    data.vPoints);
    return data;
}
} // namespace

InputReader::InputReader(const Options& options_, LibraryCalls& calls_, const Console& console_)
    : options(options_)
    , calls(calls_)
    , console(console_)
{
}

const std::string& InputReader::findFile(const std::string& name)
{
    if (name == Options::STANDARD_STREAM)
    {
        if (!standardInput)
            standardInput.emplace(options.isToStandardOutput() ? "" : options.format);
        return standardInput->getFileName();
    }
    std::error_code ec;
    if (!std::filesystem::exists(name, ec))
        throw ToolError("cannot read " + name + ": there is no such file");
    if (std::filesystem::is_directory(name, ec))
        throw ToolError("cannot read " + name + ": it is a folder; give the name of a file");
    if (!mayRead(name))
        throw ToolError("cannot read " + name + ": " + std::strerror(errno));
    return name;
}

template <typename F>
auto InputReader::read(const std::string& name, F f, const char* hint)
{
    const std::string& file = findFile(name);
    try
    {
        return calls.run([&] { return f(file); });
    }
    catch (const ToolError& error)
    {
        // The reason begins with the name of the file.
        const std::string reason = error.what();
        throw ToolError("cannot read " + textOfName(name) +
                        (reason.starts_with(file) ? reason.substr(file.size()) : ": " + reason) + hint);
    }
}

template <typename Data>
void InputReader::tell(const std::string& name, const Data& data) const
{
    for (const std::string& note : data.vNotes)
        console.note(textOfName(name) + ": " + note);
}

PointData InputReader::readPoints(const std::string& name)
{
    if (name == Options::BUILT_IN_CLOUD)
        return makeBuiltInCloud();
    PointData data =
        read(name, [&](const std::string& file) { return TARN_ZEF::readPoints(file, options.reading); });
    tell(name, data);
    return data;
}

PointData InputReader::readPoints()
{
    PointData data = readPoints(options.vInputs.front());
    for (std::size_t i = 1; i < options.vInputs.size(); ++i)
        append(data, readPoints(options.vInputs[i]));
    const std::size_t numDropped = dropUnusablePoints(data);
    if (numDropped != 0)
        console.note("points left out for a NaN or infinite coordinate: " + std::to_string(numDropped));
    return data;
}

TriangleData InputReader::readTriangles(const std::string& name)
{
    TriangleData data = read(
        name, [](const std::string& file) { return TARN_ZEF::readTriangles(file); }, options.getCloudHint());
    tell(name, data);
    return data;
}

TriangleData InputReader::readTriangles()
{
    TriangleData data = readTriangles(options.vInputs.front());
    for (std::size_t i = 1; i < options.vInputs.size(); ++i)
        append(data, readTriangles(options.vInputs[i]));
    return data;
}

bool InputReader::holdTriangles()
{
    const auto holds = [&](const std::string& name)
    {
        return name != Options::BUILT_IN_CLOUD &&
               read(name, [](const std::string& file) { return TARN_ZEF::holdsTriangles(file); });
    };
    return std::all_of(options.vInputs.begin(), options.vInputs.end(), holds);
}

bool InputReader::isPly()
{
    std::ifstream file(findFile(options.vInputs.front()), std::ios::binary);
    std::array<char, 3> head{};
    file.read(head.data(), head.size());
    return std::string_view(head.data(), head.size()) == "ply";
}

} // namespace TARN_TOOL
