#ifndef ZEF_SEGMENTWALK_H
#define ZEF_SEGMENTWALK_H

#include "Point3.h"
#include "core/definitions.h"

#include <cfloat>
#include <cmath>

namespace TARN_ZEF
{
// One coordinate of a walk along a segment.
struct AxisWalk
{
    double current;
    double bound; // where the walk leaves the cell on this axis
    double v;     // component of the segment
    double end;

    [[nodiscard]] bool isPositive() const { return v > 0.0; }
    void moveBound(double cell)
    {
        if (isPositive() && current >= bound)
            bound += cell;
        else if (!isPositive() && bound >= current)
            bound -= cell;
    }
    // Part of the segment from the current place to the bound.
    [[nodiscard]] double getFactor(double cell) const
    {
        if (v == 0.0)
            return DBL_MAX;
        const double d = bound - current;
        return std::fabs((d == 0.0 ? cell : d) / v);
    }
    [[nodiscard]] double getNext(double factor) const { return current + factor * v; }
    [[nodiscard]] double getMiddle(double factor) const { return (current + getNext(factor)) / 2.0; }
    [[nodiscard]] bool isBeyondEnd(double value) const { return isPositive() ? value > end : value < end; }
};

// The walk to the next wall of a cell.
class SegmentWalk
{
public:
    SegmentWalk(const Point3& p0, const Point3& p1, const Point3& ref, double cell_)
        : axes{{p0.x(), ref.x(), p1.x() - p0.x(), p1.x()},
               {p0.y(), ref.y(), p1.y() - p0.y(), p1.y()},
               {p0.z(), ref.z(), p1.z() - p0.z(), p1.z()}}
        , cell(cell_)
    {
    }
    void findWall()
    {
        factor = DBL_MAX;
        for (AxisWalk& axis : axes)
        {
            axis.moveBound(cell);
            const double axisFactor = axis.getFactor(cell);
            if (axisFactor > 0.0 && axisFactor < factor)
                factor = axisFactor;
        }
        ASSEX_TEXT(factor != DBL_MAX && factor > 0, "minFactor!=1.7976931348623158e+308 && minFactor>0");
    }
    // Middle of the stretch up to the wall.
    [[nodiscard]] Point3 getMiddle() const
    {
        return {axes[0].getMiddle(factor), axes[1].getMiddle(factor), axes[2].getMiddle(factor)};
    }
    [[nodiscard]] bool isBeyondEnd(const Point3& p) const
    {
        return axes[0].isBeyondEnd(p.x()) || axes[1].isBeyondEnd(p.y()) || axes[2].isBeyondEnd(p.z());
    }
    void goToWall()
    {
        for (AxisWalk& axis : axes)
            axis.current = axis.getNext(factor);
    }

private:
    AxisWalk axes[3];
    double cell;
    double factor = DBL_MAX;
};

} // namespace TARN_ZEF

#endif
