// The command zef: reads a point cloud, reconstructs the surface, writes and draws the mesh.
#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <new>
#include <optional>
#include <string>

#include <fcntl.h>
#include <unistd.h>

#include "Job.h"
#include "Options.h"
#include "SafeOutputFile.h"
#include "ToolError.h"

namespace
{
// A standard stream that the caller closed would lend its number to the next file opened.
void openStandardStreams()
{
    for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd)
        if (fcntl(fd, F_GETFD) == -1)
            if (open("/dev/null", fd == STDIN_FILENO ? O_RDONLY : O_WRONLY) != fd)
                std::_Exit(EXIT_FAILURE);
}

// Writing to a closed pipe or past the file size limit is then an error like others, and files are cleared
// away.
void setUpSignals()
{
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    TARN_TOOL::SafeOutputFile::installSignalHandlers();
}

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
    openStandardStreams();
    setUpSignals();
    TARN_TOOL::Options options;
    if (const std::optional<int> status = options.parse(argc, argv))
        return *status;
    // Read by the worker pool when it starts.
    if (options.numThreads > 0)
        setenv("ZEF_THREADS", std::to_string(options.numThreads).c_str(), 1);
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
