#include "occupancy/SheetGaps.h"

#include <algorithm>
#include <bit>

#include "lattice/CellIndex.h"
#include "lattice/CubeWalk.h"
#include "occupancy/RemoveDecider.h"
#include "parallel/parallelFor.h"
#include "parallel/sortMT2.h"

namespace TARN_ZEF
{
namespace
{
// Active cubes around a cell from which on it is looked at.
constexpr int MIN_ACTIVE = 6;
constexpr int ALL_ACTIVE = 8;
constexpr std::size_t MIN_CHUNK = 5000;

// Collects what f(cube, vResult) appends for each cube of an index, in ascending order of the cubes.
template <typename F>
std::vector<CCD> collectFromCubes(const CellIndex& index, F f)
{
    // Small parts, so that their sizes say little about the memory at the end.
    constexpr std::size_t blocksPerPart = 2000;
    const CubeWalk model(index);
    const std::size_t numBlocks = model.getNumBlocks();
    std::vector<std::vector<CCD>> vParts((numBlocks + blocksPerPart - 1) / blocksPerPart);
    parallelFor(vParts.size(), 1,
                [&](std::size_t from, std::size_t to)
                {
                    CubeWalk walk(model);
                    for (std::size_t i = from; i < to; ++i)
                        walk.walk(i * blocksPerPart, std::min((i + 1) * blocksPerPart, numBlocks),
                                  [&, i](const CubeWalk::Cube& cube) { f(cube, vParts[i]); });
                });
    std::size_t num = 0;
    for (const std::vector<CCD>& vPart : vParts)
        num += vPart.size();
    std::vector<CCD> vResult;
    vResult.reserve(num);
    for (std::vector<CCD>& vPart : vParts)
    {
        vResult.insert(vResult.end(), vPart.begin(), vPart.end());
        std::vector<CCD>().swap(vPart);
    }
    return vResult;
}

void append(std::vector<CCD>& v, const std::vector<CCD>& vMore)
{
    v.insert(v.end(), vMore.begin(), vMore.end());
}
} // namespace

SheetGaps::SheetGaps(std::vector<CCD> vOrgCCD, const Calc* pCalc_)
    : pCalc(pCalc_)
{
    if (vOrgCCD.empty())
        return;
    const std::vector<CCD> vCandidates = findCandidates(CellIndex(vOrgCCD));
    const auto numOrg = static_cast<std::ptrdiff_t>(vOrgCCD.size());
    append(vOrgCCD, vFilteredCandidatesCard8);
    std::inplace_merge(vOrgCCD.begin(), vOrgCCD.begin() + numOrg, vOrgCCD.end());
    takeNeeded(CellIndex(vOrgCCD), vCandidates);
}

// Sets the enclosed cells; the result are those with six or seven active cubes, ascending.
std::vector<CCD> SheetGaps::findCandidates(const CellIndex& occupied)
{
    const std::vector<CCD> vActive = collectFromCubes(
        occupied, [](const CubeWalk::Cube& cube, std::vector<CCD>& v) { v.push_back(cube.getBase()); });
    // The eight cubes around a cell are named by the cells of a cube, the one that the cell is lowest in.
    std::vector<u64> vFlagged = collectFromCubes(CellIndex(vActive),
                                                 [&](const CubeWalk::Cube& cube, std::vector<u64>& v)
                                                 {
                                                     const int numActive =
                                                         std::popcount(static_cast<unsigned>(cube.getCfg()));
                                                     if (numActive < MIN_ACTIVE)
                                                         return;
                                                     CCD ccd = cube.getBase();
                                                     ccd = pCalc->decSparse(ccd, AXTRIBIT_X);
                                                     ccd = pCalc->decSparse(ccd, AXTRIBIT_Y);
                                                     ccd = pCalc->decSparse(ccd, AXTRIBIT_Z);
                                                     if (!occupied.contains(ccd))
                                                         v.push_back(ccd << 1 | u64{numActive == ALL_ACTIVE});
                                                 });
    sortMT(vFlagged.begin(), vFlagged.end());
    std::vector<CCD> vAny;
    for (const u64 flagged : vFlagged)
        ((flagged & 1) != 0 ? vFilteredCandidatesCard8 : vAny).push_back(flagged >> 1);
    return vAny;
}

void SheetGaps::takeNeeded(const CellIndex& occupied, const std::vector<CCD>& vCandidates)
{
    // No cell is doomed here, so the decisions do not depend on each other.
    std::vector<char> vNeeded(vCandidates.size());
    parallelFor(vCandidates.size(), MIN_CHUNK,
                [&](std::size_t from, std::size_t to)
                {
                    RemoveDecider decider(&occupied, pCalc);
                    for (std::size_t i = from; i < to; ++i)
                        vNeeded[i] = decider.canRemove(vCandidates[i]) ? 0 : 1;
                });
    for (std::size_t i = 0; i < vCandidates.size(); ++i)
        if (vNeeded[i] != 0)
            vTake6a7.push_back(vCandidates[i]);
}

} // namespace TARN_ZEF
