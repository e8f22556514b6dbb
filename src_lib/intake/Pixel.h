#ifndef ZEF_PIXEL_H
#define ZEF_PIXEL_H

#include "geometry/Plane.h"
#include "intake/CellPixels.h"
#include "intake/FeatureChainMgr.h"
#include "intake/Tri.h"
#include "lattice/Calc.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
using CCDPairs = std::vector<std::pair<CCD, CCD>>;

// Samples a triangle soup: one point for each lattice cell that the surface crosses.
//
// Sharp edges and open borders are walked first, so that their cells get points exactly on them; then the
// flat edges, last the insides of the triangles. The first point to reach a cell keeps it.
//
// Ownership:  owns its triangles; refers to the caller's corners and lattice. All corners must be elements
//             of one array, equal corners of different triangles the same element: that is how the soup
//             gets its connectivity, and their places in it make all results reproducible.
// Threads:    one; the sorts use the pool.
// Cost:       n log n in triangles and pixels. An edge's neighbours are found in one sorted vector.
class Pixel
{
public:
    // Three consecutive corners are one triangle; asserts that there is one, that there are whole triangles,
    // and that the lattice has a cell size. Degenerate triangles are left out, with a warning.
    Pixel(const std::vector<Point3*>& vTriangleCorners, const Calc* pCalc_);
    Pixel(const Pixel&) = delete;
    Pixel& operator=(const Pixel&) = delete;

    // Appends one point per cell, and the pairs of cells (lower one first) next to each other along the
    // feature edges; vBorders takes those along the edges with one triangle again. Needs a named progress
    // tree.
    //
    // featureAngle  degrees: an edge is a feature if its triangles bend by more, or if it has only one
    void run(std::vector<Point3>& vPixels, CCDPairs& vFeatures, CCDPairs& vBorders, double featureAngle);

    // Appends the cells along a segment: the first with p0, the last with p1, in between the middle of the
    // stretch that crosses the cell. Nothing if both ends are in one cell.
    void rasterizeEdge(const Point3& p0, const Point3& p1, std::vector<RCDPoint>& vEdgeRaster) const;

    // Mean of the points where the plane cuts the edges of a cell. bOK is false, with a warning, and the
    // result (0,0,0), if there are fewer than three.
    [[nodiscard]] Point3 getMidOfCutPlane(RCD rcd, const Plane& plane, bool& bOK) const;

private:
    // Entries of one edge stand together, in order of the soup. The first number names the edge: the places
    // of its ends in the array of corners, lower one in the high half. The second is a place in vTri.
    using EdgeToTri = std::vector<std::pair<u64, std::uint32_t>>;

    void linkEdge2T(const std::vector<Point3*>& vTriangleCorners);
    void bfsSort();
    [[nodiscard]] std::vector<std::uint32_t> findEdgeGroups() const;
    void renumber(const std::vector<std::uint32_t>& vOrder);
    [[nodiscard]] std::size_t getGroupEnd(std::size_t begin) const noexcept;
    [[nodiscard]] std::pair<Point3*, Point3*> getEnds(u64 edge) const noexcept;
    [[nodiscard]] u64 makeEdge(const Point3* a, const Point3* b) const noexcept;

    void pixelAllEdges(double featureAngle, std::vector<RCDPoint>& vPixelRCD, CCDPairs& vFeatures,
                       CCDPairs& vBorders);
    void sortOutEdges(double featureAngle, FeatureList& vFeatureEdges, std::vector<std::size_t>& vFlatEdges);
    [[nodiscard]] double getMaxDih(std::size_t begin, std::size_t end);
    void pixelFlatEdge(const Plane& plane, RCDPoint& pixel) const;

    void pixelAllTriangles(CellPixels& pixels) const;
    void rasterizeTriangle(const Point3* p0, const Point3* p1, const Point3* p2, CellPixels& pixels) const;
    void rasterizePlane(const Plane& plane, const Point3& a, const Point3& b, CellPixels& pixels) const;

    const Calc* pCalc;
    double spacingAbs;       // the cell size
    Point3* pBase = nullptr; // the lowest corner in use
    std::vector<Tri> vTri;   // all that are not degenerate; neighbours close together
    EdgeToTri vEdge2Tri;     // three entries per triangle, sorted by edge
};

} // namespace TARN_ZEF

#endif
