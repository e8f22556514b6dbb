#include "intake/NodeLinks.h"

#include <algorithm>

#include "parallel/parallelFor.h"

namespace TARN_ZEF
{
namespace
{
constexpr std::int64_t RCD_STEP_X = std::int64_t{1} << 42;
constexpr std::int64_t RCD_STEP_Y = std::int64_t{1} << 21;

// As signed numbers, the columns below the rim of the lattice stay below all cells.
constexpr std::array<std::int64_t, 9> COLUMN_DELTA = {
    -RCD_STEP_X - RCD_STEP_Y, -RCD_STEP_X, -RCD_STEP_X + RCD_STEP_Y, -RCD_STEP_Y, 0, RCD_STEP_Y,
    RCD_STEP_X - RCD_STEP_Y,  RCD_STEP_X,  RCD_STEP_X + RCD_STEP_Y};

// Columns whose first common cube with the node is at the step (x, y): 0 -1 and 0, 1 +1 on the axis.
struct CubeColumns
{
    int num;
    int aColumns[4];
};
constexpr CubeColumns CUBE_COLUMNS[4] = {
    {4, {0, 1, 3, 4}}, {2, {2, 5, 0, 0}}, {2, {6, 7, 0, 0}}, {1, {8, 0, 0, 0}}};

// Few elements, nearly always in order already.
void sortByNumber(std::uint32_t* pFirst, std::uint32_t* pEnd, const std::vector<std::uint32_t>& vNumber)
{
    for (std::uint32_t* p = pFirst; p < pEnd; ++p)
    {
        const std::uint32_t node = *p;
        std::uint32_t* pTo = p;
        for (; pTo > pFirst && vNumber[node] < vNumber[pTo[-1]]; --pTo)
            *pTo = pTo[-1];
        *pTo = node;
    }
}
} // namespace

void NodeLinks::clear()
{
    std::vector<std::vector<std::uint32_t>>().swap(vChunks);
    std::vector<std::uint32_t>().swap(vStarts);
}

void NodeLinks::build(const std::vector<SNode>& vNodes)
{
    clear();
    Keys keys;
    keys.vRCD.resize(vNodes.size());
    keys.vNumber.resize(vNodes.size());
    vStarts.resize(vNodes.size());
    vChunks.resize((vNodes.size() + CHUNK - 1) / CHUNK);
    for (std::size_t i = 0; i < vNodes.size(); ++i)
    {
        keys.vRCD[i] = vNodes[i].getRCD();
        keys.vNumber[i] = vNodes[i].getNumber();
    }
    parallelFor(vChunks.size(), 1,
                [&](std::size_t from, std::size_t to)
                {
                    std::vector<std::uint32_t> vScratch;
                    for (std::size_t chunk = from; chunk < to; ++chunk)
                        buildChunk(keys, chunk, vScratch);
                });
}

void NodeLinks::buildChunk(const Keys& keys, std::size_t chunk, std::vector<std::uint32_t>& vScratch)
{
    const std::size_t first = chunk * CHUNK;
    const std::size_t end = std::min(first + CHUNK, keys.vRCD.size());
    Columns columns;
    for (std::size_t k = 0; k < columns.size(); ++k)
    {
        const auto low = static_cast<std::int64_t>(keys.vRCD[first]) + COLUMN_DELTA[k] - 1;
        const auto it = std::lower_bound(keys.vRCD.begin(), keys.vRCD.end(), low,
                                         [](RCD rcd, std::int64_t bound)
                                         { return static_cast<std::int64_t>(rcd) < bound; });
        const auto begin = static_cast<std::size_t>(it - keys.vRCD.begin());
        columns[k] = {begin, begin, begin};
    }
    vScratch.clear();
    for (std::size_t node = first; node < end; ++node)
    {
        vStarts[node] = static_cast<std::uint32_t>(vScratch.size());
        advance(keys, keys.vRCD[node], columns);
        appendLinks(keys, columns, node, vScratch);
    }
    vChunks[chunk].assign(vScratch.begin(), vScratch.end());
}

void NodeLinks::advance(const Keys& keys, RCD rcd, Columns& columns) noexcept
{
    const std::size_t num = keys.vRCD.size();
    const RCD* const pRCD = keys.vRCD.data();
    for (std::size_t k = 0; k < columns.size(); ++k)
    {
        const std::int64_t mid = static_cast<std::int64_t>(rcd) + COLUMN_DELTA[k];
        const auto isBelow = [&](std::size_t i, std::int64_t bound)
        { return i < num && static_cast<std::int64_t>(pRCD[i]) < bound; };
        Column& column = columns[k];
        while (isBelow(column.begin, mid - 1))
            ++column.begin;
        column.upper = column.begin;
        while (isBelow(column.upper, mid + 1))
            ++column.upper;
        column.end = column.upper;
        while (isBelow(column.end, mid + 2))
            ++column.end;
    }
}

void NodeLinks::appendLinks(const Keys& keys, const Columns& columns, std::size_t node,
                            std::vector<std::uint32_t>& vLinks)
{
    const std::size_t numBefore = vLinks.size();
    std::size_t num = 0;
    for (const Column& column : columns)
        num += column.end - column.begin;
    // All but the node itself.
    vLinks.resize(numBefore + num - 1);
    std::uint32_t* pTo = vLinks.data() + numBefore;
    for (int cube = 0; cube < 8; ++cube)
    {
        std::uint32_t* const pFirst = pTo;
        const bool bUpper = (cube & 1) != 0;
        const CubeColumns& list = CUBE_COLUMNS[cube >> 1];
        for (int i = 0; i < list.num; ++i)
        {
            const Column& column = columns[static_cast<std::size_t>(list.aColumns[i])];
            const std::size_t end = bUpper ? column.end : column.upper;
            for (std::size_t k = bUpper ? column.upper : column.begin; k < end; ++k)
                if (k != node)
                    *pTo++ = static_cast<std::uint32_t>(k);
        }
        if (pTo - pFirst > 1)
            sortByNumber(pFirst, pTo, keys.vNumber);
    }
}

} // namespace TARN_ZEF
