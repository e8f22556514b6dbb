#ifndef ZEF_HARDSTOP_H
#define ZEF_HARDSTOP_H

namespace TARN_ZEF
{
// The one handler for what cannot go on in any way. Unless setHardStops(true) of zef_calls.h is in force, the
// call ends with an exception, and the host lives on.
//
// text  is printed as it stands

// A wrong use of a class of the library. Throws ZefBugException, or exits with that status.
[[noreturn]] void hardStop(const char* text, int status = 1);

// No memory. Throws std::bad_alloc without a word, which would need memory, or exits with status 1.
[[noreturn]] void stopForMemory(const char* text);

} // namespace TARN_ZEF

#endif
