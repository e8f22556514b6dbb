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

} // namespace TARN_ZEF

#endif
