#ifndef ZEF_FINISH_SHEETFIT_H
#define ZEF_FINISH_SHEETFIT_H

#include "finish/PointOwners.h"
#include "surface/HalfEdgeMesh.h"

#include <array>
#include <cstdint>
#include <vector>

namespace TARN_ZEF
{
class Progress;

// Moves the vertices of a surface onto its points: each along its normal onto a quadric through the points of its own
// sheet around it. Own are the points whose triangles can be reached over the surface without a sharp turn, so that
// a sheet close by does not pull.
//
// The radius of the quadrics is chosen once for the cloud, where the noise that is averaged away and the shape that
// is lost come to the least; where the points then leave the quadric by far more than usual, a small one is taken.
//
// Feature edges are walls: no fit sees points beyond one. A vertex on a crease gets a fit for each of its sides, and
// moves to where they meet.
//
// Threads:  fits run on the pool; the result is the same for every number of threads.
class SheetFit
{
public:
    // What a fit says about the surface at a vertex.
    struct LocalPlane
    {
        Point3 point;
        Vector3 normal;             // of unit length
        double residual = 0.0;      // of the fit that was taken, in cells
        double firstResidual = 0.0; // of the one with the usual radius
        bool bUsable = false;
    };

    // maxMove: farthest way of a vertex, in cells.
    SheetFit(HalfEdgeMesh& mesh_, const std::vector<Point3>& vCloud, double cellSize_, double maxMove_);

    // bKeepPlanes: whether getPlanes() is asked afterwards.
    // progress: one step a vertex.
    void run(bool bKeepPlanes, Progress& progress);

    // Of the quadrics, in cells. 0 before run().
    [[nodiscard]] double getRadius() const noexcept { return radius; }
    // What the points usually leave the quadrics by, in cells: an estimate of their noise.
    [[nodiscard]] double getNoise() const noexcept { return noise; }
    // A vertex each, if run() kept them; none for those on creases.
    [[nodiscard]] const std::vector<LocalPlane>& getPlanes() const noexcept { return vPlanes; }

private:
    struct Fit
    {
        double height =
            0.0; // of the surface over the vertex, along the normal that was given; in units of the points
        Vector3 way;           // the normal that was given
        Vector3 normal;        // of the surface there
        double residual = 0.0; // root of the mean square, corrected for the terms of the fit; in cells
        std::size_t numPoints = 0;
        bool bUsable = false;
    };
    // Where a triangle looks: the sum of the normals of its corners.
    struct Facing
    {
        Vector3 sum;
        double sqLength = 0.0;
    };
    // A triangle and how far its corners are from the vertex at work, squared.
    struct Reached
    {
        int t;
        std::array<double, 3> sqDistances;
    };
    // What one worker uses again for each vertex.
    struct Scratch
    {
        std::vector<int> vSeeds; // triangles at the vertex from which its points are reached
        std::vector<Reached> vReached;
        std::vector<Vector3> vWays; // from the vertex to the points in reach, which are in the unit ball
        std::vector<std::uint32_t> vStamps;
        std::uint32_t stamp = 0;
    };

    void fillNormals();
    void fillFacings();
    void chooseRadius();
    [[nodiscard]] std::vector<int> chooseSamples() const;
    void propose(std::vector<Point3>& vProposed, Progress& progress);
    [[nodiscard]] Vector3 getRawNormal(int v) const;
    [[nodiscard]] Point3 propose(int v, Scratch& scratch, LocalPlane& plane) const;
    [[nodiscard]] Point3 proposeOnCrease(int v, Scratch& scratch) const;
    [[nodiscard]] std::vector<std::vector<int>> getSides(int v) const;
    [[nodiscard]] Vector3 getSideNormal(const std::vector<int>& vSide) const;
    void seedAll(int v, Scratch& scratch) const;
    [[nodiscard]] Fit fitBest(int v, const Vector3& normal, Scratch& scratch, double& firstResidual) const;
    [[nodiscard]] Fit fitTwice(int v, const Vector3& normal, double radiusInCells, Scratch& scratch) const;
    [[nodiscard]] Fit fit(int v, const Vector3& normal, double radiusInCells, Scratch& scratch) const;
    // To the points in reach, over the surface.
    void reachPoints(int v, const Vector3& normal, double reach, Scratch& scratch) const;
    [[nodiscard]] Fit fitReached(const Vector3& normal, double radiusInCells, const Scratch& scratch) const;
    void reachTriangles(int v, const Vector3& normal, double reach, Scratch& scratch) const; // from the seeds
    [[nodiscard]] Reached reachAcross(int h, const Reached& near, const Point3& centre) const;
    [[nodiscard]] bool faces(int t, const Vector3& normal) const;

    HalfEdgeMesh& mesh;
    PointOwners owners;
    double cellSize;
    double maxMove;
    double radius = 0.0;
    double noise = 0.0;
    std::vector<Vector3> vNormals; // of the vertices, filtered over their neighbours; null on creases
    std::vector<Facing> vFacings;  // of the triangles
    std::vector<LocalPlane> vPlanes;
};

} // namespace TARN_ZEF

#endif
