#ifndef ZEF_TOOLS_MESHDRAWING_H
#define ZEF_TOOLS_MESHDRAWING_H

#include "Image.h"
#include "Point3.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace TARN_TOOL
{
// What the two ends of a scale of colors stand for.
struct ColorLegend
{
    std::string name; // "distance"
    double low = 0.0;
    double high = 0.0;
    // From blue at low over gray at 0 to red at high, which is -low; else the colors of colorOf().
    bool bSigned = false;
};

// An edge that is to be seen.
struct MarkedEdge
{
    int from;
    int to;
    bool bNonManifold; // of more than two triangles, else of one
};

// A mesh as pictures show it.
//
// Ownership:  copies what it is made of.
// Invariant:  there is a triangle; all points are finite and used by triangles.
class MeshDrawing
{
public:
    // Three entries of vCorners_ are one triangle. Triangles with a corner that is not finite are left out.
    // Throws ToolError if none is left.
    MeshDrawing(const std::vector<TARN_ZEF::Point3>& vPoints_, const std::vector<int>& vCorners_);

    [[nodiscard]] const std::vector<TARN_ZEF::Point3>& getPoints() const { return vPoints; }
    [[nodiscard]] const std::vector<int>& getCorners() const { return vCorners; }
    // One for each point, or none.
    [[nodiscard]] const std::vector<Colour>& getColors() const { return vColors; }
    [[nodiscard]] const std::optional<ColorLegend>& getLegend() const { return legend; }
    [[nodiscard]] const std::vector<MarkedEdge>& getMarks() const { return vMarks; }

    // From blue at 0 to red at what nearly all do not exceed. One for each of getPoints().
    void paintByDistance(const std::vector<double>& vDistances);
    // The same with one for each of the points of the constructor, and red at highest.
    void paintByDistance(const std::vector<double>& vDistances, double highest);
    // Blue where the surface is hollow, red where it bulges.
    void paintByCurvature();
    // Each piece in a color of its own, the largest ones first.
    void paintByPiece();
    // Borders, and edges of more than two triangles.
    void markEdges();

private:
    void paint(const ColorLegend& legend_, const std::vector<double>& vValues);

    std::vector<TARN_ZEF::Point3> vPoints;
    std::vector<int> vSources; // of each point, its number in the constructor
    std::vector<int> vCorners;
    std::vector<Colour> vColors;
    std::optional<ColorLegend> legend;
    std::vector<MarkedEdge> vMarks;
};

} // namespace TARN_TOOL

#endif
