// How long each public call goes on after it was cancelled.
//
//     zef_cancel_latency [points [cancels a call [first letters of the calls]]]   1,000,000 and 3 if not given
//
// Each call runs once to its end and then again and again, cancelled at a random time of its run: each time in the next
// part of it. Printed: the time of the whole call, and how long after cancel() the exception arrived, in the median and
// at worst; and at worst the time of all processors that the process took meanwhile, which a busy machine does not
// change. A call that only repeats itself is not run to its end. The machine should be idle: a thread that gets no
// processor cannot look. With 3 cancels a call it takes about three minutes on two cores. At the end the reconstruction runs once more; its
// triangles must be those of the first one.
#include "zef.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <functional>
#include <random>
#include <string>
#include <thread>
#include <vector>

using namespace TARN_ZEF;

namespace
{
using Clock = std::chrono::steady_clock;
using Points = std::vector<Point3>;

double getSeconds(Clock::time_point from, Clock::time_point to)
{
    return std::chrono::duration<double>(to - from).count();
}

// prepare is not timed: it makes what the call changes.
struct Subject
{
    std::string name;
    std::function<void()> prepare;
    std::function<void()> run;
    double lookedAt = 0.0; // seconds of its run, if it is not to run to its end
};

// From cancel() to the exception, in seconds; below 0 if the call was through before.
struct Latency
{
    double seconds = -1.0;
    double processor = 0.0; // of all threads of the process
};

double getProcessorSeconds()
{
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

Latency cancelAfter(const Subject& subject, double delay)
{
    subject.prepare();
    const CancelToken token;
    const CancelScope scope(token);
    Clock::time_point cancelled;
    double processorThen = 0.0;
    std::thread canceller(
        [&]
        {
            std::this_thread::sleep_for(std::chrono::duration<double>(delay));
            cancelled = Clock::now();
            processorThen = getProcessorSeconds();
            token.cancel();
        });
    bool bThrown = false;
    try
    {
        subject.run();
    }
    catch (const ZefCancelledException&)
    {
        bThrown = true;
    }
    const Clock::time_point end = Clock::now();
    const double processor = getProcessorSeconds();
    canceller.join();
    return bThrown ? Latency{getSeconds(cancelled, end), processor - processorThen} : Latency();
}

double getSecondsOf(const Subject& subject)
{
    subject.prepare();
    const CancelToken token;
    const CancelScope scope(token); // looks as the cancelled runs do
    const Clock::time_point start = Clock::now();
    subject.run();
    return getSeconds(start, Clock::now());
}

void measure(const Subject& subject, int numCancels, double& worst)
{
    const double whole = subject.lookedAt > 0.0 ? subject.lookedAt : getSecondsOf(subject);
    std::vector<double> vLatencies;
    double worstProcessor = 0.0;
    std::mt19937 random(1);
    for (int i = 0; i < numCancels; ++i)
    {
        const double delay = whole * (i + std::generate_canonical<double, 32>(random)) / numCancels;
        const Latency latency = cancelAfter(subject, delay);
        if (latency.seconds < 0.0)
            continue;
        vLatencies.push_back(latency.seconds);
        worstProcessor = std::max(worstProcessor, latency.processor);
    }
    std::sort(vLatencies.begin(), vLatencies.end());
    const bool bAny = !vLatencies.empty();
    std::printf("%-24s %8.2f s %4zu %8.0f ms %8.0f ms %8.0f ms\n", subject.name.c_str(), whole,
                vLatencies.size(), bAny ? 1e3 * vLatencies[vLatencies.size() / 2] : 0.0,
                bAny ? 1e3 * vLatencies.back() : 0.0, 1e3 * worstProcessor);
    std::fflush(stdout);
    worst = bAny ? std::max(worst, vLatencies.back()) : worst;
}

Points getCornersOf(const Mesh& mesh)
{
    std::vector<Point3*> vCorners;
    mesh.getTriangles(vCorners);
    Points corners;
    corners.reserve(vCorners.size());
    for (const Point3* pCorner : vCorners)
        corners.push_back(*pCorner);
    return corners;
}

TriangleData getTrianglesOf(const Mesh& mesh)
{
    std::vector<Point3*> vVertices;
    std::vector<int> vCorners;
    mesh.getVertexIndexData(vVertices, vCorners);
    TriangleData result;
    for (const Point3* pVertex : vVertices)
        result.vPoints.push_back(*pVertex);
    result.vCorners.assign(vCorners.begin(), vCorners.end());
    return result;
}

class Bench
{
public:
    explicit Bench(std::size_t num)
    {
        generateSampleSurface(num, 1, cloud);
        pFirst = reconstruct_auto(cloud, false, 1.0);
        soup = getCornersOf(*pFirst);
        edge = pFirst->getAverageEdgeLength();
        triangles = getTrianglesOf(*pFirst);
        tear();
        pointData.vPoints = cloud;
        folder = (std::filesystem::temp_directory_path() / "zef_cancel_latency").string();
        std::filesystem::create_directories(folder);
        std::string name = folder + "/cloud.ply";
        bool bWritten = writePoints_auto(name, cloud, true);
        bWritten = writePoints_ASCII((folder + "/cloud.xyz").c_str(), cloud) && bWritten;
        bWritten = writePoints_BIN((folder + "/cloud.bin").c_str(), cloud) && bWritten;
        bWritten = pFirst->writeStl_ASCII(folder + "/mesh.stl") && bWritten;
        bWritten = pFirst->writePly_BIN(folder + "/mesh.ply") && bWritten; // text, see there
        if (!bWritten)
            std::exit(1);
    }
    ~Bench() { std::filesystem::remove_all(folder); }
    Bench(const Bench&) = delete;
    Bench& operator=(const Bench&) = delete;

    std::vector<Subject> getSubjects()
    {
        std::vector<Subject> v;
        addMakers(v);
        addJudges(v);
        addImprovers(v);
        addEarlierReaders(v);
        addEarlierWriters(v);
        addFormats(v);
        return v;
    }

    [[nodiscard]] bool isAsBefore()
    {
        const Points again = getCornersOf(*reconstruct_auto(cloud, false, 1.0));
        return std::equal(again.begin(), again.end(), soup.begin(), soup.end());
    }

private:
    void tear()
    {
        TriangleData torn;
        torn.vPoints = triangles.vPoints;
        for (std::size_t i = 0; i < triangles.vCorners.size(); ++i)
            if (i / 3 % TRIANGLES_A_HOLE != 0)
                torn.vCorners.push_back(triangles.vCorners[i]);
        pTorn = makeMesh(torn);
        vTornLoops = findBorderLoops(*pTorn);
    }

    void add(std::vector<Subject>& v, const char* name, std::function<void()> run)
    {
        v.push_back({name, [this] { pMesh.reset(); }, std::move(run)});
    }

    void addMakers(std::vector<Subject>& v)
    {
        add(v, "reconstruct_auto", [this] { pMesh = reconstruct_auto(cloud, false, 1.0); });
        add(v, "reconstruct_auto smooth", [this] { pMesh = reconstruct_auto(cloud, true, 1.0); });
        add(v, "autoReconstruct", [this] { pMesh = autoReconstruct(cloud); });
        add(v, "estimateAvgSpacing", [this] { static_cast<void>(estimateAvgSpacing(cloud)); });
        add(v, "melt", [this] { pMesh = melt(soup, edge, 30.0); });
        add(v, "toCloud",
            [this]
            {
                Points samples;
                toCloud(soup, edge, 30.0, samples);
            });
        add(v, "remesh", [this] { pMesh = remesh(soup); });
        add(v, "remesh outer", [this] { pMesh = remesh(soup, makeOuterOptions()); });
        add(v, "estimateMemory",
            [this] { static_cast<void>(estimateMemory(cloud, 1.0, ForecastCall::RECONSTRUCT_AUTO)); });
        add(v, "makeMesh", [this] { pMesh = makeMesh(triangles); });
    }

    void addJudges(std::vector<Subject>& v)
    {
        add(v, "checkMesh", [this] { static_cast<void>(checkMesh(*pFirst)); });
        add(v, "compareMeshes", [this] { static_cast<void>(compareMeshes(*pFirst, *pTorn)); });
        add(v, "findBorderLoops", [this] { static_cast<void>(findBorderLoops(*pFirst)); });
        add(v, "fillHoles", [this] { pMesh = fillHoles(*pTorn, vTornLoops); });
        add(v, "finishSurface", [this] { pMesh = finishSurface(*pFirst, cloud); });
        add(v, "finishSurface alone", [this] { pMesh = finishSurface(*pFirst); });
    }

    void addImprover(std::vector<Subject>& v, const char* name, std::function<void()> run,
                     double lookedAt = 0.0)
    {
        v.push_back({name, [this] { pMesh = makeMesh(triangles); }, std::move(run), lookedAt});
    }

    void addImprovers(std::vector<Subject>& v)
    {
        addImprover(v, "reduce", [this] { reduce(pMesh, 3.0 * edge, 40.0, true); });
        addImprover(v, "edgeFlips", [this] { edgeFlips(pMesh); });
        addImprover(v, "laplacianSmoothing", [this] { laplacianSmoothing(pMesh, 3); });
        addImprover(
            v, "edgeFlipsSimA", [this] { edgeFlipsSimA(pMesh); }, SECONDS_OF_ANNEALING);
    }

    // read: bool(const char* name, Points&)
    template <typename Read>
    void addReader(std::vector<Subject>& v, const char* label, const char* name, Read read)
    {
        add(v, label,
            [this, name, read]
            {
                Points points;
                if (!read((folder + name).c_str(), points))
                    std::exit(1);
            });
    }

    void addEarlierReaders(std::vector<Subject>& v)
    {
        addReader(v, "read text", "/cloud.xyz", readPoints_ASCII);
        addReader(v, "read binary", "/cloud.bin", readPoints_BIN);
        addReader(v, "read PLY points", "/cloud.ply",
                  [](const char* name, Points& points) { return readPly(name, true, points); });
        addReader(v, "read PLY triangles", "/mesh.ply",
                  [](const char* name, Points& points) { return readPly(name, false, points); });
        addReader(v, "read STL", "/mesh.stl", readSTL_ASCII);
    }

    void addEarlierWriters(std::vector<Subject>& v)
    {
        const auto addWriter = [&](const char* label, const char* extension, auto write)
        {
            add(v, label,
                [this, extension, write]
                {
                    if (!write(folder + "/out" + extension))
                        std::exit(1);
                });
        };
        addWriter("write points, text", ".xyz",
                  [this](const std::string& name) { return writePoints_ASCII(name.c_str(), cloud); });
        addWriter("write points, binary", ".bin",
                  [this](const std::string& name) { return writePoints_BIN(name.c_str(), cloud); });
        addWriter("write mesh, PLY text", ".ply",
                  [this](const std::string& name) { return pFirst->writePly_BIN(name); });
        addWriter("write mesh, PLY binary", ".ply",
                  [this](const std::string& name) { return pFirst->writePly_ASCII(name); });
        addWriter("write mesh, STL", ".stl",
                  [this](const std::string& name) { return pFirst->writeStl_ASCII(name); });
        addWriter("write mesh, scene", ".list",
                  [this](const std::string& name) { return pFirst->writeGeomview_ASCII(name); });
    }

    [[nodiscard]] static RemeshOptions makeOuterOptions()
    {
        RemeshOptions options;
        options.bOuter = true;
        return options;
    }

    // Each format written, then read.
    void addFormats(std::vector<Subject>& v)
    {
        for (const char* const extension : {"ply", "obj", "off", "pcd", "las", "bin", "xyz", "pts", "ptx"})
            addFormat(
                v, std::string("points ") + extension,
                [this](const std::string& name) { writePoints(name, pointData); },
                [](const std::string& name) { static_cast<void>(readPoints(name)); });
        for (const char* const extension : {"ply", "stl", "obj", "off", "glb"})
            addFormat(
                v, std::string("mesh ") + extension,
                [this](const std::string& name) { writeMesh(name, *pFirst); },
                [](const std::string& name) { static_cast<void>(readTriangles(name)); });
    }

    template <typename Write, typename Read>
    void addFormat(std::vector<Subject>& v, const std::string& kind, Write write, Read read)
    {
        const std::string extension = kind.substr(kind.find(' ') + 1);
        const std::string written = folder + "/written." + extension;
        const std::string toRead = folder + "/toRead." + extension;
        const auto prepareFile = [write, toRead]
        {
            if (!std::filesystem::exists(toRead))
                write(toRead);
        };
        v.push_back({"write " + kind, [] {}, [write, written] { write(written); }});
        v.push_back({"read " + kind, prepareFile, [read, toRead] { read(toRead); }});
    }

    static constexpr std::size_t TRIANGLES_A_HOLE = 200;
    static constexpr double SECONDS_OF_ANNEALING = 6.0; // of 31 passes, some of them

    Points cloud;
    Points soup;
    PointData pointData;    // the cloud
    TriangleData triangles; // of pFirst, as is soup
    double edge = 0.0;
    std::string folder;
    std::shared_ptr<Mesh> pFirst;
    std::shared_ptr<Mesh> pTorn; // pFirst with many holes
    std::vector<BorderLoop> vTornLoops;
    std::shared_ptr<Mesh> pMesh; // what the call in hand makes or changes
};
} // namespace

int main(int argc, char** argv)
{
    setMessageReceiver([](const Message&) {});
    Bench bench(argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 1'000'000);
    const int numCancels = argc > 2 ? std::atoi(argv[2]) : 3;
    std::printf("call                     to its end    n      median       worst   processor\n");
    double worst = 0.0;
    for (const Subject& subject : bench.getSubjects())
        if (argc <= 3 || subject.name.rfind(argv[3], 0) == 0)
            measure(subject, numCancels, worst);
    const bool bSame = bench.isAsBefore();
    std::printf("worst of all: %.0f ms; the next call gives %s\n", 1e3 * worst,
                bSame ? "the same mesh" : "ANOTHER MESH");
    return bSame ? 0 : 1;
}
