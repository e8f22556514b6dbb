#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "Point3.h"
#include "tarn_locate3/RTree.h"
#include "tarn_octree/Octree.h"
#include "tarn_tools/HilbertSort2.h"
#include "tarn_tools/HilbertSort3.h"

namespace TARN_ZEF
{
namespace
{
// Every place of the curve is taken once, and places that follow each other are neighbours.
void expectCurve(std::vector<std::pair<unsigned, Point3>> vPlaces)
{
    std::sort(vPlaces.begin(), vPlaces.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    for (std::size_t i = 0; i < vPlaces.size(); ++i)
    {
        ASSERT_EQ(vPlaces[i].first, i);
        ASSERT_TRUE(i == 0 || (vPlaces[i].second - vPlaces[i - 1].second).length() == 1.0)
            << "at place " << i;
    }
}

TEST(HilbertSort, CurvesFillCubeAndRectangleInUnitSteps)
{
    for (const int numLevels : {1, 3, 5})
    {
        SCOPED_TRACE(numLevels);
        const int num = 1 << numLevels;
        const HilbertSort3 inCube(-1.0, 2.0, 0.0, num - 1.0, num + 2.0, num, 3 * numLevels);
        const HilbertSort2 inRectangle(0.0, -3.0, num, 10.0 * num - 3.0, 2 * numLevels);
        std::vector<std::pair<unsigned, Point3>> vCube, vRectangle;
        for (int x = 0; x < num; ++x)
            for (int y = 0; y < num; ++y)
            {
                vRectangle.push_back({inRectangle.getIndex(x + 0.5, 10.0 * y + 2.0), Point3(x, y, 0)});
                for (int z = 0; z < num; ++z)
                    vCube.push_back({inCube.getIndex(x - 0.5, y + 2.5, z + 0.5), Point3(x, y, z)});
            }
        expectCurve(vCube);
        expectCurve(vRectangle);
    }
}

// Places for the items of a tree.
struct Scene
{
    const char* name;
    std::size_t num;
    void (*place)(std::mt19937_64& random, double (&p)[3]);
};

double draw(std::mt19937_64& random)
{
    return std::uniform_real_distribution<double>(-50.0, 50.0)(random);
}

constexpr Scene SCENES[] = {
    {"none", 0, [](std::mt19937_64&, double (&)[3]) {}},
    {"spread", 100'000,
     [](std::mt19937_64& random, double (&p)[3]) { std::generate(p, p + 3, [&] { return draw(random); }); }},
    {"flat box", 20'000,
     [](std::mt19937_64& random, double (&p)[3])
     {
         p[0] = 0.001 * draw(random);
         p[1] = draw(random);
         p[2] = 5.0;
     }},
    {"line", 5000, [](std::mt19937_64& random, double (&p)[3]) { p[0] = p[1] = p[2] = draw(random); }},
    {"grid with repeats", 5000,
     [](std::mt19937_64& random, double (&p)[3])
     { std::generate(p, p + 3, [&] { return static_cast<double>(random() % 7) * 10.0 - 30.0; }); }},
    {"identical", 3000, [](std::mt19937_64&, double (&p)[3]) { p[0] = p[1] = p[2] = 10.0; }},
    {"towards a corner", 3000,
     [](std::mt19937_64& random, double (&p)[3])
     { p[0] = p[1] = p[2] = std::ldexp(1.0, -static_cast<int>(random() % 1000)); }},
};

// Empty, thin, small, half and all; some with faces on the items.
std::vector<Box> makeQueries(std::mt19937_64& random)
{
    std::vector<Box> vQueries = {
        {-100.0, -100.0, -100.0, 100.0, 100.0, 100.0}, {10.0, 10.0, 10.0, 10.0, 10.0, 10.0},
        {0.0, -30.0, -30.0, 20.0, 10.0, 0.0},          {200.0, 0.0, 0.0, 201.0, 1.0, 1.0},
        {-50.0, -50.0, 4.0, 50.0, 50.0, 5.0},          {1.0, 1.0, 1.0, 0.0, 0.0, 0.0}};
    for (const double size : {0.01, 1.0, 10.0, 60.0})
        for (int i = 0; i < 8; ++i)
        {
            const double x = draw(random);
            const double y = draw(random);
            const double z = draw(random);
            vQueries.push_back({x, y, z, x + size, y + size, z + size});
        }
    return vQueries;
}

std::vector<Box> makeItems(const Scene& scene, double maxSize, std::mt19937_64& random)
{
    std::vector<Box> vItems(scene.num);
    std::uniform_real_distribution<double> drawSize(0.0, maxSize);
    for (Box& item : vItems)
    {
        double p[3] = {};
        scene.place(random, p);
        const double size = maxSize > 0.0 ? drawSize(random) : 0.0;
        item = {p[0], p[1], p[2], p[0] + size, p[1] + 0.5 * size, p[2] + size};
    }
    return vItems;
}

template <typename Tree>
void expectAnswers(const Tree& tree, const std::vector<Box>& vItems, std::mt19937_64& random)
{
    for (const Box& query : makeQueries(random))
    {
        std::vector<void*> vResult;
        tree.query(vResult, query);
        std::vector<const void*> vFound(vResult.begin(), vResult.end());
        std::sort(vFound.begin(), vFound.end());
        std::vector<const void*> vExpected;
        for (const Box& item : vItems)
            if (item.xmin <= query.xmax && item.xmax >= query.xmin && item.ymin <= query.ymax &&
                item.ymax >= query.ymin && item.zmin <= query.zmax && item.zmax >= query.zmin)
                vExpected.push_back(&item);
        ASSERT_TRUE(vFound == vExpected) << "query from " << query.xmin << " to " << query.xmax << ": "
                                         << vFound.size() << " for " << vExpected.size();
    }
}

TEST(RTree, FindsWhatOverlaps)
{
    for (const Scene& scene : SCENES)
        for (const double maxSize : {0.0, 3.0})
        {
            SCOPED_TRACE(std::string(scene.name) + ", boxes up to " + std::to_string(maxSize));
            std::mt19937_64 random(scene.num);
            std::vector<Box> vItems = makeItems(scene, maxSize, random);
            TARN_LOCATE3::RTree tree;
            for (Box& b : vItems)
                tree.addObject(&b, b.xmin, b.ymin, b.zmin, b.xmax, b.ymax, b.zmax);
            tree.build();
            expectAnswers(tree, vItems, random);
        }
}

// Items lie in the boxes of their nodes; inner nodes have two children or more. Returns the items below.
std::size_t checkNode(const TARN_OCTREE::OctNode& node, std::size_t& maxLeaf)
{
    for (const TARN_OCTREE::OctItem* pItem : node.getItems())
        EXPECT_TRUE(node.getBox().contains(pItem->x, pItem->y, pItem->z));
    if (node.isLeaf())
    {
        maxLeaf = std::max(maxLeaf, node.getItems().size());
        return node.getItems().size();
    }
    EXPECT_GE(node.getChildren().size(), 2u);
    std::size_t num = 0;
    for (const TARN_OCTREE::OctNode* pChild : node.getChildren())
        num += checkNode(*pChild, maxLeaf);
    EXPECT_EQ(num, node.getItems().size());
    return num;
}

TEST(Octree, FindsWhatLiesInTheBox)
{
    for (const Scene& scene : SCENES)
    {
        SCOPED_TRACE(scene.name);
        std::mt19937_64 random(scene.num);
        std::vector<Box> vItems = makeItems(scene, 0.0, random);
        TARN_OCTREE::Octree tree;
        for (Box& b : vItems)
            tree.add(&b, b.xmin, b.ymin, b.zmin);
        tree.build();
        expectAnswers(tree, vItems, random);
        std::size_t maxLeaf = 0;
        EXPECT_EQ(scene.num == 0 ? 0 : checkNode(*tree.getRoot(), maxLeaf), scene.num);
        EXPECT_TRUE(scene.num != 100'000 || maxLeaf <= 4u);
    }
}

} // namespace
} // namespace TARN_ZEF
