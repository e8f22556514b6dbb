#include "formats/guardedCall.h"

#include "core/CallScope.h"
#include "core/ProgressScope.h"
#include "core/refuse.h"
#include "formats/FileError.h"
#include "zef_formats.h"

namespace TARN_ZEF
{
void guardedCall(const char* progressName, const std::string& path, const std::function<void()>& work)
{
    const CallScope call;
    ProgressScope progress([progressName] { prepareProgress(progressName); });
    try
    {
        work();
    }
    catch (const FileError& error)
    {
        refuse<ZefBadFile>("file is usable", path + ": " + error.what());
    }
    progress.finish();
}

ZefBadFile::ZefBadFile(const std::string& reason)
    : ZefRefusedException(reason)
{
}

ZefBadFile::~ZefBadFile() = default;

} // namespace TARN_ZEF
