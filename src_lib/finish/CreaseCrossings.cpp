#include "finish/CreaseCrossings.h"

#include <algorithm>
#include <numeric>

namespace TARN_ZEF
{
namespace
{
// A chain crosses about two edges in a cell; shorter ones are noise.
constexpr int FEWEST_CROSSINGS = 8;

int findRoot(std::vector<int>& vParent, int i)
{
    while (vParent[static_cast<std::size_t>(i)] != i)
    {
        int& parent = vParent[static_cast<std::size_t>(i)];
        parent = vParent[static_cast<std::size_t>(parent)];
        i = parent;
    }
    return i;
}
} // namespace

CreaseCrossings::CreaseCrossings(const HalfEdgeMesh& mesh_, const CreaseSides& sides_)
    : mesh(mesh_)
    , sides(sides_)
{
}

void CreaseCrossings::run()
{
    findCrossings();
    findPassages();
    dropShortChains();
}

void CreaseCrossings::findCrossings()
{
    vCrossingOf.assign(4 * static_cast<std::size_t>(mesh.endTriangles()), NONE);
    mesh.forEachEdge(
        [&](int h)
        {
            Crossing crossing;
            crossing.a = mesh.from(h);
            crossing.b = mesh.to(h);
            if (mesh.isBorder(h) || !sides.has(crossing.a) || !sides.has(crossing.b) ||
                !sides.isBroken(crossing.a, crossing.b) ||
                !sides.meet(crossing.a, crossing.b, crossing.point))
                return;
            vCrossingOf[static_cast<std::size_t>(h)] = static_cast<int>(vCrossings.size());
            vCrossingOf[static_cast<std::size_t>(mesh.partner(h))] = static_cast<int>(vCrossings.size());
            vCrossings.push_back(crossing);
        });
}

void CreaseCrossings::findPassages()
{
    for (int t = 0; t < mesh.endTriangles(); ++t)
    {
        if (!mesh.isAlive(t))
            continue;
        Passage passage;
        for (std::size_t k = 0; k < 3; ++k)
        {
            const int h = 4 * t + static_cast<int>(k);
            passage.vertices[k] = mesh.from(h);
            passage.crossings[k] = vCrossingOf[static_cast<std::size_t>(h)];
            passage.number += passage.crossings[k] != NONE ? 1 : 0;
        }
        if (passage.number > 1)
            vPassages.push_back(passage);
    }
}

void CreaseCrossings::dropShortChains()
{
    std::vector<int> vParent(vCrossings.size());
    std::iota(vParent.begin(), vParent.end(), 0);
    for (const Passage& passage : vPassages)
    {
        int first = NONE;
        for (const int crossing : passage.crossings)
        {
            if (crossing == NONE)
                continue;
            const int root = findRoot(vParent, crossing);
            if (first == NONE)
                first = root;
            else
                vParent[static_cast<std::size_t>(std::max(first, root))] = std::min(first, root);
            first = std::min(first, root);
        }
    }
    std::vector<int> vSizes(vCrossings.size(), 0);
    for (std::size_t i = 0; i < vCrossings.size(); ++i)
        ++vSizes[static_cast<std::size_t>(findRoot(vParent, static_cast<int>(i)))];
    std::vector<int> vNew(vCrossings.size(), NONE);
    std::vector<Crossing> vKept;
    for (std::size_t i = 0; i < vCrossings.size(); ++i)
    {
        if (vSizes[static_cast<std::size_t>(findRoot(vParent, static_cast<int>(i)))] < FEWEST_CROSSINGS)
            continue;
        vNew[i] = static_cast<int>(vKept.size());
        vKept.push_back(vCrossings[i]);
    }
    vCrossings = std::move(vKept);
    for (Passage& passage : vPassages)
        for (int& crossing : passage.crossings)
            if (crossing != NONE)
                crossing = vNew[static_cast<std::size_t>(crossing)];
    std::erase_if(
        vPassages, [](const Passage& p)
        { return std::all_of(p.crossings.begin(), p.crossings.end(), [](int c) { return c == NONE; }); });
}

} // namespace TARN_ZEF
