// What every source file of the library shares: the word for cell codes, the sentinels, the message form,
// the assertion that is on in every build, and the exception that it throws.
#ifndef ZEF_DEFINITIONS_H
#define ZEF_DEFINITIONS_H

#include "ZefBugException.h"

#include <cfloat>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>

namespace TARN_ZEF
{
// Unsigned 64-bit: the type of all cell codes.
using u64 = std::uint64_t;

// The lowest double: stands for a flip that must not happen.
inline constexpr double LOWEST_DBL = std::numeric_limits<double>::lowest();

// All words go to the receiver of zef_messages.h, which prints them as told here if the host has set none.
//
// Each message is one line on standard output with an empty line before and after. label tells where.
void errorMessage(const std::string& label, const std::string& text);
void warningMessage(const std::string& label, const std::string& text);
// An empty label gives the line the library's own prefix.
void infoMessage(const std::string& label, const std::string& text);

// Text as it stands, for where the library talks without the message form. A receiver of the host's gets it
// without the white space around.
void printText(const std::string& text);         // an information; to standard output
void printFailure(const std::string& text);      // why the call fails; to standard output
void printErrorText(const std::string& text);    // a warning; to standard error
void printErrorFailure(const std::string& text); // why the call fails; to standard error

// The label of a located message, from the compiler's full function signature and the source line.
[[nodiscard]] std::string makeLocation(const char* signature, int line);

// Reports a broken invariant in three lines and throws ZefBugException. text is the condition as written. What
// a caller gave is refused by refuse() (core/refuse.h) instead.
[[noreturn]] void failAssertion(const char* file, int line, const char* signature, const char* text);

// Deliberate stops, for debugging only: a crash that a debugger catches at this point, and a hardStop() with
// status 0.
void goToHell(const std::string& s);
[[noreturn]] void deliberateExit(const std::string& s);

} // namespace TARN_ZEF

// Label of a message that names the calling function and line.
#define ZEF_HERE ::TARN_ZEF::makeLocation(__PRETTY_FUNCTION__, __LINE__)

// Holds in every build. A failure throws ZefBugException: check before the first edit, never half-way.
// ASSEX prints the condition as written; ASSEX_TEXT prints the given words in its place.
#define ASSEX_TEXT(condition, text)                                                                          \
    do                                                                                                       \
    {                                                                                                        \
        if (!(condition)) [[unlikely]]                                                                       \
            ::TARN_ZEF::failAssertion(__FILE__, __LINE__, __PRETTY_FUNCTION__, text);                        \
    } while (false)
#define ASSEX(condition) ASSEX_TEXT(condition, #condition)

#endif
