#include "remesh/SoupWelder.h"

#include "core/cancel.h"
#include "core/largeVectors.h"
#include "geometry/tools.h"
#include "remesh/SoupEdgeTable.h"
#include "tarn_locate3/RTree.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <utility>

namespace TARN_ZEF
{
namespace
{
constexpr int ABSENT = -1;
// Cells of the grid for near corners, in tolerances: few corners stand near a wall of their cell.
constexpr double CELL_FACTOR = 16.0;
constexpr double MAX_CELLS = 1048576.0; // along an axis: keys have 21 bits for each
// Corners lie on an open edge within so many tolerances: a joint in a file of six digits is off by more than the
// corners are, since the edge between its own ends is, too.
constexpr double JOINT_FACTOR = 10.0;
// A joint can uncover the next one along the same edge.
constexpr int MAX_JOINT_ROUNDS = 8;

std::uint64_t mix(std::uint64_t x)
{
    x ^= x >> 31;
    x *= 0x9E3779B97F4A7C15U;
    return x ^ (x >> 29);
}

std::uint64_t hashOf(const Point3& p)
{
    return mix(mix(mix(std::bit_cast<std::uint64_t>(p.x())) + std::bit_cast<std::uint64_t>(p.y())) +
               std::bit_cast<std::uint64_t>(p.z()));
}

// Numbers for things that are found equal, by first appearance.
template <typename Hash, typename Same>
class NumberTable
{
public:
    NumberTable(std::size_t mostEntries, Hash hash_, Same same_)
        : hash(hash_)
        , same(same_)
    {
        growTo(vSlot, std::bit_ceil(2 * mostEntries + 1), ABSENT);
    }

    // The number of an equal thing that was entered before, or candidate after entering it.
    template <typename T>
    int find(const T& thing, int candidate)
    {
        std::size_t i = hash(thing) & (vSlot.size() - 1);
        while (vSlot[i] != ABSENT && !same(thing, vSlot[i]))
            i = (i + 1) & (vSlot.size() - 1);
        if (vSlot[i] == ABSENT)
            vSlot[i] = candidate;
        return vSlot[i];
    }

private:
    Hash hash;
    Same same;
    std::vector<int> vSlot;
};

// Three corners in order of their numbers.
using Triple = std::array<int, 3>;

Triple tripleOf(const FlatSoup& soup, int t)
{
    Triple triple = {soup.vCorners[3 * t], soup.vCorners[3 * t + 1], soup.vCorners[3 * t + 2]};
    std::sort(triple.begin(), triple.end());
    return triple;
}

double heightOf(const Point3& a, const Point3& b, const Point3& c)
{
    const double longest = std::max({sqDistance(a, b), sqDistance(b, c), sqDistance(c, a)});
    return longest > 0.0 ? crossProduct(b - a, c - a).length() / std::sqrt(longest) : 0.0;
}

// Compacts the triangles to those that keep(t) names.
template <typename F>
int filterTriangles(FlatSoup& soup, F keep)
{
    std::size_t out = 0;
    const int num = soup.numTriangles();
    CancelStride cancel;
    for (int t = 0; t < num; ++t)
    {
        cancel.step();
        if (!keep(t))
            continue;
        for (int k = 0; k < 3; ++k)
            soup.vCorners[out++] = soup.vCorners[3 * t + k];
    }
    soup.vCorners.resize(out);
    return num - soup.numTriangles();
}

// Corners that stay themselves, for the question which is the first within a distance: a grid of cells, as one list
// sorted by cells. Cells hold the corners that stay at their front; those that went to another one are not looked at
// again, however many stand in one cell.
class NearGrid
{
public:
    NearGrid(const std::vector<Point3>& vPoints_, double distance_)
        : vPoints(vPoints_)
        , distance(distance_)
        , low(vPoints_.front())
    {
        Point3 high = low;
        for (const Point3& p : vPoints)
        {
            low.set(std::min(low.x(), p.x()), std::min(low.y(), p.y()), std::min(low.z(), p.z()));
            high.set(std::max(high.x(), p.x()), std::max(high.y(), p.y()), std::max(high.z(), p.z()));
        }
        const double extent = getMax(high.x() - low.x(), high.y() - low.y(), high.z() - low.z());
        cell = std::max(CELL_FACTOR * distance, extent / MAX_CELLS);
        vKeys.reserve(vPoints.size());
        CancelStride cancel;
        for (const Point3& p : vPoints)
        {
            cancel.step();
            vKeys.push_back(keyOf(p, 0.0, 0.0, 0.0));
        }
        std::sort(vKeys.begin(), vKeys.end());
        vStaying.assign(vPoints.size(), ABSENT);
    }

    // Of the corners that stay, the first near v; v if there is none, which then stays too.
    int findFirst(int v)
    {
        int first = v;
        std::uint64_t lastKey = ~std::uint64_t{0};
        for (int octant = 0; octant < 8; ++octant)
        {
            const auto shift = [&](int bit) { return (octant & bit) != 0 ? distance : -distance; };
            const std::uint64_t key = keyOf(vPoints[v], shift(1), shift(2), shift(4));
            if (key == lastKey)
                continue;
            lastKey = key;
            for (std::size_t i = beginOf(key);
                 i < vKeys.size() && vKeys[i] == key && vStaying[i] != ABSENT && vStaying[i] < first; ++i)
                if (sqDistance(vPoints[vStaying[i]], vPoints[v]) <= distance * distance)
                    first = vStaying[i];
        }
        if (first == v)
        {
            std::size_t i = beginOf(keyOf(vPoints[v], 0.0, 0.0, 0.0));
            while (vStaying[i] != ABSENT)
                ++i;
            vStaying[i] = v;
        }
        return first;
    }

private:
    // Three whole numbers of 21 bits; one more than 0 for what a shift takes below the lowest.
    [[nodiscard]] std::uint64_t keyOf(const Point3& p, double dx, double dy, double dz) const
    {
        const auto along = [this](double x)
        { return static_cast<std::uint64_t>(std::floor(x / cell) + 1.0); };
        return along(p.x() - low.x() + dx) << 42 | along(p.y() - low.y() + dy) << 21 |
               along(p.z() - low.z() + dz);
    }
    [[nodiscard]] std::size_t beginOf(std::uint64_t key) const
    {
        return static_cast<std::size_t>(std::lower_bound(vKeys.begin(), vKeys.end(), key) - vKeys.begin());
    }

    const std::vector<Point3>& vPoints;
    double distance;
    Point3 low;
    double cell = 0.0;
    std::vector<std::uint64_t> vKeys; // of all corners, sorted
    std::vector<int> vStaying;        // beside the keys: corners of that cell in order, then ABSENT
};

// The triangles that may have a copy: those with at least two triangles on each edge and more on one, or
// with the same neighbour twice.
std::vector<bool> findSuspects(const FlatSoup& soup)
{
    std::vector<int> vNumEdges(soup.numTriangles(), 0);
    SoupEdgeTable(soup.vPoints.size(), soup.vCorners)
        .forEachEdge(
            [&](const int* pCorners, int num)
            {
                for (int i = 0; i < num && num > 1; ++i)
                    for (int j = 0; j < num; ++j)
                        if (i != j && soup.vCorners[FlatSoup::prev(pCorners[i])] ==
                                          soup.vCorners[FlatSoup::prev(pCorners[j])])
                        {
                            ++vNumEdges[pCorners[i] / 3];
                            break;
                        }
            });
    std::vector<bool> vSuspect(vNumEdges.size());
    for (std::size_t t = 0; t < vNumEdges.size(); ++t)
        vSuspect[t] = vNumEdges[t] == 3;
    return vSuspect;
}

// Decides which triangles on the same three corners are copies.
class CopyDropper
{
public:
    CopyDropper(const FlatSoup& soup_, const std::vector<std::pair<Triple, int>>& vTriples_)
        : soup(soup_)
        , vTriples(vTriples_)
    {
    }

    // A flag a triangle; empty if there is none to drop.
    std::vector<bool> run()
    {
        if (vTriples.empty())
            return {};
        vDropped.assign(soup.numTriangles(), false);
        countEdges();
        findRuns();
        while (dropOddOnes())
        {
        }
        dropAllDouble();
        return vDropped;
    }

private:
    void countEdges()
    {
        vEdgeOf.assign(soup.vCorners.size(), 0);
        SoupEdgeTable(soup.vPoints.size(), soup.vCorners)
            .forEachEdge(
                [this](const int* pCorners, int num)
                {
                    for (int i = 0; i < num; ++i)
                        vEdgeOf[pCorners[i]] = static_cast<int>(vNumOn.size());
                    vNumOn.push_back(num);
                });
    }

    // Entries on the same corners. What is dropped is always the last one left.
    struct Run
    {
        std::size_t from;
        std::size_t to;
    };

    void findRuns()
    {
        for (std::size_t from = 0; from < vTriples.size();)
        {
            std::size_t to = from;
            while (to < vTriples.size() && vTriples[to].first == vTriples[from].first)
                ++to;
            vRuns.push_back({from, to});
            from = to;
        }
    }

    [[nodiscard]] static bool isSingle(const Run& run) { return run.to - run.from < 2; }

    void dropLast(Run& run)
    {
        const int t = vTriples[--run.to].second;
        vDropped[t] = true;
        for (int c = 3 * t; c < 3 * t + 3; ++c)
            --vNumOn[vEdgeOf[c]];
    }

    [[nodiscard]] bool dropOddOnes()
    {
        bool bAny = false;
        for (Run& run : vRuns)
        {
            const int t = vTriples[run.from].second;
            const bool bOdd = vNumOn[vEdgeOf[3 * t]] % 2 != 0 || vNumOn[vEdgeOf[3 * t + 1]] % 2 != 0 ||
                              vNumOn[vEdgeOf[3 * t + 2]] % 2 != 0;
            if (isSingle(run) || !bOdd)
                continue;
            dropLast(run);
            bAny = true;
        }
        return bAny;
    }

    // What is left double and has no single triangle beside it, over all that hangs together.
    void dropAllDouble()
    {
        std::vector<bool> vDouble(soup.numTriangles(), false);
        for (const Run& run : vRuns)
            for (std::size_t i = run.from; i < run.to && !isSingle(run); ++i)
                vDouble[vTriples[i].second] = true;
        std::vector<bool> vSingleBeside(vNumOn.size(), false); // an edge each
        for (int t = 0; t < soup.numTriangles(); ++t)
            for (int c = 3 * t; c < 3 * t + 3; ++c)
                if (!vDouble[t] && !vDropped[t])
                    vSingleBeside[vEdgeOf[c]] = true;
        spreadOver(vDouble, vSingleBeside);
        for (Run& run : vRuns)
            while (!isSingle(run) && !vSingleBeside[vEdgeOf[3 * vTriples[run.from].second]])
                dropLast(run);
    }

    void spreadOver(const std::vector<bool>& vDouble, std::vector<bool>& vMark) const
    {
        for (bool bChanged = true; bChanged;)
        {
            bChanged = false;
            for (const auto& entry : vTriples)
            {
                const int t = entry.second;
                const bool bMarked =
                    vMark[vEdgeOf[3 * t]] || vMark[vEdgeOf[3 * t + 1]] || vMark[vEdgeOf[3 * t + 2]];
                for (int c = 3 * t; c < 3 * t + 3 && vDouble[t] && bMarked; ++c)
                {
                    bChanged = bChanged || !vMark[vEdgeOf[c]];
                    vMark[vEdgeOf[c]] = true;
                }
            }
        }
    }

    const FlatSoup& soup;
    const std::vector<std::pair<Triple, int>>& vTriples; // sorted
    std::vector<Run> vRuns;
    std::vector<bool> vDropped;
    std::vector<int> vEdgeOf; // a corner each
    std::vector<int> vNumOn;  // an edge each
};

// Which vertices of open edges lie on an edge?
class JointFinder
{
public:
    JointFinder(const FlatSoup& soup_, std::vector<int>& vVertices, double tolerance_)
        : soup(soup_)
        , tolerance(tolerance_)
    {
        for (int& v : vVertices)
        {
            const Point3& p = soup.vPoints[v];
            tree.addObject(&v, p.x(), p.y(), p.z(), p.x(), p.y(), p.z());
        }
        tree.build();
    }

    // In the order from the beginning of the edge, without its ends.
    [[nodiscard]] std::vector<int> verticesOn(int c) const
    {
        const Point3& a = soup.pointOf(c);
        const Point3& b = soup.pointOf(FlatSoup::next(c));
        const Vector3 ab = b - a;
        std::vector<void*> vFound;
        tree.query(vFound, {std::min(a.x(), b.x()) - tolerance, std::min(a.y(), b.y()) - tolerance,
                            std::min(a.z(), b.z()) - tolerance, std::max(a.x(), b.x()) + tolerance,
                            std::max(a.y(), b.y()) + tolerance, std::max(a.z(), b.z()) + tolerance});
        std::vector<std::pair<double, int>> vOn;
        for (const void* pVertex : vFound)
        {
            const int v = *static_cast<const int*>(pVertex);
            const Vector3 av = soup.vPoints[v] - a;
            const double along = (av * ab) / ab.sqLength();
            const bool bBetween = along > 0.0 && along < 1.0 && v != soup.vCorners[c] &&
                                  v != soup.vCorners[FlatSoup::next(c)] &&
                                  v != soup.vCorners[FlatSoup::prev(c)];
            if (bBetween && (av + ab * -along).sqLength() <= tolerance * tolerance)
                vOn.emplace_back(along, v);
        }
        std::sort(vOn.begin(), vOn.end());
        std::vector<int> vResult;
        vResult.reserve(vOn.size());
        for (const auto& entry : vOn)
            vResult.push_back(entry.second);
        return vResult;
    }

private:
    const FlatSoup& soup;
    double tolerance;
    TARN_LOCATE3::RTree tree;
};
} // namespace

void SoupWelder::run(const std::vector<Point3>& vTriCorners, FlatSoup& result)
{
    *this = SoupWelder(tolerance);
    weldEqual(vTriCorners);
    weldNear();
    dropFlat();
    dropDoubled();
    for (int round = 0; round < MAX_JOINT_ROUNDS && splitJoints(); ++round)
        dropDoubled();
    result = std::move(soup);
    soup = FlatSoup();
}

void SoupWelder::weldEqual(const std::vector<Point3>& vTriCorners)
{
    const auto same = [this](const Point3& p, int v) { return soup.vPoints[v] == p; };
    NumberTable table(vTriCorners.size(), hashOf, same);
    soup.vCorners.reserve(vTriCorners.size());
    CancelStride cancel;
    for (const Point3& corner : vTriCorners)
    {
        cancel.step();
        const Point3 p(corner.x() + 0.0, corner.y() + 0.0, corner.z() + 0.0); // one zero for both signs
        const int next = static_cast<int>(soup.vPoints.size());
        const int v = table.find(p, next);
        makeRoomFor(soup.vPoints);
        if (v == next)
            soup.vPoints.push_back(p);
        soup.vCorners.push_back(v);
    }
}

// Each corner goes to the first one before it that is near enough and stays itself. The corners are sorted by
// the cells of a grid; only beside a wall of its cell does a corner look into other ones.
void SoupWelder::weldNear()
{
    if (tolerance <= 0.0 || soup.vPoints.empty())
        return;
    NearGrid grid(soup.vPoints, tolerance);
    std::vector<int> vTarget(soup.vPoints.size());
    CancelStride cancel;
    for (int v = 0; v < static_cast<int>(vTarget.size()); ++v)
    {
        cancel.step();
        vTarget[v] = grid.findFirst(v);
        numWelded += vTarget[v] == v ? 0 : 1;
    }
    for (int& v : soup.vCorners)
        v = vTarget[v];
}

void SoupWelder::dropFlat()
{
    numFlat += filterTriangles(soup,
                               [this](int t)
                               {
                                   const Triple c = tripleOf(soup, t);
                                   if (c[0] == c[1] || c[1] == c[2])
                                       return false;
                                   return heightOf(soup.vPoints[c[0]], soup.vPoints[c[1]],
                                                   soup.vPoints[c[2]]) > tolerance;
                               });
}

// Copies go one by one, the last first, as long as an edge of them counts an odd number of triangles.
void SoupWelder::dropDoubled()
{
    std::vector<std::pair<Triple, int>> vTriples;
    const std::vector<bool> vSuspect = findSuspects(soup);
    for (int t = 0; t < soup.numTriangles(); ++t)
        if (vSuspect[t])
            vTriples.emplace_back(tripleOf(soup, t), t);
    std::sort(vTriples.begin(), vTriples.end());
    CopyDropper dropper(soup, vTriples);
    const std::vector<bool> vDropped = dropper.run();
    if (!vDropped.empty())
        numDoubled += filterTriangles(soup, [&vDropped](int t) { return !vDropped[t]; });
}

// Fans the triangle of corner c out from the corner opposite the edge c; vOnEdge are the vertices on it.
void SoupWelder::splitTriangle(int c, const std::vector<int>& vOnEdge)
{
    const int end = soup.vCorners[FlatSoup::next(c)];
    const int opposite = soup.vCorners[FlatSoup::prev(c)];
    soup.vCorners[FlatSoup::next(c)] = vOnEdge.front();
    for (std::size_t i = 0; i < vOnEdge.size(); ++i)
    {
        soup.vCorners.push_back(vOnEdge[i]);
        soup.vCorners.push_back(i + 1 < vOnEdge.size() ? vOnEdge[i + 1] : end);
        soup.vCorners.push_back(opposite);
    }
    numJoints += static_cast<int>(vOnEdge.size());
}

// One round: each triangle is split along one open edge at most. False if there was nothing to split.
bool SoupWelder::splitJoints()
{
    std::vector<int> vOpen; // corners that begin an edge of one triangle
    std::vector<int> vEnds;
    SoupEdgeTable(soup.vPoints.size(), soup.vCorners)
        .forEachEdge(
            [&](const int* pCorners, int num)
            {
                if (num != 1)
                    return;
                vOpen.push_back(pCorners[0]);
                vEnds.push_back(soup.vCorners[pCorners[0]]);
                vEnds.push_back(soup.vCorners[FlatSoup::next(pCorners[0])]);
            });
    if (vOpen.empty())
        return false;
    std::sort(vEnds.begin(), vEnds.end());
    vEnds.erase(std::unique(vEnds.begin(), vEnds.end()), vEnds.end());
    const JointFinder finder(soup, vEnds, JOINT_FACTOR * tolerance);
    std::vector<bool> vSplit(soup.numTriangles(), false);
    bool bAny = false;
    std::sort(vOpen.begin(), vOpen.end());
    CancelStride cancel;
    for (const int c : vOpen)
    {
        cancel.step();
        if (vSplit[c / 3])
            continue;
        const std::vector<int> vOnEdge = finder.verticesOn(c);
        if (vOnEdge.empty())
            continue;
        splitTriangle(c, vOnEdge);
        vSplit[c / 3] = true;
        bAny = true;
    }
    return bAny;
}

} // namespace TARN_ZEF
