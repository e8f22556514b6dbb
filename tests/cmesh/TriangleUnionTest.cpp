#include "cmesh/uniteAcrossEdges.h"

#include <gtest/gtest.h>

#include <random>
#include <set>
#include <vector>

namespace TARN_ZEF
{
namespace
{
const std::uint32_t NUM_T = 5000;

// Pieces of random sizes whose triangles stand in numbers near each other, as in a mesh. Each triangle has a
// random orientation; numWrong joints deny it.
std::vector<Joint> makeJoints(std::mt19937& random, int numWrong)
{
    std::vector<bool> vFlipped(NUM_T);
    for (std::size_t i = 0; i < NUM_T; ++i)
        vFlipped[i] = random() % 2 == 0;
    std::vector<Joint> vJoints;
    for (std::uint32_t i = 0; i < 3 * NUM_T; ++i) // three each, so that all stand on cycles
    {
        const std::uint32_t first = i / 3;
        const std::uint32_t second = (first + 1 + random() % 40) % NUM_T;
        if (first / 200 == second / 200)
            vJoints.push_back({first, second, vFlipped[first] != vFlipped[second]});
    }
    for (int i = 0; i < numWrong; ++i)
        vJoints[random() % vJoints.size()].bTurned ^= true;
    return vJoints;
}

std::vector<std::uint32_t> unite(TriangleUnion& turns, const std::vector<Joint>& vJoints,
                                 std::size_t numParts)
{
    return uniteAcrossEdges(turns, NUM_T, vJoints.size(), numParts,
                            [&vJoints](std::size_t, std::size_t from, std::size_t to, auto join)
                            {
                                for (std::size_t i = from; i < to; ++i)
                                    join(vJoints[i]);
                            });
}

std::set<std::uint32_t> findRoots(TriangleUnion& turns, const std::vector<std::uint32_t>& vNumbers)
{
    std::set<std::uint32_t> sRoots;
    for (const std::uint32_t number : vNumbers)
        sRoots.insert(turns.findRoot(number));
    return sRoots;
}
} // namespace

TEST(TriangleUnion, setsAndTurnsAreTheSameForEveryNumberOfParts)
{
    std::mt19937 random(11);
    for (const int numWrong : {0, 0, 1, 20})
    {
        const std::vector<Joint> vJoints = makeJoints(random, numWrong);
        TriangleUnion whole(NUM_T);
        const std::set<std::uint32_t> sTwisted = findRoots(whole, unite(whole, vJoints, 1));
        EXPECT_EQ(sTwisted.empty(), numWrong == 0);
        for (const std::size_t numParts : {2, 3, 8, 50})
        {
            SCOPED_TRACE(numParts);
            TriangleUnion parts(NUM_T);
            EXPECT_EQ(findRoots(parts, unite(parts, vJoints, numParts)), sTwisted);
            for (std::uint32_t i = 0; i < NUM_T; ++i)
            {
                const TriangleUnion::Found a = whole.find(i);
                const TriangleUnion::Found b = parts.find(i);
                ASSERT_EQ(a.root, b.root);
                ASSERT_EQ(whole.getSize(a.root), parts.getSize(b.root));
                // A twisted piece has no turns.
                ASSERT_TRUE(a.bTurned == b.bTurned || sTwisted.count(a.root) > 0);
            }
        }
    }
}

} // namespace TARN_ZEF
