#include "formats/lzf.h"

#include <algorithm>

namespace TARN_ZEF
{
namespace
{
constexpr std::size_t MOST_PER_BYTE = 88;
constexpr std::size_t LONG_COPY = 7;
} // namespace

bool unpackLzf(std::string_view packed, std::size_t size, std::string& unpacked)
{
    unpacked.clear();
    if (size / MOST_PER_BYTE > packed.size())
        return false;
    unpacked.reserve(size);
    std::size_t pos = 0;
    const auto next = [&] { return static_cast<std::size_t>(static_cast<unsigned char>(packed[pos++])); };
    while (pos < packed.size())
    {
        const std::size_t control = next();
        if (control < 32) // literal bytes
        {
            const std::size_t num = control + 1;
            if (num > packed.size() - pos || num > size - unpacked.size())
                return false;
            unpacked.append(packed.substr(pos, num));
            pos += num;
            continue;
        }
        std::size_t num = control >> 5;
        if (packed.size() - pos < (num == LONG_COPY ? 2u : 1u))
            return false;
        num += num == LONG_COPY ? next() + 2 : 2;
        const std::size_t back = ((control & 31) << 8) + next() + 1;
        if (back > unpacked.size() || num > size - unpacked.size())
            return false;
        // What is copied may reach into what it makes.
        for (std::size_t i = 0; i < num; ++i)
            unpacked.push_back(unpacked[unpacked.size() - back]);
    }
    return unpacked.size() == size;
}

} // namespace TARN_ZEF
