#include "repair/choosePatches.h"

#include <gtest/gtest.h>

#include <random>
#include <utility>

namespace TARN_ZEF
{
namespace
{
struct Problem
{
    std::vector<SeamPatch> vPatches;
    std::vector<Seam> vSeams;

    // Weight of the seams with more than two triangles, and area taken away; none if that opens a hole.
    [[nodiscard]] bool judge(const std::vector<bool>& vStays, std::pair<double, double>& cost) const
    {
        cost = {0.0, 0.0};
        for (const Seam& seam : vSeams)
        {
            int num = 0;
            for (const std::size_t patch : seam.vPatches)
                num += vStays[patch] ? 1 : 0;
            cost.first += num > 2 ? seam.weight : 0.0;
            if (num == 1)
                return false;
        }
        for (std::size_t i = 0; i < vPatches.size(); ++i)
        {
            cost.second += vStays[i] ? 0.0 : vPatches[i].area;
            if (!vStays[i] && vPatches[i].bStays)
                return false;
        }
        return true;
    }
};

// Patch 0 is the largest and stands at every seam, so that all others are one place.
Problem randomProblem(std::mt19937& rng, bool bSomeStay)
{
    Problem problem;
    const std::size_t num = 2 + rng() % 8;
    problem.vPatches.push_back({1000.0, false});
    while (problem.vPatches.size() < num)
        problem.vPatches.push_back({static_cast<double>(1 + rng() % 99), bSomeStay && rng() % 8 == 0});
    for (std::size_t i = 1; i < num; ++i)
        problem.vSeams.push_back({{0, i - 1, i}, 1.0 + static_cast<double>(rng() % 9)});
    for (std::size_t k = rng() % num; k > 0; --k)
    {
        Seam seam{{0, rng() % num, rng() % num}, 1.0 + static_cast<double>(rng() % 9)};
        if (rng() % 3 == 0)
            seam.vPatches.push_back(rng() % num);
        std::sort(seam.vPatches.begin(), seam.vPatches.end());
        problem.vSeams.push_back(seam);
    }
    return problem;
}
} // namespace

TEST(ChoosePatches, isTheBestOfAllChoices)
{
    std::mt19937 rng(1);
    int numTakenAway = 0;
    for (int run = 0; run < 400; ++run)
    {
        SCOPED_TRACE(run);
        // Those that stay may part the place, and the largest area counts for each.
        const bool bSomeStay = run % 2 == 0;
        const Problem problem = randomProblem(rng, bSomeStay);
        const std::size_t num = problem.vPatches.size();
        const double maxArea = bSomeStay ? 1e9 : 60.0;
        std::pair<double, double> best(1e9, 1e9);
        for (std::size_t gone = 0; gone < std::size_t{1} << num; gone += 2)
        {
            std::vector<bool> vStays;
            for (std::size_t i = 0; i < num; ++i)
                vStays.push_back((gone >> i & 1) == 0);
            std::pair<double, double> cost;
            if (problem.judge(vStays, cost) && cost.second <= maxArea)
                best = std::min(best, cost);
        }
        std::pair<double, double> found;
        EXPECT_TRUE(problem.judge(choosePatches(problem.vPatches, problem.vSeams, maxArea), found));
        EXPECT_EQ(found, best);
        numTakenAway += found.second > 0.0 ? 1 : 0;
    }
    EXPECT_GT(numTakenAway, 100);
    EXPECT_LT(numTakenAway, 390);
}

// Blisters far apart are decided each on its own, however many there are.
TEST(ChoosePatches, decidesEachPlaceAlone)
{
    const std::size_t numPlaces = 3000;
    std::vector<SeamPatch> vPatches{{1e6, false}};
    std::vector<Seam> vSeams;
    for (std::size_t k = 0; k < numPlaces; ++k)
    {
        vPatches.insert(vPatches.end(), {{2.0, false}, {3.0, false}});
        vSeams.push_back({{0, 2 * k + 1, 2 * k + 2}, 1.0});
    }
    const std::vector<bool> vStays = choosePatches(vPatches, vSeams, 2.5);
    for (std::size_t i = 0; i < vPatches.size(); ++i)
        EXPECT_EQ(vStays[i], i % 2 == 0) << i;
}

} // namespace TARN_ZEF
