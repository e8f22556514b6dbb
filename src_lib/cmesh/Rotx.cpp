#include "cmesh/Rotx.h"

#include "cmesh/CMesh.h"
#include "geometry/Plane.h"
#include "geometry/tools.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <string>
#include <vector>

namespace TARN_ZEF
{
namespace
{
// Third corners within this angle, in degrees, stand in one half-plane around the edge.
const double SAME_HALF_PLANE = 1.0;
// A third corner in the reference half-plane may come out a little below a full turn.
const double FULL_TURN = 359.0;

const u64 MIN_END = 1;
const u64 MAX_END = 2;
const u64 MAX_THIRD = 3;

struct Ranked
{
    RCD rcd;
    int index;
};

// The cubes that a cell belongs to, by their highest cells, ascending.
std::array<RCD, 8> cubesOf(RCD rcd)
{
    u64 x, y, z;
    splitRCD(rcd, x, y, z);
    std::array<RCD, 8> aCubes;
    std::size_t i = 0;
    for (u64 dx = 0; dx < 2; ++dx)
        for (u64 dy = 0; dy < 2; ++dy)
            for (u64 dz = 0; dz < 2; ++dz)
                aCubes[i++] = makeRCD(x + dx, y + dy, z + dz);
    return aCubes;
}

template <typename CellsA, typename CellsB>
std::vector<RCD> intersect(const CellsA& a, const CellsB& b)
{
    std::vector<RCD> vCommon;
    std::set_intersection(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(vCommon));
    return vCommon;
}

// The cells that are in one cube together with both ends, ascending, without the ends.
std::vector<RCD> getThirdRCDs(const Calc& model, RCD rcd0, RCD rcd1)
{
    const std::vector<RCD> vCommonRVCD = intersect(cubesOf(rcd0), cubesOf(rcd1));
    std::vector<RCD> vNeigRCD(2 * 26);
    model.completeArray26_RCD(rcd0, vNeigRCD.data());
    model.completeArray26_RCD(rcd1, vNeigRCD.data() + 26);
    std::sort(vNeigRCD.begin(), vNeigRCD.end());
    vNeigRCD.erase(std::unique(vNeigRCD.begin(), vNeigRCD.end()), vNeigRCD.end());
    std::vector<RCD> vThirdRCDs;
    for (const RCD rcd : vNeigRCD)
        if (rcd != rcd0 && rcd != rcd1 && !intersect(vCommonRVCD, cubesOf(rcd)).empty())
            vThirdRCDs.push_back(rcd);
    return vThirdRCDs;
}

// Orders the third corners around the directed edge, from the first one on.
std::vector<Ranked> sortThirdRCDs(const Calc& model, RCD rcd0, RCD rcd1, const std::vector<RCD>& vThirdRCDs)
{
    const Point3 mid0 = model.getMidOfRCD(rcd0);
    const Point3 mid1 = model.getMidOfRCD(rcd1);
    const Point3 refMid = model.getMidOfRCD(vThirdRCDs.front());
    const Plane refPlane(mid0, mid1, refMid);
    bool bOK = false;
    const Vector3 refNNV = getNormalVector(&mid0, &mid1, &refMid, bOK);
    ASSEX(bOK);
    std::vector<std::pair<double, RCD>> vAngleRCD;
    for (const RCD rcd : vThirdRCDs)
    {
        const Point3 mid = model.getMidOfRCD(rcd);
        const Vector3 nnv = getNormalVector(&mid0, &mid1, &mid, bOK);
        ASSEX(bOK);
        double angle = getAngleDegree(refNNV, nnv);
        if (refPlane.getSignedDistance(mid) < 0.0)
            angle = 360.0 - angle;
        vAngleRCD.emplace_back(angle > FULL_TURN ? 0.0 : angle, rcd);
    }
    std::sort(vAngleRCD.begin(), vAngleRCD.end());
    std::vector<Ranked> vRanked;
    int index = 0;
    double lastAngle = 0.0;
    for (const auto& [angle, rcd] : vAngleRCD)
    {
        if (std::fabs(lastAngle - angle) > SAME_HALF_PLANE)
        {
            ++index;
            lastAngle = angle;
        }
        vRanked.push_back({rcd, index});
    }
    return vRanked;
}

std::size_t encode(const u64 aRCD0[3], const u64 aRCD1[3], const u64 aRCD2[3])
{
    std::size_t code = 0;
    for (int i = 0; i < 3; ++i)
        code = code << 2 | (aRCD0[i] - MIN_END) << 1 | (aRCD1[i] - MIN_END);
    for (int i = 0; i < 3; ++i)
        code = code << 2 | aRCD2[i];
    return code;
}

void split(RCD rcd, u64 aRCD[3])
{
    splitRCD(rcd, aRCD[0], aRCD[1], aRCD[2]);
}

// An edge in the direction of one of its triangles, shifted into the model.
struct ModelEdge
{
    ModelEdge(const Calc& calc, const CTriangle& refCT, const CEdge& edge)
        : vcd0(edge.v0)
        , vcd1(edge.v1)
    {
        if (refCT.getHEDirection2(vcd0, vcd1) == HE_OPPOSITE)
            std::swap(vcd0, vcd1);
        ASSEX_TEXT(refCT.getHEDirection2(vcd0, vcd1) == HE_SAME,
                   "pRefCT->getHEDirection2(vcd0,vcd1)==HE_SAME");
        calc.getXYZ(vcd0, aRCD0[0], aRCD0[1], aRCD0[2]);
        calc.getXYZ(vcd1, aRCD1[0], aRCD1[1], aRCD1[2]);
        for (int i = 0; i < 3; ++i)
        {
            // Wraps for an end at index 0; the subtractions wrap back.
            aShift[i] = std::min(aRCD0[i], aRCD1[i]) - MIN_END;
            aRCD0[i] -= aShift[i];
            aRCD1[i] -= aShift[i];
        }
    }
    void getThird(const Calc& calc, const CTriangle& ct, u64 aRCD2[3]) const
    {
        calc.getXYZ(ct.getThirdCCD(vcd0, vcd1), aRCD2[0], aRCD2[1], aRCD2[2]);
        for (int i = 0; i < 3; ++i)
            aRCD2[i] -= aShift[i];
    }

    u64 vcd0;
    u64 vcd1;
    u64 aRCD0[3];
    u64 aRCD1[3];
    u64 aShift[3];
};

struct Entry
{
    int index;
    CTriangle* pCT;
};
} // namespace

Rotx::Rotx(const CMesh* pCMesh, bool bBuildTable)
    : pCalc(pCMesh->getCalc())
    , pTable(nullptr)
{
    if (!bBuildTable)
        return;
    static const Table table = buildTable();
    pTable = &table;
}

Rotx::Table Rotx::buildTable()
{
    const Calc model(0.0, 0.0, 0.0, 4.0, 4.0, 4.0, 2); // cells 0 to 3, of size 1
    std::vector<RCD> vEnds;
    for (u64 x = MIN_END; x <= MAX_END; ++x)
        for (u64 y = MIN_END; y <= MAX_END; ++y)
            for (u64 z = MIN_END; z <= MAX_END; ++z)
                vEnds.push_back(makeRCD(x, y, z));
    Table table;
    table.fill(-1);
    for (const RCD rcd0 : vEnds)
    {
        for (const RCD rcd1 : vEnds)
        {
            if (rcd0 == rcd1)
                continue;
            u64 aRCD0[3], aRCD1[3], aRCD2[3];
            split(rcd0, aRCD0);
            split(rcd1, aRCD1);
            for (const Ranked& third : sortThirdRCDs(model, rcd0, rcd1, getThirdRCDs(model, rcd0, rcd1)))
            {
                split(third.rcd, aRCD2);
                table[encode(aRCD0, aRCD1, aRCD2)] = static_cast<std::int8_t>(third.index);
            }
        }
    }
    return table;
}

int Rotx::getIdx(RCD rcd0, RCD rcd1, RCD rcd2) const
{
    u64 aRCD0[3], aRCD1[3], aRCD2[3];
    split(rcd0, aRCD0);
    split(rcd1, aRCD1);
    split(rcd2, aRCD2);
    return getIdx(aRCD0, aRCD1, aRCD2);
}

int Rotx::getIdx(const u64 aRCD0[3], const u64 aRCD1[3], const u64 aRCD2[3]) const
{
    bool bInModel = pTable != nullptr;
    for (int i = 0; i < 3; ++i)
        bInModel = bInModel && aRCD0[i] >= MIN_END && aRCD0[i] <= MAX_END && aRCD1[i] >= MIN_END &&
                   aRCD1[i] <= MAX_END && aRCD2[i] <= MAX_THIRD;
    const int index = bInModel ? (*pTable)[encode(aRCD0, aRCD1, aRCD2)] : -1;
    ASSEX_TEXT(index >= 0, "q_it!=mEncoded2Index.end()");
    return index;
}

bool Rotx::sortStar(CTriangle* pRefCT, CEdge* pCE) const
{
    ASSEX(pRefCT->isAlive());
    const ModelEdge edge(*pCalc, *pRefCT, *pCE);
    std::vector<Entry> vSortedCT;
    for (CTriangle* pCT : pCE->vCT)
    {
        u64 aRCD2[3];
        edge.getThird(*pCalc, *pCT, aRCD2);
        vSortedCT.push_back({getIdx(edge.aRCD0, edge.aRCD1, aRCD2), pCT});
    }
    std::sort(vSortedCT.begin(), vSortedCT.end(),
              [](const Entry& a, const Entry& b)
              { return a.index != b.index ? a.index < b.index : a.pCT->getNumber() < b.pCT->getNumber(); });
    const auto itRef = std::find_if(vSortedCT.begin(), vSortedCT.end(),
                                    [pRefCT](const Entry& entry) { return entry.pCT == pRefCT; });
    const bool bHaveRef = itRef != vSortedCT.end();
    ASSEX(bHaveRef);
    const bool bDouble = std::adjacent_find(vSortedCT.begin(), vSortedCT.end(),
                                            [](const Entry& a, const Entry& b)
                                            { return a.index == b.index; }) != vSortedCT.end();

    std::rotate(vSortedCT.begin(), itRef, vSortedCT.end());
    pCE->vCT.clear();
    for (const Entry& entry : vSortedCT)
        pCE->vCT.push_back(entry.pCT);
    if (bDouble)
        for (const CTriangle* pCT : pCE->vCT)
            printText("ROTX-BUG: " + std::to_string(pCT->getC0()) + ", " + std::to_string(pCT->getC1()) +
                      ", " + std::to_string(pCT->getC2()) + "\n");
    return !bDouble;
}

} // namespace TARN_ZEF
