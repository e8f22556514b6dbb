#ifndef ZEF_TESTS_EVENBALL_H
#define ZEF_TESTS_EVENBALL_H

#include "Point3.h"

#include <cmath>
#include <vector>

namespace TARN_ZEF
{
// Evenly spread points on a ball, on a spiral of the golden angle; getRadius() gives the distance of each from the
// centre.
template <typename F>
std::vector<Point3> makeEvenBall(int num, F getRadius)
{
    constexpr double goldenAngle = 2.399963;
    std::vector<Point3> vPoints;
    for (int i = 0; i < num; ++i)
    {
        const double z = 1.0 - (2.0 * i + 1.0) / num;
        const double r = std::sqrt(1.0 - z * z);
        const double radius = getRadius();
        vPoints.emplace_back(radius * r * std::cos(goldenAngle * i), radius * r * std::sin(goldenAngle * i),
                             radius * z);
    }
    return vPoints;
}

} // namespace TARN_ZEF

#endif
