#include "finish/FoldRemoval.h"

#include "core/definitions.h"
#include "finish/fillLoops.h"
#include "geometry/tools.h"
#include "parallel/sortMT2.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace TARN_ZEF
{
namespace
{
// Rounds of each means, in their order.
constexpr int SMOOTHING_ROUNDS = 3;
constexpr int BORDER_ROUNDS = 5;
constexpr int COLLAPSE_ROUNDS = 7;
constexpr int FILLING_ROUNDS = 9;
constexpr int SMOOTHING_STEPS = 4;
constexpr double SMOOTHING = 0.6;
// How far vertices at one place go towards the middle of their neighbours.
constexpr double PART_SHARE = 0.05;
// Cuts with more edges stay open.
constexpr std::size_t LONGEST_FILLED = 12;

template <typename T>
void sortUnique(std::vector<T>& v)
{
    std::sort(v.begin(), v.end());
    v.erase(std::unique(v.begin(), v.end()), v.end());
}
} // namespace

FoldRemoval::FoldRemoval(HalfEdgeMesh& mesh_, FoldReport& report_, bool bFloat_)
    : mesh(mesh_)
    , report(report_)
    , bFloat(bFloat_)
{
}

void FoldRemoval::run()
{
    vTouched.assign(static_cast<std::size_t>(mesh.endTriangles()), 0);
    partEqualPoints();
    remove(FoldFinder(mesh).findAll());
}

void FoldRemoval::runNear(const Flags& vChanged)
{
    remove(FoldFinder(mesh).findNear(vChanged));
}

void FoldRemoval::remove(Pairs vPairs)
{
    report.numPairs = vPairs.size();
    for (int round = 0; !vPairs.empty(); ++round)
    {
        vTouched.assign(static_cast<std::size_t>(mesh.endTriangles()), 0);
        // What is not mended now must be found again, touched or not.
        for (const auto& [a, b] : vPairs)
            vTouched[static_cast<std::size_t>(a)] = vTouched[static_cast<std::size_t>(b)] = 1;
        if (round < SMOOTHING_ROUNDS)
            smooth(vPairs, SMOOTHING_STEPS);
        else if (round < BORDER_ROUNDS)
            dropBorders(vPairs);
        else if (round < COLLAPSE_ROUNDS)
            collapse(vPairs);
        else
            cut(vPairs, round < FILLING_ROUNDS);
        vPairs = FoldFinder(mesh).findNear(vTouched);
    }
}

std::vector<int> FoldRemoval::getVertices(const Pairs& vPairs, int numRings) const
{
    std::vector<int> vVertices;
    for (const auto& [a, b] : vPairs)
        for (const int t : {a, b})
            for (int h = 4 * t; h < 4 * t + 3; ++h)
                vVertices.push_back(mesh.from(h));
    sortUnique(vVertices);
    for (int ring = 0; ring < numRings; ++ring)
    {
        const std::vector<int> vInner = vVertices;
        for (const int v : vInner)
            mesh.forEachNeighbour(v, [&](int u) { vVertices.push_back(u); });
        sortUnique(vVertices);
    }
    return vVertices;
}

// Each towards the middle of its own neighbours.
void FoldRemoval::partEqualPoints()
{
    const std::vector<int> vEqual = findEqualPoints();
    std::vector<Point3> vProposed;
    for (const int v : vEqual)
    {
        const Point3& p = mesh.point(v);
        Vector3 sum;
        double num = 0.0;
        mesh.forEachNeighbour(v,
                              [&](int u)
                              {
                                  sum.add(mesh.point(u) - p);
                                  num += 1.0;
                              });
        vProposed.push_back(p + sum * (PART_SHARE / num));
    }
    for (std::size_t i = 0; i < vEqual.size(); ++i)
    {
        move(vEqual[i], vProposed[i]);
        touchAround(vEqual[i]);
    }
}

std::vector<int> FoldRemoval::findEqualPoints() const
{
    std::vector<int> vVertices;
    vVertices.reserve(static_cast<std::size_t>(mesh.getNumVertices()));
    for (int v = 0; v < mesh.endVertices(); ++v)
        if (mesh.isAliveVertex(v))
            vVertices.push_back(v);
    const auto place = [this](int v)
    {
        const Point3& p = mesh.point(v);
        return std::tuple(p.x(), p.y(), p.z());
    };
    sortMT(vVertices.begin(), vVertices.end(),
           [&](int a, int b) { return std::pair(place(a), a) < std::pair(place(b), b); });
    std::vector<int> vEqual;
    for (std::size_t i = 0; i < vVertices.size(); ++i)
    {
        const auto isEqual = [&](std::size_t k) { return place(vVertices[i]) == place(vVertices[k]); };
        if ((i > 0 && isEqual(i - 1)) || (i + 1 < vVertices.size() && isEqual(i + 1)))
            vEqual.push_back(vVertices[i]);
    }
    return vEqual;
}

void FoldRemoval::move(int v, const Point3& p)
{
    mesh.setPoint(v, bFloat ? roundToFloat(p) : p);
}

void FoldRemoval::touchAround(int v)
{
    mesh.forEachOutgoing(v, [this](int h)
                         { vTouched[static_cast<std::size_t>(HalfEdgeMesh::triangleOf(h))] = 1; });
}

// Each vertex to the mean of its neighbours, on a border of those on it; all at once, a few times.
void FoldRemoval::smooth(const Pairs& vPairs, int numIterations)
{
    const std::vector<int> vVertices = getVertices(vPairs, 1);
    std::vector<Point3> vProposed(vVertices.size());
    for (int i = 0; i < numIterations; ++i)
    {
        for (std::size_t k = 0; k < vVertices.size(); ++k)
        {
            const int v = vVertices[k];
            const Point3& p = mesh.point(v);
            const bool bBorder = mesh.isBorderVertex(v);
            Vector3 sum;
            double num = 0.0;
            mesh.forEachOutgoing(
                v,
                [&](int h)
                {
                    for (const auto& [u, side] :
                         {std::pair(mesh.to(h), h), std::pair(mesh.apex(h), HalfEdgeMesh::prev(h))})
                    {
                        if (bBorder && !mesh.isBorder(side))
                            continue;
                        sum.add(mesh.point(u) - p);
                        num += 1.0;
                    }
                });
            vProposed[k] = num > 0.0 ? p + sum * (SMOOTHING / num) : p;
        }
        for (std::size_t k = 0; k < vVertices.size(); ++k)
            move(vVertices[k], vProposed[k]);
    }
    for (const int v : vVertices)
        touchAround(v);
}

void FoldRemoval::collapse(const Pairs& vPairs)
{
    for (const auto& [a, b] : vPairs)
    {
        for (const int t : {a, b})
        {
            if (!mesh.isAlive(t))
                continue;
            int shortest = 4 * t;
            const auto length = [this](int h)
            { return sqDistance(mesh.point(mesh.from(h)), mesh.point(mesh.to(h))); };
            for (int h = 4 * t + 1; h < 4 * t + 3; ++h)
                if (length(h) < length(shortest))
                    shortest = h;
            if (!mesh.mayCollapse(shortest))
                continue;
            const int kept = mesh.to(shortest);
            const Point3 middle =
                mesh.point(kept) + (mesh.point(mesh.from(shortest)) - mesh.point(kept)) * 0.5;
            mesh.collapse(shortest);
            move(kept, middle);
            touchAround(kept);
            ++report.numCollapses;
        }
    }
    for (int t = 0; t < mesh.endTriangles(); ++t)
        if (!mesh.isAlive(t))
            vTouched[static_cast<std::size_t>(t)] = 0;
}

void FoldRemoval::dropBorders(const Pairs& vPairs)
{
    Flags vDrop(static_cast<std::size_t>(mesh.endTriangles()), 0);
    for (const auto& [a, b] : vPairs)
        for (const int t : {a, b})
            for (int h = 4 * t; h < 4 * t + 3; ++h)
                if (mesh.isBorder(h))
                    vDrop[static_cast<std::size_t>(t)] = 1;
    dropTriangles(vDrop, false);
}

// A few triangles that are in all pairs: again and again the one that is in most of those left.
FoldRemoval::Flags FoldRemoval::chooseFewest(const Pairs& vPairs) const
{
    std::vector<std::uint32_t> vNum(static_cast<std::size_t>(mesh.endTriangles()), 0);
    for (const auto& [a, b] : vPairs)
    {
        ++vNum[static_cast<std::size_t>(a)];
        ++vNum[static_cast<std::size_t>(b)];
    }
    std::vector<FoldFinder::Pair> vByWeight(vPairs);
    const auto heaviest = [&](const FoldFinder::Pair& pair) {
        return std::max(vNum[static_cast<std::size_t>(pair.first)],
                        vNum[static_cast<std::size_t>(pair.second)]);
    };
    std::stable_sort(vByWeight.begin(), vByWeight.end(),
                     [&](const auto& a, const auto& b) { return heaviest(a) > heaviest(b); });
    Flags vDrop(vNum.size(), 0);
    for (const auto& [a, b] : vByWeight)
    {
        if (vDrop[static_cast<std::size_t>(a)] != 0 || vDrop[static_cast<std::size_t>(b)] != 0)
            continue;
        const bool bFirst = vNum[static_cast<std::size_t>(a)] >= vNum[static_cast<std::size_t>(b)];
        vDrop[static_cast<std::size_t>(bFirst ? a : b)] = 1;
    }
    return vDrop;
}

void FoldRemoval::cut(const Pairs& vPairs, bool bFill)
{
    dropTriangles(chooseFewest(vPairs), bFill);
}

// The mesh is built anew, as what stays can have several fans at a vertex.
void FoldRemoval::dropTriangles(const Flags& vDrop, bool bFill)
{
    std::vector<int> vNewT;
    Flags vWasBorder(static_cast<std::size_t>(mesh.endVertices()), 0);
    for (int v = 0; v < mesh.endVertices(); ++v)
        vWasBorder[static_cast<std::size_t>(v)] = mesh.isAliveVertex(v) && mesh.isBorderVertex(v);
    std::vector<Point3> vPoints;
    vPoints.reserve(static_cast<std::size_t>(mesh.endVertices()));
    std::vector<int> vCorners;
    Flags vStillTouched;
    for (int v = 0; v < mesh.endVertices(); ++v)
        vPoints.push_back(mesh.point(v));
    for (int t = 0; t < mesh.endTriangles(); ++t)
    {
        if (!mesh.isAlive(t))
            continue;
        if (vDrop[static_cast<std::size_t>(t)] != 0)
        {
            ++report.numDroppedT;
            continue;
        }
        for (int h = 4 * t; h < 4 * t + 3; ++h)
            vCorners.push_back(mesh.from(h));
        vStillTouched.push_back(vTouched[static_cast<std::size_t>(t)]);
    }
    std::vector<int> vOrigin;
    ASSEX(mesh.build(vPoints, vCorners, &vOrigin));
    vTouched = std::move(vStillTouched);
    partEqualPoints();
    if (!bFill)
        return;
    const auto bIsNew = [&](int v)
    {
        const auto i = static_cast<std::size_t>(v);
        return vWasBorder[static_cast<std::size_t>(vOrigin[i])] == 0;
    };
    report.numFilled += fillLoops(mesh, LONGEST_FILLED, bIsNew);
    vTouched.resize(static_cast<std::size_t>(mesh.endTriangles()), 1);
}

Point3 roundToFloat(const Point3& p) noexcept
{
    // Volatile, since g++ 12 forgets to round where it takes two coordinates at once.
    const auto round = [](double x)
    {
        const volatile float rounded = static_cast<float>(x);
        return static_cast<double>(rounded);
    };
    return Point3(round(p.x()), round(p.y()), round(p.z()));
}

} // namespace TARN_ZEF
