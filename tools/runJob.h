#ifndef ZEF_TOOLS_RUNJOB_H
#define ZEF_TOOLS_RUNJOB_H

#include "Console.h"
#include "LibraryCalls.h"
#include "Options.h"

#include <string>

namespace TARN_TOOL
{
// How a job ended.
struct Outcome
{
    int status = 0;     // for the process to end with
    std::string reason; // of a failure; empty without one
};

// Does what the options ask for; failures become an outcome.
// Throws ZefCancelledException after a signal.
[[nodiscard]] Outcome runJob(Options options, LibraryCalls& calls, const Console& console);

} // namespace TARN_TOOL

#endif
