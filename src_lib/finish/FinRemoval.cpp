#include "finish/FinRemoval.h"

#include <algorithm>
#include <array>
#include <utility>

namespace TARN_ZEF
{
namespace
{
// Largest patch that counts as a fin or as one of two layers; the rounds start with the smallest.
constexpr std::array<std::size_t, 7> FIN_SIZES = {1, 2, 4, 8, 16, 32, 64};
constexpr int FIN_ROUNDS = 8;
// Triangles that may go for each side at a seam that finds a partner then; each border side that goes adds one.
constexpr std::size_t FIN_WIDTH = 3;
constexpr FlatMesh::Index UNKNOWN = FlatMesh::NONE;
constexpr FlatMesh::Index LARGE = FlatMesh::NONE - 1;
} // namespace

FinRemoval::FinRemoval(FlatMesh& mesh_, SeamTable& seams_)
    : mesh(mesh_)
    , seams(seams_)
{
}

std::size_t FinRemoval::run()
{
    if (seams.getNumSeams() == 0)
        return 0;
    vKeep.assign(mesh.getNumT(), 1);
    vPatchOfT.assign(mesh.getNumT(), UNKNOWN);
    for (const std::size_t maxT : FIN_SIZES)
        for (int round = 0; round < FIN_ROUNDS && dropUpTo(maxT); ++round)
        {
        }
    const std::size_t before = mesh.getNumT();
    mesh.keepTriangles(vKeep);
    seams.keepTriangles(vKeep);
    return before - mesh.getNumT();
}

bool FinRemoval::dropUpTo(std::size_t maxT)
{
    findPatches();
    const std::vector<Index> vCandidates = findCandidates(maxT);
    std::vector<std::uint8_t> vStays(vPatches.size(), 0);
    std::vector<Index> vDropped;
    for (const Index i : vCandidates)
    {
        if (vStays[i] != 0)
            continue;
        markNeighbours(vPatches[i], vStays);
        vDropped.push_back(i);
    }
    for (const Index i : vDropped)
        drop(vPatches[i]);
    return !vCandidates.empty();
}

void FinRemoval::findPatches()
{
    for (const Index t : vKnown)
        vPatchOfT[t] = UNKNOWN;
    vKnown.clear();
    vPatches.clear();
    for (Index seam = 0; seam < seams.getNumSeams(); ++seam)
        if (seams.getSides(seam).size() > 2)
            for (const Index h : seams.getSides(seam))
                if (vPatchOfT[h / 3] == UNKNOWN)
                    flood(h / 3);
    for (Index i = 0; i < vPatches.size(); ++i)
        weigh(vPatches[i], i);
}

// Gives up as soon as the patch is large.
void FinRemoval::flood(Index firstT)
{
    const auto number = static_cast<Index>(vPatches.size());
    Patch patch;
    std::vector<Index>& vReached = patch.vTriangles;
    vReached.push_back(firstT);
    vPatchOfT[firstT] = number;
    bool bLarge = false;
    for (std::size_t i = 0; i < vReached.size() && !bLarge; ++i)
    {
        for (Index h = 3 * vReached[i]; h < 3 * vReached[i] + 3; ++h)
        {
            const Index mate = seams.getMates()[h];
            if (mate == FlatMesh::NONE)
                continue;
            Index& patchOfMate = vPatchOfT[mate / 3];
            bLarge = bLarge || patchOfMate == LARGE;
            if (patchOfMate != UNKNOWN)
                continue;
            patchOfMate = number;
            vReached.push_back(mate / 3);
        }
        bLarge = bLarge || vReached.size() > FIN_SIZES.back();
    }
    vKnown.insert(vKnown.end(), vReached.begin(), vReached.end());
    if (bLarge)
    {
        for (const Index t : vReached)
            vPatchOfT[t] = LARGE;
        return;
    }
    std::iter_swap(vReached.begin(), std::min_element(vReached.begin(), vReached.end()));
    vPatches.push_back(std::move(patch));
}

void FinRemoval::weigh(Patch& patch, Index number) const
{
    std::vector<Index> vSeams;
    for (const Index t : patch.vTriangles)
    {
        for (Index h = 3 * t; h < 3 * t + 3; ++h)
        {
            patch.numBorder += seams.isBorder(h) ? 1 : 0;
            const Index seam = seams.getSeam(h);
            if (seam != FlatMesh::NONE && seams.getSides(seam).size() > 2)
                vSeams.push_back(seam);
        }
    }
    std::sort(vSeams.begin(), vSeams.end());
    vSeams.erase(std::unique(vSeams.begin(), vSeams.end()), vSeams.end());
    patch.bAtSeam = !vSeams.empty();
    for (const Index seam : vSeams)
        patch.gain += getGain(seam, number);
}

// 1 if an odd number of triangles becomes an even one, -1 the other way.
std::ptrdiff_t FinRemoval::getGain(Index seam, Index patch) const
{
    const auto sides = seams.getSides(seam);
    const auto own =
        std::count_if(sides.begin(), sides.end(), [&](Index h) { return vPatchOfT[h / 3] == patch; });
    const auto num = static_cast<std::ptrdiff_t>(sides.size());
    return num % 2 - (num - own) % 2;
}

std::vector<FlatMesh::Index> FinRemoval::findCandidates(std::size_t maxT) const
{
    std::vector<Index> vCandidates;
    for (Index i = 0; i < vPatches.size(); ++i)
    {
        const Patch& patch = vPatches[i];
        const std::size_t numT = patch.vTriangles.size();
        const bool bSaves = patch.gain + static_cast<std::ptrdiff_t>(patch.numBorder) > 0;
        const auto seamGain = static_cast<std::size_t>(std::max<std::ptrdiff_t>(0, patch.gain));
        if (patch.bAtSeam && bSaves && numT <= maxT && numT <= FIN_WIDTH * seamGain + patch.numBorder)
            vCandidates.push_back(i);
    }
    const auto rank = [this](Index i)
    { return std::pair(vPatches[i].vTriangles.size(), vPatches[i].vTriangles.front()); };
    std::sort(vCandidates.begin(), vCandidates.end(), [&](Index a, Index b) { return rank(a) < rank(b); });
    return vCandidates;
}

void FinRemoval::markNeighbours(const Patch& patch, std::vector<std::uint8_t>& vStays) const
{
    for (const Index t : patch.vTriangles)
    {
        for (Index h = 3 * t; h < 3 * t + 3; ++h)
        {
            if (seams.getSeam(h) == FlatMesh::NONE)
                continue;
            for (const Index side : seams.getSides(seams.getSeam(h)))
                if (vPatchOfT[side / 3] < vPatches.size())
                    vStays[vPatchOfT[side / 3]] = 1;
        }
    }
}

void FinRemoval::drop(const Patch& patch)
{
    for (const Index t : patch.vTriangles)
        vKeep[t] = 0;
    for (const Index t : patch.vTriangles)
        for (Index h = 3 * t; h < 3 * t + 3; ++h)
            if (seams.getSeam(h) != FlatMesh::NONE)
                seams.removeSides(mesh, seams.getSeam(h), vKeep);
}

} // namespace TARN_ZEF
