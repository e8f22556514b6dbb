#include "runJob.h"

#include <cstdlib>
#include <exception>
#include <memory>
#include <new>

#include "InputReader.h"
#include "Job.h"
#include "ToolError.h"
#include "exitCodes.h"

namespace TARN_TOOL
{
Outcome runJob(Options options, LibraryCalls& calls, const Console& console)
{
    try
    {
        InputReader reader(options, calls, console);
        const std::unique_ptr<Job> pJob = Job::create(options, calls, console, reader);
        pJob->run();
        return {pJob->hasFoundFaults() ? EXIT_UNSOUND : EXIT_SUCCESS, ""};
    }
    catch (const TARN_ZEF::ZefCancelledException&)
    {
        throw;
    }
    catch (const UsageError& error)
    {
        return {EXIT_USAGE, error.what()};
    }
    catch (const ToolError& error)
    {
        return {EXIT_UNUSABLE, error.what()};
    }
    catch (const std::bad_alloc&)
    {
        return {EXIT_UNUSABLE, "not enough memory; try a larger spacing with -a or -f"};
    }
    catch (const std::exception& error)
    {
        return {EXIT_UNUSABLE, std::string("unexpected failure: ") + error.what()};
    }
}

} // namespace TARN_TOOL
