// What pictures of meshes show, by their pixels.
#include "BitmapText.h"
#include "PngRenderer.h"
#include "ToolError.h"
#include "annotations.h"
#include "colorScale.h"
#include "drawnShapes.h"
#include "meshCurvature.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>
#include <string>
#include <vector>

namespace
{
using namespace TARN_TOOL;
using TARN_ZEF::Point3;

// Strongly red, as no surface is; violet has blue as well.
bool isRed(const Colour& c)
{
    return c[0] > 0.7f && c[1] < 0.25f && c[2] < 0.3f;
}
bool isViolet(const Colour& c)
{
    return c[0] > 0.5f && c[1] < 0.2f && c[2] > 0.6f;
}
bool isInk(const Colour& c)
{
    return c[0] < 0.2f && c[1] < 0.2f && c[2] < 0.2f;
}

struct Found
{
    std::size_t num = 0;
    int left = std::numeric_limits<int>::max();
    int right = -1;

    [[nodiscard]] int getWidth() const { return right - left + 1; }
};

template <typename F>
Found find(const Image& image, F isWanted, int top = 0)
{
    Found found;
    for (int y = top; y < image.getHeight(); ++y)
        for (int x = 0; x < image.getWidth(); ++x)
            if (isWanted(image.getPixel(x, y)))
            {
                ++found.num;
                found.left = std::min(found.left, x);
                found.right = std::max(found.right, x);
            }
    return found;
}

std::size_t countDifferences(const Image& a, const Image& b)
{
    std::size_t num = 0;
    for (int y = 0; y < a.getHeight(); ++y)
        for (int x = 0; x < a.getWidth(); ++x)
            num += std::fabs(a.getPixel(x, y)[0] - b.getPixel(x, y)[0]) > 0.02f ? 1 : 0;
    return num;
}

ViewOptions fromAbove()
{
    ViewOptions options;
    options.angles = {{0.0, 90.0}};
    options.bMarks = true;
    return options;
}

Image drawMarked(const Shape& shape, const ViewOptions& options)
{
    MeshDrawing drawing(shape.vPoints, shape.vCorners);
    drawing.markEdges();
    return PngRenderer(options).drawMesh(drawing);
}

TEST(Pictures, bordersAreMarkedWhereTheyAreSeen)
{
    const std::size_t numAround = find(drawMarked(makeSheet(10, 1.0), fromAbove()), isRed).num;
    EXPECT_GT(numAround, 4u * 700u);
    EXPECT_EQ(find(drawMarked(makeBall(40, 1.0), fromAbove()), isRed).num, 0u);
    ViewOptions plain = fromAbove();
    plain.bMarks = false;
    EXPECT_EQ(find(drawMarked(makeSheet(10, 1.0), plain), isRed).num, 0u);

    // A smaller sheet behind the first one adds nothing to the picture, one before it does.
    for (const double height : {-0.2, 0.2})
    {
        Shape both = makeSheet(10, 1.0);
        both.add(makeSheet(4, 0.5), {0.25, 0.25, height});
        const std::size_t num = find(drawMarked(both, fromAbove()), isRed).num;
        if (height < 0.0)
            EXPECT_EQ(num, numAround);
        else
            EXPECT_GT(num, numAround + numAround / 3);
    }
}

TEST(Pictures, edgesOfMoreThanTwoTrianglesAreMarked)
{
    Shape shape = makeSheet(1, 1.0);
    EXPECT_EQ(find(drawMarked(shape, fromAbove()), isViolet).num, 0u);
    // A third triangle stands on the diagonal.
    shape.vPoints.emplace_back(0.5, 0.5, 0.4);
    shape.vCorners.insert(shape.vCorners.end(), {0, 3, 4});
    EXPECT_GT(find(drawMarked(shape, fromAbove()), isViolet).num, 900u);
}

TEST(Pictures, theScaleBarIsAsLongAsItSays)
{
    for (const double side : {1.0, 3.3, 7e-6, 8.1e5, 4e30})
    {
        SCOPED_TRACE(side);
        ViewOptions options = fromAbove();
        options.bScaleBar = true;
        const Shape sheet = makeSheet(4, side);
        MeshDrawing drawing(sheet.vPoints, sheet.vCorners);
        drawing.markEdges();
        PngRenderer renderer(options);
        const Image picture = renderer.drawMesh(drawing);
        const int sheetWidth = find(picture, isRed).getWidth();
        const int barWidth = find(picture, isInk, picture.getHeight() - 60).getWidth();
        EXPECT_NEAR(renderer.getBarLength() / side, static_cast<double>(barWidth) / sheetWidth, 0.004);
        const double digit = renderer.getBarLength() /
                             std::pow(10.0, std::floor(std::log10(renderer.getBarLength() * 1.0001)));
        EXPECT_NEAR(std::min({std::fabs(digit - 1.0), std::fabs(digit - 2.0), std::fabs(digit - 5.0)}), 0.0,
                    1e-9);
    }
}

TEST(Pictures, roundLengthsAreTheLongestThatFit)
{
    const struct
    {
        double limit, length;
    } cases[] = {{1.0, 1.0}, {0.999, 0.5}, {2.0, 2.0},   {4.999, 2.0},
                 {5.0, 5.0}, {1e-7, 1e-7}, {99.0, 50.0}, {1e200, 1e200}};
    for (const auto& c : cases)
        EXPECT_NEAR(findRoundLength(c.limit) / c.length, 1.0, 1e-12) << c.limit;
}

// Letters can be told from each other, and what is not known leaves its place free.
TEST(Pictures, digitsDiffer)
{
    std::set<std::vector<bool>> seen;
    for (const char letter : std::string("0123456789.-+e "))
    {
        Image image(40, 40);
        for (int y = 0; y < 40; ++y)
            for (int x = 0; x < 40; ++x)
                image.setPixel(x, y, RIM);
        BitmapText(std::string(1, letter), 3).draw(image, 4, 4);
        std::vector<bool> ink;
        for (int y = 0; y < 40; ++y)
            for (int x = 0; x < 40; ++x)
                ink.push_back(isInk(image.getPixel(x, y)));
        EXPECT_EQ(std::count(ink.begin(), ink.end(), true) == 0, letter == ' ') << letter;
        EXPECT_TRUE(seen.insert(ink).second) << letter;
    }
}

// Half a turn brings a box onto itself, a quarter does not; nothing is cut off on the way.
TEST(Pictures, aTurntableLeadsOnceAround)
{
    const Shape box = makeBox(1.0, 2.0, 5.0);
    const MeshDrawing drawing(box.vPoints, box.vCorners);
    ViewOptions options;
    options.up = "-x";
    options.numTurns = 4;
    PngRenderer renderer(options);
    std::vector<Image> vPictures;
    for (int turn = 0; turn < 4; ++turn)
        vPictures.push_back(renderer.drawMesh(drawing, turn));
    EXPECT_LT(countDifferences(vPictures[0], vPictures[2]), 3000u);
    EXPECT_LT(countDifferences(vPictures[1], vPictures[3]), 3000u);
    EXPECT_GT(countDifferences(vPictures[0], vPictures[1]), 100000u);
    for (const Image& picture : vPictures)
        for (int y = 0; y < picture.getHeight(); ++y)
            for (const int x : {20, picture.getWidth() - 21})
                EXPECT_EQ(picture.getPixel(x, y), picture.getPixel(1, y)) << x << " " << y;
}

// The corners of the cube that the ball is made from have three neighbours only, and may be less exact.
void expectCurvature(const Shape& ball, double expected)
{
    std::size_t numFar = 0;
    for (const double curvature : findCurvatures(ball.vPoints, ball.vCorners))
    {
        EXPECT_NEAR(curvature / expected, 1.0, 0.5);
        numFar += std::fabs(curvature / expected - 1.0) > 0.03 ? 1 : 0;
    }
    EXPECT_LT(numFar, 8 * 10u);
}

TEST(Pictures, curvatureIsThatOfTheShape)
{
    for (const double radius : {1.0, 4.0, 1e-3})
    {
        Shape ball = makeBall(60, radius);
        expectCurvature(ball, 1.0 / radius);
        for (std::size_t i = 0; i < ball.vCorners.size(); i += 3)
            std::swap(ball.vCorners[i], ball.vCorners[i + 1]);
        expectCurvature(ball, -1.0 / radius);
    }
    const Shape sheet = makeSheet(5, 3.0);
    for (const double curvature : findCurvatures(sheet.vPoints, sheet.vCorners))
        EXPECT_EQ(curvature, 0.0);
}

TEST(Pictures, piecesHaveColorsOfTheirOwn)
{
    Shape shape = makeBox(1.0, 1.0, 1.0);
    shape.add(makeBall(10, 1.0), {5.0, 0.0, 0.0});
    shape.add(makeBox(1.0, 1.0, 1.0), {0.0, 5.0, 0.0});
    MeshDrawing drawing(shape.vPoints, shape.vCorners);
    drawing.paintByPiece();
    std::set<Colour> colors(drawing.getColors().begin(), drawing.getColors().end());
    EXPECT_EQ(colors.size(), 3u);
    const std::size_t numBox = 8;
    for (std::size_t i = 0; i < numBox; ++i)
        EXPECT_EQ(drawing.getColors()[i], drawing.getColors()[0]);
    // The largest comes first, wherever it stands.
    EXPECT_EQ(drawing.getColors()[numBox], colorOfPiece(0));
}

TEST(Pictures, whatIsNotFiniteIsLeftOut)
{
    const double infinite = std::numeric_limits<double>::infinity();
    Shape shape = makeSheet(1, 1.0);
    shape.vPoints.insert(shape.vPoints.begin(), Point3(infinite, 0.0, NAN));
    for (int& corner : shape.vCorners)
        ++corner;
    const std::size_t numCorners = shape.vCorners.size();
    shape.vCorners.insert(shape.vCorners.end(), {0, 1, 2});
    const MeshDrawing drawing(shape.vPoints, shape.vCorners);
    EXPECT_EQ(drawing.getPoints().size(), 4u);
    EXPECT_EQ(drawing.getCorners().size(), numCorners);
    EXPECT_THROW(MeshDrawing(shape.vPoints, {0, 1, 2}), ToolError);
}
} // namespace
