// Large arrays on large pages. A reconstruction fills and reads arrays of many megabytes in the order of the surface, not
// of memory; on small pages a quarter of its time goes to the system's tables of them. Only systems that leave the choice to the
// program are told; memory in use stays the same to about two megabytes an array.
//
// The operators are those of the whole program, which is the tool's right and no library's; or of the Python module alone,
// which shows them to nobody. What they give and take is memory of malloc, so other parts of a process may mix with them.
#include <cstdlib>
#include <new>

#include <sys/mman.h>

namespace
{
constexpr std::size_t LARGE_PAGE = std::size_t{2} << 20;
// Below that, the rounding to whole pages would cost more than it brings.
constexpr std::size_t LARGE_ARRAY = 2 * LARGE_PAGE;

void* allocate(std::size_t size) noexcept
{
    if (size < LARGE_ARRAY)
        return std::malloc(size > 0 ? size : 1);
    void* pMemory = nullptr;
    if (posix_memalign(&pMemory, LARGE_PAGE, size) != 0)
        return nullptr;
    // A system without large pages refuses, which does no harm.
    (void)madvise(pMemory, size, MADV_HUGEPAGE);
    return pMemory;
}
} // namespace

void* operator new(std::size_t size)
{
    while (true)
    {
        if (void* const pMemory = allocate(size))
            return pMemory;
        const std::new_handler handler = std::get_new_handler();
        if (handler == nullptr)
            throw std::bad_alloc();
        handler();
    }
}

void operator delete(void* pMemory) noexcept
{
    std::free(pMemory);
}

void operator delete(void* pMemory, std::size_t) noexcept
{
    std::free(pMemory);
}
