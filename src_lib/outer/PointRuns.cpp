#include "outer/PointRuns.h"

#include "finish/ParityUnion.h"

#include <utility>

namespace TARN_ZEF
{
void PointRuns::append(std::vector<Run>& vLine)
{
    std::sort(vLine.begin(), vLine.end(), [](const Run& a, const Run& b) { return a.from < b.from; });
    for (const Run& run : vLine)
        if (vRuns.size() > vOffsets.back() && vRuns.back().to >= run.from)
            vRuns.back().to = std::max(vRuns.back().to, run.to);
        else if (run.from < run.to)
            vRuns.push_back(run);
    vOffsets.push_back(vRuns.size());
}

bool PointRuns::has(const HullLattice::Cell& p) const noexcept
{
    const Range all = onLine(pLattice->lineOf(0, p));
    const Run* const pBehind =
        std::upper_bound(all.pBegin, all.pEnd, p[0], [](int x, const Run& run) { return x < run.from; });
    return pBehind != all.pBegin && p[0] < (pBehind - 1)->to;
}

bool PointRuns::isNear(const HullLattice::Cell& p) const noexcept
{
    for (int dz = -1; dz <= 1; ++dz)
        for (int dy = -1; dy <= 1; ++dy)
            for (const Run& run : onLine(pLattice->lineOf(0, {p[0], p[1] + dy, p[2] + dz})))
                if (run.from <= p[0] + 1 && run.to >= p[0])
                    return true;
    return false;
}

PointRuns PointRuns::unitedWith(const PointRuns& other) const
{
    return {*pLattice, [&](std::size_t line, std::vector<Run>& vLine)
            {
                for (const PointRuns* pRuns : {this, &other})
                    vLine.insert(vLine.end(), pRuns->onLine(line).begin(), pRuns->onLine(line).end());
            }};
}

PointRuns PointRuns::getOthers() const
{
    return {*pLattice, [&](std::size_t line, std::vector<Run>& vLine)
            {
                int from = 0;
                for (const Run& run : onLine(line))
                {
                    vLine.push_back({from, run.from});
                    from = run.to;
                }
                vLine.push_back({from, pLattice->size[0]});
            }};
}

PointRuns PointRuns::widened(int steps) const
{
    if (steps == 0)
        return *this;
    const PointRuns along(
        *pLattice,
        [&](std::size_t line, std::vector<Run>& vLine)
        {
            for (const Run& run : onLine(line))
                vLine.push_back({std::max(0, run.from - steps), std::min(pLattice->size[0], run.to + steps)});
        });
    return along.widenedAcross(1, steps).widenedAcross(2, steps);
}

PointRuns PointRuns::widenedAcross(int axis, int steps) const
{
    return {*pLattice, [&](std::size_t line, std::vector<Run>& vLine)
            {
                HullLattice::Cell p = {0,
                                       static_cast<int>(line % static_cast<std::size_t>(pLattice->size[1])),
                                       static_cast<int>(line / static_cast<std::size_t>(pLattice->size[1]))};
                const int last = std::min(pLattice->size[axis] - 1, p[axis] + steps);
                for (p[axis] = std::max(0, p[axis] - steps); p[axis] <= last; ++p[axis])
                {
                    const Range other = onLine(pLattice->lineOf(0, p));
                    vLine.insert(vLine.end(), other.begin(), other.end());
                }
            }};
}

PointRuns PointRuns::floodAround() const
{
    const PointRuns others = getOthers();
    ParityUnion groups(others.vRuns.size());
    const auto uniteLines = [&](std::size_t a, std::size_t b)
    {
        std::size_t i = others.vOffsets[a];
        std::size_t k = others.vOffsets[b];
        while (i < others.vOffsets[a + 1] && k < others.vOffsets[b + 1])
        {
            const Run& first = others.vRuns[i];
            const Run& second = others.vRuns[k];
            if (first.from < second.to && second.from < first.to)
                groups.unite(static_cast<ParityUnion::Index>(i), static_cast<ParityUnion::Index>(k), 0);
            ++(first.to < second.to ? i : k);
        }
    };
    const auto perRow = static_cast<std::size_t>(pLattice->size[1]);
    for (std::size_t line = 0; line < pLattice->numLines(0); ++line)
    {
        checkCancelledAt(line);
        if ((line + 1) % perRow != 0)
            uniteLines(line, line + 1);
        if (line + perRow < pLattice->numLines(0))
            uniteLines(line, line + perRow);
    }
    std::uint8_t unlike = 0;
    return {*pLattice, [&](std::size_t line, std::vector<Run>& vLine)
            {
                for (std::size_t i = others.vOffsets[line]; i < others.vOffsets[line + 1]; ++i)
                    if (groups.find(static_cast<ParityUnion::Index>(i), unlike) == 0)
                        vLine.push_back(others.vRuns[i]);
            }};
}

} // namespace TARN_ZEF
