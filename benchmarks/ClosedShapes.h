#ifndef ZEF_BENCHMARKS_CLOSEDSHAPES_H
#define ZEF_BENCHMARKS_CLOSEDSHAPES_H

#include "Point3.h"

#include <functional>
#include <string>
#include <vector>

namespace TARN_ZEF
{
// A closed surface of which all is known: where it runs, how it hangs together.
struct ClosedShape
{
    // Below 0 inside. It changes by no more than the way that the point goes.
    using Distance = std::function<double(const Point3&)>;

    std::string name;
    int eulerNumber = 2;
    int numParts = 1;
    bool bNested = false; // every other part, by size, is the inside of the one before
    Distance distance;
};

// Solids, thin sheets, rings, knots, frames, parts and animals, some 70, each within two units of the origin and
// turned against the axes. Walls are as thin as 0.022; sixty thousand points on a surface of 8 lie 0.0115 apart.
[[nodiscard]] std::vector<ClosedShape> makeClosedShapes();

} // namespace TARN_ZEF

#endif
