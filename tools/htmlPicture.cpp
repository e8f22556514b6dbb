#include "htmlPicture.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <string_view>

#include "Base64Stream.h"
#include "Camera.h"
#include "JsonLine.h"
#include "LocalFrame.h"
#include "SurfaceNormals.h"
#include "ToolError.h"
#include "viewerText.h"

namespace TARN_TOOL
{
namespace
{
JsonLine vectorJson(double x, double y, double z)
{
    JsonLine line;
    line.add("x", x);
    line.add("y", y);
    line.add("z", z);
    return line;
}

JsonLine vectorJson(const Vec3f& v)
{
    return vectorJson(double{v.x}, double{v.y}, double{v.z});
}

// Of a text that stands between tags.
std::string escaped(const std::string& text)
{
    std::string result;
    for (const char letter : text)
        result += letter == '<' ? "&lt;" : letter == '&' ? "&amp;" : std::string(1, letter);
    return result;
}

// JSON inside a script element: a tag in a text would end it.
std::string escapedJson(const JsonLine& line)
{
    std::string result;
    for (const char letter : line.getText())
        result += letter == '<' ? "\\u003c" : std::string(1, letter);
    return result;
}

class HtmlPage
{
public:
    HtmlPage(std::ostream& out_, const MeshDrawing& mesh_, const ViewOptions& options_)
        : out(out_)
        , mesh(mesh_)
        , options(options_)
        , frame(mesh_.getPoints())
        , vPlaces(frame.localise(mesh_.getPoints()))
        , bQuantised(vPlaces.size() > MAX_FLOAT_VERTICES)
    {
        low = high = vPlaces.front();
        for (const Vec3f& p : vPlaces)
        {
            low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
            high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
        }
    }

    void write(const std::string& title)
    {
        std::string_view rest = VIEWER_PAGE;
        const auto passTo = [&](std::string_view mark)
        {
            const std::size_t at = rest.find(mark);
            out << rest.substr(0, at);
            rest.remove_prefix(at + mark.size());
        };
        passTo("@TITLE@");
        out << escaped(title);
        passTo("@HEADER@");
        out << escapedJson(getHeader(title));
        passTo("@DATA@");
        writeData();
        passTo("@SCRIPT@");
        out << VIEWER_MESH_SCRIPT << VIEWER_SCRIPT << rest;
    }

private:
    [[nodiscard]] std::size_t countMarks(bool bNonManifold) const
    {
        return static_cast<std::size_t>(std::count_if(mesh.getMarks().begin(), mesh.getMarks().end(),
                                                      [&](const MarkedEdge& edge)
                                                      { return edge.bNonManifold == bNonManifold; }));
    }

    [[nodiscard]] JsonLine getHeader(const std::string& title) const
    {
        JsonLine line;
        line.add("title", title);
        line.add("vertices", vPlaces.size());
        line.add("triangles", mesh.getCorners().size() / 3);
        line.add("borderEdges", countMarks(false));
        line.add("nonManifoldEdges", countMarks(true));
        line.add("colors", std::size_t{!mesh.getColors().empty()});
        line.add("marks", std::size_t{options.bMarks});
        line.add("wire", std::size_t{options.bWire});
        const TARN_ZEF::Point3& centre = frame.getCentre();
        line.add("centre", vectorJson(centre.x(), centre.y(), centre.z()));
        line.add("size", frame.getSize());
        line.add("quantised", std::size_t{bQuantised});
        line.add("low", vectorJson(low));
        line.add("extent", vectorJson(high - low));
        const Camera camera(options, vPlaces, SurfaceNormals(vPlaces, mesh.getCorners()).getMean());
        line.add("right", vectorJson(camera.getRight()));
        line.add("up", vectorJson(camera.getUp()));
        line.add("axis", vectorJson(camera.getAxis()));
        if (mesh.getLegend())
            line.add("legend", legendJson(*mesh.getLegend()));
        return line;
    }

    [[nodiscard]] static JsonLine legendJson(const ColorLegend& legend)
    {
        JsonLine line;
        line.add("name", legend.name);
        line.add("low", legend.low);
        line.add("high", legend.high);
        line.add("signed", std::size_t{legend.bSigned});
        return line;
    }

    void writeData()
    {
        writeElement("positions",
                     [&](Base64Stream& data)
                     {
                         for (const Vec3f& p : vPlaces)
                         {
                             addCoordinate(data, p.x, low.x, high.x);
                             addCoordinate(data, p.y, low.y, high.y);
                             addCoordinate(data, p.z, low.z, high.z);
                         }
                     });
        writeElement("corners",
                     [&](Base64Stream& data)
                     {
                         for (const int corner : mesh.getCorners())
                             data.add(static_cast<std::uint32_t>(corner));
                     });
        writeElement("colors",
                     [&](Base64Stream& data)
                     {
                         for (const Colour& color : mesh.getColors())
                             for (const float channel : color)
                                 data.add(static_cast<std::uint8_t>(
                                     std::lround(255.0f * std::clamp(channel, 0.0f, 1.0f))));
                     });
        writeMarks("borders", false);
        writeMarks("nonManifold", true);
    }

    void writeMarks(const char* pId, bool bNonManifold)
    {
        writeElement(pId,
                     [&](Base64Stream& data)
                     {
                         for (const MarkedEdge& edge : mesh.getMarks())
                             if (edge.bNonManifold == bNonManifold)
                             {
                                 data.add(static_cast<std::uint32_t>(edge.from));
                                 data.add(static_cast<std::uint32_t>(edge.to));
                             }
                     });
    }

    void addCoordinate(Base64Stream& data, float value, float lowest, float highest) const
    {
        if (!bQuantised)
            return data.add(value);
        const float share = highest > lowest ? (value - lowest) / (highest - lowest) : 0.0f;
        data.add(static_cast<std::uint16_t>(std::lround(65535.0f * share)));
    }

    template <typename F>
    void writeElement(const char* pId, F fill)
    {
        out << "<script type=\"text/plain\" id=\"" << pId << "\">";
        Base64Stream data(out);
        fill(data);
        data.finish();
        out << "</script>\n";
    }

    std::ostream& out;
    const MeshDrawing& mesh;
    const ViewOptions& options;
    LocalFrame frame;
    std::vector<Vec3f> vPlaces; // of the points, in the frame
    bool bQuantised;
    Vec3f low; // of the box of the places
    Vec3f high;
};
} // namespace

void writeHtmlPicture(const std::string& fileName, const std::string& title, const MeshDrawing& mesh,
                      const ViewOptions& options)
{
    const std::size_t numTriangles = mesh.getCorners().size() / 3;
    if (numTriangles > MAX_HTML_TRIANGLES)
        throw ToolError("--html shows up to " + std::to_string(MAX_HTML_TRIANGLES) + " triangles, not " +
                        std::to_string(numTriangles) + "; take a larger spacing, or thin them with --reduce");
    std::ofstream file(fileName, std::ios::binary);
    HtmlPage(file, mesh, options).write(title);
    if (!file.flush())
        throw ToolError("the disk may be full");
}

} // namespace TARN_TOOL
