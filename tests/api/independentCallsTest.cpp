// Whatever ran before a call, in this process or at the same time, its result is the same.
#include "zef.h"

#include "core/CallScope.h"
#include "helpers/PipelineMesh.h"
#include "helpers/finishedMeshes.h"
#include "helpers/meshHash.h"
#include "helpers/meshShapes.h"
#include "helpers/transformed.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <thread>

namespace TARN_ZEF
{
namespace
{
using Points = std::vector<Point3>;

struct Subject
{
    std::string name;
    std::function<std::uint64_t()> run; // a public call or some; the result is a hash of what came back
};

std::uint64_t reconstructAndImprove(Points cloud, bool bSmooth)
{
    const std::shared_ptr<Mesh> pMesh = reconstruct_auto(cloud, bSmooth, 1.2);
    const double edge = pMesh->getAverageEdgeLength();
    edgeFlips(pMesh);
    edgeFlipsSimA(pMesh);
    static_cast<void>(reduce(pMesh, 2.0 * edge, 20.0, true));
    laplacianSmoothing(pMesh, 2);
    return getHash(pMesh);
}

std::uint64_t meltAndSample(Points soup, double spacing)
{
    Points samples;
    toCloud(soup, spacing, 30.0, samples);
    return getHash(melt(soup, spacing, 30.0)) * 31 + getHash(samples);
}

std::uint64_t fail(Points cloud)
{
    EXPECT_THROW(static_cast<void>(reconstruct_abs(cloud, false, 1e-12)), ZefBadArgument);
    return 0;
}

std::vector<Subject> getMadeSubjects()
{
    const Points ball = makeCloud(1000, 0.0, 0.0);
    const Points rough = makeCloud(2000, 3.0, 0.5);
    const Points box = boxSoup({0.0, 0.0, 0.0}, {7.0, 3.0, 1.0});
    const auto cloud = [](Points v, bool bSmooth)
    { return [=] { return reconstructAndImprove(v, bSmooth); }; };
    const auto soup = [](Points v, double spacing) { return [=] { return meltAndSample(v, spacing); }; };
    return {
        {"ball", cloud(ball, false)},
        {"rough torus", cloud(rough, true)},
        {"large torus, doubled", cloud(scaled(doubled(rough), 5000.0), false)},
        {"small ball", cloud(scaled(ball, 0.0003), true)},
        {"tiny torus", cloud(scaled(rough, 1e-9), false)},
        {"box", soup(box, 0.25)},
        {"small box", soup(scaled(box, 0.001), 0.0002)},
        {"large box", soup(scaled(box, 1e6), 2e5)},
        {"failure", [=] { return fail(ball); }},
    };
}

// With real scans if they are there.
std::vector<Subject> getSubjects()
{
    std::vector<Subject> vSubjects = getMadeSubjects();
    for (const char* name : {"lamppost.xyz", "bunny_front_scan.ply"})
    {
        Points points;
        std::string path = dataDir() + "/" + name;
        if (!dataDir().empty() && readPoints_auto(path, points))
            vSubjects.push_back(
                {name, [=]() mutable { return getHash(reconstruct_auto(points, false, 1.0)); }});
    }
    return vSubjects;
}

// Takes the last number that a child process has printed.
class ReadsHash : public ::testing::MatcherInterface<const std::string&>
{
public:
    explicit ReadsHash(std::uint64_t* pHash_)
        : pHash(pHash_)
    {
    }
    bool MatchAndExplain(const std::string& text, ::testing::MatchResultListener*) const override
    {
        const std::size_t mark = text.rfind('#');
        if (mark == std::string::npos)
            return false;
        *pHash = std::strtoull(text.c_str() + mark + 1, nullptr, 10);
        return true;
    }
    void DescribeTo(std::ostream* pStream) const override { *pStream << "ends in # and a number"; }

private:
    std::uint64_t* pHash;
};

[[noreturn]] void printHash(const std::function<std::uint64_t()>& run)
{
    setMessageReceiver([](const Message&) {});
    std::fprintf(stderr, "#%llu\n", static_cast<unsigned long long>(run()));
    std::exit(0);
}

// In a process that has called nothing before.
std::uint64_t getFreshHash(const std::function<std::uint64_t()>& run)
{
    std::uint64_t hash = 0;
    const ::testing::Matcher<const std::string&> readsHash(new ReadsHash(&hash));
    EXPECT_EXIT(printHash(run), ::testing::ExitedWithCode(0), readsHash);
    return hash;
}

class IndependentCalls : public ::testing::Test
{
protected:
    // A child process starts the program anew, and so without what ran before the test.
    IndependentCalls() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
    ~IndependentCalls() override { setIndependentCalls(true); }
};

TEST_F(IndependentCalls, noOrderChangesAResult)
{
    std::vector<Subject> vSubjects = getSubjects();
    std::map<std::string, std::uint64_t> mFresh;
    for (const Subject& subject : vSubjects)
        mFresh[subject.name] = getFreshHash(subject.run);
    const auto expectFresh = [&](const Subject& subject)
    { EXPECT_EQ(subject.run(), mFresh[subject.name]) << subject.name; };

    std::for_each(vSubjects.begin(), vSubjects.end(), expectFresh);
    std::for_each(vSubjects.rbegin(), vSubjects.rend(), expectFresh);
    std::shuffle(vSubjects.begin(), vSubjects.end(), std::mt19937(5));
    std::for_each(vSubjects.begin(), vSubjects.end(), expectFresh);
}

TEST_F(IndependentCalls, callsAtTheSameTimeDoNotDisturbEachOther)
{
    const std::vector<Subject> vSubjects = getMadeSubjects();
    std::vector<std::uint64_t> vAlone;
    for (const Subject& subject : vSubjects)
        vAlone.push_back(subject.run());
    std::array<std::vector<std::uint64_t>, 2> aTogether;
    const auto runAll = [&](std::size_t thread)
    {
        aTogether[thread].resize(vSubjects.size());
        for (std::size_t i = 0; i < vSubjects.size(); ++i)
        {
            const std::size_t place = thread == 0 ? i : vSubjects.size() - 1 - i;
            aTogether[thread][place] = vSubjects[place].run();
        }
    };
    std::thread other(runAll, 1);
    runAll(0);
    other.join();
    EXPECT_EQ(aTogether[0], vAlone);
    EXPECT_EQ(aTogether[1], vAlone);
}

TEST_F(IndependentCalls, aScopeEndsWithTheOneAroundItInForce)
{
    ZefRandom first;
    const CallScope outer;
    EXPECT_EQ(zefRand(), first.next());
    {
        const CallScope inner;
        EXPECT_EQ(zefRand(), ZefRandom().next());
    }
    EXPECT_EQ(zefRand(), first.next());
}

TEST_F(IndependentCalls, sharedStateComesBackWhenAskedFor)
{
    const auto countTriangles = [](double factor)
    {
        Points cloud = scaled(makeCloud(3000, 0.0, 0.0), factor);
        const std::shared_ptr<Mesh> pMesh = reconstruct_auto(cloud, false, 1.2);
        return pMesh == nullptr ? std::size_t{0} : getCorners(*pMesh).size() / 3;
    };
    const auto afterALargeOne = [=]() -> std::uint64_t
    {
        setIndependentCalls(false);
        const std::size_t large = countTriangles(1.0);
        const std::size_t small = countTriangles(0.01); // fitted with the limit of the large one
        setIndependentCalls(true);
        return large == countTriangles(0.01) ? small : large;
    };
    const std::size_t num = countTriangles(1.0);
    EXPECT_GT(num, 1000U);
    EXPECT_EQ(countTriangles(0.01), num);
    EXPECT_LT(getFreshHash(afterALargeOne), num / 10);
}

} // namespace
} // namespace TARN_ZEF
