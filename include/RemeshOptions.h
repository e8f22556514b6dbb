#ifndef ZEF_REMESHOPTIONS_H
#define ZEF_REMESHOPTIONS_H

#include "zef_export.h"

#include <string>

namespace TARN_ZEF
{
// What remesh() is asked for. The defaults here are the only ones.
struct ZEF_API RemeshOptions
{
    // Stands for a value that is to be found from the soup.
    static constexpr double FOUND = -1.0;

    // Wanted edge length, in units of the points. FOUND: from the sizes of the features against the extents, or
    // from the soup's own edges where there are none; never so short that more than maxTriangles come out.
    double length = FOUND;
    // On a length that is found: 2.0 makes triangles twice as large. Above 0.
    double lengthFactor = 1.0;
    // The result never has more. A length that is found gets longer for it; one that is given and would make more is
    // refused. At least 100.
    int maxTriangles = 500000;

    // Degrees above which an edge of the soup is a feature and is kept. FOUND: where the distribution of dihedral
    // angles has its gap. Above 180 keeps borders only, and ridges that the tolerance does not let vanish.
    double featureAngle = FOUND;

    // Farthest that the result may lie off the soup, or the soup off the result, in wanted lengths. Above 0, at
    // most 1. A rough scan widens it to 10 times its roughness, at most to 0.1.
    double tolerance = 0.02;

    // Corners nearer than this are one, in extents of the soup; a corner lies on an open edge up to ten times as
    // far. From 0 (equal corners alone) to 0.1.
    double weldTolerance = 1e-6;

    // Whether edges keep the wanted length where features are closer together than that; triangles there get
    // thin. Else they get smaller towards such places.
    bool bCoarse = false;

    // Whether only the outer hull is wanted: one closed surface around all that is there, facing outward. Holes are
    // closed, crossing and touching parts become one, what lies within goes.
    bool bOuter = false;
    // With bOuter: the widest gap that counts as closed, in cells, of which two are a length; from 0 to 100. What is as
    // narrow and leads into a wider room is closed, too. Above 0 a lattice decides about the whole surface.
    int numBridgedCells = 0;

    // Empty if all values can be used together, else what is wrong with the first that cannot.
    [[nodiscard]] std::string getFault() const;
};

// What remesh() found and did.
struct RemeshReport
{
    double length = 0.0;       // in use, in units of the points
    double featureAngle = 0.0; // in use, in degrees
    double tolerance = 0.0;    // in use, in units of the points

    // The soup, in the order in which it was made sound.
    int numNonFinite = 0; // triangles left out for a NaN or infinite coordinate
    int numWelded = 0;    // corners that differed and became one with another
    int numFlat = 0;      // triangles dropped because they had no height
    int numDoubled = 0;   // copies of triangles dropped
    int numJoints = 0;    // edges split because a corner lay on them
    int numParted = 0;    // edges with more than two triangles, parted into the bodies that meet there
    int numCut = 0;       // edges cut because the surface has one side only
    int numTurned = 0;    // triangles that faced the other way
    int numParts = 0;
    int numClosed = 0;   // parts without border
    int numCavities = 0; // closed parts that face inward
    // With bOuter: borders that were closed, and whether the hull had to be found on a lattice, as sheets cross, touch or
    // cannot be closed one by one.
    int numSealed = 0;
    bool bFromLattice = false;

    // The result.
    int numTriangles = 0;
    // Triangles that are farther off the soup than the tolerance somewhere, or that a place of the soup is nearest to and
    // farther off; 0 unless triangles would have folded.
    int numFarPlaces = 0;
    double farthestPlace = 0.0; // largest distance measured at those, in units of the points
};

} // namespace TARN_ZEF

#endif
