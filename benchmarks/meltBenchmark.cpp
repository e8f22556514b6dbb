// Melting and sampling of a triangle soup, at a spacing of about its edge length.
//
// Reported: triangles of the soup per second (items_per_second), points made per second, and the largest memory
// above that of the soup, in bytes per point made. The library's messages are switched off meanwhile.
#include "PeakMemory.h"
#include "Silence.h"
#include "makeTorus.h"
#include "zef_api_functions.h"

#include <benchmark/benchmark.h>

#include <map>
#include <memory>
#include <vector>

namespace TARN_ZEF
{
namespace
{
const double SPACING = 1.0;
const double FEATURE_ANGLE = 30.0; // the torus has no sharper edge

// Three consecutive entries are one triangle.
std::vector<Point3>& soupOf(std::size_t numTriangles)
{
    static std::map<std::size_t, std::vector<Point3>> mSoups;
    std::vector<Point3>& vCorners = mSoups[numTriangles];
    if (vCorners.empty())
    {
        const RMeshSource source = makeTorus(numTriangles / 2, 0.0);
        vCorners.reserve(source.vCorners.size());
        for (const std::uint32_t corner : source.vCorners)
            vCorners.push_back(source.vPoints[corner]);
    }
    return vCorners;
}

void report(benchmark::State& state, const PeakMemory& memory, std::size_t numTriangles,
            std::size_t numPoints)
{
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(numTriangles));
    state.counters["points_per_second"] =
        benchmark::Counter(static_cast<double>(numPoints), benchmark::Counter::kIsIterationInvariantRate);
    state.counters["bytes_per_point"] =
        static_cast<double>(memory.getBytes()) / static_cast<double>(numPoints);
}

// A surface passes through one to two cells per square of the spacing.
bool isPlausible(std::size_t numPoints, std::size_t numTriangles)
{
    return numPoints > numTriangles / 3 && numPoints < 2 * numTriangles;
}

// remesh(vSoup) returns the number of points that it made.
template <typename Remesh>
void runOnSoup(benchmark::State& state, Remesh remesh)
{
    std::vector<Point3>& vSoup = soupOf(static_cast<std::size_t>(state.range(0)));
    const Silence silence;
    const PeakMemory memory;
    std::size_t numPoints = 0;
    for (auto _ : state)
        numPoints = remesh(vSoup);
    if (!isPlausible(numPoints, vSoup.size() / 3))
        state.SkipWithError("wrong number of points");
    report(state, memory, vSoup.size() / 3, numPoints);
}

void BM_toCloud(benchmark::State& state)
{
    runOnSoup(state,
              [](std::vector<Point3>& vSoup)
              {
                  std::vector<Point3> vPoints;
                  toCloud(vSoup, SPACING, FEATURE_ANGLE, vPoints);
                  return vPoints.size();
              });
}

void BM_melt(benchmark::State& state)
{
    runOnSoup(state,
              [&state](std::vector<Point3>& vSoup)
              {
                  const std::shared_ptr<Mesh> pMesh = melt(vSoup, SPACING, FEATURE_ANGLE);
                  std::vector<REdge*> vBorderRE;
                  pMesh->getRMesh()->getDegN(1, vBorderRE);
                  if (!vBorderRE.empty())
                      state.SkipWithError("the torus is not closed");
                  // A closed surface of genus one has twice as many triangles as points.
                  return pMesh->getRMesh()->getNumT() / 2;
              });
}

void sizes(benchmark::internal::Benchmark* pBenchmark)
{
    pBenchmark->RangeMultiplier(10)->Range(10000, 1000000)->Unit(benchmark::kMillisecond)->UseRealTime();
}
BENCHMARK(BM_toCloud)->Apply(sizes);
BENCHMARK(BM_melt)->Apply(sizes);

} // namespace
} // namespace TARN_ZEF
