#include "core/definitions.h"

#include <cstdlib>

#include "core/hardStop.h"
#include "core/messageSink.h"
#include "core/refuse.h"

namespace TARN_ZEF
{
namespace
{
constexpr const char* INDENT = "      ";
constexpr const char* PREFIX = "[ZEF Message] ";

// The message form: one line with an empty line before and after.
std::string frame(const std::string& line)
{
    return '\n' + (INDENT + line) + "\n\n";
}

// Without white space around.
std::string trim(const std::string& text)
{
    constexpr const char* BLANKS = " \t\r\n";
    const std::size_t first = text.find_first_not_of(BLANKS);
    if (first == std::string::npos)
        return {};
    return text.substr(first, text.find_last_not_of(BLANKS) - first + 1);
}

// The form of a failed assertion: the place in two lines, and the condition as an error message.
std::string frameAssertion(const char* file, int line, const char* signature, const char* condition)
{
    const std::string where = std::string(INDENT) + file + ":" + std::to_string(line) + "\n";
    return where + INDENT + signature + "\n" +
           frame(std::string(PREFIX) + "ASSEX, ERROR: Condition [ " + condition + " failed ]");
}
} // namespace

void printText(const std::string& text)
{
    deliver({Severity::Info, "", trim(text), text, false});
}

void printFailure(const std::string& text)
{
    deliver({Severity::Error, "", trim(text), text, false});
}

void printErrorText(const std::string& text)
{
    deliver({Severity::Warning, "", trim(text), text, true});
}

void printErrorFailure(const std::string& text)
{
    deliver({Severity::Error, "", trim(text), text, true});
}

void errorMessage(const std::string& label, const std::string& text)
{
    deliver({Severity::Error, trim(label), text, frame(PREFIX + label + ", ERROR: " + text), false});
}

void warningMessage(const std::string& label, const std::string& text)
{
    deliver({Severity::Warning, trim(label), text, frame(PREFIX + label + ", WARNING: " + text), false});
}

void infoMessage(const std::string& label, const std::string& text)
{
    const std::string line =
        label.empty() ? std::string(PREFIX) + "INFO: " + text : label + ", INFO: " + text;
    deliver({Severity::Info, trim(label), text, frame(line), false});
}

std::string makeLocation(const char* signature, int line)
{
    return std::string(" ** ") + signature + ":" + std::to_string(line) + " ** ";
}

void failAssertion(const char* file, int line, const char* signature, const char* text)
{
    const std::string reason = std::string("condition [ ") + text + " ] failed in " + signature + ", " +
                               file + ":" + std::to_string(line);
    deliver({Severity::Error, "ASSEX", reason, frameAssertion(file, line, signature, text), false});
    throw ZefBugException(reason);
}

void reportRefusal(const char* condition, const std::string& reason, const SourceLocation& where)
{
    deliver(
        {Severity::Error, "ASSEX", reason,
         frameAssertion(where.file_name(), static_cast<int>(where.line()), where.function_name(), condition),
         false});
}

void goToHell(const std::string& s)
{
    printText("goToHell(): " + s + "\n");
    // Both volatile: the compiler must neither conclude that the pointer is null nor drop the write.
    volatile int* volatile pNowhere = nullptr;
    *pNowhere = 1;
}

void deliberateExit(const std::string& s)
{
    hardStop(("\n\ndeliberateExit(" + s + ")\n").c_str(), EXIT_SUCCESS);
}

} // namespace TARN_ZEF
