#ifndef ZEF_TOOLS_TOOLERROR_H
#define ZEF_TOOLS_TOOLERROR_H

#include <stdexcept>

namespace TARN_TOOL
{
// The job cannot be done with this input or target. what() is one line for the user: what is wrong, and
// what to try. The tool ends with status 1.
class ToolError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

// The options do not fit what the input holds. The tool ends with the status of wrong usage.
class UsageError : public ToolError
{
public:
    using ToolError::ToolError;
};

} // namespace TARN_TOOL

#endif
