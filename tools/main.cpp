// The command zef: reads a point cloud, reconstructs the surface, writes and draws the mesh.
#include <cstdlib>
#include <optional>
#include <string>

#include "Batch.h"
#include "Console.h"
#include "Interruption.h"
#include "LibraryCalls.h"
#include "Options.h"
#include "ToolError.h"
#include "commandLine.h"
#include "exitCodes.h"
#include "platform.h"
#include "runJob.h"

namespace
{
int run(const TARN_TOOL::Options& options, TARN_TOOL::LibraryCalls& calls, const TARN_TOOL::Console& console)
{
    if (!options.batchFolder.empty())
        return TARN_TOOL::Batch(options, calls, console).run();
    const TARN_TOOL::Outcome outcome = runJob(options, calls, console);
    if (!outcome.reason.empty())
    {
        console.pass(calls.getHeldMessages());
        console.error(outcome.reason);
    }
    return outcome.status;
}
} // namespace

int main(int argc, char** argv)
{
    if (!TARN_TOOL::openStandardStreams())
        return EXIT_FAILURE;
    TARN_TOOL::ignoreWriteSignals();
    TARN_TOOL::Interruption::installHandlers();
    TARN_TOOL::Options options;
    if (const std::optional<int> status = TARN_TOOL::parseCommandLine(argc, argv, options))
        return *status;
    // Read by the worker pool when it starts.
    if (options.numThreads > 0)
        TARN_TOOL::setEnvironmentVariable("ZEF_THREADS", std::to_string(options.numThreads));
    const TARN_TOOL::Console console(options);
    TARN_TOOL::LibraryCalls calls(options);
    try
    {
        return run(options, calls, console);
    }
    catch (const TARN_ZEF::ZefCancelledException&)
    {
        console.error("interrupted; no file was written");
        return TARN_TOOL::Interruption::getStatus();
    }
    catch (const TARN_TOOL::ToolError& error)
    {
        console.error(error.what());
        return TARN_TOOL::EXIT_UNUSABLE;
    }
}
