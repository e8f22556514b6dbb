#include "formats/OutputFile.h"

#include "formats/FileError.h"
#include "text/closeWhole.h"

#include <cstdio>

namespace TARN_ZEF
{
namespace
{
constexpr int DIGITS = 17;
}

OutputFile::OutputFile(const std::string& path_, u64 numRecords)
    : path(path_)
    , stream(path_, std::ios::binary)
    , out(stream, DIGITS)
    , pProgress(getRootProgress()->getChildProgressSetTodo("Write", numRecords))
{
    if (!stream)
        throw FileError("it can't be opened for writing; check the folder and the permissions");
}

OutputFile::~OutputFile()
{
    if (bKeep || !stream.is_open())
        return;
    stream.close();
    std::remove(path.c_str());
}

std::ostream& OutputFile::getStream()
{
    out.flush();
    return stream;
}

void OutputFile::exactPoint(const Point3& point)
{
    out.exact(point.x());
    out.text(" ");
    out.exact(point.y());
    out.text(" ");
    out.exact(point.z());
}

void OutputFile::finish()
{
    out.flush();
    bKeep = closeWhole(stream);
    if (bKeep)
        return;
    std::remove(path.c_str());
    throw FileError("it can't be written whole; is the disk full?");
}

} // namespace TARN_ZEF
