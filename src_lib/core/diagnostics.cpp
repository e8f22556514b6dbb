#include "core/definitions.h"

#include <cstdlib>
#include <iostream>

namespace TARN_ZEF
{
namespace
{
constexpr const char* INDENT = "      ";
constexpr const char* PREFIX = "[ZEF Message] ";

// Flushed, so that the last words before a crash are seen.
void printMessage(const std::string& line)
{
    std::cout << '\n' + (INDENT + line) + "\n\n" << std::flush;
}
} // namespace

ZefBugException::~ZefBugException() = default;

const char* ZefBugException::what() const noexcept
{
    return "ZefBugException: the reason stands on standard output";
}

void printText(const std::string& text)
{
    std::cout << text << std::flush;
}

void printErrorText(const std::string& text)
{
    std::cerr << text;
}

void errorMessage(const std::string& label, const std::string& text)
{
    printMessage(PREFIX + label + ", ERROR: " + text);
}

void warningMessage(const std::string& label, const std::string& text)
{
    printMessage(PREFIX + label + ", WARNING: " + text);
}

void infoMessage(const std::string& label, const std::string& text)
{
    printMessage(label.empty() ? std::string(PREFIX) + "INFO: " + text : label + ", INFO: " + text);
}

std::string makeLocation(const char* signature, int line)
{
    return std::string(" ** ") + signature + ":" + std::to_string(line) + " ** ";
}

void failAssertion(const char* file, int line, const char* signature, const char* text)
{
    const std::string where = std::string(INDENT) + file + ":" + std::to_string(line) + "\n";
    std::cout << where + INDENT + signature + "\n" << std::flush;
    errorMessage("ASSEX", std::string("Condition [ ") + text + " failed ]");
    throw ZefBugException();
}

void goToHell(const std::string& s)
{
    std::cout << "goToHell(): " + s + "\n" << std::flush;
    // Both volatile: the compiler must neither conclude that the pointer is null nor drop the write.
    volatile int* volatile pNowhere = nullptr;
    *pNowhere = 1;
}

void deliberateExit(const std::string& s)
{
    std::cout << "\n\ndeliberateExit(" + s + ")\n" << std::flush;
    std::exit(0);
}

} // namespace TARN_ZEF
