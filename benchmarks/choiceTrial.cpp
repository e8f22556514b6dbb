// How many clouds of known shapes come out right, told nothing: closed and edge-manifold, with the Euler number and
// the parts of the shape, and a volume within 2 %.
//
//     zef_choice_trial [POINTS [GAP [NOISE [NAME]]]]     60000 0 0: see SurfaceSampler::Wish; NAME: this shape alone
//
// A line for each shape tells what was chosen and what came out, the last one the sums: plain defaults, each fixed
// factor, the choice.
#include "ClosedShapes.h"
#include "Silence.h"
#include "SurfaceSampler.h"
#include "zef.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <numeric>
#include <string>

namespace TARN_ZEF
{
namespace
{
constexpr double MOST_VOLUME_ERROR = 0.02;
constexpr double FACTORS[] = {1.0, 1.15, 1.3, 1.45, 1.6, 1.8};
constexpr std::size_t NUM_FACTORS = std::size(FACTORS);

double secondsNow()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

class MeasuredMesh
{
public:
    explicit MeasuredMesh(const Mesh& mesh)
    {
        CheckOptions options;
        options.bFindIntersections = false;
        check = checkMesh(mesh, options);
        mesh.getVertexIndexData(vVertices, vCorners);
    }
    [[nodiscard]] bool isRight(const ClosedShape& shape, double volume) const
    {
        return check.isClosed() && check.isEdgeManifold() && check.eulerNumber == shape.eulerNumber &&
               check.numPieces == static_cast<std::size_t>(shape.numParts) &&
               std::fabs(getVolume(shape.bNested) - volume) <= MOST_VOLUME_ERROR * volume;
    }
    void print() const
    {
        std::printf("Euler %lld, %zu pieces, %zu border, %zu non-manifold",
                    static_cast<long long>(check.eulerNumber), check.numPieces, check.numBorderEdges,
                    check.numNonManifoldEdges);
    }

private:
    // Every piece faces outward; of nested ones every other encloses a hole.
    [[nodiscard]] double getVolume(bool bNested) const
    {
        std::vector<double> vVolumes = getVolumesOfPieces();
        std::sort(vVolumes.rbegin(), vVolumes.rend());
        double sum = 0.0;
        for (std::size_t i = 0; i < vVolumes.size(); ++i)
            sum += bNested && i % 2 == 1 ? -vVolumes[i] : vVolumes[i];
        return sum;
    }
    [[nodiscard]] std::vector<double> getVolumesOfPieces() const
    {
        std::vector<int> vParents(vVertices.size());
        std::iota(vParents.begin(), vParents.end(), 0);
        const auto find = [&](int v)
        {
            while (vParents[v] != v)
                v = vParents[v] = vParents[vParents[v]];
            return v;
        };
        for (std::size_t i = 0; i < vCorners.size(); ++i)
            vParents[find(vCorners[i])] = find(vCorners[i - i % 3]);
        std::vector<double> vVolumes(vVertices.size(), 0.0);
        for (std::size_t i = 0; i < vCorners.size(); i += 3)
            vVolumes[find(vCorners[i])] += getVolumeBelow(i);
        for (double& volume : vVolumes)
            volume = std::fabs(volume);
        return vVolumes;
    }
    // Of the tetrahedron from the origin to the triangle.
    [[nodiscard]] double getVolumeBelow(std::size_t i) const
    {
        const Point3& a = *vVertices[vCorners[i]];
        const Point3& b = *vVertices[vCorners[i + 1]];
        const Point3& c = *vVertices[vCorners[i + 2]];
        return (a.x() * (b.y() * c.z() - b.z() * c.y()) + a.y() * (b.z() * c.x() - b.x() * c.z()) +
                a.z() * (b.x() * c.y() - b.y() * c.x())) /
               6.0;
    }

    MeshCheck check;
    std::vector<Point3*> vVertices;
    std::vector<int> vCorners;
};

struct Sums
{
    std::size_t numShapes = 0;
    std::size_t numRightAt[NUM_FACTORS] = {};
    std::size_t numChosenRight = 0;
    std::size_t numFinishedRight = 0; // of the chosen ones after the last stage
    double plainSeconds = 0.0;
    double chosenSeconds = 0.0;
};

void tryShape(const ClosedShape& shape, const SurfaceSampler::Wish& wish, Sums& sums)
{
    const SurfaceSampler sampler(shape);
    std::vector<Point3> vPoints = sampler.sample(wish);
    const double volume = sampler.getVolume(wish.num);
    ++sums.numShapes;
    std::printf("%-22s fixed ", shape.name.c_str());
    for (std::size_t i = 0; i < NUM_FACTORS; ++i)
    {
        const double start = secondsNow();
        const std::shared_ptr<Mesh> pMesh = reconstruct_auto(vPoints, false, FACTORS[i]);
        if (i == 0)
            sums.plainSeconds += secondsNow() - start;
        const bool bRight = pMesh && MeasuredMesh(*pMesh).isRight(shape, volume);
        sums.numRightAt[i] += bRight ? 1 : 0;
        std::printf("%c", bRight ? '+' : '.');
    }
    AutoReport report;
    const double start = secondsNow();
    const std::shared_ptr<Mesh> pMesh = autoReconstruct(vPoints, AutoOptions(), &report);
    sums.chosenSeconds += secondsNow() - start;
    std::printf("  even %.2f noise %.2f layers %.2f  %s%.4g  ", report.cloud.evenness, report.cloud.noise,
                report.cloud.layers,
                report.bByFacing ? "by facing "
                : report.bSmooth ? "-s "
                                 : "",
                report.factor);
    if (pMesh)
    {
        const MeasuredMesh mesh(*pMesh);
        const bool bRight = mesh.isRight(shape, volume);
        sums.numChosenRight += bRight ? 1 : 0;
        std::printf(bRight ? "right: " : "WRONG: ");
        mesh.print();
        FinishOptions options;
        options.longestHole = AutoOptions().mostEdgesOfHole;
        const MeasuredMesh finished(*finishSurface(*pMesh, vPoints, options));
        const bool bFinishedRight = finished.isRight(shape, volume);
        sums.numFinishedRight += bFinishedRight ? 1 : 0;
        std::printf(bFinishedRight ? "; finished right: " : "; finished WRONG: ");
        finished.print();
    }
    std::printf("\n");
    std::fflush(stdout);
}

void printSums(const Sums& sums)
{
    std::printf("%zu shapes; right at factor", sums.numShapes);
    for (std::size_t i = 0; i < NUM_FACTORS; ++i)
        std::printf(" %g: %zu,", FACTORS[i], sums.numRightAt[i]);
    std::printf(" told nothing: %zu, finished: %zu; seconds plain %.1f, told nothing %.1f\n",
                sums.numChosenRight, sums.numFinishedRight, sums.plainSeconds, sums.chosenSeconds);
}

void run(const SurfaceSampler::Wish& wish, const std::string& name)
{
    const Silence silence;
    Sums sums;
    for (const ClosedShape& shape : makeClosedShapes())
        if (name.empty() || shape.name == name)
            tryShape(shape, wish, sums);
    printSums(sums);
}
} // namespace
} // namespace TARN_ZEF

int main(int argc, char** argv)
{
    TARN_ZEF::SurfaceSampler::Wish wish;
    if (argc > 1)
        wish.num = static_cast<std::size_t>(std::max(1000, std::atoi(argv[1])));
    if (argc > 2)
        wish.gap = std::clamp(std::atof(argv[2]), 0.0, 0.75);
    if (argc > 3)
        wish.noise = std::max(0.0, std::atof(argv[3]));
    TARN_ZEF::run(wish, argc > 4 ? argv[4] : "");
}
