#ifndef ZEF_TARN_TOOLS_SMALLVEC_H
#define ZEF_TARN_TOOLS_SMALLVEC_H

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <type_traits>

namespace TARN_ZEF
{
// A vector of a few pointers: the first N stand inside the object, more go to the heap.
//
// Made for the triangles of an edge: nearly every edge has two, some have three or four. An object of it is
// 8 bytes larger than its N entries; a mesh has three edges for each vertex, so this decides its size.
//
// Invariant:  size() entries stand at data(), in the order of push_back, but for what eraseSwap moved.
// Threads:    none.
template <typename T, std::uint32_t N>
class SmallVec
{
    static_assert(std::is_trivially_copyable_v<T> && sizeof(T) * N >= sizeof(T*));

public:
    SmallVec() noexcept = default;
    SmallVec(const SmallVec&) = delete;
    SmallVec& operator=(const SmallVec&) = delete;
    ~SmallVec()
    {
        if (isOnHeap())
            std::free(storage.pHeap);
    }

    [[nodiscard]] std::uint32_t size() const noexcept { return numEntries; }
    [[nodiscard]] bool empty() const noexcept { return numEntries == 0; }
    [[nodiscard]] T* data() noexcept { return isOnHeap() ? storage.pHeap : storage.aInline; }
    [[nodiscard]] const T* data() const noexcept { return isOnHeap() ? storage.pHeap : storage.aInline; }
    [[nodiscard]] T* begin() noexcept { return data(); }
    [[nodiscard]] T* end() noexcept { return data() + numEntries; }
    [[nodiscard]] const T* begin() const noexcept { return data(); }
    [[nodiscard]] const T* end() const noexcept { return data() + numEntries; }
    [[nodiscard]] T& operator[](std::uint32_t i) noexcept { return data()[i]; }
    [[nodiscard]] const T& operator[](std::uint32_t i) const noexcept { return data()[i]; }

    void push_back(T entry)
    {
        if (numEntries == capacity)
            grow();
        data()[numEntries++] = entry;
    }

    // Removes entry by moving the last one into its place; false if it is not there.
    [[nodiscard]] bool eraseSwap(T entry) noexcept
    {
        T* p = data();
        for (std::uint32_t i = 0; i < numEntries; ++i)
        {
            if (p[i] != entry)
                continue;
            p[i] = p[--numEntries];
            return true;
        }
        return false;
    }

    void clear() noexcept { numEntries = 0; }

private:
    [[nodiscard]] bool isOnHeap() const noexcept { return capacity > N; }

    void grow()
    {
        const std::uint32_t newCapacity = capacity * 2;
        T* pNew = static_cast<T*>(std::malloc(newCapacity * sizeof(T)));
        if (pNew == nullptr)
            throw std::bad_alloc();
        std::memcpy(pNew, data(), numEntries * sizeof(T));
        if (isOnHeap())
            std::free(storage.pHeap);
        storage.pHeap = pNew;
        capacity = newCapacity;
    }

    union Storage
    {
        T aInline[N];
        T* pHeap;
    };
    Storage storage;
    std::uint32_t numEntries = 0;
    std::uint32_t capacity = N;
};

} // namespace TARN_ZEF

#endif
