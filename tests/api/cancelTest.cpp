// What a host that stops calls relies on: they end with the one exception, leave nothing half done, and the next
// call gives what it would have given anyway.
#include "zef.h"

#include "helpers/PipelineMesh.h"
#include "helpers/TempFile.h"
#include "helpers/checkMesh.h"
#include "helpers/finishedMeshes.h"
#include "helpers/meshHash.h"
#include "helpers/meshShapes.h"
#include "parallel/parallelFor.h"
#include "parallel/parallelScan.h"
#include "text/UnfinishedFile.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <functional>
#include <future>
#include <optional>
#include <stdexcept>
#include <thread>

namespace TARN_ZEF
{
namespace
{
using Points = std::vector<Point3>;
using namespace std::chrono_literals;

// Prepared data in, hash of what comes out; the data are as before afterwards.
struct Subject
{
    const char* name;
    std::function<std::uint64_t()> run;
};

// Without a tree of progress, whose end would be one more place to be stopped at.
std::shared_ptr<Mesh> makeMesh(const RMeshSource& source)
{
    auto pRMesh = std::make_unique<RMesh>(source);
    auto pMesh = std::make_shared<Mesh>(pRMesh.get());
    static_cast<void>(pRMesh.release());
    return pMesh;
}

std::uint64_t improve(const RMeshSource& source, const std::function<void(std::shared_ptr<Mesh>)>& call)
{
    const std::shared_ptr<Mesh> pMesh = makeMesh(source);
    call(pMesh);
    return getHash(pMesh);
}

// Every long call, on data small enough to be run a hundred times.
std::vector<Subject> getSubjects()
{
    static const Points ball = makeCloud(1500, 0.0, 0.1);
    static const Points box = boxSoup({0.0, 0.0, 0.0}, {7.0, 3.0, 1.0});
    static const RMeshSource rough = jittered(torusSource(60, 20), 0.2, 3);
    const auto withBall = [](auto call)
    {
        return [call]
        {
            Points cloud = ball;
            return getHash(call(cloud));
        };
    };
    const auto onRough = [](auto call) { return [call] { return improve(rough, call); }; };
    return {
        {"reconstruct_auto", withBall([](Points& v) { return reconstruct_auto(v, false, 1.2); })},
        {"reconstruct_abs, smoothed", withBall([](Points& v) { return reconstruct_abs(v, true, 1.0); })},
        {"autoReconstruct", withBall([](Points& v) { return autoReconstruct(v); })},
        {"estimateAvgSpacing",
         withBall([](Points& v) { return Points{Point3(estimateAvgSpacing(v), 0.0, 0.0)}; })},
        {"finishSurface", withBall([](Points& v) { return finishSurface(*makeMesh(rough), v); })},
        {"checkMesh",
         withBall(
             [](Points&)
             { return Points{Point3(static_cast<double>(checkMesh(*makeMesh(rough)).numEdges), 0, 0)}; })},
        {"melt",
         []
         {
             Points soup = box;
             return getHash(melt(soup, 0.2, 30.0));
         }},
        {"toCloud",
         []
         {
             Points soup = box;
             Points samples;
             toCloud(soup, 0.2, 30.0, samples);
             return getHash(samples);
         }},
        {"remesh", [] { return getHash(remesh(box)); }},
        {"edgeFlips", onRough([](const std::shared_ptr<Mesh>& p) { edgeFlips(p); })},
        {"edgeFlipsSimA", onRough([](const std::shared_ptr<Mesh>& p) { edgeFlipsSimA(p); })},
        {"reduce", onRough([](const std::shared_ptr<Mesh>& p) { reduce(p, 3.0, 40.0, true); })},
        {"laplacianSmoothing", onRough([](const std::shared_ptr<Mesh>& p) { laplacianSmoothing(p, 3); })},
    };
}

// Acts on its n-th update of a call.
class Interrupter : public ProgressBase
{
public:
    Interrupter() { subscribe(this); }
    void update(const std::string&, double) override
    {
        if (++numUpdates == when)
            act();
    }

    int numUpdates = 0;
    int when = -1;
    std::function<void()> act;
};

struct HostsOwn : std::runtime_error
{
    HostsOwn()
        : std::runtime_error("the host's own")
    {
    }
};

class Cancel : public ::testing::Test
{
protected:
    Cancel()
    {
        setMessageReceiver([](const Message&) {});
    }
    ~Cancel() override { setMessageReceiver(nullptr); }
};

TEST_F(Cancel, aCallThatIsUnwantedBeforehandThrowsAtOnceAndTouchesNothing)
{
    const TempFile cloudFile(".xyz", "1 2 3\n4 5 6\n");
    const TempFile old(".stl", "what was there");
    Points cloud(3);
    std::vector<Subject> vSubjects = getSubjects();
    const std::shared_ptr<Mesh> pMesh = makeMesh(torusSource(12, 6));
    const auto reads = [&](auto read)
    { return [&, read] { return std::uint64_t{read(cloudFile.c_str(), cloud)}; }; };
    vSubjects.push_back({"readPoints_ASCII", reads(readPoints_ASCII)});
    vSubjects.push_back({"readPoints_BIN", reads(readPoints_BIN)});
    vSubjects.push_back({"readSTL_ASCII", reads(readSTL_ASCII)});
    vSubjects.push_back(
        {"readPly", reads([](const char* name, Points& v) { return readPly(name, true, v); })});
    vSubjects.push_back(
        {"writePoints_ASCII", [&] { return std::uint64_t{writePoints_ASCII(old.c_str(), cloud)}; }});
    vSubjects.push_back(
        {"writePoints_BIN", [&] { return std::uint64_t{writePoints_BIN(old.c_str(), cloud)}; }});
    vSubjects.push_back({"STL", [&] { return std::uint64_t{pMesh->writeStl_ASCII(old.path)}; }});
    vSubjects.push_back({"PLY", [&] { return std::uint64_t{pMesh->writePly_BIN(old.path)}; }});
    vSubjects.push_back({"scene", [&] { return std::uint64_t{pMesh->writeGeomview_ASCII(old.path)}; }});
    const CancelToken token;
    token.cancel();
    const CancelScope scope(token);
    for (const Subject& subject : vSubjects)
        EXPECT_THROW(static_cast<void>(subject.run()), ZefCancelledException) << subject.name;
    EXPECT_EQ(cloud.size(), 3U);
    EXPECT_EQ(old.read(), "what was there");
}

// At some places spread over the run, by a token and by an exception of the host's own.
TEST_F(Cancel, theNextCallGivesTheSameWhereverThisOneWasStopped)
{
    Interrupter interrupter;
    for (const Subject& subject : getSubjects())
    {
        interrupter.numUpdates = 0;
        interrupter.when = -1;
        const std::uint64_t whole = subject.run();
        const int num = interrupter.numUpdates;
        for (int part = 1; part <= 9 && num > 0; ++part)
        {
            SCOPED_TRACE(std::string(subject.name) + ", " + std::to_string(part) + " tenths");
            interrupter.numUpdates = 0;
            interrupter.when = std::max(1, num * part / 10);
            std::optional<CancelToken> token;
            if (part % 2 == 0)
            {
                interrupter.act = [] { throw HostsOwn(); };
                EXPECT_THROW(static_cast<void>(subject.run()), HostsOwn);
            }
            else
            {
                token.emplace();
                interrupter.act = [&token] { token->cancel(); };
                const CancelScope scope(*token);
                EXPECT_THROW(static_cast<void>(subject.run()), ZefCancelledException);
            }
            interrupter.when = -1;
            EXPECT_EQ(subject.run(), whole);
        }
    }
}

// At any time, not only where progress is reported, on the pool as well.
TEST_F(Cancel, randomTimesDoNoHarm)
{
    std::mt19937 random(1);
    for (const Subject& subject : getSubjects())
    {
        const auto start = std::chrono::steady_clock::now();
        const std::uint64_t whole = subject.run();
        const auto time = std::chrono::steady_clock::now() - start;
        for (int i = 0; i < 5; ++i)
        {
            const CancelToken token;
            std::thread canceller(
                [=, delay = time * std::generate_canonical<double, 32>(random)]
                {
                    std::this_thread::sleep_for(delay);
                    token.cancel();
                });
            try
            {
                const CancelScope scope(token);
                EXPECT_EQ(subject.run(), whole) << subject.name; // too late
            }
            catch (const ZefCancelledException&)
            {
            }
            canceller.join();
        }
        EXPECT_EQ(subject.run(), whole) << subject.name;
    }
}

TEST_F(Cancel, aMeshInHandStaysWholeAndCanBeWorkedOn)
{
    const RMeshSource rough = jittered(torusSource(120, 40), 0.2, 3);
    const std::vector<std::pair<const char*, std::function<void(std::shared_ptr<Mesh>)>>> vCalls = {
        {"flips", [](const std::shared_ptr<Mesh>& p) { edgeFlips(p); }},
        {"reduce", [](const std::shared_ptr<Mesh>& p) { reduce(p, 3.0, 40.0, true); }},
        {"smoothing", [](const std::shared_ptr<Mesh>& p) { laplacianSmoothing(p, 3); }},
    };
    Interrupter interrupter;
    for (const auto& [name, call] : vCalls)
        for (int when = 1; when < 200; when += 23)
        {
            SCOPED_TRACE(std::string(name) + ", update " + std::to_string(when));
            const std::shared_ptr<Mesh> pMesh = makeMesh(rough);
            const Topology before(*pMesh->getRMesh());
            const CancelToken token;
            interrupter.numUpdates = 0;
            interrupter.when = when;
            interrupter.act = [&token] { token.cancel(); };
            {
                const CancelScope scope(token);
                try
                {
                    call(pMesh);
                }
                catch (const ZefCancelledException&)
                {
                }
            }
            expectConsistent(*pMesh->getRMesh());
            interrupter.when = -1;
            call(pMesh);
            expectSound(*pMesh->getRMesh(), before);
        }
}

// All vertices move at once: the mesh is that of so many iterations, never one in between.
TEST_F(Cancel, smoothingEndsBetweenIterations)
{
    const RMeshSource rough = jittered(torusSource(60, 20), 0.2, 3);
    std::vector<std::uint64_t> vWhole;
    for (int num = 0; num <= 3; ++num)
        vWhole.push_back(improve(rough, [=](const std::shared_ptr<Mesh>& p) { laplacianSmoothing(p, num); }));
    Interrupter interrupter;
    for (int when = 1; when < 60; ++when)
    {
        const std::shared_ptr<Mesh> pMesh = makeMesh(rough);
        const CancelToken token;
        const CancelScope scope(token);
        interrupter.numUpdates = 0;
        interrupter.when = when;
        interrupter.act = [&token] { token.cancel(); };
        try
        {
            laplacianSmoothing(pMesh, 3);
        }
        catch (const ZefCancelledException&)
        {
        }
        EXPECT_NE(std::find(vWhole.begin(), vWhole.end(), getHash(pMesh)), vWhole.end()) << when;
    }
}

TEST_F(Cancel, aWriterTakesItsHalfFileAway)
{
    const Points cloud(400'000, Point3(1.0 / 3.0, 2.0 / 3.0, 1e-5 / 3.0));
    bool bThrown = false;
    for (int trial = 0; trial < 20 && !bThrown; ++trial)
    {
        const TempFile file(".xyz");
        const CancelToken token;
        std::atomic<bool> bEnd{false};
        std::thread canceller(
            [&]
            {
                std::error_code error;
                while (!bEnd && !(std::filesystem::exists(file.path, error) &&
                                  std::filesystem::file_size(file.path, error) > 0))
                    std::this_thread::yield();
                token.cancel();
            });
        try
        {
            const CancelScope scope(token);
            static_cast<void>(writePoints_ASCII(file.c_str(), cloud));
        }
        catch (const ZefCancelledException&)
        {
            bThrown = true;
            EXPECT_FALSE(std::filesystem::exists(file.path));
        }
        bEnd = true;
        canceller.join();
    }
    EXPECT_TRUE(bThrown);
}

TEST_F(Cancel, onlyFilesThatAnExceptionLeavesAreRemoved)
{
    const TempFile file(".xyz", "kept");
    {
        const UnfinishedFile unfinished(file.path);
    }
    EXPECT_EQ(file.read(), "kept");
    const auto failOn = [](const std::string& name)
    {
        const UnfinishedFile unfinished(name);
        throw HostsOwn();
    };
    EXPECT_THROW(failOn(file.path), HostsOwn);
    EXPECT_FALSE(std::filesystem::exists(file.path));
    EXPECT_THROW(failOn("/dev/null"), HostsOwn);
    EXPECT_TRUE(std::filesystem::exists("/dev/null"));
}

TEST_F(Cancel, scopesAddUpAndEndWithTheirBlock)
{
    const auto isWanted = []
    {
        Points none;
        try
        {
            static_cast<void>(estimateAvgSpacing(none));
            return true;
        }
        catch (const ZefCancelledException&)
        {
            return false;
        }
    };
    const CancelToken outer;
    const CancelToken inner;
    {
        const CancelScope outerScope(outer);
        {
            const CancelScope innerScope(inner);
            EXPECT_TRUE(isWanted());
            inner.cancel();
            EXPECT_FALSE(isWanted());
        }
        EXPECT_TRUE(isWanted());
        {
            const CancelToken copy = outer;
            copy.cancel();
            const CancelScope freshScope{CancelToken()};
            EXPECT_FALSE(isWanted());
        }
    }
    EXPECT_TRUE(isWanted());
    // Another thread's calls are not meant.
    const CancelScope scope(inner);
    EXPECT_TRUE(std::async(std::launch::async, isWanted).get());
}

TEST_F(Cancel, jobsOnThePoolStandUnderTheTokenOfTheirCaller)
{
    const std::size_t num = 1'000'000;
    const CancelToken token;
    const CancelScope scope(token);
    std::atomic<std::size_t> numDone = 0;
    EXPECT_THROW(parallelFor(num, 1,
                             [&](std::size_t from, std::size_t to)
                             {
                                 token.cancel();
                                 numDone += to - from;
                             }),
                 ZefCancelledException);
    EXPECT_LT(numDone, num / 2);
    std::size_t numFilled = 0;
    EXPECT_THROW(
        parallelScan(
            1000, [](std::size_t) { return std::size_t{1}; }, [&](std::size_t, std::size_t) { ++numFilled; }),
        ZefCancelledException);
    EXPECT_EQ(numFilled, 0U);
}

class Silent : public ProgressBase
{
public:
    void update(const std::string&, double) override {}
};

// A receiver that waits for the window's thread, which closes another window meanwhile.
TEST_F(Cancel, receiversGoAwayWhileAnotherOneWaits)
{
    std::promise<void> inUpdate;
    std::promise<void> gone;
    std::thread worker(
        [&]
        {
            Interrupter interrupter;
            interrupter.when = 1;
            interrupter.act = [&]
            {
                inUpdate.set_value();
                EXPECT_EQ(gone.get_future().wait_for(30s), std::future_status::ready);
            };
            Points cloud = makeCloud(500, 0.0, 0.0);
            static_cast<void>(estimateAvgSpacing(cloud));
        });
    inUpdate.get_future().wait();
    {
        Silent other;
        subscribe(&other);
    }
    gone.set_value();
    worker.join();
}

} // namespace
} // namespace TARN_ZEF
