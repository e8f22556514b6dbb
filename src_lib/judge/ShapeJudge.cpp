#include "judge/ShapeJudge.h"

#include "judge/IntersectionSearch.h"
#include "parallel/parallelFor.h"
#include "parallel/produceInOrder.h"
#include "parallel/sortMT2.h"

#include <algorithm>

namespace TARN_ZEF
{
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

CornerNumbers ShapeJudge::sortedNumbersOf(std::size_t triangle) const
{
    CornerNumbers numbers = numbersOf(triangle);
    std::sort(numbers.begin(), numbers.end());
    return numbers;
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
    vSorted.reserve(vShapes.size());
    for (std::size_t t = 0; t < vShapes.size(); ++t)
        if (vShapes[t] != Shape::NOT_FINITE)
        {
            const CornerNumbers numbers = numbersOf(t);
            vSorted.emplace_back(std::min({numbers[0], numbers[1], numbers[2]}),
                                 static_cast<std::uint32_t>(t));
        }
    sortByFirstMT(vSorted.begin(), vSorted.end());
    const auto isLess = [this](const auto& a, const auto& b)
    {
        const CornerNumbers numbersA = sortedNumbersOf(a.second);
        const CornerNumbers numbersB = sortedNumbersOf(b.second);
        return numbersA != numbersB ? numbersA < numbersB : a.second < b.second;
    };
    for (auto it = vSorted.begin(); it != vSorted.end();)
    {
        auto end = it + 1;
        while (end != vSorted.end() && end->first == it->first)
            ++end;
        std::sort(it, end, isLess);
        it = end;
    }
}

void ShapeJudge::findDuplicates(std::size_t maxPlaces, MeshCheck& check, FaultList& faults) const
{
    LowestPairs lowest(maxPlaces);
    std::size_t first = 0; // of those with equal corners
    for (std::size_t i = 1; i < vSorted.size(); ++i)
    {
        const bool bEqual = vSorted[i].first == vSorted[first].first &&
                            sortedNumbersOf(vSorted[i].second) == sortedNumbersOf(vSorted[first].second);
        if (!bEqual)
        {
            first = i;
            continue;
        }
        ++check.numDuplicates;
        lowest.add({vSorted[i].second, vSorted[first].second});
    }
    for (const auto& [triangle, earlier] : lowest.getSorted())
        faults.add({MeshFaultKind::DUPLICATE, static_cast<int>(triangle), static_cast<int>(earlier),
                    mesh.getCentre(triangle)});
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
