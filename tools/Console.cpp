#include "Console.h"

#include <cstdlib>
#include <iostream>

#include <unistd.h>

#include "ToolError.h"

namespace TARN_TOOL
{
namespace
{
constexpr const char* RED = "\x1b[1;31m";
constexpr const char* YELLOW = "\x1b[1;33m";
constexpr const char* PLAIN = "\x1b[0m";

// As no-color.org asks: set to anything but nothing.
bool isNoColorSet()
{
    const char* pValue = std::getenv("NO_COLOR");
    return pValue != nullptr && *pValue != 0;
}

bool wantsColor(ColorUse use)
{
    return use == ColorUse::ALWAYS ||
           (use == ColorUse::AUTO && !isNoColorSet() && isatty(STDERR_FILENO) != 0);
}
} // namespace

Console::Console(const Options& options)
    : bQuiet(options.bQuiet)
    , bToErrorStream(options.isToStandardOutput())
    , bColor(wantsColor(options.color))
{
}

void Console::print(const std::string& text) const
{
    std::ostream& stream = bToErrorStream ? std::cerr : std::cout;
    if (!(stream << text).flush())
        throw ToolError("cannot write to standard output; no file was written");
}

void Console::note(const std::string& text) const
{
    if (!bQuiet)
        printMarked(YELLOW, "note: ", text);
}

void Console::error(const std::string& text) const
{
    printMarked(RED, "", text);
}

void Console::pass(const std::string& text) const
{
    if (!bQuiet)
        std::cerr << text;
}

void Console::printMarked(const char* color, const char* mark, const std::string& text) const
{
    const std::string head = std::string("zef: ") + mark;
    std::cerr << (bColor ? color + head + PLAIN : head) << text << "\n";
}

} // namespace TARN_TOOL
