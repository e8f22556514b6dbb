#include "intake/Pixel.h"

#include "core/Progress.h"
#include "geometry/tools.h"
#include "helpers/meshShapes.h"
#include "intake/Cloud.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <memory>
#include <random>
#include <set>

using namespace TARN_ZEF;

namespace
{
// A welded soup on its lattice, and what Pixel makes of it.
struct Sampled
{
    std::vector<Point3> vSoup;
    std::vector<Point3*> vCorners;
    std::unique_ptr<Cloud> pCloud; // owns the lattice
    const Calc* pCalc;
    std::vector<Point3> vPixels;
    CCDPairs vFeatures;
    CCDPairs vBorders;

    [[nodiscard]] std::set<CCD> getCells() const
    {
        std::set<CCD> sCells;
        for (const Point3& p : vPixels)
            sCells.insert(pCalc->getCCD(p));
        return sCells;
    }
};

Sampled sample(const std::vector<Point3>& vSoup, double spacing, double featureAngle)
{
    Sampled s;
    s.vSoup = vSoup;
    s.pCloud = std::make_unique<Cloud>("soup", spacing, -1.0, false);
    s.pCloud->setPoints(vSoup);
    s.pCloud->getFrame().enter(s.vSoup);
    s.pCloud->estimateResolution();
    s.pCloud->createCalc();
    s.pCalc = s.pCloud->getCalc();
    std::map<Point3, Point3*> mPointVtx;
    for (Point3& p : s.vSoup)
        s.vCorners.push_back(mPointVtx.emplace(p, &p).first->second);
    getRootProgress()->reset();
    getRootProgress()->setName("Melt");
    Pixel pixel(s.vCorners, s.pCalc);
    pixel.run(s.vPixels, s.vFeatures, s.vBorders, featureAngle);
    getRootProgress()->reset();
    return s;
}

const std::vector<Point3> SQUARE = {{0, 0, 0}, {10, 0, 0}, {10, 10, 0}, {0, 0, 0}, {10, 10, 0}, {0, 10, 0}};

// Largest difference of two cells in any index.
u64 getCellDistance(const Calc& calc, CCD a, CCD b)
{
    u64 pa[3], pb[3];
    calc.getXYZ(a, pa[0], pa[1], pa[2]);
    calc.getXYZ(b, pb[0], pb[1], pb[2]);
    u64 distance = 0;
    for (int i = 0; i < 3; ++i)
        distance = std::max(distance, pa[i] > pb[i] ? pa[i] - pb[i] : pb[i] - pa[i]);
    return distance;
}

// Holds for every soup: a point per cell, and pairs of different cells that have points.
void expectSound(const Sampled& s)
{
    const std::set<CCD> sCells = s.getCells();
    EXPECT_EQ(sCells.size(), s.vPixels.size());
    for (const auto& [ccd0, ccd1] : s.vFeatures)
    {
        ASSERT_LT(ccd0, ccd1);
        ASSERT_TRUE(sCells.count(ccd0) != 0 && sCells.count(ccd1) != 0);
    }
    const std::set<std::pair<CCD, CCD>> sFeatures(s.vFeatures.begin(), s.vFeatures.end());
    for (const auto& border : s.vBorders)
        ASSERT_TRUE(sFeatures.count(border) != 0);
}

// Every place of the surface has a pixel in its cell or in one next to it.
void expectCovered(const Sampled& s, std::mt19937_64& random)
{
    const std::set<CCD> sCells = s.getCells();
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    for (std::size_t i = 0; i < s.vSoup.size(); i += 3)
    {
        if (getAreaByCross(s.vSoup[i], s.vSoup[i + 1], s.vSoup[i + 2]) == 0.0)
            continue;
        for (int n = 0; n < 50; ++n)
        {
            const double a = std::sqrt(unit(random));
            const double b = unit(random);
            const Point3 p = s.vSoup[i] + (s.vSoup[i + 1] - s.vSoup[i]) * (a * (1.0 - b)) +
                             (s.vSoup[i + 2] - s.vSoup[i]) * (a * b);
            CCD block[27];
            s.pCalc->completeArray27(s.pCalc->getCCD(p), block);
            ASSERT_TRUE(std::any_of(block, block + 27, [&](CCD ccd) { return sCells.count(ccd) != 0; }));
        }
    }
}
} // namespace

TEST(PixelSurface, flatSquareHasBordersButNoDiagonalFeature)
{
    const Sampled s = sample(SQUARE, 1.0, 361.0); // a border is a feature whatever the angle
    EXPECT_EQ(s.vPixels.size(), 121u);
    EXPECT_EQ(s.vBorders.size(), 40u);
    EXPECT_EQ(s.vFeatures, s.vBorders);
    expectSound(s);
}

TEST(PixelSurface, featureAngleDecides)
{
    struct Case
    {
        const char* name;
        double featureAngle;
        std::size_t numFeatures;
    };
    const Case cases[] = {
        {"below the bend of 90 degrees", 89.0, 240},
        {"above it", 91.0, 0},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.name);
        const Sampled s = sample(boxSoup({1, 2, 3}, {1, 1, 1}), 0.05, c.featureAngle);
        EXPECT_EQ(s.vFeatures.size(), c.numFeatures);
        EXPECT_EQ(s.vPixels.size(), 2402u); // a shell of 21 x 21 x 21 cells
        expectSound(s);
        for (const Point3& p : s.vPixels)
            ASSERT_NEAR(std::max({std::fabs(p.x() - 1.5), std::fabs(p.y() - 2.5), std::fabs(p.z() - 3.5)}),
                        0.5, 1e-12);
    }
}

TEST(PixelSurface, randomSoupsAreSoundAndCovered)
{
    std::mt19937_64 random(21);
    std::uniform_real_distribution<double> coordinate(-10.0, 10.0);
    for (const double offset : {0.0, 5e6})
    {
        for (int n = 0; n < 10; ++n)
        {
            SCOPED_TRACE(n);
            std::vector<Point3> vPool;
            for (int i = 0; i < 8; ++i)
                vPool.emplace_back(offset + coordinate(random), offset + coordinate(random),
                                   coordinate(random));
            std::vector<Point3> vSoup;
            for (int i = 0; i < 36; ++i) // corners repeat: degenerate and non-manifold triangles come up
                vSoup.push_back(vPool[random() % 8]);
            const Sampled s = sample(vSoup, 0.7, 40.0);
            expectSound(s);
            expectCovered(s, random);
            EXPECT_EQ(sample(s.vSoup, 0.7, 40.0).vPixels, s.vPixels);
        }
    }
}

TEST(PixelEdge, walksThroughNeighbouringCells)
{
    std::mt19937_64 random(22);
    std::uniform_real_distribution<double> coordinate(1.0, 63.0);
    for (const double offset : {0.0, 5e6})
    {
        const Calc calc(offset, offset, offset, 64.0, 64.0, 64.0, 6);
        const auto makePoint = [&](bool bOnGrid)
        {
            const auto one = [&]
            { return offset + (bOnGrid ? std::floor(coordinate(random)) : coordinate(random)); };
            const double x = one();
            const double y = one();
            return Point3(x, y, one());
        };
        std::vector<Point3> vEnds = {makePoint(false), makePoint(false), makePoint(true)};
        std::vector<Point3*> vCorners = {&vEnds[0], &vEnds[1], &vEnds[2]};
        const Pixel pixel(vCorners, &calc);
        for (int n = 0; n < 400; ++n)
        {
            const Point3 p0 = makePoint(n % 3 == 0);
            const Point3 p1 = makePoint(n % 5 == 0);
            std::vector<RCDPoint> vRaster;
            pixel.rasterizeEdge(p0, p1, vRaster);
            if (calc.getRCD(p0) == calc.getRCD(p1))
            {
                ASSERT_TRUE(vRaster.empty());
                continue;
            }
            ASSERT_EQ(vRaster.front(), RCDPoint(calc.getRCD(p0), p0));
            ASSERT_EQ(vRaster.back(), RCDPoint(calc.getRCD(p1), p1));
            for (std::size_t i = 0; i < vRaster.size(); ++i)
            {
                ASSERT_EQ(calc.getRCD(vRaster[i].second), vRaster[i].first);
                ASSERT_LT(getDistanceToLine(p0, p1, vRaster[i].second), 1e-7);
                if (i > 0)
                {
                    const CCD previous = calc.getCCD(vRaster[i - 1].second);
                    ASSERT_LE(getCellDistance(calc, previous, calc.getCCD(vRaster[i].second)), 1u);
                }
            }
        }
    }
}

TEST(FeatureChains, edgesRunOnAsLongAsTheyBendLittle)
{
    // A ring of 12 edges bent by 30 degrees, a straight row that ends in it, and borders across.
    std::vector<Point3> vPoints;
    for (int i = 0; i < 12; ++i)
        vPoints.emplace_back(std::cos(i * M_PI / 6.0), std::sin(i * M_PI / 6.0), 0.0);
    for (int i = 1; i <= 3; ++i)
        vPoints.emplace_back(1.0 + i, 0.0, 0.0);
    vPoints.emplace_back(5.0, 0.0, 0.0);
    const auto edge = [&](double maxDih, std::size_t a, std::size_t b)
    { return std::make_pair(maxDih, std::make_pair(&vPoints[std::min(a, b)], &vPoints[std::max(a, b)])); };
    FeatureList list;
    for (std::size_t i = 0; i < 12; ++i)
        list.push_back(edge(50.0 + static_cast<double>(i), i, (i + 1) % 12));
    list.push_back(edge(45.0, 0, 12));
    list.push_back(edge(47.0, 12, 13));
    list.push_back(edge(43.0, 13, 14));
    list.push_back(edge(FeatureEdge::BORDER_DIH, 14, 15)); // straight on, but an open edge
    FeatureList sorted = list;
    std::sort(sorted.begin(), sorted.end());
    FeatureList ordered = sorted;
    FeatureChainMgr mgr(ordered);
    mgr.reorder();

    ASSERT_EQ(ordered.size(), list.size());
    std::vector<std::size_t> vLengths;
    for (std::size_t i = 0; i < ordered.size(); ++i)
    {
        const bool bNew = i == 0 || ordered[i].second.first != ordered[i - 1].second.second;
        if (bNew)
            vLengths.push_back(0);
        ++vLengths.back();
    }
    // The straight row has the lowest mean angle, the ring comes next, the open edge last.
    EXPECT_EQ(vLengths, (std::vector<std::size_t>{3, 12, 1}));
    EXPECT_EQ(ordered[3].second.first, ordered[14].second.second);
    for (auto& [maxDih, ends] : ordered)
        if (ends.second < ends.first)
            std::swap(ends.first, ends.second);
    std::sort(ordered.begin(), ordered.end());
    EXPECT_EQ(ordered, sorted);
}
