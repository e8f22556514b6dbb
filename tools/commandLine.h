#ifndef ZEF_TOOLS_COMMANDLINE_H
#define ZEF_TOOLS_COMMANDLINE_H

#include "Options.h"

#include <optional>

namespace TARN_TOOL
{
// Reads the command line. Returns the status to end the process with, or nothing if there is a job to do: help and
// version end with 0, wrong usage with EXIT_USAGE and a line on the error stream.
[[nodiscard]] std::optional<int> parseCommandLine(int argc, char** argv, Options& options);

} // namespace TARN_TOOL

#endif
