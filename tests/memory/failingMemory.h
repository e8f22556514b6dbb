// Memory that runs out on demand.
#ifndef ZEF_TESTS_FAILINGMEMORY_H
#define ZEF_TESTS_FAILINGMEMORY_H

namespace TARN_ZEF
{
// Lets requests for memory of this program fail, on whatever thread: the n-th from here on alone, or with all that
// follow, for the time that the object lives. Counts std::malloc() and operator new of the library and the test. One at a time.
class FailingMemory
{
public:
    FailingMemory(long n, bool bForGood);
    ~FailingMemory();
    FailingMemory(const FailingMemory&) = delete;
    FailingMemory& operator=(const FailingMemory&) = delete;

    [[nodiscard]] static long getNumRequests(); // since the constructor
    [[nodiscard]] static bool hasFailed();
};

} // namespace TARN_ZEF

#endif
