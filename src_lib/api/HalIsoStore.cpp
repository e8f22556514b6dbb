// The optional stage of Hal that thins the occupied cells before the extraction.
#include "api/Hal.h"

#include "core/CallRecorder.h"
#include "lattice/Bundle.h"
#include "occupancy/IsoStore.h"

#include <algorithm>

namespace TARN_ZEF
{
std::shared_ptr<IsoStore> Hal::createIsoStore()
{
    auto pIsoStore = std::make_shared<IsoStore>(pCalc, vBundles);
    std::stable_sort(vBundles.begin(), vBundles.end(),
                     [](const Bundle* pA, const Bundle* pB) { return pA->ccd < pB->ccd; });
    std::vector<Bundle*> vGroup;
    for (auto begin = vBundles.begin(); begin != vBundles.end();)
    {
        const CCD upperQuad = Iso::toUpperQuad((*begin)->ccd);
        const auto end = std::find_if(begin, vBundles.end(),
                                      [upperQuad](const Bundle* pBundle)
                                      { return Iso::toUpperQuad(pBundle->ccd) != upperQuad; });
        vGroup.assign(begin, end);
        pIsoStore->init(upperQuad, vGroup);
        begin = end;
    }
    return pIsoStore;
}

void Hal::thinOccupancy()
{
    const std::shared_ptr<IsoStore> pIsoStore = createIsoStore();
    pIsoStore->simplify();
    pIsoStore->slide();
    addToReport(&CallReport::numRemovedCells, std::erase_if(vBundles, [](const Bundle* pBundle)
                                                            { return pBundle->forbiddenDirection < 0; }));
}

} // namespace TARN_ZEF
