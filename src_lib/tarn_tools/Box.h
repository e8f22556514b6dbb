#ifndef ZEF_BOX_H
#define ZEF_BOX_H

#include <algorithm>
#include <cfloat>

namespace TARN_ZEF
{
// A box along the axes, its faces included. Starts inverted, so that the first thing put in sets it.
struct Box
{
    double xmin = DBL_MAX;
    double ymin = DBL_MAX;
    double zmin = DBL_MAX;
    double xmax = -DBL_MAX;
    double ymax = -DBL_MAX;
    double zmax = -DBL_MAX;

    void include(const Box& other)
    {
        xmin = std::min(xmin, other.xmin);
        ymin = std::min(ymin, other.ymin);
        zmin = std::min(zmin, other.zmin);
        xmax = std::max(xmax, other.xmax);
        ymax = std::max(ymax, other.ymax);
        zmax = std::max(zmax, other.zmax);
    }

    // A common point is enough.
    [[nodiscard]] bool overlaps(const Box& other) const
    {
        return other.xmax >= xmin && xmax >= other.xmin && other.ymax >= ymin && ymax >= other.ymin &&
               other.zmax >= zmin && zmax >= other.zmin;
    }

    [[nodiscard]] bool contains(double x, double y, double z) const
    {
        return x >= xmin && x <= xmax && y >= ymin && y <= ymax && z >= zmin && z <= zmax;
    }
};

} // namespace TARN_ZEF

#endif
