// Named counters for benchmarks and a running number for the names of debug output. Both are process-wide
// and may be used from any thread; no result of the library depends on them.
#ifndef ZEF_COUNTERS_H
#define ZEF_COUNTERS_H

#include <string>

namespace TARN_ZEF
{
// Adds one to the counter of that name, which starts at 0. The key "GETCOUNTERS" prints all counters, in
// order of their names, instead. Always true, so that it can stand in an initialiser.
bool getCounters(const std::string& key);

// Raises the debug counter and returns it; the first call gives 1.
int incDebugCounter() noexcept;
// Raises the debug counter and makes a prefix of it: five digits and "_".
[[nodiscard]] std::string getDebugName();

} // namespace TARN_ZEF

#endif
