#ifndef ZEF_TOOLS_CONSOLE_H
#define ZEF_TOOLS_CONSOLE_H

#include "Options.h"

#include <string>

namespace TARN_TOOL
{
// What the tool tells: results on standard output, unless a file goes there; notes and errors on the error stream.
//
// Threads:    the main one.
class Console
{
public:
    explicit Console(const Options& options);

    // Figures and summaries. Throws ToolError if they cannot be printed.
    void print(const std::string& text) const;
    // For the user to know; nothing if the options want quiet.
    void note(const std::string& text) const;
    void error(const std::string& text) const;
    // As it is, to the error stream, unless the options want quiet.
    void pass(const std::string& text) const;

private:
    void printMarked(const char* color, const char* mark, const std::string& text) const;

    bool bQuiet;
    bool bToErrorStream; // what is printed
    bool bColor;
};

} // namespace TARN_TOOL

#endif
