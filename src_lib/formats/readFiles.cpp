// The public calls that read: which format, and errors with the name of the file.
#include "formats/Format.h"
#include "formats/guardedCall.h"

namespace TARN_ZEF
{
namespace
{
// By what the file holds, or where that tells nothing by its name.
template <class Can>
[[nodiscard]] const Format& chooseFormat(const InputFile& file, const char* what, Can can)
{
    const Format* pByName = findFormat(file.getPath());
    const Format* pByContent = findFormat(file.getHead(), file.getSize());
    // A text may be of any of the text formats; the name then tells which.
    const bool bText = pByContent == &TEXT_FORMAT && pByName != nullptr && pByName != &STL_FORMAT;
    const Format* pFormat = pByContent == nullptr || bText ? pByName : pByContent;
    if (file.getSize() == 0)
        throw FileError("the file is empty, it holds no byte; check that it was written");
    if (pFormat == nullptr)
        throw FileError("neither its first bytes nor its name tell a known format; expected is one of " +
                        listExtensions(can));
    if (!can(*pFormat))
        throw FileError("it is a file of the format " + std::string(pFormat->name) + ", from which no " +
                        what + " are read; expected is one of " + listExtensions(can));
    return *pFormat;
}

[[nodiscard]] bool canReadPoints(const Format& format)
{
    return format.readPoints != nullptr;
}
[[nodiscard]] bool canReadTriangles(const Format& format)
{
    return format.readTriangles != nullptr;
}

template <class Data>
void noteName(const InputFile& file, const Format& format, Data& data)
{
    data.format = format.name;
    const std::string extension = getExtension(file.getPath());
    if (!extension.empty() && findFormat(file.getPath()) != nullptr && !format.hasExtension(extension))
        data.vNotes.push_back("the file is of the format " + std::string(format.name) +
                              " in spite of its name");
}
} // namespace

PointData readPoints(const std::string& path, const ReadOptions& options)
{
    PointData data;
    guardedCall("Read", path,
                [&]
                {
                    InputFile file(path);
                    const Format& format = chooseFormat(file, "points", canReadPoints);
                    noteName(file, format, data);
                    format.readPoints(file, options, data);
                    if (data.vPoints.empty())
                        data.vNotes.emplace_back("the file holds no points");
                });
    return data;
}

TriangleData readTriangles(const std::string& path)
{
    TriangleData data;
    guardedCall("Read", path,
                [&]
                {
                    InputFile file(path);
                    const Format& format = chooseFormat(file, "triangles", canReadTriangles);
                    noteName(file, format, data);
                    format.readTriangles(file, data);
                    if (data.vCorners.empty())
                        data.vNotes.emplace_back("the file holds no triangles");
                });
    return data;
}

bool holdsTriangles(const std::string& path)
{
    bool bHolds = false;
    guardedCall("Read", path,
                [&]
                {
                    InputFile file(path);
                    const Format* pFormat = findFormat(file.getHead(), file.getSize());
                    if (pFormat == nullptr)
                        pFormat = findFormat(path);
                    if (pFormat == nullptr || pFormat->readTriangles == nullptr)
                        return;
                    bHolds = pFormat->holdsTriangles == nullptr || pFormat->holdsTriangles(file);
                });
    return bHolds;
}

} // namespace TARN_ZEF
