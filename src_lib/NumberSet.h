#ifndef ZEF_NUMBERSET_H
#define ZEF_NUMBERSET_H

#include <algorithm>
#include <cstddef>
#include <vector>

namespace TARN_ZEF
{
// A set of triangles or edges by their creation numbers: one byte for each number up to the highest.
class NumberSet
{
public:
    // False if it was there.
    bool insert(unsigned int number)
    {
        if (number >= vIn.size())
            vIn.resize(std::max<std::size_t>(2 * vIn.size(), std::size_t{number} + 1), 0);
        const bool bNew = vIn[number] == 0;
        vIn[number] = 1;
        return bNew;
    }
    void erase(unsigned int number)
    {
        if (number < vIn.size())
            vIn[number] = 0;
    }
    [[nodiscard]] bool contains(unsigned int number) const { return number < vIn.size() && vIn[number] != 0; }

private:
    std::vector<unsigned char> vIn;
};

} // namespace TARN_ZEF

#endif
