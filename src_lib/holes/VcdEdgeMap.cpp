#include "holes/VcdEdgeMap.h"

#include "cmesh/CEdge.h"

#include <algorithm>
#include <utility>

namespace TARN_ZEF
{
void VcdEdgeMap::assign(const std::vector<CEdge*>& vCE)
{
    // The place in the input decides among the entries of one corner.
    std::vector<std::pair<u64, unsigned int>> vOrder;
    vOrder.reserve(2 * vCE.size());
    for (unsigned int i = 0; i < vCE.size(); ++i)
    {
        vOrder.emplace_back(vCE[i]->v0, i);
        vOrder.emplace_back(vCE[i]->v1, i);
    }
    std::sort(vOrder.begin(), vOrder.end());

    vKeys.clear();
    vEntries.clear();
    vEntries.reserve(vOrder.size());
    numEntries = 0;
    firstKey = 0;
    for (const auto& [vcd, i] : vOrder)
    {
        if (vKeys.empty() || vKeys.back().vcd != vcd)
            vKeys.push_back(Key{vcd});
        append(vKeys.back(), vCE[i]);
    }
}

void VcdEdgeMap::addEdge(CEdge* pCE)
{
    for (const u64 vcd : {pCE->v0, pCE->v1})
    {
        const std::size_t k = getOrMakeKey(vcd);
        append(vKeys[k], pCE);
        firstKey = std::min(firstKey, k);
    }
}

std::size_t VcdEdgeMap::count(u64 vcd) const
{
    const std::size_t k = findKey(vcd);
    return k < vKeys.size() ? vKeys[k].num : 0;
}

u64 VcdEdgeMap::getFirstVCD() const
{
    ASSEX(!empty());
    return vKeys[firstKey].vcd;
}

CEdge* VcdEdgeMap::getFirstEdge() const
{
    ASSEX(!empty());
    return vEntries[vKeys[firstKey].first].pCE;
}

CEdge* VcdEdgeMap::findFirst(u64 vcd) const
{
    const std::size_t k = findKey(vcd);
    return k < vKeys.size() && vKeys[k].num != 0 ? vEntries[vKeys[k].first].pCE : nullptr;
}

void VcdEdgeMap::getEdges(u64 vcd, std::vector<CEdge*>& vCE) const
{
    const std::size_t k = findKey(vcd);
    if (k == vKeys.size())
        return;
    for (unsigned int e = vKeys[k].first; e != NONE; e = vEntries[e].next)
        vCE.push_back(vEntries[e].pCE);
}

void VcdEdgeMap::getAllEdges(std::vector<CEdge*>& vCE) const
{
    for (const Key& key : vKeys)
        for (unsigned int e = key.first; e != NONE; e = vEntries[e].next)
            vCE.push_back(vEntries[e].pCE);
}

void VcdEdgeMap::getJunctions(std::vector<u64>& vVCD) const
{
    for (const Key& key : vKeys)
        if (key.num > 2)
            vVCD.push_back(key.vcd);
}

void VcdEdgeMap::eraseEdge(const CEdge* pCE)
{
    eraseAt(pCE->v0, pCE);
    eraseAt(pCE->v1, pCE);
    skipEmptyKeys();
}

void VcdEdgeMap::eraseVCD(u64 vcd)
{
    const std::size_t k = findKey(vcd);
    if (k == vKeys.size())
        return;
    numEntries -= vKeys[k].num;
    vKeys[k] = Key{vcd};
    skipEmptyKeys();
}

std::size_t VcdEdgeMap::findKey(u64 vcd) const
{
    const auto it = std::lower_bound(vKeys.begin(), vKeys.end(), vcd,
                                     [](const Key& key, u64 wanted) { return key.vcd < wanted; });
    return it != vKeys.end() && it->vcd == vcd ? static_cast<std::size_t>(it - vKeys.begin()) : vKeys.size();
}

std::size_t VcdEdgeMap::getOrMakeKey(u64 vcd)
{
    const auto it = std::lower_bound(vKeys.begin(), vKeys.end(), vcd,
                                     [](const Key& key, u64 wanted) { return key.vcd < wanted; });
    const auto k = static_cast<std::size_t>(it - vKeys.begin());
    if (it != vKeys.end() && it->vcd == vcd)
        return k;
    vKeys.insert(it, Key{vcd});
    return k;
}

void VcdEdgeMap::append(Key& key, CEdge* pCE)
{
    const auto e = static_cast<unsigned int>(vEntries.size());
    vEntries.push_back({pCE, NONE});
    if (key.first == NONE)
        key.first = e;
    else
        vEntries[key.last].next = e;
    key.last = e;
    ++key.num;
    ++numEntries;
}

void VcdEdgeMap::eraseAt(u64 vcd, const CEdge* pCE)
{
    const std::size_t k = findKey(vcd);
    if (k == vKeys.size())
        return;
    Key& key = vKeys[k];
    unsigned int prev = NONE;
    for (unsigned int e = key.first; e != NONE; e = vEntries[e].next)
    {
        if (vEntries[e].pCE != pCE)
        {
            prev = e;
            continue;
        }
        const unsigned int next = vEntries[e].next;
        (prev == NONE ? key.first : vEntries[prev].next) = next;
        if (key.last == e)
            key.last = prev;
        --key.num;
        --numEntries;
    }
}

void VcdEdgeMap::skipEmptyKeys() noexcept
{
    while (firstKey < vKeys.size() && vKeys[firstKey].num == 0)
        ++firstKey;
}

} // namespace TARN_ZEF
