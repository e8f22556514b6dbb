#include "lattice/BundleMap.h"

#include <algorithm>

namespace TARN_ZEF
{
void BundleMap::assignSorted(std::vector<Entry> vEntries)
{
    clear();
    vBase = std::move(vEntries);
}

void BundleMap::clear()
{
    vBase.clear();
    vBase.shrink_to_fit();
    numErased = 0;
    mLater.clear();
}

std::size_t BundleMap::findBase(u64 ccd) const
{
    const auto it = std::lower_bound(vBase.begin(), vBase.end(), ccd,
                                     [](const Entry& e, u64 code) { return e.first < code; });
    return it != vBase.end() && it->first == ccd ? static_cast<std::size_t>(it - vBase.begin())
                                                 : vBase.size();
}

Bundle* BundleMap::find(u64 ccd) const
{
    const std::size_t i = findBase(ccd);
    if (i != vBase.size())
        return vBase[i].second;
    const auto it = mLater.find(ccd);
    return it != mLater.end() ? it->second : nullptr;
}

bool BundleMap::insert(u64 ccd, Bundle* pBundle)
{
    const std::size_t i = findBase(ccd);
    if (i == vBase.size())
        return mLater.emplace(ccd, pBundle).second;
    if (vBase[i].second != nullptr)
        return false;
    vBase[i].second = pBundle;
    --numErased;
    return true;
}

bool BundleMap::erase(u64 ccd)
{
    const std::size_t i = findBase(ccd);
    if (i == vBase.size())
        return mLater.erase(ccd) == 1;
    if (vBase[i].second == nullptr)
        return false;
    vBase[i].second = nullptr;
    ++numErased;
    return true;
}

} // namespace TARN_ZEF
