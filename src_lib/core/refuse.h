#ifndef ZEF_REFUSE_H
#define ZEF_REFUSE_H

#include "ZefRefusedException.h"
#include "core/SourceLocation.h"

#include <string>

namespace TARN_ZEF
{
// Prints as an assertion of that condition would; a receiver gets the reason as the text.
void reportRefusal(const char* condition, const std::string& reason, const SourceLocation& where);

// Refuses a public call: for what a caller gave, where a broken invariant of our own is an assertion.
//
// E          the exception, a ZefRefusedException or derived from it
// condition  what does not hold, as an assertion would print it
// reason     for the user: the value, what is wrong with it, and what to do
template <typename E>
[[noreturn]] void refuse(const char* condition, const std::string& reason,
                         const SourceLocation& where = SourceLocation::current())
{
    reportRefusal(condition, reason, where);
    throw E(reason);
}

} // namespace TARN_ZEF

#endif
