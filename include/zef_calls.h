// What holds for all calls of the library in this process.
#ifndef ZEF_ZEF_CALLS_H
#define ZEF_ZEF_CALLS_H

#include "zef_export.h"

namespace TARN_ZEF
{
// Whether each public call begins with a state of its own; true at first.
//
// true   A call gives the same result whether it is the first or the thousandth of the process, on any thread,
//        after calls on clouds of any scale, and after calls that failed.
// false  What one call leaves behind is taken up by the next:
//          - the smallest area that the plane fit accepts is (spacing / 5)^2 of the first reconstruction of the
//            process, so that a cloud of much smaller scale comes back nearly empty;
//          - random numbers go on in each thread's own sequence;
//          - annealing passes of one mesh are counted over its calls of edgeFlipsSimA().
//        The first call of a process is the same either way.
//
// Scope    the whole process: calls that begin afterwards
// Threads  any, at any time
ZEF_API void setIndependentCalls(bool bIndependent);
[[nodiscard]] ZEF_API bool areCallsIndependent();

// Whether the library may end the process where it cannot go on; false at first.
//
// false  Such a call ends with an exception: std::bad_alloc if the memory is full, ZefBugException for the
//        wrong use of a class inside. Nothing leaks, and the next call works.
// true   The reason is printed and the process ends by exit(): with status 1 if a pool of records gets no
//        memory or is set up twice, or for a space-filling curve with a wrong number of bits; with status 0 at
//        a debugging stop. All other failures are exceptions in either case.
//
// Scope    the whole process, at once
// Threads  any, at any time
ZEF_API void setHardStops(bool bOn);
[[nodiscard]] ZEF_API bool areHardStopsOn();

} // namespace TARN_ZEF

#endif
