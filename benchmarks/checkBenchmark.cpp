// The judge of meshes, on a rough torus of 100k and 1M triangles and on a coplanar grid, on which rounded arithmetic
// decides least.
//
// Reported: triangles per second (items_per_second), and the peak of memory beyond the mesh in bytes a triangle.
#include "checkMesh.h"

#include "PeakMemory.h"
#include "makeTorus.h"

#include <benchmark/benchmark.h>

#include <vector>

namespace TARN_ZEF
{
namespace
{
void run(benchmark::State& state, const std::vector<Point3>& vPoints, const std::vector<int>& vCorners,
         const CheckOptions& options = CheckOptions())
{
    const auto numTriangles = vCorners.size() / 3;
    const PeakMemory memory;
    for (auto _ : state)
    {
        const MeshCheck check = checkMesh(vPoints, vCorners, options);
        if (!check.isManifold() || check.numIntersections != 0 || check.numTriangles != numTriangles)
            state.SkipWithError("wrong result");
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(numTriangles));
    state.counters["bytes/triangle"] =
        static_cast<double>(memory.getBytes()) / static_cast<double>(numTriangles);
}

void runTorus(benchmark::State& state, const CheckOptions& options)
{
    const double roughness = 0.1; // in cells: no two triangles intersect
    const RMeshSource source = makeTorus(static_cast<std::size_t>(state.range(0)) / 2, roughness);
    run(state, source.vPoints, {source.vCorners.begin(), source.vCorners.end()}, options);
}

void BM_checkTorus(benchmark::State& state)
{
    runTorus(state, CheckOptions());
}

void BM_checkTorusConnectionOnly(benchmark::State& state)
{
    CheckOptions options;
    options.bFindIntersections = false;
    runTorus(state, options);
}

// Slanted, with whole coordinates: its triangles lie exactly in one plane.
void BM_checkCoplanarGrid(benchmark::State& state)
{
    int n = 1;
    while (2 * (n + 1) * (n + 1) <= state.range(0))
        ++n;
    std::vector<Point3> vPoints;
    std::vector<int> vCorners;
    for (int i = 0; i <= n; ++i)
        for (int k = 0; k <= n; ++k)
        {
            vPoints.emplace_back(i, k, 2 * i + 3 * k);
            const int a = i * (n + 1) + k;
            if (i < n && k < n)
                vCorners.insert(vCorners.end(), {a, a + n + 1, a + n + 2, a, a + n + 2, a + 1});
        }
    run(state, vPoints, vCorners);
}

void sizes(benchmark::internal::Benchmark* pBenchmark)
{
    pBenchmark->Arg(100'000)
        ->Arg(1'000'000)
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime()
        ->MeasureProcessCPUTime();
}
BENCHMARK(BM_checkTorus)->Apply(sizes);
BENCHMARK(BM_checkTorusConnectionOnly)->Apply(sizes);
BENCHMARK(BM_checkCoplanarGrid)->Apply(sizes);

} // namespace
} // namespace TARN_ZEF
