#include "repair/PatchSolver.h"

#include "cmesh/CMesh.h"
#include "cmesh/uniteAcrossEdges.h"
#include "core/CallRecorder.h"
#include "core/Progress.h"
#include "geometry/tools.h"
#include "parallel/collectInOrder.h"
#include "parallel/produceInOrder.h"
#include "parallel/sortMT2.h"

#include <algorithm>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
// A pair of patches from this size on is decided only if its share of the mesh's area is small.
const std::size_t MIN_LARGE_PATCH = 21;
const double MAX_PAIR_SHARE = 0.1;

const std::uint32_t MIN_CLOSED = 4; // a tetrahedron

// A closed patch of 100 triangles and more is split only below a thickness of 0.4 spacings. What is a large
// part of the mesh and clearly thicker by a quicker sum need not be measured exactly.
const std::size_t MIN_QUICK_SIZE = 100;
const std::size_t QUICK_PART = 16;
const double CLEARLY_THICK = 0.45;
const double CLEARLY_LARGE_SHARE = 0.11; // likewise, of a patch in a pair

// The parts of a sum are the same for every number of threads, so that its rounding is.
const std::size_t TRIANGLES_PER_PART = 1 << 15;

// Of a patch: six times the volume, twice the area.
struct Solid
{
    double volume = 0.0;
    double area = 0.0;
    u64 topmostCCD = 0;
};
} // namespace

PatchSolver::PatchSolver(CMesh* pCMesh_, Calc* pCalc_)
    : pCMesh(pCMesh_)
    , pCalc(pCalc_)
    , labels(pCMesh_->getAllT().size())
    , flood(PatchFlood::Stops::BORDERS_AND_NON_MANIFOLD, nullptr)
{
    pCMesh->deletePatches();
    const std::size_t numEdges = pCMesh->getNumEdgeSlots();
    const std::size_t numParts = getNumUnionParts(numEdges);
    std::vector<std::vector<CEdge*>> vvWallCE(numParts);
    vTwisted = uniteAcrossEdges(labels, pCMesh->getAllT().size(), numEdges, numParts,
                                [&](std::size_t part, std::size_t from, std::size_t to, auto join)
                                {
                                    pCMesh->forEachEdge(from, to,
                                                        [&](CEdge* pCE)
                                                        {
                                                            if (pCE->isInner())
                                                                join(getJoint(*pCE));
                                                            else if (!pCE->isOrphan())
                                                                vvWallCE[part].push_back(pCE);
                                                        });
                                });
    for (const std::vector<CEdge*>& vPart : vvWallCE)
        for (CEdge* pCE : vPart)
            if (wallCE.insert(pCE->getNumber()))
                vWallCE.push_back(pCE);
    pCMesh->setIrregularEdges(vWallCE);
}

bool PatchSolver::pass(bool bStrict, Progress& progress)
{
    collectSides();
    collectRecords();
    progress.increment();
    std::vector<RecordPair> vPairs;
    std::vector<Record> vClosedPatches;
    classify(vPairs, vClosedPatches);
    progress.increment();
    const bool bPairDecided = solvePairs(vPairs);
    progress.increment();
    const bool bSplit = solveClosedPatches(vClosedPatches, bStrict);
    progress.increment();
    applyChanges();
    return bPairDecided || bSplit;
}

// --- The patches of a pass ---------------------------------------------------------------------------------

void PatchSolver::collectSides()
{
    std::erase_if(vWallCE,
                  [this](const CEdge* pCE)
                  {
                      const bool bNoWall = pCE->isInner() || pCE->isOrphan();
                      if (bNoWall)
                          wallCE.erase(pCE->getNumber());
                      return bNoWall;
                  });
    vSides.clear();
    for (CEdge* pCE : vWallCE)
        for (const CTriangle* pCT : pCE->vCT)
            vSides.push_back({labels.findRoot(pCT->getNumber()), pCE});
    sortMT(vSides.begin(), vSides.end(),
           [](const Side& a, const Side& b)
           { return a.label != b.label ? a.label < b.label : a.pCE->getNumber() < b.pCE->getNumber(); });
}

void PatchSolver::collectRecords()
{
    vBoundaryCE.clear();
    vRecords.clear();
    for (std::size_t i = 0; i < vSides.size();)
    {
        Record record{vSides[i].label, i, i, vBoundaryCE.size(), 0};
        while (i < vSides.size() && vSides[i].label == record.label)
        {
            CEdge* pCE = vSides[i].pCE;
            const std::size_t first = i;
            while (i < vSides.size() && vSides[i].label == record.label && vSides[i].pCE == pCE)
                ++i;
            if (i - first == 1)
                vBoundaryCE.push_back(pCE);
        }
        record.endSide = i;
        record.endBoundary = vBoundaryCE.size();
        vRecords.push_back(record);
    }
    std::sort(vRecords.begin(), vRecords.end(),
              [this](const Record& a, const Record& b)
              {
                  if (hasSameBoundary(a, b))
                      return a.label < b.label;
                  return isBoundaryLess(a, b);
              });
}

bool PatchSolver::hasSameBoundary(const Record& a, const Record& b) const
{
    return a.endBoundary - a.firstBoundary == b.endBoundary - b.firstBoundary &&
           std::equal(vBoundaryCE.data() + a.firstBoundary, vBoundaryCE.data() + a.endBoundary,
                      vBoundaryCE.data() + b.firstBoundary);
}

bool PatchSolver::isBoundaryLess(const Record& a, const Record& b) const
{
    return std::lexicographical_compare(
        vBoundaryCE.data() + a.firstBoundary, vBoundaryCE.data() + a.endBoundary,
        vBoundaryCE.data() + b.firstBoundary, vBoundaryCE.data() + b.endBoundary, ByCreationCE());
}

void PatchSolver::classify(std::vector<RecordPair>& vPairs, std::vector<Record>& vClosedPatches)
{
    NumberSet hasWalls;
    for (std::size_t i = 0; i < vRecords.size(); ++i)
    {
        Record& record = vRecords[i];
        hasWalls.insert(record.label);
        if (record.firstBoundary == record.endBoundary)
        {
            if (labels.getSize(record.label) >= MIN_CLOSED)
                vClosedPatches.push_back(record);
        }
        else if (i + 1 < vRecords.size() && hasSameBoundary(record, vRecords[i + 1]))
            vPairs.emplace_back(&record, &vRecords[i + 1]);
    }
    // Free bubbles have no walls. A larger patch without walls can't be split.
    const auto isFree = [&](Label label)
    {
        return labels.isRoot(label) && labels.getSize(label) >= MIN_CLOSED &&
               labels.getSize(label) < MAX_BUBBLE && !hasWalls.contains(label) &&
               pCMesh->getAllT()[label]->isAlive();
    };
    for (const Label label :
         collectInOrder<Label>(pCMesh->getAllT().size(),
                               [&](std::size_t from, std::size_t to, std::vector<Label>&vPart)
                               {
                                   for (std::size_t i = from; i < to; ++i)
                                       if (isFree(static_cast<Label>(i)))
                                           vPart.push_back(static_cast<Label>(i));
                               }))
        vClosedPatches.push_back({label, 0, 0, 0, 0});
}

std::vector<std::unique_ptr<CPatch>> PatchSolver::makeAllPatches()
{
    std::vector<std::unique_ptr<CPatch>> vAll;
    std::vector<CPatch*> vPatchOf(pCMesh->getAllT().size()); // by label
    for (CTriangle* pCT : pCMesh->getAllT())
    {
        if (!pCT->isAlive())
            continue;
        const Label label = labels.findRoot(pCT->getNumber());
        if (vPatchOf[label] == nullptr)
        {
            vAll.push_back(std::make_unique<CPatch>(pCMesh, pCalc));
            vPatchOf[label] = vAll.back().get();
            vPatchOf[label]->reserve(labels.getSize(label));
        }
        vPatchOf[label]->addT(pCT);
    }
    collectSides();
    std::vector<CEdge*> vWalls;
    for (std::size_t i = 0; i < vSides.size();)
    {
        const Label label = vSides[i].label;
        vWalls.clear();
        for (; i < vSides.size() && vSides[i].label == label; ++i)
            vWalls.push_back(vSides[i].pCE);
        vPatchOf[label]->setWalls(vWalls);
    }
    return vAll;
}

CPatch* PatchSolver::getPatch(Record& record)
{
    if (record.pPatch == nullptr)
    {
        vPatches.push_back(std::make_unique<CPatch>(pCMesh, pCalc));
        record.pPatch = vPatches.back().get();
        flood.fill(*record.pPatch, pCMesh->getAllT()[record.label]);
    }
    return record.pPatch;
}

// --- Pairs -------------------------------------------------------------------------------------------------

bool PatchSolver::isLargePair(const CPatch* p0, const CPatch* p1)
{
    return p0->getSize() >= MIN_LARGE_PATCH || p1->getSize() >= MIN_LARGE_PATCH;
}

CPatch* PatchSolver::chooseVictim(CPatch* p0, CPatch* p1, double sumArea)
{
    if (isLargePair(p0, p1) && !((p0->getArea() + p1->getArea()) / sumArea <= MAX_PAIR_SHARE))
        return nullptr;
    return p0->getSize() < p1->getSize() ? p0 : p1;
}

// Pairs of which one alone has a large share of the mesh stay in any case.
void PatchSolver::dropHugePairs(std::vector<RecordPair>& vPairs)
{
    std::vector<Label> vLarge;
    for (const auto& [pRecord0, pRecord1] : vPairs)
        for (const Label label : {pRecord0->label, pRecord1->label})
            if (isLargePart(label) && !isRemembered(mHugeSize, label) &&
                std::find(vLarge.begin(), vLarge.end(), label) == vLarge.end())
                vLarge.push_back(label);
    if (!vLarge.empty())
    {
        const Areas areas = measureAreas(vLarge);
        for (std::size_t i = 0; i < vLarge.size(); ++i)
            if (areas.vOfLabel[i] / areas.sum > CLEARLY_LARGE_SHARE)
                mHugeSize[vLarge[i]] = labels.getSize(vLarge[i]);
    }
    std::erase_if(vPairs,
                  [this](const RecordPair& pair) {
                      return isRemembered(mHugeSize, pair.first->label) ||
                             isRemembered(mHugeSize, pair.second->label);
                  });
}

PatchSolver::Areas PatchSolver::measureAreas(const std::vector<Label>& vLabels)
{
    Areas total{0.0, std::vector<double>(vLabels.size())};
    labels.flatten();
    const std::vector<CTriangle*>& vCT = pCMesh->getAllT();
    produceRangesInOrder<Areas>(
        vCT.size(), TRIANGLES_PER_PART,
        [&](Areas& part, std::size_t from, std::size_t to)
        {
            part = {0.0, std::vector<double>(vLabels.size())};
            for (std::size_t i = from; i < to; ++i)
            {
                const CTriangle& ct = *vCT[i];
                if (!ct.isAlive())
                    continue;
                const Point3& p0 = *ct.getVtx(pCMesh, 0);
                const double area =
                    crossProduct(*ct.getVtx(pCMesh, 1) - p0, *ct.getVtx(pCMesh, 2) - p0).length();
                part.sum += area;
                const auto it = std::find(vLabels.begin(), vLabels.end(), labels.look(ct.getNumber()).root);
                if (it != vLabels.end())
                    part.vOfLabel[static_cast<std::size_t>(it - vLabels.begin())] += area;
            }
        },
        [&](const Areas& part)
        {
            total.sum += part.sum;
            for (std::size_t i = 0; i < vLabels.size(); ++i)
                total.vOfLabel[i] += part.vOfLabel[i];
        });
    return total;
}

bool PatchSolver::isLargePart(Label label) const
{
    return labels.getSize(label) >= std::max(MIN_QUICK_SIZE, pCMesh->getNumAliveT() / QUICK_PART);
}

bool PatchSolver::isRemembered(const std::map<Label, std::uint32_t>& mSize, Label label) const
{
    const auto it = mSize.find(label);
    return it != mSize.end() && it->second == labels.getSize(label);
}

// The area of the mesh, or a part of it that is enough to see that no pair has a large share.
double PatchSolver::getEnoughArea(double maxPairArea) const
{
    double area = 0.0;
    for (const CTriangle* pCT : pCMesh->getAllT())
    {
        if (maxPairArea / area <= MAX_PAIR_SHARE)
            break;
        if (pCT->isAlive())
            area += pCT->getArea(pCMesh);
    }
    return area;
}

bool PatchSolver::solvePairs(const std::vector<RecordPair>& vAllPairs)
{
    std::vector<RecordPair> vPairs = vAllPairs;
    dropHugePairs(vPairs);
    double maxPairArea = 0.0;
    bool bNeedArea = false;
    for (const auto& [pRecord0, pRecord1] : vPairs)
    {
        const CPatch* p0 = getPatch(*pRecord0);
        const CPatch* p1 = getPatch(*pRecord1);
        if (!isLargePair(p0, p1))
            continue;
        bNeedArea = true;
        maxPairArea = std::max(maxPairArea, p0->getArea() + p1->getArea());
    }
    const double sumArea = bNeedArea ? getEnoughArea(maxPairArea) : 0.0;
    bool bDecided = false;
    for (const auto& [pRecord0, pRecord1] : vPairs)
    {
        CPatch* pVictim = chooseVictim(pRecord0->pPatch, pRecord1->pPatch, sumArea);
        if (pVictim == nullptr)
            continue;
        killPatch(pVictim);
        bDecided = true;
    }
    return bDecided;
}

// --- Closed patches ----------------------------------------------------------------------------------------

bool PatchSolver::solveClosedPatches(std::vector<Record>& vClosedPatches, bool bStrict)
{
    std::sort(vClosedPatches.begin(), vClosedPatches.end(),
              [this](const Record& a, const Record& b)
              {
                  const std::uint32_t sizeA = labels.getSize(a.label);
                  const std::uint32_t sizeB = labels.getSize(b.label);
                  return sizeA != sizeB ? sizeA < sizeB : a.label < b.label;
              });
    bool bSplit = false;
    for (Record& record : vClosedPatches)
    {
        if (isBubble(record))
            killPatch(getPatch(record));
        else if (canBeSplit(record) && !isThick(record) && splitPatch(getPatch(record), bStrict))
            bSplit = true;
    }
    return bSplit;
}

// All edges off the walls have degree 2, and kills may have brought walls there.
bool PatchSolver::isBubble(const Record& record) const
{
    return labels.getSize(record.label) < MAX_BUBBLE &&
           std::all_of(vSides.data() + record.firstSide, vSides.data() + record.endSide,
                       [](const Side& side) { return side.pCE->isInner(); });
}

// Whether the split finds a non-manifold edge with exactly two members to begin at.
bool PatchSolver::canBeSplit(const Record& record) const
{
    for (std::size_t i = record.firstSide; i < record.endSide;)
    {
        const std::size_t first = i;
        while (i < record.endSide && vSides[i].pCE == vSides[first].pCE)
            ++i;
        if (i - first == 2 && vSides[first].pCE->isNonManifold())
            return true;
    }
    return false;
}

bool PatchSolver::isThick(const Record& record)
{
    if (!isLargePart(record.label))
        return false;
    if (isRemembered(mThickSize, record.label))
        return true;
    if (!(computeThickness(record.label) > CLEARLY_THICK))
        return false;
    mThickSize[record.label] = labels.getSize(record.label);
    return true;
}

// As CPatch measures it, volume over half the area in spacings, but from one walk in memory order and with
// nothing flipped. 0.0 for a twisted patch.
double PatchSolver::computeThickness(Label label)
{
    if (std::any_of(vTwisted.begin(), vTwisted.end(),
                    [&](std::uint32_t number) { return labels.findRoot(number) == label; }))
        return 0.0;
    const Point3 ref = *pCMesh->getAllT()[label]->getVtx(pCMesh, 0);
    Solid total;
    labels.flatten();
    const std::vector<CTriangle*>& vCT = pCMesh->getAllT();
    produceRangesInOrder<Solid>(
        vCT.size(), TRIANGLES_PER_PART,
        [&](Solid& part, std::size_t from, std::size_t to)
        {
            part = {};
            for (std::size_t i = from; i < to; ++i)
            {
                const CTriangle& ct = *vCT[i];
                const TriangleUnion::Found found = labels.look(ct.getNumber());
                if (!ct.isAlive() || found.root != label)
                    continue;
                const Point3& p0 = *ct.getVtx(pCMesh, 0);
                const Vector3 cross = crossProduct(*ct.getVtx(pCMesh, 1) - p0, *ct.getVtx(pCMesh, 2) - p0);
                const double height = cross * (p0 - ref);
                part.volume += found.bTurned ? -height : height;
                part.area += cross.length();
                for (const u64 ccd : {ct.getC0(), ct.getC1(), ct.getC2()})
                    raiseTo(part.topmostCCD, ccd);
            }
        },
        [&total](const Solid& part)
        {
            total.volume += part.volume;
            total.area += part.area;
            raiseTo(total.topmostCCD, part.topmostCCD);
        });
    std::vector<CTriangle*> vIncT;
    pCMesh->getIncT(total.topmostCCD, vIncT);
    double up = 0.0;
    for (const CTriangle* pCT : vIncT)
    {
        const TriangleUnion::Found found = labels.find(pCT->getNumber());
        if (found.root != label)
            continue;
        const double z = getLatticeNormal(*pCalc, *pCT).z();
        up += found.bTurned ? -z : z;
    }
    return (up < 0.0 ? -total.volume : total.volume) / 6.0 / (total.area / 4.0) / pCMesh->getAvgSpacing();
}

// --- Changes -----------------------------------------------------------------------------------------------

void PatchSolver::killPatch(CPatch* pPatch)
{
    const std::vector<CTriangle*> vMembers = pPatch->getMembers();
    addToReport(&CallReport::numPiecesDropped);
    pPatch->kill();
    for (const CTriangle* pCT : vMembers)
        noteDead(pCT);
}

bool PatchSolver::splitPatch(CPatch* pPatch, bool bStrict)
{
    const bool bSplit = pPatch->splitClosedPatchKill(bStrict);
    for (const CTriangle* pCT : pPatch->getMembers())
        if (!pCT->isAlive())
            noteDead(pCT);
    vTurnedMembers.push_back(pPatch->getMembers()); // in any case
    return bSplit;
}

void PatchSolver::noteDead(const CTriangle* pCT)
{
    for (int i = 0; i < 3; ++i)
        vTouchedCE.push_back(pCT->getCEdge(i));
}

void PatchSolver::joinAcross(const CEdge* pCE)
{
    const Joint joint = getJoint(*pCE);
    if (!labels.unite(joint))
        vTwisted.push_back(joint.first);
}

// Brings labels and walls up to date, so that they hold for the mesh without the dead.
void PatchSolver::applyChanges()
{
    for (const std::vector<CTriangle*>& vMembers : vTurnedMembers)
    {
        for (const CTriangle* pCT : vMembers)
            labels.reset(pCT->getNumber());
        for (const CTriangle* pCT : vMembers)
            for (int i = 0; pCT->isAlive() && i < 3; ++i)
                if (pCT->getCEdge(i)->isInner())
                    joinAcross(pCT->getCEdge(i));
    }
    for (CEdge* pCE : vTouchedCE)
    {
        if (pCE->isInner())
            joinAcross(pCE);
        else if (!pCE->isOrphan() && wallCE.insert(pCE->getNumber()))
            vWallCE.push_back(pCE);
    }
    vTurnedMembers.clear();
    vTouchedCE.clear();
    vPatches.clear();
}

} // namespace TARN_ZEF
