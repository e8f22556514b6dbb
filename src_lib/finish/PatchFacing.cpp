#include "finish/PatchFacing.h"

#include "finish/ParityUnion.h"

#include <algorithm>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
// What it costs to turn one triangle, in sides at a seam that find a flat partner by that. The facing of a large sheet
// comes from all of the points before it; a seam is not to turn a wall inside out.
constexpr double TURN_PRICE = 0.05;
// The cost falls with each turn, but for rounding.
constexpr int MAX_ROUNDS = 100;
} // namespace

PatchFacing::PatchFacing(const FlatMesh& mesh_, const SeamTable& seams, const PatchTable& patches_)
    : mesh(mesh_)
    , patches(patches_)
    , vTurned(patches_.vNumT.size(), 0)
{
    for (Index seam = 0; seam < seams.getNumSeams(); ++seam)
    {
        const auto sides = seams.getSides(seam);
        if (!sides.empty() && sides.size() <= SeamPairing::maxTriangles)
            readSeam({sides.begin(), sides.end()});
    }
    unite();
    chooseFacing(followVotes());
}

double PatchFacing::getMeanFlatness(Index patchA, Index patchB) const noexcept
{
    const u64 key = getKey(patchA, patchB);
    const auto it = std::lower_bound(vMeetings.begin(), vMeetings.end(), key,
                                     [](const Meeting& m, u64 k) { return m.patches < k; });
    return it == vMeetings.end() || it->patches != key ? 0.0 : it->flatness / static_cast<double>(it->num);
}

void PatchFacing::readSeam(std::vector<Index> vHalfEdges)
{
    const SeamPairing pairing(mesh, std::move(vHalfEdges));
    const int num = static_cast<int>(pairing.size());
    const auto patchOf = [&](int place) { return patches.vPatchOfT[pairing.getHalfEdge(place) / 3]; };
    for (int a = 0; a < num; ++a)
        for (int b = a + 1; b < num; ++b)
            vMeetings.push_back(
                {.patches = getKey(patchOf(a), patchOf(b)), .flatness = pairing.getFlatness(a, b), .num = 1});
    for (const auto& [a, b] : pairing.choose([&](int i, int k) { return pairing.getFlatness(i, k); }))
        addVote(pairing, a, b);
}

void PatchFacing::addVote(const SeamPairing& pairing, int a, int b)
{
    const Index g = pairing.getHalfEdge(a);
    const Index h = pairing.getHalfEdge(b);
    Meeting meeting{.patches = getKey(patches.vPatchOfT[g / 3], patches.vPatchOfT[h / 3])};
    (runsForward(g) != runsForward(h) ? meeting.keep : meeting.turn) = pairing.getFlatness(a, b);
    vMeetings.push_back(meeting);
}

void PatchFacing::unite()
{
    std::stable_sort(vMeetings.begin(), vMeetings.end(),
                     [](const Meeting& a, const Meeting& b) { return a.patches < b.patches; });
    std::size_t num = 0;
    for (const Meeting& meeting : vMeetings)
    {
        if (num == 0 || vMeetings[num - 1].patches != meeting.patches)
        {
            vMeetings[num++] = meeting;
            continue;
        }
        Meeting& sum = vMeetings[num - 1];
        sum.keep += meeting.keep;
        sum.turn += meeting.turn;
        sum.flatness += meeting.flatness;
        sum.num += meeting.num;
    }
    vMeetings.resize(num);
}

std::vector<std::uint8_t> PatchFacing::followVotes() const
{
    std::vector<const Meeting*> vByWeight;
    for (const Meeting& meeting : vMeetings)
        vByWeight.push_back(&meeting);
    std::stable_sort(vByWeight.begin(), vByWeight.end(),
                     [](const Meeting* pA, const Meeting* pB)
                     { return std::fabs(pA->getGain()) > std::fabs(pB->getGain()); });
    ParityUnion groups(vTurned.size());
    for (const Meeting* pMeeting : vByWeight)
        groups.unite(static_cast<Index>(pMeeting->patches >> 32), static_cast<Index>(pMeeting->patches),
                     pMeeting->getGain() < 0.0 ? 1 : 0);
    std::vector<std::uint8_t> vVoted(vTurned.size());
    std::vector<double> vPrice(vTurned.size(), 0.0);
    for (Index i = 0; i < vVoted.size(); ++i)
    {
        double& price = vPrice[groups.find(i, vVoted[i])];
        price += vVoted[i] != 0 ? getPrice(i) : -getPrice(i);
    }
    std::uint8_t unused = 0;
    for (Index i = 0; i < vVoted.size(); ++i)
        if (vPrice[groups.find(i, unused)] > 0.0)
            vVoted[i] ^= 1;
    return vVoted;
}

// Turns single patches as long as that lowers the cost.
void PatchFacing::descend(std::vector<std::uint8_t>& vTurn) const
{
    struct Link
    {
        Index other = 0;
        double gain = 0.0;
    };
    std::vector<std::vector<Link>> vLinks(vTurn.size());
    for (const Meeting& meeting : vMeetings)
    {
        const auto a = static_cast<Index>(meeting.patches >> 32);
        const auto b = static_cast<Index>(meeting.patches);
        if (a == b)
            continue;
        vLinks[a].push_back({b, meeting.getGain()});
        vLinks[b].push_back({a, meeting.getGain()});
    }
    bool bAgain = true;
    for (int round = 0; bAgain && round < MAX_ROUNDS; ++round)
    {
        bAgain = false;
        for (Index i = 0; i < vTurn.size(); ++i)
        {
            double saved = vTurn[i] != 0 ? getPrice(i) : -getPrice(i);
            for (const Link& link : vLinks[i])
                saved += vTurn[i] == vTurn[link.other] ? -link.gain : link.gain;
            if (!(saved > 0.0))
                continue;
            vTurn[i] ^= 1;
            bAgain = true;
        }
    }
}

// Patches that meet decide together: the cheaper of two ends of the descent.
void PatchFacing::chooseFacing(std::vector<std::uint8_t> vVoted)
{
    ParityUnion unions(vTurned.size());
    for (const Meeting& meeting : vMeetings)
        unions.unite(static_cast<Index>(meeting.patches >> 32), static_cast<Index>(meeting.patches), 0);
    descend(vTurned);
    descend(vVoted);
    std::vector<double> vSaved(vTurned.size(), 0.0); // by the votes, for each group
    std::uint8_t unused = 0;
    for (const Meeting& meeting : vMeetings)
    {
        const auto a = static_cast<Index>(meeting.patches >> 32);
        const auto b = static_cast<Index>(meeting.patches);
        double& saved = vSaved[unions.find(a, unused)];
        saved -= vTurned[a] == vTurned[b] ? meeting.keep : meeting.turn;
        saved += vVoted[a] == vVoted[b] ? meeting.keep : meeting.turn;
    }
    for (Index i = 0; i < vTurned.size(); ++i)
        vSaved[unions.find(i, unused)] += getPrice(i) * static_cast<double>(vTurned[i] - vVoted[i]);
    for (Index i = 0; i < vTurned.size(); ++i)
        if (vSaved[unions.find(i, unused)] > 0.0)
            vTurned[i] = vVoted[i];
}

double PatchFacing::getPrice(Index patch) const noexcept
{
    return TURN_PRICE * static_cast<double>(patches.vNumT[patch]);
}

u64 PatchFacing::getKey(Index patchA, Index patchB) noexcept
{
    const auto [low, high] = std::minmax(patchA, patchB);
    return u64{low} << 32 | high;
}

bool PatchFacing::runsForward(Index h) const noexcept
{
    return mesh.from(h) < mesh.to(h);
}

} // namespace TARN_ZEF
