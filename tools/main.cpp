// The command zef: reads a point cloud, reconstructs the surface, writes and draws the mesh.
#include <cstdlib>
#include <exception>
#include <memory>
#include <new>
#include <optional>
#include <string>

#include "Console.h"
#include "InputReader.h"
#include "Interruption.h"
#include "Job.h"
#include "LibraryCalls.h"
#include "Options.h"
#include "ToolError.h"
#include "commandLine.h"
#include "exitCodes.h"
#include "platform.h"

namespace
{
int runJob(TARN_TOOL::Options& options, TARN_TOOL::LibraryCalls& calls, const TARN_TOOL::Console& console)
{
    TARN_TOOL::InputReader reader(options, calls, console);
    const std::unique_ptr<TARN_TOOL::Job> pJob = TARN_TOOL::Job::create(options, calls, console, reader);
    pJob->run();
    return pJob->hasFoundFaults() ? TARN_TOOL::EXIT_UNSOUND : EXIT_SUCCESS;
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
    const auto fail = [&](const std::string& reason, int status = TARN_TOOL::EXIT_UNUSABLE)
    {
        console.pass(calls.getHeldMessages());
        console.error(reason);
        return status;
    };
    try
    {
        return runJob(options, calls, console);
    }
    catch (const TARN_ZEF::ZefCancelledException&)
    {
        console.error("interrupted; no file was written");
        return TARN_TOOL::Interruption::getStatus();
    }
    catch (const TARN_TOOL::UsageError& error)
    {
        return fail(error.what(), TARN_TOOL::EXIT_USAGE);
    }
    catch (const TARN_TOOL::ToolError& error)
    {
        return fail(error.what());
    }
    catch (const std::bad_alloc&)
    {
        return fail("not enough memory; try a larger spacing with -a or -f");
    }
    catch (const std::exception& error)
    {
        return fail(std::string("unexpected failure: ") + error.what());
    }
}
