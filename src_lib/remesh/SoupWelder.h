#ifndef ZEF_SOUPWELDER_H
#define ZEF_SOUPWELDER_H

#include "remesh/FlatSoup.h"

#include <vector>

namespace TARN_ZEF
{
// Makes one indexed soup of loose triangles: equal corners are one, then corners closer than a tolerance;
// triangles without height and copies are dropped; corners that lie on the open edge of another triangle
// split it.
//
// A triangle that stands twice is a copy where an edge of it then has an odd number of triangles, or where
// all around is double. So the face in which two boxes touch stays double: each box has its own.
class SoupWelder
{
public:
    // tolerance  in units of the points, 0.0 or more
    explicit SoupWelder(double tolerance_)
        : tolerance(tolerance_)
    {
    }

    // All coordinates must be finite. result is replaced.
    void run(const std::vector<Point3>& vTriCorners, FlatSoup& result);

    // Of the last run.
    [[nodiscard]] int getNumWelded() const { return numWelded; } // corners that differed
    [[nodiscard]] int getNumFlat() const { return numFlat; }     // triangles without height
    [[nodiscard]] int getNumDoubled() const { return numDoubled; }
    [[nodiscard]] int getNumJoints() const { return numJoints; } // splits where a corner met an edge

private:
    void weldEqual(const std::vector<Point3>& vTriCorners);
    void weldNear();
    void dropFlat();
    void dropDoubled();
    [[nodiscard]] bool splitJoints();
    void splitTriangle(int c, const std::vector<int>& vOnEdge);

    double tolerance;
    FlatSoup soup;
    int numWelded = 0;
    int numFlat = 0;
    int numDoubled = 0;
    int numJoints = 0;
};

} // namespace TARN_ZEF

#endif
