// The page for browsers: what is embedded is the mesh, and nothing is fetched.
#include "htmlPicture.h"
#include "ToolError.h"
#include "drawnShapes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <unistd.h>

namespace
{
using namespace TARN_TOOL;
using TARN_ZEF::Point3;

std::string makePage(const MeshDrawing& drawing, const std::string& title = "ball")
{
    const std::filesystem::path name =
        std::filesystem::temp_directory_path() / ("zef-page-" + std::to_string(getpid()) + ".html");
    writeHtmlPicture(name.string(), title, drawing, ViewOptions());
    std::ifstream file(name, std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(file), {}};
    std::filesystem::remove(name);
    return text;
}

// What stands in the element of this id.
std::string elementOf(const std::string& page, const std::string& id)
{
    const std::size_t begin = page.find('>', page.find(" id=\"" + id + "\"")) + 1;
    return page.substr(begin, page.find('<', begin) - begin);
}

std::vector<std::uint8_t> decode(const std::string& text)
{
    static const std::string LETTERS = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    EXPECT_EQ(text.size() % 4, 0u);
    std::array<std::uint8_t, 256> values{};
    for (std::size_t i = 0; i < LETTERS.size(); ++i)
        values[static_cast<unsigned char>(LETTERS[i])] = static_cast<std::uint8_t>(i);
    std::vector<std::uint8_t> bytes;
    for (std::size_t i = 0; i < text.size(); i += 4)
    {
        std::uint32_t bits = 0;
        for (std::size_t k = 0; k < 4; ++k)
            bits = bits << 6 | values[static_cast<unsigned char>(text[i + k])];
        for (const int shift : {16, 8, 0})
            bytes.push_back(static_cast<std::uint8_t>(bits >> shift & 0xFF));
    }
    if (!text.empty())
        bytes.resize(bytes.size() - static_cast<std::size_t>(std::count(text.end() - 2, text.end(), '=')));
    return bytes;
}

std::vector<std::uint32_t> numbersOf(const std::string& page, const std::string& id, std::size_t numBytes = 4)
{
    const std::vector<std::uint8_t> bytes = decode(elementOf(page, id));
    EXPECT_EQ(bytes.size() % numBytes, 0u);
    std::vector<std::uint32_t> numbers(bytes.size() / numBytes, 0);
    for (std::size_t i = 0; i < bytes.size(); ++i)
        numbers[i / numBytes] |= std::uint32_t{bytes[i]} << 8 * (i % numBytes);
    return numbers;
}

// The first number behind a key of the header.
double headerNumber(const std::string& page, const std::string& key)
{
    const std::string header = elementOf(page, "header");
    const std::size_t at = header.find('"' + key + "\": ");
    EXPECT_NE(at, std::string::npos) << key;
    return std::strtod(header.c_str() + header.find_first_of("-0123456789", at + key.size() + 3), nullptr);
}

TEST(HtmlPicture, theEmbeddedMeshIsTheMesh)
{
    Shape shape = makeBall(9, 3.0);
    shape.add(makeSheet(2, 5.0), {400000.0, 0.0, 0.0});
    MeshDrawing drawing(shape.vPoints, shape.vCorners);
    drawing.markEdges();
    drawing.paintByPiece();
    const std::string page = makePage(drawing);
    EXPECT_EQ(headerNumber(page, "vertices"), drawing.getPoints().size());
    EXPECT_EQ(headerNumber(page, "triangles"), drawing.getCorners().size() / 3);
    EXPECT_EQ(headerNumber(page, "borderEdges"), 8);
    EXPECT_EQ(headerNumber(page, "nonManifoldEdges"), 0);

    const std::vector<std::uint32_t> corners = numbersOf(page, "corners");
    EXPECT_TRUE(
        std::equal(corners.begin(), corners.end(), drawing.getCorners().begin(), drawing.getCorners().end()));
    EXPECT_EQ(numbersOf(page, "borders").size(), 2 * 8u);
    EXPECT_TRUE(numbersOf(page, "nonManifold").empty());
    EXPECT_EQ(numbersOf(page, "colors", 1).size(), 3 * drawing.getPoints().size());

    const std::vector<std::uint32_t> positions = numbersOf(page, "positions");
    ASSERT_EQ(positions.size(), 3 * drawing.getPoints().size());
    const double size = headerNumber(page, "size");
    const double centreX = headerNumber(page, "x"); // the first vector of the header is the centre
    for (std::size_t i = 0; i < drawing.getPoints().size(); ++i)
        EXPECT_NEAR(centreX + size * double{std::bit_cast<float>(positions[3 * i])},
                    drawing.getPoints()[i].x(), size * 6e-8);
}

TEST(HtmlPicture, hugeMeshesAreStoredInSteps)
{
    const Shape sheet = makeSheet(1000, 70.0);
    ASSERT_GT(sheet.vPoints.size(), MAX_FLOAT_VERTICES);
    const MeshDrawing drawing(sheet.vPoints, sheet.vCorners);
    const std::string page = makePage(drawing);
    const std::vector<std::uint32_t> steps = numbersOf(page, "positions", 2);
    ASSERT_EQ(steps.size(), 3 * sheet.vPoints.size());
    std::size_t numWrong = 0;
    for (std::size_t i = 0; i < sheet.vPoints.size(); ++i)
    {
        const Point3& p = drawing.getPoints()[i];
        numWrong += std::fabs(steps[3 * i] / 65535.0 - p.x() / 70.0) > 0.6 / 65535 ? 1 : 0;
        numWrong += std::fabs(steps[3 * i + 1] / 65535.0 - p.y() / 70.0) > 0.6 / 65535 ? 1 : 0;
    }
    EXPECT_EQ(numWrong, 0u);
    EXPECT_LT(page.size(), 30 * sheet.vCorners.size() / 3);
}

TEST(HtmlPicture, moreThanBrowsersTakeIsRefused)
{
    const Shape triangle = makeSheet(1, 1.0);
    const std::vector<int> corners(3 * (MAX_HTML_TRIANGLES + 1), 0);
    const MeshDrawing drawing(triangle.vPoints, corners);
    EXPECT_THROW(makePage(drawing), ToolError);
}

TEST(HtmlPicture, thePageNeedsNothingElseAndTitlesDoNotEndIt)
{
    const Shape ball = makeBall(2, 1.0);
    const MeshDrawing drawing(ball.vPoints, ball.vCorners);
    const std::string page = makePage(drawing);
    for (const char* pWord :
         {"http:", "https:", "src=", "href=", "url(", "import ", "fetch(", "XMLHttp", "WebSocket", "@"})
        EXPECT_EQ(page.find(pWord), std::string::npos) << pWord;
    const auto countEnds = [](const std::string& text)
    {
        std::size_t num = 0;
        for (std::size_t i = text.find("</script"); i != std::string::npos; i = text.find("</script", i + 1))
            ++num;
        return num;
    };
    EXPECT_EQ(countEnds(makePage(drawing, "</script><b>\"&")), countEnds(page));
}
} // namespace
