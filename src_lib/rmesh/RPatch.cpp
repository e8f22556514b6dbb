#include "rmesh/RPatch.h"

#include "core/definitions.h"
#include "rmesh/REdge.h"
#include "rmesh/RTriangle.h"

#include <algorithm>
#include <atomic>

namespace TARN_ZEF
{
namespace
{
std::atomic<u64> nextId{0}; // never comes round again, however long the process lives
} // namespace

RPatch::RPatch(RMesh* pRMesh_)
    : id(nextId++)
    , pRMesh(pRMesh_)
{
}

void RPatch::addT(RTriangle* pRT)
{
    bSorted = bSorted && (vT.empty() || ByCreationRT()(vT.back(), pRT));
    vT.push_back(pRT);
    pRT->setPatch(this);
}

const std::vector<RTriangle*>& RPatch::getMembers() const
{
    if (!bSorted)
    {
        std::sort(vT.begin(), vT.end(), ByCreationRT());
        vT.erase(std::unique(vT.begin(), vT.end()), vT.end());
        bSorted = true;
    }
    return vT;
}

std::size_t RPatch::getNumT() const
{
    const std::vector<RTriangle*>& v = getMembers();
    return static_cast<std::size_t>(
        std::count_if(v.begin(), v.end(), [](const RTriangle* pRT) { return pRT->isAlive(); }));
}

void RPatch::getAllRE(std::vector<REdge*>& vRE) const
{
    ASSEX(vRE.empty());
    for (const RTriangle* pRT : getMembers())
        if (pRT->isAlive())
            pRT->getREs(vRE);
    std::sort(vRE.begin(), vRE.end(), ByCreationRE());
    vRE.erase(std::unique(vRE.begin(), vRE.end()), vRE.end());
}

void RPatch::setBoundary()
{
    ASSEX(isAlive());
    vBoundaryRE.clear();
    std::vector<REdge*> vMultipleRE;
    for (const RTriangle* pRT : getMembers())
        if (pRT->isAlive())
            pRT->getREs(vMultipleRE);
    std::sort(vMultipleRE.begin(), vMultipleRE.end(), ByCreationRE());
    for (auto it = vMultipleRE.begin(); it != vMultipleRE.end();)
    {
        const auto itEnd = std::find_if(it, vMultipleRE.end(), [it](const REdge* pRE) { return pRE != *it; });
        if (itEnd - it == 1)
            vBoundaryRE.push_back(*it);
        it = itEnd;
    }
}

} // namespace TARN_ZEF
