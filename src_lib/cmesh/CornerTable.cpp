#include "cmesh/CornerTable.h"

#include <algorithm>

namespace TARN_ZEF
{
namespace
{
const std::size_t NUM_POOL_INITIAL = 64; // of a mesh whose corners are not known beforehand
} // namespace

void CornerTable::initPool(std::size_t numCorners)
{
    pPool = std::make_unique<SimplePool<CVertex>>();
    pPool->init(static_cast<int>(std::min(numCorners + NUM_POOL_INITIAL, std::size_t{2000000000})), -1);
}

void CornerTable::prepare(const std::vector<u64>& vCCD)
{
    ASSEX(numVertices == 0);
    if (vCCD.empty())
        return;
    initPool(vCCD.size());
    grow(vCCD.size());
    // The pool's first block holds them all.
    for (const u64 ccd : vCCD)
        append(ccd);
    pPrepared = find(vCCD.front());
}

CVertex* CornerTable::make(u64 ccd)
{
    if (!pPool)
        initPool(0);
    if (vTable.empty() || (numVertices + 1) * 10 > vTable.size() * 6)
        grow(2 * (numVertices + 1));
    return append(ccd);
}

CVertex* CornerTable::append(u64 ccd)
{
    CVertex* pVertex = new (pPool->getNext()) CVertex(ccd);
    if (numAscending == numVertices && (numVertices == 0 || lastAscendingCCD < ccd))
    {
        lastAscendingCCD = ccd;
        ++numAscending;
    }
    ++numVertices;
    enter(pVertex);
    return pVertex;
}

void CornerTable::enter(CVertex* pVertex)
{
    std::size_t slot = hashSlot(pVertex->ccd);
    while (vTable[slot] != nullptr)
        slot = (slot + 1) & (vTable.size() - 1);
    vTable[slot] = pVertex;
}

void CornerTable::grow(std::size_t numCorners)
{
    std::size_t numSlots = 64;
    while (numSlots * 6 < numCorners * 10)
        numSlots *= 2;
    vTable.assign(numSlots, nullptr);
    forEach([this](CVertex* pVertex) { enter(pVertex); });
}

void CornerTable::clear()
{
    *this = CornerTable();
}

std::vector<CVertex*> CornerTable::getSorted() const
{
    std::vector<CVertex*> vVertices;
    vVertices.reserve(numVertices);
    forEach([&](CVertex* pVertex) { vVertices.push_back(pVertex); });
    const auto isLess = [](const CVertex* pA, const CVertex* pB) { return pA->ccd < pB->ccd; };
    const auto itTail = vVertices.begin() + static_cast<std::ptrdiff_t>(numAscending);
    std::sort(itTail, vVertices.end(), isLess);
    std::inplace_merge(vVertices.begin(), itTail, vVertices.end(), isLess);
    return vVertices;
}

} // namespace TARN_ZEF
