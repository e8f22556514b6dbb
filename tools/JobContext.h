#ifndef ZEF_TOOLS_JOBCONTEXT_H
#define ZEF_TOOLS_JOBCONTEXT_H

#include "Console.h"
#include "InputReader.h"
#include "LibraryCalls.h"
#include "Options.h"

namespace TARN_TOOL
{
// What a job works with. The objects outlive it.
struct JobContext
{
    const Options& options;
    LibraryCalls& calls;
    const Console& console;
    InputReader& reader;
};

} // namespace TARN_TOOL

#endif
