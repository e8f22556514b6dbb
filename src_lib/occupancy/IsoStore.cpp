#include "occupancy/IsoStore.h"

#include "core/CallScope.h"
#include "lattice/Bundle.h"
#include "lattice/Calc.h"

#include <algorithm>
#include <string>

namespace TARN_ZEF
{
namespace
{
// The axes in the order in which the passes try them.
const int AXES[3] = {AXTRIBIT_Z, AXTRIBIT_Y, AXTRIBIT_X};

// x, y, z: 0, 1, 2.
int getAxisIndex(int axis)
{
    const bool bKnown = axis == 1 || axis == 2 || axis == 4;
    if (!bKnown)
        errorMessage(ZEF_HERE, "Wrong axis: " + std::to_string(axis));
    ASSEX_TEXT(bKnown, "axis==1 || axis==2 || axis==4");
    return axis == AXTRIBIT_X ? 0 : axis == AXTRIBIT_Y ? 1 : 2;
}

bool isAllowed(int forbiddenDirection, int axis)
{
    return forbiddenDirection >= 0 && (forbiddenDirection & axis) == 0;
}

// Brings a local coordinate that left the block back into 0 to 31 and steps the block's code along.
bool wrap(const Calc& calc, CCD& blockCode, int& coordinate, u64 axTriBit)
{
    if (coordinate >= 0 && coordinate < Iso::SIZE)
        return true;
    const bool bAbove = coordinate >= Iso::SIZE;
    coordinate += bAbove ? -Iso::SIZE : Iso::SIZE;
    return calc.manipOneAxis(blockCode, bAbove, axTriBit);
}
} // namespace

int IsoStore::simplifySign = 1;

IsoStore::IsoStore(const Calc* pCalc_, std::vector<Bundle*>& vBundles_)
    : pCalc(pCalc_)
    , pBundles(&vBundles_)
{
}

// --- Filling -----------------------------------------------------------------------------------------------

void IsoStore::init(CCD upperQuad, const std::vector<Bundle*>& vGroup)
{
    size += vGroup.size();
    Iso* pIso = makeIso(upperQuad);
    std::vector<CCD> vCCD;
    vCCD.reserve(vGroup.size());
    for (const Bundle* pBundle : vGroup)
        vCCD.push_back(pBundle->ccd);
    setAll(pIso, std::move(vCCD));
}

void IsoStore::add(CCD upperQuad, const std::vector<CCD>& vCCD)
{
    size += vCCD.size();
    Iso* pIso = findIso(upperQuad);
    setAll(pIso != nullptr ? pIso : makeIso(upperQuad), vCCD);
}

void IsoStore::setAll(Iso* pIso, std::vector<CCD> vCCD)
{
    std::sort(vCCD.begin(), vCCD.end());
    vCCD.erase(std::unique(vCCD.begin(), vCCD.end()), vCCD.end());
    for (const CCD ccd : vCCD)
    {
        ASSEX(Iso::toUpperQuad(ccd) == pIso->getUpperQuad());
        int x, y, z;
        Iso::toLocal(ccd, x, y, z);
        pIso->set(x, y, z, true);
    }
}

void IsoStore::set(CCD ccd, bool bSet)
{
    int x, y, z;
    Iso::toLocal(ccd, x, y, z);
    getIso(ccd)->set(x, y, z, bSet);
}

Iso* IsoStore::makeIso(CCD upperQuad)
{
    const auto [it, bNew] = mUpperQuad2Iso.emplace(upperQuad, std::make_unique<Iso>(upperQuad));
    ASSEX_TEXT(bNew, "mUpperQuad2Iso.insert(upperQuad).second");
    return it->second.get();
}

// --- Queries -----------------------------------------------------------------------------------------------

bool IsoStore::isSet(CCD ccd) const
{
    int x, y, z;
    Iso::toLocal(ccd, x, y, z);
    return getIso(ccd)->get(x, y, z);
}

Iso* IsoStore::findIso(CCD upperQuad) const
{
    if (pLastIso != nullptr && pLastIso->getUpperQuad() == upperQuad)
        return pLastIso;
    const auto q_it = mUpperQuad2Iso.find(upperQuad);
    if (q_it == mUpperQuad2Iso.end())
        return nullptr;
    pLastIso = q_it->second.get();
    return pLastIso;
}

Iso* IsoStore::getIso(CCD ccd) const
{
    const CCD upperQuad = Iso::toUpperQuad(ccd);
    Iso* pIso = findIso(upperQuad);
    if (pIso == nullptr)
        warningMessage(ZEF_HERE, "No block with upperQuad=" + std::to_string(upperQuad));
    ASSEX_TEXT(pIso != nullptr, "q_it!=mUpperQuad2Iso.end()");
    return pIso;
}

bool IsoStore::isSetRelative(const Iso* pIso, int x, int y, int z) const
{
    if (((x | y | z) & ~(Iso::SIZE - 1)) == 0)
        return pIso->get(x, y, z);
    CCD blockCode = pIso->getUpperQuad() >> Iso::LEVEL_BITS;
    if (!wrap(*pCalc, blockCode, x, AXTRIBIT_X) || !wrap(*pCalc, blockCode, y, AXTRIBIT_Y) ||
        !wrap(*pCalc, blockCode, z, AXTRIBIT_Z))
        return false;
    const CCD upperQuad = blockCode << Iso::LEVEL_BITS;
    if (upperQuad >> Iso::LEVEL_BITS != blockCode) // beyond the largest lattice
        return false;
    const Iso* pOtherIso = findIso(upperQuad);
    return pOtherIso != nullptr && pOtherIso->get(x, y, z);
}

void IsoStore::getAllCCD(std::vector<CCD>& vCCD) const
{
    for (const auto& [upperQuad, pIso] : mUpperQuad2Iso)
        pIso->getCCDs(vCCD);
}

bool IsoStore::empty() const
{
    std::vector<CCD> vCCD;
    getAllCCD(vCCD);
    return vCCD.empty();
}

// --- One cell ----------------------------------------------------------------------------------------------

IsoStore::Place IsoStore::getPlace(CCD ccd) const
{
    Place place{getIso(ccd), {}};
    Iso::toLocal(ccd, place.aXYZ[0], place.aXYZ[1], place.aXYZ[2]);
    return place;
}

bool IsoStore::isSetAt(const Place& place, int a, int stepA, int b, int stepB) const
{
    int aXYZ[3] = {place.aXYZ[0], place.aXYZ[1], place.aXYZ[2]};
    aXYZ[a] += stepA;
    aXYZ[b] += stepB;
    return isSetRelative(place.pIso, aXYZ[0], aXYZ[1], aXYZ[2]);
}

// Whatever lies beside the next layer in direction d must also lie beside the cell's own layer.
bool IsoStore::isSupported(const Place& place, int a, int d) const
{
    for (const int b : {(a + 1) % 3, (a + 2) % 3})
        for (const int step : {1, -1})
            if (isSetAt(place, a, d, b, step) && !isSetAt(place, a, 0, b, step))
                return false;
    return true;
}

void IsoStore::clear(CCD ccd, Bundle* pBundle)
{
    set(ccd, false);
    if (pBundle != nullptr)
        pBundle->forbiddenDirection = -1;
}

bool IsoStore::tryKill(Bundle* pBundle, CCD ccd, int axis, int direction)
{
    const int a = getAxisIndex(axis);
    if (!isSet(ccd))
        return false;
    const Place place = getPlace(ccd);
    if (isSetAt(place, a, direction, a, 0) || !isSetAt(place, a, -direction, a, 0))
        return false;
    if (pBundle != nullptr && isSetAt(place, a, -2 * direction, a, 0))
        return false;
    if (!isSupported(place, a, direction))
        return false;
    clear(ccd, pBundle);
    return true;
}

bool IsoStore::tryKillWeakBundle(Bundle* pB0, const Bundle* pB1)
{
    const u64 x = pB0->ccd ^ pB1->ccd;
    const u64 axis = ((x & SPARSE_X) != 0 ? AXTRIBIT_X : 0) | ((x & SPARSE_Y) != 0 ? AXTRIBIT_Y : 0) |
                     ((x & SPARSE_Z) != 0 ? AXTRIBIT_Z : 0);
    if (axis != AXTRIBIT_X && axis != AXTRIBIT_Y && axis != AXTRIBIT_Z)
        return false;
    const int a = getAxisIndex(static_cast<int>(axis));
    const int d = pB0->ccd > pB1->ccd ? 1 : -1;
    const Place place = getPlace(pB0->ccd);
    if (isSetAt(place, a, d, a, 0) || !isSupported(place, a, d))
        return false;
    clear(pB0->ccd, pB0);
    return true;
}

// --- Passes ------------------------------------------------------------------------------------------------

void IsoStore::printSize(const char* name) const
{
    printText(std::string("\n\n\n\n\n") + name + ", numIso=" + std::to_string(mUpperQuad2Iso.size()) +
              " and size is " + std::to_string(size) + "\n");
}

bool IsoStore::tryKillBothWays(Bundle* pBundle, CCD ccd, int axis, int firstDirection)
{
    return tryKill(pBundle, ccd, axis, firstDirection) || tryKill(pBundle, ccd, axis, -firstDirection);
}

void IsoStore::simplify()
{
    printSize(" Hi, this is simplify");
    CallState* const pState = CallScope::getState();
    int& sign = pState != nullptr ? pState->occupancySign : simplifySign;
    for (u64 numSucc = 1; numSucc > 0;)
    {
        sign = -sign;
        numSucc = 0;
        for (const int axis : AXES)
            for (Bundle* pB : *pBundles)
                if (isAllowed(pB->forbiddenDirection, axis) && tryKillBothWays(pB, pB->ccd, axis, sign))
                    ++numSucc;
    }
}

void IsoStore::simplifyInflates(std::map<CCD, int>& vInflCCD2forbDir)
{
    printSize("* Hi, this is simplifyInflates");
    printText("vInflCCD2forbDir for loop is " + std::to_string(vInflCCD2forbDir.size()) + "\n");
    for (u64 numSucc = 1; numSucc > 0;)
    {
        numSucc = 0;
        for (const int axis : AXES)
        {
            for (auto& [ccd, forbiddenDirection] : vInflCCD2forbDir)
            {
                if (!isAllowed(forbiddenDirection, axis) || !tryKillBothWays(nullptr, ccd, axis, 1))
                    continue;
                forbiddenDirection = -1;
                ++numSucc;
            }
        }
        printText("simplifyInflates, numSucc=" + std::to_string(numSucc) + "\n");
    }
}

} // namespace TARN_ZEF
