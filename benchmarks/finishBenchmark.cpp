// The last stage of a reconstruction, step by step, on the sample surface.
//
// Reported: points per second (items_per_second), the mean time of each step in milliseconds, and the largest memory
// above that of cloud and mesh, in bytes per point. Making the mesh is not timed.
#include "PeakMemory.h"
#include "Silence.h"
#include "api/flatMesh.h"
#include "core/Progress.h"
#include "finish/BorderEvening.h"
#include "finish/CreaseMaker.h"
#include "finish/FoldRemoval.h"
#include "finish/Relaxation.h"
#include "finish/SheetFit.h"
#include "finish/SheetParter.h"
#include "finishSurface.h"
#include "rmesh/RMesh.h"
#include "testDataGenerators.h"
#include "zef_api_functions.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <map>
#include <memory>
#include <string>

namespace TARN_ZEF
{
namespace
{
struct Sample
{
    std::vector<Point3> vPoints;
    std::shared_ptr<Mesh> pMesh;
};

const Sample& getSample(std::size_t num)
{
    static std::map<std::size_t, Sample> mSamples;
    Sample& sample = mSamples[num];
    if (sample.pMesh == nullptr)
    {
        generateSampleSurface(num, SAMPLE_SURFACE_SEED, sample.vPoints);
        sample.pMesh = reconstruct_auto(sample.vPoints, false, 1.0);
    }
    return sample;
}

// The steps in their usual order, each timed; without what is done where creases or folds were found.
class TimedFinish
{
public:
    TimedFinish(const Sample& sample_, benchmark::State& state_)
        : sample(sample_)
        , state(state_)
        , cellSize(sample_.pMesh->getRMesh()->getCellSize())
    {
    }

    void run()
    {
        prepareProgress("Finish");
        part();
        even(4);
        fit();
        FoldReport report;
        time("folds", [&] { FoldRemoval(mesh, report, roundToFloat).run(); });
        finishProgress();
        if (static_cast<std::size_t>(mesh.getNumTriangles()) < sample.pMesh->getRMesh()->getNumT() / 2)
            state.SkipWithError("too few triangles");
    }

private:
    template <typename F>
    void time(const std::string& step, F f)
    {
        const auto start = std::chrono::steady_clock::now();
        f();
        const std::chrono::duration<double, std::milli> spent = std::chrono::steady_clock::now() - start;
        state.counters[step] += benchmark::Counter(spent.count(), benchmark::Counter::kAvgIterations);
    }

    void part()
    {
        FlatMesh flat;
        std::vector<int> vCorners;
        getFlat(*sample.pMesh, flat.vPoints, vCorners);
        flat.vCorners.assign(vCorners.begin(), vCorners.end());
        PartReport report;
        time("part", [&] { SheetParter(flat, report, cellSize).run(); });
        vCorners.assign(flat.vCorners.begin(), flat.vCorners.end());
        time("load",
             [&]
             {
                 if (!mesh.build(flat.vPoints, vCorners))
                     state.SkipWithError("not manifold");
             });
    }

    void even(int numRounds)
    {
        Relaxation relaxation(mesh);
        for (int i = 0; i < numRounds; ++i)
        {
            time("flip", [&] { relaxation.flip(); });
            time("smooth", [&] { relaxation.smooth(); });
        }
        time("collapse", [&] { (void)relaxation.collapse(0.94); });
        BorderEvening borders(mesh);
        time("borders",
             [&]
             {
                 borders.trim();
                 borders.smooth();
             });
    }

    void fit()
    {
        SheetFit sheetFit(mesh, sample.vPoints, cellSize, 0.75);
        Progress& progress = *getRootProgress()->getChildProgressSetTodo("FI_fit", 1);
        time("fit", [&] { sheetFit.run(progress); });
        CreaseMaker maker(mesh, sheetFit.getSurfaces(), cellSize, sheetFit.getNoise(), sheetFit.getRadius(),
                          sheetFit.getRoom());
        time("crease", [&] { maker.run(); });
        even(3);
        time("refit", [&] { sheetFit.repeat(progress); });
    }

    const Sample& sample;
    benchmark::State& state;
    double cellSize;
    HalfEdgeMesh mesh;
};

void BM_finishSteps(benchmark::State& state)
{
    const Silence silence;
    const Sample& sample = getSample(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state)
        TimedFinish(sample, state).run();
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_finishSurface(benchmark::State& state)
{
    const Silence silence;
    const Sample& sample = getSample(static_cast<std::size_t>(state.range(0)));
    const PeakMemory memory;
    for (auto _ : state)
    {
        FinishOptions options;
        options.bRoundToFloat = true;
        const std::shared_ptr<Mesh> pMesh = finishSurface(*sample.pMesh, sample.vPoints, options);
        if (pMesh->getRMesh()->getNumT() < sample.pMesh->getRMesh()->getNumT() / 2)
            state.SkipWithError("too few triangles");
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.counters["bytes_per_point"] =
        static_cast<double>(memory.getBytes()) / static_cast<double>(state.range(0));
}

void sizes(benchmark::internal::Benchmark* pBenchmark)
{
    pBenchmark->RangeMultiplier(10)->Range(10000, 1000000)->Unit(benchmark::kMillisecond)->UseRealTime();
}
BENCHMARK(BM_finishSteps)->Apply(sizes);
BENCHMARK(BM_finishSurface)->Apply(sizes);

} // namespace
} // namespace TARN_ZEF
