#include "text/UnfinishedFile.h"

#include "core/cancel.h"

#include <exception>
#include <system_error>

namespace TARN_ZEF
{
UnfinishedFile::UnfinishedFile(const std::string& name)
    : path(name)
    , numExceptions(std::uncaught_exceptions())
{
    checkCancelled();
}

UnfinishedFile::~UnfinishedFile()
{
    if (std::uncaught_exceptions() == numExceptions)
        return;
    std::error_code error; // of a file that could not even be made
    if (std::filesystem::is_regular_file(path, error))
        std::filesystem::remove(path, error);
}

} // namespace TARN_ZEF
