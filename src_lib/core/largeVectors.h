// Large vectors in calls that may be cancelled. The first touch of new memory takes the system longer than most work
// that is then done in it, up to a second for some hundred megabytes, so these functions look every few of them.
#ifndef ZEF_LARGEVECTORS_H
#define ZEF_LARGEVECTORS_H

#include "core/cancel.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace TARN_ZEF
{
// Elements that are worth a look.
template <typename T>
inline constexpr std::size_t ELEMENTS_A_LOOK = std::max<std::size_t>((std::size_t{1} << 21) / sizeof(T), 1);

// As v.resize(num, value) for a vector that grows.
template <typename T>
void growTo(std::vector<T>& v, std::size_t num, const T& value = T())
{
    v.reserve(num);
    while (v.size() < num)
    {
        checkCancelled();
        v.resize(std::min(num, v.size() + ELEMENTS_A_LOOK<T>), value);
    }
}

// Sees to it that v has room for num more, twice its size at the least if it must move. A cancelled call leaves v as it
// was.
template <typename T>
void makeRoomFor(std::vector<T>& v, std::size_t num = 1)
{
    if (v.capacity() - v.size() >= num) [[likely]]
        return;
    std::vector<T> vLarger;
    vLarger.reserve(std::max(2 * v.size(), v.size() + num));
    for (std::size_t from = 0; from < v.size();)
    {
        checkCancelled();
        const std::size_t to = std::min(v.size(), from + ELEMENTS_A_LOOK<T>);
        vLarger.insert(vLarger.end(), v.begin() + static_cast<std::ptrdiff_t>(from),
                       v.begin() + static_cast<std::ptrdiff_t>(to));
        from = to;
    }
    v.swap(vLarger);
}

} // namespace TARN_ZEF

#endif
