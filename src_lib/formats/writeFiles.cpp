// The public calls that write: which format, and errors with the name of the file.
#include "formats/Format.h"
#include "formats/guardedCall.h"

#include <algorithm>

namespace TARN_ZEF
{
namespace
{
// The writer that the format of the extension has; member tells which.
template <class Writer>
[[nodiscard]] Writer chooseWriter(const std::string& path, Writer Format::*member, const char* what)
{
    const std::string list =
        listExtensions([member](const Format& format) { return format.*member != nullptr; });
    const Format* pFormat = findFormat(path);
    if (pFormat == nullptr)
        throw FileError("its extension tells no known format; for " + std::string(what) +
                        " expected is one of " + list);
    if (pFormat->*member == nullptr)
        throw FileError("the format " + std::string(pFormat->name) + " is not written with " + what +
                        "; expected is one of " + list);
    return pFormat->*member;
}

template <class Attributes>
void requireSize(const Attributes& v, std::size_t numPoints, const char* what)
{
    if (!v.empty() && v.size() != numPoints)
        throw FileError("there are " + std::to_string(v.size()) + " " + what + " for " +
                        std::to_string(numPoints) + " points; give one for each point or none");
}
} // namespace

void writePoints(const std::string& path, const PointData& data, const WriteOptions& options)
{
    guardedCall("Write", path,
                [&]
                {
                    const auto writer = chooseWriter(path, &Format::writePoints, "points");
                    requireSize(data.vNormals, data.vPoints.size(), "normals");
                    requireSize(data.vColors, data.vPoints.size(), "colors");
                    requireSize(data.vIntensities, data.vPoints.size(), "intensities");
                    OutputFile file(path, data.vPoints.size());
                    writer(file, data, options);
                    file.finish();
                });
}

void writeTriangles(const std::string& path, const TriangleData& data, const WriteOptions& options)
{
    guardedCall("Write", path,
                [&]
                {
                    const auto writer = chooseWriter(path, &Format::writeTriangles, "triangles");
                    requireSize(data.vColors, data.vPoints.size(), "colors");
                    const bool bInRange =
                        std::all_of(data.vCorners.begin(), data.vCorners.end(),
                                    [&](std::uint32_t corner) { return corner < data.vPoints.size(); });
                    if (data.vCorners.size() % 3 != 0 || !bInRange)
                        throw FileError(
                            "the corners are no triangles of these points; give three a triangle");
                    OutputFile file(path, data.vPoints.size() + data.vCorners.size() / 3);
                    writer(file, data, options);
                    file.finish();
                });
}

FormatUse getFormatUse(const std::string& path)
{
    const Format* pFormat = findFormat(path);
    if (pFormat == nullptr)
        return {};
    return {.bReadsPoints = pFormat->readPoints != nullptr,
            .bReadsTriangles = pFormat->readTriangles != nullptr,
            .bWritesPoints = pFormat->writePoints != nullptr,
            .bWritesTriangles = pFormat->writeTriangles != nullptr};
}

} // namespace TARN_ZEF
