#include "formats/lzf.h"

#include "core/cancel.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
namespace
{
constexpr std::size_t MOST_PER_BYTE = 88;
constexpr std::size_t LONG_COPY = 7;
constexpr std::size_t MOST_LITERALS = 32;
constexpr std::size_t LEAST_COPY = 3;
constexpr std::size_t MOST_COPY = 264;
constexpr std::size_t MOST_BACK = 8192;

// Where each three bytes stood last, by a hash of them: what is found there must be compared.
class LastPlaces
{
public:
    // The last place of the three bytes at pos of data, if it can be reached; it is then pos.
    [[nodiscard]] std::optional<std::size_t> exchange(std::string_view data, std::size_t pos)
    {
        std::uint32_t bytes = 0;
        for (std::size_t i = 0; i < LEAST_COPY; ++i)
            bytes = bytes << 8 | static_cast<unsigned char>(data[pos + i]);
        std::size_t& place = vPlaces[bytes * 2654435761U >> (32 - BITS)]; // Knuth's multiplier
        const std::size_t last = std::exchange(place, pos + 1);
        if (last == 0 || pos - (last - 1) > MOST_BACK)
            return std::nullopt;
        return last - 1;
    }

private:
    static constexpr unsigned int BITS = 14;
    std::vector<std::size_t> vPlaces = std::vector<std::size_t>(std::size_t{1} << BITS, 0); // plus 1; 0: none
};

void putLiterals(std::string_view literals, std::string& packed)
{
    while (!literals.empty())
    {
        const std::string_view run = literals.substr(0, MOST_LITERALS);
        packed.push_back(static_cast<char>(run.size() - 1));
        packed.append(run);
        literals.remove_prefix(run.size());
    }
}

void putCopy(std::size_t back, std::size_t num, std::string& packed)
{
    const std::size_t high = (back - 1) >> 8;
    packed.push_back(static_cast<char>(std::min(num - 2, LONG_COPY) << 5 | high));
    if (num - 2 >= LONG_COPY)
        packed.push_back(static_cast<char>(num - 2 - LONG_COPY));
    packed.push_back(static_cast<char>((back - 1) & 0xFF));
}

// How many bytes from a on are those from b on, b being the later place.
[[nodiscard]] std::size_t countEqual(std::string_view data, std::size_t a, std::size_t b)
{
    const std::size_t most = std::min(MOST_COPY, data.size() - b);
    std::size_t num = 0;
    while (num < most && data[a + num] == data[b + num])
        ++num;
    return num;
}
} // namespace

std::string packLzf(std::string_view data)
{
    std::string packed;
    packed.reserve(data.size() / 2);
    LastPlaces places;
    std::size_t firstLiteral = 0;
    for (std::size_t pos = 0; pos + LEAST_COPY <= data.size();)
    {
        checkCancelledAt(pos);
        const std::optional<std::size_t> last = places.exchange(data, pos);
        const std::size_t num = last ? countEqual(data, *last, pos) : 0;
        if (num < LEAST_COPY)
        {
            ++pos;
            continue;
        }
        putLiterals(data.substr(firstLiteral, pos - firstLiteral), packed);
        putCopy(pos - *last, num, packed);
        pos += num;
        firstLiteral = pos;
    }
    putLiterals(data.substr(firstLiteral), packed);
    return packed;
}

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
