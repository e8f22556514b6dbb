// The command zef: reads a point cloud, reconstructs the surface, writes and draws the mesh.
#include <cstdlib>
#include <exception>
#include <iostream>
#include <new>
#include <optional>
#include <string>

#include "Job.h"
#include "Options.h"
#include "SafeOutputFile.h"
#include "ToolError.h"
#include "platform.h"

namespace
{
int fail(const TARN_TOOL::Options& options, const TARN_TOOL::Job& job, const std::string& reason)
{
    if (!options.bQuiet)
        std::cerr << job.getHeldMessages();
    std::cerr << "zef: " << reason << "\n";
    return EXIT_FAILURE;
}
} // namespace

int main(int argc, char** argv)
{
    if (!TARN_TOOL::openStandardStreams())
        return EXIT_FAILURE;
    TARN_TOOL::ignoreWriteSignals();
    TARN_TOOL::SafeOutputFile::installSignalHandlers();
    TARN_TOOL::Options options;
    if (const std::optional<int> status = options.parse(argc, argv))
        return *status;
    // Read by the worker pool when it starts.
    if (options.numThreads > 0)
        TARN_TOOL::setEnvironmentVariable("ZEF_THREADS", std::to_string(options.numThreads));
    TARN_TOOL::Job job(options);
    try
    {
        job.run();
        return job.hasFoundFaults() ? EXIT_FAILURE : EXIT_SUCCESS;
    }
    catch (const TARN_TOOL::ToolError& error)
    {
        return fail(options, job, error.what());
    }
    catch (const std::bad_alloc&)
    {
        return fail(options, job, "not enough memory; try a larger spacing with -a or -f");
    }
    catch (const std::exception& error)
    {
        return fail(options, job, std::string("unexpected failure: ") + error.what());
    }
}
