// Reconstruction of a cloud of which nothing is known: factor and smoothing are chosen from the cloud itself.
#ifndef ZEF_AUTORECONSTRUCT_H
#define ZEF_AUTORECONSTRUCT_H

#include "Mesh.h"
#include "Point3.h"
#include "zef_export.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace TARN_ZEF
{
// How autoReconstruct() chooses. The defaults suit any cloud.
struct AutoOptions
{
    // The largest factor on the detected spacing that may be chosen; at least 1. Factors go up from 1 in steps of
    // about 1.13, six of them up to the default.
    double largestFactor = 1.8;
    // The same for surfaces that stay open: their border is no fault, and coarser cells cost detail. At least 1.
    double largestFactorOfOpen = 1.3;
    // Whether smoothing may be chosen.
    bool bMaySmooth = true;
    // Noise from which on points are smoothed, in spacings: how far they scatter about the plane of their
    // neighbours. Above 0.
    double leastNoiseToSmooth = 0.3;
    // A border loop of up to so many edges is a hole, a longer one the rim of an open surface.
    std::size_t mostEdgesOfHole = 24;
    // The search ends if the second factor leaves more than this share of the faults of factor 1, and these are many,
    // one for 400 triangles: then they are the cloud's own, and no factor mends them. From 0 to 1.
    double mostFaultsLeft = 0.5;
    // Whether, where no factor makes a sound surface, closed bodies are looked for by the way that their surface faces
    // at each point: walls and gaps that are too thin for cells are told apart. Left out under a MemoryLimitScope of
    // less than 2,500 bytes a point.
    bool bTellSheetsApart = true;
};

// What was measured of the cloud, on a sample of some thousand points.
struct CloudFigures
{
    double spacing = -1.0; // the detected mean spacing, in units of the points
    // Distance to the nearest neighbour by the spacing of an even cloud of the same density, in the median: about
    // 0.5 for random points, 0.9 for even ones. -1 if there are too few points to tell.
    double evenness = -1.0;
    double noise =
        -1.0; // scatter about the plane of the neighbours, in such spacings, in the median; -1 likewise
    double layers =
        -1.0; // share of points with another sheet within two and a half such spacings; -1 likewise
};

// A mesh that was made on trial.
struct AutoTrial
{
    double factor = 1.0;
    bool bSmooth = false;
    bool bByFacing = false; // see AutoOptions::bTellSheetsApart; factor and smoothing say nothing then
    std::size_t numTriangles = 0;
    std::size_t numHoles = 0; // see AutoOptions::mostEdgesOfHole
    std::size_t numRims = 0;  // longer borders
    std::size_t numBorderEdges = 0;
    std::size_t numBorderLoops = 0;
    std::size_t numPieces = 0;
    std::size_t numNonManifoldEdges = 0;
    std::size_t numNonManifoldVertices = 0;

    [[nodiscard]] std::size_t getNumFaults() const noexcept
    {
        return numHoles + numNonManifoldEdges + numNonManifoldVertices;
    }
};

// What was chosen and why.
struct AutoReport
{
    CloudFigures cloud;
    double factor = 1.0; // on the detected spacing
    bool bSmooth = false;
    bool bByFacing = false;         // the mesh is no lattice's: closed bodies, told by the way that they face
    std::string reason;             // one sentence
    std::vector<AutoTrial> vTrials; // in order; the first is the one of plain defaults
};

// Makes the mesh of a cloud by the smallest factor, from 1 on, whose mesh has no holes and is manifold.
//
// The surface is made with each factor in turn until one will do, so that the result is what reconstruct_auto() gives
// for the chosen factor and smoothing. Where the points scatter much, they are smoothed first. What differs from plain
// defaults must pay: the mesh has neither holes nor non-manifold edges or vertices, and no more border edges, border
// loops or pieces than the one of plain defaults.
// Where no factor makes such a mesh, the points are asked which way they face: if they bound closed bodies, with hardly
// one of them off, the surface of these is the mesh, manifold and without border. Otherwise it is the one of plain defaults.
//
// vPoints    read, never changed
// pReport    what was chosen, and why; may be null
// Returns    the mesh, or an empty pointer if nothing could be built; test it
// Throws     as reconstruct_auto(), and ZefBadArgument for an option out of its range
// Progress   goes from 0 to 1 once for each mesh that is made
// Cost       that of reconstruct_auto() with the chosen factor, and of the smaller ones before it: two to three times
//            the time at factor 1, at most four, and about two more where closed bodies are looked for; two meshes are
//            held at a time
[[nodiscard]] ZEF_API std::shared_ptr<Mesh> autoReconstruct(std::vector<Point3>& vPoints,
                                                            const AutoOptions& options = AutoOptions(),
                                                            AutoReport* pReport = nullptr);

} // namespace TARN_ZEF

#endif
