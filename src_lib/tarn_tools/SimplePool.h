#ifndef ZEF_SIMPLEPOOL_H
#define ZEF_SIMPLEPOOL_H

#include "core/definitions.h"
#include "core/hardStop.h"
#include "tarn_tools/PageWarmer.h"
#include "tarn_tools/StorageBlock.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <string>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
// Storage for many small records of one type, from a few large blocks. Slots are given back only together,
// when the pool dies: a pointer to a record stays valid as long as the pool.
//
// Ownership:  the pool owns raw storage only. The user constructs by placement into a slot; a user whose
//             records need their destructors runs them with forEach() before the pool goes.
// Invariant:  of the blocks in use, every one but the last is handed out in full; within a block, slots
//             follow each other in the order of getNext().
// Threads:    one at a time.
// Cost:       getNext() is a comparison and an addition; a general allocation once a block.
// Errors:     a failed allocation throws std::bad_alloc and changes nothing; a second init() is a hard stop
//             (core/hardStop.h), and with setHardStops(true) both are.
template <typename T>
class SimplePool
{
    static_assert(alignof(T) <= alignof(std::max_align_t), "blocks have the alignment of malloc");

public:
    SimplePool() = default;
    ~SimplePool();
    SimplePool(const SimplePool&) = delete;
    SimplePool& operator=(const SimplePool&) = delete;

    // Allocates the first block. Both sizes count records. A negative increaseSize lets the pool choose:
    // half of the first block, then each block twice the last, up to blocks of about 100 MB. Customary: the
    // expected number, and increaseOf() it.
    void init(int initialSize_, int increaseSize_);
    // The same with this memory as the first block, as many records as it holds. An empty one: as above.
    void init(int initialSize_, int increaseSize_, StorageBlock block);

    // An uninitialised slot. A pool that was never initialised throws ZefBugException.
    [[nodiscard]] T* getNext()
    {
        if (currentIdx + 1 < currentSize) [[likely]]
            return pCurrent + ++currentIdx;
        return getNextBeyond();
    }

    // Takes all slots back and keeps the blocks, whose memory is then at hand already. No destructor runs.
    void rewind() noexcept;

    // Gives the first block away, if there is one. Nothing else may be done with the pool afterwards.
    [[nodiscard]] StorageBlock releaseFirstBlock() noexcept;

    // Number of slots handed out.
    [[nodiscard]] std::size_t size() const;

    // Calls f(T*) for every slot handed out, in the order of getNext(). All of them must hold a constructed
    // object if f looks at it.
    template <typename F>
    void forEach(F f) const;
    // The same for the slots from to to in that order.
    template <typename F>
    void forEach(std::size_t from, std::size_t to, F f) const;

    // The customary size of the following blocks: a fifth of the first, at least 100.
    [[nodiscard]] static constexpr int increaseOf(int initial)
    {
        return std::max(static_cast<int>(0.2 * initial), 100);
    }

private:
    // n < 0 derives the size from the last block.
    void addBlock(std::ptrdiff_t n);
    void appendBlock(StorageBlock block, std::ptrdiff_t num);
    void enterBlock(std::size_t i) noexcept;
    void extendSize();
    [[nodiscard]] std::ptrdiff_t deriveSize() const;
    [[nodiscard]] T* getNextBeyond();
    void sayIfMany() const noexcept;

    struct Container
    {
        T* pFirst;
        std::ptrdiff_t size; // slots
    };

    std::vector<Container> vContainers;
    std::size_t currentBlock = 0;
    T* pCurrent = nullptr;
    std::ptrdiff_t currentIdx = -1;
    std::ptrdiff_t currentSize = 0; // slots of the present block that may be handed out by now
    int initialSize = 0;
    int increaseSize = 0;
    bool initialized = false;
    bool bFirstBlock = true;
    std::ptrdiff_t increaseLimit = -1;
    PageWarmer warmer; // of the present block, if that is fresh
};

template <typename T>
SimplePool<T>::~SimplePool()
{
    sayIfMany();
    warmer.finish();
    for (const Container& container : vContainers)
        std::free(static_cast<void*>(container.pFirst));
}

// Many blocks are the sign of a badly chosen first size.
template <typename T>
void SimplePool<T>::sayIfMany() const noexcept
{
    if (vContainers.size() <= 50)
        return;
    try
    {
        printText("SimplePool::~SimplePool: Number of containers to release:" +
                  std::to_string(vContainers.size()) + "\n");
    }
    catch (const std::bad_alloc&)
    {
        // Not worth the end of the process.
    }
}

template <typename T>
void SimplePool<T>::init(int initialSize_, int increaseSize_)
{
    init(initialSize_, increaseSize_, StorageBlock());
}

template <typename T>
void SimplePool<T>::init(int initialSize_, int increaseSize_, StorageBlock block)
{
    constexpr std::ptrdiff_t maxBlockBytes = 100'000'000;
    if (initialized)
        hardStop("SimplePool::init(..), ERROR: This pool is already initialized\n");
    increaseLimit = maxBlockBytes / static_cast<std::ptrdiff_t>(sizeof(T));
    if (increaseLimit == 0)
    {
        printText("TarnPool::init(..), Warning: increaseLimit=1\n");
        increaseLimit = 1;
    }
    initialSize = initialSize_;
    increaseSize = increaseSize_;
    const auto numAdopted = static_cast<std::ptrdiff_t>(block.size() / sizeof(T));
    if (numAdopted > 0)
        appendBlock(std::move(block), numAdopted);
    else
        addBlock(initialSize);
    initialized = true;
}

template <typename T>
StorageBlock SimplePool<T>::releaseFirstBlock() noexcept
{
    if (vContainers.empty())
        return {};
    warmer.finish();
    Container& first = vContainers.front();
    return {std::exchange(first.pFirst, nullptr), static_cast<std::size_t>(first.size) * sizeof(T)};
}

template <typename T>
std::size_t SimplePool<T>::size() const
{
    std::ptrdiff_t num = currentIdx + 1;
    for (std::size_t i = 0; i < currentBlock; ++i)
        num += vContainers[i].size;
    return static_cast<std::size_t>(num);
}

template <typename T>
void SimplePool<T>::rewind() noexcept
{
    if (initialized)
        enterBlock(0);
}

template <typename T>
template <typename F>
void SimplePool<T>::forEach(F f) const
{
    forEach(0, size(), f);
}

template <typename T>
template <typename F>
void SimplePool<T>::forEach(std::size_t from, std::size_t to, F f) const
{
    std::size_t first = 0; // slot of the block
    for (std::size_t i = 0; i < vContainers.size() && first < to; ++i)
    {
        const std::size_t end = first + static_cast<std::size_t>(vContainers[i].size);
        for (std::size_t k = std::max(from, first); k < std::min(to, end); ++k)
            f(vContainers[i].pFirst + (k - first));
        first = end;
    }
}

template <typename T>
std::ptrdiff_t SimplePool<T>::deriveSize() const
{
    ASSEX_TEXT(!vContainers.empty(), "!vSizes.empty()");
    const std::ptrdiff_t last = vContainers.back().size;
    ASSEX_TEXT(last > 0, "vSizes.back()>0");
    const std::ptrdiff_t half = last / 2 == 0 ? last : last / 2;
    return std::min(bFirstBlock ? half : 2 * last, increaseLimit);
}

template <typename T>
void SimplePool<T>::addBlock(std::ptrdiff_t n)
{
    const std::ptrdiff_t num = n < 0 ? deriveSize() : n;
    const std::size_t numBytes = static_cast<std::size_t>(num) * sizeof(T);
    void* const pBlock = std::malloc(numBytes);
    // An empty block may be a null pointer.
    if (pBlock == nullptr && num > 0)
        stopForMemory("SimplePool::alloc(..), ERROR: Out of memory, sorry\n");
    appendBlock({pBlock, numBytes}, num);
    warmer.begin(pBlock, numBytes);
    extendSize();
}

template <typename T>
void SimplePool<T>::appendBlock(StorageBlock block, std::ptrdiff_t num)
{
    vContainers.push_back({nullptr, num});
    vContainers.back().pFirst = static_cast<T*>(block.release());
    enterBlock(vContainers.size() - 1);
}

template <typename T>
void SimplePool<T>::enterBlock(std::size_t i) noexcept
{
    currentBlock = i;
    pCurrent = vContainers[i].pFirst;
    currentIdx = -1;
    currentSize = vContainers[i].size;
}

// As far as the pages of a fresh block are being mapped; whole slots only.
template <typename T>
void SimplePool<T>::extendSize()
{
    currentSize =
        std::min(static_cast<std::ptrdiff_t>(warmer.advance() / sizeof(T)), vContainers[currentBlock].size);
}

template <typename T>
T* SimplePool<T>::getNextBeyond()
{
    ASSEX(initialized);
    ASSEX(increaseSize != 0);
    while (currentIdx + 1 >= currentSize && currentSize < vContainers[currentBlock].size)
        extendSize();
    if (currentIdx + 1 < currentSize)
        return pCurrent + ++currentIdx;
    if (currentBlock + 1 < vContainers.size())
        enterBlock(currentBlock + 1);
    else
    {
        addBlock(increaseSize);
        bFirstBlock = false;
    }
    currentIdx = 0;
    return pCurrent;
}

} // namespace TARN_ZEF

#endif
