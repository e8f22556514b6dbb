#include "judge/ShapeJudge.h"

#include "judge/IntersectionSearch.h"
#include "parallel/parallelFor.h"
#include "parallel/produceInOrder.h"
#include "parallel/sortMT2.h"

#include <algorithm>

namespace TARN_ZEF
{
namespace
{
// Stands above all corner numbers.
constexpr std::uint32_t LEFT_OUT = ~std::uint32_t{0};
} // namespace

ShapeJudge::ShapeJudge(const JudgedMesh& mesh_, const CornerNumbering& numbering_)
    : mesh(mesh_)
    , numbering(numbering_)
    , vShapes(mesh_.getNumTriangles(), Shape::NORMAL)
{
}

void ShapeJudge::run(const UnitFrame& frame, const CheckOptions& options, MeshCheck& check, FaultList& faults)
{
    findShapes(options.maxPlaces, check, faults);
    sortTriangles();
    findDuplicates(options.maxPlaces, check, faults);
    if (options.bFindIntersections)
        findIntersections(frame, options, check, faults);
}

CornerNumbers ShapeJudge::numbersOf(std::size_t triangle) const
{
    const int* pCorners = &mesh.getCorners()[3 * triangle];
    const auto numberOf = [&](int corner) { return numbering.vNumbers[static_cast<std::size_t>(corner)]; };
    return {numberOf(pCorners[0]), numberOf(pCorners[1]), numberOf(pCorners[2])};
}

ShapeJudge::Shape ShapeJudge::shapeOf(const ExactSigns& signs, std::size_t triangle) const
{
    const CornerNumbers numbers = numbersOf(triangle);
    for (const std::uint32_t number : numbers)
        if (!numbering.isFinite(number))
            return Shape::NOT_FINITE;
    const Place* pPlaces = numbering.vPlaces.data();
    const int axis = signs.findViewAxis(pPlaces[numbers[0]], pPlaces[numbers[1]], pPlaces[numbers[2]]);
    return axis < 0 ? Shape::FLAT : Shape::NORMAL;
}

void ShapeJudge::findShapes(std::size_t maxPlaces, MeshCheck& check, FaultList& faults)
{
    struct Part
    {
        std::size_t numFlat = 0;
        std::size_t numNotFinite = 0;
        FaultList faults;
    };
    constexpr std::size_t perPart = 1 << 14;
    const ExactSigns signs(numbering.largest);
    produceRangesInOrder<Part>(
        vShapes.size(), perPart,
        [&](Part& part, std::size_t from, std::size_t to)
        {
            part = {0, 0, FaultList(maxPlaces)};
            for (std::size_t t = from; t < to; ++t)
            {
                vShapes[t] = shapeOf(signs, t);
                if (vShapes[t] == Shape::NORMAL)
                    continue;
                const bool bFlat = vShapes[t] == Shape::FLAT;
                ++(bFlat ? part.numFlat : part.numNotFinite);
                part.faults.add({bFlat ? MeshFaultKind::FLAT : MeshFaultKind::NOT_FINITE, static_cast<int>(t),
                                 -1, mesh.getCentre(t)});
            }
        },
        [&](const Part& part)
        {
            check.numFlat += part.numFlat;
            check.numNotFinite += part.numNotFinite;
            faults.append(part.faults);
        });
}

void ShapeJudge::sortTriangles()
{
    vSorted.resize(vShapes.size());
    parallelFor(vShapes.size(), 10'000,
                [this](std::size_t from, std::size_t to)
                {
                    for (std::size_t t = from; t < to; ++t)
                    {
                        const CornerNumbers numbers = numbersOf(t);
                        const std::uint32_t lowest = std::min({numbers[0], numbers[1], numbers[2]});
                        vSorted[t] = {vShapes[t] == Shape::NOT_FINITE ? LEFT_OUT : lowest,
                                      static_cast<std::uint32_t>(t)};
                    }
                });
    sortByFirstMT(vSorted.begin(), vSorted.end());
    while (!vSorted.empty() && vSorted.back().first == LEFT_OUT)
        vSorted.pop_back();
}

void ShapeJudge::findDuplicates(std::size_t maxPlaces, MeshCheck& check, FaultList& faults)
{
    LowestPairs lowest(maxPlaces);
    const auto isFirst = [this](std::size_t i) { return i == 0 || vSorted[i - 1].first != vSorted[i].first; };
    constexpr std::size_t perPart = 1 << 14;
    // A part has the corners whose first triangle is in it.
    produceRangesInOrder<Duplicates>(
        vSorted.size(), perPart,
        [&](Duplicates& part, std::size_t from, std::size_t to)
        {
            part.num = 0;
            part.lowest = LowestPairs(maxPlaces);
            while (from < to && !isFirst(from))
                ++from;
            while (from < to)
            {
                std::size_t end = from + 1;
                while (end < vSorted.size() && !isFirst(end))
                    ++end;
                sortAtCorner(from, end, part);
                from = end;
            }
        },
        [&](const Duplicates& part)
        {
            check.numDuplicates += part.num;
            lowest.append(part.lowest);
        });
    for (const auto& [triangle, earlier] : lowest.getSorted())
        faults.add({MeshFaultKind::DUPLICATE, static_cast<int>(triangle), static_cast<int>(earlier),
                    mesh.getCentre(triangle)});
}

void ShapeJudge::sortAtCorner(std::size_t from, std::size_t end, Duplicates& part)
{
    part.vOfCorner.clear();
    for (std::size_t i = from; i < end; ++i)
    {
        CornerNumbers numbers = numbersOf(vSorted[i].second);
        std::sort(numbers.begin(), numbers.end());
        part.vOfCorner.emplace_back(numbers, vSorted[i].second);
    }
    std::sort(part.vOfCorner.begin(), part.vOfCorner.end());
    std::size_t first = 0; // of those with equal corners
    for (std::size_t i = 0; i < part.vOfCorner.size(); ++i)
    {
        const auto& [numbers, triangle] = part.vOfCorner[i];
        vSorted[from + i].second = triangle;
        if (numbers != part.vOfCorner[first].first)
            first = i;
        if (i == first)
            continue;
        ++part.num;
        part.lowest.add({triangle, part.vOfCorner[first].second});
    }
}

void ShapeJudge::findIntersections(const UnitFrame& frame, const CheckOptions& options, MeshCheck& check,
                                   FaultList& faults)
{
    std::vector<CornerNumbers> vNumbers;
    std::vector<std::uint32_t> vTriangles;
    vNumbers.reserve(vSorted.size());
    vTriangles.reserve(vSorted.size());
    for (const auto& [lowest, triangle] : vSorted)
        if (vShapes[triangle] == Shape::NORMAL)
        {
            vNumbers.push_back(numbersOf(triangle));
            vTriangles.push_back(triangle);
        }
    vSorted = {};
    IntersectionSearch search(numbering, frame, std::move(vNumbers), std::move(vTriangles));
    search.run(options.maxPlaces, options.maxPairs);
    check.numIntersections = search.getNumFound();
    check.bAllPairsJudged = search.isComplete();
    for (const auto& [first, second] : search.getPairs())
        faults.add({MeshFaultKind::INTERSECTION, static_cast<int>(first), static_cast<int>(second),
                    mesh.getMiddleOfCommonBox(first, second)});
}

} // namespace TARN_ZEF
