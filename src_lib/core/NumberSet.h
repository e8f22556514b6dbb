#ifndef ZEF_NUMBERSET_H
#define ZEF_NUMBERSET_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace TARN_ZEF
{
// A set of triangles or edges by their creation numbers: one bit for each number up to the highest.
class NumberSet
{
public:
    // False if it was there.
    bool insert(unsigned int number)
    {
        const std::size_t word = number / 64;
        if (word >= vBits.size())
            vBits.resize(std::max(2 * vBits.size(), word + 1), 0);
        const bool bNew = (vBits[word] & getBit(number)) == 0;
        vBits[word] |= getBit(number);
        return bNew;
    }
    void erase(unsigned int number)
    {
        if (number / 64 < vBits.size())
            vBits[number / 64] &= ~getBit(number);
    }
    [[nodiscard]] bool contains(unsigned int number) const
    {
        return number / 64 < vBits.size() && (vBits[number / 64] & getBit(number)) != 0;
    }

private:
    [[nodiscard]] static std::uint64_t getBit(unsigned int number) { return std::uint64_t{1} << number % 64; }

    std::vector<std::uint64_t> vBits;
};

} // namespace TARN_ZEF

#endif
