#include "finish/FoldRemoval.h"

#include "core/definitions.h"
#include "finish/dropTriangles.h"
#include "finish/fillLoops.h"
#include "geometry/tools.h"
#include "parallel/sortMT2.h"

#include <algorithm>
#include <bit>
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
constexpr int GENTLE_STEPS = 2;
constexpr double SMOOTHING = 0.6;
// How far vertices at one place go towards the middle of their neighbours.
constexpr double PART_SHARE = 0.05;
// Cuts with more edges stay open.
constexpr std::size_t LONGEST_FILLED = 12;

// 33 bits that equal places have in common, and places elsewhere seldom.
u64 getPlaceKey(const Point3& p)
{
    u64 key = 0;
    for (const double x : {p.x(), p.y(), p.z()})
    {
        // A zero of either sign is the same place.
        key = (key ^ std::bit_cast<u64>(x + 0.0)) * 0x9E3779B97F4A7C15ULL;
        key ^= key >> 29;
    }
    return key >> 31;
}

template <typename T>
void sortUnique(std::vector<T>& v)
{
    std::sort(v.begin(), v.end());
    v.erase(std::unique(v.begin(), v.end()), v.end());
}
} // namespace

FoldRemoval::FoldRemoval(HalfEdgeMesh& mesh_, FoldReport& report_, Rounding round_)
    : mesh(mesh_)
    , report(report_)
    , round(std::move(round_))
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

void FoldRemoval::runNear(const Flags& vChanged, const std::vector<int>& vBad, int numRings,
                          const Flags& vDrop)
{
    vTouched = vChanged;
    Pairs vPairs;
    for (const int t : vBad)
        vPairs.emplace_back(t, t);
    smooth(vPairs, numRings, GENTLE_STEPS);
    if (std::find(vDrop.begin(), vDrop.end(), 1) != vDrop.end())
        drop(vDrop, false);
    remove(FoldFinder(mesh).findNear(vTouched));
}

void FoldRemoval::remove(Pairs vPairs)
{
    report.numPairs = vPairs.size();
    for (int i = 0; !vPairs.empty(); ++i)
    {
        vTouched.assign(static_cast<std::size_t>(mesh.endTriangles()), 0);
        // What is not mended now must be found again, touched or not.
        for (const auto& [a, b] : vPairs)
            vTouched[static_cast<std::size_t>(a)] = vTouched[static_cast<std::size_t>(b)] = 1;
        if (i < SMOOTHING_ROUNDS)
            smooth(vPairs, 1, SMOOTHING_STEPS);
        else if (i < BORDER_ROUNDS)
            dropBorders(vPairs);
        else if (i < COLLAPSE_ROUNDS)
            collapse(vPairs);
        else
            cut(vPairs, i < FILLING_ROUNDS);
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

// Equal places have equal keys; the few others that do, too, are told apart one by one.
std::vector<int> FoldRemoval::findEqualPoints() const
{
    std::vector<std::pair<u64, std::uint32_t>> vKeys;
    vKeys.reserve(static_cast<std::size_t>(mesh.getNumVertices()));
    for (int v = 0; v < mesh.endVertices(); ++v)
        if (mesh.isAliveVertex(v))
            vKeys.emplace_back(getPlaceKey(mesh.point(v)), static_cast<std::uint32_t>(v));
    sortByFirstMT(vKeys.begin(), vKeys.end());
    const auto pointOf = [&](std::size_t i) -> const Point3&
    { return mesh.point(static_cast<int>(vKeys[i].second)); };
    std::vector<int> vEqual;
    for (std::size_t from = 0, to = 1; from < vKeys.size(); from = to++)
    {
        while (to < vKeys.size() && vKeys[to].first == vKeys[from].first)
            ++to;
        for (std::size_t i = from; i < to && to - from > 1; ++i)
            for (std::size_t k = from; k < to; ++k)
                if (k != i && isEqual(pointOf(i), pointOf(k)))
                {
                    vEqual.push_back(static_cast<int>(vKeys[i].second));
                    break;
                }
    }
    return vEqual;
}

void FoldRemoval::move(int v, const Point3& p)
{
    mesh.setPoint(v, round ? round(p) : p);
}

void FoldRemoval::touchAround(int v)
{
    mesh.forEachOutgoing(v, [this](int h)
                         { vTouched[static_cast<std::size_t>(HalfEdgeMesh::triangleOf(h))] = 1; });
}

// Each vertex to the mean of its neighbours, on a border of those on it; all at once, a few times.
void FoldRemoval::smooth(const Pairs& vPairs, int numRings, int numIterations)
{
    const std::vector<int> vVertices = getVertices(vPairs, numRings);
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
    drop(vDrop, false);
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
    drop(chooseFewest(vPairs), bFill);
}

void FoldRemoval::drop(const Flags& vDrop, bool bFill)
{
    Flags vWasBorder(static_cast<std::size_t>(mesh.endVertices()), 0);
    for (int v = 0; v < mesh.endVertices(); ++v)
        vWasBorder[static_cast<std::size_t>(v)] = mesh.isAliveVertex(v) && mesh.isBorderVertex(v);
    Flags vStillTouched;
    for (int t = 0; t < mesh.endTriangles(); ++t)
    {
        if (!mesh.isAlive(t))
            continue;
        if (vDrop[static_cast<std::size_t>(t)] != 0)
            ++report.numDroppedT;
        else
            vStillTouched.push_back(vTouched[static_cast<std::size_t>(t)]);
    }
    std::vector<int> vOrigin;
    dropTriangles(mesh, vDrop, &vOrigin);
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
    const auto roundOne = [](double x)
    {
        const volatile float rounded = static_cast<float>(x);
        return static_cast<double>(rounded);
    };
    return Point3(roundOne(p.x()), roundOne(p.y()), roundOne(p.z()));
}

} // namespace TARN_ZEF
