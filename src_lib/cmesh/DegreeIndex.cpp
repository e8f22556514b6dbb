#include "cmesh/DegreeIndex.h"

#include "cmesh/CEdge.h"

#include <algorithm>
#include <functional>

namespace TARN_ZEF
{
namespace
{
std::size_t getSlot(int degree)
{
    return static_cast<std::size_t>(std::min(degree, DegreeIndex::NUM_DEGREES));
}

bool isRegular(const CEdge* pCE)
{
    return pCE->isInner() || pCE->isOrphan();
}
} // namespace

void DegreeIndex::noteGrown(CEdge* pCE)
{
    const int degree = pCE->getDegree();
    if (degree > 1)
        --aNumOfDegree[getSlot(degree - 1)];
    ++aNumOfDegree[getSlot(degree)];
    addIrregular(pCE);
}

void DegreeIndex::noteFallen(CEdge* pCE)
{
    const int degree = pCE->getDegree();
    --aNumOfDegree[getSlot(degree + 1)];
    if (degree > 0)
        ++aNumOfDegree[getSlot(degree)];
    addIrregular(pCE);
}

void DegreeIndex::clear()
{
    *this = DegreeIndex();
}

bool DegreeIndex::has(int deg) const
{
    for (int degree = 1; degree <= NUM_DEGREES; ++degree)
        if (aNumOfDegree[getSlot(degree)] > 0 &&
            (fitsDegree(degree, deg) || (degree == NUM_DEGREES && deg > NUM_DEGREES)))
            return true;
    return false;
}

void DegreeIndex::setIrregular(std::vector<CEdge*> vCE)
{
    vIrregular = std::move(vCE);
    bIrregularKnown = true;
    dropSurplus();
}

std::vector<CEdge*> DegreeIndex::getIrregular(int deg) const
{
    ASSEX(bIrregularKnown);
    std::vector<CEdge*> vCE;
    for (CEdge* pCE : vIrregular)
        if (!isRegular(pCE) && fitsDegree(pCE->getDegree(), deg))
            vCE.push_back(pCE);
    std::sort(vCE.begin(), vCE.end(), ByMapOrderCE());
    vCE.erase(std::unique(vCE.begin(), vCE.end()), vCE.end());
    return vCE;
}

void DegreeIndex::addIrregular(CEdge* pCE)
{
    if (!bIrregularKnown || isRegular(pCE))
        return;
    vIrregular.push_back(pCE);
    if (vIrregular.size() > limit)
        dropSurplus();
}

void DegreeIndex::dropSurplus()
{
    std::erase_if(vIrregular, isRegular);
    std::sort(vIrregular.begin(), vIrregular.end(), std::less<>()); // any order does
    vIrregular.erase(std::unique(vIrregular.begin(), vIrregular.end()), vIrregular.end());
    limit = std::max(MIN_LIMIT, 2 * vIrregular.size());
}

} // namespace TARN_ZEF
