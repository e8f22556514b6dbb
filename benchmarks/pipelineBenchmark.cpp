// Every stage of a reconstruction, and the whole call, on the sample surface.
//
// Reported: points per second (items_per_second), and the largest memory above that of the input, in bytes
// per point. The library's messages are switched off meanwhile.
#include "PeakMemory.h"
#include "Silence.h"
#include "cmesh/CMesh.h"
#include "core/Progress.h"
#include "extraction/Voro.h"
#include "intake/Cloud.h"
#include "intake/CloudMgr.h"
#include "lattice/Bundle.h"
#include "lattice/BundleMap.h"
#include "lattice/Calc.h"
#include "repair/Top.h"
#include "rmesh/RMesh.h"
#include "rmesh/RTop.h"
#include "testDataGenerators.h"
#include "zef_api_functions.h"

#include <benchmark/benchmark.h>

#include <map>
#include <memory>

namespace TARN_ZEF
{
namespace
{
std::vector<Point3>& samplePoints(std::size_t num)
{
    static std::map<std::size_t, std::vector<Point3>> mSamples;
    std::vector<Point3>& v = mSamples[num];
    if (v.empty())
        generateSampleSurface(num, SAMPLE_SURFACE_SEED, v);
    return v;
}

void report(benchmark::State& state, const PeakMemory& memory)
{
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.counters["bytes_per_point"] =
        static_cast<double>(memory.getBytes()) / static_cast<double>(state.range(0));
}

// The stages before the one that is timed.
struct Intake
{
    explicit Intake(const std::vector<Point3>& vPoints)
    {
        prepareProgress("Reconstruct");
        cloudMgr.addPoints(vPoints, -1.0, 1.0, false, 361.0, false);
        cloudMgr.getBundles(vBundles, pCalc);
        std::vector<BundleMap::Entry> vEntries;
        for (Bundle* pBundle : vBundles)
            vEntries.emplace_back(pBundle->ccd, pBundle);
        map.assignSorted(std::move(vEntries));
    }
    CloudMgr cloudMgr;
    Calc* pCalc = nullptr;
    std::vector<Bundle*> vBundles;
    BundleMap map;
};

// Spacing, node smoothing, plane fits and one bundle a cell.
void BM_intake(benchmark::State& state)
{
    const std::vector<Point3>& vPoints = samplePoints(static_cast<std::size_t>(state.range(0)));
    const Silence silence;
    const PeakMemory memory;
    for (auto _ : state)
    {
        const Intake intake(vPoints);
        if (intake.vBundles.size() < vPoints.size() / 3)
            state.SkipWithError("too few cells");
    }
    report(state, memory);
}

void BM_extraction(benchmark::State& state)
{
    const Silence silence;
    Intake intake(samplePoints(static_cast<std::size_t>(state.range(0))));
    const PeakMemory memory;
    for (auto _ : state)
    {
        Voro voro(intake.pCalc, &intake.map, TM_FAT);
        voro.fatExtractTriangles();
        if (voro.getCMesh()->getNumAliveT() < intake.vBundles.size())
            state.SkipWithError("too few triangles");
    }
    report(state, memory);
}

// All passes of the topology repair, on a fresh extraction.
void BM_repair(benchmark::State& state)
{
    const Silence silence;
    const std::vector<Point3>& vPoints = samplePoints(static_cast<std::size_t>(state.range(0)));
    const PeakMemory memory;
    for (auto _ : state)
    {
        state.PauseTiming();
        Intake intake(vPoints);
        Voro voro(intake.pCalc, &intake.map, TM_FAT);
        voro.fatExtractTriangles();
        state.ResumeTiming();
        Top(voro.getCMesh(), intake.pCalc).run(&voro);
        if (voro.getCMesh()->getNumAliveT() < intake.vBundles.size())
            state.SkipWithError("too few triangles");
    }
    report(state, memory);
}

// From the combinatorial mesh to the clean refined one.
void BM_refinedMesh(benchmark::State& state)
{
    const Silence silence;
    Intake intake(samplePoints(static_cast<std::size_t>(state.range(0))));
    Voro voro(intake.pCalc, &intake.map, TM_FAT);
    voro.fatExtractTriangles();
    const PeakMemory memory;
    for (auto _ : state)
    {
        RMesh mesh(voro.getCMesh());
        RTop(&mesh).run();
        if (mesh.getNumT() < intake.vBundles.size())
            state.SkipWithError("too few triangles");
    }
    report(state, memory);
}

void BM_reconstructAuto(benchmark::State& state)
{
    std::vector<Point3>& vPoints = samplePoints(static_cast<std::size_t>(state.range(0)));
    const Silence silence;
    const PeakMemory memory;
    for (auto _ : state)
    {
        const std::shared_ptr<Mesh> pMesh = reconstruct_auto(vPoints, false, 1.0);
        if (!pMesh || pMesh->getRMesh()->getNumT() < vPoints.size())
            state.SkipWithError("too few triangles");
    }
    report(state, memory);
}

void sizes(benchmark::internal::Benchmark* pBenchmark)
{
    pBenchmark->RangeMultiplier(10)->Range(10000, 10000000)->Unit(benchmark::kMillisecond)->UseRealTime();
}
BENCHMARK(BM_intake)->Apply(sizes);
BENCHMARK(BM_extraction)->Apply(sizes);
BENCHMARK(BM_repair)->Apply(sizes);
BENCHMARK(BM_refinedMesh)->Apply(sizes);
BENCHMARK(BM_reconstructAuto)->Apply(sizes);

} // namespace
} // namespace TARN_ZEF
