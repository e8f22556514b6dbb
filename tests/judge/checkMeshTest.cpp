// The judge of meshes: one planted fault after the other, against a slow judge on random triangles, and what must
// not change its answer.
#include "checkMesh.h"

#include "ZefBugException.h"
#include "helpers/StreamCapture.h"
#include "helpers/meshShapes.h"
#include "judge/slowIntersections.h"
#include "parallel/WorkerPool.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <numeric>
#include <random>
#include <set>
#include <sstream>
#include <tuple>

namespace TARN_ZEF
{
namespace
{
constexpr double NO_NUMBER = std::numeric_limits<double>::quiet_NaN();

struct Surface
{
    std::vector<Point3> vPoints;
    std::vector<int> vCorners;
};

MeshCheck check(const Surface& s, const CheckOptions& options = CheckOptions())
{
    return checkMesh(s.vPoints, s.vCorners, options);
}

Surface surfaceOf(const RMeshSource& source)
{
    return {source.vPoints, {source.vCorners.begin(), source.vCorners.end()}};
}

// Each triangle with corners of its own.
Surface soupOf(const std::vector<Point3>& vTriCorners)
{
    Surface s{vTriCorners, std::vector<int>(vTriCorners.size())};
    std::iota(s.vCorners.begin(), s.vCorners.end(), 0);
    return s;
}

std::string textOf(const MeshCheck& c)
{
    std::ostringstream text;
    text.precision(17);
    text << c.numVertices << " vertices, " << c.numTriangles << " triangles, " << c.numEdges << " edges, "
         << c.numPieces << " pieces, Euler " << c.eulerNumber << ", not finite " << c.numNotFinite
         << ", flat " << c.numFlat << ", duplicates " << c.numDuplicates << ", edges "
         << c.numNonManifoldEdges << ", vertices " << c.numNonManifoldVertices << ", disagreeing "
         << c.numDisagreeingEdges << ", intersections " << c.numIntersections
         << (c.bAllPairsJudged ? "" : " at least") << ", border " << c.numBorderEdges << " in "
         << c.numBorderLoops << " of " << c.borderLength << ", longest " << c.numLongestLoopEdges << " of "
         << c.longestLoopLength << "\n";
    for (const MeshFault& fault : c.vFaults)
        text << static_cast<int>(fault.kind) << ": " << fault.triangle << " " << fault.otherTriangle << " at "
             << fault.place.x() << " " << fault.place.y() << " " << fault.place.z() << "\n";
    return text.str();
}

// Counts of faults, in the order of MeshFaultKind.
using Counts = std::array<std::size_t, 8>;

Counts countsOf(const MeshCheck& c)
{
    return {c.numNotFinite,           c.numFlat,
            c.numDuplicates,          c.numNonManifoldEdges,
            c.numNonManifoldVertices, c.numDisagreeingEdges,
            c.numIntersections,       c.numBorderEdges};
}

struct PlantedCase
{
    const char* name;
    Surface surface;
    Counts counts;
};

CheckOptions allPlaces()
{
    CheckOptions options;
    options.maxPlaces = 1'000'000;
    return options;
}

const Point3 O(0, 0, 0);
const Point3 X(1, 0, 0);
const Point3 Y(0, 1, 0);
const Point3 Z(0, 0, 1);
const std::vector<int> TETRAHEDRON = {0, 2, 1, 0, 1, 3, 1, 2, 3, 2, 0, 3};

// Triangle 0, 1, 2 in the plane z = 0 and another one of the corners given.
Surface overCorner(std::vector<Point3> vMore, const std::vector<int>& vSecond)
{
    Surface s{{Point3(0, 0, 0), Point3(4, 0, 0), Point3(0, 4, 0)}, {0, 1, 2}};
    s.vPoints.insert(s.vPoints.end(), vMore.begin(), vMore.end());
    s.vCorners.insert(s.vCorners.end(), vSecond.begin(), vSecond.end());
    return s;
}

// A strip of n squares that is closed to a ring, after half a turn if bTwist.
Surface makeRing(int n, bool bTwist)
{
    Surface s;
    for (int i = 0; i < n; ++i)
    {
        const double around = 6.28318530717958648 * i / n;
        const double tilt = bTwist ? 0.5 * around : 0.0;
        for (const double side : {-1.0, 1.0})
        {
            const double radius = 3.0 + side * std::cos(tilt);
            s.vPoints.emplace_back(radius * std::cos(around), radius * std::sin(around),
                                   side * std::sin(tilt));
        }
        const int a = 2 * i;
        const bool bSwap = bTwist && i + 1 == n;
        const int c = 2 * ((i + 1) % n) + (bSwap ? 1 : 0);
        const int d = 2 * ((i + 1) % n) + (bSwap ? 0 : 1);
        s.vCorners.insert(s.vCorners.end(), {a, a + 1, d, a, d, c});
    }
    return s;
}

const PlantedCase PLANTED[] = {
    // not finite, flat, duplicates, edges, vertices, disagreeing, intersections, border
    {"no triangle", {{}, {}}, {}},
    {"points alone", {{O, X}, {}}, {}},
    {"tetrahedron", {{O, X, Y, Z}, TETRAHEDRON}, {}},
    {"one triangle", overCorner({}, {}), {0, 0, 0, 0, 0, 0, 0, 3}},
    {"ring", makeRing(12, false), {0, 0, 0, 0, 0, 0, 0, 24}},
    {"Moebius strip: one seam must disagree", makeRing(12, true), {0, 0, 0, 0, 0, 1, 0, 24}},
    {"tetrahedron with a turned face",
     {{O, X, Y, Z}, {0, 1, 2, 0, 1, 3, 1, 2, 3, 2, 0, 3}},
     {0, 0, 0, 0, 0, 3}},
    {"corner not finite", {{O, X, Y, Point3(NO_NUMBER, 0, 1)}, TETRAHEDRON}, {3}},
    {"corner at infinity", {{O, X, Y, Point3(0, -1.0 / 0.0, 1)}, TETRAHEDRON}, {3}},
    {"edge of three",
     {{O, X, Y, Z, Point3(0, -1, 0)}, {0, 1, 2, 1, 0, 3, 0, 1, 4}},
     {0, 0, 0, 1, 0, 0, 0, 6}},
    {"two fans at a vertex", overCorner({{-4, 0, 1}, {0, -4, 1}}, {0, 3, 4}), {0, 0, 0, 0, 1, 0, 0, 6}},
    {"the same by coordinates only",
     overCorner({O, {-4, 0, 1}, {0, -4, 1}}, {3, 4, 5}),
     {0, 0, 0, 0, 0, 0, 0, 6}},
    {"duplicate", overCorner({}, {1, 2, 0}), {0, 0, 1, 0, 0, 3}},
    {"duplicate, turned", overCorner({}, {2, 1, 0}), {0, 0, 1}},
    {"duplicate of coordinates", overCorner({O, {4, 0, 0}, {0, 4, 0}}, {5, 4, 3}), {0, 0, 1, 0, 0, 0, 0, 6}},
    {"corners on a line", overCorner({{2, 2, 0}}, {2, 1, 3}), {0, 1, 0, 0, 0, 0, 0, 4}},
    {"two corners coincide", overCorner({{0, 4, 0}}, {2, 1, 3}), {0, 1, 0, 0, 0, 0, 0, 4}},
    {"a vertex named twice", overCorner({}, {2, 1, 1}), {0, 1, 0, 0, 0, 0, 0, 3}},
    {"crossing in the middle",
     overCorner({{1, 1, 1}, {1, 1, -1}, {9, 9, 0}}, {3, 4, 5}),
     {0, 0, 0, 0, 0, 0, 1, 6}},
    {"beside each other",
     overCorner({{3, 3, 1}, {3, 3, -1}, {9, 9, 0}}, {3, 4, 5}),
     {0, 0, 0, 0, 0, 0, 0, 6}},
    {"above each other", overCorner({{0, 0, 1}, {4, 0, 1}, {0, 4, 1}}, {3, 4, 5}), {0, 0, 0, 0, 0, 0, 0, 6}},
    {"one common corner, piercing", overCorner({{1, 1, 1}, {1, 1, -1}}, {0, 3, 4}), {0, 0, 0, 0, 1, 0, 1, 6}},
    {"one common corner, beside", overCorner({{-1, 1, 1}, {-1, 1, -1}}, {0, 3, 4}), {0, 0, 0, 0, 1, 0, 0, 6}},
    {"one common corner, along a border",
     overCorner({{2, 0, 0}, {2, -1, 1}}, {0, 3, 4}),
     {0, 0, 0, 0, 1, 0, 1, 6}},
    {"one common corner, overlap in one plane",
     overCorner({{1, 2, 0}, {-3, 1, 0}}, {0, 3, 4}),
     {0, 0, 0, 0, 1, 0, 1, 6}},
    {"one common corner in one plane, beside",
     overCorner({{-1, 2, 0}, {-3, 1, 0}}, {0, 3, 4}),
     {0, 0, 0, 0, 1, 0, 0, 6}},
    {"common edge, folded flat", overCorner({{1, 1, 0}}, {1, 0, 3}), {0, 0, 0, 0, 0, 0, 1, 4}},
    {"common edge, folded nearly flat", overCorner({{1, 1, 1e-300}}, {1, 0, 3}), {0, 0, 0, 0, 0, 0, 0, 4}},
    {"common edge, flat neighbours", overCorner({{1, -1, 0}}, {1, 0, 3}), {0, 0, 0, 0, 0, 0, 0, 4}},
    {"common edge by coordinates, folded",
     overCorner({O, {4, 0, 0}, {1, 1, 0}}, {3, 4, 5}),
     {0, 0, 0, 0, 0, 0, 1, 6}},
    {"common edge by coordinates, clean",
     overCorner({O, {4, 0, 0}, {1, 1, 1}}, {3, 4, 5}),
     {0, 0, 0, 0, 0, 0, 0, 6}},
    {"corner touches the inside",
     overCorner({{1, 1, 0}, {1, 1, 5}, {2, 1, 5}}, {3, 4, 5}),
     {0, 0, 0, 0, 0, 0, 1, 6}},
    {"corner touches an edge",
     overCorner({{2, 2, 0}, {5, 5, 0}, {5, 5, 1}}, {3, 4, 5}),
     {0, 0, 0, 0, 0, 0, 1, 6}},
    {"corner just misses the edge",
     overCorner({{2.0, 2.0 + 1e-15, 0}, {5, 5, 0}, {5, 5, 1}}, {3, 4, 5}),
     {0, 0, 0, 0, 0, 0, 0, 6}},
    {"edges cross in a point",
     overCorner({{1, -1, -1}, {1, 1, 1}, {1, -9, 0}}, {3, 4, 5}),
     {0, 0, 0, 0, 0, 0, 1, 6}},
    {"one inside the other in one plane",
     overCorner({{1, 1, 0}, {2, 1, 0}, {1, 2, 0}}, {3, 4, 5}),
     {0, 0, 0, 0, 0, 0, 1, 6}},
    {"T-junction: half an edge in common",
     overCorner({{2, 0, 0}, {2, -2, 0}}, {0, 3, 4}),
     {0, 0, 0, 0, 1, 0, 1, 6}},
};

void expectCounts(const MeshCheck& found, const Counts& counts)
{
    EXPECT_EQ(countsOf(found), counts) << textOf(found);
    EXPECT_TRUE(found.bAllPairsJudged);
    const std::size_t numFaults = std::accumulate(counts.begin(), counts.end(), std::size_t{0});
    EXPECT_EQ(found.isSound(), numFaults == counts[7]);
    EXPECT_EQ(found.isClosed(), counts[7] == 0);
    // Each is told with its triangles.
    EXPECT_EQ(found.vFaults.size(), numFaults);
    for (const MeshFault& fault : found.vFaults)
        EXPECT_LT(std::max(fault.triangle, fault.otherTriangle), static_cast<int>(found.numTriangles));
}
} // namespace

TEST(CheckMesh, findsThePlantedFaultAndNoOther)
{
    for (const PlantedCase& c : PLANTED)
    {
        SCOPED_TRACE(c.name);
        expectCounts(check(c.surface, allPlaces()), c.counts);
    }
}

// In another order of corners, triangles and axes, at sizes whose products leave the range of doubles, and with
// axes so different in size that no scaling brings them together.
TEST(CheckMesh, plantedFaultsStayWhenTheMeshIsTurnedAndScaled)
{
    const std::array<std::array<int, 3>, 6> exponents = {{{1, 1, 1},
                                                          {-400, -400, -400},
                                                          {900, 900, 900},
                                                          {-1000, -1000, -1000},
                                                          {-900, 0, 900},
                                                          {30, -600, 200}}};
    for (const PlantedCase& c : PLANTED)
        for (const auto& [ex, ey, ez] : exponents)
        {
            SCOPED_TRACE(c.name + std::string(" ") + std::to_string(ex) + " " + std::to_string(ez));
            Surface s = c.surface;
            // The nearly flat fold would become a flat one.
            if (std::string(c.name) == "common edge, folded nearly flat" && ex < 0)
                continue;
            for (Point3& p : s.vPoints)
                p.set(std::ldexp(p.z(), ex), std::ldexp(-p.x(), ey), std::ldexp(p.y(), ez));
            std::rotate(s.vCorners.begin(), s.vCorners.begin() + (s.vCorners.size() > 3 ? 3 : 0),
                        s.vCorners.end());
            for (std::size_t i = 0; i + 2 < s.vCorners.size(); i += 3)
                std::rotate(s.vCorners.begin() + static_cast<int>(i),
                            s.vCorners.begin() + static_cast<int>(i) + 1,
                            s.vCorners.begin() + static_cast<int>(i) + 3);
            expectCounts(check(s, allPlaces()), c.counts);
        }
}

TEST(CheckMesh, tellsTheShapeOfSoundMeshes)
{
    struct Row
    {
        const char* name;
        Surface surface;
        std::int64_t euler;
        std::size_t numPieces;
        std::size_t numLoops;
        double border;
        double longest;
    };
    // A plane with two holes that touch in a vertex: its two fans lead from one hole to the other, so that they
    // have one border.
    Surface holes = surfaceOf(planeSource(6));
    for (const int square : {14, 21}) // (2, 2) and (3, 3)
        std::fill_n(holes.vCorners.begin() + 6 * square, 6, 0);
    Surface two = surfaceOf(cubeSource(4, true));
    const std::size_t numFirst = two.vCorners.size();
    for (std::size_t i = 0; i < numFirst; ++i)
        two.vCorners.push_back(two.vCorners[i] + static_cast<int>(two.vPoints.size()));
    const std::vector<Point3> vBall = two.vPoints;
    for (const Point3& p : vBall)
        two.vPoints.emplace_back(p.x() + 100.0, p.y(), p.z());
    const Row rows[] = {
        {"torus", surfaceOf(torusSource(40, 20)), 0, 1, 0, 0.0, 0.0},
        {"ball", surfaceOf(cubeSource(8, true)), 2, 1, 0, 0.0, 0.0},
        {"cube of coplanar triangles", surfaceOf(cubeSource(8, false)), 2, 1, 0, 0.0, 0.0},
        {"two balls", two, 4, 2, 0, 0.0, 0.0},
        {"plane", surfaceOf(planeSource(30)), 1, 1, 1, 120.0, 120.0},
        {"ring", makeRing(12, false), 0, 1, 2, NO_NUMBER, NO_NUMBER},
        {"touching holes", holes, -1, 1, 2, 32.0, 24.0},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.name);
        const MeshCheck found = check(row.surface);
        EXPECT_EQ(found.eulerNumber, row.euler);
        EXPECT_EQ(found.numPieces, row.numPieces);
        EXPECT_EQ(found.numBorderLoops, row.numLoops);
        EXPECT_EQ(found.numIntersections, 0u);
        if (std::string(row.name) != "touching holes")
        {
            EXPECT_TRUE(found.isSound()) << textOf(found);
        }
        if (std::isnan(row.border))
            continue;
        EXPECT_EQ(found.borderLength, row.border);
        EXPECT_EQ(found.longestLoopLength, row.longest);
        EXPECT_EQ(static_cast<double>(found.numLongestLoopEdges), row.longest); // of length 1
    }
}

TEST(CheckMesh, joinsCornersOfASoup)
{
    const Surface box = soupOf(boxSoup(Point3(1, 2, 3), Vector3(4, 5, 6)));
    const MeshCheck apart = check(box);
    EXPECT_EQ(apart.numPieces, 12u);
    EXPECT_EQ(apart.numBorderLoops, 12u);
    EXPECT_TRUE(apart.isSound()) << textOf(apart);
    CheckOptions options;
    options.bJoinEqualPoints = true;
    const MeshCheck joined = check(box, options);
    EXPECT_EQ(joined.numVertices, 8u);
    EXPECT_EQ(joined.eulerNumber, 2);
    EXPECT_TRUE(joined.isSound() && joined.isClosed()) << textOf(joined);
}

namespace
{
using Pairs = std::set<std::pair<int, int>>;

struct IntMesh
{
    std::vector<IntVector> vPoints;
    std::vector<int> vCorners;

    [[nodiscard]] IntTriangle getTriangle(std::size_t t) const
    {
        const auto corner = [&](std::size_t k)
        { return vPoints[static_cast<std::size_t>(vCorners[3 * t + k])]; };
        return {corner(0), corner(1), corner(2)};
    }
    [[nodiscard]] Surface getSurface(const std::function<Point3(double, double, double)>& map) const
    {
        Surface s{{}, vCorners};
        for (const IntVector& p : vPoints)
            s.vPoints.push_back(
                map(static_cast<double>(p.x), static_cast<double>(p.y), static_cast<double>(p.z)));
        return s;
    }
};

// Coordinates from 0 to size: small sizes make every kind of contact.
IntMesh makeIntMesh(std::mt19937_64& rng, int size, int numPoints, int numTriangles)
{
    IntMesh mesh;
    const auto random = [&rng](int n) { return static_cast<int>(rng() % static_cast<unsigned>(n)); };
    for (int i = 0; i < numPoints; ++i)
        mesh.vPoints.push_back({random(size + 1), random(size + 1), random(size + 1)});
    for (int i = 0; i < 3 * numTriangles; ++i)
        mesh.vCorners.push_back(random(numPoints));
    return mesh;
}

struct SlowCheck
{
    explicit SlowCheck(const IntMesh& mesh)
    {
        const int numTriangles = static_cast<int>(mesh.vCorners.size() / 3);
        std::set<IntTriangle> mSeen;
        for (int i = 0; i < numTriangles; ++i)
        {
            const IntTriangle s = mesh.getTriangle(static_cast<std::size_t>(i));
            IntTriangle sorted = s;
            std::sort(sorted.begin(), sorted.end());
            numDuplicates += !mSeen.insert(sorted).second;
            numFlat += isFlat(s);
            for (int k = 0; k < i; ++k)
            {
                const IntTriangle t = mesh.getTriangle(static_cast<std::size_t>(k));
                if (!isFlat(s) && !isFlat(t) && !std::is_permutation(s.begin(), s.end(), t.begin()) &&
                    intersectSlowly(s, t))
                    pairs.emplace(k, i);
            }
        }
    }
    std::size_t numDuplicates = 0;
    std::size_t numFlat = 0;
    Pairs pairs;
};

Pairs pairsOf(const MeshCheck& c)
{
    Pairs result;
    for (const MeshFault& fault : c.vFaults)
        if (fault.kind == MeshFaultKind::INTERSECTION)
            result.emplace(fault.triangle, fault.otherTriangle);
    return result;
}

void expectSame(const Surface& surface, const SlowCheck& slow)
{
    const MeshCheck found = check(surface, allPlaces());
    EXPECT_EQ(found.numFlat, slow.numFlat);
    EXPECT_EQ(found.numDuplicates, slow.numDuplicates);
    EXPECT_EQ(found.numIntersections, slow.pairs.size());
    EXPECT_EQ(pairsOf(found), slow.pairs);
}
} // namespace

// Affine maps that lose no bit change no contact; they make numbers that plain arithmetic cannot decide on.
TEST(CheckMesh, agreesWithASlowJudgeOnRandomTriangles)
{
    const std::function<Point3(double, double, double)> maps[] = {
        [](double x, double y, double z) { return Point3(x, y, z); },
        [](double x, double y, double z) { return Point3(x + 0x1p40 * y, y - z, z); },
        [](double x, double y, double z)
        { return Point3(x + 0x1p-45 * y + 0x1p-49 * z, y + 0x1p-47 * z, z + 0x1p-44 * x); },
        [](double x, double y, double z) { return Point3(x - 0x1p49, y + 0x1p48 + z, z + 3 * x); },
        [](double x, double y, double z)
        { return Point3(std::ldexp(x, -1040), std::ldexp(y, 1000) + std::ldexp(z, 980), std::ldexp(z, -3)); },
    };
    std::mt19937_64 rng(11);
    for (int i = 0; i < 3000; ++i)
    {
        SCOPED_TRACE(i);
        const IntMesh mesh = makeIntMesh(rng, 1 + i % 6, 4 + i % 9, 4 + i % 13);
        const SlowCheck slow(mesh);
        expectSame(mesh.getSurface(maps[0]), slow);
        expectSame(mesh.getSurface(maps[1 + i % 4]), slow);
        if (HasFailure())
            return;
    }
}

// Many small triangles in a large space, so that boxes and blocks matter.
TEST(CheckMesh, losesNoPairBetweenBlocks)
{
    std::mt19937_64 rng(5);
    for (int i = 0; i < 4; ++i)
    {
        IntMesh mesh;
        const auto random = [&rng](int n) { return static_cast<int>(rng() % static_cast<unsigned>(n)); };
        for (int t = 0; t < 700; ++t)
        {
            const IntVector place{random(60), random(60), i % 2 == 0 ? random(60) : 0};
            for (int k = 0; k < 3; ++k)
            {
                mesh.vCorners.push_back(static_cast<int>(mesh.vPoints.size()));
                mesh.vPoints.push_back(place + IntVector{random(9), random(9), random(9)});
            }
        }
        const SlowCheck slow(mesh);
        EXPECT_GT(slow.pairs.size(), 20u);
        const auto map = [](double x, double y, double z) { return Point3(x, y, z); };
        Surface surface = mesh.getSurface(map);
        EXPECT_EQ(pairsOf(check(surface, allPlaces())), slow.pairs);
        // A far outlier squeezes all others together in every simple grid.
        surface.vPoints.emplace_back(1e300, 0, -1e290);
        surface.vPoints.emplace_back(1e300, 1, -1e290);
        surface.vPoints.emplace_back(1e300, 2, 1e290);
        for (int k = 0; k < 3; ++k)
            surface.vCorners.push_back(static_cast<int>(surface.vPoints.size()) - 3 + k);
        EXPECT_EQ(pairsOf(check(surface, allPlaces())), slow.pairs);
    }
}

namespace
{
// A torus so rough that it crosses itself in places.
Surface makeRoughTorus()
{
    Surface s = surfaceOf(torusSource(120, 60));
    std::mt19937_64 rng(3);
    const auto shake = [&rng](double x)
    { return x + 1.4 * (static_cast<double>(rng() % 4096) / 4096.0 - 0.5); };
    for (Point3& p : s.vPoints)
        p.set(shake(p.x()), shake(p.y()), shake(p.z()));
    return s;
}
} // namespace

TEST(CheckMesh, saysTheSameForEveryNumberOfThreads)
{
    const Surface torus = makeRoughTorus();
    CheckOptions cutOff;
    cutOff.maxPairs = 60'000;
    const int numThreads = getNumThreads();
    std::set<std::string> mTexts;
    std::set<std::string> mCutTexts;
    for (const int num : {1, 2, 5})
    {
        setNumThreads(num);
        mTexts.insert(textOf(check(torus)));
        mCutTexts.insert(textOf(check(torus, cutOff)));
    }
    setNumThreads(numThreads);
    EXPECT_EQ(mTexts.size(), 1u);
    ASSERT_EQ(mCutTexts.size(), 1u);
    EXPECT_NE(mCutTexts.begin()->find("at least"), std::string::npos);
    EXPECT_FALSE(check(torus, cutOff).isFreeOfIntersections());
}

TEST(CheckMesh, permutedTrianglesHaveTheSameFaults)
{
    const Surface torus = makeRoughTorus();
    const std::size_t num = torus.vCorners.size() / 3;
    std::vector<int> vOld(num);
    std::iota(vOld.begin(), vOld.end(), 0);
    std::shuffle(vOld.begin(), vOld.end(), std::mt19937_64(9));
    Surface shuffled{torus.vPoints, {}};
    for (const int old : vOld)
        shuffled.vCorners.insert(shuffled.vCorners.end(), torus.vCorners.begin() + 3 * old,
                                 torus.vCorners.begin() + 3 * old + 3);
    const MeshCheck first = check(torus, allPlaces());
    const MeshCheck second = check(shuffled, allPlaces());
    EXPECT_GT(first.numIntersections, 100u);
    EXPECT_EQ(countsOf(first), countsOf(second));
    Pairs mapped;
    for (const auto& [a, b] : pairsOf(second))
        mapped.insert(std::minmax(vOld[static_cast<std::size_t>(a)], vOld[static_cast<std::size_t>(b)]));
    EXPECT_EQ(mapped, pairsOf(first));
    // Few places: the lowest.
    const std::vector<MeshFault> vFew = check(torus).vFaults;
    ASSERT_EQ(vFew.size(), 10u);
    for (std::size_t i = 0; i < vFew.size(); ++i)
        EXPECT_EQ(vFew[i].triangle, first.vFaults[i].triangle);
}

// A star whose boxes all overlap at its middle, and a heap of triangles that all cross: pairs grow with the square.
TEST(CheckMesh, endsInTimeOnHeaps)
{
    Surface star{{O}, {}};
    Surface heap;
    const int n = 3000;
    for (int i = 0; i < n; ++i)
    {
        const double around = 6.28318530717958648 * i / n;
        star.vPoints.emplace_back(std::cos(around), std::sin(around), 0.1 * (i % 2));
        star.vCorners.insert(star.vCorners.end(), {0, i + 1, (i + 1) % n + 1});
        heap.vPoints.emplace_back(1.0 + 0.001 * i, -1.0, -1.0);
        heap.vPoints.emplace_back(-1.0 - 0.001 * i, 1.0, -1.0);
        heap.vPoints.emplace_back(0.001 * i, 0.001 * i, 1.0);
        heap.vCorners.insert(heap.vCorners.end(), {3 * i, 3 * i + 1, 3 * i + 2});
    }
    const MeshCheck starCheck = check(star);
    EXPECT_TRUE(starCheck.isSound()) << textOf(starCheck);
    EXPECT_EQ(starCheck.numBorderLoops, 1u);
    CheckOptions options;
    options.maxPairs = 100'000;
    const MeshCheck heapCheck = check(heap, options);
    EXPECT_FALSE(heapCheck.bAllPairsJudged);
    EXPECT_GT(heapCheck.numIntersections, 10'000u);
    EXPECT_LE(heapCheck.numIntersections, 2 * options.maxPairs);
}

TEST(CheckMesh, refusesCornersThatAreNoPoints)
{
    const StreamCapture capture(std::cout);
    for (const std::vector<int>& vCorners : {std::vector<int>{0, 1}, {0, 1, 3}, {0, 1, -1}})
        EXPECT_THROW((void)checkMesh({O, X, Y}, vCorners), ZefBugException);
}

} // namespace TARN_ZEF
