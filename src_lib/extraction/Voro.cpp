#include "extraction/Voro.h"

#include "cmesh/CMesh.h"
#include "core/Progress.h"
#include "core/cancel.h"
#include "extraction/ExtractionRenewal.h"
#include "lattice/CubeWalk.h"
#include "occupancy/RemoveDecider.h"
#include "parallel/parallelFor.h"
#include "parallel/produceInOrder.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace TARN_ZEF
{
namespace
{
// Of the extraction: a part is some 6,000 triangles, few enough to stay in the cache.
const std::size_t BLOCKS_PER_PART = 64;
const std::size_t NUM_PARTS_AHEAD = 4;

// With more changed cells a whole extraction is about as fast.
const std::size_t MIN_CELLS_PER_CHANGED = 50;
const std::size_t MIN_CUBES_PER_JOB = 1 << 11; // of a renewed one

// The eight rotations of case 27, in the order in which they are pruned.
const int PRUNE_CONFIGS[] = {27, 39, 78, 114, 141, 177, 216, 228};

bool hasLooseEdge(const CTriangle* pCT)
{
    for (int i = 0; i < 3; ++i)
        if (pCT->getCEdge(i)->getDegree() < 2)
            return true;
    return false;
}

void sortUnique(std::vector<u64>& v)
{
    std::sort(v.begin(), v.end());
    v.erase(std::unique(v.begin(), v.end()), v.end());
}

// Cells around this one do not all have a cube below them.
bool isAtLowRim(u64 ccd)
{
    return std::min({compactBits3(ccd >> 2), compactBits3(ccd >> 1), compactBits3(ccd)}) < 2;
}

// Whether a triangle with the third corner stands on the edge, which must have the two others as ends.
bool hasThird(const CEdge* pCE, u64 third)
{
    return std::any_of(pCE->vCT.begin(), pCE->vCT.end(),
                       [third](const CTriangle* pCT) { return pCT->hasCorner(third); });
}
} // namespace

Voro::Voro(Calc* pCalc_, BundleMap* pCCDBundle_, TriMode triMode_)
    : pCalc(pCalc_)
    , pCCDBundle(pCCDBundle_)
    , casx(triMode_, false)
{
    vCCD.reserve(pCCDBundle->size());
    pCCDBundle->forEach([this](u64 ccd, Bundle*) { vCCD.push_back(ccd); });
    buildIndex();
}

Voro::~Voro()
{
    if (bOwnsMesh)
        delete pCMesh;
}

CMesh* Voro::takeMesh() noexcept
{
    bOwnsMesh = false;
    return pCMesh;
}

void Voro::buildIndex()
{
    // The cubes of a cell reach one step up on each axis.
    const u64 top = pCalc->numberToSparse(pCalc->getNumCells() - 1, AXTRIBIT_Z);
    for (const u64 ccd : vCCD)
        ASSEX_TEXT((~ccd & top << 2) != 0 && (~ccd & top << 1) != 0 && (~ccd & top) != 0, "false");
    pIndex = std::make_unique<CellIndex>(vCCD);
}

void Voro::fatExtractTriangles()
{
    if (pCMesh == nullptr)
    {
        pCMesh = new CMesh(pCalc, pCCDBundle);
        bOwnsMesh = true;
    }
    else
        pCMesh->clearAll();

    AmbiguousLists vAmbiguousT;
    extract(vAmbiguousT);
    const std::size_t numCubeT = pCMesh->getNumAliveT();
    Progress* pProgress = getRootProgress()->getChildProgressSetTodo("VO_amb", 2);
    solveAmbiguousT(vAmbiguousT);
    pProgress->increment();
    const int numKilled = pCMesh->killDuplicates();
    ASSEX(numKilled == 0); // each triangle was looked for before it was made
    pProgress->increment();
    pProgress->setFinished(true);
    pCMesh->markExtracted(numCubeT);
}

// What the cubes of some blocks yield.
struct Voro::Part
{
    CubeWalk walk;
    u64 numCubes = 0;
    std::vector<Found> vFound;
    std::vector<Ambiguous> vAmbiguous;
};

void Voro::readTable(const CubeWalk::Cube& cube, Part& part) const
{
    ++part.numCubes;
    const Casx::TutRow& row = casx.getTutTriangles(cube.getCfg());
    if (row.numTriangles == 0)
        return;
    if (Casx::isFlat(cube.getCfg()))
    {
        ASSEX_TEXT(row.numTriangles == 2, "vTriVCD.size()==6");
        Ambiguous entry{{}, {cube.getBase(), cube.getCfg()}};
        for (int i = 0; i < 6; ++i)
            entry.aRank[i] = cube.getRank(row.corners[i]);
        part.vAmbiguous.push_back(entry);
        return;
    }
    for (int t = 0; t < row.numTriangles; ++t)
        part.vFound.push_back({{cube.getRank(row.corners[3 * t]), cube.getRank(row.corners[3 * t + 1]),
                                cube.getRank(row.corners[3 * t + 2])},
                               {cube.getBase(), cube.getCfg()}});
}

// Cubes are read on the workers; the mesh grows on this thread, in order of the cubes.
void Voro::extract(AmbiguousLists& vAmbiguousT)
{
    pCMesh->prepareCorners(vCCD);
    Progress* pProgress = getRootProgress()->getChildProgressSetTodo("VO_ftx", 8 * vCCD.size());
    u64 numVisited = 0;
    std::vector<Part> vParts(NUM_PARTS_AHEAD, Part{CubeWalk(*pIndex), 0, {}, {}});
    const std::size_t numBlocks = vParts.front().walk.getNumBlocks();
    produceInOrder(
        vParts, (numBlocks + BLOCKS_PER_PART - 1) / BLOCKS_PER_PART,
        [&](Part& part, std::size_t i)
        {
            part.numCubes = 0;
            part.vFound.clear();
            part.vAmbiguous.clear();
            part.walk.walk(i * BLOCKS_PER_PART, std::min((i + 1) * BLOCKS_PER_PART, numBlocks),
                           [&](const CubeWalk::Cube& cube) { readTable(cube, part); });
        },
        [&](Part& part)
        {
            for (numVisited += part.numCubes; numVisited >= pProgress->getReportEvery();
                 numVisited -= pProgress->getReportEvery())
                pProgress->increment(pProgress->getReportEvery());
            for (const Found& found : part.vFound)
                createUnlessThere(pCMesh->getPreparedCorner(found.aRank[0]),
                                  pCMesh->getPreparedCorner(found.aRank[1]),
                                  pCMesh->getPreparedCorner(found.aRank[2]), found.origin);
            if (!part.vAmbiguous.empty())
                vAmbiguousT.push_back(std::exchange(part.vAmbiguous, {}));
        });
    pProgress->setFinished(true);
}

void Voro::createUnlessThere(CVertex* pA, CVertex* pB, CVertex* pC, const Origin& origin)
{
    const CEdge* pCE = pCMesh->getCE(pA, pB);
    if (pCE == nullptr || !hasThird(pCE, pC->ccd))
        pCMesh->createT(pA, pB, pC, origin.baseCCD, origin.cfg);
}

void Voro::solveAmbiguousT(const AmbiguousLists& vAmbiguousT)
{
    CancelStride cancel;
    for (const std::vector<Ambiguous>& vPart : vAmbiguousT)
        for (const Ambiguous& entry : vPart)
        {
            cancel.step();
            Square square;
            for (std::size_t i = 0; i < square.size(); ++i)
                square[i] = pCMesh->getPreparedCorner(entry.aRank[i]);
            solveSquare(square, entry.origin);
        }
}

// The mesh made by the other cubes decides on the diagonal; an earlier square binds a later one.
void Voro::solveSquare(const Square& square, const Origin& origin)
{
    auto [p0, p1, p2, pA, pB, pC] = square;
    CVertex* p3 = nullptr; // the corner that the first triangle lacks
    for (CVertex* p : {pC, pB, pA})
        if (p != p0 && p != p1 && p != p2)
            p3 = p;
    ASSEX(p3 != nullptr);

    // Afterwards 0-3 is the diagonal that the table did not choose, 1-2 the one that it chose.
    if (pCalc->getNeigType(p3->ccd, p0->ccd) != NT_EDGE)
        std::swap(p0, p1);
    if (pCalc->getNeigType(p3->ccd, p0->ccd) != NT_EDGE)
        std::swap(p0, p2);
    ASSEX(pCalc->getNeigType(p3->ccd, p0->ccd) == NT_EDGE);

    if (pCMesh->getCE(p1, p2) != nullptr)
    {
        createUnlessThere(p1, p2, p0, origin);
        createUnlessThere(p2, p1, p3, origin);
    }
    else
    {
        createUnlessThere(p0, p1, p3, origin);
        createUnlessThere(p0, p3, p2, origin);
    }
}

void Voro::thinNewExtractTriangles()
{
    if (bOwnsMesh)
        delete pCMesh;
    pCMesh = new CMesh(pCalc, pCCDBundle);
    bOwnsMesh = true;
    AmbiguousLists vAmbiguousT;
    extract(vAmbiguousT);
    solveAmbiguousT(vAmbiguousT);
    pruneCase27();
}

void Voro::pruneCase27()
{
    std::vector<std::vector<CTriangle*>> vByCfg(256);
    for (CTriangle* pCT : pCMesh->getAllT())
    {
        ASSEX(pCT->getCfg() < 256);
        if (pCT->isAlive())
            vByCfg[static_cast<std::size_t>(std::max(pCT->getCfg(), 0))].push_back(pCT);
    }
    for (const int cfg : PRUNE_CONFIGS)
        for (CTriangle* pCT : vByCfg[static_cast<std::size_t>(cfg)])
            if (hasLooseEdge(pCT))
                pCT->kill(pCMesh);
}

// --- Border fix --------------------------------------------------------------------------------------------

CMesh* Voro::borderFix(const std::vector<u64>& vGeneratingVCDs)
{
    std::vector<u64> vExtraCCD;
    std::vector<u64> vRemoveCCD;
    createExtraCCDs_borderFix(vGeneratingVCDs, vExtraCCD, vRemoveCCD);

    std::vector<u64> vUnion;
    vUnion.reserve(vCCD.size() + vExtraCCD.size());
    std::set_union(vCCD.begin(), vCCD.end(), vExtraCCD.begin(), vExtraCCD.end(), std::back_inserter(vUnion));
    std::swap(vCCD, vUnion);
    const std::vector<u64>& vOldCCD = vUnion;
    buildIndex();
    if (removeCells(vRemoveCCD, vExtraCCD))
        buildIndex();
    extractAfterChange(vOldCCD);

    // Cells that the table left without a bundle before may be in use now, extra or not.
    std::vector<u64> vWithout;
    pCMesh->forEachVertex(
        [&](const CVertex& vertex)
        {
            if (vertex.pFirstT != nullptr && vertex.pBundle == nullptr)
                vWithout.push_back(vertex.ccd);
        });
    vWithout.insert(vWithout.end(), vExtraCCD.begin(), vExtraCCD.end());
    sortUnique(vWithout);
    for (const u64 ccd : vWithout)
        pCMesh->addBundle(ccd);
    pCMesh->removeUnusableBundles();
    pCMesh->averageBundles();
    return pCMesh;
}

void Voro::extractAfterChange(const std::vector<u64>& vOldCCD)
{
    std::vector<u64> vChangedCCD;
    std::set_symmetric_difference(vOldCCD.begin(), vOldCCD.end(), vCCD.begin(), vCCD.end(),
                                  std::back_inserter(vChangedCCD));
    const bool bFew = vChangedCCD.size() * MIN_CELLS_PER_CHANGED < vCCD.size();
    const bool bInside = std::none_of(vChangedCCD.begin(), vChangedCCD.end(), isAtLowRim);
    if (bFew && bInside && pCMesh->getExtraction().isKnown())
        renew(getCubesAround(vChangedCCD));
    else
        fatExtractTriangles();
}

std::vector<u64> Voro::getCubesAround(const std::vector<u64>& vCells) const
{
    const auto isOfCell = [](int step) { return step == 0 || step == 1; };
    std::vector<u64> vBases;
    vBases.reserve(32 * vCells.size());
    for (const u64 ccd : vCells)
    {
        u64 x, y, z;
        pCalc->getXYZ(ccd, x, y, z);
        for (int dx = -1; dx <= 2; ++dx)
            for (int dy = -1; dy <= 2; ++dy)
                for (int dz = -1; dz <= 2; ++dz)
                {
                    const u64 baseX = x + static_cast<u64>(dx);
                    const u64 baseY = y + static_cast<u64>(dy);
                    const u64 baseZ = z + static_cast<u64>(dz);
                    const bool bAround = isOfCell(dx) + isOfCell(dy) + isOfCell(dz) >= 2;
                    if (bAround && std::max({baseX, baseY, baseZ}) < pCalc->getNumCells())
                        vBases.push_back(spreadBits3(baseX) << 2 | spreadBits3(baseY) << 1 |
                                         spreadBits3(baseZ));
                }
    }
    sortUnique(vBases);
    return vBases;
}

void Voro::renew(std::vector<u64> vBases)
{
    Progress* pProgress = getRootProgress()->getChildProgressSetTodo("VO_ftx", 2);
    ExtractionRenewal renewal(pCMesh, std::move(vBases));
    pProgress->increment();

    const std::size_t numKeptT = pCMesh->getAllT().size();
    const std::vector<u64>& vAllBases = renewal.getBases();
    std::vector<int> vCfg(vAllBases.size());
    parallelFor(vAllBases.size(), MIN_CUBES_PER_JOB,
                [&](std::size_t from, std::size_t to)
                {
                    for (std::size_t i = from; i < to; ++i)
                        vCfg[i] = getConfig(vAllBases[i]);
                });
    std::vector<Origin> vFlat;
    for (std::size_t cube = 0; cube < vAllBases.size(); ++cube)
    {
        const u64 base = vAllBases[cube];
        const Origin origin{base, vCfg[cube]};
        const Casx::TutRow& row = casx.getTutTriangles(origin.cfg);
        if (row.numTriangles == 0)
            continue;
        if (Casx::isFlat(origin.cfg))
            vFlat.push_back(origin);
        else
            for (int i = 0; i < 3 * row.numTriangles; i += 3)
                createUnlessThere(getCorner(base, row.corners[i]), getCorner(base, row.corners[i + 1]),
                                  getCorner(base, row.corners[i + 2]), origin);
    }
    const std::size_t numNewCubeT = pCMesh->getAllT().size() - numKeptT;
    pProgress->increment();
    pProgress->setFinished(true);

    pProgress = getRootProgress()->getChildProgressSetTodo("VO_amb", 2);
    for (const Origin& origin : vFlat)
    {
        const Casx::TutRow& row = casx.getTutTriangles(origin.cfg);
        Square square;
        for (std::size_t i = 0; i < square.size(); ++i)
            square[i] = getCorner(origin.baseCCD, row.corners[i]);
        solveSquare(square, origin);
    }
    pProgress->increment();
    renewal.finish(numNewCubeT);
    pProgress->increment();
    pProgress->setFinished(true);
}

CVertex* Voro::getCorner(u64 baseCCD, int corner) const
{
    CCD array[8];
    array[5] = baseCCD;
    pCalc->completeArray8Down(array);
    return pCMesh->getCorner(array[corner]);
}

int Voro::getConfig(u64 baseCCD) const
{
    CCD array[8];
    array[5] = baseCCD;
    pCalc->completeArray8Down(array);
    int cfg = 0;
    for (int i = 0; i < 8; ++i)
        cfg |= static_cast<int>(pIndex->contains(array[i])) << i;
    return cfg;
}

void Voro::createExtraCCDs_borderFix(const std::vector<u64>& vGeneratingVCDs, std::vector<u64>& vExtraCCD,
                                     std::vector<u64>& vRemoveCCD) const
{
    for (const u64 vcd : vGeneratingVCDs)
    {
        const int cfg = getConfig(vcd);
        ASSEX_TEXT(cfg != 0, "q_it!=vCCD2CB.end()");
        const int numMembers = std::popcount(static_cast<unsigned int>(cfg));
        if (numMembers < 3 || numMembers > 7)
            continue;
        const int extra = Casx::getExtraMask(cfg);
        const int remove = extra > 0 ? Casx::getRemoveMask(cfg) : 0;
        CCD array[8];
        array[5] = vcd;
        pCalc->completeArray8Down(array);
        for (int i = 0; i < 8; ++i)
        {
            if ((extra >> i & 1) != 0)
                vExtraCCD.push_back(array[i]);
            if ((remove >> i & 1) != 0)
                vRemoveCCD.push_back(array[i]);
        }
    }
    sortUnique(vExtraCCD);
    sortUnique(vRemoveCCD);
}

// A cell that is extra is never removed; each doomed cell counts for the decisions after it. Returns whether
// any was.
bool Voro::removeCells(const std::vector<u64>& vRemoveCCD, const std::vector<u64>& vExtraCCD)
{
    RemoveDecider decider(pIndex.get(), pCalc);
    std::vector<u64> vDoomed; // ascending, as vRemoveCCD
    for (const u64 ccd : vRemoveCCD)
        if (!std::binary_search(vExtraCCD.begin(), vExtraCCD.end(), ccd) && decider.canRemove(ccd))
        {
            decider.addDoomed(ccd);
            vDoomed.push_back(ccd);
        }
    auto itDoomed = vDoomed.begin();
    const std::size_t numErased = std::erase_if(vCCD,
                                                [&](u64 ccd)
                                                {
                                                    while (itDoomed != vDoomed.end() && *itDoomed < ccd)
                                                        ++itDoomed;
                                                    return itDoomed != vDoomed.end() && *itDoomed == ccd;
                                                });
    return numErased > 0;
}

} // namespace TARN_ZEF
