#include "repair/CreaseFlips.h"

#include "cmesh/CMesh.h"
#include "cmesh/toolsCMesh.h"
#include "geometry/tools.h"

#include <algorithm>
#include <cstddef>

namespace TARN_ZEF
{
namespace
{
const double MIN_CREASE_GAIN = 5.0;

// Descending bend, equal ones by creation: the last entry leaves a heap of these first.
using AngleEdge = std::pair<double, CEdge*>;
bool isBentMore(const AngleEdge& a, const AngleEdge& b)
{
    if (a.first != b.first)
        return a.first > b.first;
    return a.second->getNumber() < b.second->getNumber();
}
bool isBentLess(const AngleEdge& a, const AngleEdge& b)
{
    return isBentMore(b, a);
}
} // namespace

CreaseFlips::CreaseFlips(CMesh* pCMesh_)
    : pCMesh(pCMesh_)
{
}

void CreaseFlips::run(double minAngle)
{
    std::vector<AngleEdge> vAngle;
    getAngles(minAngle, vAngle);
    std::make_heap(vAngle.begin(), vAngle.end(), isBentLess);
    while (!vAngle.empty())
    {
        std::pop_heap(vAngle.begin(), vAngle.end(), isBentLess);
        const auto [key, pCE] = vAngle.back();
        vAngle.pop_back();
        double curAngle = 0.0;
        if (!pCE->isInner() || !getBend(pCE, curAngle) || curAngle < minAngle)
            continue;
        if (curAngle == key)
        {
            tryFlipCrease(pCE, curAngle);
            continue;
        }
        vAngle.emplace_back(curAngle, pCE);
        std::push_heap(vAngle.begin(), vAngle.end(), isBentLess);
    }
}

bool CreaseFlips::tryFlipCrease(CEdge* pCE, double curAngle)
{
    CTriangle* pCT0 = pCE->vCT[0];
    CTriangle* pCT1 = pCE->vCT[1];
    if (pCT0->getHEDirection2(pCE->v0, pCE->v1) != HE_SAME)
        std::swap(pCT0, pCT1);
    const bool bReversed = pCT0->getHEDirection2(pCE->v0, pCE->v1) != HE_SAME; // both run from v1
    const u64 ccd0 = pCT0->getThirdCCD(pCE->v0, pCE->v1);
    const u64 ccd1 = pCT1->getThirdCCD(pCE->v0, pCE->v1);
    if (ccd0 == ccd1 || pCMesh->hasEdge(ccd0, ccd1))
        return false;
    const u64 v0 = bReversed ? pCE->v1 : pCE->v0;
    const u64 v1 = pCE->getOtherVCD(v0);
    bool bOK0 = false;
    bool bOK1 = false;
    const Vector3 newNNV0 = getNormalVector(pCMesh, ccd0, v0, ccd1, bOK0);
    const Vector3 newNNV1 = getNormalVector(pCMesh, ccd1, v1, ccd0, bOK1);
    if (!bOK0 || !bOK1 || getAngleDegree(newNNV0, newNNV1) > curAngle - MIN_CREASE_GAIN)
        return false;
    pCT0->kill(pCMesh);
    pCT1->kill(pCMesh);
    // In the orientation of pCT0, which runs from v0 to v1.
    pCMesh->createT(ccd0, v0, ccd1, pCT0->getGeneratingVCD(), 0);
    pCMesh->createT(ccd1, v1, ccd0, pCT0->getGeneratingVCD(), 0);
    return true;
}

void CreaseFlips::getAngles(double minAngle, std::vector<std::pair<double, CEdge*>>& vAngle) const
{
    const auto start = static_cast<std::ptrdiff_t>(vAngle.size());
    pCMesh->forEachEdge(
        [&](CEdge* pCE)
        {
            double angle = 0.0;
            if (pCE->isInner() && getBend(pCE, angle) && !(angle < minAngle))
                vAngle.emplace_back(angle, pCE);
        });
    std::sort(vAngle.begin() + start, vAngle.end(), isBentMore);
}

bool CreaseFlips::getBend(const CEdge* pCE, double& angle) const
{
    const u64 ccd0 = pCE->vCT[0]->getThirdCCD(pCE->v0, pCE->v1);
    const u64 ccd1 = pCE->vCT[1]->getThirdCCD(pCE->v0, pCE->v1);
    bool bOK0 = false;
    bool bOK1 = false;
    const Vector3 nnv0 = getNormalVector(pCMesh, pCE->v0, pCE->v1, ccd0, bOK0);
    const Vector3 nnv1 = getNormalVector(pCMesh, pCE->v1, pCE->v0, ccd1, bOK1);
    if (!bOK0 || !bOK1)
        return false;
    angle = getAngleDegree(nnv0, nnv1);
    return true;
}

} // namespace TARN_ZEF
