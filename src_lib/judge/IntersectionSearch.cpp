#include "judge/IntersectionSearch.h"

#include "parallel/parallelFor.h"
#include "parallel/produceInOrder.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <utility>

namespace TARN_ZEF
{
namespace
{
// Some hundred microseconds of work.
constexpr std::size_t BLOCKS_PER_PART = 64;

using FloatPlace = std::array<float, 3>;

std::vector<FloatPlace> mapPlaces(const CornerNumbering& numbering, const UnitFrame& frame)
{
    std::vector<FloatPlace> vMapped(numbering.vPlaces.size());
    const auto map = [&](double x, int axis)
    {
        const double unscaled = numbering.scaling == 0 ? x : std::ldexp(x, -numbering.scaling);
        return static_cast<float>(frame.map(unscaled, axis));
    };
    parallelFor(vMapped.size(), 10'000,
                [&](std::size_t from, std::size_t to)
                {
                    for (std::size_t i = from; i < to; ++i)
                    {
                        const Place& p = numbering.vPlaces[i];
                        vMapped[i] = {map(p[0], 0), map(p[1], 1), map(p[2], 2)};
                    }
                });
    return vMapped;
}
} // namespace

IntersectionSearch::IntersectionSearch(const CornerNumbering& numbering_, const UnitFrame& frame,
                                       std::vector<CornerNumbers> vCornerNumbers_,
                                       std::vector<std::uint32_t> vTriangles_)
    : numbering(numbering_)
    , signs(numbering_.largest)
    , vCornerNumbers(std::move(vCornerNumbers_))
    , vTriangles(std::move(vTriangles_))
    , tree(makeBoxes(frame))
{
}

void IntersectionSearch::run(std::size_t maxPlaces, std::uint64_t maxPairs)
{
    found.lowest = LowestPairs(maxPlaces);
    const std::size_t numParts = (tree.getNumBlocks() + BLOCKS_PER_PART - 1) / BLOCKS_PER_PART;
    std::vector<Found> vParts(8 * static_cast<std::size_t>(getNumThreads()));
    std::atomic<bool> bOver = false; // tells workers that nobody asks for later parts
    produceInOrder(
        vParts, numParts,
        [&](Found& part, std::size_t i)
        {
            part = Found();
            part.lowest = LowestPairs(maxPlaces);
            if (bOver)
                return;
            const std::size_t from = i * BLOCKS_PER_PART;
            searchBlocks(from, std::min(from + BLOCKS_PER_PART, tree.getNumBlocks()), maxPairs, part);
        },
        [&](const Found& part)
        {
            if (bOver)
                return;
            found.numLookedAt += part.numLookedAt;
            found.numIntersecting += part.numIntersecting;
            found.lowest.append(part.lowest);
            bOver = found.numLookedAt >= maxPairs;
        });
    bComplete = !bOver;
}

std::vector<FloatBox> IntersectionSearch::makeBoxes(const UnitFrame& frame) const
{
    const std::vector<FloatPlace> vMapped = mapPlaces(numbering, frame);
    std::vector<FloatBox> vBoxes(vCornerNumbers.size());
    parallelFor(vBoxes.size(), 10'000,
                [&](std::size_t from, std::size_t to)
                {
                    for (std::size_t i = from; i < to; ++i)
                    {
                        const CornerNumbers& numbers = vCornerNumbers[i];
                        vBoxes[i] = {vMapped[numbers[0]], vMapped[numbers[0]]};
                        vBoxes[i].include({vMapped[numbers[1]], vMapped[numbers[1]]});
                        vBoxes[i].include({vMapped[numbers[2]], vMapped[numbers[2]]});
                    }
                });
    return vBoxes;
}

void IntersectionSearch::searchBlocks(std::size_t from, std::size_t to, std::uint64_t maxPairs,
                                      Found& part) const
{
    const auto look = [&](std::size_t i, std::size_t k)
    {
        lookAt(i, k, part);
        return part.numLookedAt < maxPairs;
    };
    for (std::size_t block = from; block < to; ++block)
        if (!tree.visitPairs(block, look))
            return;
}

void IntersectionSearch::lookAt(std::size_t i, std::size_t k, Found& part) const
{
    ++part.numLookedAt;
    const TrianglePair pair(signs, numbering.vPlaces.data(), vCornerNumbers[i], vCornerNumbers[k]);
    if (pair.getNumCommon() == 3 || !pair.isIntersecting())
        return;
    ++part.numIntersecting;
    part.lowest.add(std::minmax(vTriangles[i], vTriangles[k]));
}

} // namespace TARN_ZEF
