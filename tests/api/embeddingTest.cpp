// What a host that embeds the library relies on: words go to its receiver alone, refusals tell what is wrong,
// and progress starts afresh however a call ends.
#include "zef.h"

#include "core/Progress.h"
#include "helpers/DescriptorCapture.h"
#include "helpers/PipelineMesh.h"
#include "helpers/StreamCapture.h"
#include "helpers/finishedMeshes.h"
#include "helpers/meshShapes.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <limits>
#include <stdexcept>
#include <thread>
#include <typeindex>
#include <utility>

namespace TARN_ZEF
{
namespace
{
using Points = std::vector<Point3>;

const double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
const double INFINITE = std::numeric_limits<double>::infinity();
const char* const NO_FILE = "no/such/folder/file";

// The receiver for the time of a test.
class Receiving
{
public:
    explicit Receiving(MessageReceiver receiver) { setMessageReceiver(std::move(receiver)); }
    ~Receiving() { setMessageReceiver(nullptr); }
    Receiving(const Receiving&) = delete;
    Receiving& operator=(const Receiving&) = delete;
};

void ignore(const Message&) {}

struct Call
{
    const char* name;
    std::function<void()> run;
};

struct Refusal
{
    const char* name;
    std::function<void()> run;
    std::type_index type;
    std::string words;     // what() begins so
    std::string condition; // as printed
};

std::shared_ptr<Mesh> makeCube()
{
    return makeFinished(jittered(cubeSource(4, true), 0.1, 1));
}

void reconstruct(Points cloud, double factor)
{
    static_cast<void>(reconstruct_auto(cloud, false, factor));
}

void reconstructAt(Points cloud, double spacing)
{
    static_cast<void>(reconstruct_abs(cloud, false, spacing));
}

void remesh(std::size_t numCorners, double spacing)
{
    Points soup = boxSoup({0.0, 0.0, 0.0}, {1.0, 1.0, 1.0});
    soup.resize(numCorners);
    static_cast<void>(melt(soup, spacing, 30.0));
}

void sample(std::size_t numCorners, double spacing)
{
    Points soup = boxSoup({0.0, 0.0, 0.0}, {1.0, 1.0, 1.0});
    soup.resize(numCorners);
    Points result;
    toCloud(soup, spacing, 30.0, result);
}

void estimate(Points cloud)
{
    static_cast<void>(estimateAvgSpacing(cloud));
}

std::vector<Refusal> getRefusals()
{
    const std::shared_ptr<Mesh> none;
    const Points ball = makeCloud(500, 0.0, 0.0);
    const Points twins(50, Point3(1, 2, 3));
    const Points beyond = {{-1e308, 0, 0}, {1e308, 0, 0}, {0, 1e308, 0}};
    const std::string finite = "std::isfinite(edge) && std::isfinite(getMaxExtent())";
    const std::string numbers = "!isNaN(maxEdgeLength) && !isNaN(maxDevAngle)";
    const std::type_index badArgument = typeid(ZefBadArgument);
    const std::type_index unusable = typeid(ZefUnusablePoints);
    return {
        {"factor 0", [=] { reconstruct(ball, 0.0); }, badArgument, "spacing factor is 0; it must",
         "usedSpacing>0"},
        {"factor -1", [=] { reconstruct(ball, -1.0); }, badArgument, "spacing factor is -1", "usedSpacing>0"},
        {"factor NaN", [=] { reconstruct(ball, NOT_A_NUMBER); }, badArgument, "spacing factor is nan",
         "usedSpacing>0"},
        {"factor infinite", [=] { reconstruct(ball, INFINITE); }, badArgument, "spacing factor is inf",
         finite},
        {"factor too small", [=] { reconstruct(ball, 1e-9); }, badArgument,
         "spacing factor is 1e-09, which makes", "numCReal>=numReqC"},
        {"spacing 0", [=] { reconstructAt(ball, 0.0); }, badArgument, "spacing is 0; it must",
         "usedSpacing>0"},
        {"spacing -1", [=] { reconstructAt(ball, -1.0); }, badArgument, "spacing is -1", "usedSpacing>0"},
        {"spacing NaN", [=] { reconstructAt(ball, NOT_A_NUMBER); }, badArgument, "spacing is nan",
         "usedSpacing>0"},
        {"spacing infinite", [=] { reconstructAt(ball, INFINITE); }, badArgument, "spacing is inf", finite},
        {"spacing too small", [=] { reconstructAt(ball, 1e-9); }, badArgument,
         "spacing is 1e-09; that is too small", "numCReal>=numReqC"},
        {"spacing of a soup", [] { remesh(36, 0.0); }, badArgument, "spacing is 0; it must", "usedSpacing>0"},
        {"spacing of samples", [] { sample(36, -2.0); }, badArgument, "spacing is -2; it must",
         "usedSpacing>0"},
        {"corners of a soup", [] { remesh(35, 0.1); }, badArgument, "35 triangle corners are not",
         "!bMelt || v.size() % TRIANGLE_CORNERS == 0"},
        {"corners of samples", [] { sample(34, 0.1); }, badArgument, "34 triangle corners are not",
         "!bMelt || v.size() % TRIANGLE_CORNERS == 0"},
        {"area of a soup", [] { remesh(36, 1e-5); }, typeid(ZefTooManyPoints), "the surface passes through",
         "num <= MAX_POINTS"},
        {"area of samples", [] { sample(36, 1e-5); }, typeid(ZefTooManyPoints), "the surface passes through",
         "num <= MAX_POINTS"},
        {"smoothing without end", [] { laplacianSmoothing(makeCube(), 20'000'000); }, badArgument,
         "20000000 smoothing iterations", "numIterations<=MAX_SMOOTHING_PASSES"},
        {"one point",
         [] {
             reconstruct({{1, 2, 3}}, 1.0);
         },
         unusable, "no spacing can be detected: there is a single", "usedSpacing>0"},
        {"equal points", [=] { reconstruct(twins, 1.0); }, unusable,
         "no spacing can be detected: all 50 points", "usedSpacing>0"},
        {"equal points, estimate", [=] { estimate(twins); }, unusable,
         "no spacing can be detected: all 50 points", "usedSpacing>0"},
        {"beyond all numbers, detected", [=] { reconstruct(beyond, 1.0); }, unusable,
         "the coordinates reach from -1e+308, 0, 0 to 1e+308", "!vDiffLevels.empty()"},
        {"beyond all numbers", [=] { reconstructAt(beyond, 1.0); }, unusable,
         "the coordinates reach from -1e+308, 0, 0 to 1e+308", "numCReal>=numReqC"},
        {"too many points", [] { Cloud::requireNumber(3'000'000'000); }, typeid(ZefTooManyPoints),
         "3000000000 points are too many; at most 2147483647", "v.size() <= MAX_POINTS"},
        {"reduce without mesh", [=] { reduce(none, 1.0, 10.0); }, badArgument, "the mesh pointer is empty",
         "pMesh!=0"},
        {"edgeFlips without mesh", [=] { edgeFlips(none); }, badArgument, "the mesh pointer is empty",
         "pMesh!=0"},
        {"annealing without mesh", [=] { edgeFlipsSimA(none); }, badArgument, "the mesh pointer is empty",
         "pMesh!=0"},
        {"smoothing without mesh", [=] { laplacianSmoothing(none, 1); }, badArgument,
         "the mesh pointer is empty", "pMesh!=0"},
        {"findHoles without mesh", [=] { findHoles(none); }, badArgument, "the mesh pointer is empty",
         "pMesh!=0"},
        {"writing without mesh", [=] { static_cast<void>(writeMesh_auto("a.stl", none, true)); }, badArgument,
         "the mesh pointer is empty", "pMesh!=0"},
        {"length NaN", [] { reduce(makeCube(), NOT_A_NUMBER, 10.0); }, badArgument, "the maximum edge length",
         numbers},
        {"angle NaN", [] { reduce(makeCube(), 1.0, NOT_A_NUMBER, true); }, badArgument,
         "the maximum deviation angle", numbers},
        {"findHoles", [] { findHoles(makeCube()); }, typeid(ZefRefusedException), "the scene holes.list",
         "bAuthorized"},
    };
}

// Every public call that can talk or report, with success or with a result that tells of a failure.
std::vector<Call> getCalls()
{
    const auto file = std::make_shared<TempFile>(".xyz");
    const auto strange = std::make_shared<TempFile>(".strange");
    const auto points = std::make_shared<Points>(makeCloud(500, 0.0, 0.0));
    const auto writeMesh = [=](const char* extension)
    { static_cast<void>(writeMesh_auto(TempFile(extension).path, makeCube(), true)); };
    const auto writePoints = [=](std::string name)
    { static_cast<void>(writePoints_auto(name, *points, true)); };
    const auto readPoints = [](std::string name)
    {
        Points read;
        static_cast<void>(readPoints_auto(name, read));
        static_cast<void>(readPly(name.c_str(), false, read));
        static_cast<void>(readSTL_ASCII(name.c_str(), read));
        static_cast<void>(readPoints_BIN(name.c_str(), read));
    };
    return {
        {"reconstruct_auto", [=] { reconstruct(*points, 1.0); }},
        {"reconstruct_abs", [=] { reconstructAt(*points, 1.6); }},
        {"no points",
         [] {
             reconstruct({{NOT_A_NUMBER, 0, 0}}, 1.0);
         }},
        {"melt", [] { remesh(36, 0.1); }},
        {"toCloud", [] { sample(36, 0.1); }},
        {"toCloud of nothing", [] { sample(0, 0.1); }},
        {"estimateAvgSpacing", [=] { estimate(*points); }},
        {"reduce", [] { reduce(makeCube(), 2.0, 20.0); }},
        {"edgeFlips", [] { edgeFlips(makeCube()); }},
        {"edgeFlipsSimA", [] { edgeFlipsSimA(makeCube()); }},
        {"laplacianSmoothing", [] { laplacianSmoothing(makeCube(), 2); }},
        {"printVersion", [] { printVersion(); }},
        {"printStatistics", [] { makeCube()->printStatistics("cube"); }},
        {"getCartesian", [] { static_cast<void>(Vector3(1, 2, 3).getCartesian(7)); }},
        {"normalize", [] { static_cast<void>(normalize(Vector3(0, 0, 0))); }},
        {"mesh as STL", [=] { writeMesh(".stl"); }},
        {"mesh as PLY", [=] { writeMesh(".ply"); }},
        {"mesh as scene", [=] { writeMesh(".list"); }},
        {"mesh of unknown type", [=] { writeMesh(".strange"); }},
        {"mesh to no folder", [] { static_cast<void>(makeCube()->writeStl_ASCII(NO_FILE)); }},
        {"points", [=] { writePoints(file->path); }},
        {"points of unknown type", [=] { writePoints(strange->path); }},
        {"points to no folder", [=] { writePoints(std::string(NO_FILE) + ".bin"); }},
        {"points back", [=] { readPoints(file->path); }},
        {"points from unknown type", [=] { readPoints(strange->path); }},
        {"points from no folder", [=] { readPoints(std::string(NO_FILE) + ".xyz"); }},
    };
}

class FractionRecorder : public ProgressBase
{
public:
    void update(const std::string&, double fraction) override { vFractions.push_back(fraction); }
    std::vector<double> vFractions;
};

void runRefused(const Refusal& refusal)
{
    try
    {
        refusal.run();
        ADD_FAILURE() << "not refused";
    }
    catch (const ZefRefusedException& refused)
    {
        EXPECT_EQ(std::type_index(typeid(refused)), refusal.type) << typeid(refused).name();
        EXPECT_EQ(std::string(refused.what()).rfind(refusal.words, 0), 0u) << refused.what();
    }
}
} // namespace

TEST(Embedding, aReceiverGetsEveryWordAndTheStreamsNone)
{
    std::size_t numMessages = 0;
    const Receiving receiving([&](const Message&) { ++numMessages; });
    std::vector<Call> vCalls = getCalls();
    for (const Refusal& refusal : getRefusals())
        vCalls.push_back({refusal.name, [refusal] { runRefused(refusal); }});
    std::string loud;
    std::string out;
    std::string err;
    {
        const DescriptorCapture streams;
        for (const Call& call : vCalls)
        {
            call.run();
            if (!(streams.getOut() + streams.getErr()).empty() && loud.empty())
                loud = call.name;
        }
        out = streams.getOut();
        err = streams.getErr();
    }
    EXPECT_EQ(loud, "");
    EXPECT_EQ(out, "");
    EXPECT_EQ(err, "");
    EXPECT_GT(numMessages, getRefusals().size());
}

TEST(Embedding, withoutAReceiverWordsStandWhereTheyAlwaysStood)
{
    struct Row
    {
        std::function<void()> run;
        std::string out;
        std::string err;
    };
    const std::string frame = "\n      [ZEF Message] ";
    std::string noType = "a.foo";
    Points points;
    const std::string missing = std::string(NO_FILE) + ".xyz";
    for (const Row& row :
         std::vector<Row>{
             {[] { printVersion(); }, "ZEF, version 1.11\n", ""},
             {[] { static_cast<void>(Vector3().getCartesian(7)); }, "", "getCartesian for i=7\n"},
             {[] { static_cast<void>(normalize(Vector3())); }, "",
              "\n\n** warning: normalize(const Vector3& other), Null length vector!\n"},
             {[&] { EXPECT_FALSE(readPoints_auto(noType, points)); }, "",
              "Filename extension of [a.foo] is not valid, expected *.ply, *.xyz or *.bin\n"},
             {[&] { EXPECT_FALSE(readPoints_ASCII(missing.c_str(), points)); }, missing + " is unreadable\n",
              ""},
             {[&] { EXPECT_FALSE(readPly(missing.c_str(), true, points)); },
              frame + "readPly, ERROR: Failed to open " + missing + "\n\n", ""},
         })
    {
        const StreamCapture out(std::cout);
        const StreamCapture err(std::cerr);
        row.run();
        EXPECT_EQ(out.text(), row.out);
        EXPECT_EQ(err.text(), row.err);
    }
}

TEST(Embedding, aRefusalTellsTheUserWhatIsWrongAndPrintsTheCondition)
{
    for (const Refusal& refusal : getRefusals())
    {
        SCOPED_TRACE(refusal.name);
        const StreamCapture out;
        runRefused(refusal);
        EXPECT_TRUE(out.contains("\n      [ZEF Message] ASSEX, ERROR: Condition [ " + refusal.condition +
                                 " failed ]\n\n"))
            << out.text();
        std::string received;
        const Receiving receiving([&](const Message& message) { received = message.text; });
        runRefused(refusal);
        EXPECT_EQ(received.rfind(refusal.words, 0), 0u) << received;
    }
    for (const char* name : {"", "a", ".ply", "abcd"})
    {
        if (std::string(name) == ".ply")
            EXPECT_EQ(getFileType(name), FT_PLY);
        else
            EXPECT_THROW(static_cast<void>(getFileType(name)), std::out_of_range);
    }
}

TEST(Embedding, progressStartsAfreshHoweverACallEnds)
{
    const Receiving receiving(ignore);
    std::vector<Call> vCalls = getCalls();
    for (const Refusal& refusal : getRefusals())
        vCalls.push_back({refusal.name, [refusal] { runRefused(refusal); }});
    Points ball = makeCloud(500, 0.0, 0.0);
    FractionRecorder recorder;
    subscribe(&recorder);
    for (const Call& call : vCalls)
    {
        SCOPED_TRACE(call.name);
        call.run();
        EXPECT_TRUE(ownsProgress());
        EXPECT_TRUE(getRootProgress()->getChildNames().empty());
        recorder.vFractions.clear();
        estimate(ball);
        ASSERT_FALSE(recorder.vFractions.empty());
        EXPECT_LT(recorder.vFractions.front(), 0.5);
        EXPECT_EQ(recorder.vFractions.back(), 1.0);
    }
}

TEST(Embedding, receiversAreReplacedSafelyWhileCallsRun)
{
    constexpr int NUM_WORDS = 2000;
    struct State
    {
        ~State() { bAlive = false; }
        std::atomic<bool> bAlive = true;
        std::atomic<int> numInside = 0;
    };
    std::atomic<int> numReceived = 0;
    std::atomic<int> numRunning = 2;
    std::vector<std::thread> vThreads;
    const auto replace = [&](State& state)
    {
        setMessageReceiver(
            [&](const Message&)
            {
                EXPECT_TRUE(state.bAlive);
                EXPECT_EQ(++state.numInside, 1);
                --state.numInside;
                ++numReceived;
            });
    };
    State first;
    replace(first);
    for (int i = 0; i < 2; ++i)
        vThreads.emplace_back(
            [&]
            {
                for (int k = 0; k < NUM_WORDS; ++k)
                    printVersion();
                --numRunning;
            });
    while (numRunning > 0)
    {
        State passing;
        replace(passing);
        std::this_thread::yield();
        replace(first);
    }
    for (std::thread& thread : vThreads)
        thread.join();
    setMessageReceiver(nullptr);
    EXPECT_EQ(numReceived, 2 * NUM_WORDS);
}

TEST(Embedding, whatAReceiverThrowsChangesNothing)
{
    const Receiving receiving([](const Message&) { throw std::runtime_error("the host's own"); });
    printVersion();
    EXPECT_THROW(reconstruct(makeCloud(500, 0.0, 0.0), 0.0), ZefBadArgument);
}

} // namespace TARN_ZEF
