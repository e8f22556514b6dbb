// The calls that improve a finished mesh, on a rough torus of 100k to 1M vertices.
//
// Reported: triangles per second (items_per_second), of the mesh before the call. Making the mesh is not
// timed. The library's messages are switched off meanwhile.
#include "Mesh.h"
#include "RMesh.h"
#include "testDataGenerators.h"
#include "zef_api_functions.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <iostream>
#include <map>
#include <memory>

namespace TARN_ZEF
{
namespace
{
const double PI = 3.14159265358979;
const double ROUGHNESS = 0.3; // in cells

// Radii 2r and r, edges of about one cell, each coordinate off by up to ROUGHNESS.
RMeshSource makeTorus(std::size_t numVertices)
{
    const auto numSmall = static_cast<std::size_t>(std::sqrt(static_cast<double>(numVertices) / 2.0));
    const std::size_t numBig = 2 * numSmall;
    const double r = static_cast<double>(numSmall) / (2.0 * PI);
    std::vector<double> vNoise;
    generateRandomNumbers(-ROUGHNESS, ROUGHNESS, 3 * numBig * numSmall, 1, vNoise);
    RMeshSource source;
    for (std::size_t i = 0; i < numBig; ++i)
        for (std::size_t k = 0; k < numSmall; ++k)
        {
            const double a = 2.0 * PI * static_cast<double>(i) / static_cast<double>(numBig);
            const double b = 2.0 * PI * static_cast<double>(k) / static_cast<double>(numSmall);
            const double rho = r * (2.0 + std::cos(b));
            const double* pNoise = &vNoise[3 * source.vPoints.size()];
            source.vPoints.emplace_back(rho * std::cos(a) + pNoise[0], rho * std::sin(a) + pNoise[1],
                                        r * std::sin(b) + pNoise[2]);
        }
    const auto index = [=](std::size_t i, std::size_t k)
    { return static_cast<std::uint32_t>(i % numBig * numSmall + k % numSmall); };
    for (std::size_t i = 0; i < numBig; ++i)
        for (std::size_t k = 0; k < numSmall; ++k)
        {
            const std::uint32_t a = index(i, k);
            const std::uint32_t c = index(i + 1, k + 1);
            source.vCorners.insert(source.vCorners.end(), {a, index(i + 1, k), c, a, c, index(i, k + 1)});
        }
    return source;
}

const RMeshSource& torusOf(std::size_t numVertices)
{
    static std::map<std::size_t, RMeshSource> mTori;
    RMeshSource& source = mTori[numVertices];
    if (source.vPoints.empty())
        source = makeTorus(numVertices);
    return source;
}

// Times call on a fresh mesh; bGood judges the mesh afterwards by its numbers from before.
template <typename Call, typename Judge>
void run(benchmark::State& state, Call call, Judge bGood)
{
    const RMeshSource& source = torusOf(static_cast<std::size_t>(state.range(0)));
    std::cout.setstate(std::ios::failbit);
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
    std::cout.clear();
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
        state, [](const std::shared_ptr<Mesh>& pMesh) { laplacianSmoothing(pMesh, 1); },
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
