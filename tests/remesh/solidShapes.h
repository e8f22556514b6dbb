// Soups with a known truth, all turned to a general position.
#ifndef ZEF_TESTS_SOLIDSHAPES_H
#define ZEF_TESTS_SOLIDSHAPES_H

#include "Point3.h"

#include <string>
#include <utility>
#include <vector>

namespace ZEF_TESTS
{
using TARN_ZEF::Point3;

struct SolidShape
{
    std::string name;
    std::vector<Point3> vTriCorners;
    double volume = 0.0;     // 0 for open ones
    double hullVolume = 0.0; // of what the outermost surface surrounds
    double area = 0.0;
    int numParts = 1;
    int numCavities = 0;
    int euler = 2;      // of all parts together
    bool bExact = true; // all facets are kept; else it may differ by the tolerance
    double length = 0.1;
    std::vector<std::pair<Point3, Point3>> vCreases; // edges that must be covered
};

[[nodiscard]] std::vector<SolidShape> makeSolidShapes();

// The same soup with every tenth triangle or so turned over, every fiftieth doubled, in another order.
[[nodiscard]] std::vector<Point3> messUp(const std::vector<Point3>& vTriCorners, unsigned seed);

// The same in disorder that takes something away: the given parts of the triangles are turned, missing and doubled, but at
// least one each.
[[nodiscard]] std::vector<Point3> damage(const std::vector<Point3>& vTriCorners, double turned,
                                         double missing, double doubled, unsigned seed);

} // namespace ZEF_TESTS

#endif
