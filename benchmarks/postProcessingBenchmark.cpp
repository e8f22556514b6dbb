// The calls that improve a finished mesh, on a rough torus of 100k to 1M vertices.
//
// Reported: triangles per second (items_per_second), of the mesh before the call. Making the mesh is not
// timed. The library's messages are switched off meanwhile.
#include "Mesh.h"
#include "Silence.h"
#include "makeTorus.h"
#include "rmesh/RMesh.h"
#include "zef_api_functions.h"

#include <benchmark/benchmark.h>

#include <map>
#include <memory>

namespace TARN_ZEF
{
namespace
{
const double ROUGHNESS = 0.3; // in cells

const RMeshSource& torusOf(std::size_t numVertices)
{
    static std::map<std::size_t, RMeshSource> mTori;
    RMeshSource& source = mTori[numVertices];
    if (source.vPoints.empty())
        source = makeTorus(numVertices, ROUGHNESS);
    return source;
}

// Times call on a fresh mesh; bGood judges the mesh afterwards by its numbers from before.
template <typename Call, typename Judge>
void run(benchmark::State& state, Call call, Judge bGood)
{
    const RMeshSource& source = torusOf(static_cast<std::size_t>(state.range(0)));
    const Silence silence;
    for (auto _ : state)
    {
        state.PauseTiming();
        auto pMesh = std::make_shared<Mesh>(new RMesh(source));
        const RMesh& mesh = *pMesh->getRMesh();
        const std::size_t numT = mesh.getNumT();
        const double area = mesh.getArea();
        state.ResumeTiming();
        call(pMesh);
        state.PauseTiming();
        if (!bGood(mesh, numT, area))
            state.SkipWithError("wrong result");
        pMesh.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(source.vCorners.size() / 3));
}

// Smoother surfaces are smaller.
void BM_edgeFlips(benchmark::State& state)
{
    run(
        state, [](const std::shared_ptr<Mesh>& pMesh) { edgeFlips(pMesh); },
        [](const RMesh& mesh, std::size_t numT, double area)
        { return mesh.getArea() < area && mesh.getNumT() > numT - numT / 100; });
}

void BM_reduceToATenth(benchmark::State& state)
{
    run(
        state, [](const std::shared_ptr<Mesh>& pMesh) { reduce(pMesh, 3.0, 40.0, true); },
        [](const RMesh& mesh, std::size_t numT, double area)
        { return mesh.getNumT() < numT / 10 && mesh.getArea() > 0.5 * area; });
}

void BM_laplacianSmoothing(benchmark::State& state)
{
    run(
        state, [](const std::shared_ptr<Mesh>& pMesh) { laplacianSmoothing(pMesh, 10); },
        [](const RMesh& mesh, std::size_t numT, double area)
        { return mesh.getArea() < 0.95 * area && mesh.getNumT() > numT - numT / 100; });
}

void sizes(benchmark::internal::Benchmark* pBenchmark)
{
    pBenchmark->Arg(100000)->Arg(300000)->Arg(1000000)->Unit(benchmark::kMillisecond)->UseRealTime();
}
BENCHMARK(BM_edgeFlips)->Apply(sizes);
BENCHMARK(BM_reduceToATenth)->Apply(sizes);
BENCHMARK(BM_laplacianSmoothing)->Apply(sizes);

} // namespace
} // namespace TARN_ZEF
