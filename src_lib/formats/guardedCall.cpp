#include "formats/guardedCall.h"

#include "core/CallScope.h"
#include "core/Progress.h"
#include "core/refuse.h"
#include "formats/FileError.h"
#include "zef_formats.h"

namespace TARN_ZEF
{
namespace
{
// The thread's tree of progress, unless an outer call owns it; unused again however the call ends.
class FileProgress
{
public:
    explicit FileProgress(const char* name)
        : bOwn(ownsProgress())
    {
        if (bOwn)
            prepareProgress(name);
    }
    ~FileProgress()
    {
        if (bOwn)
            getRootProgress()->reset();
    }
    FileProgress(const FileProgress&) = delete;
    FileProgress& operator=(const FileProgress&) = delete;

    void finish()
    {
        if (bOwn)
            finishProgress();
        bOwn = false;
    }

private:
    bool bOwn;
};
} // namespace

void guardedCall(const char* progressName, const std::string& path, const std::function<void()>& work)
{
    const CallScope call;
    FileProgress progress(progressName);
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
