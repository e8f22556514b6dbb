#include "intake/Smooth.h"
#include "core/Progress.h"
#include "core/zefRand.h"
#include "geometry/tools.h"
#include "occupancy/RemoveDecider.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <set>
#include <vector>

namespace TARN_ZEF
{
namespace
{
constexpr double CELL = 100.0;
const Calc LATTICE(0.0, 0.0, 0.0, 64 * CELL, 64 * CELL, 64 * CELL, 6);

// Largest difference in any index.
u64 getCellDistance(RCD a, RCD b)
{
    u64 ax, ay, az, bx, by, bz;
    splitRCD(a, ax, ay, az);
    splitRCD(b, bx, by, bz);
    const auto distance = [](u64 p, u64 q) { return p > q ? p - q : q - p; };
    return std::max({distance(ax, bx), distance(ay, by), distance(az, bz)});
}

// A node of the plain algorithm that judges the nodes of Smooth: lists and sorted sets, step after step.
struct RefNode
{
    RCD rcd;
    Point3 pos;
    int numPoints;
    Point3 start = pos;
    Point3 prev = pos;
    Vector3 move = {};
    std::vector<std::size_t> vLinks = {}; // creation numbers
};

class RefSmooth
{
public:
    RefSmooth(const std::vector<Point3>& vPoints, bool bSmooth)
    {
        create(vPoints);
        complete();
        relink();
        if (bSmooth)
        {
            move();
            complete();
            relink();
        }
        vOrder.resize(v.size());
        for (std::size_t i = 0; i < v.size(); ++i)
            vOrder[i] = i;
        std::stable_sort(vOrder.begin(), vOrder.end(),
                         [this](std::size_t a, std::size_t b) { return v[a].rcd < v[b].rcd; });
    }

    std::vector<RefNode> v;          // by creation number
    std::vector<std::size_t> vOrder; // creation numbers, sorted by cell

private:
    void create(const std::vector<Point3>& vPoints)
    {
        std::map<RCD, std::vector<Point3>> mGroups;
        for (const Point3& p : vPoints)
            mGroups[LATTICE.getRCD(p)].push_back(p);
        for (const auto& [rcd, vGroup] : mGroups)
        {
            double x = 0.0, y = 0.0, z = 0.0;
            for (const Point3& p : vGroup)
                p.addOwnCoords(x, y, z);
            const double n = static_cast<double>(vGroup.size());
            v.push_back({rcd, {x / n, y / n, z / n}, static_cast<int>(vGroup.size())});
        }
    }

    // Cells that lie in six or more of the cubes around occupied cells: first those in all eight, then the
    // others unless they can be removed.
    void complete()
    {
        std::set<CCD> sOrg, sCubes;
        for (const RefNode& node : v)
            sOrg.insert(LATTICE.getCCD(node.pos));
        for (const CCD ccd : sOrg)
        {
            CCD array[8] = {ccd};
            LATTICE.completeArray8Up(array);
            sCubes.insert(array, array + 8);
        }
        std::map<CCD, int> mPossible;
        for (const CCD cube : sCubes)
        {
            CCD array[8] = {};
            array[5] = cube;
            LATTICE.completeArray8Down(array);
            for (const CCD ccd : array)
                mPossible[ccd] += sOrg.count(ccd) == 0 ? 1 : 0;
        }
        for (const int least : {8, 6})
        {
            const std::vector<CCD> vOrg(sOrg.begin(), sOrg.end());
            RemoveDecider decider(&vOrg, &LATTICE);
            for (const auto& [ccd, num] : mPossible)
                if (num >= least && sOrg.count(ccd) == 0 && (num == 8 || !decider.canRemove(ccd)))
                    v.push_back({LATTICE.ccdToRCD(ccd), LATTICE.getMid(ccd), 0});
            for (const RefNode& node : v)
                sOrg.insert(LATTICE.getCCD(node.pos));
        }
    }

    void relink()
    {
        std::map<RCD, std::vector<std::size_t>> mCubes;
        for (std::size_t i = 0; i < v.size(); ++i)
        {
            v[i].vLinks.clear();
            u64 x, y, z;
            splitRCD(v[i].rcd, x, y, z);
            for (u64 k = 0; k < 8; ++k)
                mCubes[makeRCD(x + (k >> 2), y + (k >> 1 & 1), z + (k & 1))].push_back(i);
        }
        for (const auto& [cube, vGroup] : mCubes)
            for (const std::size_t a : vGroup)
                for (const std::size_t b : vGroup)
                    if (a < b && std::count(v[a].vLinks.begin(), v[a].vLinks.end(), b) == 0)
                    {
                        v[a].vLinks.push_back(b);
                        v[b].vLinks.push_back(a);
                    }
    }

    void move()
    {
        for (RefNode& node : v)
            node.prev = node.pos;
        for (RefNode& node : v)
        {
            Point3 mean;
            double num = 0.0;
            for (const std::size_t i : node.vLinks)
                if (v[i].numPoints != 0)
                {
                    mean = mean + (v[i].prev - Point3());
                    num += 1.0;
                }
            if (num > 0.0)
                node.pos = mean = Point3(mean.x() / num, mean.y() / num, mean.z() / num);
            const Vector3 old = (node.start - Point3()) * 0.3 + (node.prev - Point3()) * 0.7;
            node.move = node.vLinks.empty() ? Vector3() : mean - Point3(old.x(), old.y(), old.z());
        }
        std::vector<RefNode> vMoved;
        for (const RefNode& node : v)
        {
            Vector3 sum;
            for (const std::size_t i : node.vLinks)
                sum.add(v[i].move);
            const std::size_t n = node.vLinks.size();
            const Vector3 m = node.move * 0.2 + sum * (0.8 / static_cast<double>(n));
            const Point3 target = node.pos - m;
            if (n >= 8 && m.getMaxAbsComponent() < CELL && LATTICE.getRCD(target) != node.rcd)
                vMoved.push_back({LATTICE.getRCD(target), target, -1});
        }
        v.insert(v.end(), vMoved.begin(), vMoved.end());
    }
};

void expectSameNodes(const Smooth& smooth, const RefSmooth& ref)
{
    const std::vector<SNode>& vNodes = smooth.getNodes();
    ASSERT_EQ(vNodes.size(), ref.v.size());
    for (std::size_t i = 0; i < vNodes.size(); ++i)
    {
        SCOPED_TRACE(i);
        const RefNode& expected = ref.v[ref.vOrder[i]];
        ASSERT_EQ(vNodes[i].getNumber(), ref.vOrder[i]);
        ASSERT_EQ(vNodes[i].getRCD(), expected.rcd);
        ASSERT_EQ(vNodes[i].getPoint(), expected.pos);
        ASSERT_EQ(vNodes[i].getNumPoints(), expected.numPoints);
        std::vector<std::size_t> vLinks;
        for (const std::uint32_t link : smooth.getLinks(i))
            vLinks.push_back(vNodes[link].getNumber());
        ASSERT_EQ(vLinks, expected.vLinks);
    }
}

using Fit = std::pair<Vector3, double>; // normal and area

// The plane through a node that fits others best, with the area that they span; none if that is too small.
std::optional<Fit> fit(const std::vector<SNode>& v, std::size_t node,
                       const std::vector<std::uint32_t>& vOthers)
{
    double xx = 0, xy = 0, xz = 0, yy = 0, yz = 0, zz = 0, area = 0;
    for (const std::uint32_t i : vOthers)
    {
        const Vector3 d = v[i].getPoint() - v[node].getPoint();
        xx += d.x() * d.x();
        xy += d.x() * d.y();
        xz += d.x() * d.z();
        yy += d.y() * d.y();
        yz += d.y() * d.z();
        zz += d.z() * d.z();
        if (i != vOthers[0])
            area += crossProduct(v[vOthers[0]].getPoint() - v[node].getPoint(), d).length() / 2.0;
    }
    const double det[3] = {yy * zz - yz * yz, xx * zz - xz * xz, xx * yy - xy * xy};
    Vector3 n(xy * yz - xz * yy, xy * xz - yz * xx, det[2]);
    if (det[0] >= det[1] && det[0] >= det[2])
        n = {det[0], xz * yz - xy * zz, xy * yz - xz * yy};
    else if (det[1] >= det[0] && det[1] >= det[2])
        n = {xz * yz - xy * zz, det[1], xy * xz - yz * xx};
    if (area < Smooth::getMinArea(CELL) || n.isDegenerate())
        return std::nullopt;
    return Fit(normalize(n), area);
}

// The mean of normals that all lie within 20 degrees of it; the first sets the sign, the second counts twice.
std::optional<Fit> average(const std::vector<std::optional<Fit>>& vFits,
                           const std::vector<std::uint32_t>& vLinks)
{
    Vector3 sum = vFits[vLinks[1]]->first;
    for (std::size_t i = 1; i < vLinks.size(); ++i)
        sum =
            sum + vFits[vLinks[i]]->first *
                      (getAngleDegree(vFits[vLinks[i]]->first, vFits[vLinks[0]]->first) < 90.0 ? 1.0 : -1.0);
    for (const std::uint32_t k : vLinks)
        if (getAngleDegree(vFits[k]->first, normalize(sum)) > 20.0)
            return std::nullopt;
    return Fit(normalize(sum), DBL_MAX);
}

// Planes that agree with those around are the fitted ones. The others come from trusted normals around, else
// from a wider fit. Creases are where planes meet.
void expectPlanesRight(const Smooth& smooth, int& numMeans)
{
    const std::vector<SNode>& v = smooth.getNodes();
    const auto linksOf = [&](std::size_t i)
    { return std::vector<std::uint32_t>(smooth.getLinks(i).begin(), smooth.getLinks(i).end()); };
    std::vector<std::optional<Fit>> vFits;
    for (std::size_t i = 0; i < v.size(); ++i)
        vFits.push_back(fit(v, i, linksOf(i)));
    const auto isGood = [&](std::size_t i)
    {
        int aNum[2] = {0, 0}; // neighbours whose first planes agree, and others
        for (const std::uint32_t k : smooth.getLinks(i))
            if (vFits[i] && vFits[k])
                ++aNum[getAngleDegree(vFits[i]->first, vFits[k]->first) < 15.0 ? 0 : 1];
        return aNum[0] >= 4 && aNum[0] > 2 * aNum[1];
    };
    std::vector<char> vGood(v.size());
    for (std::size_t i = 0; i < v.size(); ++i)
        vGood[i] = isGood(i) ? 1 : 0;
    for (std::size_t i = 0; i < v.size(); ++i)
    {
        SCOPED_TRACE(i);
        int numTrusted = 0;
        bool bCrease = false;
        for (const std::uint32_t k : smooth.getLinks(i))
        {
            if (!v[i].hasPlane() || !v[k].hasPlane())
                continue;
            const double angle = getAngleDegree(v[i].getNNV(), v[k].getNNV());
            numTrusted += v[k].isTrusted() && std::min(angle, 180.0 - angle) < 20.0 ? 1 : 0;
            bCrease = bCrease || (angle > 20.0 && angle < 160.0);
        }
        ASSERT_EQ(v[i].isCrease(), bCrease);
        const auto has = [&](const auto& expected) {
            return expected && v[i].hasPlane() && (v[i].getNNV() + expected->first * -1.0).sqLength() < 1e-28;
        };
        ASSERT_TRUE(vGood[i] == 0 || (has(vFits[i]) && v[i].isTrusted()));
        const std::vector<std::uint32_t> vLinks = linksOf(i);
        const auto isGoodLink = [&](std::uint32_t k) { return vGood[k] != 0; };
        if (vGood[i] == 0 && vLinks.size() >= 4 && std::all_of(vLinks.begin(), vLinks.end(), isGoodLink))
        {
            const auto mean = average(vFits, vLinks);
            ASSERT_TRUE(!mean || (has(mean) && v[i].isTrusted()));
            numMeans += mean ? 1 : 0;
        }
        if (vGood[i] != 0 || (v[i].isTrusted() && numTrusted >= 4))
            continue;
        std::vector<std::uint32_t> vWide;
        for (std::uint32_t k = 0; k < v.size(); ++k)
            if (k != i && getCellDistance(v[k].getRCD(), v[i].getRCD()) <= 2)
                vWide.push_back(k);
        const auto wide = fit(v, i, vWide);
        ASSERT_EQ(v[i].isTrusted(), wide.has_value());
        ASSERT_TRUE(has(wide ? wide : vFits[i]) || !v[i].hasPlane());
    }
}

double draw(ZefRandom& random, double low, double high)
{
    return low + (high - low) * random.next() / ZEF_RAND_MAX;
}

struct CloudCase
{
    const char* name;
    int numPoints;
    double (*height)(double x, double y); // in cells
    double noise;                         // in cells
};

std::vector<Point3> makeCloud(const CloudCase& c)
{
    ZefRandom random(5);
    std::vector<Point3> v;
    for (int i = 0; i < c.numPoints; ++i)
    {
        const double x = draw(random, 8.0, 50.0);
        const double y = draw(random, 8.0, 50.0);
        const double z = 20.0 + c.height(x, y) + draw(random, -c.noise, c.noise);
        v.emplace_back(CELL * x, CELL * y, CELL * z);
    }
    return v;
}

const CloudCase CLOUDS[] = {
    {"flat", 2500, [](double, double) { return 0.3; }, 0.01},
    {"sheet with holes", 900, [](double x, double y) { return 0.2 * x + 0.1 * y; }, 0.3},
    {"waves", 3000, [](double x, double y) { return 3.0 * std::sin(x / 5.0) * std::cos(y / 4.0); }, 0.1},
    // Its normals are as long on y as on z: either component may be the largest.
    {"steep", 4000, [](double, double y) { return y - 20.0; }, 0.3},
    {"roof", 4000, [](double x, double) { return -0.7 * std::fabs(x - 29.0); }, 0.05},
    {"noise", 3000, [](double x, double) { return 0.1 * x; }, 2.0},
    {"scattered", 200, [](double, double) { return 0.0; }, 10.0},
};
} // namespace

TEST(Smooth, EqualsThePlainAlgorithm)
{
    prepareProgress("Reconstruct");
    int numMeans = 0;
    for (const CloudCase& c : CLOUDS)
        for (const bool bSmooth : {false, true})
        {
            SCOPED_TRACE(std::string(c.name) + (bSmooth ? ", smoothed" : ""));
            const std::vector<Point3> vPoints = makeCloud(c);
            Smooth smooth(vPoints, &LATTICE);
            smooth.run(bSmooth);
            expectSameNodes(smooth, RefSmooth(vPoints, bSmooth));
            expectPlanesRight(smooth, numMeans);
        }
    EXPECT_GT(numMeans, 0);
    getRootProgress()->reset();
}

TEST(AngleLimit, AnswersAsTheExactAngleAroundTheLimit)
{
    ZefRandom random(3);
    for (const double degrees : {15.0, 20.0, 90.0, 160.0})
    {
        const AngleLimit limit(degrees);
        for (int i = 0; i < 3000; ++i)
        {
            const double scale = std::pow(10.0, -draw(random, 0.0, 16.0));
            const double angle = (degrees + draw(random, -1.0, 1.0) * scale) / DEGREES_PER_RAD;
            const double turn = draw(random, 0.0, 6.0);
            const Vector3 a(std::cos(turn), std::sin(turn), 0.0);
            const Vector3 b(std::cos(turn + angle), std::sin(turn + angle), 0.0);
            ASSERT_EQ(limit.isBelow(a, b), getAngleDegree(a, b) < degrees) << degrees << " " << scale;
            ASSERT_EQ(limit.isAbove(a, b), getAngleDegree(a, b) > degrees) << degrees << " " << scale;
        }
        EXPECT_THROW((void)limit.isBelow({2.0, 0.0, 0.0}, {1.0, 0.0, 0.0}), ZefBugException);
    }
}

} // namespace TARN_ZEF
