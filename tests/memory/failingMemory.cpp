#include "memory/failingMemory.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace
{
std::atomic<long> numRequests{0};
std::atomic<long> failAt{0}; // 0: never
std::atomic<bool> bAlsoLater{false};
} // namespace

// The linker sends each call of std::malloc() of this program to __wrap_malloc (--wrap=malloc). What libraries
// beside it request, the runtime of the language above all, always succeeds.
extern "C" void* __real_malloc(std::size_t numBytes);
extern "C" void* __wrap_malloc(std::size_t numBytes)
{
    const long n = numRequests.fetch_add(1) + 1;
    const bool bFails = n == failAt || (bAlsoLater && n > failAt);
    return bFails ? nullptr : __real_malloc(numBytes);
}

void* operator new(std::size_t numBytes)
{
    void* const pMemory = std::malloc(numBytes > 0 ? numBytes : 1);
    if (pMemory == nullptr)
        throw std::bad_alloc();
    return pMemory;
}

void* operator new(std::size_t numBytes, const std::nothrow_t&) noexcept
{
    return std::malloc(numBytes > 0 ? numBytes : 1);
}

void operator delete(void* pMemory) noexcept
{
    std::free(pMemory);
}

void operator delete(void* pMemory, std::size_t) noexcept
{
    std::free(pMemory);
}

namespace TARN_ZEF
{
FailingMemory::FailingMemory(long n, bool bForGood)
{
    numRequests = 0;
    bAlsoLater = bForGood;
    failAt = n;
}

FailingMemory::~FailingMemory()
{
    bAlsoLater = false;
    failAt = 0;
}

long FailingMemory::getNumRequests()
{
    return numRequests;
}

bool FailingMemory::hasFailed()
{
    return failAt > 0 && numRequests >= failAt;
}

} // namespace TARN_ZEF
