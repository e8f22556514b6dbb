#include "closing/EdgeMates.h"

#include "core/cancel.h"
#include "parallel/sortMT2.h"

#include <algorithm>

namespace TARN_ZEF
{
EdgeMates::EdgeMates(const std::vector<int>& vCorners_)
    : vCorners(vCorners_)
    , vMate(vCorners_.size(), NO_EDGE)
{
    vByKey.reserve(vCorners.size());
    for (std::uint32_t h = 0; h < vCorners.size(); ++h)
    {
        checkCancelledAt(h);
        if (from(h) != to(h) && to(h) != to(next(h)) && to(next(h)) != from(h))
            vByKey.emplace_back(keyOf(from(h), to(h)), h);
    }
    sortMT(vByKey.begin(), vByKey.end());
    for (std::size_t i = 0, end = 0; i < vByKey.size(); i = end)
    {
        checkCancelledAt(i);
        for (end = i + 1; end < vByKey.size() && vByKey[end].first == vByKey[i].first;)
            ++end;
        for (std::size_t k = i; k < end; ++k)
            vMate[vByKey[k].second] = end - i > 2 ? CROWDED : BORDER;
        if (end - i == 2)
        {
            vMate[vByKey[i].second] = vByKey[i + 1].second;
            vMate[vByKey[i + 1].second] = vByKey[i].second;
        }
    }
}

std::size_t EdgeMates::findFirst(u64 key) const
{
    const auto it = std::lower_bound(vByKey.begin(), vByKey.end(), key,
                                     [](const auto& entry, u64 wanted) { return entry.first < wanted; });
    return static_cast<std::size_t>(it - vByKey.begin());
}

bool EdgeMates::hasEdge(int a, int b) const
{
    const std::size_t i = findFirst(keyOf(a, b));
    return i < vByKey.size() && vByKey[i].first == keyOf(a, b);
}

std::uint32_t EdgeMates::findBorder(int a, int b) const
{
    if (!hasEdge(a, b))
        return NO_EDGE;
    const std::uint32_t h = vByKey[findFirst(keyOf(a, b))].second;
    return vMate[h] == BORDER ? h : NO_EDGE;
}

u64 EdgeMates::keyOf(int a, int b)
{
    const auto [low, high] = std::minmax(a, b);
    return static_cast<u64>(low) << 32 | static_cast<u64>(high);
}

} // namespace TARN_ZEF
