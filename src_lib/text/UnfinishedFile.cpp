#include "text/UnfinishedFile.h"

#include "core/cancel.h"

#include <exception>
#include <filesystem>
#include <system_error>
#include <utility>

namespace TARN_ZEF
{
UnfinishedFile::UnfinishedFile(std::string name_)
    : name(std::move(name_))
    , numExceptions(std::uncaught_exceptions())
{
    checkCancelled();
}

UnfinishedFile::~UnfinishedFile()
{
    if (std::uncaught_exceptions() == numExceptions)
        return;
    std::error_code error; // of a file that could not even be made
    if (std::filesystem::is_regular_file(name, error))
        std::filesystem::remove(name, error);
}

} // namespace TARN_ZEF
