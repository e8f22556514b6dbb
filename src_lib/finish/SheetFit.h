#ifndef ZEF_FINISH_SHEETFIT_H
#define ZEF_FINISH_SHEETFIT_H

#include "finish/LocalSurface.h"
#include "finish/QuadricSums.h"
#include "finish/SheetReach.h"
#include "surface/HalfEdgeMesh.h"
#include "tarn_tools/Box.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace TARN_ZEF
{
class Progress;

// Moves the vertices of a surface onto its points: each along its normal onto a quadric through the points of its own
// sheet around it.
//
// The radius of the quadrics is chosen once for the cloud, where the noise that is averaged away and the shape that
// is lost come to the least; where the points then leave the quadric by far more than usual, a small one is taken.
//
// Feature edges are walls: no fit sees points beyond one. A vertex on a crease gets a fit for each of its sides, and
// moves to where they meet.
//
// Ownership:  works on the caller's mesh; keeps references to it and to the cloud, and a quadric a vertex, 80 bytes.
// Threads:    fits run on the pool; the result is the same for every number of threads.
class SheetFit
{
public:
    // cellSize: in units of the points. maxMove: farthest way of a vertex, in cells.
    SheetFit(HalfEdgeMesh& mesh_, const std::vector<Point3>& vCloud_, double cellSize_, double maxMove_);

    // progress: one step a vertex, here and below.
    void run(Progress& progress);
    // Once more, after vertices moved. Where one stayed close to the quadric that it has, that says where it belongs;
    // the points are asked again for those that went far, and around feature edges. REQUIRES: run().
    void repeat(Progress& progress);

    // Of the quadrics, in cells. 0 before run().
    [[nodiscard]] double getRadius() const noexcept { return radius; }
    // What the points usually leave the quadrics by, in cells: an estimate of their noise.
    [[nodiscard]] double getNoise() const noexcept { return noise; }
    // Where vertices may move to: the box of the points, and a little around it.
    [[nodiscard]] const Box& getRoom() const noexcept { return room; }
    // A vertex each; none for those on creases, and for those that no points are near to.
    [[nodiscard]] const std::vector<LocalSurface>& getSurfaces() const noexcept { return vSurfaces; }

private:
    using Flags = std::vector<std::uint8_t>;
    using Surroundings = SheetReach::Surroundings;

    struct Fit
    {
        double reach = 0.0; // in units of the points
        Vector3 way;        // the z axis, of unit length
        std::array<double, QuadricSums::numTerms> terms = {};
        Vector3 normal;        // of the surface over the vertex, of unit length
        double residual = 0.0; // root of the mean square, corrected for the terms of the fit; in cells
        std::size_t numPoints = 0;
        bool bUsable = false;

        // Of the surface over the vertex, along the way.
        [[nodiscard]] double getHeight() const noexcept { return terms[0] * reach; }
        [[nodiscard]] LocalSurface toSurface(const Point3& p, double firstResidual) const;
    };
    // What one worker uses again for each vertex.
    struct Scratch
    {
        SheetReach::Scratch reach;
        Surroundings shared; // of the vertices of a group
        Surroundings own;
        std::vector<int> vGroup;
    };
    // A vertex and the points around it, or around its group.
    struct Place
    {
        int v;
        const Surroundings& points;
        Vector3 offset; // of the vertex from their middle
    };

    void chooseRadius(const SheetReach& reach);
    [[nodiscard]] std::vector<int> chooseSamples() const;
    [[nodiscard]] std::vector<int> findAlive() const;
    [[nodiscard]] std::vector<int> findOutdated() const;
    [[nodiscard]] Flags findNearCreases() const;
    [[nodiscard]] bool holds(int v) const;
    void propose(const SheetReach& reach, const std::vector<int>& vVertices, Progress& progress);
    void proposeRange(const SheetReach& reach, int from, int to, Scratch& scratch);
    void proposeGroup(const SheetReach& reach, Scratch& scratch);
    void collectGroup(const SheetReach& reach, int v, int from, int to, Scratch& scratch);
    void projectAll();
    [[nodiscard]] Box findRoom() const;
    void moveAll();

    [[nodiscard]] Point3 proposeFree(const SheetReach& reach, const Place& place, Scratch& scratch);
    [[nodiscard]] Point3 proposeOnCrease(const SheetReach& reach, int v, Scratch& scratch) const;
    [[nodiscard]] std::vector<std::vector<int>> getSides(int v) const;
    void seedAll(int v, Scratch& scratch) const;
    [[nodiscard]] Fit fitBest(const SheetReach& reach, const Place& place, const Vector3& normal,
                              Scratch& scratch, double& firstResidual) const;
    [[nodiscard]] Fit fitTwice(const SheetReach& reach, const Place& place, const Vector3& normal,
                               double radiusInCells, Scratch& scratch) const;
    [[nodiscard]] Fit gatherAndFit(const SheetReach& reach, int v, const Vector3& normal,
                                   double radiusInCells, Scratch& scratch) const;
    [[nodiscard]] Fit fit(const Place& place, const Vector3& normal, double radiusInCells) const;

    HalfEdgeMesh& mesh;
    const std::vector<Point3>& vCloud;
    double cellSize;
    double maxMove;
    Box room; // that vertices may move in
    double radius = 0.0;
    double noise = 0.0;
    std::vector<LocalSurface> vSurfaces; // of the vertices
    std::vector<Point3> vProposed;       // for the vertices
    Flags vIsPending;                    // vertices that wait for a fit
};

} // namespace TARN_ZEF

#endif
