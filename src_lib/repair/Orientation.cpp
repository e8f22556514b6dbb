#include "repair/Orientation.h"

#include "cmesh/CMesh.h"
#include "cmesh/CPatch.h"
#include "cmesh/uniteAcrossEdges.h"
#include "parallel/parallelFor.h"
#include "parallel/produceInOrder.h"
#include "repair/RepairState.h"
#include "repair/orientedFlood.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace TARN_ZEF
{
namespace
{
const std::size_t TRIANGLES_PER_PART = 1 << 14;
const std::size_t LARGE_PART = 16; // a piece with this part of the triangles is large

SurfacePieces findPieces(const CMesh& mesh)
{
    const std::size_t numEdges = mesh.getNumEdgeSlots();
    TriangleUnion turns(mesh.getAllT().size());
    std::vector<std::uint32_t> vTwisted =
        uniteAcrossEdges(turns, mesh.getAllT().size(), numEdges, getNumUnionParts(numEdges),
                         [&mesh](std::size_t, std::size_t from, std::size_t to, auto join)
                         {
                             mesh.forEachEdge(from, to,
                                              [&join](const CEdge* pCE)
                                              {
                                                  if (pCE->isInner())
                                                      join(getJoint(*pCE));
                                              });
                         });
    return {mesh, std::move(turns), std::move(vTwisted)};
}

SurfacePieces takeOrFindPieces(RepairState& state)
{
    std::optional<SurfacePieces> pieces = state.takePieces();
    return pieces ? std::move(*pieces) : findPieces(*state.pCMesh);
}

bool isHigher(u64 ccdA, u64 ccdB)
{
    return (ccdA & SPARSE_Z) > (ccdB & SPARSE_Z);
}
} // namespace

void Orientation::Peak::raise(const Peak& other)
{
    if (isHigher(topmostCCD, other.topmostCCD))
        return;
    if (isHigher(other.topmostCCD, topmostCCD))
        *this = {component, other.topmostCCD};
    bUp = bUp || other.bUp;
    bDown = bDown || other.bDown;
    bUpright = bUpright || other.bUpright;
}

Orientation::Orientation(CMesh* pCMesh_, const Calc* pCalc_, SurfacePieces pieces)
    : pCMesh(pCMesh_)
    , pCalc(pCalc_)
    , turns(std::move(pieces.turns))
    , vTwisted(std::move(pieces.vTwisted))
{
}

Orientation::Orientation(RepairState& state)
    : Orientation(state.pCMesh, state.pCalc, takeOrFindPieces(state))
{
}

void Orientation::run()
{
    collectComponents();
    if (vComponents.empty())
        return;
    for (const std::uint32_t number : vTwisted)
        if (pCMesh->getAllT()[number]->isAlive())
            vComponents[vComponentOf[turns.findRoot(number)]].bFlood = true;
    for (Component& component : vComponents)
        component.bTurn = !component.bFlood && isUpsideDown(component, component.peak.topmostCCD);
    turnTriangles();
    for (const Component& component : vComponents)
        if (component.bFlood)
            orientByFlood(component);
}

void Orientation::collectComponents()
{
    turns.flatten();
    const std::vector<CTriangle*>& vCT = pCMesh->getAllT();
    vComponentOf.resize(vCT.size());
    for (unsigned int number = 0; number < vCT.size(); ++number)
        if (turns.isRoot(number) && vCT[number]->isAlive())
        {
            const auto component = static_cast<unsigned int>(vComponents.size());
            vComponentOf[number] = component;
            vComponents.push_back({number, Peak{component, vCT[number]->getC0()}});
        }
    if (vComponents.empty())
        return;
    findTopOfLarge();
    produceRangesInOrder<Peaks>(
        vCT.size(), TRIANGLES_PER_PART,
        [this](Peaks& vPeaks, std::size_t from, std::size_t to)
        {
            vPeaks.clear();
            collectPeaks(from, to, vPeaks);
        },
        [&](const Peaks& vPeaks)
        {
            for (const Peak& peak : vPeaks)
                vComponents[peak.component].peak.raise(peak);
        });
    for (Component& component : vComponents)
        component.bFlood = component.bFlood || component.peak.isUnclear();
}

unsigned int Orientation::getComponent(std::size_t number) const
{
    return vComponentOf[turns.look(static_cast<std::uint32_t>(number)).root];
}

// Walks over the corners instead of the triangles, and looks only at those that are as high as the lowest
// summit so far. Where these are many, as on a plate, it gives up.
void Orientation::findTopOfLarge()
{
    std::vector<Summit> vSummits;
    for (unsigned int i = 0; i < vComponents.size(); ++i)
        if (turns.getSize(vComponents[i].seed) > pCMesh->getNumAliveT() / LARGE_PART)
            vSummits.push_back({i, 0, {}});
    if (vSummits.empty())
        return;
    u64 lowestZ = 0;
    std::size_t numLooks = 0;
    const std::size_t maxLooks = pCMesh->getAllT().size() / LARGE_PART;
    pCMesh->forEachVertex(
        [&](const CVertex& vertex)
        {
            if ((vertex.ccd & SPARSE_Z) < lowestZ || vertex.pFirstT == nullptr || ++numLooks > maxLooks)
                return;
            climb(vertex.ccd, vSummits);
            lowestZ = std::min_element(vSummits.begin(), vSummits.end(),
                                       [](const Summit& a, const Summit& b) { return a.z < b.z; })
                          ->z;
        });
    if (numLooks > maxLooks)
        return;
    for (const Summit& summit : vSummits)
        settle(summit);
}

void Orientation::climb(u64 ccd, std::vector<Summit>& vSummits)
{
    vIncT.clear();
    pCMesh->getIncT(ccd, vIncT);
    const u64 z = ccd & SPARSE_Z;
    for (Summit& summit : vSummits)
    {
        if (z < summit.z || !std::any_of(vIncT.begin(), vIncT.end(),
                                         [&](const CTriangle* pCT)
                                         { return getComponent(pCT->getNumber()) == summit.component; }))
            continue;
        if (z > summit.z)
            summit.vCCD.clear();
        summit.z = z;
        summit.vCCD.push_back(ccd);
    }
}

void Orientation::settle(const Summit& summit)
{
    Component& component = vComponents[summit.component];
    component.bTopKnown = true;
    component.peak.topmostCCD = summit.vCCD.front();
    const bool bTurn = isUpsideDown(component, summit.vCCD.front());
    component.bFlood = std::any_of(summit.vCCD.begin(), summit.vCCD.end(),
                                   [&](u64 ccd) { return isUpsideDown(component, ccd) != bTurn; });
}

void Orientation::collectPeaks(std::size_t from, std::size_t to, Peaks& vPeaks) const
{
    for (std::size_t i = from; i < to; ++i)
    {
        const TriangleUnion::Found found = turns.look(static_cast<std::uint32_t>(i));
        const unsigned int component = vComponentOf[found.root];
        if (vComponents[component].bTopKnown)
            continue; // without a look at the triangle
        const CTriangle& ct = *pCMesh->getAllT()[i];
        if (!ct.isAlive())
            continue;
        if (vPeaks.empty() || vPeaks.back().component != component)
            vPeaks.push_back({component, ct.getC0()});
        Peak own{component, ct.getC0()};
        raiseTo(own.topmostCCD, ct.getC1());
        raiseTo(own.topmostCCD, ct.getC2());
        if (isHigher(vPeaks.back().topmostCCD, own.topmostCCD))
            continue;
        const double z = getLatticeNormal(*pCalc, ct).z();
        own.bUp = found.bTurned ? z < 0.0 : z > 0.0;
        own.bDown = found.bTurned ? z > 0.0 : z < 0.0;
        own.bUpright = !own.bUp && !own.bDown;
        vPeaks.back().raise(own);
    }
}

// By the normals of its own triangles at a topmost corner: as the seed runs, or, after a flood, as they run
// themselves.
bool Orientation::isUpsideDown(const Component& component, u64 topmostCCD)
{
    vIncT.clear();
    pCMesh->getIncT(topmostCCD, vIncT);
    double up = 0.0;
    for (const CTriangle* pCT : vIncT)
    {
        const TriangleUnion::Found found = turns.find(pCT->getNumber());
        if (found.root != component.seed)
            continue;
        const double z = getLatticeNormal(*pCalc, *pCT).z();
        up += !component.bFlood && found.bTurned ? -z : z;
    }
    return up < 0.0;
}

void Orientation::turnTriangles()
{
    const std::vector<CTriangle*>& vCT = pCMesh->getAllT();
    parallelFor(vCT.size(), TRIANGLES_PER_PART,
                [&](std::size_t from, std::size_t to)
                {
                    for (std::size_t i = from; i < to; ++i)
                        turn(*vCT[i], turns.look(static_cast<std::uint32_t>(i)));
                });
}

// Most triangles stay as they are, so these are not even looked at. The dead belong to any component.
void Orientation::turn(CTriangle& ct, const TriangleUnion::Found& found) const
{
    const Component& component = vComponents[vComponentOf[found.root]];
    if (component.bFlood)
        ct.bVisited = false;
    else if (found.bTurned != component.bTurn && ct.isAlive())
        ct.flipOrientation();
}

// Its topmost corner is the first one that the flood meets.
void Orientation::orientByFlood(const Component& component)
{
    std::vector<CTriangle*> vFlood;
    floodOriented(pCMesh->getAllT()[component.seed], vFlood);
    u64 topmostCCD = vFlood.front()->getC0();
    for (const CTriangle* pCT : vFlood)
        for (const u64 ccd : {pCT->getC0(), pCT->getC1(), pCT->getC2()})
            raiseTo(topmostCCD, ccd);
    if (isUpsideDown(component, topmostCCD))
        for (CTriangle* pCT : vFlood)
            pCT->flipOrientation();
}

} // namespace TARN_ZEF
