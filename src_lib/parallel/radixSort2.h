#ifndef ZEF_RADIXSORT2_H
#define ZEF_RADIXSORT2_H

#include "core/definitions.h"
#include "parallel/parallelFor.h"

#include <algorithm>
#include <array>
#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
// Stable sort of elements by an unsigned key, digit by digit from the lowest; bits that all keys share are
// passed over. The result of a stable sort is unique, so it does not depend on the number of threads.
// Method: D. E. Knuth, The Art of Computer Programming, volume 3, 5.2.5.
//
// Ownership:  works on the caller's array, with a second one of the same size while it runs.
// Threads:    one caller; counting and moving run on the pool, on one stretch of the array a thread.
// Cost:       two passes over the array for each digit of up to 11 bits.
template <typename T, typename GetKey>
class RadixSort2
{
    static_assert(std::is_trivially_copy_constructible_v<T> && std::is_trivially_destructible_v<T>);

public:
    RadixSort2(T* pFirst_, std::size_t num_, GetKey getKey_)
        : pFirst(pFirst_)
        , num(num_)
        , getKey(getKey_)
        , vParts(cutParts(num_))
    {
    }

    // False, with nothing changed, if there is no memory for the second array.
    [[nodiscard]] bool run()
    {
        const std::unique_ptr<T, Free> pBuffer(static_cast<T*>(std::malloc(num * sizeof(T))));
        if (pBuffer == nullptr)
            return false;
        T* pFrom = pFirst;
        T* pTo = pBuffer.get();
        chooseDigits(findDifferingBits());
        for (const int shift : vShifts)
        {
            moveByDigit(pFrom, pTo, shift);
            std::swap(pFrom, pTo);
        }
        if (pFrom != pFirst)
            copyBack(pFrom);
        return true;
    }

private:
    struct Free
    {
        void operator()(T* p) const { std::free(p); }
    };
    static constexpr int maxDigitBits = 11;
    using Counts = std::array<std::size_t, std::size_t{1} << maxDigitBits>;
    struct Part
    {
        std::size_t from;
        std::size_t to;
        u64 differing = 0;
        // How many elements have each digit, then the place of the next one.
        Counts counts = {};
    };

    [[nodiscard]] static std::vector<Part> cutParts(std::size_t num)
    {
        // Smaller parts cost more to start than they save.
        constexpr std::size_t minPart = 250'000;
        const std::size_t numThreads = static_cast<std::size_t>(getNumThreads());
        const std::size_t numParts = std::clamp(num / minPart, std::size_t{1}, numThreads);
        std::vector<Part> vResult(numParts);
        for (std::size_t i = 0; i < numParts; ++i)
        {
            vResult[i].from = num / numParts * i;
            vResult[i].to = i + 1 == numParts ? num : num / numParts * (i + 1);
        }
        return vResult;
    }

    template <typename F>
    void forEachPart(F f)
    {
        parallelFor(vParts.size(), 1,
                    [&](std::size_t from, std::size_t to)
                    {
                        for (std::size_t i = from; i < to; ++i)
                            f(vParts[i]);
                    });
    }

    [[nodiscard]] u64 findDifferingBits()
    {
        const u64 sample = getKey(*pFirst);
        forEachPart(
            [&](Part& part)
            {
                u64 bits = 0;
                for (std::size_t i = part.from; i < part.to; ++i)
                    bits |= getKey(pFirst[i]) ^ sample;
                part.differing = bits;
            });
        u64 bits = 0;
        for (const Part& part : vParts)
            bits |= part.differing;
        return bits;
    }

    // Cuts the bits between the lowest and the highest differing one in as few digits as possible, of like
    // width, and leaves out the digits that all keys share.
    void chooseDigits(u64 differing)
    {
        const int low = differing == 0 ? 0 : std::countr_zero(differing);
        const int span = std::bit_width(differing) - low;
        const int numDigits = (span + maxDigitBits - 1) / maxDigitBits;
        const int width = numDigits == 0 ? 0 : (span + numDigits - 1) / numDigits;
        digitMask = (u64{1} << width) - 1;
        for (int i = 0; i < numDigits; ++i)
        {
            const int shift = low + i * width;
            if (((differing >> shift) & digitMask) != 0)
                vShifts.push_back(shift);
        }
    }

    void moveByDigit(const T* pFrom, T* pTo, int shift)
    {
        const auto digitOf = [this, shift](const T& x) { return (getKey(x) >> shift) & digitMask; };
        forEachPart(
            [&](Part& part)
            {
                part.counts.fill(0);
                for (std::size_t i = part.from; i < part.to; ++i)
                    ++part.counts[digitOf(pFrom[i])];
            });
        countsToPlaces();
        forEachPart(
            [&](Part& part)
            {
                for (std::size_t i = part.from; i < part.to; ++i)
                {
                    checkCancelledAt(i);
                    pTo[part.counts[digitOf(pFrom[i])]++] = pFrom[i];
                }
            });
    }

    void countsToPlaces()
    {
        std::size_t place = 0;
        for (std::size_t digit = 0; digit <= digitMask; ++digit)
        {
            for (Part& part : vParts)
                place += std::exchange(part.counts[digit], place);
        }
    }

    void copyBack(const T* pFrom)
    {
        forEachPart(
            [&](const Part& part)
            {
                for (std::size_t i = part.from; i < part.to; ++i)
                    pFirst[i] = pFrom[i];
            });
    }

    T* pFirst;
    std::size_t num;
    GetKey getKey;
    std::vector<Part> vParts;
    std::vector<int> vShifts;
    u64 digitMask = 0;
};

template <typename T>
concept RadixNumber = std::unsigned_integral<T> && !std::same_as<T, bool> && sizeof(T) >= 4;

// A pair that the radix sort may move: by its first member as key.
template <typename T>
inline constexpr bool isRadixPair = false;
template <RadixNumber A, typename B>
inline constexpr bool isRadixPair<std::pair<A, B>> = std::is_trivially_copy_constructible_v<B>&&
                                                         std::is_trivially_destructible_v<B> &&
                                                     sizeof(B) <= 24;

} // namespace TARN_ZEF

#endif
