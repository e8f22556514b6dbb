#include "LibraryCalls.h"

namespace TARN_TOOL
{
namespace
{
LibraryMessages::Mode messagesMode(const Options& options)
{
    if (!options.bVerbose)
        return LibraryMessages::Mode::HOLD;
    // Standard output then belongs to the line of figures or the file alone.
    return options.bJson || options.isToStandardOutput() ? LibraryMessages::Mode::TO_ERROR_STREAM
                                                         : LibraryMessages::Mode::PASS;
}
} // namespace

LibraryCalls::LibraryCalls(const Options& options)
    : mode(messagesMode(options))
    , bReport(options.bReport)
    , memoryLimit(options.memoryLimit)
{
    if (!options.bQuiet)
        TARN_ZEF::subscribe(&progressBar);
}

} // namespace TARN_TOOL
